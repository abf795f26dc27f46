// The JSON result file of a run (PREFIX.json, docs/json.md): what the job
// computed, in atomic units, for programs to read.  Built in the job process
// from the job, its point and the files it wrote, and written under the
// partial name like every other output.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "hartree_fock.h"
#include "host_job.h"
#include "json_writer.h"

namespace host {

// What the host knows about the run beyond the point itself.
struct RunFacts {
  int status = 0;                             // the host's exit status (0 or 3)
  std::vector<std::string> messages;          // the norvik: summary lines, without the prefix
  std::string version;                        // the library's version
  std::string molecule_file, parameter_file;  // as given ("" : built-in settings)
  std::string xyz_file;                       // the .xyz file of an .xyz job ("" : none)
  // The other outputs by kind ("report", "log", "molden", ...), final names.
  std::vector<std::pair<std::string, std::string>> files;
  std::vector<CubeFile> cubes;     // final names
  std::vector<double> input_pos;   // the input geometry (3, natom) [Å]
  std::string log_partial;         // the run log being written (the SCF history)
  std::string trajectory_partial;  // the optimisation's .xyz frames ("" : none)
  double total_seconds = 0.0, setup_seconds = 0.0;
};

// One frame of the optimisation path: energy [eV] and positions [Å].
struct PathFrame {
  double energy = 0.0;
  std::vector<double> pos;
};
std::vector<PathFrame> optimisation_path(const std::string& xyz_text);

Json json_result(const Job& job, const PointResult& point, const RunFacts& facts);

}  // namespace host
