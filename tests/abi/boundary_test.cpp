// The boundary's own rules: the sizes and constants of norvik/common.h against
// the core and against what the routines write, the size conversions, and the
// store rule of the two-electron context.
#include <gtest/gtest.h>

#include <cstdint>
#include <numeric>
#include <string>
#include <vector>

#include "abi/abi_support.h"
#include "integrals/two/two_electron.h"
#include "norvik.h"
#include "scf/density_update.h"

namespace {

// The SCF histories are laid out with the slot count the hosts allocate.
static_assert(norvik::scf::kHistorySlots == NORVIK_HISTORY_SLOTS);

// A water molecule in STO-3G as a host holds it: MAKEBASIS, then PACKSHELLS.
// The slots that the public header names must hold what PACKSHELLS writes.
TEST(ShellTable, NamedSlotsHoldThePackedShells) {
  std::string name = "STO-3G";
  name.resize(NORVIK_NAME_LENGTH, ' ');
  std::vector<norvik_int> z = {8, 1, 1};
  const std::vector<double> pos = {0.0, 0.0, 0.1173, 0.0, 0.7572, -0.4692, 0.0, -0.7572, -0.4692};
  const auto natom = static_cast<norvik_int>(z.size());
  std::vector<double> zeta(7 * z.size());
  std::vector<norvik_int> nshell_atom(z.size()), kind_atom(9 * z.size());
  for (std::size_t a = 0; a < z.size(); ++a) {
    norvik_int nbasis = 0;
    ZATMNSHL(name.c_str(), &z[a], &nshell_atom[a], &kind_atom[9 * a], &nbasis);
    ZATMZETA(name.c_str(), &z[a], &zeta[7 * a]);
  }
  norvik_int nshell = std::accumulate(nshell_atom.begin(), nshell_atom.end(), 0);
  const auto ns = static_cast<std::size_t>(nshell);
  std::vector<norvik_int> kind(ns), lm(14 * ns), nprim(ns), nterm(7 * ns), lmn(63 * ns);
  std::vector<double> termcoef(21 * ns), exps(6 * ns), coefs(42 * ns);
  MAKEBASIS(name.c_str(), &natom, z.data(), zeta.data(), nshell_atom.data(), kind_atom.data(),
            &nshell, kind.data(), lm.data(), nprim.data(), nterm.data(), lmn.data(),
            termcoef.data(), exps.data(), coefs.data());
  std::vector<double> table(NORVIK_SHELL_RECORD * ns, -1.0);
  PACKSHELLS(&natom, pos.data(), nshell_atom.data(), &nshell, kind.data(), lm.data(), nprim.data(),
             nterm.data(), lmn.data(), termcoef.data(), exps.data(), coefs.data(), table.data());

  ASSERT_EQ(ns, 4u);  // O 1s and 2sp, one 1s per H
  std::vector<std::size_t> atom_of;
  for (std::size_t a = 0; a < z.size(); ++a) atom_of.insert(atom_of.end(), nshell_atom[a], a);
  for (std::size_t s = 0; s < ns; ++s) {
    SCOPED_TRACE(s);
    const std::size_t atom = atom_of[s];
    const double* r = table.data() + NORVIK_SHELL_RECORD * s;
    EXPECT_EQ(r[NORVIK_SHELL_KIND], kind[s]);
    EXPECT_EQ(r[NORVIK_SHELL_NPRIM], nprim[s]);
    EXPECT_EQ(r[NORVIK_SHELL_ATOM], static_cast<double>(atom + 1));
    for (std::size_t k = 0; k < 3; ++k) {
      EXPECT_DOUBLE_EQ(r[NORVIK_SHELL_CENTRE + k], pos[3 * atom + k] / NORVIK_BOHR_ANGSTROM);
    }
    for (std::size_t p = 0; p < 6; ++p) EXPECT_EQ(r[NORVIK_SHELL_EXPONENTS + p], exps[6 * s + p]);
    for (std::size_t f = 0; f < 7; ++f) {
      const double* slot = r + NORVIK_SHELL_FUNCTIONS + NORVIK_SHELL_FUNCTION_SIZE * f;
      EXPECT_EQ(slot[0], lm[2 * (7 * s + f)]);      // L
      EXPECT_EQ(slot[1], lm[2 * (7 * s + f) + 1]);  // M
      EXPECT_EQ(slot[2], nterm[7 * s + f]);
      const std::size_t sf = 7 * s + f;
      for (std::size_t t = 0; t < 3; ++t) {
        for (std::size_t k = 0; k < 3; ++k)
          EXPECT_EQ(slot[3 + 3 * t + k], lmn[k + 3 * (t + 3 * sf)]);
        EXPECT_EQ(slot[12 + t], termcoef[t + 3 * sf]);
      }
      for (std::size_t p = 0; p < 6; ++p) EXPECT_EQ(slot[15 + p], coefs[p + 6 * sf]);
    }
    EXPECT_EQ(r[NORVIK_SHELL_RECORD - 1], 0.0);
  }
}

// Sizes from the host: a negative count is empty, never a wrapped-around size.
TEST(Converters, NegativeSizesGiveEmptyArrays) {
  using norvik::abi::count;
  using norvik::abi::packed;
  using norvik::abi::square;
  EXPECT_EQ(count(-1), 0u);
  EXPECT_EQ(square(-3), 0u);
  EXPECT_EQ(packed(-3), 0u);  // not (-3)(-2)/2
  EXPECT_EQ(packed(4), 10u);
  EXPECT_EQ(square(std::int64_t{70000}), 4900000000u);  // beyond 32 bits
  double x[4] = {1, 2, 3, 4};
  EXPECT_TRUE(norvik::abi::span_of(x, -2).empty());
  const auto m = norvik::abi::const_matrix(x, 2);
  EXPECT_EQ(m(1, 0), 2.0);
  EXPECT_EQ(m(0, 1), 3.0);
}

// The integral-direct builds may be handed a one-element store: the context
// exposes the store only to a build that reads it.
TEST(ContextView, ExposesTheStoreOnlyToStoredBuilds) {
  const norvik_int nbasis = 4, nshell = 2, nshpair = 3, npair = 5;
  std::vector<double> shelltab(NORVIK_SHELL_RECORD * nshell), vdiag(10), store(15);
  std::vector<norvik_int> shpair(2 * nshpair), pairlist(2 * npair), pairmap(10);
  const double thresh = 1e-10;
  const auto view = [&](bool reads_store, const double* vint) {
    return norvik::abi::context_view(nbasis, &nshell, shelltab.data(), &nshpair, shpair.data(),
                                     &npair, pairlist.data(), pairmap.data(), vdiag.data(), vint,
                                     &thresh, reads_store);
  };
  const auto stored = view(true, store.data());
  EXPECT_EQ(stored.vint.data(), store.data());
  EXPECT_EQ(stored.vint.size(), 15u);
  EXPECT_EQ(stored.shelltab.size(), shelltab.size());
  EXPECT_EQ(stored.pairlist.size(), pairlist.size());
  EXPECT_EQ(stored.pairmap.size(), 10u);
  EXPECT_EQ(stored.thresh, thresh);

  const double one = 0.0;
  const auto direct = view(false, &one);
  EXPECT_TRUE(direct.vint.empty());
  EXPECT_EQ(direct.vdiag.size(), 10u);
  EXPECT_TRUE(view(true, nullptr).vint.empty());
}

}  // namespace
