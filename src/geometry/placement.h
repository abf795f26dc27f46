// Building blocks of the molecule templates: trigonometry in degrees that is
// exact on the angles the templates use for symmetry (multiples of 30°), a
// three-fold pyramid of bonds, and the placement of one atom from a bond, an
// angle and a dihedral angle (one row of a Z-matrix).
#pragma once

#include <array>

#include "common/point_geometry.h"

namespace norvik::geometry {

using points::Point;

// sin and cos of an angle in degrees.  On multiples of 30° they return the
// exact table values (0, ±1/2, ±√3/2, ±1), so that atoms placed at 90°, 210°
// and 330° are exact mirror images and a dihedral of 0° or 180° puts an atom
// exactly in its plane.
double sin_deg(double degrees);
double cos_deg(double degrees);

// Three bonds of length r from `apex` with the angle `bond_angle` between any
// two of them, around the z axis: they point towards +z for `up` and −z
// otherwise, and the first lies at the azimuth `azimuth` (degrees from +x
// towards +y), the others 120° and 240° further.  Bond angles above 120° cannot
// be made three-fold: the bonds are then flat (perpendicular to z) with length r.
std::array<Point, 3> pyramid(const Point& apex, double r, double bond_angle, bool up,
                             double azimuth);

// The atom d with |cd| = r, angle b–c–d = angle and dihedral a–b–c–d = dihedral
// (degrees, the sign convention of points::dihedral).  a, b, c must not be
// collinear.
Point place(const Point& a, const Point& b, const Point& c, double r, double angle,
            double dihedral);

}  // namespace norvik::geometry
