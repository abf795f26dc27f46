// The Kohn–Sham builder and point: the exchange–correlation matrix is the
// derivative of the exchange–correlation energy, the grid sees the electrons,
// and the point converges.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

#include "basis/library.h"
#include "common/constants.h"
#include "dft/grid/molecular_grid.h"
#include "dft/xc/basis_values.h"
#include "scf/kohn_sham_builder.h"
#include "scf_fixture.h"

namespace norvik::scf {
namespace {

using testing::Fixture;

struct XcSetup {
  dft::Grid grid;
  std::vector<double> chi;
  dft::GridBasis view() const {
    dft::GridBasis g;
    g.npts = grid.size();
    g.nbasis = static_cast<int>(chi.size() / (4 * grid.weights.size()));
    g.weights = grid.weights;
    g.chi = chi;
    return g;
  }
};

XcSetup xc_setup(const Fixture& f, const std::string& basis) {
  XcSetup s{dft::make_grid(f.molecule.z, f.molecule.pos, 1.0), {}};
  s.chi.resize(dft::basis_table_size(s.grid.size(), f.n));
  dft::basis_on_grid(basis::make_basis(basis, f.molecule.z), f.molecule.pos, s.grid.points, s.chi);
  return s;
}

// dE_xc/dP_σμν = V^xc_σμν: central differences of the grid energy along a
// symmetric perturbation of both spins, against Σ V·Δ, to 1e-7 relative.
TEST(KohnSham, ExchangeCorrelationMatrixIsTheEnergyDerivative) {
  for (dft::Combination c :
       {dft::Combination::svwn5, dft::Combination::blyp, dft::Combination::b3lyp5}) {
    Fixture f(testing::hydroxyl(), "6-31G");
    f.start();
    const XcSetup xs = xc_setup(f, "6-31G");
    const XcFunctional functional{c, c == dft::Combination::b3lyp5 ? 0.2 : 0.0};
    KohnShamBuilder ks(f.system().context, FockBuild::stored, functional, xs.view());
    const std::size_t nn = static_cast<std::size_t>(f.n) * f.n;
    std::vector<double> delta(2 * nn), g(2 * nn), jk(2 * nn), p(2 * nn);
    for (std::size_t s = 0; s < 2; ++s) {
      for (int j = 0; j < f.n; ++j) {
        for (int i = 0; i <= j; ++i) {
          const double d = std::sin(1.0 + i + 3.0 * j + 7.0 * s) * 1e-2;
          delta[s * nn + i + j * f.n] = delta[s * nn + j + i * f.n] = d;
        }
      }
    }
    ks.build(f.rho, g);
    HartreeFockBuilder(f.system().context, FockBuild::stored, functional.exact_exchange)
        .build(f.rho, jk);
    double analytic = 0.0;
    for (std::size_t e = 0; e < 2 * nn; ++e) analytic += (g[e] - jk[e]) * delta[e];
    const double h = 1e-4;
    auto exc_at = [&](double t) {
      for (std::size_t e = 0; e < 2 * nn; ++e) p[e] = f.rho[e] + t * delta[e];
      ks.build(p, g);
      return ks.xc_energy()[0];
    };
    // Fourth-order central differences: the energy of the sparse outer density
    // is far from quadratic in P, and second order would need h below 1e-5.
    const double numeric =
        (8.0 * (exc_at(h) - exc_at(-h)) - (exc_at(2.0 * h) - exc_at(-2.0 * h))) / (12.0 * h);
    EXPECT_NEAR(analytic, numeric, 1e-7 * std::abs(numeric)) << static_cast<int>(c);
  }
}

// The products read the basis table laid out by batch as they read it by
// point, or evaluate it batch by batch, bit for bit; a closed shell is computed once and handed to
// both spins, which must be what the two-spin path gives for the same alpha data.
TEST(KohnSham, BatchLayoutAndClosedShellsGiveTheSameBits) {
  Fixture f(testing::water(), "6-31Gx");
  f.start();
  const XcSetup by_point = xc_setup(f, "6-31Gx");
  std::vector<double> by_batch(by_point.chi.size());
  dft::basis_on_grid(basis::make_basis("6-31Gx", f.molecule.z), f.molecule.pos,
                     by_point.grid.points, by_batch, dft::TableLayout::by_batch);
  const dft::GridBasis a = by_point.view();
  dft::GridBasis b = a;
  b.chi = by_batch;
  b.layout = dft::TableLayout::by_batch;
  const std::size_t npts = static_cast<std::size_t>(a.npts), nn = f.rho.size() / 2;
  for (int p : {0, 255, 256, a.npts - 1}) {
    for (int fn : {0, f.n - 1}) {
      for (int c = 0; c < 4; ++c) {
        ASSERT_EQ(by_point.chi[dft::table_index(a.layout, a.npts, f.n, p, fn, c)],
                  by_batch[dft::table_index(b.layout, a.npts, f.n, p, fn, c)]);
      }
    }
  }
  // A closed shell (alpha = beta) and an open one with the same alpha block.
  std::vector<double> closed(2 * nn), open(2 * nn);
  for (std::size_t e = 0; e < nn; ++e) {
    closed[e] = closed[nn + e] = open[e] = f.rho[e];
    open[nn + e] = 0.9 * f.rho[e];
  }
  std::vector<double> ra(8 * npts), rb(8 * npts), ro(8 * npts);
  dft::density_on_grid(a, closed, ra);
  dft::density_on_grid(b, closed, rb);
  dft::density_on_grid(b, open, ro);
  EXPECT_EQ(ra, rb);
  const basis::BasisSet set = basis::make_basis("6-31Gx", f.molecule.z);
  const dft::BasisEvaluator evaluator(set, f.molecule.pos);
  dft::GridBasis c = a;
  c.chi = {};
  c.layout = dft::TableLayout::computed;
  c.evaluator = &evaluator;
  c.points = by_point.grid.points;
  std::vector<double> rc(8 * npts);
  dft::density_on_grid(c, closed, rc);
  EXPECT_EQ(ra, rc);
  for (std::size_t p = 0; p < npts; ++p) {
    ASSERT_EQ(rb[8 * p], ro[8 * p]);
    ASSERT_EQ(rb[8 * p + 1], rb[8 * p]);
    for (std::size_t c = 0; c < 3; ++c) {
      ASSERT_EQ(rb[8 * p + 2 + c], ro[8 * p + 2 + c]);
      ASSERT_EQ(rb[8 * p + 5 + c], rb[8 * p + 2 + c]);
    }
  }
  // Potentials: alpha's entries the same in both tables, beta's differing
  // only where alpha's matrix does not read them.
  std::vector<double> v(5 * npts), vo(5 * npts);
  for (std::size_t p = 0; p < npts; ++p) {
    const double x = std::sin(0.1 * static_cast<double>(p));
    v[5 * p] = v[5 * p + 1] = -1.0 + 0.1 * x;
    v[5 * p + 2] = v[5 * p + 3] = -0.05 * x * x;
    v[5 * p + 4] = 0.02 * x;
    for (std::size_t k = 0; k < 5; ++k) vo[5 * p + k] = v[5 * p + k];
    vo[5 * p + 1] *= 1.5;
    vo[5 * p + 3] *= 0.5;
  }
  std::vector<double> va(2 * nn), vb(2 * nn), vopen(2 * nn);
  dft::xc_matrix(a, ra, v, va);
  dft::xc_matrix(b, rb, v, vb);
  dft::xc_matrix(b, rb, vo, vopen);
  EXPECT_EQ(va, vb);
  std::vector<double> vc(2 * nn);
  dft::xc_matrix(c, rb, v, vc);
  EXPECT_EQ(va, vc);
  for (std::size_t e = 0; e < nn; ++e) {
    ASSERT_EQ(vb[e], vopen[e]);
    ASSERT_EQ(vb[nn + e], vb[e]);
  }
}

// The dense grid integrates a molecule's density to 1e-7 electrons where the
// standard one is off by about 1e-5.
TEST(KohnSham, DenseGridSeesTheElectrons) {
  Fixture f(testing::water(), "6-31Gx");
  f.start();
  const std::size_t nn = f.rho.size() / 2;
  std::array<double, 2> error{};
  for (dft::GridLevel level : {dft::GridLevel::standard, dft::GridLevel::dense}) {
    const dft::Grid grid =
        dft::make_grid(f.molecule.z, f.molecule.pos, constants::kBohrAngstrom, level);
    ASSERT_LE(grid.size(), dft::grid_point_count(f.molecule.z, level));
    std::vector<double> chi(dft::basis_table_size(grid.size(), f.n));
    dft::basis_on_grid(basis::make_basis("6-31Gx", f.molecule.z), f.molecule.pos, grid.points, chi,
                       dft::TableLayout::by_batch);
    std::vector<double> rho(8 * static_cast<std::size_t>(grid.size()));
    dft::GridBasis g;
    g.npts = grid.size();
    g.nbasis = f.n;
    g.weights = grid.weights;
    g.chi = chi;
    g.layout = dft::TableLayout::by_batch;
    dft::density_on_grid(g, f.rho, rho);
    double exact = 0.0;  // Tr(P S) of both spins
    for (std::size_t s = 0; s < 2; ++s) {
      for (std::size_t e = 0; e < nn; ++e) exact += f.rho[s * nn + e] * f.prepared.s[e];
    }
    error[level == dft::GridLevel::dense] = dft::electron_count(grid.weights, rho)[2] - exact;
  }
  EXPECT_GT(std::abs(error[0]), 1e-6);
  EXPECT_LT(std::abs(error[1]), 1e-7);
}

TEST(KohnSham, PointConvergesAndTheGridSeesTheElectrons) {
  const testing::Case water = testing::water();
  JobControl job;
  job.basis = "6-31G";
  ScfControl hf{64, 0.5, 1e-7, 1e-7};
  PointSettings settings;
  settings.counts = water.counts;
  settings.kohn_sham = KohnShamStage{{dft::Combination::svwn5, 0.0}, hf, 1.0};
  const int n = basis_size(job.basis, water.z);
  const std::size_t nn = static_cast<std::size_t>(n) * n;
  std::vector<double> rho(2 * nn), orbitals(2 * (nn + n));
  const SinglePointResult r =
      single_point(job, hf, {water.z, water.z, water.pos}, settings, rho, orbitals);
  EXPECT_TRUE(r.converged);
  // The default grid sees the electrons to its accuracy (about 4e-4 here).
  EXPECT_NEAR(r.grid_electrons[0], r.grid_electrons[1], 1e-12);
  EXPECT_NEAR(r.grid_electrons[2], 10.0, 1e-3);
  EXPECT_LT(r.xc_energy[0], 0.0);
  EXPECT_NEAR(r.xc_energy[0], r.xc_energy[1] + r.xc_energy[2], 1e-9);
  std::printf(
      "water SVWN5/6-31G: E = %.10f hartree, Exc = %.6f eV, %d points, N = %.8f, %d+%d cycles\n",
      r.energy / constants::kHartreeEv, r.xc_energy[0], r.grid_points, r.grid_electrons[2],
      r.hf_cycles, r.cycles);
}

}  // namespace
}  // namespace norvik::scf
