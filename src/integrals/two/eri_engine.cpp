#include "integrals/two/eri_engine.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "integrals/two/boys.h"
#include "integrals/two/cartesian.h"

namespace norvik::integrals::two {
namespace {

// Horizontal recurrence (a, b+1_i| = (a+1_i, b| + R_i (a, b| applied to a block
// whose rows are the components a of total L1 … L1+L2 (global index minus
// ncart_upto(L1−1)) and whose columns run over `inner` values.  Writes the
// rows (a, b) with |a| = L1, |b| = L2, row-major over (a, b), into out.
// Kept out of line: inlined into the (ds|pp) kernel and vectorised, it gave wrong
// results with GCC 12 at -O3 (the class tests caught it; the address and
// undefined-behaviour sanitizers find nothing, and -O2 or no vectorisation is right).
#if defined(__GNUC__)
#define NORVIK_NOINLINE __attribute__((noinline))
#else
#define NORVIK_NOINLINE
#endif

template <int L1, int L2>
NORVIK_NOINLINE void hrr(const double* in, int inner, const std::array<double, 3>& r, double* out) {
  constexpr int base = ncart_upto(L1 - 1);
  if constexpr (L2 == 0) {
    std::copy_n(in, ncart(L1) * inner, out);
  } else {
    // Level k holds rows a with |a| in [L1, L1+L2−k] and columns b of shell k.
    constexpr int kMaxRows = ncart_upto(L1 + L2 - 1) - base;
    constexpr int kMaxCols = ncart(L2);
    double buf[2][kMaxRows * kMaxCols * 36];
    const double* prev = in;
    int prev_cols = 1;
    for (int k = 1; k <= L2; ++k) {
      const int rows = ncart_upto(L1 + L2 - k) - base;
      const int cols = ncart(k);
      double* cur = (k == L2) ? out : buf[k & 1];
      const int bbase = ncart_upto(k - 1);
      const int pbase = ncart_upto(k - 2);
      for (int a = 0; a < rows; ++a) {
        const int ag = a + base;
        for (int bl = 0; bl < cols; ++bl) {
          const int bg = bl + bbase;
          const int i = kCart.dir[bg];
          const int bm = kCart.minus[bg][i] - pbase;
          const int ap = kCart.plus[ag][i] - base;
          const double ri = r[i];
          const double* x1 = prev + (ap * prev_cols + bm) * inner;
          const double* x0 = prev + (a * prev_cols + bm) * inner;
          double* y = cur + (a * cols + bl) * inner;
          for (int t = 0; t < inner; ++t) y[t] = x1[t] + ri * x0[t];
        }
      }
      prev = cur;
      prev_cols = cols;
    }
  }
}

using HrrFn = void (*)(const double*, int, const std::array<double, 3>&, double*);

template <int... Ls>
constexpr std::array<HrrFn, 9> make_hrr_table(std::integer_sequence<int, Ls...>) {
  return {&hrr<Ls / 3, Ls % 3>...};
}

// hrr<L1, L2> for L1, L2 ≤ 2, indexed 3·L1 + L2.
constexpr auto kHrr = make_hrr_table(std::make_integer_sequence<int, 9>{});

// Where the contracted [e0|f0] of one combination (bra contraction x, ket
// contraction y) sit: components e of total cla..cla+clb, f of clc..clc+cld.
struct ComboRange {
  int e0 = 0, ne = 0;  // first global e index and count
  int f0 = 0, nf = 0;
};

template <int LA, int LB, int LC, int LD>
void hgp(const ShellPair& bra, const ShellPair& ket, EngineWorkspace& ws, double neglect) {
  constexpr int EB = LA + LB, FK = LC + LD, MT = EB + FK;
  constexpr int NE = ncart_upto(EB), NF = ncart_upto(FK);
  constexpr int M1 = MT + 1;

  const int nx = bra.ncombo, ny = ket.ncombo;
  const bool single = nx == 1 && ny == 1;
  ComboRange ex[kMaxCombos], fy[kMaxCombos];
  int la_min = LA;
  for (int x = 0; x < nx; ++x) {
    ex[x].e0 = ncart_upto(bra.cla[x] - 1);
    ex[x].ne = ncart_upto(bra.cla[x] + bra.clb[x]) - ex[x].e0;
    la_min = std::min(la_min, bra.cla[x]);
  }
  for (int y = 0; y < ny; ++y) {
    fy[y].f0 = ncart_upto(ket.cla[y] - 1);
    fy[y].nf = ncart_upto(ket.cla[y] + ket.clb[y]) - fy[y].f0;
  }
  // Accumulators of every combination, (x, y) after (x, y−1) after (x−1, …).
  int acc_off[kMaxCombos][kMaxCombos];
  int total = 0;
  for (int x = 0; x < nx; ++x)
    for (int y = 0; y < ny; ++y) {
      acc_off[x][y] = total;
      total += ex[x].ne * fy[y].nf;
    }
  ws.acc.assign(static_cast<std::size_t>(total), 0.0);
  double* acc = ws.acc.data();

  double v[NF * NE * M1];
  double f[MT + 1];
  const double skip = neglect / kTwoPi52;

  for (const PrimitivePair& p : bra.prims) {
    if (p.bound * ket.bound * std::sqrt(2.0 * p.half_inv_zeta) < skip) continue;
    for (const PrimitivePair& q : ket.prims) {
      const double ze = p.zeta + q.zeta;
      const double inv_ze = 1.0 / ze;
      const double root = std::sqrt(inv_ze);
      if (p.bound * q.bound * root < skip) continue;
      const double rho = p.zeta * q.zeta * inv_ze;
      const double pq[3] = {p.p[0] - q.p[0], p.p[1] - q.p[1], p.p[2] - q.p[2]};
      const double T = rho * (pq[0] * pq[0] + pq[1] * pq[1] + pq[2] * pq[2]);
      double pref = kTwoPi52 * p.kz * q.kz * root;
      if (single) pref *= p.c[0] * q.c[0];
      boys(MT, T, f);
      for (int m = 0; m <= MT; ++m) v[m] = pref * f[m];
      // bra build [e0|00]^(m), one angular momentum level at a time so that
      // the m ranges are compile-time constants
      if constexpr (EB > 0) {
        const double wp[3] = {-q.zeta * inv_ze * pq[0], -q.zeta * inv_ze * pq[1],
                              -q.zeta * inv_ze * pq[2]};
        const double roz = q.zeta * inv_ze;  // ρ/ζ
        [&]<int... Ls>(std::integer_sequence<int, Ls...>) {
          (
              [&] {
                constexpr int L = Ls + 1;
                constexpr int mmax = MT - L;
                for (int g = ncart_upto(L - 1); g < ncart_upto(L); ++g) {
                  const int i = kCart.dir[g];
                  const int g1 = kCart.minus[g][i];
                  const int n = kCart.lmn[g1][i];
                  double* y = v + g * M1;
                  const double* x1 = v + g1 * M1;
                  const double pa = p.pa[i], w = wp[i];
                  if (n == 0) {
                    for (int m = 0; m <= mmax; ++m) y[m] = pa * x1[m] + w * x1[m + 1];
                  } else {
                    const double* x2 = v + kCart.minus[g1][i] * M1;
                    const double c = n * p.half_inv_zeta;
                    for (int m = 0; m <= mmax; ++m)
                      y[m] = pa * x1[m] + w * x1[m + 1] + c * (x2[m] - roz * x2[m + 1]);
                  }
                }
              }(),
              ...);
        }
        (std::make_integer_sequence<int, EB>{});
      }
      // ket build [e0|f0]^(m), by levels of f and of e
      if constexpr (FK > 0) {
        const double wq[3] = {p.zeta * inv_ze * pq[0], p.zeta * inv_ze * pq[1],
                              p.zeta * inv_ze * pq[2]};
        const double roe = p.zeta * inv_ze;  // ρ/η
        const double half_inv_ze = 0.5 * inv_ze;
        [&]<int... Fs>(std::integer_sequence<int, Fs...>) {
          (
              [&] {
                constexpr int LF = Fs + 1;
                const int emin = std::max(0, la_min - (FK - LF));
                for (int h = ncart_upto(LF - 1); h < ncart_upto(LF); ++h) {
                  const int i = kCart.dir[h];
                  const int h1 = kCart.minus[h][i];
                  const int nf = kCart.lmn[h1][i];
                  const int h2 = nf > 0 ? kCart.minus[h1][i] : 0;
                  const double qc = q.pa[i], w = wq[i];
                  const double cf = nf * q.half_inv_zeta;
                  double* yh = v + h * NE * M1;
                  const double* x1h = v + h1 * NE * M1;
                  const double* x2h = v + h2 * NE * M1;
                  [&]<int... Es>(std::integer_sequence<int, Es...>) {
                    (
                        [&] {
                          constexpr int LE = Es;
                          constexpr int mmax = MT - LE - LF;
                          if (LE < emin) return;
                          for (int e = ncart_upto(LE - 1); e < ncart_upto(LE); ++e) {
                            double* y = yh + e * M1;
                            const double* x1 = x1h + e * M1;
                            const int ne = kCart.lmn[e][i];
                            if (nf > 0) {
                              const double* x2 = x2h + e * M1;
                              for (int m = 0; m <= mmax; ++m)
                                y[m] = qc * x1[m] + w * x1[m + 1] + cf * (x2[m] - roe * x2[m + 1]);
                            } else {
                              for (int m = 0; m <= mmax; ++m) y[m] = qc * x1[m] + w * x1[m + 1];
                            }
                            if (ne > 0) {
                              const double* x3 = x1h + kCart.minus[e][i] * M1;
                              const double c = ne * half_inv_ze;
                              for (int m = 0; m <= mmax; ++m) y[m] += c * x3[m + 1];
                            }
                          }
                        }(),
                        ...);
                  }
                  (std::make_integer_sequence<int, EB + 1>{});
                }
              }(),
              ...);
        }
        (std::make_integer_sequence<int, FK>{});
      }
      for (int x = 0; x < nx; ++x) {
        for (int y = 0; y < ny; ++y) {
          const double wxy = single ? 1.0 : p.c[x] * q.c[y];
          double* a = acc + acc_off[x][y];
          const ComboRange& ef = ex[x];
          const ComboRange& ff = fy[y];
          for (int h = 0; h < ff.nf; ++h) {
            const double* src = v + ((ff.f0 + h) * NE + ef.e0) * M1;
            double* dst = a + h * ef.ne;
            for (int e = 0; e < ef.ne; ++e) dst[e] += wxy * src[e * M1];
          }
        }
      }
    }
  }

  // Horizontal recurrences on the contracted integrals of each combination:
  // first the ket, with the bra components as the inner index, then the bra
  // with (c, d) inner.
  int out_size = 0;
  for (int x = 0; x < nx; ++x)
    for (int y = 0; y < ny; ++y) out_size += combo_block_size(bra, x, ket, y);
  ws.out.resize(static_cast<std::size_t>(out_size));
  double* out = ws.out.data();
  double ket_done[36 * 31];
  double swapped[31 * 36];
  for (int x = 0; x < nx; ++x) {
    for (int y = 0; y < ny; ++y) {
      const int ne = ex[x].ne;
      const int ncd = ncart(ket.cla[y]) * ncart(ket.clb[y]);
      kHrr[3 * ket.cla[y] + ket.clb[y]](acc + acc_off[x][y], ne, ket.ab, ket_done);
      for (int cd = 0; cd < ncd; ++cd)
        for (int e = 0; e < ne; ++e) swapped[e * ncd + cd] = ket_done[cd * ne + e];
      kHrr[3 * bra.cla[x] + bra.clb[x]](swapped, ncd, bra.ab, out);
      out += combo_block_size(bra, x, ket, y);
    }
  }
}

using Kernel = void (*)(const ShellPair&, const ShellPair&, EngineWorkspace&, double);

template <int Code>
constexpr Kernel kernel_for() {
  constexpr int la = Code / 27, lb = (Code / 9) % 3, lc = (Code / 3) % 3, ld = Code % 3;
  if constexpr (la >= lb && lc >= ld && (la > lc || (la == lc && lb >= ld)))
    return &hgp<la, lb, lc, ld>;
  else
    return nullptr;
}

template <int... Codes>
constexpr std::array<Kernel, sizeof...(Codes)> make_kernels(std::integer_sequence<int, Codes...>) {
  return {kernel_for<Codes>()...};
}

constexpr auto kKernels = make_kernels(std::make_integer_sequence<int, 81>{});

}  // namespace

int combo_block_size(const ShellPair& bra, int x, const ShellPair& ket, int y) {
  return ncart(bra.cla[x]) * ncart(bra.clb[x]) * ncart(ket.cla[y]) * ncart(ket.clb[y]);
}

const double* eri_canonical(const ShellPair& bra, const ShellPair& ket, EngineWorkspace& ws,
                            EngineOptions options) {
  kKernels[27 * bra.la + 9 * bra.lb + 3 * ket.la + ket.lb](bra, ket, ws, options.neglect);
  return ws.out.data();
}

}  // namespace norvik::integrals::two
