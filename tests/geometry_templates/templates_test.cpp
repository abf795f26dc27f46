// The molecule templates: every template builds the point group and the
// parameters it promises, its re-imposer restores them on a distorted geometry
// and leaves its own geometry alone, and the molecule names select the
// re-imposers of the host's table.
#include "geometry/templates.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>
#include <random>
#include <string>
#include <vector>

#include "common/error.h"
#include "common/point_geometry.h"

namespace {

namespace geometry = norvik::geometry;
using geometry::Template;
using Matrix = std::array<double, 9>;  // row-major 3×3

// The constructions are exact up to the rounding of a few operations on
// numbers of order 1 Å, so symmetry images coincide to far better than this.
constexpr double kSymmetryTolerance = 1e-10;
// Re-imposing a template's own geometry measures its parameters back and
// rebuilds: only rounding of acos/atan2 and of the centring remains.
constexpr double kIdempotenceTolerance = 1e-12;
// The distortion applied before re-imposing: each coordinate moved by up to this.
constexpr double kDistortion = 0.01;

// ---- symmetry operations --------------------------------------------------------------

Matrix rotation(std::array<double, 3> axis, double degrees) {
  const double n = std::sqrt(axis[0] * axis[0] + axis[1] * axis[1] + axis[2] * axis[2]);
  const double x = axis[0] / n, y = axis[1] / n, z = axis[2] / n;
  const double c = std::cos(degrees * std::numbers::pi / 180.0);
  const double s = std::sin(degrees * std::numbers::pi / 180.0);
  const double t = 1.0 - c;
  return {t * x * x + c,     t * x * y - s * z, t * x * z + s * y,  //
          t * x * y + s * z, t * y * y + c,     t * y * z - s * x,  //
          t * x * z - s * y, t * y * z + s * x, t * z * z + c};
}

Matrix reflection(std::array<double, 3> normal) {
  const double n2 = normal[0] * normal[0] + normal[1] * normal[1] + normal[2] * normal[2];
  Matrix m{};
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j)
      m[3 * i + j] = (i == j ? 1.0 : 0.0) - 2.0 * normal[i] * normal[j] / n2;
  }
  return m;
}

Matrix product(const Matrix& a, const Matrix& b) {
  Matrix m{};
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      for (int k = 0; k < 3; ++k) m[3 * i + j] += a[3 * i + k] * b[3 * k + j];
    }
  }
  return m;
}

const Matrix kInversion = {-1, 0, 0, 0, -1, 0, 0, 0, -1};
const std::array<double, 3> kX = {1, 0, 0}, kY = {0, 1, 0}, kZ = {0, 0, 1};
const Matrix kSigmaXY = reflection(kZ), kSigmaXZ = reflection(kY), kSigmaYZ = reflection(kX);

// Whether the operation maps the atoms onto atoms of the same charge, one to one.
::testing::AssertionResult keeps(const Matrix& op, std::span<const int> z,
                                 std::span<const double> pos) {
  const std::size_t n = z.size();
  std::vector<bool> taken(n, false);
  for (std::size_t i = 0; i < n; ++i) {
    std::array<double, 3> image{};
    for (int r = 0; r < 3; ++r) {
      for (int c = 0; c < 3; ++c) image[r] += op[3 * r + c] * pos[3 * i + c];
    }
    bool found = false;
    for (std::size_t j = 0; j < n && !found; ++j) {
      if (taken[j] || z[j] != z[i]) continue;
      const double d =
          std::hypot(image[0] - pos[3 * j], image[1] - pos[3 * j + 1], image[2] - pos[3 * j + 2]);
      if (d < kSymmetryTolerance) found = taken[j] = true;
    }
    if (!found) return ::testing::AssertionFailure() << "atom " << i + 1 << " has no image";
  }
  return ::testing::AssertionSuccess();
}

// ---- the templates with typical parameters -----------------------------------------------

struct Case {
  Template shape;
  std::vector<int> z;
  std::vector<double> parameters;
  // Generators of the point group in the template's orientation; a function of
  // the positions for the axes that run through atoms.
  std::vector<Matrix> (*group)(std::span<const double> pos);
  // For each atom the atom it is bonded to by the documented order (its nearest
  // atom), or -1 when the order says nothing about it.
  std::vector<int> bonded_to;
};

