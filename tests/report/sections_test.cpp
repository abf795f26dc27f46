// Report and run-log sections, byte for byte.  Expected lines were printed by
// gfortran from the same formats, so they check the formats and the formatter
// together.
#include "report/sections.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "norvik.h"

namespace {

using norvik::report::Lines;

TEST(ReportSections, ConstantsBlock) {
  const Lines expected = {
      "#",
      "#",
      "# Electron mass = 510.99892730  [keV]",
      "# Coupling Constant = 137.0359990740 ^-1",
      "# hbar*c =  1973.26971700 [eV.A]",
      "#",
      "# 1 [eV] = 96.48533646 [kJ/mol] = 23.06054887 [kcal/mol]",
      "# kB*298.15[K] = 0.025692579 [eV] = 0.592484976 [kcal/mol]",
      "#",
      "# Bohr radius  =   0.5291772104 [A]",
      "# Hartree unit =  27.2113850785 [eV]",
  };
  EXPECT_EQ(norvik::report::constants(NORVIK_BOHR_ANGSTROM, NORVIK_HARTREE_EV), expected);
}

TEST(ReportSections, ScfSettings) {
  const Lines molecule = {
      "#",
      "#  SCF iterations at most: Atom =  64,    Mole = 128",
      "#  Damping factor at SCF:  Atom = 0.50,   Mole = 0.35",
      "#  Cond. of Ene converge:  Atom = 1.E-06, Mole = 1.E-07 [eV]",
      "#  Cond. of RMS converge:  Atom = 1.E-06, Mole = 5.E-08",
  };
  EXPECT_EQ(norvik::report::scf({64, 128}, {0.5, 0.35}, {1e-6, 1e-7}, {1e-6, 5e-8}), molecule);

  const Lines atom = {
      "#",
      "#  SCF iterations at most:  48",
      "#  Damping factor at SCF:  0.70",
      "#  Cond. of Ene converge:  1.E-05 [eV]",
      "#  Cond. of RMS converge:  1.E-04",
  };
  EXPECT_EQ(norvik::report::scf_atom(48, 0.7, 1e-5, 1e-4), atom);

  // Kohn-Sham settings come in the order HF atom, KS atom, HF molecule, KS molecule.
  const Lines ks = norvik::report::scf_ks({48, 64, 49, 128}, {0.5, 0.6, 0.7, 0.8},
                                          {1e-5, 1e-6, 1e-7, 1e-8}, {1e-4, 1e-5, 1e-6, 1e-7});
  ASSERT_EQ(ks.size(), 9u);
  EXPECT_EQ(ks[1], "#  SCF iterations at most:   HF_Atom =  48,       HF_Mole =  49");
  EXPECT_EQ(ks[2], "#  Damping factor at SCF:    HF_Atom =  0.50,    HF_Mole =  0.70");
  EXPECT_EQ(ks[3], "#  Cond. of Ene converge:    HF_Atom = 1.E-05,    HF_Mole = 1.E-07 [eV]");
  EXPECT_EQ(ks[5], "#  SCF iterations at most:   KS_Atom =  64,    KS_Mole = 128");
  EXPECT_EQ(ks[8], "#  Cond. of RMS converge:    KS_Atom = 1.E-05,    KS_Mole = 1.E-07");
}

TEST(ReportSections, NumbersCountElectronsAndNonGhostAtoms) {
  const Lines expected = {"#", "#  Number of alpha, beta, and total electrons: 3 + 2 = 5",
                          "#  Number of atoms: 2"};
  EXPECT_EQ(norvik::report::numbers(3, 2, 3, 1), expected);
}

TEST(ReportSections, LogLines) {
  EXPECT_EQ(norvik::report::log_header()[0],
            "# iopt isrc iscf        Emol [eV]           Electric dipole moment mu [eA]         "
            "RMSD of Rho       |FPS-SPF| [au]");
  // A dipole component below 5e-6 is written as a plain zero, never "-0.00000".
  EXPECT_EQ(norvik::report::log_cycle_line(1, 0, 3, -2077.123456789, {-4.9e-6, 0.80001, -1.2},
                                           1.234e-5, 2.5),
            "    1    0    3      -2077.123456789     (    0.00000,   0.80001,  -1.20000 )      "
            "0.000012340       0.058105783");
  // A huge commutator switches the last column to scientific notation.
  EXPECT_EQ(norvik::report::log_cycle_line(1, 0, 1, -2070.5, {0.0, 0.0, 0.0}, 0.5, 4.0e6),
            "    1    0    1      -2070.500000000     (    0.00000,   0.00000,   0.00000 )      "
            "0.500000000     7.3498648E+01");
}

TEST(ReportSections, GeometryAndNotes) {
  const std::array<double, 6> pos = {0.0, -0.7572, 0.4692, 0.0, 0.0, 0.0};
  const std::array<int, 2> zat = {1, 0}, zel = {1, 8};
  const Lines ghost = norvik::report::geometry_ghost(pos, zat, zel);
  ASSERT_EQ(ghost.size(), 4u);
  EXPECT_EQ(ghost[1], "#  Position of atom                                       Z_atom");
  EXPECT_EQ(ghost[2], "#   (   0.0000000000  -0.7572000000   0.4692000000 ) [A]     1   1");
  EXPECT_EQ(ghost[3], "#   (   0.0000000000   0.0000000000   0.0000000000 ) [A]     0   8");
  EXPECT_EQ(norvik::report::geometry(pos, zat)[3],
            "#   (   0.0000000000   0.0000000000   0.0000000000 ) [A]     0");

  for (const auto& line : norvik::report::caution()) {
    if (line != "#") {
      EXPECT_EQ(line.size(), 54u) << line;
    }
  }
  EXPECT_EQ(norvik::report::insufficient_ram_rpa(10.0, 0.032)[2],
            "#   Vint = 1.00E+01 [GB]    TDHF = 3.20E-02 [GB]");
  EXPECT_EQ(norvik::report::insufficient_ram_mp2(0.9)[2], "#    MP2 = 9.00E-01 [GB]");
  const Lines incore = norvik::report::in_core(false, 120, 7260, 7000, 0.196, 0.1);
  EXPECT_EQ(incore[1], "# Direct SCF (very slow!!):");
  EXPECT_EQ(incore[2], "#  number of basis = 120,  number of basis pair = 7260");
  EXPECT_EQ(incore[4], "#  Vint Size = 1.96E-01 [GB], Limit of RAM = 1.00E-01 [GB]");
}

// The exported writers append to the file they are given and close it, so
// sections follow one another in the order of the calls.
TEST(ReportWriters, AppendSectionsInCallOrder) {
  const auto path = std::filesystem::temp_directory_path() / "norvik_report_writers.report";
  std::filesystem::remove(path);
  std::string name = path.string();
  name.resize(NORVIK_FILE_NAME_LENGTH, ' ');
  WRITE_SHEBANG(name.data());
  const norvik_int na = 3, nb = 2, natom = 2, nghost = 0;
  WRITE_NUMBERS(&na, &nb, &natom, &nghost, name.data());
  WRITE_CAUTION(name.data());
  std::ifstream in(path);
  std::stringstream text;
  text << in.rdbuf();
  const std::string row(54, '#');
  EXPECT_EQ(text.str(),
            "#\n#\n#  Number of alpha, beta, and total electrons: 3 + 2 = 5\n"
            "#  Number of atoms: 2\n#\n" +
                row +
                "\n# CAUTION                                            #\n"
                "# Kohn-Sham calculation of this molecule is unstable.#\n"
                "# You should check your log file to verify converged.#\n" +
                row + "\n");
  std::filesystem::remove(path);
}

}  // namespace
