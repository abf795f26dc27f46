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

// What every batch shares.
struct Problem {
  const Grid& grid;
  const BasisEvaluator& evaluator;
  std::span<const double> density;
  std::span<const std::size_t> atom_of;  // atom of each function
  std::ptrdiff_t n;                      // functions
  std::size_t natom;
  Combination combination;
  double exact_exchange;
  bool gga;     // the second derivatives of the functions enter
  bool closed;  // the two density blocks are equal: one pass for both spins
  bool moving;  // the grid moves with the atoms
};

// One thread's work on batches of points, with its own buffers.
class BatchGradient {
 public:
  BatchGradient(const Problem& pb, std::span<const double> positions)
      : pb_(pb),
        partition_(positions),
        ntables_(pb.gga ? kHessianTables : kValueTables),
        nspin_(pb.closed ? 1 : 2),
        tables_(ntables_ * size(kBatch * pb.n)),
        t_(nspin_ * size(kBatch * pb.n)),
        z_(size(kBatch * pb.n)),
        a_(size(kBatch * pb.n)),
        records_(kPointRecord * size(kBatch)),
        potentials_(kPotentialRecord * size(kBatch)),
        energies_(3 * size(kBatch)),
        coef_(4 * size(kBatch)),
        own_(3 * size(kBatch)),
        fun_(3 * size(pb.n)),
        wgrad_(3 * pb.natom) {}

  // Adds the terms of points [p0, p0 + nb) to g ((3, natom)).
  void add(std::ptrdiff_t p0, std::ptrdiff_t nb, std::span<double> g);

 private:
  const double* table(std::size_t c) const { return tables_.data() + c * block_; }
  void point_records();
  void add_partition(std::span<double> g);
  void add_functions(std::span<double> g);
  // c0 = 2w vρσ and c = 2w gσ of spin `spin` (both spins for a closed shell).
  void coefficients(std::size_t spin);

  const Problem& pb_;
  MovingPointWeight partition_;
  std::size_t ntables_, nspin_;
  std::ptrdiff_t p0_ = 0, nb_ = 0;
  std::size_t block_ = 0;  // nb·n
  std::vector<double> tables_, t_, z_, a_, records_, potentials_, energies_, coef_, own_, fun_,
      wgrad_;
};

void BatchGradient::add(std::ptrdiff_t p0, std::ptrdiff_t nb, std::span<double> g) {
  p0_ = p0;
  nb_ = nb;
  block_ = size(nb * pb_.n);
  const std::span<double> tab(tables_.data(), ntables_ * block_);
  if (pb_.gga) {
    pb_.evaluator.batch_with_hessian(pb_.grid.points, p0, nb, tab);
  } else {
    pb_.evaluator.batch(pb_.grid.points, p0, nb, tab);
  }
  point_records();
  const std::span<const double> rec(records_.data(), kPointRecord * size(nb));
  const std::span<double> e(energies_.data(), 3 * size(nb));
  combination_energies(
      pb_.combination, rec, pb_.exact_exchange,
      {e.subspan(0, size(nb)), e.subspan(size(nb), size(nb)), e.subspan(2 * size(nb), size(nb))});
  combination_potentials(pb_.combination, rec, pb_.exact_exchange,
                         {potentials_.data(), kPotentialRecord * size(nb)});
  if (pb_.moving) add_partition(g);
  add_functions(g);
}

