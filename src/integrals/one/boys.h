// The Boys function F_nu(T) = integral_0^1 t^(2 nu) exp(-T t^2) dt as a table
// F_0 ... F_numax, the radial factor of every nuclear-attraction integral.
//
// This is one of two Boys functions in the library.  This one is the exported
// MAKEFNUTB, whose branches below are part of its documented behaviour, and it feeds
// the one-electron matrices: orders up to 15, any T, called once per primitive pair
// and nucleus.  The two-electron engine uses integrals::two::boys
// (integrals/two/boys.h) instead: a pretabulated grid with Taylor steps, about five
// times faster and accurate to a few ulp, but only up to order 8.  Swapping either for
// the other would change results at the rounding level, so both stay;
// docs/integrals.md has the comparison.
#pragma once

#include <span>

namespace norvik::integrals::one {

inline constexpr int kBoysTableSize = 16;  // nu = 0 ... 15
inline constexpr int kBoysMaxOrder = kBoysTableSize - 1;

// sqrt(pi) as the Boys function uses it.
inline constexpr double kSqrtPi = 1.7724538509055159;

// Fills f[0 ... numax] and clears the rest of the 16 entries.  Branches:
// T < 1e-10 gives 1/(2nu + 1); numax = 0 gives the error-function form;
// T < 0.1 numax recurs downward from nu = 99 (F_100 = 0); T > 500 recurs upward
// without the exp(-T) term; otherwise upward with it.  numax > 15 is fatal.
void boys_table(double t, int numax, std::span<double, kBoysTableSize> f);

}  // namespace norvik::integrals::one
