// The basis functions on the grid: value and gradient of every contracted
// function at every point, computed once per geometry and kept for the cycles.
//
// Layout chi: 4·npts·nbasis doubles as TableLayout says (xc_integrator.h);
// by_point is (4, npts, nbasis), the value and its x, y, z derivatives of
// function μ at point p contiguous at 4·(p + npts·μ).  Points and positions in
// ångström, values in Å^(−3/2), gradients in Å^(−5/2).
#pragma once

#include <span>

#include "basis/basis_set.h"
#include "dft/xc/xc_integrator.h"

namespace norvik::dft {

// Doubles of the basis table.
std::size_t basis_table_size(int npts, int nbasis);

// Fills chi for `basis` on atoms at `positions` ((3, natom) Å) over `points`
// ((3, npts) Å).  Parallel over points; each point writes only its own entries.
void basis_on_grid(const basis::BasisSet& basis, std::span<const double> positions,
                   std::span<const double> points, std::span<double> chi,
                   TableLayout layout = TableLayout::by_point);

}  // namespace norvik::dft
