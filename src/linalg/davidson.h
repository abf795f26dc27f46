// The lowest eigenpairs of a large symmetric operator known only through its
// products with vectors (Davidson's method with the diagonal preconditioner).
//
// The operator is applied to blocks of vectors at a time, so that one pass of
// an expensive product (a Fock-like build over the two-electron integrals)
// serves every vector of the block.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

namespace norvik::linalg {

// y[m] = A x[m] for every m of the block.
using BlockProduct = std::function<void(std::span<const std::span<const double>> x,
                                        std::span<const std::span<double>> y)>;

struct DavidsonOptions {
  int roots = 1;
  // A root has converged when the norm of its residual A v − λ v is at most
  // this (v of unit length).
  double tolerance = 1e-6;
  int max_iterations = 100;
  // Roots followed beyond `roots` (refined, but not waited for): a root of a
  // symmetry that the first guesses miss enters the subspace through them.
  int extra_roots = 3;
  // Guess vectors beyond the followed roots (the unit vectors of the
  // next-lowest diagonal elements), and one vector with a component on every
  // unknown, which couples to every symmetry of the operator.
  int extra_guesses = 4;
  // The subspace collapses onto the current Ritz vectors when it would grow
  // beyond this many vectors; 0 chooses max(20·roots, 40).
  int max_subspace = 0;
};

struct DavidsonResult {
  std::vector<double> values;   // roots, ascending
  std::vector<double> vectors;  // (length, roots) column-major, unit length
  std::vector<double> residuals;
  int iterations = 0;  // products made, counted in blocks
  bool converged = false;
};

// The `options.roots` lowest eigenpairs of the symmetric operator of order
// `diagonal.size()` whose diagonal is `diagonal` and whose products `product`
// makes.  `guesses` (length × k, column-major), when given, replace the unit
// vectors as the start.  Deterministic: the same products give the same bits.
DavidsonResult davidson_lowest(std::span<const double> diagonal, const BlockProduct& product,
                               const DavidsonOptions& options,
                               std::span<const double> guesses = {});

}  // namespace norvik::linalg
