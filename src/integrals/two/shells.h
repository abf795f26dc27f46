// The shell table of the two-electron code and its decoded form.
//
// The host holds the basis for the two-electron routines as one double array of
// kShellRecord values per shell (column-major (kShellRecord, nshell)); integers
// are stored as exact doubles:
//   [0] kind (number of functions)   [1] number of primitives   [2] atom (1-based)
//   [3..5] centre x, y, z in bohr    [6..11] exponents (ζ²-scaled, zero-padded)
//   [12 + 21·f ...] function slot f = 0..6: L, M, nterm, (l, m, n) × 3,
//                   term coefficients × 3, contraction coefficients × 6
//   [159] unused (zero)
// Decoding groups the functions of a shell into Cartesian sub-shells: functions
// with the same L and the same contraction share one set of Cartesian integrals
// (an sp shell gives an s and a p sub-shell with their own coefficients).
#pragma once

#include <array>
#include <span>
#include <vector>

#include "basis/basis_set.h"
#include "norvik/common.h"

namespace norvik::integrals::two {

inline constexpr int kShellRecord = NORVIK_SHELL_RECORD;
inline constexpr int kMaxShellFunctions = basis::kMaxFunctionsPerShell;

// Writes the record of one shell; `atom` is 1-based.
void pack_shell(const basis::Shell& shell, const std::array<double, 3>& centre_bohr, int atom,
                std::span<double> record);

// The shell of one record (the inverse of pack_shell), its atom left 0;
// `centre_bohr` receives the record's centre.  A kind or primitive count out of
// range throws norvik::Error as decode_shells does.
basis::Shell unpack_shell(std::span<const double> record, int index,
                          std::array<double, 3>& centre_bohr);

// The whole table for a basis whose atoms sit at `positions` (bohr).
std::vector<double> pack_shells(const basis::BasisSet& basis,
                                std::span<const std::array<double, 3>> positions);

// One Cartesian sub-shell: an angular momentum and its contraction over the
// shell's primitives, the primitive normalisation included.
struct SubShell {
  int l = 0;
  std::array<double, basis::kMaxPrimitives> coef{};
};

// A basis function as a combination of the Cartesian components of a sub-shell.
struct FunctionMap {
  int sub = 0;
  int nterm = 0;
  std::array<int, basis::kMaxTerms> cart{};  // component index within the sub-shell
  std::array<double, basis::kMaxTerms> coef{};
};

struct IntegralShell {
  int kind = 0;
  int nprim = 0;
  int first = 0;  // 0-based index of the shell's first basis function
  std::array<double, 3> centre{};
  std::array<double, basis::kMaxPrimitives> exponents{};
  int nsub = 0;
  std::array<SubShell, kMaxShellFunctions> sub{};
  std::array<FunctionMap, kMaxShellFunctions> fn{};
  int max_l = 0;
  // functions of each sub-shell, and whether each is a single component with
  // coefficient 1 (then the transformation is a plain gather)
  std::array<std::array<int, kMaxShellFunctions>, kMaxShellFunctions> sub_fn{};
  std::array<int, kMaxShellFunctions> sub_nfn{};
  std::array<bool, kMaxShellFunctions> sub_plain{};
};

// Decodes a table of `nshell` records; throws norvik::Error on a malformed record.
std::vector<IntegralShell> decode_shells(int nshell, std::span<const double> table);

// Number of basis functions of decoded shells.
int count_functions(std::span<const IntegralShell> shells);

// Coefficient factor that normalises the primitive x^a y^b z^c exp(−α r²) with
// a, b, c ≤ 1 (a + b + c = L): 1 / sqrt(0.25^L sqrt(π³ / (8 α^(2L+3)))).
double primitive_normalisation(double alpha, int l);

}  // namespace norvik::integrals::two
