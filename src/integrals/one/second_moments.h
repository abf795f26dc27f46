// The second-moment integrals <a|(x_i - C_i)(x_j - C_j)|b> over the contracted
// basis about an origin C: the one-electron part of the quadrupole moment.
#pragma once

#include <array>
#include <span>

#include "basis/basis_set.h"
#include "integrals/one/one_electron_matrices.h"

namespace norvik::integrals::one {

// The six components in the order xx, xy, xz, yy, yz, zz.
inline constexpr std::array<std::array<int, 2>, 6> kSecondMomentPairs = {
    {{0, 0}, {0, 1}, {0, 2}, {1, 1}, {1, 2}, {2, 2}}};

// Builds the six symmetric (nbasis, nbasis) matrices in `out` (a null one is not
// built) for the basis on atoms at `positions`, about `origin`; positions,
// origin and the integrals in bohr (bohr²).  Parallel over shell pairs; every
// element is made by one iteration.
void build_second_moments(const basis::BasisSet& basis, std::span<const Vec3> positions,
                          const Vec3& origin, const std::array<MatrixRef, 6>& out);

}  // namespace norvik::integrals::one
