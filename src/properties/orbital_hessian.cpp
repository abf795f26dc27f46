#include "properties/orbital_hessian.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>

#include "dft/functionals/combinations.h"
#include "dft/functionals/point.h"
#include "dft/grid/molecular_grid.h"
#include "dft/xc/basis_values.h"
#include "dft/xc/xc_integrator.h"
#include "integrals/two/two_electron.h"
#include "linalg/kernels.h"
#include "linalg/memory_estimates.h"

namespace norvik::properties {

using linalg::ConstMatrixView;
using linalg::MatrixView;
using linalg::Op;

namespace {

std::size_t size(int n) {
  return static_cast<std::size_t>(n);
}

// The step of the central difference of the exchange–correlation matrix along
// a perturbed density, relative to that density's largest element: small
// enough that the third-order term (relative size ~ step²) is far below the
// response's tolerance, large enough that the rounding of the two matrices
// (~1e-16 of them, divided by the step) stays below it too.
constexpr double kXcStep = 1e-4;

}  // namespace

// The exchange–correlation response V1_σ = Σ_τ ∫ (δVxc_σ/δρ_τ) ρ1_τ on the
// grid of the point: with the local kernels where the functional has them
// (SVWN3, SVWN5), otherwise by the central difference of the matrix along ρ1.
class XcResponse {
 public:
  XcResponse(const basis::BasisSet& basis, const scf::MoleculeView& molecule,
             const scf::KohnShamStage& ks, std::span<const double> rho, bool keep_table)
      : functional_(ks.functional),
        grid_(dft::make_grid(molecule.elements, molecule.positions, ks.grid_radius, ks.grid_level)),
        evaluator_(std::make_unique<dft::BasisEvaluator>(basis, molecule.positions)) {
    const int n = basis.nbasis();
    const int npts = grid_.size();
    on_grid_ = {npts,        n, grid_.weights, {}, dft::TableLayout::computed, evaluator_.get(),
                grid_.points};
    if (keep_table) {
      chi_.resize(dft::basis_table_size(npts, n));
      dft::basis_on_grid(basis, molecule.positions, grid_.points, chi_, dft::TableLayout::by_batch);
      on_grid_.chi = chi_;
      on_grid_.layout = dft::TableLayout::by_batch;
    }
    const std::size_t np = size(npts);
    rho0_.resize(dft::kPointRecord * np);
    rho1_.resize(dft::kPointRecord * np);
    shifted_.resize(dft::kPointRecord * np);
    v_.resize(dft::kPotentialRecord * np);
    dft::density_on_grid(on_grid_, rho, rho0_);
    if (dft::row_of(functional_.combination).has_kernel) {
      kernels_.resize(dft::kKernelRecord * np);
      dft::combination_kernels(functional_.combination, rho0_, functional_.exact_exchange,
                               kernels_);
    }
    const std::size_t nn = size(n) * size(n);
    plus_.resize(2 * nn);
    minus_.resize(2 * nn);
    v1_.resize(np);
  }

  // Whether the response goes over the orbitals on the grid (add_amplitudes)
  // rather than over the basis (add).
  bool on_orbitals() const { return !orbitals_.empty(); }

