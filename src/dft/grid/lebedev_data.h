// The shape of the Lebedev–Laikov tables that tools/dft/generate.py writes into
// src/dft/generated/lebedev_tables.cpp.
//
// A rule is a list of octahedral orbits in the published order; an orbit is its
// generator code (1–6), up to two parameters a, b (0 where the code fixes or derives
// them) and the weight v of each of its points.  The rule index k = 1 … 65 of the
// family has precision (algebraic order) 2k + 1; 32 of the indices have a rule.
#pragma once

#include <array>
#include <span>

namespace norvik::dft::lebedev_data {

// Rule indices of the family, 1 … 65.
inline constexpr int kRuleIndices = 65;
// Indices with a tabulated rule.
inline constexpr int kTabulatedRules = 32;

struct Orbit {
  int code;
  double a;
  double b;
  double v;
};

struct Rule {
  int index;  // 1 … 65
  int points;
  std::span<const Orbit> orbits;
};

// The tabulated rules in increasing size.
extern const std::array<Rule, kTabulatedRules> kRules;
// Per rule index (index − 1): points of the rule, its precision, and whether it is
// tabulated (1) or not (0).
extern const std::array<int, kRuleIndices> kOrder;
extern const std::array<int, kRuleIndices> kPrecision;
extern const std::array<int, kRuleIndices> kAvailable;

}  // namespace norvik::dft::lebedev_data
