// Lebedev–Laikov angular quadrature: the 32 published octahedral rules on the unit
// sphere (6 to 5810 points, precision 3 to 131), their lookup tables by rule index
// and the conversion of a unit vector to polar angles.
//
// A rule of N points is x(N), y(N), z(N) (unit vectors) and w(N); the weights sum
// to 1, so 4π Σ w f(x, y, z) integrates f over the sphere.  Points come orbit by
// orbit in the published order, each orbit in the order of generate_orbit.  Every
// function writes only into the caller's arrays and may run concurrently.
#pragma once

#include <cstddef>
#include <span>

namespace norvik::dft {

// The caller's arrays of (part of) a rule.
struct RuleArrays {
  std::span<double> x, y, z, w;

  // The arrays from point `first` (0-based) on.
  RuleArrays from(std::size_t first) const {
    return {x.subspan(first), y.subspan(first), z.subspan(first), w.subspan(first)};
  }
};

// Points of the orbit of generator code 1 … 6 (6, 12, 8, 24, 24, 48); 0 for any
// other code.
int orbit_size(int code) noexcept;

// Writes the orbit of `code` from the first element of `out` on, every point with
// weight v, and returns the number of points written.  Codes 1–3 set a to their
// fixed value (1, √(1/2), √(1/3)); codes 4 and 5 take a and set b to √(1 − 2a²),
// resp. √(1 − a²); code 6 takes a and b, c = √(1 − a² − b²).  Point order, with
// the components of each listed base point taking their sign patterns in turn, the
// sign of the first nonzero component changing fastest:
//   1: (a,0,0) (0,a,0) (0,0,a)           4: (a,a,b) (a,b,a) (b,a,a)
//   2: (0,a,a) (a,0,a) (a,a,0)           5: (a,b,0) (b,a,0) (a,0,b) (b,0,a) (0,a,b) (0,b,a)
//   3: (a,a,a)                           6: (a,b,c) (a,c,b) (b,a,c) (b,c,a) (c,a,b) (c,b,a)
// so that code 1 gives (1,0,0), (−1,0,0), (0,1,0), …  A code outside 1 … 6 throws
// "GEN_OH - Fatal error!" / "  Illegal value of CODE.".
int generate_orbit(int code, double& a, double& b, double v, const RuleArrays& out);

// The tabulated rule of `points` points, orbit by orbit as published.  A count
// without a tabulated rule throws "LD_BY_ORDER - Fatal error!" / "  Unexpected value
// of ORDER.".
void tabulated_rule(int points, const RuleArrays& out);

// The rule of `points` points as the grid uses it: the tabulated rule, except that
// the 6-point rule is made with the weight 1/6 itself rather than its tabulated
// 16-digit value.  Same error as tabulated_rule.
void lebedev(int points, const RuleArrays& out);

// lebedev() with the points interleaved: xyz is (3, points), x, y, z of each point
// contiguous; w is (points).
void lebedev_rule(int points, std::span<double> xyz, std::span<double> w);

// Rule index k = 1 … 65 of the family: 1 if it has a tabulated rule, 0 if not, −1
// outside 1 … 65.
int rule_available(int rule) noexcept;

// Points of rule index 1 … 65 (tabulated or not).  Throws "ORDER_TABLE - Fatal
// error!" with "  RULE < 1." or "  RULE_MAX < RULE." outside.
int rule_points(int rule);

// Precision 2·rule + 1 of rule index 1 … 65.  Throws "PRECISION_TABLE - Fatal
// error!" with "  RULE < 1." or "  RULE_MAX < RULE." outside.
int rule_precision(int rule);

// Polar angles of a unit vector in degrees: theta = arccos(z); phi = arccos(x/ρ),
// ρ = √(x² + y²) (arccos(x) when ρ = 0), negated for y < 0.  A vector off the unit
// sphere with |z| > 1 gives a theta that is not a number.
struct PolarAngles {
  double theta;
  double phi;
};
PolarAngles xyz_to_tp(double x, double y, double z) noexcept;

}  // namespace norvik::dft
