// The host's per-atom basis arrays at the boundary, shared by the entry points
// (basis_abi.cpp) and the family and element-group routines (basis_family_abi.cpp).
#pragma once

#include <algorithm>
#include <string_view>

#include "abi/abi_support.h"
#include "basis/library.h"
#include "basis/shell_arrays.h"

namespace norvik::abi {

// A basis-set name buffer.
inline std::string_view name_in(const char* basname) {
  return text_in(basname, kNameLength);
}

inline void put_layout(const basis::AtomLayout& layout, norvik_int* nshell, norvik_int* shellkind,
                       norvik_int* nbasis) {
  *nshell = layout.nshell;
  std::copy(layout.kind.begin(), layout.kind.end(), shellkind);
  *nbasis = layout.nbasis;
}

inline void put_zeta(const basis::Zeta& zeta, double* out) {
  std::copy(zeta.begin(), zeta.end(), out);
}

inline basis::Zeta zeta_in(const double* zeta) {
  basis::Zeta z{};
  std::copy(zeta, zeta + basis::kMaxZeta, z.begin());
  return z;
}

inline basis::AngularArrays angular_out(norvik_int* lm, norvik_int* nterm, norvik_int* lmn,
                                        double* termcoef, norvik_int* nprim) {
  return {lm, nterm, lmn, termcoef, nprim};
}

}  // namespace norvik::abi
