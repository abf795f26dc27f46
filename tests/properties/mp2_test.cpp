// MP2 correlation energies against Psi4's conventional MP2
// (tests/references/data/mp2.tsv, tools/references/mp2_references.py), RMP2 and
// UMP2, all electrons and frozen core; the batched route against the one-pass
// route; the frozen-core counts.
#include "properties/mp2.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "basis/library.h"
#include "common/constants.h"
#include "scf/single_point.h"
#include "setup/elements.h"

namespace norvik::properties {
namespace {

// Psi4 converges its SCF to 1e-10 in energy and density; E(2) moves with the
// orbitals to second order in their error, so both programs' energies agree far
// below this, which is still well below the last digit anyone quotes.
constexpr double kReferenceTolerance = 1e-8;  // hartree
// The batched route sums the same products in the same order but through
// products of other shapes: only the last bits may differ.
constexpr double kRouteTolerance = 1e-12;  // hartree

struct Row {
  std::string name, basis;
  int multiplicity = 1, frozen = 0;
  double scf = 0, corr = 0, same = 0, opposite = 0;
  std::vector<int> z;
  std::vector<double> pos;
};

std::vector<Row> reference_rows() {
  std::ifstream in(std::string(NORVIK_SOURCE_DIR) + "/tests/references/data/mp2.tsv");
  std::vector<Row> rows;
  std::string line;
  while (std::getline(in, line)) {
    if (line.empty() || line[0] == '#' || line.rfind("name\t", 0) == 0) continue;
    std::vector<std::string> f;
    std::istringstream fields(line);
    for (std::string x; std::getline(fields, x, '\t');) f.push_back(x);
    Row r;
    r.name = f[0];
    r.basis = f[1];
    r.multiplicity = std::stoi(f[3]);
    r.frozen = std::stoi(f[5]);
    r.scf = std::stod(f[6]);
    r.corr = std::stod(f[7]);
    r.same = std::stod(f[8]);
    r.opposite = std::stod(f[9]);
    std::istringstream atoms(f[10]);
    for (std::string atom; std::getline(atoms, atom, ';');) {
      std::istringstream a(atom);
      std::string symbol;
      double x, y, w;
      a >> symbol >> x >> y >> w;
      if (symbol.size() == 1) symbol += ' ';
      r.z.push_back(setup::symbol_to_z(symbol));
      r.pos.insert(r.pos.end(), {x, y, w});
    }
    rows.push_back(r);
  }
  return rows;
}

// A converged Hartree–Fock point of a row's molecule.
struct Point {
  basis::BasisSet basis;
  scf::JobControl job;
  setup::ElectronCount counts;
  std::vector<double> orbitals;
  double energy = 0;  // hartree
};

Point converged_point(const Row& r) {
  Point p;
  p.basis = basis::make_basis(r.basis, r.z);
  p.job.basis = r.basis;
  int electrons = 0;
  for (int z : r.z) electrons += z;
  p.counts = {(electrons + r.multiplicity - 1) / 2, (electrons - r.multiplicity + 1) / 2};
  const scf::ScfControl control{300, 0.5, 1e-11, 1e-10};
  scf::PointSettings settings;
  settings.counts = p.counts;
  const auto n = static_cast<std::size_t>(p.basis.nbasis());
  std::vector<double> rho(2 * n * n);
  p.orbitals.resize(2 * n * (n + 1));
  const scf::SinglePointResult s =
      scf::compute_point(p.basis, p.job, control, {r.z, r.z, r.pos}, settings, rho, p.orbitals);
  EXPECT_TRUE(s.converged) << r.name;
  p.energy = s.energy / constants::kHartreeEv;
  return p;
}

TEST(Mp2, CorrelationEnergiesMatchPsi4) {
  const std::vector<Row> rows = reference_rows();
  ASSERT_EQ(rows.size(), 28u);
  std::map<std::string, Point> points;
  for (const Row& r : rows) {
    if (!points.count(r.name)) points.emplace(r.name, converged_point(r));
    const Point& p = points.at(r.name);
    // the same SCF state as Psi4's before anything else
    ASSERT_NEAR(p.energy, r.scf, 1e-8) << r.name;
    Mp2Options options;
    options.frozen_core = r.frozen > 0;
    const Mp2Energy e =
        mp2_energy(p.basis, p.job, {r.z, r.z, r.pos}, p.counts, p.orbitals, options);
    EXPECT_EQ(e.frozen, r.frozen) << r.name;
    EXPECT_EQ(e.restricted, r.multiplicity == 1) << r.name;
    EXPECT_NEAR(e.correlation, r.corr, kReferenceTolerance) << r.name << " frozen " << r.frozen;
    EXPECT_NEAR(e.same_spin, r.same, kReferenceTolerance) << r.name << " frozen " << r.frozen;
    EXPECT_NEAR(e.opposite_spin, r.opposite, kReferenceTolerance)
        << r.name << " frozen " << r.frozen;
  }
}

// Batches of 1 and 2 occupied orbitals (the last one short) against one pass,
// restricted and unrestricted; and a memory limit that makes the route batch.
TEST(Mp2, BatchedRouteGivesTheOnePassEnergy) {
  for (const Row& r : reference_rows()) {
    if (r.frozen != 0 || (r.name != "c2h4_6-31Gx" && r.name != "nh2_6-31pGx")) continue;
    const Point p = converged_point(r);
    const scf::MoleculeView molecule{r.z, r.z, r.pos};
    const Mp2Energy whole = mp2_energy(p.basis, p.job, molecule, p.counts, p.orbitals);
    EXPECT_EQ(whole.passes, whole.restricted ? 1 : 2) << r.name;
    for (int batch : {1, 2}) {
      Mp2Options options;
      options.batch = batch;
      const Mp2Energy e = mp2_energy(p.basis, p.job, molecule, p.counts, p.orbitals, options);
      EXPECT_GT(e.passes, whole.passes) << r.name;
      EXPECT_NEAR(e.same_spin, whole.same_spin, kRouteTolerance) << r.name << " batch " << batch;
      EXPECT_NEAR(e.opposite_spin, whole.opposite_spin, kRouteTolerance)
          << r.name << " batch " << batch;
    }
    const int n = p.basis.nbasis();
    Mp2Options limited;
    limited.memory_gb = 3 * mp2_batch_bytes(n, n - p.counts.alpha, 1) / 1e9;
    const Mp2Energy e = mp2_energy(p.basis, p.job, molecule, p.counts, p.orbitals, limited);
    EXPECT_EQ(e.batch, 3) << r.name;
    EXPECT_NEAR(e.correlation, whole.correlation, kRouteTolerance) << r.name;
  }
}

TEST(Mp2, FrozenCoreCountsThePreviousNobleGasShells) {
  // H, He | Li, Ne | Na, Ar | K, Kr | Rb, Xe | Cs; ghosts (0) freeze nothing.
  const std::vector<std::pair<int, int>> cases = {{1, 0},   {2, 0},   {3, 1},   {10, 1},
                                                  {11, 5},  {18, 5},  {19, 9},  {36, 9},
                                                  {37, 18}, {54, 18}, {55, 27}, {0, 0}};
  for (const auto& [z, frozen] : cases) {
    const std::vector<int> charges = {z};
    EXPECT_EQ(frozen_core_orbitals(charges), frozen) << "Z = " << z;
  }
  const std::vector<int> water_dimer = {8, 1, 1, 8, 1, 1};
  EXPECT_EQ(frozen_core_orbitals(water_dimer), 2);
}

}  // namespace
}  // namespace norvik::properties
