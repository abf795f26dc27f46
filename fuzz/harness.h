// What the fuzz targets do with their bytes, shared by the libFuzzer targets
// (fuzz/*_fuzzer.cpp, Clang) and by the corpus replay of the test suite
// (tests/fuzz, any compiler).
//
// Each harness feeds the bytes to one input path of the core and checks what
// must hold whatever the bytes are.  norvik::Error is the expected end of a bad
// input; any other exception, a sanitizer report, a hang or runaway memory is a
// finding.  A failed check throws CheckFailure, which no harness catches.
#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>

namespace norvik::fuzz {

using Bytes = std::span<const std::uint8_t>;

class CheckFailure : public std::logic_error {
 public:
  explicit CheckFailure(const std::string& what) : std::logic_error(what) {}
};

// The free-format reader (common/list_input.h).  The first line of the input is
// a plan of READ statements, the rest is the file that they read:
//   i  an integer target       r  a real target       cN  a text target of N characters
//   -  a READ without targets  aN a record read, read(u,'(A)'), of N characters
// with statements separated by '|', e.g. "c10 i | r r r | a20 | -".  The plan is
// repeated until the file is exhausted; an empty plan reads "c10 | i i | r r r |
// a20".  Every run goes twice, over an in-memory stream and over one that hands
// out a character at a time: both must read the same.
void list_input(Bytes data);

// A molecule file through job setup (setup::read_molecule with the host's 1000
// atoms); a file that reads is read again with room for exactly its atoms,
// which must fail, and for one more, which must read the same.
void molecule_file(Bytes data);

// An SCF-parameter file read for a Hartree-Fock and for a Kohn-Sham job, each
// twice from different starting values: a value is either read from the file in
// both runs or, where the file leaves it out, kept in both.
void parameter_file(Bytes data);

}  // namespace norvik::fuzz
