// The exchange and correlation components by name, for the combinations and
// the exported component routines: one switch per batch, never per point.
//
// Batches as in point.h; each routine adds weight × the component's result to
// the output.
#pragma once

#include <span>

namespace norvik::dft {

enum class Component {
  slater,                // S, Slater exchange (slater.h)
  becke88,               // B, Becke 88 exchange (becke88.h)
  pf_exchange,           // PF, parameter-free exchange (pf_exchange.h)
  vwn3,                  // VWN3, Vosko–Wilk–Nusair, RPA parameters (vwn3.h)
  vwn5,                  // VWN5, Vosko–Wilk–Nusair, Ceperley–Alder parameters (vwn5.h)
  lyp,                   // LYP, Lee–Yang–Parr correlation (lyp.h)
  op,                    // OP, one-parameter progressive correlation (op.h)
  perdew_zunger,         // PL, Perdew–Zunger local correlation (perdew_zunger.h)
  gunnarsson_lundqvist,  // GL, Gunnarsson–Lundqvist correlation (gunnarsson_lundqvist.h)
};

// Only the local S, VWN3 and VWN5 have kernels.
bool has_kernel(Component c);

void add_energies(Component c, std::span<const double> records, double weight,
                  std::span<double> energies);
void add_potentials(Component c, std::span<const double> records, double weight,
                    std::span<double> potentials);
// Throws std::logic_error for a component without a kernel.
void add_kernels(Component c, std::span<const double> records, double weight,
                 std::span<double> kernels);

}  // namespace norvik::dft
