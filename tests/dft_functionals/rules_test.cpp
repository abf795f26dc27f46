// The zero-density and threshold rules, the fully polarised and uniform-gas
// limits, and the building blocks KOFX_BECKE88, KOFX_PF,
// ECVWN and ECDSH against the limits of their formulas.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "support.h"

namespace {

using xc_test::Functional;
using xc_test::Record;
using xc_test::record;

constexpr double kA0 = NORVIK_BOHR_ANGSTROM;
constexpr double kA03 = kA0 * kA0 * kA0;
// Comparisons of one formula evaluated in two orders of operations.
constexpr double kRounding = 1e-14;

std::vector<Functional> everything() {
  std::vector<Functional> all = xc_test::components();
  for (const Functional& f : xc_test::combinations(0.2)) all.push_back(f);
  return all;
}

bool near(double a, double b, double rel) {
  return std::fabs(a - b) <= rel * std::fmax(std::fabs(a), std::fabs(b));
}

// A point without density gives zeros everywhere, with and without a gradient
// (a host's grid may carry round-off gradients where the density vanishes).
TEST(XcZeroDensity, EveryFunctionalGivesZeros) {
  const Record bare{};
  const Record with_gradient{0.0, 0.0, 1e-3, -2e-3, 5e-4, 3e-3, 0.0, -1e-3};
  for (const Functional& fn : everything()) {
    for (const Record& r : {bare, with_gradient}) {
      SCOPED_TRACE(fn.name);
      EXPECT_EQ(fn.energy(r), 0.0);
      for (double v : fn.potential(r)) EXPECT_EQ(v, 0.0);
      if (fn.kernel) {
        for (double f : fn.kernel(r)) EXPECT_EQ(f, 0.0);
      }
    }
  }
}

// A spin density so small that ρσ^{4/3} underflows counts as zero in the
// functionals that divide by it (B, PF, OP), for every gradient.
TEST(XcZeroDensity, UnderflowingSpinDensity) {
  const Record r{0.2, 1e-310, 0.01, 0.0, 0.0, 1e-200, 0.0, 0.0};
  for (const Functional& fn : everything()) {
    SCOPED_TRACE(fn.name);
    EXPECT_TRUE(std::isfinite(fn.energy(r)));
    for (double v : fn.potential(r)) EXPECT_TRUE(std::isfinite(v));
  }
}

// Local functionals and every kernel read only ρα and ρβ; the local ones write
// zero to the three gradient derivatives, B and PF to ∂e/∂γαβ and to the
// ∂e/∂γσσ of a spin without gradient.
TEST(XcRecords, LocalFunctionalsReadOnlyTheDensities) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const Record clean{0.3, 0.1, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0};
  const Record poisoned{0.3, 0.1, nan, nan, nan, nan, nan, nan};
  for (const Functional& fn : everything()) {
    SCOPED_TRACE(fn.name);
    if (fn.kernel) {
      EXPECT_EQ(fn.kernel(poisoned), fn.kernel(clean));
    }
    if (fn.gradient_corrected) continue;
    EXPECT_EQ(fn.energy(poisoned), fn.energy(clean));
    const auto v = fn.potential(poisoned);
    EXPECT_EQ(v, fn.potential(clean));
    EXPECT_EQ(v[2], 0.0);
    EXPECT_EQ(v[3], 0.0);
    EXPECT_EQ(v[4], 0.0);
  }
  // The γ derivative of a spin without gradient is zero by rule.
  const Record r = record(0.3, 0.1, 0.04, 0.0, 0.0);
  for (auto* potential : {V_EXCH_B, V_EXCH_PF}) {
    double v[5];
    potential(r.data(), v);
    EXPECT_EQ(v[3], 0.0);
    EXPECT_EQ(v[4], 0.0);
  }
}

