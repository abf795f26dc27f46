// The Roothaan equations F·C = S·C·ε of one spin, posed in the full basis or in
// the orthogonalised basis of the canonical orthogonalisation.
//
// All three return the orbital energies in ascending order with the orbitals in
// the matching columns of c (n×n).  They throw norvik::Error with the lines that
// the exported routines print when they fail.
#pragma once

#include <span>

#include "linalg/matrix.h"

namespace norvik::linalg {

// Chooses the full-basis solver when northo equals n, the orthogonalised one when
// it is smaller; a northo above n is an invalid orthogonalisation.  s is the
// overlap matrix, x the orthogonalising matrix (its first northo columns).
void solve_roothaan(ConstMatrixView f, ConstMatrixView s, ConstMatrixView x, int northo, int spin,
                    std::span<double> levels, MatrixView c);

// F·C = S·C·ε directly.  `spin` (1 alpha, 2 beta) only labels the NaN message.
void solve_roothaan_full(ConstMatrixView f, ConstMatrixView s, int spin, std::span<double> levels,
                         MatrixView c);

// (Xᵀ·F·X)·C′ = C′·ε in the space of the first northo columns of X, then C = X·C′.
// Only the first northo levels and orbitals exist; the others are set to zero.
void solve_roothaan_orthogonal(ConstMatrixView f, ConstMatrixView x, int northo,
                               std::span<double> levels, MatrixView c);

}  // namespace norvik::linalg
