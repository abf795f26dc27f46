// Job setup: molecule and parameter files, electron counts, element tables.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "common/error.h"
#include "norvik.h"
#include "setup/elements.h"
#include "setup/job_setup.h"

namespace {

namespace fs = std::filesystem;
using norvik::Error;
namespace setup = norvik::setup;

// Writes a file in a per-test scratch folder and returns its path.
class ScratchFiles : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = fs::temp_directory_path() /
           ("norvik_setup_" +
            std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()));
    fs::create_directories(dir_);
  }
  void TearDown() override { fs::remove_all(dir_); }

  std::string write(const std::string& name, const std::string& text) {
    const fs::path path = dir_ / name;
    std::ofstream(path, std::ios::binary) << text;
    return path.string();
  }

  // A molecule file with the given ghost range, charge, multiplicity and atoms.
  std::string molecule(const std::string& ghosts, int charge, int mult,
                       const std::vector<std::string>& atoms, const std::string& name = "m.mol") {
    std::string text =
        "# theory\nHF\n# basis\n6-31Gxx\n# name, cycles\n'water molecule', 3\n# 8\n1\n# 10\n2\n"
        "# start density\n'rho/start.dat'\n# 14\nMulliken\n# ghosts\n" +
        ghosts + "\n# 18\nnone\n# charge\n" + std::to_string(charge) + "\n# multiplicity\n" +
        std::to_string(mult) + "\n# atoms\n";
    for (const auto& a : atoms) text += a + "\n";
    return write(name, text);
  }

  static std::string message_of(const Error& e) { return e.lines().at(0); }

  fs::path dir_;
};

const std::vector<std::string> kWater = {"O 0.0 0.0 0.1173", "H 0.0 0.7572 -0.4692",
                                         "H,0.0,-0.7572,-0.4692"};

TEST_F(ScratchFiles, ReadsEveryMoleculeRecord) {
  const auto m = setup::read_molecule(molecule("0 0", 0, 1, kWater), 10, {});
  EXPECT_EQ(m.settings.theory, "HF        ");
  EXPECT_EQ(m.settings.text4, "6-31Gxx             ");
  EXPECT_EQ(m.settings.text6, "water molecule      ");
  EXPECT_EQ(m.settings.int6, 3);
  EXPECT_EQ(m.settings.int8, 1);
  EXPECT_EQ(m.settings.int10, 2);
  EXPECT_EQ(m.settings.text12.substr(0, 14), "rho/start.dat ");
  EXPECT_EQ(m.settings.text12.size(), 120u);
  EXPECT_EQ(m.settings.text14, "Mulliken            ");
  ASSERT_EQ(m.atoms.size(), 3u);
  EXPECT_EQ(m.atoms[0].element, 8);
  EXPECT_DOUBLE_EQ(m.atoms[2].position[1], -0.7572);
  EXPECT_EQ(m.electrons.alpha, 5);
  EXPECT_EQ(m.electrons.beta, 5);
  EXPECT_EQ(m.nghost, 0);
}

TEST_F(ScratchFiles, AtomListMustEndBeforeCapacity) {
  const auto path = molecule("0 0", 0, 1, kWater);
  EXPECT_EQ(setup::read_molecule(path, 4, {}).atoms.size(), 3u);
  try {
    setup::read_molecule(path, 3, {});
    FAIL() << "a file with as many atoms as the capacity must be refused";
  } catch (const Error& e) {
    EXPECT_EQ(message_of(e), " " + path + " is not found.");
  }
  EXPECT_THROW(setup::read_molecule(path, 0, {}), Error);
  EXPECT_THROW(setup::read_molecule((dir_ / "absent.mol").string(), 10, {}), Error);
}

TEST_F(ScratchFiles, GhostRanges) {
  EXPECT_EQ(setup::read_molecule(molecule("-1 2", 0, 1, kWater), 10, {}).nghost, 0);
  const auto ghosts = setup::read_molecule(molecule("2 3", 0, 1, kWater), 10, {});
  EXPECT_EQ(ghosts.nghost, 2);
  EXPECT_EQ(ghosts.atoms[1].nuclear_charge, 0);
  EXPECT_EQ(ghosts.atoms[1].element, 1);  // a ghost keeps its basis functions
  EXPECT_EQ(ghosts.electrons.total(), 8);
  for (const char* bad : {"3 2", "1 4", "0 -1"}) {
    try {
      setup::read_molecule(molecule(bad, 0, 1, kWater), 10, {});
      FAIL() << bad;
    } catch (const Error& e) {
      EXPECT_EQ(message_of(e), " Invalid ghost atoms.");
    }
  }
}

