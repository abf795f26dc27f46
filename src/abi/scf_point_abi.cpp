// Exported whole calculations: the free atoms of a molecule and the single
// points, all through the core's one point of the surface.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>

#include "abi/scf_support.h"
#include "common/constants.h"
#include "common/fortran_format.h"
#include "common/text_file.h"
#include "dft/functionals/functional_names.h"
#include "norvik/scf.h"
#include "report/scf_sections.h"
#include "scf/gradient.h"
#include "scf/single_point.h"

namespace {

namespace abi = norvik::abi;
namespace scf = norvik::scf;
namespace dft = norvik::dft;
using abi::checked_nbasis;
using abi::count;
using abi::guarded;
using abi::kFileNameLength;
using abi::kKeywordLength;
using abi::kLongKeywordLength;
using abi::kohn_sham_stage;
using abi::text_in;

}  // namespace

namespace {

// The part of a single point's arguments that HF_1POINT and SCF_1POINT share.
struct PointArgs {
  const char* basis;
  const norvik_int *natom, *zat, *zel;
  const double* pos;
  const norvik_int *nalpha, *nbeta, *niter;
  const double *damp, *thr_ene, *thr_rms, *ramlimit, *thr_screen, *thr_orth;
  const double* atomrho;
  const norvik_int* nbasis;
  double *rho, *orbitals;
};

scf::SinglePointResult run_point(const PointArgs& a, scf::StartPolicy start, const char* routine,
                                 const scf::PointHooks& hooks, double* overlap,
                                 const std::optional<scf::KohnShamStage>& kohn_sham = {}) {
  const std::size_t na = count(*a.natom);
  const std::string_view name = text_in(a.basis, kLongKeywordLength);
  const scf::MoleculeView molecule{{a.zat, na}, {a.zel, na}, {a.pos, 3 * na}};
  const int n = checked_nbasis(name, molecule, *a.nbasis, routine);
  const std::size_t nn = abi::square(n);
  scf::JobControl job;
  job.basis = name;
  job.memory_gb = *a.ramlimit;
  job.screening = *a.thr_screen;
  job.orthogonality = *a.thr_orth;
  const scf::ScfControl control{*a.niter, *a.damp, *a.thr_ene, *a.thr_rms};
  scf::PointSettings settings;
  settings.counts = {*a.nalpha, *a.nbeta};
  settings.start = start;
  if (start == scf::StartPolicy::free_atoms) settings.atomic = {a.atomrho, 2 * nn};
  settings.kohn_sham = kohn_sham;
  return scf::single_point(job, control, molecule, settings, {a.rho, 2 * nn},
                           {a.orbitals, 2 * (nn + count(n))}, hooks,
                           overlap ? std::span<double>(overlap, nn) : std::span<double>());
}

void copy_out(const scf::SinglePointResult& r, double* dipole, double* de_final, norvik_int* northo,
              norvik_int* incore) {
  std::copy(r.dipole.begin(), r.dipole.end(), dipole);
  *de_final = r.de_final;
  *northo = r.northo;
  *incore = r.in_core ? 1 : 0;
}

}  // namespace

extern "C" NORVIK_API void ATOMS(const char* basis, const norvik_int* natom, const norvik_int* zat,
                                 const norvik_int* zel, const norvik_int* niter, const double* damp,
                                 const double* thr_ene, const double* thr_rms,
                                 const double* ramlimit, const double* thr_orth,
                                 const norvik_int* nbasis, double* eatom, double* atomrho,
                                 const char* method, const double* grid_radius,
                                 const norvik_int* grid_level) {
  guarded([&] {
    const std::size_t na = count(*natom);
    const std::string_view name = text_in(basis, kLongKeywordLength);
    const scf::MoleculeView molecule{{zat, na}, {zel, na}, {}};
    const int n = checked_nbasis(name, molecule, *nbasis, "Atoms");
    scf::JobControl job;
    job.basis = name;
    job.memory_gb = *ramlimit;
    job.orthogonality = *thr_orth;
    const scf::ScfControl control{niter[0], damp[0], thr_ene[0], thr_rms[0]};
    scf::free_atoms(
        job, control, molecule, {eatom, na}, {atomrho, 2 * abi::square(n)},
        kohn_sham_stage(method, niter, damp, thr_ene, thr_rms, grid_radius, grid_level, "Atoms"));
  });
}

