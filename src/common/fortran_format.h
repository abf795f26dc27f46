// Fortran-style formatted output: the one place where report, log and message
// lines are made.
//
// Edit descriptors follow the Fortran 2008 rules as gfortran applies them:
//   A, Aw        text (Aw: right-justified in w columns, or its first w characters)
//   Iw, Iw.m, I0 integers (I0: minimal width)
//   Fw.d         fixed point; F0.d minimal width
//   Ew.d, Ew.dEe scientific with a 0.ddd mantissa
//   ESw.d, ESw.dEe scientific with one nonzero digit before the point
//   nX           n blanks
// A value that does not fit its field gives w asterisks.  Decimal conversion is
// correctly rounded (round half to even on the exact binary value, as gfortran).
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace norvik::fortran {

// One edit descriptor applied to one value.
std::string edit_a(std::string_view text, int w = -1);
std::string edit_i(std::int64_t value, int w, int m = -1);
std::string edit_f(double value, int w, int d);
std::string edit_e(double value, int w, int d, int e = -1);
std::string edit_es(double value, int w, int d, int e = -1);
inline std::string edit_x(int n) { return std::string(static_cast<std::size_t>(n), ' '); }

// A value handed to a format: integer, real or text.
using Value = std::variant<std::int64_t, double, std::string_view>;

// Applies a whole format such as "(A,3F15.10,A,I2)" to a list of values and
// returns one record (no newline).  Supports repeat counts on descriptors and on
// parenthesised groups, nX, and quoted literals ('text' or "text").  The values
// must match the data descriptors in number and kind (integers may feed F/E/ES
// only if written as doubles by the caller); a mismatch throws std::logic_error,
// since it is a programming error, not a user error.
std::string format(std::string_view fmt, std::span<const Value> values);
inline std::string format(std::string_view fmt, std::initializer_list<Value> values) {
  return format(fmt, std::span<const Value>(values.begin(), values.size()));
}

// List-directed output of one record, as `write(*,*) a, b, c` prints it with
// gfortran: the record begins with a blank, integers and reals take the widths
// that gfortran's list-directed output gives them, texts are written as they are.
std::string list_directed(std::span<const Value> values);
inline std::string list_directed(std::initializer_list<Value> values) {
  return list_directed(std::span<const Value>(values.begin(), values.size()));
}

}  // namespace norvik::fortran
