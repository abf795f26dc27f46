#include "dft/xc/xc_gradient.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>

#include "dft/grid/partition.h"
#include "dft/xc/basis_values.h"
#include "dft/xc/xc_integrator.h"
#include "linalg/kernels.h"

namespace norvik::dft {

namespace {

using linalg::ConstMatrixView;
using linalg::MatrixView;
using linalg::Op;

constexpr std::ptrdiff_t kBatch = kGridBatch;
// The gradient is summed over this many runs of consecutive batches whatever
// the thread count, as the exchange–correlation matrix is.
constexpr std::ptrdiff_t kRuns = 16;

// Reals per point of the density and potential tables (xc_integrator.h).
constexpr std::size_t kPointRecord = 8;
constexpr std::size_t kPotentialRecord = 5;
// Tables of a batch: value, x, y, z, then xx, xy, xz, yy, yz, zz.
constexpr std::size_t kValueTables = 4;
constexpr std::size_t kHessianTables = 10;
// The table of ∂_k∂_i.
constexpr std::array<std::array<std::size_t, 3>, 3> kSecond{{{4, 5, 6}, {5, 7, 8}, {6, 8, 9}}};

std::size_t size(std::ptrdiff_t n) {
  return static_cast<std::size_t>(n);
}

bool reads_gradients(Component c) {
  switch (c) {
    case Component::slater:
    case Component::vwn3:
    case Component::vwn5:
    case Component::perdew_zunger:
    case Component::gunnarsson_lundqvist:
      return false;
    case Component::becke88:
    case Component::pf_exchange:
    case Component::lyp:
    case Component::op:
      return true;
  }
  return true;
}

// Whether any term of the combination reads the density gradients: only then
// do the second derivatives of the basis functions enter.
bool gradient_corrected(Combination combination) {
  const CombinationRow& row = row_of(combination);
  return reads_gradients(row.exchange) || reads_gradients(row.correlation) ||
         (row.mixed_exchange.weight != 0.0 && reads_gradients(row.mixed_exchange.component)) ||
         (row.mixed_correlation.weight != 0.0 && reads_gradients(row.mixed_correlation.component));
}

void check_sizes(const basis::BasisSet& basis, std::span<const double> positions, const Grid& grid,
                 std::span<const double> density, GridResponse response) {
  const std::size_t natom = positions.size() / 3;
  const auto n = static_cast<std::size_t>(basis.nbasis());
  const auto npts = static_cast<std::size_t>(grid.size());
  bool ok = positions.size() == 3 * natom && grid.points.size() == 3 * npts &&
            density.size() == 2 * n * n;
  for (const basis::Shell& s : basis.shells) {
    ok = ok && s.atom >= 0 && static_cast<std::size_t>(s.atom) < natom;
  }
  if (response == GridResponse::moving) {
    ok = ok && grid.owners.size() == npts;
    for (int a : grid.owners) ok = ok && a >= 0 && static_cast<std::size_t>(a) < natom;
  }
  if (!ok) {
    throw std::invalid_argument(
        "exchange-correlation gradient: positions, grid, basis and density do not agree");
  }
}

}  // namespace

std::vector<double> xc_nuclear_gradient(const basis::BasisSet& basis,
                                        std::span<const double> positions, const Grid& grid,
                                        Combination combination, double exact_exchange,
                                        std::span<const double> density, GridResponse response) {
  check_sizes(basis, positions, grid, density, response);
  const std::size_t natom = positions.size() / 3;
  const std::ptrdiff_t n = basis.nbasis();
  const std::ptrdiff_t npts = grid.size();
  const std::size_t nn = size(n * n);
  const bool gga = gradient_corrected(combination);
  const bool moving = response == GridResponse::moving;
  const std::size_t ntables = gga ? kHessianTables : kValueTables;
  // A closed shell (the two blocks equal bit for bit): both spins go through
  // one product with T = X·Pα and the two spins' coefficients added.
  const bool closed = std::memcmp(density.data(), density.data() + nn, nn * sizeof(double)) == 0;
  const std::size_t nspin = closed ? 1 : 2;

  std::vector<std::size_t> atom_of(size(n));
  {
    std::size_t f = 0;
    for (const basis::Shell& s : basis.shells) {
      for (int k = 0; k < s.kind; ++k) atom_of[f++] = static_cast<std::size_t>(s.atom);
    }
  }
  const BasisEvaluator evaluator(basis, positions);
  const std::ptrdiff_t nbatch = (npts + kBatch - 1) / kBatch;
  const std::ptrdiff_t nrun = std::min(kRuns, nbatch);
  std::vector<double> partial(size(nrun) * 3 * natom, 0.0);

#pragma omp parallel
  {
    MovingPointWeight partition(positions);
    std::vector<double> tables(ntables * size(kBatch * n)), t(nspin * size(kBatch * n)),
        z(size(kBatch * n)), zp(size(kBatch * n)), records(kPointRecord * size(kBatch)),
        potentials(kPotentialRecord * size(kBatch)), energies(3 * size(kBatch)),
        coef(4 * size(kBatch)), sums(4 * size(kBatch)), own(3 * size(kBatch)), fun(3 * size(n)),
        wgrad(3 * natom);
#pragma omp for schedule(dynamic)
    for (std::ptrdiff_t run = 0; run < nrun; ++run) {
      double* g = partial.data() + size(run) * 3 * natom;
      for (std::ptrdiff_t b = run * nbatch / nrun; b < (run + 1) * nbatch / nrun; ++b) {
        const std::ptrdiff_t p0 = b * kBatch, nb = std::min(kBatch, npts - p0);
        const std::size_t block = size(nb * n);
        const std::span<double> tab(tables.data(), ntables * block);
        if (gga) {
          evaluator.batch_with_hessian(grid.points, p0, nb, tab);
        } else {
          evaluator.batch(grid.points, p0, nb, tab);
        }
        const double* x = tables.data();
        const auto table = [&](std::size_t c) { return x + c * block; };

        // The point records: Tσ = X·Pσ, ρσ = Σ_μ Tσ χμ, ∇ρσ = 2 Σ_μ Tσ ∇χμ.
        for (std::size_t spin = 0; spin < nspin; ++spin) {
          double* ts = t.data() + spin * block;
          linalg::gemm(Op::none, Op::none, 1.0, ConstMatrixView(x, nb, n, nb),
                       ConstMatrixView(density.data() + spin * nn, n, n, n), 0.0,
                       MatrixView(ts, nb, n, nb));
          std::fill(sums.begin(), sums.end(), 0.0);
          for (std::ptrdiff_t f = 0; f < n; ++f) {
            const double* tf = ts + size(nb * f);
            for (std::size_t c = 0; c < 4; ++c) {
              const double* xf = table(c) + size(nb * f);
              double* s = sums.data() + c * size(kBatch);
              for (std::ptrdiff_t p = 0; p < nb; ++p) s[p] += tf[p] * xf[p];
            }
          }
          for (std::ptrdiff_t p = 0; p < nb; ++p) {
            double* rec = records.data() + kPointRecord * size(p);
            rec[spin] = sums[size(p)];
            for (std::size_t c = 0; c < 3; ++c) {
              rec[2 + 3 * spin + c] = 2.0 * sums[(1 + c) * size(kBatch) + size(p)];
            }
          }
        }
        if (closed) {
          for (std::ptrdiff_t p = 0; p < nb; ++p) {
            double* rec = records.data() + kPointRecord * size(p);
            rec[1] = rec[0];
            for (std::size_t c = 0; c < 3; ++c) rec[5 + c] = rec[2 + c];
          }
        }
        const std::span<const double> rec(records.data(), kPointRecord * size(nb));
        const std::span<double> e(energies.data(), 3 * size(nb));
        combination_energies(combination, rec, exact_exchange,
                             {e.subspan(0, size(nb)), e.subspan(size(nb), size(nb)),
                              e.subspan(2 * size(nb), size(nb))});
        combination_potentials(combination, rec, exact_exchange,
                               {potentials.data(), kPotentialRecord * size(nb)});

        // The partition weights: w_g = (template weight)·w_A(r_g), so
        // ∂w_g = w_g ∂w_A / w_A.
        if (moving) {
          for (std::ptrdiff_t p = 0; p < nb; ++p) {
            const std::size_t at = size(p0 + p);
            const double w = grid.weights[at], f = energies[size(p)];
            if (f == 0.0 || w == 0.0) continue;
            const Point r{grid.points[3 * at], grid.points[3 * at + 1], grid.points[3 * at + 2]};
            const double wa = partition(grid.owners[at], r, wgrad);
            if (wa == 0.0) continue;
            const double factor = f * w / wa;
            for (std::size_t k = 0; k < 3 * natom; ++k) g[k] += factor * wgrad[k];
          }
        }

        // q_gμ,k = X_k A + T Σ_i c_i X_ki with c0 = 2w vρσ, c = 2w gσ and
        // A = (c0 X + Σ_i c_i X_i)·Pσ: per point (the motion of the point)
        // and per function (the motion of the function).
        std::fill(own.begin(), own.end(), 0.0);
        std::fill(fun.begin(), fun.end(), 0.0);
        for (std::size_t spin = 0; spin < nspin; ++spin) {
          for (std::ptrdiff_t p = 0; p < nb; ++p) {
            const double* r = records.data() + kPointRecord * size(p);
            const double* v = potentials.data() + kPotentialRecord * size(p);
            const double w2 = 2.0 * grid.weights[size(p0 + p)];
            std::array<double, 4> c{};
            for (std::size_t s = 0; s < 2; ++s) {
              if (!closed && s != spin) continue;
              const double* mine = r + 2 + 3 * s;
              const double* other = r + 2 + 3 * (1 - s);
              c[0] += w2 * v[s];
              for (std::size_t k = 0; k < 3; ++k) {
                c[1 + k] += w2 * (2.0 * v[2 + s] * mine[k] + v[4] * other[k]);
              }
            }
            for (std::size_t k = 0; k < 4; ++k) coef[k * size(kBatch) + size(p)] = c[k];
          }
          const double* ts = t.data() + spin * block;
          const double* c0 = coef.data();
          const double* c1 = c0 + kBatch;
          const double* c2 = c1 + kBatch;
          const double* c3 = c2 + kBatch;
          const double* a = zp.data();
          if (gga) {
            for (std::ptrdiff_t f = 0; f < n; ++f) {
              const std::size_t o = size(nb * f);
              double* zf = z.data() + o;
              const double *x0 = table(0) + o, *x1 = table(1) + o, *x2 = table(2) + o,
                           *x3 = table(3) + o;
              for (std::ptrdiff_t p = 0; p < nb; ++p) {
                zf[p] = c0[p] * x0[p] + c1[p] * x1[p] + c2[p] * x2[p] + c3[p] * x3[p];
              }
            }
            linalg::gemm(Op::none, Op::none, 1.0, ConstMatrixView(z.data(), nb, n, nb),
                         ConstMatrixView(density.data() + spin * nn, n, n, n), 0.0,
                         MatrixView(zp.data(), nb, n, nb));
          } else {
            for (std::size_t i = 0; i < block; ++i) zp[i] = c0[i % size(nb)] * ts[i];
          }
          for (std::ptrdiff_t f = 0; f < n; ++f) {
            const std::size_t o = size(nb * f);
            const double* tf = ts + o;
            const double* af = a + o;
            for (std::size_t k = 0; k < 3; ++k) {
              const double* xk = table(1 + k) + o;
              double* ownk = own.data() + k * size(kBatch);
              double sum = 0.0;
              if (gga) {
                const double* xk0 = table(kSecond[k][0]) + o;
                const double* xk1 = table(kSecond[k][1]) + o;
                const double* xk2 = table(kSecond[k][2]) + o;
                for (std::ptrdiff_t p = 0; p < nb; ++p) {
                  const double q =
                      xk[p] * af[p] + tf[p] * (c1[p] * xk0[p] + c2[p] * xk1[p] + c3[p] * xk2[p]);
                  ownk[p] += q;
                  sum += q;
                }
              } else {
                for (std::ptrdiff_t p = 0; p < nb; ++p) {
                  const double q = xk[p] * af[p];
                  ownk[p] += q;
                  sum += q;
                }
              }
              fun[3 * size(f) + k] += sum;
            }
          }
        }
        if (moving) {
          for (std::ptrdiff_t p = 0; p < nb; ++p) {
            const auto owner = static_cast<std::size_t>(grid.owners[size(p0 + p)]);
            for (std::size_t k = 0; k < 3; ++k) g[3 * owner + k] += own[k * size(kBatch) + size(p)];
          }
        }
        for (std::ptrdiff_t f = 0; f < n; ++f) {
          for (std::size_t k = 0; k < 3; ++k) g[3 * atom_of[size(f)] + k] -= fun[3 * size(f) + k];
        }
      }
    }
  }

  std::vector<double> gradient(3 * natom, 0.0);
  for (std::ptrdiff_t run = 0; run < nrun; ++run) {
    const double* g = partial.data() + size(run) * 3 * natom;
    for (std::size_t k = 0; k < 3 * natom; ++k) gradient[k] += g[k];
  }
  return gradient;
}

}  // namespace norvik::dft
