// The templates as a host calls them: raw arrays, scalar parameters by
// reference, blank-padded molecule names, and the fatal paths.
#include <gtest/gtest.h>
#ifdef _WIN32
#include <io.h>
#define dup2 _dup2
#else
#include <unistd.h>
#endif

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "norvik.h"

namespace {

std::string padded(std::string name) {
  name.resize(NORVIK_NAME_LENGTH, ' ');
  return name;
}

// A host's water a little off its shape: REPUT by name and REPUTH2O agree,
// and both give back what PUTH2O builds from the first bond and the angle.
TEST(TemplatesAbi, ReputByNameRebuildsThroughTheBuilder) {
  const norvik_int natom = 3;
  const std::vector<norvik_int> z = {8, 1, 1};
  std::vector<double> host = {0.0, 0.0, 0.11, 0.0, 0.76, -0.47, 0.01, -0.75, -0.46};
  std::vector<double> by_routine = host;
  const std::string name = padded("H2O");
  REPUT(name.c_str(), &natom, z.data(), host.data());
  REPUTH2O(&natom, z.data(), by_routine.data());
  EXPECT_EQ(host, by_routine);

  const double r = DISTANCEAB(&host[0], &host[3]);
  const double theta = ANGLEABC(&host[3], &host[0], &host[6]);
  std::vector<double> rebuilt(9, 0.0);
  PUTH2O(&natom, z.data(), &r, &theta, rebuilt.data());
  for (std::size_t i = 0; i < 9; ++i) EXPECT_NEAR(rebuilt[i], host[i], 1e-12) << i;
}

TEST(TemplatesAbi, DistanceAndAngleOfThreePoints) {
  const double a[3] = {3, 0, 0}, b[3] = {0, 0, 0}, c[3] = {0, 4, 0};
  EXPECT_EQ(DISTANCEAB(a, c), 5.0);
  EXPECT_NEAR(ANGLEABC(a, b, c), 90.0, 1e-13);
  EXPECT_NEAR(ANGLEABC(b, a, c), std::atan2(4.0, 3.0) * 180.0 / M_PI, 1e-12);
}

// The free-molecule re-imposer keeps every distance and centres the charge.
TEST(TemplatesAbi, ReputmolOnlyCentresTheCharge) {
  const norvik_int natom = 3;
  const std::vector<norvik_int> z = {6, 8, 1};
  std::vector<double> pos = {1.0, 2.0, 3.0, 2.1, 2.0, 3.0, 0.4, 2.9, 3.2};
  const std::vector<double> before = pos;
  REPUTMOL(&natom, z.data(), pos.data());
  for (int a = 0; a < 3; ++a) {
    for (int b = a + 1; b < 3; ++b) {
      EXPECT_NEAR(DISTANCEAB(&pos[3 * a], &pos[3 * b]), DISTANCEAB(&before[3 * a], &before[3 * b]),
                  1e-14);
    }
  }
  for (int k = 0; k < 3; ++k) {
    EXPECT_NEAR(6 * pos[k] + 8 * pos[3 + k] + pos[6 + k], 0.0, 1e-13);
  }
}

TEST(TemplatesAbi, GlycineTakesItsParametersAsOneArray) {
  const norvik_int natom = 10;
  const std::vector<norvik_int> z = {7, 6, 6, 8, 8, 1, 1, 1, 1, 1};
  const double param[15] = {1.45,  1.52, 112.0, 1.21, 125.0, 1.36,  111.0, 0.97,
                            107.0, 1.01, 110.0, 58.0, 1.09,  108.0, 121.0};
  std::vector<double> pos(30, 0.0);
  PUTGLYCINE(&natom, z.data(), param, pos.data());
  EXPECT_NEAR(DISTANCEAB(&pos[0], &pos[3]), 1.45, 1e-12);            // N-C alpha
  EXPECT_NEAR(ANGLEABC(&pos[6], &pos[12], &pos[15]), 107.0, 1e-10);  // C-O5-H6
  std::vector<double> again = pos;
  const std::string name = padded("Glycine");
  REPUT(name.c_str(), &natom, z.data(), again.data());
  for (std::size_t i = 0; i < pos.size(); ++i) EXPECT_NEAR(again[i], pos[i], 1e-12) << i;
}

// A fatal message goes to standard output, which gtest does not capture:
// send it to standard error for the death test to read.
#define STDOUT_TO_STDERR(call) \
  {                            \
    std::fflush(stdout);       \
    dup2(2, 1);                \
    call;                      \
  }

TEST(TemplatesAbiDeathTest, AnUnknownMoleculeNameEndsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const norvik_int natom = 3;
  const std::vector<norvik_int> z = {8, 1, 1};
  std::vector<double> pos(9, 0.0);
  for (const char* name : {"h2o", "Water", "CHCl3"}) {
    const std::string buffer = padded(name);
    EXPECT_EXIT(STDOUT_TO_STDERR(REPUT(buffer.c_str(), &natom, z.data(), pos.data())),
                ::testing::ExitedWithCode(1), "^ Should not come here in reput\\.\n$")
        << name;
  }
}

TEST(TemplatesAbiDeathTest, TheWrongAtomCountEndsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const norvik_int natom = 4;
  const std::vector<norvik_int> z = {6, 1, 1, 1};
  std::vector<double> pos(12, 0.0);
  const double r = 1.09;
  EXPECT_EXIT(STDOUT_TO_STDERR(PUTCH4(&natom, z.data(), &r, pos.data())),
              ::testing::ExitedWithCode(1),
              "Wrong number of atoms for the molecule template CH4\\. +4");
}

}  // namespace
