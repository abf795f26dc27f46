#include "dft/functionals/op.h"

#include <cmath>

#include "dft/functionals/batch.h"
#include "dft/functionals/becke88.h"

namespace norvik::dft::op {

namespace {

// q_αβ for Becke 88 exchange, and the coefficients of the correlation-length
// fit: e = −ρα ρβ (kN1 β + kN0) / (β⁴ + kP3 β³ + kP2 β²).
constexpr double kQ = 2.367;
constexpr double kN1 = 1.5214;
constexpr double kN0 = 0.5764;
constexpr double kP3 = 1.1284;
constexpr double kP2 = 0.3183;

// β is formed from ρσ^{1/3} in Å⁻¹; a0 makes it atomic units.  e = e_au ·
// hartree / a0³ with e_au quadratic in densities of bohr⁻³ = a0³ · Å⁻³.
constexpr double kEnergyScale = units::kBohr3 * units::kHartree;

// Per spin: A = ρ^{1/3} K(x), ∂A/∂ρ and ∂A/∂γ.
struct SpinFactor {
  double a = 0.0, da_drho = 0.0, da_dgamma = 0.0;
};

SpinFactor spin_factor(double rho, double gamma) {
  const double r13 = std::cbrt(rho);
  const double norm = std::sqrt(gamma);
  const double x = norm / (rho * r13);  // ρ^{4/3} > 0: see present()
  const Enhancement k = becke88::enhancement(x);
  SpinFactor s;
  s.a = r13 * k.k;
  // x = |∇ρ| ρ^{−4/3}: ∂A/∂ρ = ρ^{−2/3} (K − 4x K')/3, ∂A/∂γ = K' / (2 |∇ρ| ρ).
  s.da_drho = (k.k - 4.0 * x * k.dk) / (3.0 * r13 * r13);
  s.da_dgamma = norm == 0.0 ? 0.0 : k.dk / (2.0 * norm * rho);
  return s;
}

// The correlation-length fit g(β) and its derivative.
double fit(double beta) {
  const double b2 = beta * beta;
  return (kN1 * beta + kN0) / (b2 * b2 + kP3 * b2 * beta + kP2 * b2);
}
double fit_derivative(double beta) {
  const double b2 = beta * beta;
  const double num = kN1 * beta + kN0;
  const double den = b2 * b2 + kP3 * b2 * beta + kP2 * b2;
  const double dden = 4.0 * b2 * beta + 3.0 * kP3 * b2 + 2.0 * kP2 * beta;
  return (kN1 * den - num * dden) / (den * den);
}

// Both spins present: ρσ^{4/3} > 0, so that the reduced gradients exist (a
// density whose ρσ^{4/3} underflows counts as zero).
bool present(const Point& p) {
  return p.rho_a * std::cbrt(p.rho_a) > 0.0 && p.rho_b * std::cbrt(p.rho_b) > 0.0;
}

// ρ^{1/3} K(x) of one spin.
double spin_scale(double rho, double gamma) {
  const double r13 = std::cbrt(rho);
  return r13 * becke88::enhancement(std::sqrt(gamma) / (rho * r13)).k;
}

double energy(const Point& p) {
  if (!present(p)) return 0.0;
  const double aa = spin_scale(p.rho_a, p.gamma_aa);
  const double ab = spin_scale(p.rho_b, p.gamma_bb);
  const double beta = kQ * aa * ab / (aa + ab) * units::kBohr;
  if (beta == 0.0) return 0.0;
  return -p.rho_a * p.rho_b * fit(beta) * kEnergyScale;
}

Potential potential(const Point& p) {
  if (!present(p)) return {};
  const SpinFactor fa = spin_factor(p.rho_a, p.gamma_aa);
  const SpinFactor fb = spin_factor(p.rho_b, p.gamma_bb);
  const double sum = fa.a + fb.a;
  const double beta = kQ * fa.a * fb.a / sum * units::kBohr;
  if (beta == 0.0) return {};
  // ∂β/∂Aα = q Aβ² / (Aα + Aβ)² · a0, and likewise for β.
  const double dbeta_da = kQ * fb.a * fb.a / (sum * sum) * units::kBohr;
  const double dbeta_db = kQ * fa.a * fa.a / (sum * sum) * units::kBohr;
  const double g = fit(beta);
  const double dg = fit_derivative(beta);
  const double rarb = p.rho_a * p.rho_b;
  Potential v;
  v.rho_a = -(p.rho_b * g + rarb * dg * dbeta_da * fa.da_drho) * kEnergyScale;
  v.rho_b = -(p.rho_a * g + rarb * dg * dbeta_db * fb.da_drho) * kEnergyScale;
  v.gamma_aa = -rarb * dg * dbeta_da * fa.da_dgamma * kEnergyScale;
  v.gamma_bb = -rarb * dg * dbeta_db * fb.da_dgamma * kEnergyScale;
  return v;
}

}  // namespace

void add_energies(std::span<const double> records, double weight, std::span<double> energies) {
  batch::add_energies(records, weight, energies,
                      [](const double* p) { return energy(point_of(p)); });
}

void add_potentials(std::span<const double> records, double weight, std::span<double> potentials) {
  batch::add_potentials(records, weight, potentials,
                        [](const double* p) { return potential(point_of(p)); });
}

}  // namespace norvik::dft::op
