#include "dft/grid/lebedev.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/error.h"
#include "dft/grid/lebedev_data.h"

namespace norvik::dft {

namespace {

namespace data = lebedev_data;

// A fatal message as it is printed: a blank line, the routine's line, the reason.
[[noreturn]] void fatal(const char* routine, const char* reason) {
  throw Error(std::vector<std::string>{" ", std::string(routine) + " - Fatal error!", reason});
}

// The base points of each code as indices into (0, a, b, c); slot 0 is a
// structural zero, which takes no sign.
using Base = std::array<int, 3>;
constexpr Base kBases1[] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
constexpr Base kBases2[] = {{0, 1, 1}, {1, 0, 1}, {1, 1, 0}};
constexpr Base kBases3[] = {{1, 1, 1}};
constexpr Base kBases4[] = {{1, 1, 2}, {1, 2, 1}, {2, 1, 1}};
constexpr Base kBases5[] = {{1, 2, 0}, {2, 1, 0}, {1, 0, 2}, {2, 0, 1}, {0, 1, 2}, {0, 2, 1}};
constexpr Base kBases6[] = {{1, 2, 3}, {1, 3, 2}, {2, 1, 3}, {2, 3, 1}, {3, 1, 2}, {3, 2, 1}};

std::span<const Base> bases_of(int code) {
  switch (code) {
    case 1:
      return kBases1;
    case 2:
      return kBases2;
    case 3:
      return kBases3;
    case 4:
      return kBases4;
    case 5:
      return kBases5;
    case 6:
      return kBases6;
    default:
      return {};
  }
}

void require_room(const RuleArrays& out, std::size_t points) {
  if (out.x.size() < points || out.y.size() < points || out.z.size() < points ||
      out.w.size() < points) {
    throw std::length_error("Lebedev rule arrays shorter than the rule");
  }
}

const data::Rule* find_rule(int points) {
  const auto it = std::find_if(data::kRules.begin(), data::kRules.end(),
                               [points](const data::Rule& r) { return r.points == points; });
  return it == data::kRules.end() ? nullptr : &*it;
}

// The 0-based table slot of a rule index, or the ORDER_TABLE/PRECISION_TABLE error.
std::size_t index_slot(int rule, const char* routine) {
  if (rule < 1) fatal(routine, "  RULE < 1.");
  if (rule > data::kRuleIndices) fatal(routine, "  RULE_MAX < RULE.");
  return static_cast<std::size_t>(rule - 1);
}

}  // namespace

int orbit_size(int code) noexcept {
  static constexpr std::array<int, 7> kSize = {0, 6, 12, 8, 24, 24, 48};
  return code >= 1 && code <= 6 ? kSize[static_cast<std::size_t>(code)] : 0;
}

int generate_orbit(int code, double& a, double& b, double v, const RuleArrays& out) {
  double c = 0.0;
  switch (code) {
    case 1:
      a = 1.0;
      break;
    case 2:
      a = std::sqrt(0.5);
      break;
    case 3:
      a = std::sqrt(1.0 / 3.0);
      break;
    case 4:
      b = std::sqrt(1.0 - 2.0 * a * a);
      break;
    case 5:
      b = std::sqrt(1.0 - a * a);
      break;
    case 6:
      c = std::sqrt(1.0 - a * a - b * b);
      break;
    default:
      fatal("GEN_OH", "  Illegal value of CODE.");
  }
  const auto size = static_cast<std::size_t>(orbit_size(code));
  require_room(out, size);
  const std::array<double, 4> value = {0.0, a, b, c};
  std::size_t k = 0;
  for (const Base& base : bases_of(code)) {
    // The components that take a sign; the first of them changes sign fastest.
    std::array<std::size_t, 3> signed_axes{};
    std::size_t nsigned = 0;
    for (std::size_t i = 0; i < 3; ++i) {
      if (base[i] != 0) signed_axes[nsigned++] = i;
    }
    for (unsigned pattern = 0; pattern < (1u << nsigned); ++pattern, ++k) {
      std::array<double, 3> p = {value[static_cast<std::size_t>(base[0])],
                                 value[static_cast<std::size_t>(base[1])],
                                 value[static_cast<std::size_t>(base[2])]};
      for (std::size_t s = 0; s < nsigned; ++s) {
        if (pattern & (1u << s)) p[signed_axes[s]] = -p[signed_axes[s]];
      }
      out.x[k] = p[0];
      out.y[k] = p[1];
      out.z[k] = p[2];
      out.w[k] = v;
    }
  }
  return static_cast<int>(size);
}

void tabulated_rule(int points, const RuleArrays& out) {
  const data::Rule* rule = find_rule(points);
  if (rule == nullptr) fatal("LD_BY_ORDER", "  Unexpected value of ORDER.");
  require_room(out, static_cast<std::size_t>(points));
  std::size_t n = 0;
  for (const data::Orbit& orbit : rule->orbits) {
    double a = orbit.a;
    double b = orbit.b;
    n += static_cast<std::size_t>(generate_orbit(orbit.code, a, b, orbit.v, out.from(n)));
  }
}

void lebedev(int points, const RuleArrays& out) {
  if (points != 6) {
    tabulated_rule(points, out);
    return;
  }
  double a = 0.0;
  double b = 0.0;
  generate_orbit(1, a, b, 1.0 / 6.0, out);
}

void lebedev_rule(int points, std::span<double> xyz, std::span<double> w) {
  const std::size_t n = points > 0 ? static_cast<std::size_t>(points) : 0;
  if (xyz.size() < 3 * n) throw std::length_error("Lebedev point array shorter than the rule");
  std::vector<double> x(n), y(n), z(n);
  lebedev(points, {x, y, z, w});
  for (std::size_t k = 0; k < n; ++k) {
    xyz[3 * k] = x[k];
    xyz[3 * k + 1] = y[k];
    xyz[3 * k + 2] = z[k];
  }
}

int rule_available(int rule) noexcept {
  if (rule < 1 || rule > data::kRuleIndices) return -1;
  return data::kAvailable[static_cast<std::size_t>(rule - 1)];
}

int rule_points(int rule) {
  return data::kOrder[index_slot(rule, "ORDER_TABLE")];
}

int rule_precision(int rule) {
  return data::kPrecision[index_slot(rule, "PRECISION_TABLE")];
}

PolarAngles xyz_to_tp(double x, double y, double z) noexcept {
  // Degrees with this value of π, as the angles have always been converted.
  constexpr double kPi = 3.141592653589793;
  const double rho2 = x * x + y * y;
  const double azimuth = rho2 == 0.0 ? std::acos(x) : std::acos(x / std::sqrt(rho2));
  PolarAngles angles{std::acos(z) * 180.0 / kPi, azimuth * 180.0 / kPi};
  if (y < 0.0) angles.phi = -angles.phi;
  return angles;
}

}  // namespace norvik::dft
