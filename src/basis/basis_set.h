// The basis set as a value type: the shell list that MAKEBASIS returns in its
// column-major output arrays, held in C++ form for the integral and grid code.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace norvik::basis {

inline constexpr int kMaxShellsPerAtom = 9;
inline constexpr int kMaxFunctionsPerShell = 7;
inline constexpr int kMaxPrimitives = 6;
inline constexpr int kMaxTerms = 3;
inline constexpr int kMaxZeta = 7;

// One basis function of a shell: a fixed combination of at most three Cartesian
// components x^l y^m z^n of the shell's primitives, with its own contraction
// coefficients (for normalised primitives; the integral code normalises).
struct Function {
  int L = 0;  // angular pair (L, M); (2, 10) is the spherical companion of a d set
  int M = 0;
  int nterm = 0;
  std::array<std::array<int, 3>, kMaxTerms> lmn{};  // (l, m, n) of each term
  std::array<double, kMaxTerms> term_coef{};
  std::array<double, kMaxPrimitives> coef{};  // contraction coefficient per primitive
};

// One shell: `kind` equals its number of functions (1 s, 3 p, 4 sp, 5 d,
// 6 d + companion, 7 f).  Exponents are already scaled by ζ².
struct Shell {
  int kind = 0;
  int nprim = 0;
  int atom = 0;  // 0-based index of the atom that carries the shell
  std::array<double, kMaxPrimitives> exponents{};
  std::array<Function, kMaxFunctionsPerShell> functions{};  // slots beyond kind are zero
};

// The shells of a molecule, atom by atom, in the order of MAKEBASIS.
struct BasisSet {
  std::vector<Shell> shells;

  int nbasis() const {
    int n = 0;
    for (const auto& s : shells) n += s.kind;
    return n;
  }
};

}  // namespace norvik::basis
