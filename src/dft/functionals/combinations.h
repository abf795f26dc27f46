// The combinations that a calculation names: weighted sums of one or two
// exchange and one or two correlation components, with the exact-exchange
// fraction a chosen by the caller taken out of the exchange.  Each row reads
//   exchange    = (1 − a − w_x) X + w_x X′,
//   correlation = (1 − w_c) C + w_c C′,
// and the same weights apply term by term to every energy, potential and
// kernel component.  The weights 0.72 and 0.81 of the B3LYP forms are
// Becke's three-parameter fit (with a = 0.2): A. D. Becke, J. Chem. Phys. 98,
// 5648 (1993); P. J. Stephens, F. J. Devlin, C. F. Chabalowski and
// M. J. Frisch, J. Phys. Chem. 98, 11623 (1994).
//
// Batches as in point.h; every routine overwrites its outputs.
#pragma once

#include <array>
#include <span>
#include <string_view>

#include "dft/functionals/components.h"

namespace norvik::dft {

enum class Combination { svwn5, svwn3, spl, sgl, blyp, bop, pfop, b3lyp5, b3lyp3 };

// A component mixed in with a fixed weight (weight 0: none).
struct MixedIn {
  Component component = Component::slater;
  double weight = 0.0;
};

struct CombinationRow {
  Combination combination;
  std::string_view name;      // as in the routine names: E_XC_<name>
  Component exchange;         // X, weight 1 − a − w_x
  MixedIn mixed_exchange;     // X′, weight w_x
  Component correlation;      // C, weight 1 − w_c
  MixedIn mixed_correlation;  // C′, weight w_c
  bool has_kernel;            // only the local SVWN forms
};

inline constexpr std::array<CombinationRow, 9> kCombinations{{
    {Combination::svwn5, "SVWN5", Component::slater, {}, Component::vwn5, {}, true},
    {Combination::svwn3, "SVWN3", Component::slater, {}, Component::vwn3, {}, true},
    {Combination::spl, "SPL", Component::slater, {}, Component::perdew_zunger, {}, false},
    {Combination::sgl, "SGL", Component::slater, {}, Component::gunnarsson_lundqvist, {}, false},
    {Combination::blyp, "BLYP", Component::becke88, {}, Component::lyp, {}, false},
    {Combination::bop, "BOP", Component::becke88, {}, Component::op, {}, false},
    {Combination::pfop, "PFOP", Component::pf_exchange, {}, Component::op, {}, false},
    {Combination::b3lyp5,
     "B3LYP5",
     Component::slater,
     {Component::becke88, 0.72},
     Component::vwn5,
     {Component::lyp, 0.81},
     false},
    {Combination::b3lyp3,
     "B3LYP3",
     Component::slater,
     {Component::becke88, 0.72},
     Component::vwn3,
     {Component::lyp, 0.81},
     false},
}};

const CombinationRow& row_of(Combination c);

// The three energy densities of each point (n each).
struct EnergyParts {
  std::span<double> total;
  std::span<double> exchange;
  std::span<double> correlation;
};

void combination_energies(Combination c, std::span<const double> records, double a,
                          const EnergyParts& out);
void combination_potentials(Combination c, std::span<const double> records, double a,
                            std::span<double> potentials);
// Throws std::logic_error for a combination without a kernel.
void combination_kernels(Combination c, std::span<const double> records, double a,
                         std::span<double> kernels);

}  // namespace norvik::dft
