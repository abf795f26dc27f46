// SCF stability: the lowest orbital-Hessian eigenvalues against Psi4's
// stability analysis (tests/references/data/stability.tsv,
// tools/references/stability_references.py), and the restart along an
// unstable rotation reaching a lower, stable solution.
#include "properties/stability.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "basis/library.h"
#include "common/constants.h"
#include "norvik.h"
#include "scf/single_point.h"
#include "setup/elements.h"

namespace norvik::properties {
namespace {

const std::string kData = std::string(NORVIK_SOURCE_DIR) + "/tests/references/data/";

// A converged Hartree–Fock point of a molecule file of stability/.
struct Point {
  explicit Point(const std::string& file) {
    std::ifstream in(kData + "stability/" + file + ".mol");
    std::vector<std::string> records;
    for (std::string line; std::getline(in, line);) records.push_back(line);
    basis_name = records.at(3);
    const int multiplicity = std::stoi(records.at(21));
    for (std::size_t r = 23; r < records.size(); ++r) {
      std::istringstream atom(records[r]);
      std::string symbol;
      double x = 0, y = 0, w = 0;
      if (!(atom >> symbol >> x >> y >> w)) continue;
      z.push_back(setup::symbol_to_z(symbol));
      pos.insert(pos.end(), {x, y, w});
    }
    int electrons = 0;
    for (int e : z) electrons += e;
    counts = {(electrons + multiplicity - 1) / 2, (electrons - multiplicity + 1) / 2};
    basis = basis::make_basis(basis_name, z);
    job.basis = basis_name;
    settings.counts = counts;
    const std::size_t n = static_cast<std::size_t>(basis.nbasis());
    rho.assign(2 * n * n, 0.0);
    orbitals.assign(2 * n * (n + 1), 0.0);
    result = scf::compute_point(basis, job, control, view(), settings, rho, orbitals);
  }
  Point(const Point&) = delete;
  Point& operator=(const Point&) = delete;
  scf::MoleculeView view() const { return {z, z, pos}; }
  StabilityAnalysis analysis() const {
    return stability_analysis(basis, job, view(), counts, rho, orbitals, std::nullopt);
  }

  std::string basis_name;
  std::vector<int> z;
  std::vector<double> pos;
  setup::ElectronCount counts;
  basis::BasisSet basis;
  scf::JobControl job;
  scf::ScfControl control{200, 0.5, 1e-11, 1e-10};
  scf::PointSettings settings;
  std::vector<double> rho, orbitals;
  scf::SinglePointResult result;
};

// Psi4's eigenvalues [hartree] by molecule and block ("RHF->RHF", "RHF->UHF").
std::map<std::string, std::map<std::string, std::vector<double>>> psi4_table() {
  std::ifstream in(kData + "stability.tsv");
  std::map<std::string, std::map<std::string, std::vector<double>>> table;
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line[0] == '#' || line.rfind("name", 0) == 0) continue;
    std::istringstream fields(line);
    std::string name, reference, energy, block, values;
    std::getline(fields, name, '\t');
    std::getline(fields, reference, '\t');
    std::getline(fields, energy, '\t');
    std::getline(fields, block, '\t');
    std::getline(fields, values, '\t');
    std::istringstream v(values);
    for (double e; v >> e;) table[name][block].push_back(e);
  }
  return table;
}

// The lowest three eigenvalues of each block, within Psi4's printed 1e-6
// hartree: stretched H2 (RHF -> UHF unstable), singlet O2 (two RHF -> UHF
// instabilities, a zero RHF -> RHF rotation within its degenerate π* pair, and
// a root of a symmetry the lowest gaps do not reach), water (stable).
TEST(Stability, EigenvaluesAgainstPsi4) {
  const auto table = psi4_table();
  ASSERT_EQ(table.size(), 3u);
  for (const auto& [name, blocks] : table) {
    const Point point(name);
    ASSERT_TRUE(point.result.converged) << name;
    const StabilityAnalysis a = point.analysis();
    ASSERT_TRUE(a.restricted) << name;
    ASSERT_EQ(a.blocks.size(), 2u);
    const std::vector<double>* psi4[2] = {&blocks.at("RHF->RHF"), &blocks.at("RHF->UHF")};
    for (std::size_t b = 0; b < 2; ++b) {
      ASSERT_EQ(a.blocks[b].values.size(), 3u);
      for (std::size_t k = 0; k < 3; ++k) {
        EXPECT_NEAR(a.blocks[b].values[k] / constants::kHartreeEv, (*psi4[b])[k], 1.5e-6)
            << name << " block " << b << " root " << k;
      }
    }
  }
}

