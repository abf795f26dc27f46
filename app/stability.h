// The host's stability check of a converged SCF (--stability): the lowest
// eigenvalues of the orbital Hessian in the report and, while one is
// negative, a new SCF from the density turned along its rotation, kept when
// it lands lower.
#pragma once

#include <vector>

#include "host_job.h"
#include "norvik.h"

namespace host {

// The solution the stability check ends on, when it left the first one.
struct StabilityOutcome {
  int restarts = 0;          // SCFs that reached a lower solution
  bool stable = true;        // the last analysis found no negative eigenvalue
  double lowest = 0.0;       // its lowest eigenvalue [eV]
  double energy_drop = 0.0;  // first energy minus last [eV]
};

// The converged point of `job` at job.pos in arrays as SCF_1POINT returns them
// (S, rho, orbitals, energy, dipole and the SCF's other outputs); on a restart
// that lowers the energy they are replaced by the new point's.  `follow`
// false: the analysis only.
struct PointArrays {
  std::vector<double>& S;
  std::vector<double>& rho;
  std::vector<double>& orbitals;
  double* energy;  // 3: electronic, nuclear, molecular [eV]
  double* dipole;  // 3 [e A]
  double* xc;      // 4
  double& de_final;
  norvik_int& northo;
  norvik_int& in_core;
  norvik_int& ncycle;
  norvik_bool& converged;
  double& rmsd;
  double& commutator;
};
StabilityOutcome check_stability(const Job& job, norvik_int n, bool follow, PointArrays point);

}  // namespace host
