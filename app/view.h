// `norvik view`: the result of a run as one self-contained HTML page
// (docs/viewer.md).  The page carries the result file verbatim, the cube files and
// the molden file it lists (whose orbitals the page computes itself), the page's
// own scripts and style and the 3Dmol.js library; it needs no server and no
// network.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace host {

// Bounds on what the page takes in: a result file holds a few megabytes even for
// a long optimisation of a large molecule; a cube of the default million points
// holds about 14 MB of text.
inline constexpr std::uintmax_t kMaxResultBytes = 64u << 20;
inline constexpr std::uintmax_t kMaxViewCubeBytes = 128u << 20;
// The molden file of a run: about 30 bytes per orbital coefficient, so 64 MiB
// holds the orbitals of a restricted run with more than a thousand functions.
inline constexpr std::uintmax_t kMaxViewMoldenBytes = 64u << 20;

// RESULT.html beside RESULT.json: the result file's path with its extension
// replaced.
std::string default_view_path(const std::string& json_path);

// The page of a result file, built in memory.
struct ViewPage {
  std::string problem;                  // why there is no page ("" when there is one)
  std::string html;                     // the page
  std::vector<std::string> cube_files;  // the cube files on the page, where they were read
  std::string molden_file;              // the molden file on the page, where it was read, or ""
  std::vector<std::string> notes;       // listed cubes or molden file left out, and why
};

// Reads the result file `json_path`, the cube files and the molden file it lists
// and fills the page; writes nothing.  For a host that writes the page under its own partial
// name (a run that lists the page among its outputs); write_view does the rest.
ViewPage build_view(const std::string& json_path);

// Writes the page of the result file `json_path` to `html_path`, first as
// `html_path`.partial, renamed into place at the end, so that a failure leaves an
// earlier page as it was.  Returns "" or the problem (a message without the
// leading "norvik: "); then nothing was written.  A cube file that is listed but
// cannot be read does not stop the page: the page says so where its surface
// would be, and the reason is appended to `notes` (when given).
std::string write_view(const std::string& json_path, const std::string& html_path,
                       std::vector<std::string>* notes = nullptr);

}  // namespace host
