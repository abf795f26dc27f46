// MAKEBASIS as a host calls it: ZATMNSHL and ZATMZETA per atom, then one call for
// the molecule; the flat arrays against the per-atom routines and the C++ value type.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

#include "basis/library.h"
#include "basis/shell_arrays.h"
#include "basis_test_support.h"
#include "norvik/basis.h"

namespace {

using norvik::test::padded;

// Everything a host holds for one molecule.
struct HostBasis {
  std::string name;
  std::vector<norvik_int> z;
  std::vector<double> zeta;
  std::vector<norvik_int> nshell_atom, kind_atom;
  norvik_int nshell_total = 0;
  std::vector<norvik_int> kind, lm, nprim, nterm, lmn;
  std::vector<double> termcoef, exps, coefs;

  HostBasis(std::string_view basis, std::vector<norvik_int> atoms, int spare)
      : name(padded(basis)), z(std::move(atoms)) {
    const auto n = z.size();
    zeta.resize(7 * n);
    nshell_atom.resize(n);
    kind_atom.resize(9 * n);
    for (std::size_t a = 0; a < n; ++a) {
      norvik_int nbasis = 0;
      ZATMNSHL(name.c_str(), &z[a], &nshell_atom[a], &kind_atom[9 * a], &nbasis);
      ZATMZETA(name.c_str(), &z[a], &zeta[7 * a]);
    }
    nshell_total = std::accumulate(nshell_atom.begin(), nshell_atom.end(), 0) + spare;
    const auto s = static_cast<std::size_t>(nshell_total);
    // Garbage everywhere, so that every value the call leaves is its own.
    const double nan = std::numeric_limits<double>::quiet_NaN();
    kind.assign(s, -7);
    lm.assign(14 * s, -7);
    nprim.assign(s, -7);
    nterm.assign(7 * s, -7);
    lmn.assign(63 * s, -7);
    termcoef.assign(21 * s, nan);
    exps.assign(6 * s, nan);
    coefs.assign(42 * s, nan);
  }

