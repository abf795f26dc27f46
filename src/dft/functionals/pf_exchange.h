// PF: the parameter-free exchange functional, the per-spin form of
// gga_exchange.h with the enhancement
//   K(x) = A/D · (1 + k x²/D),   D = D0 + x²/72,
// A = 27π/10, k = 7/216, and D0 = A / (2 C_x) (to 15 digits), so that
// K(0) = 2 C_x, the uniform gas.  Its only constants come from exact conditions, none is fitted.
// T. Tsuneda and K. Hirao, Phys. Rev. B 62, 15527 (2000).
//
// Batches as in point.h; each routine adds weight × its result to the output.
#pragma once

#include <span>

#include "dft/functionals/gga_exchange.h"

namespace norvik::dft::pf_exchange {

inline constexpr double kA = 8.482300164692441;             // 27π/10
inline constexpr double kD0 = 4.557799872345596;            // A / (2 C_x)
inline constexpr double kK = 0.032407407407407406;          // 7/216
inline constexpr double kInverse72 = 0.013888888888888888;  // 1/72
inline constexpr double kInverse36 = 0.027777777777777776;  // 1/36, from dD/dx = x/36
inline constexpr double kTwoAK = 0.5497787143782138;        // 2·A·k = 7π/40

// K(x) and dK/dx (KOFX_PF):
//   dK/dx = x/D² (2Ak − A/36) − (2Ak/36) x³/D³.
inline Enhancement enhancement(double x) {
  const double x2 = x * x;
  const double d = kD0 + kInverse72 * x2;
  const double k = kA / d * (1.0 + kK * x2 / d);
  const double dk =
      x / (d * d) * (kTwoAK - kInverse36 * kA) - kInverse36 * kTwoAK * x * x2 / (d * d * d);
  return {k, dk};
}

void add_energies(std::span<const double> records, double weight, std::span<double> energies);
void add_potentials(std::span<const double> records, double weight, std::span<double> potentials);

}  // namespace norvik::dft::pf_exchange