extern "C" NORVIK_API void HF_1POINT(
    const char* basis, const norvik_int* natom, const norvik_int* zat, const norvik_int* zel,
    const double* pos, const norvik_int* nalpha, const norvik_int* nbeta, const norvik_int* niter,
    const double* damp, const double* thr_ene, const double* thr_rms, const double* ramlimit,
    const double* thr_screen, const double* thr_orth, const norvik_int* istart,
    const double* atomrho, const norvik_int* nbasis, double* rho, double* orbitals, double* energy,
    double* dipole, double* de_final, norvik_int* northo, norvik_int* incore) {
  guarded([&] {
    const PointArgs args{basis,      natom,    zat,     zel,     pos,     nalpha,
                         nbeta,      niter,    damp,    thr_ene, thr_rms, ramlimit,
                         thr_screen, thr_orth, atomrho, nbasis,  rho,     orbitals};
    const scf::SinglePointResult r =
        run_point(args, abi::initialiser_start(*istart, *natom, true), "HF_1point", {}, nullptr);
    *energy = r.energy;
    copy_out(r, dipole, de_final, northo, incore);
  });
}

extern "C" NORVIK_API void KS_1POINT(
    const char* functional, const char* basis, const norvik_int* natom, const norvik_int* zat,
    const norvik_int* zel, const double* pos, const norvik_int* nalpha, const norvik_int* nbeta,
    const norvik_int* niter, const double* damp, const double* thr_ene, const double* thr_rms,
    const double* ramlimit, const double* thr_screen, const double* thr_orth,
    const norvik_int* istart, const double* atomrho, const norvik_int* nbasis, double* rho,
    double* orbitals, double* energy, double* dipole, double* de_final, norvik_int* northo,
    norvik_int* incore, const double* grid_radius, const norvik_int* grid_level, double* xc) {
  guarded([&] {
    const std::optional<scf::KohnShamStage> kohn_sham = kohn_sham_stage(
        functional, niter, damp, thr_ene, thr_rms, grid_radius, grid_level, "KS_1point");
    // "HF" and the other Hartree–Fock methods are no functional: the
    // exchange–correlation matrix's message stops them.
    if (!kohn_sham) {
      dft::functional_for(text_in(functional, kKeywordLength),
                          dft::FunctionalUse::potential_matrix);
    }
    const PointArgs args{basis,      natom,    zat,     zel,     pos,     nalpha,
                         nbeta,      niter,    damp,    thr_ene, thr_rms, ramlimit,
                         thr_screen, thr_orth, atomrho, nbasis,  rho,     orbitals};
    const scf::SinglePointResult r = run_point(args, abi::initialiser_start(*istart, *natom, true),
                                               "KS_1point", {}, nullptr, kohn_sham);
    *energy = r.energy;
    copy_out(r, dipole, de_final, northo, incore);
    std::copy(r.xc_energy.begin(), r.xc_energy.end(), xc);
    xc[3] = r.grid_electrons[2];
  });
}

