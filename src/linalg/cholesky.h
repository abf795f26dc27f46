// Cholesky factorisation A = L·Lᵀ of a symmetric positive-definite matrix.
#pragma once

#include "linalg/matrix.h"
#include "linalg/status.h"

namespace norvik::linalg {

// Factorises the n×n A in place: on success its lower triangle holds L and its
// strict upper triangle is zeroed.  Only the lower triangle of A is read.  A
// pivot (the diagonal of the Schur complement) that is not above
// max(tolerance, machine epsilon) times the original diagonal element makes the
// matrix count as not positive definite; A is then left partly factorised.
[[nodiscard]] Status cholesky(MatrixView a, double tolerance);

}  // namespace norvik::linalg
