// The closed-form ERI route: every class against an independent evaluation,
// permutational symmetry, the one-centre (ss|ss) formula, route selection and
// the fatal limits.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>
#include <vector>

#include "common/error.h"
#include "integrals/rys/rys_eri.h"
#include "integrals/two/boys.h"
#include "integrals/two/phmd.h"
#include "reference_eri.h"

namespace norvik::integrals::two {
namespace {

using testing::RefShell;

// The engine and the reference agree to this fraction of the block's largest
// integral (the reference runs in long double; the engine loses a few digits
// to cancellation in the recurrences of the d classes).
constexpr double kBlockTolerance = 1e-12;

RefShell random_shell(std::mt19937& rng, int l, int nprim) {
  std::uniform_real_distribution<double> pos(-1.2, 1.2), ex(0.15, 6.0), co(0.2, 1.0);
  RefShell s;
  s.l = l;
  s.centre = {pos(rng), pos(rng), pos(rng)};
  for (int p = 0; p < nprim; ++p) {
    s.exps.push_back(ex(rng));
    s.coefs.push_back(co(rng));
  }
  return s;
}

// Calls the block route with maxdim 6, mxprsh 30 and returns the block.
std::vector<double> block_of(const std::array<RefShell, 4>& s, double cutoff = 30.0,
                             void (*route)(const BlockRequest&) = &int2elec, int maxdim = 6) {
  constexpr int mxprsh = 30;
  std::vector<double> eri(maxdim * maxdim * maxdim * maxdim, -7.0);
  std::vector<double> ex(mxprsh * 4, 0.0), co(mxprsh * 4, 0.0), ce(12);
  int nprim[4], l[4];
  for (int k = 0; k < 4; ++k) {
    nprim[k] = static_cast<int>(s[k].exps.size());
    l[k] = s[k].l;
    for (int p = 0; p < nprim[k]; ++p) {
      ex[k * mxprsh + p] = s[k].exps[p];
      co[k * mxprsh + p] = s[k].coefs[p];
    }
    for (int c = 0; c < 3; ++c) ce[3 * k + c] = s[k].centre[c];
  }
  BlockRequest r{eri.data(), ex.data(), co.data(), ce.data(), nprim, l, maxdim, mxprsh, cutoff};
  route(r);
  return eri;
}

double at(const std::vector<double>& eri, int i, int j, int k, int l) {
  return eri[i + 6 * (j + 6 * (k + 6 * l))];
}

TEST(TwoClosedForm, EveryClassAgreesWithReference) {
  std::mt19937 rng(12345);
  for (int code = 0; code < 3 * 81; ++code) {
    const int c = code % 81;  // every class three times, with fresh shells
    const int L[4] = {c / 27, (c / 9) % 3, (c / 3) % 3, c % 3};
    std::array<RefShell, 4> s;
    for (int k = 0; k < 4; ++k) s[k] = random_shell(rng, L[k], 2);
    const auto got = block_of(s);
    const auto ref = testing::reference_eri(s[0], s[1], s[2], s[3]);
    double big = 0;
    for (double v : ref) big = std::max(big, std::abs(v));
    ASSERT_GT(big, 0.0);
    const int n[4] = {(L[0] + 1) * (L[0] + 2) / 2, (L[1] + 1) * (L[1] + 2) / 2,
                      (L[2] + 1) * (L[2] + 2) / 2, (L[3] + 1) * (L[3] + 2) / 2};
    std::size_t t = 0;
    double worst = 0;
    for (int i = 0; i < n[0]; ++i)
      for (int j = 0; j < n[1]; ++j)
        for (int k = 0; k < n[2]; ++k)
          for (int l = 0; l < n[3]; ++l)
            worst = std::max(worst, std::abs(at(got, i, j, k, l) - ref[t++]));
    EXPECT_LE(worst, kBlockTolerance * big) << "class " << L[0] << L[1] << L[2] << L[3];
  }
}

// The same block from the Rys route, column-major with leading dimension 6.
std::vector<double> rys_block_of(const std::array<RefShell, 4>& s) {
  std::vector<double> eri(6 * 6 * 6 * 6, 0.0);
  rys::ShellData d[4];
  for (int k = 0; k < 4; ++k) {
    d[k].L = s[k].l;
    d[k].nprim = static_cast<int>(s[k].exps.size());
    d[k].exps = s[k].exps.data();
    d[k].coefs = s[k].coefs.data();
    d[k].centre = s[k].centre;
  }
  rys::RysEngine engine;
  engine.compute(d[0], d[1], d[2], d[3], 30.0, eri.data(), 6);
  return eri;
}

TEST(TwoClosedForm, AgreesWithTheRysRoute) {
  std::mt19937 rng(99);
  for (int code = 0; code < 81; ++code) {
    const int L[4] = {code / 27, (code / 9) % 3, (code / 3) % 3, code % 3};
    std::array<RefShell, 4> s;
    for (int k = 0; k < 4; ++k) s[k] = random_shell(rng, L[k], 3);
    const auto closed = block_of(s, 30.0, &int2phmd);
    const auto rys = rys_block_of(s);
    double big = 0, worst = 0;
    for (int i = 0; i < (L[0] + 1) * (L[0] + 2) / 2; ++i)
      for (int j = 0; j < (L[1] + 1) * (L[1] + 2) / 2; ++j)
        for (int k = 0; k < (L[2] + 1) * (L[2] + 2) / 2; ++k)
          for (int l = 0; l < (L[3] + 1) * (L[3] + 2) / 2; ++l) {
            big = std::max(big, std::abs(at(rys, i, j, k, l)));
            worst = std::max(worst, std::abs(at(closed, i, j, k, l) - at(rys, i, j, k, l)));
          }
    EXPECT_LE(worst, kBlockTolerance * big) << "class " << L[0] << L[1] << L[2] << L[3];
  }
  // Beyond d the block route hands the quartet to the Rys route.
  const std::array<RefShell, 4> f = {random_shell(rng, 3, 2), random_shell(rng, 1, 1),
                                     random_shell(rng, 2, 2), random_shell(rng, 0, 1)};
  const auto routed = block_of(f, 30.0, &int2elec, 10);
  const auto ref = testing::reference_eri(f[0], f[1], f[2], f[3]);
  double big = 0, worst = 0;
  std::size_t t = 0;
  for (int i = 0; i < 10; ++i)
    for (int j = 0; j < 3; ++j)
      for (int k = 0; k < 6; ++k) {
        big = std::max(big, std::abs(ref[t]));
        worst = std::max(worst, std::abs(routed[i + 10 * (j + 10 * k)] - ref[t++]));
      }
  EXPECT_LE(worst, kBlockTolerance * big);
}

TEST(TwoClosedForm, PermutationalSymmetry) {
  std::mt19937 rng(7);
  const std::array<RefShell, 4> s = {random_shell(rng, 2, 3), random_shell(rng, 1, 2),
                                     random_shell(rng, 2, 1), random_shell(rng, 0, 2)};
  const auto base = block_of(s);
  // (ba|cd), (ab|dc), (cd|ab), (dc|ba)
  const std::array<std::array<int, 4>, 4> perms = {
      {{1, 0, 2, 3}, {0, 1, 3, 2}, {2, 3, 0, 1}, {3, 2, 1, 0}}};
  for (const auto& p : perms) {
    const auto other = block_of({s[p[0]], s[p[1]], s[p[2]], s[p[3]]});
    int idx[4];
    for (idx[0] = 0; idx[0] < 6; ++idx[0])
      for (idx[1] = 0; idx[1] < 3; ++idx[1])
        for (idx[2] = 0; idx[2] < 6; ++idx[2])
          for (idx[3] = 0; idx[3] < 1; ++idx[3]) {
            const double v = at(base, idx[0], idx[1], idx[2], idx[3]);
            const double w = at(other, idx[p[0]], idx[p[1]], idx[p[2]], idx[p[3]]);
            EXPECT_NEAR(v, w, 1e-14 * std::max(1.0, std::abs(v)));
          }
  }
}

TEST(TwoClosedForm, OneCentreSsssAndPairCutoff) {
  RefShell s;
  s.l = 0;
  s.centre = {0.3, -0.2, 0.1};
  s.exps = {1.3};
  s.coefs = {0.7};
  RefShell t = s;
  t.exps = {0.4};
  t.coefs = {1.1};
  const auto eri = block_of({s, t, t, s});
  const double gab = 1.3 + 0.4, gcd = 0.4 + 1.3;
  const double expect = 2 * std::pow(std::numbers::pi, 2.5) / (gab * gcd * std::sqrt(gab + gcd)) *
                        0.7 * 1.1 * 1.1 * 0.7;
  EXPECT_NEAR(eri[0], expect, 1e-15 * expect);
  EXPECT_EQ(eri[1], 0.0);  // INT2ELEC clears the whole block

  // A pair with μ|AB|² above the cutoff contributes nothing.
  RefShell far = t;
  far.centre = {20.0, 0.0, 0.0};
  EXPECT_EQ(block_of({s, far, s, s})[0], 0.0);
  // ... and the cutoff is μ|AB|² > cutoff, not ≥.
  const double mu = 1.3 * 0.4 / 1.7;
  far.centre = {s.centre[0] + 2.0, s.centre[1], s.centre[2]};
  EXPECT_GT(block_of({s, far, s, s}, 4.0 * mu)[0], 0.0);
  EXPECT_EQ(block_of({s, far, s, s}, 4.0 * mu * 0.999)[0], 0.0);
}

TEST(TwoClosedForm, RouteLimitsAndMessages) {
  std::mt19937 rng(3);
  std::array<RefShell, 4> s = {random_shell(rng, 0, 1), random_shell(rng, 0, 1),
                               random_shell(rng, 0, 1), random_shell(rng, 0, 1)};
  s[2].l = 7;
  ::testing::internal::CaptureStdout();
  const auto eri = block_of(s);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(),
            " Error! Subroutine int2elec supports up to g function.\n");
  EXPECT_TRUE(std::all_of(eri.begin(), eri.end(), [](double v) { return v == 0.0; }));

