// The polarisability exports as a host calls them: raw arrays, blank-padded
// names, the converged point of HF_1POINT/KS_1POINT, the report section byte
// for byte, and the fatal path.
#include <gtest/gtest.h>
#ifdef _WIN32
#include <io.h>
#define dup2 _dup2
#else
#include <unistd.h>
#endif

#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "basis/library.h"
#include "common/constants.h"
#include "dft/functionals/functional_names.h"
#include "norvik.h"
#include "properties/polarizability.h"

namespace norvik::properties {
namespace {

std::string padded(const std::string& s, std::size_t n) {
  std::string p = s;
  p.resize(n, ' ');
  return p;
}

const std::vector<norvik_int> kWater{8, 1, 1};
const std::vector<double> kWaterPos{0, 0, 0, 0, 0.756950, -0.585882, 0, -0.756950, -0.585882};

// The host's converged point of water: HF_1POINT for "HF", KS_1POINT otherwise.
struct HostPoint {
  HostPoint(const std::string& method, const std::string& basis_name, norvik_int n)
      : method(padded(method, 10)), basis(padded(basis_name, 20)), nbasis(n) {
    const std::size_t nn = static_cast<std::size_t>(n) * n;
    rho.assign(2 * nn, 0.0);
    orbitals.assign(2 * (nn + n), 0.0);
    std::vector<double> atomrho(2 * nn);
    const norvik_int natom = 3, istart = 1;
    const norvik_int niter[2] = {100, 100};
    const double damp[2] = {0.5, 0.5}, thr[2] = {1e-10, 1e-10};
    double energy = 0, dipole[3] = {}, de = 0, xc[4] = {};
    norvik_int northo = 0, incore = 0;
    if (method == "HF") {
      HF_1POINT(basis.data(), &natom, kWater.data(), kWater.data(), kWaterPos.data(), &nalpha,
                &nbeta, niter, damp, thr, thr, &ram, &screen, &orth, &istart, atomrho.data(),
                &nbasis, rho.data(), orbitals.data(), &energy, dipole, &de, &northo, &incore);
    } else {
      KS_1POINT(this->method.data(), basis.data(), &natom, kWater.data(), kWater.data(),
                kWaterPos.data(), &nalpha, &nbeta, niter, damp, thr, thr, &ram, &screen, &orth,
                &istart, atomrho.data(), &nbasis, rho.data(), orbitals.data(), &energy, dipole, &de,
                &northo, &incore, &radius, &level, xc);
    }
  }

  std::array<double, 9> polarize(bool direct, norvik_int n) const {
    std::array<double, 9> alpha{};
    const norvik_int natom = 3;
    auto* routine = direct ? POLARIZE_DIRECT : POLARIZE;
    routine(method.data(), basis.data(), &natom, kWater.data(), kWater.data(), kWaterPos.data(),
            &nalpha, &nbeta, &n, rho.data(), orbitals.data(), &ram, &screen, &orth, &radius, &level,
            alpha.data());
    return alpha;
  }

  std::string method, basis;
  norvik_int nbasis, nalpha = 5, nbeta = 5, level = 0;
  double ram = 4.0, screen = 0.0, orth = 1e-8, radius = constants::kBohrAngstrom;
  std::vector<double> rho, orbitals;
};

// Psi4's RHF tensor of water in 6-31G* (tests/properties/data/polarizabilities.tsv),
// bohr³, as a polarisability volume in Å³ (measured agreement 1e-9).
TEST(Polarize, HartreeFockVolumeInCubicAngstrom) {
  const HostPoint p("HF", "6-31Gx", 18);
  const double bohr3 = std::pow(constants::kBohrAngstrom, 3);
  const std::array<double, 3> psi4{2.67862812, 6.80931259, 4.90014951};
  const std::array<double, 9> stored = p.polarize(false, 18), direct = p.polarize(true, 18);
  for (std::size_t k = 0; k < 3; ++k) {
    EXPECT_NEAR(stored[4 * k], psi4[k] * bohr3, 1e-6 * psi4[1] * bohr3) << "axis " << k;
  }
  for (std::size_t e = 0; e < 9; ++e) {
    EXPECT_NEAR(direct[e], stored[e], 1e-10) << "element " << e;
    EXPECT_EQ(stored[e], stored[3 * (e % 3) + e / 3]) << "symmetric, element " << e;
  }
}

// A functional name picks its exact exchange, kernel and grid as the point used
// them: the export gives the core's tensor on that stage, in Å³.
TEST(Polarize, FunctionalOfThePoint) {
  const HostPoint p("B3LYP", "STO-3G", 7);
  scf::KohnShamStage ks;
  ks.functional = {dft::functional_for("B3LYP", dft::FunctionalUse::potential_matrix),
                   dft::exact_exchange_fraction("B3LYP")};
  ks.grid_radius = p.radius;
  scf::JobControl job;
  job.basis = "STO-3G";
  const std::vector<int> z(kWater.begin(), kWater.end());
  const std::array<double, 9> core = static_polarizability(
      basis::make_basis("STO-3G", z), job, {z, z, kWaterPos}, {5, 5}, p.rho, p.orbitals, ks);
  const std::array<double, 9> host = p.polarize(false, 7);
  const double volume = constants::kHartreeEv * constants::kBohrAngstrom;
  for (std::size_t e = 0; e < 9; ++e) EXPECT_NEAR(host[e], core[e] * volume, 1e-12);
}

#define STDOUT_TO_STDERR(call) \
  {                            \
    std::fflush(stdout);       \
    dup2(2, 1);                \
    call;                      \
  }

TEST(PolarizeDeathTest, WrongBasisSizeEndsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const HostPoint p("HF", "STO-3G", 7);
  EXPECT_EXIT(STDOUT_TO_STDERR(p.polarize(false, 8)), ::testing::ExitedWithCode(1),
              "Wrong nbasis in Polarize\\. +8 +7");
  EXPECT_EXIT(STDOUT_TO_STDERR(p.polarize(true, 6)), ::testing::ExitedWithCode(1),
              "Wrong nbasis in Polarize_direct\\. +6 +7");
}

// The report section, byte for byte: a tensor with every kind of element
// (anisotropy sqrt(1.6875) Å³ by hand), signed zeros cleaned, bohr³ = Å³ / a0³.
TEST(Polarize, ReportSection) {
  const auto path = std::filesystem::temp_directory_path() / "norvik_polariz.report";
  std::filesystem::remove(path);
  std::string name = path.string();
  name.resize(NORVIK_FILE_NAME_LENGTH, ' ');
  const double alpha[9] = {1.5, 0.25, -1e-9, 0.25, 1.0, -0.5, 0.0, -0.5, 2.0};
  WRITE_POLARIZ(alpha, name.data());
  std::ifstream in(path);
  std::stringstream text;
  text << in.rdbuf();
  EXPECT_EQ(
      text.str(),
      "#\n"
      "#  Static dipole polarizability [A**3] and [bohr**3]\n"
      "#                x           y           z                 x           y           z\n"
      "#     x    1.500000    0.250000    0.000000         10.122502    1.687084    0.000000\n"
      "#     y    0.250000    1.000000   -0.500000          1.687084    6.748335   -3.374167\n"
      "#     z    0.000000   -0.500000    2.000000          0.000000   -3.374167   13.496669\n"
      "#  Isotropic  alpha =     1.500000 [A**3] =   10.122502 [bohr**3]\n"
      "#  Anisotropy Dalpha =     1.299038 [A**3] =    8.766344 [bohr**3]\n");
  std::filesystem::remove(path);
}

}  // namespace
}  // namespace norvik::properties