  void make() {
    norvik_int natom = static_cast<norvik_int>(z.size());
    MAKEBASIS(name.c_str(), &natom, z.data(), zeta.data(), nshell_atom.data(), kind_atom.data(),
              &nshell_total, kind.data(), lm.data(), nprim.data(), nterm.data(), lmn.data(),
              termcoef.data(), exps.data(), coefs.data());
  }
};

// The per-atom arrays of MAKELMLMN and MAKEKLMG.
struct AtomArrays {
  std::array<norvik_int, 14 * 9> lm{};
  std::array<norvik_int, 7 * 9> nterm{};
  std::array<norvik_int, 63 * 9> lmn{};
  std::array<double, 21 * 9> termcoef{};
  std::array<norvik_int, 9> nprim{};
  std::array<double, 6 * 9> exps{};
  std::array<double, 42 * 9> coefs{};
};

void check_molecule(std::string_view basis, std::vector<norvik_int> atoms) {
  SCOPED_TRACE(std::string(basis));
  HostBasis host(basis, atoms, 2);
  host.make();

  int s = 0;
  for (std::size_t a = 0; a < atoms.size(); ++a) {
    AtomArrays atom;
    MAKELMLMN(host.name.c_str(), &host.z[a], atom.lm.data(), atom.nterm.data(), atom.lmn.data(),
              atom.termcoef.data(), atom.nprim.data());
    MAKEKLMG(host.name.c_str(), &host.z[a], &host.zeta[7 * a], atom.exps.data(), atom.coefs.data());
    for (int i = 0; i < host.nshell_atom[a]; ++i, ++s) {
      const int kind = host.kind_atom[9 * a + i];
      EXPECT_EQ(host.kind[s], kind);
      EXPECT_EQ(host.nprim[s], atom.nprim[i]);
      for (int k = 0; k < 6; ++k) EXPECT_EQ(host.exps[6 * s + k], atom.exps[6 * i + k]);
      for (int slot = 0; slot < 7; ++slot) {
        const bool kept = slot < kind;
        EXPECT_EQ(host.nterm[7 * s + slot], kept ? atom.nterm[7 * i + slot] : 0);
        for (int c = 0; c < 2; ++c) {
          EXPECT_EQ(host.lm[14 * s + 2 * slot + c], kept ? atom.lm[14 * i + 2 * slot + c] : 0);
        }
        for (int c = 0; c < 9; ++c) {
          EXPECT_EQ(host.lmn[63 * s + 9 * slot + c], kept ? atom.lmn[63 * i + 9 * slot + c] : 0);
        }
        for (int t = 0; t < 3; ++t) {
          EXPECT_EQ(host.termcoef[21 * s + 3 * slot + t],
                    kept ? atom.termcoef[21 * i + 3 * slot + t] : 0.0);
        }
        for (int k = 0; k < 6; ++k) {
          EXPECT_EQ(host.coefs[42 * s + 6 * slot + k],
                    kept ? atom.coefs[42 * i + 6 * slot + k] : 0.0);
        }
      }
    }
  }
  // Shells beyond the molecule's are zero.
  for (; s < host.nshell_total; ++s) {
    EXPECT_EQ(host.kind[s], 0);
    EXPECT_EQ(host.nprim[s], 0);
    for (int k = 0; k < 6; ++k) EXPECT_EQ(host.exps[6 * s + k], 0.0);
    for (int k = 0; k < 42; ++k) EXPECT_EQ(host.coefs[42 * s + k], 0.0);
    for (int k = 0; k < 63; ++k) EXPECT_EQ(host.lmn[63 * s + k], 0);
  }

  // The C++ value type holds the same shells.
  const std::vector<int> zs(atoms.begin(), atoms.end());
  const auto molecule = norvik::basis::make_basis(basis, zs);
  ASSERT_EQ(static_cast<int>(molecule.shells.size()), host.nshell_total - 2);
  for (std::size_t i = 0; i < molecule.shells.size(); ++i) {
    const auto& shell = molecule.shells[i];
    EXPECT_EQ(shell.kind, host.kind[i]);
    for (int k = 0; k < 6; ++k) EXPECT_EQ(shell.exponents[k], host.exps[6 * i + k]);
    for (int slot = 0; slot < 7; ++slot) {
      EXPECT_EQ(shell.functions[slot].M, host.lm[14 * i + 2 * slot + 1]);
      for (int k = 0; k < 6; ++k) {
        EXPECT_EQ(shell.functions[slot].coef[k], host.coefs[42 * i + 6 * slot + k]);
      }
    }
  }
}

TEST(BasisMakeBasis, MixedMoleculesAreLaidOutAtomByAtom) {
  check_molecule("6-31Gx", {26, 6, 8, 1, 19});   // the f shell of iron, K's two d shells
  check_molecule("6-31GxC", {26, 6, 8, 1, 19});  // six-function d shells
  check_molecule("6-31++Gxx", {1, 8, 1, 17});
  check_molecule("STO-3G", {54, 9, 9, 31, 1});
  check_molecule("3-21GC", {39, 1, 50});
}

TEST(BasisMakeBasis, ShellsFollowTheAtoms) {
  const int z[] = {8, 1, 1};
  const auto water = norvik::basis::make_basis("6-31Gxx", z);
  std::vector<int> kinds, atoms;
  for (const auto& s : water.shells) {
    kinds.push_back(s.kind);
    atoms.push_back(s.atom);
  }
  EXPECT_EQ(kinds, (std::vector<int>{1, 4, 4, 5, 1, 1, 3, 1, 1, 3}));
  EXPECT_EQ(atoms, (std::vector<int>{0, 0, 0, 0, 1, 1, 1, 2, 2, 2}));
  // The d shell of the pure name keeps five slots; the companion is not copied.
  EXPECT_EQ(water.shells[3].functions[4].M, 2);
  EXPECT_EQ(water.shells[3].functions[5].nterm, 0);
  const auto cartesian = norvik::basis::make_basis("6-31GxxC", z);
  EXPECT_EQ(cartesian.shells[3].functions[5].M, 10);
  EXPECT_EQ(cartesian.shells[3].functions[5].coef[0], 1.0);
  EXPECT_EQ(cartesian.nbasis(), 25);
}

TEST(BasisMakeBasis, OutputTooSmallOrCountsOutOfRange) {
  const int z[] = {8, 1, 1};
  const auto water = norvik::basis::make_basis("6-31G", z);
  norvik::basis::BasisArrays out;
  out.nshell_total = 5;  // water in 6-31G has 7 shells
  const auto lines = norvik::test::error_lines([&] { norvik::basis::store_basis(water, out); });
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_TRUE(lines[0].starts_with(" nShellTotal too small in makeBasis.")) << lines[0];

  const norvik::basis::Zeta zeta{1, 1, 1, 0, 0, 0, 0};
  const int one[] = {8};
  const int ten[] = {10};
  const std::array<int, 9> kinds[] = {{1, 4, 4}};
  EXPECT_FALSE(norvik::test::error_lines([&] {
                 norvik::basis::build_basis("6-31G", one, std::span(&zeta, 1), ten, kinds);
               }).empty());
  const int three[] = {3};
  const std::array<int, 9> bad[] = {{1, 4, 9}};
  EXPECT_FALSE(norvik::test::error_lines([&] {
                 norvik::basis::build_basis("6-31G", one, std::span(&zeta, 1), three, bad);
               }).empty());
}

}  // namespace
