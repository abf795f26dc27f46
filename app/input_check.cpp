#include "input_check.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <limits>
#include <optional>
#include <string_view>
#include <system_error>
#include <unordered_map>

#include "host_job.h"

namespace host {

namespace {

namespace fs = std::filesystem;

// ---------------------------------------------------------------------------
// Records.  A file is read whole (it is bounded) and split at line feeds; a
// carriage return before a line feed belongs to the line end.  The library
// takes a lone carriage return as a record end in a comment and as a blank in
// a value record, so such a file is refused rather than guessed at.

struct TextFile {
  std::string name;  // as the user wrote it, for the messages
  std::vector<std::string> records;
  bool last_terminated = true;  // the last record ends with a line feed
};

std::string quoted_for_message(std::string_view text) {
  std::string out = "'";
  for (const char c : text) {
    const auto u = static_cast<unsigned char>(c);
    if (u < 0x20 || u == 0x7f) {
      char hex[8];
      std::snprintf(hex, sizeof hex, "\\x%02x", u);
      out += hex;
    } else {
      out.push_back(c);
    }
  }
  return out + "'";
}

bool load(const std::string& path, TextFile& file, std::vector<std::string>& problems) {
  file.name = path;
  std::ifstream in(path, std::ios::binary);
  std::string data;
  char chunk[65536];
  while (data.size() <= kMaxInputBytes && in.read(chunk, sizeof chunk).gcount() > 0) {
    data.append(chunk, static_cast<std::size_t>(in.gcount()));
  }
  if (in.bad() || data.size() > kMaxInputBytes) {
    problems.push_back(path + ": cannot be read whole (it grew past " +
                       std::to_string(kMaxInputBytes >> 20) + " MiB or a read failed)");
    return false;
  }
  std::size_t begin = 0;
  while (begin < data.size()) {
    std::size_t end = data.find('\n', begin);
    file.last_terminated = end != std::string::npos;
    if (end == std::string::npos) end = data.size();
    std::string record = data.substr(begin, end - begin);
    if (!record.empty() && record.back() == '\r') record.pop_back();
    const int number = static_cast<int>(file.records.size()) + 1;
    if (record.size() > kMaxRecordLength) {
      problems.push_back(path + ", record " + std::to_string(number) + ": " +
                         std::to_string(record.size()) + " characters, more than the " +
                         std::to_string(kMaxRecordLength) +
                         " a record may hold; is this the right file?");
      return false;
    }
    if (record.find('\r') != std::string::npos) {
      problems.push_back(path + ", record " + std::to_string(number) +
                         ": a carriage return inside the line; save the file with Unix or "
                         "Windows line ends");
      return false;
    }
    file.records.push_back(std::move(record));
    begin = end + 1;
  }
  return true;
}

// ---------------------------------------------------------------------------
// Free-format values, read as the library reads them (docs/text-io.md): one
// read takes its values from as many records as it needs, blanks, a comma or a
// semicolon separate values, two commas give a null value (the setting keeps
// its default), a slash ends the read, r*value repeats a value, text may be
// quoted.  Unlike the library, a value keeps its whole text, so that text the
// library would cut can be refused.

enum class Kind { integer, real, text };

struct Value {
  bool null = true;
  Kind kind = Kind::text;
  std::int32_t integer = 0;
  double real = 0.0;
  std::string text;   // the whole text of a text value
  std::string token;  // as written, for the messages
  int record = 0;     // the record it came from
};

enum class Status { ok, end_of_file, bad_value };

struct Read {
  Status status = Status::ok;
  std::vector<Value> values;  // one per target, null where the read gave none
  int first_record = 0;       // the record where the read started
  int last_record = 0;        // ... and where it ended
  std::string bad_token;      // the value that did not suit its target
  Kind bad_kind = Kind::text;
  bool more_values = false;  // the last record holds values that the read drops
};

constexpr int kEndOfRecord = -1;

bool is_separator(int c) {
  return c == kEndOfRecord || c == ' ' || c == '\t' || c == ',' || c == '/' || c == ';';
}
bool is_blank(int c) {
  return c == ' ' || c == '\t';
}
bool is_digit(int c) {
  return c >= '0' && c <= '9';
}
char lower(char c) {
  return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

std::optional<std::int32_t> parse_integer(std::string_view text) {
  std::size_t i = 0;
  bool negative = false;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) negative = text[i++] == '-';
  if (i == text.size()) return std::nullopt;
  std::int64_t value = 0;
  for (; i < text.size(); ++i) {
    if (!is_digit(text[i])) return std::nullopt;
    value = value * 10 + (text[i] - '0');
    if (value > std::int64_t{1} << 31) return std::nullopt;
  }
  if (negative) value = -value;
  if (value > std::numeric_limits<std::int32_t>::max()) return std::nullopt;
  return static_cast<std::int32_t>(value);
}

// [sign] digits [. digits] [exponent], the exponent a letter E, D or Q with an
// optional sign, or a sign alone; or Inf, Infinity, NaN in any case.
std::optional<double> parse_real(std::string_view text) {
  std::size_t i = 0;
  bool negative = false;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) negative = text[i++] == '-';
  std::string rest;
  for (std::size_t k = i; k < text.size(); ++k) rest.push_back(lower(text[k]));
  const double inf = std::numeric_limits<double>::infinity();
  if (rest == "inf" || rest == "infinity") return negative ? -inf : inf;
  if (rest == "nan") return std::numeric_limits<double>::quiet_NaN();
  std::string normal;
  std::size_t digits = 0;
  for (; i < text.size() && is_digit(text[i]); ++i, ++digits) normal.push_back(text[i]);
  if (i < text.size() && text[i] == '.') {
    normal.push_back(text[i++]);
    for (; i < text.size() && is_digit(text[i]); ++i, ++digits) normal.push_back(text[i]);
  }
  if (digits == 0) return std::nullopt;
  bool positive_exponent = true;
  if (i < text.size()) {
    const char c = lower(text[i]);
    if (c == 'e' || c == 'd' || c == 'q') {
      ++i;
      if (i < text.size() && (text[i] == '+' || text[i] == '-'))
        positive_exponent = text[i++] == '+';
    } else if (c == '+' || c == '-') {
      positive_exponent = c == '+';
      ++i;
    } else {
      return std::nullopt;
    }
    normal += positive_exponent ? "e+" : "e-";
    if (i == text.size()) return std::nullopt;
    for (; i < text.size(); ++i) {
      if (!is_digit(text[i])) return std::nullopt;
      normal.push_back(text[i]);
    }
  }
  double value = 0.0;
  const auto [end, ec] = std::from_chars(normal.data(), normal.data() + normal.size(), value);
  if (ec == std::errc::result_out_of_range) {
    value = positive_exponent ? inf : 0.0;
  } else if (ec != std::errc() || end != normal.data() + normal.size()) {
    return std::nullopt;
  }
  return negative ? -value : value;
}

class ListFile {
 public:
  explicit ListFile(const TextFile& file) : file_(file) {}

