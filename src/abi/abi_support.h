// The boundary between the exported routines and the core.
//
// Exported routines only convert raw pointers and blank-padded text buffers into
// core arguments, call the core, and turn a core error into the promised
// behaviour: its lines on standard output, every file flushed and closed, and the
// end of the process with exit status 1.  The conversions of sizes, arrays,
// matrices and the two-electron context are in abi/convert.h (included here).
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "abi/convert.h"
#include "common/error.h"
#include "norvik/common.h"
#include "norvik/export.h"

namespace norvik::abi {

// Fixed text lengths of the calling convention (norvik/common.h).
inline constexpr int kFileNameLength = NORVIK_FILE_NAME_LENGTH;
inline constexpr int kKeywordLength = NORVIK_KEYWORD_LENGTH;  // theory, functional
inline constexpr int kNameLength = NORVIK_NAME_LENGTH;        // basis set, molecule, element
inline constexpr int kLongKeywordLength = kNameLength;        // the 20-character keywords
inline constexpr int kSymbolLength = NORVIK_SYMBOL_LENGTH;
inline constexpr int kTimestampLength = NORVIK_TIMESTAMP_LENGTH;

// A blank-padded buffer of `length` characters as a view (no copy).
inline std::string_view text_in(const char* buffer, int length) {
  return {buffer, static_cast<std::size_t>(length)};
}

// Stores text into a blank-padded buffer of `length` characters (cut if longer).
void text_out(char* buffer, int length, std::string_view text);

// Appends lines to the report or log file named by a 120-character buffer.
void append_to(const char* file, const std::vector<std::string>& lines);

// Prints the lines of a fatal error on standard output and ends the process
// with exit status 1.  Files opened by the core are already closed by then: the
// core holds them in scoped objects that the unwinding has destroyed.
[[noreturn]] void terminate_with(const std::vector<std::string>& lines);

// Runs one exported routine's body; a core error ends the process as promised.
template <class Body>
void guarded(Body&& body) noexcept {
  try {
    body();
  } catch (const Error& error) {
    terminate_with(error.lines());
  } catch (const std::bad_alloc&) {
    terminate_with({" Allocation of a work array failed."});
  } catch (const std::exception& error) {
    terminate_with({std::string(" Internal error: ") + error.what()});
  }
}

// The same for routines that return a value (an error never returns).
template <class Result, class Body>
Result guarded_value(Body&& body) noexcept {
  Result result{};
  guarded([&] { result = body(); });
  return result;
}

}  // namespace norvik::abi
