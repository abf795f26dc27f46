// Exported dense kernels, the Roothaan dispatcher and the basis orthogonalisation.
#include <cstdlib>
#include <span>
#include <vector>

#include "abi/abi_support.h"
#include "linalg/cholesky.h"
#include "linalg/eigen.h"
#include "linalg/inverse.h"
#include "linalg/orthog_basis.h"
#include "linalg/roothaan.h"
#include "linalg/sort.h"
#include "linalg/symmetric_indefinite.h"
#include "linalg/tridiagonal_eigen.h"
#include "norvik/linalg.h"

namespace la = norvik::linalg;
using la::Index;
using norvik::abi::const_matrix;
using norvik::abi::matrix_view;
using norvik::abi::span_of;

namespace {

// The Fortran-style kernels take orders of at least 1 and leading dimensions of
// at least the order.
bool bad_shape(norvik_int n, norvik_int ld) {
  return n < 1 || ld < n;
}

norvik_int standard_eigen(double* a, norvik_int n, norvik_int lda, double* e, double* v, double tol,
                          la::Order order) {
  if (bad_shape(n, lda)) return la::code(la::Status::bad_dimension);
  return la::code(la::symmetric_eigen(matrix_view(a, n, lda), span_of(e, n), matrix_view(v, n, lda),
                                      {.tolerance = tol, .order = order}));
}

norvik_int general_eigen(double* a, double* b, norvik_int n, norvik_int lda, double* e, double* v,
                         double tol, la::Order order) {
  if (bad_shape(n, lda)) return la::code(la::Status::bad_dimension);
  return la::code(la::generalized_eigen(matrix_view(a, n, lda), matrix_view(b, n, lda),
                                        span_of(e, n), matrix_view(v, n, lda),
                                        {.tolerance = tol, .order = order}));
}

norvik_int tridiagonal_eigen(double* d, double* e, norvik_int n, la::MatrixView v, double tol) {
  if (n < 1) return la::code(la::Status::bad_dimension);
  const auto s = la::tridiagonal_ql(span_of(d, n), span_of(e, n - 1), v, tol);
  if (s != la::Status::ok) return la::code(s);
  la::sort_values(span_of(d, n), v, la::Order::descending);
  return 0;
}

}  // namespace

extern "C" NORVIK_API void HOQRVD(double* a, const norvik_int* n, const norvik_int* lda, double* e,
                                  double* v, const double* tol, norvik_int* ill) {
  norvik::abi::guarded(
      [&] { *ill = standard_eigen(a, *n, *lda, e, v, *tol, la::Order::descending); });
}

extern "C" NORVIK_API void HOQRUD(double* a, const norvik_int* n, const norvik_int* lda, double* e,
                                  double* v, const double* tol, norvik_int* ill) {
  norvik::abi::guarded(
      [&] { *ill = standard_eigen(a, *n, *lda, e, v, *tol, la::Order::ascending); });
}

extern "C" NORVIK_API void GHQRVD(double* a, double* b, const norvik_int* n, const norvik_int* lda,
                                  double* e, double* v, const double* tol, norvik_int* ill) {
  norvik::abi::guarded(
      [&] { *ill = general_eigen(a, b, *n, *lda, e, v, *tol, la::Order::descending); });
}

extern "C" NORVIK_API void GHQRUD(double* a, double* b, const norvik_int* n, const norvik_int* lda,
                                  double* e, double* v, const double* tol, norvik_int* ill) {
  norvik::abi::guarded(
      [&] { *ill = general_eigen(a, b, *n, *lda, e, v, *tol, la::Order::ascending); });
}

extern "C" NORVIK_API void CHOLFD(double* a, const norvik_int* n, const norvik_int* lda,
                                  double* work, const double* tol, norvik_int* ill) {
  norvik::abi::guarded([&] {
    if (bad_shape(*n, *lda)) {
      *ill = la::code(la::Status::bad_dimension);
      return;
    }
    const auto l = matrix_view(a, *n, *lda);
    *ill = la::code(la::cholesky(l, *tol));
    if (*ill == 0) {
      for (Index i = 0; i < *n; ++i) work[i] = 1.0 / l(i, i);
    }
  });
}

extern "C" NORVIK_API void SDECD(double* a, const norvik_int* n, norvik_int* ipiv,
                                 norvik_int* ill) {
  norvik::abi::guarded([&] {
    if (*n < 1) {
      *ill = la::code(la::Status::bad_dimension);
      return;
    }
    const auto pivots = span_of(ipiv, *n);
    *ill = la::code(la::bunch_kaufman_factor(matrix_view(a, *n), pivots));
    // 0-based record (p, or -p-1 for a 2×2 block) to the 1-based one (p+1, or -(p+1)).
    for (auto& p : pivots) p = p >= 0 ? p + 1 : p;
  });
}

