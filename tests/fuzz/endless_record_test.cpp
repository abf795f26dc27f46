// A record without a line feed, as from a binary file or /dev/zero: the reader
// stops at kMaxRecordLength with an error naming the record instead of growing
// the record until memory runs out.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <istream>
#include <sstream>
#include <streambuf>
#include <string>

#include "common/error.h"
#include "common/list_input.h"
#include "setup/job_setup.h"

namespace norvik::fortran {
namespace {

// Hands out `prefix`, then `fill` characters without end -- or rather up to 64
// times the bound, so that a reader without the bound fails the test instead of
// taking the machine's memory.
class EndlessBuffer : public std::streambuf {
 public:
  EndlessBuffer(std::string prefix, char fill) : prefix_(std::move(prefix)) { block_.fill(fill); }

 protected:
  int_type underflow() override {
    if (!prefix_given_) {
      prefix_given_ = true;
      if (!prefix_.empty()) {
        setg(prefix_.data(), prefix_.data(), prefix_.data() + prefix_.size());
        return traits_type::to_int_type(prefix_[0]);
      }
    }
    if (given_ >= 64 * kMaxRecordLength) return traits_type::eof();
    given_ += block_.size();
    setg(block_.data(), block_.data(), block_.data() + block_.size());
    return traits_type::to_int_type(block_[0]);
  }

 private:
  std::string prefix_;
  bool prefix_given_ = false;
  std::array<char, 4096> block_{};
  std::size_t given_ = 0;
};

std::string too_long(int record) {
  return " Record " + std::to_string(record) + " is longer than " +
         std::to_string(kMaxRecordLength) + " characters.";
}

// The lines of the error that `read` throws, or "no error".
template <class Read>
std::string error_of(Read&& read) {
  try {
    read();
  } catch (const Error& error) {
    return error.lines().size() == 1 ? error.lines()[0] : "several lines";
  }
  return "no error";
}

TEST(EndlessRecord, EndsBothReadsWithTheRecordNumber) {
  for (const char fill : {'\0', 'x', ' '}) {
    SCOPED_TRACE(static_cast<int>(fill));
    EndlessBuffer list_buffer("", fill);
    std::istream list_stream(&list_buffer);
    ListReader list_reader(list_stream);
    std::string text(10, '~');
    EXPECT_EQ(error_of([&] { list_reader.read({TextTarget{&text, 10}}); }), too_long(1));

    EndlessBuffer record_buffer("", fill);
    std::istream record_stream(&record_buffer);
    ListReader record_reader(record_stream);
    EXPECT_EQ(error_of([&] { record_reader.read_record(text, 10); }), too_long(1));
  }
  // After records that read: the number is the endless record's own.
  EndlessBuffer buffer("# comment\n1 2\n\n", 'x');
  std::istream stream(&buffer);
  ListReader reader(stream);
  std::string comment;
  std::int32_t a = 0, b = 0;
  ASSERT_EQ(reader.read_record(comment, 20), ReadStatus::ok);
  ASSERT_EQ(reader.read({&a, &b}), ReadStatus::ok);
  EXPECT_EQ(error_of([&] { reader.read({&a}); }), too_long(4));  // record 3 is blank
}

TEST(EndlessRecord, RecordsUpToTheBoundRead) {
  const std::string longest(kMaxRecordLength, 'y');
  // Ended by a line feed, by a carriage return and a line feed (which read_record
  // does not count), or by the end of the file.
  for (const std::string& end : {std::string("\n"), std::string("\r\n"), std::string()}) {
    SCOPED_TRACE(end.size());
    std::istringstream in("a\n" + longest + end, std::ios::binary);
    ListReader reader(in);
    std::string text;
    ASSERT_EQ(reader.read_record(text, 1), ReadStatus::ok);
    ASSERT_EQ(reader.read_record(text, 3), ReadStatus::ok);
    EXPECT_EQ(text, "yyy");
    EXPECT_EQ(reader.read_record(text, 3), ReadStatus::end_of_file);
  }
  for (const std::string& end : {std::string("\n7\n"), std::string()}) {
    SCOPED_TRACE(end.size());
    std::istringstream in(longest + end, std::ios::binary);
    ListReader reader(in);
    std::string word(5, '~');
    std::int32_t seven = 0;
    ASSERT_EQ(reader.read({TextTarget{&word, 5}}), ReadStatus::ok);
    EXPECT_EQ(word, "yyyyy");
    EXPECT_EQ(reader.read({&seven}), end.empty() ? ReadStatus::end_of_file : ReadStatus::ok);
    EXPECT_EQ(seven, end.empty() ? 0 : 7);
  }
  // One character more is refused by both reads.
  const std::string longer = longest + "z\n";
  std::istringstream record_in(longer, std::ios::binary);
  ListReader record_reader(record_in);
  std::string text;
  EXPECT_EQ(error_of([&] { record_reader.read_record(text, 4); }), too_long(1));
  std::istringstream list_in(longer, std::ios::binary);
  ListReader list_reader(list_in);
  EXPECT_EQ(error_of([&] { list_reader.read({TextTarget{&text, 4}}); }), too_long(1));
}

TEST(EndlessRecord, JobSetupReadingADeviceStops) {
  if (!std::filesystem::exists("/dev/zero")) GTEST_SKIP() << "no /dev/zero";
  // Without the bound the device would take all memory: make sure of it first.
  EndlessBuffer buffer("", '\0');
  std::istream stream(&buffer);
  ListReader reader(stream);
  std::string text;
  ASSERT_EQ(error_of([&] { reader.read_record(text, 1); }), too_long(1)) << "no bound";
  EXPECT_EQ(error_of([] { setup::read_molecule("/dev/zero", 1000, setup::MoleculeSettings{}); }),
            too_long(1));
  setup::HfParameters parameters;
  EXPECT_EQ(error_of([&] { setup::read_parameters("/dev/zero", parameters); }), too_long(1));
}

}  // namespace
}  // namespace norvik::fortran