  // A comment record, taken whole; false at the end of the file.
  bool comment() {
    if (next_ >= file_.records.size()) return false;
    ++next_;
    return true;
  }
  // The number of records taken so far (the last one's number).
  int records_read() const { return static_cast<int>(next_); }

  Read read(std::initializer_list<Kind> kinds);

 private:
  int peek() const {
    return pos_ < record_->size() ? static_cast<unsigned char>((*record_)[pos_]) : kEndOfRecord;
  }
  // The next record becomes the current one; past the last, an empty one.
  bool next_record() {
    static const std::string none;
    pos_ = 0;
    if (next_ >= file_.records.size()) {
      record_ = &none;
      return false;
    }
    record_ = &file_.records[next_++];
    return true;
  }
  bool at_end_of_file() const {
    return pos_ >= record_->size() && next_ == file_.records.size() && !file_.last_terminated;
  }
  void skip_blanks() {
    while (is_blank(peek())) ++pos_;
  }
  // Moves to the next item across record ends: the following records' leading
  // blanks, blank records and at most one comma; a slash there ends the read
  // after the item right behind it.  False at the end of the file.
  bool to_next_item(bool first_item) {
    skip_blanks();
    if (peek() != kEndOfRecord) return true;
    if (first_item) comma_ = false;
    for (;;) {
      if (peek() == kEndOfRecord && !next_record()) return false;
      skip_blanks();
      const int c = peek();
      if (c == kEndOfRecord) continue;
      if (c == ',' && !comma_) {
        ++pos_;
        skip_blanks();
        if (peek() == kEndOfRecord) continue;
      } else if (c == '/') {
        ++pos_;
        complete_ = true;
      }
      return true;
    }
  }
  void eat_separator() {
    skip_blanks();
    comma_ = false;
    const int c = peek();
    if (c == ',' || c == ';') {
      ++pos_;
      comma_ = true;
      skip_blanks();
    } else if (c == '/') {
      ++pos_;
      complete_ = true;
      slash_ended_ = true;
    }
  }
  // "r*" at the current position: consumed, its count returned (0 when out of range).
  std::optional<int> repeat_count() {
    std::size_t end = pos_;
    while (end < record_->size() && is_digit((*record_)[end])) ++end;
    if (end == pos_ || end >= record_->size() || (*record_)[end] != '*') return std::nullopt;
    long long count = 0;
    for (std::size_t i = pos_; i < end; ++i) {
      count = std::min(count * 10 + ((*record_)[i] - '0'), 1LL << 40);
    }
    pos_ = end + 1;
    return count > std::numeric_limits<std::int32_t>::max() ? 0 : static_cast<int>(count);
  }
  std::string token() {
    const std::size_t begin = pos_;
    while (!is_separator(peek())) ++pos_;
    return record_->substr(begin, pos_ - begin);
  }
  // Quoted text, which may go on over record ends (not part of it); the end of
  // the file ends it.
  std::string quoted() {
    std::string text;
    const int quote = peek();
    ++pos_;
    for (;;) {
      const int c = peek();
      if (c == kEndOfRecord) {
        if (!next_record()) return text;
        continue;
      }
      ++pos_;
      if (c == quote) {
        if (peek() != quote) return text;
        ++pos_;
      }
      text.push_back(static_cast<char>(c));
    }
  }

