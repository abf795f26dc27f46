// Dense symmetric eigenproblems: the standard problem A·v = λ·v and the
// generalised symmetric-definite problem A·v = λ·B·v (the Roothaan equations
// F·C = S·C·ε are one).
//
// Method: Householder reduction to tridiagonal form, divide and conquer on the
// tridiagonal matrix, back-transformation of the vectors.  Eigenvectors are
// orthonormal (B-orthonormal for the generalised problem) also for degenerate
// eigenvalues, and each is signed so that its component of largest magnitude is
// positive (the first such component when several tie to 1e-10).
#pragma once

#include <span>

#include "linalg/matrix.h"
#include "linalg/sort.h"
#include "linalg/status.h"

namespace norvik::linalg {

struct EigenOptions {
  // Relative tolerance of the deflation and convergence tests; values below
  // machine precision are raised to it.
  double tolerance = kMachineEpsilon;
  Order order = Order::ascending;
};

// a: n×n symmetric, both triangles given (the symmetric part (A + Aᵀ)/2 is what
// is solved); overwritten.  w: n eigenvalues.
// v: n×n, eigenvector i in column i (v may not alias a).
[[nodiscard]] Status symmetric_eigen(MatrixView a, std::span<double> w, MatrixView v,
                                     const EigenOptions& options = {});

// a, b: n×n symmetric (their symmetric parts are used), b positive definite; both
// overwritten (b by its Cholesky
// factor).  The vectors satisfy Vᵀ·B·V = I.  Fails with not_positive_definite
// when the Cholesky factorisation of b does (with options.tolerance as its pivot
// tolerance).
[[nodiscard]] Status generalized_eigen(MatrixView a, MatrixView b, std::span<double> w,
                                       MatrixView v, const EigenOptions& options = {});

}  // namespace norvik::linalg
