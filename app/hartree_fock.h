// Step 3 and 4 of a Hartree-Fock job in the host: the free atoms, then the
// library's point at the input geometry (integrals, SCF, run log and its
// report notes), then the result sections.
#pragma once

#include "host_job.h"

namespace host {

// Smallest overlap eigenvalue kept by the orthogonalisation of the basis.
inline constexpr double kOrthogonalityThreshold = 1.0e-8;

struct PointResult {
  double energy = 0.0;    // molecular energy [eV]
  double dipole[3] = {};  // total dipole [eA]
  double de_final = 0.0;  // last energy change [eV]
  int nbasis = 0;
  int northo = 0;
  bool in_core = true;
  int cycles = 0;           // SCF cycles made
  bool converged = false;   // both thresholds met before the iteration limit
  double rmsd = 0.0;        // RMS density change of the last cycle
  double commutator = 0.0;  // |FPS - SPF| of the last cycle [hartree]
};

// Runs the free atoms and the single point, writing their report sections and the
// run log; returns the molecular energy and dipole.
PointResult run_hartree_fock(const Job& job);

}  // namespace host
