// S: Slater exchange, the exchange of the spin-polarised uniform electron gas,
//   e = −C_x (ρα^{4/3} + ρβ^{4/3}).
// P. A. M. Dirac, Proc. Cambridge Philos. Soc. 26, 376 (1930);
// J. C. Slater, Phys. Rev. 81, 385 (1951).
//
// Batches as in point.h; each routine adds weight × its result to the output.
#pragma once

#include <span>

namespace norvik::dft::slater {

void add_energies(std::span<const double> records, double weight, std::span<double> energies);
void add_potentials(std::span<const double> records, double weight, std::span<double> potentials);
// ∂²e/∂ρσ² is zero where ρσ ≤ 1e-11 Å⁻³; the mixed derivative is zero.
void add_kernels(std::span<const double> records, double weight, std::span<double> kernels);

}  // namespace norvik::dft::slater