  const TextFile& file_;
  std::size_t next_ = 0;
  const std::string* record_ = nullptr;
  std::size_t pos_ = 0;
  bool comma_ = false, complete_ = false, slash_ended_ = false;
};

Read ListFile::read(std::initializer_list<Kind> kinds) {
  Read r;
  r.values.resize(kinds.size());
  comma_ = complete_ = slash_ended_ = false;
  if (!next_record()) {
    r.status = Status::end_of_file;
    r.first_record = r.last_record = records_read() + 1;
    return r;
  }
  r.first_record = records_read();
  auto fail = [&](Status status) {
    r.status = status;
    r.last_record = records_read();
    return r;
  };
  auto bad = [&](std::string token, Kind kind) {
    r.bad_token = std::move(token);
    r.bad_kind = kind;
    return fail(Status::bad_value);
  };
  Value pending;
  Kind pending_kind = Kind::text;
  int pending_count = 0;
  bool first_item = true;
  std::size_t index = 0;
  for (const Kind kind : kinds) {
    Value& target = r.values[index++];
    if (pending_count > 0) {
      if (!pending.null && pending_kind != kind) return bad(pending.token, kind);
      target = pending;
      --pending_count;
      continue;
    }
    if (complete_) continue;
    if (!to_next_item(first_item)) return fail(Status::end_of_file);
    first_item = false;
    pending = Value{};
    pending.record = records_read();
    pending_count = 1;
    const std::size_t item_start = pos_;
    if (const auto repeat = repeat_count()) {
      if (*repeat <= 0) return bad(record_->substr(item_start, pos_ - item_start), kind);
      pending_count = *repeat;
    }
    const int start = peek();
    if (start == kEndOfRecord && at_end_of_file()) return fail(Status::end_of_file);
    if (is_separator(start)) {
      target = pending;
      --pending_count;
      eat_separator();
      continue;
    }
    pending.null = false;
    pending.kind = pending_kind = kind;
    const bool is_quoted = kind == Kind::text && (start == '\'' || start == '"');
    if (is_quoted) {
      pending.text = quoted();
      pending.token = pending.text;
      if (!is_separator(peek())) return bad(pending.text + token(), kind);
    } else {
      pending.token = token();
      if (kind == Kind::integer) {
        const auto v = parse_integer(pending.token);
        if (!v) return bad(pending.token, kind);
        pending.integer = *v;
      } else if (kind == Kind::real) {
        const auto v = parse_real(pending.token);
        if (!v) return bad(pending.token, kind);
        pending.real = *v;
      } else {
        pending.text = pending.token;
      }
    }
    target = pending;
    --pending_count;
    eat_separator();
  }
  r.last_record = records_read();
  // A read that ends on a slash which is the very last character of a file
  // without a final line feed meets the end of the file, as in the library.
  if (slash_ended_ && at_end_of_file()) return fail(Status::end_of_file);
  if (!complete_) {
    skip_blanks();
    r.more_values = peek() != kEndOfRecord;
  }
  return r;
}

// ---------------------------------------------------------------------------
// The checks.

constexpr std::array<std::string_view, 54> kElements = {
    "H",  "He", "Li", "Be", "B",  "C",  "N",  "O",  "F",  "Ne", "Na", "Mg", "Al", "Si",
    "P",  "S",  "Cl", "Ar", "K",  "Ca", "Sc", "Ti", "V",  "Cr", "Mn", "Fe", "Co", "Ni",
    "Cu", "Zn", "Ga", "Ge", "As", "Se", "Br", "Kr", "Rb", "Sr", "Y",  "Zr", "Nb", "Mo",
    "Tc", "Ru", "Rh", "Pd", "Ag", "Cd", "In", "Sn", "Sb", "Te", "I",  "Xe"};

// The basis-set names the library recognises, exactly as it compares them.
constexpr std::array<std::string_view, 22> kBasisNames = {
    "STO-3G",   "3-21G",     "3-21GC",    "6-21G",     "6-31G",   "6-31GC",
    "6-31Gx",   "6-31GxC",   "6-31Gxx",   "6-31GxxC",  "6-31+G",  "6-31+GC",
    "6-31+Gx",  "6-31+GxC",  "6-31+Gxx",  "6-31+GxxC", "6-31++G", "6-31++GC",
    "6-31++Gx", "6-31++GxC", "6-31++Gxx", "6-31++GxxC"};

std::string trim_blanks(std::string_view text) {
  const auto end = text.find_last_not_of(' ');
  return end == std::string_view::npos ? std::string() : std::string(text.substr(0, end + 1));
}

template <std::size_t N>
std::string joined(const std::array<std::string_view, N>& names) {
  std::string out;
  for (const auto name : names) out += (out.empty() ? "" : ", ") + std::string(name);
  return out;
}

std::string number_text(double value) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%g", value);
  return buffer;
}

// Reads one file's records in order and collects the problems, each with the
// file, the record and what the record holds.
class Checker {
 public:
  Checker(const TextFile& file, std::vector<std::string>& problems)
      : file_(file), list_(file), problems_(problems) {}

