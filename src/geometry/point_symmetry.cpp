#include "geometry/point_symmetry.h"

#include <cmath>
#include <numbers>
#include <optional>

namespace norvik::geometry {

namespace {

Vector3 apply(const Matrix3& r, const Vector3& v) {
  Vector3 out{};
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) out[i] += r[i + 3 * j] * v[j];
  return out;
}

// The atom images of rotation r, or nothing when an atom has no partner.
std::optional<std::vector<int>> images(const Matrix3& r, std::span<const int> kinds,
                                       const std::vector<Vector3>& centred, double tolerance) {
  const std::size_t n = kinds.size();
  std::vector<int> image(n, -1);
  std::vector<bool> taken(n, false);
  for (std::size_t a = 0; a < n; ++a) {
    const Vector3 moved = apply(r, centred[a]);
    for (std::size_t b = 0; b < n; ++b) {
      if (taken[b] || kinds[b] != kinds[a]) continue;
      double d2 = 0.0;
      for (int k = 0; k < 3; ++k) d2 += std::pow(moved[k] - centred[b][k], 2);
      if (d2 <= tolerance * tolerance) {
        image[a] = static_cast<int>(b);
        taken[b] = true;
        break;
      }
    }
    if (image[a] < 0) return std::nullopt;
  }
  return image;
}

}  // namespace

std::vector<AtomRotation> atom_rotations(std::span<const int> kinds, std::span<const double> x,
                                         double tolerance) {
  const std::size_t n = kinds.size();
  std::vector<Vector3> centred(n);
  Vector3 centre{};
  for (std::size_t a = 0; a < n; ++a)
    for (int k = 0; k < 3; ++k) centre[k] += x[3 * a + k] / static_cast<double>(n);
  for (std::size_t a = 0; a < n; ++a)
    for (int k = 0; k < 3; ++k) centred[a][k] = x[3 * a + k] - centre[k];

  std::vector<AtomRotation> out;
  std::vector<Matrix3> found;
  AtomRotation identity;
  identity.r = {1, 0, 0, 0, 1, 0, 0, 0, 1};
  for (std::size_t a = 0; a < n; ++a) identity.image.push_back(static_cast<int>(a));
  out.push_back(identity);
  found.push_back(identity.r);

  std::vector<Vector3> axes;
  auto add_axis = [&](const Vector3& v) {
    if (v[0] * v[0] + v[1] * v[1] + v[2] * v[2] > kAxisSquared) axes.push_back(v);
  };
  for (std::size_t a = 0; a < n; ++a) {
    add_axis(centred[a]);
    for (std::size_t b = a + 1; b < n; ++b)
      add_axis({0.5 * (centred[a][0] + centred[b][0]), 0.5 * (centred[a][1] + centred[b][1]),
                0.5 * (centred[a][2] + centred[b][2])});
  }
  Matrix3 inertia{};
  for (const Vector3& p : centred) {
    const double r2 = p[0] * p[0] + p[1] * p[1] + p[2] * p[2];
    for (int i = 0; i < 3; ++i)
      for (int j = 0; j < 3; ++j) inertia[i + 3 * j] += (i == j ? r2 : 0.0) - p[i] * p[j];
  }
  const Eigen3 principal = jacobi(inertia);
  for (int k = 0; k < 3; ++k)
    add_axis(
        {principal.vectors[3 * k], principal.vectors[3 * k + 1], principal.vectors[3 * k + 2]});

  for (const Vector3& axis : axes)
    for (int order = kLowestOrder; order <= kHighestOrder; ++order)
      for (int i = 1; i < order; ++i) {
        const Matrix3 r = rotation_matrix(axis, 2.0 * std::numbers::pi * i / order);
        if (is_duplicate(r, found)) continue;
        if (auto image = images(r, kinds, centred, tolerance)) {
          found.push_back(r);
          out.push_back({r, *image});
        }
      }
  return out;
}

}  // namespace norvik::geometry
