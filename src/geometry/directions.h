// The geometry optimiser's building blocks: search directions, the step along
// a direction, and the parabola fitted through three energies of a line search.
//
// Every vector over the nuclei is a (3, N) array, column-major, one column of
// x y z per atom: coordinates in Å, gradients in eV/Å.  The directions are not
// normalised, so a step along d scales with the length of the gradient and the
// probe step has the unit Å²/eV.
#pragma once

#include <span>

namespace norvik::geometry {

// How a new direction d is made from the gradient g, the previous gradient
// g_old and the previous direction d.  Every conjugate rule is d = −g + β·d;
// when the denominator of β is exactly zero (g_old = 0 before the first
// gradient, in particular) the rule falls back to d = −g.
enum class DirectionRule {
  steepest_descent,     // d = −g
  polak_ribiere,        // β = g·(g − g_old) / (g_old·g_old)
  polak_ribiere_reset,  // β = max(0, g·(g − g_old) / (g_old·g_old))
  fletcher_reeves,      // β = (g·g) / (g_old·g_old)
  hestenes_stiefel,     // β = g·(g − g_old) / ((g − g_old)·d)
  dai_yuan,             // β = (g·g) / ((g − g_old)·d)
};

// Replaces d by the new direction; g, g_old and d have the same length (3N).
void update_direction(DirectionRule rule, std::span<const double> g, std::span<const double> g_old,
                      std::span<double> d);

// One step along d: saved ← x, then x ← x + step·d.
void descent(std::span<const double> d, double step, std::span<double> saved, std::span<double> x);

// The parabola through the energies e0, ea, eb at the distances 0, s and 2s
// along a direction.
struct QuadraticFit {
  double extra = 0.0;   // distance from the point at 2s to the vertex, never negative
  bool fitted = false;  // false: the curvature did not stand out of the noise
};

// Fits the parabola when its second difference e0 + eb − 2ea exceeds
// 2·threshold (the threshold being twice the energy noise of one point);
// otherwise returns `fallback` with fitted = false.
QuadraticFit fit_parabola(double threshold, double s, double e0, double ea, double eb,
                          double fallback);

// The fits after the points 2, 4, 8 and 16 of an exploration with probe step h
// (s = h, 2h, 4h, 8h); each falls back to the plain probe step h, that is s,
// s/2, s/4 and s/8.
QuadraticFit fit_after_point2(double threshold, double s, double e0, double ea, double eb);
QuadraticFit fit_after_point4(double threshold, double s, double e0, double ea, double eb);
QuadraticFit fit_after_point8(double threshold, double s, double e0, double ea, double eb);
QuadraticFit fit_after_point16(double threshold, double s, double e0, double ea, double eb);

}  // namespace norvik::geometry
