// The functional names that calculations use, each mapped to a combination and
// to the exact-exchange fraction a that the Fock build and the combination
// take.  Names are compared as blank-padded texts of 10 characters, letter
// case included, in the order of the table.
#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "dft/functionals/combinations.h"

namespace norvik::dft {

inline constexpr std::size_t kFunctionalNameLength = 10;

struct FunctionalName {
  std::string_view name;
  Combination combination;
  double exact_exchange;  // a
};

// "B3LYP" is the VWN5 form.  "B1OP" takes a = 0.2 like the B3LYP forms, and
// "OP" is full exact exchange with the Becke-based OP correlation.
inline constexpr std::array<FunctionalName, 19> kFunctionalNames{{
    {"PFOP", Combination::pfop, 0.0},     {"B1OP", Combination::bop, 0.2},
    {"OP", Combination::bop, 1.0},        {"BOP", Combination::bop, 0.0},
    {"B3LYP5", Combination::b3lyp5, 0.2}, {"B3LYP", Combination::b3lyp5, 0.2},
    {"B3LYP3", Combination::b3lyp3, 0.2}, {"BLYP", Combination::blyp, 0.0},
    {"SPL", Combination::spl, 0.0},       {"SVWN", Combination::svwn5, 0.0},
    {"SVWN5", Combination::svwn5, 0.0},   {"TDKS", Combination::svwn5, 0.0},
    {"TDKS5", Combination::svwn5, 0.0},   {"KSTDA", Combination::svwn5, 0.0},
    {"KSTDA5", Combination::svwn5, 0.0},  {"SVWN3", Combination::svwn3, 0.0},
    {"TDKS3", Combination::svwn3, 0.0},   {"KSTDA3", Combination::svwn3, 0.0},
    {"SGL", Combination::sgl, 0.0},
}};

// The entry for a name (its first 10 characters, trailing blanks ignored), if
// there is one.
std::optional<FunctionalName> find_functional(std::string_view name);

// The exact-exchange fraction of the Kohn–Sham driver: the table's a, and 0 for
// a name that is not in the table (without any message).
double exact_exchange_fraction(std::string_view name);

// Who asks for the combination, which fixes the message for an unknown name.
enum class FunctionalUse {
  potential_matrix,  // the exchange–correlation matrix (calcvXchCorr)
  energy,            // the exchange–correlation energy (EnegyExc)
  kernel,            // the kernel table (makeFxcTb): local functionals only
};

// The combination of a name, or norvik::Error with the caller's message lines:
//   potential matrix: " Wrong DFname in calcvXchCorr."
//                     " DFname = {SVWN,SPL,SGL,BLYP,B3LYP,BOP,B1OP,PFOP,OP}"
//   energy:           " Wrong DFname in EnegyExc." and the same second line
//   kernel:           " Wrong theory name in makeFxcTb." for any name whose
//                     combination has no kernel (only the SVWN5 and SVWN3 groups).
// The second line leaves out the aliases and numbered variants on purpose.
Combination functional_for(std::string_view name, FunctionalUse use);

}  // namespace norvik::dft
