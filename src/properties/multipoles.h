// Electric moments beyond the dipole: the quadrupole moment of a converged
// density and its nuclei about the centre of nuclear charge.
#pragma once

#include <array>
#include <span>

#include "basis/basis_set.h"

namespace norvik::properties {

struct Quadrupole {
  std::array<double, 3> origin{};  // the centre of nuclear charge Σ Z_A R_A / Σ Z_A [Å]
  // The second moment Q_ij = Σ q r_i r_j of nuclei and electrons about `origin`
  // [e·Å²], (3, 3), symmetric.
  std::array<double, 9> traced{};
  // The traceless moment Θ_ij = Σ q (3 r_i r_j − r² δ_ij) / 2 = (3 Q_ij − δ_ij tr Q) / 2
  // [e·Å²] (Buckingham's convention).
  std::array<double, 9> theta{};
};

// The quadrupole of the density pair rho ((n, n, 2)) of `basis` on atoms at
// `positions` ((3, natom) Å) with nuclear charges `charges` (0 for a ghost,
// which carries functions only).  No nuclear charge at all throws norvik::Error.
Quadrupole quadrupole(const basis::BasisSet& basis, std::span<const int> charges,
                      std::span<const double> positions, std::span<const double> rho);

}  // namespace norvik::properties
