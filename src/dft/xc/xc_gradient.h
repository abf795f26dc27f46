// The exchange–correlation part of the nuclear gradient of a Kohn–Sham
// energy: the exact derivative of the grid energy
//   E_xc = Σ_g w_g f(ρα, ρβ, ∇ρα, ∇ρβ)(r_g)
// at a fixed density pair, with every basis function moving with its atom and
// every grid point moving with the atom that owns it (r_g = R_A + t_g, its
// weight the template weight times the partition weight w_A(r_g)).
//
// For atom C, with q_gμ the derivative of point g's term with respect to the
// centre of function μ taken with the opposite sign:
//   dE/dR_C = Σ_g f_g ∂w_g/∂R_C          the partition weights
//           + Σ_{g owned by C} Σ_μ q_gμ   the points move: Σ_μ q_gμ = w_g ∇f(r_g)
//           − Σ_{μ on C} Σ_g q_gμ         the functions move
//   q_gμ = 2 w_g Σ_σ [vρσ Tσμ ∇χμ + Σ_i gσ,i (Tσμ ∇∂_iχμ + Uσμ,i ∇χμ)],
//   Tσμ = Σ_ν Pσ_μν χν, Uσμ,i = Σ_ν Pσ_μν ∂_iχν, gσ = 2 vγσσ ∇ρσ + vγαβ ∇ρσ′,
// all at r_g (v the functional's potential record).  The columns sum to zero
// up to rounding: the discrete energy does not change when the molecule and
// its grid move together.  docs/xc.md derives it.
//
// Layouts: positions and the result (3, natom), one column per atom, in Å and
// eV/Å; the density pair (nbasis, nbasis, 2), alpha then beta, symmetric.
#pragma once

#include <span>
#include <vector>

#include "basis/basis_set.h"
#include "dft/functionals/combinations.h"
#include "dft/grid/molecular_grid.h"

namespace norvik::dft {

// How the grid follows the atoms.
//  - moving: every point moves with its owner and the partition weights
//    change with the positions (the derivative of what make_grid gives at
//    the new geometry);
//  - fixed: points and weights stay where they are, only the basis functions
//    move (the last term alone).  Not translation-invariant: the sum of its
//    columns is the grid's error in the force on the whole molecule.
enum class GridResponse { moving, fixed };

// dE_xc/dR_A [eV/Å] of `combination` with exact-exchange fraction
// `exact_exchange` for the density pair `density`, with `basis` on atoms at
// `positions` [Å] and the grid `grid` made for those positions (its owners
// index the atoms).  Ghost atoms enter like any other: through the functions
// and the points they carry.  Batched over the points and parallel; the
// result is the same bits on any thread count.  Throws std::invalid_argument
// when the sizes of the arrays do not agree.
std::vector<double> xc_nuclear_gradient(const basis::BasisSet& basis,
                                        std::span<const double> positions, const Grid& grid,
                                        Combination combination, double exact_exchange,
                                        std::span<const double> density,
                                        GridResponse response = GridResponse::moving);

}  // namespace norvik::dft
