#include "dft/functionals/gunnarsson_lundqvist.h"

#include <array>
#include <cmath>

#include "dft/functionals/batch.h"
#include "dft/functionals/spin_interpolation.h"

namespace norvik::dft::gunnarsson_lundqvist {

namespace {

// ε = −c G(r_s / r) [rydberg] of the unpolarised and the polarised gas.
struct Parameters {
  double c, r;
};
constexpr Parameters kParamagnetic{0.0666, 11.4};
constexpr Parameters kFerromagnetic{0.0406, 15.9};

// Total density [bohr⁻³] below which the functional is zero.
constexpr double kDensityThreshold = 1e-50;

// Where the series takes over, and its length: at y = 4 the first neglected
// terms are below 1e-18 of G and of G'.
constexpr double kSeriesStart = 4.0;
constexpr int kSeriesTerms = 28;

// Coefficients of u^n, u = 1/y: (−1)^{n+1} 3/(n(n+3)) in G and (−1)^n 3/(n+3)
// (of u^{n+1}) in G'.
constexpr auto kSeries = [] {
  std::array<std::array<double, kSeriesTerms + 1>, 2> c{};
  for (int n = 1; n <= kSeriesTerms; ++n) {
    const double sign = n % 2 == 1 ? 1.0 : -1.0;
    c[0][n] = sign * 3.0 / (n * (n + 3.0));
    c[1][n] = -sign * 3.0 / (n + 3.0);
  }
  return c;
}();

struct Value {
  double e, de;  // ε and dε/dr_s
};

Value correlation(const Parameters& p, double rs) {
  const Shape s = shape(rs / p.r);
  return {-p.c * s.g, -p.c * s.dg / p.r};
}

double wigner_seitz_radius(double rho_au) {
  return std::cbrt(units::kThreeOverFourPi / rho_au);
}

double energy(SpinDensities r) {
  const double ra = r.a * units::kBohr3;
  const double rb = r.b * units::kBohr3;
  if (ra + rb < kDensityThreshold) return 0.0;
  const double rs = wigner_seitz_radius(ra + rb);
  const double f = spin_interpolation(ra, rb).f();
  const double eps =
      (1.0 - f) * correlation(kParamagnetic, rs).e + f * correlation(kFerromagnetic, rs).e;
  return eps * (r.a + r.b) * units::kRydberg;
}

// ∂e/∂ρσ = ε − (r_s/3) ∂ε/∂r_s ± (1 ∓ ζ) ∂ε/∂ζ.
Potential potential(SpinDensities r) {
  const double ra = r.a * units::kBohr3;
  const double rb = r.b * units::kBohr3;
  if (ra + rb < kDensityThreshold) return {};
  const double rs = wigner_seitz_radius(ra + rb);
  const SpinInterpolation s = spin_interpolation(ra, rb);
  const double f = s.f();
  const Value p = correlation(kParamagnetic, rs);
  const Value q = correlation(kFerromagnetic, rs);
  const double eps = (1.0 - f) * p.e + f * q.e;
  const double common = eps - rs / 3.0 * ((1.0 - f) * p.de + f * q.de);
  const double dz = (q.e - p.e) * s.df();
  return {(common + (1.0 - s.zeta) * dz) * units::kRydberg,
          (common - (1.0 + s.zeta) * dz) * units::kRydberg, 0.0, 0.0, 0.0};
}

}  // namespace

Shape shape(double y) {
  if (y < kSeriesStart) {
    const double l = std::log1p(1.0 / y);
    return {(1.0 + y * y * y) * l + 0.5 * y - y * y - 1.0 / 3.0,
            3.0 * y * y * l - 1.0 / y + 1.5 - 3.0 * y};
  }
  const double u = 1.0 / y;
  double g = 0.0;
  double dg = 0.0;
  for (int n = kSeriesTerms; n >= 1; --n) {
    g = (g + kSeries[0][n]) * u;
    dg = (dg + kSeries[1][n]) * u;
  }
  return {g, dg * u};
}

void add_energies(std::span<const double> records, double weight, std::span<double> energies) {
  batch::add_energies(records, weight, energies,
                      [](const double* p) { return energy(densities_of(p)); });
}

void add_potentials(std::span<const double> records, double weight, std::span<double> potentials) {
  batch::add_potentials(records, weight, potentials,
                        [](const double* p) { return potential(densities_of(p)); });
}

}  // namespace norvik::dft::gunnarsson_lundqvist