extern "C" NORVIK_API void SCF_1POINT(
    const char* method, const char* basis, const char* report, const char* logfile,
    const norvik_int* iopt, const norvik_int* natom, const norvik_int* zat, const norvik_int* zel,
    const double* pos, const norvik_int* nalpha, const norvik_int* nbeta, const norvik_int* niter,
    const double* damp, const double* thr_ene, const double* thr_rms, const double* ramlimit,
    const double* thr_screen, const double* thr_orth, const norvik_int* start,
    const double* atomrho, const norvik_int* nbasis, double* S, double* rho, double* orbitals,
    double* energy, double* dipole, double* de_final, norvik_int* northo, norvik_int* incore,
    norvik_int* ncycle, norvik_bool* converged, double* rmsd, double* commutator,
    const double* grid_radius, double* xc, const norvik_int* grid_level) {
  guarded([&] {
    // A functional name picks the Kohn–Sham stage (and its exact exchange).
    const std::optional<scf::KohnShamStage> kohn_sham = kohn_sham_stage(
        method, niter, damp, thr_ene, thr_rms, grid_radius, grid_level, "SCF_1point");
    scf::StartPolicy policy = scf::StartPolicy::core_hamiltonian;
    if (*start == 1) policy = scf::StartPolicy::free_atoms;
    if (*start == 2) policy = scf::StartPolicy::supplied;
    const PointArgs args{basis,      natom,    zat,     zel,     pos,     nalpha,
                         nbeta,      niter,    damp,    thr_ene, thr_rms, ramlimit,
                         thr_screen, thr_orth, atomrho, nbasis,  rho,     orbitals};
    const scf::PointHooks hooks = abi::point_report(
        text_in(report, kFileNameLength), text_in(logfile, kFileNameLength), *iopt, *thr_orth);
    const scf::SinglePointResult r = run_point(args, policy, "SCF_1point", hooks, S, kohn_sham);
    // A blank line closes the SCF in the run log; an SCF that used up its
    // cycles says so in the report.
    const std::string_view log = norvik::io::trim_right(text_in(logfile, kFileNameLength));
    if (!log.empty()) norvik::io::append_lines(log, {std::string()});
    if (!r.converged && *niter > 0) {
      abi::append_to(report, norvik::report::not_converged(r.cycles, r.de_final, r.rmsd));
    }
    energy[0] = r.electronic;
    energy[1] = r.nuclear;
    energy[2] = r.energy;
    copy_out(r, dipole, de_final, northo, incore);
    *ncycle = r.cycles;
    *converged = r.converged ? 1 : 0;
    *rmsd = r.rmsd;
    *commutator = std::sqrt(r.comm2) / norvik::constants::kHartreeEvLog;
    std::copy(r.xc_energy.begin(), r.xc_energy.end(), xc);
    xc[3] = r.grid_electrons[2];
  });
}

namespace {

// The molecule and the converged state that a gradient routine reads.
struct GradientArgs {
  const char* basis;
  const norvik_int *natom, *zat, *zel;
  const double* pos;
  const norvik_int *nalpha, *nbeta, *nbasis;
  const double *rho, *orbitals;
};

std::vector<double> gradient_of(const GradientArgs& a, const char* routine, int only_atom,
                                const std::optional<scf::KohnShamStage>& kohn_sham = {}) {
  const std::size_t na = count(*a.natom);
  const std::string_view name = text_in(a.basis, kLongKeywordLength);
  const scf::MoleculeView molecule{{a.zat, na}, {a.zel, na}, {a.pos, 3 * na}};
  const int n = checked_nbasis(name, molecule, *a.nbasis, routine);
  const std::size_t nn = abi::square(n);
  scf::JobControl job;
  job.basis = name;
  return scf::point_gradient(job, molecule, {*a.nalpha, *a.nbeta}, {a.rho, 2 * nn},
                             {a.orbitals, 2 * (nn + count(n))}, kohn_sham, only_atom);
}

}  // namespace

namespace {
void check_atom(norvik_int iatom, norvik_int natom, const char* routine);
}  // namespace

