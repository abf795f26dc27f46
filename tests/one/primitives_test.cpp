// Primitive-pair integrals: against quadrature references, at their cut-offs and
// table limits, and through the exported routines.
#include "integrals/one/primitives.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <fstream>
#include <iostream>
#include <numbers>
#include <sstream>
#include <string>

#include "common/error.h"
#include "integrals/one/boys.h"
#include "norvik/integrals_one.h"
#include "support.h"

namespace one = norvik::integrals::one;

namespace {

struct Case {
  std::string kind;
  one::Primitive a, b;
  one::Vec3 c;
  double value;
};

std::vector<Case> read_cases() {
  std::ifstream in(one::testing::data_path("primitives.txt"));
  EXPECT_TRUE(in);
  std::vector<Case> cases;
  std::string line;
  while (std::getline(in, line)) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream row(line);
    Case c;
    row >> c.kind;
    for (auto* p : {&c.a, &c.b}) {
      row >> p->centre[0] >> p->centre[1] >> p->centre[2] >> p->exponent >> p->lmn[0] >>
          p->lmn[1] >> p->lmn[2];
    }
    row >> c.c[0] >> c.c[1] >> c.c[2] >> c.value;
    cases.push_back(c);
  }
  return cases;
}

// The exported routine of each reference kind.
double exported(const Case& c) {
  const double *A = c.a.centre.data(), *B = c.b.centre.data();
  const norvik_int la[3] = {c.a.lmn[0], c.a.lmn[1], c.a.lmn[2]};
  const norvik_int lb[3] = {c.b.lmn[0], c.b.lmn[1], c.b.lmn[2]};
  double out = 0.0;
  const double* al = &c.a.exponent;
  const double* be = &c.b.exponent;
  if (c.kind == "S") OVERLAPINT(A, al, la, B, be, lb, &out);
  if (c.kind == "T") KINEENEINT(A, al, la, B, be, lb, &out);
  if (c.kind == "V") NUCLATTINT(A, al, la, B, be, lb, c.c.data(), &out);
  if (c.kind == "X") XINT(A, al, la, B, be, lb, &out);
  if (c.kind == "Y") YINT(A, al, la, B, be, lb, &out);
  if (c.kind == "Z") ZINT(A, al, la, B, be, lb, &out);
  if (c.kind == "XX") XXINT(A, al, la, B, be, lb, &out);
  if (c.kind == "XY") XYINT(A, al, la, B, be, lb, &out);
  if (c.kind == "R2") R2INT(A, al, la, B, be, lb, &out);
  return out;
}

// Runs `body` with standard output captured; returns what it printed.
template <class Body>
std::string printed(Body body) {
  ::testing::internal::CaptureStdout();
  body();
  return ::testing::internal::GetCapturedStdout();
}

one::Primitive prim(one::Vec3 r, double alpha, one::Lmn lmn) {
  return {r, alpha, lmn};
}

}  // namespace

TEST(OnePrimitives, MatchQuadratureReferences) {
  const auto cases = read_cases();
  ASSERT_EQ(cases.size(), 14u * 9u);
  std::string slow_notes;
  for (const auto& c : cases) {
    double got = 0.0;
    slow_notes += printed([&] { got = exported(c); });
    // The values reach 1e-4 .. 10; quadrature is good to far more digits.
    EXPECT_NEAR(got, c.value, 2e-13 * std::max(1.0, std::abs(c.value)))
        << c.kind << " lmnA " << c.a.lmn[0] << c.a.lmn[1] << c.a.lmn[2] << " lmnB " << c.b.lmn[0]
        << c.b.lmn[1] << c.b.lmn[2];
  }
  // The two pairs with six quanta on one axis take the general A-factor sum.
  EXPECT_EQ(slow_notes,
            " Slow in makeGiTb. Please implement for l>=6.\n"
            " Slow in makeGiTb. Please implement for l>=6.\n");
}

