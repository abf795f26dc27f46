// The lowest eigenpairs by Davidson's method against the dense solver, on
// operators shaped like orbital Hessians: a dominant, spread diagonal, weak
// couplings, and degenerate levels that only the couplings split or leave
// exactly degenerate.
#include "linalg/davidson.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "linalg/eigen.h"

namespace {

using namespace norvik::linalg;

// Diagonal d_i = 1 + ⌊i/2⌋·0.05 (pairs of equal levels, as the degenerate
// orbitals of a symmetric molecule give) plus the coupling c·cos(i + 2j)
// between different i, j that keeps the pairs degenerate only when c = 0.
Matrix operator_matrix(int n, double coupling) {
  Matrix a(n, n);
  for (int j = 0; j < n; ++j) {
    for (int i = 0; i < n; ++i) {
      a(i, j) = i == j ? 1.0 + (i / 2) * 0.05 : coupling * std::cos(i + j + 0.3 * i * j);
    }
  }
  return a;
}

struct Counted {
  const Matrix* a;
  int blocks = 0;
  void operator()(std::span<const std::span<const double>> x,
                  std::span<const std::span<double>> y) {
    ++blocks;
    const Index n = a->rows();
    for (std::size_t m = 0; m < x.size(); ++m) {
      for (Index i = 0; i < n; ++i) {
        double s = 0.0;
        for (Index k = 0; k < n; ++k) s += (*a)(i, k) * x[m][static_cast<std::size_t>(k)];
        y[m][static_cast<std::size_t>(i)] = s;
      }
    }
  }
};

std::vector<double> dense_values(const Matrix& a) {
  Matrix work = a, v(a.rows(), a.cols());
  std::vector<double> w(static_cast<std::size_t>(a.rows()));
  EXPECT_EQ(symmetric_eigen(work.view(), w, v.view()), Status::ok);
  return w;
}

TEST(Davidson, LowestRootsMatchTheDenseSolver) {
  for (double coupling : {0.02, 0.0}) {
    const int n = 400;
    const Matrix a = operator_matrix(n, coupling);
    std::vector<double> diagonal(n);
    for (int i = 0; i < n; ++i) diagonal[i] = a(i, i);
    Counted counted{&a};
    DavidsonOptions options;
    options.roots = 6;
    options.tolerance = 1e-8;
    options.max_subspace = 30;  // forces collapses
    const DavidsonResult r = davidson_lowest(
        diagonal, [&](auto x, auto y) { counted(x, y); }, options);
    ASSERT_TRUE(r.converged) << coupling;
    const std::vector<double> exact = dense_values(a);
    ASSERT_EQ(r.values.size(), 6u);
    for (std::size_t k = 0; k < 6; ++k) {
      EXPECT_NEAR(r.values[k], exact[k], 1e-12) << coupling << " root " << k;
      // A v = λ v with |v| = 1.
      double norm = 0.0, worst = 0.0;
      for (int i = 0; i < n; ++i) {
        double s = 0.0;
        for (int j = 0; j < n; ++j) s += a(i, j) * r.vectors[k * n + j];
        worst = std::max(worst, std::abs(s - r.values[k] * r.vectors[k * n + i]));
        norm += r.vectors[k * n + i] * r.vectors[k * n + i];
      }
      EXPECT_NEAR(norm, 1.0, 1e-12);
      EXPECT_LT(worst, 1e-8);
    }
    EXPECT_LT(counted.blocks, 40) << coupling;
  }
}

TEST(Davidson, GivenGuessesAndTinyProblems) {
  // Fewer unknowns than roots: all of them, exactly.
  const Matrix a = operator_matrix(3, 0.1);
  std::vector<double> diagonal{a(0, 0), a(1, 1), a(2, 2)};
  Counted counted{&a};
  DavidsonOptions options;
  options.roots = 5;
  DavidsonResult r = davidson_lowest(
      diagonal, [&](auto x, auto y) { counted(x, y); }, options);
  const std::vector<double> exact = dense_values(a);
  ASSERT_EQ(r.values.size(), 3u);
  for (int k = 0; k < 3; ++k) EXPECT_NEAR(r.values[k], exact[k], 1e-12);
  // A guess equal to an eigenvector converges in one product.
  const Matrix b = operator_matrix(50, 0.0);
  std::vector<double> diag_b(50), guess(50, 0.0);
  for (int i = 0; i < 50; ++i) diag_b[i] = b(i, i);
  guess[7] = 1.0;
  Counted one{&b};
  options.roots = 1;
  r = davidson_lowest(
      diag_b, [&](auto x, auto y) { one(x, y); }, options, guess);
  EXPECT_TRUE(r.converged);
  EXPECT_EQ(one.blocks, 1);
  EXPECT_DOUBLE_EQ(r.values[0], b(7, 7));
}

}  // namespace
