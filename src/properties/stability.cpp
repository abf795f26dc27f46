#include "properties/stability.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>

#include "common/error.h"
#include "common/fortran_format.h"
#include "linalg/cholesky.h"
#include "linalg/davidson.h"
#include "linalg/kernels.h"
#include "properties/orbital_hessian.h"

namespace norvik::properties {

namespace {

using linalg::ConstMatrixView;
using linalg::MatrixView;
using linalg::Op;

std::size_t size(int n) {
  return static_cast<std::size_t>(n);
}

// The lowest eigenpairs of one block.  For a restricted point the amplitudes
// u of the alpha block stand for the full vector (u, ±u)/√2, on which M acts
// as the block M_αα ± M_αβ: its product is √2 times the alpha part of M's.
StabilityBlock lowest_of(OrbitalHessian& hessian, Rotation rotation,
                         const StabilityOptions& options) {
  const std::vector<SpinBlock>& spins = hessian.spins();
  const std::size_t full = hessian.length();
  const bool half = rotation != Rotation::unrestricted;
  const std::size_t length = half ? spins[0].count() : full;
  const double sign = rotation == Rotation::restricted_to_unrestricted ? -1.0 : 1.0;
  const double root_half = std::sqrt(0.5);
  const std::size_t beta = spins[1].offset;

  std::vector<double> diagonal(length);
  for (const SpinBlock& b : spins) {
    for (std::size_t e = 0; e < b.count() && b.offset + e < length; ++e) {
      diagonal[b.offset + e] = b.gap[e];
    }
  }
  auto expand = [&](std::span<const double> u, std::vector<double>& x) {
    x.assign(full, 0.0);
    if (!half) {
      std::copy(u.begin(), u.end(), x.begin());
      return;
    }
    for (std::size_t e = 0; e < length; ++e) {
      x[e] = root_half * u[e];
      x[beta + e] = sign * root_half * u[e];
    }
  };
  std::vector<std::vector<double>> xs, ys;
  const linalg::BlockProduct product = [&](std::span<const std::span<const double>> u,
                                           std::span<const std::span<double>> w) {
    xs.resize(u.size());
    ys.resize(u.size());
    std::vector<std::span<const double>> in;
    std::vector<std::span<double>> out;
    for (std::size_t m = 0; m < u.size(); ++m) {
      expand(u[m], xs[m]);
      ys[m].assign(full, 0.0);
      in.emplace_back(xs[m]);
      out.emplace_back(ys[m]);
    }
    hessian.apply(in, out);
    for (std::size_t m = 0; m < u.size(); ++m) {
      const double scale = half ? 1.0 / root_half : 1.0;
      for (std::size_t e = 0; e < length; ++e) w[m][e] = scale * ys[m][e];
    }
  };
  linalg::DavidsonOptions davidson;
  davidson.roots = options.roots;
  davidson.tolerance = options.tolerance;
  davidson.max_iterations = 100;
  const linalg::DavidsonResult r = linalg::davidson_lowest(diagonal, product, davidson);
  if (!r.converged) {
    double worst = 0.0;
    for (double e : r.residuals) worst = std::max(worst, e);
    throw Error(fortran::list_directed(
        {std::string("Stability analysis not converged."), std::int64_t{r.iterations}, worst}));
  }
  StabilityBlock block;
  block.rotation = rotation;
  block.values = r.values;
  if (!r.values.empty()) {
    std::vector<double> x;
    expand(std::span<const double>(r.vectors.data(), length), x);
    block.lowest = std::move(x);
  }
  return block;
}

}  // namespace

const StabilityBlock* StabilityAnalysis::lowest() const {
  const StabilityBlock* best = nullptr;
  for (const StabilityBlock& b : blocks) {
    if (b.values.empty()) continue;
    if (best == nullptr || b.values.front() < best->values.front()) best = &b;
  }
  return best;
}

bool is_restricted(int n, const setup::ElectronCount& counts, std::span<const double> orbitals) {
  if (counts.alpha != counts.beta) return false;
  const std::size_t block = size(n) * size(n + 1);
  for (std::size_t e = 0; e < block; ++e) {
    if (std::abs(orbitals[e] - orbitals[block + e]) > 1e-7) return false;
  }
  return true;
}

StabilityAnalysis stability_analysis(const basis::BasisSet& basis, const scf::JobControl& job,
                                     const scf::MoleculeView& molecule,
                                     const setup::ElectronCount& counts,
                                     std::span<const double> rho, std::span<const double> orbitals,
                                     const std::optional<scf::KohnShamStage>& kohn_sham,
                                     const StabilityOptions& options) {
  OrbitalHessian hessian(basis, job, molecule, counts, rho, orbitals, kohn_sham, options.direct);
  StabilityAnalysis analysis;
  analysis.restricted = is_restricted(basis.nbasis(), counts, orbitals);
  analysis.northo = hessian.system().northo;
  if (analysis.restricted) {
    analysis.blocks.push_back(lowest_of(hessian, Rotation::restricted_to_restricted, options));
    analysis.blocks.push_back(lowest_of(hessian, Rotation::restricted_to_unrestricted, options));
  } else {
    analysis.blocks.push_back(lowest_of(hessian, Rotation::unrestricted, options));
  }
  return analysis;
}

std::vector<double> rotated_density(int n, int northo, const setup::ElectronCount& counts,
                                    std::span<const double> orbitals, std::span<const double> mode,
                                    double angle) {
  const std::size_t nn = size(n) * size(n);
  std::vector<double> rho(2 * nn, 0.0);
  double norm = 0.0;
  for (double e : mode) norm += e * e;
  norm = std::sqrt(norm);
  const double t = norm > 0.0 ? angle / norm : 0.0;
  const int occupied[2] = {counts.alpha, counts.beta};
  std::size_t offset = 0;
  for (std::size_t s = 0; s < 2; ++s) {
    const int nocc = std::clamp(occupied[s], 0, northo);
    const int nvir = nocc > 0 ? northo - nocc : 0;
    if (nocc == 0) continue;
    const double* c = orbitals.data() + s * (nn + size(n));
    // C_o' = C_o + t·C_v K, then orthonormalised: with O = C_o'ᵀ S C_o' =
    // 1 + t²KᵀK = L Lᵀ, the density is (L⁻¹ C_o'ᵀ)ᵀ (L⁻¹ C_o'ᵀ).
    std::vector<double> rotated(c, c + size(n) * size(nocc));
    MatrixView cr(rotated.data(), n, nocc, n);
    const ConstMatrixView k(mode.data() + offset, nvir, nocc, nvir);
    if (nvir > 0) {
      linalg::gemm(Op::none, Op::none, t, ConstMatrixView(c + size(n) * size(nocc), n, nvir, n), k,
                   1.0, cr);
    }
    linalg::Matrix overlap(nocc, nocc);
    if (nvir > 0) linalg::gemm(Op::transpose, Op::none, t * t, k, k, 0.0, overlap.view());
    for (int i = 0; i < nocc; ++i) overlap(i, i) += 1.0;
    if (linalg::cholesky(overlap.view(), 0.0) != linalg::Status::ok) {
      throw Error("Rotated orbitals are not independent.");
    }
    linalg::Matrix x(nocc, n);
    for (int i = 0; i < nocc; ++i) {
      for (int m = 0; m < n; ++m) x(i, m) = cr(m, i);
    }
    linalg::solve_lower(Op::none, overlap.view(), x.view());
    linalg::gemm(Op::transpose, Op::none, 1.0, x.view(), x.view(), 0.0,
                 MatrixView(rho.data() + s * nn, n, n, n));
    offset += size(nvir) * size(nocc);
  }
  return rho;
}

}  // namespace norvik::properties
