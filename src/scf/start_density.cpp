#include "scf/start_density.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "scf/density_update.h"

namespace norvik::scf {

namespace {

using linalg::ConstMatrixView;
using linalg::Index;

constexpr double kEmptyTrace = 1e-8;

using linalg::square;

ConstMatrixView spin_block(std::span<const double> pair, Index n, std::size_t spin) {
  return {pair.data() + spin * square(n), n, n, n};
}

void diagonal(Index n, double value, double* block) {
  std::fill_n(block, square(n), 0.0);
  for (Index i = 0; i < n; ++i) block[i + i * n] = value;
}

}  // namespace

void free_atom_start(int zsum, int charge, int multiplicity, int nbasis, std::span<double> rho) {
  const setup::ElectronCount counts =
      setup::count_electrons(zsum, charge, multiplicity, "makeIniRho");
  const Index n = std::max(nbasis, 0);
  std::fill_n(rho.data(), 2 * square(n), 0.0);
  if (n == 0) return;
  diagonal(n, static_cast<double>(counts.alpha) / static_cast<double>(n), rho.data());
  diagonal(n, static_cast<double>(counts.beta) / static_cast<double>(n), rho.data() + square(n));
}

void count_carrier(ConstMatrixView s, setup::ElectronCount counts, std::span<double> rho) {
  const Index n = s.rows();
  double trace = 0.0;
  for (Index i = 0; i < n; ++i) trace += s(i, i);
  const double scale = trace > 0.0 ? 1.0 / trace : 0.0;
  diagonal(n, counts.alpha * scale, rho.data());
  diagonal(n, counts.beta * scale, rho.data() + square(n));
}

void normalize_density(ConstMatrixView s, setup::ElectronCount counts, std::span<double> rho) {
  const Index n = s.rows();
  const std::size_t nn = square(n);
  const int want[2] = {counts.alpha, counts.beta};
  double have[2];
  for (std::size_t spin = 0; spin < 2; ++spin) {
    have[spin] = electron_trace(spin_block(rho, n, spin), s);
  }
  const double total = have[0] + have[1];
  // The total density first, while both blocks are still as supplied.
  std::vector<double> sum;
  for (std::size_t spin = 0; spin < 2; ++spin) {
    if (std::abs(have[spin]) < kEmptyTrace && want[spin] > 0 && std::abs(total) >= kEmptyTrace &&
        sum.empty()) {
      sum.resize(nn);
      for (std::size_t e = 0; e < nn; ++e) sum[e] = rho[e] + rho[nn + e];
    }
  }
  for (std::size_t spin = 0; spin < 2; ++spin) {
    double* p = rho.data() + spin * nn;
    const double w = want[spin];
    if (std::abs(have[spin]) >= kEmptyTrace) {
      const double f = w / have[spin];
      for (std::size_t e = 0; e < nn; ++e) p[e] *= f;
    } else if (w == 0.0) {
      std::fill_n(p, nn, 0.0);
    } else if (!sum.empty()) {
      const double f = w / total;
      for (std::size_t e = 0; e < nn; ++e) p[e] = sum[e] * f;
    } else {
      double trace = 0.0;
      for (Index i = 0; i < n; ++i) trace += s(i, i);
      diagonal(n, trace > 0.0 ? w / trace : 0.0, p);
    }
  }
}

void patch_atomic_densities(ConstMatrixView s, setup::ElectronCount counts,
                            std::span<const double> atomic, std::span<double> rho) {
  const Index n = s.rows();
  const std::size_t nn = square(n);
  double total = 0.0;
  for (std::size_t e = 0; e < nn; ++e) {
    const double d = atomic[e] + atomic[nn + e];
    rho[e] = d;
    total += d * s.data()[e % static_cast<std::size_t>(n) +
                          (e / static_cast<std::size_t>(n)) * static_cast<std::size_t>(s.ld())];
  }
  if (std::abs(total) < kEmptyTrace) {
    count_carrier(s, counts, rho);
    return;
  }
  const double fa = counts.alpha / total;
  const double fb = counts.beta / total;
  for (std::size_t e = 0; e < nn; ++e) {
    const double d = rho[e];
    rho[e] = d * fa;
    rho[nn + e] = d * fb;
  }
}

}  // namespace norvik::scf
