#include "dft/functionals/lyp.h"

#include <cmath>

#include "dft/functionals/batch.h"

namespace norvik::dft::lyp {

namespace {

// The Colle–Salvetti constants as refitted by Lee, Yang and Parr: a, b, c, d
// (a enters as 4a and b as ab).
constexpr double kFourA = 0.19672;         // 4a, a = 0.04918
constexpr double kAB = 0.00649176;         // ab, b = 0.132
constexpr double kC = 0.2533;              // c
constexpr double kD = 0.349;               // d
constexpr double kCF = 0.236705143194386;  // 2^{11/3} C_F a b, C_F = (3/10)(3π²)^{2/3}

// Total density [bohr⁻³] below which the functional is zero.
constexpr double kDensityThreshold = 1e-9;

// Back to the library's units: energy densities, ∂e/∂ρ, ∂e/∂γ.
constexpr double kEnergyScale = units::kHartree / units::kBohr3;
constexpr double kGammaScale = units::kHartree * units::kBohr8 / units::kBohr3;

// The density-only quantities of a point, atomic units.
struct Shared {
  double ra, rb, rho;
  double den;     // 1 + d ρ^{−1/3}
  double t;       // ρ^{−1/3}
  double omega;   // ω
  double delta;   // δ
  double domega;  // dω/dρ = ω (δ − 11) / (3ρ)
  double ddelta;  // dδ/dρ = (d² ρ^{−2/3}/(1 + dρ^{−1/3})² − δ) / (3ρ)
};

Shared shared(double ra, double rb) {
  Shared s;
  s.ra = ra;
  s.rb = rb;
  s.rho = ra + rb;
  s.t = 1.0 / std::cbrt(s.rho);
  s.den = 1.0 + kD * s.t;
  const double t2 = s.t * s.t;
  const double t4 = t2 * t2;
  const double t11 = t4 * t4 * t2 * s.t;
  s.omega = std::exp(-kC * s.t) / s.den * t11;
  s.delta = kC * s.t + kD * s.t / s.den;
  s.domega = s.omega * (s.delta - 11.0) / (3.0 * s.rho);
  const double dt = kD * s.t / s.den;
  s.ddelta = (dt * dt - s.delta) / (3.0 * s.rho);
  return s;
}

// ρ^{8/3} and ρ^{5/3}.
double pow83(double r) {
  const double r13 = std::cbrt(r);
  return r * r * r13 * r13;
}
double pow53(double r) {
  const double r13 = std::cbrt(r);
  return r * r13 * r13;
}

// The inner brackets of Gσσ (spin s, other spin o) and Gαβ.
double bracket_same(const Shared& s, double rs, double ro) {
  return s.ra * s.rb / 9.0 * (1.0 - 3.0 * s.delta - (s.delta - 11.0) * rs / s.rho) - ro * ro;
}
double bracket_mixed(const Shared& s) {
  return s.ra * s.rb / 9.0 * (47.0 - 7.0 * s.delta) - 4.0 / 3.0 * s.rho * s.rho;
}

double energy(const Point& p) {
  const Shared s = shared(p.rho_a * units::kBohr3, p.rho_b * units::kBohr3);
  if (s.rho < kDensityThreshold) return 0.0;
  const double rarb = s.ra * s.rb;
  const double gaa = -kAB * s.omega * bracket_same(s, s.ra, s.rb);
  const double gbb = -kAB * s.omega * bracket_same(s, s.rb, s.ra);
  const double gab = -kAB * s.omega * bracket_mixed(s);
  const double e = -kFourA / s.den * rarb / s.rho -
                   kCF * s.omega * rarb * (pow83(s.ra) + pow83(s.rb)) +
                   (gaa * p.gamma_aa + gab * p.gamma_ab + gbb * p.gamma_bb) * units::kBohr8;
  return e * kEnergyScale;
}

// ∂e/∂ρs [hartree] for the spin s with density rs, the other spin o with ro,
// and the point's γss, γoo, γso [bohr⁻⁸].
double density_derivative(const Shared& s, double rs, double ro, double gss, double goo,
                          double gso) {
  const double rarb = s.ra * s.rb;
  const double rho2 = s.rho * s.rho;
  const double e1 = -kFourA / s.den * rarb / s.rho;
  const double d1 = -kFourA / s.den * ro * ro / rho2 + e1 * kD * s.t / (3.0 * s.rho * s.den);
  const double sum83 = pow83(rs) + pow83(ro);
  const double d2 = -kCF * (s.domega * rarb * sum83 + s.omega * ro * sum83 +
                            s.omega * rarb * (8.0 / 3.0) * pow53(rs));

  const double same = 1.0 - 3.0 * s.delta;
  const double shift = s.delta - 11.0;
  // Gss = −ab ω Ass, Ass = (ρsρo/9)(1 − 3δ − (δ − 11) ρs/ρ) − ρo².
  const double ass = bracket_same(s, rs, ro);
  const double dass = ro / 9.0 * (same - shift * rs / s.rho) +
                      rarb / 9.0 * (-3.0 * s.ddelta - s.ddelta * rs / s.rho - shift * ro / rho2);
  // Goo = −ab ω Aoo, Aoo = (ρsρo/9)(1 − 3δ − (δ − 11) ρo/ρ) − ρs².
  const double aoo = bracket_same(s, ro, rs);
  const double daoo = ro / 9.0 * (same - shift * ro / s.rho) +
                      rarb / 9.0 * (-3.0 * s.ddelta - s.ddelta * ro / s.rho + shift * ro / rho2) -
                      2.0 * rs;
  // Gso = −ab ω Aso, Aso = (ρsρo/9)(47 − 7δ) − (4/3) ρ².
  const double aso = bracket_mixed(s);
  const double daso =
      ro / 9.0 * (47.0 - 7.0 * s.delta) - 7.0 / 9.0 * rarb * s.ddelta - 8.0 / 3.0 * s.rho;
  const double dgss = -kAB * (s.domega * ass + s.omega * dass);
  const double dgoo = -kAB * (s.domega * aoo + s.omega * daoo);
  const double dgso = -kAB * (s.domega * aso + s.omega * daso);
  return d1 + d2 + dgss * gss + dgoo * goo + dgso * gso;
}

Potential potential(const Point& p) {
  const Shared s = shared(p.rho_a * units::kBohr3, p.rho_b * units::kBohr3);
  if (s.rho < kDensityThreshold) return {};
  const double gaa = p.gamma_aa * units::kBohr8;
  const double gbb = p.gamma_bb * units::kBohr8;
  const double gab = p.gamma_ab * units::kBohr8;
  Potential v;
  v.rho_a = density_derivative(s, s.ra, s.rb, gaa, gbb, gab) * units::kHartree;
  v.rho_b = density_derivative(s, s.rb, s.ra, gbb, gaa, gab) * units::kHartree;
  v.gamma_aa = -kAB * s.omega * bracket_same(s, s.ra, s.rb) * kGammaScale;
  v.gamma_bb = -kAB * s.omega * bracket_same(s, s.rb, s.ra) * kGammaScale;
  v.gamma_ab = -kAB * s.omega * bracket_mixed(s) * kGammaScale;
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

}  // namespace norvik::dft::lyp
