// The report sections of the thermochemistry: the rotor (principal moments,
// linearity and symmetry number), the vibrational temperatures, the
// zero-point energy, and the thermal properties at 298.15 K and 101.325 kPa.
// Energies in eV, entropies in eV/K, heat capacities in units of k_B, masses
// and moments of inertia as rest energies (eV, eV·Å²).
#pragma once

#include <array>
#include <span>

#include "report/sections.h"

namespace norvik::report {

// The three principal moments of inertia.
Lines inertia(const std::array<double, 3>& moments);

// Whether the molecule is linear and its rotational symmetry number.
Lines rotor(bool linear, int sigma);

// One line per vibrational mode: ħω and the temperature ħω / k_B.
Lines vibrational_temperatures(std::span<const double> mode_energies);

// The zero-point energy and the energy with it.
Lines zero_point_energy(double emol, double zpe);

// The thermal properties: the thermal energies, entropies and heat capacities
// by kind (entropy: translation, rotation, vibration; energy and capacity the
// same and then the kT and Cp − Cv terms), U = emol + zpe + E_thermal,
// H = U + kT, F = U − TS, G = H − TS, and the speed of sound √(γkT/m) of the
// ideal gas, γ = Cp/Cv.
Lines thermal(double emol, double zpe, double mass, const std::array<double, 3>& entropy,
              const std::array<double, 4>& energy, const std::array<double, 4>& capacity);

}  // namespace norvik::report
