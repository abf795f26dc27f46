// The host's pictures of the wave function: the orbital tables in the report
// (--orbitals) and Gaussian cube files of orbitals and densities (--cube), with
// the grid the host chooses for them (docs/host.md, docs/cube.md).
#pragma once

#include <string>
#include <vector>

#include "host_job.h"
#include "norvik/export.h"

namespace host {

// The box around the atoms: this far beyond them on every side [Å] ...
inline constexpr double kCubeMargin = 4.0;
// ... in steps of this [Å] (--cube-step), widened when the box would hold more
// points than --cube-points allows.
inline constexpr double kCubeStep = 0.1;
inline constexpr long kCubeMaxPoints = 1000000;

// The cube requests of --cube: a comma-separated list of homo, lumo, homo-K,
// lumo+K, an orbital number, density or spin.  Appends a problem for every item
// that is none of these (or repeated).
std::vector<std::string> cube_requests(const std::string& list, std::vector<std::string>& problems);

// The orbital (1-based; of the α spin in an open shell) or density (0 total,
// −1 spin) that `what` asks for, in a job with nalpha occupied α orbitals and
// nbasis orbitals, and the problem ("" if none).
struct CubeTarget {
  int what = 0;
  std::string problem;
};
CubeTarget cube_target(const std::string& what, int nalpha, int nbasis);

// The grid: origin [Å], the step [Å] and the points along x, y and z.
struct CubeBox {
  double origin[3] = {};
  double step = kCubeStep;
  norvik_int counts[3] = {};
};
CubeBox cube_box(const std::vector<double>& pos, int natom, double step, long max_points);

// The orbital tables (0 none, 1 around the gap, 2 all) and the cubes of a
// converged point rho / orbitals with northo orbitals kept.
void write_orbital_tables(const Job& job, norvik_int n, norvik_int northo,
                          const std::vector<double>& orbitals);
void write_cubes(const Job& job, norvik_int n, const std::vector<double>& rho,
                 const std::vector<double>& orbitals);

}  // namespace host
