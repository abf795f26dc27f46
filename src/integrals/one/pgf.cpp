#include "integrals/one/pgf.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <utility>

#include "common/error.h"
#include "common/fortran_format.h"

namespace norvik::integrals::one {

namespace {

// <x^2a y^2b z^2c> over exp(-2 alpha r^2), in units of sqrt(pi^3/(8 alpha^(2l+3))):
// 0.25^l (2a-1)!! (2b-1)!! (2c-1)!!, and zero when an exponent is odd.
constexpr double gaussian_moment(const Lmn& e) {
  double r = 1.0;
  for (int k = 0; k < 3; ++k) {
    if (e[k] % 2 != 0) return 0.0;
    for (int j = e[k] - 1; j > 1; j -= 2) r *= j;
    for (int j = 0; j < e[k] / 2; ++j) r *= 0.25;
  }
  return r;
}

// k_lm = sum_ij c_i c_j <m_i m_j>: exact, since every factor is a small integer
// or a power of 1/4.
constexpr SolidHarmonic make(int l, int m, std::initializer_list<std::pair<double, Lmn>> terms) {
  SolidHarmonic h;
  h.l = l;
  h.m = m;
  for (const auto& [c, e] : terms) {
    h.coef[h.nterm] = c;
    h.lmn[h.nterm] = e;
    ++h.nterm;
  }
  double k = 0.0;
  for (int i = 0; i < h.nterm; ++i)
    for (int j = 0; j < h.nterm; ++j)
      k += h.coef[i] * h.coef[j] *
           gaussian_moment(
               {h.lmn[i][0] + h.lmn[j][0], h.lmn[i][1] + h.lmn[j][1], h.lmn[i][2] + h.lmn[j][2]});
  h.k = k;
  return h;
}

constexpr std::array<SolidHarmonic, 20> kTable = {
    make(0, 0, {{1.0, {0, 0, 0}}}),
    // p: y, z, x
    make(1, -1, {{1.0, {0, 1, 0}}}),
    make(1, 0, {{1.0, {0, 0, 1}}}),
    make(1, 1, {{1.0, {1, 0, 0}}}),
    // d: xy, yz, 2z^2 - x^2 - y^2, xz, x^2 - y^2, and the companion r^2
    make(2, -2, {{1.0, {1, 1, 0}}}),
    make(2, -1, {{1.0, {0, 1, 1}}}),
    make(2, 0, {{2.0, {0, 0, 2}}, {-1.0, {2, 0, 0}}, {-1.0, {0, 2, 0}}}),
    make(2, 1, {{1.0, {1, 0, 1}}}),
    make(2, 2, {{1.0, {2, 0, 0}}, {-1.0, {0, 2, 0}}}),
    make(2, 10, {{1.0, {2, 0, 0}}, {1.0, {0, 2, 0}}, {1.0, {0, 0, 2}}}),
    // f: 3x^2y - y^3, xyz, y(4z^2 - x^2 - y^2), z(2z^2 - 3x^2 - 3y^2),
    //    x(4z^2 - x^2 - y^2), z(x^2 - y^2), x^3 - 3xy^2
    make(3, -3, {{3.0, {2, 1, 0}}, {-1.0, {0, 3, 0}}}),
    make(3, -2, {{1.0, {1, 1, 1}}}),
    make(3, -1, {{4.0, {0, 1, 2}}, {-1.0, {2, 1, 0}}, {-1.0, {0, 3, 0}}}),
    make(3, 0, {{2.0, {0, 0, 3}}, {-3.0, {2, 0, 1}}, {-3.0, {0, 2, 1}}}),
    make(3, 1, {{4.0, {1, 0, 2}}, {-1.0, {3, 0, 0}}, {-1.0, {1, 2, 0}}}),
    make(3, 2, {{1.0, {2, 0, 1}}, {-1.0, {0, 2, 1}}}),
    make(3, 3, {{1.0, {3, 0, 0}}, {-3.0, {1, 2, 0}}}),
    // the companions x r^2, y r^2, z r^2 of a Cartesian-count f set
    make(3, 10, {{1.0, {3, 0, 0}}, {1.0, {1, 2, 0}}, {1.0, {1, 0, 2}}}),
    make(3, 11, {{1.0, {2, 1, 0}}, {1.0, {0, 3, 0}}, {1.0, {0, 1, 2}}}),
    make(3, 12, {{1.0, {2, 0, 1}}, {1.0, {0, 2, 1}}, {1.0, {0, 0, 3}}}),
};

constexpr const SolidHarmonic* find(int l, int m) {
  for (const auto& h : kTable)
    if (h.l == l && h.m == m) return &h;
  return nullptr;
}

static_assert(std::ranges::all_of(kTable, [](const SolidHarmonic& h) { return h.nterm > 0; }),
              "every entry of the table is filled");

// The weights that characterise the table.
static_assert(find(1, -1)->k == 0.25 && find(1, 0)->k == 0.25 && find(1, 1)->k == 0.25);
static_assert(find(3, -2)->k == 0.015625);
static_assert(find(3, 0)->k == 0.9375);
static_assert(find(3, 2)->k == 0.0625);
static_assert(find(3, 3)->k == 0.375 && find(3, -3)->k == 0.375);
static_assert(find(3, 1)->k == 0.625 && find(3, -1)->k == 0.625);
static_assert(find(3, 10)->k == 0.546875 && find(3, 11)->k == 0.546875 &&
              find(3, 12)->k == 0.546875);
static_assert(find(2, 10)->k == 0.9375);

// 1 / sqrt(k sqrt(pi^3 / (8 alpha^(2l+3)))).
double inverse_norm(const SolidHarmonic& h, double alpha) {
  return 1.0 / std::sqrt(h.k * std::sqrt(kPiCubed / (8.0 * power(alpha, 2 * h.l + 3))));
}

double monomial(const Vec3& d, const Lmn& e) {
  return power(d[0], e[0]) * power(d[1], e[1]) * power(d[2], e[2]);
}

}  // namespace

std::span<const SolidHarmonic> solid_harmonics() {
  return kTable;
}

const SolidHarmonic& solid_harmonic(int l, int m) {
  if (l < 0 || l > 3) {
    throw Error(
        fortran::list_directed({"l exceed in subr_pgf. l = ", static_cast<std::int64_t>(l)}));
  }
  const SolidHarmonic* h = find(l, m);
  if (h == nullptr) {
    throw Error(
        fortran::list_directed({"m exceed in subr_pgf. (l,m)= ", static_cast<std::int64_t>(l),
                                static_cast<std::int64_t>(m)}));
  }
  return *h;
}

double pgf_value(int l, int m, double alpha, const Vec3& centre, const Vec3& point) {
  const SolidHarmonic& h = solid_harmonic(l, m);
  const Vec3 d = {point[0] - centre[0], point[1] - centre[1], point[2] - centre[2]};
  const double ar2 = alpha * (d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
  if (ar2 > kPgfCutoff) return 0.0;
  double p = 0.0;
  for (int t = 0; t < h.nterm; ++t) p += h.coef[t] * monomial(d, h.lmn[t]);
  return std::exp(-ar2) * p * inverse_norm(h, alpha);
}

Vec3 pgf_gradient(int l, int m, double alpha, const Vec3& centre, const Vec3& point) {
  const SolidHarmonic& h = solid_harmonic(l, m);
  const Vec3 d = {point[0] - centre[0], point[1] - centre[1], point[2] - centre[2]};
  const double ar2 = alpha * (d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
  if (ar2 > kPgfCutoff) return {0.0, 0.0, 0.0};
  // d/dx [P exp(-alpha R^2)] = (dP/dx - 2 alpha x P) exp(-alpha R^2)
  double p = 0.0;
  Vec3 dp{};
  for (int t = 0; t < h.nterm; ++t) {
    const Lmn& e = h.lmn[t];
    p += h.coef[t] * monomial(d, e);
    for (int k = 0; k < 3; ++k) {
      if (e[k] == 0) continue;
      Lmn lowered = e;
      --lowered[k];
      dp[k] += h.coef[t] * e[k] * monomial(d, lowered);
    }
  }
  const double scale = std::exp(-ar2) * inverse_norm(h, alpha);
  Vec3 g;
  for (int k = 0; k < 3; ++k) g[k] = (dp[k] - 2.0 * alpha * d[k] * p) * scale;
  return g;
}

}  // namespace norvik::integrals::one