// The thresholds: the Slater kernel per spin at 1e-11 Å⁻³; LYP at a total of
// 1e-9 bohr⁻³; VWN, PL and GL at 1e-50 bohr⁻³.  Just above each, results are
// finite and nonzero; at or below, zero.
TEST(XcThresholds, SlaterKernelPerSpin) {
  double f[3];
  const Record at{1e-11, 1e-11 * (1.0 + 1e-12)};
  F_EXCH_S(at.data(), f);
  EXPECT_EQ(f[0], 0.0);
  EXPECT_LT(f[1], 0.0);
  EXPECT_EQ(f[2], 0.0);
  // Energy and potential have no cut-off.
  const Record tiny{1e-20, 0.0};
  double e, v[5];
  E_EXCH_S(tiny.data(), &e);
  V_EXCH_S(tiny.data(), v);
  EXPECT_LT(e, 0.0);
  EXPECT_LT(v[0], 0.0);
  EXPECT_EQ(v[1], 0.0);
}

TEST(XcThresholds, TotalDensity) {
  struct Case {
    const char* name;
    double threshold_au;
  };
  const Case cases[] = {
      {"LYP", 1e-9}, {"VWN3", 1e-50}, {"VWN5", 1e-50}, {"PL", 1e-50}, {"GL", 1e-50}};
  for (const Functional& fn : xc_test::components()) {
    for (const Case& c : cases) {
      if (fn.name != c.name) continue;
      SCOPED_TRACE(fn.name);
      const double rho = c.threshold_au / kA03;  // Å⁻³
      const double gradient = 1e-3 * std::pow(rho, 4.0 / 3.0);
      const Record below =
          record(0.7 * rho * (1 - 1e-9), 0.3 * rho * (1 - 1e-9), gradient, gradient, 0.0);
      const Record above =
          record(0.7 * rho * (1 + 1e-9), 0.3 * rho * (1 + 1e-9), gradient, gradient, 0.0);
      EXPECT_EQ(fn.energy(below), 0.0);
      for (double v : fn.potential(below)) EXPECT_EQ(v, 0.0);
      EXPECT_LT(fn.energy(above), 0.0);
      const auto v = fn.potential(above);
      EXPECT_LT(v[0], 0.0);
      for (double x : v) EXPECT_TRUE(std::isfinite(x));
      if (fn.kernel) {
        for (double f : fn.kernel(below)) EXPECT_EQ(f, 0.0);
        for (double f : fn.kernel(above)) EXPECT_TRUE(std::isfinite(f));
      }
    }
  }
}

// A fully polarised point (ρβ = 0) continues the nearly polarised ones: the
// special values at ζ = 1 (f = 1, f/f''(0) = 0.5848…, the reduced gradient set
// to 1) must be the limits of the formulas.  The potential approaches its limit
// as (ρβ/ρ)^{1/3}, so ρβ = 1e-36 ρα leaves 1e-12 of it; values are compared on
// the scale of the larger spin entry.  OP is the exception: its result is zero
// by rule, while its potential grows without bound towards full polarisation.
TEST(XcFullyPolarised, LimitOfTheNearlyPolarisedPoint) {
  const double ra = 0.8;
  const double gaa = std::pow(1.7 * std::pow(ra, 4.0 / 3.0), 2);
  const Record polarised = record(ra, 0.0, gaa, 0.0, 0.0);
  const Record nearly = record(ra, 1e-36 * ra, gaa, 0.0, 0.0);
  for (const Functional& fn : xc_test::components()) {
    SCOPED_TRACE(fn.name);
    const auto v = fn.potential(polarised), w = fn.potential(nearly);
    if (fn.name == "OP") {
      EXPECT_EQ(fn.energy(polarised), 0.0);
      for (double x : v) EXPECT_EQ(x, 0.0);
      EXPECT_GT(std::fabs(w[1]), 1e20 * std::fabs(w[0]));
      continue;
    }
    const double scale = std::fmax(std::fabs(v[0]), std::fabs(v[1]));
    EXPECT_LE(std::fabs(fn.energy(polarised) - fn.energy(nearly)), 1e-13 * ra * scale);
    for (int k = 0; k < 2; ++k) EXPECT_LE(std::fabs(v[k] - w[k]), 1e-10 * scale) << k;
    if (fn.kernel) {
      EXPECT_TRUE(near(fn.kernel(polarised)[0], fn.kernel(nearly)[0], 1e-10));
    }
  }
  // LYP has no term without both spins: at ρβ = 0 (and ∇ρβ = 0) it is zero.
  double e;
  E_CORR_LYP(polarised.data(), &e);
  EXPECT_EQ(e, 0.0);
}

