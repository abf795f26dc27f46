// Text files of the numbered units: the report (8) and the run log (9) are
// opened for appending, written and closed again by every routine, so nothing is
// ever left open between calls and one file collects a whole job.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace norvik::io {

// Appends the given lines (each followed by a newline) to the file, creating it
// when it does not exist, and closes it.  Throws norvik::Error when the file
// cannot be opened or written.
void append_lines(std::string_view path, std::span<const std::string> lines);
inline void append_lines(std::string_view path, std::initializer_list<std::string> lines) {
  append_lines(path, std::span<const std::string>(lines.begin(), lines.size()));
}

// Writes the given lines to the file anew (an existing file is replaced).
void write_lines(std::string_view path, std::span<const std::string> lines);

// A blank-padded name or keyword with its trailing blanks removed.
std::string_view trim_right(std::string_view text);

// Writes one progress line on standard output: the text blank-padded or cut to
// 40 characters, then the local time as "hh:mm:ss mm/dd" (each field I2).
void timestamp(std::string_view text);

}  // namespace norvik::io
