// Population analysis against Psi4's Mulliken and Löwdin charges
// (tests/references/data/populations.tsv, tools/references/population_references.py),
// the spin populations' sum rule, and the report section byte for byte.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "basis/library.h"
#include "properties/populations.h"
#include "reference_rows.h"
#include "report/property_sections.h"

namespace norvik::properties {
namespace {

std::vector<double> numbers(const std::string& text) {
  std::vector<double> out;
  std::istringstream in(text);
  for (double v; in >> v;) out.push_back(v);
  return out;
}

TEST(Populations, MullikenAndLowdinChargesMatchPsi4) {
  int rows = 0;
  for (const std::vector<std::string>& f : reference_rows("populations.tsv")) {
    const int multiplicity = std::stoi(f[2]);
    const ReferencePoint p = reference_point(f[1], f[6], multiplicity);
    const std::vector<double> mulliken = numbers(f[4]), lowdin = numbers(f[5]);
    const AtomPopulations m = atom_populations(p.basis, p.atoms.z, p.s, p.rho, Partition::mulliken);
    const AtomPopulations l = atom_populations(p.basis, p.atoms.z, p.s, p.rho, Partition::lowdin);
    double spin_m = 0.0, spin_l = 0.0;
    for (std::size_t a = 0; a < p.atoms.z.size(); ++a) {
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
