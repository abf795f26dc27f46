// Householder reduction of a symmetric matrix to tridiagonal form, A = Q·T·Qᵀ,
// and the application of Q to a set of vectors.
#pragma once

#include <span>

#include "linalg/matrix.h"

namespace norvik::linalg {

// Reduces the n×n symmetric A (both triangles given) to tridiagonal form.  On
// return d (n) holds the diagonal of T, e (n-1) its sub-diagonal, and A below its
// sub-diagonal and tau (n-1) hold the Householder reflectors
// H_i = I − tau_i·v_i·v_iᵀ with v_i = (0 … 0, 1, A(i+2:n, i)), the 1 at row i+1,
// such that Q = H_0·H_1 ⋯ H_{n-2}.  The rest of A is overwritten.
void tridiagonalize(MatrixView a, std::span<double> d, std::span<double> e, std::span<double> tau);

// Z ← Q·Z for the Q that tridiagonalize left in (a, tau); Z has n rows.
void apply_q(ConstMatrixView a, std::span<const double> tau, MatrixView z);

}  // namespace norvik::linalg
