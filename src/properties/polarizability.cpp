#include "properties/polarizability.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/error.h"
#include "common/fortran_format.h"
#include "dft/functionals/combinations.h"
#include "dft/functionals/point.h"
#include "dft/grid/molecular_grid.h"
#include "dft/xc/basis_values.h"
#include "dft/xc/xc_integrator.h"
#include "integrals/two/two_electron.h"
#include "linalg/kernels.h"
#include "linalg/memory_estimates.h"

namespace norvik::properties {

namespace {

using linalg::ConstMatrixView;
using linalg::MatrixView;
using linalg::Op;

std::size_t size(int n) {
  return static_cast<std::size_t>(n);
}

// The step of the central difference of the exchange–correlation matrix along
// a perturbed density, relative to that density's largest element: small
// enough that the third-order term (relative size ~ step²) is far below the
// response's tolerance, large enough that the rounding of the two matrices
// (~1e-16 of them, divided by the step) stays below it too.
constexpr double kXcStep = 1e-4;

// One spin of the converged point: its occupied and virtual orbitals and the
// level gaps ε_a − ε_i of the (a, i) amplitudes, virtual index fastest.
struct SpinBlock {
  int nocc = 0;
  int nvir = 0;
  ConstMatrixView occ, vir;  // (n, nocc), (n, nvir)
  std::vector<double> gap;   // (nvir, nocc) [eV]
  std::size_t offset = 0;    // of its amplitudes in a response vector
  std::size_t count() const { return size(nvir) * size(nocc); }
};

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
};

// The orbital Hessian of the converged point applied to response vectors:
// (M x)_ai,σ = (ε_a − ε_i) x_ai,σ + [C_vσᵀ G_σ(P1) C_oσ]_ai with
// P1_σ = C_vσ X_σ C_oσᵀ + C_oσ X_σᵀ C_vσᵀ and G = J[P1_α + P1_β] − a·K[P1_σ]
// (+ the exchange–correlation response).  M is symmetric and, for a stable
// point, positive definite.
class OrbitalHessian {
 public:
  OrbitalHessian(int n, const std::vector<SpinBlock>& spins,
                 const integrals::two::ContextView& context, bool stored, double exact_exchange,
                 XcResponse* xc)
      : n_(n),
        spins_(spins),
        context_(context),
        stored_(stored),
        a_(exact_exchange),
        xc_(xc),
        work_(size(n) * size(n)),
        square_(size(n) * size(n)) {
    for (std::size_t m = 0; m < 3; ++m) {
      p1_[m].resize(2 * size(n) * size(n));
      g_[m].resize(2 * size(n) * size(n));
    }
  }

  // The perturbed density pair (n, n, 2) of the amplitudes x.
  void density(std::span<const double> x, std::span<double> p1) {
    const std::size_t nn = size(n_) * size(n_);
    for (std::size_t s = 0; s < 2; ++s) {
      const SpinBlock& b = spins_[s];
      double* out = p1.data() + s * nn;
      if (b.count() == 0) {
        std::fill_n(out, nn, 0.0);
        continue;
      }
      // W = C_v X (n × nocc), Q = W C_oᵀ, P1 = Q + Qᵀ (exactly symmetric).
      linalg::gemm(Op::none, Op::none, 1.0, b.vir,
                   ConstMatrixView(x.data() + b.offset, b.nvir, b.nocc, b.nvir), 0.0,
                   MatrixView(work_.data(), n_, b.nocc, n_));
      linalg::gemm(Op::none, Op::transpose, 1.0, ConstMatrixView(work_.data(), n_, b.nocc, n_),
                   b.occ, 0.0, MatrixView(square_.data(), n_, n_, n_));
      for (int j = 0; j < n_; ++j) {
        for (int i = 0; i < n_; ++i) {
          out[size(i) + size(n_) * size(j)] =
              square_[size(i) + size(n_) * size(j)] + square_[size(j) + size(n_) * size(i)];
        }
      }
    }
  }

  // [C_vσᵀ A_σ C_oσ] of a matrix pair A (n, n, 2), written to y (or added).
  void project(std::span<const double> a, std::span<double> y, double beta) {
    const std::size_t nn = size(n_) * size(n_);
    for (std::size_t s = 0; s < 2; ++s) {
      const SpinBlock& b = spins_[s];
      if (b.count() == 0) continue;
      linalg::gemm(Op::none, Op::none, 1.0, ConstMatrixView(a.data() + s * nn, n_, n_, n_), b.occ,
                   0.0, MatrixView(work_.data(), n_, b.nocc, n_));
      linalg::gemm(Op::transpose, Op::none, 1.0, b.vir,
                   ConstMatrixView(work_.data(), n_, b.nocc, n_), beta,
                   MatrixView(y.data() + b.offset, b.nvir, b.nocc, b.nvir));
    }
  }

