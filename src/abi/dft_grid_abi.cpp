// Exported routines of the molecular integration grid.
#include <algorithm>

#include "abi/abi_support.h"
#include "dft/grid/atomic_grid.h"
#include "dft/grid/molecular_grid.h"
#include "dft/grid/partition.h"
#include "norvik/grid.h"

namespace {

namespace abi = norvik::abi;
namespace dft = norvik::dft;
using abi::count;
using abi::guarded;
using abi::guarded_value;

std::span<const double> positions(const norvik_int* natoms, const double* coords) {
  return {coords, 3 * count(*natoms)};
}

dft::Point point(const double* r) {
  return {r[0], r[1], r[2]};
}

void store(const dft::Point& g, double* out) {
  std::copy(g.begin(), g.end(), out);
}

template <int N>
void row_template(const double* R, double* points, double* weights) {
  guarded([&] { dft::row_template(N, *R, {points, 3 * N}, {weights, N}); });
}

}  // namespace

extern "C" {

NORVIK_API void NSMPL_ATOM(const norvik_int* Z, norvik_int* n) {
  guarded([&] { *n = dft::points_per_atom(*Z); });
}

NORVIK_API void NSMPL_MOLE(const norvik_int* natoms, const norvik_int* Z, norvik_int* npts,
                           norvik_int* offset, norvik_int* ntotal) {
  guarded([&] {
    const std::size_t n = count(*natoms);
    *ntotal = dft::grid_sizes({Z, n}, {npts, n}, {offset, n});
  });
}

NORVIK_API void GRID_PART(const norvik_int* Z, const double* R0, const norvik_int* nmax,
                          double* points, double* weights) {
  guarded([&] {
    const std::size_t m = count(*nmax);
    std::fill_n(points, 3 * m, 0.0);
    std::fill_n(weights, m, 0.0);
    const int n = dft::points_per_atom(*Z);
    dft::atomic_template(*Z, *R0, {points, 3 * count(n)}, {weights, count(n)});
  });
}

NORVIK_API void GRID_ATOM(const norvik_int* Z, const norvik_int*, const double* R0, double* points,
                          double* weights) {
  guarded([&] {
    // An element without a template is refused by atomic_template itself.
    const bool known = *Z >= 1 && *Z <= dft::kGridMaxZ;
    const std::size_t n = known ? count(dft::points_per_atom(*Z)) : 0;
    dft::atomic_template(*Z, *R0, {points, 3 * n}, {weights, n});
  });
}

NORVIK_API void GRID_ATMIC3720(const double* R, double* points, double* weights) {
  row_template<3720>(R, points, weights);
}
NORVIK_API void GRID_ATMIC3816(const double* R, double* points, double* weights) {
  row_template<3816>(R, points, weights);
}
NORVIK_API void GRID_ATMIC3760(const double* R, double* points, double* weights) {
  row_template<3760>(R, points, weights);
}
NORVIK_API void GRID_ATMIC5476(const double* R, double* points, double* weights) {
  row_template<5476>(R, points, weights);
}
NORVIK_API void GRID_ATMIC9700(const double* R, double* points, double* weights) {
  row_template<9700>(R, points, weights);
}

NORVIK_API void GRID_MOLE(const norvik_int* natoms, const double* coords, const norvik_int* nkinds,
                          const norvik_int* kind, const norvik_int* nmax, const double* tmplWeights,
                          const double* tmplPoints, const norvik_int* npts,
                          const norvik_int* offset, const norvik_int* ntotal, double* points,
                          double* weights) {
  guarded([&] {
    const std::size_t n = count(*natoms);
    const std::size_t m = count(*nmax) * count(*nkinds);
    std::vector<int> kinds(kind, kind + n);
    for (int& k : kinds) --k;
    dft::GridTemplates t;
    t.nmax = *nmax;
    t.points = {tmplPoints, 3 * m};
    t.weights = {tmplWeights, m};
    t.kind = kinds;
    dft::molecular_grid(positions(natoms, coords), t, {npts, n}, {offset, n},
                        {points, 3 * count(*ntotal)}, {weights, count(*ntotal)});
  });
}

NORVIK_API double FUZZY(const norvik_int* natoms, const double* coords, const norvik_int* A,
                        const double* r) {
  return guarded_value<double>(
      [&] { return dft::fuzzy_weight(positions(natoms, coords), *A - 1, point(r)); });
}

NORVIK_API double FUNCP(const norvik_int* natoms, const double* coords, const norvik_int* A,
                        const double* r) {
  return guarded_value<double>(
      [&] { return dft::cell_product(positions(natoms, coords), *A - 1, point(r)); });
}

NORVIK_API double FUNCZ(const norvik_int* natoms, const double* coords, const double* r) {
  return guarded_value<double>([&] { return dft::cell_sum(positions(natoms, coords), point(r)); });
}

NORVIK_API double MUAB(const norvik_int* natoms, const double* coords, const norvik_int* A,
                       const norvik_int* B, const double* r) {
  return guarded_value<double>(
      [&] { return dft::mu_ab(positions(natoms, coords), *A - 1, *B - 1, point(r)); });
}

NORVIK_API double PMU(const double* x) {
  return dft::becke_p(*x);
}
NORVIK_API double FMU(const norvik_int* k, const double* mu) {
  return dft::becke_f(*k, *mu);
}
NORVIK_API double SMU(const norvik_int* k, const double* mu) {
  return dft::becke_s(*k, *mu);
}

NORVIK_API void INTEGMAIN(const norvik_int* n, const double* values, const double* weights,
                          double* result) {
  guarded([&] { *result = dft::integrate({values, count(*n)}, {weights, count(*n)}); });
}

NORVIK_API void GRADMU(const norvik_int* A, const norvik_int* natoms, const double* coords,
                       const norvik_int* B, const double* r, double* g) {
  guarded([&] { store(dft::grad_mu(positions(natoms, coords), *A - 1, *B - 1, point(r)), g); });
}

NORVIK_API void GRADAPA(const norvik_int* natoms, const double* coords, const norvik_int* A,
                        const norvik_int* C, const double* r, double* g) {
  guarded([&] {
    store(dft::grad_cell_product(positions(natoms, coords), *A - 1, *C - 1, point(r)), g);
  });
}

NORVIK_API void GRADBPA(const norvik_int* natoms, const double* coords, const norvik_int* C,
                        const double* r, double* g) {
  guarded([&] { store(dft::grad_cell_sum(positions(natoms, coords), *C - 1, point(r)), g); });
}

NORVIK_API void GRADFUZZY(const norvik_int* natoms, const double* coords, const norvik_int* A,
                          const norvik_int* C, const double* r, double* g) {
  guarded([&] { store(dft::grad_fuzzy(positions(natoms, coords), *A - 1, *C - 1, point(r)), g); });
}

NORVIK_API void GRADWEIGHT(const norvik_int* natoms, const double* coords, const norvik_int* A,
                           const double* r, double* grad) {
  guarded([&] {
    dft::grad_point_weight(positions(natoms, coords), *A - 1, point(r), {grad, 3 * count(*natoms)});
  });
}

}  // extern "C"
