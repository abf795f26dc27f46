// Element tables (H to Xe) and the electron-count rule shared by job setup, the
// free-atom runs and the counterpoise jobs.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace norvik::setup {

// Z of a two-character, blank-padded, case-sensitive symbol ("H ", "He", "Cl").
int symbol_to_z(std::string_view symbol);
// The two-character blank-padded symbol of Z = 1 … 54.
std::string z_to_symbol(int z);
// Full English name ("Phosphorus") of the element with the given symbol.
std::string symbol_to_name(std::string_view symbol);
// Atomic mass in atomic mass units; 0.0 for Z = 0 (a ghost or a dummy centre).
double atomic_mass(int z);
// Ground-state spin multiplicity of the free atom.
int hunds_rule_multiplicity(int z);

struct ElectronCount {
  int alpha = 0;
  int beta = 0;
  int total() const { return alpha + beta; }
};

// Alpha and beta electron counts of `zsum` nuclear charge with the given
// molecular charge and multiplicity 2S+1.  Throws norvik::Error with
// `routine_label` ("Nelectron", "makeIniRho") in the message when the
// combination is impossible.
ElectronCount count_electrons(int zsum, int charge, int multiplicity,
                              std::string_view routine_label = "Nelectron");

// A copy of the per-atom charges in which every atom but `atom` (0-based) has 0.
void charges_of_one_atom(int atom, std::span<const int> charges, std::span<int> out);

}  // namespace norvik::setup
