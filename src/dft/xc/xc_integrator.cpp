#include "dft/xc/xc_integrator.h"

#include <algorithm>
#include <array>
#include <vector>

#include "dft/grid/molecular_grid.h"
#include "linalg/kernels.h"

namespace norvik::dft {

namespace {

using linalg::ConstMatrixView;
using linalg::MatrixView;
using linalg::Op;

// Points per batch and basis functions per column block of the matrix: the
// batch's (batch × nbasis) tables stay in the cache while they are multiplied.
constexpr std::ptrdiff_t kBatch = 256;
constexpr std::ptrdiff_t kColumns = 32;

// The four tables (value, x, y, z) of points [p0, p0 + nb) and functions
// [f0, f0 + nf), each (nb × nf) column-major in `out` (4·nb·nf doubles).
void gather(const GridBasis& g, std::ptrdiff_t p0, std::ptrdiff_t nb, std::ptrdiff_t f0,
            std::ptrdiff_t nf, std::vector<double>& out) {
  out.resize(4 * static_cast<std::size_t>(nb * nf));
  const std::size_t block = static_cast<std::size_t>(nb * nf);
  for (std::ptrdiff_t f = 0; f < nf; ++f) {
    const double* src =
        g.chi.data() + 4 * (static_cast<std::size_t>(p0) +
                            static_cast<std::size_t>(g.npts) * static_cast<std::size_t>(f0 + f));
    for (std::ptrdiff_t p = 0; p < nb; ++p) {
      const std::size_t at = static_cast<std::size_t>(p + nb * f);
      for (std::size_t c = 0; c < 4; ++c) out[c * block + at] = src[4 * p + c];
    }
  }
}

}  // namespace

void density_on_grid(const GridBasis& g, std::span<const double> density, std::span<double> rho) {
  const std::ptrdiff_t n = g.nbasis;
  const std::size_t nn = static_cast<std::size_t>(n * n);
  const std::ptrdiff_t nbatch = (g.npts + kBatch - 1) / kBatch;
#pragma omp parallel
  {
    std::vector<double> x, t(static_cast<std::size_t>(kBatch * n));
#pragma omp for schedule(dynamic)
    for (std::ptrdiff_t b = 0; b < nbatch; ++b) {
      const std::ptrdiff_t p0 = b * kBatch, nb = std::min(kBatch, g.npts - p0);
      gather(g, p0, nb, 0, n, x);
      const std::size_t block = static_cast<std::size_t>(nb * n);
      ConstMatrixView x0(x.data(), nb, n, nb);
      MatrixView tv(t.data(), nb, n, nb);
      for (std::size_t spin = 0; spin < 2; ++spin) {
        // T = X·Pσ, then ρ = Σ_μ T χμ and ∇ρ = 2 Σ_μ T ∇χμ (P symmetric).
        linalg::gemm(Op::none, Op::none, 1.0, x0,
                     ConstMatrixView(density.data() + spin * nn, n, n, n), 0.0, tv);
        for (std::ptrdiff_t p = 0; p < nb; ++p) {
          std::array<double, 4> sum{};
          for (std::ptrdiff_t f = 0; f < n; ++f) {
            const double tpf = t[static_cast<std::size_t>(p + nb * f)];
            for (std::size_t c = 0; c < 4; ++c)
              sum[c] += tpf * x[c * block + static_cast<std::size_t>(p + nb * f)];
          }
          double* out = rho.data() + 8 * static_cast<std::size_t>(p0 + p);
          out[spin] = sum[0];
          for (std::size_t c = 0; c < 3; ++c) out[2 + 3 * spin + c] = 2.0 * sum[1 + c];
        }
      }
    }
  }
}

void xc_matrix(const GridBasis& g, std::span<const double> rho, std::span<const double> v,
               std::span<double> matrix) {
  const std::ptrdiff_t n = g.nbasis;
  const std::size_t nn = static_cast<std::size_t>(n * n);
  const std::ptrdiff_t nbatch = (g.npts + kBatch - 1) / kBatch;
  const std::ptrdiff_t nblock = (n + kColumns - 1) / kColumns;
  // M_σ = X0ᵀ Zσ with Zσ(p, ν) = w_p (½ vρσ χν + gσ·∇χν), then Vσ = Mσ + Mσᵀ.
  std::vector<double> m(2 * nn, 0.0);
#pragma omp parallel
  {
    std::vector<double> x, xc, z(static_cast<std::size_t>(2 * kBatch * kColumns));
#pragma omp for schedule(dynamic)
    for (std::ptrdiff_t cb = 0; cb < nblock; ++cb) {
      const std::ptrdiff_t f0 = cb * kColumns, nf = std::min(kColumns, n - f0);
      for (std::ptrdiff_t b = 0; b < nbatch; ++b) {
        const std::ptrdiff_t p0 = b * kBatch, nb = std::min(kBatch, g.npts - p0);
        gather(g, p0, nb, 0, n, x);
        gather(g, p0, nb, f0, nf, xc);
        const std::size_t cblock = static_cast<std::size_t>(nb * nf);
        for (std::size_t spin = 0; spin < 2; ++spin) {
          double* zs = z.data() + spin * cblock;
          for (std::ptrdiff_t p = 0; p < nb; ++p) {
            const double* r = rho.data() + 8 * static_cast<std::size_t>(p0 + p);
            const double* vp = v.data() + 5 * static_cast<std::size_t>(p0 + p);
            const double w = g.weights[static_cast<std::size_t>(p0 + p)];
            const double* own = r + 2 + 3 * spin;
            const double* other = r + 2 + 3 * (1 - spin);
            std::array<double, 3> grad;
            for (std::size_t c = 0; c < 3; ++c)
              grad[c] = 2.0 * vp[2 + spin] * own[c] + vp[4] * other[c];
            for (std::ptrdiff_t f = 0; f < nf; ++f) {
              const std::size_t at = static_cast<std::size_t>(p + nb * f);
              zs[at] = w * (0.5 * vp[spin] * xc[at] + grad[0] * xc[cblock + at] +
                            grad[1] * xc[2 * cblock + at] + grad[2] * xc[3 * cblock + at]);
            }
          }
          linalg::gemm(
              Op::transpose, Op::none, 1.0, ConstMatrixView(x.data(), nb, n, nb),
              ConstMatrixView(zs, nb, nf, nb), 1.0,
              MatrixView(m.data() + spin * nn + static_cast<std::size_t>(f0 * n), n, nf, n));
        }
      }
    }
  }
  for (std::size_t spin = 0; spin < 2; ++spin) {
    const double* ms = m.data() + spin * nn;
    double* vs = matrix.data() + spin * nn;
    for (std::ptrdiff_t j = 0; j < n; ++j) {
      for (std::ptrdiff_t i = 0; i < n; ++i) vs[i + n * j] = ms[i + n * j] + ms[j + n * i];
    }
  }
}

std::array<double, 3> electron_count(std::span<const double> weights, std::span<const double> rho) {
  const std::size_t npts = weights.size();
  std::vector<double> a(npts), b(npts);
  for (std::size_t p = 0; p < npts; ++p) {
    a[p] = rho[8 * p];
    b[p] = rho[8 * p + 1];
  }
  const double na = integrate(a, weights), nb = integrate(b, weights);
  return {na, nb, na + nb};
}

}  // namespace norvik::dft
