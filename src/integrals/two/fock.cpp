// The Fock builds: J[Pα + Pβ] − a·K[Pσ] from the store or integral-direct.
//
// Every distinct integral v = (ij|kl) stands for deg = (i≠j ? 2 : 1)(k≠l ? 2 : 1)
// (ij≠kl ? 2 : 1) index orders.  With s = deg·v it adds s/2·D_kl to X_ij and
// s/2·D_ij to X_kl (D = Pα + Pβ), and s/4·Pσ_jl to Yσ_ik, s/4·Pσ_jk to Yσ_il,
// s/4·Pσ_il to Yσ_jk, s/4·Pσ_ik to Yσ_jl; then J = (X + Xᵀ)/2 and
// Kσ = (Yσ + Yσᵀ)/2.  Each thread accumulates into its own X and Y, and the
// buffers are added in thread order, so a given thread count always gives the
// same bits.
#include <omp.h>

#include <algorithm>
#include <cmath>

#include "common/constants.h"
#include "integrals/two/quartets.h"
#include "integrals/two/two_electron.h"
#include "integrals/two/unique_quartets.h"

namespace norvik::integrals::two {
namespace {

using constants::kHartreeEv;

// Per-thread accumulators: X (Coulomb) and, with exchange, Yα and Yβ; each
// nbasis² doubles, indexed row-major (the result is symmetrised anyway).
struct Accumulators {
  int n = 0;
  bool exchange = false;
  std::vector<double> data;  // per thread: X, then Yα, Yβ

  Accumulators(int nbasis, bool with_exchange, int nthreads)
      : n(nbasis),
        exchange(with_exchange),
        data(static_cast<std::size_t>(nthreads) * per_thread(nbasis, with_exchange), 0.0) {}

  static std::size_t per_thread(int n, bool x) {
    return static_cast<std::size_t>(n) * static_cast<std::size_t>(n) * (x ? 3 : 1);
  }
  double* thread(int t) {
    return data.data() + static_cast<std::size_t>(t) * per_thread(n, exchange);
  }
};

// Adds one distinct integral to the accumulators of a thread.
struct Digest {
  int n;
  const double* d;   // Pα + Pβ, column-major
  const double* pa;  // Pα
  const double* pb;  // Pβ
  double* x;
  double* ya;
  double* yb;

  template <bool kExchange>
  void add(int i, int j, int k, int l, double v) const {
    double s = v;
    if (i != j) s += s;
    if (k != l) s += s;
    if (i != k || j != l) s += s;
    const std::ptrdiff_t N = n;
    const double h = 0.5 * s;
    x[i * N + j] += h * d[k + N * l];
    x[k * N + l] += h * d[i + N * j];
    if constexpr (kExchange) {
      const double q = 0.25 * s;
      ya[i * N + k] += q * pa[j + N * l];
      ya[i * N + l] += q * pa[j + N * k];
      ya[j * N + k] += q * pa[i + N * l];
      ya[j * N + l] += q * pa[i + N * k];
      yb[i * N + k] += q * pb[j + N * l];
      yb[i * N + l] += q * pb[j + N * k];
      yb[j * N + k] += q * pb[i + N * l];
      yb[j * N + l] += q * pb[i + N * k];
    }
  }
};

// Sums the thread buffers in order and writes (or adds) the two-electron part.
void finish(Accumulators& acc, int nthreads, double a, std::span<double> fock, bool add) {
  const int n = acc.n;
  const std::size_t nn = static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
  const std::size_t width = Accumulators::per_thread(n, acc.exchange);
  double* total = acc.thread(0);
  for (int t = 1; t < nthreads; ++t) {
    const double* src = acc.thread(t);
    for (std::size_t e = 0; e < width; ++e) total[e] += src[e];
  }
  const double* x = total;
  const double* ya = acc.exchange ? total + nn : nullptr;
  const double* yb = acc.exchange ? total + 2 * nn : nullptr;
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) {
      const std::size_t ij = static_cast<std::size_t>(i) * n + j;
      const std::size_t ji = static_cast<std::size_t>(j) * n + i;
      const double jv = 0.5 * (x[ij] + x[ji]);
      double ga = jv, gb = jv;
      if (acc.exchange) {
        ga -= a * 0.5 * (ya[ij] + ya[ji]);
        gb -= a * 0.5 * (yb[ij] + yb[ji]);
      }
      // column-major output: element (i, j) at i + n·j
      const std::size_t out = static_cast<std::size_t>(i) + static_cast<std::size_t>(n) * j;
      if (add) {
        fock[out] += kHartreeEv * ga;
        fock[nn + out] += kHartreeEv * gb;
      } else {
        fock[out] = kHartreeEv * ga;
        fock[nn + out] = kHartreeEv * gb;
      }
    }
  }
}

