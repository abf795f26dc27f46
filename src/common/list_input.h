// List-directed (free-format) input, as `read(unit,*) a, b, c` reads text records.
//
// Values are separated by blanks, a comma (with optional blanks around it) or the
// end of a record; consecutive commas give null values, which leave the target
// unchanged, as does everything after a slash.  `r*value` repeats a value, `r*`
// repeats a null.  Text may be quoted ('...' or "...", a doubled quote standing
// for one) or bare (ended by a blank, comma, slash or the end of the record); it
// is blank-padded or cut to the target's length.  One read takes its values from
// as many records as it needs and discards the rest of its last record.
//
// The reference is gfortran's runtime, quirks included: a semicolon also
// separates values, a carriage return is a blank (so CRLF files read like LF
// files) and, in read_record, ends the record.  docs/text-io.md has the rules.
//
// Unlike gfortran, the reader refuses a record longer than kMaxRecordLength:
// an input without line feeds (a binary file, a device such as /dev/zero) would
// otherwise grow one record until memory runs out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace norvik::fortran {

// Where one list item is stored.  Text targets have a fixed length (the Fortran
// CHARACTER length); the stored text is blank-padded to exactly that length.
struct TextTarget {
  std::string* text;
  int length;
};
using Target = std::variant<std::int32_t*, double*, TextTarget>;

// The longest record that either read takes, in characters (the line feed, and
// in read_record a carriage return, not counted): far beyond any input of the
// library.  A longer record ends the read with norvik::Error
// " Record <n> is longer than 1048576 characters."
inline constexpr std::size_t kMaxRecordLength = std::size_t{1} << 20;

// Why a read failed; the reader maps each to the process-ending report.
enum class ReadStatus { ok, end_of_file, bad_value };

// Reads records from a stream in the manner of a sequential formatted unit.
class ListReader {
 public:
  explicit ListReader(std::istream& in) : in_(in) {}

  // One list-directed READ statement.  On end_of_file or bad_value the targets
  // read so far keep their new values, the later ones are unchanged; the target
  // whose value was malformed is left unspecified.
  ReadStatus read(std::span<const Target> targets);
  ReadStatus read(std::initializer_list<Target> targets) {
    return read(std::span<const Target>(targets.begin(), targets.size()));
  }

  // One `read(unit,'(A)') text` statement: the whole next record, blank-padded or
  // cut to `length`.
  ReadStatus read_record(std::string& text, int length);

  // Number of records consumed so far (1-based number of the last record read).
  int records_read() const { return records_read_; }

 private:
  std::istream& in_;
  int records_read_ = 0;
};

}  // namespace norvik::fortran
