#include "integrals/one/gradient.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <stdexcept>
#include <vector>

#include "integrals/one/axis_expansion.h"
#include "integrals/one/boys.h"
#include "integrals/one/shell_plan.h"

namespace norvik::integrals::one {

namespace {

constexpr double kPi = std::numbers::pi;
constexpr int kMaxL = kShellPlanMaxL;
constexpr int kMaxC = kShellPlanComponents;
constexpr int kMaxF = basis::kMaxFunctionsPerShell;
constexpr int kNa = kMaxL + 2;      // a exponents up to lmax + 1 (derivative)
constexpr int kNb = kMaxL + 3;      // b exponents up to lmax + 2 (kinetic energy)
constexpr int kNi = 2 * kMaxL + 4;  // largest l1 + l2 on one axis, plus one
constexpr int kNv = 2 * kMaxL + 3;  // nuclear tables: l1 + l2 ≤ 2 lmax + 2
constexpr int kChunks = 64;         // fixed partition of the shell pairs

using Expansion = AxisExpansion<kNa, kNb, kNi>;

// The densities of one shell pair over its Cartesian components for one
// primitive pair (contraction weights included).
struct ComponentDensities {
  double d[kMaxC][kMaxC];
  double w[kMaxC][kMaxC];
};

void component_densities(const ShellPlan& a, int ka, const ShellPlan& b, int kb,
                         const double (&dfn)[kMaxF][kMaxF], const double (&wfn)[kMaxF][kMaxF],
                         ComponentDensities& out) {
  for (int ca = 0; ca < a.ncomp; ++ca)
    for (int cb = 0; cb < b.ncomp; ++cb) out.d[ca][cb] = out.w[ca][cb] = 0.0;
  for (int fa = 0; fa < a.nfunc; ++fa) {
    for (int fb = 0; fb < b.nfunc; ++fb) {
      const double weight = a.weight[fa][ka] * b.weight[fb][kb];
      if (weight == 0.0) continue;
      const double dw = dfn[fa][fb] * weight, ww = wfn[fa][fb] * weight;
      for (int ta = 0; ta < a.nterm[fa]; ++ta)
        for (int tb = 0; tb < b.nterm[fb]; ++tb) {
          const double c = a.term_coef[fa][ta] * b.term_coef[fb][tb];
          out.d[a.term_comp[fa][ta]][b.term_comp[fb][tb]] += c * dw;
          out.w[a.term_comp[fa][ta]][b.term_comp[fb][tb]] += c * ww;
        }
    }
  }
}

// The gradient contributions of one primitive pair, added to grad (3, natom).
void add_primitive_pair(const ShellPlan& a, int atom_a, int ka, const ShellPlan& b, int atom_b,
                        int kb, std::span<const Vec3> positions, std::span<const double> charges,
                        const ComponentDensities& cd, std::span<double> grad) {
  const double alpha = a.exponent[ka];
  const double beta = b.exponent[kb];
  const PairGeometry g = pair_geometry(a.centre, alpha, b.centre, beta);
  if (g.negligible()) return;

  Expansion ex[3];
  double ov[3][kNa][kNb];
  overlap_axes({a.lmax[0] + 1, a.lmax[1] + 1, a.lmax[2] + 1},
               {b.lmax[0] + 2, b.lmax[1] + 2, b.lmax[2] + 2}, g.pa, g.pb, g.gamma, ex, ov);
  const double q = kPi / g.gamma;
  const double pref = q * std::sqrt(q) * std::exp(-g.e);

  auto overlap = [&](const Lmn& la, const Lmn& lb) {
    return pref * ov[0][la[0]][lb[0]] * ov[1][la[1]][lb[1]] * ov[2][la[2]][lb[2]];
  };
  auto kinetic = [&](const Lmn& la, const Lmn& lb) {
    const double ix = ov[0][la[0]][lb[0]], iy = ov[1][la[1]][lb[1]], iz = ov[2][la[2]][lb[2]];
    const double s = pref * ix * iy * iz;
    const double raised =
        pref * (ov[0][la[0]][lb[0] + 2] * iy * iz + ix * ov[1][la[1]][lb[1] + 2] * iz +
                ix * iy * ov[2][la[2]][lb[2] + 2]);
    double lowered = 0.0;
    if (lb[0] >= 2) lowered += lb[0] * (lb[0] - 1) * (pref * ov[0][la[0]][lb[0] - 2] * iy * iz);
    if (lb[1] >= 2) lowered += lb[1] * (lb[1] - 1) * (pref * ix * ov[1][la[1]][lb[1] - 2] * iz);
    if (lb[2] >= 2) lowered += lb[2] * (lb[2] - 1) * (pref * ix * iy * ov[2][la[2]][lb[2] - 2]);
    return beta * (2 * (lb[0] + lb[1] + lb[2]) + 3) * s - 2.0 * beta * beta * raised -
           0.5 * lowered;
  };

  // Overlap and kinetic energy depend on A − B only: ∂/∂B = −∂/∂A.
  std::array<double, 3> ga{};
  for (int ca = 0; ca < a.ncomp; ++ca) {
    const Lmn& la = a.comp[ca];
    for (int cb = 0; cb < b.ncomp; ++cb) {
      const double dd = cd.d[ca][cb], ww = cd.w[ca][cb];
      if (dd == 0.0 && ww == 0.0) continue;
      const Lmn& lb = b.comp[cb];
      for (int k = 0; k < 3; ++k) {
        Lmn up = la;
        ++up[k];
        double ds = 2.0 * alpha * overlap(up, lb);
        double dt = 2.0 * alpha * kinetic(up, lb);
        if (la[k] > 0) {
          Lmn down = la;
          --down[k];
          ds -= la[k] * overlap(down, lb);
          dt -= la[k] * kinetic(down, lb);
        }
        ga[k] += dd * dt - ww * ds;
      }
    }
  }
  for (int k = 0; k < 3; ++k) {
    grad[3 * atom_a + k] += ga[k];
    grad[3 * atom_b + k] -= ga[k];
  }

  // Nuclear attraction, nucleus by nucleus.
  const int numax = a.ltot + b.ltot + 1;
  const double eps = 1.0 / (4.0 * g.gamma);
  const double vpref = 2.0 * kPi / g.gamma * std::exp(-g.e);
  std::array<double, kBoysTableSize> f{};
  double h[3][kNv][kNv];
  double gt[3][kNa][kNa][kNv];
  for (std::size_t c = 0; c < charges.size(); ++c) {
    if (charges[c] == 0.0) continue;
    const Vec3& cc = positions[c];
    const Vec3 pc = {g.p[0] - cc[0], g.p[1] - cc[1], g.p[2] - cc[2]};
    const double t = g.gamma * (pc[0] * pc[0] + pc[1] * pc[1] + pc[2] * pc[2]);
    boys_table(t, numax, f);
    for (int k = 0; k < 3; ++k) {
      nucleus_axis(a.lmax[k] + b.lmax[k] + 2, pc[k], eps, h[k]);
      attraction_axis(a.lmax[k] + 1, b.lmax[k] + 1, ex[k], h[k], gt[k]);
    }
    const double scale = -charges[c] * vpref;
    auto attraction = [&](const Lmn& la, const Lmn& lb) {
      const double* gx = gt[0][la[0]][lb[0]];
      const double* gy = gt[1][la[1]][lb[1]];
      const double* gz = gt[2][la[2]][lb[2]];
      return scale *
             attraction_sum(gx, gy, gz, la[0] + lb[0], la[1] + lb[1], la[2] + lb[2], f.data());
    };
    std::array<double, 3> da{}, db{};
    for (int ca = 0; ca < a.ncomp; ++ca) {
      const Lmn& la = a.comp[ca];
      for (int cb = 0; cb < b.ncomp; ++cb) {
        const double dd = cd.d[ca][cb];
        if (dd == 0.0) continue;
        const Lmn& lb = b.comp[cb];
        for (int k = 0; k < 3; ++k) {
          Lmn up = la;
          ++up[k];
          double va = 2.0 * alpha * attraction(up, lb);
          if (la[k] > 0) {
            Lmn down = la;
            --down[k];
            va -= la[k] * attraction(down, lb);
          }
          up = lb;
          ++up[k];
          double vb = 2.0 * beta * attraction(la, up);
          if (lb[k] > 0) {
            Lmn down = lb;
            --down[k];
            vb -= lb[k] * attraction(la, down);
          }
          da[k] += dd * va;
          db[k] += dd * vb;
        }
      }
    }
    for (int k = 0; k < 3; ++k) {
      grad[3 * atom_a + k] += da[k];
      grad[3 * atom_b + k] += db[k];
      grad[3 * c + k] -= da[k] + db[k];
    }
  }
}

}  // namespace

void one_electron_gradient(const basis::BasisSet& basis, std::span<const Vec3> positions,
                           std::span<const double> charges, std::span<const double> density,
                           std::span<const double> weighted, std::span<double> grad) {
  const std::vector<ShellPlan> plans = plan_shells(basis, positions);
  const std::size_t n = static_cast<std::size_t>(basis.nbasis());
  const std::size_t natom = positions.size();
  if (charges.size() != natom || density.size() < n * n || weighted.size() < n * n ||
      grad.size() < 3 * natom) {
    throw std::invalid_argument("one_electron_gradient: array sizes");
  }
  const std::vector<std::pair<int, int>> pairs = shell_pairs(static_cast<int>(plans.size()));

  const std::size_t npairs = pairs.size();
  std::vector<double> partial(static_cast<std::size_t>(kChunks) * 3 * natom, 0.0);
#pragma omp parallel for schedule(dynamic, 1)
  for (int chunk = 0; chunk < kChunks; ++chunk) {
    std::span<double> mine(partial.data() + static_cast<std::size_t>(chunk) * 3 * natom, 3 * natom);
    const std::size_t begin = npairs * static_cast<std::size_t>(chunk) / kChunks;
    const std::size_t end = npairs * static_cast<std::size_t>(chunk + 1) / kChunks;
    for (std::size_t ip = begin; ip < end; ++ip) {
      const auto [sa, sb] = pairs[ip];
      const ShellPlan& a = plans[static_cast<std::size_t>(sa)];
      const ShellPlan& b = plans[static_cast<std::size_t>(sb)];
      const int atom_a = basis.shells[static_cast<std::size_t>(sa)].atom;
      const int atom_b = basis.shells[static_cast<std::size_t>(sb)].atom;
      // The sum over μν runs over both orders of a pair of distinct shells.
      const double factor = sa == sb ? 1.0 : 2.0;
      double dfn[kMaxF][kMaxF], wfn[kMaxF][kMaxF];
      for (int fa = 0; fa < a.nfunc; ++fa)
        for (int fb = 0; fb < b.nfunc; ++fb) {
          const std::size_t idx =
              static_cast<std::size_t>(a.offset + fa) + n * static_cast<std::size_t>(b.offset + fb);
          dfn[fa][fb] = factor * density[idx];
          wfn[fa][fb] = factor * weighted[idx];
        }
      ComponentDensities cd;
      for (int ka = 0; ka < a.nprim; ++ka)
        for (int kb = 0; kb < b.nprim; ++kb) {
          component_densities(a, ka, b, kb, dfn, wfn, cd);
          add_primitive_pair(a, atom_a, ka, b, atom_b, kb, positions, charges, cd, mine);
        }
    }
  }
  for (int chunk = 0; chunk < kChunks; ++chunk)
    for (std::size_t i = 0; i < 3 * natom; ++i)
      grad[i] += partial[static_cast<std::size_t>(chunk) * 3 * natom + i];
}

}  // namespace norvik::integrals::one