TEST(OnePrimitives, MatchTheIndependentReferenceOfTheTwoElectronWork) {
  // The mpmath McMurchie-Davidson vectors of the Rys reference (docs/rys.md):
  // every (la, lb) up to (3, 3), general and one-centre pairs.
  std::ifstream in(std::string(NORVIK_SOURCE_DIR) + "/tests/rys/data/one_electron_reference.txt");
  if (!in) GTEST_SKIP() << "reference vectors not present";
  std::string line;
  int count = 0;
  while (std::getline(in, line)) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream row(line);
    std::string kind;
    one::Primitive a, b;
    one::Vec3 c;
    double value;
    row >> kind;
    for (auto* p : {&a, &b})
      row >> p->centre[0] >> p->centre[1] >> p->centre[2] >> p->exponent >> p->lmn[0] >>
          p->lmn[1] >> p->lmn[2];
    row >> c[0] >> c[1] >> c[2] >> value;
    double got = 0.0;
    if (kind == "overlap")
      got = one::overlap(a, b);
    else if (kind == "kinetic")
      got = one::kinetic(a, b);
    else if (kind == "nuclear")
      got = one::nuclear_attraction(a, b, c);
    else if (kind == "dipole_x")
      got = one::cartesian_moment(a, b, {1, 0, 0});
    else if (kind == "dipole_y")
      got = one::cartesian_moment(a, b, {0, 1, 0});
    else if (kind == "dipole_z")
      got = one::cartesian_moment(a, b, {0, 0, 1});
    else
      ADD_FAILURE() << "unknown kind " << kind;
    EXPECT_NEAR(got, value, 1e-13 * std::max(1.0, std::abs(value))) << line;
    ++count;
  }
  EXPECT_GT(count, 1000);
}

TEST(OnePrimitives, TwoSOnOneCentreGiveTheClosedForm) {
  const one::Primitive s = prim({0.3, -1.2, 0.7}, 1.0, {0, 0, 0});
  EXPECT_DOUBLE_EQ(one::overlap(s, s), std::pow(std::numbers::pi / 2.0, 1.5));
  const one::Primitive t = prim({0.3, -1.2, 0.7}, 0.35, {0, 0, 0});
  EXPECT_DOUBLE_EQ(one::overlap(s, t), std::pow(std::numbers::pi / 1.35, 1.5));
  // A nucleus on the common centre: 2 pi / gamma exactly (T = 0 branch).
  EXPECT_DOUBLE_EQ(one::nuclear_attraction(s, s, {0.3, -1.2, 0.7}), std::numbers::pi);
}

TEST(OnePrimitives, PairExponentAbove500GivesExactZeros) {
  // alpha = beta = 2: mu = 1 and E = |AB|^2.
  const one::Primitive a = prim({0.0, 0.0, 0.0}, 2.0, {0, 0, 1});
  const double z = std::sqrt(500.0);
  one::Primitive b = prim({0.0, 0.0, z}, 2.0, {0, 0, 1});
  while (one::pair_geometry(a.centre, 2.0, b.centre, 2.0).e > 500.0)
    b.centre[2] = std::nextafter(b.centre[2], 0.0);
  // At E <= 500 the (tiny) integrals are still formed ...
  EXPECT_GT(std::abs(one::overlap(a, b)), 0.0);
  EXPECT_GT(std::abs(one::kinetic(a, b)), 0.0);
  EXPECT_GT(std::abs(one::nuclear_attraction(a, b, {0.0, 0.0, 11.0})), 0.0);
  // ... one step further they are exactly zero.
  b.centre[2] = std::nextafter(b.centre[2], 100.0);
  while (!(one::pair_geometry(a.centre, 2.0, b.centre, 2.0).e > 500.0))
    b.centre[2] = std::nextafter(b.centre[2], 100.0);
  EXPECT_EQ(one::overlap(a, b), 0.0);
  EXPECT_EQ(one::kinetic(a, b), 0.0);
  EXPECT_EQ(one::nuclear_attraction(a, b, {0.0, 0.0, 11.0}), 0.0);
  EXPECT_EQ(one::cartesian_moment(a, b, {0, 1, 2}), 0.0);
  // No table is built for such a pair: even an oversized one gives zero.
  const one::Primitive big = prim({0.0, 0.0, 40.0}, 1.0, {3, 3, 3});
  EXPECT_EQ(one::nuclear_attraction(a, big, {0.0, 0.0, 1.0}), 0.0);
}

TEST(OnePrimitives, EqualCoordinatesGiveExactProductCentre) {
  const auto g = one::pair_geometry({0.1, 0.7, -0.3}, 0.37, {0.1, -0.2, -0.3}, 1.91);
  EXPECT_EQ(g.p[0], 0.1);
  EXPECT_EQ(g.pa[0], 0.0);
  EXPECT_EQ(g.pb[0], 0.0);
  EXPECT_EQ(g.pa[2], 0.0);
  EXPECT_NE(g.pa[1], 0.0);
  // With PA = PB = 0 along x, odd powers on that axis vanish exactly.
  const one::Primitive a = prim({0.1, 0.7, -0.3}, 0.37, {1, 0, 0});
  const one::Primitive b = prim({0.1, -0.2, -0.3}, 1.91, {0, 1, 0});
  EXPECT_EQ(one::overlap(a, b), 0.0);
}

