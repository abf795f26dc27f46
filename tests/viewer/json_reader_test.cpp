// The host's JSON reader (app/json_reader.*): what `norvik view` relies on to
// refuse a file that is not a result and to carry text safely inside a page.
#include "json_reader.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace {

using host::json::parse;
using host::json::ParseError;
using Kind = host::json::Value::Kind;

std::string error_of(const std::string& text) {
  try {
    parse(text);
  } catch (const ParseError& e) {
    return e.what();
  }
  return "";
}

TEST(JsonReader, ReadsTheValuesOfAResultFile) {
  const auto v = parse(
      "\xEF\xBB\xBF {\"schema_name\": \"norvik_result\",\r\n \"success\": true, \"gone\": null,\n"
      " \"e\": -76.00934132365062, \"z\": -0, \"f\": 1.5E+2, \"g\": 2e-3,\n"
      " \"a\": [], \"o\": {}, \"list\": [1, [2, {\"k\": false}]], \"e\": 1}");
  ASSERT_TRUE(v.is(Kind::object));
  EXPECT_EQ(v.find("schema_name")->text, "norvik_result");
  EXPECT_TRUE(v.find("success")->boolean);
  EXPECT_TRUE(v.find("gone")->is(Kind::null));
  // 17 significant digits read back to the same double.
  EXPECT_EQ(v.find("e")->number, -76.00934132365062);  // the first of a repeated name
  EXPECT_TRUE(std::signbit(v.find("z")->number));
  EXPECT_EQ(v.find("f")->number, 150.0);
  EXPECT_EQ(v.find("g")->number, 2e-3);
  EXPECT_TRUE(v.find("a")->items.empty());
  EXPECT_TRUE(v.find("o")->members.empty());
  const auto& inner = v.find("list")->items[1].items[1];
  EXPECT_FALSE(inner.find("k")->boolean);
  EXPECT_EQ(v.find("absent"), nullptr);
  EXPECT_EQ(v.find("list")->find("k"), nullptr);  // an array has no members
}

TEST(JsonReader, DecodesEscapesToUtf8) {
  const auto v = parse(R"(["a\"b\\c\/d\b\f\n\r\t", "\u00e9\u20ac", "\ud83d\ude00", "\u0000x"])");
  EXPECT_EQ(v.items[0].text, "a\"b\\c/d\b\f\n\r\t");
  EXPECT_EQ(v.items[1].text, "\xC3\xA9\xE2\x82\xAC");
  EXPECT_EQ(v.items[2].text, "\xF0\x9F\x98\x80");
  EXPECT_EQ(v.items[3].text, std::string("\0x", 2));
}

TEST(JsonReader, NamesTheLineAndColumnOfWhatIsWrong) {
  EXPECT_EQ(error_of("{\n  \"a\": tru\n}"), "line 2, column 8: a value belongs here, not 't'");
  EXPECT_EQ(error_of("[1,]"), "line 1, column 4: a value belongs here, not ']'");
  EXPECT_EQ(error_of("{\"a\" 1}"), "line 1, column 6: ':' belongs after a member name, not '1'");
  EXPECT_EQ(error_of("\"abc"), "line 1, column 5: the text ends inside a string");
  EXPECT_EQ(error_of(""), "line 1, column 1: the text ends where a value belongs");
  EXPECT_EQ(error_of("1e400"), "line 1, column 1: the number is out of the range of a double");
  EXPECT_EQ(error_of("-"), "line 1, column 2: a digit belongs after '-', not the end of the text");
  EXPECT_EQ(error_of("1."),
            "line 1, column 3: a digit belongs after the decimal point, not the end of the text");
  EXPECT_EQ(error_of("\"\\x\""), "line 1, column 3: an unknown escape \\x");
  EXPECT_EQ(error_of("\"\\udc00\""), "line 1, column 8: a low surrogate without a high one");
  EXPECT_EQ(error_of("\"\\u12g4\""),
            "line 1, column 6: four hexadecimal digits belong after \\u, not 'g'");
  EXPECT_EQ(error_of("nul"), "line 1, column 1: a value belongs here, not 'n'");
  EXPECT_EQ(error_of(std::string(host::json::kMaxDepth + 1, '[')),
            "line 1, column 257: values nested deeper than 256");
  EXPECT_EQ(
      error_of(std::string(host::json::kMaxDepth, '[') + std::string(host::json::kMaxDepth, ']')),
      "");
}

TEST(JsonReader, QuotedTextReadsBackAndCannotEndAScript) {
  const std::string texts[] = {
      "plain",
      "quote \" backslash \\ slash / tab \t newline \n return \r bell \x07 nul " +
          std::string(1, '\0'),
      "</script><script>alert(1)</script>",
      "<!-- comment --> <\\/ < / <<//",
      "UTF-8 \xC3\xA9 \xF0\x9F\x98\x80 and a cube line:  -7.558905   -8.985037",
  };
  for (const std::string& text : texts) {
    const std::string q = host::json::quoted(text);
    EXPECT_EQ(q.find("</"), std::string::npos) << q;
    EXPECT_EQ(q.find("<!--"), std::string::npos) << q;
    for (const char c : q) EXPECT_GE(static_cast<unsigned char>(c), 0x20) << q;
    EXPECT_EQ(parse(q).text, text) << q;
  }
}

}  // namespace
