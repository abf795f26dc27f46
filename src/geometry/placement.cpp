#include "geometry/placement.h"

#include <algorithm>
#include <cmath>

namespace norvik::geometry {

namespace {

using points::cross;
using points::kDegree;
using points::norm;

// sin(30°·k), k = 0 … 11.
double sin_of_multiple(int k) {
  static const double half_root3 = std::sqrt(3.0) / 2.0;
  static const std::array<double, 12> table = {0.0, 0.5,  half_root3,  1.0,  half_root3,  0.5,
                                               0.0, -0.5, -half_root3, -1.0, -half_root3, -0.5};
  return table[static_cast<std::size_t>(k)];
}

// k when degrees is 30°·k modulo 360°, else −1.
int multiple_of_30(double degrees) {
  double reduced = std::fmod(degrees, 360.0);
  if (reduced < 0.0) reduced += 360.0;
  const double k = reduced / 30.0;
  if (k != std::floor(k)) return -1;
  return static_cast<int>(k) % 12;
}

Point unit(const Point& v) {
  const double n = norm(v);
  return {v[0] / n, v[1] / n, v[2] / n};
}

}  // namespace

double sin_deg(double degrees) {
  const int k = multiple_of_30(degrees);
  return k >= 0 ? sin_of_multiple(k) : std::sin(degrees * kDegree);
}

double cos_deg(double degrees) {
  const int k = multiple_of_30(degrees);
  return k >= 0 ? sin_of_multiple((k + 3) % 12) : std::cos(degrees * kDegree);
}

std::array<Point, 3> pyramid(const Point& apex, double r, double bond_angle, bool up,
                             double azimuth) {
  // Two bonds at the angle θ are 2r·sin(θ/2) apart, and three such end points
  // form an equilateral triangle of circumradius 2r·sin(θ/2)/√3 about the axis.
  const double radius = std::min(2.0 * r * sin_deg(bond_angle / 2.0) / std::sqrt(3.0), r);
  const double height = std::sqrt(std::max(r * r - radius * radius, 0.0));
  const double dz = up ? height : -height;
  std::array<Point, 3> ends{};
  for (int k = 0; k < 3; ++k) {
    const double phi = azimuth + 120.0 * k;
    ends[static_cast<std::size_t>(k)] = {apex[0] + radius * cos_deg(phi),
                                         apex[1] + radius * sin_deg(phi), apex[2] + dz};
  }
  return ends;
}

Point place(const Point& a, const Point& b, const Point& c, double r, double angle,
            double dihedral) {
  // Local frame at c: e1 along b→c, n normal to the plane (a, b, c), m = n × e1
  // in that plane, pointing from the line b–c towards a's side.
  const Point e1 = unit(points::minus(c, b));
  const Point n = unit(cross(points::minus(b, a), e1));
  const Point m = cross(n, e1);
  const double along = -r * cos_deg(angle);
  const double in_plane = r * sin_deg(angle) * cos_deg(dihedral);
  const double normal = r * sin_deg(angle) * sin_deg(dihedral);
  Point d{};
  for (std::size_t i = 0; i < 3; ++i) {
    d[i] = c[i] + along * e1[i] + in_plane * m[i] + normal * n[i];
  }
  return d;
}

}  // namespace norvik::geometry
