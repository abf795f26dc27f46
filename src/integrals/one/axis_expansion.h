// The per-axis pieces of the Gaussian-product expansion shared by the
// one-electron matrices and their nuclear derivatives: the binomial expansion
// coefficients f_i(l1, l2, PA, PB) of (x + PA)^l1 (x + PB)^l2, and the
// nucleus-dependent part H_i(nu) of the nuclear-attraction A-factors.  The
// array bounds are template arguments so that each caller sizes them for the
// angular momenta it needs.
#pragma once

#include <array>

namespace norvik::integrals::one {

// Largest power that the tables below serve.
inline constexpr int kAxisTableSize = 14;

// Binomial coefficients C(n, k), n < kAxisTableSize.
inline constexpr std::array<std::array<double, kAxisTableSize>, kAxisTableSize> kAxisBinomial = [] {
  std::array<std::array<double, kAxisTableSize>, kAxisTableSize> c{};
  for (int n = 0; n < kAxisTableSize; ++n) {
    c[n][0] = 1.0;
    for (int k = 1; k <= n; ++k) c[n][k] = c[n - 1][k - 1] + (k < n ? c[n - 1][k] : 0.0);
  }
  return c;
}();

inline constexpr std::array<double, kAxisTableSize> kAxisInverseFactorial = [] {
  std::array<double, kAxisTableSize> f{};
  double v = 1.0;
  for (int k = 0; k < kAxisTableSize; ++k) {
    if (k > 0) v *= k;
    f[k] = 1.0 / v;
  }
  return f;
}();

// f[l1][l2][i] for l1 ≤ la_max, l2 ≤ lb_max (la_max < NA, lb_max < NB, la_max
// + lb_max < NI).
template <int NA, int NB, int NI>
struct AxisExpansion {
  double f[NA][NB][NI];
};

template <int NA, int NB, int NI>
void expand_axis(int la_max, int lb_max, double pa, double pb, AxisExpansion<NA, NB, NI>& e) {
  double pa_pow[NA], pb_pow[NB];
  pa_pow[0] = pb_pow[0] = 1.0;
  for (int k = 1; k < NA; ++k) pa_pow[k] = pa_pow[k - 1] * pa;
  for (int k = 1; k < NB; ++k) pb_pow[k] = pb_pow[k - 1] * pb;
  for (int l1 = 0; l1 <= la_max; ++l1) {
    for (int l2 = 0; l2 <= lb_max; ++l2) {
      double* f = e.f[l1][l2];
      for (int i = 0; i <= l1 + l2; ++i) f[i] = 0.0;
      // (x + pa)^l1 (x + pb)^l2: the term x^k1 x^k2 adds to f_(k1 + k2).
      for (int k1 = 0; k1 <= l1; ++k1) {
        const double c1 = kAxisBinomial[l1][k1] * pa_pow[l1 - k1];
        for (int k2 = 0; k2 <= l2; ++k2) f[k1 + k2] += c1 * kAxisBinomial[l2][k2] * pb_pow[l2 - k2];
      }
    }
  }
}

// H_i(nu) = (-1)^i i! sum over r, u with i - 2r - u = nu of
// (-1)^u PC^(i-2r-2u) eps^(r+u) / (r! u! (i-2r-2u)!): the part of the A-factors
// that depends on the nucleus, so that G(l1, l2)(nu) = sum_i f_i(l1, l2) H_i(nu).
// imax < NI.
template <int NI>
void nucleus_axis(int imax, double pc, double eps, double (&h)[NI][NI]) {
  double pc_pow[NI], eps_pow[NI];
  pc_pow[0] = eps_pow[0] = 1.0;
  for (int k = 1; k <= imax; ++k) {
    pc_pow[k] = pc_pow[k - 1] * pc;
    eps_pow[k] = eps_pow[k - 1] * eps;
  }
  double factorial = 1.0;
  for (int i = 0; i <= imax; ++i) {
    if (i > 0) factorial *= i;
    double* hi = h[i];
    for (int nu = 0; nu <= i; ++nu) hi[nu] = 0.0;
    const double lead = (i % 2 == 0 ? 1.0 : -1.0) * factorial;
    for (int r = 0; 2 * r <= i; ++r) {
      for (int u = 0; 2 * (r + u) <= i; ++u) {
        const int k = i - 2 * r - 2 * u;
        const double term = pc_pow[k] * eps_pow[r + u] * kAxisInverseFactorial[r] *
                            kAxisInverseFactorial[u] * kAxisInverseFactorial[k];
        hi[i - 2 * r - u] += (u % 2 == 0 ? lead : -lead) * term;
      }
    }
  }
}

// The expansions of the three axes of a primitive pair and their overlap
// factors I[axis][l1][l2] = sum_h f_2h(l1, l2) (2h - 1)!! / (2 gamma)^h, for l1 ≤
// la_max[axis] and l2 ≤ lb_max[axis].
template <int NA, int NB, int NI>
void overlap_axes(const std::array<int, 3>& la_max, const std::array<int, 3>& lb_max,
                  const std::array<double, 3>& pa, const std::array<double, 3>& pb, double gamma,
                  AxisExpansion<NA, NB, NI> (&ex)[3], double (&ov)[3][NA][NB]) {
  double moment_weight[NI / 2 + 1];  // (2h - 1)!! / (2 gamma)^h
  moment_weight[0] = 1.0;
  for (int h = 1; h <= NI / 2; ++h)
    moment_weight[h] = moment_weight[h - 1] * (2 * h - 1) / (2.0 * gamma);
  for (int k = 0; k < 3; ++k) {
    expand_axis(la_max[k], lb_max[k], pa[k], pb[k], ex[k]);
    for (int i = 0; i <= la_max[k]; ++i)
      for (int j = 0; j <= lb_max[k]; ++j) {
        double sum = 0.0;
        for (int h = 0; 2 * h <= i + j; ++h) sum += ex[k].f[i][j][2 * h] * moment_weight[h];
        ov[k][i][j] = sum;
      }
  }
}

// The A-factor tables of one axis for one nucleus: G(l1, l2)(nu) = sum_n f_n(l1,
// l2) H_n(nu) for l1 ≤ la_max, l2 ≤ lb_max.
template <int NA, int NB, int NI, int NG, int NH, int NV>
void attraction_axis(int la_max, int lb_max, const AxisExpansion<NA, NB, NI>& ex,
                     const double (&h)[NH][NH], double (&g)[NG][NG][NV]) {
  for (int i = 0; i <= la_max; ++i)
    for (int j = 0; j <= lb_max; ++j) {
      double* gij = g[i][j];
      const double* fij = ex.f[i][j];
      for (int nu = 0; nu <= i + j; ++nu) gij[nu] = 0.0;
      for (int n = 0; n <= i + j; ++n) {
        if (fij[n] == 0.0) continue;
        for (int nu = 0; nu <= n; ++nu) gij[nu] += fij[n] * h[n][nu];
      }
    }
}

// sum over ix ≤ nx, iy ≤ ny, iz ≤ nz of Gx(ix) Gy(iy) Gz(iz) F(ix + iy + iz): the
// nuclear attraction of one component pair without its prefactor.
inline double attraction_sum(const double* gx, const double* gy, const double* gz, int nx, int ny,
                             int nz, const double* boys) {
  double sum = 0.0;
  for (int ix = 0; ix <= nx; ++ix)
    for (int iy = 0; iy <= ny; ++iy) {
      const double gxy = gx[ix] * gy[iy];
      for (int iz = 0; iz <= nz; ++iz) sum += gxy * gz[iz] * boys[ix + iy + iz];
    }
  return sum;
}

}  // namespace norvik::integrals::one
