#include "abi/abi_support.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iostream>

#include "common/text_file.h"

namespace norvik::abi {

void text_out(char* buffer, int length, std::string_view text) {
  const auto n = std::min<std::size_t>(text.size(), static_cast<std::size_t>(length));
  std::copy_n(text.begin(), n, buffer);
  std::fill(buffer + n, buffer + length, ' ');
}

void append_to(const char* file, const std::vector<std::string>& lines) {
  io::append_lines(text_in(file, kFileNameLength), lines);
}

void terminate_with(const std::vector<std::string>& lines) {
  for (const auto& line : lines) std::cout << line << '\n';
  std::cout.flush();
  std::fflush(nullptr);
  std::exit(1);
}

}  // namespace norvik::abi