  bool failed() const { return failed_; }
  // Said with a value that does not fit its record: the layout the file is read with.
  void set_layout(std::string layout) { layout_ = std::move(layout); }

  void problem(int record, const std::string& meaning, const std::string& text) {
    problems_.push_back(file_.name + ", record " + std::to_string(record) + " (" + meaning +
                        "): " + text);
  }

  // The comment record and the value record after it.  When the file cannot be
  // read on (it ends, or a value does not suit its place) the problem is noted
  // and every later read returns nothing.
  std::optional<Read> record(const std::string& meaning, std::initializer_list<Kind> kinds) {
    if (failed_) return std::nullopt;
    if (!list_.comment()) {
      ends_before(list_.records_read() + 1, meaning);
      return std::nullopt;
    }
    Read r = list_.read(kinds);
    if (r.status == Status::end_of_file) {
      ends_before(r.last_record, meaning);
      return std::nullopt;
    }
    if (r.status == Status::bad_value) {
      bad_value(r, meaning);
      return std::nullopt;
    }
    if (r.more_values) {
      problem(r.last_record, meaning,
              "more values than the " + std::to_string(kinds.size()) + " this record takes" +
                  layout_ + "; remove the others, or put a slash before a remark");
    }
    return r;
  }

  // A comment record alone (the one before the atoms).
  void comment(const std::string& meaning) {
    if (!failed_ && !list_.comment()) ends_before(list_.records_read() + 1, meaning);
  }

  // An atom record; nothing at the end of the file.  An atom whose symbol is
  // followed by the end of the file, or by the next record, has lost its
  // coordinates, whatever the read met there.
  std::optional<Read> atom(int number) {
    if (failed_) return std::nullopt;
    Read r = list_.read({Kind::text, Kind::real, Kind::real, Kind::real});
    const std::string meaning = "atom " + std::to_string(number);
    const Value& symbol = r.values[0];
    const bool cut = r.status == Status::end_of_file ||
                     (r.status == Status::bad_value && r.last_record > symbol.record);
    const bool all_read =
        std::none_of(r.values.begin(), r.values.end(), [](const Value& v) { return v.null; });
    if (r.status == Status::end_of_file && all_read) {
      problem(symbol.record, meaning,
              "a slash that is the last character of the file makes the library drop this atom; "
              "end the record with a line end");
      failed_ = true;
      return std::nullopt;
    }
    if (r.status != Status::ok && !symbol.null && cut) {
      problem(symbol.record, meaning, missing_coordinates(symbol.text, r.values[1].null));
      failed_ = true;
      return std::nullopt;
    }
    if (r.status == Status::end_of_file) return std::nullopt;
    if (r.status == Status::bad_value) {
      bad_value(r, meaning);
      return std::nullopt;
    }
    return r;
  }

  static std::string missing_coordinates(const std::string& symbol, bool none) {
    return quoted_for_message(symbol) + (none ? " has no coordinates" : " lacks a coordinate") +
           "; an atom record needs a symbol and x y z on one line";
  }

  int records_read() const { return list_.records_read(); }

 private:
  void ends_before(int record, const std::string& meaning) {
    problem(record, meaning,
            "the file ends before this record; the records alternate between a comment and "
            "values" +
                layout_);
    failed_ = true;
  }
  void bad_value(const Read& r, const std::string& meaning) {
    std::string what = quoted_for_message(r.bad_token);
    if (r.bad_kind == Kind::integer) {
      what += " is not a whole number";
    } else if (r.bad_kind == Kind::real) {
      what += " is not a number";
    } else {
      what += " is not a text value";
    }
    if (!r.bad_token.empty() && r.bad_token[0] == '#') {
      what += "; a comment record is out of place, or the record before it lacks a value" + layout_;
    } else if (r.bad_kind == Kind::real) {
      what += "; write a number such as 0.5, -1.2e-3 or 1.0D-6";
    } else {
      what += "; quote text that holds blanks, commas or slashes";
    }
    problem(r.last_record, meaning, what);
    failed_ = true;
  }

  const TextFile& file_;
  ListFile list_;
  std::vector<std::string>& problems_;
  std::string layout_;
  bool failed_ = false;
};

// A text value that the library takes into `length` characters: no control
// characters (a NUL would end it early), not longer than the field.
bool check_text(Checker& c, const Value& v, const std::string& meaning, std::size_t length) {
  if (v.null) return true;
  const bool control = std::any_of(v.text.begin(), v.text.end(), [](char ch) {
    const auto u = static_cast<unsigned char>(ch);
    return u < 0x20 || u == 0x7f;
  });
  if (control) {
    c.problem(v.record, meaning,
              quoted_for_message(v.text) + " holds a control character; write plain text");
    return false;
  }
  if (trim_blanks(v.text).size() > length) {
    c.problem(v.record, meaning,
              quoted_for_message(v.text) + " is longer than the " + std::to_string(length) +
                  " characters the library keeps; shorten it");
    return false;
  }
  return true;
}

