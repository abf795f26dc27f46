// Search directions, the step along one and the parabola fits, on vectors and
// energies worked out by hand.
#include "geometry/directions.h"

#include <gtest/gtest.h>

#include <vector>

#include "norvik.h"

namespace {

using norvik::geometry::DirectionRule;
using norvik::geometry::update_direction;
using Vector = std::vector<double>;

Vector direction(DirectionRule rule, const Vector& g, const Vector& g_old, Vector d) {
  update_direction(rule, g, g_old, d);
  return d;
}

TEST(Directions, EachRuleOnOneExample) {
  // g − g_old = (0, 2, −1): g·(g − g_old) = 4, g_old·g_old = 2, g·g = 5,
  // (g − g_old)·d = 1.
  const Vector g{1, 2, 0}, g_old{1, 0, 1}, d{0, 1, 1};
  EXPECT_EQ(direction(DirectionRule::steepest_descent, g, g_old, d), (Vector{-1, -2, 0}));
  EXPECT_EQ(direction(DirectionRule::polak_ribiere, g, g_old, d), (Vector{-1, 0, 2}));
  EXPECT_EQ(direction(DirectionRule::polak_ribiere_reset, g, g_old, d), (Vector{-1, 0, 2}));
  EXPECT_EQ(direction(DirectionRule::fletcher_reeves, g, g_old, d), (Vector{-1, 0.5, 2.5}));
  EXPECT_EQ(direction(DirectionRule::hestenes_stiefel, g, g_old, d), (Vector{-1, 2, 4}));
  EXPECT_EQ(direction(DirectionRule::dai_yuan, g, g_old, d), (Vector{-1, 3, 5}));

  // A negative Polak–Ribière β (−1/4 here) is kept, or cut to zero by the reset form.
  const Vector shrinking{1, 0, 0}, before{2, 0, 0}, previous{0, 4, 0};
  EXPECT_EQ(direction(DirectionRule::polak_ribiere, shrinking, before, previous),
            (Vector{-1, -1, 0}));
  EXPECT_EQ(direction(DirectionRule::polak_ribiere_reset, shrinking, before, previous),
            (Vector{-1, 0, 0}));
}

TEST(Directions, ZeroDenominatorGivesSteepestDescent) {
  const Vector g{1, 2, 0}, zero{0, 0, 0}, d{7, 7, 7};
  for (auto rule : {DirectionRule::polak_ribiere, DirectionRule::polak_ribiere_reset,
                    DirectionRule::fletcher_reeves}) {
    EXPECT_EQ(direction(rule, g, zero, d), (Vector{-1, -2, 0}));
  }
  // (g − g_old)·d = 0 for d perpendicular to the change of the gradient.
  const Vector g_old{1, 0, 1}, perpendicular{1, 0, 0};
  for (auto rule : {DirectionRule::hestenes_stiefel, DirectionRule::dai_yuan}) {
    EXPECT_EQ(direction(rule, g, g_old, perpendicular), (Vector{-1, -2, 0}));
  }
}

TEST(Directions, DescentSavesThenSteps) {
  Vector x{1, 2, 3, 4, 5, 6}, saved(6, 0.0);
  norvik::geometry::descent(Vector{1, 0, -1, 0, 2, 0}, 0.5, saved, x);
  EXPECT_EQ(saved, (Vector{1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(x, (Vector{1.5, 2, 2.5, 4, 6, 6}));
}

// Energies of E(t) = (t − t0)² at t = 0, s, 2s: second difference 2s², so the
// fit is accepted for a threshold below s²/2, and its vertex lies t0 − 2s
// beyond the last point.
struct Parabola {
  double t0, s;
  double at(double t) const { return (t - t0) * (t - t0); }
};

TEST(Directions, ParabolaFits) {
  using Fit = norvik::geometry::QuadraticFit (*)(double, double, double, double, double);
  const Fit fits[] = {norvik::geometry::fit_after_point2, norvik::geometry::fit_after_point4,
                      norvik::geometry::fit_after_point8, norvik::geometry::fit_after_point16};
  const double fallback[] = {1.0, 0.5, 0.25, 0.125};  // the probe step h for s = h, 2h, 4h, 8h
  for (int i = 0; i < 4; ++i) {
    SCOPED_TRACE(i);
    const Parabola p{3.5, 0.5};
    const auto ahead = fits[i](0.2499, p.s, p.at(0), p.at(p.s), p.at(2 * p.s));
    EXPECT_TRUE(ahead.fitted);
    EXPECT_DOUBLE_EQ(ahead.extra, 2.5);

    // A curvature that does not exceed the noise (c = 4·threshold) is rejected.
    const auto noisy = fits[i](0.25, p.s, p.at(0), p.at(p.s), p.at(2 * p.s));
    EXPECT_FALSE(noisy.fitted);
    EXPECT_EQ(noisy.extra, 0.5 * fallback[i]);

    // A vertex behind the last point gives exactly zero.
    const Parabola behind{0.5, 0.5};
    const auto back = fits[i](0.0, behind.s, behind.at(0), behind.at(behind.s), behind.at(1.0));
    EXPECT_TRUE(back.fitted);
    EXPECT_EQ(back.extra, 0.0);
  }
}

TEST(Directions, ExportedForms) {
  const norvik_int natom = 1;
  const double g[3] = {1, 2, 0}, g_old[3] = {0, 0, 0};
  double d[3] = {5, 5, 5};
  POLAKRIBIERE(&natom, g, g_old, d);
  EXPECT_EQ(Vector(d, d + 3), (Vector{-1, -2, 0}));

  double saved[3], x[3] = {0, 0, 0};
  const double step = 2.0;
  DESCENT(&natom, d, &step, saved, x);
  EXPECT_EQ(Vector(x, x + 3), (Vector{-2, -4, 0}));

  const double threshold = 0.0, s = 4.0, e0 = 16.0, ea = 0.0, eb = 16.0;
  double extra = -1.0;
  norvik_bool fitted = 7;
  FINDQUADMIN17TH(&threshold, &s, &e0, &ea, &eb, &extra, &fitted);
  EXPECT_EQ(fitted, 1);
  EXPECT_EQ(extra, 0.0);
  const double noisy = 16.0;  // c = 64 is not above 4·16
  FINDQUADMIN17TH(&noisy, &s, &e0, &ea, &eb, &extra, &fitted);
  EXPECT_EQ(fitted, 0);
  EXPECT_EQ(extra, 0.5);
}

}  // namespace