// Downhill from each unstable solution: along the RHF -> UHF rotation of
// stretched H2 to the broken-symmetry UHF solution, which is stable; singlet
// O2 needs two restarts (its first UHF solution is a saddle point again).
TEST(Stability, RestartsReachALowerStableSolution) {
  for (const auto& [name, restarts] : {std::pair{"h2_stretched", 1}, std::pair{"o2_singlet", 2}}) {
    Point point(name);
    std::vector<double> rho = point.rho, orbitals = point.orbitals;
    double energy = point.result.energy;
    StabilityAnalysis a = point.analysis();
    int made = 0;
    while (a.lowest()->values[0] < -1e-4) {
      ASSERT_LT(made, 4) << name;
      bool lower = false;
      for (double angle : {0.25, 0.5, 1.0}) {
        std::vector<double> start = rotated_density(point.basis.nbasis(), a.northo, point.counts,
                                                    orbitals, a.lowest()->lowest, angle);
        std::vector<double> next(orbitals.size());
        scf::PointSettings from = point.settings;
        from.start = scf::StartPolicy::supplied;
        const scf::SinglePointResult r = scf::compute_point(point.basis, point.job, point.control,
                                                            point.view(), from, start, next);
        if (!r.converged || r.energy > energy - 1e-6) continue;
        energy = r.energy;
        rho = start;
        orbitals = next;
        lower = true;
        break;
      }
      ASSERT_TRUE(lower) << name;
      ++made;
      a = stability_analysis(point.basis, point.job, point.view(), point.counts, rho, orbitals,
                             std::nullopt);
    }
    EXPECT_EQ(made, restarts) << name;
    EXPECT_FALSE(a.restricted) << name;
    EXPECT_LT(energy, point.result.energy - 0.1) << name;
  }
}

// The report sections, byte for byte: both blocks of a restricted
// Hartree–Fock point (one eigenvalue that rounds to a signed zero, one above
// the threshold of an unstable solution), and the one block of an
// unrestricted Kohn–Sham point.
TEST(Stability, ReportSections) {
  const auto path = std::filesystem::temp_directory_path() / "norvik_stability.report";
  std::filesystem::remove(path);
  std::string name = path.string();
  name.resize(NORVIK_FILE_NAME_LENGTH, ' ');
  const norvik_int roots = 2;
  const norvik_bool restricted = 1, unrestricted = 0;
  const double hf[4] = {-4e-7, 1.5, -5e-5, 27.2113850785};
  const double ks[4] = {-0.5, 3.0, 0.0, 0.0};
  WRITE_INSTABILITY_HF(&restricted, &roots, hf, name.data());
  WRITE_INSTABILITY_KS(&unrestricted, &roots, ks, name.data());
  std::ifstream in(path);
  std::stringstream text;
  text << in.rdbuf();
  EXPECT_EQ(text.str(),
            "#\n"
            "#  SCF stability (Hartree-Fock): lowest eigenvalues of the orbital Hessian\n"
            "#  Rotation                [eV]     [hartree]\n"
            "#  RHF -> RHF      0.000000      0.000000\n"
            "#  RHF -> RHF      1.500000      0.055124\n"
            "#  RHF -> UHF     -0.000050     -0.000002\n"
            "#  RHF -> UHF     27.211385      1.000000\n"
            "#  Stable: no rotation lowers the energy.\n"
            "#\n"
            "#  SCF stability (Kohn-Sham): lowest eigenvalues of the orbital Hessian\n"
            "#  Rotation                [eV]     [hartree]\n"
            "#  UKS -> UKS     -0.500000     -0.018375\n"
            "#  UKS -> UKS      3.000000      0.110248\n"
            "#  Unstable: the energy falls along the lowest UKS -> UKS rotation.\n");
  std::filesystem::remove(path);
}

}  // namespace
}  // namespace norvik::properties