template <std::size_t N>
void check_keyword(Checker& c, const Value& v, const std::string& meaning,
                   const std::array<std::string_view, N>& allowed, bool blank_allowed) {
  if (!check_text(c, v, meaning, kNameLength)) return;
  const std::string text = trim_blanks(v.text);
  if (blank_allowed && text.empty()) return;
  if (std::find(allowed.begin(), allowed.end(), text) != allowed.end()) return;
  c.problem(
      v.record, meaning,
      quoted_for_message(text) + " is not one of " + joined(allowed) + " (letter case counts)");
}

// The accepted values of a number.
struct Range {
  double low, high;  // inclusive bounds
  bool low_open;     // low itself is refused
  const char* unit;  // " eV", written after the value
  std::string advice;
};

void check_range(Checker& c, const Value& v, const std::string& meaning, const std::string& subject,
                 const Range& range) {
  if (v.null) return;
  const double x = v.kind == Kind::integer ? v.integer : v.real;
  if (!std::isfinite(x)) {
    c.problem(v.record, meaning,
              subject + " " + v.token + " is not a finite number; " + range.advice);
  } else if (x < range.low || x > range.high || (range.low_open && x == range.low)) {
    c.problem(v.record, meaning,
              subject + " " + v.token + range.unit + " is out of range; " + range.advice);
  }
}