std::vector<double> total_density(int n, std::span<const double> rho) {
  const std::size_t nn = static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
  std::vector<double> d(nn);
  for (std::size_t e = 0; e < nn; ++e) d[e] = rho[e] + rho[nn + e];
  return d;
}

template <bool kExchange>
void stored_build(const ContextView& c, double a, std::span<const double> rho,
                  std::span<double> fock) {
  const int n = c.nbasis;
  const std::size_t nn = static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
  const int nthreads = omp_get_max_threads();
  Accumulators acc(n, kExchange, nthreads);
  const std::vector<double> d = total_density(n, rho);
#pragma omp parallel num_threads(nthreads)
  {
    double* buf = acc.thread(omp_get_thread_num());
    const Digest g{n, d.data(), rho.data(), rho.data() + nn, buf, buf + nn, buf + 2 * nn};
#pragma omp for schedule(static, 1)
    for (int P = 0; P < c.npair; ++P) {
      const int i = c.pairlist[2 * P] - 1, j = c.pairlist[2 * P + 1] - 1;
      const double* row = c.vint.data() + static_cast<std::int64_t>(P) * (P + 1) / 2;
      for (int Q = 0; Q <= P; ++Q) {
        const double v = row[Q];
        if (v == 0.0) continue;
        g.add<kExchange>(i, j, c.pairlist[2 * Q] - 1, c.pairlist[2 * Q + 1] - 1, v);
      }
    }
  }
  finish(acc, nthreads, a, fock, false);
}

// Per shell pair: the largest sqrt((ij|ij)); per shell block: the largest
// |ΔPα| + |ΔPβ|.  Both bound the function-quartet test of `screening`.
struct ScreeningBounds {
  std::vector<double> q;     // per kept shell pair
  std::vector<double> dmax;  // nshell × nshell
};

ScreeningBounds screening_bounds(const ContextView& c, std::span<const IntegralShell> shells,
                                 const PairList& list, std::span<const double> delta) {
  ScreeningBounds b;
  const int n = c.nbasis;
  const std::size_t nn = static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
  b.q.resize(list.a.size());
  for (std::size_t p = 0; p < list.a.size(); ++p) {
    const IntegralShell& A = shells[static_cast<std::size_t>(list.a[p])];
    const IntegralShell& B = shells[static_cast<std::size_t>(list.b[p])];
    double q = 0;
    for (int fa = 0; fa < A.kind; ++fa)
      for (int fb = 0; fb < B.kind; ++fb) {
        const int i = std::max(A.first + fa, B.first + fb),
                  j = std::min(A.first + fa, B.first + fb);
        q = std::max(q, std::sqrt(std::abs(c.vdiag[pair_index(i, j)])));
      }
    b.q[p] = q;
  }
  const std::size_t ns = shells.size();
  b.dmax.assign(ns * ns, 0.0);
  for (std::size_t s = 0; s < ns; ++s)
    for (std::size_t t = 0; t < ns; ++t) {
      double m = 0;
      for (int fi = 0; fi < shells[s].kind; ++fi)
        for (int fj = 0; fj < shells[t].kind; ++fj) {
          const std::size_t e = static_cast<std::size_t>(shells[s].first + fi) +
                                static_cast<std::size_t>(n) * (shells[t].first + fj);
          m = std::max(m, std::abs(delta[e]) + std::abs(delta[nn + e]));
        }
      b.dmax[s * ns + t] = m;
    }
  return b;
}

