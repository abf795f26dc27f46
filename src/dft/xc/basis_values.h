// The basis functions on the grid: value and gradient of every contracted
// function at every point, computed once per geometry and kept for the cycles,
// or batch by batch in every cycle when the table would not fit in memory.
//
// Layout chi: 4·npts·nbasis doubles as TableLayout says (xc_integrator.h);
// by_point is (4, npts, nbasis), the value and its x, y, z derivatives of
// function μ at point p contiguous at 4·(p + npts·μ).  Points and positions in
// ångström, values in Å^(−3/2), gradients in Å^(−5/2).
#pragma once

#include <array>
#include <span>
#include <vector>

#include "basis/basis_set.h"
#include "dft/xc/xc_integrator.h"

namespace norvik::dft {

// Doubles of the basis table.
std::size_t basis_table_size(int npts, int nbasis);

// A basis on its atoms, ready to be evaluated at points.
class BasisEvaluator {
 public:
  // `basis` on atoms at `positions` ((3, natom) Å); the basis must outlive it.
  BasisEvaluator(const basis::BasisSet& basis, std::span<const double> positions);

  int nbasis() const { return nbasis_; }

  // The value and gradient of every function at the point r (Å): function f's
  // value goes to out[first + step·f], its derivative c to that plus stride·c.
  void at_point(const std::array<double, 3>& r, double* out, std::size_t first, std::size_t step,
                std::size_t stride) const;

  // The four (nb × nbasis) tables (value, x, y, z) of points [p0, p0 + nb) of
  // `points` ((3, npts) Å) into `out` (4·nb·nbasis): one batch of the batch
  // layout.
  void batch(std::span<const double> points, std::ptrdiff_t p0, std::ptrdiff_t nb,
             std::span<double> out) const;

  // The same with the second derivatives: ten (nb × nbasis) tables, value, x,
  // y, z, xx, xy, xz, yy, yz, zz, into `out` (10·nb·nbasis); second
  // derivatives in Å^(−7/2).  For the gradient-corrected terms of the nuclear
  // gradient.
  void batch_with_hessian(std::span<const double> points, std::ptrdiff_t p0, std::ptrdiff_t nb,
                          std::span<double> out) const;

 private:
  struct PlannedShell {
    const basis::Shell* shell;
    std::array<double, 3> centre;  // bohr
    int offset;                    // first function
    // Contraction weights per function and primitive, d_k / N(α_k, L).
    std::array<std::array<double, basis::kMaxPrimitives>, basis::kMaxFunctionsPerShell> weight;
  };
  std::vector<PlannedShell> plan_;
  int nbasis_ = 0;
};

// The basis of a shell table (PACKSHELLS, (kShellRecord, nshell), centres in
// bohr): every shell on a centre of its own, `centres` ((3, nshell) Å).
struct ShellTableBasis {
  basis::BasisSet set;
  std::vector<double> centres;
};
ShellTableBasis basis_from_shell_table(int nshell, std::span<const double> shelltab);

// Fills chi for `basis` on atoms at `positions` ((3, natom) Å) over `points`
// ((3, npts) Å).  Parallel over points; each point writes only its own entries.
void basis_on_grid(const basis::BasisSet& basis, std::span<const double> positions,
                   std::span<const double> points, std::span<double> chi,
                   TableLayout layout = TableLayout::by_point);

}  // namespace norvik::dft