void check_molecule(const TextFile& file, InputFacts& facts, std::vector<std::string>& problems) {
  Checker c(file, problems);

  if (auto r = c.record("theory", {Kind::text})) {
    const Value& v = r->values[0];
    if (check_text(c, v, "theory", kKeywordLength) && trim_blanks(v.text).empty()) {
      c.problem(r->first_record, "theory",
                "no theory keyword; write HF, MP2, RPA, TDA or a functional name");
    }
    facts.theory = trim_blanks(v.text);
    facts.theory_record = r->first_record;
  }
  if (auto r = c.record("basis set", {Kind::text})) {
    const Value& v = r->values[0];
    if (check_text(c, v, "basis set", kNameLength)) {
      const std::string name = trim_blanks(v.text);
      facts.basis = name;
      if (std::find(kBasisNames.begin(), kBasisNames.end(), name) == kBasisNames.end()) {
        c.problem(r->first_record, "basis set",
                  quoted_for_message(name) + " is not a basis set of the library; write one of " +
                      joined(kBasisNames) + " (x stands for the asterisk)");
      }
    }
  }
  if (auto r = c.record("molecule name, optimisation cycles", {Kind::text, Kind::integer})) {
    check_text(c, r->values[0], "molecule name", kNameLength);
    check_range(c, r->values[1], "optimisation cycles", "geometry-optimisation cycles",
                {0, kMaxIterations, false, "",
                 "write 0 for a single point, or at most " + std::to_string(kMaxIterations)});
    if (!r->values[1].null) facts.optimisation_cycles = r->values[1].integer;
  }
  if (auto r = c.record("optimiser", {Kind::integer})) {
    check_range(c, r->values[0], "optimiser", "optimiser",
                {0, 2, false, "",
                 "write 0 (conjugate gradient), 1 (steepest descent) or 2 (quasi-Newton)"});
  }
  if (auto r = c.record("vibrations", {Kind::integer})) {
    check_range(c, r->values[0], "vibrations", "vibrational analysis",
                {0, 2, false, "",
                 "write 0 (none), 1 (vibrations with infrared intensities and thermochemistry) "
                 "or 2 (also Raman activities)"});
    if (!r->values[0].null) facts.vibrations = r->values[0].integer;
  }
  if (auto r = c.record("start-density file", {Kind::text})) {
    if (check_text(c, r->values[0], "start-density file", kPathLength)) {
      facts.start_density = trim_blanks(r->values[0].text);
    }
  }
  static constexpr std::array<std::string_view, 5> kPopulation = {"none", "Mulliken", "Lowdin",
                                                                  "both", "shells"};
  if (auto r = c.record("population analysis", {Kind::text})) {
    check_keyword(c, r->values[0], "population analysis", kPopulation, true);
  }
  Value ghost_first, ghost_last;
  if (auto r = c.record("ghost atoms", {Kind::integer, Kind::integer})) {
    ghost_first = r->values[0];
    ghost_last = r->values[1];
    if (ghost_first.null) ghost_first.record = r->first_record;
  }
  static constexpr std::array<std::string_view, 2> kBsse = {"none", "counterpoise"};
  bool counterpoise = false;
  int counterpoise_record = 0;
  if (auto r = c.record("counterpoise", {Kind::text})) {
    check_keyword(c, r->values[0], "counterpoise", kBsse, true);
    counterpoise = !r->values[0].null && trim_blanks(r->values[0].text) == "counterpoise";
    counterpoise_record = r->first_record;
  }
  int charge = 0;
  if (auto r = c.record("charge", {Kind::integer})) {
    if (!r->values[0].null) charge = static_cast<int>(r->values[0].integer);
  }
  if (auto r = c.record("multiplicity", {Kind::integer})) {
    check_range(c, r->values[0], "multiplicity", "spin multiplicity",
                {1, std::numeric_limits<int>::max(), false, "",
                 "write 2S+1: 1 for a singlet, 2 for a doublet, ..."});
    if (!r->values[0].null) facts.multiplicity = static_cast<int>(r->values[0].integer);
    facts.multiplicity_record = r->first_record;
  }
  c.comment("atoms");
  if (c.failed()) return;

  // The atoms, one per record to the end of the file.
  struct Placed {
    double x, y, z;
    int number, record;
  };
  std::vector<Placed> placed;
  std::vector<std::string> symbols;
  std::vector<int> nuclear_charges;  // 0 for a symbol that is no element
  for (int number = 1;; ++number) {
    const auto r = c.atom(number);
    if (!r) break;
    facts.natom = number;
    const std::string meaning = "atom " + std::to_string(number);
    const Value& symbol = r->values[0];
    const int record = symbol.record;
    bool complete = true;
    for (std::size_t k = 1; k < 4; ++k) {
      complete = complete && !r->values[k].null && r->values[k].record == record;
    }
    if (!complete) {
      c.problem(record, meaning,
                Checker::missing_coordinates(symbol.text,
                                             r->values[1].null || r->values[1].record != record));
      continue;
    }
    if (r->more_values) {
      c.problem(record, meaning,
                "more than a symbol and x y z; an atom record holds these four values only");
    }
    const std::string name = trim_blanks(symbol.text);
    symbols.push_back(name);
    const auto element = std::find(kElements.begin(), kElements.end(), name);
    nuclear_charges.push_back(
        element == kElements.end() ? 0 : static_cast<int>(element - kElements.begin()) + 1);
    if (element == kElements.end()) {
      c.problem(record, meaning,
                quoted_for_message(symbol.text) +
                    " is not an element symbol (H to Xe, letter case as in Cl)");
    }
    bool finite = true;
    for (std::size_t k = 1; k < 4; ++k) {
      const double x = r->values[k].real;
      if (!std::isfinite(x) || std::abs(x) > kMaxCoordinate) {
        c.problem(record, meaning,
                  "coordinate " + r->values[k].token + " is not a finite position within " +
                      number_text(kMaxCoordinate) + " A of the origin; write x y z in angstrom");
        finite = false;
        break;
      }
    }
    if (finite) {
      placed.push_back({r->values[1].real, r->values[2].real, r->values[3].real, number, record});
    }
  }
  if (c.failed()) return;
  if (facts.natom == 0) {
    c.problem(c.records_read(), "atoms",
              "no atom records; write one atom per record: symbol x y z");
    return;
  }

  // Ghost atoms: 0 0 for none, or a range of existing atoms.
  const int first = ghost_first.null ? 0 : ghost_first.integer;
  const int last = ghost_last.null ? 0 : ghost_last.integer;
  const bool no_ghosts = first == 0 && last == 0;
  if (!no_ghosts && !(first >= 1 && first <= last && last <= facts.natom)) {
    c.problem(ghost_first.record, "ghost atoms",
              "the range " + std::to_string(first) + " to " + std::to_string(last) +
                  " is not a range of the molecule's " + std::to_string(facts.natom) +
                  " atoms; write 0 0 for none, or first and last with 1 <= first <= last <= " +
                  std::to_string(facts.natom));
  }

  // The electrons the library will count: ghost atoms (outside a counterpoise
  // job) keep their basis functions but lose their nuclei and electrons.
  int nuclear_sum = 0;
  for (std::size_t k = 0; k < nuclear_charges.size(); ++k) {
    const int atom = static_cast<int>(k) + 1;
    if (counterpoise || atom < first || atom > last) nuclear_sum += nuclear_charges[k];
  }
  facts.electrons = nuclear_sum - charge;

  // A counterpoise job reads record 16 as fragment A; fragment B is every other
  // atom, so neither may be empty.  The fragment runs are made at the input
  // geometry.
  if (counterpoise) {
    const bool range_ok = first >= 1 && first <= last && last <= facts.natom;
    if (no_ghosts || (range_ok && last - first + 1 == facts.natom)) {
      c.problem(ghost_first.record, "counterpoise fragments",
                "a counterpoise job splits the molecule into fragment A (record 16: atoms first "
                "to last) and fragment B (the other atoms); write a range that leaves fragment B "
                "at least one of the " +
                    std::to_string(facts.natom) + " atoms");
    } else if (range_ok) {
      facts.fragment_first = first;
      facts.fragment_last = last;
    }
    if (facts.optimisation_cycles > 0) {
      c.problem(counterpoise_record, "counterpoise",
                "the counterpoise correction is made at the input geometry; write 0 "
                "optimisation cycles in record 6, or 'none' here");
    }
    // Whether the fragments' charges fit the molecule's depends on --fragments:
    // the host checks it with the options.
    facts.counterpoise = true;
    facts.charge = charge;
    facts.hehpl =
        facts.natom == 2 && charge == 1 &&
        ((symbols[0] == "He" && symbols[1] == "H") || (symbols[0] == "H" && symbols[1] == "He"));
  }

  // Two atoms in one place make the basis linearly dependent and the nuclear
  // repulsion meaningless.
  constexpr std::size_t kMaxReported = 20;
  std::vector<Position> positions;
  positions.reserve(placed.size());
  for (const Placed& p : placed) positions.push_back({p.x, p.y, p.z});
  for (const ClosePair& pair : close_pairs(positions, kMaxReported)) {
    const Placed& a = placed[pair.first];
    const Placed& b = placed[pair.second];
    char text[64];
    std::snprintf(text, sizeof text, "%.4f", pair.distance);
    c.problem(b.record, "atom " + std::to_string(b.number),
              std::string(text) + " A from atom " + std::to_string(a.number) + " (record " +
                  std::to_string(a.record) + "), closer than " + number_text(kMinAtomDistance) +
                  " A; check the coordinates");
  }
}

