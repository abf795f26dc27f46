// The values of the report's fixed-format lines: integers and texts as the
// Fortran-style formatter takes them.
#pragma once

#include <cstdint>
#include <string_view>

#include "common/fortran_format.h"

namespace norvik::report {

inline fortran::Value integer(long long v) {
  return fortran::Value(std::int64_t{v});
}

inline fortran::Value text(std::string_view v) {
  return fortran::Value(v);
}

}  // namespace norvik::report
