// Pointwise values and gradients of normalised primitive real solid-harmonic
// Gaussians
//
//   g_lm(r) = P_lm(d) exp(-alpha R^2) / sqrt(k_lm sqrt(pi^3 / (8 alpha^(2l+3)))),
//
// d = r - A, R^2 = |d|^2, for the densities on the integration grid and for plots.
// P_lm is a homogeneous polynomial of degree l with small integer coefficients
// and k_lm its normalising weight: the integral of P_lm^2 exp(-2 alpha R^2) is
// k_lm sqrt(pi^3 / (8 alpha^(2l+3))), so that every g_lm has unit norm.
// Served: l = 0 ... 3 with m = -l ... l, the d companion (2, 10) = r^2 and the
// f companions (3, 10), (3, 11), (3, 12) = x r^2, y r^2, z r^2.  The d set
// matches the basis functions of the basis library (xy, yz, 2z^2 - x^2 - y^2,
// xz, x^2 - y^2 for m = -2 ... 2, up to their positive normalising factors).
#pragma once

#include <array>
#include <span>

#include "integrals/one/primitives.h"

namespace norvik::integrals::one {

inline constexpr double kPiCubed = 31.006276680299816;

// Beyond alpha R^2 = 100 (strictly) the value and gradient are exactly zero.
inline constexpr double kPgfCutoff = 100.0;

// One served (l, m): its polynomial as at most three monomials with their
// coefficients, and the normalising weight k_lm derived from them.
struct SolidHarmonic {
  int l = 0;
  int m = 0;
  int nterm = 0;
  std::array<Lmn, 3> lmn{};
  std::array<double, 3> coef{};
  double k = 0.0;
};

// All served functions, in the order (0,0), (1,-1..1), (2,-2..2), (2,10),
// (3,-3..3), (3,10..12).
std::span<const SolidHarmonic> solid_harmonics();

// The function (l, m); an l outside 0 ... 3 or an m that l does not serve is
// fatal with the messages of the pointwise routine.
const SolidHarmonic& solid_harmonic(int l, int m);

// Value of the normalised primitive (l, m) at `point`.
double pgf_value(int l, int m, double alpha, const Vec3& centre, const Vec3& point);

// Its derivatives with respect to the coordinates of `point` (the derivatives
// with respect to the centre are their negatives); zero beyond the cut-off.
Vec3 pgf_gradient(int l, int m, double alpha, const Vec3& centre, const Vec3& point);

}  // namespace norvik::integrals::one
