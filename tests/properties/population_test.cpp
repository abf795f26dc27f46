// Population analysis against Psi4's Mulliken and Löwdin charges
// (tests/references/data/populations.tsv, tools/references/population_references.py),
// the spin populations' sum rule, and the report section byte for byte.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "basis/library.h"
#include "properties/populations.h"
#include "report/property_sections.h"
#include "scf/single_point.h"
#include "setup/elements.h"

namespace norvik::properties {
namespace {

std::vector<double> numbers(const std::string& text) {
  std::vector<double> out;
  std::istringstream in(text);
  for (double v; in >> v;) out.push_back(v);
  return out;
}

TEST(Populations, MullikenAndLowdinChargesMatchPsi4) {
  std::ifstream in(std::string(NORVIK_SOURCE_DIR) + "/tests/references/data/populations.tsv");
  std::string line;
  int rows = 0;
  while (std::getline(in, line)) {
    if (line.empty() || line[0] == '#' || line.rfind("name\t", 0) == 0) continue;
    std::vector<std::string> f;
    std::istringstream fields(line);
    for (std::string x; std::getline(fields, x, '\t');) f.push_back(x);
    const int multiplicity = std::stoi(f[2]);
    std::vector<int> z;
    std::vector<double> pos;
    std::istringstream atoms(f[6]);
    int electrons = 0;
    for (std::string atom; std::getline(atoms, atom, ';');) {
      std::istringstream a(atom);
      std::string symbol;
      double x, y, w;
      a >> symbol >> x >> y >> w;
      if (symbol.size() == 1) symbol += ' ';
      z.push_back(setup::symbol_to_z(symbol));
      pos.insert(pos.end(), {x, y, w});
      electrons += z.back();
    }
    const basis::BasisSet basis = basis::make_basis(f[1], z);
    scf::JobControl job;
    job.basis = f[1];
    const scf::ScfControl control{300, 0.5, 1e-11, 1e-10};
    scf::PointSettings settings;
    settings.counts = {(electrons + multiplicity - 1) / 2, (electrons - multiplicity + 1) / 2};
    const auto n = static_cast<std::size_t>(basis.nbasis());
    std::vector<double> rho(2 * n * n), orbitals(2 * n * (n + 1)), s(n * n);
    scf::compute_point(basis, job, control, {z, z, pos}, settings, rho, orbitals, {}, s);
    const std::vector<double> mulliken = numbers(f[4]), lowdin = numbers(f[5]);
    const AtomPopulations m = atom_populations(basis, z, s, rho, Partition::mulliken);
    const AtomPopulations l = atom_populations(basis, z, s, rho, Partition::lowdin);
    double spin_m = 0.0, spin_l = 0.0;
    for (std::size_t a = 0; a < z.size(); ++a) {
      EXPECT_NEAR(m.charge[a], mulliken[a], 1e-5) << f[0] << " Mulliken atom " << a + 1;
      EXPECT_NEAR(l.charge[a], lowdin[a], 1e-5) << f[0] << " Lowdin atom " << a + 1;
      spin_m += m.spin[a];
      spin_l += l.spin[a];
    }
    EXPECT_NEAR(spin_m, multiplicity - 1, 1e-10) << f[0];
    EXPECT_NEAR(spin_l, multiplicity - 1, 1e-10) << f[0];
    ++rows;
  }
  EXPECT_EQ(rows, 5);
}

TEST(Populations, ReportSection) {
  const std::vector<int> z = {8, 1};
  const std::vector<double> q = {-0.4619351, 0.4619351};
  const auto lines = report::populations("Lowdin", z, q, false);
  ASSERT_EQ(lines.size(), 6u);
  EXPECT_EQ(lines[1], "#  Lowdin atomic charges [e]");
  EXPECT_EQ(lines[2], "#  Atom        Charge");
  EXPECT_EQ(lines[3], "#     1 O    -0.461935");
  EXPECT_EQ(lines[5], "#  Sum        0.000000");
  const std::vector<double> spin = {1.05, -0.05};
  EXPECT_EQ(report::populations("Mulliken", z, spin, true)[1],
            "#  Mulliken spin populations (alpha - beta)");
}

}  // namespace
}  // namespace norvik::properties
