#include "json_value.h"

#include <cctype>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace norvik::test {

namespace {

class Parser {
 public:
  explicit Parser(std::string_view text) : text_(text) {}

  JsonValue document() {
    JsonValue value = parse_value();
    skip_blanks();
    if (pos_ != text_.size()) fail("trailing text");
    return value;
  }

 private:
  [[noreturn]] void fail(const std::string& what) const {
    throw std::runtime_error("JSON: " + what + " at offset " + std::to_string(pos_));
  }

  void skip_blanks() {
    while (pos_ < text_.size() && std::isspace(static_cast<unsigned char>(text_[pos_]))) ++pos_;
  }

  char peek() {
    skip_blanks();
    if (pos_ >= text_.size()) fail("unexpected end");
    return text_[pos_];
  }

  void expect(char c) {
    if (peek() != c) fail(std::string("expected '") + c + "'");
    ++pos_;
  }

  JsonValue parse_value() {
    const char c = peek();
    if (c == '{') return parse_object();
    if (c == '[') return parse_array();
    if (c == '"') {
      JsonValue v;
      v.type = JsonValue::Type::kString;
      v.text = parse_string();
      return v;
    }
    if (text_.substr(pos_).starts_with("true") || text_.substr(pos_).starts_with("false")) {
      JsonValue v;
      v.type = JsonValue::Type::kBool;
      v.flag = text_[pos_] == 't';
      pos_ += v.flag ? 4 : 5;
      return v;
    }
    if (text_.substr(pos_).starts_with("null")) {
      pos_ += 4;
      return {};
    }
    JsonValue v;
    v.type = JsonValue::Type::kNumber;
    const auto start = pos_;
    while (pos_ < text_.size() &&
           std::string_view("+-.eE0123456789").find(text_[pos_]) != std::string_view::npos) {
      ++pos_;
    }
    if (pos_ == start) fail("unexpected character");
    v.text = std::string(text_.substr(start, pos_ - start));
    return v;
  }

  std::string parse_string() {
    expect('"');
    std::string out;
    while (pos_ < text_.size() && text_[pos_] != '"') {
      if (text_[pos_] == '\\') {
        ++pos_;
        if (pos_ >= text_.size()) fail("bad escape");
        const char e = text_[pos_];
        out += e == 'n' ? '\n' : e == 't' ? '\t' : e;  // \uXXXX does not occur in the data
      } else {
        out += text_[pos_];
      }
      ++pos_;
    }
    expect('"');
    return out;
  }

  JsonValue parse_array() {
    JsonValue v;
    v.type = JsonValue::Type::kArray;
    expect('[');
    if (peek() == ']') {
      ++pos_;
      return v;
    }
    for (;;) {
      v.items.push_back(parse_value());
      if (peek() == ',') {
        ++pos_;
        continue;
      }
      expect(']');
      return v;
    }
  }

  JsonValue parse_object() {
    JsonValue v;
    v.type = JsonValue::Type::kObject;
    expect('{');
    if (peek() == '}') {
      ++pos_;
      return v;
    }
    for (;;) {
      skip_blanks();
      std::string key = parse_string();
      expect(':');
      v.members.emplace(std::move(key), parse_value());
      if (peek() == ',') {
        ++pos_;
        continue;
      }
      expect('}');
      return v;
    }
  }

  std::string_view text_;
  std::size_t pos_ = 0;
};

}  // namespace

const JsonValue& JsonValue::operator[](const std::string& key) const {
  const auto it = members.find(key);
  if (it == members.end()) throw std::runtime_error("JSON: no member " + key);
  return it->second;
}

double JsonValue::number() const {
  if (type != Type::kNumber && type != Type::kString)
    throw std::runtime_error("JSON: not a number");
  char* end = nullptr;
  const double value = std::strtod(text.c_str(), &end);
  if (end == text.c_str() || *end != '\0') throw std::runtime_error("JSON: bad number " + text);
  return value;
}

JsonValue parse_json(std::string_view text) {
  return Parser(text).document();
}

JsonValue read_json_file(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw std::runtime_error("cannot open " + path);
  std::ostringstream buffer;
  buffer << in.rdbuf();
  return parse_json(buffer.str());
}

}  // namespace norvik::test
