// The quadrupole moment against Psi4 (tests/references/data/quadrupoles.tsv,
// tools/references/quadrupole_references.py), populations per shell against
// the atoms', and the report sections of both byte for byte.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "basis/labels.h"
#include "basis/library.h"
#include "properties/multipoles.h"
#include "properties/populations.h"
#include "reference_rows.h"
#include "report/orbital_sections.h"

namespace norvik::properties {
namespace {

// Psi4 rounds its table to 1e-9 e·Å²; the agreement asked of the moments.
constexpr double kQuadrupoleTolerance = 1e-5;
// The shells of an atom add up to its population to rounding.
constexpr double kSumTolerance = 1e-12;

TEST(Moments, QuadrupolesMatchPsi4AndShellsAddUpToAtoms) {
  int rows = 0;
  for (const std::vector<std::string>& f : reference_rows("quadrupoles.tsv")) {
    const ReferencePoint p = reference_point(f[1], f[5], std::stoi(f[2]));
    const std::vector<int>& z = p.atoms.z;

    // Psi4's Q_ij = Σ q r_i r_j; Θ = (3 Q − δ tr Q) / 2.
    std::vector<double> psi4;
    std::istringstream values(f[4]);
    for (double v; values >> v;) psi4.push_back(v);
    ASSERT_EQ(psi4.size(), 6u);
    const Quadrupole q = quadrupole(p.basis, z, p.atoms.pos, p.rho);
    const int index[6][2] = {{0, 0}, {0, 1}, {0, 2}, {1, 1}, {1, 2}, {2, 2}};
    const double trace = psi4[0] + psi4[3] + psi4[5];
    for (int c = 0; c < 6; ++c) {
      const int i = index[c][0], j = index[c][1];
      const double theta = 1.5 * psi4[c] - (i == j ? 0.5 * trace : 0.0);
      EXPECT_NEAR(q.traced[3 * i + j], psi4[c], kQuadrupoleTolerance) << f[0] << " Q " << c;
      EXPECT_NEAR(q.theta[3 * i + j], theta, kQuadrupoleTolerance) << f[0] << " Theta " << c;
      EXPECT_EQ(q.theta[3 * i + j], q.theta[3 * j + i]);
    }
    EXPECT_NEAR(q.theta[0] + q.theta[4] + q.theta[8], 0.0, 1e-12) << f[0];

    // Every shell belongs to its atom: the shells of each atom give its charge
    // and spin in both partitions.
    for (Partition partition : {Partition::mulliken, Partition::lowdin}) {
      const AtomPopulations atoms = atom_populations(p.basis, z, p.s, p.rho, partition);
      const ShellPopulations shells = shell_populations(p.basis, p.s, p.rho, partition);
      ASSERT_EQ(shells.electrons.size(), p.basis.shells.size());
      std::vector<double> charge(z.begin(), z.end()), spin(z.size(), 0.0);
      for (std::size_t k = 0; k < p.basis.shells.size(); ++k) {
        charge[static_cast<std::size_t>(p.basis.shells[k].atom)] -= shells.electrons[k];
        spin[static_cast<std::size_t>(p.basis.shells[k].atom)] += shells.spin[k];
      }
      for (std::size_t a = 0; a < z.size(); ++a) {
        EXPECT_NEAR(charge[a], atoms.charge[a], kSumTolerance) << f[0] << " atom " << a + 1;
        EXPECT_NEAR(spin[a], atoms.spin[a], kSumTolerance) << f[0] << " atom " << a + 1;
      }
    }
    ++rows;
  }
  EXPECT_EQ(rows, 5);
}

TEST(Moments, ShellAndFunctionLabels) {
  // Oxygen 6-31G* (s, sp, sp, d) and hydrogen 6-31G** (s, s, p).
  const basis::BasisSet basis = basis::make_basis("6-31Gxx", std::vector<int>{8, 1});
  const std::vector<std::string> shells = basis::shell_labels(basis);
  const std::vector<std::string> expected = {"1s", "2sp", "3sp", "3d", "1s", "2s", "2p"};
  EXPECT_EQ(shells, expected);
  const std::vector<std::string> functions = basis::function_labels(basis);
  ASSERT_EQ(functions.size(), static_cast<std::size_t>(basis.nbasis()));
  EXPECT_EQ(functions[1], "2s");
  EXPECT_EQ(functions[2], "2py");
  EXPECT_EQ(functions[4], "2px");
  EXPECT_EQ(functions[9], "3dxy");
  EXPECT_EQ(functions[13], "3dx2-y2");
  EXPECT_EQ(functions[14], "1s");  // five d functions: H starts at 14
  EXPECT_EQ(functions.back(), "2px");
  // The Cartesian set adds the x² + y² + z² companion as the sixth d function.
  const std::vector<std::string> cartesian =
      basis::function_labels(basis::make_basis("6-31GxC", std::vector<int>{8}));
  ASSERT_EQ(cartesian.size(), 15u);
  EXPECT_EQ(cartesian[14], "3dr2");
}

TEST(Moments, ReportSections) {
  const std::array<double, 9> theta = {-0.38, 0.0, 0.0, 0.0, 0.97, 1e-8, 0.0, 1e-8, -0.59};
  const auto q = report::quadrupole(theta);
  ASSERT_EQ(q.size(), 7u);
  EXPECT_EQ(q[1], "#  Electric quadrupole moment about the centre of nuclear charge");
  EXPECT_EQ(
      q[4],
      "#     x   -0.380000    0.000000    0.000000         -1.825218    0.000000    0.000000");
  EXPECT_EQ(
      q[5],
      "#     y    0.000000    0.970000    0.000000          0.000000    4.659109    0.000000");

  const std::vector<int> elements = {8, 1};
  const std::vector<int> atom_of = {0, 0, 1};
  const std::vector<std::string> labels = {"1s", "2sp", "1s"};
  const std::vector<double> electrons = {1.99, 6.5, 0.51}, spin = {0.0, 0.75, -0.25};
  const auto p = report::shell_populations("Lowdin", elements, atom_of, labels, electrons, spin);
  ASSERT_EQ(p.size(), 7u);
  EXPECT_EQ(p[1], "#  Lowdin shell populations [e]");
  EXPECT_EQ(p[2], "#  Atom        Shell   Electrons        Spin");
  EXPECT_EQ(p[4], "#     1 O        2sp    6.500000    0.750000");
  EXPECT_EQ(p[6], "#  Sum                  9.000000    0.500000");

  // Two functions, two orbitals, one occupied: the names, level, occupation and
  // coefficient rows.
  const std::vector<int> fn_atom = {0, 1};
  const std::vector<std::string> fn_labels = {"1s", "1s"};
  const report::FunctionNames names{fn_atom, elements, fn_labels};
  const std::vector<double> orbitals = {0.55, 0.62, 1.21, -1.08, -17.25, 4.5};
  const auto t =
      report::orbital_table("Orbitals around the gap", names, 2, orbitals, 0, 2, 1, 2.0, true);
  const std::vector<std::string> expected = {
      "#",
      "#  Orbitals around the gap",
      "#",
      "#                            1           2",
      "#                         HOMO        LUMO",
      "#  Energy [eV]      -17.250000    4.500000",
      "#  Occupation         2.000000    0.000000",
      "#     1 O       1s    0.550000    1.210000",
      "#     2 H       1s    0.620000   -1.080000",
  };
  EXPECT_EQ(t, expected);
}

}  // namespace
}  // namespace norvik::properties