  // With a local kernel: the values of the occupied and virtual orbitals of
  // each spin on the grid, (npts, nocc + nvir) per spin, when they fit in
  // `memory_gb`.  The response of amplitudes x is then
  //   ρ1_σ(p) = 2 Σ_ai x_ai,σ φ_a(p) φ_i(p),  v1_σ = Σ_τ f_στ ρ1_τ,
  //   y_ai,σ += Σ_p w_p v1_σ(p) φ_a(p) φ_i(p),
  // the basis route's P1 = Q + Qᵀ and C_vᵀ V1 C_o without the (npts × n²)
  // products of the basis functions: (npts × nvir × nocc) per spin instead.
  void tabulate_orbitals(const std::vector<SpinBlock>& spins, double memory_gb) {
    if (kernels_.empty()) return;
    const std::size_t np = size(on_grid_.npts);
    const int n = on_grid_.nbasis;
    // A closed shell's spins share their orbitals, and one table.
    const SpinBlock &a = spins[0], &b = spins[1];
    shared_ = a.nocc == b.nocc && a.nvir == b.nvir;
    for (int j = 0; shared_ && j < a.nocc + a.nvir; ++j) {
      for (int i = 0; i < n; ++i) {
        if (a.occ.col(j)[i] != b.occ.col(j)[i]) {
          shared_ = false;
          break;
        }
      }
    }
    std::size_t columns = 0;
    for (const SpinBlock& sb : spins) {
      columns += size(sb.nocc + sb.nvir);
      if (shared_) break;
    }
    if (8.0 * static_cast<double>(np * columns) / 1e9 > memory_gb) return;
    orbitals_.assign(np * columns, 0.0);
    std::size_t at = 0;
    for (const SpinBlock& sb : spins) {
      if (shared_ && !offset_.empty()) {
        offset_.push_back(offset_[0]);
        break;
      }
      offset_.push_back(at);
      const int k = sb.nocc + sb.nvir;
      if (k > 0) {
        const ConstMatrixView c(sb.occ.col(0), n, k, n);
        const std::ptrdiff_t nbatch = (on_grid_.npts + dft::kGridBatch - 1) / dft::kGridBatch;
#pragma omp parallel
        {
          std::vector<double> values(4 * size(dft::kGridBatch) * size(n));
#pragma omp for schedule(dynamic)
          for (std::ptrdiff_t bt = 0; bt < nbatch; ++bt) {
            const std::ptrdiff_t p0 = bt * dft::kGridBatch;
            const std::ptrdiff_t nb = std::min<std::ptrdiff_t>(dft::kGridBatch, on_grid_.npts - p0);
            evaluator_->batch(grid_.points, p0, nb, values);
            linalg::gemm(
                Op::none, Op::none, 1.0,
                ConstMatrixView(values.data(), static_cast<int>(nb), n, static_cast<int>(nb)), c,
                0.0,
                MatrixView(orbitals_.data() + at + size(p0), static_cast<int>(nb), k,
                           on_grid_.npts));
          }
        }
      }
      at += np * size(k);
    }
  }

  // y += the exchange–correlation response of the amplitudes x over the
  // orbitals on the grid (on_orbitals()).
  void add_amplitudes(const std::vector<SpinBlock>& spins, std::span<const double> x,
                      std::span<double> y) {
    const std::size_t np = size(on_grid_.npts);
    const int npts = on_grid_.npts;
    // Singlet and triplet amplitudes of a closed shell (x_β = ±x_α): the beta
    // density is ±ρ1_α, and the beta response ±that of alpha, since
    // fββ = fαα.
    const SpinBlock& first = spins[0];
    double sign = 0.0;
    if (shared_ && first.count() > 0) {
      const double* xa = x.data() + first.offset;
      const double* xb = x.data() + spins[1].offset;
      bool same = true, opposite = true;
      for (std::size_t e = 0; e < first.count() && (same || opposite); ++e) {
        same = same && xa[e] == xb[e];
        opposite = opposite && xa[e] == -xb[e];
      }
      sign = same ? 1.0 : opposite ? -1.0 : 0.0;
    }
    std::array<std::vector<double>, 2> rho1;
    for (std::size_t s = 0; s < 2; ++s) {
      rho1[s].assign(np, 0.0);
      if (s == 1 && sign != 0.0) {
        for (std::size_t p = 0; p < np; ++p) rho1[1][p] = sign * rho1[0][p];
        break;
      }
      const SpinBlock& b = spins[s];
      if (b.count() == 0) continue;
      const double* phi = orbitals_.data() + offset_[s];
      t_.resize(np * size(b.nocc));
      linalg::gemm(Op::none, Op::none, 1.0,
                   ConstMatrixView(phi + np * size(b.nocc), npts, b.nvir, npts),
                   ConstMatrixView(x.data() + b.offset, b.nvir, b.nocc, b.nvir), 0.0,
                   MatrixView(t_.data(), npts, b.nocc, npts));
      for (std::size_t i = 0; i < size(b.nocc); ++i) {
        const double* ti = t_.data() + i * np;
        const double* oi = phi + i * np;
        for (std::size_t p = 0; p < np; ++p) rho1[s][p] += 2.0 * ti[p] * oi[p];
      }
    }
    for (std::size_t s = 0; s < 2; ++s) {
      const SpinBlock& b = spins[s];
      if (b.count() == 0) continue;
      if (s == 1 && sign != 0.0) {
        const double* ya = y.data() + first.offset;
        double* yb = y.data() + b.offset;
        for (std::size_t e = 0; e < b.count(); ++e) yb[e] += sign * (ya[e] - before_[e]);
        break;
      }
      if (s == 0 && sign != 0.0) {
        before_.assign(y.begin() + static_cast<std::ptrdiff_t>(b.offset),
                       y.begin() + static_cast<std::ptrdiff_t>(b.offset + b.count()));
      }
      const double* phi = orbitals_.data() + offset_[s];
      t_.resize(np * size(b.nocc));
      for (std::size_t p = 0; p < np; ++p) {
        const double* f = kernels_.data() + dft::kKernelRecord * p;
        const double same = s == 0 ? f[0] : f[1];
        v1_[p] = on_grid_.weights[p] * (same * rho1[s][p] + f[2] * rho1[1 - s][p]);
      }
      for (std::size_t i = 0; i < size(b.nocc); ++i) {
        double* zi = t_.data() + i * np;
        const double* oi = phi + i * np;
        for (std::size_t p = 0; p < np; ++p) zi[p] = v1_[p] * oi[p];
      }
      linalg::gemm(Op::transpose, Op::none, 1.0,
                   ConstMatrixView(phi + np * size(b.nocc), npts, b.nvir, npts),
                   ConstMatrixView(t_.data(), npts, b.nocc, npts), 1.0,
                   MatrixView(y.data() + b.offset, b.nvir, b.nocc, b.nvir));
    }
  }

