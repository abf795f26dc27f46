// Step 3 and 4 of a Hartree-Fock job in the host: the free atoms, then the
// library's point at the input geometry (integrals, SCF, run log and its
// report notes), then the result sections.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "excited_states.h"
#include "host_job.h"
#include "mp2.h"
#include "stability.h"
#include "vibrations.h"

namespace host {

// Smallest overlap eigenvalue kept by the orthogonalisation of the basis.
inline constexpr double kOrthogonalityThreshold = 1.0e-8;

// Base radius of the grid templates: one bohr, so that an element's radial
// scale is its Slater radius n*²/Z_eff in bohr.  Against Psi4 on a converged
// grid it leaves 3e-6 to 9e-6 hartree in B3LYP energies of H2O, N2 and HF
// (docs/grid.md).
inline constexpr double kGridRadius = NORVIK_BOHR_ANGSTROM;

// What an optimisation did.
struct OptimisationResult {
  std::string driver;  // which optimiser ran
  bool converged = false;
  int cycles = 0, points = 0, gradients = 0;
  double largest_gradient = 0.0;  // of the last accepted point [eV/A]
  std::vector<double> gradient;   // (3, natom) at the last accepted point [eV/A]
};

// Wall-clock seconds of the parts of a job, for the result file (0: not run).
struct PartTimes {
  double atoms = 0.0, scf = 0.0, properties = 0.0, vibrations = 0.0;
};

struct PointResult {
  double energy = 0.0;    // molecular energy [eV]
  double dipole[3] = {};  // total dipole [eA]
  double de_final = 0.0;  // last energy change [eV]
  int nbasis = 0;
  int northo = 0;
  bool in_core = true;
  int cycles = 0;             // SCF cycles made
  bool unrestricted = false;  // alpha and beta densities differ (open shell or broken symmetry)
  bool converged = false;     // both thresholds met before the iteration limit
  double rmsd = 0.0;          // RMS density change of the last cycle
  double commutator = 0.0;    // |FPS - SPF| of the last cycle [hartree]
  std::optional<OptimisationResult> optimisation;  // record 6 > 0: the optimisation
  std::optional<VibrationResult> vibrations;       // record 10 = 1: the analysis
  std::optional<StabilityOutcome> stability;       // --stability: the check
  std::optional<Mp2Result> mp2;                    // theory MP2: the MP2 energy
  std::optional<ExcitationSummary> excitations;    // an excited-state theory

  // What the result files take from the point (json_result.h, molden.h).
  double parts[3] = {};     // electronic, nuclear repulsion, molecular energy [eV]
  double xc[4] = {};        // Kohn-Sham: Exc, its exchange and correlation parts [eV], electrons
  double free_atoms = 0.0;  // sum of the free atoms' energies [eV]
  std::vector<double> orbitals;  // (n, n+1, 2): coefficients, levels [eV] in column n+1
  std::vector<double> mulliken_charges, mulliken_spins, lowdin_charges, lowdin_spins;
  std::optional<std::array<double, 9>> quadrupole;  // traceless [e A^2]
  std::optional<double> s_squared;                  // <S^2> of an unrestricted point
  PartTimes times;
};

// Runs the free atoms and the single point (or, with optimisation cycles, the
// optimisation, which moves job.pos to the last accepted geometry), writing their
// report sections and the run log; returns the molecular energy and dipole.
PointResult run_hartree_fock(Job& job);

// The basis functions and shells of the job's molecule, from each atom's shell
// layout.
struct ShellCount {
  norvik_int functions = 0;
  norvik_int shells = 0;
};
ShellCount basis_size(const Job& job);

}  // namespace host
