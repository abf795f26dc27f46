// A recursive-descent reader of JSON, strict where the grammar is (no comments,
// no trailing commas, no leading zeros, no bare control characters in strings).
#include "json_reader.h"

#include <charconv>
#include <cstdint>
#include <cstdio>

#include "json_writer.h"

namespace host::json {

const Value* Value::find(std::string_view key) const {
  if (kind != Kind::object) return nullptr;
  for (const auto& [name, value] : members) {
    if (name == key) return &value;
  }
  return nullptr;
}

namespace {

class Reader {
 public:
  explicit Reader(std::string_view text) : text_(text) {
    if (text_.substr(0, 3) == "\xEF\xBB\xBF") pos_ = 3;
  }

  Value document() {
    Value v = value(0);
    blanks();
    if (pos_ != text_.size()) fail("more text after the end of the JSON value");
    return v;
  }

 private:
  [[noreturn]] void fail(const std::string& what) const {
    std::size_t line = 1, column = 1;
    for (std::size_t k = 0; k < pos_ && k < text_.size(); ++k) {
      if (text_[k] == '\n') {
        ++line;
        column = 1;
      } else {
        ++column;
      }
    }
    throw ParseError("line " + std::to_string(line) + ", column " + std::to_string(column) + ": " +
                     what);
  }

  // What stands at the current place, for a message.
  std::string found() const {
    if (pos_ >= text_.size()) return "the end of the text";
    const unsigned char c = static_cast<unsigned char>(text_[pos_]);
    if (c < 0x20 || c >= 0x7f) {
      char code[8];
      std::snprintf(code, sizeof code, "0x%02X", c);
      return std::string("the byte ") + code;
    }
    return std::string("'") + static_cast<char>(c) + "'";
  }

  void blanks() {
    while (pos_ < text_.size() && (text_[pos_] == ' ' || text_[pos_] == '\t' ||
                                   text_[pos_] == '\n' || text_[pos_] == '\r')) {
      ++pos_;
    }
  }

  bool take(char c) {
    if (pos_ < text_.size() && text_[pos_] == c) {
      ++pos_;
      return true;
    }
    return false;
  }

  Value value(int depth) {
    if (depth >= kMaxDepth) fail("values nested deeper than " + std::to_string(kMaxDepth));
    blanks();
    if (pos_ >= text_.size()) fail("the text ends where a value belongs");
    Value v;
    const char c = text_[pos_];
    if (c == '{') {
      v.kind = Value::Kind::object;
      ++pos_;
      blanks();
      if (take('}')) return v;
      do {
        blanks();
        if (pos_ >= text_.size() || text_[pos_] != '"') {
          fail("a member name in double quotes belongs here, not " + found());
        }
        std::string name = string();
        blanks();
        if (!take(':')) fail("':' belongs after a member name, not " + found());
        v.members.emplace_back(std::move(name), value(depth + 1));
        blanks();
      } while (take(','));
      if (!take('}')) fail("',' or '}' belongs here, not " + found());
    } else if (c == '[') {
      v.kind = Value::Kind::array;
      ++pos_;
      blanks();
      if (take(']')) return v;
      do {
        v.items.push_back(value(depth + 1));
        blanks();
      } while (take(','));
      if (!take(']')) fail("',' or ']' belongs here, not " + found());
    } else if (c == '"') {
      v.kind = Value::Kind::string;
      v.text = string();
    } else if (c == '-' || (c >= '0' && c <= '9')) {
      v.kind = Value::Kind::number;
      v.number = number();
    } else if (word("true")) {
      v.kind = Value::Kind::boolean;
      v.boolean = true;
    } else if (word("false")) {
      v.kind = Value::Kind::boolean;
    } else if (!word("null")) {
      fail("a value belongs here, not " + found());
    }
    return v;
  }

  bool word(std::string_view w) {
    if (text_.substr(pos_, w.size()) != w) return false;
    pos_ += w.size();
    return true;
  }

  bool digit() const { return pos_ < text_.size() && text_[pos_] >= '0' && text_[pos_] <= '9'; }

