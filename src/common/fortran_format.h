// Fortran-style formatted output: the one place where report, log and message
// lines are made.
//
// Edit descriptors follow the Fortran 2008 rules as gfortran applies them:
//   A, Aw        text (Aw: right-justified in w columns, or its first w characters)
//   Iw, Iw.m, I0 integers (I0: minimal width; Iw.0 writes a zero as blanks)
//   Fw.d         fixed point; F0.d minimal width
//   Ew.d, Ew.dEe scientific with a 0.ddd mantissa (d >= 1)
//   ESw.d, ESw.dEe scientific with one nonzero digit before the point
//   nX           n blanks
// A value that does not fit its field gives w asterisks.  Decimal conversion is
// correctly rounded (round half to even on the exact binary value, as gfortran).
// The leading zero of a value below one is written only when the field has room
// for it (0.5 in F4.1 is " 0.5", in F3.1 ".5"); a negative value that rounds to
// zero keeps its minus sign ("-0.00"), as does a negative zero.  Exponents take
// the form E+dd, or +ddd without the letter beyond two digits; Ee asks for e
// digits (E0 for as few as needed).  Infinity and NaN are written as "Infinity",
// "-Infinity", "Inf", "-Inf" or "NaN", right-justified, whichever fits.
// docs/text-io.md gives the complete rules.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace norvik::fortran {

// One edit descriptor applied to one value.  An impossible descriptor (negative
// width, E with d = 0) throws std::logic_error.
std::string edit_a(std::string_view text, int w = -1);
std::string edit_i(std::int64_t value, int w, int m = -1);
std::string edit_f(double value, int w, int d);
std::string edit_e(double value, int w, int d, int e = -1);
std::string edit_es(double value, int w, int d, int e = -1);
inline std::string edit_x(int n) {
  return std::string(static_cast<std::size_t>(n), ' ');
}

// A value handed to a format: integer, real or text.
using Value = std::variant<std::int64_t, double, std::string_view>;

// Applies a whole format such as "(A,3F15.10,A,I2)" to a list of values and
// returns one record (no newline).  Supports repeat counts on descriptors and on
// parenthesised groups, nX, and quoted literals ('text' or "text", a doubled
// quote standing for one); blanks outside literals and letter case do not
// matter.  As in Fortran, the record ends at the first data descriptor left
// without a value (literals before it are still written).  A value whose kind
// does not suit its descriptor (A takes text, I integers, F/E/ES doubles), more
// values than the format takes in one record, or a malformed format throws
// std::logic_error, since it is a programming error, not a user error.
std::string format(std::string_view fmt, std::span<const Value> values);
inline std::string format(std::string_view fmt, std::initializer_list<Value> values) {
  return format(fmt, std::span<const Value>(values.begin(), values.size()));
}

// The same for formats that write several records: a slash ends a record, and
// values left over at the closing parenthesis start a new record from the last
// top-level group (with its repeat count) or, without one, from the beginning,
// so "(5F12.6)" writes any number of values five to a line.
std::vector<std::string> format_lines(std::string_view fmt, std::span<const Value> values);
inline std::vector<std::string> format_lines(std::string_view fmt,
                                             std::initializer_list<Value> values) {
  return format_lines(fmt, std::span<const Value>(values.begin(), values.size()));
}

// List-directed output of one record, as `write(*,*) a, b, c` prints it with
// gfortran: the record begins with a blank; items are separated by one blank,
// except two texts in a row, which are joined; texts are written as they are.
// Integers are INTEGER(4) items, right-justified in 11 columns (a value outside
// the 32-bit range takes the 20 columns of an INTEGER(8)).  Doubles take 25
// columns with 17 significant digits: fixed point followed by five blanks when
// 0.1 <= |x| < 1e17 or x is zero ("1.0000000000000000"), otherwise scientific
// with a three-digit exponent ("1.0000000000000000E-002").
std::string list_directed(std::span<const Value> values);
inline std::string list_directed(std::initializer_list<Value> values) {
  return list_directed(std::span<const Value>(values.begin(), values.size()));
}

}  // namespace norvik::fortran
