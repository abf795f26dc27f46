// Symmetric indefinite systems A·x = b by Bunch–Kaufman diagonal pivoting:
// P·A·Pᵀ = L·D·Lᵀ with L unit lower triangular and D block diagonal with 1×1 and
// 2×2 blocks.  The DIIS equations (a bordered Gram matrix) are the typical use.
#pragma once

#include <span>

#include "linalg/matrix.h"
#include "linalg/status.h"

namespace norvik::linalg {

// Pivot record of the decomposition, 0-based, one entry per row k:
//   pivots[k] = p >= 0      a 1×1 block at k; rows and columns k and p were interchanged;
//   pivots[k] = pivots[k+1] = -p-1 < 0
//                           a 2×2 block at k, k+1; rows and columns k+1 and p were
//                           interchanged.
// The interchanges are applied step by step, as the factorisation went.

// Factorises the n×n symmetric A in place (only its lower triangle is read and
// written): D on the diagonal and first sub-diagonal, L below.  Fails with
// `singular` when a whole pivot column is zero to working precision (no larger
// than machine epsilon times the largest element of A).
[[nodiscard]] Status bunch_kaufman_factor(MatrixView a, std::span<int> pivots);

// Solves A·x = b with the factors; b is overwritten by x.
void bunch_kaufman_solve(ConstMatrixView factors, std::span<const int> pivots, std::span<double> b);

// Interchanges rows and columns i and j of a symmetric matrix held whole.
void interchange(MatrixView a, Index i, Index j);

}  // namespace norvik::linalg
