// Shell layouts, scale factors and the failure messages of the name dispatch and
// of the family and element-group routines.
#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <sstream>

#include "basis/families.h"
#include "basis/library.h"
#include "basis_test_support.h"
#include "common/fortran_format.h"
#include "norvik/basis.h"

#ifdef _WIN32
#include <io.h>
#define NORVIK_DUP2 _dup2
#else
#include <unistd.h>
#define NORVIK_DUP2 dup2
#endif

namespace {

using norvik::basis::AtomLayout;
using norvik::test::error_lines;
using norvik::test::padded;

// The shell-layout table per element group (H–He, Li–Ne, Na–Ar, K–Ca, Sc–Zn,
// Ga–Kr, Rb–Sr, Y–Cd, In–Xe), pure d counts; "" where the set stops.
const std::map<std::string, std::array<std::string, 9>>& layout_table() {
  static const std::map<std::string, std::array<std::string, 9>> table = {
      {"STO-3G",
       {"1", "1,4", "1,4,4", "1,4,4,4", "1,4,4,4,5", "1,4,4,4,5", "1,4,4,4,5,4", "1,4,4,4,5,4,5",
        "1,4,4,4,5,4,5"}},
      {"3-21G",
       {"1,1", "1,4,4", "1,4,4,4", "1,4,4,4,4", "1,4,4,4,4,5,5", "1,4,4,4,4,5", "1,4,4,4,5,4,4",
        "1,4,4,4,5,4,4,5,5", "1,4,4,4,5,4,4,5"}},
      {"6-21G", {"1,1", "1,4,4", "1,4,4,4", "", "", "", "", "", ""}},
      {"6-31G",
       {"1,1", "1,4,4", "1,4,4,4", "1,4,4,4,4,5,5", "1,4,4,4,4,5,5", "1,4,4,4,4,5,5", "", "", ""}},
      {"6-31Gx",
       {"1,1", "1,4,4,5", "1,4,4,4,5", "1,4,4,4,4,5,5,5", "1,4,4,4,4,5,5,7", "1,4,4,4,4,5,5,5", "",
        "", ""}},
      {"6-31Gxx",
       {"1,1,3", "1,4,4,5", "1,4,4,4,5", "1,4,4,4,4,5,5,5", "1,4,4,4,4,5,5,7", "1,4,4,4,4,5,5,5",
        "", "", ""}},
      {"6-31+G", {"1,1", "1,4,4,4", "1,4,4,4,4", "", "", "", "", "", ""}},
      {"6-31+Gx", {"1,1", "1,4,4,5,4", "1,4,4,4,5,4", "", "", "", "", "", ""}},
      {"6-31+Gxx", {"1,1,3", "1,4,4,5,4", "1,4,4,4,5,4", "", "", "", "", "", ""}},
      {"6-31++G", {"1,1,1", "1,4,4,4", "1,4,4,4,4", "", "", "", "", "", ""}},
      {"6-31++Gx", {"1,1,1", "1,4,4,5,4", "1,4,4,4,5,4", "", "", "", "", "", ""}},
      {"6-31++Gxx", {"1,1,3,1", "1,4,4,5,4", "1,4,4,4,5,4", "", "", "", "", "", ""}},
  };
  return table;
}

std::string kinds_text(const AtomLayout& layout) {
  std::string text;
  for (int i = 0; i < layout.nshell; ++i) {
    if (i > 0) text += ',';
    text += std::to_string(layout.kind[i]);
  }
  return text;
}

// The table's row for a name, with kind 5 turned into 6 for a "C" name.
std::string expected_kinds(std::string_view name, int z) {
  std::string base(name);
  const bool cartesian = base.back() == 'C';
  if (cartesian) base.pop_back();
  std::string row = layout_table().at(base)[static_cast<int>(norvik::basis::group_of(z))];
  if (cartesian) {
    for (auto& c : row) c = c == '5' ? '6' : c;
  }
  return row;
}

TEST(BasisLayout, EveryNameAndElementFollowsTheLayoutTable) {
  for (const auto& c : norvik::test::all_names()) {
    for (int z = 1; z <= c.zmax; ++z) {
      SCOPED_TRACE(std::string(c.name) + " Z=" + std::to_string(z));
      const AtomLayout layout = norvik::basis::shell_layout(padded(c.name), z);
      EXPECT_EQ(kinds_text(layout), expected_kinds(c.name, z));
      int sum = 0;
      for (int i = 0; i < 9; ++i) {
        sum += layout.kind[i];
        if (i >= layout.nshell) {
          EXPECT_EQ(layout.kind[i], 0);
        }
      }
      EXPECT_EQ(layout.nbasis, sum);
    }
  }
}

TEST(BasisLayout, FunctionCountsOfTheTable) {
  const auto count = [](std::string_view name, int z) {
    return norvik::basis::shell_layout(name, z).nbasis;
  };
  // "6-31GC" only differs from K on: 29 against 27 functions.
  for (int z = 1; z <= 18; ++z) EXPECT_EQ(count("6-31GC", z), count("6-31G", z));
  EXPECT_EQ(count("6-31G", 19), 27);
  EXPECT_EQ(count("6-31GC", 19), 29);
  EXPECT_EQ(count("6-31GC", 36), 29);
  EXPECT_EQ(count("6-31GxC", 6), 15);
  EXPECT_EQ(count("6-31+GxC", 6), 19);
  EXPECT_EQ(count("6-31Gx", 26), 34);  // the f shell stays seven functions
  EXPECT_EQ(count("6-31GxC", 26), 36);
  EXPECT_EQ(count("3-21GC", 40), 39);  // 3d, 4d and outer 4d
  // Hydrogen in 6-31++G**: s (3 primitives), s, p, diffuse s.
  const AtomLayout h = norvik::basis::shell_layout("6-31++Gxx", 1);
  EXPECT_EQ(kinds_text(h), "1,1,3,1");
  EXPECT_EQ(h.nbasis, 6);
}

TEST(BasisLayout, WaterInEverySet) {
  // Function counts of H2O that other programs report (5d for the pure names, 6d
  // for the Cartesian ones).
  const std::map<std::string, int> expected = {
      {"STO-3G", 7},     {"3-21G", 13},      {"3-21GC", 13},   {"6-21G", 13},    {"6-31G", 13},
      {"6-31GC", 13},    {"6-31Gx", 18},     {"6-31GxC", 19},  {"6-31Gxx", 24},  {"6-31GxxC", 25},
      {"6-31+G", 17},    {"6-31+GC", 17},    {"6-31+Gx", 22},  {"6-31+GxC", 23}, {"6-31+Gxx", 28},
      {"6-31+GxxC", 29}, {"6-31++G", 19},    {"6-31++GC", 19}, {"6-31++Gx", 24}, {"6-31++GxC", 25},
      {"6-31++Gxx", 30}, {"6-31++GxxC", 31},
  };
  for (const auto& [name, n] : expected) {
    const int z[] = {8, 1, 1};
    EXPECT_EQ(norvik::basis::make_basis(name, z).nbasis(), n) << name;
  }
}

TEST(BasisNames, BlankPaddedExactComparison) {
  EXPECT_TRUE(norvik::basis::find_basis_name(padded("6-31++GxxC")));
  EXPECT_TRUE(norvik::basis::find_basis_name(std::string_view("STO-3G\0garbage", 14)));
  EXPECT_FALSE(norvik::basis::find_basis_name(padded("6-31g")));    // case matters
  EXPECT_FALSE(norvik::basis::find_basis_name(padded(" 6-31G")));   // leading blank
  EXPECT_FALSE(norvik::basis::find_basis_name(padded("6-31G*")));   // x, not *
  EXPECT_FALSE(norvik::basis::find_basis_name(padded("STO-3GC")));  // no Cartesian STO-3G
  EXPECT_FALSE(norvik::basis::find_basis_name(padded("6-21GC")));
  const auto n = norvik::basis::find_basis_name(padded("6-31+GxC"));
  ASSERT_TRUE(n);
  EXPECT_EQ(n->family, norvik::basis::Family::k631tgx);
  EXPECT_TRUE(n->cartesian_d);
}

TEST(BasisZeta, ScaleFactorsOfEachFamily) {
  using norvik::basis::zeta;
  const auto z631h = zeta("6-31++Gxx", 1);
  EXPECT_EQ(z631h[0], 1.0);
  EXPECT_EQ(z631h[1], 1.2);
  EXPECT_EQ(z631h[2], 1.15);
  for (int i = 3; i < 7; ++i) EXPECT_EQ(z631h[i], 0.0);
  EXPECT_EQ(zeta("6-31G", 4)[1], 1.03);
  EXPECT_EQ(zeta("6-31G", 5)[2], 1.12);
  EXPECT_EQ(zeta("6-31G", 6)[2], 1.04);
  EXPECT_EQ(zeta("6-31G", 7)[1], 0.99);
  EXPECT_EQ(zeta("6-31GC", 8)[2], 0.98);
  EXPECT_EQ(zeta("6-31G", 9)[1], 1.0);
  EXPECT_EQ(zeta("6-31G", 2)[2], 1.0);
  EXPECT_EQ(zeta("3-21G", 1)[2], 1.1);
  EXPECT_EQ(zeta("6-21G", 1)[1], 1.1);
  EXPECT_EQ(zeta("3-21GC", 6)[1], 1.0);

  // STO-3G: one Slater exponent per shell, molecular and isolated-atom sets.
  const auto sto = [](int z) { return zeta("STO-3G", z); };
  EXPECT_EQ(sto(1)[0], 1.24);
  EXPECT_EQ(sto(1)[1], 0.0);
  EXPECT_EQ(sto(2)[0], 1.69);
  EXPECT_EQ(sto(3)[1], 0.80);
  EXPECT_EQ(sto(4)[1], 1.15);
  EXPECT_EQ(sto(5)[0], 4.68);
  EXPECT_EQ(sto(6)[1], 1.72);
  const auto iso = norvik::basis::sto3g_isolated_zeta;
  EXPECT_EQ(iso(1)[0], 1.0);
  EXPECT_EQ(iso(2)[0], 1.69);
  EXPECT_EQ(iso(3)[0], 2.69);
  EXPECT_EQ(iso(3)[1], 0.65);
  // Every shell has a factor; the 1s of Li on keeps its molecular value.
  for (int z = 1; z <= 54; ++z) {
    const auto mol = sto(z);
    const auto free_atom = iso(z);
    const int nshell = norvik::basis::shell_layout("STO-3G", z).nshell;
    for (int i = 0; i < 7; ++i) {
      EXPECT_EQ(mol[i] > 0.0, i < nshell) << z;
      EXPECT_EQ(free_atom[i] > 0.0, i < nshell) << z;
    }
    if (z >= 3) {
      EXPECT_EQ(mol[0], free_atom[0]) << z;  // the 1s is a core shell
    }
  }
}

// ---- Failures ------------------------------------------------------------------

constexpr const char* kNameList = " BasName={6-31(+)(+)G(x)(x),6-21G,3-21G,STO-3G}";

TEST(BasisFailures, UnknownNameNamesTheEntryPoint) {
  using namespace norvik::basis;
  AtomShells shells{};
  const Zeta zeta1{1, 1, 1, 0, 0, 0, 0};
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
      {error_lines([] { shell_layout("6-31G*", 1); }), " Wrong BasName in ZatomNSHL."},
      {error_lines([] { zeta("6-31G*", 1); }), " Wrong BasName in ZatomZeta."},
      {error_lines([&] { atom_angular("sto-3g", 1, shells); }), " Wrong BasName in makeLMlmn."},
      {error_lines([&] { atom_radial("", 1, zeta1, shells); }), " Wrong BasName in makeKLMG."},
      {error_lines([] {
         const int z[] = {1};
         const Zeta zz[] = {{1, 1, 1, 0, 0, 0, 0}};
         const int n[] = {2};
         const std::array<int, 9> k[] = {{1, 1}};
         build_basis("6-31G**", z, zz, n, k);
       }),
       " Wrong BasName in makeLMlmn."},
  };
  for (const auto& [lines, first] : cases) {
    ASSERT_EQ(lines.size(), 2u) << first;
    EXPECT_EQ(lines[0], first);
    EXPECT_EQ(lines[1], kNameList);
  }
}

