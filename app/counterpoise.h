// The host's counterpoise job (record 18 "counterpoise") and the full CI of a
// two-electron Hartree-Fock job.
//
// Counterpoise: record 16 names fragment A (atoms first to last), fragment B
// is every other atom; the dimer itself has no ghost atoms.  The fragment
// SCFs run after the free atoms, at the input geometry; the section
// WRITE_BSSE follows the dimer's own result sections, with the dimer energy of
// the job's SCF.  The fragments' charges and multiplicities come from
// --fragments; without it they are neutral in their lowest multiplicity, except
// for HeH+, whose fragments are He and the bare proton H+ (COUNTERPOISE_HEHPL).
#pragma once

#include <vector>

#include "host_job.h"

namespace host {

struct CounterpoiseResult {
  double own[2] = {};    // E_A, E_B in their own bases [eV]
  double dimer[2] = {};  // E_A, E_B in the dimer basis [eV]
};

bool is_counterpoise(const Job& job);
// HeH+: one He, one H and charge +1; its free atoms are He and H+ (ATOMS_HEHPL).
bool is_hehpl(const Job& job);

// The fragment SCFs with the molecule's settings; each stores its integrals
// when they fit the memory limit (record 2), as the job's own SCF does.
CounterpoiseResult run_counterpoise(const Job& job);
void write_counterpoise(const Job& job, const CounterpoiseResult& result, double dimer_energy);

// A Hartree-Fock job ("HF") with exactly two electrons gets the full CI.
bool runs_full_ci(const Job& job);
// FULLCI_2E from the converged point's orbitals, then WRITE_H2_CI and
// WRITE_ENERGY_CI with the job's SCF energy `scf_energy` [eV] as the
// Hartree-Fock energy (the full CI does not depend on the orbitals, so a
// broken-symmetry solution of --stability serves as well: its alpha orbitals
// span the space); returns the full-CI energy [eV].
double run_full_ci(const Job& job, int nbasis, const std::vector<double>& orbitals,
                   double scf_energy);

}  // namespace host