  // mxprsh beyond 30 stops the closed-form route.
  std::vector<double> eri2(1), ex(31 * 4, 1.0), co(31 * 4, 1.0), ce(12, 0.0);
  int nprim[4] = {1, 1, 1, 1}, l[4] = {0, 0, 0, 0};
  BlockRequest r{eri2.data(), ex.data(), co.data(), ce.data(), nprim, l, 1, 31, 30.0};
  try {
    int2phmd(r);
    FAIL() << "no error";
  } catch (const Error& e) {
    EXPECT_EQ(e.lines(),
              std::vector<std::string>{" Error! Parameter mxprsh2 in int2phmd is small!"});
  }
  // A class kernel refuses a quartet of another class.
  r.mxprsh = 30;
  l[0] = 1;
  EXPECT_THROW(int2phmd_class(r, class_code(0, 0, 0, 0), "INT2SSSS"), Error);
  std::vector<double> fits(81);
  r.eri = fits.data();
  r.maxdim = 3;
  EXPECT_NO_THROW(int2phmd_class(r, class_code(1, 0, 0, 0), "INT2PSSS"));
  // a p shell does not fit a block of leading dimension 2
  std::vector<double> small(16);
  r.eri = small.data();
  r.maxdim = 2;
  EXPECT_THROW(int2phmd(r), Error);
}

TEST(TwoBoys, MatchesSeriesAcrossTheTableAndBeyond) {
  // Arguments on, between and around grid points, at the table's end and far out.
  const double ts[] = {0.0,  1e-9,  0.015625, 0.0157, 0.7,  3.33, 11.9,
                       25.0, 39.98, 40.0,     41.5,   63.0, 150.0};
  double f[kBoysMaxOrder + 1];
  for (double t : ts) {
    boys(kBoysMaxOrder, t, f);
    for (int m = 0; m <= kBoysMaxOrder; ++m) {
      const double ref = static_cast<double>(testing::ref_boys(m, t));
      EXPECT_NEAR(f[m], ref, 4e-15 * ref) << "m=" << m << " T=" << t;
    }
  }
}

}  // namespace
}  // namespace norvik::integrals::two
