// VWN3: Vosko–Wilk–Nusair correlation with the parameters fitted to the
// random-phase-approximation energies of the unpolarised and the polarised gas,
// interpolated in the spin polarisation by f(ζ):
//   ε = ε_P + (ε_F − ε_P) f(ζ)   [rydberg],   e = ε ρ.
// S. H. Vosko, L. Wilk and M. Nusair, Can. J. Phys. 58, 1200 (1980).
//
// Below a total density of 1e-50 bohr⁻³ energy, potential and kernel are zero.
// Batches as in point.h; each routine adds weight × its result to the output.
#pragma once

#include <span>

namespace norvik::dft::vwn3 {

void add_energies(std::span<const double> records, double weight, std::span<double> energies);
void add_potentials(std::span<const double> records, double weight, std::span<double> potentials);
void add_kernels(std::span<const double> records, double weight, std::span<double> kernels);

}  // namespace norvik::dft::vwn3
