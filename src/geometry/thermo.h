// Ideal-gas thermochemistry of one molecule at 298.15 K and 101.325 kPa:
// translational, rigid-rotor and harmonic-oscillator entropies, thermal
// energies and heat capacities.
//
// Units: energies in eV; the total mass as its rest energy M c² in eV; moments
// of inertia in eV·Å² (rest energy × Å²); the eigenvalues λ of the
// mass-weighted Hessian in Å⁻², so that a mode's quantum is ħω = ħc·√λ.
// Temperature and pressure are fixed and folded into the constants below.
#pragma once

#include <array>
#include <span>
#include <vector>

namespace norvik::geometry {

namespace thermo {
inline constexpr double kBoltzmann = 8.617333261998994e-05;      // eV/K
inline constexpr double kKT = 0.02569257912065;                  // k_B × 298.15 K, eV
inline constexpr double kThreeHalvesKT = 0.038538868680975;      // 1.5 kT, eV
inline constexpr double kHbarC = 1973.269717;                    // eV·Å
inline constexpr double kTranslationScale = 24465425.32946024;   // 2π(ħc)², eV²·Å²
inline constexpr double kVolumePerMolecule = 40625.76045841282;  // kT/P, Å³
inline constexpr double kPiKTCubed = 5.32810752407726e-05;       // π(kT)³, eV³
inline constexpr double kHbarCCubed = 7683504553.173731;         // (ħc)³
inline constexpr double kEightPiCubed = 248.05021344239853;      // 8π³
}  // namespace thermo

// The eigenvalues that count as vibrations: 1-based indices 7..3N of a
// non-linear molecule, 6..3N of a linear one.  The lower ones are taken as
// translations and rotations by their position, whatever their values.
// Empty when the molecule has no such modes.
std::span<const double> vibrational_eigenvalues(bool linear, int natom,
                                                std::span<const double> eigenvalues);

// ħω (eV) of every vibrational mode, in the order of the eigenvalues.
std::vector<double> mode_energies(bool linear, int natom, std::span<const double> eigenvalues,
                                  double scale);

// The harmonic zero-point energy Σ ħω/2 (eV).
double zero_point_energy(bool linear, int natom, std::span<const double> eigenvalues, double scale);

// Entropies in eV/K per molecule.
struct Entropies {
  double translational = 0.0;
  double rotational = 0.0;
  double vibrational = 0.0;
};

// The entropies of a molecule of total rest energy `mass` with principal
// moments `inertia` (ascending) and rotational symmetry number `sigma`.
// `eigenvalues` holds 3N values in ascending order; `scale` multiplies every
// frequency, 0.0 standing for 1.0.  Non-positive eigenvalues among the modes
// are not guarded: they give NaN or infinite terms.
Entropies entropy(bool linear, int sigma, int natom, double mass,
                  const std::array<double, 3>& inertia, std::span<const double> eigenvalues,
                  double scale);

// Thermal energies (eV) and heat capacities (units of k_B): translational,
// rotational, vibrational, and the fourth entries kT and 1 that turn the
// internal energy into the enthalpy and Cv into Cp.  The vibrational energy
// is the thermal part only; the zero-point energy is not included.
struct ThermalEnergies {
  std::array<double, 4> energy{};
  std::array<double, 4> heat_capacity{};
};

ThermalEnergies thermal_energy(bool linear, int natom, std::span<const double> eigenvalues,
                               double scale);

}  // namespace norvik::geometry
