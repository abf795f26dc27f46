// Readers for the committed reference vectors of tests/rys/data (formats in docs/rys.md).
#pragma once

#include <array>
#include <string>
#include <vector>

#include "integrals/rys/rys_eri.h"

namespace norvik::test {

// One shell of a reference quartet, owning its arrays.
struct ReferenceShell {
  int L = 0;
  std::array<double, 3> centre{};
  std::vector<double> exps;
  std::vector<double> coefs;

  integrals::rys::ShellData view() const {
    return {L, static_cast<int>(exps.size()), exps.data(), coefs.data(), centre};
  }
};

struct ReferenceValue {
  std::array<int, 4> index;  // 0-based components of a, b, c, d
  double value;
};

struct ReferenceQuartet {
  std::string label;
  std::array<ReferenceShell, 4> shells;
  std::vector<ReferenceValue> values;
};

// Reads every quartet of an eri_reference*.txt file; fails the test on a malformed file.
std::vector<ReferenceQuartet> read_eri_reference(const std::string& path);

// One record of rys_roots.txt.
struct RysRecord {
  std::string kind;  // seg, seam or asym
  int n = 0;
  double x = 0.0;
  std::vector<double> roots;
  std::vector<double> weights;
};

std::vector<RysRecord> read_rys_reference(const std::string& path);

}  // namespace norvik::test
