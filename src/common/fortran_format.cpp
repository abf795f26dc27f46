#include "common/fortran_format.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>

namespace norvik::fortran {
namespace {

// ---------------------------------------------------------------------------
// Decimal digits of a double.  std::to_chars with an explicit precision gives
// the exactly rounded expansion of the binary value, ties to even, which is what
// gfortran gets from the C library's printf.

// Scratch space for one conversion: on the stack for every ordinary field, on
// the heap for absurd precisions.
class Scratch {
 public:
  explicit Scratch(std::size_t size) {
    if (size > stack_.size()) {
      heap_ = std::make_unique<char[]>(size);
      data_ = heap_.get();
    } else {
      data_ = stack_.data();
    }
    size_ = size;
  }
  char* begin() { return data_; }
  char* end() { return data_ + size_; }

 private:
  std::array<char, 512> stack_;
  std::unique_ptr<char[]> heap_;
  char* data_;
  std::size_t size_;
};

std::string_view convert(Scratch& scratch, double magnitude, std::chars_format form,
                         int precision) {
  const auto result = std::to_chars(scratch.begin(), scratch.end(), magnitude, form, precision);
  if (result.ec != std::errc()) throw std::logic_error("fortran::format: conversion overflow");
  return {scratch.begin(), static_cast<std::size_t>(result.ptr - scratch.begin())};
}

void append_stars(std::string& out, int w) {
  out.append(static_cast<std::size_t>(w), '*');
}

void check_width(int w, int d) {
  if (w < 0 || d < 0) throw std::logic_error("fortran::format: negative width or digit count");
}

// Infinity and NaN in a field of w columns (w = 0: as narrow as possible).
void append_non_finite(std::string& out, double value, int w) {
  const bool nan = std::isnan(value);
  const bool negative = !nan && std::signbit(value);
  if (w == 0) w = negative ? 4 : 3;
  if (w < 3 || (negative && w == 3)) return append_stars(out, w);
  std::string_view word = nan ? "NaN" : (w > (negative ? 8 : 7) ? "Infinity" : "Inf");
  const int length = static_cast<int>(word.size()) + (negative ? 1 : 0);
  out.append(static_cast<std::size_t>(w - length), ' ');
  if (negative) out.push_back('-');
  out.append(word);
}

// Lays out a real field: [blanks][sign][0]digits.digits[exponent].  `before` may be
// empty, in which case a zero is put before the point when there is room.
void append_real(std::string& out, int w, bool negative, std::string_view before,
                 std::string_view after, std::string_view exponent) {
  int blanks =
      w - static_cast<int>(before.size() + after.size() + exponent.size() + 1) - (negative ? 1 : 0);
  const bool lead_zero = before.empty() && blanks > 0;
  if (lead_zero) --blanks;
  if (blanks < 0 || w == 1 || (w == 2 && negative)) return append_stars(out, w);
  out.append(static_cast<std::size_t>(blanks), ' ');
  if (negative) out.push_back('-');
  if (lead_zero) out.push_back('0');
  out.append(before);
  out.push_back('.');
  out.append(after);
  out.append(exponent);
}

void append_f(std::string& out, double value, int w, int d) {
  check_width(w, d);
  if (!std::isfinite(value)) return append_non_finite(out, value, w);
  const bool negative = std::signbit(value);
  // Integer digits of a double run to 309; the fraction to d.
  Scratch scratch(static_cast<std::size_t>(d) + 320);
  const std::string_view text = convert(scratch, std::fabs(value), std::chars_format::fixed, d);
  const auto point = text.find('.');
  std::string_view before = text.substr(0, point);
  const std::string_view after =
      point == std::string_view::npos ? std::string_view{} : text.substr(point + 1);
  if (before == "0") before = {};
  if (w == 0) {
    // Minimal width; a value that rounds to zero keeps the zero before the point
    // only when there are no decimals (gfortran writes ".00" and "0.").
    const bool zero = before.empty() && after.find_first_not_of('0') == std::string_view::npos;
    if (zero) {
      w = d + (negative ? 2 : 1) + (d == 0 ? 1 : 0);
    } else {
      w = static_cast<int>(before.size()) + d + (negative ? 2 : 1);
      if (w == 1) w = 2;
    }
  }
  append_real(out, w, negative, before, after, {});
}

// The exponent field of E and ES: "E+dd", "+ddd" beyond two digits, or with an
// explicit digit count "E+" followed by e digits (e = 0: as many as needed).
// Returns false when the exponent does not fit.
bool exponent_field(std::array<char, 16>& field, std::size_t& length, int exponent, int e) {
  const int magnitude = std::abs(exponent);
  int digits = 1;
  for (int m = magnitude; m >= 10; m /= 10) ++digits;
  bool letter = true;
  int width;
  if (e < 0) {
    if (digits > 3) return false;
    width = 3;
    if (digits == 3)
      letter = false;
    else
      width = 2;
  } else if (e == 0) {
    width = digits;
  } else {
    if (digits > e) return false;
    width = e;
  }
  length = 0;
  if (letter) field[length++] = 'E';
  field[length++] = exponent < 0 ? '-' : '+';
  for (int i = width - 1, m = magnitude; i >= 0; --i, m /= 10) {
    field[length + static_cast<std::size_t>(i)] = static_cast<char>('0' + m % 10);
  }
  length += static_cast<std::size_t>(width);
  return true;
}

// E (scientific = false) and ES (scientific = true) editing.
void append_e(std::string& out, double value, int w, int d, int e, bool scientific) {
  check_width(w, d);
  if (w == 0) throw std::logic_error("fortran::format: E0.d and ES0.d are not supported");
  if (!scientific && d == 0) throw std::logic_error("fortran::format: E editing needs d >= 1");
  if (e > 9) throw std::logic_error("fortran::format: exponent digit count above 9");
  if (!std::isfinite(value)) return append_non_finite(out, value, w);
  const bool negative = std::signbit(value);
  const int significant = scientific ? d + 1 : d;
  Scratch scratch(static_cast<std::size_t>(significant) + 16);
  const std::string_view text =
      convert(scratch, std::fabs(value), std::chars_format::scientific, significant - 1);
  // text is "d.ddde+xx" or "de+xx"; gather the significant digits.
  const auto mark = text.find('e');
  std::array<char, 16> field_buffer;
  std::string_view digits;
  if (significant == 1) {
    digits = text.substr(0, 1);
  } else {
    // Drop the point by moving the first digit onto it (the exponent after
    // `mark` stays untouched): the digits are then scratch[1 .. mark).
    char* first = scratch.begin();
    first[1] = first[0];
    digits = std::string_view(first + 1, mark - 1);
  }
  int exponent = 0;
  if (value != 0) {
    std::from_chars(text.data() + mark + 1 + (text[mark + 1] == '+' ? 1 : 0),
                    text.data() + text.size(), exponent);
    if (!scientific) ++exponent;
  }
  std::size_t field_length = 0;
  if (!exponent_field(field_buffer, field_length, exponent, e)) return append_stars(out, w);
  const std::string_view field(field_buffer.data(), field_length);
  if (scientific) {
    append_real(out, w, negative, digits.substr(0, 1), digits.substr(1), field);
  } else {
    append_real(out, w, negative, {}, digits, field);
  }
}

void append_i(std::string& out, std::int64_t value, int w, int m) {
  if (w < 0) throw std::logic_error("fortran::format: negative width");
  const bool negative = value < 0;
  std::uint64_t magnitude =
      negative ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
  std::array<char, 24> buffer;
  int count = 0;
  if (!(m == 0 && magnitude == 0)) {
    do {
      buffer[static_cast<std::size_t>(count++)] = static_cast<char>('0' + magnitude % 10);
      magnitude /= 10;
    } while (magnitude != 0);
  }
  const int digits = std::max(count, m);
  const int length = digits + (negative ? 1 : 0);
  if (w == 0) w = std::max(length, 1);
  if (length > w) return append_stars(out, w);
  out.append(static_cast<std::size_t>(w - length), ' ');
  if (negative) out.push_back('-');
  out.append(static_cast<std::size_t>(digits - count), '0');
  for (int i = count - 1; i >= 0; --i) out.push_back(buffer[static_cast<std::size_t>(i)]);
}

void append_a(std::string& out, std::string_view text, int w) {
  if (w < 0) {
    out.append(text);
  } else if (static_cast<std::size_t>(w) <= text.size()) {
    out.append(text.substr(0, static_cast<std::size_t>(w)));
  } else {
    out.append(static_cast<std::size_t>(w) - text.size(), ' ');
    out.append(text);
  }
}

// ---------------------------------------------------------------------------
// Format strings.

struct Item {
  enum class Kind { data, literal, blanks, slash, group };
  Kind kind = Kind::data;
  char code = 0;  // data: 'A', 'I', 'F', 'E', or 'S' for ES
  int repeat = 1;
  int w = -1, d = -1, e = -1;  // for I, d holds m
  std::string text;            // literal
  std::vector<Item> children;  // group
};

class Parser {
 public:
  explicit Parser(std::string_view fmt) : fmt_(fmt) {}