// The message line of "<text> <Z>" as the library prints it.
std::string with_z(const std::string& text, int z) {
  return norvik::fortran::list_directed({text, static_cast<std::int64_t>(z)});
}

TEST(BasisFailures, ElementOutsideTheSetNamesTheFamilyRoutine) {
  using namespace norvik::basis;
  AtomShells shells{};
  const Zeta zeta1{1, 1, 1, 0, 0, 0, 0};
  struct Case {
    std::vector<std::string> lines;
    std::string text;
    int z;
  };
  const std::vector<Case> cases = {
      {error_lines([] { shell_layout("6-31G", 37); }), "Zatom exceed limit in ZatmNSHL_631G.", 37},
      {error_lines([] { shell_layout("6-31GC", 40); }), "Zatom exceed limit in ZatmNSHL_631GC.",
       40},
      // 6-31+G* stops at argon, although 6-31G* serves potassium.
      {error_lines([] { shell_layout("6-31+Gx", 19); }), "Zatom exceed limit in ZatmNSHL_631TGx.",
       19},
      {error_lines([] { shell_layout("6-31++GxxC", 19); }),
       "Zatom exceed limit in ZatmNSHL_631TTGxxC.", 19},
      {error_lines([] { shell_layout("STO-3G", 0); }), "Zatom exceed limit in ZatmNSHL_STO3G.", 0},
      {error_lines([] { zeta("6-31G", 37); }), "Zatom exceed limit in ZatmZeta_631G.", 37},
      {error_lines([] { zeta("6-21G", 19); }), "Zatom exceed limit in ZatmZeta_621G.", 19},
      {error_lines([] { zeta("STO-3G", 55); }), "Zatom exceed limit in ZatmZeta_STO3G.", 55},
      {error_lines([] { sto3g_isolated_zeta(-1); }), "Zatom exceed limit in ZatmZetaIso_STO3G.",
       -1},
      {error_lines([&] { atom_angular("6-31G", 37, shells); }),
       "Zatom exceed limit in makeLMlmn_631G.", 37},
      {error_lines([&] { atom_angular("6-31GxC", 37, shells); }),
       "Zatom exceed limit in makeLMlmn_631Gx.", 37},
      {error_lines([&] { atom_radial("3-21G", 55, zeta1, shells); }),
       "Zatom exceed limit in makeKLMG_321G.", 55},
      {error_lines([&] { atom_radial("6-31++G", 19, zeta1, shells); }),
       "Zatom exceed limit in makeKLMG_631TTG.", 19},
  };
  for (const auto& c : cases) {
    ASSERT_EQ(c.lines.size(), 1u) << c.text;
    EXPECT_EQ(c.lines[0], with_z(c.text, c.z));
    EXPECT_TRUE(c.lines[0].starts_with(" " + c.text));
    EXPECT_TRUE(c.lines[0].ends_with(std::to_string(c.z)));
  }
  EXPECT_NO_THROW(shell_layout("6-31Gx", 19));
}

