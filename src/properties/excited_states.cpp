#include "properties/excited_states.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

#include "common/constants.h"
#include "common/error.h"
#include "common/fortran_format.h"
#include "linalg/davidson.h"
#include "linalg/memory_estimates.h"
#include "linalg/paired_davidson.h"
#include "properties/orbital_hessian.h"

namespace norvik::properties {

namespace {

using Vector = std::vector<double>;

// The operator of one spin type.  A restricted point's singlets and triplets
// are the amplitudes x_β = ±x_α of the spin-orbital operator: for the unit
// vector (x, ±x)/√2 its products are (y, ±y)/√2 with y the alpha block of the
// product of (x, ±x), so the spin-adapted operator is that alpha block.
class SpinOperator {
 public:
  SpinOperator(OrbitalHessian& hessian, StateSpin spin)
      : hessian_(hessian),
        adapted_(spin != StateSpin::unrestricted),
        sign_(spin == StateSpin::triplet ? -1.0 : 1.0) {}

  std::size_t length() const { return adapted_ ? hessian_.spins()[0].count() : hessian_.length(); }

  // The level gaps, the diagonal of A without its two-electron part.
  Vector diagonal() const {
    Vector d(length());
    for (const SpinBlock& b : hessian_.spins()) {
      std::copy(b.gap.begin(), b.gap.end(), d.begin() + static_cast<std::ptrdiff_t>(b.offset));
      if (adapted_) break;
    }
    return d;
  }

  void products(std::span<const std::span<const double>> x, std::span<const std::span<double>> plus,
                std::span<const std::span<double>> minus) {
    if (!adapted_) return hessian_.apply(x, plus, minus);
    const std::size_t half = length(), full = hessian_.length();
    std::vector<Vector> in(x.size(), Vector(full)), p, m;
    for (std::size_t k = 0; k < x.size(); ++k) {
      for (std::size_t e = 0; e < half; ++e) {
        in[k][e] = x[k][e];
        in[k][half + e] = sign_ * x[k][e];
      }
    }
    if (!plus.empty()) p.assign(x.size(), Vector(full));
    if (!minus.empty()) m.assign(x.size(), Vector(full));
    std::vector<std::span<const double>> xs(in.begin(), in.end());
    std::vector<std::span<double>> ps(p.begin(), p.end()), ms(m.begin(), m.end());
    hessian_.apply(xs, ps, ms);
    for (std::size_t k = 0; k < x.size(); ++k) {
      if (!plus.empty()) std::copy_n(p[k].begin(), half, plus[k].begin());
      if (!minus.empty()) std::copy_n(m[k].begin(), half, minus[k].begin());
    }
  }

  // A x = ((A + B) x + (A − B) x) / 2.
  void tamm_dancoff(std::span<const std::span<const double>> x,
                    std::span<const std::span<double>> y) {
    std::vector<Vector> m(x.size(), Vector(length()));
    std::vector<std::span<double>> ms(m.begin(), m.end());
    products(x, y, ms);
    for (std::size_t k = 0; k < x.size(); ++k) {
      for (std::size_t e = 0; e < length(); ++e) y[k][e] = 0.5 * (y[k][e] + m[k][e]);
    }
  }

