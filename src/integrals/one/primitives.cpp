#include "integrals/one/primitives.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iostream>
#include <numbers>
#include <stdexcept>

#include "common/error.h"
#include "common/fortran_format.h"
#include "integrals/one/boys.h"

namespace norvik::integrals::one {

namespace {

constexpr double kPi = std::numbers::pi;

double factorial(int n) {
  double r = 1.0;
  for (int k = 2; k <= n; ++k) r *= k;
  return r;
}

double binomial(int n, int k) {
  if (k < 0 || k > n) return 0.0;
  double r = 1.0;
  for (int i = 1; i <= k; ++i) r = r * (n - k + i) / i;
  return r;
}

// The note of the general A-factor sum.  Several threads may reach it at once,
// so the line is written whole under a named critical section.
void announce_slow_a_factors() {
  const std::string line =
      fortran::list_directed({"Slow in makeGiTb. Please implement for l>=6."}) + '\n';
#pragma omp critical(norvik_stdout)
  {
    std::cout << line;
    std::cout.flush();
  }
}

// (pi/gamma)^(3/2) exp(-E): the common factor of every overlap of the pair.
double overlap_prefactor(const PairGeometry& g) {
  const double q = kPi / g.gamma;
  return q * std::sqrt(q) * std::exp(-g.e);
}

}  // namespace

PairGeometry pair_geometry(const Vec3& a, double alpha, const Vec3& b, double beta) {
  PairGeometry g;
  g.gamma = alpha + beta;
  double ab2 = 0.0;
  for (int k = 0; k < 3; ++k) {
    const double d = a[k] - b[k];
    ab2 += d * d;
  }
  g.e = alpha * beta / g.gamma * ab2;
  for (int k = 0; k < 3; ++k) {
    if (a[k] == b[k]) {
      g.p[k] = a[k];
      g.pa[k] = 0.0;
      g.pb[k] = 0.0;
    } else {
      g.p[k] = (alpha * a[k] + beta * b[k]) / g.gamma;
      g.pa[k] = g.p[k] - a[k];
      g.pb[k] = g.p[k] - b[k];
    }
  }
  return g;
}

double binomial_f(int j, int l1, int l2, double a, double b) {
  double sum = 0.0;
  const int kmax = std::min(j, l1);
  for (int k = std::max(0, j - l2); k <= kmax; ++k) {
    sum += binomial(l1, k) * binomial(l2, j - k) * power(a, l1 - k) * power(b, l2 - j + k);
  }
  return sum;
}

double overlap_axis(int l1, int l2, double pa, double pb, double gamma) {
  double sum = 0.0;
  double double_factorial = 1.0;  // (2i - 1)!!, with (-1)!! = 1
  double scale = 1.0;             // (2 gamma)^i
  const int imax = (l1 + l2) / 2;
  for (int i = 0; i <= imax; ++i) {
    if (i > 0) {
      double_factorial *= 2 * i - 1;
      scale *= 2.0 * gamma;
    }
    sum += binomial_f(2 * i, l1, l2, pa, pb) * double_factorial / scale;
  }
  return sum;
}

double overlap(const Primitive& a, const Primitive& b) {
  const PairGeometry g = pair_geometry(a.centre, a.exponent, b.centre, b.exponent);
  if (g.negligible()) return 0.0;
  double s = overlap_prefactor(g);
  for (int k = 0; k < 3; ++k) s *= overlap_axis(a.lmn[k], b.lmn[k], g.pa[k], g.pb[k], g.gamma);
  return s;
}

double kinetic(const Primitive& a, const Primitive& b) {
  const PairGeometry g = pair_geometry(a.centre, a.exponent, b.centre, b.exponent);
  if (g.negligible()) return 0.0;
  // Per axis: the overlap factor with the b exponent as it is, raised by two and
  // lowered by two (the last only where l(l - 1) is not zero).
  std::array<double, 3> same{}, up{}, down{};
  for (int k = 0; k < 3; ++k) {
    const int la = a.lmn[k];
    const int lb = b.lmn[k];
    same[k] = overlap_axis(la, lb, g.pa[k], g.pb[k], g.gamma);
    up[k] = overlap_axis(la, lb + 2, g.pa[k], g.pb[k], g.gamma);
    down[k] = lb >= 2 ? overlap_axis(la, lb - 2, g.pa[k], g.pb[k], g.gamma) : 0.0;
  }
  const double pref = overlap_prefactor(g);
  const double beta = b.exponent;
  const int lsum = b.lmn[0] + b.lmn[1] + b.lmn[2];
  const double s = pref * same[0] * same[1] * same[2];
  const double raised = pref * up[0] * same[1] * same[2] + pref * same[0] * up[1] * same[2] +
                        pref * same[0] * same[1] * up[2];
  double lowered = 0.0;
  const std::array<double, 3> lowered_axis = {pref * down[0] * same[1] * same[2],
                                              pref * same[0] * down[1] * same[2],
                                              pref * same[0] * same[1] * down[2]};
  for (int k = 0; k < 3; ++k) {
    const int l = b.lmn[k];
    if (l >= 2) lowered += l * (l - 1) * lowered_axis[k];
  }
  return beta * (2 * lsum + 3) * s - 2.0 * beta * beta * raised - 0.5 * lowered;
}

double a_factor(int i, int r, int u, int l1, int l2, double pa, double pb, double gamma,
                double pc) {
  const double eps = 1.0 / (4.0 * gamma);
  const int k = i - 2 * r - 2 * u;
  const double sign = ((i + u) % 2 == 0) ? 1.0 : -1.0;
  return sign * binomial_f(i, l1, l2, pa, pb) * factorial(i) * power(pc, k) * power(eps, r + u) /
         (factorial(r) * factorial(u) * factorial(k));
}

void a_factor_table(int l1, int l2, double pa, double pb, double gamma, double pc,
                    std::span<double, kGTableSize> g) {
  const int n = l1 + l2;
  if (n > kGTableSize - 1) {
    throw Error(fortran::list_directed({"Exceeded size of GI.", static_cast<std::int64_t>(n)}));
  }
  std::fill(g.begin(), g.end(), 0.0);
  if (l1 > 5 || l2 > 5) {
    announce_slow_a_factors();
    for (int i = 0; i <= n; ++i)
      for (int r = 0; r <= i / 2; ++r)
        for (int u = 0; u <= (i - 2 * r) / 2; ++u)
          g[i - 2 * r - u] += a_factor(i, r, u, l1, l2, pa, pb, gamma, pc);
    return;
  }
  // The same sum with the binomial coefficients, powers and factorials formed
  // once per table.
  std::array<double, kGTableSize> fi{}, pcpow{}, epspow{}, fact{};
  const double eps = 1.0 / (4.0 * gamma);
  pcpow[0] = epspow[0] = fact[0] = 1.0;
  for (int k = 1; k <= n; ++k) {
    pcpow[k] = pcpow[k - 1] * pc;
    epspow[k] = epspow[k - 1] * eps;
    fact[k] = fact[k - 1] * k;
  }
  for (int i = 0; i <= n; ++i) {
    fi[i] = ((i % 2 == 0) ? 1.0 : -1.0) * binomial_f(i, l1, l2, pa, pb) * fact[i];
  }
  for (int i = 0; i <= n; ++i) {
    if (fi[i] == 0.0) continue;
    for (int r = 0; r <= i / 2; ++r) {
      for (int u = 0; u <= (i - 2 * r) / 2; ++u) {
        const int k = i - 2 * r - 2 * u;
        const double sign = (u % 2 == 0) ? 1.0 : -1.0;
        g[i - 2 * r - u] += sign * fi[i] * pcpow[k] * epspow[r + u] / (fact[r] * fact[u] * fact[k]);
      }
    }
  }
}

void a_factor_product_table(const Lmn& lmn_a, const Lmn& lmn_b, const Vec3& pa, const Vec3& pb,
                            double gamma, const Vec3& pc, std::span<double, kGTableSize> g) {
  const int ltot = lmn_a[0] + lmn_a[1] + lmn_a[2] + lmn_b[0] + lmn_b[1] + lmn_b[2];
  if (ltot > kGTableSize - 1) {
    throw Error(
        fortran::list_directed({"Exceeded size of GGGnuTb.", static_cast<std::int64_t>(ltot)}));
  }
  std::array<std::array<double, kGTableSize>, 3> axis{};
  for (int k = 0; k < 3; ++k) {
    a_factor_table(lmn_a[k], lmn_b[k], pa[k], pb[k], gamma, pc[k], axis[k]);
  }
  std::fill(g.begin(), g.end(), 0.0);
  const int nx = lmn_a[0] + lmn_b[0];
  const int ny = lmn_a[1] + lmn_b[1];
  const int nz = lmn_a[2] + lmn_b[2];
  for (int ix = 0; ix <= nx; ++ix)
    for (int iy = 0; iy <= ny; ++iy)
      for (int iz = 0; iz <= nz; ++iz) g[ix + iy + iz] += axis[0][ix] * axis[1][iy] * axis[2][iz];
}

namespace {

// V = (2 pi / gamma) exp(-E) sum_nu G(nu) F_nu(T); `boys` is null when the Boys
// table is to be built here (after the A-factors, whose limit is the tighter).
double nuclear_sum(const Primitive& a, const Primitive& b, const Vec3& c,
                   const std::span<const double>* boys) {
  const PairGeometry g = pair_geometry(a.centre, a.exponent, b.centre, b.exponent);
  if (g.negligible()) return 0.0;
  const Vec3 pc = {g.p[0] - c[0], g.p[1] - c[1], g.p[2] - c[2]};
  std::array<double, kGTableSize> table{};
  a_factor_product_table(a.lmn, b.lmn, g.pa, g.pb, g.gamma, pc, table);
  const int ltot = a.lmn[0] + a.lmn[1] + a.lmn[2] + b.lmn[0] + b.lmn[1] + b.lmn[2];
  std::array<double, kBoysTableSize> own{};
  std::span<const double> f;
  if (boys != nullptr) {
    f = *boys;
    if (static_cast<int>(f.size()) < ltot + 1) {
      throw std::logic_error("nuclear_attraction: Boys table shorter than Ltot + 1");
    }
  } else {
    const double t = g.gamma * (pc[0] * pc[0] + pc[1] * pc[1] + pc[2] * pc[2]);
    boys_table(t, ltot, own);
    f = own;
  }
  double sum = 0.0;
  for (int nu = 0; nu <= ltot; ++nu) sum += table[nu] * f[nu];
  return 2.0 * kPi / g.gamma * std::exp(-g.e) * sum;
}

}  // namespace

double nuclear_attraction(const Primitive& a, const Primitive& b, const Vec3& c,
                          std::span<const double> boys) {
  return nuclear_sum(a, b, c, &boys);
}

double nuclear_attraction(const Primitive& a, const Primitive& b, const Vec3& c) {
  return nuclear_sum(a, b, c, nullptr);
}

double overlap_raised(const Primitive& a, const Primitive& b, const Lmn& raise) {
  Primitive raised = b;
  for (int k = 0; k < 3; ++k) raised.lmn[k] += raise[k];
  return overlap(a, raised);
}

double cartesian_moment(const Primitive& a, const Primitive& b, const Lmn& power_of) {
  // prod_axis (x - Bx + Bx)^p = sum_k C(p, k) Bx^(p - k) (x - Bx)^k, highest k first.
  double sum = 0.0;
  for (int kx = power_of[0]; kx >= 0; --kx) {
    for (int ky = power_of[1]; ky >= 0; --ky) {
      for (int kz = power_of[2]; kz >= 0; --kz) {
        const double weight = binomial(power_of[0], kx) * power(b.centre[0], power_of[0] - kx) *
                              binomial(power_of[1], ky) * power(b.centre[1], power_of[1] - ky) *
                              binomial(power_of[2], kz) * power(b.centre[2], power_of[2] - kz);
        sum += weight * overlap_raised(a, b, {kx, ky, kz});
      }
    }
  }
  return sum;
}

}  // namespace norvik::integrals::one
