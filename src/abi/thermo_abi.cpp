// Exported thermochemistry and the rotational symmetry number.
#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

#include "abi/abi_support.h"
#include "geometry/symmetry_number.h"
#include "geometry/thermo.h"
#include "norvik/thermo.h"

namespace {

using norvik::abi::count;
using norvik::abi::guarded;
using norvik::abi::guarded_value;
namespace geometry = norvik::geometry;

// The host's N labels of `length` characters each, one view per atom.
std::vector<std::string_view> labels_of(const norvik_int* natom, const char* labels,
                                        std::size_t length) {
  std::vector<std::string_view> views(count(*natom));
  for (std::size_t i = 0; i < views.size(); ++i) views[i] = {labels + i * length, length};
  return views;
}

std::span<const double> coordinates(const norvik_int* natom, const double* coords) {
  return {coords, 3 * count(*natom)};
}

geometry::Vector3 vector_of(const double* v) {
  return {v[0], v[1], v[2]};
}

geometry::Matrix3 matrix_of(const double* m) {
  geometry::Matrix3 r;
  std::copy(m, m + 9, r.begin());
  return r;
}

}  // namespace

extern "C" {

NORVIK_API void ENTROPY(const norvik_int* linear, const norvik_int* sigma, const norvik_int* natom,
                        const double* mass, const double* inertia, const double* eigenvalues,
                        const double* scale, double* entropy) {
  guarded([&] {
    const geometry::Entropies s =
        geometry::entropy(*linear == 1, *sigma, *natom, *mass, {inertia[0], inertia[1], inertia[2]},
                          {eigenvalues, 3 * count(*natom)}, *scale);
    entropy[0] = s.translational;
    entropy[1] = s.rotational;
    entropy[2] = s.vibrational;
  });
}

NORVIK_API void THERMALENERGY(const norvik_int* linear, const norvik_int* natom,
                              const double* eigenvalues, const double* scale, double* energy,
                              double* heat_capacity) {
  guarded([&] {
    const geometry::ThermalEnergies t =
        geometry::thermal_energy(*linear == 1, *natom, {eigenvalues, 3 * count(*natom)}, *scale);
    std::copy(t.energy.begin(), t.energy.end(), energy);
    std::copy(t.heat_capacity.begin(), t.heat_capacity.end(), heat_capacity);
  });
}

NORVIK_API void SYMMETRY_NUMBER_MP_calculate_sigma(const norvik_int* natom, const char* labels,
                                                   const double* coords, norvik_int* sigma,
                                                   std::size_t label_length) {
  guarded([&] {
    *sigma = geometry::symmetry_number(labels_of(natom, labels, label_length),
                                       coordinates(natom, coords));
  });
}

NORVIK_API void SYMMETRY_NUMBER_MP_get_rot_mat(const double* axis, const double* angle,
                                               double* matrix) {
  const geometry::Matrix3 r = geometry::rotation_matrix(vector_of(axis), *angle);
  std::copy(r.begin(), r.end(), matrix);
}

NORVIK_API norvik_bool SYMMETRY_NUMBER_MP_is_symmetric(const norvik_int* natom, const char* labels,
                                                       const double* coords, const double* axis,
                                                       const double* angle,
                                                       std::size_t label_length) {
  return guarded_value<norvik_bool>([&] {
    return geometry::is_symmetric(labels_of(natom, labels, label_length),
                                  coordinates(natom, coords), vector_of(axis), *angle)
               ? 1
               : 0;
  });
}

NORVIK_API norvik_bool SYMMETRY_NUMBER_MP_is_duplicate(const double* matrix,
                                                       const norvik_int* nlist,
                                                       const double* list) {
  return guarded_value<norvik_bool>([&] {
    std::vector<geometry::Matrix3> listed(count(*nlist));
    for (std::size_t k = 0; k < listed.size(); ++k) listed[k] = matrix_of(list + 9 * k);
    return geometry::is_duplicate(matrix_of(matrix), listed) ? 1 : 0;
  });
}

NORVIK_API void SYMMETRY_NUMBER_MP_jacobi(const double* a, double* eigenvalues,
                                          double* eigenvectors) {
  const geometry::Eigen3 e = geometry::jacobi(matrix_of(a));
  std::copy(e.values.begin(), e.values.end(), eigenvalues);
  std::copy(e.vectors.begin(), e.vectors.end(), eigenvectors);
}

}  // extern "C"
