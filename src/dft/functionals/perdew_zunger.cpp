#include "dft/functionals/perdew_zunger.h"

#include <cmath>

#include "dft/functionals/batch.h"
#include "dft/functionals/rs_correlation.h"

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

RsValue correlation(const Parameters& p, double rs) {
  if (rs >= 1.0) {
    const double sq = std::sqrt(rs);
    const double den = 1.0 + p.beta1 * sq + p.beta2 * rs;
    return {p.gamma / den, -p.gamma * (0.5 * p.beta1 / sq + p.beta2) / (den * den)};
  }
  const double ln = std::log(rs);
  return {p.a * ln + p.b + p.c * rs * ln + p.d * rs, p.a / rs + p.c * (ln + 1.0) + p.d};
}

// The two fits, the unpolarised gas first.
constexpr auto kFit = [](int gas, double rs) {
  return correlation(gas == 0 ? kParamagnetic : kFerromagnetic, rs);
};

}  // namespace

void add_energies(std::span<const double> records, double weight, std::span<double> energies) {
  batch::add_energies(records, weight, energies, [](const double* p) {
    return rs_correlation_energy(densities_of(p), kFit, units::kHartree);
  });
}

void add_potentials(std::span<const double> records, double weight, std::span<double> potentials) {
  batch::add_potentials(records, weight, potentials, [](const double* p) {
    return rs_correlation_potential(densities_of(p), kFit, units::kHartree);
  });
}

}  // namespace norvik::dft::perdew_zunger
