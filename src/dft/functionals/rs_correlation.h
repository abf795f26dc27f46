// Local correlation functionals fitted in the Wigner–Seitz radius r_s: the
// correlation energy per electron ε(r_s) of the unpolarised and of the fully
// polarised gas, interpolated in the spin polarisation by f(ζ):
//   ε(r_s, ζ) = (1 − f) ε_P(r_s) + f ε_F(r_s),
//   ∂(ερ)/∂ρσ = ε − (r_s/3) ∂ε/∂r_s ± (1 ∓ ζ) ∂ε/∂ζ.
// Perdew–Zunger (perdew_zunger.h) and Gunnarsson–Lundqvist
// (gunnarsson_lundqvist.h) differ only in their two fits and their unit.
#pragma once

#include <cmath>

#include "dft/functionals/point.h"
#include "dft/functionals/spin_interpolation.h"

namespace norvik::dft {

// ε(r_s) and dε/dr_s of one gas, in the functional's own unit.
struct RsValue {
  double e, de;
};

// Total density [bohr⁻³] below which these functionals are zero.
inline constexpr double kRsDensityThreshold = 1e-50;

inline double wigner_seitz_radius(double rho_au) {
  return std::cbrt(units::kThreeOverFourPi / rho_au);
}

// fit(gas, r_s) → RsValue for gas = 0 (unpolarised) and 1 (fully polarised);
// `unit` is the fits' energy unit in eV.
template <class Fit>
double rs_correlation_energy(SpinDensities r, Fit fit, double unit) {
  const double ra = r.a * units::kBohr3;
  const double rb = r.b * units::kBohr3;
  if (ra + rb < kRsDensityThreshold) return 0.0;
  const double rs = wigner_seitz_radius(ra + rb);
  const double f = spin_interpolation(ra, rb).f();
  const double eps = (1.0 - f) * fit(0, rs).e + f * fit(1, rs).e;
  return eps * (r.a + r.b) * unit;
}

template <class Fit>
Potential rs_correlation_potential(SpinDensities r, Fit fit, double unit) {
  const double ra = r.a * units::kBohr3;
  const double rb = r.b * units::kBohr3;
  if (ra + rb < kRsDensityThreshold) return {};
  const double rs = wigner_seitz_radius(ra + rb);
  const SpinInterpolation s = spin_interpolation(ra, rb);
  const double f = s.f();
  const RsValue p = fit(0, rs);
  const RsValue q = fit(1, rs);
  const double eps = (1.0 - f) * p.e + f * q.e;
  const double common = eps - rs / 3.0 * ((1.0 - f) * p.de + f * q.de);
  const double dz = (q.e - p.e) * s.df();
  return {(common + (1.0 - s.zeta) * dz) * unit, (common - (1.0 + s.zeta) * dz) * unit, 0.0, 0.0,
          0.0};
}

}  // namespace norvik::dft
