// The one error type of the core.
//
// A fatal condition anywhere in the core throws norvik::Error carrying the exact
// lines that the exported routine prints on standard output before it ends the
// process.  Each line is complete as printed (list-directed lines begin with a
// blank).  C++ callers and tests catch it instead.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace norvik {

class Error : public std::runtime_error {
 public:
  explicit Error(std::vector<std::string> lines);
  explicit Error(std::string line) : Error(std::vector<std::string>{std::move(line)}) {}

  const std::vector<std::string>& lines() const noexcept { return lines_; }

 private:
  std::vector<std::string> lines_;
};

}  // namespace norvik
