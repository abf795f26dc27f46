#include "plots.h"

#include <algorithm>
#include <cctype>
#include <cmath>

#include "norvik.h"

namespace host {

namespace {

// The digits of a whole non-negative number, or -1.
long whole(const std::string& text) {
  if (text.empty() || text.size() > 6 || !std::all_of(text.begin(), text.end(), [](char c) {
        return std::isdigit(static_cast<unsigned char>(c));
      })) {
    return -1;
  }
  return std::stol(text);
}

}  // namespace

std::vector<std::string> cube_requests(const std::string& list,
                                       std::vector<std::string>& problems) {
  std::vector<std::string> out;
  std::size_t start = 0;
  while (start <= list.size()) {
    const std::size_t comma = std::min(list.find(',', start), list.size());
    const std::string item = list.substr(start, comma - start);
    start = comma + 1;
    const bool ok = item == "homo" || item == "lumo" || item == "density" || item == "spin" ||
                    (item.rfind("homo-", 0) == 0 && whole(item.substr(5)) >= 0) ||
                    (item.rfind("lumo+", 0) == 0 && whole(item.substr(5)) >= 0) || whole(item) >= 1;
    if (!ok) {
      problems.push_back("--cube: '" + item +
                         "' is not a cube to write; use homo, lumo, homo-K, lumo+K, an orbital "
                         "number from 1, density or spin, separated by commas");
    } else if (std::find(out.begin(), out.end(), item) != out.end()) {
      problems.push_back("--cube: '" + item + "' is asked for twice; name each cube once");
    } else {
      out.push_back(item);
    }
  }
  return out;
}

CubeTarget cube_target(const std::string& what, int nalpha, int nbasis) {
  CubeTarget t;
  if (what == "density") return t;
  if (what == "spin") {
    t.what = -1;
    return t;
  }
  long k = 0;
  if (what.rfind("homo", 0) == 0) {
    k = nalpha - (what.size() > 4 ? whole(what.substr(5)) : 0);
  } else if (what.rfind("lumo", 0) == 0) {
    k = nalpha + 1 + (what.size() > 4 ? whole(what.substr(5)) : 0);
  } else {
    k = whole(what);
  }
  if (k < 1 || k > nbasis) {
    t.problem = "--cube " + what + ": the molecule has orbitals 1 to " + std::to_string(nbasis) +
                " (HOMO " + std::to_string(nalpha) + "); ask for one of them";
  }
  t.what = static_cast<int>(k);
  return t;
}

CubeBox cube_box(const std::vector<double>& pos, int natom, double step, long max_points) {
  CubeBox box;
  double lo[3], hi[3];
  for (int c = 0; c < 3; ++c) {
    lo[c] = hi[c] = pos[static_cast<std::size_t>(c)];
    for (int a = 1; a < natom; ++a) {
      lo[c] = std::min(lo[c], pos[static_cast<std::size_t>(3 * a + c)]);
      hi[c] = std::max(hi[c], pos[static_cast<std::size_t>(3 * a + c)]);
    }
  }
  // Wider steps until the box fits the limit; the box itself stays.
  for (;;) {
    double points = 1.0;
    for (int c = 0; c < 3; ++c) {
      box.origin[c] = lo[c] - kCubeMargin;
      box.counts[c] =
          static_cast<norvik_int>(std::ceil((hi[c] - lo[c] + 2 * kCubeMargin) / step)) + 1;
      points *= static_cast<double>(box.counts[c]);
    }
    if (points <= static_cast<double>(max_points)) break;
    step *= std::max(1.01, std::cbrt(points / static_cast<double>(max_points)));
  }
  box.step = step;
  return box;
}

void write_orbital_tables(const Job& job, norvik_int n, norvik_int northo,
                          const std::vector<double>& orbitals) {
  if (job.orbital_tables == 0) return;
  const norvik_int nalpha = job.nalpha, nbeta = job.nbeta;
  (job.orbital_tables == 2 ? WRITE_LCAOHF : WRITE_WAVES)(
      job.basis.data(), &job.natom, job.zel.data(), &n, &northo, &nalpha, &nbeta, orbitals.data(),
      job.report_file.data());
}

void write_cubes(const Job& job, norvik_int n, const std::vector<double>& rho,
                 const std::vector<double>& orbitals) {
  if (job.cubes.empty()) return;
  const CubeBox box = cube_box(job.pos, job.natom, job.cube_step, job.cube_max_points);
  const double steps[3] = {box.step, box.step, box.step};
  const norvik_int alpha = 1;
  for (const CubeFile& cube : job.cubes) {
    const norvik_int what = cube_target(cube.what, job.nalpha, n).what;
    const std::string file = padded(cube.path, kPathLength);
    CUBE_EXPORT(file.data(), &what, &alpha, box.origin, steps, box.counts, job.molecule_name.data(),
                job.basis.data(), &job.natom, job.zat.data(), job.zel.data(), job.pos.data(), &n,
                rho.data(), orbitals.data());
  }
}

}  // namespace host