extern "C" NORVIK_API void SSOLD(const double* a, const norvik_int* n, const norvik_int* ipiv,
                                 double* b, norvik_int* ill) {
  norvik::abi::guarded([&] {
    const norvik_int order = *n;
    if (order < 1) {
      *ill = la::code(la::Status::bad_dimension);
      return;
    }
    // The record must be one that SDECD can have made: entries in ±1 … n, and
    // negative ones in equal pairs.
    std::vector<int> pivots(static_cast<std::size_t>(order));
    for (norvik_int k = 0; k < order;) {
      const norvik_int p = ipiv[k];
      const bool pair = p < 0 && k + 1 < order && ipiv[k + 1] == p;
      if (p == 0 || std::abs(p) > order || (p < 0 && !pair)) {
        *ill = la::code(la::Status::bad_dimension);
        return;
      }
      if (p > 0) {
        pivots[static_cast<std::size_t>(k++)] = p - 1;
      } else {
        pivots[static_cast<std::size_t>(k++)] = p;
        pivots[static_cast<std::size_t>(k++)] = p;
      }
    }
    la::bunch_kaufman_solve(const_matrix(a, order), pivots, span_of(b, order));
    *ill = 0;
  });
}

extern "C" NORVIK_API void BUNCHD(double* a, const norvik_int* n, double* b, norvik_int* ill) {
  norvik::abi::guarded([&] {
    if (*n < 1) {
      *ill = la::code(la::Status::bad_dimension);
      return;
    }
    std::vector<int> pivots(static_cast<std::size_t>(*n));
    const auto f = matrix_view(a, *n);
    *ill = la::code(la::bunch_kaufman_factor(f, pivots));
    if (*ill == 0) la::bunch_kaufman_solve(f, pivots, span_of(b, *n));
  });
}

extern "C" NORVIK_API void ICHGD(double* a, const norvik_int* n, const norvik_int* i,
                                 const norvik_int* j) {
  norvik::abi::guarded([&] {
    if (*i < 1 || *j < 1 || *i > *n || *j > *n) return;
    la::interchange(matrix_view(a, *n), *i - 1, *j - 1);
  });
}

extern "C" NORVIK_API void MINVD(double* a, const norvik_int* n, const norvik_int* lda,
                                 norvik_int* ill) {
  norvik::abi::guarded([&] {
    *ill = bad_shape(*n, *lda) ? la::code(la::Status::bad_dimension)
                               : la::code(la::invert(matrix_view(a, *n, *lda)));
  });
}

extern "C" NORVIK_API void HQRIID(double* d, double* e, const norvik_int* n, const double* tol,
                                  norvik_int* ill) {
  norvik::abi::guarded([&] { *ill = tridiagonal_eigen(d, e, *n, {}, *tol); });
}

extern "C" NORVIK_API void HEQRVD(double* d, double* e, const norvik_int* n, double* v,
                                  const norvik_int* ldv, const double* tol, norvik_int* ill) {
  norvik::abi::guarded([&] {
    *ill = bad_shape(*n, *ldv) ? la::code(la::Status::bad_dimension)
                               : tridiagonal_eigen(d, e, *n, matrix_view(v, *n, *ldv), *tol);
  });
}

extern "C" NORVIK_API void SORTDK(double* v, const norvik_int* n) {
  norvik::abi::guarded([&] { la::sort_values(span_of(v, *n), la::Order::descending); });
}

extern "C" NORVIK_API void SORTDI(double* v, norvik_int* idx, const norvik_int* n) {
  norvik::abi::guarded(
      [&] { la::sort_values(span_of(v, *n), span_of(idx, *n), la::Order::descending); });
}

extern "C" NORVIK_API void SRTVDD(double* v, double* z, const norvik_int* n) {
  norvik::abi::guarded([&] {
    if (*n < 1) return;
    la::sort_values(span_of(v, *n), matrix_view(z, *n), la::Order::descending);
  });
}

extern "C" NORVIK_API void SPLEVEL(const double* f, const double* s, const double* x,
                                   const norvik_int* nbasis, const norvik_int* northo,
                                   const norvik_int* ispin, double* eig, double* c) {
  norvik::abi::guarded([&] {
    const norvik_int n = *nbasis;
    la::solve_roothaan(const_matrix(f, n), const_matrix(s, n), const_matrix(x, n), *northo, *ispin,
                       span_of(eig, n), matrix_view(c, n));
  });
}

extern "C" NORVIK_API void SPLEVEL_GHQR(const double* f, const double* s, const norvik_int* nbasis,
                                        const norvik_int* ispin, double* eig, double* c) {
  norvik::abi::guarded([&] {
    const norvik_int n = *nbasis;
    la::solve_roothaan_full(const_matrix(f, n), const_matrix(s, n), *ispin, span_of(eig, n),
                            matrix_view(c, n));
  });
}

extern "C" NORVIK_API void SPLEVEL_ORTH(const double* f, const double* x, const norvik_int* nbasis,
                                        const norvik_int* northo, double* eig, double* c) {
  norvik::abi::guarded([&] {
    const norvik_int n = *nbasis;
    la::solve_roothaan_orthogonal(const_matrix(f, n), const_matrix(x, n), *northo, span_of(eig, n),
                                  matrix_view(c, n));
  });
}

extern "C" NORVIK_API void ORTHOG_BASIS(const norvik_int* nofbase, const double* s,
                                        const double* threshold, norvik_int* nindependent,
                                        double* x) {
  norvik::abi::guarded([&] {
    const norvik_int n = *nofbase;
    *nindependent = la::orthogonalize_basis(const_matrix(s, n), *threshold, matrix_view(x, n));
  });
}
