#include "properties/populations.h"

#include <cmath>
#include <stdexcept>

#include "common/error.h"
#include "common/fortran_format.h"
#include "linalg/eigen.h"
#include "linalg/matrix.h"

namespace norvik::properties {

namespace {

using linalg::Index;
using linalg::Matrix;

// S^½ from the eigenvectors of S.
Matrix square_root(std::span<const double> s, Index n) {
  Matrix a(n, n), v(n, n);
  for (Index i = 0; i < n; ++i)
    for (Index j = 0; j < n; ++j) a(i, j) = s[static_cast<std::size_t>(i + n * j)];
  std::vector<double> w(static_cast<std::size_t>(n));
  if (linalg::symmetric_eigen(a.view(), w, v.view()) != linalg::Status::ok) {
    throw Error(fortran::list_directed({"Diagonalization of the overlap failed."}));
  }
  Matrix root(n, n);
  for (Index i = 0; i < n; ++i)
    for (Index j = 0; j < n; ++j) {
      double sum = 0.0;
      for (Index k = 0; k < n; ++k)
        sum += v(i, k) * std::sqrt(std::max(w[static_cast<std::size_t>(k)], 0.0)) * v(j, k);
      root(i, j) = sum;
    }
  return root;
}

}  // namespace

namespace {

// The electrons of each basis function and spin: the diagonal of (P_σ S) or of
// (S^½ P_σ S^½), (n, 2).
std::vector<double> function_electrons(const basis::BasisSet& basis, std::span<const double> s,
                                       std::span<const double> rho, Partition partition) {
  const Index n = basis.nbasis();
  const std::size_t nn = static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
  if (s.size() < nn || rho.size() < 2 * nn) throw std::invalid_argument("populations: sizes");
  Matrix root;
  if (partition == Partition::lowdin) root = square_root(s, n);
  std::vector<double> out(2 * static_cast<std::size_t>(n));
  for (int spin = 0; spin < 2; ++spin) {
    const double* p = rho.data() + static_cast<std::size_t>(spin) * nn;
    for (Index mu = 0; mu < n; ++mu) {
      double d = 0.0;
      if (partition == Partition::mulliken) {
        for (Index nu = 0; nu < n; ++nu)
          d += p[static_cast<std::size_t>(mu + n * nu)] * s[static_cast<std::size_t>(nu + n * mu)];
      } else {
        for (Index nu = 0; nu < n; ++nu) {
          double t = 0.0;
          for (Index la = 0; la < n; ++la)
            t += p[static_cast<std::size_t>(nu + n * la)] * root(la, mu);
          d += root(mu, nu) * t;
        }
      }
      out[static_cast<std::size_t>(mu + n * spin)] = d;
    }
  }
  return out;
}

}  // namespace

AtomPopulations atom_populations(const basis::BasisSet& basis, std::span<const int> charges,
                                 std::span<const double> s, std::span<const double> rho,
                                 Partition partition) {
  const std::size_t natom = charges.size();
  AtomPopulations out;
  out.charge.assign(charges.begin(), charges.end());
  out.spin.assign(natom, 0.0);
  const ShellPopulations shells = shell_populations(basis, s, rho, partition);
  for (std::size_t k = 0; k < basis.shells.size(); ++k) {
    const auto a = static_cast<std::size_t>(basis.shells[k].atom);
    out.charge[a] -= shells.electrons[k];
    out.spin[a] += shells.spin[k];
  }
  return out;
}

ShellPopulations shell_populations(const basis::BasisSet& basis, std::span<const double> s,
                                   std::span<const double> rho, Partition partition) {
  const std::vector<double> d = function_electrons(basis, s, rho, partition);
  const std::size_t n = d.size() / 2;
  ShellPopulations out;
  std::size_t mu = 0;
  for (const basis::Shell& shell : basis.shells) {
    double alpha = 0.0, beta = 0.0;
    for (int f = 0; f < shell.kind; ++f, ++mu) {
      alpha += d[mu];
      beta += d[mu + n];
    }
    out.electrons.push_back(alpha + beta);
    out.spin.push_back(alpha - beta);
  }
  return out;
}

}  // namespace norvik::properties
