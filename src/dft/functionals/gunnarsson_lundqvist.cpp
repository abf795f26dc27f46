#include "dft/functionals/gunnarsson_lundqvist.h"

#include <array>
#include <cmath>

#include "dft/functionals/batch.h"
#include "dft/functionals/rs_correlation.h"

namespace norvik::dft::gunnarsson_lundqvist {

namespace {

// ε = −c G(r_s / r) [rydberg] of the unpolarised and the polarised gas.
struct Parameters {
  double c, r;
};
constexpr Parameters kParamagnetic{0.0666, 11.4};
constexpr Parameters kFerromagnetic{0.0406, 15.9};

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

RsValue correlation(const Parameters& p, double rs) {
  const Shape s = shape(rs / p.r);
  return {-p.c * s.g, -p.c * s.dg / p.r};
}

// The two fits, the unpolarised gas first.
constexpr auto kFit = [](int gas, double rs) {
  return correlation(gas == 0 ? kParamagnetic : kFerromagnetic, rs);
};

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
  batch::add_energies(records, weight, energies, [](const double* p) {
    return rs_correlation_energy(densities_of(p), kFit, units::kRydberg);
  });
}

void add_potentials(std::span<const double> records, double weight, std::span<double> potentials) {
  batch::add_potentials(records, weight, potentials, [](const double* p) {
    return rs_correlation_potential(densities_of(p), kFit, units::kRydberg);
  });
}

}  // namespace norvik::dft::gunnarsson_lundqvist
