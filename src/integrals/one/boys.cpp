#include "integrals/one/boys.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "common/error.h"
#include "common/fortran_format.h"

namespace norvik::integrals::one {

namespace {

// F_0 by the error function: sqrt(pi) / (2 sqrt(T)) erf(sqrt(T)).
double boys_zero(double t) {
  const double s = std::sqrt(t);
  return kSqrtPi / (2.0 * s) * std::erf(s);
}

}  // namespace

void boys_table(double t, int numax, std::span<double, kBoysTableSize> f) {
  if (numax > kBoysMaxOrder) {
    throw Error(fortran::list_directed(
        {"Exceeded size of FnuTb in makeFnuTb.", static_cast<std::int64_t>(numax)}));
  }
  std::fill(f.begin(), f.end(), 0.0);

  if (t < 1e-10) {
    for (int nu = 0; nu <= numax; ++nu) f[nu] = 1.0 / (2 * nu + 1);
    return;
  }
  if (numax == 0) {
    f[0] = boys_zero(t);
    return;
  }
  if (t < 0.1 * numax) {
    // Small T: downward recursion is stable; start far above where F_100 = 0
    // costs nothing at this precision.
    const double e = std::exp(-t);
    double next = 0.0;  // F_100
    for (int nu = 99; nu >= 0; --nu) {
      const double value = (2.0 * t * next + e) / (2 * nu + 1);
      if (nu <= numax) f[nu] = value;
      next = value;
    }
    return;
  }
  f[0] = boys_zero(t);
  if (t > 500.0) {
    // exp(-T) is far below the rounding of F_nu here.
    for (int nu = 1; nu <= numax; ++nu) f[nu] = (2 * nu - 1) * f[nu - 1] / (2.0 * t);
    return;
  }
  const double e = std::exp(-t);
  for (int nu = 1; nu <= numax; ++nu) f[nu] = ((2 * nu - 1) * f[nu - 1] - e) / (2.0 * t);
}

}  // namespace norvik::integrals::one
