#include "properties/multipoles.h"

#include <stdexcept>
#include <vector>

#include "common/constants.h"
#include "common/error.h"
#include "common/fortran_format.h"
#include "integrals/one/second_moments.h"

namespace norvik::properties {

Quadrupole quadrupole(const basis::BasisSet& basis, std::span<const int> charges,
                      std::span<const double> positions, std::span<const double> rho) {
  const std::size_t natom = charges.size();
  const auto n = static_cast<std::size_t>(basis.nbasis());
  if (positions.size() < 3 * natom || rho.size() < 2 * n * n) {
    throw std::invalid_argument("quadrupole: sizes");
  }
  Quadrupole out;
  double total = 0.0;
  for (std::size_t a = 0; a < natom; ++a) {
    total += charges[a];
    for (std::size_t k = 0; k < 3; ++k) out.origin[k] += charges[a] * positions[3 * a + k];
  }
  if (total == 0.0) {
    throw Error(fortran::list_directed({"No nuclear charge for the quadrupole origin."}));
  }
  for (double& c : out.origin) c /= total;

  const double bohr = constants::kBohrAngstrom;
  std::vector<integrals::one::Vec3> centres(natom);
  for (std::size_t a = 0; a < natom; ++a)
    for (std::size_t k = 0; k < 3; ++k) centres[a][k] = positions[3 * a + k] / bohr;
  const integrals::one::Vec3 origin = {out.origin[0] / bohr, out.origin[1] / bohr,
                                       out.origin[2] / bohr};
  std::vector<double> m(6 * n * n);
  std::array<integrals::one::MatrixRef, 6> refs;
  for (std::size_t q = 0; q < 6; ++q)
    refs[q] = {m.data() + q * n * n, static_cast<std::ptrdiff_t>(n)};
  integrals::one::build_second_moments(basis, centres, origin, refs);

  for (std::size_t q = 0; q < 6; ++q) {
    const auto [i, j] = integrals::one::kSecondMomentPairs[q];
    // Electrons: −Σ_σ Tr(P_σ M_ij); both are symmetric, so the trace is the
    // elementwise sum of the product.
    double electrons = 0.0;
    for (std::size_t e = 0; e < n * n; ++e)
      electrons += (rho[e] + rho[n * n + e]) * m[q * n * n + e];
    double nuclei = 0.0;
    for (std::size_t a = 0; a < natom; ++a) {
      nuclei += charges[a] * (positions[3 * a + static_cast<std::size_t>(i)] - out.origin[i]) *
                (positions[3 * a + static_cast<std::size_t>(j)] - out.origin[j]);
    }
    const double value = nuclei - electrons * bohr * bohr;
    out.traced[static_cast<std::size_t>(3 * i + j)] = value;
    out.traced[static_cast<std::size_t>(3 * j + i)] = value;
  }
  const double trace = out.traced[0] + out.traced[4] + out.traced[8];
  for (std::size_t e = 0; e < 9; ++e) {
    out.theta[e] = 1.5 * out.traced[e] - (e % 4 == 0 ? 0.5 * trace : 0.0);
  }
  return out;
}

}  // namespace norvik::properties