// The enhancement functions at small and large reduced gradients (dK/dx at
// ordinary ones is checked through the potentials of B and PF).
TEST(XcLimits, EnhancementFunctions) {
  const double two_cx = 1.8610514726982;
  const double zero[2] = {0.0, 0.0}, small[2] = {1e-3, 2e-3}, large[2] = {1e8, 1e12};
  double k0[2], dk0[2], k[2], dk[2];
  // B88: K = 2Cx + 2βx² + O(x⁴) with β = 0.0042, and K − 2Cx → x/(3 asinh x)
  // (to 1/(6βx asinh x)) for large x.
  KOFX_BECKE88(zero, k0, dk0);
  EXPECT_EQ(k0[0], two_cx);
  EXPECT_EQ(dk0[0], 0.0);
  KOFX_BECKE88(small, k, dk);
  EXPECT_TRUE(near((k[0] - two_cx) / (small[0] * small[0]), 0.0084, 1e-6));
  EXPECT_TRUE(near(dk[1] / small[1], 2.0 * 0.0084, 1e-6));
  KOFX_BECKE88(large, k, dk);
  for (int s = 0; s < 2; ++s) {
    EXPECT_TRUE(near(k[s] - two_cx, large[s] / (3.0 * std::asinh(large[s])), 1e-7));
  }
  // PF: K(0) = A/D0 = 2Cx; K = K(0) + A(k − 1/72)/D0² x² + O(x⁴) with A = 27π/10,
  // k = 7/216; x² K → 72 A (1 + 72k) for large x.
  const double a = 2.7 * std::numbers::pi, kk = 7.0 / 216.0, d0 = a / two_cx;
  const double curvature = a * (kk - 1.0 / 72.0) / (d0 * d0);
  KOFX_PF(zero, k0, dk0);
  EXPECT_TRUE(near(k0[0], two_cx, kRounding));
  KOFX_PF(small, k, dk);
  EXPECT_TRUE(near((k[0] - k0[0]) / (small[0] * small[0]), curvature, 1e-5));
  EXPECT_TRUE(near(dk[1] / small[1], 2.0 * curvature, 1e-5));
  KOFX_PF(large, k, dk);
  EXPECT_TRUE(near(k[0] * large[0] * large[0], 72.0 * a * (1.0 + 72.0 * kk), 1e-12));
}

// ECDSH is the derivative of ECVWN, over x = √r_s from 1e-3 to 1e3 (beyond,
// ECVWN cancels to O(1/x²) from terms of O(1/x) and its difference quotient
// loses more than the 1e-6 asked), for all five parameter sets.
TEST(XcLimits, VwnInterpolationDerivative) {
  const double sets[5][4] = {{-0.409286, 0.0621814, 13.072, 42.7198},
                             {-0.743294, 0.0310907, 20.1231, 101.578},
                             {-0.10498, 0.0621814, 3.72744, 12.9352},
                             {-0.325, 0.0310907, 7.06042, 18.0578},
                             {-0.0047584, -0.033773728, 1.13107, 13.0045}};
  for (const auto& p : sets) {
    for (double x = 1e-3; x < 1e3; x *= 2.9) {
      const double h = 1e-4 * x, xm = x - h, xp = x + h;
      const double fd =
          (ECVWN(&p[0], &p[1], &p[2], &p[3], &xp) - ECVWN(&p[0], &p[1], &p[2], &p[3], &xm)) /
          (2.0 * h);
      EXPECT_TRUE(near(ECDSH(&p[0], &p[1], &p[2], &p[3], &x), fd, 1e-6)) << x;
    }
  }
}

}  // namespace
