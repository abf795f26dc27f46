// A small JSON document for the result file: a tree of values whose objects
// keep their keys in the order they were added, written with two-space
// indentation, strings escaped and numbers with 17 significant digits, so that
// the same job always gives the same text and every double reads back exactly.
// Arrays that hold only numbers, strings or booleans stay on one line.
#pragma once

#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace host {

class Json {
 public:
  using Array = std::vector<Json>;
  using Object = std::vector<std::pair<std::string, Json>>;

  Json() : value_(Object{}) {}  // an empty object
  Json(double v) : value_(v) {}
  Json(int v) : value_(static_cast<long long>(v)) {}
  Json(long long v) : value_(v) {}
  Json(bool v) : value_(v) {}
  Json(const char* v) : value_(std::string(v)) {}
  Json(std::string v) : value_(std::move(v)) {}
  Json(Array v) : value_(std::move(v)) {}

  static Json array() { return Json(Array{}); }
  static Json numbers(const std::vector<double>& values);

  // Appends to an object (the key must be new) or to an array.
  Json& set(const std::string& key, Json value);
  Json& push(Json value);

  bool is_object() const { return std::holds_alternative<Object>(value_); }

  // The document as text, ending in a newline.
  std::string text() const;

 private:
  void write(std::string& out, int indent) const;
  bool is_scalar() const;

  std::variant<Object, Array, std::string, double, long long, bool> value_;
};

// A string as a JSON literal, quotes included.
std::string json_quoted(const std::string& text);

}  // namespace host