std::vector<Matrix> c2v(std::span<const double>) {
  return {rotation(kZ, 180), kSigmaXZ, kSigmaYZ};
}
std::vector<Matrix> d2h(std::span<const double>) {
  return {rotation(kZ, 180), kSigmaXZ, kSigmaYZ, kInversion};
}
std::vector<Matrix> c3v(std::span<const double>) {
  return {rotation(kZ, 120), kSigmaYZ};
}
std::vector<Matrix> d3h(std::span<const double>) {
  return {rotation(kZ, 120), kSigmaXY, kSigmaYZ, rotation(kY, 180)};
}
std::vector<Matrix> linear_polar(std::span<const double>) {
  return {rotation(kZ, 37), kSigmaXZ, kSigmaYZ};
}
std::vector<Matrix> linear_centric(std::span<const double>) {
  return {rotation(kZ, 37), kSigmaXZ, kInversion};
}
std::vector<Matrix> td(std::span<const double> pos) {
  // S4 about z, the two coordinate mirror planes, and the C3 axis through H1.
  return {product(kSigmaXY, rotation(kZ, 90)), kSigmaXZ, kSigmaYZ,
          rotation({pos[3], pos[4], pos[5]}, 120)};
}
std::vector<Matrix> d3d(std::span<const double>) {
  return {rotation(kZ, 120), rotation(kX, 180), kSigmaYZ, kInversion};
}
std::vector<Matrix> d6h(std::span<const double>) {
  return {rotation(kZ, 60), kSigmaXY, kSigmaXZ, kSigmaYZ, rotation(kY, 180), kInversion};
}
std::vector<Matrix> oh(std::span<const double>) {
  return {rotation(kZ, 90), rotation(kX, 90), rotation({1, 1, 1}, 120), kInversion};
}
std::vector<Matrix> c2(std::span<const double>) {
  return {rotation(kZ, 180)};
}
std::vector<Matrix> cs(std::span<const double>) {
  return {kSigmaYZ};
}

const std::vector<Case>& cases() {
  static const std::vector<Case> all = {
      {Template::kXY, {1, 9}, {0.917}, linear_polar, {-1, -1}},
      {Template::kH2O, {8, 1, 1}, {0.957, 104.5}, c2v, {-1, 0, 0}},
      {Template::kH3Plus, {1, 1, 1}, {0.87}, d3h, {-1, -1, -1}},
      {Template::kNH3, {7, 1, 1, 1}, {1.012, 106.7}, c3v, {-1, 0, 0, 0}},
      {Template::kCH4, {6, 1, 1, 1, 1}, {1.087}, td, {-1, 0, 0, 0, 0}},
      {Template::kC2H2, {6, 6, 1, 1}, {1.203, 1.063}, linear_centric, {-1, -1, 0, 1}},
      {Template::kC2H4, {6, 6, 1, 1, 1, 1}, {1.339, 1.086, 117.6}, d2h, {-1, -1, 0, 0, 1, 1}},
      {Template::kC2H6,
       {6, 6, 1, 1, 1, 1, 1, 1},
       {1.536, 1.091, 107.7},
       d3d,
       {-1, -1, 0, 0, 0, 1, 1, 1}},
      {Template::kC3H6,
       {6, 6, 6, 1, 1, 1, 1, 1, 1},
       {1.510, 1.083, 114.5},
       d3h,
       {-1, -1, -1, 0, 0, 1, 1, 2, 2}},
      {Template::kC6H6,
       {6, 6, 6, 6, 6, 6, 1, 1, 1, 1, 1, 1},
       {1.397, 1.084},
       d6h,
       {-1, -1, -1, -1, -1, -1, 0, 1, 2, 3, 4, 5}},
      {Template::kB2H6,
       {5, 5, 1, 1, 1, 1, 1, 1},
       {1.763, 1.314, 1.189, 121.0},
       d2h,
       {-1, -1, -1, -1, 0, 0, 1, 1}},
      {Template::kCOH2, {6, 8, 1, 1}, {1.208, 1.116, 116.5}, c2v, {-1, 0, 0, 0}},
      {Template::kPF5, {15, 9, 9, 9, 9, 9}, {1.577, 1.534}, d3h, {-1, 0, 0, 0, 0, 0}},
      {Template::kSF6, {16, 9, 9, 9, 9, 9, 9}, {1.561}, oh, {-1, 0, 0, 0, 0, 0, 0}},
      {Template::kN2O, {7, 7, 8}, {1.128, 1.184}, linear_polar, {1, -1, 1}},
      {Template::kH2O2, {8, 8, 1, 1}, {1.452, 0.965, 100.0, 112.0}, c2, {-1, -1, 0, 1}},
      {Template::kCHCl3, {6, 1, 17, 17, 17}, {1.080, 1.758, 111.3}, c3v, {-1, 0, 0, 0, 0}},
      {Template::kPropane,
       {6, 6, 6, 1, 1, 1, 1, 1, 1, 1, 1},
       {1.526, 112.4, 1.096, 106.1, 1.091, 111.2},
       c2v,
       {-1, -1, -1, 0, 0, 1, 1, 1, 2, 2, 2}},
      {Template::kGlycine,
       {7, 6, 6, 8, 8, 1, 1, 1, 1, 1},
       {1.45, 1.52, 112.0, 1.21, 125.0, 1.36, 111.0, 0.97, 107.0, 1.01, 110.0, 58.0, 1.09, 108.0,
        121.0},
       cs,
       {-1, -1, -1, 2, -1, 4, 0, 0, 1, 1}},
  };
  return all;
}

