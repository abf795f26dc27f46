// VWN5: Vosko–Wilk–Nusair correlation with the parameters fitted to the
// Ceperley–Alder Monte Carlo energies, interpolated in the spin polarisation
// through the spin stiffness α_c (VWN's formula 5):
//   ε = ε_P + α_c [f(ζ)/f''(0)] (1 − ζ⁴) + (ε_F − ε_P) f(ζ) ζ⁴   [rydberg],
//   e = ε ρ.
// S. H. Vosko, L. Wilk and M. Nusair, Can. J. Phys. 58, 1200 (1980).
//
// Below a total density of 1e-50 bohr⁻³ energy, potential and kernel are zero.
// Batches as in point.h; each routine adds weight × its result to the output.
#pragma once

#include <span>

namespace norvik::dft::vwn5 {

void add_energies(std::span<const double> records, double weight, std::span<double> energies);
void add_potentials(std::span<const double> records, double weight, std::span<double> potentials);
void add_kernels(std::span<const double> records, double weight, std::span<double> kernels);

}  // namespace norvik::dft::vwn5
