// PL: the Perdew–Zunger parametrisation of the Ceperley–Alder correlation
// energy of the uniform gas [hartree], for the unpolarised (P) and the fully
// polarised (F) gas,
//   r_s ≥ 1: ε = γ / (1 + β1 √r_s + β2 r_s),
//   r_s < 1: ε = A ln r_s + B + C r_s ln r_s + D r_s,
// interpolated in the spin polarisation as ε = (1 − f(ζ)) ε_P + f(ζ) ε_F; e = ε ρ.
// J. P. Perdew and A. Zunger, Phys. Rev. B 23, 5048 (1981), appendix C.
//
// Below a total density of 1e-50 bohr⁻³ energy and potential are zero.
// Batches as in point.h; each routine adds weight × its result to the output.
#pragma once

#include <span>

namespace norvik::dft::perdew_zunger {

void add_energies(std::span<const double> records, double weight, std::span<double> energies);
void add_potentials(std::span<const double> records, double weight, std::span<double> potentials);

}  // namespace norvik::dft::perdew_zunger
