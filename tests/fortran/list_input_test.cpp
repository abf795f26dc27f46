// The list-directed reader against gfortran's reads (tests/fortran/data), plus
// what the vectors cannot show: record counting and streams that are not files.
#include "common/list_input.h"

#include <gtest/gtest.h>

#include <sstream>

#include "vector_file.h"

namespace norvik::fortran {
namespace {

using testing::Mismatches;
using testing::read_vectors;
using testing::to_bits;

// Target values before each read, as in the generator.
constexpr std::int32_t kSentinelInt = -7777777;
constexpr double kSentinelReal = -7777777.25;
constexpr char kSentinelChar = '~';

std::string unescape(const std::string& text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\' || i + 1 == text.size()) {
      out.push_back(text[i]);
      continue;
    }
    const char c = text[++i];
    out.push_back(c == 'n' ? '\n' : c == 'r' ? '\r' : c == 't' ? '\t' : c);
  }
  return out;
}

std::string escape(const std::string& text) {
  std::string out;
  for (const char c : text) {
    switch (c) {
      case '\n':
        out += "\\n";
        break;
      case '\r':
        out += "\\r";
        break;
      case '\t':
        out += "\\t";
        break;
      case '\\':
        out += "\\\\";
        break;
      default:
        out.push_back(c);
    }
  }
  return out;
}

const char* status_name(ReadStatus status) {
  switch (status) {
    case ReadStatus::ok:
      return "ok";
    case ReadStatus::end_of_file:
      return "eof";
    case ReadStatus::bad_value:
      return "bad";
  }
  return "?";
}

// Splits "i r c5" into target codes ("-" is an empty list).
std::vector<std::string> split_targets(const std::string& field) {
  std::vector<std::string> codes;
  std::istringstream in(field);
  std::string code;
  while (in >> code) {
    if (code != "-") codes.push_back(code);
  }
  return codes;
}

TEST(ListInput, ReadsMatchGfortran) {
  const auto lines = read_vectors("list_read.txt");
  Mismatches bad("list_read.txt");
  std::size_t reads = 0;
  std::unique_ptr<std::istringstream> input;
  std::unique_ptr<ListReader> reader;
  std::string input_text;
  for (const auto& line : lines) {
    if (line.fields.at(0) == "input") {
      input_text = line.fields.size() > 1 ? line.fields[1] : "";
      input = std::make_unique<std::istringstream>(unescape(input_text), std::ios::binary);
      reader = std::make_unique<ListReader>(*input);
      continue;
    }
    ASSERT_TRUE(reader) << "read before input at line " << line.number;
    ++reads;
    const auto codes = split_targets(line.fields.at(1));
    std::vector<std::int32_t> ints(codes.size(), kSentinelInt);
    std::vector<double> reals(codes.size(), kSentinelReal);
    std::vector<std::string> texts(codes.size());
    std::vector<Target> targets;
    ReadStatus status;
    if (line.fields[0] == "record") {
      const int length = std::stoi(codes.at(0).substr(1));
      texts[0].assign(static_cast<std::size_t>(length), kSentinelChar);
      status = reader->read_record(texts[0], length);
    } else {
      for (std::size_t k = 0; k < codes.size(); ++k) {
        if (codes[k] == "i") {
          targets.emplace_back(&ints[k]);
        } else if (codes[k] == "r") {
          targets.emplace_back(&reals[k]);
        } else {
          const int length = std::stoi(codes[k].substr(1));
          texts[k].assign(static_cast<std::size_t>(length), kSentinelChar);
          targets.emplace_back(TextTarget{&texts[k], length});
        }
      }
      status = reader->read(targets);
    }
    std::vector<std::string> got{status_name(status)};
    for (std::size_t k = 0; k < codes.size(); ++k) {
      if (codes[k] == "i") {
        got.push_back(std::to_string(ints[k]));
      } else if (codes[k] == "r") {
        got.push_back(to_bits(reals[k]));
      } else {
        std::string field(1, '[');
        field.append(escape(texts[k])).push_back(']');
        got.push_back(std::move(field));
      }
    }
    const std::vector<std::string> expected(line.fields.begin() + 2, line.fields.end());
    // After a malformed value only the status is promised (the process ends):
    // gfortran's target holds whatever its conversion had reached.
    const bool bad_value = expected.at(0) == "bad";
    if (bad_value ? got.at(0) != expected[0] : got != expected) {
      std::string shown, wanted;
      for (const auto& g : got) shown += g + " ";
      for (const auto& e : expected) wanted += e + " ";
      bad.add(line.number, "input \"" + input_text + "\" read " + line.fields[1] + ": got " +
                               shown + "gfortran " + wanted);
    }
  }
  bad.check(reads);
}

TEST(ListInput, CountsRecordsAndSkipsTheRestOfTheLastOne) {
  std::istringstream in("# title\n\n 1, 2\n 3 4 5 six\n7\n");
  ListReader reader(in);
  std::string title;
  ASSERT_EQ(reader.read_record(title, 10), ReadStatus::ok);
  EXPECT_EQ(title, "# title   ");
  EXPECT_EQ(reader.records_read(), 1);
  std::int32_t a = 0, b = 0, c = 0;
  ASSERT_EQ(reader.read({&a, &b, &c}), ReadStatus::ok);  // blank record, then two records
  EXPECT_EQ(reader.records_read(), 4);
  EXPECT_EQ(a + b + c, 6);
  ASSERT_EQ(reader.read({&a}), ReadStatus::ok);  // "4 5 six" was dropped with its record
  EXPECT_EQ(a, 7);
  EXPECT_EQ(reader.read({&a}), ReadStatus::end_of_file);
  EXPECT_EQ(a, 7);
}

TEST(ListInput, KeepsValuesReadBeforeAFailure) {
  std::istringstream in("1 2.5 x\n");
  ListReader reader(in);
  std::int32_t a = 0;
  double b = 0;
  std::int32_t c = -1;
  EXPECT_EQ(reader.read({&a, &b, &c}), ReadStatus::bad_value);
  EXPECT_EQ(a, 1);
  EXPECT_EQ(b, 2.5);
  EXPECT_EQ(c, -1);
}

}  // namespace
}  // namespace norvik::fortran
