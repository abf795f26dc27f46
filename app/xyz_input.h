// An .xyz file as the input of a job (docs/host.md, "XYZ input"): the atoms
// come from the file, the theory, basis set, charge, multiplicity and the rest
// from options of the command line.  From them the host writes the molecule
// file and the parameter file that the library reads, so that the job runs as
// any molecule-file job does and can be repeated from those two files.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace host {

// The first line of every molecule and parameter file that the host writes
// from an .xyz file starts with this text; a file at that name that does not
// is the user's own, and the host refuses to replace it.
inline constexpr const char kWrittenMarker[] = "# written by norvik from ";

// --opt without a number.
inline constexpr int kDefaultOptimisationCycles = 50;

// What the options of an .xyz job choose; what is not given keeps these values.
struct XyzChoices {
  std::string method = "HF";     // theory keyword of record 2, in the library's spelling
  std::string basis = "6-31Gx";  // record 4, in the library's spelling
  int charge = 0;                // record 20
  int multiplicity = 0;          // record 22; 0: the lowest for the electron count
  int optimisation_cycles = 0;   // record 6 (record 8 is always 2, quasi-Newton)
  int vibrations = 0;            // record 10: --freq 1, --raman 2
  std::string population = "none";
  double memory_gb = 4.0;  // parameter record 2
  int threads = 0;         // parameter record 4
  // The options given, in order, for the message that refuses them with a
  // molecule file.
  std::vector<std::string> given;
};

// When args[i] is an option of an .xyz job, reads it (and its value, moving i
// on to it) into `choices` and returns true; a value it cannot take appends a
// problem (without the leading "norvik: ").  Other arguments: false.
bool read_xyz_option(const std::vector<std::string>& args, std::size_t& i, XyzChoices& choices,
                     std::vector<std::string>& problems);

// The message that refuses an .xyz option given with a molecule file: which
// record of which file to edit instead.
std::string xyz_option_refused(const std::string& option, const std::string& molecule_file);

// Whether a file name ends in .xyz (in any letter case).
bool is_xyz_name(const std::string& path);

// Whether a theory keyword runs the Hartree-Fock family (HF, MP2, RPA, TDA);
// every other keyword is a functional and runs Kohn-Sham.
bool is_hartree_fock_theory(const std::string& theory);

// Whether the library knows a theory keyword, compared exactly.
bool is_known_theory(const std::string& theory);

// The theory keywords of the library, for a message.
std::string known_theories();

struct XyzAtom {
  int number = 0;  // Z
  double x = 0.0, y = 0.0, z = 0.0;
  int line = 0;  // in the .xyz file, from 1
};

// Reads the atoms of an .xyz file; every problem is appended with the file and
// the line.  The file must already have passed input_file_problem.
std::vector<XyzAtom> read_xyz(const std::string& path, std::vector<std::string>& problems);

// Sets the multiplicity of an unset choice to the lowest for the electron
// count, and checks a given one against it (the library's rule: 2S+1 and the
// electron count of opposite parity, S no larger than the electrons allow).
// Returns the electron count; a problem is appended.
int settle_multiplicity(const std::string& xyz_path, const std::vector<XyzAtom>& atoms,
                        XyzChoices& choices, std::vector<std::string>& problems);

// The problem with an electron count and multiplicity, "" if none: the
// library's rule at setup.  `where` starts the message ("water.mol").
std::string electron_count_problem(int electrons, int multiplicity, const std::string& where);

// The molecule name (record 6) for an .xyz file: its name without folder and
// extension, with any character that a bare free-format text cannot hold
// replaced by '_', at most 20 characters.
std::string molecule_name_of(const std::string& xyz_path);

// The texts of the molecule file and of the parameter file (in the layout of
// the theory's family), each starting with kWrittenMarker, the .xyz file's name
// and `command`, the command line that asked for them.
std::string molecule_file_text(const std::string& xyz_path, const std::string& command,
                               const std::vector<XyzAtom>& atoms, const XyzChoices& choices);
std::string parameter_file_text(const std::string& xyz_path, const std::string& command,
                                const XyzChoices& choices);

// Whether the file at `path` starts with kWrittenMarker (false when it is not a
// regular file or cannot be read).
bool written_by_norvik(const std::string& path);

// The longest command line that the first line of a written file shows.
inline constexpr std::size_t kMostCommandShown = 600;

// A command line as one line of text: arguments that a shell would split or
// expand are single-quoted, control characters become '?', and a line longer
// than `most` characters is cut with "...".
std::string command_text(const std::vector<std::string>& argv, std::size_t most);

}  // namespace host
