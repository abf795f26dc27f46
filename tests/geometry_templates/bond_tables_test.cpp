// The report's bond tables, byte for byte.  The expected lines were printed by
// gfortran from the same formats, with the distances and angles computed there
// independently (tests/geometry_templates/data/bond_tables.f90).
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "common/error.h"
#include "norvik.h"
#include "report/bond_sections.h"

namespace {

using norvik::report::BondTable;
using norvik::report::Lines;

TEST(BondTables, WaterAndThePeroxideDihedral) {
  const std::vector<double> water = {0, 0, 0, 0, 0.8, -0.6, 0, -0.8, -0.6};
  const Lines expected_water = {
      "#",
      "#  Bond lengths and angles",
      "#  Bond length    r(O1-H2)        =  1.00000000 [A]",
      "#  Bond length    r(O1-H3)        =  1.00000000 [A]",
      "#  Bond angle     a(H2-O1-H3)     =  106.260205 [deg]",
  };
  EXPECT_EQ(norvik::report::bond_table(BondTable::kH2O, water, std::vector<int>{8, 1, 1}),
            expected_water);

  const std::vector<double> peroxide = {-0.7, 0, 0, 0.7, 0, 0, -1.0, 0.9, 0, 1.0, 0, 0.9};
  const Lines expected_peroxide = {
      "#",
      "#  Bond lengths and angles",
      "#  Bond length    r(O1-O2)        =  1.40000000 [A]",
      "#  Bond length    r(O1-H3)        =  0.94868330 [A]",
      "#  Bond length    r(O2-H4)        =  0.94868330 [A]",
      "#  Bond angle     a(O2-O1-H3)     =  108.434949 [deg]",
      "#  Bond angle     a(O1-O2-H4)     =  108.434949 [deg]",
      "#  Dihedral angle d(H3-O1-O2-H4)  =   90.000000 [deg]",
  };
  EXPECT_EQ(norvik::report::bond_table(BondTable::kH2O2, peroxide, std::vector<int>{8, 8, 1, 1}),
            expected_peroxide);
}

// Two-letter symbols widen the labels but not the columns of the values.
TEST(BondTables, PhosgeneAndPhosphorusPentafluoride) {
  const std::vector<double> phosgene = {0, 0, 0, 0, 0, 1.18, 0, 1.52, -0.9, 0, -1.52, -0.9};
  const Lines expected_phosgene = {
      "#",
      "#  Bond lengths and angles",
      "#  Bond length    r(C1-O2)        =  1.18000000 [A]",
      "#  Bond length    r(C1-Cl3)       =  1.76646540 [A]",
      "#  Bond angle     a(Cl3-C1-Cl4)   =  118.740003 [deg]",
      "#  Bond angle     a(O2-C1-Cl3)    =  120.629998 [deg]",
  };
  EXPECT_EQ(norvik::report::bond_table(BondTable::kCOCl2, phosgene, std::vector<int>{6, 8, 17, 17}),
            expected_phosgene);

  const std::vector<double> pf5 = {0, 0,    0, 0,      0,      1.58, 0,     0,      -1.58,
                                   0, 1.53, 0, -1.325, -0.765, 0,    1.325, -0.765, 0};
  const Lines expected_pf5 = {
      "#",
      "#  Bond lengths and angles",
      "#  Bond length    r(P1-F2)        =  1.58000000 [A]",
      "#  Bond length    r(P1-F4)        =  1.53000000 [A]",
      "#  Bond angle     a(F2-P1-F4)     =   90.000000 [deg]",
      "#  Bond angle     a(F4-P1-F5)     =  120.000353 [deg]",
  };
  EXPECT_EQ(norvik::report::bond_table(BondTable::kPF5, pf5, std::vector<int>{15, 9, 9, 9, 9, 9}),
            expected_pf5);
}

TEST(BondTables, RefuseAnotherAtomCount) {
  const std::vector<double> three(9, 0.0);
  try {
    norvik::report::bond_table(BondTable::kH2O2, three, std::vector<int>{8, 1, 1});
    FAIL() << "no error";
  } catch (const norvik::Error& e) {
    EXPECT_EQ(e.lines(), std::vector<std::string>{
                             " Wrong number of atoms for the bond table H2O2.           3"});
  }
}

// The exported writer appends its section to the report and closes it again.
TEST(BondTables, TheWriterAppendsToTheReport) {
  const auto path = std::filesystem::temp_directory_path() / "norvik_bond_tables.report";
  std::filesystem::remove(path);
  std::string name = path.string();
  name.resize(NORVIK_FILE_NAME_LENGTH, ' ');
  const norvik_int natom = 2;
  const std::vector<double> pos = {0, 0, -0.3, 0, 0, 0.617};
  const std::vector<norvik_int> z = {1, 0};  // a ghost centre is written Bq
  WRITE_BOND_TYPEH2(&natom, pos.data(), z.data(), name.c_str());
  WRITE_BOND_TYPEH2(&natom, pos.data(), z.data(), name.c_str());
  std::ifstream in(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  const std::vector<std::string> section = {"#", "#  Bond lengths and angles",
                                            "#  Bond length    r(H1-Bq2)       =  0.91700000 [A]"};
  std::vector<std::string> twice = section;
  twice.insert(twice.end(), section.begin(), section.end());
  EXPECT_EQ(lines, twice);
  std::filesystem::remove(path);
}

}  // namespace