  double number() {
    const std::size_t start = pos_;
    take('-');
    if (take('0')) {
      if (digit()) fail("a number may not start with 0");
    } else if (digit()) {
      while (digit()) ++pos_;
    } else {
      fail("a digit belongs after '-', not " + found());
    }
    if (take('.')) {
      if (!digit()) fail("a digit belongs after the decimal point, not " + found());
      while (digit()) ++pos_;
    }
    if (take('e') || take('E')) {
      if (!take('+')) take('-');
      if (!digit()) fail("a digit belongs in the exponent, not " + found());
      while (digit()) ++pos_;
    }
    double v = 0.0;
    const auto [end, ec] = std::from_chars(text_.data() + start, text_.data() + pos_, v);
    if (ec != std::errc() || end != text_.data() + pos_) {
      pos_ = start;
      fail("the number is out of the range of a double");
    }
    return v;
  }

  unsigned hex4() {
    unsigned code = 0;
    for (int k = 0; k < 4; ++k, ++pos_) {
      if (pos_ >= text_.size()) fail("the text ends inside a \\u escape");
      const char h = text_[pos_];
      code <<= 4;
      if (h >= '0' && h <= '9') {
        code |= static_cast<unsigned>(h - '0');
      } else if (h >= 'a' && h <= 'f') {
        code |= static_cast<unsigned>(h - 'a' + 10);
      } else if (h >= 'A' && h <= 'F') {
        code |= static_cast<unsigned>(h - 'A' + 10);
      } else {
        fail("four hexadecimal digits belong after \\u, not " + found());
      }
    }
    return code;
  }

  static void utf8(std::string& out, std::uint32_t code) {
    if (code < 0x80) {
      out += static_cast<char>(code);
    } else if (code < 0x800) {
      out += static_cast<char>(0xC0 | (code >> 6));
      out += static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
      out += static_cast<char>(0xE0 | (code >> 12));
      out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (code & 0x3F));
    } else {
      out += static_cast<char>(0xF0 | (code >> 18));
      out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
      out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (code & 0x3F));
    }
  }

  std::string string() {
    ++pos_;  // the opening quote
    std::string out;
    while (true) {
      if (pos_ >= text_.size()) fail("the text ends inside a string");
      const char c = text_[pos_];
      if (c == '"') {
        ++pos_;
        return out;
      }
      if (static_cast<unsigned char>(c) < 0x20) {
        fail("a control character inside a string must be escaped (" + found() + ")");
      }
      ++pos_;
      if (c != '\\') {
        out += c;
        continue;
      }
      if (pos_ >= text_.size()) fail("the text ends inside a string");
      const char e = text_[pos_++];
      switch (e) {
        case '"':
          out += '"';
          break;
        case '\\':
          out += '\\';
          break;
        case '/':
          out += '/';
          break;
        case 'b':
          out += '\b';
          break;
        case 'f':
          out += '\f';
          break;
        case 'n':
          out += '\n';
          break;
        case 'r':
          out += '\r';
          break;
        case 't':
          out += '\t';
          break;
        case 'u': {
          std::uint32_t code = hex4();
          if (code >= 0xD800 && code < 0xDC00) {
            if (!word("\\u")) fail("a high surrogate must be followed by a low one");
            const unsigned low = hex4();
            if (low < 0xDC00 || low >= 0xE000)
              fail("a high surrogate must be followed by a low one");
            code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
          } else if (code >= 0xDC00 && code < 0xE000) {
            fail("a low surrogate without a high one");
          }
          utf8(out, code);
          break;
        }
        default:
          --pos_;
          fail("an unknown escape \\" + found().substr(1, 1));
      }
    }
  }

  std::string_view text_;
  std::size_t pos_ = 0;
};

}  // namespace

Value parse(std::string_view text) {
  return Reader(text).document();
}

std::string quoted(std::string_view text) {
  // The writer's escapes, then the two sequences an HTML script element ends on
  // or hides behind; neither can arise from an escape itself.
  const std::string plain = json_quoted(std::string(text));
  std::string out;
  out.reserve(plain.size() + 8);
  for (std::size_t k = 0; k < plain.size(); ++k) {
    if (plain[k] == '<' && plain.compare(k, 4, "<!--") == 0) {
      out += "\\u003c";
    } else if (plain[k] == '<' && k + 1 < plain.size() && plain[k + 1] == '/') {
      out += "<\\/";
      ++k;
    } else {
      out += plain[k];
    }
  }
  return out;
}

}  // namespace host::json
