// The counterpoise and full-CI exports' fatal paths as a host meets them, and
// the integral-direct counterpoise member against the stored one.
#include <gtest/gtest.h>
#ifdef _WIN32
#include <io.h>
#define dup2 _dup2
#else
#include <unistd.h>
#endif

#include <cstdio>
#include <string>
#include <vector>

#include "norvik.h"

namespace {

std::string padded(const std::string& s, std::size_t n) {
  std::string p = s;
  p.resize(n, ' ');
  return p;
}

// The fatal message goes to standard output; the death test reads stderr.
#define CP_STDOUT_TO_STDERR(call) \
  {                               \
    std::fflush(stdout);          \
    dup2(2, 1);                   \
    call;                         \
  }

// HeH+ at 0.775 Å: fragment A the He atom.
struct HeHPlus {
  std::string method = padded("HF", NORVIK_KEYWORD_LENGTH);
  std::string basis = padded("6-31Gxx", NORVIK_NAME_LENGTH);
  norvik_int natom = 2, first = 1, last = 1, grid_level = 0;
  std::vector<norvik_int> zat{2, 1}, zel{2, 1};
  std::vector<double> pos{0, 0, 0, 0, 0, 0.775};
  norvik_int fcharge[2] = {0, 1}, fmult[2] = {1, 1}, niter[2] = {200, 200};
  double damp[2] = {0.5, 0.5}, thr_ene[2] = {1e-10, 1e-10}, thr_rms[2] = {1e-10, 1e-10};
  double ramlimit = 4.0, thr_screen = 0.0, thr_orth = 1e-8, grid_radius = NORVIK_BOHR_ANGSTROM;
  double eown[2] = {}, edimer[2] = {};

  template <class Routine>
  void run(Routine routine) {
    routine(method.data(), basis.data(), &natom, zat.data(), zel.data(), pos.data(), &first, &last,
            fcharge, fmult, niter, damp, thr_ene, thr_rms, &ramlimit, &thr_screen, &thr_orth,
            &grid_radius, &grid_level, eown, edimer);
  }
};

TEST(CounterpoiseAbi, IntegralDirectMembersAgreeWithStoredOnes) {
  HeHPlus stored, direct, hehpl;
  stored.run(COUNTERPOISE);
  direct.run(COUNTERPOISE_DIRECT);
  hehpl.fcharge[0] = 5;  // not read by the HeH+ members
  hehpl.run(COUNTERPOISE_DIRECT_HEHPL);
  for (int f = 0; f < 2; ++f) {
    EXPECT_NEAR(direct.eown[f], stored.eown[f], 1e-8);
    EXPECT_NEAR(direct.edimer[f], stored.edimer[f], 1e-8);
    EXPECT_NEAR(hehpl.eown[f], stored.eown[f], 1e-8);
    EXPECT_NEAR(hehpl.edimer[f], stored.edimer[f], 1e-8);
  }
  EXPECT_EQ(stored.eown[1], 0.0);  // the bare proton
  EXPECT_LT(stored.edimer[0], stored.eown[0]);
}

TEST(CorrelationAbiDeathTest, WrongMoleculesEndTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  HeHPlus water;
  water.natom = 3;
  water.zat = water.zel = {8, 1, 1};
  water.pos = {0, 0, 0, 0, 0.757, -0.586, 0, -0.757, -0.586};
  EXPECT_EXIT(CP_STDOUT_TO_STDERR(water.run(COUNTERPOISE_HEHPL)), ::testing::ExitedWithCode(1),
              "COUNTERPOISE_HEHPL needs the atoms He and H\\. +8 +1 +1");
  water.last = 3;
  EXPECT_EXIT(CP_STDOUT_TO_STDERR(water.run(COUNTERPOISE)), ::testing::ExitedWithCode(1),
              "Invalid counterpoise fragments: +1 +3 +3");

  const std::string basis = padded("STO-3G", NORVIK_NAME_LENGTH);
  const norvik_int natom = 3, nalpha = 5, nbeta = 5, nbasis = 7, nroots = 1;
  const std::vector<norvik_int> z{8, 1, 1};
  std::vector<double> orbitals(2 * 7 * 8), ground(28), out(2);
  norvik_int norb = 0;
  double ehf = 0.0, thr_orth = 1e-8;
  EXPECT_EXIT(
      CP_STDOUT_TO_STDERR(FULLCI_2E(basis.data(), &natom, z.data(), z.data(), water.pos.data(),
                                    &nalpha, &nbeta, &nbasis, orbitals.data(), &thr_orth, &nroots,
                                    out.data(), out.data() + 1, ground.data(), &norb, &ehf)),
      ::testing::ExitedWithCode(1), "FULLCI_2E needs two paired electrons: +5 +5");
}

}  // namespace
