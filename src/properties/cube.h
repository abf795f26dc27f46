// Values of a converged point on a regular grid, and the Gaussian cube file
// that holds them: an orbital, the total density or the spin density.
//
// Cube files are in atomic units whatever the interface: positions and steps
// in bohr, an orbital in bohr^(−3/2), a density in e/bohr³.  The values run with
// the first axis slowest and the third fastest, six to a line in E13.5, a new
// line at the end of every run along the third axis (docs/cube.md).
#pragma once

#include <array>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "basis/basis_set.h"

namespace norvik::properties {

// A regular grid: point (i, j, k) is origin + i·axes[0] + j·axes[1] + k·axes[2],
// 0 ≤ i < counts[0] and so on; origin and axes in Å.
struct CubeGrid {
  std::array<double, 3> origin{};
  std::array<std::array<double, 3>, 3> axes{};
  std::array<int, 3> counts{};

  std::size_t points() const;
  double voxel_volume() const;                           // |det(axes)| [Å³]
  std::array<double, 3> point(std::size_t index) const;  // the point of a cube-order index
};

// The orbital with LCAO coefficients `coefficients` (nbasis) of `basis` on atoms
// at `positions` ((3, natom) Å) at every grid point [bohr^(−3/2)].
std::vector<double> orbital_on_grid(const basis::BasisSet& basis, std::span<const double> positions,
                                    const CubeGrid& grid, std::span<const double> coefficients);

// The density Σ_μν χ_μ P_μν χ_ν of P = P_α + P_β (or P_α − P_β with `spin`) from
// the pair rho ((n, n, 2)) at every grid point [e/bohr³].
std::vector<double> density_on_grid(const basis::BasisSet& basis, std::span<const double> positions,
                                    const CubeGrid& grid, std::span<const double> rho, bool spin);

// What a cube file says about itself and its molecule.
struct CubeHeader {
  std::string title;                  // first comment line
  std::string comment;                // second comment line
  std::span<const int> elements;      // atomic numbers
  std::span<const int> charges;       // nuclear charges (0 for a ghost)
  std::span<const double> positions;  // (3, natom) Å
  int orbital = 0;                    // the orbital's number for an orbital cube, 0 for a density
};

// The lines of the cube file (without newlines).  An orbital cube gives the
// atom count negative and adds the line "1 orbital" after the atoms, as
// Gaussian's orbital cubes do.
std::vector<std::string> cube_lines(const CubeHeader& header, const CubeGrid& grid,
                                    std::span<const double> values);

}  // namespace norvik::properties
