// The Rys electron-repulsion route against the independent McMurchie-Davidson
// reference (tools/reference), and its invariants.
#include "integrals/rys/rys_eri.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <vector>

#include "common/error.h"
#include "norvik/integrals_rys.h"
#include "reference_data.h"

namespace rys = norvik::integrals::rys;
using norvik::test::ReferenceQuartet;

namespace {

constexpr int kLd = 28;  // the largest block dimension
constexpr double kNoScreening = 1e300;
// The brief's acceptance bound, relative to the largest integral of the block.
// The reference holds 20 digits; the Rys route loses a few digits to the
// horizontal recurrences on high angular momentum, still far inside it.
constexpr double kBlockTolerance = 1e-12;

std::size_t offset(int ia, int ib, int ic, int id, int ld = kLd) {
  return ia + static_cast<std::size_t>(ld) * (ib + ld * (ic + static_cast<std::size_t>(ld) * id));
}

std::vector<double> compute(const std::array<rys::ShellData, 4>& s, double cutoff, int ld = kLd) {
  std::vector<double> block(static_cast<std::size_t>(ld) * ld * ld * ld, 0.0);
  rys::RysEngine engine;
  engine.compute(s[0], s[1], s[2], s[3], cutoff, block.data(), ld);
  return block;
}

std::array<rys::ShellData, 4> views(const ReferenceQuartet& q) {
  return {q.shells[0].view(), q.shells[1].view(), q.shells[2].view(), q.shells[3].view()};
}

// Checks a block; returns its worst error relative to its largest reference integral.
double expect_matches(const ReferenceQuartet& q) {
  SCOPED_TRACE("quartet " + q.label);
  const auto block = compute(views(q), kNoScreening);
  double largest = 0.0;
  for (const auto& v : q.values) largest = std::max(largest, std::abs(v.value));
  EXPECT_GT(largest, 0.0);
  double worst = 0.0;
  for (const auto& v : q.values) {
    const double got = block[offset(v.index[0], v.index[1], v.index[2], v.index[3])];
    worst = std::max(worst, std::abs(got - v.value) / largest);
    EXPECT_NEAR(got, v.value, kBlockTolerance * largest)
        << "component " << v.index[0] << " " << v.index[1] << " " << v.index[2] << " "
        << v.index[3];
  }
  return worst;
}

// A quartet of shells with arbitrary angular momenta (two primitives each).
struct OwnedQuartet {
  std::array<std::array<double, 2>, 4> exps{};
  std::array<std::array<double, 2>, 4> coefs{};
  std::array<rys::ShellData, 4> shells{};
};

OwnedQuartet make_quartet(std::array<int, 4> L) {
  static const double centres[4][3] = {
      {0.1, -0.4, 0.3}, {-0.7, 0.2, 0.9}, {0.5, 0.8, -0.6}, {-0.2, -0.9, -0.1}};
  OwnedQuartet q;
  for (int k = 0; k < 4; ++k) {
    q.exps[k] = {1.9 - 0.3 * k, 0.45 + 0.1 * k};
    q.coefs[k] = {0.6, 0.8 - 0.1 * k};
    q.shells[k] = {L[k],
                   2,
                   q.exps[k].data(),
                   q.coefs[k].data(),
                   {centres[k][0], centres[k][1], centres[k][2]}};
  }
  return q;
}

}  // namespace

TEST(RysEri, EveryClassUpToDdddMatchesReference) {
  const auto quartets = norvik::test::read_eri_reference(NORVIK_TEST_DATA "/eri_reference.txt");
  ASSERT_GE(quartets.size(), 81u);
  double worst = 0.0;
  for (const auto& q : quartets) worst = std::max(worst, expect_matches(q));
  testing::Test::RecordProperty("worst_relative_error", std::to_string(worst));
}

TEST(RysEri, FToIShellSamplesMatchReference) {
  const auto quartets =
      norvik::test::read_eri_reference(NORVIK_TEST_DATA "/eri_reference_high.txt");
  ASSERT_GE(quartets.size(), 20u);
  double worst = 0.0;
  for (const auto& q : quartets) worst = std::max(worst, expect_matches(q));
  testing::Test::RecordProperty("worst_relative_error", std::to_string(worst));
}

