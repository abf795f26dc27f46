// The Boys table against high-precision values, at its seams and its limit.
#include "integrals/one/boys.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>

#include "common/error.h"
#include "norvik/integrals_one.h"
#include "support.h"

namespace one = norvik::integrals::one;

namespace {

using Table = std::array<double, one::kBoysTableSize>;

Table boys(double t, int numax) {
  Table f;
  f.fill(-1.0);
  one::boys_table(t, numax, f);
  return f;
}

// (T, nu) -> F_nu(T) from the mpmath reference.
std::map<std::pair<double, int>, double> reference() {
  std::ifstream in(one::testing::data_path("boys.txt"));
  EXPECT_TRUE(in);
  std::map<std::pair<double, int>, double> ref;
  std::string line;
  while (std::getline(in, line)) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream row(line);
    double t, f;
    int nu;
    row >> t >> nu >> f;
    ref[{t, nu}] = f;
  }
  return ref;
}

}  // namespace

TEST(OneBoys, MatchesHighPrecisionValuesForEveryOrderAndBranch) {
  const auto ref = reference();
  ASSERT_EQ(ref.size(), 35u * 16u);
  // Every T of the reference with every numax: this walks all five branches.
  // The upward recursion loses accuracy with the order when T is just above
  // 0.1 numax; the bound follows its error growth prod (2nu - 1)/(2T).
  for (int numax = 0; numax <= 15; ++numax) {
    std::map<double, Table> tables;
    for (const auto& [key, value] : ref) {
      const auto [t, nu] = key;
      if (nu > numax) continue;
      if (!tables.count(t)) tables[t] = boys(t, numax);
      const double got = tables[t][nu];
      double growth = 1.0;
      if (t >= 0.1 * numax && t > 0) {
        for (int k = 1; k <= nu; ++k) growth *= std::max(1.0, (2 * k - 1) / (2 * t));
      }
      double tol = 4e-16 * growth * ref.at({t, 0}) + 2e-15 * std::abs(value);
      if (t < 1e-10) tol += t;  // the limit value 1/(2nu + 1) is used below 1e-10
      EXPECT_NEAR(got, value, tol) << "T=" << t << " nu=" << nu << " numax=" << numax;
    }
  }
}

TEST(OneBoys, ClearsTheEntriesBeyondNumax) {
  for (double t : {0.0, 0.3, 7.0, 600.0}) {
    const Table f = boys(t, 4);
    for (int nu = 5; nu < one::kBoysTableSize; ++nu) EXPECT_EQ(f[nu], 0.0) << t;
  }
}

TEST(OneBoys, BranchesAgreeAtTheirSeams) {
  // T = 0.1 numax: just below it the downward recursion, at it the upward one.
  for (int numax = 1; numax <= 15; ++numax) {
    const double seam = 0.1 * numax;
    const Table below = boys(std::nextafter(seam, 0.0), numax);
    const Table at = boys(seam, numax);
    for (int nu = 0; nu <= numax; ++nu) {
      double growth = 1.0;
      for (int k = 1; k <= nu; ++k) growth *= std::max(1.0, (2 * k - 1) / (2 * seam));
      EXPECT_NEAR(below[nu], at[nu], 1e-15 * growth + 1e-15 * at[nu])
          << "numax=" << numax << " nu=" << nu;
    }
  }
  // T = 500: the exp(-T) term is dropped only above it.
  for (int numax : {0, 1, 6, 15}) {
    const Table at = boys(500.0, numax);
    const Table above = boys(std::nextafter(500.0, 1000.0), numax);
    for (int nu = 0; nu <= numax; ++nu) EXPECT_NEAR(at[nu], above[nu], 2.5e-16 * (nu + 2) * at[nu]);
  }
  // numax = 0 takes the error-function form at every T.
  EXPECT_DOUBLE_EQ(boys(0.05, 0)[0],
                   one::kSqrtPi / (2 * std::sqrt(0.05)) * std::erf(std::sqrt(0.05)));
}

TEST(OneBoys, RefusesOrdersBeyondTheTable) {
  one::testing::use_threadsafe_death_tests();
  try {
    Table f;
    one::boys_table(1.0, 16, f);
    FAIL() << "no error";
  } catch (const norvik::Error& e) {
    ASSERT_EQ(e.lines().size(), 1u);
    EXPECT_EQ(e.lines()[0], " Exceeded size of FnuTb in makeFnuTb.          16");
  }
  double f[16];
  const double t = 2.0;
  const norvik_int numax = 16;
  // The message goes to standard output; the child sends it to the stream the
  // death test reads.
  EXPECT_EXIT(
      {
        std::cout.rdbuf(std::cerr.rdbuf());
        MAKEFNUTB(&t, &numax, f);
      },
      ::testing::ExitedWithCode(1), "Exceeded size of FnuTb in makeFnuTb\\.          16");
}