  // g (n, n, 2) += V1 of the perturbed density pair p1.
  void add(std::span<const double> p1, std::span<double> g) {
    dft::density_on_grid(on_grid_, p1, rho1_);
    const std::size_t np = size(on_grid_.npts);
    if (!kernels_.empty()) {
      // Local: v1_σ = Σ_τ f_στ ρ1_τ, no gradient terms, on the ground density.
      std::fill(v_.begin(), v_.end(), 0.0);
      for (std::size_t p = 0; p < np; ++p) {
        const double* f = kernels_.data() + dft::kKernelRecord * p;
        const double a = rho1_[dft::kPointRecord * p], b = rho1_[dft::kPointRecord * p + 1];
        v_[dft::kPotentialRecord * p] = f[0] * a + f[2] * b;
        v_[dft::kPotentialRecord * p + 1] = f[2] * a + f[1] * b;
      }
      dft::xc_matrix(on_grid_, rho0_, v_, plus_);
      for (std::size_t e = 0; e < plus_.size(); ++e) g[e] += plus_[e];
      return;
    }
    double largest = 0.0;
    for (std::size_t e = 0; e < plus_.size(); ++e) largest = std::max(largest, std::abs(p1[e]));
    if (largest == 0.0) return;
    const double step = kXcStep / largest;
    matrix_at(step, plus_);
    matrix_at(-step, minus_);
    const double scale = 0.5 / step;
    for (std::size_t e = 0; e < plus_.size(); ++e) g[e] += (plus_[e] - minus_[e]) * scale;
  }

 private:
  // Vxc of the grid density ρ0 + t·ρ1 into `out`; a spin density that the
  // step would make negative (far out, where ρ1 outgrows ρ0) is held at zero.
  void matrix_at(double t, std::span<double> out) {
    const std::size_t np = size(on_grid_.npts);
    for (std::size_t p = 0; p < np; ++p) {
      const std::size_t at = dft::kPointRecord * p;
      for (std::size_t c = 0; c < dft::kPointRecord; ++c) {
        shifted_[at + c] = rho0_[at + c] + t * rho1_[at + c];
      }
      shifted_[at] = std::max(shifted_[at], 0.0);
      shifted_[at + 1] = std::max(shifted_[at + 1], 0.0);
    }
    dft::combination_potentials(functional_.combination, shifted_, functional_.exact_exchange, v_);
    dft::xc_matrix(on_grid_, shifted_, v_, out);
  }

