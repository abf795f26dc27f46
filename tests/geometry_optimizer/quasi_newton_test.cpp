// The quasi-Newton optimiser: its model Hessian's invariances, and whole
// optimisations of Morse molecules whose minima are known exactly (every pair
// at its own equilibrium distance), counting gradients.
#include "geometry/quasi_newton.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "common/constants.h"
#include "fake_surface.h"
#include "linalg/eigen.h"

namespace {

using namespace norvik::geometry;
using namespace norvik::geometry::testing;
using norvik::linalg::Index;
using norvik::linalg::Matrix;

// The six rigid motions at x (bohr); a rotation of a linear molecule about
// its axis comes out as zero.
std::vector<Vector> rigid_motions(const Vector& x) {
  const std::size_t n = x.size() / 3;
  std::vector<Vector> out;
  for (int axis = 0; axis < 6; ++axis) {
    Vector v(x.size(), 0.0);
    for (std::size_t a = 0; a < n; ++a) {
      if (axis < 3) {
        v[3 * a + static_cast<std::size_t>(axis)] = 1.0;
        continue;
      }
      const double* r = &x[3 * a];
      const int u = axis - 3, p = (u + 1) % 3, q = (u + 2) % 3;
      v[3 * a + static_cast<std::size_t>(p)] = -r[q];
      v[3 * a + static_cast<std::size_t>(q)] = r[p];
    }
    out.push_back(v);
  }
  return out;
}

// Null vectors: the rigid motions.  The rest of the spectrum is positive:
// every term is k·b·bᵀ, and the internal motions are all held by some term.
void check_model(const std::vector<int>& z, const Vector& x, int internal) {
  const Matrix h = model_hessian(z, x);
  const Index n = h.rows();
  double scale = 0.0;
  for (Index i = 0; i < n; ++i) {
    for (Index j = 0; j < n; ++j) scale = std::max(scale, std::abs(h(i, j)));
  }
  for (Index i = 0; i < n; ++i) {
    for (Index j = 0; j < n; ++j) EXPECT_NEAR(h(i, j), h(j, i), 1e-14 * scale);
  }
  for (const Vector& v : rigid_motions(x)) {
    for (Index i = 0; i < n; ++i) {
      double hv = 0.0;
      for (Index j = 0; j < n; ++j) hv += h(i, j) * v[static_cast<std::size_t>(j)];
      EXPECT_NEAR(hv, 0.0, 1e-12 * scale);
    }
  }
  Matrix a = h, vectors(n, n);
  std::vector<double> w(static_cast<std::size_t>(n));
  ASSERT_EQ(norvik::linalg::symmetric_eigen(a, w, vectors), norvik::linalg::Status::ok);
  int positive = 0;
  for (double e : w) {
    EXPECT_GT(e, -1e-12 * scale);
    if (e > 1e-8 * scale) ++positive;
  }
  EXPECT_EQ(positive, internal);
}

TEST(QuasiNewton, ModelHessianHoldsInternalMotionsOnly) {
  {
    SCOPED_TRACE("bent, non-planar: stretches, bends and torsions");
    check_model({8, 1, 6, 7}, {0.1, 0.2, -0.1, 1.9, 0.3, 0.2, -0.8, 2.4, 0.5, -1.0, 3.1, 2.6}, 6);
  }
  {
    SCOPED_TRACE("a linear triatomic: its bends through the straight-line form");
    check_model({8, 6, 8}, {0, 0, -2.2, 0, 0, 0, 0, 0, 2.2}, 4);
  }
  {
    SCOPED_TRACE("third-row atoms far apart still couple");
    check_model({17, 17, 16}, {0, 0, 0, 3.8, 0, 0, 1.0, 3.5, 0.4}, 3);
  }
}

QuasiNewtonSettings qn_settings(const std::vector<int>& z, int cycles = 30) {
  QuasiNewtonSettings s;
  s.elements = z;
  s.max_cycles = cycles;
  return s;
}

// Water-like: O–H (4.6 eV, 2.3 /Å, 0.96 Å) and H–H (1.3 eV, 2.1 /Å, 1.52 Å),
// curvatures close to water's own (stretch about 0.5 hartree/bohr², bend
// about 0.16 hartree/rad²), minimum at 0.96 Å and 104.7°.
Model water() {
  return morse([](int i, int j) {
    return (i == 0 || j == 0) ? MorsePair{4.6, 2.3, 0.96} : MorsePair{1.3, 2.1, 1.52};
  });
}

// The largest gradient component the default criteria let through [eV/Å].
const double kLoosestGradient =
    4.5e-4 * norvik::constants::kHartreeEv / norvik::constants::kBohrAngstrom;

TEST(QuasiNewton, MorseTriatomicInFewGradients) {
  const std::vector<int> z{8, 1, 1};
  FakeSurface surface(water(), 1e-6, true);
  Vector x{0.0, 0.0, 0.1, 0.0, 0.8, -0.55, 0.1, -0.9, -0.6}, g(9);
  const auto r = optimize_quasi_newton(surface, qn_settings(z), x, g);
  EXPECT_TRUE(r.converged);
  EXPECT_LE(r.gradients, 8);
  EXPECT_EQ(r.gradients, surface.gradients);
  EXPECT_EQ(r.points, surface.points);
  EXPECT_NEAR(distance(x, 0, 1), 0.96, 1e-3);
  EXPECT_NEAR(distance(x, 0, 2), 0.96, 1e-3);
  EXPECT_NEAR(distance(x, 1, 2), 1.52, 1e-3);
  for (double c : g) EXPECT_LT(std::abs(c), kLoosestGradient);
  EXPECT_EQ(surface.reimposes, 1);
  EXPECT_EQ(static_cast<int>(surface.reports.size()), r.cycles);
  EXPECT_EQ(static_cast<int>(surface.log.size()), r.gradients);
  RecordProperty("gradients", r.gradients);

  // The conjugate-gradient engine reaches the same minimum with many more points.
  FakeSurface slow(water(), 1e-6, true);
  Vector y{0.0, 0.0, 0.1, 0.0, 0.8, -0.55, 0.1, -0.9, -0.6}, gy(9);
  OptimizerSettings cg;
  cg.max_cycles = 400;
  cg.max_points = 40;
  cg.base_step = 0.005;
  const auto rc = optimize(slow, cg, y, gy);
  EXPECT_TRUE(rc.converged);
  EXPECT_NEAR(distance(y, 1, 2), 1.52, 2e-3);
  EXPECT_GT(rc.points, 3 * r.points);
}

TEST(QuasiNewton, TetrahedralClusterInFewGradients) {
  // Four atoms bound pairwise alike: the minimum is the regular tetrahedron.
  const MorsePair pair{1.0, 1.8, 1.1};
  FakeSurface surface(morse([&](int, int) { return pair; }), 1e-7, true);
  Vector x{0.0, 0.0, 0.0, 1.25, 0.1, 0.0, 0.5, 0.9, 0.1, 0.6, 0.3, 0.95}, g(12);
  const auto r = optimize_quasi_newton(surface, qn_settings({1, 1, 1, 1}), x, g);
  EXPECT_TRUE(r.converged);
  EXPECT_LE(r.gradients, 10);
  for (int i = 0; i < 4; ++i) {
    for (int j = i + 1; j < 4; ++j) EXPECT_NEAR(distance(x, i, j), 1.1, 1e-3);
  }
  RecordProperty("gradients", r.gradients);
}

TEST(QuasiNewton, StartAtTheMinimumStopsAtOnce) {
  FakeSurface surface(water());
  const double h = 0.76;  // half the H–H distance
  const double height = std::sqrt(0.96 * 0.96 - h * h);
  Vector x{0, 0, height, 0, h, 0, 0, -h, 0}, g(9);
  const auto r = optimize_quasi_newton(surface, qn_settings({8, 1, 1}), x, g);
  EXPECT_TRUE(r.converged);
  EXPECT_EQ(r.points, 1);
  EXPECT_EQ(r.gradients, 1);
}

TEST(QuasiNewton, UphillStepsAreUndoneWithoutAGradient) {
  // A bond far stiffer than the model Hessian expects (90 eV/Å² against about
  // 20 for third-row atoms at 2 Å): the first steps overshoot uphill.
  const MorsePair stiff{5.0, 3.0, 2.0};
  FakeSurface surface(morse([&](int, int) { return stiff; }));
  Vector x{0, 0, 0, 0, 0, 2.1}, g(6);
  const auto r = optimize_quasi_newton(surface, qn_settings({18, 18}), x, g);
  EXPECT_TRUE(r.converged);
  EXPECT_NEAR(distance(x, 0, 1), 2.0, 1e-4);
  EXPECT_GT(surface.restores, 0);
  EXPECT_EQ(r.points, r.gradients + surface.restores);
  // Every kept point is downhill of the one before.
  for (std::size_t i = 1; i < surface.reports.size(); ++i) {
    EXPECT_LT(surface.reports[i].energy, surface.reports[i - 1].energy);
  }
}

TEST(QuasiNewton, CycleLimit) {
  FakeSurface surface(water());
  Vector x{0.0, 0.0, 0.1, 0.0, 0.8, -0.55, 0.1, -0.9, -0.6}, g(9);
  const auto r = optimize_quasi_newton(surface, qn_settings({8, 1, 1}, 2), x, g);
  EXPECT_FALSE(r.converged);
  EXPECT_EQ(r.gradients, 2);
  EXPECT_EQ(r.cycles, 2);
}

}  // namespace
