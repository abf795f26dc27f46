// The Kohn–Sham builder and point: the exchange–correlation matrix is the
// derivative of the exchange–correlation energy, the grid sees the electrons,
// and the point converges.
#include <gtest/gtest.h>

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
    return {grid.size(), static_cast<int>(chi.size() / (4 * grid.weights.size())), grid.weights,
            chi};
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
