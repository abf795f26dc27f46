// Memory estimates and the in-core decisions, through the exported routines.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "norvik.h"

namespace {

// The estimates go through one logarithm and one exponential.
constexpr double kRelTol = 1e-13;

TEST(MemoryEstimates, ClosedForms) {
  const norvik_int npair = 50000, nbasis = 100, n = 1000, npoint = 200000;
  EXPECT_NEAR(RAMVINT(&npair), 10.0, 10.0 * kRelTol);
  EXPECT_NEAR(RAMMP2(&nbasis), 0.9, 0.9 * kRelTol);
  EXPECT_NEAR(RAMTDA(&n), 0.024, 0.024 * kRelTol);
  EXPECT_NEAR(RAMRPA(&n), 0.032, 0.032 * kRelTol);
  EXPECT_NEAR(RAMKOHNSHAM(&npoint, &nbasis), 0.64, 0.64 * kRelTol);
  // Counts whose products overflow 32-bit integers.
  const norvik_int big = 2000000000;
  EXPECT_NEAR(RAMVINT(&big), 1.6e10, 1.6e10 * kRelTol);
}

TEST(MemoryEstimates, Decisions) {
  const norvik_int npair = 50000, nbasis = 100, n = 1000;
  norvik_int flag = -1;
  const double eleven = 11.0, nine = 9.0, nan = std::numeric_limits<double>::quiet_NaN();
  INCORE01(&npair, &eleven, &flag);
  EXPECT_EQ(flag, 1);
  INCORE01(&npair, &nine, &flag);
  EXPECT_EQ(flag, 0);
  INCORE01(&npair, &nan, &flag);
  EXPECT_EQ(flag, 0);
  const double just_enough = RAMMP2(&nbasis);
  MP2RAM01(&nbasis, &just_enough, &flag);
  EXPECT_EQ(flag, 1);  // greater-or-equal
  const double tda_limit = 10.0 + 0.024 + 1e-9, rpa_short = 10.0 + 0.031;
  TDARAM01(&npair, &n, &tda_limit, &flag);
  EXPECT_EQ(flag, 1);
  RPARAM01(&npair, &n, &rpa_short, &flag);
  EXPECT_EQ(flag, 0);
}

}  // namespace
