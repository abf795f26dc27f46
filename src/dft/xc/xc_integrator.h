// Densities and exchange–correlation matrices on the grid, as blocked dense
// products over batches of points.
//
// Layouts (column-major): weights (npts); chi (4, npts, nbasis), see
// basis_values.h; density pairs and matrices (nbasis, nbasis, 2), alpha then
// beta; the density table rho (8, npts): ρα, ρβ, ∇ρα, ∇ρβ of each point [Å⁻³,
// Å⁻⁴]; the potential table v (5, npts): ∂f/∂ρα, ∂f/∂ρβ, ∂f/∂γαα, ∂f/∂γββ,
// ∂f/∂γαβ of the energy density f(ρα, ρβ, γαα, γββ, γαβ) [eV·Å³ per electron
// and eV·Å⁵]; matrices in eV.
//
// Every result is the same bits on any thread count: points are cut into
// batches of a fixed size, a batch writes only its own points, and the matrix
// is built one column block at a time over all batches in order.
#pragma once

#include <array>
#include <span>

namespace norvik::dft {

struct GridBasis {
  int npts = 0;
  int nbasis = 0;
  std::span<const double> weights;  // (npts)
  std::span<const double> chi;      // (4, npts, nbasis)
};

// ρσ = Σ_μν Pσ_μν χμ χν and ∇ρσ = Σ_μν Pσ_μν (∇χμ χν + χμ ∇χν) at every point.
void density_on_grid(const GridBasis& grid, std::span<const double> density, std::span<double> rho);

// Vσ_μν = Σ_p w_p [vρσ χμχν + (2 vγσσ ∇ρσ + vγαβ ∇ρσ′)·∇(χμχν)], σ′ the other spin.
void xc_matrix(const GridBasis& grid, std::span<const double> rho, std::span<const double> v,
               std::span<double> matrix);

// The grid integrals of the α and β densities and their sum.
std::array<double, 3> electron_count(std::span<const double> weights, std::span<const double> rho);

}  // namespace norvik::dft
