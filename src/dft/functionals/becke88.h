// B: Becke 88 gradient-corrected exchange,
//   K(x) = 2 C_x + 2β x² / (1 + 6β x asinh x),
// in the per-spin form of gga_exchange.h.
// A. D. Becke, Phys. Rev. A 38, 3098 (1988).
//
// The enhancement K is also the building block of the OP correlation, which is
// always built on it (op.h).  Batches as in point.h; each routine adds
// weight × its result to the output.
#pragma once

#include <cmath>
#include <span>

#include "dft/functionals/gga_exchange.h"

namespace norvik::dft::becke88 {

// β = 0.0042, fitted by Becke to the exchange energies of the noble-gas atoms;
// the formula uses it as 2β, 6β, 4β and 12β².
inline constexpr double kTwoCx = 1.8610514726982;  // K(0) = 2 C_x (Slater)
inline constexpr double kTwoBeta = 0.0084;
inline constexpr double kSixBeta = 0.0252;
inline constexpr double kFourBeta = 0.0168;
inline constexpr double kTwelveBetaSquared = 0.00021168;

// K(x) and dK/dx (KOFX_BECKE88).
inline Enhancement enhancement(double x) {
  const double ash = std::asinh(x);
  const double d = 1.0 + kSixBeta * x * ash;
  const double k = kTwoCx + kTwoBeta * x * x / d;
  const double dk =
      (kFourBeta * x + kTwelveBetaSquared * x * x * (ash - x / std::sqrt(1.0 + x * x))) / (d * d);
  return {k, dk};
}

void add_energies(std::span<const double> records, double weight, std::span<double> energies);
void add_potentials(std::span<const double> records, double weight, std::span<double> potentials);

}  // namespace norvik::dft::becke88
