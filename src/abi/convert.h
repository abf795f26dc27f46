// The host's raw arguments as core arguments: element counts, spans and matrix
// views over the host's memory (never a copy), and the two-electron context.
//
// A size argument below zero counts as empty, so that a bad size never turns
// into a huge span.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "linalg/matrix.h"
#include "norvik/export.h"

namespace norvik::integrals::two {
struct ContextView;
}

namespace norvik::abi {

// Elements of a host array of n entries; 0 for n < 0.
inline std::size_t count(std::int64_t n) {
  return n > 0 ? static_cast<std::size_t>(n) : 0;
}

// Elements of an (n, n) array.
inline std::size_t square(std::int64_t n) {
  return count(n) * count(n);
}

// Elements of a packed triangle of order n: n(n+1)/2.
inline std::size_t packed(std::int64_t n) {
  return count(n) * (count(n) + 1) / 2;
}

// A host array of n elements.
template <class T>
std::span<T> span_of(T* p, std::int64_t n) {
  return {p, count(n)};
}

// The host's (n, n) column-major matrix, leading dimension ld (n when omitted).
inline linalg::MatrixView matrix_view(double* p, norvik_int n, norvik_int ld) {
  return {p, n, n, ld};
}
inline linalg::MatrixView matrix_view(double* p, norvik_int n) {
  return matrix_view(p, n, n);
}
inline linalg::ConstMatrixView const_matrix(const double* p, norvik_int n, norvik_int ld) {
  return {p, n, n, ld};
}
inline linalg::ConstMatrixView const_matrix(const double* p, norvik_int n) {
  return const_matrix(p, n, n);
}

// The ten context arguments (NORVIK_CONTEXT_ARGS of norvik/integrals_two.h) in
// their order, for passing them on.
#define NORVIK_CONTEXT_CALL \
  nshell, shelltab, nshpair, shpair, npair, pairlist, pairmap, vdiag, vint, thresh

// The two-electron context of a basis of nbasis functions over the host's ten
// context arrays: the shell table (kShellRecord × nshell), the kept shell and
// basis pairs (2 × nshpair, 2 × npair), pairmap and vdiag (packed(nbasis) each)
// and the screening threshold.
//
// The store vint (packed(npair)) is seen only when `reads_store` is true, that
// is by the Fock builds from the store.  The integral-direct builds and the
// screening never read it, and a host may pass a one-element vint to them; the
// routines that write the store take it as their own output span.  Without the
// store (or with a null vint) the view's vint is empty.
integrals::two::ContextView context_view(norvik_int nbasis, const norvik_int* nshell,
                                         const double* shelltab, const norvik_int* nshpair,
                                         const norvik_int* shpair, const norvik_int* npair,
                                         const norvik_int* pairlist, const norvik_int* pairmap,
                                         const double* vdiag, const double* vint,
                                         const double* thresh, bool reads_store);

}  // namespace norvik::abi
