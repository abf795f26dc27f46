// Shared helpers of the driver: pair indexing and the walk over the distinct
// function quartets of a shell quartet.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <span>
#include <vector>

#include "integrals/two/quartets.h"

namespace norvik::integrals::two {

// 0-based packed index of the pair i ≥ j.
inline std::int64_t pair_index(std::int64_t i, std::int64_t j) {
  return i * (i + 1) / 2 + j;
}

// 0-based store position of the compact pairs P, Q (1-based, any order).
inline std::int64_t store_index(std::int64_t p, std::int64_t q) {
  return p >= q ? p * (p - 1) / 2 + q - 1 : q * (q - 1) / 2 + p - 1;
}

// Kept shell pairs as 0-based shells.
struct PairList {
  std::vector<int> a, b;
};

inline PairList pair_list(int nshpair, std::span<const std::int32_t> shpair) {
  PairList l;
  l.a.resize(static_cast<std::size_t>(nshpair));
  l.b.resize(static_cast<std::size_t>(nshpair));
  for (int p = 0; p < nshpair; ++p) {
    l.a[static_cast<std::size_t>(p)] = shpair[static_cast<std::size_t>(2 * p)] - 1;
    l.b[static_cast<std::size_t>(p)] = shpair[static_cast<std::size_t>(2 * p + 1)] - 1;
  }
  return l;
}

// Per kept shell pair: the largest √(ij|ij) over its functions (from vdiag).
inline std::vector<double> pair_bounds(std::span<const IntegralShell> shells, const PairList& list,
                                       std::span<const double> vdiag) {
  std::vector<double> q(list.a.size(), 0.0);
  for (std::size_t p = 0; p < list.a.size(); ++p) {
    const IntegralShell& A = shells[static_cast<std::size_t>(list.a[p])];
    const IntegralShell& B = shells[static_cast<std::size_t>(list.b[p])];
    double m = 0;
    for (int fa = 0; fa < A.kind; ++fa)
      for (int fb = 0; fb < B.kind; ++fb) {
        const std::int64_t i = A.first + fa, j = B.first + fb;
        const double v =
            vdiag[static_cast<std::size_t>(pair_index(std::max(i, j), std::min(i, j)))];
        m = std::max(m, std::sqrt(std::abs(v)));
      }
    q[p] = m;
  }
  return q;
}

// Calls f(i, j, k, l, value) once for every distinct integral (ij|kl) of the
// shell quartet of pairs P ≥ Q (block row-major as shell_quartet writes it):
// i ≥ j when a = b, k ≥ l when c = d, and ij ≥ kl when P = Q.
template <class F>
void for_each_unique(std::span<const IntegralShell> shells, const PairList& list, int P, int Q,
                     const double* block, F&& f) {
  const IntegralShell& A = shells[static_cast<std::size_t>(list.a[P])];
  const IntegralShell& B = shells[static_cast<std::size_t>(list.b[P])];
  const IntegralShell& C = shells[static_cast<std::size_t>(list.a[Q])];
  const IntegralShell& D = shells[static_cast<std::size_t>(list.b[Q])];
  const bool ab = list.a[P] == list.b[P], cd = list.a[Q] == list.b[Q], pq = P == Q;
  for (int fa = 0; fa < A.kind; ++fa) {
    const int i = A.first + fa;
    for (int fb = 0; fb < B.kind; ++fb) {
      const int j = B.first + fb;
      if (ab && j > i) continue;
      const double* row = block + (fa * B.kind + fb) * C.kind * D.kind;
      for (int fc = 0; fc < C.kind; ++fc) {
        const int k = C.first + fc;
        for (int fd = 0; fd < D.kind; ++fd) {
          const int l = D.first + fd;
          if (cd && l > k) continue;
          if (pq && pair_index(k, l) > pair_index(i, j)) continue;
          f(i, j, k, l, row[fc * D.kind + fd]);
        }
      }
    }
  }
}

}  // namespace norvik::integrals::two
