// Harmonic vibrations of a molecule: the Hessian as central differences of the
// analytic gradient, and the normal modes of the mass-weighted Hessian with the
// rigid translations and rotations projected out.
//
// Units as the thermochemistry takes them: positions in Å, the Hessian in
// eV/Å², masses as rest energies M c² in eV, so that the eigenvalues λ of the
// mass-weighted Hessian are in Å⁻² and a mode's quantum is ħω = ħc·√λ; its
// wavenumber is √λ / 2π, 1e8·√λ / 2π in cm⁻¹.
#pragma once

#include <functional>
#include <span>
#include <vector>

namespace norvik::geometry {

// The gradient (3N, eV/Å) at positions x ((3, N) Å).
using GradientFunction = std::function<std::vector<double>(std::span<const double> x)>;

// The Hessian (3N × 3N, column-major, eV/Å²) from central differences of the
// gradient with step h [Å] along every coordinate, symmetrised: 6N gradients
// (four-point differences when `four_point`, 12N gradients, error O(h⁴)).
std::vector<double> hessian_by_differences(const GradientFunction& gradient,
                                           std::span<const double> x, double h,
                                           bool four_point = false);

struct NormalModes {
  // 3N eigenvalues λ of the projected mass-weighted Hessian [Å⁻²], ascending;
  // the six (five for a linear molecule) rigid motions come out at zero.
  std::vector<double> eigenvalues;
  // Wavenumbers [cm⁻¹] of the eigenvalues: √λ/2π, negative for an imaginary mode.
  std::vector<double> wavenumbers;
  // Cartesian displacements of every mode (3N × 3N, column k for eigenvalue k),
  // each column normalised to 1.
  std::vector<double> modes;
  bool linear = false;
};

// The normal modes of `hessian` for atoms of rest energies `masses` [eV] at x.
// Throws std::invalid_argument on sizes that do not match.
NormalModes normal_modes(std::span<const double> hessian, std::span<const double> masses,
                         std::span<const double> x);

}  // namespace norvik::geometry
