// Pointwise values of normalised primitives: norms, the basis d set, gradients,
// the cut-off and the failures.
#include "integrals/one/pgf.h"

#include <gtest/gtest.h>

#include <cmath>
#include <iostream>

#include "basis/angular.h"
#include "common/error.h"
#include "integrals/one/one_electron_matrices.h"
#include "integrals/one/primitives.h"
#include "norvik/integrals_one.h"
#include "support.h"

namespace one = norvik::integrals::one;

TEST(OnePgf, EveryServedFunctionHasUnitNorm) {
  // <g|g> from the overlap integrals of the polynomial's monomials.
  const double alpha = 0.73;
  const one::Vec3 a = {0.2, -0.1, 0.4};
  int count = 0;
  for (const auto& h : one::solid_harmonics()) {
    double norm2 = 0.0;
    for (int i = 0; i < h.nterm; ++i)
      for (int j = 0; j < h.nterm; ++j)
        norm2 += h.coef[i] * h.coef[j] * one::overlap({a, alpha, h.lmn[i]}, {a, alpha, h.lmn[j]});
    // The normalising weight turns this into one.
    const double unit = h.k * std::sqrt(one::kPiCubed / (8.0 * std::pow(alpha, 2 * h.l + 3)));
    const double ratio = norm2 / unit;
    EXPECT_NEAR(ratio, 1.0, 1e-14) << h.l << "," << h.m;
    ++count;
  }
  EXPECT_EQ(count, 20);
}

TEST(OnePgf, MatchesTheBasisFunctionsOfTheSameLabel) {
  // A single-primitive basis function (coefficient 1) at a point equals PGF for
  // the same (l, m): same polynomial, same sign, same normalisation.
  const double alpha = 1.37;
  const one::Vec3 a = {0.1, 0.2, -0.3};
  const one::Vec3 r = {0.6, -0.25, 0.35};
  const one::Vec3 d = {r[0] - a[0], r[1] - a[1], r[2] - a[2]};
  const double radial = std::exp(-alpha * (d[0] * d[0] + d[1] * d[1] + d[2] * d[2]));
  // Every function slot of the basis library's s, p, d (with companion) and f
  // shells.
  std::vector<norvik::basis::Function> functions;
  for (int kind : {1, 3, 6, 7}) {
    norvik::basis::Shell shell;
    norvik::basis::fill_angular(kind, shell);
    for (int k = 0; k < kind; ++k) functions.push_back(shell.functions[k]);
  }
  ASSERT_EQ(functions.size(), 17u);
  for (const auto& f : functions) {
    double p = 0.0;
    for (int t = 0; t < f.nterm; ++t)
      p += f.term_coef[t] * std::pow(d[0], f.lmn[t][0]) * std::pow(d[1], f.lmn[t][1]) *
           std::pow(d[2], f.lmn[t][2]);
    const double basis_value = p * radial / one::primitive_norm(alpha, f.L);
    EXPECT_NEAR(one::pgf_value(f.L, f.M, alpha, a, r), basis_value, 1e-14) << f.L << "," << f.M;
  }
}

TEST(OnePgf, GradientsMatchFiniteDifferences) {
  const double alpha = 0.61;
  const one::Vec3 a = {0.3, -0.2, 0.1};
  const one::Vec3 r = {0.9, 0.5, -0.6};
  const double h = 1e-5;
  for (const auto& fn : one::solid_harmonics()) {
    const one::Vec3 g = one::pgf_gradient(fn.l, fn.m, alpha, a, r);
    for (int k = 0; k < 3; ++k) {
      one::Vec3 rp = r, rm = r;
      rp[k] += h;
      rm[k] -= h;
      const double fd =
          (one::pgf_value(fn.l, fn.m, alpha, a, rp) - one::pgf_value(fn.l, fn.m, alpha, a, rm)) /
          (2 * h);
      EXPECT_NEAR(g[k], fd, 1e-9) << fn.l << "," << fn.m << " axis " << k;
    }
  }
  // The per-(l,m) routines are the dispatcher's members.
  const double A[3] = {a[0], a[1], a[2]}, R[3] = {r[0], r[1], r[2]};
  double direct[3], via[3];
  const norvik_int l = 3, m = -1;
  PGFGRAD_3M1(&alpha, A, R, direct);
  PGFGRAD(&l, &m, &alpha, A, R, via);
  for (int k = 0; k < 3; ++k) EXPECT_EQ(direct[k], via[k]);
  const norvik_int l2 = 2, m2 = 10;
  PGFGRAD_2PX(&alpha, A, R, direct);
  PGFGRAD(&l2, &m2, &alpha, A, R, via);
  for (int k = 0; k < 3; ++k) EXPECT_EQ(direct[k], via[k]);
}

TEST(OnePgf, CutOffIsStrictlyAbove100) {
  // alpha = 4, R = 5 along x: alpha R^2 = 100 exactly.
  const double alpha = 4.0;
  const double A[3] = {1.0, 2.0, 3.0};
  const double at[3] = {6.0, 2.0, 3.0};
  const norvik_int l = 1, m = 1;
  const double v = PGF(&l, &m, &alpha, A, at);
  EXPECT_GT(v, 0.0);
  EXPECT_NEAR(v,
              5.0 * std::exp(-100.0) /
                  std::sqrt(0.25 * std::sqrt(31.006276680299816 / (8.0 * std::pow(4.0, 5)))),
              1e-15 * v);
  double g[3];
  PGFGRAD(&l, &m, &alpha, A, at, g);
  EXPECT_NE(g[0], 0.0);
  const double beyond[3] = {std::nextafter(6.0, 7.0), 2.0, 3.0};
  EXPECT_EQ(PGF(&l, &m, &alpha, A, beyond), 0.0);
  PGFGRAD(&l, &m, &alpha, A, beyond, g);
  EXPECT_EQ(g[0], 0.0);
  EXPECT_EQ(g[1], 0.0);
  EXPECT_EQ(g[2], 0.0);
}

TEST(OnePgf, UnservedLabelsStopWithTheirMessages) {
  one::testing::use_threadsafe_death_tests();
  auto message = [](int l, int m) {
    try {
      one::pgf_value(l, m, 1.0, {0, 0, 0}, {0.1, 0.2, 0.3});
    } catch (const norvik::Error& e) {
      return e.lines()[0];
    }
    return std::string("no error");
  };
  EXPECT_EQ(message(4, 0), " l exceed in subr_pgf. l =            4");
  EXPECT_EQ(message(-1, 0), " l exceed in subr_pgf. l =           -1");
  EXPECT_EQ(message(2, 3), " m exceed in subr_pgf. (l,m)=            2           3");
  EXPECT_EQ(message(1, 10), " m exceed in subr_pgf. (l,m)=            1          10");
  EXPECT_EQ(message(3, 13), " m exceed in subr_pgf. (l,m)=            3          13");
  const norvik_int l = 0, m = 1;
  const double alpha = 1.0, A[3] = {0, 0, 0}, r[3] = {0, 0, 0};
  EXPECT_EXIT(
      {
        std::cout.rdbuf(std::cerr.rdbuf());
        PGF(&l, &m, &alpha, A, r);
      },
      ::testing::ExitedWithCode(1),
      "^ m exceed in subr_pgf\\. \\(l,m\\)=            0           1\n$");
}