TEST_F(ScratchFiles, ElectronCombinations) {
  const std::vector<std::string> h2 = {"H 0 0 0", "H 0 0 0.74"};
  const auto singlet = setup::read_molecule(molecule("0 0", 0, 1, h2), 10, {});
  EXPECT_EQ(singlet.electrons.alpha, 1);
  EXPECT_EQ(singlet.electrons.beta, 1);
  try {
    setup::read_molecule(molecule("0 0", 0, 2, h2), 10, {});
    FAIL();
  } catch (const Error& e) {
    EXPECT_EQ(message_of(e),
              " Invalid combination in Nelectron.           2           0           2");
  }
  // No electron left: a bare proton.
  try {
    setup::read_molecule(molecule("0 0", 1, 1, {"H 0 0 0"}), 10, {});
    FAIL();
  } catch (const Error& e) {
    EXPECT_EQ(message_of(e), " No atom or no electron.");
  }
  // A multiplicity that needs more unpaired electrons than there are.
  EXPECT_THROW(setup::count_electrons(1, 0, 4), Error);
  EXPECT_EQ(setup::count_electrons(8, 0, 3).alpha, 5);
  // Counts beyond any 32-bit electron or orbital sum are impossible states too.
  EXPECT_THROW(setup::count_electrons(1, -2147483646, 2147483646), Error);
  EXPECT_THROW(setup::count_electrons(2, -2147483646, 2147483647), Error);
  EXPECT_THROW(setup::count_electrons(54, -2147483647 - 1, 2147483647), Error);
}

TEST_F(ScratchFiles, SymbolsMatchExactly) {
  for (const char* atom : {"h 0 0 0", "CL 0 0 0"}) {
    try {
      setup::read_molecule(molecule("0 0", 0, 2, {atom}), 10, {});
      FAIL() << atom;
    } catch (const Error& e) {
      EXPECT_EQ(message_of(e),
                std::string(" symbol exceed the limit in Smb2Chg.") + std::string(atom, 2));
    }
  }
}

TEST_F(ScratchFiles, MalformedRecordsEndTheJob) {
  EXPECT_THROW(setup::read_molecule(molecule("0 0", 0, 1, {"O 0.0 zero 0.0"}), 10, {}), Error);
  EXPECT_THROW(setup::read_molecule(write("short.mol", "# theory\nHF\n# basis\n"), 10, {}), Error);
}

TEST_F(ScratchFiles, ParameterFilesKeepNullValues) {
  setup::HfParameters hf;
  hf.value2 = 4.0;
  hf.niter = {11, 22};
  const auto path = write("hf.par",
                          "# memory\n2.5\n# threads\n2\n# iterations\n64 /\n# damping\n0.3 0.6\n"
                          "# energy\n1e-5 1d-7\n# rms\n1.0E-4, 1.0E-6\n# 14\n1e-10\n# 16\n0.01\n"
                          "# 18\n0.1\n# 20\n1.0\n");
  setup::read_parameters(path, hf);
  EXPECT_EQ(hf.value2, 2.5);
  EXPECT_EQ(hf.value4, 2);
  EXPECT_EQ(hf.niter[0], 64);
  EXPECT_EQ(hf.niter[1], 22);  // null value: the host's value stays
  EXPECT_EQ(hf.thr_ene[1], 1e-7);
  EXPECT_EQ(hf.thr_rms[0], 1e-4);
  EXPECT_EQ(hf.value14_20[3], 1.0);

  setup::KsParameters ks;
  setup::read_parameters(write("ks.par",
                               "#\n4\n#\n0\n#\n48 64 48 128\n#\n4*0.5\n#\n1e-5 1e-6 1e-5 1e-7\n#\n"
                               "1e-5 1e-6 1e-5 1e-7\n#\n1e-10\n#\n0.01\n#\n0.1\n#\n1e-12 1e-15\n"),
                         ks);
  EXPECT_EQ(ks.niter[3], 128);
  EXPECT_EQ(ks.damp[2], 0.5);
  EXPECT_EQ(ks.value20[1], 1e-15);
}

