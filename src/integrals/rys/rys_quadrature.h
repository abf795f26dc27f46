// Rys roots and weights from the piecewise-polynomial tables.
//
// The Rys rule of order n for the argument X integrates polynomials of degree
// below 2n in u = t^2 against exp(-X t^2) dt on [0, 1]:
//   integral_0^1 f(t^2) exp(-X t^2) dt = sum_i w_i f(u_i).
// Below the table's xmax the roots and weights come from their segment
// polynomials; from xmax on, from the Gauss-Hermite limit.
#pragma once

#include <span>

#include "integrals/rys/rys_grid.h"

namespace norvik::integrals::rys {

// Roots u_i = t_i^2 (ascending) into u[0 .. n-1] and weights into w[0 .. n-1];
// requires 1 <= n <= kMaxRoots (no check: the inner loop of the ERI engine).
void rys_roots_unchecked(double x, int n, double* u, double* w) noexcept;

// The checked form: n > kMaxRoots throws norvik::Error with the line
// "Subroutine rysroot supports up to nroots=13"; n < 1 writes nothing.  The
// spans must hold at least n values.
void rys_roots(double x, int n, std::span<double> u, std::span<double> w);

// The layout of the tables for n roots (1 <= n <= kMaxRoots).
const GridLayout& grid_layout(int n) noexcept;

}  // namespace norvik::integrals::rys
