// Exported SCF drivers and initialisers of the Hartree–Fock family: every
// member is the one cycle (or the one start) with its builder, orbital rule
// and observer.
#include <algorithm>
#include <optional>

#include "abi/scf_support.h"
#include "common/text_file.h"
#include "norvik/integrals_two.h"
#include "norvik/scf.h"
#include "scf/hf_driver.h"
#include "scf/symmetry_update.h"

namespace {

namespace abi = norvik::abi;
namespace scf = norvik::scf;
using abi::guarded;

void hf_scf(const abi::Member& member, const scf::OrbitalRule& rule, NORVIK_HF_SCF_ARGS) {
  abi::check_nbasis(*nbasis, "HF_SCF");
  const scf::ScfSystem system =
      abi::system_of(member.build, nbasis, northo, X, S, T, V, dipints, NORVIK_CONTEXT_CALL);
  const scf::CycleSettings settings =
      abi::cycle_settings(member, niter, damp, thr_ene, thr_rms, e_offset, dip_offset);
  const scf::CycleObserver log = abi::member_log(member, logfile, *iopt, *isrc);
  const scf::ScfResult r =
      scf::run_scf(system, settings, abi::scf_arrays(*nbasis, G, rho, orbitals), rule, log);
  *energy = r.energy;
  std::copy(r.dipole.begin(), r.dipole.end(), dipole);
  *de_final = r.de_final;
}

// The SCF settings that an initialiser takes at HF_SCF's positions and reads
// not; its start flag and count are read by the member's start rule.
void unread_settings(const norvik_int*, const norvik_int*, const norvik_int*, const double*,
                     const double*, const double*, const double*, const double*) {}

void hf_ini(scf::StartPolicy policy, scf::FockBuild build, const scf::OrbitalRule& rule,
            NORVIK_HF_INI_ARGS) {
  unread_settings(istart, natom, niter, damp, thr_ene, thr_rms, e_offset, dip_offset);
  abi::check_nbasis(*nbasis, "HF_Ini");
  const scf::ScfSystem system =
      abi::system_of(build, nbasis, northo, X, S, T, V, dipints, NORVIK_CONTEXT_CALL);
  scf::StartSettings start;
  start.policy = policy;
  if (policy == scf::StartPolicy::free_atoms) start.atomic = {atomrho, 2 * abi::square(*nbasis)};
  start.counts = abi::counts_of(*nbasis, S, rho);
  const scf::ScfResult r =
      scf::initialise(system, start, abi::scf_arrays(*nbasis, G, rho, orbitals), rule);
  *energy = r.energy;
  std::copy(r.dipole.begin(), r.dipole.end(), dipole);
}

}  // namespace

#define NORVIK_HF_SCF_CALL                                                                        \
  iopt, isrc, logfile, niter, damp, thr_ene, thr_rms, e_offset, dip_offset, nbasis, northo, X, S, \
      T, V, dipints, NORVIK_CONTEXT_CALL, G, rho, orbitals, energy, dipole, de_final
#define NORVIK_HF_INI_CALL                                                                        \
  istart, natom, atomrho, niter, damp, thr_ene, thr_rms, e_offset, dip_offset, nbasis, northo, X, \
      S, T, V, dipints, NORVIK_CONTEXT_CALL, G, rho, orbitals, energy, dipole

#define NORVIK_HF_SCF_ROUTINE(SUFFIX, LOG, DIPOLE, OCCUPATION, BUILD)                            \
  extern "C" NORVIK_API void HF_SCF##SUFFIX(NORVIK_HF_SCF_ARGS) {                                \
    guarded([&] {                                                                                \
      const abi::Member member{LOG, DIPOLE, scf::Occupation::OCCUPATION, scf::FockBuild::BUILD}; \
      hf_scf(member, scf::AufbauRule(member.damped), NORVIK_HF_SCF_CALL);                        \
    });                                                                                          \
  }

NORVIK_SCF_MEMBERS(NORVIK_HF_SCF_ROUTINE)

// Initialisers: HF_INI's start rule (plain members), always the bare start
// (_NOINT), or the lone atom's start with free-atom shells (_ATOM).
#define NORVIK_HF_INI_ROUTINE(NAME, START, OCCUPATION, BUILD)                            \
  extern "C" NORVIK_API void NAME(NORVIK_HF_INI_ARGS) {                                  \
    guarded([&] {                                                                        \
      hf_ini(START, scf::FockBuild::BUILD, scf::AufbauRule(scf::Occupation::OCCUPATION), \
             NORVIK_HF_INI_CALL);                                                        \
    });                                                                                  \
  }
#define NORVIK_COUNT_RULE abi::initialiser_start(*istart, *natom, true)

NORVIK_HF_INI_ROUTINE(HF_INI, NORVIK_COUNT_RULE, aufbau, stored)
NORVIK_HF_INI_ROUTINE(HF_INI_MOLE, NORVIK_COUNT_RULE, aufbau, stored)
NORVIK_HF_INI_ROUTINE(HF_INI_ATOM, scf::StartPolicy::free_atom, atomic, stored)
NORVIK_HF_INI_ROUTINE(HF_INI_NOINT, scf::StartPolicy::core_hamiltonian, aufbau, stored)
NORVIK_HF_INI_ROUTINE(HF_INI_DIRECT, NORVIK_COUNT_RULE, aufbau, direct)
NORVIK_HF_INI_ROUTINE(HF_INI_MOLE_DIRECT, NORVIK_COUNT_RULE, aufbau, direct)
NORVIK_HF_INI_ROUTINE(HF_INI_ATOM_DIRECT, scf::StartPolicy::free_atom, atomic, direct)
NORVIK_HF_INI_ROUTINE(HF_INI_NOINT_DIRECT, scf::StartPolicy::core_hamiltonian, aufbau, direct)

// The symmetry-adapted C2/B2 members: the block rule over MAKESALC's
// combinations; the free-atom branch does not apply to two atoms.
#define NORVIK_SYM_SCF_ROUTINE(NAME)                                        \
  extern "C" NORVIK_API void NAME(NORVIK_HF_SCF_ARGS, NORVIK_SALC_ARGS) {   \
    guarded([&] {                                                           \
      abi::check_nbasis(*nbasis, "HF_SCF");                                 \
      const scf::Salc s = abi::salc_in(*nbasis, salc, salcblock);           \
      hf_scf(abi::Member{}, scf::SymmetryBlockRule(s), NORVIK_HF_SCF_CALL); \
    });                                                                     \
  }
#define NORVIK_SYM_INI_ROUTINE(NAME)                                                 \
  extern "C" NORVIK_API void NAME(NORVIK_HF_INI_ARGS, NORVIK_SALC_ARGS) {            \
    guarded([&] {                                                                    \
      abi::check_nbasis(*nbasis, "HF_Ini");                                          \
      const scf::Salc s = abi::salc_in(*nbasis, salc, salcblock);                    \
      hf_ini(abi::initialiser_start(*istart, *natom, false), scf::FockBuild::stored, \
             scf::SymmetryBlockRule(s), NORVIK_HF_INI_CALL);                         \
    });                                                                              \
  }

NORVIK_SYM_SCF_ROUTINE(HF_SCF_C2)
NORVIK_SYM_SCF_ROUTINE(HF_SCF_B2)
NORVIK_SYM_INI_ROUTINE(HF_INI_C2)
NORVIK_SYM_INI_ROUTINE(HF_INI_B2)
