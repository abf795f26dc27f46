// The lowest roots of the random-phase (linear-response) eigenproblem
//   [A B; B A] [X; Y] = ω [1 0; 0 −1] [X; Y]
// through its Hermitian reduction (A − B)(A + B)(X + Y) = ω² (X + Y), solved
// in one subspace shared by X + Y and X − Y (the paired Davidson method of
// Stratmann, Scuseria and Frisch, J. Chem. Phys. 109, 8218 (1998)).
//
// A + B and A − B must be symmetric and positive definite (a stable point);
// they are known only through their products with blocks of vectors.
#pragma once

#include <functional>
#include <span>
#include <vector>

#include "linalg/davidson.h"

namespace norvik::linalg {

// plus[m] = (A + B) x[m] and minus[m] = (A − B) x[m] for every m of the block.
using PairedProduct = std::function<void(std::span<const std::span<const double>> x,
                                         std::span<const std::span<double>> plus,
                                         std::span<const std::span<double>> minus)>;

struct PairedResult {
  std::vector<double> values;  // ω of the roots, ascending
  // (length, roots) column-major each, normalised so that (X + Y)·(X − Y) = 1.
  std::vector<double> x_plus_y, x_minus_y;
  // per root: √(|(A + B)(X + Y) − ω(X − Y)|² + |(A − B)(X − Y) − ω(X + Y)|²)
  // relative to |X + Y| + |X − Y|
  std::vector<double> residuals;
  int iterations = 0;  // products made, counted in blocks
  bool converged = false;
};

// The `options.roots` lowest ω.  `diagonal` approximates the diagonal of A
// (the level gaps): it picks the start vectors and preconditions the
// corrections.  Throws std::runtime_error when A − B or (A − B)(A + B) is not
// positive definite in the subspace (an unstable reference point).
PairedResult paired_davidson_lowest(std::span<const double> diagonal, const PairedProduct& product,
                                    const DavidsonOptions& options);

}  // namespace norvik::linalg
