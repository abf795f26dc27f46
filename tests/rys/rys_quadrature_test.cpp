// Rys roots and weights from the tables against high-precision values.
#include "integrals/rys/rys_quadrature.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "common/error.h"
#include "norvik/integrals_rys.h"
#include "reference_data.h"

namespace rys = norvik::integrals::rys;

namespace {

// Roots are fitted to about 2e-16 relative everywhere except the n = 1 segment
// centred at 3, which reaches 3.2e-15 at its left end (docs/rys.md).
constexpr double kRootTolerance = 1e-14;
// The weights of the highest roots of n >= 6 on the first segments are limited
// by the degree of their polynomials to 6e-13 relative; those weights are below
// 1e-3 of the weight sum, so measured against the sum every weight is exact to
// well under 1e-15.
constexpr double kWeightTolerance = 1e-12;
constexpr double kWeightSumTolerance = 1e-15;
// The Gauss-Hermite limit at X = Xmax differs from the exact rule by up to
// 1.5e-13 relative (the highest weight for n = 13): exp(-X) terms dropped.
constexpr double kAsymptoticTolerance = 5e-13;

std::vector<norvik::test::RysRecord> records() {
  static const auto all = norvik::test::read_rys_reference(NORVIK_TEST_DATA "/rys_roots.txt");
  return all;
}

}  // namespace

TEST(RysQuadrature, MatchesHighPrecisionValuesInEverySegmentAndSeam) {
  const auto all = records();
  ASSERT_GT(all.size(), 500u);
  std::vector<double> t(rys::kMaxRoots), w(rys::kMaxRoots);
  for (const auto& r : all) {
    SCOPED_TRACE(r.kind + " n=" + std::to_string(r.n) + " X=" + std::to_string(r.x));
    rys::rys_roots(r.x, r.n, t, w);
    const bool asym = r.kind == "asym";
    double sum = 0.0;
    for (double v : r.weights) sum += v;
    for (int i = 0; i < r.n; ++i) {
      EXPECT_NEAR(t[i], r.roots[i], (asym ? kAsymptoticTolerance : kRootTolerance) * r.roots[i])
          << "root " << i + 1;
      EXPECT_NEAR(w[i], r.weights[i],
                  (asym ? kAsymptoticTolerance : kWeightTolerance) * r.weights[i])
          << "weight " << i + 1;
      if (!asym) {
        EXPECT_NEAR(w[i], r.weights[i], kWeightSumTolerance * sum) << "weight " << i + 1;
      }
    }
  }
}

TEST(RysQuadrature, AsymptoticFormFromXmaxOn) {
  double t = 0.0, w = 0.0;
  rys::rys_roots(34.5, 1, std::span<double>(&t, 1), std::span<double>(&w, 1));
  EXPECT_EQ(t, 0.5 / 34.5);
  EXPECT_DOUBLE_EQ(w, 0.886226925452758 / std::sqrt(34.5));
  // Just below Xmax the polynomial of the last segment gives the same rule to
  // the accuracy of the asymptotic form.
  double t_below = 0.0, w_below = 0.0;
  rys::rys_roots(std::nextafter(34.5, 0.0), 1, std::span<double>(&t_below, 1),
                 std::span<double>(&w_below, 1));
  EXPECT_NEAR(t_below, t, 1e-14 * t);
  EXPECT_NEAR(w_below, w, 1e-14 * w);
}

TEST(RysQuadrature, TooManyRootsIsFatal) {
  std::vector<double> t(14), w(14);
  try {
    rys::rys_roots(1.0, 14, t, w);
    FAIL() << "n = 14 accepted";
  } catch (const norvik::Error& e) {
    EXPECT_EQ(e.lines(), std::vector<std::string>{"Subroutine rysroot supports up to nroots=13"});
  }
  const double x = 1.0;
  const norvik_int n = 14;
  EXPECT_EXIT(RYSQUAD(&x, t.data(), w.data(), &n), testing::ExitedWithCode(1), "");
}

TEST(RysQuadrature, ExportedRoutineAndTables) {
  // The exported routine is the core evaluation, argument for argument.
  const double x = 17.25;
  const norvik_int n = 9;
  std::vector<double> t(9), w(9), t_core(9), w_core(9);
  RYSQUAD(&x, t.data(), w.data(), &n);
  rys::rys_roots(x, 9, t_core, w_core);
  EXPECT_EQ(t, t_core);
  EXPECT_EQ(w, w_core);

  // Table sizes as the host sees them: segments * n * coefficients.
  EXPECT_EQ(sizeof(RYSGRID1_MP_t1) / sizeof(double), 180u);
  EXPECT_EQ(sizeof(RYSGRID5_MP_w5) / sizeof(double), 1425u);
  EXPECT_EQ(sizeof(RYSGRID8_MP_t8) / sizeof(double), 1728u);
  EXPECT_EQ(sizeof(RYSGRID13_MP_w13) / sizeof(double), 3744u);
  // The constant term of the first root on the first segment is t^2(0) = 1/3.
  EXPECT_DOUBLE_EQ(RYSGRID1_MP_t1[14], 1.0 / 3.0);
  EXPECT_DOUBLE_EQ(RYSGRID1_MP_w1[14], 1.0);
}
