#include "integrals/one/one_electron_matrices.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <stdexcept>
#include <vector>

#include "common/error.h"
#include "common/fortran_format.h"
#include "integrals/one/axis_expansion.h"
#include "integrals/one/boys.h"
#include "integrals/one/shell_plan.h"

namespace norvik::integrals::one {

namespace {

constexpr double kPi = std::numbers::pi;
constexpr double kPiCubedOver8 = 31.006276680299816 / 8.0;

constexpr int kMaxL = kShellPlanMaxL;
constexpr int kMaxComponents = kShellPlanComponents;
constexpr int kMaxF = basis::kMaxFunctionsPerShell;
constexpr int kAxisB = kMaxL + 3;  // b exponents up to lmax + 2 (kinetic energy)

[[noreturn]] void bad_shell(std::size_t s) {
  throw Error(fortran::list_directed(
      {"Wrong shell in calcMtrx. shell = ", static_cast<std::int64_t>(s + 1)}));
}

}  // namespace

std::vector<ShellPlan> plan_shells(const basis::BasisSet& basis, std::span<const Vec3> positions) {
  std::vector<ShellPlan> plans(basis.shells.size());
  int offset = 0;
  for (std::size_t s = 0; s < basis.shells.size(); ++s) {
    const basis::Shell& shell = basis.shells[s];
    ShellPlan& p = plans[s];
    if (shell.atom < 0 || static_cast<std::size_t>(shell.atom) >= positions.size()) {
      throw Error(fortran::list_directed(
          {"Wrong atom of shell in calcMtrx. shell = ", static_cast<std::int64_t>(s + 1)}));
    }
    if (shell.kind < 1 || shell.kind > kMaxF || shell.nprim < 1 ||
        shell.nprim > basis::kMaxPrimitives) {
      bad_shell(s);
    }
    p.centre = positions[static_cast<std::size_t>(shell.atom)];
    p.nprim = shell.nprim;
    p.exponent = shell.exponents;
    p.nfunc = shell.kind;
    p.offset = offset;
    offset += shell.kind;
    for (int f = 0; f < shell.kind; ++f) {
      const basis::Function& fn = shell.functions[static_cast<std::size_t>(f)];
      if (fn.L < 0 || fn.L > kMaxL || fn.nterm < 1 || fn.nterm > basis::kMaxTerms) bad_shell(s);
      p.nterm[f] = fn.nterm;
      for (int t = 0; t < fn.nterm; ++t) {
        const auto& e = fn.lmn[static_cast<std::size_t>(t)];
        if (e[0] < 0 || e[1] < 0 || e[2] < 0 || e[0] + e[1] + e[2] != fn.L) bad_shell(s);
        int c = 0;
        while (c < p.ncomp && p.comp[c] != e) ++c;
        if (c == p.ncomp) {
          if (p.ncomp == kMaxComponents) bad_shell(s);
          p.comp[p.ncomp++] = {e[0], e[1], e[2]};
          for (int k = 0; k < 3; ++k) p.lmax[k] = std::max(p.lmax[k], e[k]);
          p.ltot = std::max(p.ltot, fn.L);
        }
        p.term_comp[f][t] = c;
        p.term_coef[f][t] = fn.term_coef[static_cast<std::size_t>(t)];
      }
      for (int k = 0; k < shell.nprim; ++k) {
        if (!(shell.exponents[k] > 0.0)) bad_shell(s);
        p.weight[f][k] = fn.coef[k] / primitive_norm(shell.exponents[k], fn.L);
      }
    }
  }
  return plans;
}

namespace {

// Integrals over the Cartesian components of one shell pair, summed over the
// primitive pairs with the contraction weights: one block per matrix.
struct Block {
  std::array<std::array<double, kMaxF>, kMaxF> s{}, t{}, v{}, x{}, y{}, z{};
};

constexpr int kMaxI = 2 * kMaxL + 2;  // largest l1 + l2 on one axis (b raised by two)

// The per-axis expansion of one primitive pair for every exponent pair the
// shells need (b raised by two for the kinetic energy).
using AxisExpansion = one::AxisExpansion<kMaxL + 1, kAxisB, kMaxI + 1>;

// The primitive pair (ka, kb) of shells a, b added into `block`.
void add_primitive_pair(const ShellPlan& a, int ka, const ShellPlan& b, int kb,
                        std::span<const Vec3> positions, std::span<const double> charges,
                        bool want_v, bool want_r, Block& block) {
  const double alpha = a.exponent[ka];
  const double beta = b.exponent[kb];
  const PairGeometry g = pair_geometry(a.centre, alpha, b.centre, beta);
  if (g.negligible()) return;

  // Per-axis expansion coefficients and overlap factors I[axis][la][lb], lb up
  // to lmax + 2: I = sum_i f_2i (2i - 1)!! / (2 gamma)^i.
  AxisExpansion ex[3];
  double ov[3][kMaxL + 1][kAxisB];
  overlap_axes(a.lmax, {b.lmax[0] + 2, b.lmax[1] + 2, b.lmax[2] + 2}, g.pa, g.pb, g.gamma, ex, ov);
  const double q = kPi / g.gamma;
  const double pref = q * std::sqrt(q) * std::exp(-g.e);

  double ps[kMaxComponents][kMaxComponents], pt[kMaxComponents][kMaxComponents];
  double px[kMaxComponents][kMaxComponents], py[kMaxComponents][kMaxComponents],
      pz[kMaxComponents][kMaxComponents], pv[kMaxComponents][kMaxComponents];
  for (int ca = 0; ca < a.ncomp; ++ca) {
    const Lmn& la = a.comp[ca];
    for (int cb = 0; cb < b.ncomp; ++cb) {
      const Lmn& lb = b.comp[cb];
      const double ix = ov[0][la[0]][lb[0]];
      const double iy = ov[1][la[1]][lb[1]];
      const double iz = ov[2][la[2]][lb[2]];
      const double s = pref * ix * iy * iz;
      const double raised = pref * ov[0][la[0]][lb[0] + 2] * iy * iz +
                            pref * ix * ov[1][la[1]][lb[1] + 2] * iz +
                            pref * ix * iy * ov[2][la[2]][lb[2] + 2];
      double lowered = 0.0;
      if (lb[0] >= 2) lowered += lb[0] * (lb[0] - 1) * (pref * ov[0][la[0]][lb[0] - 2] * iy * iz);
      if (lb[1] >= 2) lowered += lb[1] * (lb[1] - 1) * (pref * ix * ov[1][la[1]][lb[1] - 2] * iz);
      if (lb[2] >= 2) lowered += lb[2] * (lb[2] - 1) * (pref * ix * iy * ov[2][la[2]][lb[2] - 2]);
      ps[ca][cb] = s;
      pt[ca][cb] =
          beta * (2 * (lb[0] + lb[1] + lb[2]) + 3) * s - 2.0 * beta * beta * raised - 0.5 * lowered;
      if (want_r) {
        px[ca][cb] = pref * ov[0][la[0]][lb[0] + 1] * iy * iz + b.centre[0] * s;
        py[ca][cb] = pref * ix * ov[1][la[1]][lb[1] + 1] * iz + b.centre[1] * s;
        pz[ca][cb] = pref * ix * iy * ov[2][la[2]][lb[2] + 1] + b.centre[2] * s;
      }
      pv[ca][cb] = 0.0;
    }
  }

  if (want_v) {
    const int numax = a.ltot + b.ltot;
    const double eps = 1.0 / (4.0 * g.gamma);
    std::array<double, kBoysTableSize> f{};
    double h[3][kMaxI + 1][kMaxI + 1];
    // A-factor tables G[axis][la][lb][nu].
    double gt[3][kMaxL + 1][kMaxL + 1][kGTableSize];
    for (std::size_t c = 0; c < charges.size(); ++c) {
      if (charges[c] == 0.0) continue;
      const Vec3& cc = positions[c];
      const Vec3 pc = {g.p[0] - cc[0], g.p[1] - cc[1], g.p[2] - cc[2]};
      const double t = g.gamma * (pc[0] * pc[0] + pc[1] * pc[1] + pc[2] * pc[2]);
      boys_table(t, numax, f);
      for (int k = 0; k < 3; ++k) {
        nucleus_axis(a.lmax[k] + b.lmax[k], pc[k], eps, h[k]);
        attraction_axis(a.lmax[k], b.lmax[k], ex[k], h[k], gt[k]);
      }
      for (int ca = 0; ca < a.ncomp; ++ca) {
        const Lmn& la = a.comp[ca];
        for (int cb = 0; cb < b.ncomp; ++cb) {
          const Lmn& lb = b.comp[cb];
          const double* gx = gt[0][la[0]][lb[0]];
          const double* gy = gt[1][la[1]][lb[1]];
          const double* gz = gt[2][la[2]][lb[2]];
          pv[ca][cb] -= charges[c] * attraction_sum(gx, gy, gz, la[0] + lb[0], la[1] + lb[1],
                                                    la[2] + lb[2], f.data());
        }
      }
    }
    const double vpref = 2.0 * kPi / g.gamma * std::exp(-g.e);
    for (int ca = 0; ca < a.ncomp; ++ca)
      for (int cb = 0; cb < b.ncomp; ++cb) pv[ca][cb] *= vpref;
  }

  // Contract into the functions of the pair.
  for (int fa = 0; fa < a.nfunc; ++fa) {
    for (int fb = 0; fb < b.nfunc; ++fb) {
      const double w = a.weight[fa][ka] * b.weight[fb][kb];
      if (w == 0.0) continue;
      double s = 0.0, t = 0.0, v = 0.0, x = 0.0, y = 0.0, z = 0.0;
      for (int ta = 0; ta < a.nterm[fa]; ++ta) {
        const int ca = a.term_comp[fa][ta];
        for (int tb = 0; tb < b.nterm[fb]; ++tb) {
          const int cb = b.term_comp[fb][tb];
          const double c = a.term_coef[fa][ta] * b.term_coef[fb][tb];
          s += c * ps[ca][cb];
          t += c * pt[ca][cb];
          v += c * pv[ca][cb];
          if (want_r) {
            x += c * px[ca][cb];
            y += c * py[ca][cb];
            z += c * pz[ca][cb];
          }
        }
      }
      block.s[fa][fb] += w * s;
      block.t[fa][fb] += w * t;
      block.v[fa][fb] += w * v;
      block.x[fa][fb] += w * x;
      block.y[fa][fb] += w * y;
      block.z[fa][fb] += w * z;
    }
  }
}

void store(const MatrixRef& m, const ShellPlan& a, const ShellPlan& b, bool same,
           const std::array<std::array<double, kMaxF>, kMaxF>& values, double scale) {
  if (!m) return;
  for (int fa = 0; fa < a.nfunc; ++fa) {
    for (int fb = same ? fa : 0; fb < b.nfunc; ++fb) {
      const double value = values[fa][fb] * scale;
      m(a.offset + fa, b.offset + fb) = value;
      m(b.offset + fb, a.offset + fa) = value;
    }
  }
}

}  // namespace

double primitive_norm(double alpha, int L) {
  double quarter = 1.0;
  for (int i = 0; i < L; ++i) quarter *= 0.25;
  return std::sqrt(quarter * std::sqrt(kPiCubedOver8 / power(alpha, 2 * L + 3)));
}

void build_one_electron_matrices(const basis::BasisSet& basis, std::span<const Vec3> positions,
                                 std::span<const double> charges, const OneElectronMatrices& out,
                                 OutputUnits units) {
  if (charges.size() != positions.size()) {
    throw std::invalid_argument("build_one_electron_matrices: one charge per position");
  }
  const std::vector<ShellPlan> plans = plan_shells(basis, positions);
  const int n = basis.nbasis();
  for (const MatrixRef* m : {&out.overlap, &out.kinetic, &out.potential, &out.position[0],
                             &out.position[1], &out.position[2]}) {
    if (*m && m->ld < n) {
      throw std::invalid_argument("build_one_electron_matrices: leading dimension below nbasis");
    }
  }
  const bool want_v = static_cast<bool>(out.potential);
  const bool want_r = out.position[0] || out.position[1] || out.position[2];

  const std::vector<std::pair<int, int>> pairs = shell_pairs(static_cast<int>(plans.size()));

  const auto npairs = static_cast<std::ptrdiff_t>(pairs.size());
#pragma omp parallel for schedule(dynamic, 1)
  for (std::ptrdiff_t ip = 0; ip < npairs; ++ip) {
    const auto [sa, sb] = pairs[static_cast<std::size_t>(ip)];
    const ShellPlan& a = plans[static_cast<std::size_t>(sa)];
    const ShellPlan& b = plans[static_cast<std::size_t>(sb)];
    Block block;
    for (int ka = 0; ka < a.nprim; ++ka)
      for (int kb = 0; kb < b.nprim; ++kb)
        add_primitive_pair(a, ka, b, kb, positions, charges, want_v, want_r, block);
    const bool same = sa == sb;
    store(out.overlap, a, b, same, block.s, 1.0);
    store(out.kinetic, a, b, same, block.t, units.energy);
    store(out.potential, a, b, same, block.v, units.energy);
    store(out.position[0], a, b, same, block.x, units.length);
    store(out.position[1], a, b, same, block.y, units.length);
    store(out.position[2], a, b, same, block.z, units.length);
  }
}

}  // namespace norvik::integrals::one