// The function-quartet test of `screening` on decoded shells.
bool screening_quartet(const ContextView& c, std::span<const IntegralShell> shells,
                       const std::array<int, 4>& s, std::span<const double> delta) {
  const int n = c.nbasis;
  const std::size_t nn = static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
  const IntegralShell* sh[4];
  for (int t = 0; t < 4; ++t) sh[t] = &shells[static_cast<std::size_t>(s[t])];
  auto dd = [&](int x, int y) {
    const std::size_t e = static_cast<std::size_t>(x) + static_cast<std::size_t>(n) * y;
    return std::abs(delta[e]) + std::abs(delta[nn + e]);
  };
  auto vd = [&](int x, int y) { return c.vdiag[pair_index(std::max(x, y), std::min(x, y))]; };
  for (int fa = 0; fa < sh[0]->kind; ++fa) {
    const int i = sh[0]->first + fa;
    for (int fb = 0; fb < sh[1]->kind; ++fb) {
      const int j = sh[1]->first + fb;
      const double qij = vd(i, j);
      const double dij = dd(i, j);
      for (int fc = 0; fc < sh[2]->kind; ++fc) {
        const int k = sh[2]->first + fc;
        const double dik = dd(i, k), djk = dd(j, k);
        for (int fd = 0; fd < sh[3]->kind; ++fd) {
          const int l = sh[3]->first + fd;
          const double q = std::sqrt(std::abs(qij * vd(k, l)));
          const double dmax = std::max({dij, dd(k, l), dik, dd(i, l), djk, dd(j, l)});
          if (q * dmax * kHartreeEv > c.thresh) return true;
        }
      }
    }
  }
  return false;
}

template <bool kExchange>
void direct_build(const ContextView& c, double a, std::span<const double> rho,
                  std::span<double> rho_prev, std::span<double> fock) {
  const int n = c.nbasis;
  const std::size_t nn = static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
  std::vector<double> delta(2 * nn);
  for (std::size_t e = 0; e < 2 * nn; ++e) delta[e] = rho[e] - rho_prev[e];
  const auto shells = decode_shells(c.nshell, c.shelltab);
  const PairList list = pair_list(c.nshpair, c.shpair);
  const PairData pairs = make_pair_data(shells, list.a, list.b);
  const bool screen = c.thresh > 0.0;
  ScreeningBounds bounds;
  if (screen) bounds = screening_bounds(c, shells, list, delta);
  const std::size_t ns = shells.size();
  const std::vector<double> qpair = pair_bounds(shells, list, c.vdiag);

  const int nthreads = omp_get_max_threads();
  Accumulators acc(n, kExchange, nthreads);
  const std::vector<double> d = total_density(n, delta);
#pragma omp parallel num_threads(nthreads)
  {
    double* buf = acc.thread(omp_get_thread_num());
    const Digest g{n, d.data(), delta.data(), delta.data() + nn, buf, buf + nn, buf + 2 * nn};
    std::vector<double> block(kMaxQuartetBlock);
    QuartetWorkspace ws;
#pragma omp for schedule(static, 1)
    for (int P = c.nshpair - 1; P >= 0; --P) {
      const std::size_t sa = static_cast<std::size_t>(list.a[P]);
      const std::size_t sb = static_cast<std::size_t>(list.b[P]);
      for (int Q = 0; Q <= P; ++Q) {
        if (qpair[static_cast<std::size_t>(P)] * qpair[static_cast<std::size_t>(Q)] <
            kQuartetNeglect)
          continue;
        if (screen) {
          const std::size_t sc = static_cast<std::size_t>(list.a[Q]);
          const std::size_t sd = static_cast<std::size_t>(list.b[Q]);
          const double dm = std::max({bounds.dmax[sa * ns + sb], bounds.dmax[sc * ns + sd],
                                      bounds.dmax[sa * ns + sc], bounds.dmax[sa * ns + sd],
                                      bounds.dmax[sb * ns + sc], bounds.dmax[sb * ns + sd]});
          if (!(bounds.q[P] * bounds.q[Q] * dm * kHartreeEv > c.thresh)) continue;
          if (!screening_quartet(c, shells,
                                 {static_cast<int>(sa), static_cast<int>(sb), static_cast<int>(sc),
                                  static_cast<int>(sd)},
                                 delta))
            continue;
        }
        shell_quartet(shells, pairs, P, Q, block.data(), ws);
        for_each_unique(
            shells, list, P, Q, block.data(),
            [&](int i, int j, int k, int l, double v) { g.add<kExchange>(i, j, k, l, v); });
      }
    }
  }
  finish(acc, nthreads, a, fock, true);
  std::copy(rho.begin(), rho.begin() + static_cast<std::ptrdiff_t>(2 * nn), rho_prev.begin());
}

}  // namespace

