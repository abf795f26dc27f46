// Harmonic vibrations of a molecule: the Hessian, dipole and polarisability
// derivatives as central differences of the analytic gradient, dipole and
// polarisability of displaced points, and the normal modes of the mass-weighted Hessian with the
// rigid translations and rotations projected out.
//
// Units as the thermochemistry takes them: positions in Å, the Hessian in
// eV/Å², masses as rest energies M c² in eV, so that the eigenvalues λ of the
// mass-weighted Hessian are in Å⁻² and a mode's quantum is ħω = ħc·√λ; its
// wavenumber is √λ / 2π, 1e8·√λ / 2π in cm⁻¹.
#pragma once

#include <array>
#include <functional>
#include <span>
#include <vector>

#include "geometry/point_symmetry.h"

namespace norvik::geometry {

// What one displaced point gives the differences: the gradient (3N, eV/Å), the
// total dipole (e·Å) and, when asked for, the polarisability (3 × 3, Å³).
struct DisplacedPoint {
  std::vector<double> gradient;
  std::array<double, 3> dipole{};
  std::array<double, 9> polarizability{};
};

// The point at positions x ((3, N) Å).
using PointFunction = std::function<DisplacedPoint(std::span<const double> x)>;

// How the differences are taken: step h [Å] along every Cartesian coordinate,
// two-point (error O(h²)) or four-point (O(h⁴)) central differences.
struct DifferenceRule {
  double step = 2.5e-3;
  bool four_point = false;
  int points() const { return four_point ? 4 : 2; }
};

// The second derivatives of the energy along coordinate k, from the points
// displaced along it: the Hessian column ∂g/∂x_k (3N, eV/Å²), ∂μ/∂x_k (3, e)
// and ∂α/∂x_k (9, Å²).
struct DerivativeColumn {
  std::vector<double> hessian;
  std::array<double, 3> dipole{};
  std::array<double, 9> polarizability{};
};

DerivativeColumn difference_column(const PointFunction& point, std::span<const double> x,
                                   std::size_t k, const DifferenceRule& rule);

// Every column: the Hessian (3N × 3N, column-major, eV/Å², symmetrised), the
// dipole derivatives (3 × 3N, column k = ∂μ/∂x_k, e) and the polarisability
// derivatives (9 × 3N, Å²).  With the molecule's rotations (the identity
// first) only one atom of each set of equivalent atoms is displaced; the
// columns of the others are its columns turned by the rotation that maps it
// onto them.  `column_done(done, total)` hears the count of displaced
// coordinates before the first (done = 0) and after every one of them.
struct SecondDerivatives {
  std::vector<double> hessian, dipole, polarizability;
  int displaced_atoms = 0;
};

SecondDerivatives second_derivatives(
    const PointFunction& point, std::span<const double> x, const DifferenceRule& rule,
    std::span<const AtomRotation> rotations = {},
    const std::function<void(std::size_t, std::size_t)>& column_done = {});

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

// The intensities of the modes: infrared [km/mol] from the dipole derivatives
// (3 × 3N, e) and, when polarisability derivatives (9 × 3N, Å²) are given,
// Raman activities 45α′² + 7γ′² [Å⁴/amu] and depolarisation ratios of plane-
// polarised light 3γ′²/(45α′² + 4γ′²), per column of `modes` (Cartesian displacements, 3N × 3N, as
// normal_modes gives them; rest energies `masses` [eV]).
struct Intensities {
  std::vector<double> infrared, raman, depolarization;
};

Intensities intensities(std::span<const double> modes, std::span<const double> masses,
                        std::span<const double> dipole_derivatives,
                        std::span<const double> polarizability_derivatives = {});

// A line spectrum broadened by Lorentzians of full width `fwhm` at half maximum
// [cm⁻¹], each of area its line's intensity, at `npoints` wavenumbers evenly
// from `low` to `high` [cm⁻¹] (one point: `low`).
std::vector<double> broadened_spectrum(std::span<const double> wavenumbers,
                                       std::span<const double> intensities, double fwhm, double low,
                                       double high, int npoints);

// The grid of broadened_spectrum.
std::vector<double> spectrum_grid(double low, double high, int npoints);

}  // namespace norvik::geometry
