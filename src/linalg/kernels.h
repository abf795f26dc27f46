// The level-2 and level-3 building blocks of the dense solvers: matrix products,
// matrix-vector products and triangular solves over column-major views.
//
// The products run as OpenMP loops over independent blocks of the result, and
// each element of a result is summed in an order that depends only on the
// shapes, never on the number of threads: the same input gives the same bits
// on any thread count.
#pragma once

#include <span>

#include "linalg/matrix.h"

namespace norvik::linalg {

enum class Op { none, transpose };

// C = alpha·op(A)·op(B) + beta·C.  C is m×n, op(A) m×k, op(B) k×n.  With
// beta = 0 the old C is not read (it may hold anything, NaN included).
void gemm(Op op_a, Op op_b, double alpha, ConstMatrixView a, ConstMatrixView b, double beta,
          MatrixView c);

// y = alpha·op(A)·x + beta·y.  With beta = 0 the old y is not read.
void gemv(Op op_a, double alpha, ConstMatrixView a, std::span<const double> x, double beta,
          std::span<double> y);

// Solves op(L)·X = B in place of B, L lower triangular with a nonzero diagonal
// (only its lower triangle is read).  B is n×nrhs.
void solve_lower(Op op_l, ConstMatrixView l, MatrixView b);

// True when a loop of `work` multiply-adds is worth a team of threads: large
// enough, and not already inside a parallel region (the callers' own parallel
// loops, such as the two spins of an SCF step, run the kernels single-threaded).
bool parallel_pays(double work);

// x·y over n elements (a fixed summation order).
double dot(const double* x, const double* y, Index n);

// Euclidean norm of n elements, safe from overflow and underflow.
double norm2(const double* x, Index n);

}  // namespace norvik::linalg
