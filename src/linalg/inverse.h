// Inverse of a general square matrix.
#pragma once

#include "linalg/matrix.h"
#include "linalg/status.h"

namespace norvik::linalg {

// Replaces the n×n A by its inverse (Gauss–Jordan elimination with partial
// pivoting).  Fails with `singular`, A then undefined, when a pivot is no larger
// than n·(machine epsilon) times the largest element of A.
[[nodiscard]] Status invert(MatrixView a);

}  // namespace norvik::linalg
