// Eigen-solvers for a symmetric tridiagonal matrix T with diagonal d (n) and
// sub-diagonal e (n-1; e[i] couples rows i and i+1).  Eigenvalues come back in
// d in ascending order; e is destroyed.
#pragma once

#include <span>

#include "linalg/matrix.h"
#include "linalg/status.h"

namespace norvik::linalg {

// Implicit QL iteration with Wilkinson shifts.  When z is not empty (n rows or
// more, n columns... any number of rows) the plane rotations are accumulated
// into its columns: pass the identity for the eigenvectors of T, or the
// orthogonal matrix that reduced a full matrix to T for the full eigenvectors.
// The columns of z are sorted with the eigenvalues.  `tolerance` is the relative
// size below which an off-diagonal element counts as zero (raised to machine
// precision).  Fails with no_convergence after 30 sweeps for one eigenvalue.
[[nodiscard]] Status tridiagonal_ql(std::span<double> d, std::span<double> e, MatrixView z,
                                    double tolerance);

// Cuppen's divide and conquer with the Gu–Eisenstat eigenvectors: the eigen-
// vectors of T go to the n×n q (which need not be initialised).  Small blocks
// are solved by tridiagonal_ql.
[[nodiscard]] Status tridiagonal_divide_conquer(std::span<double> d, std::span<double> e,
                                                MatrixView q, double tolerance);

}  // namespace norvik::linalg