void fock_stored(const ContextView& c, double a, std::span<const double> rho,
                 std::span<double> fock) {
  if (a == 0.0) return coulomb_stored(c, rho, fock);
  stored_build<true>(c, a, rho, fock);
}

void coulomb_stored(const ContextView& c, std::span<const double> rho, std::span<double> fock) {
  const int n = c.nbasis;
  const std::size_t nn = static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
  // J_P = Σ_Q (P|Q) d_Q over the compact pairs, d_Q = (2 − δ_kl) D_kl.
  std::vector<double> dq(static_cast<std::size_t>(c.npair));
  for (int Q = 0; Q < c.npair; ++Q) {
    const int k = c.pairlist[2 * Q] - 1, l = c.pairlist[2 * Q + 1] - 1;
    const std::size_t kl = static_cast<std::size_t>(k) + static_cast<std::size_t>(n) * l;
    dq[static_cast<std::size_t>(Q)] = (k == l ? 1.0 : 2.0) * (rho[kl] + rho[nn + kl]);
  }
  const int nthreads = omp_get_max_threads();
  std::vector<double> jt(static_cast<std::size_t>(nthreads) * c.npair, 0.0);
#pragma omp parallel num_threads(nthreads)
  {
    double* jp = jt.data() + static_cast<std::size_t>(omp_get_thread_num()) * c.npair;
#pragma omp for schedule(static, 1)
    for (int P = 0; P < c.npair; ++P) {
      const double* row = c.vint.data() + static_cast<std::int64_t>(P) * (P + 1) / 2;
      const double dp = dq[static_cast<std::size_t>(P)];
      double sum = row[P] * dp;
      for (int Q = 0; Q < P; ++Q) {
        sum += row[Q] * dq[static_cast<std::size_t>(Q)];
        jp[Q] += row[Q] * dp;
      }
      jp[P] += sum;
    }
  }
  for (int t = 1; t < nthreads; ++t)
    for (int P = 0; P < c.npair; ++P)
      jt[static_cast<std::size_t>(P)] += jt[static_cast<std::size_t>(t) * c.npair + P];
  std::fill_n(fock.begin(), 2 * nn, 0.0);
  for (int P = 0; P < c.npair; ++P) {
    const int i = c.pairlist[2 * P] - 1, j = c.pairlist[2 * P + 1] - 1;
    const double v = kHartreeEv * jt[static_cast<std::size_t>(P)];
    const std::size_t ij = static_cast<std::size_t>(i) + static_cast<std::size_t>(n) * j;
    const std::size_t ji = static_cast<std::size_t>(j) + static_cast<std::size_t>(n) * i;
    fock[ij] = fock[ji] = fock[nn + ij] = fock[nn + ji] = v;
  }
}

void fock_direct(const ContextView& c, double a, std::span<const double> rho,
                 std::span<double> rho_prev, std::span<double> fock) {
  if (a == 0.0) return coulomb_direct(c, rho, rho_prev, fock);
  direct_build<true>(c, a, rho, rho_prev, fock);
}

void coulomb_direct(const ContextView& c, std::span<const double> rho, std::span<double> rho_prev,
                    std::span<double> fock) {
  direct_build<false>(c, 0.0, rho, rho_prev, fock);
}

bool screening(const ContextView& c, const std::array<int, 4>& s, std::span<const double> delta) {
  const auto shells = decode_shells(c.nshell, c.shelltab);
  return screening_quartet(c, shells, s, delta);
}

}  // namespace norvik::integrals::two
