// The combinations as the table of weights, the functional names with their
// exact-exchange fractions and messages, and the batch interface of the core.
#include "dft/functionals/combinations.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "common/error.h"
#include "dft/functionals/functional_names.h"
#include "support.h"

namespace {

using norvik::dft::Combination;
using norvik::dft::FunctionalUse;
using xc_test::Record;
using xc_test::record;

// One weighted term of a combination, written from the table of functionals.
struct Weighted {
  xc_test::ComponentE e;
  xc_test::ComponentE v;
  xc_test::ComponentE f;  // nullptr without kernel
  double weight;
};

struct Row {
  const char* name;
  xc_test::CombinationE e, v, f;
  std::vector<Weighted> exchange, correlation;
};

std::vector<Row> table(double a) {
  const double c = 1.0 - 0.81;  // the computed weight, 0.18999999999999995
  const Weighted s{E_EXCH_S, V_EXCH_S, F_EXCH_S, 1.0 - a};
  const Weighted b{E_EXCH_B, V_EXCH_B, nullptr, 1.0 - a};
  const Weighted pf{E_EXCH_PF, V_EXCH_PF, nullptr, 1.0 - a};
  const Weighted vwn5{E_CORR_VWN5, V_CORR_VWN5, F_CORR_VWN5, 1.0};
  const Weighted vwn3{E_CORR_VWN3, V_CORR_VWN3, F_CORR_VWN3, 1.0};
  const Weighted op{E_CORR_OP, V_CORR_OP, nullptr, 1.0};
  const Weighted lyp{E_CORR_LYP, V_CORR_LYP, nullptr, 1.0};
  const Weighted s3{E_EXCH_S, V_EXCH_S, nullptr, 1.0 - a - 0.72};
  const Weighted b3{E_EXCH_B, V_EXCH_B, nullptr, 0.72};
  return {
      {"SVWN5", E_XC_SVWN5, V_XC_SVWN5, F_XC_SVWN5, {s}, {vwn5}},
      {"SVWN3", E_XC_SVWN3, V_XC_SVWN3, F_XC_SVWN3, {s}, {vwn3}},
      {"SPL", E_XC_SPL, V_XC_SPL, nullptr, {s}, {{E_CORR_PL, V_CORR_PL, nullptr, 1.0}}},
      {"SGL", E_XC_SGL, V_XC_SGL, nullptr, {s}, {{E_CORR_GL, V_CORR_GL, nullptr, 1.0}}},
      {"BLYP", E_XC_BLYP, V_XC_BLYP, nullptr, {b}, {lyp}},
      {"BOP", E_XC_BOP, V_XC_BOP, nullptr, {b}, {op}},
      {"PFOP", E_XC_PFOP, V_XC_PFOP, nullptr, {pf}, {op}},
      {"B3LYP5",
       E_XC_B3LYP5,
       V_XC_B3LYP5,
       nullptr,
       {s3, b3},
       {{E_CORR_VWN5, V_CORR_VWN5, nullptr, c}, {E_CORR_LYP, V_CORR_LYP, nullptr, 0.81}}},
      {"B3LYP3",
       E_XC_B3LYP3,
       V_XC_B3LYP3,
       nullptr,
       {s3, b3},
       {{E_CORR_VWN3, V_CORR_VWN3, nullptr, c}, {E_CORR_LYP, V_CORR_LYP, nullptr, 0.81}}},
  };
}

// Weighted sums of the components' results, in the table's order.
double energy_sum(const std::vector<Weighted>& terms, const Record& r) {
  double sum = 0.0;
  for (const Weighted& t : terms) {
    double e = 0.0;
    t.e(r.data(), &e);
    sum += t.weight * e;
  }
  return sum;
}

template <std::size_t N>
std::array<double, N> sum_of(const std::vector<Weighted>& x, const std::vector<Weighted>& c,
                             const Record& r, bool kernel) {
  std::array<double, N> sum{};
  for (const auto* part : {&x, &c}) {
    for (const Weighted& t : *part) {
      std::array<double, N> out{};
      (kernel ? t.f : t.v)(r.data(), out.data());
      for (std::size_t k = 0; k < N; ++k) sum[k] += t.weight * out[k];
    }
  }
  return sum;
}

// Every combination is its row of weights applied to its components, for the
// energy parts, all five potential components and the three kernel
// components; e(1) is exactly e(2) + e(3).  a = 1 ("OP") leaves no
// density-functional exchange; PFOP's OP is the one on the Becke 88
// enhancement, as in BOP.
TEST(XcCombinations, AreTheTableOfWeights) {
  const std::vector<Record> points = {record(0.31, 0.12, 0.05, 0.004, 0.009),
                                      record(4.0, 4.0, 9.0, 9.0, 3.0),
                                      record(0.02, 0.0, 1e-4, 0, 0)};
  for (double a : {0.0, 0.2, 0.35, 1.0}) {
    for (const Row& row : table(a)) {
      for (const Record& r : points) {
        SCOPED_TRACE(std::string(row.name) + " a=" + std::to_string(a));
        double e[3];
        row.e(r.data(), &a, e);
        EXPECT_EQ(e[1], energy_sum(row.exchange, r));
        EXPECT_EQ(e[2], energy_sum(row.correlation, r));
        EXPECT_EQ(e[0], e[1] + e[2]);
        std::array<double, 5> v;
        row.v(r.data(), &a, v.data());
        EXPECT_EQ(v, (sum_of<5>(row.exchange, row.correlation, r, false)));
        if (row.f != nullptr) {
          std::array<double, 3> f;
          row.f(r.data(), &a, f.data());
          EXPECT_EQ(f, (sum_of<3>(row.exchange, row.correlation, r, true)));
        }
      }
    }
  }
}

// B3LYP5 with a = 0.2 is 0.08 S + 0.72 B and 0.19 VWN5 + 0.81 LYP, where the
// VWN weight is the computed 1 − 0.81, not the double nearest 0.19.  Below the
// LYP threshold only the VWN term remains.
TEST(XcCombinations, B3lypVwnWeightIsComputed) {
  ASSERT_NE(1.0 - 0.81, 0.19);
  const double a = 0.2;
  const Record thin{6e-9, 3e-10};
  double e[3], vwn = 0.0, s = 0.0, b = 0.0;
  E_XC_B3LYP5(thin.data(), &a, e);
  E_CORR_VWN5(thin.data(), &vwn);
  E_EXCH_S(thin.data(), &s);
  E_EXCH_B(thin.data(), &b);
  EXPECT_EQ(e[2], 0.18999999999999995 * vwn);
  EXPECT_NEAR(e[1], 0.08 * s + 0.72 * b, 1e-15 * std::fabs(e[1]));
}

// A blank-padded 10-character name, as hosts pass it.
std::string padded(const std::string& name) {
  std::string text = name;
  text.resize(norvik::dft::kFunctionalNameLength, ' ');
  return text;
}

// The functional names, their combinations and exact-exchange fractions.
TEST(XcFunctionalNames, MapToCombinationsAndFractions) {
  struct Case {
    const char* name;
    Combination combination;
    double a;
  };
  const Case cases[] = {
      {"SVWN", Combination::svwn5, 0.0},    {"SVWN5", Combination::svwn5, 0.0},
      {"TDKS", Combination::svwn5, 0.0},    {"TDKS5", Combination::svwn5, 0.0},
      {"KSTDA", Combination::svwn5, 0.0},   {"KSTDA5", Combination::svwn5, 0.0},
      {"SVWN3", Combination::svwn3, 0.0},   {"TDKS3", Combination::svwn3, 0.0},
      {"KSTDA3", Combination::svwn3, 0.0},  {"SPL", Combination::spl, 0.0},
      {"SGL", Combination::sgl, 0.0},       {"BLYP", Combination::blyp, 0.0},
      {"B3LYP", Combination::b3lyp5, 0.2},  {"B3LYP5", Combination::b3lyp5, 0.2},
      {"B3LYP3", Combination::b3lyp3, 0.2}, {"BOP", Combination::bop, 0.0},
      {"B1OP", Combination::bop, 0.2},      {"OP", Combination::bop, 1.0},
      {"PFOP", Combination::pfop, 0.0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    for (const std::string& text : {std::string(c.name), padded(c.name)}) {
      EXPECT_EQ(norvik::dft::functional_for(text, FunctionalUse::energy), c.combination);
      EXPECT_EQ(norvik::dft::functional_for(text, FunctionalUse::potential_matrix), c.combination);
      EXPECT_EQ(norvik::dft::exact_exchange_fraction(text), c.a);
    }
  }
  // Any other keyword takes a = 0 without a message; names are case-sensitive
  // and leading blanks count.
  for (const char* other : {"HF", "MP2", "b3lyp", " BLYP", "B3LYP 5", ""}) {
    EXPECT_FALSE(norvik::dft::find_functional(padded(other)).has_value()) << other;
    EXPECT_EQ(norvik::dft::exact_exchange_fraction(padded(other)), 0.0) << other;
  }
  // Only the first 10 characters are the name.
  EXPECT_EQ(norvik::dft::functional_for("BLYP      trailing", FunctionalUse::energy),
            Combination::blyp);
}

std::vector<std::string> message_of(const std::string& name, FunctionalUse use) {
  try {
    norvik::dft::functional_for(padded(name), use);
  } catch (const norvik::Error& error) {
    return error.lines();
  }
  return {};
}

// Unknown names and kernels of gradient-corrected functionals stop with the
// caller's message.
TEST(XcFunctionalNames, Messages) {
  const std::string names = " DFname = {SVWN,SPL,SGL,BLYP,B3LYP,BOP,B1OP,PFOP,OP}";
  EXPECT_EQ(message_of("HF", FunctionalUse::potential_matrix),
            (std::vector<std::string>{" Wrong DFname in calcvXchCorr.", names}));
  EXPECT_EQ(message_of("b3lyp", FunctionalUse::energy),
            (std::vector<std::string>{" Wrong DFname in EnegyExc.", names}));
  const std::vector<std::string> kernel = {" Wrong theory name in makeFxcTb."};
  for (const char* name : {"BLYP", "B3LYP", "SPL", "SGL", "OP", "XYZ"}) {
    EXPECT_EQ(message_of(name, FunctionalUse::kernel), kernel) << name;
  }
  for (const char* name : {"SVWN", "SVWN5", "TDKS", "TDKS5", "KSTDA", "KSTDA5"}) {
    EXPECT_EQ(norvik::dft::functional_for(padded(name), FunctionalUse::kernel), Combination::svwn5);
  }
  for (const char* name : {"SVWN3", "TDKS3", "KSTDA3"}) {
    EXPECT_EQ(norvik::dft::functional_for(padded(name), FunctionalUse::kernel), Combination::svwn3);
  }
}

// The core's batches give each point what the exported routine gives it alone.
TEST(XcBatches, AgreeWithSinglePoints) {
  std::vector<double> records;
  for (int i = 0; i < 37; ++i) {
    const double rho = 1e-6 * std::pow(10.0, 0.25 * i);
    const Record r =
        record(0.6 * rho, 0.4 * rho, 0.3 * rho * rho, 0.1 * rho * rho, 0.05 * rho * rho);
    records.insert(records.end(), r.begin(), r.end());
  }
  const std::size_t n = records.size() / 8;
  const double a = 0.2;
  std::vector<double> total(n), exchange(n), correlation(n), v(5 * n), f(3 * n);
  norvik::dft::combination_energies(Combination::b3lyp5, records, a,
                                    {total, exchange, correlation});
  norvik::dft::combination_potentials(Combination::b3lyp5, records, a, v);
  norvik::dft::combination_kernels(Combination::svwn3, records, a, f);
  for (std::size_t i = 0; i < n; ++i) {
    const double* r = records.data() + 8 * i;
    double e[3], vi[5], fi[3];
    E_XC_B3LYP5(r, &a, e);
    V_XC_B3LYP5(r, &a, vi);
    F_XC_SVWN3(r, &a, fi);
    EXPECT_EQ(total[i], e[0]);
    EXPECT_EQ(exchange[i], e[1]);
    EXPECT_EQ(correlation[i], e[2]);
    for (int k = 0; k < 5; ++k) EXPECT_EQ(v[5 * i + k], vi[k]);
    for (int k = 0; k < 3; ++k) EXPECT_EQ(f[3 * i + k], fi[k]);
  }
  // Outputs that do not match the records are a programming error.
  std::vector<double> short_v(5 * n - 1);
  EXPECT_THROW(norvik::dft::combination_potentials(Combination::blyp, records, a, short_v),
               std::invalid_argument);
  EXPECT_THROW(norvik::dft::combination_kernels(Combination::blyp, records, a, f),
               std::logic_error);
}

}  // namespace
