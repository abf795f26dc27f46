// What the exported SCF routines share: the host's matrices as core operators
// and arrays, the start rule of the initialisers, and the observers that write
// the run log and the report sections of a point.
#pragma once

#include <optional>
#include <string_view>

#include "abi/abi_support.h"
#include "norvik/integrals_two.h"
#include "norvik/scf.h"
#include "scf/cycle.h"
#include "scf/single_point.h"
#include "scf/symmetry_update.h"

namespace norvik::abi {

// A basis size below one is refused before any array is touched:
// "Wrong nbasis in ROUTINE." and the size.
void check_nbasis(norvik_int n, std::string_view routine);

// The basis size of the molecule in the named basis, which must be the
// host's: otherwise "Wrong nbasis in ROUTINE." and both numbers.
int checked_nbasis(std::string_view basis, const scf::MoleculeView& molecule, norvik_int nbasis,
                   const char* routine);

// The grid of a Kohn–Sham point: 0 the standard templates, 1 the dense grid;
// any other value stops with "Wrong grid level in ROUTINE." and the value.
dft::GridLevel grid_level_in(norvik_int level, std::string_view routine);

// What distinguishes the members of a driver family.
struct Member {
  bool log = true;                                   // the run log is written (not _WOLOG, _PART)
  bool dipole = true;                                // the dipole is computed (not _PART)
  scf::Occupation damped = scf::Occupation::aufbau;  // _ATOM: free-atom shells
  scf::FockBuild build = scf::FockBuild::stored;     // _DIRECT: integral-direct
};

// The members of a driver family, once for both: X(suffix, log, dipole,
// occupation of the damped cycles, Fock build).
#define NORVIK_SCF_MEMBERS(X)                   \
  X(, true, true, aufbau, stored)               \
  X(_MOLE, true, true, aufbau, stored)          \
  X(_ATOM, true, true, atomic, stored)          \
  X(_WOLOG, false, true, aufbau, stored)        \
  X(_PART, false, false, aufbau, stored)        \
  X(_DIRECT, true, true, aufbau, direct)        \
  X(_MOLE_DIRECT, true, true, aufbau, direct)   \
  X(_ATOM_DIRECT, true, true, atomic, direct)   \
  X(_WOLOG_DIRECT, false, true, aufbau, direct) \
  X(_PART_DIRECT, false, false, aufbau, direct)

// The system of a driver call: the host's operators, dipole integrals and
// two-electron context.
scf::ScfSystem system_of(scf::FockBuild build, const norvik_int* nbasis, const norvik_int* northo,
                         const double* X, const double* S, const double* T, const double* V,
                         const double* dipints, NORVIK_CONTEXT_ARGS);

// The run log of a member: one line per cycle to `logfile`, or none (_WOLOG,
// _PART).
scf::CycleObserver member_log(const Member& member, const char* logfile, norvik_int iopt,
                              norvik_int isrc);

// The cycle settings of a driver call.
scf::CycleSettings cycle_settings(const Member& member, const norvik_int* niter, const double* damp,
                                  const double* thr_ene, const double* thr_rms,
                                  const double* e_offset, const double* dip_offset);

// The fixed operators from the host's S, T, V and X.
scf::Operators operators(const norvik_int* nbasis, const double* S, const double* T,
                         const double* V, const norvik_int* northo, const double* X);

// The electron counts that a density pair carries, as the density update
// counts them: the nearest integers of Tr(ρ_σ S).
setup::ElectronCount counts_of(norvik_int n, const double* S, const double* rho);

// The density step's arrays on the host's memory.
scf::StepArrays step_arrays(norvik_int nbasis, const double* G, double* fockhist, double* errhist,
                            double* scratch, double* rho, double* orbitals);

// The SCF arrays G, rho, orbitals on the host's memory.
scf::ScfArrays scf_arrays(norvik_int nbasis, double* G, double* rho, double* orbitals);

// The start of HF_INI and HF_1POINT: a start flag other than 1 rescales the
// supplied density; a fresh start of more than nine atoms takes the free-atom
// densities when `atoms_apply`; every other fresh start is the bare
// one-electron one.
scf::StartPolicy initialiser_start(norvik_int istart, norvik_int natom, bool atoms_apply);

// The combinations handed back by MAKESALC; inconsistent blocks stop with
// "Invalid symmetry blocks in updaterho." and the first and last entries.
scf::Salc salc_in(norvik_int n, const double* salc, const norvik_int* salcblock);

// The run log of a driver: one fixed-format line per cycle appended to
// `logfile` (a blank name writes nothing, and the observer is then empty).
scf::CycleObserver run_log(std::string_view logfile, int iopt, int isrc);

// The report and progress of one point of a job: the basis dependency and the
// in-core choice (against the limit the point used) to `report`, "Integrals
// ok." on standard output, one run-log line per cycle to `logfile`.
scf::PointHooks point_report(std::string_view report, std::string_view logfile, int iopt,
                             double thr_orth);

// Whether a method runs Hartree–Fock ("HF", "MP2", "RPA", "TDA").
bool is_hartree_fock(std::string_view method);

// The Kohn–Sham stage that a method names (none for the Hartree–Fock
// methods): its functional and exact exchange, the second of each settings
// pair, and the grid.
std::optional<scf::KohnShamStage> kohn_sham_stage(const char* method, const norvik_int* niter,
                                                  const double* damp, const double* thr_ene,
                                                  const double* thr_rms, const double* grid_radius,
                                                  const norvik_int* grid_level,
                                                  std::string_view routine);

}  // namespace norvik::abi
