// Exported SCF drivers and initialisers of the Kohn–Sham family: the one
// cycle (or the one start) with the Kohn–Sham builder over the host's grid
// and basis table, its orbital rule and observer.
#include <algorithm>
#include <cstdint>
#include <span>

#include "abi/scf_support.h"
#include "common/error.h"
#include "common/fortran_format.h"
#include "dft/functionals/functional_names.h"
#include "dft/xc/basis_values.h"
#include "dft/xc/xc_integrator.h"
#include "norvik/scf.h"
#include "scf/kohn_sham_builder.h"
#include "scf/symmetry_update.h"

namespace {

namespace abi = norvik::abi;
namespace dft = norvik::dft;
namespace scf = norvik::scf;
using abi::count;
using abi::guarded;

// The functional of a name: the combination (an unknown name stops with the
// exchange–correlation matrix's message) and the driver's exact-exchange rule.
scf::XcFunctional functional_of(const char* name) {
  const std::string_view text = abi::text_in(name, static_cast<int>(dft::kFunctionalNameLength));
  return {dft::functional_for(text, dft::FunctionalUse::potential_matrix),
          dft::exact_exchange_fraction(text)};
}

// The Kohn–Sham outputs of a builder after a call.
void grid_outputs(const scf::KohnShamBuilder& builder, double total, norvik_int nbasis,
                  norvik_int npts, double* rhogrid, double* vxc, double* nelec, double* energy,
                  double* exc, double* etotal) {
  const std::span<const double> r = builder.grid_density(), v = builder.xc_matrix();
  std::copy_n(r.begin(), 8 * count(npts), rhogrid);
  std::copy_n(v.begin(), 2 * abi::square(nbasis), vxc);
  const std::array<double, 3> n = builder.grid_electrons();
  std::copy(n.begin(), n.end(), nelec);
  const std::array<double, 3>& e = builder.xc_energy();
  std::copy(e.begin(), e.end(), exc);
  *etotal = total;
  *energy = total - e[0];
}

void ks_scf(const abi::Member& member, const scf::OrbitalRule& rule, NORVIK_KS_SCF_ARGS) {
  abi::check_nbasis(*nbasis, "KS_SCF");
  const scf::ScfSystem system =
      abi::system_of(member.build, nbasis, northo, X, S, T, V, dipints, NORVIK_CONTEXT_CALL);
  const scf::CycleSettings settings =
      abi::cycle_settings(member, niter, damp, thr_ene, thr_rms, e_offset, dip_offset);
  const scf::CycleObserver log = abi::member_log(member, logfile, *iopt, *isrc);
  (void)points;  // the host's grid; the basis table chi already holds what the cycle needs
  scf::KohnShamBuilder builder(system.context, member.build, functional_of(functional),
                               dft::table_by_point(*npts, *nbasis, {w, count(*npts)}, chi));
  const scf::ScfResult r = scf::run_cycles(system, builder, rule, settings,
                                           abi::scf_arrays(*nbasis, G, rho, orbitals), log);
  grid_outputs(builder, r.energy, *nbasis, *npts, rhogrid, vxc, nelec, energy, exc, etotal);
  std::copy(r.dipole.begin(), r.dipole.end(), dipole);
  *de_final = r.de_final;
}

// The SCF settings that an initialiser takes and reads not.
void unread_settings(const norvik_int*, const double*, const double*, const double*, const double*,
                     const double*) {}

void ks_ini(scf::FockBuild build, NORVIK_KS_INI_ARGS) {
  unread_settings(niter, damp, thr_ene, thr_rms, e_offset, dip_offset);
  abi::check_nbasis(*nbasis, "KS_Ini");
  const scf::ScfSystem system =
      abi::system_of(build, nbasis, northo, X, S, T, V, dipints, NORVIK_CONTEXT_CALL);
  // The basis on the points, from the context's shell table.
  const dft::ShellTableBasis b = dft::basis_from_shell_table(
      *nshell, {shelltab, count(*nshell) * static_cast<std::size_t>(NORVIK_SHELL_RECORD)});
  if (b.set.nbasis() != *nbasis) {
    throw norvik::Error(norvik::fortran::list_directed(
        {"Wrong nbasis in KS_Ini.", std::int64_t{*nbasis}, std::int64_t{b.set.nbasis()}}));
  }
  dft::basis_on_grid(b.set, b.centres, {points, 3 * count(*npts)},
                     {chi, dft::basis_table_size(*npts, *nbasis)});
  scf::KohnShamBuilder builder(system.context, build, functional_of(functional),
                               dft::table_by_point(*npts, *nbasis, {w, count(*npts)}, chi));
  scf::StartSettings start;
  start.policy = abi::initialiser_start(*istart, *natom, true);
  if (start.policy == scf::StartPolicy::free_atoms) {
    start.atomic = {atomrho, 2 * abi::square(*nbasis)};
  }
  start.counts = abi::counts_of(*nbasis, S, rho);
  const scf::ScfResult r = scf::initialise(system, builder, scf::AufbauRule(), start,
                                           abi::scf_arrays(*nbasis, G, rho, orbitals));
  grid_outputs(builder, r.energy, *nbasis, *npts, rhogrid, vxc, nelec, energy, exc, etotal);
  std::copy(r.dipole.begin(), r.dipole.end(), dipole);
}

}  // namespace

