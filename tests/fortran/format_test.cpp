// The formatter against gfortran's own output (tests/fortran/data), plus the
// behaviours that the vectors cannot show: programming errors and speed.
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "common/fortran_format.h"
#include "vector_file.h"

namespace norvik::fortran {
namespace {

using testing::from_bits;
using testing::Mismatches;
using testing::parse_values;
using testing::read_vectors;
using testing::unbracket;

// A single descriptor such as "ES14.6E3", "I5.2", "A10" or "F0.3", split up.
struct Descriptor {
  std::string code;  // "A", "I", "F", "E", "ES"
  int w = -1, d = -1, e = -1;
};

Descriptor parse_descriptor(const std::string& text) {
  Descriptor desc;
  std::size_t i = text.rfind("ES", 0) == 0 ? 2 : 1;
  desc.code = text.substr(0, i);
  auto number = [&](int& target) {
    std::size_t used = 0;
    target = std::stoi(text.substr(i), &used);
    i += used;
  };
  if (i < text.size()) number(desc.w);
  if (i < text.size() && text[i] == '.') {
    ++i;
    number(desc.d);
  }
  if (i < text.size() && text[i] == 'E') {
    ++i;
    number(desc.e);
  }
  return desc;
}

std::string apply_edit(const Descriptor& desc, double value) {
  if (desc.code == "F") return edit_f(value, desc.w, desc.d);
  if (desc.code == "E") return edit_e(value, desc.w, desc.d, desc.e);
  return edit_es(value, desc.w, desc.d, desc.e);
}

TEST(FortranFormat, RealEditingMatchesGfortran) {
  const auto lines = read_vectors("edit_real.txt");
  Mismatches bad("edit_real.txt");
  for (const auto& line : lines) {
    const Descriptor desc = parse_descriptor(line.fields.at(0));
    const double value = from_bits(line.fields.at(1));
    const std::string expected = unbracket(line.fields.at(2));
    const std::string direct = apply_edit(desc, value);
    const std::string via_format = format("(" + line.fields[0] + ")", {value});
    if (direct != expected || via_format != expected) {
      bad.add(line.number, line.fields[0] + " of " + line.fields[1] + ": got [" + direct + "] / [" +
                               via_format + "], gfortran [" + expected + "]");
    }
  }
  bad.check(lines.size());
}

TEST(FortranFormat, IntegerEditingMatchesGfortran) {
  const auto lines = read_vectors("edit_integer.txt");
  Mismatches bad("edit_integer.txt");
  for (const auto& line : lines) {
    const Descriptor desc = parse_descriptor(line.fields.at(0));
    const auto value = static_cast<std::int64_t>(std::stoll(line.fields.at(1)));
    const std::string expected = unbracket(line.fields.at(2));
    const std::string direct = edit_i(value, desc.w, desc.d);
    const std::string via_format = format("(" + line.fields[0] + ")", {value});
    if (direct != expected || via_format != expected) {
      bad.add(line.number, line.fields[0] + " of " + line.fields[1] + ": got [" + direct + "] / [" +
                               via_format + "], gfortran [" + expected + "]");
    }
  }
  bad.check(lines.size());
}

TEST(FortranFormat, TextEditingMatchesGfortran) {
  const auto lines = read_vectors("edit_text.txt");
  Mismatches bad("edit_text.txt");
  for (const auto& line : lines) {
    const Descriptor desc = parse_descriptor(line.fields.at(0));
    const std::string text = unbracket(line.fields.at(1));
    const std::string expected = unbracket(line.fields.at(2));
    const std::string direct = edit_a(text, desc.w);
    const std::string via_format = format("(" + line.fields[0] + ")", {std::string_view(text)});
    if (direct != expected || via_format != expected) {
      bad.add(line.number, line.fields[0] + " of [" + text + "]: got [" + direct + "] / [" +
                               via_format + "], gfortran [" + expected + "]");
    }
  }
  bad.check(lines.size());
}

TEST(FortranFormat, WholeFormatsMatchGfortran) {
  const auto lines = read_vectors("formats.txt");
  Mismatches bad("formats.txt");
  for (const auto& line : lines) {
    std::vector<std::string> storage;
    const auto values = parse_values(line.fields.at(1), storage);
    std::vector<std::string> expected;
    for (std::size_t k = 2; k < line.fields.size(); ++k)
      expected.push_back(unbracket(line.fields[k]));
    const auto records = format_lines(line.fields[0], values);
    if (records != expected) {
      std::string got;
      for (const auto& r : records) got += "[" + r + "]";
      bad.add(line.number, line.fields[0] + ": got " + got);
    }
    // format() gives the same single record, and refuses to write several.
    if (expected.size() == 1) {
      if (format(line.fields[0], values) != expected[0]) bad.add(line.number, "format() differs");
    } else {
      EXPECT_THROW(format(line.fields[0], values), std::logic_error) << line.fields[0];
    }
  }
  bad.check(lines.size());
}

TEST(FortranFormat, ListDirectedOutputMatchesGfortran) {
  const auto lines = read_vectors("list_write.txt");
  Mismatches bad("list_write.txt");
  for (const auto& line : lines) {
    std::vector<std::string> storage;
    const auto values = parse_values(line.fields.at(0), storage);
    const std::string expected = unbracket(line.fields.at(1));
    const std::string got = list_directed(values);
    if (got != expected) bad.add(line.number, "got [" + got + "], gfortran [" + expected + "]");
  }
  bad.check(lines.size());
}

TEST(FortranFormat, ProgrammingErrorsThrowLogicError) {
  using V = Value;
  const V one = std::int64_t{1};
  const V half = 0.5;
  const V text = std::string_view("x");
  EXPECT_THROW(format("(I3)", {half}), std::logic_error);        // kind mismatch
  EXPECT_THROW(format("(F5.2)", {one}), std::logic_error);       // integers are not reals
  EXPECT_THROW(format("(A)", {one}), std::logic_error);          // nor texts
  EXPECT_THROW(format("(I3)", {one, one}), std::logic_error);    // a second record
  EXPECT_THROW(format("('x')", {one}), std::logic_error);        // no data descriptor
  EXPECT_THROW(format("(E10.0)", {half}), std::logic_error);     // E needs d >= 1
  EXPECT_THROW(format("(E0.3)", {half}), std::logic_error);      // E0.d unsupported
  EXPECT_THROW(format("(G12.4)", {half}), std::logic_error);     // unsupported descriptor
  EXPECT_THROW(format("(A,I3", {text, one}), std::logic_error);  // unbalanced
  EXPECT_THROW(format("A,I3", {text, one}), std::logic_error);   // no parentheses
  EXPECT_THROW(format("('open)", {}), std::logic_error);         // unterminated literal
  EXPECT_THROW(format("(F8)", {half}), std::logic_error);        // F needs d
  EXPECT_THROW(edit_f(1.0, -1, 2), std::logic_error);
}

TEST(FortranFormat, FieldsBeyondTheVectors) {
  // Very wide fields and long digit strings take the slow path of the scratch buffer.
  EXPECT_EQ(edit_f(0.1, 0, 60), ".100000000000000005551115123125782702118158340454101562500000");
  EXPECT_EQ(edit_f(-std::numeric_limits<double>::max(), 0, 0).size(), 311u);
  EXPECT_EQ(edit_es(1.0 / 3.0, 0 + 600, 550).size(), 600u);
  EXPECT_EQ(edit_i(std::numeric_limits<std::int64_t>::min(), 0), "-9223372036854775808");
  // A repeat count on a group with a literal inside.
  EXPECT_EQ(format("(2('<',I1,'>'))", {Value(std::int64_t{1}), Value(std::int64_t{2})}), "<1><2>");
}

TEST(FortranFormat, NarrowFieldWithMinimalExponentGivesAsterisks) {
  // gfortran 12 writes 1e-100 in E5.1E0 as ".1E-9", cutting the exponent to
  // fit; a misread value is worse than asterisks, so here the field overflows.
  EXPECT_EQ(edit_e(1e-100, 5, 1, 0), "*****");
  EXPECT_EQ(edit_e(1e-100, 6, 1, 0), ".1E-99");
}

TEST(FortranFormat, ThousandsOfReportLinesAreCheap) {
  // A run log line of the SCF drivers, written 20000 times: this must stay far
  // below what an SCF cycle costs (the limit is generous for slow machines).
  const auto start = std::chrono::steady_clock::now();
  std::size_t total = 0;
  for (int k = 0; k < 20000; ++k) {
    total += format("(3I5,F20.10,3F15.8,2ES16.6)",
                    {Value(std::int64_t{1}), Value(std::int64_t{2}), Value(std::int64_t{k}),
                     -76.0107465 - k * 1e-7, 0.1 * k, -0.2, 1e-3, 1.5e-7, 2.5e-9})
                 .size();
  }
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  EXPECT_GT(total, 0u);
  EXPECT_LT(seconds, 2.0) << "20000 formatted lines took " << seconds << " s";
}

}  // namespace
}  // namespace norvik::fortran
