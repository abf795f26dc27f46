#include "common/text_file.h"

#include <cstdio>
#include <ctime>
#include <fstream>
#include <iostream>

#include "common/error.h"
#include "common/fortran_format.h"

namespace norvik::io {

namespace {

void put_lines(std::string_view path, std::span<const std::string> lines, std::ios::openmode mode) {
  const std::string name(trim_right(path));
  std::ofstream out(name, mode | std::ios::binary);
  if (!out)
    throw Error(fortran::list_directed({std::string_view(name), " cannot be opened for writing."}));
  for (const auto& line : lines) {
    out << line << '\n';
  }
  out.close();
  if (!out) throw Error(fortran::list_directed({std::string_view(name), " cannot be written."}));
}

}  // namespace

void append_lines(std::string_view path, std::span<const std::string> lines) {
  put_lines(path, lines, std::ios::out | std::ios::app);
}

void write_lines(std::string_view path, std::span<const std::string> lines) {
  put_lines(path, lines, std::ios::out | std::ios::trunc);
}

std::string_view trim_right(std::string_view text) {
  const auto end = text.find_last_not_of(' ');
  return end == std::string_view::npos ? std::string_view{} : text.substr(0, end + 1);
}

void timestamp(std::string_view text) {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
#if defined(_WIN32)
  localtime_s(&local, &now);
#else
  localtime_r(&now, &local);
#endif
  using fortran::Value;
  const std::string line =
      fortran::format("(A40,I2,':',I2,':',I2,' ',I2,'/',I2)",
                      {Value(text), Value(std::int64_t{local.tm_hour}),
                       Value(std::int64_t{local.tm_min}), Value(std::int64_t{local.tm_sec}),
                       Value(std::int64_t{local.tm_mon + 1}), Value(std::int64_t{local.tm_mday})});
  std::cout << line << '\n' << std::flush;
}

}  // namespace norvik::io
