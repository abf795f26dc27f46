#include "abi/scf_support.h"

#include <cstdint>
#include <string>

#include "common/error.h"
#include "common/fortran_format.h"
#include "common/text_file.h"
#include "dft/functionals/functional_names.h"
#include "linalg/memory_estimates.h"
#include "report/scf_sections.h"
#include "report/sections.h"

namespace norvik::abi {

namespace {

// A fresh start of a molecule with more atoms than this begins from the free
// atoms (the initialisers' count rule).
constexpr int kSmallMolecule = 9;

}  // namespace

void check_nbasis(norvik_int n, std::string_view routine) {
  if (n < 1) {
    throw Error(fortran::list_directed(
        {std::string("Wrong nbasis in ") + std::string(routine) + ".", std::int64_t{n}}));
  }
}

dft::GridLevel grid_level_in(norvik_int level, std::string_view routine) {
  if (level == 0) return dft::GridLevel::standard;
  if (level == 1) return dft::GridLevel::dense;
  throw Error(fortran::list_directed(
      {std::string("Wrong grid level in ") + std::string(routine) + ".", std::int64_t{level}}));
}

scf::ScfSystem system_of(scf::FockBuild build, const norvik_int* nbasis, const norvik_int* northo,
                         const double* X, const double* S, const double* T, const double* V,
                         const double* dipints, NORVIK_CONTEXT_ARGS) {
  scf::ScfSystem system;
  system.operators = operators(nbasis, S, T, V, northo, X);
  system.dipints = {dipints, 3 * square(*nbasis)};
  system.context = context_view(*nbasis, NORVIK_CONTEXT_CALL, build == scf::FockBuild::stored);
  system.build = build;
  return system;
}

scf::CycleObserver member_log(const Member& member, const char* logfile, norvik_int iopt,
                              norvik_int isrc) {
  if (!member.log) return {};
  return run_log(text_in(logfile, kFileNameLength), iopt, isrc);
}

scf::CycleSettings cycle_settings(const Member& member, const norvik_int* niter, const double* damp,
                                  const double* thr_ene, const double* thr_rms,
                                  const double* e_offset, const double* dip_offset) {
  scf::CycleSettings settings;
  settings.niter = *niter;
  settings.damp = *damp;
  settings.thr_ene = *thr_ene;
  settings.thr_rms = *thr_rms;
  settings.with_dipole = member.dipole;
  settings.e_offset = *e_offset;
  settings.dip_offset = {dip_offset[0], dip_offset[1], dip_offset[2]};
  return settings;
}

scf::Operators operators(const norvik_int* nbasis, const double* S, const double* T,
                         const double* V, const norvik_int* northo, const double* X) {
  scf::Operators op;
  op.nbasis = *nbasis;
  op.northo = *northo;
  op.s = const_matrix(S, *nbasis);
  op.t = const_matrix(T, *nbasis);
  op.v = const_matrix(V, *nbasis);
  op.x = const_matrix(X, *nbasis);
  return op;
}

setup::ElectronCount counts_of(norvik_int n, const double* S, const double* rho) {
  return {scf::electron_count(const_matrix(rho, n), const_matrix(S, n)),
          scf::electron_count(const_matrix(rho + square(n), n), const_matrix(S, n))};
}

scf::StepArrays step_arrays(norvik_int nbasis, const double* G, double* fockhist, double* errhist,
                            double* scratch, double* rho, double* orbitals) {
  const std::size_t nn = square(nbasis);
  return {{G, 2 * nn},
          {fockhist, 2 * scf::kHistorySlots * nn},
          {errhist, 2 * scf::kHistorySlots * nn},
          {scratch, 2 * nn},
          {rho, 2 * nn},
          {orbitals, 2 * (nn + count(nbasis))}};
}

scf::ScfArrays scf_arrays(norvik_int nbasis, double* G, double* rho, double* orbitals) {
  const std::size_t nn = square(nbasis);
  return {{G, 2 * nn}, {rho, 2 * nn}, {orbitals, 2 * (nn + count(nbasis))}};
}

scf::StartPolicy initialiser_start(norvik_int istart, norvik_int natom, bool atoms_apply) {
  if (istart != 1) return scf::StartPolicy::supplied;
  if (atoms_apply && natom > kSmallMolecule) return scf::StartPolicy::free_atoms;
  return scf::StartPolicy::core_hamiltonian;
}

scf::Salc salc_in(norvik_int n, const double* salc, const norvik_int* salcblock) {
  scf::Salc s;
  s.n = n;
  s.u.assign(salc, salc + square(n));
  bool ok = salcblock[0] == 1 && salcblock[scf::kIrreps] == n + 1;
  for (int b = 0; b <= scf::kIrreps; ++b) {
    if (b > 0 && salcblock[b] < salcblock[b - 1]) ok = false;
    s.first[static_cast<std::size_t>(b)] = salcblock[b] - 1;
  }
  if (!ok) {
    throw Error(
        fortran::list_directed({"Invalid symmetry blocks in updaterho.", std::int64_t{salcblock[0]},
                                std::int64_t{salcblock[scf::kIrreps]}, std::int64_t{n}}));
  }
  return s;
}

scf::CycleObserver run_log(std::string_view logfile, int iopt, int isrc) {
  const std::string path(io::trim_right(logfile));
  if (path.empty()) return {};
  return [path, iopt, isrc](const scf::CycleRecord& c) {
    io::append_lines(
        path, {report::log_cycle_line(iopt, isrc, c.iscf, c.energy, c.dipole, c.rmsd, c.comm2)});
  };
}

scf::PointHooks point_report(std::string_view report, std::string_view logfile, int iopt,
                             double thr_orth) {
  scf::PointHooks hooks;
  const std::string path(io::trim_right(report));
  hooks.prepared = [path, thr_orth](const scf::PreparedSystem& p) {
    const int npair = p.context.npair;
    const auto all_pairs = static_cast<int>(packed(p.n));
    io::append_lines(path, report::dependence(p.n, p.northo, thr_orth));
    io::append_lines(path, report::in_core(p.in_core, p.n, all_pairs, npair,
                                           memory::integral_store_gb(npair), p.memory_gb));
    std::string text = "Integrals ok.";
    text.resize(kTimestampLength, ' ');
    io::timestamp(text);
  };
  hooks.cycle = run_log(logfile, iopt, 0);
  return hooks;
}

int checked_nbasis(std::string_view basis, const scf::MoleculeView& molecule, norvik_int nbasis,
                   const char* routine) {
  const int n = scf::basis_size(basis, molecule.elements);
  if (n != nbasis) {
    throw Error(fortran::list_directed(
        {std::string("Wrong nbasis in ") + routine + ".", std::int64_t{nbasis}, std::int64_t{n}}));
  }
  return n;
}

bool is_hartree_fock(std::string_view method) {
  const std::string_view m = norvik::io::trim_right(method);
  return m == "HF" || m == "MP2" || m == "RPA" || m == "TDA";
}

// The Kohn–Sham stage that a method names (none for the Hartree–Fock
// methods): its functional and exact exchange, the second of each settings
// pair, and the grid.
std::optional<scf::KohnShamStage> kohn_sham_stage(const char* method, const norvik_int* niter,
                                                  const double* damp, const double* thr_ene,
                                                  const double* thr_rms, const double* grid_radius,
                                                  const norvik_int* grid_level,
                                                  std::string_view routine) {
  const std::string_view name = text_in(method, kKeywordLength);
  if (is_hartree_fock(name)) return std::nullopt;
  scf::KohnShamStage ks;
  ks.functional = {dft::functional_for(name, dft::FunctionalUse::potential_matrix),
                   dft::exact_exchange_fraction(name)};
  ks.scf = {niter[1], damp[1], thr_ene[1], thr_rms[1]};
  ks.grid_radius = *grid_radius;
  ks.grid_level = abi::grid_level_in(*grid_level, routine);
  return ks;
}

}  // namespace norvik::abi
