// The SCF cycle, written once for every method and every driver variant, and
// the start of an SCF (start density and first Fock matrix).
//
// What varies is plugged in: the Fock builder (Hartree–Fock, Kohn–Sham), the
// orbital rule of the density step (aufbau, free-atom shells, symmetry blocks)
// and the observer that hears each cycle (the run log of a driver).
//
// Everything the cycle works on belongs to the caller:
//   operators   S, T, V [eV], the orthogonalising matrix X and northo
//   dipints     (n, n, 3) position integrals about the origin [Å]
//   context     the two-electron integral context (store or integral-direct)
//   g           (n, n, 2) the builder's part of the Fock matrices [eV]; on
//               entry to a cycle it belongs to `rho`
//   rho         (n, n, 2) the density pair
//   orbitals    (n, n + 1, 2) orbitals and levels (see density_update.h)
// The cycle allocates its work blocks once on entry (two history blocks of
// 12·n², the Fock scratch of 2·n² and the update workspace) and frees them on
// return.
#pragma once

#include <functional>
#include <span>

#include "integrals/two/two_electron.h"
#include "scf/density_update.h"
#include "scf/fock_builder.h"
#include "scf/properties.h"
#include "setup/elements.h"

namespace norvik::scf {

// The fixed part of one geometry.
struct ScfSystem {
  Operators operators;
  std::span<const double> dipints;  // (n, n, 3)
  integrals::two::ContextView context;
  FockBuild build = FockBuild::stored;  // how the context builds G
};

struct ScfArrays {
  std::span<double> g;         // (n, n, 2)
  std::span<double> rho;       // (n, n, 2)
  std::span<double> orbitals;  // (n, n + 1, 2)
};

// The settings of one SCF call.
struct CycleSettings {
  int niter = 0;
  double damp = 0.5;
  double thr_ene = 0.0;  // [eV]
  double thr_rms = 0.0;
  bool with_dipole = true;  // false: the dipole stays zero
  // Cycles 2 … damped_cycles mix the new density in with weight `damp`; DIIS
  // extrapolates from the next cycle on (a start near the solution needs no
  // damping: 1 starts DIIS at cycle 2).
  int damped_cycles = 8;
  // Added to the electronic energy and dipole in what the observer hears
  // (the nuclear terms: the observer then hears molecular values).
  double e_offset = 0.0;  // [eV]
  Vec3 dip_offset{};      // [e·Å]
};

// What the observer hears after each cycle.
struct CycleRecord {
  int iscf = 0;
  double energy = 0.0;  // electronic + e_offset [eV]
  Vec3 dipole{};        // electronic + dip_offset [e·Å]
  double rmsd = 0.0;
  double comm2 = 0.0;  // [eV²]
};
using CycleObserver = std::function<void(const CycleRecord&)>;

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
// |ΔE| < thr_ene and rmsd < thr_rms (both strict, from cycle 2 on) or niter
// cycles are made.  Each cycle: the density step with `rule`, the builder's G,
// its energy, the dipole, then the observer.  niter ≤ 0 only evaluates the
// energy and dipole of the density as it stands.
ScfResult run_cycles(const ScfSystem& system, FockBuilder& builder, const OrbitalRule& rule,
                     const CycleSettings& settings, const ScfArrays& arrays,
                     const CycleObserver& observer = {});

// How an SCF starts.
enum class StartPolicy {
  core_hamiltonian,  // the orbitals of the bare one-electron Fock matrix T + V
  free_atoms,        // the superposed free-atom densities, shared out to the
                     // counts (the core-Hamiltonian start when they hold none)
  supplied,          // the density as supplied, rescaled to the counts
  free_atom,         // a lone atom: the featureless density, then one step
  current,           // the density as it stands (an earlier stage's result)
};

struct StartSettings {
  StartPolicy policy = StartPolicy::core_hamiltonian;
  std::span<const double> atomic;  // (n, n, 2) free-atom densities (free_atoms)
  setup::ElectronCount counts;
};

// Start density and the builder's first G:
//  - supplied: the density rescaled to the counts;
//  - free_atoms: the free-atom densities shared out (when they hold electrons);
//  - core_hamiltonian (and free_atoms without electrons): G cleared and one
//    step with damping 1.0 from the count carrier, that is the orbitals of T + V
//    occupied by `rule`;
//  - free_atom: the featureless free-atom density, G cleared and one step.
// Every case ends with one build from nothing.  Returns the energy and dipole
// of the start (de_final 0, cycles 0).
ScfResult initialise(const ScfSystem& system, FockBuilder& builder, const OrbitalRule& rule,
                     const StartSettings& settings, const ScfArrays& arrays);

}  // namespace norvik::scf
