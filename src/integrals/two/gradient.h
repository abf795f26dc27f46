// The two-electron part of the nuclear gradient of an SCF energy:
//
//   ½ Σ_μνλσ ∂(μν|λσ)/∂R_A · [D_μν D_λσ − a Σ_s D^s_μλ D^s_νσ]
//
// (D = Dα + Dβ, a the weight of exact exchange), integral-direct over the kept
// shell quartets.  The derivative integrals come from the Rys route with the
// angular momentum of one centre raised and lowered: ∂/∂A_x of a primitive
// x_A^l … e^(−αr_A²) is 2α x_A^(l+1) … − l x_A^(l−1) …; three centres are
// differentiated and the fourth follows from translational invariance.
#pragma once

#include <span>

#include "integrals/two/two_electron.h"

namespace norvik::integrals::two {

// Quartets whose Schwarz bound times the largest density product is below this
// (hartree) are skipped.
inline constexpr double kGradientNeglect = 1e-12;

// Adds the gradient (3, natom) [hartree/bohr] to `grad`; the atoms are those
// of the shell table (record entry 2, 1-based).  `rho` is the density pair
// (n, n, 2).  Parallel over bra shell pairs in a fixed partition summed in a
// fixed order: the result does not depend on the threads.  With `only_atom`
// ≥ 0 the quartets without a shell on that atom are left out: its column is
// complete, the others are not.
void two_electron_gradient(const ContextView& context, int natom, double exchange_weight,
                           std::span<const double> rho, std::span<double> grad, int only_atom = -1);

}  // namespace norvik::integrals::two