  scf::XcFunctional functional_;
  dft::Grid grid_;
  std::unique_ptr<dft::BasisEvaluator> evaluator_;
  std::vector<double> chi_;
  dft::GridBasis on_grid_;
  std::vector<double> rho0_, rho1_, shifted_, v_, kernels_, plus_, minus_;
  std::vector<double> orbitals_, t_, v1_, before_;
  std::vector<std::size_t> offset_;
  bool shared_ = false;
};

OrbitalHessian::OrbitalHessian(const basis::BasisSet& basis, const scf::JobControl& job,
                               const scf::MoleculeView& molecule,
                               const setup::ElectronCount& counts, std::span<const double> rho,
                               std::span<const double> orbitals,
                               const std::optional<scf::KohnShamStage>& kohn_sham, bool direct)
    : n_(basis.nbasis()) {
  const int n = n_;
  const std::size_t nn = size(n) * size(n);
  if (rho.size() < 2 * nn || orbitals.size() < 2 * (nn + size(n))) {
    throw std::invalid_argument("OrbitalHessian: the density or orbital array is too small");
  }
  // As in the point itself: the grid table first, the integral store from
  // what is left (none when integral-direct builds are asked for).
  scf::JobControl limits = job;
  bool keep_table = true;
  if (kohn_sham) {
    const int npts = dft::grid_point_count(molecule.elements, kohn_sham->grid_level);
    const double table_gb = memory::kohn_sham_grid_gb(npts, n);
    keep_table = table_gb <= job.memory_gb;
    if (keep_table) limits.memory_gb -= table_gb;
  }
  // The orbitals on the grid share what the table leaves with the store.
  const double grid_budget = limits.memory_gb;
  if (direct) limits.memory_gb = 0.0;
  system_ = scf::prepare_system(basis, molecule.positions, molecule.charges, limits);

  spins_.resize(2);
  const int occupied[2] = {counts.alpha, counts.beta};
  for (std::size_t s = 0; s < 2; ++s) {
    SpinBlock& b = spins_[s];
    const double* c = orbitals.data() + s * (nn + size(n));
    b.nocc = std::clamp(occupied[s], 0, system_.northo);
    b.nvir = b.nocc > 0 ? system_.northo - b.nocc : 0;
    b.occ = ConstMatrixView(c, n, b.nocc, n);
    b.vir = ConstMatrixView(c + size(n) * size(b.nocc), n, b.nvir, n);
    const double* levels = c + nn;
    b.gap.resize(b.count());
    for (int i = 0; i < b.nocc; ++i) {
      for (int a = 0; a < b.nvir; ++a) {
        b.gap[size(a) + size(b.nvir) * size(i)] = levels[b.nocc + a] - levels[i];
      }
    }
    b.offset = length_;
    length_ += b.count();
  }
  if (kohn_sham) {
    xc_ = std::make_unique<XcResponse>(basis, molecule, *kohn_sham, rho, keep_table);
    xc_->tabulate_orbitals(spins_, grid_budget);
    a_ = kohn_sham->functional.exact_exchange;
  }
  work_.resize(nn);
  square_.resize(nn);
}

OrbitalHessian::~OrbitalHessian() = default;

void OrbitalHessian::density(std::span<const double> x, std::span<double> p1) {
  density(x, p1, 1.0);
}

void OrbitalHessian::density(std::span<const double> x, std::span<double> p1, double sign) {
  const std::size_t nn = size(n_) * size(n_);
  for (std::size_t s = 0; s < 2; ++s) {
    const SpinBlock& b = spins_[s];
    double* out = p1.data() + s * nn;
    if (b.count() == 0) {
      std::fill_n(out, nn, 0.0);
      continue;
    }
    // W = C_v X (n × nocc), Q = W C_oᵀ, P1 = Q ± Qᵀ (exactly (anti)symmetric).
    linalg::gemm(Op::none, Op::none, 1.0, b.vir,
                 ConstMatrixView(x.data() + b.offset, b.nvir, b.nocc, b.nvir), 0.0,
                 MatrixView(work_.data(), n_, b.nocc, n_));
    linalg::gemm(Op::none, Op::transpose, 1.0, ConstMatrixView(work_.data(), n_, b.nocc, n_), b.occ,
                 0.0, MatrixView(square_.data(), n_, n_, n_));
    for (int j = 0; j < n_; ++j) {
      for (int i = 0; i < n_; ++i) {
        out[size(i) + size(n_) * size(j)] =
            square_[size(i) + size(n_) * size(j)] + sign * square_[size(j) + size(n_) * size(i)];
      }
    }
  }
}

void OrbitalHessian::project(std::span<const double> a, std::span<double> y, double beta) {
  const std::size_t nn = size(n_) * size(n_);
  for (std::size_t s = 0; s < 2; ++s) {
    const SpinBlock& b = spins_[s];
    if (b.count() == 0) continue;
    linalg::gemm(Op::none, Op::none, 1.0, ConstMatrixView(a.data() + s * nn, n_, n_, n_), b.occ,
                 0.0, MatrixView(work_.data(), n_, b.nocc, n_));
    linalg::gemm(Op::transpose, Op::none, 1.0, b.vir, ConstMatrixView(work_.data(), n_, b.nocc, n_),
                 beta, MatrixView(y.data() + b.offset, b.nvir, b.nocc, b.nvir));
  }
}

void OrbitalHessian::apply(std::span<const std::span<const double>> x,
                           std::span<const std::span<double>> y) {
  apply(x, y, {});
}

void OrbitalHessian::apply(std::span<const std::span<const double>> x,
                           std::span<const std::span<double>> plus,
                           std::span<const std::span<double>> minus) {
  const std::size_t count = x.size();
  const bool with_plus = !plus.empty(), with_minus = !minus.empty();
  const std::size_t builds = (with_plus ? count : 0) + (with_minus ? count : 0);
  const std::size_t pair = 2 * size(n_) * size(n_);
  if (p1_.size() < builds) {
    p1_.resize(builds);
    g_.resize(builds);
  }
  // The symmetric densities first, then the antisymmetric ones.
  std::vector<std::span<const double>> densities;
  std::vector<std::span<double>> fock;
  std::vector<integrals::two::DensityKind> kinds;
  std::vector<std::span<double>> out;
  for (int pass = 0; pass < 2; ++pass) {
    const bool symmetric = pass == 0;
    if (symmetric ? !with_plus : !with_minus) continue;
    for (std::size_t m = 0; m < count; ++m) {
      const std::size_t k = densities.size();
      p1_[k].resize(pair);
      g_[k].resize(pair);
      density(x[m], p1_[k], symmetric ? 1.0 : -1.0);
      densities.emplace_back(p1_[k]);
      fock.emplace_back(g_[k]);
      kinds.push_back(symmetric ? integrals::two::DensityKind::symmetric
                                : integrals::two::DensityKind::antisymmetric);
      out.push_back(symmetric ? plus[m] : minus[m]);
    }
  }
  const integrals::two::ContextView context = system_.context.view();
  if (system_.in_core) {
    integrals::two::fock_stored(context, a_, densities, fock, kinds);
  } else {
    integrals::two::fock_direct(context, a_, densities, fock, kinds);
  }
  for (std::size_t k = 0; k < densities.size(); ++k) {
    const std::span<const double> xm = x[k % count];
    const bool symmetric = kinds[k] == integrals::two::DensityKind::symmetric;
    if (xc_ && symmetric && !xc_->on_orbitals()) xc_->add(p1_[k], g_[k]);
    project(g_[k], out[k], 0.0);
    if (xc_ && symmetric && xc_->on_orbitals()) xc_->add_amplitudes(spins_, xm, out[k]);
    for (const SpinBlock& b : spins_) {
      for (std::size_t e = 0; e < b.count(); ++e)
        out[k][b.offset + e] += b.gap[e] * xm[b.offset + e];
    }
  }
}

}  // namespace norvik::properties
