#include "linalg/eigen.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "linalg/cholesky.h"
#include "linalg/kernels.h"
#include "linalg/tridiagonal.h"
#include "linalg/tridiagonal_eigen.h"

namespace norvik::linalg {

namespace {

bool valid_square(ConstMatrixView a, Index n) {
  return a.rows() == n && a.cols() == n && a.ld() >= std::max<Index>(1, n);
}

// Signs each column so that its largest component (the first of near-ties) is positive.
void fix_signs(MatrixView v, Index ncol) {
  for (Index j = 0; j < ncol; ++j) {
    double* c = v.col(j);
    double big = 0.0;
    for (Index i = 0; i < v.rows(); ++i) big = std::max(big, std::abs(c[i]));
    for (Index i = 0; i < v.rows(); ++i) {
      if (std::abs(c[i]) >= big * (1.0 - 1e-10)) {
        if (c[i] < 0.0) {
          for (Index r = 0; r < v.rows(); ++r) c[r] = -c[r];
        }
        break;
      }
    }
  }
}

}  // namespace

Status symmetric_eigen(MatrixView a, std::span<double> w, MatrixView v,
                       const EigenOptions& options) {
  const Index n = a.rows();
  if (n < 0 || !valid_square(a, n) || !valid_square(v, n) || static_cast<Index>(w.size()) < n) {
    return Status::bad_dimension;
  }
  if (n == 0) return Status::ok;
  if (!all_finite(a)) return Status::not_finite;
  symmetrize(a);
  // Scale a matrix whose elements would overflow or underflow on squaring.
  double amax = 0.0;
  for (Index j = 0; j < n; ++j) {
    for (Index i = 0; i < n; ++i) amax = std::max(amax, std::abs(a(i, j)));
  }
  const double scale = (amax > 0.0 && (amax < 1e-100 || amax > 1e100)) ? 1.0 / amax : 1.0;
  if (scale != 1.0) {
    for (Index j = 0; j < n; ++j) {
      for (Index i = 0; i < n; ++i) a(i, j) *= scale;
    }
  }
  std::span<double> d = w.first(static_cast<std::size_t>(n));
  std::vector<double> e(static_cast<std::size_t>(std::max<Index>(n - 1, 1)));
  std::vector<double> tau(e.size());
  tridiagonalize(a, d, e, tau);
  const Status s = tridiagonal_divide_conquer(d, e, v, options.tolerance);
  if (s != Status::ok) return s;
  apply_q(a, tau, v);
  if (scale != 1.0) {
    for (auto& x : d) x /= scale;
  }
  if (options.order == Order::descending) reverse_order(d, v);
  fix_signs(v, n);
  return Status::ok;
}

Status generalized_eigen(MatrixView a, MatrixView b, std::span<double> w, MatrixView v,
                         const EigenOptions& options) {
  const Index n = a.rows();
  if (n < 0 || !valid_square(a, n) || !valid_square(b, n) || !valid_square(v, n) ||
      static_cast<Index>(w.size()) < n) {
    return Status::bad_dimension;
  }
  if (n == 0) return Status::ok;
  if (!all_finite(a) || !all_finite(b)) return Status::not_finite;
  symmetrize(a);
  symmetrize(b);
  const Status sc = cholesky(b, options.tolerance);
  if (sc != Status::ok) return sc;
  // C = L⁻¹·A·L⁻ᵀ: W = L⁻¹·A, then C = L⁻¹·Wᵀ (A symmetric, so Wᵀ = A·L⁻ᵀ).
  solve_lower(Op::none, b, a);
  Matrix c(n, n);
  transpose(a, c);
  solve_lower(Op::none, b, c);
  symmetrize(c);
  EigenOptions inner = options;
  const Status se = symmetric_eigen(c, w, v, inner);
  if (se != Status::ok) return se;
  solve_lower(Op::transpose, b, v);  // V = L⁻ᵀ·Y
  fix_signs(v, n);
  return Status::ok;
}

}  // namespace norvik::linalg