  std::vector<Item> parse() {
    skip_blanks();
    expect('(');
    std::vector<Item> items = parse_list();
    skip_blanks();
    if (pos_ != fmt_.size()) fail("text after the closing parenthesis");
    return items;
  }

 private:
  [[noreturn]] void fail(const char* what) const {
    throw std::logic_error(std::string("fortran::format: ") + what + " in \"" + std::string(fmt_) +
                           "\"");
  }
  void skip_blanks() {
    while (pos_ < fmt_.size() && (fmt_[pos_] == ' ' || fmt_[pos_] == '\t')) ++pos_;
  }
  char peek() {
    skip_blanks();
    if (pos_ >= fmt_.size()) return '\0';
    const char c = fmt_[pos_];
    return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
  }
  void expect(char c) {
    if (peek() != c) fail("unexpected character");
    ++pos_;
  }
  static bool is_digit(char c) { return c >= '0' && c <= '9'; }
  int number() {
    if (!is_digit(peek())) fail("number expected");
    int value = 0;
    while (is_digit(peek())) {
      value = value * 10 + (fmt_[pos_++] - '0');
      if (value > 1000000) fail("number too large");
    }
    return value;
  }

  // Items up to and including the closing parenthesis of a list.
  std::vector<Item> parse_list() {
    std::vector<Item> items;
    for (;;) {
      const char c = peek();
      if (c == ')') {
        ++pos_;
        return items;
      }
      if (c == ',') {
        ++pos_;
        continue;
      }
      if (c == '\0') fail("missing closing parenthesis");
      items.push_back(parse_item());
    }
  }