// Tσ = X·Pσ, then ρσ = Σ_μ Tσ χμ and ∇ρσ = 2 Σ_μ Tσ ∇χμ.
void BatchGradient::point_records() {
  const std::ptrdiff_t n = pb_.n, nb = nb_;
  const std::size_t nn = size(n * n);
  std::array<double, 4 * kBatch> sums;
  for (std::size_t spin = 0; spin < nspin_; ++spin) {
    double* ts = t_.data() + spin * block_;
    linalg::gemm(Op::none, Op::none, 1.0, ConstMatrixView(table(0), nb, n, nb),
                 ConstMatrixView(pb_.density.data() + spin * nn, n, n, n), 0.0,
                 MatrixView(ts, nb, n, nb));
    sums.fill(0.0);
    for (std::ptrdiff_t f = 0; f < n; ++f) {
      const double* tf = ts + size(nb * f);
      for (std::size_t c = 0; c < 4; ++c) {
        const double* xf = table(c) + size(nb * f);
        double* s = sums.data() + c * size(kBatch);
        for (std::ptrdiff_t p = 0; p < nb; ++p) s[p] += tf[p] * xf[p];
      }
    }
    for (std::ptrdiff_t p = 0; p < nb; ++p) {
      double* rec = records_.data() + kPointRecord * size(p);
      rec[spin] = sums[size(p)];
      for (std::size_t c = 0; c < 3; ++c) {
        rec[2 + 3 * spin + c] = 2.0 * sums[(1 + c) * size(kBatch) + size(p)];
      }
    }
  }
  if (pb_.closed) {
    for (std::ptrdiff_t p = 0; p < nb; ++p) {
      double* rec = records_.data() + kPointRecord * size(p);
      rec[1] = rec[0];
      for (std::size_t c = 0; c < 3; ++c) rec[5 + c] = rec[2 + c];
    }
  }
}

// Σ_g f_g ∂w_g: w_g = (template weight)·w_A(r_g), so ∂w_g = w_g ∂w_A / w_A.
void BatchGradient::add_partition(std::span<double> g) {
  const Grid& grid = pb_.grid;
  for (std::ptrdiff_t p = 0; p < nb_; ++p) {
    const std::size_t at = size(p0_ + p);
    const double w = grid.weights[at], f = energies_[size(p)];
    if (f == 0.0 || w == 0.0) continue;
    const Point r{grid.points[3 * at], grid.points[3 * at + 1], grid.points[3 * at + 2]};
    const double wa = partition_(grid.owners[at], r, wgrad_);
    if (wa == 0.0) continue;
    const double factor = f * w / wa;
    for (std::size_t k = 0; k < g.size(); ++k) g[k] += factor * wgrad_[k];
  }
}

void BatchGradient::coefficients(std::size_t spin) {
  for (std::ptrdiff_t p = 0; p < nb_; ++p) {
    const double* r = records_.data() + kPointRecord * size(p);
    const double* v = potentials_.data() + kPotentialRecord * size(p);
    const double w2 = 2.0 * pb_.grid.weights[size(p0_ + p)];
    std::array<double, 4> c{};
    for (std::size_t s = 0; s < 2; ++s) {
      if (!pb_.closed && s != spin) continue;
      const double* mine = r + 2 + 3 * s;
      const double* other = r + 2 + 3 * (1 - s);
      c[0] += w2 * v[s];
      for (std::size_t k = 0; k < 3; ++k) {
        c[1 + k] += w2 * (2.0 * v[2 + s] * mine[k] + v[4] * other[k]);
      }
    }
    for (std::size_t k = 0; k < 4; ++k) coef_[k * size(kBatch) + size(p)] = c[k];
  }
}

