#include "dft/functionals/perdew_zunger.h"

#include <cmath>

#include "dft/functionals/batch.h"
#include "dft/functionals/spin_interpolation.h"

namespace norvik::dft::perdew_zunger {

namespace {

// One gas: the low-density fit (γ, β1, β2) for r_s ≥ 1 and the high-density
// form (A, B, C, D) for r_s < 1 [hartree].
struct Parameters {
  double gamma, beta1, beta2;
  double a, b, c, d;
};
constexpr Parameters kParamagnetic{-0.1423, 1.0529, 0.3334, 0.0311, -0.048, 0.002, -0.0116};
constexpr Parameters kFerromagnetic{-0.0843, 1.3981, 0.2611, 0.01555, -0.0269, 0.0007, -0.0048};

// Total density [bohr⁻³] below which the functional is zero.
constexpr double kDensityThreshold = 1e-50;

// ε(r_s) and dε/dr_s.
struct Value {
  double e, de;
};

Value correlation(const Parameters& p, double rs) {
  if (rs >= 1.0) {
    const double sq = std::sqrt(rs);
    const double den = 1.0 + p.beta1 * sq + p.beta2 * rs;
    return {p.gamma / den, -p.gamma * (0.5 * p.beta1 / sq + p.beta2) / (den * den)};
  }
  const double ln = std::log(rs);
  return {p.a * ln + p.b + p.c * rs * ln + p.d * rs, p.a / rs + p.c * (ln + 1.0) + p.d};
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
  return eps * (r.a + r.b) * units::kHartree;
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
  return {(common + (1.0 - s.zeta) * dz) * units::kHartree,
          (common - (1.0 + s.zeta) * dz) * units::kHartree, 0.0, 0.0, 0.0};
}

}  // namespace

void add_energies(std::span<const double> records, double weight, std::span<double> energies) {
  batch::add_energies(records, weight, energies,
                      [](const double* p) { return energy(densities_of(p)); });
}

void add_potentials(std::span<const double> records, double weight, std::span<double> potentials) {
  batch::add_potentials(records, weight, potentials,
                        [](const double* p) { return potential(densities_of(p)); });
}

}  // namespace norvik::dft::perdew_zunger
