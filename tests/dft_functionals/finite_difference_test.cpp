// Every potential against the central finite-difference derivative of its
// energy density, and every kernel against that of its potential, over
// densities from 1e-12 to 1e3 Å⁻³ (unpolarised, polarised, nearly and fully
// polarised points) and reduced gradients from 0 to 5e3.
#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "support.h"

namespace {

using xc_test::Functional;
using xc_test::Record;

// The step is relative, h = kStep · u (for γαβ, kStep · √(γαα γββ)), because
// every variable spans many orders of magnitude.  The fourth-order stencil
// leaves a truncation error of about kStep⁴ ≈ 1e-12 of the derivative for the
// power laws the functionals are made of, and the rounding of e (a few ulp)
// divided by h stays near 1e-13 |e|/u; both are far below kTolerance.  The test
// points keep every stencil on one side of the density thresholds and of the
// r_s = 1 seam of PL, and away from zero densities and gradients, where the
// derivative is one-sided.
constexpr double kStep = 1e-3;
// The agreement asked of every derivative, relative to its own size.
constexpr double kTolerance = 1e-7;
// Where a derivative is a tiny part of e/u (the gradient dependence of an
// exchange functional at reduced gradients near 1e-3 contributes 1e-7 of e;
// the minority spin of a nearly polarised point), the difference quotient
// cannot resolve it better than the rounding of e itself.  That rounding is a
// few ulp for most formulas, but the VWN interpolation cancels to about
// x = √r_s ulp at low density (x ≈ 110 at 1e-12 Å⁻³), so this many ulp of the
// largest |e| on the stencil, divided by h, are allowed on top.  For a
// derivative of ordinary size, |v| ≈ |e|/u, that is 3e-11 |v|.
constexpr double kRoundingUlps = 128.0;

// Variables of a point: ρα, ρβ, γαα, γββ, γαβ.
using Variables = std::array<double, 5>;

Record record_of(const Variables& u) {
  return xc_test::record(u[0], u[1], u[2], u[3], u[4]);
}

// The fourth-order central difference of g along variable k with step h, and
// the rounding allowance of the values it combines.
template <class G>
std::pair<double, double> difference(G g, const Variables& u, int k, double h) {
  double values[4];
  const double offsets[4] = {-2.0, -1.0, 1.0, 2.0};
  double largest = 0.0;
  for (int i = 0; i < 4; ++i) {
    Variables s = u;
    s[k] += offsets[i] * h;
    values[i] = g(s);
    largest = std::max(largest, std::fabs(values[i]));
  }
  const double d = (values[0] - 8.0 * values[1] + 8.0 * values[2] - values[3]) / (12.0 * h);
  return {d, kRoundingUlps * DBL_EPSILON * largest / h};
}

// The step of variable k at u, or 0 where the variable cannot move both ways.
double step(const Variables& u, int k) {
  if (k == 4) return kStep * std::sqrt(u[2] * u[3]);
  return u[k] > 0.0 ? kStep * u[k] : 0.0;
}

struct Pattern {
  double zeta, xa, xb, cosine;  // ζ, reduced gradients, cos(∇ρα, ∇ρβ)
};

// Totals from the dilute tail (below the LYP threshold, 6.75e-9 Å⁻³) to the
// core of a heavy atom; none within a few steps of a threshold or of r_s = 1
// (1.611 Å⁻³).
const double kDensities[] = {1e-12, 1e-10, 1e-8, 1e-6, 1e-4, 1e-2, 0.5, 1.0, 10.0, 100.0, 1e3};
const double kZetas[] = {0.0, 0.3, -0.6, 0.99, -0.999999, 1.0, -1.0};
const Pattern kGradients[] = {
    {0.0, 0.0, 0.0, 0.0},    {0.0, 1e-3, 2e-2, 0.5}, {0.0, 0.7, 3.0, -0.35},
    {0.0, 20.0, 150.0, 0.9}, {0.0, 1e3, 5e3, 0.2},
};

std::vector<Variables> test_points() {
  std::vector<Variables> points;
  for (double rho : kDensities) {
    for (double zeta : kZetas) {
      for (const Pattern& g : kGradients) {
        // ρσ = ρ(1 ± ζ)/2, exactly equal at ζ = 0 and exactly zero at ζ = ±1.
        const double ra = zeta == -1.0 ? 0.0 : 0.5 * rho * (1.0 + zeta);
        const double rb = zeta == 1.0 ? 0.0 : zeta == 0.0 ? ra : 0.5 * rho * (1.0 - zeta);
        const double na = g.xa * ra * std::cbrt(ra);
        const double nb = g.xb * rb * std::cbrt(rb);
        points.push_back({ra, rb, na * na, nb * nb, g.cosine * na * nb});
      }
    }
  }
  return points;
}

std::string describe(const Variables& u) {
  char text[160];
  std::snprintf(text, sizeof text, "rho_a=%.3g rho_b=%.3g gaa=%.3g gbb=%.3g gab=%.3g", u[0], u[1],
                u[2], u[3], u[4]);
  return text;
}

// For the report: the largest |analytic − difference| / allowance over all
// points and variables (must stay below 1), and the largest relative deviation
// among the checks that the difference resolves well (rounding below 1e-3 of
// the relative allowance, 1e-10 of the derivative).
struct Worst {
  double ratio = 0.0;
  double resolved = 0.0;
};

void note(Worst& w, double analytic, double fd, double rounding) {
  const double err = std::fabs(analytic - fd);
  w.ratio = std::max(w.ratio, err / (kTolerance * std::fabs(analytic) + rounding));
  if (rounding < 1e-3 * kTolerance * std::fabs(analytic)) {
    w.resolved = std::max(w.resolved, err / std::fabs(analytic));
  }
}

void print(const char* what, const Functional& fn, const Worst& w) {
  std::printf("  %-8s %-9s worst %.2g of the allowance, resolved relative %.2g\n", fn.name.c_str(),
              what, w.ratio, w.resolved);
}

void check_potential(const Functional& fn) {
  Worst worst;
  const auto energy = [&](const Variables& s) { return fn.energy(record_of(s)); };
  for (const Variables& u : test_points()) {
    const auto v = fn.potential(record_of(u));
    for (int k = 0; k < 5; ++k) {
      const double h = step(u, k);
      if (h == 0.0) continue;
      const auto [fd, rounding] = difference(energy, u, k, h);
      const double allowed = kTolerance * std::fabs(v[k]) + rounding;
      EXPECT_LE(std::fabs(v[k] - fd), allowed) << fn.name << " dE/du" << k << " at " << describe(u)
                                               << ": analytic " << v[k] << ", difference " << fd;
      note(worst, v[k], fd, rounding);
    }
  }
  print("potential", fn, worst);
}

// Kernels: ∂vσ/∂ρτ by differences of the potential.  Excluded: the spin whose
// density is zero (the derivative there is one-sided, and the VWN term that
// diverges as (1 − |ζ|)^{−2/3} is left out by design) and spin densities at or
// below the Slater kernel threshold (1e-11 Å⁻³), which rules_test.cpp checks.
void check_kernel(const Functional& fn) {
  Worst worst;
  for (const Variables& u : test_points()) {
    const auto f = fn.kernel(record_of(u));
    const double fk[2][2] = {{f[0], f[2]}, {f[2], f[1]}};
    for (int k = 0; k < 2; ++k) {
      if (u[k] <= 1e-11) continue;
      for (int s = 0; s < 2; ++s) {
        if (u[s] <= 1e-11) continue;
        const auto potential = [&](const Variables& p) { return fn.potential(record_of(p))[s]; };
        const auto [fd, rounding] = difference(potential, u, k, step(u, k));
        const double allowed = kTolerance * std::fabs(fk[s][k]) + rounding;
        EXPECT_LE(std::fabs(fk[s][k] - fd), allowed)
            << fn.name << " d2E/du" << s << "du" << k << " at " << describe(u) << ": analytic "
            << fk[s][k] << ", difference " << fd;
        note(worst, fk[s][k], fd, rounding);
      }
    }
  }
  print("kernel", fn, worst);
}

TEST(XcFiniteDifferences, ComponentPotentialsAreDerivativesOfTheirEnergies) {
  for (const Functional& fn : xc_test::components()) check_potential(fn);
}

TEST(XcFiniteDifferences, CombinationPotentialsAreDerivativesOfTheirEnergies) {
  for (const Functional& fn : xc_test::combinations(0.2)) check_potential(fn);
}

TEST(XcFiniteDifferences, KernelsAreDerivativesOfThePotentials) {
  for (const Functional& fn : xc_test::components()) {
    if (fn.kernel) check_kernel(fn);
  }
  for (const Functional& fn : xc_test::combinations(0.2)) {
    if (fn.kernel) check_kernel(fn);
  }
}

}  // namespace