 private:
  OrbitalHessian& hessian_;
  bool adapted_;
  double sign_;
};

// The hessian of the point, its integral store held to what the excitation
// space leaves of the limit (the memory rule of the Tamm–Dancoff and
// random-phase calculations).
std::unique_ptr<OrbitalHessian> make_hessian(
    const basis::BasisSet& basis, const scf::JobControl& job, const scf::MoleculeView& molecule,
    const setup::ElectronCount& counts, std::span<const double> rho,
    std::span<const double> orbitals, const std::optional<scf::KohnShamStage>& kohn_sham,
    ResponseKind kind, bool direct) {
  const int n = basis.nbasis();
  const auto dimension = static_cast<int>(
      std::min<long long>(static_cast<long long>(counts.alpha) * std::max(n - counts.alpha, 0) +
                              static_cast<long long>(counts.beta) * std::max(n - counts.beta, 0),
                          1LL << 30));
  scf::JobControl limits = job;
  limits.memory_gb -=
      kind == ResponseKind::random_phase ? memory::rpa_gb(dimension) : memory::tda_gb(dimension);
  if (!(limits.memory_gb > 0.0)) limits.memory_gb = 0.0;
  return std::make_unique<OrbitalHessian>(basis, limits, molecule, counts, rho, orbitals, kohn_sham,
                                          direct);
}

// The unit vector's phase: its largest component positive.
void fix_phase(std::span<double> x, std::span<double> other) {
  std::size_t at = 0;
  for (std::size_t e = 1; e < x.size(); ++e) {
    if (std::abs(x[e]) > std::abs(x[at]) + 1e-12) at = e;
  }
  if (!x.empty() && x[at] < 0.0) {
    for (double& e : x) e = -e;
    for (double& e : other) e = -e;
  }
}

}  // namespace

bool restricted_point(const setup::ElectronCount& counts, int nbasis,
                      std::span<const double> orbitals) {
  if (counts.alpha != counts.beta) return false;
  const std::size_t half = static_cast<std::size_t>(nbasis) * static_cast<std::size_t>(nbasis + 1);
  for (std::size_t e = 0; e < static_cast<std::size_t>(nbasis) * static_cast<std::size_t>(nbasis);
       ++e) {
    if (std::abs(orbitals[e] - orbitals[half + e]) > 1e-10) return false;
  }
  return true;
}

ExcitationResult excited_states(const basis::BasisSet& basis, const scf::JobControl& job,
                                const scf::MoleculeView& molecule,
                                const setup::ElectronCount& counts, std::span<const double> rho,
                                std::span<const double> orbitals,
                                const std::optional<scf::KohnShamStage>& kohn_sham,
                                const ExcitationOptions& options) {
  const int n = basis.nbasis();
  const std::size_t nn = static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
  ExcitationResult result;
  result.restricted = restricted_point(counts, n, orbitals);
  const auto hessian = make_hessian(basis, job, molecule, counts, rho, orbitals, kohn_sham,
                                    options.kind, options.direct);
  const std::vector<SpinBlock>& spins = hessian->spins();

  // The dipole integrals over the amplitudes, [C_vᵀ D_k C_o]_ai,σ [Å].
  std::array<Vector, 3> dip;
  for (std::size_t k = 0; k < 3; ++k) {
    Vector pair(2 * nn);
    const auto from = hessian->system().dip.begin() + static_cast<std::ptrdiff_t>(k * nn);
    std::copy_n(from, nn, pair.begin());
    std::copy_n(from, nn, pair.begin() + static_cast<std::ptrdiff_t>(nn));
    dip[k].assign(hessian->length(), 0.0);
    hessian->project(pair, dip[k], 0.0);
  }

  std::vector<StateSpin> types;
  if (!result.restricted) {
    types.push_back(StateSpin::unrestricted);
  } else {
    if (options.singlets) types.push_back(StateSpin::singlet);
    if (options.triplets) types.push_back(StateSpin::triplet);
  }
  for (const StateSpin spin : types) {
    SpinOperator op(*hessian, spin);
    const std::size_t length = op.length();
    result.dimension = length;
    const Vector diagonal = op.diagonal();
    linalg::DavidsonOptions dav;
    dav.roots = std::min<int>(options.roots, static_cast<int>(length));
    dav.tolerance = options.tolerance;
    dav.max_iterations = options.max_iterations;
    // The corrections keep the symmetry of the start vectors: a state of a
    // symmetry that none of the lowest gaps has is found only from a start
    // among the next ones (ethylene's ninth CIS triplet with 4 extra starts).
    dav.extra_guesses = std::max(4, dav.roots);
    std::vector<double> energies;
    Vector x_plus_y, x_only, residuals;
    bool converged = false;
    if (options.kind == ResponseKind::tamm_dancoff) {
      linalg::DavidsonResult r = linalg::davidson_lowest(
          diagonal,
          [&](std::span<const std::span<const double>> x, std::span<const std::span<double>> y) {
            op.tamm_dancoff(x, y);
          },
          dav);
      energies = r.values;
      x_only = r.vectors;
      x_plus_y = r.vectors;
      residuals = r.residuals;
      converged = r.converged;
      result.iterations += r.iterations;
    } else {
      linalg::PairedResult r;
      try {
        r = linalg::paired_davidson_lowest(
            diagonal,
            [&](std::span<const std::span<const double>> x, std::span<const std::span<double>> p,
                std::span<const std::span<double>> m) { op.products(x, p, m); },
            dav);
      } catch (const std::runtime_error&) {
        // A − B or (A − B)(A + B) not positive definite: no real ω.
        throw Error({"Excitation energies not real.",
                     std::string("The point is unstable towards ") +
                         (spin == StateSpin::singlet   ? "singlet"
                          : spin == StateSpin::triplet ? "triplet"
                                                       : "spin-orbital") +
                         " excitations: use the Tamm-Dancoff approximation."});
      }
      energies = r.values;
      x_plus_y = r.x_plus_y;
      x_only.resize(x_plus_y.size());
      for (std::size_t e = 0; e < x_only.size(); ++e) {
        x_only[e] = 0.5 * (r.x_plus_y[e] + r.x_minus_y[e]);
      }
      residuals = r.residuals;
      converged = r.converged;
      result.iterations += r.iterations;
    }
    if (!converged) {
      const double worst =
          residuals.empty() ? 0.0 : *std::max_element(residuals.begin(), residuals.end());
      throw Error(fortran::list_directed(
          {std::string("Excited states not converged."), std::int64_t{dav.max_iterations}, worst}));
    }

    const double factor = spin == StateSpin::singlet   ? std::sqrt(2.0)
                          : spin == StateSpin::triplet ? 0.0
                                                       : 1.0;
    for (std::size_t r = 0; r < energies.size(); ++r) {
      const auto at = static_cast<std::ptrdiff_t>(r * length);
      std::span<double> x(x_only.data() + at, length), xy(x_plus_y.data() + at, length);
      fix_phase(x, xy);
      ExcitedState s;
      s.spin = spin;
      s.energy = energies[r];
      double t2 = 0.0;
      for (std::size_t k = 0; k < 3; ++k) {
        double t = 0.0;
        for (std::size_t e = 0; e < length; ++e) t += xy[e] * dip[k][e];
        // the electrons' dipole −r
        s.dipole[k] = -factor * t;
        t2 += std::pow(s.dipole[k] / constants::kBohrAngstrom, 2);
      }
      s.strength = 2.0 / 3.0 * (s.energy / constants::kHartreeEv) * t2;
      for (std::size_t blk = 0; blk < spins.size(); ++blk) {
        const SpinBlock& b = spins[blk];
        for (std::size_t e = 0; e < b.count(); ++e) {
          const double c = x[b.offset + e];
          if (c * c <= kDominantWeight) continue;
          const int a = static_cast<int>(e % static_cast<std::size_t>(b.nvir));
          const int i = static_cast<int>(e / static_cast<std::size_t>(b.nvir));
          s.transitions.push_back({i + 1, b.nocc + a + 1, blk == 1, c});
        }
        if (spin != StateSpin::unrestricted) break;
      }
      std::stable_sort(s.transitions.begin(), s.transitions.end(),
                       [](const OrbitalTransition& p, const OrbitalTransition& q) {
                         return std::abs(p.amplitude) > std::abs(q.amplitude);
                       });
      result.states.push_back(std::move(s));
    }
  }
  return result;
}

std::vector<double> tamm_dancoff_matrix(const basis::BasisSet& basis, const scf::JobControl& job,
                                        const scf::MoleculeView& molecule,
                                        const setup::ElectronCount& counts,
                                        std::span<const double> rho,
                                        std::span<const double> orbitals,
                                        const std::optional<scf::KohnShamStage>& kohn_sham,
                                        StateSpin spin) {
  const auto hessian = make_hessian(basis, job, molecule, counts, rho, orbitals, kohn_sham,
                                    ResponseKind::tamm_dancoff, false);
  SpinOperator op(*hessian, spin);
  const std::size_t length = op.length();
  std::vector<double> a(length * length);
  constexpr std::size_t kBlock = 16;  // unit vectors per pass over the integrals
  for (std::size_t first = 0; first < length; first += kBlock) {
    const std::size_t count = std::min(kBlock, length - first);
    std::vector<Vector> in(count, Vector(length, 0.0));
    std::vector<std::span<const double>> xs;
    std::vector<std::span<double>> ys;
    for (std::size_t c = 0; c < count; ++c) {
      in[c][first + c] = 1.0;
      xs.emplace_back(in[c]);
      ys.emplace_back(a.data() + (first + c) * length, length);
    }
    op.tamm_dancoff(xs, ys);
  }
  return a;
}

}  // namespace norvik::properties
