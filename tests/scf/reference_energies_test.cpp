// Whole single points against the independent Psi4 references: total energy
// to 1e-6 hartree and dipole to 1e-4 e·Å, RHF for closed shells and UHF
// (with ⟨S²⟩) for open shells.  The default run takes the small cases; the
// rest run under the "slow" label.
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "common/constants.h"
#include "common/error.h"
#include "scf/density_update.h"
#include "scf/properties.h"
#include "scf/single_point.h"
#include "scf_fixture.h"
#include "setup/job_setup.h"

namespace norvik::scf {
namespace {

struct Reference {
  std::string name, file, basis;
  int nbasis = 0;
  double energy = 0;  // hartree
  Vec3 dipole{};
  bool fast = false;
  double s2 = -1;  // ⟨S²⟩, negative for RHF
};

std::string references_dir() {
  return std::string(NORVIK_SOURCE_DIR) + "/tests/references/data/";
}

std::vector<Reference> read_references() {
  std::ifstream in(references_dir() + "hf_energies.tsv");
  std::vector<Reference> refs;
  std::string line;
  while (std::getline(in, line)) {
    if (line.empty() || line[0] == '#' || line.rfind("name", 0) == 0) continue;
    std::vector<std::string> f;
    std::stringstream ss(line);
    std::string cell;
    while (std::getline(ss, cell, '\t')) f.push_back(cell);
    if (f.size() < 14) continue;
    Reference r;
    r.name = f[0];
    r.file = f[1];
    r.basis = f[2];
    r.nbasis = std::stoi(f[5]);
    r.energy = std::stod(f[7]);
    r.dipole = {std::stod(f[8]), std::stod(f[9]), std::stod(f[10])};
    r.fast = f[13] == "1";
    if (f.size() > 14 && !f[14].empty()) r.s2 = std::stod(f[14]);
    refs.push_back(r);
  }
  return refs;
}

SinglePointResult run(const std::string& file, const std::string& basis, int nbasis) {
  const setup::Molecule mol = setup::read_molecule(file, 1000, {});
  std::vector<int> zat, zel;
  std::vector<double> pos;
  for (const auto& a : mol.atoms) {
    zat.push_back(a.nuclear_charge);
    zel.push_back(a.element);
    pos.insert(pos.end(), a.position.begin(), a.position.end());
  }
  JobControl job;
  job.basis = basis;
  job.orthogonality = 1e-8;
  ScfControl control;
  control.niter = 200;
  control.damp = 0.5;
  control.thr_ene = 1e-9;
  control.thr_rms = 1e-9;
  const int n = basis_size(job.basis, zel);
  EXPECT_EQ(n, nbasis) << file;
  std::vector<double> rho(2 * n * n), orbitals(2 * n * (n + 1));
  PointSettings settings;
  settings.counts = mol.electrons;
  return single_point(job, control, {zat, zel, pos}, settings, rho, orbitals);
}

void check(const Reference& ref) {
  const auto start = std::chrono::steady_clock::now();
  SinglePointResult r;
  try {
    r = run(references_dir() + ref.file, ref.basis, ref.nbasis);
  } catch (const Error& e) {
    ADD_FAILURE() << ref.name << ":" << e.lines()[0];
    return;
  }
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  const double e = r.energy / constants::kHartreeEv;
  EXPECT_TRUE(r.converged) << ref.name;
  EXPECT_NEAR(e, ref.energy, 1e-6) << ref.name;
  for (int k = 0; k < 3; ++k) {
    EXPECT_NEAR(r.dipole[k], ref.dipole[k], 1e-4) << ref.name << " " << k;
  }
  if (ref.s2 >= 0) {
    EXPECT_NEAR(r.spin_squared, ref.s2, 1e-5) << ref.name;
  }
  std::printf("%-18s n=%3d E=%.10f dE=%+.2e cycles=%3d %.2fs\n", ref.name.c_str(), ref.nbasis, e,
              e - ref.energy, r.cycles, seconds);
}

// CuH in STO-3G has several RHF solutions within 0.2 hartree; which one an SCF
// reaches depends on its start and its first steps (Psi4 itself gives three
// different energies from three guesses), so it is no test of correctness.
bool path_dependent(const Reference& ref) {
  return ref.name == "cuh_STO-3G";
}

// The cases of the default run: Psi4 needs under 2 s and the basis is small.
bool quick(const Reference& ref) {
  return ref.fast && ref.nbasis <= 32 && !path_dependent(ref);
}

TEST(ReferenceEnergies, QuickCases) {
  const auto refs = read_references();
  ASSERT_GT(refs.size(), 10u);
  const char* only = std::getenv("NORVIK_SCF_CASE");
  for (const auto& ref : refs) {
    if (only ? ref.name == only : quick(ref)) check(ref);
  }
}

// Run by the ctest "scf_references_slow" (label slow).
TEST(ReferenceEnergies, DISABLED_LargerCases) {
  for (const auto& ref : read_references()) {
    if (!quick(ref) && !path_dependent(ref)) check(ref);
  }
}

// H2, HeH+, H2O and OH (UHF) in STO-3G and 6-31G*, against the Psi4 numbers of
// tools/scf/small_references.py at the geometries of scf_fixture.h.
TEST(ReferenceEnergies, SmallMolecules) {
  std::ifstream in(std::string(NORVIK_TEST_DATA) + "/small_references.tsv");
  std::string line;
  int count = 0;
  while (std::getline(in, line)) {
    if (line.empty() || line[0] == '#' || line.rfind("name", 0) == 0) continue;
    std::vector<std::string> f;
    std::stringstream ss(line);
    std::string cell;
    while (std::getline(ss, cell, '\t')) f.push_back(cell);
    ASSERT_GE(f.size(), 6u);
    const testing::Case c = f[0] == "h2"     ? testing::h2()
                            : f[0] == "hehp" ? testing::heh_plus()
                            : f[0] == "h2o"  ? testing::water()
                                             : testing::hydroxyl();
    testing::Fixture fx(c, f[1]);
    fx.start();
    CycleSettings cycle;
    cycle.niter = 100;
    cycle.thr_ene = cycle.thr_rms = 1e-10;
    const ScfResult r = run_scf(fx.system(), cycle, fx.arrays());
    const double e = (r.energy + nuclear_repulsion(c.z, c.pos)) / constants::kHartreeEv;
    const Vec3 nuc = nuclear_dipole(c.z, c.pos);
    EXPECT_TRUE(r.converged) << line;
    EXPECT_NEAR(e, std::stod(f[2]), 1e-6) << line;
    for (int k = 0; k < 3; ++k)
      EXPECT_NEAR(r.dipole[k] + nuc[k], std::stod(f[3 + k]), 1e-4) << line;
    if (f.size() > 6 && !f[6].empty()) {
      std::vector<double> work(2 * fx.n * fx.n);
      EXPECT_NEAR(spin_squared({fx.prepared.s.data(), fx.n, fx.n, fx.n}, fx.rho, work),
                  std::stod(f[6]), 1e-5)
          << line;
    }
    ++count;
  }
  EXPECT_EQ(count, 8);
}

}  // namespace
}  // namespace norvik::scf
