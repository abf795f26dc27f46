#include "dft/functionals/slater.h"

#include <cmath>

#include "dft/functionals/batch.h"

namespace norvik::dft::slater {

namespace {

// C_x = (3/2)(3/(4π))^{1/3} [hartree·bohr], and the factors of its first and
// second derivatives, (4/3) C_x and (4/9) C_x.
constexpr double kCx = 0.9305257363491;
constexpr double kCxFirst = 1.2407009817988;
constexpr double kCxSecond = 0.4135669939329333;
// Below this spin density [Å⁻³] the second derivative, which grows as ρσ^{−2/3},
// is set to zero.  Energy and potential are exact down to zero.
constexpr double kKernelThreshold = 1e-11;

// e is linear in ρ^{4/3}: the conversion from Å⁻³ to bohr⁻³ and back to
// Å⁻³ leaves the single factor a0 · hartree.
constexpr double kScale = units::kBohrHartree;

double energy(SpinDensities r) {
  return -kCx * (r.a * std::cbrt(r.a) + r.b * std::cbrt(r.b)) * kScale;
}

Potential potential(SpinDensities r) {
  return {-kCxFirst * std::cbrt(r.a) * kScale, -kCxFirst * std::cbrt(r.b) * kScale, 0.0, 0.0, 0.0};
}

double second_derivative(double rho) {
  if (!(rho > kKernelThreshold)) return 0.0;
  const double r13 = std::cbrt(rho);
  return -kCxSecond / (r13 * r13) * kScale;
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

void add_kernels(std::span<const double> records, double weight, std::span<double> kernels) {
  batch::add_kernels(records, weight, kernels, [](const double* p) {
    const SpinDensities r = densities_of(p);
    return Kernel{second_derivative(r.a), second_derivative(r.b), 0.0};
  });
}

}  // namespace norvik::dft::slater
