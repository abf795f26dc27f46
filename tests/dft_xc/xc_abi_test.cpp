// The exported exchange–correlation routines driven as a host drives them:
// the grid and the shell table from the exported setup, the basis table, the
// densities, the electron count, the matrix, the energy and the kernels.
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "basis/library.h"
#include "dft/grid/molecular_grid.h"
#include "dft/xc/basis_values.h"
#include "integrals/two/shells.h"
#include "norvik.h"
#include "scf/single_point.h"

namespace norvik {
namespace {

std::string padded(const std::string& s, std::size_t n) {
  std::string r = s;
  r.resize(n, ' ');
  return r;
}

// Water on the standard grid with a converged-looking closed-shell density:
// the Hartree–Fock point's.
struct Water {
  explicit Water(const std::string& basis_name) {
    set = basis::make_basis(basis_name, z);
    n = set.nbasis();
    grid = dft::make_grid(z, pos, 0.5291772104);
    npts = grid.size();
    std::vector<std::array<double, 3>> bohr(3);
    for (std::size_t a = 0; a < 3; ++a) {
      for (std::size_t k = 0; k < 3; ++k) bohr[a][k] = pos[3 * a + k] / 0.5291772104;
    }
    shelltab = integrals::two::pack_shells(set, bohr);
    scf::JobControl job;
    job.basis = basis_name;
    const scf::ScfControl hf{64, 0.5, 1e-8, 1e-8};
    scf::PointSettings s;
    s.counts = {5, 5};
    const std::size_t nn = static_cast<std::size_t>(n) * n;
    rho.resize(2 * nn);
    std::vector<double> orbitals(2 * (nn + n));
    scf::single_point(job, hf, {z, z, pos}, s, rho, orbitals);
    chi.resize(dft::basis_table_size(npts, n));
    const norvik_int nshell = static_cast<norvik_int>(set.shells.size());
    LIST_BASIS(&n, &nshell, shelltab.data(), &npts, grid.points.data(), chi.data());
    table.resize(8 * static_cast<std::size_t>(npts));
    LIST_DENSITY(&n, rho.data(), &npts, chi.data(), table.data());
  }
  std::vector<int> z{8, 1, 1};
  std::vector<double> pos{0, 0, 0.1173, 0, 0.7572, -0.4692, 0, -0.7572, -0.4692};
  basis::BasisSet set;
  norvik_int n = 0, npts = 0;
  dft::Grid grid;
  std::vector<double> shelltab, rho, chi, table;
};

// LIST_BASIS from the shell table equals the core's table from the basis set
// (pure and Cartesian d); the grid sees both spins' electrons equally and all
// ten of them to the grid's accuracy.
TEST(XcAbi, BasisTableAndDensityOnTheGrid) {
  for (const char* name : {"6-31Gxx", "6-31GxxC"}) {
    const Water w(name);
    std::vector<double> core(w.chi.size());
    dft::basis_on_grid(w.set, w.pos, w.grid.points, core);
    double worst = 0.0;
    for (std::size_t k = 0; k < core.size(); ++k) {
      worst = std::max(worst, std::abs(core[k] - w.chi[k]) / (1.0 + std::abs(core[k])));
    }
    EXPECT_LT(worst, 1e-14) << name;
    std::array<double, 3> count{};
    INTG_DENSITY(&w.npts, w.grid.weights.data(), w.table.data(), count.data());
    EXPECT_EQ(count[0], count[1]) << name;
    EXPECT_EQ(count[2], count[0] + count[1]) << name;
    EXPECT_NEAR(count[2], 10.0, 1e-4) << name;
  }
}

// The named routines select the right point routines: the _SUB members with
// them give the same bits; aliases give the same bits; a closed shell gives
// equal spin blocks.
TEST(XcAbi, NamedRoutinesAndTheirSubMembersAgree) {
  const Water w("6-31Gx");
  const std::size_t nn = static_cast<std::size_t>(w.n) * w.n;
  const norvik_int nshell = static_cast<norvik_int>(w.set.shells.size());
  const double a = 0.2;
  auto matrix = [&](const char* name) {
    std::vector<double> v(2 * nn);
    const std::string f = padded(name, 10);
    CALCVXCHCORR(&w.n, &nshell, w.shelltab.data(), w.grid.points.data(), f.data(), &a, &w.npts,
                 w.grid.weights.data(), w.chi.data(), w.table.data(), v.data());
    return v;
  };
  auto energy = [&](const char* name) {
    std::array<double, 3> e{};
    const std::string f = padded(name, 10);
    ENERGYEXC(f.data(), &a, &w.npts, w.grid.weights.data(), w.table.data(), e.data());
    return e;
  };
  const std::vector<double> v = matrix("B3LYP");
  std::vector<double> vsub(2 * nn);
  CALCVXCHCORR_SUB(&w.n, &nshell, w.shelltab.data(), w.grid.points.data(), V_XC_B3LYP5, &a, &w.npts,
                   w.grid.weights.data(), w.chi.data(), w.table.data(), vsub.data());
  EXPECT_EQ(v, vsub);
  EXPECT_EQ(v, matrix("B3LYP5"));
  EXPECT_NE(v, matrix("B3LYP3"));
  for (std::size_t e = 0; e < nn; ++e) ASSERT_EQ(v[e], v[nn + e]);
  EXPECT_EQ(matrix("TDKS"), matrix("SVWN"));

  const std::array<double, 3> e = energy("B3LYP");
  std::array<double, 3> esub{};
  ENERGYEXC_SUB(E_XC_B3LYP5, &a, &w.npts, w.grid.weights.data(), w.table.data(), esub.data());
  EXPECT_EQ(e, esub);
  EXPECT_NEAR(e[0], e[1] + e[2], 1e-9);
  EXPECT_LT(e[0], -200.0);  // water's exchange–correlation energy, about −205 eV

  std::vector<double> f(3 * static_cast<std::size_t>(w.npts));
  const std::string svwn = padded("KSTDA", 10);
  MAKEFXCTB(&w.npts, &a, svwn.data(), w.table.data(), f.data());
  for (std::size_t p : {std::size_t{0}, std::size_t{1234}}) {
    std::array<double, 3> one{};
    F_XC_SVWN5(w.table.data() + 8 * p, &a, one.data());
    for (std::size_t k = 0; k < 3; ++k) EXPECT_EQ(f[3 * p + k], one[k]);
  }
}

// CONSTRUCTVXC is the derivative of the SVWN5 matrix along a perturbed
// density: against the central difference of CALCVXCHCORR at P ± t·P1 for a
// perturbation of the alpha density alone (so that fαα, fββ and fαβ all act).
TEST(XcAbi, KernelResponseIsTheDerivativeOfTheMatrix) {
  const Water w("6-31Gx");
  const std::size_t nn = static_cast<std::size_t>(w.n) * w.n;
  const norvik_int nshell = static_cast<norvik_int>(w.set.shells.size());
  const double a = 0.0;
  const std::string svwn = padded("SVWN", 10);
  std::vector<double> p1(2 * nn, 0.0);
  for (norvik_int i = 0; i < w.n; ++i)
    for (norvik_int j = 0; j <= i; ++j)
      p1[i + w.n * j] = p1[j + w.n * i] = 0.01 * std::sin(1.0 + i + 3.0 * j);
  std::vector<double> fxc(3 * static_cast<std::size_t>(w.npts)), rho1(w.table.size());
  MAKEFXCTB(&w.npts, &a, svwn.data(), w.table.data(), fxc.data());
  LIST_DENSITY(&w.n, p1.data(), &w.npts, w.chi.data(), rho1.data());
  std::vector<double> response(2 * nn);
  CONSTRUCTVXC(&w.n, &w.npts, w.grid.weights.data(), w.chi.data(), fxc.data(), rho1.data(),
               response.data());
  // The step: the third-order term (relative t²) and the rounding of the two
  // matrices over 2t both far below the tolerance.
  const double t = 1e-3;
  auto matrix_at = [&](double s) {
    std::vector<double> p(2 * nn), table(w.table.size()), v(2 * nn);
    for (std::size_t e = 0; e < 2 * nn; ++e) p[e] = w.rho[e] + s * p1[e];
    LIST_DENSITY(&w.n, p.data(), &w.npts, w.chi.data(), table.data());
    CALCVXCHCORR(&w.n, &nshell, w.shelltab.data(), w.grid.points.data(), svwn.data(), &a, &w.npts,
                 w.grid.weights.data(), w.chi.data(), table.data(), v.data());
    return v;
  };
  const std::vector<double> plus = matrix_at(t), minus = matrix_at(-t);
  double largest = 0.0, worst = 0.0;
  for (std::size_t e = 0; e < 2 * nn; ++e) {
    largest = std::max(largest, std::abs(response[e]));
    worst = std::max(worst, std::abs(response[e] - (plus[e] - minus[e]) / (2 * t)));
  }
  EXPECT_GT(largest, 0.0);
  EXPECT_LT(worst, 1e-5 * largest);
  // The beta block responds through fαβ alone.
  double beta = 0.0;
  for (std::size_t e = nn; e < 2 * nn; ++e) beta = std::max(beta, std::abs(response[e]));
  EXPECT_GT(beta, 1e-3 * largest);
}

// Fatal messages go to standard output; the death test reads standard error.
#define STDOUT_TO_STDERR(call) \
  {                            \
    std::fflush(stdout);       \
    dup2(2, 1);                \
    call;                      \
  }

TEST(XcAbiDeathTest, UnknownNamesStopWithTheirMessages) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const norvik_int npts = 1, n = 1, nshell = 0;
  const double a = 0.0, w = 1.0, chi[4] = {1, 0, 0, 0}, point[3] = {};
  const double rho[8] = {0.1, 0.1, 0, 0, 0, 0, 0, 0};
  double out[8] = {};
  const std::string blyp = padded("BLYP", 10), bad = padded("PBE", 10);
  EXPECT_EXIT(STDOUT_TO_STDERR(MAKEFXCTB(&npts, &a, blyp.data(), rho, out)),
              ::testing::ExitedWithCode(1), "Wrong theory name in makeFxcTb\\.");
  EXPECT_EXIT(STDOUT_TO_STDERR(CALCVXCHCORR(&n, &nshell, nullptr, point, bad.data(), &a, &npts, &w,
                                            chi, rho, out)),
              ::testing::ExitedWithCode(1),
              "Wrong DFname in calcvXchCorr\\.\n DFname = \\{SVWN,SPL,SGL,BLYP,B3LYP,BOP,B1OP,"
              "PFOP,OP\\}");
  EXPECT_EXIT(STDOUT_TO_STDERR(ENERGYEXC(bad.data(), &a, &npts, &w, rho, out)),
              ::testing::ExitedWithCode(1), "Wrong DFname in EnegyExc\\.");
}

}  // namespace
}  // namespace norvik