// "the molecule's", "the free atoms'".
std::string possessive(const std::string& stage) {
  return "the " + stage + (stage.back() == 's' ? "'" : "'s");
}

void check_parameters(const TextFile& file, bool kohn_sham, std::vector<std::string>& problems) {
  Checker c(file, problems);
  Job job;
  if (kohn_sham) use_kohn_sham_defaults(job);
  const std::vector<std::string> stages =
      kohn_sham ? std::vector<std::string>{"Hartree-Fock free atoms", "Kohn-Sham free atoms",
                                           "Hartree-Fock molecule", "Kohn-Sham molecule"}
                : std::vector<std::string>{"free atoms", "molecule"};
  const std::size_t n = stages.size();
  c.set_layout(kohn_sham
                   ? " (a Kohn-Sham theory: records 6 to 12 hold four values, record 20 two)"
                   : " (a Hartree-Fock theory: records 6 to 12 hold two values, record 20 one)");
  const std::string fixed = " (both thresholds 0: a fixed number of cycles)";

  if (auto r = c.record("memory limit", {Kind::real})) {
    check_range(
        c, r->values[0], "memory limit", "memory limit",
        {0.0, kMaxMemoryGb, true, " GB",
         "give the gigabytes for the stored integrals, above 0 and at most " +
             number_text(kMaxMemoryGb) + " (a tiny limit such as 1e-9 runs integral-direct)"});
  }
  if (auto r = c.record("threads", {Kind::integer})) {
    check_range(c, r->values[0], "threads", "thread count",
                {0, kMaxThreads, false, "",
                 "write 0 for all processors, or a count up to " + std::to_string(kMaxThreads)});
  }
  auto read_stages = [&](const std::string& meaning, Kind kind) -> std::optional<Read> {
    return n == 2 ? c.record(meaning, {kind, kind}) : c.record(meaning, {kind, kind, kind, kind});
  };
  if (auto r = read_stages("SCF iterations", Kind::integer)) {
    for (std::size_t s = 0; s < n; ++s) {
      check_range(c, r->values[s], "SCF iterations", possessive(stages[s]) + " limit",
                  {1, kMaxIterations, false, "",
                   "give at least 1 iteration, at most " + std::to_string(kMaxIterations)});
    }
  }
  if (auto r = read_stages("damping", Kind::real)) {
    for (std::size_t s = 0; s < n; ++s) {
      check_range(c, r->values[s], "damping", possessive(stages[s]) + " damping factor",
                  {0.0, 1.0, false, "", "it is the weight of the new density, from 0 to 1"});
    }
  }
  std::vector<double> energy(job.thr_ene.begin(), job.thr_ene.begin() + static_cast<long>(n));
  std::vector<double> rms(job.thr_rms.begin(), job.thr_rms.begin() + static_cast<long>(n));
  int convergence_record = 0;
  if (auto r = read_stages("energy convergence", Kind::real)) {
    convergence_record = r->first_record;
    for (std::size_t s = 0; s < n; ++s) {
      check_range(c, r->values[s], "energy convergence", possessive(stages[s]) + " threshold",
                  {0.0, kMaxConvergence, false, " eV",
                   "give a threshold from 0 to " + number_text(kMaxConvergence) + " eV" + fixed});
      if (!r->values[s].null) energy[s] = r->values[s].real;
    }
  }
  if (auto r = read_stages("RMS convergence", Kind::real)) {
    for (std::size_t s = 0; s < n; ++s) {
      check_range(c, r->values[s], "RMS convergence", possessive(stages[s]) + " threshold",
                  {0.0, kMaxConvergence, false, "",
                   "give a threshold from 0 to " + number_text(kMaxConvergence) + fixed});
      if (!r->values[s].null) rms[s] = r->values[s].real;
    }
    // The SCF stops when both changes fall below their thresholds, so a zero
    // beside a positive threshold can never be met.
    for (std::size_t s = 0; s < n; ++s) {
      if ((energy[s] == 0.0) != (rms[s] == 0.0)) {
        c.problem(convergence_record, "energy and RMS convergence",
                  possessive(stages[s]) + " thresholds " + number_text(energy[s]) + " eV and " +
                      number_text(rms[s]) +
                      " can never both be met; make both positive, or both 0 for a fixed number "
                      "of cycles");
      }
    }
  }
  if (auto r = c.record("screening threshold", {Kind::real})) {
    check_range(c, r->values[0], "screening threshold", "screening threshold",
                {0.0, kMaxScreening, false, " eV",
                 "integrals below it are left out, which shifts the energy; give at most " +
                     number_text(kMaxScreening) + " eV (1e-10 by default; 0 leaves none out)"});
  }
  if (auto r = c.record("geometry convergence", {Kind::real})) {
    check_range(c, r->values[0], "geometry convergence", "gradient threshold",
                {0.0, 1.0, true, " eV/A", "give a value above 0 and at most 1 eV/A"});
  }
  if (auto r = c.record("trial step", {Kind::real})) {
    check_range(c, r->values[0], "trial step", "longest trial step",
                {0.0, 1.0, true, " A", "give a length above 0 and at most 1 A"});
  }
  if (kohn_sham) {
    if (auto r = c.record("grid cut-offs", {Kind::real, Kind::real})) {
      const Range range{0.0, 1.0e-4, true, "", "give a value above 0 and at most 1e-4"};
      check_range(c, r->values[0], "grid cut-offs", "density cut-off", range);
      check_range(c, r->values[1], "grid cut-offs", "weight cut-off", range);
    }
  } else if (auto r = c.record("frequency scale factor", {Kind::real})) {
    check_range(c, r->values[0], "frequency scale factor", "scale factor",
                {0.0, 2.0, true, "", "give a factor above 0 and at most 2"});
  }
}