// The exported routine as a host sees it: atom arrays, orbital counts and the
// Kohn-Sham presets.
TEST_F(ScratchFiles, ExportedSetupKs) {
  std::string molfile = molecule("0 0", 0, 1, kWater);
  molfile.resize(NORVIK_FILE_NAME_LENGTH, ' ');
  const std::string parfile(NORVIK_FILE_NAME_LENGTH, ' ');
  const norvik_int maxatom = 5, maxorb = 6;
  double v2 = 1.0, v14 = 0, v16 = 0, v18 = 0, v20a = 0, v20b = 0;
  norvik_int v4 = 0, n[4] = {1, 2, 3, 4};
  double damp[4] = {}, ene[4] = {}, rms[4] = {};
  char theory[NORVIK_KEYWORD_LENGTH], t4[NORVIK_NAME_LENGTH], t6[NORVIK_NAME_LENGTH],
      t12[NORVIK_FILE_NAME_LENGTH], t14[NORVIK_NAME_LENGTH], t18[NORVIK_NAME_LENGTH];
  norvik_int i6, i8, i10, charge = 0, mult = 0, na, nb, norb, nshort, natom, nghost;
  std::vector<norvik_int> zat(maxatom, -1), zel(maxatom, -1);
  std::vector<double> pos(3 * maxatom, -1.0);
  SETUP_KS(&maxatom, &maxorb, molfile.data(), parfile.data(), &v2, &v4, &n[0], &n[1], &n[2], &n[3],
           &damp[0], &damp[1], &damp[2], &damp[3], &ene[0], &ene[1], &ene[2], &ene[3], &rms[0],
           &rms[1], &rms[2], &rms[3], &v14, &v16, &v18, &v20a, &v20b, theory, t4, t6, &i6, &i8,
           &i10, t12, t14, t18, &charge, &mult, &na, &nb, &norb, &nshort, &natom, &nghost,
           zat.data(), zel.data(), pos.data());
  EXPECT_EQ(std::string(theory, 10), "HF        ");
  // A Hartree-Fock theory presets the two HF-stage iteration counts.
  EXPECT_EQ(n[0], 48);
  EXPECT_EQ(n[1], 2);
  EXPECT_EQ(n[2], 48);
  EXPECT_EQ(n[3], 4);
  EXPECT_EQ(v2, 1.0);  // no parameter file: the host's values stay
  EXPECT_EQ(na, 5);
  EXPECT_EQ(norb, 6);  // min(5 + 2, 6)
  EXPECT_EQ(nshort, 1);
  EXPECT_EQ(natom, 3);
  EXPECT_EQ(zat[0], 8);
  EXPECT_EQ(zat[3], 0);  // cleared beyond the atoms read
  EXPECT_EQ(pos[3 * 3], 0.0);
  EXPECT_DOUBLE_EQ(pos[4], 0.7572);
}

// A fatal condition ends the whole process with status 1.
TEST(ExportedRoutines, StopWithStatusOne) {
  const norvik_int two = 2, zero = 0;
  norvik_int a = 0, b = 0;
  EXPECT_EXIT(NELECTRON(&two, &zero, &two, &a, &b), ::testing::ExitedWithCode(1), "");
  const norvik_int z = 55;
  EXPECT_EXIT(ATOMMASS(&z), ::testing::ExitedWithCode(1), "");
}

TEST(ElementTables, SpotValues) {
  EXPECT_EQ(setup::symbol_to_z("Xe"), 54);
  EXPECT_EQ(setup::symbol_to_z("I "), 53);
  EXPECT_EQ(setup::symbol_to_z("I"), 53);
  EXPECT_EQ(setup::z_to_symbol(17), "Cl");
  EXPECT_EQ(setup::symbol_to_name("P "), "Phosphorus");
  EXPECT_EQ(setup::symbol_to_name("Tc"), "Technetium");
  EXPECT_EQ(setup::atomic_mass(0), 0.0);
  EXPECT_EQ(setup::atomic_mass(43), 99.0);
  EXPECT_LT(setup::atomic_mass(53), setup::atomic_mass(52));  // iodine is lighter than tellurium
  EXPECT_EQ(setup::hunds_rule_multiplicity(24), 7);
  EXPECT_EQ(setup::hunds_rule_multiplicity(46), 1);
  EXPECT_EQ(setup::hunds_rule_multiplicity(42), 7);
  for (int z = 1; z <= 54; ++z) EXPECT_EQ(setup::symbol_to_z(setup::z_to_symbol(z)), z);
  try {
    setup::atomic_mass(55);
    FAIL();
  } catch (const Error& e) {
    EXPECT_EQ(e.lines().at(0), " chg exceed the limit in AtomMass.          55");
  }
  EXPECT_THROW(setup::hunds_rule_multiplicity(0), Error);
  EXPECT_THROW(setup::z_to_symbol(55), Error);
  EXPECT_THROW(setup::symbol_to_name("Xx"), Error);
}

TEST(ElementTables, ChargesOfOneAtom) {
  const std::vector<int> z = {8, 1, 1};
  std::vector<int> out(3, -1);
  setup::charges_of_one_atom(1, z, out);
  EXPECT_EQ(out, (std::vector<int>{0, 1, 0}));
}

}  // namespace
