// The exchange–correlation functionals: pure functions of the spin densities
// (and their gradients) at a point, evaluated over batches of grid points.
//
// This header holds what every functional shares: the point record, the
// per-point results, the unit conversions, and the batch sizes.
//
// Layouts (one column per point, column-major):
//   records   (8, n): ρα, ρβ [Å⁻³], ∂ρα/∂x, ∂ρα/∂y, ∂ρα/∂z, ∂ρβ/∂x, ∂ρβ/∂y,
//                     ∂ρβ/∂z [Å⁻⁴]; local functionals read only the first two
//                     entries of a column;
//   energies  (n):    energy densities e [eV·Å⁻³];
//   potentials (5, n): ∂e/∂ρα, ∂e/∂ρβ [eV], ∂e/∂γαα, ∂e/∂γββ, ∂e/∂γαβ [eV·Å⁵],
//                     γσσ' = ∇ρσ·∇ρσ';
//   kernels   (3, n): ∂²e/∂ρα², ∂²e/∂ρβ², ∂²e/∂ρα∂ρβ [eV·Å³].
//
// Every functional works internally in bohr and hartree (rydberg where its
// published parameters are in rydberg) and converts with the constants below,
// which are fixed to the digit so that every build gives the same numbers.
#pragma once

#include <cstddef>

#include "common/constants.h"

namespace norvik::dft {

inline constexpr std::size_t kPointRecord = 8;
inline constexpr std::size_t kPotentialRecord = 5;
inline constexpr std::size_t kKernelRecord = 3;

namespace units {
inline constexpr double kBohr = constants::kBohrAngstrom;  // a0 [Å]
inline constexpr double kBohr3 = 0.14818471104959977;      // a0³: densities Å⁻³ → bohr⁻³
inline constexpr double kBohr8 = 0.006149064667395591;     // a0⁸: γ Å⁻⁸ → bohr⁻⁸
inline constexpr double kHartree = constants::kHartreeEv;  // [eV]
inline constexpr double kRydberg = constants::kRydbergEv;  // [eV]
// Energy densities linear in ρ^{4/3}: hartree·bohr⁻³ from ρ in Å⁻³ directly.
inline constexpr double kBohrHartree = kBohr * kHartree;
// r_s = (3/(4π ρ))^{1/3} in bohr for ρ in bohr⁻³.
inline constexpr double kThreeOverFourPi = 0.238732414637843;
}  // namespace units

// The spin densities of a point [Å⁻³], all that a local functional reads.
struct SpinDensities {
  double a = 0.0;
  double b = 0.0;
};

// A point as the gradient-corrected functionals see it [Å⁻³, Å⁻⁸].
struct Point {
  double rho_a = 0.0;
  double rho_b = 0.0;
  double gamma_aa = 0.0;
  double gamma_bb = 0.0;
  double gamma_ab = 0.0;
};

// First derivatives of an energy density, in the order of the potential record.
struct Potential {
  double rho_a = 0.0;
  double rho_b = 0.0;
  double gamma_aa = 0.0;
  double gamma_bb = 0.0;
  double gamma_ab = 0.0;
};

// Second derivatives with respect to the spin densities.
struct Kernel {
  double aa = 0.0;
  double bb = 0.0;
  double ab = 0.0;
};

inline SpinDensities densities_of(const double* record) {
  return {record[0], record[1]};
}

inline Point point_of(const double* record) {
  const double* ga = record + 2;
  const double* gb = record + 5;
  return {record[0], record[1], ga[0] * ga[0] + ga[1] * ga[1] + ga[2] * ga[2],
          gb[0] * gb[0] + gb[1] * gb[1] + gb[2] * gb[2],
          ga[0] * gb[0] + ga[1] * gb[1] + ga[2] * gb[2]};
}

}  // namespace norvik::dft
