// The excited states of a job whose theory asks for them (record 2 of the
// molecule file): TDA (CIS) and RPA (TDHF) on the Hartree–Fock point; TDKS,
// TDKS5, TDKS3 (full TDDFT) and KSTDA, KSTDA5, KSTDA3 (Tamm–Dancoff) on the
// SVWN5 or SVWN3 Kohn–Sham point.  At the final point: the table of states, the
// dominant orbital transitions, and the broadened UV–vis spectrum as a
// two-column file.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host_job.h"
#include "norvik/export.h"

namespace host {

// States per spin type when --states is not given.
inline constexpr int kDefaultStates = 10;
// The most states per spin type that --states takes.
inline constexpr int kMaxStates = 200;

// Whether the theory (trimmed) asks for excited states, and with the
// Tamm–Dancoff approximation.
bool is_excited_state_theory(const std::string& theory);
bool is_tamm_dancoff(const std::string& theory);

struct ExcitationSummary {
  int states = 0;
  double lowest = 0.0;     // [eV]
  double strongest = 0.0;  // energy of the largest oscillator strength [eV]
  double strongest_strength = 0.0;
  bool skipped_for_memory = false;
  // Every state as the library gives them (singlets first, then triplets, each
  // ascending): spin (1 singlet, 3 triplet, 0 unrestricted), energy [eV],
  // oscillator strength, transition dipole (3 per state) [e A].
  std::vector<int> spin;
  std::vector<double> energy, strength, dipole;
};

// The excited states of the converged point rho (n, n, 2), orbitals
// (n, n + 1, 2), written to the report and to job.uv_file.
ExcitationSummary run_excited_states(const Job& job, norvik_int n, const std::vector<double>& rho,
                                     const std::vector<double>& orbitals);

}  // namespace host
