// The Boys–Bernardi counterpoise correction of a dimer's interaction energy:
// each fragment's energy in its own basis and in the whole dimer's basis (the
// partner's atoms as ghosts: their basis functions, no nuclei, no electrons),
// every one an SCF of the one point of the surface from the bare one-electron
// start, without dipole.
#pragma once

#include <array>
#include <optional>
#include <span>

#include "scf/single_point.h"

namespace norvik::properties {

// How the dimer splits: fragment A is the atoms first … last (0-based,
// inclusive), fragment B all the others.  Each fragment has a charge and a
// multiplicity 2S+1; multiplicity 0 takes the lowest one of its electron count
// (1 for an even count, 2 for an odd one).
struct Fragments {
  int first = 0;
  int last = 0;
  std::array<int, 2> charge{};
  std::array<int, 2> multiplicity{};
};

// The fragment energies [eV] (electronic + the fragment's own nuclear
// repulsion), index 0 fragment A, 1 fragment B.  A fragment without electrons
// (a bare proton) has no SCF: its energy is its nuclear repulsion, in either basis.
struct CounterpoiseEnergies {
  std::array<double, 2> own{};    // in the fragment's own basis
  std::array<double, 2> dimer{};  // in the dimer's basis
};

// The fragment SCFs of the dimer `molecule` (every atom real), with the
// Hartree–Fock settings `scf` and, for a Kohn–Sham method, its stage (the
// grid on the fragment's atoms and ghosts alike).  Throws norvik::Error for a
// fragment range outside the molecule, an empty fragment or an impossible
// electron count.
CounterpoiseEnergies counterpoise(const scf::JobControl& job, const scf::ScfControl& scf,
                                  const scf::MoleculeView& molecule, const Fragments& fragments,
                                  const std::optional<scf::KohnShamStage>& kohn_sham);

}  // namespace norvik::properties
