// The proper rotations of a molecule with the atoms they exchange, for the
// Hessian by differences: the derivatives of a displaced atom give those of
// every atom that a rotation maps it onto.
#pragma once

#include <span>
#include <vector>

#include "geometry/symmetry_number.h"

namespace norvik::geometry {

struct AtomRotation {
  Matrix3 r{};             // about the centroid of the atoms, column-major
  std::vector<int> image;  // atom a goes onto atom image[a]
};

// Rotations of orders 2 to 8 (and the identity, first) about the atoms, the
// pair midpoints and the principal axes of the atoms' centroid that map every
// atom to within `tolerance` [Å] of an atom of the same kind.
std::vector<AtomRotation> atom_rotations(std::span<const int> kinds, std::span<const double> x,
                                         double tolerance);

}  // namespace norvik::geometry
