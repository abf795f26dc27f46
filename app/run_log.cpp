#include "run_log.h"

#include <cstdio>
#include <sstream>
#include <utility>

namespace host {

std::optional<ScfCycle> read_scf_cycle(const std::string& line) {
  ScfCycle c;
  double dipole[3];
  if (std::sscanf(line.c_str(), "%d %d %d %lf ( %lf , %lf , %lf ) %lf %lf", &c.point, &c.stage,
                  &c.cycle, &c.energy, &dipole[0], &dipole[1], &dipole[2], &c.rmsd,
                  &c.commutator) != 9) {
    return std::nullopt;
  }
  return c;
}

std::vector<ScfCycle> last_scf(const std::string& log_text) {
  std::vector<ScfCycle> block, last;
  std::istringstream in(log_text);
  std::string line;
  while (std::getline(in, line)) {
    if (const std::optional<ScfCycle> c = read_scf_cycle(line)) {
      block.push_back(*c);
    } else if (line.find_first_not_of(" \r") == std::string::npos && !block.empty()) {
      last = std::move(block);
      block.clear();
    }
  }
  return block.empty() ? last : block;
}

}  // namespace host
