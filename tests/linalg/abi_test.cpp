// The exported routines called as a host calls them: plain arrays, arguments by
// reference, 1-based pivot records, blank leading dimensions, and the process
// ending with status 1 and the exact message on a fatal condition.
#include <gtest/gtest.h>

#include <cmath>
#include <iostream>
#include <vector>

#include "norvik/linalg.h"

namespace {

using Vec = std::vector<double>;

// The symmetric matrix tridiag(-1, 2, -1) + 0.1·(all ones), order n, leading dimension ld.
Vec test_matrix(int n, int ld) {
  Vec a(static_cast<std::size_t>(ld * n), -99.0);  // padding rows hold -99
  for (int j = 0; j < n; ++j) {
    for (int i = 0; i < n; ++i) {
      a[i + j * ld] = 0.1 + (i == j ? 2.0 : (std::abs(i - j) == 1 ? -1.0 : 0.0));
    }
  }
  return a;
}

TEST(ExportedEigen, OrderLeadingDimensionAndStatus) {
  const norvik_int n = 7, ld = 9;
  const double tol = 1e-14;
  norvik_int ill = -1;
  Vec a = test_matrix(n, ld), v(ld * n, -99.0), e(n);
  HOQRVD(a.data(), &n, &ld, e.data(), v.data(), &tol, &ill);
  ASSERT_EQ(ill, 0);
  for (int i = 1; i < n; ++i) EXPECT_GT(e[i - 1], e[i]);  // descending
  for (int j = 0; j < n; ++j) {
    EXPECT_EQ(v[n + j * ld], -99.0);  // rows beyond n untouched
    const Vec a0 = test_matrix(n, ld);
    for (int i = 0; i < n; ++i) {  // A·v = λ·v
      double s = 0.0;
      for (int k = 0; k < n; ++k) s += a0[i + k * ld] * v[k + j * ld];
      EXPECT_NEAR(s, e[j] * v[i + j * ld], 1e-13);
    }
  }
  Vec a2 = test_matrix(n, ld), v2(ld * n), e2(n);
  HOQRUD(a2.data(), &n, &ld, e2.data(), v2.data(), &tol, &ill);
  ASSERT_EQ(ill, 0);
  for (int i = 0; i < n; ++i) EXPECT_EQ(e2[i], e[n - 1 - i]);  // the variant ascends
  const norvik_int short_ld = n - 1, zero = 0;
  HOQRVD(a2.data(), &n, &short_ld, e2.data(), v2.data(), &tol, &ill);
  EXPECT_EQ(ill, 1);
  HOQRVD(a2.data(), &zero, &ld, e2.data(), v2.data(), &tol, &ill);
  EXPECT_EQ(ill, 1);
  a2 = test_matrix(n, ld);
  a2[3] = INFINITY;
  HOQRVD(a2.data(), &n, &ld, e2.data(), v2.data(), &tol, &ill);
  EXPECT_EQ(ill, 2);
}

TEST(ExportedEigen, GeneralisedProblemAndCholesky) {
  const norvik_int n = 5, ld = 5;
  const double tol = 1e-14;
  norvik_int ill = -1;
  Vec a = test_matrix(n, ld), b(n * n, 0.0), v(n * n), e(n);
  for (int i = 0; i < n; ++i) b[i + i * n] = 2.0;  // B = 2·I: λ_B = λ_A / 2
  Vec a_std = test_matrix(n, ld), v_std(n * n), e_std(n);
  HOQRVD(a_std.data(), &n, &ld, e_std.data(), v_std.data(), &tol, &ill);
  GHQRVD(a.data(), b.data(), &n, &ld, e.data(), v.data(), &tol, &ill);
  ASSERT_EQ(ill, 0);
  for (int i = 0; i < n; ++i) EXPECT_NEAR(e[i], e_std[i] / 2.0, 1e-14);
  for (int i = 0; i < n * n; ++i) EXPECT_NEAR(v[i], v_std[i] / std::sqrt(2.0), 1e-14);
  a = test_matrix(n, ld);
  Vec c(n * n, 0.0);
  for (int i = 0; i < n; ++i) c[i + i * n] = i == 2 ? -1.0 : 1.0;
  GHQRUD(a.data(), c.data(), &n, &ld, e.data(), v.data(), &tol, &ill);
  EXPECT_EQ(ill, 3);  // the metric is not positive definite

  Vec l = test_matrix(n, ld), work(n);
  CHOLFD(l.data(), &n, &ld, work.data(), &tol, &ill);
  ASSERT_EQ(ill, 0);
  const Vec a0 = test_matrix(n, ld);
  for (int j = 0; j < n; ++j) {
    EXPECT_EQ(work[j], 1.0 / l[j + j * n]);
    for (int i = 0; i < j; ++i) EXPECT_EQ(l[i + j * n], 0.0);
    for (int i = j; i < n; ++i) {
      double s = 0.0;
      for (int k = 0; k <= j; ++k) s += l[i + k * n] * l[j + k * n];
      EXPECT_NEAR(s, a0[i + j * n], 1e-14);
    }
  }
}

TEST(ExportedSolvers, BunchKaufmanPiecesAndInverse) {
  // A symmetric indefinite matrix with a zero diagonal (2×2 pivots needed).
  const norvik_int n = 4;
  const Vec a0 = {0, 3, 1, 0, 3, 0, 0, 2, 1, 0, 0, 5, 0, 2, 5, 0};
  const Vec rhs = {1, -2, 0.5, 4};
  norvik_int ill = -1;
  Vec a = a0, x = rhs;
  BUNCHD(a.data(), &n, x.data(), &ill);
  ASSERT_EQ(ill, 0);
  for (int i = 0; i < n; ++i) {
    double s = 0.0;
    for (int j = 0; j < n; ++j) s += a0[i + j * n] * x[j];
    EXPECT_NEAR(s, rhs[i], 1e-14);
  }
  Vec f = a0, y = rhs;
  std::vector<norvik_int> ipiv(n, 0);
  SDECD(f.data(), &n, ipiv.data(), &ill);
  ASSERT_EQ(ill, 0);
  for (int k = 0; k < n; ++k) {
    EXPECT_NE(ipiv[k], 0);
    EXPECT_LE(std::abs(ipiv[k]), n);
  }
  SSOLD(f.data(), &n, ipiv.data(), y.data(), &ill);
  ASSERT_EQ(ill, 0);
  for (int i = 0; i < n; ++i) EXPECT_EQ(y[i], x[i]);  // BUNCHD is SDECD then SSOLD
  std::vector<norvik_int> broken = {1, -3, 3, 4};     // a lone negative entry
  SSOLD(f.data(), &n, broken.data(), y.data(), &ill);
  EXPECT_EQ(ill, 1);

  Vec s = a0;
  const norvik_int i1 = 1, i4 = 4;
  ICHGD(s.data(), &n, &i1, &i4);
  EXPECT_EQ(s[0 + 1 * n], a0[3 + 1 * n]);  // row 1 ↔ row 4
  EXPECT_EQ(s[3 + 3 * n], a0[0]);

  Vec inv = a0;
  MINVD(inv.data(), &n, &n, &ill);
  ASSERT_EQ(ill, 0);
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) {
      double p = 0.0;
      for (int k = 0; k < n; ++k) p += a0[i + k * n] * inv[k + j * n];
      EXPECT_NEAR(p, i == j ? 1.0 : 0.0, 1e-14);
    }
  }
  Vec singular(n * n, 1.0);
  MINVD(singular.data(), &n, &n, &ill);
  EXPECT_EQ(ill, 5);
}

