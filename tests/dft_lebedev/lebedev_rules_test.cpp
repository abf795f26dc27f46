// The 32 rules as quadratures: each integrates every spherical harmonic up to the
// precision that PRECISION_TABLE gives its index, and not one degree beyond; the
// weights sum to 1 and the points lie on the unit sphere.  Reached through the
// exported tables and LEBEDEV, as a host would use them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "common/error.h"
#include "dft/grid/lebedev.h"
#include "norvik.h"

namespace {

// The published parameters and weights have 16 to 17 significant digits, and a
// harmonic of degree l with unit mean square reaches about √(2l + 1) ≤ 16.  Most
// rules stay below 5e-15; the 230-point rule comes closest (9.7e-15 at degree 24):
// its near-axis orbit (a = 0.0404, 15 digits) weighs against a large negative axis
// weight.
constexpr double kMomentTolerance = 1e-14;
// One degree beyond the precision some harmonic must be visibly missed.
constexpr double kBeyondPrecision = 1e-8;
// Weight sums (of the published weights, compensated) and |point|².
constexpr double kUnitTolerance = 2e-15;

// A sum with the rounding error of each addition carried along (Neumaier): plain
// summation of 5810 weights would itself be off by some 1e-14.
class Sum {
 public:
  void add(double term) {
    const double t = sum_ + term;
    carry_ += std::abs(sum_) >= std::abs(term) ? (sum_ - t) + term : (term - t) + sum_;
    sum_ = t;
  }
  double value() const { return sum_ + carry_; }

 private:
  double sum_ = 0.0;
  double carry_ = 0.0;
};

struct Rule {
  std::vector<double> x, y, z, w;
  explicit Rule(std::size_t n) : x(n), y(n), z(n), w(n) {}
  std::size_t size() const { return w.size(); }
};

Rule lebedev(norvik_int n) {
  Rule r(static_cast<std::size_t>(n));
  LEBEDEV(&n, r.x.data(), r.y.data(), r.z.data(), r.w.data());
  return r;
}

// Real spherical harmonics with unit mean square over the sphere, Y_l^m for
// m = −l … l at slot l² + l + m: Q_l^|m|(z) times the real (m ≥ 0) or imaginary
// (m < 0) part of (x + iy)^|m|, where Q_l^m = P̄_l^m / ρ^m is a polynomial in z
// (P̄ the associated Legendre functions normalised to mean square 1 over the
// sphere with cos or sin mφ).  The standard three-term recursion in l for fixed m.
class Harmonics {
 public:
  explicit Harmonics(int lmax) : lmax_(lmax), a_(slots()), b_(slots()), diagonal_(slots()) {
    for (int m = 0; m <= lmax; ++m) {
      for (int l = m + 2; l <= lmax; ++l) {
        const double lm = (l - m) * static_cast<double>(l + m);
        a_[slot(l, m)] = std::sqrt((2.0 * l - 1) * (2.0 * l + 1) / lm);
        b_[slot(l, m)] =
            std::sqrt((2.0 * l + 1) * (l + m - 1) * (l - m - 1) / (lm * (2.0 * l - 3)));
      }
    }
    diagonal_[0] = 1.0;
    if (lmax >= 1) diagonal_[1] = std::sqrt(3.0);
    for (int m = 2; m <= lmax; ++m) {
      diagonal_[static_cast<std::size_t>(m)] =
          std::sqrt((2.0 * m + 1) / (2.0 * m)) * diagonal_[static_cast<std::size_t>(m - 1)];
    }
  }

  std::size_t slots() const { return static_cast<std::size_t>((lmax_ + 1) * (lmax_ + 1)); }
  static std::size_t slot(int l, int m) { return static_cast<std::size_t>(l * l + l + m); }

  // Σ_k w_k f(Y(p_k)) for every harmonic, f the identity or the square.
  std::vector<double> moments(const Rule& rule, bool squared) const {
    std::vector<Sum> sum(slots());
    std::vector<double> y(slots());
    for (std::size_t k = 0; k < rule.size(); ++k) {
      evaluate(rule.x[k], rule.y[k], rule.z[k], y);
      for (std::size_t s = 0; s < y.size(); ++s) {
        sum[s].add(rule.w[k] * (squared ? y[s] * y[s] : y[s]));
      }
    }
    std::vector<double> value(slots());
    for (std::size_t s = 0; s < value.size(); ++s) value[s] = sum[s].value();
    return value;
  }

 private:
  void evaluate(double x, double y, double z, std::vector<double>& out) const {
    double re = 1.0, im = 0.0;  // (x + iy)^m
    for (int m = 0; m <= lmax_; ++m) {
      double q2 = 0.0;
      double q1 = diagonal_[static_cast<std::size_t>(m)];
      for (int l = m; l <= lmax_; ++l) {
        double q = q1;
        if (l == m + 1) {
          q = std::sqrt(2.0 * m + 3) * z * q1;
        } else if (l >= m + 2) {
          q = a_[slot(l, m)] * z * q1 - b_[slot(l, m)] * q2;
        }
        if (l > m) {
          q2 = q1;
          q1 = q;
        }
        out[slot(l, m)] = q * re;
        if (m > 0) out[slot(l, -m)] = q * im;
      }
      const double next_re = re * x - im * y;
      im = re * y + im * x;
      re = next_re;
    }
  }

