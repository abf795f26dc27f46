#include "geometry/directions.h"

#include <algorithm>
#include <cstddef>

namespace norvik::geometry {

namespace {

double dot(std::span<const double> a, std::span<const double> b) {
  double sum = 0.0;
  for (std::size_t i = 0; i < a.size(); ++i) sum += a[i] * b[i];
  return sum;
}

// g·(g − g_old) and (g − g_old)·d without a work array.
double dot_change(std::span<const double> v, std::span<const double> g,
                  std::span<const double> g_old) {
  double sum = 0.0;
  for (std::size_t i = 0; i < g.size(); ++i) sum += v[i] * (g[i] - g_old[i]);
  return sum;
}

struct Ratio {
  double numerator;
  double denominator;
};

Ratio beta_of(DirectionRule rule, std::span<const double> g, std::span<const double> g_old,
              std::span<const double> d) {
  switch (rule) {
    case DirectionRule::polak_ribiere:
    case DirectionRule::polak_ribiere_reset:
      return {dot_change(g, g, g_old), dot(g_old, g_old)};
    case DirectionRule::fletcher_reeves:
      return {dot(g, g), dot(g_old, g_old)};
    case DirectionRule::hestenes_stiefel:
      return {dot_change(g, g, g_old), dot_change(d, g, g_old)};
    case DirectionRule::dai_yuan:
      return {dot(g, g), dot_change(d, g, g_old)};
    case DirectionRule::steepest_descent:
      break;
  }
  return {0.0, 0.0};
}

}  // namespace

void update_direction(DirectionRule rule, std::span<const double> g, std::span<const double> g_old,
                      std::span<double> d) {
  const Ratio r = beta_of(rule, g, g_old, d);
  if (r.denominator == 0.0) {
    for (std::size_t i = 0; i < g.size(); ++i) d[i] = -g[i];
    return;
  }
  double beta = r.numerator / r.denominator;
  if (rule == DirectionRule::polak_ribiere_reset) beta = std::max(0.0, beta);
  for (std::size_t i = 0; i < g.size(); ++i) d[i] = -g[i] + beta * d[i];
}

void descent(std::span<const double> d, double step, std::span<double> saved, std::span<double> x) {
  std::copy(x.begin(), x.end(), saved.begin());
  for (std::size_t i = 0; i < x.size(); ++i) x[i] += step * d[i];
}

QuadraticFit fit_parabola(double threshold, double s, double e0, double ea, double eb,
                          double fallback) {
  const double c = 2.0 * eb + 2.0 * e0 - 4.0 * ea;
  if (c > 4.0 * threshold) {
    // The vertex lies at s·(3e0 + eb − 4ea)/c from the start; the current
    // point is at 2s.  A vertex behind it gives a zero step.
    return {std::max(0.0, s * (3.0 * e0 + eb - 4.0 * ea) / c - 2.0 * s), true};
  }
  return {fallback, false};
}

QuadraticFit fit_after_point2(double threshold, double s, double e0, double ea, double eb) {
  return fit_parabola(threshold, s, e0, ea, eb, s);
}
QuadraticFit fit_after_point4(double threshold, double s, double e0, double ea, double eb) {
  return fit_parabola(threshold, s, e0, ea, eb, s / 2.0);
}
QuadraticFit fit_after_point8(double threshold, double s, double e0, double ea, double eb) {
  return fit_parabola(threshold, s, e0, ea, eb, s / 4.0);
}
QuadraticFit fit_after_point16(double threshold, double s, double e0, double ea, double eb) {
  return fit_parabola(threshold, s, e0, ea, eb, s / 8.0);
}

}  // namespace norvik::geometry