#define NORVIK_KS_SCF_CALL                                                                        \
  iopt, isrc, logfile, niter, damp, thr_ene, thr_rms, e_offset, dip_offset, nbasis, northo, X, S, \
      T, V, dipints, NORVIK_CONTEXT_CALL, functional, npts, points, w, chi, rhogrid, vxc, nelec,  \
      G, rho, orbitals, energy, exc, etotal, dipole, de_final
#define NORVIK_KS_INI_CALL                                                                        \
  istart, natom, atomrho, niter, damp, thr_ene, thr_rms, e_offset, dip_offset, nbasis, northo, X, \
      S, T, V, dipints, NORVIK_CONTEXT_CALL, functional, npts, points, w, chi, rhogrid, vxc,      \
      nelec, G, rho, orbitals, energy, exc, etotal, dipole

#define NORVIK_KS_SCF_ROUTINE(SUFFIX, LOG, DIPOLE, OCCUPATION, BUILD)                            \
  extern "C" NORVIK_API void KS_SCF##SUFFIX(NORVIK_KS_SCF_ARGS) {                                \
    guarded([&] {                                                                                \
      const abi::Member member{LOG, DIPOLE, scf::Occupation::OCCUPATION, scf::FockBuild::BUILD}; \
      ks_scf(member, scf::AufbauRule(member.damped), NORVIK_KS_SCF_CALL);                        \
    });                                                                                          \
  }

NORVIK_SCF_MEMBERS(NORVIK_KS_SCF_ROUTINE)

#define NORVIK_KS_SYM_ROUTINE(NAME)                                         \
  extern "C" NORVIK_API void NAME(NORVIK_KS_SCF_ARGS, NORVIK_SALC_ARGS) {   \
    guarded([&] {                                                           \
      abi::check_nbasis(*nbasis, "KS_SCF");                                 \
      const scf::Salc s = abi::salc_in(*nbasis, salc, salcblock);           \
      ks_scf(abi::Member{}, scf::SymmetryBlockRule(s), NORVIK_KS_SCF_CALL); \
    });                                                                     \
  }

NORVIK_KS_SYM_ROUTINE(KS_SCF_C2)
NORVIK_KS_SYM_ROUTINE(KS_SCF_B2)

#define NORVIK_KS_INI_ROUTINE(NAME, BUILD)                               \
  extern "C" NORVIK_API void NAME(NORVIK_KS_INI_ARGS) {                  \
    guarded([&] { ks_ini(scf::FockBuild::BUILD, NORVIK_KS_INI_CALL); }); \
  }

NORVIK_KS_INI_ROUTINE(KS_INI, stored)
NORVIK_KS_INI_ROUTINE(KS_INI_MOLE, stored)
NORVIK_KS_INI_ROUTINE(KS_INI_DIRECT, direct)
NORVIK_KS_INI_ROUTINE(KS_INI_MOLE_DIRECT, direct)

extern "C" NORVIK_API void STOREKS(const norvik_int* nbasis, const double* rho,
                                   const double* orbitals, const double* energy, const double* exc,
                                   const double* dipole, double* rhoks, double* orbitalsks,
                                   double* energyks, double* excks, double* dipoleks) {
  guarded([&] {
    const std::size_t nn = abi::square(*nbasis);
    std::copy_n(rho, 2 * nn, rhoks);
    std::copy_n(orbitals, 2 * (nn + count(*nbasis)), orbitalsks);
    *energyks = *energy;
    std::copy_n(exc, 3, excks);
    std::copy_n(dipole, 3, dipoleks);
  });
}
