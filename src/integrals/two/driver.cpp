// Pair screening, the diagonal table, the integral store and the shell-quartet
// entry points of the two-electron driver.
#include <omp.h>

#include <algorithm>
#include <cmath>

#include "integrals/two/quartets.h"
#include "integrals/two/two_electron.h"
#include "integrals/two/unique_quartets.h"

namespace norvik::integrals::two {

std::vector<std::int32_t> remove_shell_pairs(int nshell, std::span<const double> shelltab) {
  const auto shells = decode_shells(nshell, shelltab);
  std::vector<std::int32_t> kept;
  for (int a = 0; a < nshell; ++a) {
    for (int b = 0; b <= a; ++b) {
      const IntegralShell& A = shells[static_cast<std::size_t>(a)];
      const IntegralShell& B = shells[static_cast<std::size_t>(b)];
      double r2 = 0;
      for (int k = 0; k < 3; ++k) r2 += (A.centre[k] - B.centre[k]) * (A.centre[k] - B.centre[k]);
      bool any = false;
      for (int p = 0; p < A.nprim && !any; ++p)
        for (int q = 0; q < B.nprim && !any; ++q) {
          const double x = A.exponents[p], y = B.exponents[q];
          any = x * y * r2 <= kPairCutoff * (x + y);
        }
      if (any) {
        kept.push_back(a + 1);
        kept.push_back(b + 1);
      }
    }
  }
  return kept;
}

void diagonal_table(int nbasis, int nshell, std::span<const double> shelltab, int nshpair,
                    std::span<const std::int32_t> shpair, std::span<double> vdiag) {
  const auto shells = decode_shells(nshell, shelltab);
  const PairList list = pair_list(nshpair, shpair);
  const PairData pairs = make_pair_data(shells, list.a, list.b);
  std::fill_n(vdiag.begin(), packed_size(nbasis), 0.0);
#pragma omp parallel
  {
    std::vector<double> block(kMaxQuartetBlock);
    QuartetWorkspace ws;
#pragma omp for schedule(dynamic, 4)
    for (int P = 0; P < nshpair; ++P) {
      shell_quartet(shells, pairs, P, P, block.data(), ws);
      const IntegralShell& A = shells[static_cast<std::size_t>(list.a[P])];
      const IntegralShell& B = shells[static_cast<std::size_t>(list.b[P])];
      for (int fa = 0; fa < A.kind; ++fa)
        for (int fb = 0; fb < B.kind; ++fb) {
          const int i = A.first + fa, j = B.first + fb;
          if (j > i) continue;
          vdiag[static_cast<std::size_t>(pair_index(i, j))] =
              block[static_cast<std::size_t>(((fa * B.kind + fb) * A.kind + fa) * B.kind + fb)];
        }
    }
  }
}

int remove_basis_pairs(int nbasis, std::span<const double> vdiag, std::span<std::int32_t> pairlist,
                       std::span<std::int32_t> pairmap) {
  const std::int64_t n2 = packed_size(nbasis);
  double qmax = 0;
  for (std::int64_t p = 0; p < n2; ++p) qmax = std::max(qmax, std::sqrt(std::abs(vdiag[p])));
  int npair = 0;
  for (int i = 0; i < nbasis; ++i) {
    for (int j = 0; j <= i; ++j) {
      const std::int64_t p = pair_index(i, j);
      if (qmax > 0 && std::sqrt(std::abs(vdiag[p])) * qmax >= kPairNeglect) {
        pairlist[2 * npair] = i + 1;
        pairlist[2 * npair + 1] = j + 1;
        ++npair;
        pairmap[p] = npair;
      } else {
        pairmap[p] = 0;
      }
    }
  }
  return npair;
}

namespace {

// Writes the distinct integrals of one shell quartet (pairs P ≥ Q) into the
// store.  Compact indices follow the packed order, so for kept pairs the test
// ij ≥ kl of the diagonal quartets is pij ≥ pkl.
void store_block(std::span<const IntegralShell> shells, const PairList& list, int P, int Q,
                 const double* block, std::span<const std::int32_t> pairmap,
                 std::span<double> vint) {
  const IntegralShell& A = shells[static_cast<std::size_t>(list.a[P])];
  const IntegralShell& B = shells[static_cast<std::size_t>(list.b[P])];
  const IntegralShell& C = shells[static_cast<std::size_t>(list.a[Q])];
  const IntegralShell& D = shells[static_cast<std::size_t>(list.b[Q])];
  const bool ab = list.a[P] == list.b[P], cd = list.a[Q] == list.b[Q], pq = P == Q;
  // compact indices of the ket pairs of this quartet
  std::int32_t ket[kMaxShellFunctions * kMaxShellFunctions];
  for (int fc = 0; fc < C.kind; ++fc)
    for (int fd = 0; fd < D.kind; ++fd) {
      const int k = C.first + fc, l = D.first + fd;
      ket[fc * D.kind + fd] =
          (cd && l > k) ? 0 : pairmap[static_cast<std::size_t>(pair_index(k, l))];
    }
  for (int fa = 0; fa < A.kind; ++fa) {
    const int i = A.first + fa;
    for (int fb = 0; fb < B.kind; ++fb) {
      const int j = B.first + fb;
      if (ab && j > i) continue;
      const std::int64_t pij = pairmap[static_cast<std::size_t>(pair_index(i, j))];
      if (pij == 0) continue;
      const std::int64_t base = pij * (pij - 1) / 2 - 1;
      const double* row = block + (fa * B.kind + fb) * C.kind * D.kind;
      const int n = C.kind * D.kind;
      for (int t = 0; t < n; ++t) {
        const std::int64_t pkl = ket[t];
        if (pkl == 0 || (pq && pkl > pij)) continue;
        vint[static_cast<std::size_t>(pij >= pkl ? base + pkl : pkl * (pkl - 1) / 2 - 1 + pij)] =
            row[t];
      }
    }
  }
}

}  // namespace

void fill_store(const ContextView& c, std::span<double> vint) {
  const auto shells = decode_shells(c.nshell, c.shelltab);
  const PairList list = pair_list(c.nshpair, c.shpair);
  const PairData pairs = make_pair_data(shells, list.a, list.b);
  const std::int64_t size = packed_size(c.npair);
  const std::vector<double> q = pair_bounds(shells, list, c.vdiag);
#pragma omp parallel
  {
#pragma omp for schedule(static)
    for (std::int64_t p = 0; p < size; ++p) vint[p] = 0.0;
    std::vector<double> block(kMaxQuartetBlock);
    QuartetWorkspace ws;
#pragma omp for schedule(dynamic, 1)
    for (int P = c.nshpair - 1; P >= 0; --P) {
      for (int Q = 0; Q <= P; ++Q) {
        if (q[static_cast<std::size_t>(P)] * q[static_cast<std::size_t>(Q)] < kQuartetNeglect)
          continue;
        shell_quartet(shells, pairs, P, Q, block.data(), ws);
        store_block(shells, list, P, Q, block.data(), c.pairmap, vint);
      }
    }
  }
}

void shell_quartet_block(int nshell, std::span<const double> shelltab, const std::array<int, 4>& s,
                         std::span<double> block) {
  const auto shells = decode_shells(nshell, shelltab);
  const int a[2] = {s[0] - 1, s[2] - 1}, b[2] = {s[1] - 1, s[3] - 1};
  const PairData pairs = make_pair_data(shells, a, b);
  std::vector<double> rows(kMaxQuartetBlock);
  QuartetWorkspace ws;
  shell_quartet(shells, pairs, 0, 1, rows.data(), ws);
  std::fill_n(block.begin(), kMaxQuartetBlock, 0.0);
  int k[4];
  for (int t = 0; t < 4; ++t) k[t] = shells[static_cast<std::size_t>(s[t] - 1)].kind;
  constexpr int m = kMaxShellFunctions;
  for (int fa = 0; fa < k[0]; ++fa)
    for (int fb = 0; fb < k[1]; ++fb)
      for (int fc = 0; fc < k[2]; ++fc)
        for (int fd = 0; fd < k[3]; ++fd)
          block[static_cast<std::size_t>(fa + m * (fb + m * (fc + m * fd)))] =
              rows[static_cast<std::size_t>(((fa * k[1] + fb) * k[2] + fc) * k[3] + fd)];
}

void shift_block(const ContextView& c, const std::array<int, 4>& s, std::span<const double> block,
                 std::span<double> vint) {
  const auto shells = decode_shells(c.nshell, c.shelltab);
  const IntegralShell* sh[4];
  for (int t = 0; t < 4; ++t) sh[t] = &shells[static_cast<std::size_t>(s[t] - 1)];
  constexpr int m = kMaxShellFunctions;
  for (int fa = 0; fa < sh[0]->kind; ++fa)
    for (int fb = 0; fb < sh[1]->kind; ++fb)
      for (int fc = 0; fc < sh[2]->kind; ++fc)
        for (int fd = 0; fd < sh[3]->kind; ++fd) {
          const int i = sh[0]->first + fa, j = sh[1]->first + fb;
          const int k = sh[2]->first + fc, l = sh[3]->first + fd;
          const std::int32_t pij = c.pairmap[pair_index(std::max(i, j), std::min(i, j))];
          const std::int32_t pkl = c.pairmap[pair_index(std::max(k, l), std::min(k, l))];
          if (pij == 0 || pkl == 0) continue;
          vint[store_index(pij, pkl)] =
              block[static_cast<std::size_t>(fa + m * (fb + m * (fc + m * fd)))];
        }
}

ContextView TwoElectronContext::view() const {
  ContextView v;
  v.nbasis = nbasis;
  v.nshell = nshell;
  v.shelltab = shelltab;
  v.nshpair = static_cast<int>(shpair.size() / 2);
  v.shpair = shpair;
  v.npair = npair;
  v.pairlist = pairlist;
  v.pairmap = pairmap;
  v.vdiag = vdiag;
  v.vint = vint;
  v.thresh = thresh;
  return v;
}

TwoElectronContext prepare(const basis::BasisSet& basis,
                           std::span<const std::array<double, 3>> positions, bool store,
                           double thresh) {
  TwoElectronContext t;
  t.nbasis = basis.nbasis();
  t.nshell = static_cast<int>(basis.shells.size());
  t.shelltab = pack_shells(basis, positions);
  t.shpair = remove_shell_pairs(t.nshell, t.shelltab);
  const std::int64_t n2 = packed_size(t.nbasis);
  t.vdiag.resize(static_cast<std::size_t>(n2));
  diagonal_table(t.nbasis, t.nshell, t.shelltab, static_cast<int>(t.shpair.size() / 2), t.shpair,
                 t.vdiag);
  t.pairlist.resize(static_cast<std::size_t>(2 * n2));
  t.pairmap.resize(static_cast<std::size_t>(n2));
  t.npair = remove_basis_pairs(t.nbasis, t.vdiag, t.pairlist, t.pairmap);
  t.pairlist.resize(static_cast<std::size_t>(2 * t.npair));
  t.thresh = thresh;
  if (store) {
    t.vint.resize(static_cast<std::size_t>(packed_size(t.npair)));
    fill_store(t.view(), t.vint);
  }
  return t;
}

}  // namespace norvik::integrals::two
