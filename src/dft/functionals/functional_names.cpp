#include "dft/functionals/functional_names.h"

#include <string>
#include <vector>

#include "common/error.h"
#include "common/fortran_format.h"

namespace norvik::dft {

namespace {

// The name as a blank-padded 10-character text holds it, trailing blanks cut.
std::string_view keyword(std::string_view text) {
  text = text.substr(0, kFunctionalNameLength);
  const auto last = text.find_last_not_of(' ');
  return last == std::string_view::npos ? std::string_view{} : text.substr(0, last + 1);
}

[[noreturn]] void unknown_name(FunctionalUse use) {
  constexpr std::string_view kNames = "DFname = {SVWN,SPL,SGL,BLYP,B3LYP,BOP,B1OP,PFOP,OP}";
  switch (use) {
    case FunctionalUse::potential_matrix:
      throw Error(
          std::vector<std::string>{fortran::list_directed({"Wrong DFname in calcvXchCorr."}),
                                   fortran::list_directed({kNames})});
    case FunctionalUse::energy:
      throw Error(std::vector<std::string>{fortran::list_directed({"Wrong DFname in EnegyExc."}),
                                           fortran::list_directed({kNames})});
    case FunctionalUse::kernel:
      break;
  }
  throw Error(fortran::list_directed({"Wrong theory name in makeFxcTb."}));
}

}  // namespace

std::optional<FunctionalName> find_functional(std::string_view name) {
  const std::string_view key = keyword(name);
  for (const FunctionalName& entry : kFunctionalNames) {
    if (entry.name == key) return entry;
  }
  return std::nullopt;
}

double exact_exchange_fraction(std::string_view name) {
  const auto entry = find_functional(name);
  return entry ? entry->exact_exchange : 0.0;
}

Combination functional_for(std::string_view name, FunctionalUse use) {
  const auto entry = find_functional(name);
  if (!entry || (use == FunctionalUse::kernel && !row_of(entry->combination).has_kernel)) {
    unknown_name(use);
  }
  return entry->combination;
}

}  // namespace norvik::dft
