#include "common/list_input.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>
#include <string_view>
#include <system_error>

#include "common/error.h"
#include "common/fortran_format.h"

namespace norvik::fortran {
namespace {

constexpr int kEndOfRecord = -1;

// Characters that end a value: blanks, tab, comma, slash, carriage return and,
// as gfortran also takes it, a semicolon.
bool is_separator(int c) {
  return c == kEndOfRecord || c == ' ' || c == '\t' || c == ',' || c == '/' || c == '\r' ||
         c == ';';
}
bool is_blank(int c) {
  return c == ' ' || c == '\t' || c == '\r';
}
bool is_digit(int c) {
  return c >= '0' && c <= '9';
}
char lower(char c) {
  return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

// The error of a record beyond kMaxRecordLength; `number` is the record's own.
[[noreturn]] void record_too_long(int number) {
  const std::string text = "Record " + std::to_string(number) + " is longer than " +
                           std::to_string(kMaxRecordLength) + " characters.";
  throw Error(list_directed({std::string_view(text)}));
}

// Fetches record `number`: the characters up to the next line feed.  A last
// record without a line feed is still a record.  The stream's state ends as
// std::getline leaves it, which the caller reads (eof: no final line feed).
bool fetch_record(std::istream& in, std::string& record, int number) {
  using traits = std::istream::traits_type;
  record.clear();
  const std::istream::sentry ready(in, true);
  if (!ready) return false;
  std::streambuf& buffer = *in.rdbuf();
  bool any = false;
  for (;;) {
    const auto c = buffer.sbumpc();
    if (traits::eq_int_type(c, traits::eof())) {
      in.setstate(any ? std::ios::eofbit : std::ios::eofbit | std::ios::failbit);
      return any;
    }
    any = true;
    if (traits::eq_int_type(c, traits::to_int_type('\n'))) return true;
    if (record.size() == kMaxRecordLength) record_too_long(number);
    record.push_back(traits::to_char_type(c));
  }
}

// One list-directed READ statement's walk through the input.  It follows the
// gfortran runtime's handling of separators, which matters where a comma, a
// slash or a record end meet:
//   - the separator after a value is blanks, then at most one comma (or
//     semicolon) with the blanks after it, or a slash, or the end of the record;
//   - a record end is a blank, so a comma at the start of the next record still
//     belongs to that separator unless the separator already had a comma
//     ("1\n,2" is two values, "1,\n,2" has a null between them);
//   - a slash found while moving to the next record ends the read after the item
//     that follows it immediately ("1\n/2 3" reads 1 and 2 into three items).
class Scanner {
 public:
  Scanner(std::istream& in, int& records_read) : in_(in), records_read_(records_read) {}

  int peek() const {
    return pos_ < record_.size() ? static_cast<unsigned char>(record_[pos_]) : kEndOfRecord;
  }
  void advance() { ++pos_; }
  bool complete() const { return complete_; }

  bool next_record() {
    pos_ = 0;
    if (!fetch_record(in_, record_, records_read_ + 1)) {
      record_.clear();
      return false;
    }
    ++records_read_;
    terminated_ = !in_.eof();
    return true;
  }

  // gfortran ends a READ by looking at the character after the last one it
  // examined; when the READ ended on a slash that is the very last character of
  // a file without a final line feed, that look finds the end of the file and
  // the READ fails with end of file, values kept.
  bool ended_on_final_slash() const { return slash_ended_ && at_end_of_file(); }

  // At the end of a last record that has no line feed.
  bool at_end_of_file() const { return pos_ >= record_.size() && !terminated_; }

  void skip_blanks() {
    while (is_blank(peek())) advance();
  }

  // Gets to the next item.  Returns false at the end of the file.
  bool to_next_item(bool first_item) {
    skip_blanks();
    if (peek() != kEndOfRecord) return true;
    if (first_item) comma_ = false;
    return finish_separator();
  }

  // Consumes the separator after an item.
  void eat_separator() {
    skip_blanks();
    comma_ = false;
    const int c = peek();
    if (c == ',' || c == ';') {
      advance();
      comma_ = true;
      skip_blanks();
    } else if (c == '/') {
      advance();
      complete_ = true;
      slash_ended_ = true;
    }
  }

 private:
  // The rest of a separator that reached the end of its record: the following
  // records' leading blanks, blank records and at most one comma.
  bool finish_separator() {
    for (;;) {
      if (peek() == kEndOfRecord && !next_record()) return false;
      skip_blanks();
      const int c = peek();
      if (c == kEndOfRecord) continue;
      if (c == ',' && !comma_) {
        advance();
        skip_blanks();
        if (peek() == kEndOfRecord) continue;
      } else if (c == '/') {
        advance();
        complete_ = true;
      }
      return true;
    }
  }

 public:
  // A repeat count "r*" at the current position: consumed and returned (0 or
  // negative when out of range); nothing is consumed when there is none.
  std::optional<int> repeat_count() {
    std::size_t end = pos_;
    while (end < record_.size() && is_digit(record_[end])) ++end;
    if (end == pos_ || end >= record_.size() || record_[end] != '*') return std::nullopt;
    long long count = 0;
    for (std::size_t i = pos_; i < end; ++i) {
      count = std::min(count * 10 + (record_[i] - '0'), 1LL << 40);
    }
    pos_ = end + 1;
    return count > std::numeric_limits<std::int32_t>::max() ? -1 : static_cast<int>(count);
  }

  // The characters up to the next separator.
  std::string_view token() {
    const std::size_t begin = pos_;
    while (!is_separator(peek())) advance();
    return std::string_view(record_).substr(begin, pos_ - begin);
  }

  // A quoted text (the opening quote is the current character); a doubled quote
  // stands for one, and the text may continue on the following records (the
  // record ends themselves are not part of it).  The end of the file ends an
  // unterminated text, as with gfortran.
  void quoted(std::string& text) {
    const int quote = peek();
    advance();
    for (;;) {
      const int c = peek();
      if (c == kEndOfRecord) {
        if (!next_record()) return;
        continue;
      }
      advance();
      if (c == quote) {
        if (peek() == quote) {
          advance();
          text.push_back(static_cast<char>(quote));
          continue;
        }
        return;
      }
      if (c != '\r') text.push_back(static_cast<char>(c));
    }
  }

 private:
  std::istream& in_;
  int& records_read_;
  std::string record_;
  std::size_t pos_ = 0;
  bool comma_ = false;        // the last separator held a comma
  bool complete_ = false;     // a slash ended the read
  bool slash_ended_ = false;  // ... right after the separator of an item
  bool terminated_ = true;    // the current record ended with a line feed
};

std::optional<std::int32_t> parse_integer(std::string_view text) {
  std::size_t i = 0;
  bool negative = false;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) negative = text[i++] == '-';
  if (i == text.size()) return std::nullopt;
  std::int64_t value = 0;
  for (; i < text.size(); ++i) {
    if (!is_digit(text[i])) return std::nullopt;
    value = value * 10 + (text[i] - '0');
    if (value > std::int64_t{std::numeric_limits<std::int32_t>::max()} + 1) return std::nullopt;
  }
  if (negative) value = -value;
  if (value > std::numeric_limits<std::int32_t>::max()) return std::nullopt;
  return static_cast<std::int32_t>(value);
}

// A real in any of the list-directed forms: [sign] digits [. digits] [exponent],
// where the exponent is a letter E, D or Q with an optional sign, or a sign
// alone, followed by digits; or Inf, Infinity, NaN.
std::optional<double> parse_real(std::string_view text) {
  std::size_t i = 0;
  bool negative = false;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) negative = text[i++] == '-';
  std::string rest;
  for (std::size_t k = i; k < text.size(); ++k) rest.push_back(lower(text[k]));
  if (rest == "inf" || rest == "infinity") {
    return negative ? -std::numeric_limits<double>::infinity()
                    : std::numeric_limits<double>::infinity();
  }
  if (rest == "nan") return std::numeric_limits<double>::quiet_NaN();
  // Mantissa.
  std::string normal;
  std::size_t digits = 0;
  while (i < text.size() && is_digit(text[i])) {
    normal.push_back(text[i++]);
    ++digits;
  }
  if (i < text.size() && text[i] == '.') {
    normal.push_back(text[i++]);
    while (i < text.size() && is_digit(text[i])) {
      normal.push_back(text[i++]);
      ++digits;
    }
  }
  if (digits == 0) return std::nullopt;
  // Exponent.
  int exponent_sign = 1;
  if (i < text.size()) {
    const char c = lower(text[i]);
    if (c == 'e' || c == 'd' || c == 'q') {
      ++i;
      if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
        exponent_sign = text[i] == '-' ? -1 : 1;
        normal += text[i] == '-' ? "e-" : "e+";
        ++i;
      } else {
        normal += "e+";
      }
    } else if (c == '+' || c == '-') {
      exponent_sign = c == '-' ? -1 : 1;
      normal += c == '-' ? "e-" : "e+";
      ++i;
    } else {
      return std::nullopt;
    }
    if (i == text.size()) return std::nullopt;
    for (; i < text.size(); ++i) {
      if (!is_digit(text[i])) return std::nullopt;
      normal.push_back(text[i]);
    }
  }
  double value = 0;
  const auto result = std::from_chars(normal.data(), normal.data() + normal.size(), value);
  if (result.ec == std::errc::result_out_of_range) {
    value = exponent_sign > 0 ? std::numeric_limits<double>::infinity() : 0.0;
  } else if (result.ec != std::errc() || result.ptr != normal.data() + normal.size()) {
    return std::nullopt;
  }
  return negative ? -value : value;
}