TEST(OnePrimitives, TableLimitsStopWithTheirMessages) {
  one::testing::use_threadsafe_death_tests();
  const one::Primitive f = prim({0.0, 0.0, 0.0}, 1.0, {3, 3, 3});
  const one::Primitive s = prim({0.1, 0.0, 0.0}, 1.0, {0, 0, 0});
  try {
    one::nuclear_attraction(f, s, {0.0, 0.5, 0.0});
    FAIL() << "no error";
  } catch (const norvik::Error& e) {
    EXPECT_EQ(e.lines()[0], " Exceeded size of GGGnuTb.           9");
  }
  std::array<double, one::kGTableSize> g{};
  try {
    one::a_factor_table(5, 4, 0.1, -0.1, 1.0, 0.2, g);
    FAIL() << "no error";
  } catch (const norvik::Error& e) {
    EXPECT_EQ(e.lines()[0], " Exceeded size of GI.           9");
  }
  const double A[3] = {0, 0, 0}, B[3] = {0.1, 0, 0}, C[3] = {0, 0.5, 0}, one_ = 1.0;
  const norvik_int la[3] = {3, 3, 3}, lb[3] = {0, 0, 0};
  double v = 0.0;
  EXPECT_EXIT(
      {
        std::cout.rdbuf(std::cerr.rdbuf());
        NUCLATTINT(A, &one_, la, B, &one_, lb, C, &v);
      },
      ::testing::ExitedWithCode(1), "^ Exceeded size of GGGnuTb\\.           9\n$");
}

TEST(OnePrimitives, GeneralAFactorSumAgreesWithTheTabulatedPath) {
  // The general sum announces itself; its tables must equal those of the fast
  // path for a pair both can serve (the A-factor sum is linear in f_i, so
  // scaling checks nothing: compare (6,1) against (1,6) with PA, PB swapped).
  std::array<double, one::kGTableSize> g61{}, g16{};
  const std::string note = printed([&] { one::a_factor_table(6, 1, 0.31, -0.47, 1.3, 0.22, g61); });
  EXPECT_EQ(note, " Slow in makeGiTb. Please implement for l>=6.\n");
  printed([&] { one::a_factor_table(1, 6, -0.47, 0.31, 1.3, 0.22, g16); });
  for (int k = 0; k < one::kGTableSize; ++k) EXPECT_NEAR(g61[k], g16[k], 1e-14 * std::abs(g61[k]));
  // (5,3) is tabulated; GIRU summed by hand must give the same table.
  std::array<double, one::kGTableSize> g53{}, sum{};
  EXPECT_EQ(printed([&] { one::a_factor_table(5, 3, 0.13, -0.29, 0.8, -0.41, g53); }), "");
  for (norvik_int i = 0; i <= 8; ++i)
    for (norvik_int r = 0; r <= i / 2; ++r)
      for (norvik_int u = 0; u <= (i - 2 * r) / 2; ++u) {
        const norvik_int l1 = 5, l2 = 3;
        const double pa = 0.13, pb = -0.29, gm = 0.8, pc = -0.41;
        sum[i - 2 * r - u] += GIRU(&i, &r, &u, &l1, &l2, &pa, &pb, &gm, &pc);
      }
  for (int k = 0; k < one::kGTableSize; ++k)
    EXPECT_NEAR(g53[k], sum[k], 1e-13 * std::max(1.0, std::abs(sum[k]))) << k;
}

TEST(OnePrimitives, FastNuclearAttractionUsesTheCallersBoysTable) {
  const double A[3] = {0.2, -0.1, 0.4}, B[3] = {-0.3, 0.5, 0.1}, C[3] = {0.6, 0.2, -0.7};
  const double al = 0.9, be = 1.6;
  const norvik_int la[3] = {1, 0, 1}, lb[3] = {0, 2, 0};
  double v = 0.0;
  NUCLATTINT(A, &al, la, B, &be, lb, C, &v);
  const auto g = one::pair_geometry({A[0], A[1], A[2]}, al, {B[0], B[1], B[2]}, be);
  double t = 0.0;
  for (int k = 0; k < 3; ++k) t += (g.p[k] - C[k]) * (g.p[k] - C[k]);
  t *= g.gamma;
  double f[16];
  const norvik_int numax = 4;
  MAKEFNUTB(&t, &numax, f);
  double fast = 0.0;
  NUCLATTINT_FAST(A, &al, la, B, &be, lb, C, f, &fast);
  EXPECT_EQ(fast, v);
  // A table made for another T gives another value: the table is really used.
  f[0] *= 1.5;
  NUCLATTINT_FAST(A, &al, la, B, &be, lb, C, f, &fast);
  EXPECT_NE(fast, v);
}
