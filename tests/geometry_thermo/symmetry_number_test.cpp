// Rotational symmetry numbers of textbook molecules from plain coordinates
// (Å), the companions that the search is built from, and the limits of the
// search.
#include "geometry/symmetry_number.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <string>
#include <string_view>
#include <vector>

namespace {

using norvik::geometry::Matrix3;
using norvik::geometry::symmetry_number;

struct Atom {
  std::string label;
  double x, y, z;
};

int sigma(const std::vector<Atom>& atoms) {
  std::vector<std::string_view> labels;
  std::vector<double> coords;
  for (const Atom& a : atoms) {
    labels.push_back(a.label);
    coords.insert(coords.end(), {a.x, a.y, a.z});
  }
  return symmetry_number(labels, coords);
}

// n atoms of one element on a ring of radius r in the xy plane, then an
// optional outer ring of another element, all shifted by `offset` (the
// search must not depend on where the molecule sits).
std::vector<Atom> ring(int n, const std::string& label, double r, double z = 0.0) {
  std::vector<Atom> atoms;
  for (int k = 0; k < n; ++k) {
    const double phi = 2.0 * std::numbers::pi * k / n;
    atoms.push_back({label, r * std::cos(phi), r * std::sin(phi), z});
  }
  return atoms;
}

std::vector<Atom> shifted(std::vector<Atom> atoms, double dx, double dy, double dz) {
  for (Atom& a : atoms) {
    a.x += dx;
    a.y += dy;
    a.z += dz;
  }
  return atoms;
}

TEST(SymmetryNumber, TextbookMolecules) {
  EXPECT_EQ(sigma({{"O", 0, 0, 0.117}, {"H", 0, 0.757, -0.469}, {"H", 0, -0.757, -0.469}}), 2)
      << "H2O";

  std::vector<Atom> nh3 = ring(3, "H", 0.94, -0.27);
  nh3.push_back({"N", 0, 0, 0.1});
  EXPECT_EQ(sigma(shifted(nh3, 1.3, -0.4, 2.0)), 3) << "NH3";

  const double a = 0.629;
  EXPECT_EQ(
      sigma({{"C", 0, 0, 0}, {"H", a, a, a}, {"H", -a, -a, a}, {"H", -a, a, -a}, {"H", a, -a, -a}}),
      12)
      << "CH4";

  std::vector<Atom> benzene = ring(6, "C", 1.39);
  for (const Atom& h : ring(6, "H", 2.47)) benzene.push_back(h);
  EXPECT_EQ(sigma(shifted(benzene, 0.5, 0.5, 0.5)), 12) << "C6H6";

  EXPECT_EQ(sigma({{"C", 0.667, 0, 0},
                   {"C", -0.667, 0, 0},
                   {"H", 1.23, 0.92, 0},
                   {"H", 1.23, -0.92, 0},
                   {"H", -1.23, 0.92, 0},
                   {"H", -1.23, -0.92, 0}}),
            4)
      << "C2H4";

  const double s = 1.56;
  EXPECT_EQ(sigma({{"S", 0, 0, 0},
                   {"F", s, 0, 0},
                   {"F", -s, 0, 0},
                   {"F", 0, s, 0},
                   {"F", 0, -s, 0},
                   {"F", 0, 0, s},
                   {"F", 0, 0, -s}}),
            24)
      << "SF6";

  // H2O2 in its skewed C2 form (dihedral 112°): the one C2 axis bisects O-O.
  const double phi = 112.0 * std::numbers::pi / 180.0 / 2.0;
  EXPECT_EQ(sigma({{"O", 0, 0, 0.7375},
                   {"O", 0, 0, -0.7375},
                   {"H", 0.92 * std::cos(phi), 0.92 * std::sin(phi), 0.98},
                   {"H", 0.92 * std::cos(phi), -0.92 * std::sin(phi), -0.98}}),
            2)
      << "H2O2";
}

TEST(SymmetryNumber, LinearMolecules) {
  EXPECT_EQ(sigma({{"O", 0, 0, -1.16}, {"C", 0, 0, 0}, {"O", 0, 0, 1.16}}), 2) << "CO2";
  EXPECT_EQ(sigma({{"H", 0, 0, 0}, {"Cl", 0, 0, 1.27}}), 1) << "HCl";
  EXPECT_EQ(sigma({{"N", 0.3, 0.3, 0.3}, {"N", 0.9, 1.0, 1.1}}), 2) << "N2, off axis";
  EXPECT_EQ(sigma({{"H", 0, 0, 0}, {"C", 0, 0, 1.06}, {"N", 0, 0, 2.21}}), 1) << "HCN";
  EXPECT_EQ(sigma({{"Ar", 1, 2, 3}}), 1) << "one atom";
}

// Atoms match by label: an isotopic label or a different element breaks the
// symmetry that the positions alone would have.
TEST(SymmetryNumber, LabelsDecide) {
  EXPECT_EQ(sigma({{"O", 0, 0, 0.117}, {"H", 0, 0.757, -0.469}, {"D", 0, -0.757, -0.469}}), 1);
  EXPECT_EQ(sigma({{"C", 0, 0, 0},
                   {"H", 0.629, 0.629, 0.629},
                   {"F", -0.629, -0.629, 0.629},
                   {"Cl", -0.629, 0.629, -0.629},
                   {"Br", 0.629, -0.629, -0.629}}),
            1)
      << "chiral CHFClBr";
}

// Orders 2 to 8 are tried: a regular octagon keeps its 16 rotations, a
// regular nonagon loses its order-9 ones and keeps C3 and the nine C2.
TEST(SymmetryNumber, OrdersAboveEightAreMissed) {
  EXPECT_EQ(sigma(ring(8, "C", 1.8)), 16);
  EXPECT_EQ(sigma(ring(9, "C", 2.0)), 1 + 2 + 9);
}

// Rounding noise in the coordinates does not break the symmetry; a clear
// distortion does.  (Distortions of some 0.01 Å can inflate σ instead: the
// near-symmetric axes through different candidates give rotations that differ
// by more than the matrix tolerance, see docs/thermochemistry.md.)
TEST(SymmetryNumber, ToleratesRoundingNoise) {
  EXPECT_EQ(sigma({{"O", 0, 0, 0.117}, {"H", 1e-6, 0.757, -0.469}, {"H", 0, -0.757002, -0.469}}),
            2);
  EXPECT_EQ(sigma({{"O", 0, 0, 0.117}, {"H", 0, 0.757, -0.469}, {"H", 0, -0.857, -0.469}}), 1);
}

TEST(SymmetryNumber, RotationMatrixAndJacobi) {
  // A quarter turn about z takes x to y; the off-diagonal signs of Rodrigues' formula.
  const Matrix3 r = norvik::geometry::rotation_matrix({0, 0, 2}, std::numbers::pi / 2);
  EXPECT_NEAR(r[1], 1.0, 1e-15);   // R(2,1)
  EXPECT_NEAR(r[3], -1.0, 1e-15);  // R(1,2)
  // A general rotation is orthogonal with its axis as fixed point.
  const Matrix3 g = norvik::geometry::rotation_matrix({1, 2, 3}, 0.7);
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      double dot = 0.0;
      for (int k = 0; k < 3; ++k) dot += g[k + 3 * i] * g[k + 3 * j];
      EXPECT_NEAR(dot, i == j ? 1.0 : 0.0, 1e-14);
    }
    EXPECT_NEAR(g[i] * 1 + g[i + 3] * 2 + g[i + 6] * 3, i + 1.0, 1e-14);
  }

  const Matrix3 a = {4, 1, -2, 1, 3, 0.5, -2, 0.5, 1};
  const auto e = norvik::geometry::jacobi(a);
  EXPECT_LE(e.values[0], e.values[1]);
  EXPECT_LE(e.values[1], e.values[2]);
  EXPECT_NEAR(e.values[0] + e.values[1] + e.values[2], 8.0, 1e-12);
  for (int k = 0; k < 3; ++k) {
    for (int i = 0; i < 3; ++i) {
      double av = 0.0;
      for (int j = 0; j < 3; ++j) av += a[i + 3 * j] * e.vectors[j + 3 * k];
      EXPECT_NEAR(av, e.values[k] * e.vectors[i + 3 * k], 1e-12);
    }
  }
}

TEST(SymmetryNumber, DuplicatesWithinTolerance) {
  const std::vector<Matrix3> list = {{1, 0, 0, 0, 1, 0, 0, 0, 1}, {-1, 0, 0, 0, -1, 0, 0, 0, 1}};
  EXPECT_TRUE(norvik::geometry::is_duplicate({-1, 0, 0, 0, -1, 0, 0, 0, 1.00009}, list));
  EXPECT_FALSE(norvik::geometry::is_duplicate({-1, 0, 0, 0, -1, 0, 0, 0.0002, 1}, list));
  EXPECT_FALSE(norvik::geometry::is_duplicate(list[0], {}));
}

}  // namespace
