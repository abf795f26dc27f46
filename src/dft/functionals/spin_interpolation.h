// The spin interpolation of the local correlation functionals (VWN, PL, GL):
//   f(ζ) = h(ζ) / (2^{4/3} − 2),  h(ζ) = (1 + ζ)^{4/3} + (1 − ζ)^{4/3} − 2,
// zero for the unpolarised and one for the fully polarised gas.
// U. von Barth and L. Hedin, J. Phys. C 5, 1629 (1972).
#pragma once

#include <cmath>

namespace norvik::dft {

// 1/(2^{4/3} − 2) and 2^{4/3} − 2, to the digits the functionals are defined with.
inline constexpr double kSpinScale = 1.9236610509315362;
inline constexpr double kSpinScaleInverse = 0.5198420997897459;

// ζ, h(ζ) and its first two derivatives.
struct SpinInterpolation {
  double zeta = 0.0;
  double h = 0.0;
  double dh = 0.0;
  double d2h = 0.0;
  bool polarised = false;  // one spin density is exactly zero

  // f(ζ), exactly 1 at full polarisation (not computed there).
  double f() const { return polarised ? 1.0 : h * kSpinScale; }
  double df() const { return dh * kSpinScale; }
  double d2f() const { return d2h * kSpinScale; }
};

// From the spin densities (any unit; their sum positive).  1 ± ζ are formed as
// 2ρα/ρ and 2ρβ/ρ, which keeps nearly polarised points accurate.  A spin
// density of exactly zero makes the point fully polarised (ζ = ±1,
// h = 2^{4/3} − 2 exactly as written above, f = 1), and the term of h'' that
// diverges there, (1 ∓ ζ)^{−2/3}, is left out so that the kernel stays finite.
// ρα = ρβ gives ζ = 0 and h = 0 exactly.  The special cases are selections, not
// branches, so that loops over points stay straight.
inline SpinInterpolation spin_interpolation(double rho_a, double rho_b) {
  constexpr double k43 = 4.0 / 3.0;
  constexpr double k49 = 4.0 / 9.0;
  const double rho = rho_a + rho_b;
  const double opz = 2.0 * rho_a / rho;
  const double omz = 2.0 * rho_b / rho;
  const double opz13 = std::cbrt(opz);
  const double omz13 = std::cbrt(omz);
  SpinInterpolation s;
  s.polarised = rho_a == 0.0 || rho_b == 0.0;
  s.zeta = (rho_a - rho_b) / rho;
  s.h = s.polarised ? kSpinScaleInverse : opz * opz13 + omz * omz13 - 2.0;
  s.dh = k43 * (opz13 - omz13);
  s.d2h = k49 * ((opz13 > 0.0 ? 1.0 / (opz13 * opz13) : 0.0) +
                 (omz13 > 0.0 ? 1.0 / (omz13 * omz13) : 0.0));
  return s;
}

}  // namespace norvik::dft
