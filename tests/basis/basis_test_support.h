// Helpers shared by the basis-set tests.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "basis/library.h"
#include "common/error.h"
#include "norvik/common.h"

namespace norvik::test {

// The 22 recognised names with the published file that holds each one's data
// (the Cartesian-d names share their file with the name without "C").
struct NameCase {
  std::string_view name;
  std::string_view json;  // file stem under the published basis-set folder
  int zmax;
};

inline const std::vector<NameCase>& all_names() {
  static const std::vector<NameCase> names = {
      {"STO-3G", "sto-3g", 54},       {"3-21G", "3-21g", 54},
      {"3-21GC", "3-21g", 54},        {"6-21G", "6-21g", 18},
      {"6-31G", "6-31g", 36},         {"6-31GC", "6-31g", 36},
      {"6-31Gx", "6-31gs", 36},       {"6-31GxC", "6-31gs", 36},
      {"6-31Gxx", "6-31gss", 36},     {"6-31GxxC", "6-31gss", 36},
      {"6-31+G", "6-31pg", 18},       {"6-31+GC", "6-31pg", 18},
      {"6-31+Gx", "6-31pgs", 18},     {"6-31+GxC", "6-31pgs", 18},
      {"6-31+Gxx", "6-31pgss", 18},   {"6-31+GxxC", "6-31pgss", 18},
      {"6-31++G", "6-31ppg", 18},     {"6-31++GC", "6-31ppg", 18},
      {"6-31++Gx", "6-31ppgs", 18},   {"6-31++GxC", "6-31ppgs", 18},
      {"6-31++Gxx", "6-31ppgss", 18}, {"6-31++GxxC", "6-31ppgss", 18},
  };
  return names;
}

// A name as the host passes it: blank-padded to the name length.
inline std::string padded(std::string_view name) {
  std::string text(name);
  text.resize(NORVIK_NAME_LENGTH, ' ');
  return text;
}

// The lines of the norvik::Error that `body` throws (empty if it throws none).
template <class Body>
std::vector<std::string> error_lines(Body&& body) {
  try {
    body();
  } catch (const norvik::Error& error) {
    return error.lines();
  }
  return {};
}

}  // namespace norvik::test
