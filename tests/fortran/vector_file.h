// Reading the gfortran reference vectors of tests/fortran/data (written by
// tools/fortran_vectors/generate.py): tab-separated fields, '#' comment lines,
// texts in brackets, doubles as IEEE bits in hex.
#pragma once

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "common/fortran_format.h"

namespace norvik::fortran::testing {

struct VectorLine {
  int number;                       // line number in the file, for messages
  std::vector<std::string> fields;  // tab-separated
};

inline std::vector<VectorLine> read_vectors(const std::string& name) {
  const std::string path = std::string(NORVIK_TEST_DATA) + "/" + name;
  std::ifstream in(path, std::ios::binary);
  EXPECT_TRUE(in.good()) << "cannot open " << path;
  std::vector<VectorLine> lines;
  std::string line;
  int number = 0;
  while (std::getline(in, line)) {
    ++number;
    if (line.empty() || line[0] == '#') continue;
    VectorLine entry{number, {}};
    std::size_t start = 0;
    for (;;) {
      const auto tab = line.find('\t', start);
      entry.fields.push_back(line.substr(start, tab - start));
      if (tab == std::string::npos) break;
      start = tab + 1;
    }
    lines.push_back(std::move(entry));
  }
  return lines;
}

// "[text]" -> "text".
inline std::string unbracket(const std::string& field) {
  EXPECT_TRUE(field.size() >= 2 && field.front() == '[' && field.back() == ']') << field;
  return field.size() >= 2 ? field.substr(1, field.size() - 2) : field;
}

inline double from_bits(const std::string& hex) {
  return std::bit_cast<double>(static_cast<std::uint64_t>(std::stoull(hex, nullptr, 16)));
}

inline std::string to_bits(double value) {
  std::ostringstream out;
  out << std::uppercase << std::hex;
  out.width(16);
  out.fill('0');
  out << std::bit_cast<std::uint64_t>(value);
  return out.str();
}

// "s:text|i:5|r:3FF0000000000000" -> values.  The texts are views into `storage`.
inline std::vector<Value> parse_values(const std::string& field,
                                       std::vector<std::string>& storage) {
  std::vector<Value> values;
  if (field.empty()) return values;
  std::vector<std::string> items;
  std::size_t start = 0;
  for (;;) {
    const auto bar = field.find('|', start);
    items.push_back(field.substr(start, bar - start));
    if (bar == std::string::npos) break;
    start = bar + 1;
  }
  storage.reserve(items.size());
  for (const auto& item : items) {
    const std::string body = item.substr(2);
    switch (item[0]) {
      case 's':
        storage.push_back(body);
        values.emplace_back(std::string_view(storage.back()));
        break;
      case 'i':
        values.emplace_back(static_cast<std::int64_t>(std::stoll(body)));
        break;
      default:
        values.emplace_back(from_bits(body));
        break;
    }
  }
  return values;
}

// Collects mismatches and reports the first few, so that thousands of cases
// fail readably.
class Mismatches {
 public:
  explicit Mismatches(std::string file) : file_(std::move(file)) {}
  void add(int line, const std::string& what) {
    ++count_;
    if (count_ <= kShown) report_ << "\n  " << file_ << ":" << line << ": " << what;
  }
  void check(std::size_t cases) const {
    EXPECT_GT(cases, 0u) << file_ << " holds no cases";
    EXPECT_EQ(count_, 0) << count_ << " of " << cases << " cases differ from gfortran"
                         << report_.str();
  }

 private:
  static constexpr int kShown = 25;
  std::string file_;
  int count_ = 0;
  std::ostringstream report_;
};

}  // namespace norvik::fortran::testing
