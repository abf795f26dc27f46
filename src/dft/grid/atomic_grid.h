// Atomic grid templates: 50 Euler–Maclaurin radial shells of an element, each
// with a Lebedev angular rule whose size depends on the shell (pruning).
//
// A template lies around an atom at the origin.  Points are (3, n), x, y, z of
// each point contiguous, in the unit of the base radius (the interface passes
// ångström); weights (n) include the radial factor 4π r² dr/di.  Shells run in
// increasing i, the points of a shell in the order of its Lebedev rule.
#pragma once

#include <span>

namespace norvik::dft {

// Elements with a template: Z = 1 … 54.
inline constexpr int kGridMaxZ = 54;
// Radial shells of every template.
inline constexpr int kRadialShells = 50;

// Points of the element's template: 3720 (H, He), 3816 (Li–Ne), 3760
// (Na–Ar), 5476 (K–Kr), 9700 (Rb–Xe).  Z outside 1 … 54 throws with
// "ZiAt exceed the limit in nsmpl_atom.".
int points_per_atom(int z);

// The element's radius factor f(Z): its radial scale is R0 · f(Z).
double radius_factor(int z);

// The template of a row, for the scaled radius R = R0 · f(Z): `npoints` is
// 3720, 3816, 3760, 5476 or 9700 (the generator of that row).  `points` holds
// 3·npoints, `weights` npoints.
void row_template(int npoints, double radius, std::span<double> points, std::span<double> weights);

// The template of element Z for the base radius R0.  Z outside 1 … 54 throws
// with "ZiAt exceed the limit in grid_atom.".
void atomic_template(int z, double r0, std::span<double> points, std::span<double> weights);

// The dense templates: more Euler–Maclaurin shells (100 up to neon, 150
// beyond) and larger Lebedev rules (up to 770 points) on the same radial
// scale, for converged energies.  Points of element Z's dense template: 29780
// up to neon, 45276 beyond; Z outside 1 … 54 throws as points_per_atom does.
int dense_points_per_atom(int z);

// The dense template of element Z for the base radius R0 (as
// atomic_template).
void dense_template(int z, double r0, std::span<double> points, std::span<double> weights);

}  // namespace norvik::dft
