// The rotational symmetry number σ of a molecule: the count of distinct proper
// rotations (the identity included) that map the atoms onto atoms of the same
// label.
//
// Coordinates are (3, N), column-major, in the caller's length unit; the
// tolerances below are in that unit.  Labels are the element labels as the
// host gives them (fixed-length, compared as they are, blanks included).
// Matrices are 3×3, column-major.
#pragma once

#include <array>
#include <span>
#include <string_view>
#include <vector>

namespace norvik::geometry {

using Vector3 = std::array<double, 3>;
using Matrix3 = std::array<double, 9>;  // column-major: element (i, j) at i + 3j

// Two atoms coincide when their squared distance is below this (0.05 units).
inline constexpr double kAtomMatchSquared = 0.0025;
// Two rotations are the same when every element differs by at most this.
inline constexpr double kRotationMatchTolerance = 1e-4;
// A principal moment (unit masses) below this marks a linear molecule.
inline constexpr double kLinearMoment = 0.001;
// Candidate axes: least squared length of atom positions, pair midpoints and
// principal axes, and of triple centroids (0.5 units: centroids close to the
// centre give ill-defined directions).
inline constexpr double kAxisSquared = 1e-12;
inline constexpr double kCentroidAxisSquared = 0.25;
// Rotation orders tried about each candidate axis.
inline constexpr int kLowestOrder = 2;
inline constexpr int kHighestOrder = 8;

// Rodrigues' rotation by `angle` (radians) about `axis` (normalised here).
Matrix3 rotation_matrix(const Vector3& axis, double angle);

// Eigenvalues and eigenvectors (columns) of a symmetric 3×3 matrix by cyclic
// Jacobi rotations, eigenvalues ascending.
struct Eigen3 {
  Vector3 values{};
  Matrix3 vectors{};
};
Eigen3 jacobi(const Matrix3& a);

// Whether the rotation by `angle` about `axis` maps every atom within
// kAtomMatchSquared of a distinct atom of the same label.  The coordinates are
// rotated as given (about the origin).
bool is_symmetric(std::span<const std::string_view> labels, std::span<const double> coords,
                  const Vector3& axis, double angle);

// Whether `r` equals a matrix of `list` within kRotationMatchTolerance in
// every element.
bool is_duplicate(const Matrix3& r, std::span<const Matrix3> list);

// The rotational symmetry number.  A linear molecule gets 1 or 2; otherwise
// rotations of orders 2 to 8 about the atoms, pair midpoints, principal axes
// and triple centroids are collected (in parallel) and counted with the
// identity.  A rotation of higher order than 8 is not found.
int symmetry_number(std::span<const std::string_view> labels, std::span<const double> coords);

}  // namespace norvik::geometry
