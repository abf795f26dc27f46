// The report sections of the Hartree–Fock results, byte for byte.
#include <gtest/gtest.h>

#include <vector>

#include "report/scf_sections.h"

namespace norvik::report {
namespace {

TEST(ScfSections, Energies) {
  const std::vector<int> zat{8, 1, 0}, zel{8, 1, 1};
  const std::vector<double> e{-2035.5, -13.6, 0.0};
  EXPECT_EQ(energy_atoms(zat, zel, e),
            (Lines{"#", "#  Energy of the free atoms", "#  Atom  Symbol        Energy [eV]",
                   "#     1    O        -2035.500000000", "#     2    H          -13.600000000",
                   "#  Sum of atomic energies =      -2049.100000000 [eV]"}));
  EXPECT_EQ(energy_molecule(-2100.25, 50.0, -2049.1),
            (Lines{"#", "#  Electronic energy  =      -2100.250000000 [eV]",
                   "#  Nuclear repulsion  =         50.000000000 [eV]",
                   "#  Molecular energy   =      -2050.250000000 [eV] =     -75.3453010233 [au]",
                   "#  Binding energy     =          1.150000000 [eV]"}));
  EXPECT_EQ(energy_molecule(-1.0, 0.5, 0.0).size(), 4u);  // no atoms, no binding energy
  EXPECT_EQ(
      energy_scf(-2077.123456789, 1.5e-8),
      (Lines{"#",
             "#  SCF energy: Emol =      -2077.123456789 [eV],  last change =  1.500E-08 [eV]"}));
  EXPECT_EQ(energy_kohn_sham(-204.985980969, -194.040532665, -10.945448303, 10.000003264),
            (Lines{"#", "#  XC energy          =       -204.985980969 [eV]",
                   "#    exchange         =       -194.040532665 [eV]",
                   "#    correlation      =        -10.945448303 [eV]",
                   "#  Electrons on grid  =         10.000003264"}));
  EXPECT_EQ(
      not_converged(3, 0.249, 1.119e-3),
      (Lines{"#",
             "#  SCF not converged in     3 cycles: the energy and orbitals are those of the "
             "last cycle.",
             "#  last energy change =  2.490E-01 [eV],  last RMS density change =  1.119E-03"}));
}

TEST(ScfSections, LevelsAndOccupation) {
  const std::vector<double> a{-20.5, -1.25, 0.5, 3.0}, b{-20.25, -1.0, 0.75, 3.5};
  EXPECT_EQ(levels(a, b, 3, 2, 1), (Lines{"#", "#  Orbital energies [eV] (occupied: *)",
                                          "#       i          alpha            beta",
                                          "#       1     -20.500000 *     -20.250000 *",
                                          "#       2      -1.250000 *      -1.000000  ",
                                          "#       3       0.500000         0.750000  "}));
  EXPECT_EQ(
      occupation(a, b, 4, 2, 0),
      (Lines{
          "#", "#  Occupied orbitals: alpha 2, beta 0",
          "#  alpha: HOMO =    -1.250000 [eV],  LUMO =     0.500000 [eV],  gap =   1.750000 [eV]",
          "#  beta:  HOMO =       none [eV],  LUMO =   -20.250000 [eV]"}));
  // All orbitals occupied: no LUMO.
  EXPECT_EQ(occupation(a, b, 4, 4, 4)[2],
            "#  alpha: HOMO =     3.000000 [eV],  LUMO =       none [eV]");
}

TEST(ScfSections, DipoleDependenceSpin) {
  EXPECT_EQ(
      dipole({-1e-9, 0.0, -0.359301}),
      (Lines{"#",
             "#  Electric dipole moment [eA]: (    0.000000,    0.000000,   -0.359301 )  |mu| ="
             "    0.359301"}));
  EXPECT_EQ(dependence(24, 24, 1e-7),
            (Lines{"#", "#  Number of basis functions: 24,  independent combinations: 24"}));
  EXPECT_EQ(dependence(24, 22, 1e-7)[2],
            "#  Linearly dependent combinations removed: 2 (overlap eigenvalues below  1.0E-07)");
  EXPECT_EQ(spin_contamination(0.7553, 0.75),
            (Lines{"#", "#  Spin contamination: <S**2> =    0.755300,  S(S+1) =    0.750000"}));
}

}  // namespace
}  // namespace norvik::report
