// The Fock builds: J[Pα + Pβ] − a·K[Pσ] from the store or integral-direct.
//
// Every distinct integral v = (ij|kl) stands for deg = (i≠j ? 2 : 1)(k≠l ? 2 : 1)
// (ij≠kl ? 2 : 1) index orders.  With s = deg·v it adds s/2·D_kl to X_ij and
// s/2·D_ij to X_kl (D = Pα + Pβ), and s/4·Pσ_jl to Yσ_ik, s/4·Pσ_jk to Yσ_il,
// s/4·Pσ_il to Yσ_jk, s/4·Pσ_ik to Yσ_jl; then J = (X + Xᵀ)/2 and
// Kσ = (Yσ + Yσᵀ)/2.
//
// The sums do not depend on the number of threads.  The outer loop (rows of
// the store, bra shell pairs of the direct build) is dealt round-robin into a
// fixed set of blocks chosen from the problem alone (BlockPartials); each block
// accumulates into its own X and Y, and the blocks are added in block order.
// Threads only share out whole blocks and, for the final sum, ranges of
// elements, so one, two or any number of threads give the same bits.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

#include "common/constants.h"
#include "integrals/two/quartets.h"
#include "integrals/two/two_electron.h"
#include "integrals/two/unique_quartets.h"

namespace norvik::integrals::two {
namespace {

using constants::kHartreeEv;

// Partial sums of a loop over `rows` iterations, one array of `width` doubles
// per block, added in a fixed order.
//
// Iteration r belongs to block r mod nblocks: round-robin dealing gives every
// block a like share of the triangular loops (row P of the store has P + 1
// entries) without knowing the cost of a row.  The number of blocks depends on
// the problem only: kMaxBlocks, fewer when the partials would take more than
// kPartialBytes (but never fewer than kMinBlocks) and never more than the
// iterations.  For an exchange build the width is 3·nbasis² doubles, so the
// partials take 768·nbasis² bytes at 32 blocks: 10 MB for 114 functions,
// 69 MB for 300; beyond about 590 functions the budget lowers the block count
// (11 blocks of 24 MB for 1000 functions, the floor of 8 from 1200 on).  Up to
// kMaxBlocks threads find work.
class BlockPartials {
 public:
  static constexpr std::int64_t kMaxBlocks = 32;
  static constexpr std::int64_t kMinBlocks = 8;
  static constexpr double kPartialBytes = 256.0 * 1024 * 1024;

  BlockPartials(std::size_t width, std::int64_t rows) : width_(width) {
    const double per_block = 8.0 * static_cast<double>(std::max<std::size_t>(width, 1));
    const auto fit = static_cast<std::int64_t>(kPartialBytes / per_block);
    nblocks_ = std::min(std::clamp(fit, kMinBlocks, kMaxBlocks), std::max<std::int64_t>(rows, 1));
    // Left uninitialised: each block clears its own array on the thread that
    // fills it.
    data_.reset(new double[static_cast<std::size_t>(nblocks_) * width_]);
  }

  int blocks() const { return static_cast<int>(nblocks_); }

  // The cleared array of block b.
  double* start(int b) {
    double* p = block(b);
    std::fill_n(p, width_, 0.0);
    return p;
  }

  // Adds blocks 1, 2, … in order into block 0 over the element range r (of
  // ranges()); called by the threads of a parallel region as a worksharing loop
  // over the ranges, since any split gives the same sums.
  static constexpr std::size_t kRange = 1024;  // 8 kB of each block
  std::int64_t ranges() const { return static_cast<std::int64_t>((width_ + kRange - 1) / kRange); }
  void sum_range(std::int64_t r) {
    const std::size_t begin = static_cast<std::size_t>(r) * kRange;
    const std::size_t end = std::min(width_, begin + kRange);
    double* total = block(0);
    for (int b = 1; b < blocks(); ++b) {
      const double* p = block(b);
      for (std::size_t e = begin; e < end; ++e) total[e] += p[e];
    }
  }

