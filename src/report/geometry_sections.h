// The report sections of the geometry optimiser: the positions and the energy
// gradient of each cycle, the largest gradient component of a large system,
// the gradient summed over atoms, and one frame of the trajectory file.
// Like the other sections, each returns its lines; report lines begin with
// "#" and a section opens with a "#" line.  Positions (3, N) Å, gradients
// (3, N) eV/Å, elements the atomic numbers (0: a ghost centre, "Bq").
#pragma once

#include <span>

#include "report/sections.h"

namespace norvik::report {

// The positions of the atoms in optimisation cycle `cycle`.
Lines positions_of_cycle(std::span<const double> positions, std::span<const int> elements,
                         int cycle);

// The energy gradient, one line per atom.
Lines gradient(std::span<const double> gradient, std::span<const int> elements);

// Only the component of largest magnitude, its atom and its axis (the first
// one on a tie).
Lines largest_gradient(std::span<const double> gradient, std::span<const int> elements);

// The gradient summed over the atoms: zero for a translation-invariant energy,
// so its size measures the error of a computed gradient.
Lines gradient_sum(std::span<const double> gradient);

// One frame of an .xyz trajectory (no "#": viewers read the file as it is):
// the atom count, a comment with the cycle and the energy [eV], then
// "symbol x y z" per atom.
Lines xyz_frame(std::span<const double> positions, std::span<const int> elements, int cycle,
                double energy);

}  // namespace norvik::report