TEST(RysEri, EightFoldPermutationalSymmetry) {
  // (ab|cd) = (ba|cd) = (ab|dc) = (ba|dc) = (cd|ab) = (dc|ab) = (cd|ba) = (dc|ba).
  const auto q = make_quartet({3, 1, 2, 4});
  const auto& s = q.shells;
  const int n[4] = {10, 3, 6, 15};
  const auto ref = compute({s[0], s[1], s[2], s[3]}, kNoScreening);
  double largest = 0.0;
  for (double v : ref) largest = std::max(largest, std::abs(v));
  const double tol = 1e-13 * largest;
  const auto ba_cd = compute({s[1], s[0], s[2], s[3]}, kNoScreening);
  const auto ab_dc = compute({s[0], s[1], s[3], s[2]}, kNoScreening);
  const auto cd_ab = compute({s[2], s[3], s[0], s[1]}, kNoScreening);
  const auto dc_ba = compute({s[3], s[2], s[1], s[0]}, kNoScreening);
  for (int a = 0; a < n[0]; ++a)
    for (int b = 0; b < n[1]; ++b)
      for (int c = 0; c < n[2]; ++c)
        for (int d = 0; d < n[3]; ++d) {
          const double v = ref[offset(a, b, c, d)];
          ASSERT_NEAR(ba_cd[offset(b, a, c, d)], v, tol);
          ASSERT_NEAR(ab_dc[offset(a, b, d, c)], v, tol);
          ASSERT_NEAR(cd_ab[offset(c, d, a, b)], v, tol);
          ASSERT_NEAR(dc_ba[offset(d, c, b, a)], v, tol);
        }
}

TEST(RysEri, OneCentreSsssClosedForm) {
  const double ea[2] = {1.3, 0.4}, ca[2] = {0.7, 0.5};
  const double eb[1] = {0.9}, cb[1] = {1.1};
  const std::array<double, 3> centre{0.25, -0.5, 1.0};
  const rys::ShellData a{0, 2, ea, ca, centre}, b{0, 1, eb, cb, centre};
  double value = 0.0;
  rys::RysEngine engine;
  engine.compute(a, b, b, a, 30.0, &value, 1);
  double expected = 0.0;
  for (int i = 0; i < 2; ++i)
    for (int j = 0; j < 2; ++j) {
      const double g1 = ea[i] + eb[0], g2 = eb[0] + ea[j];
      expected +=
          ca[i] * cb[0] * cb[0] * ca[j] * rys::kTwoPiToFiveHalves / (g1 * g2 * std::sqrt(g1 + g2));
    }
  EXPECT_NEAR(value, expected, 1e-15 * expected);
}

TEST(RysEri, PairScreening) {
  // With one primitive on b, the bra pairs are the primitives of a; a cutoff
  // between their values of mu|AB|^2 drops exactly the tighter one.
  const double ea[2] = {2.5, 0.3}, ca[2] = {0.8, 0.6};
  const double eb[1] = {0.7}, cb[1] = {1.0};
  const rys::ShellData a{2, 2, ea, ca, {0.0, 0.0, 0.0}};
  const rys::ShellData b{1, 1, eb, cb, {0.0, 1.5, 0.5}};
  const rys::ShellData a_loose{2, 1, ea + 1, ca + 1, a.centre};
  const double ab2 = 1.5 * 1.5 + 0.5 * 0.5;
  const double mu0 = ea[0] * eb[0] / (ea[0] + eb[0]) * ab2;  // 1.368...
  const double mu1 = ea[1] * eb[0] / (ea[1] + eb[0]) * ab2;  // 0.525
  const double cutoff = 0.5 * (mu0 + mu1);
  EXPECT_EQ(compute({a, b, a, b}, cutoff), compute({a_loose, b, a_loose, b}, cutoff));
  // The test is strict: a pair exactly at the cutoff is kept.  With cutoff 0 a
  // one-centre pair survives and a two-centre pair does not.
  const rys::ShellData b_same{1, 1, eb, cb, a.centre};
  const auto kept = compute({a, b_same, a, b_same}, 0.0);
  EXPECT_EQ(kept, compute({a, b_same, a, b_same}, kNoScreening));
  const auto gone = compute({a, b, a, b_same}, 0.0);
  EXPECT_TRUE(std::all_of(gone.begin(), gone.end(), [](double v) { return v == 0.0; }));
}

TEST(RysEri, CoreRejectsShellsItCannotHold) {
  auto q = make_quartet({2, 2, 2, 2});
  std::vector<double> block(5 * 5 * 5 * 5);
  rys::RysEngine engine;
  auto& s = q.shells;
  EXPECT_THROW(engine.compute(s[0], s[1], s[2], s[3], 30.0, block.data(), 5), norvik::Error);
  s[2].L = 7;
  std::vector<double> big(static_cast<std::size_t>(kLd) * kLd * kLd * kLd);
  EXPECT_THROW(engine.compute(s[0], s[1], s[2], s[3], 30.0, big.data(), kLd), norvik::Error);
  s[2].L = 2;
  std::vector<double> scratch(10);
  EXPECT_THROW(rys::rys_eri(s[0], s[1], s[2], s[3], 30.0, big.data(), kLd, scratch), norvik::Error);
}

