// Wall time of the MP2 correlation energy (the SCF point before it timed
// apart) of a molecule file's molecule; MEMORY_GB (default 4) limits the
// integral store and the half-transformed integrals, "direct" leaves the store
// out whatever the limit.
//
//   bench_mp2 FILE.mol [MEMORY_GB [direct]]
#include <chrono>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "basis/library.h"
#include "common/constants.h"
#include "properties/mp2.h"
#include "scf/single_point.h"
#include "setup/elements.h"

namespace {

using namespace norvik;

double seconds_since(std::chrono::steady_clock::time_point t0) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
}

// Basis name (record 2) and atoms (after the multiplicity record) of a molecule file.
struct Molecule {
  std::string basis;
  std::vector<int> z;
  std::vector<double> pos;
};

Molecule read_molecule(const char* path) {
  std::ifstream in(path);
  std::vector<std::string> lines;
  for (std::string l; std::getline(in, l);) lines.push_back(l);
  Molecule m;
  m.basis = lines.at(3).substr(1, lines.at(3).find('\'', 1) - 1);
  for (std::size_t k = 23; k < lines.size(); ++k) {
    std::istringstream a(lines[k]);
    std::string symbol;
    double x, y, w;
    if (!(a >> symbol >> x >> y >> w)) continue;
    if (symbol.size() == 1) symbol += ' ';
    m.z.push_back(setup::symbol_to_z(symbol));
    m.pos.insert(m.pos.end(), {x, y, w});
  }
  return m;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: bench_mp2 FILE.mol [MEMORY_GB]\n");
    return 2;
  }
  const Molecule m = read_molecule(argv[1]);
  scf::JobControl job;
  job.basis = m.basis;
  const basis::BasisSet basis = basis::make_basis(job.basis, m.z);
  int electrons = 0;
  for (int z : m.z) electrons += z;
  scf::PointSettings settings;
  settings.counts = {electrons / 2, electrons / 2};
  const scf::ScfControl control{100, 0.5, 1e-10, 1e-9};
  const std::size_t n = static_cast<std::size_t>(basis.nbasis());
  std::vector<double> rho(2 * n * n), orbitals(2 * n * (n + 1));
  const scf::MoleculeView view{m.z, m.z, m.pos};
  auto t0 = std::chrono::steady_clock::now();
  const auto point = scf::compute_point(basis, job, control, view, settings, rho, orbitals);
  std::printf("n=%zu SCF %.2f s  E(HF) %.10f hartree\n", n, seconds_since(t0),
              point.energy / constants::kHartreeEv);
  properties::Mp2Options options;
  if (argc > 2) options.memory_gb = std::stod(argv[2]);
  if (argc > 3 && std::string(argv[3]) == "direct") options.use_store = false;
  t0 = std::chrono::steady_clock::now();
  const std::clock_t c0 = std::clock();
  const auto e = properties::mp2_energy(basis, job, view, settings.counts, orbitals, options);
  const double cpu = static_cast<double>(std::clock() - c0) / CLOCKS_PER_SEC;
  std::printf(
      "MP2 %.2f s, cpu %.2f s (%s, batch %d, passes %d)  E(2) %.10f  same %.10f  opposite %.10f\n",
      seconds_since(t0), cpu, e.stored ? "stored" : "direct", e.batch, e.passes, e.correlation,
      e.same_spin, e.opposite_spin);
  return 0;
}
