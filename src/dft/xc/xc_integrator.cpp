#include "dft/xc/xc_integrator.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "dft/grid/molecular_grid.h"
#include "dft/xc/basis_values.h"
#include "linalg/kernels.h"

namespace norvik::dft {

namespace {

using linalg::ConstMatrixView;
using linalg::MatrixView;
using linalg::Op;

constexpr std::ptrdiff_t kBatch = kGridBatch;
// The matrix is summed over this many runs of consecutive batches, whatever
// the thread count: enough runs to keep the threads busy, few enough that
// their partial matrices stay small.
constexpr std::ptrdiff_t kRuns = 16;

std::size_t size(std::ptrdiff_t n) {
  return static_cast<std::size_t>(n);
}

// The four (nb × n) tables (value, x, y, z) of the batch at p0: in place for
// the batch layout, gathered into `scratch` for the point layout, evaluated
// into it when there is no table.
const double* batch_tables(const GridBasis& g, std::ptrdiff_t p0, std::ptrdiff_t nb,
                           std::vector<double>& scratch) {
  const std::ptrdiff_t n = g.nbasis;
  if (g.layout == TableLayout::by_batch) return g.chi.data() + 4 * size(n) * size(p0);
  scratch.resize(4 * size(nb * n));
  if (g.layout == TableLayout::computed) {
    g.evaluator->batch(g.points, p0, nb, scratch);
    return scratch.data();
  }
  const std::size_t block = size(nb * n);
  for (std::ptrdiff_t f = 0; f < n; ++f) {
    const double* src = g.chi.data() + 4 * (size(p0) + size(g.npts) * size(f));
    for (std::ptrdiff_t p = 0; p < nb; ++p) {
      for (std::size_t c = 0; c < 4; ++c) scratch[c * block + size(p + nb * f)] = src[4 * p + c];
    }
  }
  return scratch.data();
}

// The spins agree bit for bit: a closed shell, computed once.
bool same_blocks(const double* a, const double* b, std::size_t count) {
  return std::memcmp(a, b, count * sizeof(double)) == 0;
}

bool closed_shell_points(std::span<const double> rho, std::span<const double> v) {
  const std::size_t npts = rho.size() / 8;
  for (std::size_t p = 0; p < npts; ++p) {
    const double* r = rho.data() + 8 * p;
    const double* vp = v.data() + 5 * p;
    if (r[0] != r[1] || r[2] != r[5] || r[3] != r[6] || r[4] != r[7] || vp[0] != vp[1] ||
        vp[2] != vp[3]) {
      return false;
    }
  }
  return true;
}

}  // namespace

GridBasis table_by_point(int npts, int nbasis, std::span<const double> weights, const double* chi) {
  GridBasis g;
  g.npts = npts;
  g.nbasis = nbasis;
  g.weights = weights;
  g.chi = {chi, 4 * size(npts) * size(nbasis)};
  return g;
}

std::size_t table_index(TableLayout layout, int npts, int nbasis, int p, int f, int c) {
  if (layout == TableLayout::by_point) {
    return 4 * (size(p) + size(npts) * size(f)) + size(c);
  }
  const std::ptrdiff_t p0 = (p / kBatch) * kBatch;
  const std::ptrdiff_t nb = std::min<std::ptrdiff_t>(kBatch, npts - p0);
  return 4 * size(nbasis) * size(p0) + size(c) * size(nb * nbasis) + size(p - p0 + nb * f);
}

void density_on_grid(const GridBasis& g, std::span<const double> density, std::span<double> rho) {
  const std::ptrdiff_t n = g.nbasis;
  const std::size_t nn = size(n * n);
  const std::ptrdiff_t nbatch = (g.npts + kBatch - 1) / kBatch;
  const bool closed = same_blocks(density.data(), density.data() + nn, nn);
  const std::size_t nspin = closed ? 1 : 2;
#pragma omp parallel
  {
    std::vector<double> scratch, t(size(kBatch * n)), sum(4 * size(kBatch));
#pragma omp for schedule(dynamic)
    for (std::ptrdiff_t b = 0; b < nbatch; ++b) {
      const std::ptrdiff_t p0 = b * kBatch, nb = std::min(kBatch, g.npts - p0);
      const double* x = batch_tables(g, p0, nb, scratch);
      const std::size_t block = size(nb * n);
      for (std::size_t spin = 0; spin < nspin; ++spin) {
        // T = X·Pσ, then ρ = Σ_μ T χμ and ∇ρ = 2 Σ_μ T ∇χμ (P symmetric).
        linalg::gemm(Op::none, Op::none, 1.0, ConstMatrixView(x, nb, n, nb),
                     ConstMatrixView(density.data() + spin * nn, n, n, n), 0.0,
                     MatrixView(t.data(), nb, n, nb));
        std::fill(sum.begin(), sum.end(), 0.0);
        for (std::ptrdiff_t f = 0; f < n; ++f) {
          const double* tf = t.data() + size(nb * f);
          for (std::size_t c = 0; c < 4; ++c) {
            const double* xf = x + c * block + size(nb * f);
            double* s = sum.data() + c * size(kBatch);
            for (std::ptrdiff_t p = 0; p < nb; ++p) s[p] += tf[p] * xf[p];
          }
        }
        for (std::ptrdiff_t p = 0; p < nb; ++p) {
          double* out = rho.data() + 8 * size(p0 + p);
          out[spin] = sum[size(p)];
          for (std::size_t c = 0; c < 3; ++c) {
            out[2 + 3 * spin + c] = 2.0 * sum[(1 + c) * size(kBatch) + size(p)];
          }
        }
      }
      if (closed) {
        for (std::ptrdiff_t p = 0; p < nb; ++p) {
          double* out = rho.data() + 8 * size(p0 + p);
          out[1] = out[0];
          for (std::size_t c = 0; c < 3; ++c) out[5 + c] = out[2 + c];
        }
      }
    }
  }
}

void xc_matrix(const GridBasis& g, std::span<const double> rho, std::span<const double> v,
               std::span<double> matrix) {
  const std::ptrdiff_t n = g.nbasis;
  const std::size_t nn = size(n * n);
  const std::ptrdiff_t nbatch = (g.npts + kBatch - 1) / kBatch;
  const std::ptrdiff_t nrun = std::min(kRuns, nbatch);
  const bool closed = closed_shell_points(rho, v);
  const std::size_t nspin = closed ? 1 : 2;
  // M_σ = X0ᵀ Zσ with Zσ(p, ν) = w_p (½ vρσ χν + gσ·∇χν), summed per run of
  // batches; then Vσ = Mσ + Mσᵀ.
  std::vector<double> m(size(nrun) * nspin * nn, 0.0);
#pragma omp parallel
  {
    std::vector<double> scratch, z(size(kBatch * n)), coef(4 * size(kBatch));
#pragma omp for schedule(dynamic)
    for (std::ptrdiff_t run = 0; run < nrun; ++run) {
      double* mrun = m.data() + size(run) * nspin * nn;
      for (std::ptrdiff_t b = run * nbatch / nrun; b < (run + 1) * nbatch / nrun; ++b) {
        const std::ptrdiff_t p0 = b * kBatch, nb = std::min(kBatch, g.npts - p0);
        const double* x = batch_tables(g, p0, nb, scratch);
        const std::size_t block = size(nb * n);
        for (std::size_t spin = 0; spin < nspin; ++spin) {
          // Per point: w·½vρσ and w·(2 vγσσ ∇ρσ + vγαβ ∇ρσ′).
          for (std::ptrdiff_t p = 0; p < nb; ++p) {
            const double* r = rho.data() + 8 * size(p0 + p);
            const double* vp = v.data() + 5 * size(p0 + p);
            const double w = g.weights[size(p0 + p)];
            const double* own = r + 2 + 3 * spin;
            const double* other = r + 2 + 3 * (1 - spin);
            coef[size(p)] = w * 0.5 * vp[spin];
            for (std::size_t c = 0; c < 3; ++c) {
              coef[(1 + c) * size(kBatch) + size(p)] =
                  w * (2.0 * vp[2 + spin] * own[c] + vp[4] * other[c]);
            }
          }
          for (std::ptrdiff_t f = 0; f < n; ++f) {
            double* zf = z.data() + size(nb * f);
            const double* x0 = x + size(nb * f);
            const double* x1 = x0 + block;
            const double* x2 = x1 + block;
            const double* x3 = x2 + block;
            const double* c0 = coef.data();
            const double* c1 = c0 + kBatch;
            const double* c2 = c1 + kBatch;
            const double* c3 = c2 + kBatch;
            for (std::ptrdiff_t p = 0; p < nb; ++p) {
              zf[p] = c0[p] * x0[p] + c1[p] * x1[p] + c2[p] * x2[p] + c3[p] * x3[p];
            }
          }
          linalg::gemm(Op::transpose, Op::none, 1.0, ConstMatrixView(x, nb, n, nb),
                       ConstMatrixView(z.data(), nb, n, nb), 1.0,
                       MatrixView(mrun + spin * nn, n, n, n));
        }
      }
    }
  }
  for (std::size_t spin = 0; spin < 2; ++spin) {
    const std::size_t from = closed ? 0 : spin;
    double* vs = matrix.data() + spin * nn;
    for (std::ptrdiff_t j = 0; j < n; ++j) {
      for (std::ptrdiff_t i = 0; i < n; ++i) {
        double sum = 0.0;
        for (std::ptrdiff_t run = 0; run < nrun; ++run) {
          const double* ms = m.data() + (size(run) * nspin + from) * nn;
          sum += ms[size(i + n * j)] + ms[size(j + n * i)];
        }
        vs[size(i + n * j)] = sum;
      }
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
