#include "dft/grid/molecular_grid.h"

#include <algorithm>
#include <cmath>

#include "dft/grid/atomic_grid.h"
#include "dft/grid/partition.h"

namespace norvik::dft {

int grid_sizes(std::span<const int> z, std::span<int> npts, std::span<int> offset) {
  int total = 0;
  for (std::size_t a = 0; a < z.size(); ++a) {
    npts[a] = points_per_atom(z[a]);
    offset[a] = total;
    total += npts[a];
  }
  return total;
}

void molecular_grid(std::span<const double> coords, const GridTemplates& t,
                    std::span<const int> npts, std::span<const int> offset,
                    std::span<double> points, std::span<double> weights) {
  const int natom = static_cast<int>(coords.size() / 3);
  const auto nmax = static_cast<std::size_t>(t.nmax);
#pragma omp parallel for schedule(dynamic, 1)
  for (int a = 0; a < natom; ++a) {
    const auto ua = static_cast<std::size_t>(a);
    if (npts[ua] < 1) continue;
    const auto kind = static_cast<std::size_t>(t.kind[ua]);
    const double* tp = t.points.data() + 3 * nmax * kind;
    const double* tw = t.weights.data() + nmax * kind;
    for (std::size_t p = 0; p < static_cast<std::size_t>(npts[ua]); ++p) {
      const std::size_t at = static_cast<std::size_t>(offset[ua]) + p;
      Point r;
      for (std::size_t k = 0; k < 3; ++k) {
        r[k] = tp[3 * p + k] + coords[3 * ua + k];
        points[3 * at + k] = r[k];
      }
      weights[at] = fuzzy_weight(coords, a, r) * tw[p];
    }
  }
}

namespace {

// Weights [Å³] below this are left out of a grid made for a calculation.
constexpr double kNegligibleWeight = 1e-20;

// Points of element Z's template at the level.
int template_points(int z, GridLevel level) {
  return level == GridLevel::dense ? dense_points_per_atom(z) : points_per_atom(z);
}

}  // namespace

int grid_point_count(std::span<const int> elements, GridLevel level) {
  int total = 0;
  for (int z : elements) {
    total += template_points(z, level);
  }
  return total;
}

Grid make_grid(std::span<const int> elements, std::span<const double> positions, double r0,
               GridLevel level) {
  const bool dense = level == GridLevel::dense;
  const auto size_of = [&](int z) { return template_points(z, level); };
  const std::size_t natom = elements.size();
  std::vector<int> npts(natom), offset(natom), kind(natom), kinds;
  int total = 0;
  for (std::size_t a = 0; a < natom; ++a) {
    npts[a] = size_of(elements[a]);
    offset[a] = total;
    total += npts[a];
  }
  for (std::size_t a = 0; a < natom; ++a) {
    std::size_t k = 0;
    while (k < kinds.size() && kinds[k] != elements[a]) ++k;
    if (k == kinds.size()) kinds.push_back(elements[a]);
    kind[a] = static_cast<int>(k);
  }
  int nmax = 0;
  for (int z : kinds) nmax = std::max(nmax, size_of(z));
  const auto m = static_cast<std::size_t>(nmax);
  std::vector<double> tp(3 * m * kinds.size(), 0.0), tw(m * kinds.size(), 0.0);
  for (std::size_t k = 0; k < kinds.size(); ++k) {
    const auto n = static_cast<std::size_t>(size_of(kinds[k]));
    const std::span<double> p{tp.data() + 3 * m * k, 3 * n}, w{tw.data() + m * k, n};
    if (dense) {
      dense_template(kinds[k], r0, p, w);
    } else {
      atomic_template(kinds[k], r0, p, w);
    }
  }
  Grid grid{std::vector<double>(3 * static_cast<std::size_t>(total)),
            std::vector<double>(static_cast<std::size_t>(total)),
            std::vector<int>(static_cast<std::size_t>(total))};
  molecular_grid(positions, {nmax, tp, tw, kind}, npts, offset, grid.points, grid.weights);
  for (std::size_t a = 0; a < natom; ++a) {
    std::fill_n(grid.owners.begin() + offset[a], npts[a], static_cast<int>(a));
  }
  // Points deep in another atom's cell carry partition weights far below any
  // sum they could enter; they are left out, the others kept in order.
  std::size_t kept = 0;
  for (std::size_t p = 0; p < grid.weights.size(); ++p) {
    if (std::abs(grid.weights[p]) < kNegligibleWeight) continue;
    for (std::size_t k = 0; k < 3; ++k) grid.points[3 * kept + k] = grid.points[3 * p + k];
    grid.owners[kept] = grid.owners[p];
    grid.weights[kept++] = grid.weights[p];
  }
  grid.points.resize(3 * kept);
  grid.weights.resize(kept);
  grid.owners.resize(kept);
  return grid;
}

double integrate(std::span<const double> values, std::span<const double> weights) {
  double sum = 0.0;
  for (std::size_t k = 0; k < values.size(); ++k) sum += values[k] * weights[k];
  return sum;
}

}  // namespace norvik::dft
