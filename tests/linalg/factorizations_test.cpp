// Cholesky, Bunch–Kaufman, inversion and the sorts.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "helpers.h"
#include "linalg/cholesky.h"
#include "linalg/inverse.h"
#include "linalg/sort.h"
#include "linalg/symmetric_indefinite.h"

namespace norvik::linalg {
namespace {

Matrix spd(Index n, std::uint32_t seed, double shift) {
  const Matrix m = testing::random_matrix(n, n, seed);
  Matrix a(n, n);
  gemm(Op::none, Op::transpose, 1.0, m, m, 0.0, a);
  for (Index i = 0; i < n; ++i) a(i, i) += shift;
  return a;
}

TEST(Cholesky, FactorsAndZeroesTheUpperTriangle) {
  for (Index n : {1, 5, 64, 65, 200}) {
    const Matrix a = spd(n, static_cast<std::uint32_t>(n), 1.0);
    Matrix l = a;
    ASSERT_EQ(cholesky(l, 0.0), Status::ok);
    Matrix llt(n, n);
    gemm(Op::none, Op::transpose, 1.0, l, l, 0.0, llt);
    double err = 0.0;
    for (Index j = 0; j < n; ++j) {
      for (Index i = 0; i < j; ++i) EXPECT_EQ(l(i, j), 0.0);
      for (Index i = 0; i < n; ++i) err = std::max(err, std::abs(llt(i, j) - a(i, j)));
    }
    EXPECT_LE(err, 1e-13 * testing::max_abs(a)) << n;
  }
}

TEST(Cholesky, ReportsIndefiniteAndNearlySingularMatrices) {
  const Index n = 30;
  std::vector<double> lambda(n, 1.0);
  lambda[11] = -0.25;
  Matrix indefinite = testing::with_spectrum(lambda, 1);
  EXPECT_EQ(cholesky(indefinite, 0.0), Status::not_positive_definite);
  // λ_min = 1e-9: positive definite to working precision, but not beyond a 1e-6 pivot
  // tolerance (every pivot is at least λ_min, the last one near it).
  lambda[11] = 1e-9;
  const Matrix nearly = testing::with_spectrum(lambda, 2);
  Matrix a = nearly;
  EXPECT_EQ(cholesky(a, 0.0), Status::ok);
  a = nearly;
  EXPECT_EQ(cholesky(a, 1e-6), Status::not_positive_definite);
}

// Solves through the factorisation and returns max|A·x − b|.
double bk_residual(const Matrix& a, const std::vector<double>& b) {
  const Index n = a.rows();
  Matrix f = a;
  std::vector<int> piv(static_cast<std::size_t>(n));
  EXPECT_EQ(bunch_kaufman_factor(f, piv), Status::ok);
  std::vector<double> x = b;
  bunch_kaufman_solve(f, piv, x);
  double r = 0.0;
  for (Index i = 0; i < n; ++i) {
    double s = 0.0;
    for (Index j = 0; j < n; ++j) s += a(i, j) * x[j];
    r = std::max(r, std::abs(s - b[i]));
  }
  return r;
}

TEST(BunchKaufman, SolvesIndefiniteSystems) {
  {  // zero diagonal: only 2×2 pivots can start
    Matrix a(4, 4);
    a(0, 1) = a(1, 0) = 2.0;
    a(2, 3) = a(3, 2) = -1.0;
    a(0, 3) = a(3, 0) = 0.5;
    EXPECT_LE(bk_residual(a, {1.0, 2.0, 3.0, 4.0}), 1e-14);
  }
  for (Index n : {3, 17, 120}) {  // random indefinite, mixed pivots
    const Matrix a = testing::random_symmetric(n, static_cast<std::uint32_t>(n + 100));
    const Matrix b = testing::random_matrix(n, 1, 5);
    EXPECT_LE(bk_residual(a, std::vector<double>(b.data(), b.data() + n)), 1e-11) << n;
  }
  {  // the DIIS system: a Gram matrix of six error vectors bordered by −1
    const Index m = 6;
    const Matrix e = testing::random_matrix(40, m, 7);
    Matrix a(m + 1, m + 1);
    gemm(Op::transpose, Op::none, 1.0, e, e, 0.0, a.view().block(0, 0, m, m));
    for (Index i = 0; i < m; ++i) a(i, m) = a(m, i) = -1.0;
    std::vector<double> b(m + 1, 0.0);
    b[m] = -1.0;
    EXPECT_LE(bk_residual(a, b), 1e-13);
    Matrix f = a;
    std::vector<int> piv(m + 1);
    ASSERT_EQ(bunch_kaufman_factor(f, piv), Status::ok);
    bunch_kaufman_solve(f, piv, b);
    double sum = 0.0;
    for (Index i = 0; i < m; ++i) sum += b[i];
    EXPECT_NEAR(sum, 1.0, 1e-13);  // the DIIS coefficients add up to one
  }
}

TEST(BunchKaufman, ReportsASingularMatrix) {
  Matrix a(3, 3);
  a(0, 0) = a(0, 1) = a(1, 0) = a(1, 1) = 1.0;  // rank one in the leading block, zero row 3
  std::vector<int> piv(3);
  EXPECT_EQ(bunch_kaufman_factor(a, piv), Status::singular);
}

TEST(Invert, GivesTheInverseOrReportsSingularity) {
  for (Index n : {1, 6, 90, 160}) {
    Matrix a = testing::random_matrix(n, n, static_cast<std::uint32_t>(n));
    for (Index i = 0; i < n; ++i) a(i, i) += 2.0;
    Matrix inv = a;
    ASSERT_EQ(invert(inv), Status::ok);
    Matrix prod(n, n);
    gemm(Op::none, Op::none, 1.0, a, inv, 0.0, prod);
    double err = 0.0;
    for (Index j = 0; j < n; ++j) {
      for (Index i = 0; i < n; ++i) err = std::max(err, std::abs(prod(i, j) - (i == j)));
    }
    EXPECT_LE(err, 1e-11) << n;
  }
  Matrix p(3, 3);  // needs pivoting: a zero in the first position
  p(1, 0) = 1.0;
  p(0, 1) = 2.0;
  p(2, 2) = 4.0;
  ASSERT_EQ(invert(p), Status::ok);
  EXPECT_EQ(p(0, 1), 1.0);
  EXPECT_EQ(p(1, 0), 0.5);
  EXPECT_EQ(p(2, 2), 0.25);
  Matrix s(3, 3);  // rows 1, 2, 3 of [[1,2,3],[4,5,6],[7,8,9]]: rank two
  for (Index i = 0; i < 3; ++i) {
    for (Index j = 0; j < 3; ++j) s(i, j) = 3.0 * i + j + 1.0;
  }
  EXPECT_EQ(invert(s), Status::singular);
}

TEST(Sort, IsStableMovesCompanionsAndPutsNansLast) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  std::vector<double> v = {2.0, nan, 5.0, 2.0, -1.0};
  std::vector<int> idx = {1, 2, 3, 4, 5};
  sort_values(v, idx, Order::descending);
  EXPECT_EQ(v[0], 5.0);
  EXPECT_EQ(v[3], -1.0);
  EXPECT_TRUE(std::isnan(v[4]));
  EXPECT_EQ(idx, (std::vector<int>{3, 1, 4, 5, 2}));
  std::vector<double> w = {3.0, 1.0, 2.0};
  Matrix z(2, 3);
  for (Index j = 0; j < 3; ++j) z(0, j) = z(1, j) = w[j];
  sort_values(w, z, Order::ascending);
  for (Index j = 0; j < 3; ++j) {
    EXPECT_EQ(z(0, j), w[j]);
    EXPECT_EQ(z(1, j), w[j]);
  }
}

}  // namespace
}  // namespace norvik::linalg
