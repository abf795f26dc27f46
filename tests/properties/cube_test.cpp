// Cube files: orbitals and densities on the host's default grid integrate to
// their norms, and the file layout byte for byte on a small grid.
#include "properties/cube.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "basis/library.h"
#include "common/constants.h"
#include "scf/single_point.h"

namespace norvik::properties {
namespace {

// The host's default grid: a box 4 Å beyond the atoms on every side, 0.1 Å steps.
constexpr double kMargin = 4.0;
constexpr double kStep = 0.1;

CubeGrid box(const std::vector<double>& pos, double margin, double step) {
  CubeGrid grid;
  for (std::size_t c = 0; c < 3; ++c) {
    double lo = pos[c], hi = pos[c];
    for (std::size_t a = c; a < pos.size(); a += 3) {
      lo = std::min(lo, pos[a]);
      hi = std::max(hi, pos[a]);
    }
    grid.origin[c] = lo - margin;
    grid.axes[c][c] = step;
    grid.counts[c] = static_cast<int>(std::ceil((hi - lo + 2 * margin) / step)) + 1;
  }
  return grid;
}

struct Point {
  basis::BasisSet basis;
  std::vector<int> z;
  std::vector<double> pos, rho, orbitals;
  int nalpha = 0;
};

Point converged(const std::vector<int>& z, const std::vector<double>& pos, int nalpha, int nbeta) {
  Point p{basis::make_basis("6-31Gx", z), z, pos, {}, {}, nalpha};
  scf::JobControl job;
  job.basis = "6-31Gx";
  const scf::ScfControl control{200, 0.5, 1e-10, 1e-9};
  scf::PointSettings settings;
  settings.counts = {nalpha, nbeta};
  const auto n = static_cast<std::size_t>(p.basis.nbasis());
  p.rho.resize(2 * n * n);
  p.orbitals.resize(2 * n * (n + 1));
  scf::compute_point(p.basis, job, control, {z, z, pos}, settings, p.rho, p.orbitals);
  return p;
}

double integral(const std::vector<double>& values, const CubeGrid& grid, bool squared) {
  const double bohr3 = std::pow(constants::kBohrAngstrom, 3);
  double sum = 0.0;
  for (double v : values) sum += squared ? v * v : v;
  return sum * grid.voxel_volume() / bohr3;
}

// The Riemann sum over the default grid of a normalised valence orbital, and of
// densities without a tight core, meets these; the oxygen 1s core of water's
// total density is narrower than a 0.1 Å step (docs/cube.md: 9.934 of 10).
constexpr double kNormTolerance = 1e-4;
constexpr double kElectronTolerance = 1e-3;

TEST(Cube, OrbitalsAndDensitiesIntegrateToTheirNormsOnTheDefaultGrid) {
  // Water 6-31G*: its HOMO (1b1, the oxygen lone pair).
  const Point water = converged(
      {8, 1, 1}, {0.0, 0.0, 0.110442, 0.0, 0.754625, -0.462556, 0.0, -0.754625, -0.462556}, 5, 5);
  const auto n = static_cast<std::size_t>(water.basis.nbasis());
  const CubeGrid grid = box(water.pos, kMargin, kStep);
  const std::vector<double> homo = orbital_on_grid(
      water.basis, water.pos, grid, std::span<const double>(water.orbitals).subspan(4 * n, n));
  EXPECT_NEAR(integral(homo, grid, true), 1.0, kNormTolerance);

  // H2: two electrons, and the density is twice the square of its one orbital
  // at every point.
  const Point h2 = converged({1, 1}, {0.0, 0.0, 0.0, 0.0, 0.0, 0.7325}, 1, 1);
  const CubeGrid g2 = box(h2.pos, kMargin, kStep);
  const std::vector<double> rho = density_on_grid(h2.basis, h2.pos, g2, h2.rho, false);
  const std::vector<double> sigma = orbital_on_grid(h2.basis, h2.pos, g2, h2.orbitals);
  EXPECT_NEAR(integral(rho, g2, false), 2.0, kElectronTolerance);
  for (std::size_t p = 0; p < rho.size(); p += 997)
    EXPECT_NEAR(rho[p], 2 * sigma[p] * sigma[p], 1e-12);

  // CH3 UHF: the spin density holds the one unpaired electron.
  const Point ch3 = converged(
      {6, 1, 1, 1},
      {0.0, 0.0, 0.0, 0.0, 1.072504, 0.0, -0.928816, -0.536252, 0.0, 0.928816, -0.536252, 0.0}, 5,
      4);
  const CubeGrid g3 = box(ch3.pos, kMargin, kStep);
  EXPECT_NEAR(integral(density_on_grid(ch3.basis, ch3.pos, g3, ch3.rho, true), g3, false), 1.0,
              kElectronTolerance);
}

TEST(Cube, FileLayout) {
  // Two atoms, a 2 × 1 × 7 grid: runs of seven values wrap after six.
  const std::vector<int> elements = {8, 1}, charges = {8, 0};
  const std::vector<double> pos = {0.0, 0.0, 0.1, 0.0, 0.75, -0.45};
  CubeGrid grid;
  grid.origin = {-1.0, -0.5, -2.0};
  grid.axes = {{{0.5, 0.0, 0.0}, {0.0, 0.25, 0.0}, {0.0, 0.0, 0.2}}};
  grid.counts = {2, 1, 7};
  std::vector<double> values(14);
  for (std::size_t p = 0; p < values.size(); ++p) values[p] = (p % 2 ? -1.0 : 1.0) * 0.0123 * p;
  values[3] = 12345.678;
  const CubeHeader header{"water", "norvik orbital 5 (alpha) [bohr**-3/2]", elements, charges, pos,
                          5};
  const std::vector<std::string> expected = {
      "water",
      "norvik orbital 5 (alpha) [bohr**-3/2]",
      "   -2   -1.889726   -0.944863   -3.779452",
      "    2    0.944863    0.000000    0.000000",
      "    1    0.000000    0.472432    0.000000",
      "    7    0.000000    0.000000    0.377945",
      "    8    8.000000    0.000000    0.000000    0.188973",
      "    1    0.000000    0.000000    1.417295   -0.850377",
      "    1    5",
      "  0.00000E+00 -0.12300E-01  0.24600E-01  0.12346E+05  0.49200E-01 -0.61500E-01",
      "  0.73800E-01",
      " -0.86100E-01  0.98400E-01 -0.11070E+00  0.12300E+00 -0.13530E+00  0.14760E+00",
      " -0.15990E+00",
  };
  EXPECT_EQ(cube_lines(header, grid, values), expected);
  // A density cube keeps the atom count positive and has no orbital line.
  const CubeHeader density{"water", "norvik total density [e/bohr**3]", elements, charges, pos, 0};
  const std::vector<std::string> lines = cube_lines(density, grid, values);
  EXPECT_EQ(lines[2], "    2   -1.889726   -0.944863   -3.779452");
  EXPECT_EQ(lines[8], expected[9]);
}

}  // namespace
}  // namespace norvik::properties