void store_text(const TextTarget& target, std::string_view text) {
  const auto length = static_cast<std::size_t>(target.length);
  target.text->assign(text.substr(0, std::min(text.size(), length)));
  target.text->resize(length, ' ');
}

// A value waiting to be handed out again by a repeat count.
struct Pending {
  enum class Kind { null, integer, real, text } kind = Kind::null;
  int count = 0;
  std::int32_t integer = 0;
  double real = 0;
  std::string text;
};

Pending::Kind kind_of(const Target& target) {
  if (std::holds_alternative<std::int32_t*>(target)) return Pending::Kind::integer;
  if (std::holds_alternative<double*>(target)) return Pending::Kind::real;
  return Pending::Kind::text;
}

void store(const Target& target, const Pending& value) {
  switch (value.kind) {
    case Pending::Kind::null:
      return;
    case Pending::Kind::integer:
      *std::get<std::int32_t*>(target) = value.integer;
      return;
    case Pending::Kind::real:
      *std::get<double*>(target) = value.real;
      return;
    case Pending::Kind::text:
      store_text(std::get<TextTarget>(target), value.text);
      return;
  }
}

}  // namespace

ReadStatus ListReader::read(std::span<const Target> targets) {
  Scanner scan(in_, records_read_);
  if (!scan.next_record()) return ReadStatus::end_of_file;
  Pending pending;
  bool first_item = true;
  for (const Target& target : targets) {
    const Pending::Kind kind = kind_of(target);
    if (pending.count > 0) {
      // A repeated value must suit every target it is handed to.
      if (pending.kind != Pending::Kind::null && pending.kind != kind) {
        return ReadStatus::bad_value;
      }
      store(target, pending);
      --pending.count;
      continue;
    }
    if (scan.complete()) continue;
    if (!scan.to_next_item(first_item)) return ReadStatus::end_of_file;
    first_item = false;
    pending = Pending{};
    pending.count = 1;
    // An optional repeat count: digits followed by '*'; "r*" alone stands for
    // r null values.
    if (const auto repeat = scan.repeat_count()) {
      if (*repeat <= 0) return ReadStatus::bad_value;
      pending.count = *repeat;
    }
    const int start = scan.peek();
    // An item that would begin at the end of the file (after "r*" or a slash on
    // a last record without a line feed) meets the end of the file.
    if (start == kEndOfRecord && scan.at_end_of_file()) return ReadStatus::end_of_file;
    if (is_separator(start)) {  // a null value (or r of them)
      store(target, pending);
      --pending.count;
      scan.eat_separator();
      continue;
    }
    const bool quoted = kind == Pending::Kind::text && (start == '\'' || start == '"');
    const std::string_view item = quoted ? std::string_view{} : scan.token();
    pending.kind = kind;
    switch (kind) {
      case Pending::Kind::integer: {
        const auto value = parse_integer(item);
        if (!value) return ReadStatus::bad_value;
        pending.integer = *value;
        break;
      }
      case Pending::Kind::real: {
        const auto value = parse_real(item);
        if (!value) return ReadStatus::bad_value;
        pending.real = *value;
        break;
      }
      case Pending::Kind::text:
        if (quoted) {
          scan.quoted(pending.text);
          if (!is_separator(scan.peek())) return ReadStatus::bad_value;
        } else {
          pending.text = std::string(item);
        }
        break;
      case Pending::Kind::null:
        break;
    }
    store(target, pending);
    --pending.count;
    scan.eat_separator();
  }
  return scan.ended_on_final_slash() ? ReadStatus::end_of_file : ReadStatus::ok;
}

ReadStatus ListReader::read_record(std::string& text, int length) {
  // Here a carriage return ends the record, alone or followed by a line feed, as
  // in gfortran's formatted reads; list-directed reads take it as a blank.
  using traits = std::istream::traits_type;
  std::string record;
  bool any = false;
  for (;;) {
    const auto c = in_.get();
    if (traits::eq_int_type(c, traits::eof())) break;
    any = true;
    if (c == '\n') break;
    if (c == '\r') {
      if (traits::eq_int_type(in_.peek(), traits::to_int_type('\n'))) in_.get();
      break;
    }
    if (record.size() == kMaxRecordLength) record_too_long(records_read_ + 1);
    record.push_back(traits::to_char_type(c));
  }
  if (!any) return ReadStatus::end_of_file;
  ++records_read_;
  const auto n = static_cast<std::size_t>(std::max(length, 0));
  text.assign(record, 0, std::min(record.size(), n));
  text.resize(n, ' ');
  return ReadStatus::ok;
}

}  // namespace norvik::fortran
