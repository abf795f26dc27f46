// The one-electron part of the nuclear gradient of an SCF energy:
//
//   Σ_μν D_μν ∂(T + V)_μν/∂R_A − Σ_μν W_μν ∂S_μν/∂R_A
//
// for every atom A, with D the total density and W the energy-weighted density
// (Σ_σ Σ_i n_iσ ε_iσ C_μiσ C_νiσ).  The derivatives of the Gaussians come from
// raising and lowering their exponents (∂/∂A_x of x_A^l e^(−αr_A²) is
// l x_A^(l−1) ... minus 2α x_A^(l+1) ...); the derivative of the attraction to
// nucleus C with respect to C itself follows from translational invariance.
#pragma once

#include <span>

#include "basis/basis_set.h"
#include "integrals/one/primitives.h"

namespace norvik::integrals::one {

// Adds the gradient (3, natom) [hartree/bohr] to `grad`.  `positions` (bohr)
// and `charges` have one entry per atom (a ghost atom has charge 0: it moves
// its functions but attracts nothing); `density` and `weighted` are n×n,
// column-major, symmetric (W in hartree).  Parallel over shell pairs in a fixed
// partition summed in a fixed order: the result does not depend on the threads.
void one_electron_gradient(const basis::BasisSet& basis, std::span<const Vec3> positions,
                           std::span<const double> charges, std::span<const double> density,
                           std::span<const double> weighted, std::span<double> grad);

}  // namespace norvik::integrals::one
