#include "json_writer.h"

#include <cmath>
#include <cstdio>
#include <stdexcept>

namespace host {

std::string json_quoted(const std::string& text) {
  std::string out = "\"";
  for (const char c : text) {
    switch (c) {
      case '"':
        out += "\\\"";
        break;
      case '\\':
        out += "\\\\";
        break;
      case '\n':
        out += "\\n";
        break;
      case '\r':
        out += "\\r";
        break;
      case '\t':
        out += "\\t";
        break;
      case '\b':
        out += "\\b";
        break;
      case '\f':
        out += "\\f";
        break;
      default:
        if (static_cast<unsigned char>(c) < 0x20) {
          char buf[8];
          std::snprintf(buf, sizeof buf, "\\u%04x", static_cast<unsigned>(c));
          out += buf;
        } else {
          out += c;  // UTF-8 bytes pass unchanged
        }
    }
  }
  return out + "\"";
}

Json Json::numbers(const std::vector<double>& values) {
  Json a = array();
  for (const double v : values) a.push(v);
  return a;
}

Json& Json::set(const std::string& key, Json value) {
  auto* object = std::get_if<Object>(&value_);
  if (object == nullptr) throw std::logic_error("json: set on a value that is no object");
  for (const auto& [k, v] : *object) {
    if (k == key) throw std::logic_error("json: key '" + key + "' set twice");
  }
  object->emplace_back(key, std::move(value));
  return object->back().second;
}

Json& Json::push(Json value) {
  auto* a = std::get_if<Array>(&value_);
  if (a == nullptr) throw std::logic_error("json: push on a value that is no array");
  a->push_back(std::move(value));
  return a->back();
}

bool Json::is_scalar() const {
  return !std::holds_alternative<Object>(value_) && !std::holds_alternative<Array>(value_);
}

void Json::write(std::string& out, int indent) const {
  const std::string pad(static_cast<std::size_t>(indent) + 2, ' ');
  const std::string close(static_cast<std::size_t>(indent), ' ');
  if (const auto* object = std::get_if<Object>(&value_)) {
    if (object->empty()) {
      out += "{}";
      return;
    }
    out += "{\n";
    for (std::size_t i = 0; i < object->size(); ++i) {
      out += pad + json_quoted((*object)[i].first) + ": ";
      (*object)[i].second.write(out, indent + 2);
      out += i + 1 < object->size() ? ",\n" : "\n";
    }
    out += close + "}";
  } else if (const auto* a = std::get_if<Array>(&value_)) {
    bool flat = true;
    for (const Json& v : *a) flat = flat && v.is_scalar();
    if (a->empty()) {
      out += "[]";
    } else if (flat) {
      out += "[";
      for (std::size_t i = 0; i < a->size(); ++i) {
        if (i > 0) out += ", ";
        (*a)[i].write(out, indent);
      }
      out += "]";
    } else {
      out += "[\n";
      for (std::size_t i = 0; i < a->size(); ++i) {
        out += pad;
        (*a)[i].write(out, indent + 2);
        out += i + 1 < a->size() ? ",\n" : "\n";
      }
      out += close + "]";
    }
  } else if (const auto* s = std::get_if<std::string>(&value_)) {
    out += json_quoted(*s);
  } else if (const auto* d = std::get_if<double>(&value_)) {
    // JSON has no NaN or infinity: a quantity that is not finite is written null.
    if (!std::isfinite(*d)) {
      out += "null";
    } else {
      char buf[32];
      std::snprintf(buf, sizeof buf, "%.17g", *d == 0.0 ? 0.0 : *d);  // no "-0"
      out += buf;
    }
  } else if (const auto* i = std::get_if<long long>(&value_)) {
    out += std::to_string(*i);
  } else {
    out += std::get<bool>(value_) ? "true" : "false";
  }
}

std::string Json::text() const {
  std::string out;
  write(out, 0);
  return out + "\n";
}

}  // namespace host