  int lmax_;
  std::vector<double> a_, b_, diagonal_;
};

// The largest rule checks the harmonics themselves: each of degree ≤ 65 has its
// square integrated exactly, so its mean square must come out 1.
TEST(LebedevRules, HarmonicsOfTheCheckAreNormalised) {
  const Harmonics harmonics(65);
  const std::vector<double> squares = harmonics.moments(lebedev(5810), true);
  for (int l = 0; l <= 65; ++l) {
    for (int m = -l; m <= l; ++m) {
      EXPECT_NEAR(squares[Harmonics::slot(l, m)], 1.0, 1e-12) << "l " << l << " m " << m;
    }
  }
}

TEST(LebedevRules, EveryRuleIntegratesTheHarmonicsOfItsPrecision) {
  int tabulated = 0;
  int previous_points = 0;
  for (norvik_int index = 1; index <= 65; ++index) {
    SCOPED_TRACE(testing::Message() << "rule index " << index);
    const norvik_int points = ORDER_TABLE(&index);
    const norvik_int precision = PRECISION_TABLE(&index);
    EXPECT_EQ(precision, 2 * index + 1);
    EXPECT_GT(points, previous_points);
    previous_points = points;
    if (AVAILABLE_TABLE(&index) == 0) {
      // A count of the family without a rule is refused like any other.
      Rule none(static_cast<std::size_t>(points));
      EXPECT_THROW(norvik::dft::lebedev(points, {none.x, none.y, none.z, none.w}), norvik::Error);
      continue;
    }
    ASSERT_EQ(AVAILABLE_TABLE(&index), 1);
    ++tabulated;
    const Rule rule = lebedev(points);

    Sum weight_sum;
    for (std::size_t k = 0; k < rule.size(); ++k) {
      weight_sum.add(rule.w[k]);
      const double r2 = rule.x[k] * rule.x[k] + rule.y[k] * rule.y[k] + rule.z[k] * rule.z[k];
      EXPECT_NEAR(r2, 1.0, kUnitTolerance) << "point " << k;
    }
    EXPECT_NEAR(weight_sum.value(), 1.0, kUnitTolerance);

    const Harmonics harmonics(precision + 1);
    const std::vector<double> moment = harmonics.moments(rule, false);
    EXPECT_NEAR(moment[0], 1.0, kMomentTolerance);
    double worst = 0.0;
    for (int l = 1; l <= precision; ++l) {
      for (int m = -l; m <= l; ++m)
        worst = std::max(worst, std::abs(moment[Harmonics::slot(l, m)]));
    }
    EXPECT_LT(worst, kMomentTolerance) << points << " points";
    double beyond = 0.0;
    for (int m = -(precision + 1); m <= precision + 1; ++m) {
      beyond = std::max(beyond, std::abs(moment[Harmonics::slot(precision + 1, m)]));
    }
    EXPECT_GT(beyond, kBeyondPrecision) << points << " points are exact beyond " << precision;
  }
  EXPECT_EQ(tabulated, 32);
}

// LEBEDEV hands out the tabulated rules unchanged, except the 6-point rule, which
// it makes with the weight 1/6 itself; the grid's interleaved form holds the same.
TEST(LebedevRules, LebedevIsTheTableExceptForSixPoints) {
  using Table = void (*)(double*, double*, double*, double*);
  const struct {
    int points;
    Table table;
  } rules[] = {
      {6, LD0006},    {14, LD0014},   {26, LD0026},   {38, LD0038},   {50, LD0050},
      {74, LD0074},   {86, LD0086},   {110, LD0110},  {146, LD0146},  {170, LD0170},
      {194, LD0194},  {230, LD0230},  {266, LD0266},  {302, LD0302},  {350, LD0350},
      {434, LD0434},  {590, LD0590},  {770, LD0770},  {974, LD0974},  {1202, LD1202},
      {1454, LD1454}, {1730, LD1730}, {2030, LD2030}, {2354, LD2354}, {2702, LD2702},
      {3074, LD3074}, {3470, LD3470}, {3890, LD3890}, {4334, LD4334}, {4802, LD4802},
      {5294, LD5294}, {5810, LD5810},
  };
  for (const auto& [points, table] : rules) {
    SCOPED_TRACE(points);
    Rule tabulated(static_cast<std::size_t>(points));
    table(tabulated.x.data(), tabulated.y.data(), tabulated.z.data(), tabulated.w.data());
    const Rule made = lebedev(points);
    EXPECT_EQ(made.x, tabulated.x);
    EXPECT_EQ(made.y, tabulated.y);
    EXPECT_EQ(made.z, tabulated.z);
    // Every published rule opens with the six axis points.
    for (std::size_t k = 0; k < 6; ++k) {
      EXPECT_EQ(std::abs(made.x[k]) + std::abs(made.y[k]) + std::abs(made.z[k]), 1.0);
    }
    if (points == 6) {
      EXPECT_EQ(made.w, std::vector<double>(6, 1.0 / 6.0));
      EXPECT_EQ(tabulated.w, std::vector<double>(6, 0.1666666666666667));
    } else {
      EXPECT_EQ(made.w, tabulated.w);
    }

    std::vector<double> xyz(3 * made.size()), w(made.size());
    norvik::dft::lebedev_rule(points, xyz, w);
    for (std::size_t k = 0; k < made.size(); ++k) {
      ASSERT_EQ(xyz[3 * k], made.x[k]);
      ASSERT_EQ(xyz[3 * k + 1], made.y[k]);
      ASSERT_EQ(xyz[3 * k + 2], made.z[k]);
    }
    EXPECT_EQ(w, made.w);
  }
}

}  // namespace
