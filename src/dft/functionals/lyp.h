// LYP: Lee–Yang–Parr correlation, in the closed form of Miehlich et al. with
// the gradient contractions γαα, γββ, γαβ:
//   e = −4a/(1 + dρ^{−1/3}) · ρα ρβ / ρ − 2^{11/3} C_F a b ω ρα ρβ (ρα^{8/3} + ρβ^{8/3})
//       + Gαα γαα + Gαβ γαβ + Gββ γββ,
//   ω = exp(−c ρ^{−1/3}) / (1 + d ρ^{−1/3}) · ρ^{−11/3},
//   δ = c ρ^{−1/3} + d ρ^{−1/3} / (1 + d ρ^{−1/3}),
//   Gαα = −ab ω [ (ρα ρβ/9)(1 − 3δ − (δ − 11) ρα/ρ) − ρβ² ]   (Gββ likewise),
//   Gαβ = −ab ω [ (ρα ρβ/9)(47 − 7δ) − (4/3) ρ² ],
// in atomic units.
// C. Lee, W. Yang and R. G. Parr, Phys. Rev. B 37, 785 (1988);
// B. Miehlich, A. Savin, H. Stoll and H. Preuss, Chem. Phys. Lett. 157, 200 (1989).
//
// Below a total density of 1e-9 bohr⁻³ energy and potential are zero.
// Batches as in point.h; each routine adds weight × its result to the output.
#pragma once

#include <span>

namespace norvik::dft::lyp {

void add_energies(std::span<const double> records, double weight, std::span<double> energies);
void add_potentials(std::span<const double> records, double weight, std::span<double> potentials);

}  // namespace norvik::dft::lyp