  // The sum of all blocks, once every range has been added.
  const double* total() { return block(0); }

 private:
  double* block(int b) { return data_.get() + static_cast<std::size_t>(b) * width_; }

  std::size_t width_;
  std::int64_t nblocks_ = 1;
  std::unique_ptr<double[]> data_;
};

// Width of the Fock partials: X and, with exchange, Yα and Yβ, each nbasis²
// doubles indexed row-major (the result is symmetrised anyway).
std::size_t fock_width(int n, bool exchange) {
  return static_cast<std::size_t>(n) * static_cast<std::size_t>(n) * (exchange ? 3 : 1);
}

// Adds one distinct integral to the partial X and Y of a block.
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

// Writes (or adds) the two-electron part from the summed partials.  The
// digest adds the four index orders whose first index is in the bra; the
// other four are their bra–ket swaps, which put the transposed density at the
// transposed element: K = (Y + Yᵀ)/2 for a symmetric density and (Y − Yᵀ)/2
// for an antisymmetric one, whose Coulomb part vanishes.
void finish(const double* total, int n, bool exchange, double a, std::span<double> fock, bool add,
            DensityKind kind = DensityKind::symmetric) {
  const bool anti = kind == DensityKind::antisymmetric;
  const double swap = anti ? -1.0 : 1.0;
  const std::size_t nn = static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
  const double* x = total;
  const double* ya = exchange ? total + nn : nullptr;
  const double* yb = exchange ? total + 2 * nn : nullptr;
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) {
      const std::size_t ij = static_cast<std::size_t>(i) * n + j;
      const std::size_t ji = static_cast<std::size_t>(j) * n + i;
      const double jv = anti ? 0.0 : 0.5 * (x[ij] + x[ji]);
      double ga = jv, gb = jv;
      if (exchange) {
        ga -= a * 0.5 * (ya[ij] + swap * ya[ji]);
        gb -= a * 0.5 * (yb[ij] + swap * yb[ji]);
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

// The digests of m density pairs into one block's partials: density m's X
// and Y at m·width.
std::vector<Digest> digests(int n, bool exchange, std::span<const std::vector<double>> totals,
                            std::span<const std::span<const double>> rho, double* buf) {
  const std::size_t nn = static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
  const std::size_t width = fock_width(n, exchange);
  std::vector<Digest> g;
  for (std::size_t m = 0; m < rho.size(); ++m) {
    double* b = buf + m * width;
    g.push_back({n, totals[m].data(), rho[m].data(), rho[m].data() + nn, b, b + nn, b + 2 * nn});
  }
  return g;
}

std::vector<std::vector<double>> total_densities(int n,
                                                 std::span<const std::span<const double>> rho) {
  std::vector<std::vector<double>> d;
  for (const auto& r : rho) d.push_back(total_density(n, r));
  return d;
}

template <bool kExchange>
void stored_build(const ContextView& c, double a, std::span<const double> rho,
                  std::span<double> fock, DensityKind kind = DensityKind::symmetric) {
  const int n = c.nbasis;
  const std::size_t nn = static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
  const int npair = c.npair;
  const std::int32_t* pl = c.pairlist.data();
  const double* vint = c.vint.data();
  BlockPartials part(fock_width(n, kExchange), npair);
  const int nblocks = part.blocks();
  const std::vector<double> d = total_density(n, rho);
#pragma omp parallel
  {
#pragma omp for schedule(dynamic, 1)
    for (int blk = 0; blk < nblocks; ++blk) {
      double* buf = part.start(blk);
      const Digest g{n, d.data(), rho.data(), rho.data() + nn, buf, buf + nn, buf + 2 * nn};
      for (int P = blk; P < npair; P += nblocks) {
        const int i = pl[2 * P] - 1, j = pl[2 * P + 1] - 1;
        const double* row = vint + static_cast<std::int64_t>(P) * (P + 1) / 2;
        for (int Q = 0; Q <= P; ++Q) {
          const double v = row[Q];
          if (v == 0.0) continue;
          g.add<kExchange>(i, j, pl[2 * Q] - 1, pl[2 * Q + 1] - 1, v);
        }
      }
    }
#pragma omp for schedule(static)
    for (std::int64_t r = 0; r < part.ranges(); ++r) part.sum_range(r);
  }
  finish(part.total(), n, kExchange, a, fock, false, kind);
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

// G of m density pairs `delta` added to `fock` in one pass over the shell
// quartets; a quartet is computed when the screening keeps it for any of them.
template <bool kExchange>
void direct_build(const ContextView& c, double a, std::span<const std::span<const double>> delta,
                  std::span<const std::span<double>> fock,
                  std::span<const DensityKind> kinds = {}) {
  const int n = c.nbasis;
  const std::size_t nn = static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
  const auto shells = decode_shells(c.nshell, c.shelltab);
  const PairList list = pair_list(c.nshpair, c.shpair);
  const PairData pairs = make_pair_data(shells, list.a, list.b);
  const bool screen = c.thresh > 0.0;
  // The screening sees the largest change of each element over the densities.
  std::span<const double> bound = delta[0];
  std::vector<double> largest;
  if (screen && delta.size() > 1) {
    largest.assign(2 * nn, 0.0);
    for (const auto& dm : delta) {
      for (std::size_t e = 0; e < 2 * nn; ++e) largest[e] = std::max(largest[e], std::abs(dm[e]));
    }
    bound = largest;
  }
  ScreeningBounds bounds;
  if (screen) bounds = screening_bounds(c, shells, list, bound);
  const std::size_t ns = shells.size();
  const std::vector<double> qpair = pair_bounds(shells, list, c.vdiag);

  const std::size_t width = fock_width(n, kExchange);
  BlockPartials part(width * delta.size(), c.nshpair);
  const int nblocks = part.blocks();
  const std::vector<std::vector<double>> d = total_densities(n, delta);
#pragma omp parallel
  {
    std::vector<double> block(kMaxQuartetBlock);
    QuartetWorkspace ws;
#pragma omp for schedule(dynamic, 1)
    for (int blk = 0; blk < nblocks; ++blk) {
      const std::vector<Digest> g = digests(n, kExchange, d, delta, part.start(blk));
      // the bra pairs from the last, which have the most ket pairs
      for (int P = c.nshpair - 1 - blk; P >= 0; P -= nblocks) {
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
                                   {static_cast<int>(sa), static_cast<int>(sb),
                                    static_cast<int>(sc), static_cast<int>(sd)},
                                   bound))
              continue;
          }
          shell_quartet(shells, pairs, P, Q, block.data(), ws);
          for_each_unique(shells, list, P, Q, block.data(),
                          [&](int i, int j, int k, int l, double v) {
                            if (g.size() == 1) return g[0].add<kExchange>(i, j, k, l, v);
                            for (const Digest& gm : g) gm.add<kExchange>(i, j, k, l, v);
                          });
        }
      }
    }
#pragma omp for schedule(static)
    for (std::int64_t r = 0; r < part.ranges(); ++r) part.sum_range(r);
  }
  for (std::size_t m = 0; m < delta.size(); ++m) {
    finish(part.total() + m * width, n, kExchange, a, fock[m], true,
           kinds.empty() ? DensityKind::symmetric : kinds[m]);
  }
}

// The incremental build: fock += G[rho − rho_prev], then rho_prev = rho.
template <bool kExchange>
void incremental_build(const ContextView& c, double a, std::span<const double> rho,
                       std::span<double> rho_prev, std::span<double> fock) {
  const std::size_t nn = static_cast<std::size_t>(c.nbasis) * static_cast<std::size_t>(c.nbasis);
  std::vector<double> delta(2 * nn);
  for (std::size_t e = 0; e < 2 * nn; ++e) delta[e] = rho[e] - rho_prev[e];
  const std::array<std::span<const double>, 1> deltas{delta};
  const std::array<std::span<double>, 1> focks{fock};
  direct_build<kExchange>(c, a, deltas, focks);
  std::copy(rho.begin(), rho.begin() + static_cast<std::ptrdiff_t>(2 * nn), rho_prev.begin());
}

}  // namespace

