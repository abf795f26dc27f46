/* norvik: exported routines of the linalg subsystem (see norvik.h for the convention).
 *
 * Dense kernels, the Roothaan eigen-solver dispatcher and the orthogonalisation of
 * the basis.  Matrices are column-major doubles; "(lda, n)" is an array of n
 * columns whose columns are lda doubles apart, of which the first n rows are used.
 *
 * Status argument `ill` of the kernels: 0 success, otherwise
 *   1  an order below 1 or a leading dimension below the order (or a bad pivot record)
 *   2  an infinity or a NaN in the input
 *   3  not positive definite: a Cholesky pivot not above tol·(its diagonal element)
 *   4  the tridiagonal QL/QR iteration did not converge
 *   5  singular: a pivot of MINVD or SDECD/BUNCHD vanished to working precision
 * The kernels print nothing and never stop the process; the outputs are undefined
 * when `ill` is not 0.  Tolerances below the kernels' machine precision 2e-16 are
 * raised to it. */
#ifndef NORVIK_LINALG_H
#define NORVIK_LINALG_H

#include "norvik/export.h"

NORVIK_EXTERN_C_BEGIN

/* Standard symmetric eigenproblem A·v = λ·v: Householder tridiagonalisation, then
 * divide and conquer with QL iteration on small blocks.
 *   a    in, destroyed  (lda, n) symmetric, both triangles given
 *   n    in             order
 *   lda  in             leading dimension of a and of v
 *   e    out            (n) eigenvalues in descending order
 *   v    out            (lda, n) orthonormal eigenvectors, column i belonging to e(i);
 *                       each signed so that its largest component is positive
 *   tol  in             relative convergence tolerance
 *   ill  out            status (above) */
NORVIK_API void HOQRVD(double* a, const norvik_int* n, const norvik_int* lda, double* e, double* v,
                       const double* tol, norvik_int* ill);
/* As HOQRVD with the variant flag set: the eigenvalues come in ascending order. */
NORVIK_API void HOQRUD(double* a, const norvik_int* n, const norvik_int* lda, double* e, double* v,
                       const double* tol, norvik_int* ill);

/* Generalised symmetric-definite eigenproblem A·v = λ·B·v through the Cholesky
 * factor B = L·Lᵀ: the standard problem of L⁻¹·A·L⁻ᵀ, vectors back-transformed.
 *   a    in, destroyed  (lda, n) symmetric, both triangles given
 *   b    in, destroyed  (lda, n) symmetric positive definite; returns L in its lower
 *                       triangle (strict upper triangle zeroed)
 *   n, lda              order and leading dimension of a, b and v
 *   e    out            (n) eigenvalues in descending order
 *   v    out            (lda, n) eigenvectors with Vᵀ·B·V = I, column i for e(i)
 *   tol  in             Cholesky pivot tolerance and convergence tolerance
 *   ill  out            status; 3 when B is not positive definite */
NORVIK_API void GHQRVD(double* a, double* b, const norvik_int* n, const norvik_int* lda, double* e,
                       double* v, const double* tol, norvik_int* ill);
/* As GHQRVD with the variant flag set: the eigenvalues come in ascending order. */
NORVIK_API void GHQRUD(double* a, double* b, const norvik_int* n, const norvik_int* lda, double* e,
                       double* v, const double* tol, norvik_int* ill);

/* Cholesky factorisation A = L·Lᵀ of a symmetric positive-definite matrix.
 *   a     in/out  (lda, n); the lower triangle is read; returns L in the lower
 *                 triangle and zeros in the strict upper triangle
 *   n, lda in     order and leading dimension
 *   work  out     (n) the reciprocals 1/L(i,i)
 *   tol   in      a pivot not above tol·A(j,j) makes the matrix not positive definite
 *   ill   out     status; 3 when not positive definite (a then partly factorised) */
NORVIK_API void CHOLFD(double* a, const norvik_int* n, const norvik_int* lda, double* work,
                       const double* tol, norvik_int* ill);

/* Symmetric indefinite system A·x = b by Bunch–Kaufman diagonal pivoting
 * (SDECD then SSOLD).
 *   a    in, destroyed  (n, n) symmetric; the lower triangle is read; returns the
 *                       factors as SDECD does
 *   n    in             order
 *   b    in/out         (n) right-hand side in, solution out
 *   ill  out            status; 5 when A is singular */
NORVIK_API void BUNCHD(double* a, const norvik_int* n, double* b, norvik_int* ill);
/* Decomposition P·A·Pᵀ = L·D·Lᵀ, L unit lower triangular, D block diagonal with 1×1
 * and 2×2 blocks; rows and columns interchanged as ICHGD does.
 *   a     in/out  (n, n) symmetric; the lower triangle is read; returns D on the
 *                 diagonal and first sub-diagonal (2×2 blocks) and L below it
 *   n     in      order
 *   ipiv  out     (n) pivot record, 1-based: ipiv(k) = p > 0 for a 1×1 block at k
 *                 after interchanging k and p; ipiv(k) = ipiv(k+1) = -p for a 2×2
 *                 block at k, k+1 after interchanging k+1 and p
 *   ill   out     status; 5 when a pivot column vanishes (no larger than 2e-16 times
 *                 the largest element of A) */
