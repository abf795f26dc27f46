// The host's pre-check of the input files, before the library is asked to read
// them.  The library reads the molecule and parameter files itself and stops on
// what it cannot read; what it leaves to its host (a cut-off last atom, values out
// of range, text it truncates or cuts at a NUL) is caught here, with the file, the
// record and what to do about it.  docs/host.md lists every check and its limit.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace host {

// Bounds on an input file, so that the pre-check (and the library after it)
// reads a bounded amount: a molecule of tens of thousands of atoms fits in a
// few megabytes, and no record of either format needs more than a line.
inline constexpr std::uintmax_t kMaxInputBytes = 16u << 20;
inline constexpr std::size_t kMaxRecordLength = 1024;

// Limits of the settings that the host passes on (docs/host.md gives the reasons).
inline constexpr int kMaxIterations = 100000;
inline constexpr int kMaxThreads = 1024;
inline constexpr double kMaxMemoryGb = 1.0e5;
inline constexpr double kMaxConvergence = 1.0e-2;  // energy [eV] and RMS density change
inline constexpr double kMaxScreening = 1.0e-6;    // [eV]
inline constexpr double kMaxCoordinate = 1.0e5;    // [angstrom]
inline constexpr double kMinAtomDistance = 0.1;    // [angstrom]

// What the pre-check learnt that the host needs later.
struct InputFacts {
  int natom = 0;                // atom records of the molecule file
  std::string start_density;    // record 12 of the molecule file ("" = free atoms)
  int optimisation_cycles = 0;  // record 6 (0: a single point)
  int vibrations = 0;           // record 10: 0 none, 1 vibrations and thermochemistry, 2 with Raman
  int fragment_first = 0;       // record 16 of a counterpoise job: fragment A
  int fragment_last = 0;
  bool counterpoise = false;  // record 18 = counterpoise
  int charge = 0;             // record 20 (read for a counterpoise job)
  bool hehpl = false;         // a counterpoise job of HeH+ (one He, one H, charge +1)
  std::string theory;         // record 2, trimmed ("" when it cannot be read)
  int theory_record = 0;      // where record 2 is in the file (blank lines count)
  std::string basis;          // record 4, trimmed
  // The electrons the library will count: the nuclear charges of the atoms that
  // are not ghosts, less the charge of record 20.
  int electrons = 0;
  int multiplicity = 1;  // record 22
  int multiplicity_record = 0;
};

// The element symbols of the library, H (Z = 1) to Xe (Z = 54), in its letter
// case: the symbol of Z is element_symbols()[Z - 1].
std::span<const std::string_view> element_symbols();

// The basis-set names of the library, exactly as it compares them.
std::span<const std::string_view> basis_names();

// Two atoms closer than kMinAtomDistance: indices into the positions, first <
// second, and their distance [angstrom].
struct ClosePair {
  std::size_t first, second;
  double distance;
};
using Position = std::array<double, 3>;  // x y z [angstrom], finite

// The pairs of atoms closer than kMinAtomDistance, at most `most` of them, in
// the order of their second atom; linear in the atom count.
std::vector<ClosePair> close_pairs(const std::vector<Position>& positions, std::size_t most);

// Checks that `path` names a regular file of at most `limit` bytes that can be
// read; `what` ("molecule file") starts the message, `limit_holder` ends the one
// of a file too large.  Returns "" or the problem.
std::string input_file_problem(const std::string& path, const std::string& what,
                               std::uintmax_t limit = kMaxInputBytes,
                               const std::string& limit_holder = "an input file may hold");

// Reads the molecule file and the parameter file ("" for the built-in settings)
// the way the library will, and appends every problem found to `problems`, one
// message each (without the leading "norvik: ").
InputFacts check_inputs(const std::string& molecule_file, const std::string& parameter_file,
                        std::vector<std::string>& problems);

}  // namespace host
