#include "integrals/one/second_moments.h"

#include <stdexcept>
#include <utility>
#include <vector>

#include "integrals/one/shell_plan.h"

namespace norvik::integrals::one {

namespace {

constexpr int kMaxF = basis::kMaxFunctionsPerShell;
using Block = std::array<std::array<std::array<double, kMaxF>, kMaxF>, 6>;

// The primitive pair (ka, kb) of shells a, b added into the six blocks.  The
// centres are already relative to the origin, so each component is a moment
// about (0, 0, 0).
void add_pair(const ShellPlan& a, int ka, const ShellPlan& b, int kb, Block& block) {
  std::array<std::array<std::array<double, kShellPlanComponents>, kShellPlanComponents>, 6> m{};
  for (int ca = 0; ca < a.ncomp; ++ca) {
    const Primitive pa{a.centre, a.exponent[static_cast<std::size_t>(ka)], a.comp[ca]};
    for (int cb = 0; cb < b.ncomp; ++cb) {
      const Primitive pb{b.centre, b.exponent[static_cast<std::size_t>(kb)], b.comp[cb]};
      for (std::size_t q = 0; q < 6; ++q) {
        Lmn power{};
        ++power[static_cast<std::size_t>(kSecondMomentPairs[q][0])];
        ++power[static_cast<std::size_t>(kSecondMomentPairs[q][1])];
        m[q][ca][cb] = cartesian_moment(pa, pb, power);
      }
    }
  }
  for (int fa = 0; fa < a.nfunc; ++fa) {
    for (int fb = 0; fb < b.nfunc; ++fb) {
      const double w = a.weight[fa][ka] * b.weight[fb][kb];
      if (w == 0.0) continue;
      for (std::size_t q = 0; q < 6; ++q) {
        double sum = 0.0;
        for (int ta = 0; ta < a.nterm[fa]; ++ta)
          for (int tb = 0; tb < b.nterm[fb]; ++tb)
            sum += a.term_coef[fa][ta] * b.term_coef[fb][tb] *
                   m[q][a.term_comp[fa][ta]][b.term_comp[fb][tb]];
        block[q][fa][fb] += w * sum;
      }
    }
  }
}

}  // namespace

void build_second_moments(const basis::BasisSet& basis, std::span<const Vec3> positions,
                          const Vec3& origin, const std::array<MatrixRef, 6>& out) {
  const int n = basis.nbasis();
  for (const MatrixRef& m : out) {
    if (m && m.ld < n) throw std::invalid_argument("build_second_moments: leading dimension");
  }
  std::vector<Vec3> shifted(positions.begin(), positions.end());
  for (Vec3& r : shifted)
    for (std::size_t k = 0; k < 3; ++k) r[k] -= origin[k];
  const std::vector<ShellPlan> plans = plan_shells(basis, shifted);
  const std::vector<std::pair<int, int>> pairs = shell_pairs(static_cast<int>(plans.size()));
  const auto npairs = static_cast<std::ptrdiff_t>(pairs.size());
#pragma omp parallel for schedule(dynamic, 1)
  for (std::ptrdiff_t ip = 0; ip < npairs; ++ip) {
    const auto [sa, sb] = pairs[static_cast<std::size_t>(ip)];
    const ShellPlan& a = plans[static_cast<std::size_t>(sa)];
    const ShellPlan& b = plans[static_cast<std::size_t>(sb)];
    Block block{};
    for (int ka = 0; ka < a.nprim; ++ka)
      for (int kb = 0; kb < b.nprim; ++kb) add_pair(a, ka, b, kb, block);
    for (std::size_t q = 0; q < 6; ++q) {
      const MatrixRef& m = out[q];
      if (!m) continue;
      for (int fa = 0; fa < a.nfunc; ++fa)
        for (int fb = sa == sb ? fa : 0; fb < b.nfunc; ++fb) {
          m(a.offset + fa, b.offset + fb) = block[q][fa][fb];
          m(b.offset + fb, a.offset + fa) = block[q][fa][fb];
        }
    }
  }
}

}  // namespace norvik::integrals::one