std::vector<double> built(const Case& c) {
  std::vector<double> pos(3 * c.z.size());
  geometry::put(c.shape, c.z, c.parameters, pos);
  return pos;
}

std::array<double, 3> charge_centre(std::span<const int> z, std::span<const double> pos) {
  std::array<double, 3> centre{};
  double total = 0;
  for (std::size_t a = 0; a < z.size(); ++a) {
    total += z[a];
    for (int k = 0; k < 3; ++k) centre[k] += z[a] * pos[3 * a + k];
  }
  for (double& x : centre) x /= total;
  return centre;
}

std::string name_of(const Case& c) {
  return std::string(geometry::info(c.shape).suffix);
}

// ---- every template ----------------------------------------------------------------------

TEST(Templates, CasesCoverEveryTemplate) {
  ASSERT_EQ(cases().size(), geometry::kAllTemplates.size());
  for (std::size_t i = 0; i < cases().size(); ++i) {
    EXPECT_EQ(cases()[i].shape, geometry::kAllTemplates[i]);
    EXPECT_EQ(cases()[i].z.size(),
              static_cast<std::size_t>(geometry::info(cases()[i].shape).natom));
  }
}

// The built molecule is centred, has the template's point group in the
// documented orientation, carries its parameters, and lists its atoms in the
// documented order (each terminal atom nearest to its documented partner).
TEST(Templates, BuildTheirPointGroupParametersAndAtomOrder) {
  for (const Case& c : cases()) {
    SCOPED_TRACE(name_of(c));
    const std::vector<double> pos = built(c);
    for (const double x : charge_centre(c.z, pos)) EXPECT_NEAR(x, 0.0, kSymmetryTolerance);
    for (const Matrix& op : c.group(pos)) EXPECT_TRUE(keeps(op, c.z, pos));

    const std::vector<double> measured = geometry::measure(c.shape, pos);
    ASSERT_EQ(measured.size(), c.parameters.size());
    for (std::size_t p = 0; p < measured.size(); ++p) {
      EXPECT_NEAR(measured[p], c.parameters[p], 1e-10) << "parameter " << p + 1;
    }

    const std::size_t n = c.z.size();
    for (std::size_t a = 0; a < n; ++a) {
      if (c.bonded_to[a] < 0) continue;
      const auto partner = static_cast<std::size_t>(c.bonded_to[a]);
      const double bond = norvik::points::distance(pos, a, partner);
      for (std::size_t b = 0; b < n; ++b) {
        if (b != a && b != partner) {
          EXPECT_LT(bond, norvik::points::distance(pos, a, b)) << "atom " << a + 1;
        }
      }
    }
  }
}