TEST(BasisFailures, GroupRoutineOutsideItsGroup) {
  using namespace norvik::basis;
  AtomShells shells{};
  const Zeta zeta1{1, 1, 1, 0, 0, 0, 0};
  EXPECT_EQ(error_lines([&] { group_radial(Family::k631g, Group::kHHe, 3, zeta1, shells); }),
            std::vector<std::string>{with_z("Wrong Zatom in makeKLMG_631G_HHe.", 3)});
  EXPECT_EQ(error_lines([&] { group_radial(Family::k631g, Group::kLiNe, 2, zeta1, shells); }),
            std::vector<std::string>{with_z("Wrong Zatom in makeKLMG_631G_LiNe.", 2)});
  EXPECT_EQ(error_lines([&] { group_angular(Family::k321g, Group::kInXe, 48, shells); }),
            std::vector<std::string>{with_z("Wrong Zatom in makeLMlmn_321G_InXe.", 48)});
  EXPECT_EQ(error_lines([&] { group_angular(Family::k631gx, Group::kScZn, 31, shells); }),
            std::vector<std::string>{with_z("Wrong Zatom in makeLMlmn_631Gx_ScZn.", 31)});
  EXPECT_NO_THROW(group_radial(Family::k631gx, Group::kKCa, 20, zeta1, shells));
}

