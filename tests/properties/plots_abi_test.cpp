// The cube exports as a host calls them: the spin and orbital a request picks,
// the file that CUBE_EXPORT writes against the core's values, and a free atom's
// density from PLOT_ATOM integrated over its file.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "basis/library.h"
#include "common/constants.h"
#include "norvik.h"
#include "properties/cube.h"
#include "scf/single_point.h"

namespace norvik::properties {
namespace {

std::string padded(const std::string& s, std::size_t n) {
  std::string p = s;
  p.resize(n, ' ');
  return p;
}

std::vector<std::string> read_lines(const std::string& path) {
  std::ifstream in(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

TEST(CubeExport, PicksTheRequestedSpinOrbitalAndDensity) {
  // H2 in STO-3G with made-up orbitals and densities whose α and β differ, so a
  // wrong block or column shows.
  const std::vector<norvik_int> z = {1, 1};
  const std::vector<double> pos = {0.1, -0.2, 0.0, 0.1, -0.2, 0.74};
  const norvik_int natom = 2, nbasis = 2;
  const std::vector<double> orbitals = {0.5, 0.6, 0.9, -1.1, -0.6, 0.7,   // α C, levels
                                        0.4, 0.7, 1.0, -1.2, -0.5, 0.8};  // β
  const std::vector<double> rho = {0.3, 0.2, 0.2, 0.3, 0.1, 0.05, 0.05, 0.2};
  const double origin[3] = {-1.0, -1.2, -1.0}, step[3] = {0.5, 0.4, 0.3};
  const norvik_int counts[3] = {3, 2, 8};
  CubeGrid grid;
  grid.origin = {-1.0, -1.2, -1.0};
  grid.axes = {{{0.5, 0.0, 0.0}, {0.0, 0.4, 0.0}, {0.0, 0.0, 0.3}}};
  grid.counts = {3, 2, 8};
  const basis::BasisSet basis = basis::make_basis("STO-3G", std::vector<int>{1, 1});
  const std::string path =
      (std::filesystem::temp_directory_path() / "norvik_cube_export.cube").string();
  const std::string file = padded(path, NORVIK_FILE_NAME_LENGTH);
  const std::string title = padded("H2", 20), name = padded("STO-3G", 20);
  auto call = [&](norvik_int what, norvik_int spin) {
    CUBE_EXPORT(file.data(), &what, &spin, origin, step, counts, title.data(), name.data(), &natom,
                z.data(), z.data(), pos.data(), &nbasis, rho.data(), orbitals.data());
    return read_lines(path);
  };
  // Orbital 2 of the β spin: column 2 of the second block.
  const std::vector<double> beta2 = {1.0, -1.2};
  const CubeHeader orbital{"H2", "norvik orbital 2 (beta) [bohr**-3/2]", z, z, pos, 2};
  EXPECT_EQ(call(2, 2), cube_lines(orbital, grid, orbital_on_grid(basis, pos, grid, beta2)));
  // The spin density P_α − P_β.
  const CubeHeader spin{"H2", "norvik spin density alpha - beta [e/bohr**3]", z, z, pos, 0};
  EXPECT_EQ(call(-1, 1), cube_lines(spin, grid, density_on_grid(basis, pos, grid, rho, true)));
  std::filesystem::remove(path);
}

TEST(CubeExport, FreeAtomDensityIntegratesToItsElectrons) {
  // The hydrogen atom (UHF, 6-31G*) on a 12 Å cube of 81³ points.
  const std::vector<int> z = {1};
  const std::vector<double> pos = {0.0, 0.0, 0.0};
  const basis::BasisSet basis = basis::make_basis("6-31Gx", z);
  const auto n = static_cast<std::size_t>(basis.nbasis());
  std::vector<double> rho(2 * n * n), orbitals(2 * n * (n + 1));
  scf::JobControl job;
  job.basis = "6-31Gx";
  scf::PointSettings settings;
  settings.counts = {1, 0};
  scf::compute_point(basis, job, {100, 0.5, 1e-10, 1e-9}, {z, z, pos}, settings, rho, orbitals);

  const std::string path =
      (std::filesystem::temp_directory_path() / "norvik_plot_atom.cube").string();
  const std::string file = padded(path, NORVIK_FILE_NAME_LENGTH), name = padded("6-31Gx", 20);
  const norvik_int zel = 1, nbasis = static_cast<norvik_int>(n), npoint = 81;
  const double half_width = 6.0;
  PLOT_ATOM(file.data(), &zel, name.data(), &nbasis, rho.data(), &half_width, &npoint);
  const std::vector<std::string> lines = read_lines(path);
  ASSERT_GT(lines.size(), 7u);
  EXPECT_EQ(lines[0], "norvik free atom H");
  EXPECT_EQ(lines[2], "    1  -11.338357  -11.338357  -11.338357");
  EXPECT_EQ(lines[6], "    1    1.000000    0.000000    0.000000    0.000000");
  double sum = 0.0;
  for (std::size_t l = 7; l < lines.size(); ++l) {
    std::istringstream in(lines[l]);
    for (double v; in >> v;) sum += v;
  }
  const double step = 2 * half_width / (npoint - 1) / constants::kBohrAngstrom;
  EXPECT_NEAR(sum * step * step * step, 1.0, 1e-3);
  std::filesystem::remove(path);
}

}  // namespace
}  // namespace norvik::properties