void fock_stored(const ContextView& c, double a, std::span<const double> rho,
                 std::span<double> fock) {
  if (a == 0.0) return coulomb_stored(c, rho, fock);
  stored_build<true>(c, a, rho, fock);
}

void fock_stored(const ContextView& c, double a, std::span<const std::span<const double>> rho,
                 std::span<const std::span<double>> fock, std::span<const DensityKind> kinds) {
  // Reading the store is not what an exchange build's time goes into (the
  // digest of each integral is), so one build each costs as much as a shared
  // one; the Coulomb builds share one read of the store.
  if (a == 0.0) {
    std::vector<std::span<const double>> in;
    std::vector<std::span<double>> out;
    for (std::size_t m = 0; m < rho.size(); ++m) {
      if (kinds.empty() || kinds[m] == DensityKind::symmetric) {
        in.push_back(rho[m]);
        out.push_back(fock[m]);
      } else {
        std::fill(fock[m].begin(), fock[m].end(), 0.0);
      }
    }
    if (!in.empty()) coulomb_stored_pass(c, in, out);
    return;
  }
  for (std::size_t m = 0; m < rho.size(); ++m) {
    if (kinds.empty() || kinds[m] == DensityKind::symmetric) {
      fock_stored(c, a, rho[m], fock[m]);
    } else if (a == 0.0) {
      std::fill(fock[m].begin(), fock[m].end(), 0.0);
    } else {
      stored_build<true>(c, a, rho[m], fock[m], DensityKind::antisymmetric);
    }
  }
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
  BlockPartials part(static_cast<std::size_t>(c.npair), c.npair);
  const int nblocks = part.blocks();
#pragma omp parallel
  {
#pragma omp for schedule(dynamic, 1)
    for (int blk = 0; blk < nblocks; ++blk) {
      double* jp = part.start(blk);
      for (int P = blk; P < c.npair; P += nblocks) {
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
#pragma omp for schedule(static)
    for (std::int64_t r = 0; r < part.ranges(); ++r) part.sum_range(r);
  }
  const double* jt = part.total();
  std::fill_n(fock.begin(), 2 * nn, 0.0);
  for (int P = 0; P < c.npair; ++P) {
    const int i = c.pairlist[2 * P] - 1, j = c.pairlist[2 * P + 1] - 1;
    const double v = kHartreeEv * jt[P];
    const std::size_t ij = static_cast<std::size_t>(i) + static_cast<std::size_t>(n) * j;
    const std::size_t ji = static_cast<std::size_t>(j) + static_cast<std::size_t>(n) * i;
    fock[ij] = fock[ji] = fock[nn + ij] = fock[nn + ji] = v;
  }
}

// The Coulomb builds of several density pairs in one pass over the store,
// which is what their time goes into (each integral is used once per density,
// read once for all), each summed in the order of coulomb_stored: J_P = Σ_Q (P|Q) d_Q over the
// compact pairs, with d_Q = (2 − δ_kl) D_kl, per density.
void coulomb_stored_pass(const ContextView& c, std::span<const std::span<const double>> rho,
                         std::span<const std::span<double>> fock) {
  const int n = c.nbasis;
  const std::size_t nn = static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
  const std::size_t m = rho.size();
  const std::size_t np = static_cast<std::size_t>(c.npair);
  // dq[Q·m + k]: density k at pair Q, so that a row's sums over k are contiguous.
  std::vector<double> dq(np * m);
  for (int Q = 0; Q < c.npair; ++Q) {
    const int k = c.pairlist[2 * Q] - 1, l = c.pairlist[2 * Q + 1] - 1;
    const std::size_t kl = static_cast<std::size_t>(k) + static_cast<std::size_t>(n) * l;
    for (std::size_t d = 0; d < m; ++d) {
      dq[static_cast<std::size_t>(Q) * m + d] =
          (k == l ? 1.0 : 2.0) * (rho[d][kl] + rho[d][nn + kl]);
    }
  }
  BlockPartials part(np * m, c.npair);
  const int nblocks = part.blocks();
#pragma omp parallel
  {
    std::vector<double> sum(m);
#pragma omp for schedule(dynamic, 1)
    for (int blk = 0; blk < nblocks; ++blk) {
      double* jp = part.start(blk);
      for (int P = blk; P < c.npair; P += nblocks) {
        const double* row = c.vint.data() + static_cast<std::int64_t>(P) * (P + 1) / 2;
        const double* dp = dq.data() + static_cast<std::size_t>(P) * m;
        for (std::size_t d = 0; d < m; ++d) sum[d] = row[P] * dp[d];
        for (int Q = 0; Q < P; ++Q) {
          const double v = row[Q];
          const double* dqq = dq.data() + static_cast<std::size_t>(Q) * m;
          double* jq = jp + static_cast<std::size_t>(Q) * m;
          for (std::size_t d = 0; d < m; ++d) {
            sum[d] += v * dqq[d];
            jq[d] += v * dp[d];
          }
        }
        double* jpp = jp + static_cast<std::size_t>(P) * m;
        for (std::size_t d = 0; d < m; ++d) jpp[d] += sum[d];
      }
    }
#pragma omp for schedule(static)
    for (std::int64_t r = 0; r < part.ranges(); ++r) part.sum_range(r);
  }
  const double* jt = part.total();
  for (std::size_t d = 0; d < m; ++d) {
    std::span<double> f = fock[d];
    std::fill_n(f.begin(), 2 * nn, 0.0);
    for (int P = 0; P < c.npair; ++P) {
      const int i = c.pairlist[2 * P] - 1, j = c.pairlist[2 * P + 1] - 1;
      const double v = kHartreeEv * jt[static_cast<std::size_t>(P) * m + d];
      const std::size_t ij = static_cast<std::size_t>(i) + static_cast<std::size_t>(n) * j;
      const std::size_t ji = static_cast<std::size_t>(j) + static_cast<std::size_t>(n) * i;
      f[ij] = f[ji] = f[nn + ij] = f[nn + ji] = v;
    }
  }
}

void fock_direct(const ContextView& c, double a, std::span<const double> rho,
                 std::span<double> rho_prev, std::span<double> fock) {
  if (a == 0.0) return coulomb_direct(c, rho, rho_prev, fock);
  incremental_build<true>(c, a, rho, rho_prev, fock);
}

void coulomb_direct(const ContextView& c, std::span<const double> rho, std::span<double> rho_prev,
                    std::span<double> fock) {
  incremental_build<false>(c, 0.0, rho, rho_prev, fock);
}

void fock_direct(const ContextView& c, double a, std::span<const std::span<const double>> rho,
                 std::span<const std::span<double>> fock, std::span<const DensityKind> kinds) {
  for (const auto& f : fock) std::fill(f.begin(), f.end(), 0.0);
  if (a == 0.0) return direct_build<false>(c, 0.0, rho, fock, kinds);
  direct_build<true>(c, a, rho, fock, kinds);
}

bool screening(const ContextView& c, const std::array<int, 4>& s, std::span<const double> delta) {
  const auto shells = decode_shells(c.nshell, c.shelltab);
  return screening_quartet(c, shells, s, delta);
}

}  // namespace norvik::integrals::two
