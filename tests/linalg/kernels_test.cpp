// Matrix products and triangular solves against plain loops, on shapes that
// leave partial register and cache blocks everywhere.
#include "linalg/kernels.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <cmath>
#include <limits>

#include "helpers.h"

namespace norvik::linalg {
namespace {

using testing::kUlp;

double op_element(const Matrix& a, Op op, Index i, Index j) {
  return op == Op::none ? a(i, j) : a(j, i);
}

TEST(Gemm, MatchesPlainLoopsForEveryTransposeAndShape) {
  struct Shape {
    Index m, n, k;
  };
  // Odd sizes straddle the 4/8-row and 4-column register blocks and the
  // 128/256 cache blocks; k = 300 crosses a k-block boundary.
  for (const Shape& s : {Shape{1, 1, 1}, Shape{7, 5, 3}, Shape{130, 9, 300}, Shape{33, 129, 17},
                         Shape{257, 131, 64}}) {
    for (Op op_a : {Op::none, Op::transpose}) {
      for (Op op_b : {Op::none, Op::transpose}) {
        const Matrix a = op_a == Op::none ? testing::random_matrix(s.m, s.k, 1)
                                          : testing::random_matrix(s.k, s.m, 1);
        const Matrix b = op_b == Op::none ? testing::random_matrix(s.k, s.n, 2)
                                          : testing::random_matrix(s.n, s.k, 2);
        Matrix c = testing::random_matrix(s.m, s.n, 3);
        const Matrix c0 = c;
        gemm(op_a, op_b, -0.5, a, b, 2.0, c);
        double err = 0.0;
        for (Index j = 0; j < s.n; ++j) {
          for (Index i = 0; i < s.m; ++i) {
            double r = 0.0;
            for (Index p = 0; p < s.k; ++p)
              r += op_element(a, op_a, i, p) * op_element(b, op_b, p, j);
            err = std::max(err, std::abs(c(i, j) - (2.0 * c0(i, j) - 0.5 * r)));
          }
        }
        // Each element is a sum of k products of numbers below 1.
        EXPECT_LE(err, 4.0 * s.k * kUlp) << s.m << "x" << s.n << "x" << s.k;
      }
    }
  }
}

TEST(Gemm, IgnoresTheOldProductWhenBetaIsZero) {
  const Matrix a = testing::random_matrix(9, 6, 4), b = testing::random_matrix(6, 5, 5);
  Matrix c(9, 5);
  for (Index i = 0; i < 45; ++i) c.data()[i] = std::numeric_limits<double>::quiet_NaN();
  gemm(Op::none, Op::none, 1.0, a, b, 0.0, c);
  EXPECT_TRUE(all_finite(c));
}

TEST(Gemm, WorksOnBlocksOfLargerArrays) {
  // Views with a leading dimension larger than their row count.
  Matrix big = testing::random_matrix(50, 40, 6);
  const Matrix b = testing::random_matrix(12, 7, 7);
  Matrix out(50, 40);
  gemm(Op::none, Op::none, 1.0, big.view().block(3, 5, 20, 12), b, 0.0,
       out.view().block(10, 2, 20, 7));
  for (Index j = 0; j < 7; ++j) {
    for (Index i = 0; i < 20; ++i) {
      double r = 0.0;
      for (Index p = 0; p < 12; ++p) r += big(3 + i, 5 + p) * b(p, j);
      EXPECT_NEAR(out(10 + i, 2 + j), r, 1e-14);
    }
  }
  EXPECT_EQ(out(9, 2), 0.0);  // nothing written outside the block
  EXPECT_EQ(out(30, 2), 0.0);
}

TEST(Gemm, SameBitsOnOneAndTwoThreads) {
  const Matrix a = testing::random_matrix(300, 200, 8), b = testing::random_matrix(200, 270, 9);
  Matrix c1(300, 270), c2(300, 270);
  const int threads = omp_get_max_threads();
  omp_set_num_threads(1);
  gemm(Op::none, Op::none, 1.0, a, b, 0.0, c1);
  omp_set_num_threads(2);
  gemm(Op::none, Op::none, 1.0, a, b, 0.0, c2);
  omp_set_num_threads(threads);
  for (Index i = 0; i < 300 * 270; ++i) ASSERT_EQ(c1.data()[i], c2.data()[i]);
}

TEST(SolveLower, InvertsTheTriangleBothWays) {
  const Index n = 150, nrhs = 7;
  Matrix l = testing::random_matrix(n, n, 10);
  for (Index i = 0; i < n; ++i) l(i, i) = 4.0 + std::abs(l(i, i));  // well conditioned
  const Matrix x = testing::random_matrix(n, nrhs, 11);
  for (Op op : {Op::none, Op::transpose}) {
    Matrix b(n, nrhs);
    for (Index j = 0; j < nrhs; ++j) {
      for (Index i = 0; i < n; ++i) {
        double r = 0.0;
        for (Index p = 0; p < n; ++p) {
          const double lip = op == Op::none ? (p <= i ? l(i, p) : 0.0) : (i <= p ? l(p, i) : 0.0);
          r += lip * x(p, j);
        }
        b(i, j) = r;
      }
    }
    solve_lower(op, l, b);
    for (Index i = 0; i < n * nrhs; ++i) EXPECT_NEAR(b.data()[i], x.data()[i], 1e-13);
  }
}

TEST(Norm2, NeitherOverflowsNorUnderflows) {
  for (double scale : {1e-300, 1.0, 1e300}) {
    const double x[3] = {3.0 * scale, 0.0, 4.0 * scale};
    EXPECT_NEAR(norm2(x, 3) / scale, 5.0, 4 * kUlp);
  }
}

}  // namespace
}  // namespace norvik::linalg
