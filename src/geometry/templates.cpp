#include "geometry/templates.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

#include "common/error.h"
#include "common/fortran_format.h"
#include "common/point_geometry.h"
#include "geometry/placement.h"

namespace norvik::geometry {

namespace {

using Atoms = std::vector<Point>;
using Parameters = std::span<const double>;
using points::angle;
using points::dihedral;
using points::distance;

const double kRoot3 = std::sqrt(3.0);

// ---------------------------------------------------------------------------
// Constructions.  Each builds the atoms in the template's order before the
// centring; the comment gives the parameters in argument order.

// r: a diatomic along z, atom 1 below the origin.
Atoms build_xy(Parameters p) {
  const double r = p[0];
  return {{0.0, 0.0, -r / 2.0}, {0.0, 0.0, r / 2.0}};
}

// r, θ: the central atom first, the molecule in the yz plane, the second atom
// at +y; within 1e-5° of 180° it is straight along z.
Atoms build_h2o(Parameters p) {
  const double r = p[0];
  const double theta = p[1];
  if (std::abs(theta - 180.0) < 1.0e-5) return {{0.0, 0.0, 0.0}, {0.0, 0.0, r}, {0.0, 0.0, -r}};
  const double phi = theta / 180.0 * 3.141592653589793 / 2.0;
  const double y = r * std::sin(phi);
  const double z = -r * std::cos(phi);
  return {{0.0, 0.0, 0.0}, {0.0, y, z}, {0.0, -y, z}};
}

// r(H-H): an equilateral triangle in the xy plane, atom 1 on +y.
Atoms build_h3plus(Parameters p) {
  const double radius = p[0] / kRoot3;
  Atoms atoms;
  for (const double phi : {90.0, 210.0, 330.0}) {
    atoms.push_back({radius * cos_deg(phi), radius * sin_deg(phi), 0.0});
  }
  return atoms;
}

// r, θ(H-X-H): X at the top of a three-fold pyramid about z, the first bond in
// the yz plane at +y (flat for θ ≥ 120°: CH3, BH3, FeCl3).
Atoms build_nh3(Parameters p) {
  const Point apex{0.0, 0.0, 0.0};
  const auto h = pyramid(apex, p[0], p[1], false, 90.0);
  return {apex, h[0], h[1], h[2]};
}

// r: the tetrahedron with its S4 axis along z, the first two bonds in the xz
// plane pointing up, the other two in the yz plane pointing down.
Atoms build_ch4(Parameters p) {
  const double a = p[0] * std::sqrt(2.0 / 3.0);
  const double c = p[0] / kRoot3;
  return {{0.0, 0.0, 0.0}, {a, 0.0, c}, {-a, 0.0, c}, {0.0, a, -c}, {0.0, -a, -c}};
}

// r(C-C), r(C-H): C, C, H, H along z, each H on the carbon before it in the list.
Atoms build_c2h2(Parameters p) {
  const double half = p[0] / 2.0;
  return {{0.0, 0.0, -half}, {0.0, 0.0, half}, {0.0, 0.0, -half - p[1]}, {0.0, 0.0, half + p[1]}};
}

// r(C-C), r(C-H), θ(H-C-H): C=C along z, the molecule in the yz plane; H3, H4
// on C1 (at +y, −y), H5, H6 on C2.
Atoms build_c2h4(Parameters p) {
  const double half = p[0] / 2.0;
  const double y = p[1] * sin_deg(p[2] / 2.0);
  const double z = half + p[1] * cos_deg(p[2] / 2.0);
  return {{0.0, 0.0, -half}, {0.0, 0.0, half}, {0.0, y, -z},
          {0.0, -y, -z},     {0.0, y, z},      {0.0, -y, z}};
}

// r(C-C), r(C-H), θ(H-C-H): staggered, C-C along z; H3-H5 on C1 (below) at the
// azimuths 90°, 210°, 330°, H6-H8 on C2 at 270°, 30°, 150° (each the inversion
// image of the one three places before it).
Atoms build_c2h6(Parameters p) {
  const Point c1{0.0, 0.0, -p[0] / 2.0};
  const Point c2{0.0, 0.0, p[0] / 2.0};
  const auto low = pyramid(c1, p[1], p[2], false, 90.0);
  const auto high = pyramid(c2, p[1], p[2], true, 270.0);
  return {c1, c2, low[0], low[1], low[2], high[0], high[1], high[2]};
}

// r(C-C), r(C-H), θ(H-C-H): the ring in the xy plane, C1 on +y, C2 and C3 at
// 210° and 330°; each carbon's two H (first above, then below the ring) in
// the plane through the carbon and the z axis.
Atoms build_c3h6(Parameters p) {
  const double ring = p[0] / kRoot3;
  const double out = ring + p[1] * cos_deg(p[2] / 2.0);
  const double z = p[1] * sin_deg(p[2] / 2.0);
  Atoms carbons, hydrogens;
  for (const double phi : {90.0, 210.0, 330.0}) {
    const double c = cos_deg(phi), s = sin_deg(phi);
    carbons.push_back({ring * c, ring * s, 0.0});
    hydrogens.push_back({out * c, out * s, z});
    hydrogens.push_back({out * c, out * s, -z});
  }
  carbons.insert(carbons.end(), hydrogens.begin(), hydrogens.end());
  return carbons;
}

// r(C-C), r(C-H): the ring in the xy plane, C1 on +y and the others 60° apart
// counter-clockwise; H7-H12 outside C1-C6 in the same order.
Atoms build_c6h6(Parameters p) {
  Atoms carbons, hydrogens;
  for (int k = 0; k < 6; ++k) {
    const double phi = 90.0 + 60.0 * k;
    const double c = cos_deg(phi), s = sin_deg(phi);
    carbons.push_back({p[0] * c, p[0] * s, 0.0});
    hydrogens.push_back({(p[0] + p[1]) * c, (p[0] + p[1]) * s, 0.0});
  }
  carbons.insert(carbons.end(), hydrogens.begin(), hydrogens.end());
  return carbons;
}

// r(B-B), r(B-Hb), r(B-Ht), θ(Ht-B-Ht): B-B along z, the bridging H3, H4 on
// ±x, the terminal H in the yz plane: H5 (+y), H6 (−y) on B1 below, H7, H8 on B2.
// A bridge bond shorter than half the B-B distance is taken as exactly half.
Atoms build_b2h6(Parameters p) {
  const double half = p[0] / 2.0;
  const double xb = std::sqrt(std::max(p[1] * p[1] - half * half, 0.0));
  const double y = p[2] * sin_deg(p[3] / 2.0);
  const double z = half + p[2] * cos_deg(p[3] / 2.0);
  return {{0.0, 0.0, -half}, {0.0, 0.0, half}, {xb, 0.0, 0.0}, {-xb, 0.0, 0.0},
          {0.0, y, -z},      {0.0, -y, -z},    {0.0, y, z},    {0.0, -y, z}};
}

// r(C-O), r(C-X), θ(X-C-X): C=O along +z, the molecule in the yz plane, X3 at +y.
Atoms build_coh2(Parameters p) {
  const double y = p[1] * sin_deg(p[2] / 2.0);
  const double z = -p[1] * cos_deg(p[2] / 2.0);
  return {{0.0, 0.0, 0.0}, {0.0, 0.0, p[0]}, {0.0, y, z}, {0.0, -y, z}};
}

// r(P-F axial), r(P-F equatorial): F2 at +z, F3 at −z, F4-F6 in the xy plane at
// 90°, 210°, 330°.
Atoms build_pf5(Parameters p) {
  Atoms atoms = {{0.0, 0.0, 0.0}, {0.0, 0.0, p[0]}, {0.0, 0.0, -p[0]}};
  for (const double phi : {90.0, 210.0, 330.0}) {
    atoms.push_back({p[1] * cos_deg(phi), p[1] * sin_deg(phi), 0.0});
  }
  return atoms;
}

// r: F on +x, −x, +y, −y, +z, −z.
Atoms build_sf6(Parameters p) {
  const double r = p[0];
  return {{0.0, 0.0, 0.0}, {r, 0.0, 0.0}, {-r, 0.0, 0.0}, {0.0, r, 0.0},
          {0.0, -r, 0.0},  {0.0, 0.0, r}, {0.0, 0.0, -r}};
}

// r(N-N), r(N-O): N-N-O along +z.
Atoms build_n2o(Parameters p) {
  return {{0.0, 0.0, 0.0}, {0.0, 0.0, p[0]}, {0.0, 0.0, p[0] + p[1]}};
}

// r(O-O), r(O-H), θ(O-O-H), τ(H-O-O-H): O-O along x, the two-fold axis along z;
// H3 on O1, H4 on O2.  Each O-H bond leans out of the xy plane by the angle
// ψ = (180° − τ)/2, so that the two bonds make the dihedral angle τ.
Atoms build_h2o2(Parameters p) {
  const double half = p[0] / 2.0;
  const double out = -p[1] * cos_deg(p[2]);  // beyond the oxygen, along the O-O axis
  const double across = p[1] * sin_deg(p[2]);
  const double psi = (180.0 - p[3]) / 2.0;
  const double y = across * cos_deg(psi);
  const double z = across * sin_deg(psi);
  return {{-half, 0.0, 0.0}, {half, 0.0, 0.0}, {-half - out, y, z}, {half + out, -y, z}};
}

// r(C-H), r(C-Cl), θ(Cl-C-Cl): C-H along +z, the three Cl below, Cl3 in the yz
// plane at +y.
Atoms build_chcl3(Parameters p) {
  const Point c{0.0, 0.0, 0.0};
  const auto cl = pyramid(c, p[1], p[2], false, 90.0);
  return {c, {0.0, 0.0, p[0]}, cl[0], cl[1], cl[2]};
}

// r(C-C), θ(C-C-C), r(C-H) and θ(H-C-H) of the CH2 group, r(C-H) and θ(H-C-C)
// of the methyl groups: the carbons in the yz plane with the central one first,
// C2 at +y and C3 at −y below it; H4 (+x), H5 (−x) on C1; H6, H7, H8 on C2 and
// H9, H10, H11 on C3, each methyl with its first H in the carbon plane, anti to
// the other C-C bond, and the other two at the dihedral angles +60° and −60°.
Atoms build_propane(Parameters p) {
  const double rcc = p[0], ccc = p[1], rch2 = p[2], hch = p[3], rch3 = p[4], hcc = p[5];
  const Point c1{0.0, 0.0, 0.0};
  const Point c2{0.0, rcc * sin_deg(ccc / 2.0), -rcc * cos_deg(ccc / 2.0)};
  const Point c3{0.0, -c2[1], c2[2]};
  const double hx = rch2 * sin_deg(hch / 2.0);
  const double hz = rch2 * cos_deg(hch / 2.0);
  Atoms atoms = {c1, c2, c3, {hx, 0.0, hz}, {-hx, 0.0, hz}};
  for (const auto& [carbon, other] : {std::pair{c2, c3}, std::pair{c3, c2}}) {
    for (const double tau : {180.0, 60.0, -60.0}) {
      atoms.push_back(place(other, c1, carbon, rch3, hcc, tau));
    }
  }
  return atoms;
}

// The planar conformer with all heavy atoms, and the hydroxyl H, in the yz
// plane: N, C2 (alpha), C3 (carboxyl), O4 (carbonyl), O5 (hydroxyl), H6 on O5,
// H7, H8 on N and H9, H10 on C2, each pair mirror images through the plane.
// Parameters in Z-matrix order:
//   r(N-C2); r(C2-C3), θ(N-C2-C3);
//   r(C3-O4), θ(C2-C3-O4)      with τ(N-C2-C3-O4) = 0;
//   r(C3-O5), θ(C2-C3-O5)      with τ(N-C2-C3-O5) = 180°;
//   r(O5-H6), θ(C3-O5-H6)      with τ(C2-C3-O5-H6) = 180° (H6 syn to O4);
//   r(N-H), θ(C2-N-H), τ(C3-C2-N-H7) (H8 at −τ);
//   r(C2-H), θ(H-C2-C3), τ(O4-C3-C2-H9) (H10 at −τ).
Atoms build_glycine(Parameters p) {
  const Point n{0.0, 0.0, 0.0};
  const Point ca{0.0, 0.0, p[0]};
  const Point c{0.0, p[1] * sin_deg(p[2]), p[0] - p[1] * cos_deg(p[2])};
  const Point o4 = place(n, ca, c, p[3], p[4], 0.0);
  const Point o5 = place(n, ca, c, p[5], p[6], 180.0);
  const Point h6 = place(ca, c, o5, p[7], p[8], 180.0);
  const Point h7 = place(c, ca, n, p[9], p[10], p[11]);
  const Point h8 = place(c, ca, n, p[9], p[10], -p[11]);
  const Point h9 = place(o4, c, ca, p[12], p[13], p[14]);
  const Point h10 = place(o4, c, ca, p[12], p[13], -p[14]);
  return {n, ca, c, o4, o5, h6, h7, h8, h9, h10};
}

// ---------------------------------------------------------------------------
// Measurements: the same parameters read back on the first atoms of each set
// (0-based indices).

using Positions = std::span<const double>;

std::vector<double> measure_xy(Positions x) {
  return {distance(x, 0, 1)};
}
std::vector<double> measure_h2o(Positions x) {
  return {distance(x, 0, 1), angle(x, 1, 0, 2)};
}
std::vector<double> measure_h3plus(Positions x) {
  return {distance(x, 0, 1)};
}
std::vector<double> measure_nh3(Positions x) {
  return {distance(x, 0, 1), angle(x, 1, 0, 2)};
}
std::vector<double> measure_ch4(Positions x) {
  return {distance(x, 0, 1)};
}
std::vector<double> measure_c2h2(Positions x) {
  return {distance(x, 0, 1), distance(x, 0, 2)};
}
std::vector<double> measure_c2h4(Positions x) {
  return {distance(x, 0, 1), distance(x, 0, 2), angle(x, 2, 0, 3)};
}
std::vector<double> measure_c2h6(Positions x) {
  return {distance(x, 0, 1), distance(x, 0, 2), angle(x, 2, 0, 3)};
}
std::vector<double> measure_c3h6(Positions x) {
  return {distance(x, 0, 1), distance(x, 0, 3), angle(x, 3, 0, 4)};
}
std::vector<double> measure_c6h6(Positions x) {
  return {distance(x, 0, 1), distance(x, 0, 6)};
}
std::vector<double> measure_b2h6(Positions x) {
  return {distance(x, 0, 1), distance(x, 0, 2), distance(x, 0, 4), angle(x, 4, 0, 5)};
}
std::vector<double> measure_coh2(Positions x) {
  return {distance(x, 0, 1), distance(x, 0, 2), angle(x, 2, 0, 3)};
}
std::vector<double> measure_pf5(Positions x) {
  return {distance(x, 0, 1), distance(x, 0, 3)};
}
std::vector<double> measure_sf6(Positions x) {
  return {distance(x, 0, 1)};
}
std::vector<double> measure_n2o(Positions x) {
  return {distance(x, 0, 1), distance(x, 1, 2)};
}
std::vector<double> measure_h2o2(Positions x) {
  return {distance(x, 0, 1), distance(x, 0, 2), angle(x, 1, 0, 2), dihedral(x, 2, 0, 1, 3)};
}
std::vector<double> measure_chcl3(Positions x) {
  return {distance(x, 0, 1), distance(x, 0, 2), angle(x, 2, 0, 3)};
}
std::vector<double> measure_propane(Positions x) {
  return {distance(x, 0, 1), angle(x, 1, 0, 2), distance(x, 0, 3),
          angle(x, 3, 0, 4), distance(x, 1, 5), angle(x, 5, 1, 0)};
}
std::vector<double> measure_glycine(Positions x) {
  return {distance(x, 0, 1), distance(x, 1, 2), angle(x, 0, 1, 2),      distance(x, 2, 3),
          angle(x, 1, 2, 3), distance(x, 2, 4), angle(x, 1, 2, 4),      distance(x, 4, 5),
          angle(x, 2, 4, 5), distance(x, 0, 6), angle(x, 1, 0, 6),      dihedral(x, 2, 1, 0, 6),
          distance(x, 1, 8), angle(x, 8, 1, 2), dihedral(x, 3, 2, 1, 8)};
}

// ---------------------------------------------------------------------------
// The table of templates.

using Names = std::string_view;

constexpr Names kXYParams[] = {"r [A]"};
constexpr Names kH2OParams[] = {"r [A]", "theta [deg]"};
constexpr Names kH3PlusParams[] = {"r(H-H) [A]"};
constexpr Names kNH3Params[] = {"r [A]", "theta(H-N-H) [deg]"};
constexpr Names kCH4Params[] = {"r(C-H) [A]"};
constexpr Names kC2H2Params[] = {"r(C-C) [A]", "r(C-H) [A]"};
constexpr Names kC2H4Params[] = {"r(C-C) [A]", "r(C-H) [A]", "theta(H-C-H) [deg]"};
constexpr Names kC2H6Params[] = {"r(C-C) [A]", "r(C-H) [A]", "theta(H-C-H) [deg]"};
constexpr Names kC3H6Params[] = {"r(C-C) [A]", "r(C-H) [A]", "theta(H-C-H) [deg]"};
constexpr Names kC6H6Params[] = {"r(C-C) [A]", "r(C-H) [A]"};
constexpr Names kB2H6Params[] = {"r(B-B) [A]", "r(B-Hb) [A]", "r(B-Ht) [A]",
                                 "theta(Ht-B-Ht) [deg]"};
constexpr Names kCOH2Params[] = {"r(C-O) [A]", "r(C-H) [A]", "theta(H-C-H) [deg]"};
constexpr Names kPF5Params[] = {"r(P-F axial) [A]", "r(P-F equatorial) [A]"};
constexpr Names kSF6Params[] = {"r(S-F) [A]"};
constexpr Names kN2OParams[] = {"r(N-N) [A]", "r(N-O) [A]"};
constexpr Names kH2O2Params[] = {"r(O-O) [A]", "r(O-H) [A]", "theta(O-O-H) [deg]",
                                 "tau(H-O-O-H) [deg]"};
constexpr Names kCHCl3Params[] = {"r(C-H) [A]", "r(C-Cl) [A]", "theta(Cl-C-Cl) [deg]"};
constexpr Names kPropaneParams[] = {"r(C-C) [A]",     "theta(C-C-C) [deg]",
                                    "r(C-H) CH2 [A]", "theta(H-C-H) CH2 [deg]",
                                    "r(C-H) CH3 [A]", "theta(H-C-C) CH3 [deg]"};
constexpr Names kGlycineParams[] = {
    "r(N-Ca) [A]",          "r(Ca-C) [A]",         "theta(N-Ca-C) [deg]",  "r(C-O4) [A]",
    "theta(Ca-C-O4) [deg]", "r(C-O5) [A]",         "theta(Ca-C-O5) [deg]", "r(O5-H) [A]",
    "theta(C-O5-H) [deg]",  "r(N-H) [A]",          "theta(Ca-N-H) [deg]",  "tau(C-Ca-N-H) [deg]",
    "r(Ca-H) [A]",          "theta(H-Ca-C) [deg]", "tau(O4-C-Ca-H) [deg]"};

struct Entry {
  TemplateInfo info;
  Atoms (*build)(Parameters);
  std::vector<double> (*measure)(Positions);
};

const Entry& entry(Template t) {
  static const Entry table[] = {
      {{"XY", 2, kXYParams}, build_xy, measure_xy},
      {{"H2O", 3, kH2OParams}, build_h2o, measure_h2o},
      {{"H3PLUS", 3, kH3PlusParams}, build_h3plus, measure_h3plus},
      {{"NH3", 4, kNH3Params}, build_nh3, measure_nh3},
      {{"CH4", 5, kCH4Params}, build_ch4, measure_ch4},
      {{"C2H2", 4, kC2H2Params}, build_c2h2, measure_c2h2},
      {{"C2H4", 6, kC2H4Params}, build_c2h4, measure_c2h4},
      {{"C2H6", 8, kC2H6Params}, build_c2h6, measure_c2h6},
      {{"C3H6", 9, kC3H6Params}, build_c3h6, measure_c3h6},
      {{"C6H6", 12, kC6H6Params}, build_c6h6, measure_c6h6},
      {{"B2H6", 8, kB2H6Params}, build_b2h6, measure_b2h6},
      {{"COH2", 4, kCOH2Params}, build_coh2, measure_coh2},
      {{"PF5", 6, kPF5Params}, build_pf5, measure_pf5},
      {{"SF6", 7, kSF6Params}, build_sf6, measure_sf6},
      {{"N2O", 3, kN2OParams}, build_n2o, measure_n2o},
      {{"H2O2", 4, kH2O2Params}, build_h2o2, measure_h2o2},
      {{"CHCL3", 5, kCHCl3Params}, build_chcl3, measure_chcl3},
      {{"PROPANE", 11, kPropaneParams}, build_propane, measure_propane},
      {{"GLYCINE", 10, kGlycineParams}, build_glycine, measure_glycine},
  };
  static_assert(std::size(table) == kAllTemplates.size());
  return table[static_cast<std::size_t>(t)];
}

void require_atoms(Template t, std::size_t natom) {
  const TemplateInfo& i = entry(t).info;
  if (natom != static_cast<std::size_t>(i.natom)) {
    const std::string text =
        "Wrong number of atoms for the molecule template " + std::string(i.suffix) + ".";
    throw Error(fortran::list_directed({std::string_view(text), static_cast<std::int64_t>(natom)}));
  }
}

// Which template each molecule name of the host selects.
struct NameRule {
  std::string_view name;
  Template shape;
};

constexpr NameRule kNameRules[] = {
    {"H2", Template::kXY},      {"He2", Template::kXY},          {"Li2", Template::kXY},
    {"Be2", Template::kXY},     {"B2", Template::kXY},           {"C2", Template::kXY},
    {"N2", Template::kXY},      {"O2", Template::kXY},           {"F2", Template::kXY},
    {"Ne2", Template::kXY},     {"Ar2", Template::kXY},          {"HF", Template::kXY},
    {"CO", Template::kXY},      {"NO", Template::kXY},           {"HeH+", Template::kXY},
    {"H3+", Template::kH3Plus}, {"H2O", Template::kH2O},         {"CO2", Template::kH2O},
    {"H2O+", Template::kH2O},   {"H2O-", Template::kH2O},        {"NO2", Template::kH2O},
    {"O3", Template::kH2O},     {"ZnH2", Template::kH2O},        {"NH3", Template::kNH3},
    {"CH3", Template::kNH3},    {"BH3", Template::kNH3},         {"FeCl3", Template::kNH3},
    {"CH4", Template::kCH4},    {"C2H2", Template::kC2H2},       {"C2H4", Template::kC2H4},
    {"C3H6", Template::kC3H6},  {"C6H6", Template::kC6H6},       {"B2H6", Template::kB2H6},
    {"COH2", Template::kCOH2},  {"COCl2", Template::kCOH2},      {"PF5", Template::kPF5},
    {"SF6", Template::kSF6},    {"N2O", Template::kN2O},         {"H2O2", Template::kH2O2},
    {"C2H6", Template::kC2H6},  {"Propane", Template::kPropane}, {"Glycine", Template::kGlycine},
};

}  // namespace

const TemplateInfo& info(Template t) {
  return entry(t).info;
}

void put(Template t, std::span<const int> charges, std::span<const double> parameters,
         std::span<double> positions) {
  const Entry& e = entry(t);
  if (parameters.size() != e.info.parameters.size()) {
    throw std::logic_error("wrong parameter count for the template " + std::string(e.info.suffix));
  }
  require_atoms(t, charges.size());
  require_atoms(t, positions.size() / 3);
  const Atoms atoms = e.build(parameters);
  for (std::size_t a = 0; a < atoms.size(); ++a) {
    for (std::size_t k = 0; k < 3; ++k) positions[3 * a + k] = atoms[a][k];
  }
  center_charge(charges, positions);
}

std::vector<double> measure(Template t, std::span<const double> positions) {
  require_atoms(t, positions.size() / 3);
  return entry(t).measure(positions);
}

void reput(Template t, std::span<const int> charges, std::span<double> positions) {
  const std::vector<double> parameters = measure(t, positions);
  put(t, charges, parameters, positions);
}

std::optional<Template> template_of_molecule(std::string_view name) {
  const std::size_t end = name.find_last_not_of(' ');
  const std::string_view trimmed = end == std::string_view::npos ? "" : name.substr(0, end + 1);
  for (const NameRule& rule : kNameRules) {
    if (rule.name == trimmed) return rule.shape;
  }
  return std::nullopt;
}

void reput(std::string_view molecule_name, std::span<const int> charges,
           std::span<double> positions) {
  const std::optional<Template> t = template_of_molecule(molecule_name);
  if (!t) throw Error(fortran::list_directed({"Should not come here in reput."}));
  reput(*t, charges, positions);
}

void reput_molecule(std::span<const int> charges, std::span<double> positions) {
  center_charge(charges, positions);
}

void center_charge(std::span<const int> charges, std::span<double> positions) {
  const std::size_t natom = std::min(charges.size(), positions.size() / 3);
  double total = 0.0;
  Point weighted{};
  for (std::size_t a = 0; a < natom; ++a) {
    total += charges[a];
    for (std::size_t k = 0; k < 3; ++k) weighted[k] += charges[a] * positions[3 * a + k];
  }
  if (total == 0.0) return;
  for (std::size_t a = 0; a < natom; ++a) {
    for (std::size_t k = 0; k < 3; ++k) positions[3 * a + k] -= weighted[k] / total;
  }
}

}  // namespace norvik::geometry
