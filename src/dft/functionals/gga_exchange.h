// The per-spin form shared by the gradient-corrected exchange functionals B and
// PF, which differ only in their enhancement function K:
//   e = −½ Σσ ρσ^{4/3} K(xσ) · a0 · hartree,   xσ = |∇ρσ| / ρσ^{4/3},
// with ρ in Å⁻³ and |∇ρ| in Å⁻⁴ (xσ is dimensionless, so it needs no
// conversion).  K(0) = 2 C_x is the uniform gas, where the form is Slater's.
//
// Derivatives, per spin:
//   ∂e/∂ρσ  = −(2/3) ρσ^{1/3} [K(xσ) − xσ K'(xσ)] · a0 · hartree,
//   ∂e/∂γσσ = −K'(xσ) / (4 |∇ρσ|) · a0 · hartree,   ∂e/∂γαβ = 0.
// Zero-density rules: for ρσ = 0 the reduced gradient is taken as 1 instead of
// dividing by zero (the term vanishes with ρσ^{4/3}), and ∂e/∂γσσ is zero both
// for ρσ = 0 (the term is zero for every gradient) and for |∇ρσ| = 0.  A spin
// density so small that ρσ^{4/3} underflows counts as zero.
#pragma once

#include <cmath>

#include "dft/functionals/point.h"

namespace norvik::dft {

// An enhancement function and its derivative at one reduced gradient.
struct Enhancement {
  double k = 0.0;
  double dk = 0.0;
};

// The reduced gradient of one spin, 1 where the spin density is zero.
inline double reduced_gradient(double rho43, double gamma) {
  return rho43 == 0.0 ? 1.0 : std::sqrt(gamma) / rho43;
}

template <class EnhancementOf>
double gga_exchange_energy(const Point& p, EnhancementOf enhancement) {
  const double a43 = p.rho_a * std::cbrt(p.rho_a);
  const double b43 = p.rho_b * std::cbrt(p.rho_b);
  const double ka = enhancement(reduced_gradient(a43, p.gamma_aa)).k;
  const double kb = enhancement(reduced_gradient(b43, p.gamma_bb)).k;
  return -0.5 * (a43 * ka + b43 * kb) * units::kBohrHartree;
}

// (∂e/∂ρσ, ∂e/∂γσσ) of one spin.
template <class EnhancementOf>
void gga_exchange_spin_potential(double rho, double gamma, EnhancementOf enhancement, double& v_rho,
                                 double& v_gamma) {
  const double r13 = std::cbrt(rho);
  const double rho43 = rho * r13;
  const double x = reduced_gradient(rho43, gamma);
  const Enhancement k = enhancement(x);
  v_rho = -(2.0 / 3.0) * r13 * (k.k - x * k.dk) * units::kBohrHartree;
  const double norm = std::sqrt(gamma);
  v_gamma = (rho43 == 0.0 || norm == 0.0) ? 0.0 : -k.dk / (4.0 * norm) * units::kBohrHartree;
}

template <class EnhancementOf>
Potential gga_exchange_potential(const Point& p, EnhancementOf enhancement) {
  Potential v;
  gga_exchange_spin_potential(p.rho_a, p.gamma_aa, enhancement, v.rho_a, v.gamma_aa);
  gga_exchange_spin_potential(p.rho_b, p.gamma_bb, enhancement, v.rho_b, v.gamma_bb);
  return v;
}

}  // namespace norvik::dft