TEST(ExportedSolvers, TridiagonalKernelsAndSorts) {
  const norvik_int n = 6, ld = 6;
  const double tol = 0.0;
  norvik_int ill = -1;
  Vec d(n, 2.0), e(n - 1, -1.0);
  HQRIID(d.data(), e.data(), &n, &tol, &ill);
  ASSERT_EQ(ill, 0);
  for (int k = 0; k < n; ++k) {  // 2 − 2cos(jπ/7), largest first
    EXPECT_NEAR(d[k], 2.0 - 2.0 * std::cos((n - k) * M_PI / (n + 1.0)), 1e-14);
  }
  Vec d2(n, 2.0), e2(n - 1, -1.0), v(ld * n, 0.0);
  for (int i = 0; i < n; ++i) v[i + i * ld] = 1.0;
  HEQRVD(d2.data(), e2.data(), &n, v.data(), &ld, &tol, &ill);
  ASSERT_EQ(ill, 0);
  for (int k = 0; k < n; ++k) {
    EXPECT_EQ(d2[k], d[k]);
    // the eigenvector is ±sin(i·jπ/(n+1)) normalised
    const int j = n - k;
    const double norm = std::sqrt((n + 1) / 2.0);
    const double sign = v[0 + k * ld] > 0 ? 1.0 : -1.0;
    for (int i = 0; i < n; ++i) {
      EXPECT_NEAR(v[i + k * ld], sign * std::sin((i + 1) * j * M_PI / (n + 1)) / norm, 1e-14);
    }
  }

  const norvik_int three = 3;
  Vec w = {1.0, 3.0, 2.0};
  SORTDK(w.data(), &three);
  EXPECT_EQ(w, (Vec{3.0, 2.0, 1.0}));
  Vec x = {1.0, 3.0, 2.0};
  std::vector<norvik_int> idx = {1, 2, 3};
  SORTDI(x.data(), idx.data(), &three);
  EXPECT_EQ(x, (Vec{3.0, 2.0, 1.0}));
  EXPECT_EQ(idx, (std::vector<norvik_int>{2, 3, 1}));
  Vec y = {1.0, 3.0, 2.0}, z = {1, 1, 1, 3, 3, 3, 2, 2, 2};
  SRTVDD(y.data(), z.data(), &three);
  EXPECT_EQ(z, (Vec{3, 3, 3, 2, 2, 2, 1, 1, 1}));
}

