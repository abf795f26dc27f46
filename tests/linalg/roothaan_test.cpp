// The Roothaan dispatcher and the canonical orthogonalisation, on overlap
// matrices of normalised s-type Gaussians (well conditioned, nearly dependent,
// exactly dependent).
#include "linalg/roothaan.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "common/error.h"
#include "helpers.h"
#include "linalg/orthog_basis.h"

namespace norvik::linalg {
namespace {

struct Gaussian {
  double exponent, x, y, z;
};

// ⟨g_i|g_j⟩ for normalised s Gaussians: (2√(ab)/(a+b))^{3/2}·exp(−ab/(a+b)·R²).
Matrix overlap(const std::vector<Gaussian>& g) {
  const Index n = static_cast<Index>(g.size());
  Matrix s(n, n);
  for (Index i = 0; i < n; ++i) {
    for (Index j = 0; j < n; ++j) {
      const double a = g[i].exponent, b = g[j].exponent;
      const double r2 = std::pow(g[i].x - g[j].x, 2) + std::pow(g[i].y - g[j].y, 2) +
                        std::pow(g[i].z - g[j].z, 2);
      s(i, j) = std::pow(2.0 * std::sqrt(a * b) / (a + b), 1.5) * std::exp(-a * b / (a + b) * r2);
    }
  }
  return s;
}

// A chain of four centres with three shells each: a modestly conditioned basis.
std::vector<Gaussian> chain() {
  std::vector<Gaussian> g;
  for (int c = 0; c < 4; ++c) {
    for (double e : {0.2, 0.9, 4.0}) g.push_back({e, 1.4 * c, 0.1 * c, 0.0});
  }
  return g;
}

// A one-electron Hamiltonian in these functions, in hartree: kinetic energy
// T_ij = (ab/p)(3 − 2(ab/p)R²)·S_ij plus a Gaussian well −20·exp(−(r − C)²/2) at
// C = (2, 0, 0), whose elements are S_ij·(p/(p+γ))^{3/2}·exp(−pγ/(p+γ)·|P − C|²).
Matrix fock_like(const std::vector<Gaussian>& g) {
  const Matrix s = overlap(g);
  const Index n = s.rows();
  constexpr double kGamma = 0.5, kDepth = 20.0, kCx = 2.0;
  Matrix f(n, n);
  for (Index j = 0; j < n; ++j) {
    for (Index i = 0; i < n; ++i) {
      const double a = g[i].exponent, b = g[j].exponent, p = a + b, mu = a * b / p;
      const double r2 = std::pow(g[i].x - g[j].x, 2) + std::pow(g[i].y - g[j].y, 2) +
                        std::pow(g[i].z - g[j].z, 2);
      const double px = (a * g[i].x + b * g[j].x) / p - kCx;
      const double py = (a * g[i].y + b * g[j].y) / p;
      const double pz = (a * g[i].z + b * g[j].z) / p;
      const double well = std::pow(p / (p + kGamma), 1.5) *
                          std::exp(-p * kGamma / (p + kGamma) * (px * px + py * py + pz * pz));
      f(i, j) = (mu * (3.0 - 2.0 * mu * r2) - kDepth * well) * s(i, j);
    }
  }
  return f;
}

// Density of the `occ` lowest orbitals, C_occ·C_occᵀ.
Matrix density(const Matrix& c, Index occ) {
  const Index n = c.rows();
  Matrix p(n, n);
  gemm(Op::none, Op::transpose, 1.0, c.view().columns(0, occ), c.view().columns(0, occ), 0.0, p);
  return p;
}

std::string message_of(auto&& call) {
  try {
    call();
  } catch (const Error& e) {
    return e.lines().size() == 1 ? e.lines()[0] : "more than one line";
  }
  return "no error";
}

TEST(Roothaan, FullAndOrthogonalisedSolversAgree) {
  const Matrix s = overlap(chain());
  const Matrix f = fock_like(chain());
  const Index n = s.rows();
  Matrix x(n, n), c_full(n, n), c_orth(n, n);
  std::vector<double> e_full(n), e_orth(n);
  ASSERT_EQ(orthogonalize_basis(s, 1e-8, x), n);
  solve_roothaan(f, s, x, static_cast<int>(n), 1, e_full, c_full);  // the full-basis path
  solve_roothaan_orthogonal(f, x, static_cast<int>(n), e_orth, c_orth);
  for (Index i = 0; i < n; ++i) EXPECT_NEAR(e_full[i], e_orth[i], 1e-10 * std::abs(e_full[i]));
  EXPECT_TRUE(std::is_sorted(e_full.begin(), e_full.end()));
  EXPECT_LE(testing::orthonormality_error(c_full, s), 1e-12);
  EXPECT_LE(testing::eigen_residual(f, s, e_full, c_full), 1e-12);
  const Matrix p_full = density(c_full, 5), p_orth = density(c_orth, 5);
  for (Index i = 0; i < n * n; ++i) EXPECT_NEAR(p_full.data()[i], p_orth.data()[i], 1e-9);
}

TEST(Roothaan, ReducedBasisSolvesTheProblemOfTheIndependentSpace) {
  const auto g = chain();
  const Index n = static_cast<Index>(g.size());
  std::vector<double> e_ref(n);
  Matrix c_ref(n, n);
  solve_roothaan_full(fock_like(g), overlap(g), 1, e_ref, c_ref);
  {  // an exact duplicate spans nothing new: the reduced basis gives the same levels
    auto gd = g;
    gd.push_back(g[4]);
    const Index nd = n + 1;
    const Matrix s = overlap(gd);
    Matrix x(nd, nd), c(nd, nd);
    std::vector<double> e(nd);
    const int northo = orthogonalize_basis(s, 1e-8, x);
    ASSERT_EQ(northo, n);
    solve_roothaan(fock_like(gd), s, x, northo, 1, e, c);  // dispatches to the reduced basis
    for (Index i = 0; i < n; ++i) EXPECT_NEAR(e[i], e_ref[i], 1e-9 * (1.0 + std::abs(e_ref[i])));
    EXPECT_LE(testing::orthonormality_error(c.view().columns(0, n), s), 1e-9);
    EXPECT_EQ(e[n], 0.0);
    for (Index r = 0; r < nd; ++r) EXPECT_EQ(c(r, n), 0.0);
  }
  {  // a near duplicate: the reduced space is a subspace of codimension one, so its
     // levels interlace those of the full basis, e_full[i] ≤ e_orth[i] ≤ e_full[i+1]
    auto gd = g;
    gd.push_back({g[4].exponent * (1.0 + 1e-5), g[4].x, g[4].y, g[4].z});
    const Index nd = n + 1;
    const Matrix s = overlap(gd);
    const Matrix f = fock_like(gd);
    Matrix x(nd, nd), c(nd, nd), c_full(nd, nd);
    std::vector<double> e(nd), e_full(nd);
    ASSERT_EQ(orthogonalize_basis(s, 1e-7, x), n);
    solve_roothaan(f, s, x, static_cast<int>(n), 1, e, c);
    solve_roothaan_full(f, s, 1, e_full, c_full);
    constexpr double kSlack = 1e-8;  // the full problem is solved at condition ~1e11
    for (Index i = 0; i < n; ++i) {
      EXPECT_LE(e_full[i], e[i] + kSlack * std::abs(e[i])) << i;
      EXPECT_LE(e[i], e_full[i + 1] + kSlack * std::abs(e[i])) << i;
    }
  }
}

TEST(Roothaan, FailuresCarryTheirMessages) {
  const Matrix s = overlap(chain());
  const Index n = s.rows();
  Matrix f = fock_like(chain()), x(n, n), c(n, n);
  std::vector<double> e(n);
  ASSERT_EQ(orthogonalize_basis(s, 1e-8, x), n);
  EXPECT_EQ(message_of([&] { solve_roothaan(f, s, x, static_cast<int>(n) + 1, 1, e, c); }),
            " Invalid orthogonalization.          13");
  EXPECT_EQ(message_of([&] { solve_roothaan_orthogonal(f, x, 0, e, c); }),
            " ILL is not zero in splevel_Orth.");
  Matrix not_pd = s;
  not_pd(3, 3) = -1.0;
  EXPECT_EQ(message_of([&] { solve_roothaan_full(f, not_pd, 2, e, c); }),
            " GHQRVD failed in splevel_GHQR.");
  f(2, 5) = std::nan("");
  EXPECT_EQ(message_of([&] { solve_roothaan_full(f, s, 2, e, c); }),
            " GHQRVD failed in splevel_GHQR.");
}

TEST(OrthogonalizeBasis, SmallCasesFollowTheRules) {
  Matrix x(1, 1);
  EXPECT_EQ(orthogonalize_basis(Matrix(1, 1), 0.5, x), 1);  // no eigen-solve, even for S = 0
  EXPECT_EQ(x(0, 0), 1.0);
  Matrix twins(2, 2), x2(2, 2);
  twins(0, 0) = twins(0, 1) = twins(1, 0) = twins(1, 1) = 1.0;  // two identical functions
  EXPECT_EQ(orthogonalize_basis(twins, 1e-12, x2), 1);
  EXPECT_NEAR(x2(0, 0), 0.5, 1e-15);
  EXPECT_NEAR(x2(1, 0), 0.5, 1e-15);
  EXPECT_EQ(x2(0, 1), 0.0);
  Matrix diag(2, 2);  // eigenvalues exactly 2 and 1: a threshold tie is kept
  diag(0, 0) = 1.0;
  diag(1, 1) = 2.0;
  EXPECT_EQ(orthogonalize_basis(diag, 1.0, x2), 2);
  EXPECT_EQ(x2(1, 0), 1.0 / std::sqrt(2.0));
  EXPECT_EQ(orthogonalize_basis(diag, std::nextafter(1.0, 2.0), x2), 1);
  EXPECT_EQ(message_of([&] { orthogonalize_basis(Matrix(0, 0), 1e-6, x2); }),
            " Wrong NofBase in orthog_basis.           0");
}

TEST(OrthogonalizeBasis, RemovesExactlyTheDependentCombination) {
  auto g = chain();
  g.insert(g.begin() + 7, g[2]);  // an exact duplicate: one null overlap eigenvalue
  const Matrix s = overlap(g);
  const Index n = s.rows();
  Matrix x(n, n);
  const int k = orthogonalize_basis(s, 1e-8, x);
  EXPECT_EQ(k, n - 1);
  EXPECT_LE(testing::orthonormality_error(x.view().columns(0, k), s), 1e-10);
  // Columns come in descending overlap eigenvalue: their norms 1/√λ rise.
  for (Index j = 1; j < k; ++j) {
    EXPECT_GE(norm2(x.view().col(j), n), norm2(x.view().col(j - 1), n) * (1.0 - 1e-12));
  }
}

}  // namespace
}  // namespace norvik::linalg
