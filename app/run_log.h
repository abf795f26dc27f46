// The host's reading of the run log that the library's SCF drivers write, one
// line per cycle:
//   "    2    0    7      -2039.921801331     (    0.00000,   0.00000,  -0.35490 )
//        0.000119512       0.001199084"
// the point, the SCF stage, the cycle, the energy [eV], the dipole [eÅ], the RMS
// density change and |FPS-SPF| [hartree].  The result file takes the last SCF's
// cycles from it, the progress line each cycle as it is written.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace host {

struct ScfCycle {
  int point = 0, stage = 0, cycle = 0;
  double energy = 0.0;  // [eV]
  double rmsd = 0.0, commutator = 0.0;
};

// The cycle of one line; none for any other line (the header, a blank line).
std::optional<ScfCycle> read_scf_cycle(const std::string& line);

// The cycles of the last SCF in a run log's text (blank lines separate SCFs).
std::vector<ScfCycle> last_scf(const std::string& log_text);

}  // namespace host
