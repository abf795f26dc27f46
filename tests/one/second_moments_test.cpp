// Second-moment integrals: closed forms of single primitives, and the
// translation rule that ties them to the overlap and the position integrals
// of the one-electron builder for every shell kind.
#include "integrals/one/second_moments.h"

#include <gtest/gtest.h>

#include <vector>

#include "integrals/one/one_electron_matrices.h"
#include "support.h"

namespace one = norvik::integrals::one;
namespace nb = norvik::basis;
using one::testing::make_shell;

namespace {

using Six = std::array<std::vector<double>, 6>;

Six moments(const nb::BasisSet& basis, const std::vector<one::Vec3>& positions,
            const one::Vec3& origin) {
  const int n = basis.nbasis();
  Six m;
  std::array<one::MatrixRef, 6> out;
  for (std::size_t q = 0; q < 6; ++q) {
    m[q].assign(static_cast<std::size_t>(n * n), -7.0);
    out[q] = {m[q].data(), n};
  }
  one::build_second_moments(basis, positions, origin, out);
  return m;
}

}  // namespace

TEST(SecondMoments, SinglePrimitivesHaveTheirClosedForms) {
  // A normalised s primitive at A: <(x-C)(y-C)> = (A-C)_x (A-C)_y + δ_xy / (4α);
  // a p_x primitive at the origin: <x²> = 3 / (4α), <y²> = 1 / (4α).
  const double alpha = 0.7;
  nb::BasisSet s, p;
  s.shells = {make_shell(1, 0, {alpha}, {1.0})};
  p.shells = {make_shell(3, 0, {alpha}, {1.0})};
  const one::Vec3 a = {0.3, -1.1, 0.8}, c = {0.1, 0.2, -0.4};
  const Six ms = moments(s, {a}, c);
  for (std::size_t q = 0; q < 6; ++q) {
    const auto [i, j] = one::kSecondMomentPairs[q];
    const double expected = (a[i] - c[i]) * (a[j] - c[j]) + (i == j ? 0.25 / alpha : 0.0);
    EXPECT_NEAR(ms[q][0], expected, 1e-13) << q;
  }
  const Six mp = moments(p, {{0.0, 0.0, 0.0}}, {0.0, 0.0, 0.0});
  // The p slots are y, z, x.
  const int y = 0, x = 2;
  EXPECT_NEAR(mp[0][x + 3 * x], 0.75 / alpha, 1e-13);  // <px|xx|px>
  EXPECT_NEAR(mp[3][x + 3 * x], 0.25 / alpha, 1e-13);  // <px|yy|px>
  EXPECT_NEAR(mp[1][x + 3 * y], 0.25 / alpha, 1e-13);  // <px|xy|py>
  EXPECT_NEAR(mp[0][x + 3 * y], 0.0, 1e-14);           // <px|xx|py>
}

TEST(SecondMoments, MoveWithTheOriginAsOverlapAndPositionIntegralsSay) {
  // M_ij(C) = M_ij(0) − C_i X_j − C_j X_i + C_i C_j S, every shell kind on
  // three unsymmetric centres: a wrong component, contraction or centre in
  // either builder breaks it.
  nb::BasisSet basis;
  basis.shells = {
      make_shell(1, 0, {130.7, 23.81, 6.44}, {0.154, 0.535, 0.445}),
      make_shell(4, 0, {5.03, 1.17, 0.38}, {-0.0999, 0.399, 0.700}, {0.156, 0.608, 0.392}),
      make_shell(5, 0, {0.8}, {1.0}),
      make_shell(3, 1, {1.1}, {1.0}),
      make_shell(6, 2, {2.1, 0.55}, {0.6, 0.5}),
      make_shell(7, 2, {0.8}, {1.0}),
  };
  const std::vector<one::Vec3> positions = {{0.1, -0.2, 0.3}, {1.9, 0.4, -0.5}, {-0.7, 1.6, 1.1}};
  const int n = basis.nbasis();
  const auto nn = static_cast<std::size_t>(n * n);
  std::vector<double> s(nn), x(nn), y(nn), z(nn);
  one::OneElectronMatrices out;
  out.overlap = {s.data(), n};
  out.position = {one::MatrixRef{x.data(), n}, one::MatrixRef{y.data(), n},
                  one::MatrixRef{z.data(), n}};
  const std::vector<double> no_charges(3, 0.0);
  one::build_one_electron_matrices(basis, positions, no_charges, out);
  const std::array<const std::vector<double>*, 3> r = {&x, &y, &z};
  const one::Vec3 c = {0.4, -0.9, 1.3};
  const Six m0 = moments(basis, positions, {0.0, 0.0, 0.0});
  const Six mc = moments(basis, positions, c);
  double worst = 0.0;
  for (std::size_t q = 0; q < 6; ++q) {
    const auto [i, j] = one::kSecondMomentPairs[q];
    for (std::size_t e = 0; e < nn; ++e) {
      const double moved = m0[q][e] - c[i] * (*r[j])[e] - c[j] * (*r[i])[e] + c[i] * c[j] * s[e];
      worst = std::max(worst, std::abs(mc[q][e] - moved));
      EXPECT_EQ(mc[q][e], mc[q][(e % n) * n + e / n]) << "symmetry " << q;
    }
  }
  EXPECT_LT(worst, 1e-11);
}