// Overlap of three normalised s functions, the first two identical.
Vec twin_overlap() {
  return {1.0, 1.0, 0.3, 1.0, 1.0, 0.3, 0.3, 0.3, 1.0};
}

TEST(ExportedRoothaan, OrthogonalisationAndDispatch) {
  const norvik_int n = 3;
  const double threshold = 1e-6;
  norvik_int k = -1;
  const Vec s = twin_overlap();
  Vec x(9, -1.0);
  ORTHOG_BASIS(&n, s.data(), &threshold, &k, x.data());
  ASSERT_EQ(k, 2);
  EXPECT_EQ(s, twin_overlap());  // S is not changed
  for (int i = 0; i < 3; ++i) EXPECT_EQ(x[i + 2 * 3], 0.0);
  // F = 2·S − I on the independent space; the dispatcher takes the reduced path.
  Vec f(9);
  for (int i = 0; i < 9; ++i) f[i] = 2.0 * s[i] - (i % 4 == 0 ? 1.0 : 0.0);
  const norvik_int spin = 1;
  Vec eig(3), c(9), eig2(3), c2(9);
  SPLEVEL(f.data(), s.data(), x.data(), &n, &k, &spin, eig.data(), c.data());
  SPLEVEL_ORTH(f.data(), x.data(), &n, &k, eig2.data(), c2.data());
  EXPECT_EQ(eig, eig2);
  EXPECT_EQ(c, c2);
  EXPECT_LT(eig[0], eig[1]);
  EXPECT_EQ(eig[2], 0.0);
  // A well-conditioned S: the dispatcher takes the full generalised solver.
  const Vec s3 = {1.0, 0.2, 0.1, 0.2, 1.0, 0.3, 0.1, 0.3, 1.0};
  Vec x3(9);
  ORTHOG_BASIS(&n, s3.data(), &threshold, &k, x3.data());
  ASSERT_EQ(k, 3);
  SPLEVEL(f.data(), s3.data(), x3.data(), &n, &k, &spin, eig.data(), c.data());
  SPLEVEL_GHQR(f.data(), s3.data(), &n, &spin, eig2.data(), c2.data());
  EXPECT_EQ(eig, eig2);
  SPLEVEL_ORTH(f.data(), x3.data(), &n, &k, eig2.data(), c2.data());
  for (int i = 0; i < 3; ++i) EXPECT_NEAR(eig[i], eig2[i], 1e-13);
}

// Runs `body` in a child process whose standard output is redirected to its
// standard error, where the death-test machinery looks for the message.
#define EXPECT_STOPS_WITH(body, message)    \
  EXPECT_EXIT(                              \
      {                                     \
        std::cout.rdbuf(std::cerr.rdbuf()); \
        body;                               \
      },                                    \
      ::testing::ExitedWithCode(1), message)

TEST(ExportedRoothaanDeathTest, FatalConditionsEndTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const norvik_int n = 3, too_many = 4, none = 0, spin = 2;
  const double threshold = 1e-6;
  const Vec s = twin_overlap();
  Vec f(9, 0.0), x(9, 0.0), eig(3), c(9);
  norvik_int k = 0;
  EXPECT_STOPS_WITH(
      SPLEVEL(f.data(), s.data(), x.data(), &n, &too_many, &spin, eig.data(), c.data()),
      "^ Invalid orthogonalization\\.           4\n$");
  EXPECT_STOPS_WITH(SPLEVEL_GHQR(f.data(), s.data(), &n, &spin, eig.data(), c.data()),
                    "^ GHQRVD failed in splevel_GHQR\\.\n$");
  EXPECT_STOPS_WITH(SPLEVEL_ORTH(f.data(), x.data(), &n, &none, eig.data(), c.data()),
                    "^ ILL is not zero in splevel_Orth\\.\n$");
  EXPECT_STOPS_WITH(ORTHOG_BASIS(&none, s.data(), &threshold, &k, x.data()),
                    "^ Wrong NofBase in orthog_basis\\.           0\n$");
}

}  // namespace