// q_gμ,k = X_k A + T Σ_i c_i X_ki with A = (c0 X + Σ_i c_i X_i)·Pσ, summed
// over the functions into the point's owner (the point moves) and over the
// points into the function's atom (the function moves).
void BatchGradient::add_functions(std::span<double> g) {
  const std::ptrdiff_t n = pb_.n, nb = nb_;
  const std::size_t nn = size(n * n);
  std::fill(own_.begin(), own_.end(), 0.0);
  std::fill(fun_.begin(), fun_.end(), 0.0);
  const double* c0 = coef_.data();
  const double* c1 = c0 + kBatch;
  const double* c2 = c1 + kBatch;
  const double* c3 = c2 + kBatch;
  for (std::size_t spin = 0; spin < nspin_; ++spin) {
    coefficients(spin);
    const double* ts = t_.data() + spin * block_;
    if (pb_.gga) {
      for (std::ptrdiff_t f = 0; f < n; ++f) {
        const std::size_t o = size(nb * f);
        double* zf = z_.data() + o;
        const double *x0 = table(0) + o, *x1 = table(1) + o, *x2 = table(2) + o, *x3 = table(3) + o;
        for (std::ptrdiff_t p = 0; p < nb; ++p) {
          zf[p] = c0[p] * x0[p] + c1[p] * x1[p] + c2[p] * x2[p] + c3[p] * x3[p];
        }
      }
      linalg::gemm(Op::none, Op::none, 1.0, ConstMatrixView(z_.data(), nb, n, nb),
                   ConstMatrixView(pb_.density.data() + spin * nn, n, n, n), 0.0,
                   MatrixView(a_.data(), nb, n, nb));
    } else {
      for (std::size_t i = 0; i < block_; ++i) a_[i] = c0[i % size(nb)] * ts[i];
    }
    for (std::ptrdiff_t f = 0; f < n; ++f) {
      const std::size_t o = size(nb * f);
      const double* tf = ts + o;
      const double* af = a_.data() + o;
      for (std::size_t k = 0; k < 3; ++k) {
        const double* xk = table(1 + k) + o;
        double* ownk = own_.data() + k * size(kBatch);
        double sum = 0.0;
        if (pb_.gga) {
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
        fun_[3 * size(f) + k] += sum;
      }
    }
  }
  if (pb_.moving) {
    for (std::ptrdiff_t p = 0; p < nb; ++p) {
      const auto owner = static_cast<std::size_t>(pb_.grid.owners[size(p0_ + p)]);
      for (std::size_t k = 0; k < 3; ++k) g[3 * owner + k] += own_[k * size(kBatch) + size(p)];
    }
  }
  for (std::ptrdiff_t f = 0; f < n; ++f) {
    const std::size_t atom = pb_.atom_of[size(f)];
    for (std::size_t k = 0; k < 3; ++k) g[3 * atom + k] -= fun_[3 * size(f) + k];
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
  const std::size_t nn = size(n * n);
  std::vector<std::size_t> atom_of;
  for (const basis::Shell& s : basis.shells) {
    atom_of.insert(atom_of.end(), static_cast<std::size_t>(s.kind),
                   static_cast<std::size_t>(s.atom));
  }
  const BasisEvaluator evaluator(basis, positions);
  const Problem pb{grid,
                   evaluator,
                   density,
                   atom_of,
                   n,
                   natom,
                   combination,
                   exact_exchange,
                   gradient_corrected(combination),
                   std::memcmp(density.data(), density.data() + nn, nn * sizeof(double)) == 0,
                   response == GridResponse::moving};

  const std::ptrdiff_t nbatch = (grid.size() + kBatch - 1) / kBatch;
  const std::ptrdiff_t nrun = std::min(kRuns, nbatch);
  std::vector<double> partial(size(nrun) * 3 * natom, 0.0);
#pragma omp parallel
  {
    BatchGradient work(pb, positions);
#pragma omp for schedule(dynamic)
    for (std::ptrdiff_t run = 0; run < nrun; ++run) {
      const std::span<double> g(partial.data() + size(run) * 3 * natom, 3 * natom);
      for (std::ptrdiff_t b = run * nbatch / nrun; b < (run + 1) * nbatch / nrun; ++b) {
        const std::ptrdiff_t p0 = b * kBatch;
        work.add(p0, std::min(kBatch, grid.size() - p0), g);
      }
    }
  }
  std::vector<double> gradient(3 * natom, 0.0);
  for (std::ptrdiff_t run = 0; run < nrun; ++run) {
    for (std::size_t k = 0; k < 3 * natom; ++k) gradient[k] += partial[size(run) * 3 * natom + k];
  }
  return gradient;
}

}  // namespace norvik::dft
