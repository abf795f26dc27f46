// The interpolation formula of Vosko, Wilk and Nusair for the correlation
// energy per electron of the uniform gas, in x = √r_s (r_s in bohr) [rydberg]:
//   ε(x) = A { ln(x²/X(x)) + (2b/Q) atan(Q/(2x + b))
//            − (b x0/X(x0)) [ ln((x − x0)²/X(x)) + (2(b + 2x0)/Q) atan(Q/(2x + b)) ] },
//   X(x) = x² + b x + c,   Q = √(4c − b²).
// S. H. Vosko, L. Wilk and M. Nusair, Can. J. Phys. 58, 1200 (1980), eq. (4.4).
//
// VWN3 (vwn3.h) and VWN5 (vwn5.h) differ in their parameter sets and in the
// way they interpolate between the unpolarised and the polarised gas.
#pragma once

#include <cmath>

#include "dft/functionals/point.h"
#include "dft/functionals/spin_interpolation.h"

namespace norvik::dft {

// One parameter set: x0 (dimensionless), A [rydberg], b, c.
struct VwnParameters {
  double x0 = 0.0;
  double a = 0.0;
  double b = 0.0;
  double c = 0.0;
};

// ε(x) (ECVWN).
inline double vwn_value(const VwnParameters& p, double x) {
  const double q = std::sqrt(4.0 * p.c - p.b * p.b);
  const double xx = x * x + p.b * x + p.c;
  const double xx0 = p.x0 * p.x0 + p.b * p.x0 + p.c;
  const double at = std::atan(q / (2.0 * x + p.b));
  const double dx0 = x - p.x0;
  return p.a * (std::log(x * x / xx) + 2.0 * p.b / q * at -
                p.b * p.x0 / xx0 * (std::log(dx0 * dx0 / xx) + 2.0 * (p.b + 2.0 * p.x0) / q * at));
}

// dε/dx (ECDSH):
//   A { 2/x − (2x + b)/X − 4b/((2x + b)² + Q²)
//       − (b x0/X(x0)) [ 2/(x − x0) − (2x + b)/X − 4(2x0 + b)/((2x + b)² + Q²) ] }.
inline double vwn_derivative(const VwnParameters& p, double x) {
  const double q2 = 4.0 * p.c - p.b * p.b;
  const double xx = x * x + p.b * x + p.c;
  const double xx0 = p.x0 * p.x0 + p.b * p.x0 + p.c;
  const double t = 2.0 * x + p.b;
  const double w = t * t + q2;
  return p.a * (2.0 / x - t / xx - 4.0 * p.b / w -
                p.b * p.x0 / xx0 * (2.0 / (x - p.x0) - t / xx - 4.0 * (2.0 * p.x0 + p.b) / w));
}

// d²ε/dx², for the kernels:
//   A { −2/x² − (2X − (2x + b)²)/X² + 16b(2x + b)/W²
//       − (b x0/X(x0)) [ −2/(x − x0)² − (2X − (2x + b)²)/X² + 16(2x0 + b)(2x + b)/W² ] },
// W = (2x + b)² + Q².
inline double vwn_second_derivative(const VwnParameters& p, double x) {
  const double q2 = 4.0 * p.c - p.b * p.b;
  const double xx = x * x + p.b * x + p.c;
  const double xx0 = p.x0 * p.x0 + p.b * p.x0 + p.c;
  const double t = 2.0 * x + p.b;
  const double w = t * t + q2;
  const double rational = (2.0 * xx - t * t) / (xx * xx);
  const double dx0 = x - p.x0;
  return p.a * (-2.0 / (x * x) - rational + 16.0 * p.b * t / (w * w) -
                p.b * p.x0 / xx0 *
                    (-2.0 / (dx0 * dx0) - rational + 16.0 * (2.0 * p.x0 + p.b) * t / (w * w)));
}

// x = √r_s of a total density in bohr⁻³.
inline double vwn_x(double rho_au) {
  return std::sqrt(std::cbrt(units::kThreeOverFourPi / rho_au));
}

// The chain rule through x and ζ shared by both VWN forms.  With ε(x, ζ) in
// rydberg, e = ε ρ and x ∝ ρ^{−1/6}:
//   ∂e/∂ρα = ε − (x/6) ε_x + (1 − ζ) ε_ζ,   ∂e/∂ρβ = ε − (x/6) ε_x − (1 + ζ) ε_ζ,
// and ρ times the second derivatives
//   ρ e_αα = −(5x/36) ε_x + (x²/36) ε_xx − (x/3)(1 − ζ) ε_xζ + (1 − ζ)² ε_ζζ,
//   ρ e_ββ = −(5x/36) ε_x + (x²/36) ε_xx + (x/3)(1 + ζ) ε_xζ + (1 + ζ)² ε_ζζ,
//   ρ e_αβ = −(5x/36) ε_x + (x²/36) ε_xx + (x/3) ζ ε_xζ − (1 − ζ²) ε_ζζ.
struct VwnDerivatives {
  double e = 0.0;    // ε
  double ex = 0.0;   // ∂ε/∂x
  double ez = 0.0;   // ∂ε/∂ζ
  double exx = 0.0;  // ∂²ε/∂x²
  double exz = 0.0;  // ∂²ε/∂x∂ζ
  double ezz = 0.0;  // ∂²ε/∂ζ²
};

// (∂e/∂ρα, ∂e/∂ρβ) [eV] of e = ε ρ · rydberg.
inline Potential vwn_potential(const VwnDerivatives& d, double x, double zeta) {
  const double common = d.e - x / 6.0 * d.ex;
  return {(common + (1.0 - zeta) * d.ez) * units::kRydberg,
          (common - (1.0 + zeta) * d.ez) * units::kRydberg, 0.0, 0.0, 0.0};
}

// The second derivatives [eV·Å³] for the total density rho in Å⁻³.
inline Kernel vwn_kernel(const VwnDerivatives& d, double x, double zeta, double rho) {
  const double common = -5.0 * x / 36.0 * d.ex + x * x / 36.0 * d.exx;
  const double omz = 1.0 - zeta;
  const double opz = 1.0 + zeta;
  const double scale = units::kRydberg / rho;
  return {(common - x / 3.0 * omz * d.exz + omz * omz * d.ezz) * scale,
          (common + x / 3.0 * opz * d.exz + opz * opz * d.ezz) * scale,
          (common + x / 3.0 * zeta * d.exz - omz * opz * d.ezz) * scale};
}

// Total density [bohr⁻³] below which a VWN form is zero.
inline constexpr double kVwnDensityThreshold = 1e-50;

// The potential and the kernel of a VWN form at a point, from its
// derivatives(x, spin interpolation, with second derivatives) → VwnDerivatives.
template <class Derivatives>
Potential vwn_point_potential(SpinDensities r, Derivatives derivatives) {
  const double ra = r.a * units::kBohr3;
  const double rb = r.b * units::kBohr3;
  if (ra + rb < kVwnDensityThreshold) return {};
  const double x = vwn_x(ra + rb);
  const SpinInterpolation s = spin_interpolation(ra, rb);
  return vwn_potential(derivatives(x, s, false), x, s.zeta);
}

template <class Derivatives>
Kernel vwn_point_kernel(SpinDensities r, Derivatives derivatives) {
  const double ra = r.a * units::kBohr3;
  const double rb = r.b * units::kBohr3;
  if (ra + rb < kVwnDensityThreshold) return {};
  const double x = vwn_x(ra + rb);
  const SpinInterpolation s = spin_interpolation(ra, rb);
  return vwn_kernel(derivatives(x, s, true), x, s.zeta, r.a + r.b);
}

}  // namespace norvik::dft
