// The Boys function F_m(T) = ∫₀¹ t^(2m) exp(-T t²) dt for the closed-form
// two-electron kernels: a seven-term Taylor expansion about the nearest point of a
// pretabulated grid (spacing 1/32) below T = 40, and above it the asymptotic F_0
// with the upward recursion, which is stable there.  Relative accuracy is a few
// units in the last place for every order up to kBoysMaxOrder.
//
// This is one of two Boys functions in the library.  The other,
// integrals::one::boys_table (integrals/one/boys.h), is the exported MAKEFNUTB and
// feeds the nuclear attraction: orders up to 15, erf/exp and recursions with fixed
// branches, once per primitive pair and nucleus.  This one sits in the innermost loop
// of the ERI engine (once per primitive quartet), where it is about five times faster
// and, at the high orders of (dd|dd), several digits more accurate than those
// recursions.  Swapping either for the other would change results at the rounding
// level, so both stay; docs/integrals.md has the comparison.
#pragma once

#include <cmath>
#include <numbers>

#include "integrals/generated/boys_table.h"

namespace norvik::integrals::two {

// Highest order that the table supports with its Taylor terms.
inline constexpr int kBoysMaxOrder = detail::kBoysTableOrders - 7;
inline constexpr double kBoysTableEnd = 40.0;

// Writes F_0(T) ... F_mmax(T) into f[0..mmax]; T ≥ 0, mmax ≤ kBoysMaxOrder.
inline void boys(int mmax, double T, double* f) {
  if (T < kBoysTableEnd) {
    const int k = static_cast<int>(T * detail::kBoysGridInverseStep + 0.5);
    const double d = k * (1.0 / detail::kBoysGridInverseStep) - T;  // expansion in (T_k − T)
    const double* row = detail::kBoysTable + k * detail::kBoysTableOrders;
    // dⁿ F_m / dTⁿ = (−1)ⁿ F_(m+n): the series in d = T_k − T has positive signs.
    constexpr double c2 = 1.0 / 2, c3 = 1.0 / 6, c4 = 1.0 / 24, c5 = 1.0 / 120, c6 = 1.0 / 720;
    for (int m = 0; m <= mmax; ++m) {
      const double* r = row + m;
      f[m] = r[0] +
             d * (r[1] + d * (c2 * r[2] +
                              d * (c3 * r[3] + d * (c4 * r[4] + d * (c5 * r[5] + d * c6 * r[6])))));
    }
    return;
  }
  const double inv_t = 1.0 / T;
  f[0] = 0.5 * std::sqrt(std::numbers::pi * inv_t);
  if (mmax == 0) return;
  const double et = std::exp(-T);
  const double half_inv_t = 0.5 * inv_t;
  for (int m = 0; m < mmax; ++m) f[m + 1] = ((2 * m + 1) * f[m] - et) * half_inv_t;
}

}  // namespace norvik::integrals::two
