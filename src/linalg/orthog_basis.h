// Canonical orthogonalisation of an atomic basis: the transformation X with
// Xᵀ·S·X = I over the overlap eigenvectors whose eigenvalues reach a threshold,
// and the number of such independent combinations.
#pragma once

#include "linalg/matrix.h"

namespace norvik::linalg {

// s: N×N overlap (not changed).  x: N×N; columns 0 … count-1 receive
// U_i/√λ_i for the overlap eigenvalues λ_1 ≥ λ_2 ≥ … taken in descending order
// until the first one below `threshold` (equal is kept); the other columns are
// zeroed.  Returns the count.  An N below 1, or a failed eigen-solver, throws
// norvik::Error with the message lines.  A threshold ≤ 0 keeps null (or
// negative) eigenvalues, whose columns come out infinite (or NaN): choosing a
// positive threshold is the caller's part.
int orthogonalize_basis(ConstMatrixView s, double threshold, MatrixView x);

}  // namespace norvik::linalg