// Whether the molecule file asks for a Kohn-Sham theory, which decides the
// layout of the parameter file; nothing when its theory cannot be read.
std::optional<bool> is_kohn_sham(const TextFile& file) {
  ListFile list(file);
  list.comment();
  const Read r = list.read({Kind::text});
  if (r.status != Status::ok) return std::nullopt;
  const std::string t = trim_blanks(r.values[0].text);
  return !(t == "HF" || t == "MP2" || t == "RPA" || t == "TDA");
}

}  // namespace

std::span<const std::string_view> element_symbols() {
  return kElements;
}

std::span<const std::string_view> basis_names() {
  return kBasisNames;
}

std::vector<ClosePair> close_pairs(const std::vector<Position>& positions, std::size_t most) {
  // The atoms are binned in cubes as wide as the distance limit, so that each
  // is compared only with the atoms before it in its own cube and the 26 around
  // it: atoms at least the limit apart fill a cube with a few at most, and the
  // search stays linear in the atom count.
  constexpr std::int64_t kOffset = std::int64_t{1} << 20;  // > kMaxCoordinate / limit
  auto cube = [](double x) { return static_cast<std::int64_t>(std::floor(x / kMinAtomDistance)); };
  auto key = [](std::int64_t i, std::int64_t j, std::int64_t k) {
    return ((i + kOffset) << 42) | ((j + kOffset) << 21) | (k + kOffset);
  };
  std::unordered_map<std::int64_t, std::vector<std::size_t>> cubes;
  std::vector<ClosePair> pairs;
  for (std::size_t p = 0; p < positions.size() && pairs.size() < most; ++p) {
    const Position& b = positions[p];
    const std::int64_t i = cube(b[0]), j = cube(b[1]), k = cube(b[2]);
    for (int n = 0; n < 27 && pairs.size() < most; ++n) {
      const auto near = cubes.find(key(i + n % 3 - 1, j + n / 3 % 3 - 1, k + n / 9 - 1));
      if (near == cubes.end()) continue;
      for (std::size_t m = 0; m < near->second.size() && pairs.size() < most; ++m) {
        const Position& a = positions[near->second[m]];
        const double d = std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]);
        if (d < kMinAtomDistance) pairs.push_back({near->second[m], p, d});
      }
    }
    cubes[key(i, j, k)].push_back(p);
  }
  return pairs;
}

std::string input_file_problem(const std::string& path, const std::string& what,
                               std::uintmax_t limit, const std::string& limit_holder) {
  std::error_code ec;
  const fs::file_status status = fs::status(path, ec);
  if (ec || !fs::exists(status)) return "cannot find " + what + " '" + path + "'";
  if (fs::is_directory(status)) return what + " '" + path + "' is a folder; name a file";
  if (!fs::is_regular_file(status)) {
    return what + " '" + path + "' is not a regular file (a device or a pipe); name a file";
  }
  const std::uintmax_t size = fs::file_size(path, ec);
  if (!ec && size > limit) {
    return what + " '" + path + "' holds " + std::to_string(size) + " bytes, more than the " +
           std::to_string(limit >> 20) + " MiB " + limit_holder;
  }
  std::ifstream in(path, std::ios::binary);
  if (!in) return "cannot read " + what + " '" + path + "'";
  return "";
}

InputFacts check_inputs(const std::string& molecule_file, const std::string& parameter_file,
                        std::vector<std::string>& problems) {
  InputFacts facts;
  TextFile molecule;
  if (!load(molecule_file, molecule, problems)) return facts;
  check_molecule(molecule, facts, problems);
  const std::optional<bool> kohn_sham = is_kohn_sham(molecule);
  TextFile parameters;
  if (parameter_file.empty() || !kohn_sham || !load(parameter_file, parameters, problems)) {
    return facts;
  }
  check_parameters(parameters, *kohn_sham, problems);
  return facts;
}

}  // namespace host
