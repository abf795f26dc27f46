// A small reader of JSON text (RFC 8259), for the host's own use: `norvik view`
// checks that a result file is JSON and finds the cube files it lists.  The
// whole document becomes one tree of values; numbers are doubles.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace host::json {

// Deeper nesting is refused rather than followed down the stack: no result file
// comes near it.
inline constexpr int kMaxDepth = 256;

struct Value {
  enum class Kind { null, boolean, number, string, array, object };
  Kind kind = Kind::null;
  bool boolean = false;
  double number = 0.0;
  std::string text;                                    // a string, UTF-8
  std::vector<Value> items;                            // an array
  std::vector<std::pair<std::string, Value>> members;  // an object, in file order

  // The member `key` of an object (the first of that name), or nullptr when
  // this is no object or has no such member.
  const Value* find(std::string_view key) const;
  bool is(Kind k) const { return kind == k; }
};

// The text is not JSON: the message names the line and column (both from 1,
// columns counted in bytes) and what was found there.
struct ParseError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Reads one JSON value that fills the whole text (white space around it
// allowed; a UTF-8 byte-order mark at the start is skipped).
Value parse(std::string_view text);

// `text` as a JSON string literal, quotes included, with "</" written "<\/"
// and "<!--" written "\u003c!--" so that it may stand inside an HTML script
// element.
std::string quoted(std::string_view text);

}  // namespace host::json
