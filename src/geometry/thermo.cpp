#include "geometry/thermo.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace norvik::geometry {

namespace {

using namespace thermo;

double effective_scale(double scale) {
  return scale == 0.0 ? 1.0 : scale;
}

// u = ħω / kT of a mode.
double reduced_quantum(double lambda, double scale) {
  return std::sqrt(lambda) * kHbarC * scale / kKT;
}

}  // namespace

std::span<const double> vibrational_eigenvalues(bool linear, int natom,
                                                std::span<const double> eigenvalues) {
  const std::size_t first = linear ? 5 : 6;
  const std::size_t total =
      natom > 0 ? std::min(eigenvalues.size(), 3 * static_cast<std::size_t>(natom)) : 0;
  if (total <= first) return {};
  return eigenvalues.subspan(first, total - first);
}

std::vector<double> mode_energies(bool linear, int natom, std::span<const double> eigenvalues,
                                  double scale) {
  std::vector<double> energies;
  for (double lambda : vibrational_eigenvalues(linear, natom, eigenvalues)) {
    energies.push_back(std::sqrt(lambda) * kHbarC * effective_scale(scale));
  }
  return energies;
}

double zero_point_energy(bool linear, int natom, std::span<const double> eigenvalues,
                         double scale) {
  double sum = 0.0;
  for (double hw : mode_energies(linear, natom, eigenvalues, scale)) sum += hw / 2.0;
  return sum;
}

Entropies entropy(bool linear, int sigma, int natom, double mass,
                  const std::array<double, 3>& inertia, std::span<const double> eigenvalues,
                  double scale) {
  Entropies s;
  const double x = mass * kKT / kTranslationScale;
  s.translational = kBoltzmann * (std::log(std::pow(x, 1.5) * kVolumePerMolecule) + 2.5);

  const double four_pi = 4.0 * std::numbers::pi;
  if (linear) {
    const double a = kHbarC / (four_pi * inertia[1]);
    s.rotational =
        kBoltzmann * (std::log((kKT / (2.0 * a * std::numbers::pi * kHbarC)) / sigma) + 1.0);
  } else {
    double product = 1.0;
    for (double moment : inertia) product *= kHbarC / (four_pi * moment);
    s.rotational =
        kBoltzmann *
        (std::log(std::sqrt(kPiKTCubed / (product * kHbarCCubed * kEightPiCubed)) / sigma) + 1.5);
  }

  const double f = effective_scale(scale);
  double sum = 0.0;
  for (double lambda : vibrational_eigenvalues(linear, natom, eigenvalues)) {
    const double u = reduced_quantum(lambda, f);
    sum += u / std::expm1(u) - std::log(-std::expm1(-u));
  }
  s.vibrational = kBoltzmann * sum;
  return s;
}

ThermalEnergies thermal_energy(bool linear, int natom, std::span<const double> eigenvalues,
                               double scale) {
  ThermalEnergies t;
  t.energy[0] = kThreeHalvesKT;
  t.heat_capacity[0] = 1.5;
  t.energy[1] = linear ? kKT : kThreeHalvesKT;
  t.heat_capacity[1] = linear ? 1.0 : 1.5;

  const double f = effective_scale(scale);
  double energy = 0.0;
  double capacity = 0.0;
  for (double lambda : vibrational_eigenvalues(linear, natom, eigenvalues)) {
    const double u = reduced_quantum(lambda, f);
    const double hw = std::sqrt(lambda) * kHbarC * f;
    const double em1 = std::expm1(u);
    energy += hw / em1;
    capacity += u * u * std::exp(u) / (em1 * em1);
  }
  t.energy[2] = energy;
  t.heat_capacity[2] = capacity;
  t.energy[3] = kKT;
  t.heat_capacity[3] = 1.0;
  return t;
}

}  // namespace norvik::geometry
