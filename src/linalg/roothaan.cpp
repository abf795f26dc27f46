#include "linalg/roothaan.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "common/error.h"
#include "common/fortran_format.h"
#include "linalg/eigen.h"
#include "linalg/kernels.h"

namespace norvik::linalg {

namespace {

using fortran::list_directed;

[[noreturn]] void fail(std::string_view text) {
  throw Error(list_directed({text}));
}

// 1-based number of the first level whose energy or orbital holds a NaN; 0 if none.
Index first_nan_level(std::span<const double> levels, ConstMatrixView c, Index count) {
  for (Index j = 0; j < count; ++j) {
    if (std::isnan(levels[j])) return j + 1;
    for (Index i = 0; i < c.rows(); ++i) {
      if (std::isnan(c(i, j))) return j + 1;
    }
  }
  return 0;
}

}  // namespace

void solve_roothaan(ConstMatrixView f, ConstMatrixView s, ConstMatrixView x, int northo, int spin,
                    std::span<double> levels, MatrixView c) {
  const Index n = f.rows();
  if (northo > n) {
    throw Error(list_directed({"Invalid orthogonalization.", std::int64_t{northo}}));
  }
  if (northo == n) {
    solve_roothaan_full(f, s, spin, levels, c);
  } else {
    solve_roothaan_orthogonal(f, x, northo, levels, c);
  }
}

void solve_roothaan_full(ConstMatrixView f, ConstMatrixView s, int spin, std::span<double> levels,
                         MatrixView c) {
  const Index n = f.rows();
  if (n < 1) fail("GHQRVD failed in splevel_GHQR.");
  Matrix fw(n, n), sw(n, n);
  copy(f, fw);
  copy(s, sw);
  if (generalized_eigen(fw, sw, levels, c) != Status::ok) fail("GHQRVD failed in splevel_GHQR.");
  if (const Index bad = first_nan_level(levels, c, n); bad != 0) {
    throw Error(list_directed(
        {"NaN is detected in splevel_GHQR.", std::int64_t{spin}, static_cast<std::int64_t>(bad)}));
  }
}

void solve_roothaan_orthogonal(ConstMatrixView f, ConstMatrixView x, int northo,
                               std::span<double> levels, MatrixView c) {
  const Index n = f.rows();
  const Index k = northo;
  if (k < 1 || k > n) fail("ILL is not zero in splevel_Orth.");
  ConstMatrixView xk = x.columns(0, k);
  Matrix fx(n, k), h(k, k), y(k, k);
  gemm(Op::none, Op::none, 1.0, f, xk, 0.0, fx);       // F·X
  gemm(Op::transpose, Op::none, 1.0, xk, fx, 0.0, h);  // Xᵀ·F·X
  if (symmetric_eigen(h, levels.first(static_cast<std::size_t>(k)), y) != Status::ok) {
    fail("ILL is not zero in splevel_Orth.");
  }
  gemm(Op::none, Op::none, 1.0, xk, y, 0.0, c.columns(0, k));
  for (Index j = k; j < n; ++j) {
    levels[j] = 0.0;
    std::fill_n(c.col(j), n, 0.0);
  }
  if (first_nan_level(levels, c, k) != 0) fail("NaN is detected in splevel_Orth.");
}

}  // namespace norvik::linalg
