#include "linalg/cholesky.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "linalg/kernels.h"

namespace norvik::linalg {

Status cholesky(MatrixView a, double tolerance) {
  const Index n = a.rows();
  if (n < 0 || a.cols() != n || a.ld() < std::max<Index>(1, n)) return Status::bad_dimension;
  if (n == 0) return Status::ok;
  for (Index j = 0; j < n; ++j) {
    for (Index i = j; i < n; ++i) {
      if (!std::isfinite(a(i, j))) return Status::not_finite;
    }
  }
  const double eps = effective_tolerance(tolerance);
  std::vector<double> diag(static_cast<std::size_t>(n));
  for (Index j = 0; j < n; ++j) diag[j] = a(j, j);
  // Right-looking in panels: factor a panel column by column, then update the
  // trailing square with one product (both triangles; only the lower one is used).
  constexpr Index kPanel = 64;
  for (Index k0 = 0; k0 < n; k0 += kPanel) {
    const Index kb = std::min(kPanel, n - k0);
    for (Index j = k0; j < k0 + kb; ++j) {
      // Column j of the panel, brought up to date with the panel's earlier columns.
      for (Index p = k0; p < j; ++p) {
        const double ljp = a(j, p);
        const double* lp = a.col(p);
        double* aj = a.col(j);
        for (Index i = j; i < n; ++i) aj[i] -= lp[i] * ljp;
      }
      const double pivot = a(j, j);
      if (!(diag[j] > 0.0) || !(pivot > eps * diag[j])) return Status::not_positive_definite;
      const double ljj = std::sqrt(pivot);
      a(j, j) = ljj;
      const double inv = 1.0 / ljj;
      for (Index i = j + 1; i < n; ++i) a(i, j) *= inv;
    }
    const Index r0 = k0 + kb;
    if (r0 < n) {
      ConstMatrixView l21 = a.block(r0, k0, n - r0, kb);
      gemm(Op::none, Op::transpose, -1.0, l21, l21, 1.0, a.block(r0, r0, n - r0, n - r0));
    }
  }
  for (Index j = 1; j < n; ++j) std::fill_n(a.col(j), j, 0.0);
  return Status::ok;
}

}  // namespace norvik::linalg
