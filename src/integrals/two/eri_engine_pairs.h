// Primitive pair construction for the closed-form engine (included by eri_engine.h).
#pragma once

#include <algorithm>
#include <cmath>

namespace norvik::integrals::two {

template <class Sink>
void make_primitive_pairs(const std::array<double, 3>& a, std::span<const double> alpha,
                          const std::array<double, 3>& b, std::span<const double> beta, int ncombo,
                          const std::array<const double*, kMaxCombos>& ca,
                          const std::array<const double*, kMaxCombos>& cb, double cutoff,
                          Sink&& out) {
  const double ab2 =
      (a[0] - b[0]) * (a[0] - b[0]) + (a[1] - b[1]) * (a[1] - b[1]) + (a[2] - b[2]) * (a[2] - b[2]);
  for (std::size_t i = 0; i < alpha.size(); ++i) {
    for (std::size_t j = 0; j < beta.size(); ++j) {
      const double zeta = alpha[i] + beta[j];
      const double x = alpha[i] * beta[j] * ab2;
      if (x > cutoff * zeta) continue;
      PrimitivePair pp;
      pp.zeta = zeta;
      pp.half_inv_zeta = 0.5 / zeta;
      pp.kz = std::exp(-x / zeta) / zeta;
      double cmax = 0;
      for (int k = 0; k < ncombo; ++k) {
        pp.c[k] = ca[k][i] * cb[k][j];
        cmax = std::max(cmax, std::abs(pp.c[k]));
      }
      pp.bound = pp.kz * cmax;
      for (int k = 0; k < 3; ++k) {
        pp.p[k] = (alpha[i] * a[k] + beta[j] * b[k]) / zeta;
        pp.pa[k] = pp.p[k] - a[k];
      }
      out(pp);
    }
  }
}

}  // namespace norvik::integrals::two
