#include "linalg/orthog_basis.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "common/error.h"
#include "common/fortran_format.h"
#include "linalg/eigen.h"

namespace norvik::linalg {

namespace {
// The overlap is diagonalised to full working precision.
constexpr double kOverlapTolerance = 1e-30;
}  // namespace

int orthogonalize_basis(ConstMatrixView s, double threshold, MatrixView x) {
  const Index n = s.rows();
  if (n < 1) {
    throw Error(
        fortran::list_directed({"Wrong NofBase in orthog_basis.", static_cast<std::int64_t>(n)}));
  }
  if (n == 1) {
    x(0, 0) = 1.0;
    return 1;
  }
  Matrix work(n, n);
  copy(s, work);
  std::vector<double> lambda(static_cast<std::size_t>(n));
  const Status status = symmetric_eigen(
      work, lambda, x, {.tolerance = kOverlapTolerance, .order = Order::descending});
  if (status != Status::ok) {
    throw Error(fortran::list_directed(
        {"ILL is not zero in orthog_basis.", static_cast<std::int64_t>(code(status))}));
  }
  Index count = 0;
  while (count < n && lambda[count] >= threshold) ++count;
  for (Index j = 0; j < count; ++j) {
    const double scale = 1.0 / std::sqrt(lambda[j]);
    for (Index i = 0; i < n; ++i) x(i, j) *= scale;
  }
  for (Index j = count; j < n; ++j) std::fill_n(x.col(j), n, 0.0);
  return static_cast<int>(count);
}

}  // namespace norvik::linalg