// The exported routines, called as a host calls them.
class Int2RysAbi : public testing::Test {
 protected:
  static constexpr norvik_int kMxprsh = 6;
  void SetUp() override {
    const auto q = make_quartet({4, 0, 3, 2});
    for (int k = 0; k < 4; ++k) {
      for (int i = 0; i < 2; ++i) {
        exps[k * kMxprsh + i] = q.exps[k][i];
        coefs[k * kMxprsh + i] = q.coefs[k][i];
      }
      for (int i = 0; i < 3; ++i) centres[3 * k + i] = q.shells[k].centre[i];
      L[k] = q.shells[k].L;
    }
  }
  std::array<double, 4 * kMxprsh> exps{};
  std::array<double, 4 * kMxprsh> coefs{};
  std::array<double, 12> centres{};
  std::array<norvik_int, 4> nprim{2, 2, 2, 2};
  std::array<norvik_int, 4> L{};
  std::array<norvik_int, 4> work{};
  norvik_int mxprsh = kMxprsh;
  double cutoff = 30.0;
};

TEST_F(Int2RysAbi, ClearsTheBlockAndAgreesWithItsWorkRoutine) {
  norvik_int maxdim = 16;
  const std::size_t size = 16 * 16 * 16 * 16;
  std::vector<double> eri(size, 7.0);
  INT2RYS(eri.data(), exps.data(), coefs.data(), centres.data(), nprim.data(), L.data(),
          work.data(), &maxdim, &mxprsh, &cutoff);
  // Entries outside the 15 x 1 x 10 x 6 components are cleared.
  EXPECT_EQ(eri[offset(15, 0, 0, 0, 16)], 0.0);
  EXPECT_EQ(eri[offset(0, 1, 0, 0, 16)], 0.0);
  EXPECT_EQ(eri[size - 1], 0.0);
  EXPECT_NE(eri[offset(14, 0, 9, 5, 16)], 0.0);

  double query = 0.0;
  norvik_int lscratch = -1;
  std::vector<double> eri2(size, -1.0);
  INT2RYS2(eri2.data(), exps.data(), coefs.data(), centres.data(), nprim.data(), L.data(),
           work.data(), &maxdim, &mxprsh, &cutoff, &query, &lscratch);
  ASSERT_GT(query, 0.0);
  EXPECT_TRUE(std::all_of(eri2.begin(), eri2.end(), [](double v) { return v == -1.0; }));
  std::vector<double> scratch(static_cast<std::size_t>(query));
  lscratch = static_cast<norvik_int>(query);
  INT2RYS2(eri2.data(), exps.data(), coefs.data(), centres.data(), nprim.data(), L.data(),
           work.data(), &maxdim, &mxprsh, &cutoff, scratch.data(), &lscratch);
  EXPECT_EQ(eri, eri2);
}

TEST_F(Int2RysAbi, LimitsStopTheProcess) {
  auto lines_of = [](int mxprsh, int maxdim) {
    try {
      rys::check_route_limits(mxprsh, maxdim);
    } catch (const norvik::Error& e) {
      return e.lines();
    }
    return std::vector<std::string>{};
  };
  EXPECT_EQ(lines_of(30, 28), std::vector<std::string>{});
  EXPECT_EQ(lines_of(31, 28),
            std::vector<std::string>{" Error! Parameter mxprsh2 in int2rys is small!"});
  EXPECT_EQ(lines_of(30, 29),
            std::vector<std::string>{" Error! Parameter maxdim2 in int2rys is small!"});

  std::vector<double> eri(1);
  norvik_int maxdim = 29;
  EXPECT_EXIT(INT2RYS(eri.data(), exps.data(), coefs.data(), centres.data(), nprim.data(), L.data(),
                      work.data(), &maxdim, &mxprsh, &cutoff),
              testing::ExitedWithCode(1), "");
  maxdim = 16;
  norvik_int big = 31;
  EXPECT_EXIT(INT2RYS(eri.data(), exps.data(), coefs.data(), centres.data(), nprim.data(), L.data(),
                      work.data(), &maxdim, &big, &cutoff),
              testing::ExitedWithCode(1), "");
}
