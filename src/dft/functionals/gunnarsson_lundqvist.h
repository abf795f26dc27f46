// GL: Gunnarsson–Lundqvist correlation [rydberg],
//   ε_P = −0.0666 G(r_s/11.4),   ε_F = −0.0406 G(r_s/15.9),
//   G(y) = (1 + y³) ln(1 + 1/y) + y/2 − y² − 1/3,
// interpolated in the spin polarisation as ε = (1 − f(ζ)) ε_P + f(ζ) ε_F; e = ε ρ.
// O. Gunnarsson and B. I. Lundqvist, Phys. Rev. B 13, 4274 (1976).
//
// Below a total density of 1e-50 bohr⁻³ energy and potential are zero.
// Batches as in point.h; each routine adds weight × its result to the output.
#pragma once

#include <span>

namespace norvik::dft::gunnarsson_lundqvist {

// G(y) and dG/dy.  For y ≥ 4 (r_s above 46, low densities), where the closed
// form loses digits to cancellation (its terms grow as y² while G falls as
// 3/(4y)), they are summed from the series G = Σ_{n≥1} (−1)^{n+1} 3/(n(n+3)) y^{−n}.
struct Shape {
  double g, dg;
};
Shape shape(double y);

void add_energies(std::span<const double> records, double weight, std::span<double> energies);
void add_potentials(std::span<const double> records, double weight, std::span<double> potentials);

}  // namespace norvik::dft::gunnarsson_lundqvist
