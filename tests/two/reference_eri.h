// A slow, independent evaluation of contracted Cartesian ERIs for the tests:
// McMurchie–Davidson (Hermite expansion coefficients and Hermite Coulomb
// integrals) in long double, with the Boys function from its power series.
#pragma once

#include <array>
#include <cmath>
#include <vector>

namespace norvik::testing {

struct RefShell {
  int l = 0;
  std::array<double, 3> centre{};
  std::vector<double> exps, coefs;  // coefficients multiply the unnormalised primitives
};

// Cartesian components in the library's order.
inline std::vector<std::array<int, 3>> cartesian_components(int L) {
  std::vector<std::array<int, 3>> c;
  for (int i = L; i >= 0; --i)
    for (int j = L - i; j >= 0; --j) c.push_back({i, j, L - i - j});
  return c;
}

inline long double ref_boys(int n, long double t) {
  // F_n(t) = e^{-t} Σ_k (2t)^k / ((2n+1)(2n+3)…(2n+2k+1))
  long double term = 1.0L / (2 * n + 1), sum = term;
  for (int k = 1; k < 2000; ++k) {
    term *= 2 * t / (2 * n + 2 * k + 1);
    sum += term;
    if (term < sum * 1e-22L) break;
  }
  return std::exp(-t) * sum;
}

// Hermite coefficients E^{ij}_t in one dimension (without the exponential factor).
inline std::vector<std::vector<std::vector<long double>>> hermite_e(int imax, int jmax,
                                                                    long double p, long double pa,
                                                                    long double pb) {
  std::vector<std::vector<std::vector<long double>>> e(
      imax + 1, std::vector<std::vector<long double>>(
                    jmax + 1, std::vector<long double>(imax + jmax + 2, 0)));
  e[0][0][0] = 1;
  auto get = [&](int i, int j, int t) -> long double {
    if (t < 0 || t > i + j) return 0;
    return e[i][j][t];
  };
  for (int i = 0; i <= imax; ++i)
    for (int j = 0; j <= jmax; ++j) {
      if (i == 0 && j == 0) continue;
      for (int t = 0; t <= i + j; ++t) {
        if (i > 0)
          e[i][j][t] = get(i - 1, j, t - 1) / (2 * p) + pa * get(i - 1, j, t) +
                       (t + 1) * get(i - 1, j, t + 1);
        else
          e[i][j][t] = get(i, j - 1, t - 1) / (2 * p) + pb * get(i, j - 1, t) +
                       (t + 1) * get(i, j - 1, t + 1);
      }
    }
  return e;
}

// Block (ab|cd), row-major over the components of a, b, c, d.
inline std::vector<double> reference_eri(const RefShell& a, const RefShell& b, const RefShell& c,
                                         const RefShell& d) {
  const auto ca = cartesian_components(a.l), cb = cartesian_components(b.l),
             cc = cartesian_components(c.l), cd = cartesian_components(d.l);
  std::vector<long double> out(ca.size() * cb.size() * cc.size() * cd.size(), 0);
  const int L = a.l + b.l + c.l + d.l;
  const long double pi = 3.14159265358979323846264338327950288L;
  for (std::size_t ia = 0; ia < a.exps.size(); ++ia)
    for (std::size_t ib = 0; ib < b.exps.size(); ++ib)
      for (std::size_t ic = 0; ic < c.exps.size(); ++ic)
        for (std::size_t id = 0; id < d.exps.size(); ++id) {
          const long double al = a.exps[ia], be = b.exps[ib], ga = c.exps[ic], de = d.exps[id];
          const long double p = al + be, q = ga + de, alpha = p * q / (p + q);
          std::array<long double, 3> P, Q;
          long double kab = 1, kcd = 1;
          std::array<std::vector<std::vector<std::vector<long double>>>, 3> eab, ecd;
          for (int k = 0; k < 3; ++k) {
            P[k] = (al * a.centre[k] + be * b.centre[k]) / p;
            Q[k] = (ga * c.centre[k] + de * d.centre[k]) / q;
            const long double xab = a.centre[k] - b.centre[k], xcd = c.centre[k] - d.centre[k];
            kab *= std::exp(-al * be / p * xab * xab);
            kcd *= std::exp(-ga * de / q * xcd * xcd);
            eab[k] = hermite_e(a.l, b.l, p, P[k] - a.centre[k], P[k] - b.centre[k]);
            ecd[k] = hermite_e(c.l, d.l, q, Q[k] - c.centre[k], Q[k] - d.centre[k]);
          }
          const long double pq[3] = {P[0] - Q[0], P[1] - Q[1], P[2] - Q[2]};
          const long double T = alpha * (pq[0] * pq[0] + pq[1] * pq[1] + pq[2] * pq[2]);
          // R^n_{tuv}, n + t + u + v ≤ L
          const int D = L + 1;
          std::vector<long double> R(static_cast<std::size_t>(D * D * D * D), 0);
          auto r = [&](int n, int t, int u, int v) -> long double& {
            return R[static_cast<std::size_t>(((n * D + t) * D + u) * D + v)];
          };
          for (int n = 0; n <= L; ++n) r(n, 0, 0, 0) = std::pow(-2 * alpha, n) * ref_boys(n, T);
          for (int s = 1; s <= L; ++s)
            for (int t = 0; t <= s; ++t)
              for (int u = 0; u <= s - t; ++u) {
                const int v = s - t - u;
                for (int n = 0; n + s <= L; ++n) {
                  long double val;
                  if (t > 0)
                    val = (t > 1 ? (t - 1) * r(n + 1, t - 2, u, v) : 0) +
                          pq[0] * r(n + 1, t - 1, u, v);
                  else if (u > 0)
                    val = (u > 1 ? (u - 1) * r(n + 1, t, u - 2, v) : 0) +
                          pq[1] * r(n + 1, t, u - 1, v);
                  else
                    val = (v > 1 ? (v - 1) * r(n + 1, t, u, v - 2) : 0) +
                          pq[2] * r(n + 1, t, u, v - 1);
                  r(n, t, u, v) = val;
                }
              }
          const long double pref = 2 * std::pow(pi, 2.5L) / (p * q * std::sqrt(p + q)) * kab * kcd *
                                   a.coefs[ia] * b.coefs[ib] * c.coefs[ic] * d.coefs[id];
          std::size_t o = 0;
          for (const auto& x : ca)
            for (const auto& y : cb)
              for (const auto& z : cc)
                for (const auto& w : cd) {
                  long double sum = 0;
                  for (int t = 0; t <= x[0] + y[0]; ++t)
                    for (int u = 0; u <= x[1] + y[1]; ++u)
                      for (int v = 0; v <= x[2] + y[2]; ++v) {
                        const long double e1 =
                            eab[0][x[0]][y[0]][t] * eab[1][x[1]][y[1]][u] * eab[2][x[2]][y[2]][v];
                        for (int tt = 0; tt <= z[0] + w[0]; ++tt)
                          for (int uu = 0; uu <= z[1] + w[1]; ++uu)
                            for (int vv = 0; vv <= z[2] + w[2]; ++vv) {
                              const long double e2 = ecd[0][z[0]][w[0]][tt] *
                                                     ecd[1][z[1]][w[1]][uu] *
                                                     ecd[2][z[2]][w[2]][vv];
                              const long double sign = ((tt + uu + vv) % 2) ? -1 : 1;
                              sum += e1 * sign * e2 * r(0, t + tt, u + uu, v + vv);
                            }
                      }
                  out[o++] += pref * sum;
                }
        }
  return std::vector<double>(out.begin(), out.end());
}

}  // namespace norvik::testing
