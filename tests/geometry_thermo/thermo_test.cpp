// Entropies, thermal energies and heat capacities against the textbook
// ideal-gas, rigid-rotor and harmonic-oscillator formulas evaluated in SI
// units from CODATA 2018 constants, independently of the library's eV/Å
// constants.
#include "geometry/thermo.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

namespace {

using norvik::geometry::entropy;
using norvik::geometry::thermal_energy;

// CODATA 2018 (exact SI values except the atomic mass unit).
constexpr double kB = 1.380649e-23;            // J/K
constexpr double kH = 6.62607015e-34;          // J s
constexpr double kC = 299792458.0;             // m/s
constexpr double kAmu = 1.66053906660e-27;     // kg
constexpr double kEV = 1.602176634e-19;        // J
constexpr double kAmuEnergy = 931.49410242e6;  // eV
constexpr double kHc = 1.239841984e-4;         // eV per cm^-1
constexpr double kT = 298.15;
constexpr double kP = 101325.0;
constexpr double kBoltzmannEV = kB / kEV;

// The library's ħc (1973.269717 eV·Å) and CODATA's differ by 4e-8 relative;
// logarithms and sums of order ten turn that into a few 1e-8 relative.
constexpr double kRelative = 1e-6;

// Water: mass 18.010565 u, principal moments (u·Å²), harmonic wavenumbers (cm⁻¹).
constexpr double kWaterMass = 18.010565;
constexpr std::array<double, 3> kWaterInertia = {0.6144, 1.1555, 1.7699};
constexpr std::array<double, 3> kWaterWavenumbers = {1648.0, 3832.0, 3943.0};

// The eigenvalue λ (Å⁻²) of a mode of wavenumber w: ħc·√λ = hc·w.
double eigenvalue_of(double wavenumber) {
  const double e = wavenumber * kHc;
  return (e / norvik::geometry::thermo::kHbarC) * (e / norvik::geometry::thermo::kHbarC);
}

// 3N eigenvalues: the six (or five) lowest are rubbish on purpose, the modes
// must be taken by position.
std::vector<double> spectrum(int natom, bool linear, const std::vector<double>& wavenumbers) {
  std::vector<double> lambda(3 * natom, -7.0);
  const std::size_t first = linear ? 5 : 6;
  for (std::size_t k = 0; k < wavenumbers.size(); ++k)
    lambda[first + k] = eigenvalue_of(wavenumbers[k]);
  return lambda;
}

double theta_vib(double wavenumber) {
  return kH * kC * wavenumber * 100.0 / kB;
}

double sackur_tetrode(double mass_amu) {
  const double m = mass_amu * kAmu;
  const double lambda3 = std::pow(2.0 * std::numbers::pi * m * kB * kT / (kH * kH), 1.5);
  return kBoltzmannEV * (std::log(lambda3 * kB * kT / kP) + 2.5);
}

double theta_rot(double inertia_amu_a2) {
  const double i = inertia_amu_a2 * kAmu * 1e-20;
  return kH * kH / (8.0 * std::numbers::pi * std::numbers::pi * i * kB);
}

TEST(Thermo, WaterMatchesTheTextbookFormulas) {
  const std::vector<double> w(kWaterWavenumbers.begin(), kWaterWavenumbers.end());
  const std::vector<double> lambda = spectrum(3, false, w);
  std::array<double, 3> inertia;
  for (int k = 0; k < 3; ++k) inertia[k] = kWaterInertia[k] * kAmuEnergy;
  const auto s = entropy(false, 2, 3, kWaterMass * kAmuEnergy, inertia, lambda, 1.0);

  const double q_rot = std::sqrt(std::numbers::pi) / 2.0 *
                       std::sqrt(kT * kT * kT /
                                 (theta_rot(kWaterInertia[0]) * theta_rot(kWaterInertia[1]) *
                                  theta_rot(kWaterInertia[2])));
  double s_vib = 0.0, e_vib = 0.0, c_vib = 0.0;
  for (double wn : w) {
    const double u = theta_vib(wn) / kT;
    s_vib += u / (std::exp(u) - 1.0) - std::log(1.0 - std::exp(-u));
    e_vib += kBoltzmannEV * theta_vib(wn) / (std::exp(u) - 1.0);
    c_vib += u * u * std::exp(u) / ((std::exp(u) - 1.0) * (std::exp(u) - 1.0));
  }
  EXPECT_NEAR(s.translational, sackur_tetrode(kWaterMass), kRelative * s.translational);
  EXPECT_NEAR(s.rotational, kBoltzmannEV * (std::log(q_rot) + 1.5), kRelative * s.rotational);
  EXPECT_NEAR(s.vibrational, kBoltzmannEV * s_vib, kRelative * s.vibrational);
  // Water's standard entropy is 188.8 J/(mol K): the sum lands within 0.5.
  const double molar = (s.translational + s.rotational + s.vibrational) * kEV * 6.02214076e23;
  EXPECT_NEAR(molar, 188.8, 0.5);

  const auto t = thermal_energy(false, 3, lambda, 0.0);
  const double kt = kBoltzmannEV * kT;
  EXPECT_NEAR(t.energy[0], 1.5 * kt, 1e-12);
  EXPECT_NEAR(t.energy[1], 1.5 * kt, 1e-12);
  EXPECT_NEAR(t.energy[2], e_vib, kRelative * e_vib);
  EXPECT_NEAR(t.energy[3], kt, 1e-12);
  EXPECT_EQ(t.heat_capacity[0], 1.5);
  EXPECT_EQ(t.heat_capacity[1], 1.5);
  EXPECT_NEAR(t.heat_capacity[2], c_vib, kRelative * c_vib);
  EXPECT_EQ(t.heat_capacity[3], 1.0);
}

// A linear molecule: CO2 with its four modes from index 6 on, I₂ for the
// rotor, σ dividing the rotational partition function.
TEST(Thermo, LinearMoleculeUsesTheSecondMomentAndFourModes) {
  const std::vector<double> w = {667.0, 667.0, 1388.0, 2349.0};
  const std::vector<double> lambda = spectrum(3, true, w);
  const double i = 43.1;  // u·Å²
  const std::array<double, 3> inertia = {0.0, i * kAmuEnergy, i * kAmuEnergy};
  const auto s = entropy(true, 2, 3, 43.98983 * kAmuEnergy, inertia, lambda, 1.0);
  EXPECT_NEAR(s.rotational, kBoltzmannEV * (std::log(kT / (2.0 * theta_rot(i))) + 1.0),
              kRelative * s.rotational);
  double s_vib = 0.0;
  for (double wn : w) {
    const double u = theta_vib(wn) / kT;
    s_vib += u / (std::exp(u) - 1.0) - std::log(1.0 - std::exp(-u));
  }
  EXPECT_NEAR(s.vibrational, kBoltzmannEV * s_vib, kRelative * s.vibrational);

  const auto t = thermal_energy(true, 3, lambda, 1.0);
  EXPECT_NEAR(t.energy[1], kBoltzmannEV * kT, 1e-12);
  EXPECT_EQ(t.heat_capacity[1], 1.0);
}

// A diatomic has one mode, the eigenvalue at 1-based index 6.
TEST(Thermo, DiatomicHasItsOnlyModeAtIndexSix) {
  const std::vector<double> lambda = spectrum(2, true, {2358.0});
  const std::array<double, 3> inertia = {0.0, 8.5 * kAmuEnergy, 8.5 * kAmuEnergy};
  const auto s = entropy(true, 2, 2, 28.006 * kAmuEnergy, inertia, lambda, 1.0);
  const double u = theta_vib(2358.0) / kT;
  EXPECT_NEAR(s.vibrational, kBoltzmannEV * (u / std::expm1(u) - std::log(-std::expm1(-u))),
              kRelative * s.vibrational);
  EXPECT_GT(thermal_energy(true, 2, lambda, 1.0).heat_capacity[2], 0.0);
}

// No modes: a single atom, even called as non-linear.
TEST(Thermo, SingleAtomHasNoVibrations) {
  const std::vector<double> lambda = {1.0, 2.0, 3.0};
  const std::array<double, 3> inertia = {1.0, 1.0, 1.0};
  const auto s = entropy(false, 1, 1, 39.96 * kAmuEnergy, inertia, lambda, 1.0);
  EXPECT_EQ(s.vibrational, 0.0);
  EXPECT_NEAR(s.translational, sackur_tetrode(39.96), kRelative * s.translational);
  const auto t = thermal_energy(false, 1, lambda, 1.0);
  EXPECT_EQ(t.energy[2], 0.0);
  EXPECT_EQ(t.heat_capacity[2], 0.0);
}

// The scale factor multiplies every frequency; 0.0 stands for 1.0.
TEST(Thermo, FrequencyScale) {
  const std::vector<double> w(kWaterWavenumbers.begin(), kWaterWavenumbers.end());
  const std::array<double, 3> inertia = {1e9, 1e9, 2e9};
  const double mass = kWaterMass * kAmuEnergy;
  const auto unscaled = entropy(false, 2, 3, mass, inertia, spectrum(3, false, w), 1.0);
  const auto zero = entropy(false, 2, 3, mass, inertia, spectrum(3, false, w), 0.0);
  EXPECT_EQ(zero.vibrational, unscaled.vibrational);
  EXPECT_EQ(thermal_energy(false, 3, spectrum(3, false, w), 0.0).energy[2],
            thermal_energy(false, 3, spectrum(3, false, w), 1.0).energy[2]);

  std::vector<double> scaled_w = w;
  for (double& x : scaled_w) x *= 0.9;
  const auto scaled = entropy(false, 2, 3, mass, inertia, spectrum(3, false, w), 0.9);
  const auto direct = entropy(false, 2, 3, mass, inertia, spectrum(3, false, scaled_w), 1.0);
  EXPECT_NEAR(scaled.vibrational, direct.vibrational, 1e-12 * direct.vibrational);
}

// Negative eigenvalues among the modes are not guarded: the result is NaN.
TEST(Thermo, ImaginaryModePropagatesNaN) {
  std::vector<double> lambda = spectrum(3, false, {1648.0, 3832.0, 3943.0});
  lambda[6] = -1e-3;
  const std::array<double, 3> inertia = {1e9, 1e9, 2e9};
  EXPECT_TRUE(std::isnan(entropy(false, 1, 3, 1.7e10, inertia, lambda, 1.0).vibrational));
  EXPECT_TRUE(std::isnan(thermal_energy(false, 3, lambda, 1.0).energy[2]));
}

}  // namespace
