// OP: the one-parameter progressive correlation functional, built on the
// Becke 88 exchange enhancement K of becke88.h (also inside PFOP):
//   β = q · (ρα^{1/3} K(xα))(ρβ^{1/3} K(xβ)) / (ρα^{1/3} K(xα) + ρβ^{1/3} K(xβ)),
//   e = −ρα ρβ (1.5214 β + 0.5764) / (β⁴ + 1.1284 β³ + 0.3183 β²),
// in atomic units, q = 2.367 the single parameter, fitted for Becke 88.
// T. Tsuneda, T. Suzumura and K. Hirao, J. Chem. Phys. 110, 10664 (1999).
//
// A point with ρα = 0 or ρβ = 0 (or one so small that its ρσ^{4/3} underflows),
// or with β = 0, gives zero energy and potential
// (the potential of the nearly polarised gas grows as ρσ^{−2/3} towards it).
// ∂e/∂γσσ is zero for a spin whose gradient is zero, as in Becke 88.
// Batches as in point.h; each routine adds weight × its result to the output.
#pragma once

#include <span>

namespace norvik::dft::op {

void add_energies(std::span<const double> records, double weight, std::span<double> energies);
void add_potentials(std::span<const double> records, double weight, std::span<double> potentials);

}  // namespace norvik::dft::op
