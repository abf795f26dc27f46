// The Hartree–Fock SCF: the initialisers (start density and first Fock matrix)
// and the SCF cycle of every driver variant.
//
// Everything the cycle works on belongs to the caller:
//   operators   S, T, V [eV], the orthogonalising matrix X and northo
//   dipints     (n, n, 3) position integrals about the origin [Å]
//   context     the two-electron integral context (store or integral-direct)
//   g           (n, n, 2) the two-electron part of the Fock matrices [eV],
//               J[P_α + P_β] − K[P_σ]; on entry to a cycle it belongs to `rho`
//   rho         (n, n, 2) the density pair
//   orbitals    (n, n + 1, 2) orbitals and levels (see density_update.h)
// The cycle allocates its work blocks once on entry (two history blocks of
// 12·n², the Fock scratch of 2·n², the update workspace and, integral-direct,
// the density the two-electron part was built from) and frees them on return.
#pragma once

#include <array>
#include <functional>
#include <span>
#include <string_view>

#include "integrals/two/two_electron.h"
#include "scf/density_update.h"
#include "scf/properties.h"
#include "setup/elements.h"

namespace norvik::scf {

// How the two-electron part is built each cycle.
enum class FockBuild {
  stored,  // from the integral store
  direct,  // integral-direct, incremental: G += G[P − P_previous]
};

struct ScfSystem {
  Operators operators;
  std::span<const double> dipints;  // (n, n, 3)
  integrals::two::ContextView context;
};

struct ScfArrays {
  std::span<double> g;         // (n, n, 2)
  std::span<double> rho;       // (n, n, 2)
  std::span<double> orbitals;  // (n, n + 1, 2)
};

// One SCF call: the settings of the host and what the variant does.
struct CycleSettings {
  int iopt = 0;
  int isrc = 0;
  std::string_view logfile;  // blank or empty: no run log
  int niter = 0;
  double damp = 0.5;
  double thr_ene = 0.0;  // [eV]
  double thr_rms = 0.0;
  double e_offset = 0.0;  // added to the electronic energy in the log [eV]
  Vec3 dip_offset{};      // added to the electronic dipole in the log [e·Å]

  bool write_log = true;    // false: _WOLOG and _PART
  bool with_dipole = true;  // false: _PART (the dipole stays zero)
  FockBuild build = FockBuild::stored;
  Occupation damped_occupation = Occupation::aufbau;  // atomic: _ATOM
};

struct ScfResult {
  double energy = 0.0;  // electronic energy of the last cycle [eV]
  Vec3 dipole{};        // electronic dipole of the last cycle [e·Å]
  double de_final = 0.0;
  int cycles = 0;  // cycles made
  bool converged = false;
  double rmsd = 0.0;   // of the last cycle
  double comm2 = 0.0;  // of the last cycle [eV²]
};

// The SCF cycle: cycle 1 undamped, damping through cycle 8, DIIS after, until
// |ΔE| < thr_ene and rmsd < thr_rms (both strict) or niter cycles are made.
ScfResult run_scf(const ScfSystem& system, const CycleSettings& settings, const ScfArrays& arrays);

// The density update of one cycle: a DIIS step when `diis`, otherwise a step
// damped with `damping` (1.0 in cycle 1).
using DensityStep =
    std::function<StepResult(bool diis, double damping, const StepArrays& arrays, Workspace& work)>;

// The cycle shared by every driver (the plain and the symmetry-restricted
// updates): work blocks, Fock build, energy, dipole, log line and the
// convergence test around the given density update.
ScfResult run_cycles(const ScfSystem& system, const CycleSettings& settings,
                     const ScfArrays& arrays, const DensityStep& step);

// How an initialiser starts.
enum class StartKind {
  standard,   // HF_INI: the supplied density, the free atoms, or the bare start
  bare,       // HF_INI_NOINT: always the bare one-electron start
  free_atom,  // HF_INI_ATOM: the featureless free-atom start, atomic occupation
};

struct StartSettings {
  StartKind kind = StartKind::standard;
  int mode = 1;                    // 1: a fresh start; anything else: rescale the supplied density
  int natom = 0;                   // more than 9 atoms start from the free-atom densities
  std::span<const double> atomic;  // (n, n, 2) block-diagonal free-atom densities
  setup::ElectronCount counts;
  FockBuild build = FockBuild::stored;
};

// Start density and its two-electron part:
//  - standard, mode ≠ 1: the supplied density rescaled to the counts;
//  - standard, mode = 1, natom > 9: the free-atom densities shared out (when
//    they are given and hold electrons; otherwise the bare start);
//  - otherwise (and always for bare): the two-electron part cleared and one
//    damped update with damping factor 1.0 from the count carrier, that is the
//    orbitals of the bare one-electron Fock matrix T + V;
//  - free_atom: the featureless free-atom start, the two-electron part cleared
//    and one update with the atomic occupation.
// Every case ends with one Fock build from the start density.  Returns the
// energy and dipole of the start (de_final 0, cycles 0).
ScfResult initialise(const ScfSystem& system, const StartSettings& settings,
                     const ScfArrays& arrays);

// The two-electron part of `rho` into `g`.  Integral-direct, `previous` is the
// density that `g` belongs to; it becomes `rho`.
void fock_build(const ScfSystem& system, FockBuild build, std::span<const double> rho,
                std::span<double> previous, std::span<double> g);

}  // namespace norvik::scf