  // y[m] = M x[m] for up to three vectors, with one pass over the two-electron
  // integrals for all of them.
  void apply(std::span<const std::vector<double>* const> x,
             std::span<std::vector<double>* const> y) {
    const std::size_t count = x.size();
    std::vector<std::span<const double>> densities;
    std::vector<std::span<double>> builds;
    for (std::size_t m = 0; m < count; ++m) {
      density(*x[m], p1_[m]);
      densities.emplace_back(p1_[m]);
      builds.emplace_back(g_[m]);
    }
    if (stored_) {
      integrals::two::fock_stored(context_, a_, densities, builds);
    } else {
      integrals::two::fock_direct(context_, a_, densities, builds);
    }
    for (std::size_t m = 0; m < count; ++m) {
      if (xc_) xc_->add(p1_[m], g_[m]);
      project(g_[m], *y[m], 0.0);
      for (const SpinBlock& b : spins_) {
        for (std::size_t e = 0; e < b.count(); ++e) {
          (*y[m])[b.offset + e] += b.gap[e] * (*x[m])[b.offset + e];
        }
      }
    }
  }

 private:
  int n_;
  const std::vector<SpinBlock>& spins_;
  integrals::two::ContextView context_;
  bool stored_;
  double a_;
  XcResponse* xc_;
  std::array<std::vector<double>, 3> p1_, g_;
  std::vector<double> work_, square_;
};

double dot(const std::vector<double>& x, const std::vector<double>& y) {
  return linalg::dot(x.data(), y.data(), static_cast<linalg::Index>(x.size()));
}

}  // namespace

std::array<double, 9> static_polarizability(
    const basis::BasisSet& basis, const scf::JobControl& job, const scf::MoleculeView& molecule,
    const setup::ElectronCount& counts, std::span<const double> rho,
    std::span<const double> orbitals, const std::optional<scf::KohnShamStage>& kohn_sham,
    const ResponseOptions& options) {
  const int n = basis.nbasis();
  const std::size_t nn = size(n) * size(n);
  if (rho.size() < 2 * nn || orbitals.size() < 2 * (nn + size(n))) {
    throw std::invalid_argument("static_polarizability: the density or orbital array is too small");
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
  if (options.direct) limits.memory_gb = 0.0;
  const scf::PreparedSystem p =
      scf::prepare_system(basis, molecule.positions, molecule.charges, limits);

  std::vector<SpinBlock> spins(2);
  std::size_t length = 0;
  const int occupied[2] = {counts.alpha, counts.beta};
  for (std::size_t s = 0; s < 2; ++s) {
    SpinBlock& b = spins[s];
    const double* c = orbitals.data() + s * (nn + size(n));
    b.nocc = std::clamp(occupied[s], 0, p.northo);
    b.nvir = b.nocc > 0 ? p.northo - b.nocc : 0;
    b.occ = ConstMatrixView(c, n, b.nocc, n);
    b.vir = ConstMatrixView(c + size(n) * size(b.nocc), n, b.nvir, n);
    const double* levels = c + nn;
    b.gap.resize(b.count());
    for (int i = 0; i < b.nocc; ++i) {
      for (int a = 0; a < b.nvir; ++a) {
        b.gap[size(a) + size(b.nvir) * size(i)] = levels[b.nocc + a] - levels[i];
      }
    }
    b.offset = length;
    length += b.count();
  }

  std::unique_ptr<XcResponse> xc;
  double exact_exchange = 1.0;
  if (kohn_sham) {
    xc = std::make_unique<XcResponse>(basis, molecule, *kohn_sham, rho, keep_table);
    exact_exchange = kohn_sham->functional.exact_exchange;
  }
  const integrals::two::ContextView context = p.context.view();
  OrbitalHessian hessian(n, spins, context, p.in_core, exact_exchange, xc.get());

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
    std::vector<const std::vector<double>*> in;
    std::vector<std::vector<double>*> out;
    for (std::size_t k = 0; k < 3; ++k) {
      if (done[k]) continue;
      in.push_back(&dir[k]);
      out.push_back(&q[k]);
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
