// Densities and exchange–correlation matrices on the grid, as blocked dense
// products over batches of points.
//
// Layouts (column-major): weights (npts); the basis table chi, see TableLayout;
// density pairs and matrices (nbasis, nbasis, 2), alpha then beta; the
// density table rho (8, npts): ρα, ρβ, ∇ρα, ∇ρβ of each point [Å⁻³, Å⁻⁴]; the
// potential table v (5, npts): ∂f/∂ρα, ∂f/∂ρβ, ∂f/∂γαα, ∂f/∂γββ, ∂f/∂γαβ of
// the energy density f(ρα, ρβ, γαα, γββ, γαβ) [eV·Å³ per electron and eV·Å⁵];
// matrices in eV.
//
// Every result is the same bits on any thread count: points are cut into
// batches of a fixed size, a batch writes only its own points, and the matrix
// is summed over a fixed number of runs of batches, each in batch order, the
// runs' sums added in run order.
#pragma once

#include <array>
#include <cstddef>
#include <span>

namespace norvik::dft {

// Points of a batch: the unit of every product over the grid.
inline constexpr int kGridBatch = 256;

// How the basis table chi (4·npts·nbasis doubles) is laid out.
//  - by_point: (4, npts, nbasis), the value and x, y, z derivatives of function
//    μ at point p contiguous at 4·(p + npts·μ) — the exported layout;
//  - by_batch: batch after batch of kGridBatch points (the last one shorter);
//    batch b of nb points starting at p0 holds four (nb, nbasis) column-major
//    tables, value, x, y, z, from 4·nbasis·p0 on — what the products read
//    directly;
//  - computed: no table; each batch's tables are evaluated when a product
//    needs them (from `evaluator` at `points`), for grids whose table would
//    not fit in memory.
enum class TableLayout { by_point, by_batch, computed };

class BasisEvaluator;

struct GridBasis {
  int npts = 0;
  int nbasis = 0;
  std::span<const double> weights;  // (npts)
  std::span<const double> chi;      // 4·npts·nbasis, laid out as `layout` (none: computed)
  TableLayout layout = TableLayout::by_point;
  const BasisEvaluator* evaluator = nullptr;  // computed: the basis
  std::span<const double> points;             // computed: (3, npts) Å
};

// A grid over a by_point table (the exported layout) of npts points and
// nbasis functions; `weights` may be empty where no sum is taken.
GridBasis table_by_point(int npts, int nbasis, std::span<const double> weights, const double* chi);

// Index of the value (c = 0) or derivative c of function f at point p (the
// two table layouts).
std::size_t table_index(TableLayout layout, int npts, int nbasis, int p, int f, int c);

// ρσ = Σ_μν Pσ_μν χμ χν and ∇ρσ = Σ_μν Pσ_μν (∇χμ χν + χμ ∇χν) at every point.
void density_on_grid(const GridBasis& grid, std::span<const double> density, std::span<double> rho);

// Vσ_μν = Σ_p w_p [vρσ χμχν + (2 vγσσ ∇ρσ + vγαβ ∇ρσ′)·∇(χμχν)], σ′ the other spin.
void xc_matrix(const GridBasis& grid, std::span<const double> rho, std::span<const double> v,
               std::span<double> matrix);

// The grid integrals of the α and β densities and their sum.
std::array<double, 3> electron_count(std::span<const double> weights, std::span<const double> rho);

}  // namespace norvik::dft
