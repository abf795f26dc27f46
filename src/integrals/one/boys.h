// The Boys function F_nu(T) = integral_0^1 t^(2 nu) exp(-T t^2) dt as a table
// F_0 ... F_numax, the radial factor of every nuclear-attraction integral.
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