  Item parse_item() {
    Item item;
    char c = peek();
    if (c == '\'' || c == '"') {
      item.kind = Item::Kind::literal;
      item.text = literal(c);
      return item;
    }
    if (c == '/') {
      ++pos_;
      item.kind = Item::Kind::slash;
      return item;
    }
    const bool counted = is_digit(c);
    if (counted) {
      item.repeat = number();
      c = peek();
    }
    if (c == '(') {
      ++pos_;
      item.kind = Item::Kind::group;
      item.children = parse_list();
      return item;
    }
    if (c == 'X') {
      ++pos_;
      item.kind = Item::Kind::blanks;
      item.w = item.repeat;
      item.repeat = 1;
      return item;
    }
    if (counted && item.repeat == 0) fail("zero repeat count");
    ++pos_;
    item.code = c;
    switch (c) {
      case 'A':
        if (is_digit(peek())) {
          item.w = number();
          if (item.w == 0) fail("zero width for A");
        }
        return item;
      case 'I':
        item.w = number();
        if (peek() == '.') {
          ++pos_;
          item.d = number();
        }
        return item;
      case 'E':
        if (peek() == 'S') {
          ++pos_;
          item.code = 'S';
        }
        [[fallthrough]];
      case 'F':
        item.w = number();
        expect('.');
        item.d = number();
        if (item.code != 'F' && peek() == 'E') {
          ++pos_;
          item.e = number();
        }
        return item;
      default:
        fail("unsupported edit descriptor");
    }
  }