NORVIK_API void SDECD(double* a, const norvik_int* n, norvik_int* ipiv, norvik_int* ill);
/* Solution of A·x = b from the SDECD factors.
 *   a     in      (n, n) factors from SDECD
 *   n     in      order
 *   ipiv  in      (n) pivot record from SDECD
 *   b     in/out  (n) right-hand side in, solution out
 *   ill   out     status; 1 for a malformed pivot record */
NORVIK_API void SSOLD(const double* a, const norvik_int* n, const norvik_int* ipiv, double* b,
                      norvik_int* ill);
/* Interchanges rows i and j and columns i and j (1-based) of the (n, n) symmetric a
 * held whole; indices outside 1 … n leave a unchanged. */
NORVIK_API void ICHGD(double* a, const norvik_int* n, const norvik_int* i, const norvik_int* j);

/* Inverse of a general square matrix by Gauss–Jordan elimination with partial pivoting.
 *   a     in/out  (lda, n) matrix in, inverse out
 *   n, lda in     order and leading dimension
 *   ill   out     status; 5 when a pivot is no larger than n·2e-16·max|A(i,j)| */
NORVIK_API void MINVD(double* a, const norvik_int* n, const norvik_int* lda, norvik_int* ill);

/* Eigenvalues of a symmetric tridiagonal (= symmetric Hessenberg) matrix by implicit
 * QL iteration with Wilkinson shifts, sorted into descending order as SORTDK does.
 *   d    in/out     (n) diagonal in, eigenvalues out
 *   e    in, destroyed (n-1) sub-diagonal: e(i) couples rows i and i+1
 *   n    in         order
 *   tol  in         relative size below which an off-diagonal element is negligible
 *   ill  out        status; 4 when an eigenvalue takes more than 50 sweeps */
NORVIK_API void HQRIID(double* d, double* e, const norvik_int* n, const double* tol,
                       norvik_int* ill);
/* As HQRIID, with the rotations accumulated into v and the result sorted into
 * descending order with its columns as SRTVDD does.
 *   v    in/out  (ldv, n): in, the orthogonal matrix that reduced a full matrix to the
 *                tridiagonal one (the identity for the tridiagonal matrix's own
 *                eigenvectors); out, the eigenvectors, column i for d(i)
 *   ldv  in      leading dimension of v */
NORVIK_API void HEQRVD(double* d, double* e, const norvik_int* n, double* v, const norvik_int* ldv,
                       const double* tol, norvik_int* ill);

/* Sorts into descending order, stably (equal values keep their order; NaNs last).
 *   SORTDK: v (n).
 *   SORTDI: v (n) with the integer companion idx (n) moved alike.
 *   SRTVDD: v (n) with the columns of the (n, n) matrix z moved alike. */
NORVIK_API void SORTDK(double* v, const norvik_int* n);
NORVIK_API void SORTDI(double* v, norvik_int* idx, const norvik_int* n);
NORVIK_API void SRTVDD(double* v, double* z, const norvik_int* n);

/* Roothaan equations F·C = S·C·ε for one spin.  SPLEVEL dispatches on northo: equal
 * to nbasis, SPLEVEL_GHQR; smaller, SPLEVEL_ORTH; larger, prints "Invalid
 * orthogonalization." with northo and stops.
 *   f       in   (nbasis, nbasis) Fock matrix of the spin, eV, symmetric
 *   s       in   (nbasis, nbasis) overlap matrix
 *   x       in   (nbasis, nbasis) orthogonalising matrix of ORTHOG_BASIS; its first
 *                northo columns are used
 *   nbasis  in   number of basis functions
 *   northo  in   number of independent combinations (ORTHOG_BASIS's nIndependent)
 *   ispin   in   1 alpha, 2 beta; printed in the NaN message of SPLEVEL_GHQR
 *   eig     out  (nbasis) orbital energies, eV, ascending
 *   c       out  (nbasis, nbasis) orbitals, column k for eig(k), with Cᵀ·S·C = I
 * SPLEVEL_ORTH returns northo levels; eig and the columns of c beyond them are zero.
 * Failures print and stop: "GHQRVD failed in splevel_GHQR."; "NaN is detected in
 * splevel_GHQR." with ispin and the level; "ILL is not zero in splevel_Orth." (also
 * for northo < 1); "NaN is detected in splevel_Orth.". */
NORVIK_API void SPLEVEL(const double* f, const double* s, const double* x, const norvik_int* nbasis,
                        const norvik_int* northo, const norvik_int* ispin, double* eig, double* c);
NORVIK_API void SPLEVEL_GHQR(const double* f, const double* s, const norvik_int* nbasis,
                             const norvik_int* ispin, double* eig, double* c);
NORVIK_API void SPLEVEL_ORTH(const double* f, const double* x, const norvik_int* nbasis,
                             const norvik_int* northo, double* eig, double* c);

/* Canonical orthogonalisation of the basis.
 *   nofbase       in   number of basis functions N
 *   s             in   (N, N) overlap matrix, not changed
 *   threshold     in   smallest overlap eigenvalue kept (a tie is kept)
 *   nindependent  out  number of kept eigenvectors
 *   x             out  (N, N): column i = U(:, i)/√λ_i for the kept eigenvalues in
 *                      descending order; the other columns are zero
 * Failures print and stop: "Wrong NofBase in orthog_basis." with N (N < 1);
 * "ILL is not zero in orthog_basis." with the eigen-solver's status. */
NORVIK_API void ORTHOG_BASIS(const norvik_int* nofbase, const double* s, const double* threshold,
                             norvik_int* nindependent, double* x);

NORVIK_EXTERN_C_END

#endif
