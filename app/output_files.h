// Where a job's report and run log go, and how they get there.  The library
// writes each of them under a partial name beside the final one (NAME.partial);
// the host renames them into place only when the job has ended with a result, so
// that a run that fails leaves the previous report and log of that name as they
// were, and its own output under the partial names (docs/host.md).
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace host {

inline constexpr const char kPartialSuffix[] = ".partial";
inline constexpr std::size_t kPartialSuffixLength = sizeof kPartialSuffix - 1;

// The problem with a file name that goes to the library, "" if none.  The
// library takes names in a blank-padded buffer and trims the blanks, so a name
// must not be empty, must fit `limit` characters, must not end in a blank, and
// must hold no control characters.  `what` ("report") starts the message.
std::string file_name_problem(const std::string& name, std::size_t limit, const std::string& what);

struct OutputFile {
  std::string what;     // "report", "run log"
  std::string option;   // the option that names it: "--report"
  std::string path;     // the final name, as given
  std::string partial;  // where the library writes it during the job
};

OutputFile output_file(const std::string& what, const std::string& option, const std::string& path);

struct InputFile {
  std::string what;  // "molecule file"
  std::string path;
};

// Problems with the places the job will write: no output (final or partial)
// may be one of the inputs or another output (compared by file identity and by
// canonical path, not by the names as written), and an existing output must be
// a regular file, which a rename can replace.
std::vector<std::string> output_problems(const std::vector<OutputFile>& outputs,
                                         const std::vector<InputFile>& inputs);

// Starts every partial file afresh; returns the problem or "".
std::string start_partials(const std::vector<OutputFile>& outputs);

// Renames every partial file over its final name; returns the problem or "".
std::string move_into_place(const std::vector<OutputFile>& outputs);

}  // namespace host
