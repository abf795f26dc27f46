// The compiled-in exponents and contraction coefficients against the published
// basis-set files, read directly; and the exported arrays of module BASIS_631G.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>

#include "basis/generated/basis_631g_tables.h"
#include "basis/library.h"
#include "basis_test_support.h"
#include "json_value.h"

#ifndef NORVIK_BASIS_JSON_DIR
#define NORVIK_BASIS_JSON_DIR ""
#endif

namespace {

using norvik::basis::AtomShells;
using norvik::test::JsonValue;

// Exponents are stored divided by ζ² and multiplied back at run time: a few
// roundings of a double, far below the ten significant digits published.
constexpr double kExponentTolerance = 1e-10;

// One angular-momentum component of a shell: an sp shell has two, an spd three.
struct Component {
  int l;
  std::vector<double> exponents;
  std::vector<double> coefs;
};

std::string json_dir() {
  return NORVIK_BASIS_JSON_DIR;
}

const JsonValue& published(std::string_view stem) {
  static std::map<std::string, JsonValue, std::less<>> cache;
  auto it = cache.find(stem);
  if (it == cache.end()) {
    it = cache
             .emplace(std::string(stem),
                      norvik::test::read_json_file(json_dir() + "/" + std::string(stem) + ".json"))
             .first;
  }
  return it->second;
}

std::vector<Component> published_components(const JsonValue& element) {
  std::vector<Component> out;
  const auto& shells = element["electron_shells"];
  for (std::size_t s = 0; s < shells.size(); ++s) {
    const auto& shell = shells[s];
    std::vector<double> exponents;
    for (const auto& e : shell["exponents"].items) exponents.push_back(e.number());
    const auto& am = shell["angular_momentum"];
    for (std::size_t j = 0; j < am.size(); ++j) {
      Component c{static_cast<int>(am[j].number()), exponents, {}};
      for (const auto& d : shell["coefficients"][j].items) c.coefs.push_back(d.number());
      out.push_back(std::move(c));
    }
  }
  return out;
}

// The library's components of one atom; checks on the way that every function
// of a shell that shares an angular momentum shares the coefficients too.
std::vector<Component> library_components(std::string_view name, int z) {
  const auto layout = norvik::basis::shell_layout(name, z);
  const auto zeta = norvik::basis::zeta(name, z);
  AtomShells shells{};
  norvik::basis::atom_angular(name, z, shells);
  norvik::basis::atom_radial(name, z, zeta, shells);
  std::vector<Component> out;
  for (int s = 0; s < layout.nshell; ++s) {
    const auto& shell = shells[s];
    const std::vector<double> exps(shell.exponents.begin(), shell.exponents.begin() + shell.nprim);
    for (int k = shell.nprim; k < norvik::basis::kMaxPrimitives; ++k) {
      EXPECT_EQ(shell.exponents[k], 0.0);
    }
    const auto coefs = [&](int slot) {
      return std::vector<double>(shell.functions[slot].coef.begin(),
                                 shell.functions[slot].coef.begin() + shell.nprim);
    };
    int first = 0;
    for (int slot = 0; slot < norvik::basis::kMaxFunctionsPerShell; ++slot) {
      const auto& f = shell.functions[slot];
      if (f.nterm == 0) continue;
      if (slot == first || f.L != shell.functions[first].L) {
        first = slot;
        out.push_back({f.L, exps, coefs(slot)});
      } else {
        EXPECT_EQ(coefs(slot), coefs(first)) << name << " Z=" << z << " shell " << s;
      }
    }
  }
  return out;
}

bool same_exponents(const std::vector<double>& a, const std::vector<double>& b) {
  if (a.size() != b.size()) return false;
  for (std::size_t k = 0; k < a.size(); ++k) {
    if (std::abs(a[k] - b[k]) > kExponentTolerance * std::abs(b[k])) return false;
  }
  return true;
}

TEST(BasisPublishedData, EveryExponentAndCoefficientAsPublished) {
  if (!std::filesystem::exists(json_dir())) GTEST_SKIP() << "no published data at " << json_dir();
  int compared = 0;
  for (const auto& c : norvik::test::all_names()) {
    const auto& elements = published(c.json)["elements"];
    ASSERT_EQ(elements.size(), static_cast<std::size_t>(c.zmax)) << c.json;
    for (int z = 1; z <= c.zmax; ++z) {
      SCOPED_TRACE(std::string(c.name) + " Z=" + std::to_string(z));
      auto library = library_components(c.name, z);
      const auto expected = published_components(elements[std::to_string(z)]);
      ASSERT_EQ(library.size(), expected.size());
      // Each published component has its own twin in the library (order aside:
      // the library has its own shell order).
      for (const auto& want : expected) {
        const auto it = std::find_if(library.begin(), library.end(), [&](const Component& got) {
          return got.l == want.l && same_exponents(got.exponents, want.exponents);
        });
        ASSERT_NE(it, library.end()) << "l=" << want.l << " first exponent " << want.exponents[0];
        EXPECT_EQ(it->coefs, want.coefs) << "l=" << want.l;
        library.erase(it);
        ++compared;
      }
    }
  }
  EXPECT_GT(compared, 4000);
}

TEST(BasisPublishedData, ShellsRunFromCompactToDiffuse) {
  // Within an atom the s/sp shells, and separately the d shells, come in order of
  // decreasing largest exponent: core, valence, outer valence, diffuse.
  for (const auto& c : norvik::test::all_names()) {
    for (int z = 1; z <= c.zmax; ++z) {
      const int zs[] = {z};
      const auto basis = norvik::basis::make_basis(c.name, zs);
      double last_s = INFINITY, last_d = INFINITY;
      for (const auto& shell : basis.shells) {
        const double top = *std::max_element(shell.exponents.begin(), shell.exponents.end());
        double& last = (shell.kind == 1 || shell.kind == 4) ? last_s : last_d;
        if (shell.kind == 1 || shell.kind == 4 || shell.kind == 5 || shell.kind == 6) {
          EXPECT_LT(top, last) << c.name << " Z=" << z;
          last = top;
        }
      }
    }
  }
}

TEST(BasisPublishedData, ExportedArraysOfModule631G) {
  // The rows that identify the module: exponents divided by ζ² of their shell.
  EXPECT_NEAR(BASIS_631G_MP_b631g_h__1s_ai[0], 13.007734, 1e-12);
  EXPECT_NEAR(BASIS_631G_MP_b631g_h__1s_ai[1], 1.96207942, 1e-8);
  EXPECT_NEAR(BASIS_631G_MP_b631g_h__1s_ai[2], 0.444528953, 1e-9);
  EXPECT_NEAR(BASIS_631G_MP_b631g_h__1s_ai[0] * 1.44, 18.731137, 1e-6);
  EXPECT_EQ(BASIS_631G_MP_b631g_h__1s_di[0], 0.03349460434);
  EXPECT_EQ(BASIS_631G_MP_b631g_h__1s_di[1], 0.2347269535);
  EXPECT_EQ(BASIS_631G_MP_b631g_h__1s_di[2], 0.8137573261);
  EXPECT_NEAR(BASIS_631G_MP_b631g_h__1v_ai[0], 0.121949156, 1e-9);
  EXPECT_EQ(BASIS_631G_MP_b631g_h__pl_ai[0], 1.1);
  EXPECT_EQ(BASIS_631G_MP_b631g_h__df_ai[0], 0.036);
  const double c1s[] = {3047.52488, 457.369518, 103.948685, 29.2101553, 9.28666296, 3.16392696};
  for (int k = 0; k < 6; ++k) EXPECT_DOUBLE_EQ(BASIS_631G_MP_b631g_c__1s_ai[k], c1s[k]);
  EXPECT_EQ(BASIS_631G_MP_b631g_c__pl_ai[0], 0.8);
  EXPECT_EQ(BASIS_631G_MP_b631g_c__df_ai[0], 0.0438);
  EXPECT_EQ(BASIS_631G_MP_b631g_o__df_ai[0], 0.0845);
  EXPECT_EQ(BASIS_631G_MP_b631g_fe_3d_di[0], 0.08876935479);
  EXPECT_EQ(BASIS_631G_MP_b631g_fe_pl_ai[0], 0.8);       // the f shell of 6-31G*
  EXPECT_EQ(BASIS_631G_MP_b631g_k__3v_ai[0], 0.179389);  // the outer 3d of potassium
  // sp shells: one exponent array, separate s and p coefficients.
  EXPECT_EQ(BASIS_631G_MP_b631g_c__2s_di[0], -0.1193324198);
  EXPECT_EQ(BASIS_631G_MP_b631g_c__2p_di[0], 0.06899906659);
}

TEST(BasisPublishedData, HydrogenExponentsAreStoredValuesTimesZetaSquared) {
  const double inner = 1.2 * 1.2, outer = 1.15 * 1.15;
  for (const auto& c : norvik::test::all_names()) {
    if (!c.name.starts_with("6-31")) continue;
    const int z[] = {1};
    const auto basis = norvik::basis::make_basis(c.name, z);
    for (int k = 0; k < 3; ++k) {
      EXPECT_DOUBLE_EQ(basis.shells[0].exponents[k], BASIS_631G_MP_b631g_h__1s_ai[k] * inner);
    }
    EXPECT_DOUBLE_EQ(basis.shells[1].exponents[0], BASIS_631G_MP_b631g_h__1v_ai[0] * outer);
    EXPECT_NEAR(basis.shells[1].exponents[0], 0.1612777588, 1e-12);
  }
}

TEST(BasisPublishedData, IsolatedAtomSetScalesTheSameExpansions) {
  // Lithium: the 2sp shell with ζ = 0.65 instead of 0.80, the 1s unchanged.
  const int z[] = {3};
  const norvik::basis::Zeta iso = norvik::basis::sto3g_isolated_zeta(3);
  const auto free_atom = norvik::basis::make_basis("STO-3G", z, std::span(&iso, 1));
  const auto molecule = norvik::basis::make_basis("STO-3G", z);
  const double ratio = (0.65 * 0.65) / (0.80 * 0.80);
  for (int k = 0; k < 3; ++k) {
    EXPECT_EQ(free_atom.shells[0].exponents[k], molecule.shells[0].exponents[k]);
    EXPECT_NEAR(free_atom.shells[1].exponents[k], molecule.shells[1].exponents[k] * ratio,
                1e-14 * molecule.shells[1].exponents[k]);
  }
  // Hydrogen atom: the exact ζ = 1 expansion, 2.227660584 … for the 1s.
  const int h[] = {1};
  const norvik::basis::Zeta hiso = norvik::basis::sto3g_isolated_zeta(1);
  const auto hydrogen = norvik::basis::make_basis("STO-3G", h, std::span(&hiso, 1));
  EXPECT_NEAR(hydrogen.shells[0].exponents[0], 2.227660584, 1e-9);
}

}  // namespace
