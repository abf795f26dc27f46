#include "properties/polarizability.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/error.h"
#include "common/fortran_format.h"
#include "linalg/kernels.h"
#include "properties/orbital_hessian.h"

namespace norvik::properties {

namespace {

std::size_t size(int n) {
  return static_cast<std::size_t>(n);
}

double dot(const std::vector<double>& x, const std::vector<double>& y) {
  return linalg::dot(x.data(), y.data(), static_cast<linalg::Index>(x.size()));
}

}  // namespace

std::array<double, 9> static_polarizability(
    const basis::BasisSet& basis, const scf::JobControl& job, const scf::MoleculeView& molecule,
    const setup::ElectronCount& counts, std::span<const double> rho,
    std::span<const double> orbitals, const std::optional<scf::KohnShamStage>& kohn_sham,
    const ResponseOptions& options) {
  const std::size_t nn = size(basis.nbasis()) * size(basis.nbasis());
  OrbitalHessian hessian(basis, job, molecule, counts, rho, orbitals, kohn_sham, options.direct);
  const std::size_t length = hessian.length();
  const std::vector<SpinBlock>& spins = hessian.spins();
  const scf::PreparedSystem& p = hessian.system();

  // Right sides b_k = −[C_vᵀ D_k C_o]: the field F_k adds F_k·D_k to the
  // Fock matrix (D in Å, so D is the perturbation in eV per V/Å).
  std::array<std::vector<double>, 3> b, x, r, z, dir, q;
  for (std::size_t k = 0; k < 3; ++k) {
    b[k].assign(length, 0.0);
    std::vector<double> pair(2 * nn);
    std::copy_n(p.dip.begin() + static_cast<std::ptrdiff_t>(k * nn), nn, pair.begin());
    std::copy_n(p.dip.begin() + static_cast<std::ptrdiff_t>(k * nn), nn,
                pair.begin() + static_cast<std::ptrdiff_t>(nn));
    hessian.project(pair, b[k], 0.0);
    for (double& e : b[k]) e = -e;
  }

  // Preconditioned conjugate gradients, the three directions side by side
  // (each with its own step lengths, the products of each iteration in one
  // pass over the integrals), from x = 0; the preconditioner is the diagonal
  // of the level gaps.
  auto precondition = [&](const std::vector<double>& in, std::vector<double>& out) {
    out.resize(length);
    for (const SpinBlock& blk : spins) {
      for (std::size_t e = 0; e < blk.count(); ++e) {
        out[blk.offset + e] = in[blk.offset + e] / blk.gap[e];
      }
    }
  };
  std::array<double, 3> rz{}, target{};
  std::array<bool, 3> done{};
  for (std::size_t k = 0; k < 3; ++k) {
    x[k].assign(length, 0.0);
    r[k] = b[k];
    precondition(r[k], z[k]);
    dir[k] = z[k];
    q[k].assign(length, 0.0);
    rz[k] = dot(r[k], z[k]);
    target[k] = options.tolerance * std::sqrt(dot(b[k], b[k]));
    done[k] = length == 0 || std::sqrt(dot(r[k], r[k])) <= target[k];
  }
  int iteration = 0;
  while (!(done[0] && done[1] && done[2])) {
    if (iteration == options.max_iterations) {
      double worst = 0.0;
      for (std::size_t k = 0; k < 3; ++k) {
        if (!done[k])
          worst = std::max(worst, std::sqrt(dot(r[k], r[k])) / std::sqrt(dot(b[k], b[k])));
      }
      throw Error(fortran::list_directed(
          {std::string("Response equations not converged."), std::int64_t{iteration}, worst}));
    }
    ++iteration;
    std::vector<std::span<const double>> in;
    std::vector<std::span<double>> out;
    for (std::size_t k = 0; k < 3; ++k) {
      if (done[k]) continue;
      in.emplace_back(dir[k]);
      out.emplace_back(q[k]);
    }
    hessian.apply(in, out);
    for (std::size_t k = 0; k < 3; ++k) {
      if (done[k]) continue;
      const double step = rz[k] / dot(dir[k], q[k]);
      for (std::size_t e = 0; e < length; ++e) {
        x[k][e] += step * dir[k][e];
        r[k][e] -= step * q[k][e];
      }
      if (std::sqrt(dot(r[k], r[k])) <= target[k]) {
        done[k] = true;
        continue;
      }
      precondition(r[k], z[k]);
      const double next = dot(r[k], z[k]);
      const double beta = next / rz[k];
      rz[k] = next;
      for (std::size_t e = 0; e < length; ++e) dir[k][e] = z[k][e] + beta * dir[k][e];
    }
  }

  // α_ij = −Σ_σ Tr(P1_σ^(j) D_i) = 2 x_j·b_i, symmetrised (the two halves
  // agree to the square of the residual).
  std::array<double, 9> alpha{};
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) alpha[3 * i + j] = 2.0 * dot(x[j], b[i]);
  }
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      const double mean = 0.5 * (alpha[3 * i + j] + alpha[3 * j + i]);
      alpha[3 * i + j] = mean;
      alpha[3 * j + i] = mean;
    }
  }
  return alpha;
}

std::array<double, 9> polarizability_by_fields(
    const basis::BasisSet& basis, const scf::JobControl& job, const scf::ScfControl& scf,
    const scf::MoleculeView& molecule, const scf::PointSettings& settings,
    std::span<const double> rho, const FieldOptions& fields) {
  const int n = basis.nbasis();
  const std::size_t nn = size(n) * size(n);
  std::vector<double> density(2 * nn), orbitals(2 * (nn + size(n)));
  auto dipole_in = [&](std::size_t j, double shift) {
    scf::PointSettings at = settings;
    at.field[j] += shift;
    at.start = scf::StartPolicy::supplied;
    std::copy_n(rho.begin(), 2 * nn, density.begin());
    return scf::compute_point(basis, job, scf, molecule, at, density, orbitals).dipole;
  };
  const double h = fields.step;
  std::array<double, 9> alpha{};
  for (std::size_t j = 0; j < 3; ++j) {
    const scf::Vec3 plus = dipole_in(j, h), minus = dipole_in(j, -h);
    if (!fields.four_point) {
      for (std::size_t i = 0; i < 3; ++i) alpha[3 * i + j] = (plus[i] - minus[i]) / (2.0 * h);
      continue;
    }
    const scf::Vec3 plus2 = dipole_in(j, 2.0 * h), minus2 = dipole_in(j, -2.0 * h);
    for (std::size_t i = 0; i < 3; ++i) {
      alpha[3 * i + j] = (8.0 * (plus[i] - minus[i]) - (plus2[i] - minus2[i])) / (12.0 * h);
    }
  }
  return alpha;
}

}  // namespace norvik::properties