// A geometry moved off the template by random displacements comes back with
// the full point group, centred, and with parameters near the ones it had.
TEST(Templates, ReimposeTheShapeOnADistortedGeometry) {
  std::mt19937 random(20240607);
  std::uniform_real_distribution<double> shift(-kDistortion, kDistortion);
  for (const Case& c : cases()) {
    SCOPED_TRACE(name_of(c));
    std::vector<double> pos = built(c);
    for (double& x : pos) x += shift(random);
    geometry::reput(c.shape, c.z, pos);
    for (const double x : charge_centre(c.z, pos)) EXPECT_NEAR(x, 0.0, kSymmetryTolerance);
    for (const Matrix& op : c.group(pos)) EXPECT_TRUE(keeps(op, c.z, pos));
    // Two displaced atoms change a bond by up to 2√3·0.01 Å and an angle (of
    // bonds near 1 Å) by a few degrees.
    const auto& names = geometry::info(c.shape).parameters;
    const std::vector<double> measured = geometry::measure(c.shape, pos);
    for (std::size_t p = 0; p < measured.size(); ++p) {
      const double margin = names[p].ends_with("[A]") ? 0.05 : 4.0;
      EXPECT_NEAR(measured[p], c.parameters[p], margin) << names[p];
    }
  }
}

TEST(Templates, ReimposingTheirOwnGeometryChangesNothing) {
  for (const Case& c : cases()) {
    SCOPED_TRACE(name_of(c));
    const std::vector<double> pos = built(c);
    std::vector<double> again = pos;
    geometry::reput(c.shape, c.z, again);
    for (std::size_t i = 0; i < pos.size(); ++i) {
      EXPECT_NEAR(again[i], pos[i], kIdempotenceTolerance) << "coordinate " << i;
    }
  }
}

TEST(Templates, RefuseTheWrongAtomCount) {
  std::vector<int> z = {8, 1, 1, 2};
  std::vector<double> pos(12, 0.0);
  try {
    geometry::put(Template::kH2O, z, std::vector<double>{0.96, 104.5}, pos);
    FAIL() << "no error";
  } catch (const norvik::Error& e) {
    ASSERT_EQ(e.lines().size(), 1u);
    EXPECT_EQ(e.lines()[0], " Wrong number of atoms for the molecule template H2O.           4");
  }
  EXPECT_THROW(geometry::reput(Template::kCH4, z, pos), norvik::Error);
}

// ---- the two templates given in full ------------------------------------------------------

TEST(DiatomicTemplate, CentresTheChargeNotTheMidpoint) {
  // HF: the centre of charge lies 0.4 r from the midpoint towards fluorine.
  const std::vector<int> z = {1, 9};
  std::vector<double> pos(6);
  geometry::put(Template::kXY, z, std::vector<double>{1.0}, pos);
  EXPECT_EQ(pos[0], 0.0);
  EXPECT_EQ(pos[1], 0.0);
  EXPECT_NEAR(pos[2], -0.9, 1e-15);
  EXPECT_NEAR(pos[5], 0.1, 1e-15);
}

TEST(WaterTemplate, IsStraightWithin1e5DegreesOf180) {
  const std::vector<int> z = {8, 1, 1};
  for (const double theta : {180.0, 179.999995}) {
    SCOPED_TRACE(theta);
    std::vector<double> pos(9);
    geometry::put(Template::kH2O, z, std::vector<double>{0.96, theta}, pos);
    const std::vector<double> straight = {0, 0, 0, 0, 0, 0.96, 0, 0, -0.96};
    for (std::size_t i = 0; i < 9; ++i) EXPECT_EQ(pos[i], straight[i]) << i;
  }
  std::vector<double> pos(9);
  geometry::put(Template::kH2O, z, std::vector<double>{0.96, 179.9999}, pos);
  EXPECT_GT(pos[4], 0.0);  // atom 2 off the axis at +y, atom 3 at −y
  EXPECT_EQ(pos[7], -pos[4]);
  EXPECT_NEAR(norvik::points::angle(pos, 1, 0, 2), 179.9999, 1e-9);
}

