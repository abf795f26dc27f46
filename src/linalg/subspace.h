// Vectors of the iterative eigen-solvers (davidson.h, paired_davidson.h): the
// subspace kept orthonormal and the unit-vector start.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace norvik::linalg::subspace {

using Vector = std::vector<double>;

double dot(const Vector& x, const Vector& y);

// Orthonormalises v against the basis (classical Gram–Schmidt, twice) and
// returns false when little of it is left.
bool orthonormalise(const std::vector<Vector>& basis, Vector& v);

// The unit vectors of the `count` lowest diagonal elements (ties in index order).
std::vector<Vector> unit_guesses(std::span<const double> diagonal, std::size_t count);

}  // namespace norvik::linalg::subspace
