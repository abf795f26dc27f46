// Test matrices and the residual measures the linalg tests share.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <span>
#include <vector>

#include "linalg/kernels.h"
#include "linalg/matrix.h"

namespace norvik::linalg::testing {

// Unit round-off of IEEE doubles.
inline constexpr double kUlp = 2.220446049250313e-16;

inline Matrix random_matrix(Index rows, Index cols, std::uint32_t seed) {
  std::mt19937_64 gen(seed);
  std::uniform_real_distribution<double> u(-1.0, 1.0);
  Matrix a(rows, cols);
  for (Index j = 0; j < cols; ++j) {
    for (Index i = 0; i < rows; ++i) a(i, j) = u(gen);
  }
  return a;
}

inline Matrix random_symmetric(Index n, std::uint32_t seed) {
  Matrix a = random_matrix(n, n, seed);
  symmetrize(a);
  return a;
}

// A random orthogonal matrix (the eigenvectors of a random symmetric one are
// not used, so that the solver under test does not build its own test data).
inline Matrix random_orthogonal(Index n, std::uint32_t seed) {
  Matrix q = random_matrix(n, n, seed);
  // Modified Gram–Schmidt, twice for orthogonality to working precision.
  for (int pass = 0; pass < 2; ++pass) {
    for (Index j = 0; j < n; ++j) {
      for (Index p = 0; p < j; ++p) {
        const double r = dot(q.data() + p * n, q.data() + j * n, n);
        for (Index i = 0; i < n; ++i) q(i, j) -= r * q(i, p);
      }
      const double norm = norm2(q.data() + j * n, n);
      for (Index i = 0; i < n; ++i) q(i, j) /= norm;
    }
  }
  return q;
}

// Q·diag(lambda)·Qᵀ.
inline Matrix with_spectrum(const std::vector<double>& lambda, std::uint32_t seed) {
  const Index n = static_cast<Index>(lambda.size());
  const Matrix q = random_orthogonal(n, seed);
  Matrix ql(n, n), a(n, n);
  for (Index j = 0; j < n; ++j) {
    for (Index i = 0; i < n; ++i) ql(i, j) = q(i, j) * lambda[j];
  }
  gemm(Op::none, Op::transpose, 1.0, ql, q, 0.0, a);
  symmetrize(a);
  return a;
}

inline double max_abs(ConstMatrixView a) {
  double m = 0.0;
  for (Index j = 0; j < a.cols(); ++j) {
    for (Index i = 0; i < a.rows(); ++i) m = std::max(m, std::abs(a(i, j)));
  }
  return m;
}

// max |(A·V − B·V·Λ)(i,j)| / (max|A| + |λ|max·max|B|), B = I when b is empty.
inline double eigen_residual(ConstMatrixView a, ConstMatrixView b, std::span<const double> w,
                             ConstMatrixView v) {
  const Index n = a.rows();
  Matrix av(n, n), bv(n, n);
  gemm(Op::none, Op::none, 1.0, a, v, 0.0, av);
  if (b.empty()) {
    copy(v, bv);
  } else {
    gemm(Op::none, Op::none, 1.0, b, v, 0.0, bv);
  }
  double r = 0.0, wmax = 0.0;
  for (Index j = 0; j < n; ++j) {
    wmax = std::max(wmax, std::abs(w[j]));
    for (Index i = 0; i < n; ++i) r = std::max(r, std::abs(av(i, j) - w[j] * bv(i, j)));
  }
  const double scale = max_abs(a) + wmax * (b.empty() ? 1.0 : max_abs(b));
  return scale > 0.0 ? r / scale : r;
}

// max |(Vᵀ·B·V − I)(i,j)|, B = I when b is empty.
inline double orthonormality_error(ConstMatrixView v, ConstMatrixView b = {}) {
  const Index n = v.rows();
  const Index k = v.cols();
  Matrix bv(n, k), g(k, k);
  if (b.empty()) {
    copy(v, bv);
  } else {
    gemm(Op::none, Op::none, 1.0, b, v, 0.0, bv);
  }
  gemm(Op::transpose, Op::none, 1.0, v, bv, 0.0, g);
  double e = 0.0;
  for (Index j = 0; j < k; ++j) {
    for (Index i = 0; i < k; ++i) e = std::max(e, std::abs(g(i, j) - (i == j ? 1.0 : 0.0)));
  }
  return e;
}

}  // namespace norvik::linalg::testing
