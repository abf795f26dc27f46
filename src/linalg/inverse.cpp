#include "linalg/inverse.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace norvik::linalg {

Status invert(MatrixView a) {
  const Index n = a.rows();
  if (n < 0 || a.cols() != n || a.ld() < std::max<Index>(1, n)) return Status::bad_dimension;
  if (n == 0) return Status::ok;
  if (!all_finite(a)) return Status::not_finite;
  double amax = 0.0;
  for (Index j = 0; j < n; ++j) {
    for (Index i = 0; i < n; ++i) amax = std::max(amax, std::abs(a(i, j)));
  }
  const double negligible = static_cast<double>(n) * kMachineEpsilon * amax;
  std::vector<Index> row_of(static_cast<std::size_t>(n));
  std::vector<double> pivot_row(static_cast<std::size_t>(n));
  for (Index k = 0; k < n; ++k) {
    Index p = k;
    for (Index i = k + 1; i < n; ++i) {
      if (std::abs(a(i, k)) > std::abs(a(p, k))) p = i;
    }
    if (!(std::abs(a(p, k)) > negligible)) return Status::singular;
    row_of[k] = p;
    if (p != k) {
      for (Index j = 0; j < n; ++j) std::swap(a(k, j), a(p, j));
    }
    // Row k becomes the pivot row of the inverse; every other row is cleared in
    // column k, column k itself turning into the inverse's column.
    const double inv = 1.0 / a(k, k);
    a(k, k) = 1.0;
    for (Index j = 0; j < n; ++j) {
      a(k, j) *= inv;
      pivot_row[j] = a(k, j);
    }
    std::vector<double> factor(a.col(k), a.col(k) + n);
    factor[k] = 0.0;
    for (Index i = 0; i < n; ++i) {
      if (i != k) a(i, k) = 0.0;
    }
    for (Index j = 0; j < n; ++j) {
      const double pj = pivot_row[j];
      if (pj == 0.0) continue;
      double* col = a.col(j);
      for (Index i = 0; i < n; ++i) col[i] -= factor[i] * pj;
    }
  }
  // Undo the row interchanges as column interchanges, last first.
  for (Index k = n - 1; k >= 0; --k) {
    if (row_of[k] != k) std::swap_ranges(a.col(k), a.col(k) + n, a.col(row_of[k]));
  }
  return Status::ok;
}

}  // namespace norvik::linalg
