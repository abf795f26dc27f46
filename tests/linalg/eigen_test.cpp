// The symmetric eigen-solvers: residuals, orthonormality, order, degenerate and
// clustered spectra, the generalised problem and the tridiagonal kernels.
#include "linalg/eigen.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <cmath>
#include <numbers>
#include <vector>

#include "helpers.h"
#include "linalg/cholesky.h"
#include "linalg/tridiagonal_eigen.h"

namespace norvik::linalg {
namespace {

using testing::eigen_residual;
using testing::kUlp;
using testing::orthonormality_error;

// A backward-stable solver leaves residuals and orthonormality errors of a few
// units of round-off times the order; 20·n ulp allows for the constant and
// still fails by orders of magnitude on any wrong vector.
double limit(Index n) {
  return 20.0 * static_cast<double>(n) * kUlp;
}

struct Solved {
  std::vector<double> w;
  Matrix v;
};

Solved solve(const Matrix& a, Order order = Order::ascending) {
  const Index n = a.rows();
  Matrix work = a;
  Solved s{std::vector<double>(static_cast<std::size_t>(n)), Matrix(n, n)};
  EXPECT_EQ(symmetric_eigen(work, s.w, s.v, {.order = order}), Status::ok);
  return s;
}

void expect_decomposition(const Matrix& a, const Solved& s) {
  const Index n = a.rows();
  EXPECT_LE(eigen_residual(a, {}, s.w, s.v), limit(n)) << "n = " << n;
  EXPECT_LE(orthonormality_error(s.v), limit(n)) << "n = " << n;
}

TEST(SymmetricEigen, RandomMatricesOfManyOrders) {
  // Orders around the QL leaf size (25), the unblocked tail (64) and several panels.
  for (Index n : {1, 2, 3, 17, 25, 26, 51, 64, 65, 97, 130, 230}) {
    const Matrix a = testing::random_symmetric(n, static_cast<std::uint32_t>(n));
    const Solved up = solve(a);
    expect_decomposition(a, up);
    EXPECT_TRUE(std::is_sorted(up.w.begin(), up.w.end())) << "n = " << n;
    const Solved down = solve(a, Order::descending);
    expect_decomposition(a, down);
    for (Index i = 0; i < n; ++i) EXPECT_EQ(down.w[i], up.w[n - 1 - i]);
  }
}

TEST(SymmetricEigen, RecoversAGradedSpectrum) {
  const Index n = 120;
  std::vector<double> lambda;
  for (Index i = 0; i < n; ++i) {
    const double mag = std::pow(10.0, -6.0 + 9.0 * i / (n - 1.0));
    lambda.push_back(i % 2 ? mag : -mag);
  }
  const Matrix a = testing::with_spectrum(lambda, 11);
  const Solved s = solve(a);
  std::sort(lambda.begin(), lambda.end());
  for (Index i = 0; i < n; ++i) EXPECT_NEAR(s.w[i], lambda[i], limit(n) * 1e3) << i;
  expect_decomposition(a, s);
}

TEST(SymmetricEigen, DegenerateLevelsGiveOrthonormalVectors) {
  {  // identity plus a rank-one term: one level of multiplicity n-1
    const Index n = 150;
    const Matrix x = testing::random_matrix(n, 1, 5);
    Matrix a(n, n);
    double xx = 0.0;
    for (Index j = 0; j < n; ++j) {
      xx += x(j, 0) * x(j, 0);
      for (Index i = 0; i < n; ++i) a(i, j) = (i == j ? 1.0 : 0.0) + x(i, 0) * x(j, 0);
    }
    const Solved s = solve(a);
    expect_decomposition(a, s);
    for (Index i = 0; i + 1 < n; ++i) EXPECT_NEAR(s.w[i], 1.0, limit(n));
    EXPECT_NEAR(s.w[n - 1], 1.0 + xx, limit(n) * xx);
  }
  {  // 3-fold degenerate levels among simple ones
    std::vector<double> lambda;
    for (int k = 0; k < 30; ++k) {
      for (int r = 0; r < 3; ++r) lambda.push_back(k % 2 ? -0.5 * k : 0.25 * k);
    }
    for (int k = 0; k < 10; ++k) lambda.push_back(0.1 + 0.37 * k);
    const Matrix a = testing::with_spectrum(lambda, 3);
    const Solved s = solve(a);
    expect_decomposition(a, s);
    std::sort(lambda.begin(), lambda.end());
    for (std::size_t i = 0; i < lambda.size(); ++i) EXPECT_NEAR(s.w[i], lambda[i], 1e-12);
  }
  {  // the identity and the zero matrix: every level the same
    for (double diag : {1.0, 0.0}) {
      const Index n = 80;
      Matrix a(n, n);
      for (Index i = 0; i < n; ++i) a(i, i) = diag;
      const Solved s = solve(a);
      expect_decomposition(a, s);
      for (double w : s.w) EXPECT_EQ(w, diag);
    }
  }
}

TEST(SymmetricEigen, SignsVectorsByTheirLargestComponent) {
  Matrix a(2, 2);
  a(0, 0) = a(0, 1) = a(1, 0) = a(1, 1) = 1.0;
  const Solved s = solve(a, Order::descending);
  EXPECT_NEAR(s.w[0], 2.0, 4 * kUlp);
  EXPECT_NEAR(s.v(0, 0), std::sqrt(0.5), 4 * kUlp);  // the tie goes to the first component
  EXPECT_NEAR(s.v(1, 0), std::sqrt(0.5), 4 * kUlp);
  const Matrix b = testing::random_symmetric(40, 9);
  const Solved t = solve(b);
  for (Index j = 0; j < 40; ++j) {
    Index big = 0;
    for (Index i = 1; i < 40; ++i) {
      if (std::abs(t.v(i, j)) > std::abs(t.v(big, j))) big = i;
    }
    EXPECT_GT(t.v(big, j), 0.0);
  }
}

TEST(SymmetricEigen, ScalesExtremeMatricesAndRejectsBadInput) {
  const Index n = 30;
  Matrix a = testing::random_symmetric(n, 4);
  const Solved ref = solve(a);
  for (double scale : {1e-200, 1e200}) {
    Matrix b = a;
    for (Index i = 0; i < n * n; ++i) b.data()[i] *= scale;
    const Solved s = solve(b);
    for (Index i = 0; i < n; ++i) EXPECT_NEAR(s.w[i] / scale, ref.w[i], limit(n));
  }
  std::vector<double> w(n);
  Matrix v(n, n);
  a(3, 7) = std::nan("");
  EXPECT_EQ(symmetric_eigen(a, w, v), Status::not_finite);
  Matrix small(n, n - 1);
  EXPECT_EQ(symmetric_eigen(small, w, v), Status::bad_dimension);
}

TEST(SymmetricEigen, SameBitsOnOneAndTwoThreads) {
  // Large enough for threaded products, panels and the side-by-side halves.
  const Index n = 160;
  const Matrix a = testing::random_symmetric(n, 21);
  const int threads = omp_get_max_threads();
  omp_set_num_threads(1);
  const Solved one = solve(a);
  omp_set_num_threads(2);
  const Solved two = solve(a);
  omp_set_num_threads(threads);
  EXPECT_EQ(one.w, two.w);
  for (Index i = 0; i < n * n; ++i) ASSERT_EQ(one.v.data()[i], two.v.data()[i]) << i;
}

// Wilkinson's W⁺ matrix, whose largest eigenvalues come in pairs that agree to
// many digits, glued end to end with a small coupling: the hard case for the
// deflation of close poles.
void glued_wilkinson(Index copies, double glue, std::vector<double>& d, std::vector<double>& e) {
  const Index m = 21;
  d.clear();
  e.clear();
  for (Index c = 0; c < copies; ++c) {
    for (Index i = 0; i < m; ++i) d.push_back(std::abs(static_cast<double>(i - m / 2)));
    for (Index i = 0; i + 1 < m; ++i) e.push_back(1.0);
    if (c + 1 < copies) e.push_back(glue);
  }
}

TEST(TridiagonalEigen, DivideAndConquerAgreesWithQl) {
  for (double glue : {1e-14, 1e-8, 1.0}) {
    std::vector<double> d, e;
    glued_wilkinson(12, glue, d, e);
    const Index n = static_cast<Index>(d.size());
    std::vector<double> d_ql = d, e_ql = e, d_dc = d, e_dc = e;
    Matrix z(n, n), q(n, n);
    set_identity(z);
    ASSERT_EQ(tridiagonal_ql(d_ql, e_ql, z, 0.0), Status::ok);
    ASSERT_EQ(tridiagonal_divide_conquer(d_dc, e_dc, q, 0.0), Status::ok);
    Matrix t(n, n);
    for (Index i = 0; i < n; ++i) {
      t(i, i) = d[i];
      if (i + 1 < n) t(i + 1, i) = t(i, i + 1) = e[i];
    }
    for (Index i = 0; i < n; ++i) EXPECT_NEAR(d_dc[i], d_ql[i], limit(n) * 10.0) << glue;
    EXPECT_LE(eigen_residual(t, {}, d_dc, q), limit(n)) << glue;
    EXPECT_LE(orthonormality_error(q), limit(n)) << glue;
    EXPECT_LE(eigen_residual(t, {}, d_ql, z), limit(n)) << glue;
    EXPECT_LE(orthonormality_error(z), limit(n)) << glue;
  }
}

TEST(TridiagonalEigen, QlFindsTheSecondDifferenceSpectrum) {
  // tridiag(-1, 2, -1) of order n has eigenvalues 2 − 2cos(kπ/(n+1)).
  const Index n = 200;
  std::vector<double> d(n, 2.0), e(n - 1, -1.0);
  ASSERT_EQ(tridiagonal_ql(d, e, {}, 0.0), Status::ok);
  for (Index k = 1; k <= n; ++k) {
    const double exact = 2.0 - 2.0 * std::cos(k * std::numbers::pi / (n + 1.0));
    EXPECT_NEAR(d[k - 1], exact, 8 * n * kUlp);
  }
}

TEST(GeneralizedEigen, AgreesWithTheLowdinOrthogonalisedProblem) {
  const Index n = 90;
  const Matrix a = testing::random_symmetric(n, 31);
  Matrix b = testing::random_matrix(n, n, 32);
  {
    Matrix bb(n, n);
    gemm(Op::none, Op::transpose, 1.0, b, b, 0.0, bb);
    for (Index i = 0; i < n; ++i) bb(i, i) += 0.05;  // positive definite, condition ~1e4
    b = bb;
  }
  Matrix aw = a, bw = b, v(n, n);
  std::vector<double> w(n);
  ASSERT_EQ(generalized_eigen(aw, bw, w, v), Status::ok);
  EXPECT_LE(eigen_residual(a, b, w, v), 1e3 * limit(n));
  EXPECT_LE(orthonormality_error(v, b), 1e3 * limit(n));
  // B^-1/2·A·B^-1/2 from B's own eigen-decomposition has the same eigenvalues.
  const Solved sb = solve(b);
  Matrix half(n, n), t(n, n), c(n, n);
  for (Index j = 0; j < n; ++j) {
    for (Index i = 0; i < n; ++i) half(i, j) = sb.v(i, j) / std::sqrt(sb.w[j]);
  }
  gemm(Op::none, Op::transpose, 1.0, half, sb.v, 0.0, t);  // B^-1/2
  Matrix at(n, n);
  gemm(Op::none, Op::none, 1.0, a, t, 0.0, at);
  gemm(Op::none, Op::none, 1.0, t, at, 0.0, c);
  symmetrize(c);
  const Solved sc = solve(c);
  for (Index i = 0; i < n; ++i) EXPECT_NEAR(w[i], sc.w[i], 1e-9 * (1.0 + std::abs(w[i])));
}

TEST(GeneralizedEigen, RejectsAMetricThatIsNotPositiveDefinite) {
  const Index n = 20;
  Matrix a = testing::random_symmetric(n, 1);
  std::vector<double> lambda(n, 1.0);
  lambda[7] = -1e-3;
  Matrix b = testing::with_spectrum(lambda, 2);
  Matrix v(n, n);
  std::vector<double> w(n);
  EXPECT_EQ(generalized_eigen(a, b, w, v), Status::not_positive_definite);
}

}  // namespace
}  // namespace norvik::linalg