  std::string literal(char quote) {
    ++pos_;
    std::string text;
    for (;;) {
      if (pos_ >= fmt_.size()) fail("unterminated literal");
      const char c = fmt_[pos_++];
      if (c == quote) {
        if (pos_ < fmt_.size() && fmt_[pos_] == quote) {
          text.push_back(quote);
          ++pos_;
          continue;
        }
        return text;
      }
      text.push_back(c);
    }
  }

  std::string_view fmt_;
  std::size_t pos_ = 0;
};

// Runs a parsed format over the values, record by record.
class Writer {
 public:
  Writer(std::string_view fmt, std::span<const Value> values) : fmt_(fmt), values_(values) {}

  std::vector<std::string> run(const std::vector<Item>& items) {
    records_.emplace_back();
    bool has_data = false;
    std::size_t reversion = 0;  // index of the last top-level group
    for (std::size_t i = 0; i < items.size(); ++i) {
      if (items[i].kind == Item::Kind::group) reversion = i;
      has_data = has_data || contains_data(items[i]);
    }
    if (!walk(items, 0)) return std::move(records_);
    if (next_ < values_.size() && !has_data) {
      throw std::logic_error("fortran::format: values given to a format without data descriptors");
    }
    while (next_ < values_.size()) {
      new_record();
      if (!walk(items, reversion)) break;
    }
    return std::move(records_);
  }

 private:
  static bool contains_data(const Item& item) {
    if (item.kind == Item::Kind::data) return true;
    for (const auto& child : item.children) {
      if (contains_data(child)) return true;
    }
    return false;
  }

  [[noreturn]] void mismatch(const char* what) const {
    throw std::logic_error(std::string("fortran::format: ") + what + " for item " +
                           std::to_string(next_ + 1) + " of \"" + std::string(fmt_) + "\"");
  }

  // Returns false when the values ran out at a data descriptor.
  bool walk(const std::vector<Item>& items, std::size_t first) {
    for (std::size_t i = first; i < items.size(); ++i) {
      const Item& item = items[i];
      for (int r = 0; r < item.repeat; ++r) {
        switch (item.kind) {
          case Item::Kind::literal:
            flush_blanks();
            records_.back().append(item.text);
            break;
          case Item::Kind::blanks:
            blanks_ += static_cast<std::size_t>(item.w);
            break;
          case Item::Kind::slash:
            new_record();
            break;
          case Item::Kind::group:
            if (!walk(item.children, 0)) return false;
            break;
          case Item::Kind::data:
            if (next_ == values_.size()) return false;
            flush_blanks();
            edit(item, values_[next_]);
            ++next_;
            break;
        }
      }
    }
    return true;
  }

  void edit(const Item& item, const Value& value) {
    std::string& out = records_.back();
    switch (item.code) {
      case 'A':
        if (const auto* text = std::get_if<std::string_view>(&value)) {
          return append_a(out, *text, item.w);
        }
        mismatch("A needs text");
      case 'I':
        if (const auto* integer = std::get_if<std::int64_t>(&value)) {
          return append_i(out, *integer, item.w, item.d);
        }
        mismatch("I needs an integer");
      default:
        break;
    }
    const auto* real = std::get_if<double>(&value);
    if (real == nullptr) mismatch("F, E and ES need a double");
    if (item.code == 'F') return append_f(out, *real, item.w, item.d);
    append_e(out, *real, item.w, item.d, item.e, item.code == 'S');
  }

  // nX only moves the position: its blanks appear when something follows them
  // in the record, so a record never ends in blanks made by X.
  void flush_blanks() {
    records_.back().append(blanks_, ' ');
    blanks_ = 0;
  }
  void new_record() {
    blanks_ = 0;
    records_.emplace_back();
  }

