// The conjugate-gradient engine on analytic surfaces: the exploration's
// endings, the probe-step table and convergence, the direction rules of the
// driver kinds, and the number of points and gradients they spend.
#include "geometry/optimizer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "fake_surface.h"

namespace {

using namespace norvik::geometry;
using namespace norvik::geometry::testing;

// An H2-like Morse bond along z: D = 4.75 eV, a = 1.94 /Å, re = 0.741 Å.
constexpr MorsePair kBond{4.75, 1.94, 0.741};
Model h2() {
  return morse([](int, int) { return kBond; });
}

OptimizerSettings settings(DriverKind kind, int cycles, int points, double step) {
  OptimizerSettings s;
  s.kind = kind;
  s.max_cycles = cycles;
  s.max_points = points;
  s.base_step = step;
  return s;
}

TEST(ConjugateGradient, OneCycleComputesOnePointAndNoReport) {
  FakeSurface surface(h2());
  const Vector start{0, 0, 0, 0, 0, 1.0};
  Vector x = start, g(6, 1.0);
  const auto r = optimize(surface, settings(DriverKind::cg, 1, 8, 0.01), x, g);
  EXPECT_EQ(r.points, 1);
  EXPECT_EQ(r.gradients, 1);
  EXPECT_EQ(r.cycles, 1);
  EXPECT_FALSE(r.converged);
  EXPECT_TRUE(surface.reports.empty());
  EXPECT_EQ(x, start);
  Vector expected(6);
  h2().gradient(start, expected);
  EXPECT_EQ(g, expected);
  EXPECT_EQ(surface.log, (std::vector<std::string>{"Hartree-Fock gradient ok."}));

  // Without gradients nothing but the point is computed, and g stays zero.
  FakeSurface bare(h2());
  auto no_gradient = settings(DriverKind::cg, 1, 8, 0.01);
  no_gradient.with_gradient = false;
  Vector y = start, gy(6, 1.0);
  EXPECT_EQ(optimize(bare, no_gradient, y, gy).gradients, 0);
  EXPECT_EQ(bare.gradients, 0);
  EXPECT_EQ(gy, Vector(6, 0.0));
}

// With one point per exploration every cycle takes one probe step h along
// −g of the last kept point (steepest descent), kept if downhill, undone if
// uphill; no fit is ever reached.
TEST(ConjugateGradient, OnePointPerExploration) {
  FakeSurface surface(h2());
  Vector x{0, 0, 0, 0, 0, 1.3}, g(6);
  const int cycles = 10;
  const double b = 0.03;
  const auto r = optimize(surface, settings(DriverKind::steepest, cycles, 1, b), x, g);
  ASSERT_EQ(static_cast<int>(surface.reports.size()), r.cycles);
  EXPECT_EQ(r.points, r.cycles);
  EXPECT_EQ(r.gradients, r.cycles);
  int uphill = 0, downhill = 0;
  for (std::size_t c = 1; c < surface.reports.size(); ++c) {
    const Report& before = surface.reports[c - 1];
    const Report& now = surface.reports[c];
    const Vector& probe = surface.visited[c];
    for (std::size_t i = 0; i < 6; ++i) {
      EXPECT_NEAR(probe[i], before.x[i] - now.probe_step * before.g[i], 1e-15);
    }
    ASSERT_TRUE(now.point_counter == 1 || now.point_counter == 2);
    if (now.point_counter == 1) {
      ++uphill;
      EXPECT_EQ(now.x, before.x);
      EXPECT_GT(h2().energy(probe), before.energy);
    } else {
      ++downhill;
      EXPECT_EQ(now.x, probe);
    }
  }
  EXPECT_GT(uphill, 0);
  EXPECT_GT(downhill, 0);
  EXPECT_EQ(surface.restores, uphill);
  EXPECT_EQ(surface.reimposes, r.points - 1);
}

// One atom in E = |x − (1, 0, 0)|² from the origin: d = −g = (2, 0, 0), so a
// probe step h moves 2h along x.  The second cycle shows how an exploration
// ends.
struct Bowl {
  Model model = quadratic({1, 0, 0}, {2, 0, 0, 0, 2, 0, 0, 0, 2});
  OptimizerResult run(double h, double noise, Vector& x) {
    FakeSurface surface(model, noise);
    Vector g(3);
    x = {0, 0, 0};
    auto r = optimize(surface, settings(DriverKind::cg, 2, 20, h), x, g);
    counter = surface.reports.back().point_counter;
    restores = surface.restores;
    return r;
  }
  int counter = 0, restores = 0;
};

TEST(ConjugateGradient, ExplorationEndings) {
  Bowl bowl;
  Vector x;
  {
    SCOPED_TRACE("the parabola's vertex lies behind point 2: no further point");
    const auto r = bowl.run(0.3, 1e-9, x);  // points at 0.6, 1.2; vertex at 1.0
    EXPECT_EQ(r.points, 3);
    EXPECT_EQ(bowl.counter, 3);
    EXPECT_EQ(x, (Vector{0.6 * 2, 0, 0}));
  }
  {
    SCOPED_TRACE("the fitted step lands on the vertex and ends the exploration");
    const auto r = bowl.run(0.15, 1e-9, x);  // points at 0.3, 0.6, then the fitted one
    EXPECT_EQ(r.points, 4);
    EXPECT_EQ(bowl.counter, 3);
    EXPECT_NEAR(x[0], 1.0, 1e-12);
  }
  {
    SCOPED_TRACE("a curvature within the SCF noise is not fitted; plain steps until uphill");
    // Second difference at 0, 0.3, 0.6: 0.18, not above 4·0.05.
    const auto r = bowl.run(0.15, 0.05, x);  // 0.3, 0.6, 0.9, 1.2 (uphill, undone)
    EXPECT_EQ(r.points, 5);
    EXPECT_EQ(bowl.counter, 4);
    EXPECT_EQ(bowl.restores, 1);
    EXPECT_NEAR(x[0], 0.9, 1e-15);
  }
}

// At the true minimum every probe step goes uphill: the probe step grows
// b, b, 10b, 40b until four failures in a row (b, 10b, 40b and three for
// steepest descent) end the run.  The gradient handed back is a constant
// nonzero vector, as an SCF gradient with a small error would be.
TEST(ConjugateGradient, FailedExplorationsAtTheMinimum) {
  const Vector minimum{0.1, 0.2, 0.3, 1.0, 1.1, 1.2};
  const Model bowl = quadratic(minimum, [] {
    Vector k(36, 0.0);
    for (int i = 0; i < 6; ++i) k[i * 7] = 2.0;
    return k;
  }());
  const Model at_minimum{bowl.energy, [](std::span<const double>, std::span<double> g) {
                           std::fill(g.begin(), g.end(), 0.01);
                         }};
  const double b = 0.5;
  struct Case {
    DriverKind kind;
    std::vector<double> steps;
  };
  for (const Case& c :
       {Case{DriverKind::cg, {1, 1, 10, 40}}, Case{DriverKind::cg_mole, {1, 1, 10, 40}},
        Case{DriverKind::steepest, {1, 10, 40}}}) {
    SCOPED_TRACE(static_cast<int>(c.kind));
    FakeSurface surface(at_minimum);
    Vector x = minimum, g(6);
    auto s = settings(c.kind, 50, 10, b);
    s.kohn_sham = true;
    const auto r = optimize(surface, s, x, g);
    const int explorations = static_cast<int>(c.steps.size());
    EXPECT_TRUE(r.converged);
    EXPECT_EQ(r.cycles, explorations + 1);
    EXPECT_EQ(r.points, explorations + 1);
    EXPECT_EQ(r.gradients, explorations + 1);
    EXPECT_EQ(surface.restores, explorations);
    EXPECT_EQ(x, minimum);
    for (int i = 0; i < explorations; ++i) {
      EXPECT_EQ(surface.reports[static_cast<std::size_t>(i + 1)].probe_step,
                c.steps[static_cast<std::size_t>(i)] * b);
      EXPECT_EQ(surface.reports[static_cast<std::size_t>(i + 1)].point_counter, 1);
    }
    EXPECT_EQ(std::count(surface.log.begin(), surface.log.end(), "Kohn-Sham exploration ok."),
              explorations);
  }

  // The cycle limit ends the same run unconverged.
  FakeSurface surface(at_minimum);
  Vector x = minimum, g(6);
  const auto r = optimize(surface, settings(DriverKind::cg, 3, 10, b), x, g);
  EXPECT_FALSE(r.converged);
  EXPECT_EQ(r.cycles, 3);
  EXPECT_EQ(r.points, 3);
}

// The direction after cycle c decides where the first probe point of cycle
// c + 1 lies: x + h·d.  Whether d is −g shows which rule made it.
bool steepest_after(const FakeSurface& s, std::size_t cycle) {
  const Report& kept = s.reports[cycle - 1];
  const Report& next = s.reports[cycle];
  // The first point computed in cycle `cycle + 1`.
  const auto first = std::find(s.cycles.begin(), s.cycles.end(), static_cast<int>(cycle) + 1);
  const Vector& probe = s.visited[static_cast<std::size_t>(first - s.cycles.begin())];
  double worst = 0.0;
  for (std::size_t i = 0; i < probe.size(); ++i) {
    worst = std::max(worst, std::abs(probe[i] - (kept.x[i] - next.probe_step * kept.g[i])));
  }
  return worst < 1e-12;
}

TEST(ConjugateGradient, DirectionRulesOfTheKinds) {
  // Two atoms in an anisotropic bowl: Polak–Ribière differs from −g.
  Vector k(36, 0.0);
  for (int i = 0; i < 6; ++i) k[i * 7] = 1.0 + i;
  k[1] = k[6] = 0.4;
  const Model model = quadratic({0, 0, 0, 1, 0, 0}, k);
  for (DriverKind kind : {DriverKind::cg, DriverKind::cg_mole}) {
    FakeSurface surface(model);
    Vector x{0.3, -0.2, 0.1, 1.2, 0.3, -0.2}, g(6);
    optimize(surface, settings(kind, 7, 1, 0.05), x, g);
    ASSERT_EQ(surface.reports.size(), 7u);
    for (std::size_t c = 1; c < 7; ++c) {
      SCOPED_TRACE(c);
      const bool failed = c >= 2 && surface.reports[c - 1].point_counter == 1;
      // 3N − 3 = 3: the per-molecule kind restarts in cycles 3 and 6.
      const bool restart = c == 1 || failed || (kind == DriverKind::cg_mole && c % 3 == 0);
      EXPECT_EQ(steepest_after(surface, c), restart);
    }
  }
}

TEST(ConjugateGradient, LargeSystemsReportOnlyTheLargestGradient) {
  const int natom = 21;
  Vector k(static_cast<std::size_t>(9 * natom * natom), 0.0);
  for (int i = 0; i < 3 * natom; ++i) k[static_cast<std::size_t>(i * (3 * natom + 1))] = 1.0;
  for (DriverKind kind : {DriverKind::cg, DriverKind::cg_mole}) {
    FakeSurface surface(quadratic(Vector(3 * natom, 0.0), k));
    Vector x(3 * natom, 0.1), g(3 * natom);
    optimize(surface, settings(kind, 2, 1, 0.1), x, g);
    for (const Report& r : surface.reports) {
      EXPECT_EQ(r.largest_only, kind == DriverKind::cg_mole);
    }
  }
}

// Whole optimisations with an SCF-like energy error of 1e-6 eV: every kind
// ends converged at the minimum.
TEST(ConjugateGradient, ConvergesOnAMorseBond) {
  for (DriverKind kind : {DriverKind::cg, DriverKind::cg_mole, DriverKind::steepest}) {
    SCOPED_TRACE(static_cast<int>(kind));
    FakeSurface surface(h2(), 1e-6, true);
    Vector x{0.05, 0.0, 0.0, 0.0, 0.1, 1.1}, g(6);
    const auto r = optimize(surface, settings(kind, 200, 40, 0.005), x, g);
    EXPECT_TRUE(r.converged);
    EXPECT_NEAR(distance(x, 0, 1), kBond.re, 1e-3);
    EXPECT_NEAR(r.energy, -kBond.d, 1e-5);
    EXPECT_EQ(r.points, surface.points);
    EXPECT_EQ(r.gradients, r.cycles);
    RecordProperty("points_" + std::to_string(static_cast<int>(kind)), r.points);
  }
}

TEST(ConjugateGradient, ConvergesOnAnAnisotropicBowl) {
  // Three atoms, curvatures 2 to 18 eV/Å² with couplings between the atoms.
  const int n = 9;
  Vector k(n * n, 0.0);
  for (int i = 0; i < n; ++i) {
    k[static_cast<std::size_t>(i * (n + 1))] = 2.0 + 2.0 * i;
    if (i + 3 < n)
      k[static_cast<std::size_t>(i + (i + 3) * n)] = k[static_cast<std::size_t>(i + 3 + i * n)] =
          -1.0;
  }
  const Vector minimum{0, 0, 0, 1.0, 0, 0, 0.5, 0.9, 0};
  for (DriverKind kind : {DriverKind::cg, DriverKind::steepest}) {
    SCOPED_TRACE(static_cast<int>(kind));
    FakeSurface surface(quadratic(minimum, k), 1e-6, true);
    Vector x{0.2, -0.1, 0.1, 1.3, 0.2, -0.1, 0.4, 1.2, 0.2}, g(n);
    const auto r = optimize(surface, settings(kind, 400, 40, 0.01), x, g);
    EXPECT_TRUE(r.converged);
    for (int i = 0; i < n; ++i)
      EXPECT_NEAR(x[static_cast<std::size_t>(i)], minimum[static_cast<std::size_t>(i)], 2e-3);
    EXPECT_LT(r.energy, 1e-5);
  }
}

}  // namespace
