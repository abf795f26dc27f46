// The angular sets (s, p, sp, d with companion, f) through the exported fills,
// checked for unit norm and orthogonality with one-centre overlaps of Cartesian
// Gaussians computed here in closed form; and the norm of every contracted
// function that the library builds.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>

#include "basis/library.h"
#include "basis_test_support.h"
#include "norvik/basis.h"

namespace {

// Overlap is a double sum of a few terms of size ~1: a handful of roundings.
constexpr double kNormTolerance = 1e-14;
// The published contractions are normalised to the figures they are printed with
// (the worst, a 6-31G p shell of selenium, is 5e-7 from unit norm).
constexpr double kContractionTolerance = 1e-6;

// ∫ t^n exp(−γ t²) dt over the real line.
double moment(int n, double gamma) {
  if (n % 2 != 0) return 0.0;
  double value = std::sqrt(std::numbers::pi / gamma);
  for (int k = 1; k < n; k += 2) value *= k / (2.0 * gamma);
  return value;
}

// ⟨x^a y^b z^c e^{−α r²} | x^d y^e z^f e^{−β r²}⟩ on one centre.
double cartesian_overlap(const int* lmn1, double alpha, const int* lmn2, double beta) {
  double s = 1.0;
  for (int axis = 0; axis < 3; ++axis) s *= moment(lmn1[axis] + lmn2[axis], alpha + beta);
  return s;
}

// The primitive normalisation the integral code applies: N(α, L)².
double norm2(double alpha, int L) {
  return std::pow(0.25, L) *
         std::sqrt(std::pow(std::numbers::pi, 3) / (8 * std::pow(alpha, 2 * L + 3)));
}

// The angular arrays of one shell as the exported fills write them.
struct ShellAngular {
  std::array<norvik_int, 14> lm{};
  std::array<norvik_int, 7> nterm{};
  std::array<norvik_int, 63> lmn{};
  std::array<double, 21> termcoef{};
};

// ⟨slot i|slot j⟩ of one shell for primitives of exponent α, normalised by N(α, L).
double slot_overlap(const ShellAngular& a, int i, int j, double alpha) {
  double s = 0.0;
  for (int t = 0; t < a.nterm[i]; ++t) {
    for (int u = 0; u < a.nterm[j]; ++u) {
      s += a.termcoef[3 * i + t] * a.termcoef[3 * j + u] *
           cartesian_overlap(&a.lmn[9 * i + 3 * t], alpha, &a.lmn[9 * j + 3 * u], alpha);
    }
  }
  return s / norm2(alpha, a.lm[2 * i]);
}

using Fill = void (*)(norvik_int*, norvik_int*, norvik_int*, double*);

ShellAngular filled(Fill fill) {
  ShellAngular a;
  a.lm.fill(-99);  // the fill must clear the slots it does not use
  a.nterm.fill(-99);
  fill(a.lm.data(), a.nterm.data(), a.lmn.data(), a.termcoef.data());
  return a;
}

TEST(BasisAngular, EachSetIsOrthonormalOnOneCentre) {
  struct Case {
    Fill fill;
    int nslot;
    std::vector<std::array<int, 2>> lm;
  };
  const std::vector<Case> cases = {
      {LMLMN_SONLY, 1, {{0, 0}}},
      {LMLMN_PONLY, 3, {{1, -1}, {1, 0}, {1, 1}}},
      {LMLMN_SANDP, 4, {{0, 0}, {1, -1}, {1, 0}, {1, 1}}},
      {LMLMN_DONLY, 6, {{2, -2}, {2, -1}, {2, 0}, {2, 1}, {2, 2}, {2, 10}}},
      {LMLMN_FONLY, 7, {{3, -3}, {3, -2}, {3, -1}, {3, 0}, {3, 1}, {3, 2}, {3, 3}}},
  };
  for (const auto& c : cases) {
    const ShellAngular a = filled(c.fill);
    for (int i = 0; i < 7; ++i) {
      if (i >= c.nslot) {
        EXPECT_EQ(a.nterm[i], 0);
        EXPECT_EQ(a.lm[2 * i], 0);
        continue;
      }
      EXPECT_EQ(a.lm[2 * i], c.lm[i][0]);
      EXPECT_EQ(a.lm[2 * i + 1], c.lm[i][1]);
      EXPECT_GE(a.nterm[i], 1);
      EXPECT_LE(a.nterm[i], 3);
      for (int t = 0; t < a.nterm[i]; ++t) {
        const int* e = &a.lmn[9 * i + 3 * t];
        EXPECT_EQ(e[0] + e[1] + e[2], c.lm[i][0]) << "slot " << i;  // homogeneous of degree L
      }
    }
    for (const double alpha : {0.07, 1.0, 13.5}) {
      for (int i = 0; i < c.nslot; ++i) {
        for (int j = 0; j < c.nslot; ++j) {
          const double expected = i == j ? 1.0 : 0.0;
          EXPECT_NEAR(slot_overlap(a, i, j, alpha), expected, kNormTolerance)
              << "L=" << c.lm[i][0] << " slots " << i << "," << j << " alpha " << alpha;
        }
      }
    }
  }
}

TEST(BasisAngular, PSetIsYZXAndShorthandsFillConsecutiveShells) {
  const ShellAngular sp = filled(LMLMN_SANDP);
  // s, then y, z, x.
  const int want[4][3] = {{0, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 0}};
  for (int i = 0; i < 4; ++i) {
    for (int c = 0; c < 3; ++c) EXPECT_EQ(sp.lmn[9 * i + c], want[i][c]);
    EXPECT_EQ(sp.termcoef[3 * i], 1.0);
  }
  std::array<norvik_int, 14 * 5> lm{};
  std::array<norvik_int, 7 * 5> nterm{};
  std::array<norvik_int, 63 * 5> lmn{};
  std::array<double, 21 * 5> termcoef{};
  nterm.fill(-1);
  LMLMN_SSSS(lm.data(), nterm.data(), lmn.data(), termcoef.data());
  for (int s = 0; s < 5; ++s) EXPECT_EQ(nterm[7 * s], s < 4 ? 1 : -1) << "shell " << s;
  LMLMN_PP(lm.data(), nterm.data(), lmn.data(), termcoef.data());
  for (int s = 0; s < 2; ++s) EXPECT_EQ(lm[14 * s + 2 * 2], 1) << "shell " << s;  // third slot p
}

TEST(BasisAngular, EveryContractedFunctionHasUnitNorm) {
  // Σ_kl d_k d_l ⟨k|l⟩ / (N_k N_l) over normalised primitives: the coefficients,
  // exponents and ζ² scaling belong together.
  for (const auto& c : norvik::test::all_names()) {
    for (int z = 1; z <= c.zmax; ++z) {
      const int zs[] = {z};
      const auto basis = norvik::basis::make_basis(c.name, zs);
      for (const auto& shell : basis.shells) {
        for (int slot = 0; slot < shell.kind; ++slot) {
          const auto& f = shell.functions[slot];
          const int L = f.L;
          double norm = 0.0;
          for (int k = 0; k < shell.nprim; ++k) {
            for (int l = 0; l < shell.nprim; ++l) {
              const double a = shell.exponents[k], b = shell.exponents[l];
              norm += f.coef[k] * f.coef[l] * std::pow(2 * std::sqrt(a * b) / (a + b), L + 1.5);
            }
          }
          EXPECT_NEAR(norm, 1.0, kContractionTolerance) << c.name << " Z=" << z << " L=" << L;
        }
      }
    }
  }
}

}  // namespace