// The exported routines print the lines on standard output and end the process
// with status 1; the child sends its standard output to standard error, where
// the death test looks.
void stdout_to_stderr() {
  std::fflush(stdout);
  NORVIK_DUP2(2, 1);
}

TEST(BasisFailuresDeathTest, ExportedRoutinesStopWithStatusOne) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const std::string name = padded("6-31+Gx");
  norvik_int z = 19, nshell = 0, nbasis = 0;
  norvik_int kinds[9];
  EXPECT_EXIT(
      {
        stdout_to_stderr();
        ZATMNSHL(name.c_str(), &z, &nshell, kinds, &nbasis);
      },
      ::testing::ExitedWithCode(1), "Zatom exceed limit in ZatmNSHL_631TGx\\. +19");
  const std::string bad = padded("6-31G*");
  double zeta[7];
  EXPECT_EXIT(
      {
        stdout_to_stderr();
        ZATMZETA(bad.c_str(), &z, zeta);
      },
      ::testing::ExitedWithCode(1), "Wrong BasName in ZatomZeta\\.\n BasName=\\{6-31");
  double exps[54], coefs[378];
  norvik_int z3 = 3;
  EXPECT_EXIT(
      {
        stdout_to_stderr();
        MAKEKLMG_631G_HHE(&z3, zeta, exps, coefs);
      },
      ::testing::ExitedWithCode(1), "Wrong Zatom in makeKLMG_631G_HHe\\. +3");
  // 6-31G* accepts potassium.
  const std::string star = padded("6-31Gx");
  ZATMNSHL(star.c_str(), &z, &nshell, kinds, &nbasis);
  EXPECT_EQ(nbasis, 32);
}

}  // namespace