TEST(WaterTemplate, ReimposesTheFirstBondOnBoth) {
  const std::vector<int> z = {8, 1, 1};
  const double theta = 104.5 * std::numbers::pi / 180.0;
  std::vector<double> pos = {
      0.0, 0.0, 0.0, 0.0, 0.95, 0.0, 0.0, 0.97 * std::cos(theta), 0.97 * std::sin(theta)};
  geometry::reput(Template::kH2O, z, pos);
  EXPECT_NEAR(norvik::points::distance(pos, 0, 1), 0.95, 1e-14);
  EXPECT_NEAR(norvik::points::distance(pos, 0, 2), 0.95, 1e-14);
  EXPECT_NEAR(norvik::points::angle(pos, 1, 0, 2), 104.5, 1e-10);
}

// ---- the molecule names ------------------------------------------------------------------

TEST(MoleculeNames, SelectTheReimposersOfTheHostTable) {
  struct Row {
    Template shape;
    std::vector<std::string> names;
  };
  const std::vector<Row> table = {
      {Template::kXY,
       {"H2", "He2", "Li2", "Be2", "B2", "C2", "N2", "O2", "F2", "Ne2", "Ar2", "HF", "CO", "NO",
        "HeH+"}},
      {Template::kH3Plus, {"H3+"}},
      {Template::kH2O, {"H2O", "CO2", "H2O+", "H2O-", "NO2", "O3", "ZnH2"}},
      {Template::kNH3, {"NH3", "CH3", "BH3", "FeCl3"}},
      {Template::kCH4, {"CH4"}},
      {Template::kC2H2, {"C2H2"}},
      {Template::kC2H4, {"C2H4"}},
      {Template::kC3H6, {"C3H6"}},
      {Template::kC6H6, {"C6H6"}},
      {Template::kB2H6, {"B2H6"}},
      {Template::kCOH2, {"COH2", "COCl2"}},
      {Template::kPF5, {"PF5"}},
      {Template::kSF6, {"SF6"}},
      {Template::kN2O, {"N2O"}},
      {Template::kH2O2, {"H2O2"}},
      {Template::kC2H6, {"C2H6"}},
      {Template::kPropane, {"Propane"}},
      {Template::kGlycine, {"Glycine"}},
  };
  for (const Row& row : table) {
    for (std::string name : row.names) {
      SCOPED_TRACE(name);
      name.resize(20, ' ');  // as the host passes it
      EXPECT_EQ(geometry::template_of_molecule(name), row.shape);
    }
  }
  // Exact matches only: case, leading blanks and near misses count.
  for (const char* other : {"h2o", "H2o", " H2O", "Water", "CHCl3", "propane", ""}) {
    SCOPED_TRACE(other);
    EXPECT_EQ(geometry::template_of_molecule(other), std::nullopt);
  }
}

TEST(MoleculeNames, AnUnknownNameStopsTheRun) {
  std::vector<int> z = {8, 1, 1};
  std::vector<double> pos(9, 0.0);
  try {
    geometry::reput("h2o", z, pos);
    FAIL() << "no error";
  } catch (const norvik::Error& e) {
    EXPECT_EQ(e.lines(), std::vector<std::string>{" Should not come here in reput."});
  }
}

// ---- centring ------------------------------------------------------------------------

TEST(CentreOfCharge, GhostsCountForNothingAndNoChargeMovesNothing) {
  std::vector<double> pos = {1.0, 2.0, 3.0, 3.0, 2.0, 1.0, 10.0, 10.0, 10.0};
  geometry::center_charge(std::vector<int>{1, 1, 0}, pos);
  const std::vector<double> centred = {-1.0, 0.0, 1.0, 1.0, 0.0, -1.0, 8.0, 8.0, 8.0};
  EXPECT_EQ(pos, centred);

  std::vector<double> ghosts = {1.0, 2.0, 3.0};
  geometry::reput_molecule(std::vector<int>{0}, ghosts);
  EXPECT_EQ(ghosts, (std::vector<double>{1.0, 2.0, 3.0}));
}

}  // namespace
