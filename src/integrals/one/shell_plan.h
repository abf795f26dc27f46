// A contracted shell as the one-electron code walks it: its distinct Cartesian
// components, each function as (component, coefficient) terms, and the
// contraction weights d_k / N(alpha_k, L) of each function.  Shared by the
// one-electron matrices and their nuclear derivatives.
#pragma once

#include <array>
#include <span>
#include <utility>
#include <vector>

#include "basis/basis_set.h"
#include "integrals/one/primitives.h"

namespace norvik::integrals::one {

inline constexpr int kShellPlanMaxL = 3;         // f is the highest angular momentum served
inline constexpr int kShellPlanComponents = 10;  // Cartesian components of one shell (f: 10)

// A shell as the builder walks it: its distinct Cartesian components, each
// function as (component, coefficient) terms, and the contraction weights
// d_k / N(alpha_k, L) of each function.
struct ShellPlan {
  Vec3 centre{};
  int nprim = 0;
  std::array<double, basis::kMaxPrimitives> exponent{};
  int ncomp = 0;
  std::array<Lmn, kShellPlanComponents> comp{};
  Lmn lmax{};    // largest exponent per axis over the components
  int ltot = 0;  // largest total degree
  int nfunc = 0;
  std::array<int, basis::kMaxFunctionsPerShell> nterm{};
  std::array<std::array<int, basis::kMaxTerms>, basis::kMaxFunctionsPerShell> term_comp{};
  std::array<std::array<double, basis::kMaxTerms>, basis::kMaxFunctionsPerShell> term_coef{};
  std::array<std::array<double, basis::kMaxPrimitives>, basis::kMaxFunctionsPerShell> weight{};
  int offset = 0;  // index of its first function
};

// The plans of a basis whose atoms sit at `positions` (bohr); a shell with an
// atom, kind, primitive count or term out of range throws norvik::Error
// ("Wrong shell in calcMtrx. shell = " with its 1-based index).
std::vector<ShellPlan> plan_shells(const basis::BasisSet& basis, std::span<const Vec3> positions);

// The shell pairs (a, b) with a <= b, b ascending and a ascending within it: the
// unique blocks of a symmetric one-electron matrix, in the order the parallel
// loops hand them out.
inline std::vector<std::pair<int, int>> shell_pairs(int nshell) {
  std::vector<std::pair<int, int>> pairs;
  pairs.reserve(static_cast<std::size_t>(nshell) * static_cast<std::size_t>(nshell + 1) / 2);
  for (int sb = 0; sb < nshell; ++sb)
    for (int sa = 0; sa <= sb; ++sa) pairs.emplace_back(sa, sb);
  return pairs;
}

}  // namespace norvik::integrals::one
