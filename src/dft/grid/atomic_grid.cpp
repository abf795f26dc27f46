#include "dft/grid/atomic_grid.h"

#include <array>
#include <cstdint>
#include <vector>

#include "common/error.h"
#include "common/fortran_format.h"
#include "dft/grid/lebedev.h"

namespace norvik::dft {

namespace {

// The radius factor f(Z) of each element, relative to hydrogen (for the first
// rows n*²/Z_eff of the outermost shell by Slater's rules).  Cd repeats Fe's
// value and Ag Mn's, as the table has always had them.
constexpr std::array<double, kGridMaxZ> kRadiusFactor{
    1.0,    0.5882, 3.0769, 2.0513, 1.5385, 1.2308, 1.0256, 0.8791, 0.7692, 0.6838,  // H–Ne
    4.0909, 3.1579, 2.5714, 2.1687, 1.875,  1.6514, 1.4754, 1.3333,                  // Na–Ar
    6.274,  4.8378, 4.5921, 4.3842, 4.1952, 4.0063, 3.8173, 3.685,  3.5338, 3.4016,  // K–Ni
    3.2693, 3.1559, 2.759,  2.4378, 2.1921, 1.9842, 1.8142, 1.7,                     // Cu–Kr
    7.2944, 5.6693, 5.3669, 5.1212, 4.9134, 4.6866, 4.4598, 4.3086, 4.1197, 3.9685,  // Rb–Pd
    3.8173, 3.685,  3.2315, 2.8535, 2.5512, 2.3055, 2.1165, 2.0};                    // Ag–Xe

// The angular rules of a row's template: the Lebedev rule of each range of
// shells (last shell of the range, 1-based, inclusive).  The outermost shells
// fall back from 194 to 86 points on purpose.
struct Range {
  int last_shell;
  int points;
};
struct Row {
  int npoints;
  std::array<Range, 5> ranges;
};
constexpr std::array<Row, 5> kRows{{
    {3720, {{{17, 6}, {21, 38}, {25, 86}, {34, 194}, {50, 86}}}},
    {3816, {{{14, 6}, {21, 38}, {24, 86}, {33, 194}, {50, 86}}}},
    {3760, {{{12, 6}, {19, 38}, {24, 86}, {31, 194}, {50, 86}}}},
    {5476, {{{6, 6}, {12, 38}, {15, 86}, {33, 194}, {50, 86}}}},
    {9700, {{{0, 6}, {0, 38}, {0, 86}, {50, 194}, {50, 86}}}},
}};

// 4π as the radial weights have always written it.
constexpr double kFourPi = 12.566370614359172;

[[noreturn]] void out_of_range(const char* routine) {
  throw Error(fortran::list_directed({std::string("ZiAt exceed the limit in ") + routine + "."}));
}

const Row& row_of(int npoints) {
  for (const Row& row : kRows) {
    if (row.npoints == npoints) return row;
  }
  throw std::logic_error("no atomic grid template has this many points");
}

// The dense templates: the angular rule of a shell follows its radius in
// units of the element's scaled radius R, from the smallest rule near the
// nucleus to the largest in the valence region, and back in the tail.
struct DenseRegion {
  double below;  // r/R of the region's outer end
  int points;
};
// The regions hold for every element, as the radial scale R carries the
// element's size.  The 770-point spheres reach out to 6 R, where the
// partition's cell walls between a heavy atom and its hydrogens lie; 590
// points there leave 1.3e-6 hartree in SiH4.  Beyond neon the shells are 150:
// with 100, the Perdew–Zunger correlation, whose derivative jumps where its
// two branches meet (rs = 1, inside the L shell), leaves 2.3e-6 hartree in HCl.
constexpr int dense_shell_count(int z) {
  return z <= 10 ? 100 : 150;
}
constexpr std::array<DenseRegion, 6> kDenseRegions{
    {{0.1, 26}, {0.3, 110}, {0.6, 302}, {6.0, 770}, {15.0, 302}, {1e300, 86}}};

// Calls shell(r, radial weight, angular points) for every shell of the
// dense rule at scale `radius`.
template <class Shell>
void dense_shells(int shells, double radius, Shell&& shell) {
  const int np1 = shells + 1;
  std::size_t region = 0;
  for (int i = 1; i <= shells; ++i) {
    const double d = np1 - i;
    const double r = radius * i * i / (d * d);
    const double dr = 2.0 * np1 * radius * i / (d * d * d);
    while (r / radius >= kDenseRegions[region].below) ++region;
    shell(r, kFourPi * r * r * dr, kDenseRegions[region].points);
  }
}

}  // namespace

int dense_points_per_atom(int z) {
  if (z < 1 || z > kGridMaxZ) out_of_range("nsmpl_atom");
  int n = 0;
  dense_shells(dense_shell_count(z), 1.0, [&](double, double, int points) { n += points; });
  return n;
}

void dense_template(int z, double r0, std::span<double> points, std::span<double> weights) {
  if (z < 1 || z > kGridMaxZ) out_of_range("grid_atom");
  std::size_t at = 0;
  std::vector<double> xyz, w;
  dense_shells(dense_shell_count(z), r0 * radius_factor(z), [&](double r, double wr, int n) {
    const auto un = static_cast<std::size_t>(n);
    xyz.resize(3 * un);
    w.resize(un);
    lebedev_rule(n, xyz, w);
    for (std::size_t k = 0; k < un; ++k, ++at) {
      for (std::size_t c = 0; c < 3; ++c) points[3 * at + c] = r * xyz[3 * k + c];
      weights[at] = wr * w[k];
    }
  });
}

int points_per_atom(int z) {
  if (z < 1 || z > kGridMaxZ) out_of_range("nsmpl_atom");
  if (z <= 2) return 3720;
  if (z <= 10) return 3816;
  if (z <= 18) return 3760;
  if (z <= 36) return 5476;
  return 9700;
}

double radius_factor(int z) {
  return kRadiusFactor[static_cast<std::size_t>(z - 1)];
}

void row_template(int npoints, double radius, std::span<double> points, std::span<double> weights) {
  const Row& row = row_of(npoints);
  // The Lebedev rules of the row, each fetched once.
  std::array<std::vector<double>, 5> xyz, w;
  for (std::size_t k = 0; k < row.ranges.size(); ++k) {
    const int n = row.ranges[k].points;
    xyz[k].resize(3 * static_cast<std::size_t>(n));
    w[k].resize(static_cast<std::size_t>(n));
    lebedev_rule(n, xyz[k], w[k]);
  }
  constexpr int np1 = kRadialShells + 1;
  std::size_t at = 0;
  std::size_t range = 0;
  for (int i = 1; i <= kRadialShells; ++i) {
    while (i > row.ranges[range].last_shell) ++range;
    const double d = np1 - i;
    const double r = radius * i * i / (d * d);
    const double dr = 2.0 * np1 * radius * i / (d * d * d);
    const double wr = kFourPi * r * r * dr;
    const std::size_t n = w[range].size();
    for (std::size_t k = 0; k < n; ++k, ++at) {
      for (std::size_t c = 0; c < 3; ++c) points[3 * at + c] = r * xyz[range][3 * k + c];
      weights[at] = wr * w[range][k];
    }
  }
}

void atomic_template(int z, double r0, std::span<double> points, std::span<double> weights) {
  if (z < 1 || z > kGridMaxZ) out_of_range("grid_atom");
  row_template(points_per_atom(z), r0 * radius_factor(z), points, weights);
}

}  // namespace norvik::dft
