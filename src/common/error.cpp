#include "common/error.h"

namespace norvik {

namespace {
std::string joined(const std::vector<std::string>& lines) {
  std::string all;
  for (const auto& line : lines) {
    if (!all.empty()) all += '\n';
    all += line;
  }
  return all;
}
}  // namespace

Error::Error(std::vector<std::string> lines)
    : std::runtime_error(joined(lines)), lines_(std::move(lines)) {}

}  // namespace norvik
