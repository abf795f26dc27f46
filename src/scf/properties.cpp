#include "scf/properties.h"

#include <cmath>
#include <cstdint>

#include "common/constants.h"
#include "common/error.h"
#include "common/fortran_format.h"
#include "linalg/kernels.h"

namespace norvik::scf {

namespace {

using linalg::ConstMatrixView;
using linalg::Index;

using linalg::square;

// e²/(4πε₀) in eV·Å.
constexpr double kCoulombEvAngstrom = constants::kHartreeEv * constants::kBohrAngstrom;

}  // namespace

double electronic_energy(ConstMatrixView t, ConstMatrixView v, std::span<const double> g,
                         std::span<const double> rho) {
  const Index n = t.rows();
  const std::size_t nn = square(n);
  double one = 0.0;
  double two = 0.0;
  for (std::size_t spin = 0; spin < 2; ++spin) {
    const double* p = rho.data() + spin * nn;
    const double* gs = g.data() + spin * nn;
    for (Index j = 0; j < n; ++j) {
      for (Index i = 0; i < n; ++i) {
        const std::size_t e = static_cast<std::size_t>(i + j * n);
        one += p[e] * (t(i, j) + v(i, j));
        two += p[e] * gs[e];
      }
    }
  }
  return one + 0.5 * two;
}

Vec3 electronic_dipole(int nbasis, std::span<const double> dipints, std::span<const double> rho) {
  const std::size_t nn = square(nbasis);
  Vec3 mu{};
  for (std::size_t k = 0; k < 3; ++k) {
    const double* d = dipints.data() + k * nn;
    double sum = 0.0;
    for (std::size_t e = 0; e < nn; ++e) sum += (rho[e] + rho[nn + e]) * d[e];
    mu[k] = -sum;
  }
  return mu;
}

double nuclear_repulsion(std::span<const int> charges, std::span<const double> positions) {
  double e = 0.0;
  const std::size_t natom = charges.size();
  for (std::size_t a = 1; a < natom; ++a) {
    for (std::size_t b = 0; b < a; ++b) {
      const double zz = static_cast<double>(charges[a]) * static_cast<double>(charges[b]);
      if (zz == 0.0) continue;
      double r2 = 0.0;
      for (std::size_t k = 0; k < 3; ++k) {
        const double d = positions[3 * a + k] - positions[3 * b + k];
        r2 += d * d;
      }
      if (r2 == 0.0) {
        throw Error(fortran::list_directed({"Two nuclei coincide in NuclearRep.",
                                            static_cast<std::int64_t>(b + 1),
                                            static_cast<std::int64_t>(a + 1)}));
      }
      e += zz * kCoulombEvAngstrom / std::sqrt(r2);
    }
  }
  return e;
}

Vec3 nuclear_dipole(std::span<const int> charges, std::span<const double> positions) {
  Vec3 mu{};
  for (std::size_t a = 0; a < charges.size(); ++a) {
    for (std::size_t k = 0; k < 3; ++k) mu[k] += charges[a] * positions[3 * a + k];
  }
  return mu;
}

double spin_squared(ConstMatrixView s, std::span<const double> rho, std::span<double> work) {
  const Index n = s.rows();
  const std::size_t nn = square(n);
  ConstMatrixView pa(rho.data(), n, n, n);
  ConstMatrixView pb(rho.data() + nn, n, n, n);
  linalg::MatrixView as(work.data(), n, n, n);
  linalg::MatrixView bs(work.data() + nn, n, n, n);
  linalg::gemm(linalg::Op::none, linalg::Op::none, 1.0, pa, s, 0.0, as);  // P_α·S
  linalg::gemm(linalg::Op::none, linalg::Op::none, 1.0, pb, s, 0.0, bs);  // P_β·S
  double na = 0.0, nb = 0.0, overlap = 0.0;
  for (Index i = 0; i < n; ++i) {
    na += as(i, i);
    nb += bs(i, i);
  }
  // Tr(P_α S P_β S) = Σ_ij (P_α S)_ij (P_β S)_ji
  for (Index j = 0; j < n; ++j) {
    for (Index i = 0; i < n; ++i) overlap += as(i, j) * bs(j, i);
  }
  const double sz = 0.5 * (na - nb);
  return sz * sz + 0.5 * (na + nb) - overlap;
}

}  // namespace norvik::scf
