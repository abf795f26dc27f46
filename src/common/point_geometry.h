// Distances, bond angles and dihedral angles between atoms of a position array.
//
// Positions are (3, natom) column-major, x y z per atom; atom indices here are
// 0-based.  Angles are in degrees.  Shared by the molecule templates, which
// measure their parameters, and by the report's bond tables, which print them.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <span>

namespace norvik::points {

using Point = std::array<double, 3>;

inline constexpr double kDegree = std::numbers::pi / 180.0;

inline Point at(std::span<const double> positions, std::size_t atom) {
  return {positions[3 * atom], positions[3 * atom + 1], positions[3 * atom + 2]};
}

inline Point minus(const Point& a, const Point& b) {
  return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
inline double dot(const Point& a, const Point& b) {
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
inline Point cross(const Point& a, const Point& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
inline double norm(const Point& a) {
  return std::sqrt(dot(a, a));
}

// |a − b|.
inline double distance(const Point& a, const Point& b) {
  return norm(minus(a, b));
}

// The angle a–b–c at b, in [0, 180].  Taken from the sine and the cosine
// together, it keeps its precision near 0 and 180, where an arc cosine loses
// half its digits (a nearly straight molecule must stay measurably bent).
inline double angle(const Point& a, const Point& b, const Point& c) {
  const Point u = minus(a, b);
  const Point v = minus(c, b);
  return std::atan2(norm(cross(u, v)), dot(u, v)) / kDegree;
}

// The dihedral angle a–b–c–d in (−180, 180]: the rotation about b→c that
// carries the plane (a, b, c) onto the plane (b, c, d), positive when it is
// clockwise looking from b to c.
inline double dihedral(const Point& a, const Point& b, const Point& c, const Point& d) {
  const Point b1 = minus(b, a);
  const Point b2 = minus(c, b);
  const Point b3 = minus(d, c);
  const Point n1 = cross(b1, b2);
  const Point n2 = cross(b2, b3);
  const double y = norm(b2) * dot(b1, n2);
  const double x = dot(n1, n2);
  return std::atan2(y, x) / kDegree;
}

inline double distance(std::span<const double> positions, std::size_t a, std::size_t b) {
  return distance(at(positions, a), at(positions, b));
}
inline double angle(std::span<const double> positions, std::size_t a, std::size_t b,
                    std::size_t c) {
  return angle(at(positions, a), at(positions, b), at(positions, c));
}
inline double dihedral(std::span<const double> positions, std::size_t a, std::size_t b,
                       std::size_t c, std::size_t d) {
  return dihedral(at(positions, a), at(positions, b), at(positions, c), at(positions, d));
}

}  // namespace norvik::points