extern "C" NORVIK_API void GRADEMOL_HF(const char* basis, const norvik_int* natom,
                                       const norvik_int* zat, const norvik_int* zel,
                                       const double* pos, const norvik_int* nalpha,
                                       const norvik_int* nbeta, const norvik_int* nbasis,
                                       const double* rho, const double* orbitals, double* grad) {
  guarded([&] {
    const std::vector<double> g = gradient_of(
        {basis, natom, zat, zel, pos, nalpha, nbeta, nbasis, rho, orbitals}, "GradEmol_HF", -1);
    std::copy(g.begin(), g.end(), grad);
  });
}

extern "C" NORVIK_API void GRADEMOL_HF_SUB(const char* basis, const norvik_int* natom,
                                           const norvik_int* zat, const norvik_int* zel,
                                           const double* pos, const norvik_int* nalpha,
                                           const norvik_int* nbeta, const norvik_int* nbasis,
                                           const double* rho, const double* orbitals,
                                           const norvik_int* iatom, double* grad) {
  guarded([&] {
    check_atom(*iatom, *natom, "GradEmol_HF_sub");
    const int a = *iatom - 1;
    const std::vector<double> g = gradient_of(
        {basis, natom, zat, zel, pos, nalpha, nbeta, nbasis, rho, orbitals}, "GradEmol_HF_sub", a);
    std::copy_n(g.begin() + 3 * a, 3, grad);
  });
}

namespace {

// The Kohn–Sham stage of a gradient: the functional and the grid of the SCF.
scf::KohnShamStage gradient_stage(const char* functional, const double* grid_radius,
                                  const norvik_int* grid_level, std::string_view routine) {
  const std::string_view name = text_in(functional, kKeywordLength);
  scf::KohnShamStage ks;
  ks.functional = {dft::functional_for(name, dft::FunctionalUse::potential_matrix),
                   dft::exact_exchange_fraction(name)};
  ks.grid_radius = *grid_radius;
  ks.grid_level = abi::grid_level_in(*grid_level, routine);
  return ks;
}

void check_atom(norvik_int iatom, norvik_int natom, const char* routine) {
  if (iatom < 1 || iatom > natom) {
    throw norvik::Error(norvik::fortran::list_directed(
        {std::string("Wrong atom in ") + routine + ".", std::int64_t{iatom}, std::int64_t{natom}}));
  }
}

}  // namespace

extern "C" NORVIK_API void GRADEMOL_KS(const char* functional, const char* basis,
                                       const norvik_int* natom, const norvik_int* zat,
                                       const norvik_int* zel, const double* pos,
                                       const norvik_int* nalpha, const norvik_int* nbeta,
                                       const norvik_int* nbasis, const double* rho,
                                       const double* orbitals, const double* grid_radius,
                                       const norvik_int* grid_level, double* grad) {
  guarded([&] {
    const std::vector<double> g = gradient_of(
        {basis, natom, zat, zel, pos, nalpha, nbeta, nbasis, rho, orbitals}, "GradEmol_KS", -1,
        gradient_stage(functional, grid_radius, grid_level, "GradEmol_KS"));
    std::copy(g.begin(), g.end(), grad);
  });
}

extern "C" NORVIK_API void GRADEMOL_KS_SUB(
    const char* functional, const char* basis, const norvik_int* natom, const norvik_int* zat,
    const norvik_int* zel, const double* pos, const norvik_int* nalpha, const norvik_int* nbeta,
    const norvik_int* nbasis, const double* rho, const double* orbitals, const double* grid_radius,
    const norvik_int* grid_level, const norvik_int* iatom, double* grad) {
  guarded([&] {
    check_atom(*iatom, *natom, "GradEmol_KS_sub");
    const int a = *iatom - 1;
    const std::vector<double> g = gradient_of(
        {basis, natom, zat, zel, pos, nalpha, nbeta, nbasis, rho, orbitals}, "GradEmol_KS_sub", a,
        gradient_stage(functional, grid_radius, grid_level, "GradEmol_KS_sub"));
    std::copy_n(g.begin() + 3 * a, 3, grad);
  });
}
