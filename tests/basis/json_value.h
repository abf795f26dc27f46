// A small JSON reader for the tests: enough for the published basis-set files
// (objects, arrays, strings, numbers kept as text, true/false/null).
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace norvik::test {

struct JsonValue {
  enum class Type { kNull, kBool, kNumber, kString, kArray, kObject };
  Type type = Type::kNull;
  std::string text;  // string contents, or the number as written
  bool flag = false;
  std::vector<JsonValue> items;
  std::map<std::string, JsonValue> members;

  const JsonValue& operator[](const std::string& key) const;  // throws if absent
  const JsonValue& operator[](std::size_t index) const { return items.at(index); }
  std::size_t size() const { return type == Type::kObject ? members.size() : items.size(); }
  bool has(const std::string& key) const { return members.count(key) != 0; }
  double number() const;  // a number, or a string holding one ("0.1543289673E+00")
};

// Parses a whole document; throws std::runtime_error on malformed input.
JsonValue parse_json(std::string_view text);
JsonValue read_json_file(const std::string& path);

}  // namespace norvik::test
