// The MP2 step of a job whose theory is MP2: after the Hartree-Fock point (or
// the optimisation, at its last geometry), the MP2 energy with its report
// section, and the caution box when its reference is doubtful.
#pragma once

#include <vector>

#include "host_job.h"

namespace host {

struct Mp2Result {
  double correction = 0.0;     // E(2) [eV]
  double same_spin = 0.0;      // [eV]
  double opposite_spin = 0.0;  // [eV]
  double total = 0.0;          // SCF energy + E(2) [eV]
  bool frozen_core = false;
  bool in_memory = true;  // the half-transformed integrals fit record 2 in one pass
};

// Whether the job's theory record asks for MP2.
bool is_mp2(const Job& job);

// The MP2 energy of the converged point (S, rho and orbitals of the n basis
// functions at job.pos, SCF energy [eV]), written to the report.
Mp2Result run_mp2(const Job& job, int n, const std::vector<double>& S,
                  const std::vector<double>& rho, const std::vector<double>& orbitals,
                  double scf_energy, bool converged);

}  // namespace host
