// The thermochemistry routines as a host calls them: everything by reference,
// fixed-length labels with their length after the other arguments.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "norvik.h"

namespace {

// Ammonia with 4-character labels, blank-padded as a Fortran host stores them.
TEST(ThermoAbi, SymmetryNumberFromPaddedLabels) {
  const norvik_int natom = 4;
  const char labels[] = "N   H   H   H   ";
  std::vector<double> coords = {0, 0, 0.1};
  for (int k = 0; k < 3; ++k) {
    const double phi = 2.0 * 3.141592653589793 * k / 3;
    coords.insert(coords.end(), {0.94 * std::cos(phi), 0.94 * std::sin(phi), -0.27});
  }
  norvik_int sigma = 0;
  SYMMETRY_NUMBER_MP_calculate_sigma(&natom, labels, coords.data(), &sigma, 4);
  EXPECT_EQ(sigma, 3);

  // The same molecule centred on its mean: a third of a turn about z is a
  // symmetry, a quarter turn is not.
  double mean[3] = {0, 0, 0};
  for (int i = 0; i < natom; ++i)
    for (int k = 0; k < 3; ++k) mean[k] += coords[3 * i + k] / natom;
  for (int i = 0; i < natom; ++i)
    for (int k = 0; k < 3; ++k) coords[3 * i + k] -= mean[k];
  const double axis[3] = {0, 0, 1};
  const double third = 2.0 * 3.141592653589793 / 3, quarter = 3.141592653589793 / 2;
  EXPECT_NE(SYMMETRY_NUMBER_MP_is_symmetric(&natom, labels, coords.data(), axis, &third, 4), 0);
  EXPECT_EQ(SYMMETRY_NUMBER_MP_is_symmetric(&natom, labels, coords.data(), axis, &quarter, 4), 0);

  double r[9];
  SYMMETRY_NUMBER_MP_get_rot_mat(axis, &third, r);
  const norvik_int one = 1;
  EXPECT_NE(SYMMETRY_NUMBER_MP_is_duplicate(r, &one, r), 0);
}

TEST(ThermoAbi, EntropyAndThermalEnergyFillTheirOutputs) {
  const norvik_int linear = 1, sigma = 2, natom = 2;
  const double mass = 2.0 * 14.003074 * 931.49410242e6;
  const double inertia[3] = {0.0, 8.5e9, 8.5e9};
  const double lambda[6] = {0, 0, 0, 0, 0, 2.2e-8};  // 0.29 eV
  const double scale = 0.0;
  double s[3] = {-1, -1, -1}, e[4] = {-1, -1, -1, -1}, c[4] = {-1, -1, -1, -1};
  ENTROPY(&linear, &sigma, &natom, &mass, inertia, lambda, &scale, s);
  THERMALENERGY(&linear, &natom, lambda, &scale, e, c);
  for (double v : s) EXPECT_GT(v, 0.0);
  EXPECT_DOUBLE_EQ(e[1], 0.02569257912065);
  EXPECT_DOUBLE_EQ(e[3], 0.02569257912065);
  EXPECT_GT(e[2], 0.0);
  EXPECT_DOUBLE_EQ(c[1], 1.0);
  EXPECT_DOUBLE_EQ(c[3], 1.0);
}

}  // namespace
