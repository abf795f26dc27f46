// The molecular integration grid: template sizes and radial rule, the Becke
// partition, whole-molecule integrals, and the weight derivatives against
// central finite differences.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <numbers>
#include <vector>

#include "dft/grid/atomic_grid.h"
#include "dft/grid/molecular_grid.h"
#include "dft/grid/partition.h"
#include "norvik.h"

namespace norvik::dft {
namespace {

struct Template {
  std::vector<double> points, weights;
};

Template make_template(int z, double r0) {
  const int n = points_per_atom(z);
  Template t{std::vector<double>(3 * static_cast<std::size_t>(n)),
             std::vector<double>(static_cast<std::size_t>(n))};
  atomic_template(z, r0, t.points, t.weights);
  return t;
}

double radius(const Template& t, std::size_t k) {
  return std::hypot(t.points[3 * k], t.points[3 * k + 1], t.points[3 * k + 2]);
}

TEST(AtomicTemplate, SizesFollowTheRows) {
  const std::vector<std::pair<int, int>> cases{{1, 3720},  {2, 3720},  {3, 3816},  {6, 3816},
                                               {10, 3816}, {11, 3760}, {18, 3760}, {19, 5476},
                                               {26, 5476}, {36, 5476}, {37, 9700}, {54, 9700}};
  for (const auto& [z, n] : cases) {
    norvik_int zi = z, count = 0;
    NSMPL_ATOM(&zi, &count);
    EXPECT_EQ(count, n) << z;
  }
}

TEST(AtomicTemplate, RadialRuleAndPruning) {
  // Hydrogen with R0 = 1: shell radii i²/(51 − i)², from 1/2500 to 2500, and
  // the weights of a shell sum to 4π r² dr/di whatever its Lebedev rule.
  const Template h = make_template(1, 1.0);
  EXPECT_NEAR(radius(h, 0), 1.0 / 2500.0, 1e-18);
  EXPECT_NEAR(radius(h, h.weights.size() - 1), 2500.0, 1e-9);
  double total = 0.0;
  for (double w : h.weights) total += w;
  double radial = 0.0;
  for (int i = 1; i <= 50; ++i) {
    const double d = 51.0 - i;
    const double r = i * i / (d * d);
    radial += 4.0 * std::numbers::pi * r * r * 2.0 * 51.0 * i / (d * d * d);
  }
  EXPECT_NEAR(total / radial, 1.0, 1e-13);
  // ∫ exp(−r²) dV = π^{3/2}.
  double gauss = 0.0;
  for (std::size_t k = 0; k < h.weights.size(); ++k) {
    const double r = radius(h, k);
    gauss += h.weights[k] * std::exp(-r * r);
  }
  EXPECT_NEAR(gauss / std::pow(std::numbers::pi, 1.5), 1.0, 1e-6);
  // Cd shares Fe's radius factor and Ag Mn's: compare the innermost radius.
  const double r0 = 0.7;
  EXPECT_EQ(radius(make_template(48, r0), 0), radius(make_template(26, r0), 0));
  EXPECT_EQ(radius(make_template(47, r0), 0), radius(make_template(25, r0), 0));
  EXPECT_NE(radius(make_template(47, r0), 0), radius(make_template(48, r0), 0));
}

TEST(AtomicTemplate, PartLeavesTheRestOfTheCapacityZero) {
  const norvik_int z = 1, nmax = 3800;
  const double r0 = 1.0;
  std::vector<double> points(3 * nmax, 7.0), weights(nmax, 7.0);
  GRID_PART(&z, &r0, &nmax, points.data(), weights.data());
  const Template h = make_template(1, 1.0);
  for (std::size_t k = 0; k < h.weights.size(); ++k) EXPECT_EQ(weights[k], h.weights[k]);
  for (std::size_t k = h.weights.size(); k < weights.size(); ++k) {
    EXPECT_EQ(weights[k], 0.0);
    EXPECT_EQ(points[3 * k + 2], 0.0);
  }
}

// Fatal messages go to standard output; the death test reads standard error.
#define STDOUT_TO_STDERR(call) \
  {                            \
    std::fflush(stdout);       \
    dup2(2, 1);                \
    call;                      \
  }

TEST(AtomicTemplateDeathTest, ElementsBeyondXenonStop) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const norvik_int z = 55, zero = 0;
  norvik_int n = 0;
  const double r0 = 1.0;
  std::vector<double> p(3 * 9700), w(9700);
  EXPECT_EXIT(STDOUT_TO_STDERR(NSMPL_ATOM(&z, &n)), ::testing::ExitedWithCode(1),
              " ZiAt exceed the limit in nsmpl_atom\\.");
  EXPECT_EXIT(STDOUT_TO_STDERR(GRID_ATOM(&zero, &n, &r0, p.data(), w.data())),
              ::testing::ExitedWithCode(1), " ZiAt exceed the limit in grid_atom\\.");
}

// Water-like: O at the origin, two H; positions in Å.
const std::vector<double> kWater{0.0, 0.0, 0.0, 0.0, 0.757, -0.586, 0.0, -0.757, -0.586};
const std::vector<int> kWaterZ{8, 1, 1};

struct MolecularGrid {
  std::vector<double> points, weights;
};

MolecularGrid make_grid(const std::vector<double>& coords, const std::vector<int>& z, double r0) {
  const std::size_t natom = z.size();
  std::vector<int> npts(natom), offset(natom), kind(natom);
  const int total = grid_sizes(z, npts, offset);
  const int nmax = 9700;
  std::vector<double> tp(3 * static_cast<std::size_t>(nmax) * natom),
      tw(static_cast<std::size_t>(nmax) * natom);
  for (std::size_t a = 0; a < natom; ++a) {
    kind[a] = static_cast<int>(a);  // one template per atom is allowed
    const auto n = static_cast<std::size_t>(npts[a]);
    atomic_template(z[a], r0, {tp.data() + 3 * nmax * a, 3 * n}, {tw.data() + nmax * a, n});
  }
  MolecularGrid g{std::vector<double>(3 * static_cast<std::size_t>(total)),
                  std::vector<double>(static_cast<std::size_t>(total))};
  molecular_grid(coords, {nmax, tp, tw, kind}, npts, offset, g.points, g.weights);
  return g;
}

TEST(MolecularGrid, OneAtomKeepsItsTemplateWeights) {
  const MolecularGrid g = make_grid({0.3, -0.2, 0.1}, {7}, 1.0);
  const Template t = make_template(7, 1.0);
  ASSERT_EQ(g.weights.size(), t.weights.size());
  for (std::size_t k = 0; k < t.weights.size(); ++k) {
    EXPECT_EQ(g.weights[k], t.weights[k]);
    EXPECT_EQ(g.points[3 * k], t.points[3 * k] + 0.3);
  }
}

TEST(MolecularGrid, PartitionOfUnityAndMolecularIntegrals) {
  const std::vector<Point> probes{
      {0.1, 0.2, 0.3}, {0.0, 0.5, -0.4}, {1.0, -2.0, 0.7}, {0.0, 0.757, -0.586 + 1e-3}};
  for (const Point& r : probes) {
    double sum = 0.0;
    for (int a = 0; a < 3; ++a) sum += fuzzy_weight(kWater, a, r);
    EXPECT_NEAR(sum, 1.0, 1e-14);
  }
  // Σ_A exp(−2|r − R_A|²) integrates to 3·(π/2)^{3/2}, to the grid's accuracy
  // (the default templates reach about 2e-5 here).
  const MolecularGrid g = make_grid(kWater, kWaterZ, 1.0);
  std::vector<double> values(g.weights.size());
  for (std::size_t k = 0; k < values.size(); ++k) {
    double v = 0.0;
    for (std::size_t a = 0; a < 3; ++a) {
      double r2 = 0.0;
      for (std::size_t c = 0; c < 3; ++c) {
        const double d = g.points[3 * k + c] - kWater[3 * a + c];
        r2 += d * d;
      }
      v += std::exp(-2.0 * r2);
    }
    values[k] = v;
  }
  EXPECT_NEAR(integrate(values, g.weights) / (3.0 * std::pow(std::numbers::pi / 2.0, 1.5)), 1.0,
              1e-4);
}

// Central differences with a step that keeps the truncation error (h²) and the
// rounding error (ε·|w|/h ≈ 2e-11 for weights up to 1) below the tolerance:
// 1e-7 of the derivative, and 1e-10 absolute for derivatives that nearly vanish.
constexpr double kStep = 1e-5;
constexpr double kRelative = 1e-7;
constexpr double kRounding = 1e-10;

void expect_close(const Point& analytic, const Point& numeric, const char* what) {
  double scale = 0.0;
  for (double v : numeric) scale = std::max(scale, std::abs(v));
  for (std::size_t k = 0; k < 3; ++k) {
    EXPECT_NEAR(analytic[k], numeric[k], kRelative * scale + kRounding) << what << " " << k;
  }
}

template <class F>
Point central(std::vector<double> coords, int c, F&& f) {
  Point g;
  for (std::size_t k = 0; k < 3; ++k) {
    const double x = coords[3 * static_cast<std::size_t>(c) + k];
    coords[3 * static_cast<std::size_t>(c) + k] = x + kStep;
    const double up = f(coords);
    coords[3 * static_cast<std::size_t>(c) + k] = x - kStep;
    const double down = f(coords);
    coords[3 * static_cast<std::size_t>(c) + k] = x;
    g[k] = (up - down) / (2.0 * kStep);
  }
  return g;
}

TEST(WeightDerivatives, EqualCentralDifferences) {
  // Four atoms, points between them where the partition varies most.
  const std::vector<double> coords{0.0, 0.0, 0.0, 1.1, 0.2, -0.1, -0.4, 1.0, 0.3, 0.5, -0.6, 0.9};
  const std::vector<Point> probes{{0.5, 0.1, 0.0}, {0.2, 0.5, 0.2}, {0.3, -0.2, 0.5}};
  for (const Point& r : probes) {
    for (int a = 0; a < 4; ++a) {
      for (int b = 0; b < 4; ++b) {
        if (b == a) continue;
        expect_close(grad_mu(coords, a, b, r),
                     central(coords, a, [&](const auto& x) { return mu_ab(x, a, b, r); }), "mu");
      }
      for (int c = 0; c < 4; ++c) {
        expect_close(grad_cell_product(coords, a, c, r),
                     central(coords, c, [&](const auto& x) { return cell_product(x, a, r); }),
                     "P_A");
        expect_close(grad_fuzzy(coords, a, c, r),
                     central(coords, c, [&](const auto& x) { return fuzzy_weight(x, a, r); }),
                     "w_A");
      }
    }
    for (int c = 0; c < 4; ++c) {
      expect_close(grad_cell_sum(coords, c, r),
                   central(coords, c, [&](const auto& x) { return cell_sum(x, r); }), "Z");
    }
  }
  // A grid point that moves with its atom: the offset t, half way to the
  // centroid where the partition varies, stays fixed.
  for (int a = 0; a < 4; ++a) {
    Point t{};
    for (std::size_t c = 0; c < 3; ++c) {
      double centroid = 0.0;
      for (std::size_t b = 0; b < 4; ++b) centroid += 0.25 * coords[3 * b + c];
      t[c] = 0.5 * (centroid - coords[3 * static_cast<std::size_t>(a) + c]);
    }
    auto weight_of = [&](const std::vector<double>& x) {
      const auto k = 3 * static_cast<std::size_t>(a);
      return fuzzy_weight(x, a, {x[k] + t[0], x[k + 1] + t[1], x[k + 2] + t[2]});
    };
    const auto k = 3 * static_cast<std::size_t>(a);
    std::vector<double> grad(12);
    grad_point_weight(coords, a, {coords[k] + t[0], coords[k + 1] + t[1], coords[k + 2] + t[2]},
                      grad);
    for (int c = 0; c < 4; ++c) {
      const auto j = 3 * static_cast<std::size_t>(c);
      expect_close({grad[j], grad[j + 1], grad[j + 2]}, central(coords, c, weight_of), "moving");
    }
    // The grid's version, from one set of pair quantities, agrees to rounding.
    MovingPointWeight moving(coords);
    std::vector<double> fast(12);
    const Point r{coords[k] + t[0], coords[k + 1] + t[1], coords[k + 2] + t[2]};
    EXPECT_NEAR(moving(a, r, fast), fuzzy_weight(coords, a, r), 1e-15);
    for (std::size_t j = 0; j < 12; ++j) EXPECT_NEAR(fast[j], grad[j], 1e-13) << a << " " << j;
  }
}

}  // namespace
}  // namespace norvik::dft