  std::string_view fmt_;
  std::span<const Value> values_;
  std::size_t next_ = 0;
  std::size_t blanks_ = 0;
  std::vector<std::string> records_;
};

// ---------------------------------------------------------------------------
// List-directed output.

// A double as gfortran's list-directed output writes it: 17 significant digits
// in 25 columns, fixed point plus five blanks for 0.1 <= |x| < 1e17 (and zero),
// scientific with a three-digit exponent otherwise.
void append_list_real(std::string& out, double value) {
  constexpr int kWidth = 25;
  constexpr int kSignificant = 17;
  if (!std::isfinite(value)) return append_non_finite(out, value, kWidth);
  const bool negative = std::signbit(value);
  Scratch scratch(64);
  const std::string_view text =
      convert(scratch, std::fabs(value), std::chars_format::scientific, kSignificant - 1);
  const auto mark = text.find('e');
  int exponent = 0;
  std::from_chars(text.data() + mark + 1 + (text[mark + 1] == '+' ? 1 : 0),
                  text.data() + text.size(), exponent);
  // Significant digits without the point.
  std::array<char, kSignificant> digits;
  digits[0] = text[0];
  for (int i = 1; i < kSignificant; ++i)
    digits[static_cast<std::size_t>(i)] = text[1 + static_cast<std::size_t>(i)];
  const std::string_view all(digits.data(), digits.size());
  if (value == 0 || (exponent >= -1 && exponent < kSignificant)) {
    if (value == 0) exponent = 0;
    // Fixed point: exponent + 1 digits before the point (none for 0.1 .. 1).
    const int before = exponent + 1;
    if (before > 0) {
      append_real(out, kWidth - 5, negative, all.substr(0, static_cast<std::size_t>(before)),
                  all.substr(static_cast<std::size_t>(before)), {});
    } else {
      append_real(out, kWidth - 5, negative, {}, all, {});
    }
    out.append(5, ' ');
    return;
  }
  std::array<char, 16> field_buffer;
  std::size_t field_length = 0;
  exponent_field(field_buffer, field_length, exponent, 3);
  const std::string_view field(field_buffer.data(), field_length);
  append_real(out, kWidth, negative, all.substr(0, 1), all.substr(1), field);
}

}  // namespace

std::string edit_a(std::string_view text, int w) {
  std::string out;
  append_a(out, text, w);
  return out;
}

std::string edit_i(std::int64_t value, int w, int m) {
  std::string out;
  append_i(out, value, w, m);
  return out;
}

std::string edit_f(double value, int w, int d) {
  std::string out;
  append_f(out, value, w, d);
  return out;
}

std::string edit_e(double value, int w, int d, int e) {
  std::string out;
  append_e(out, value, w, d, e, false);
  return out;
}

std::string edit_es(double value, int w, int d, int e) {
  std::string out;
  append_e(out, value, w, d, e, true);
  return out;
}

std::vector<std::string> format_lines(std::string_view fmt, std::span<const Value> values) {
  const std::vector<Item> items = Parser(fmt).parse();
  return Writer(fmt, values).run(items);
}

std::string format(std::string_view fmt, std::span<const Value> values) {
  std::vector<std::string> records = format_lines(fmt, values);
  if (records.size() != 1) {
    throw std::logic_error("fortran::format: \"" + std::string(fmt) +
                           "\" writes several records; use format_lines");
  }
  return std::move(records.front());
}

std::string list_directed(std::span<const Value> values) {
  if (values.empty()) return {};  // an empty list writes an empty record
  std::string out(1, ' ');
  bool previous_text = false;
  bool first = true;
  for (const Value& value : values) {
    const bool text = std::holds_alternative<std::string_view>(value);
    if (!first && !(text && previous_text)) out.push_back(' ');
    first = false;
    previous_text = text;
    if (text) {
      out.append(std::get<std::string_view>(value));
    } else if (const auto* integer = std::get_if<std::int64_t>(&value)) {
      const bool fits = *integer >= std::numeric_limits<std::int32_t>::min() &&
                        *integer <= std::numeric_limits<std::int32_t>::max();
      append_i(out, *integer, fits ? 11 : 20, -1);
    } else {
      append_list_real(out, std::get<double>(value));
    }
  }
  return out;
}

}  // namespace norvik::fortran
