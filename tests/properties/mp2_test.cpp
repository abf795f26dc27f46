// MP2 correlation energies against Psi4's conventional MP2
// (tests/references/data/mp2.tsv, tools/references/mp2_references.py), RMP2 and
// UMP2, all electrons and frozen core; the batched route against the one-pass
// route; the frozen-core counts.
#include "properties/mp2.h"

#include <gtest/gtest.h>

#include "norvik.h"
#include "report/property_sections.h"
#ifdef _WIN32
#include <io.h>
#define dup2 _dup2
#else
#include <unistd.h>
#endif

#include <array>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "basis/library.h"
#include "common/constants.h"
#include "reference_rows.h"
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

std::vector<Row> mp2_rows() {
  std::vector<Row> rows;
  for (const std::vector<std::string>& f : reference_rows("mp2.tsv")) {
    Row r;
    r.name = f[0];
    r.basis = f[1];
    r.multiplicity = std::stoi(f[3]);
    r.frozen = std::stoi(f[5]);
    r.scf = std::stod(f[6]);
    r.corr = std::stod(f[7]);
    r.same = std::stod(f[8]);
    r.opposite = std::stod(f[9]);
    const ReferenceAtoms atoms = reference_atoms(f[10]);
    r.z = atoms.z;
    r.pos = atoms.pos;
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
  const std::vector<Row> rows = mp2_rows();
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
// restricted and unrestricted, all from the integral store; and a memory limit
// too small for the store, which computes the quartets in each of its batches.
TEST(Mp2, BatchedRouteGivesTheOnePassEnergy) {
  for (const Row& r : mp2_rows()) {
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
    EXPECT_TRUE(whole.stored && !e.stored) << r.name;
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

// The export on water as a host holds it (HF_1POINT's point, blank-padded
// names): the core's parts in eV, the total, the frozen core and the fatal paths.
struct HostWater {
  HostWater() {
    const std::size_t nn = 7 * 7;
    std::vector<double> atomrho(2 * nn);
    rho.assign(2 * nn, 0.0);
    orbitals.assign(2 * (nn + 7), 0.0);
    const norvik_int natom = 3, istart = 1, niter[2] = {100, 100};
    const double damp[2] = {0.5, 0.5}, thr[2] = {1e-10, 1e-10};
    double dipole[3] = {}, de = 0;
    norvik_int northo = 0, incore = 0;
    HF_1POINT(basis.data(), &natom, z.data(), z.data(), pos.data(), &nocc, &nocc, niter, damp, thr,
              thr, &ram, &screen, &orth, &istart, atomrho.data(), &nbasis, rho.data(),
              orbitals.data(), &escf, dipole, &de, &northo, &incore);
  }
  std::array<double, 4> mp2(const char* method, norvik_int n, norvik_bool frozen) const {
    std::array<double, 4> e{};
    const std::string m = std::string(method) + std::string(10 - std::strlen(method), ' ');
    const norvik_int natom = 3;
    MOLLER_PLESSET_2ND(m.data(), basis.data(), &natom, z.data(), z.data(), pos.data(), &nocc, &nocc,
                       &n, orbitals.data(), &escf, &ram, &screen, &orth, &frozen, e.data(), &e[3]);
    return e;
  }
  std::string basis = "STO-3G              ";
  std::vector<int> z{8, 1, 1};
  std::vector<double> pos{0, 0, 0, 0, 0.756950, -0.585882, 0, -0.756950, -0.585882};
  norvik_int nocc = 5, nbasis = 7;
  double ram = 4.0, screen = 0.0, orth = 1e-8, escf = 0.0;
  std::vector<double> rho, orbitals;
};

TEST(Mp2, ExportInElectronvolts) {
  const HostWater w;
  scf::JobControl job;
  job.basis = "STO-3G";
  for (norvik_bool frozen : {0, 1}) {
    Mp2Options options;
    options.frozen_core = frozen != 0;
    const Mp2Energy core = mp2_energy(basis::make_basis("STO-3G", w.z), job, {w.z, w.z, w.pos},
                                      {5, 5}, w.orbitals, options);
    const std::array<double, 4> e = w.mp2("MP2", 7, frozen);
    const double ev = constants::kHartreeEv;
    EXPECT_NEAR(e[0], core.correlation * ev, 1e-12) << "frozen " << frozen;
    EXPECT_NEAR(e[1], core.same_spin * ev, 1e-12) << "frozen " << frozen;
    EXPECT_NEAR(e[2], core.opposite_spin * ev, 1e-12) << "frozen " << frozen;
    EXPECT_EQ(e[3], w.escf + e[0]);
    EXPECT_LT(e[0], 0.0);
  }
  // freezing the oxygen 1s takes a small, negative share away
  EXPECT_GT(w.mp2("HF", 7, 1)[0], w.mp2("HF", 7, 0)[0]);
}

#define STDOUT_TO_STDERR(call) \
  {                            \
    std::fflush(stdout);       \
    dup2(2, 1);                \
    call;                      \
  }

TEST(Mp2DeathTest, WrongPointEndsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const HostWater w;
  EXPECT_EXIT(STDOUT_TO_STDERR(w.mp2("MP2", 8, 0)), ::testing::ExitedWithCode(1),
              "Wrong nbasis in Moller_plesset_2nd\\. +8 +7");
  EXPECT_EXIT(STDOUT_TO_STDERR(w.mp2("B3LYP", 7, 0)), ::testing::ExitedWithCode(1),
              "MP2 needs a Hartree-Fock point, not B3LYP\\.");
}

std::vector<double> overlap(const HostWater& w) {
  scf::JobControl job;
  job.basis = "STO-3G";
  return scf::prepare_system(basis::make_basis("STO-3G", w.z), w.pos, w.z, job).s;
}

std::string written(const std::function<void(const char*)>& write) {
  const auto path = std::filesystem::temp_directory_path() / "norvik_mp2.report";
  std::filesystem::remove(path);
  std::string name = path.string();
  name.resize(NORVIK_FILE_NAME_LENGTH, ' ');
  write(name.data());
  std::ifstream in(path);
  std::stringstream text;
  text << in.rdbuf();
  std::filesystem::remove(path);
  return text.str();
}

// The energy section byte for byte (values in eV; hartree = eV / 27.211386...),
// and the caution box for each cause, both, and neither.
TEST(Mp2, ReportSections) {
  const double escf = -2068.681548622, e2[3] = {-5.346165849, -1.349046302, -3.997119548};
  EXPECT_EQ(written([&](const char* r) { WRITE_ENERGY_MP2(&escf, e2, r); }),
            "#\n"
            "#  MP2 energy\n"
            "#  SCF energy         =      -2068.681548622 [eV] =     -76.0226479708 [au]\n"
            "#  MP2 same-spin      =         -1.349046302 [eV] =      -0.0495765393 [au]\n"
            "#  MP2 opposite-spin  =         -3.997119548 [eV] =      -0.1468914403 [au]\n"
            "#  MP2 correction     =         -5.346165849 [eV] =      -0.1964679796 [au]\n"
            "#  MP2 total energy   =      -2074.027714471 [eV] =     -76.2191159505 [au]\n");
  EXPECT_TRUE(report::mp2_caution(true, 0.0999).empty());
  const report::Lines both = report::mp2_caution(false, 0.1234);
  const report::Lines expected{"#",
                               "######################################################",
                               "# CAUTION                                            #",
                               "# The SCF below this MP2 energy did not converge:    #",
                               "# its MP2 correction is not reliable.                #",
                               "# The UHF reference is spin contaminated:            #",
                               "# <S**2> - S(S+1) =   0.1234 (above 0.1).            #",
                               "######################################################"};
  EXPECT_EQ(both, expected);
  EXPECT_EQ(report::mp2_caution(false, 0.0).size(), 6u);
  EXPECT_EQ(report::mp2_caution(true, 0.2)[3],
            "# The UHF reference is spin contaminated:            #");
  // through the export: a converged closed shell writes nothing
  const HostWater w;
  const norvik_bool converged = 1, failed = 0;
  EXPECT_EQ(written([&](const char* r) {
              WRITE_MP2_CAUTION(&converged, &w.nbasis, overlap(w).data(), w.rho.data(), r);
            }),
            "");
  EXPECT_EQ(written([&](const char* r) {
              WRITE_MP2_CAUTION(&failed, &w.nbasis, overlap(w).data(), w.rho.data(), r);
            }).substr(0, 2 + 55 + 55),
            "#\n######################################################\n"
            "# CAUTION                                            #\n");
}

}  // namespace
}  // namespace norvik::properties
