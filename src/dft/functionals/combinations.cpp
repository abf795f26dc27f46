#include "dft/functionals/combinations.h"

#include <algorithm>
#include <stdexcept>

namespace norvik::dft {

namespace {

// The four weighted terms of a row for the fraction a, in the order in which
// they are summed: X, X′, then C, C′.  A weight of zero leaves its term out (a
// row without X′ or C′, or "OP" with a = 1, which keeps no exchange at all).
struct Term {
  Component component;
  double weight;
};
struct Terms {
  std::array<Term, 2> exchange;
  std::array<Term, 2> correlation;
};

Terms terms_of(const CombinationRow& row, double a) {
  return {{Term{row.exchange, 1.0 - a - row.mixed_exchange.weight},
           Term{row.mixed_exchange.component, row.mixed_exchange.weight}},
          {Term{row.correlation, 1.0 - row.mixed_correlation.weight},
           Term{row.mixed_correlation.component, row.mixed_correlation.weight}}};
}

}  // namespace

const CombinationRow& row_of(Combination c) {
  const auto it = std::find_if(kCombinations.begin(), kCombinations.end(),
                               [c](const CombinationRow& r) { return r.combination == c; });
  if (it == kCombinations.end()) throw std::logic_error("unknown functional combination");
  return *it;
}

void combination_energies(Combination c, std::span<const double> records, double a,
                          const EnergyParts& out) {
  const Terms terms = terms_of(row_of(c), a);
  std::fill(out.exchange.begin(), out.exchange.end(), 0.0);
  std::fill(out.correlation.begin(), out.correlation.end(), 0.0);
  for (const Term& t : terms.exchange) {
    if (t.weight != 0.0) add_energies(t.component, records, t.weight, out.exchange);
  }
  for (const Term& t : terms.correlation) {
    if (t.weight != 0.0) add_energies(t.component, records, t.weight, out.correlation);
  }
  if (out.total.size() != out.exchange.size() || out.total.size() != out.correlation.size()) {
    throw std::invalid_argument("functional batch: energy parts differ in size");
  }
  for (std::size_t i = 0; i < out.total.size(); ++i) {
    out.total[i] = out.exchange[i] + out.correlation[i];
  }
}

void combination_potentials(Combination c, std::span<const double> records, double a,
                            std::span<double> potentials) {
  const Terms terms = terms_of(row_of(c), a);
  std::fill(potentials.begin(), potentials.end(), 0.0);
  for (const auto& part : {terms.exchange, terms.correlation}) {
    for (const Term& t : part) {
      if (t.weight != 0.0) add_potentials(t.component, records, t.weight, potentials);
    }
  }
}

void combination_kernels(Combination c, std::span<const double> records, double a,
                         std::span<double> kernels) {
  const CombinationRow& row = row_of(c);
  if (!row.has_kernel) throw std::logic_error("functional combination without a kernel");
  const Terms terms = terms_of(row, a);
  std::fill(kernels.begin(), kernels.end(), 0.0);
  for (const auto& part : {terms.exchange, terms.correlation}) {
    for (const Term& t : part) {
      if (t.weight != 0.0) add_kernels(t.component, records, t.weight, kernels);
    }
  }
}

}  // namespace norvik::dft
