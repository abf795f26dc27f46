// The Kohn–Sham drivers as a host calls them: the Hartree–Fock stage, the grid,
// KS_INI from the Hartree–Fock density, then KS_SCF; against the one point path.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "common/constants.h"
#include "dft/grid/molecular_grid.h"
#include "dft/xc/basis_values.h"
#include "norvik.h"
#include "scf/hf_driver.h"
#include "scf/single_point.h"
#include "scf_fixture.h"

namespace norvik::scf {
namespace {

std::string padded(const std::string& s, std::size_t n) {
  std::string r = s;
  r.resize(n, ' ');
  return r;
}

// A molecule's host arrays through the exported drivers: HF_INI + HF_SCF_WOLOG,
// then KS_INI from that density and a KS_SCF member.
struct KsHost {
  KsHost(const testing::Case& c, const std::string& basis, const std::string& functional,
         bool direct = false)
      : f(c, basis, direct ? 0.0 : 4.0), name(padded(functional, 10)) {
    grid = dft::make_grid(c.z, c.pos, constants::kBohrAngstrom);
    npts = grid.size();
    const std::size_t nn = static_cast<std::size_t>(f.n) * f.n;
    chi.resize(dft::basis_table_size(npts, f.n));
    rhogrid.resize(8 * static_cast<std::size_t>(npts));
    vxc.resize(2 * nn);
    f.start(direct ? FockBuild::direct : FockBuild::stored);
    CycleSettings hf;
    hf.niter = 100;
    hf.thr_ene = hf.thr_rms = 1e-9;
    ScfSystem sys = f.system();
    sys.build = direct ? FockBuild::direct : FockBuild::stored;
    run_scf(sys, hf, f.arrays());
  }

  // KS_INI (any istart but 1: the density as it stands) then `driver`.
  template <class Driver>
  void run(Driver driver, norvik_int niter, const std::string& logfile, bool direct = false) {
    const auto& ctx = f.prepared.context;
    const auto& p = f.prepared;
    const norvik_int n = f.n, northo = p.northo, natom = 3, istart = 2;
    const norvik_int nshell = ctx.nshell, nshpair = static_cast<norvik_int>(ctx.shpair.size() / 2),
                     npair = ctx.npair;
    vint = ctx.vint;
    const double thresh = 0.0, unused = 0.0, off3[3] = {0, 0, 0};
    const norvik_int unused_niter = 0;
    std::vector<double> atomrho(2 * static_cast<std::size_t>(n) * n);
    double ini_energy = 0, ini_exc[3], ini_total = 0, ini_dipole[3];
    auto ini = direct ? KS_INI_DIRECT : KS_INI;
    ini(&istart, &natom, atomrho.data(), &unused_niter, &unused, &unused, &unused, &unused, off3,
        &n, &northo, p.x.data(), p.s.data(), p.t.data(), p.v.data(), p.dip.data(), &nshell,
        ctx.shelltab.data(), &nshpair, ctx.shpair.data(), &npair, ctx.pairlist.data(),
        ctx.pairmap.data(), ctx.vdiag.data(), vint.data(), &thresh, name.data(), &npts,
        grid.points.data(), grid.weights.data(), chi.data(), rhogrid.data(), vxc.data(),
        nelec.data(), f.g.data(), f.rho.data(), f.orbitals.data(), &ini_energy, ini_exc, &ini_total,
        ini_dipole);
    const std::string log = padded(logfile, 120);
    const norvik_int iopt = 3, isrc = 4;
    const double damp = 0.5, thr = 1e-9;
    driver(&iopt, &isrc, log.data(), &niter, &damp, &thr, &thr, &e_offset, off3, &n, &northo,
           p.x.data(), p.s.data(), p.t.data(), p.v.data(), p.dip.data(), &nshell,
           ctx.shelltab.data(), &nshpair, ctx.shpair.data(), &npair, ctx.pairlist.data(),
           ctx.pairmap.data(), ctx.vdiag.data(), vint.data(), &thresh, name.data(), &npts,
           grid.points.data(), grid.weights.data(), chi.data(), rhogrid.data(), vxc.data(),
           nelec.data(), f.g.data(), f.rho.data(), f.orbitals.data(), &energy, exc.data(), &etotal,
           dipole.data(), &de_final);
  }

  testing::Fixture f;
  std::string name;
  dft::Grid grid;
  norvik_int npts = 0;
  std::vector<double> chi, rhogrid, vxc, vint;
  std::array<double, 3> nelec{}, exc{}, dipole{};
  double energy = 0, etotal = 0, de_final = 0, e_offset = 0;
};

// The drivers reach the one point path's Kohn–Sham energy (same grid, same
// thresholds), stored and integral-direct alike, and their outputs hang
// together: etotal = energy + Exc, the grid sees the electrons, a second call
// from the first call's arrays is converged at once.
TEST(KsDriver, ReachesThePointPathsEnergyFromTheHostsArrays) {
  const testing::Case water = testing::water();
  KsHost stored(water, "6-31Gx", "B3LYP");
  stored.run(KS_SCF_WOLOG, 100, "");
  KsHost direct(water, "6-31Gx", "B3LYP", true);
  direct.run(KS_SCF_WOLOG_DIRECT, 100, "", true);

  JobControl job;
  job.basis = "6-31Gx";
  const ScfControl hf{100, 0.5, 1e-9, 1e-9};
  PointSettings s;
  s.counts = water.counts;
  s.kohn_sham = KohnShamStage{{dft::Combination::b3lyp5, 0.2}, hf, constants::kBohrAngstrom};
  const int n = stored.f.n;
  const std::size_t nn = static_cast<std::size_t>(n) * n;
  std::vector<double> rho(2 * nn), orbitals(2 * (nn + n));
  const SinglePointResult point =
      single_point(job, hf, {water.z, water.z, water.pos}, s, rho, orbitals);
  EXPECT_NEAR(stored.etotal, point.electronic, 1e-6);  // eV
  EXPECT_NEAR(direct.etotal, point.electronic, 1e-6);
  EXPECT_NEAR(stored.exc[0], point.xc_energy[0], 1e-6);
  EXPECT_EQ(stored.etotal, stored.energy + stored.exc[0]);
  EXPECT_NEAR(stored.exc[0], stored.exc[1] + stored.exc[2], 1e-9);
  EXPECT_NEAR(stored.nelec[2], 10.0, 1e-4);
  EXPECT_EQ(stored.nelec[0], stored.nelec[1]);

  // KS_1POINT is the same point (its energy molecular: add the nuclear repulsion).
  {
    const std::string f = padded("B3LYP", 10), b = padded("6-31Gx", 20);
    const norvik_int natom = 3, nalpha = 5, nbeta = 5, istart = 1, level = 0;
    const norvik_int niter[2] = {100, 100};
    const double damp[2] = {0.5, 0.5}, thr[2] = {1e-9, 1e-9}, ram = 4.0, screen = 0.0, orth = 1e-7,
                 radius = constants::kBohrAngstrom;
    std::vector<double> r(2 * nn), o(2 * (nn + n)), atomrho(2 * nn);
    double e = 0, mu[3], de = 0, xc[4];
    norvik_int northo = 0, incore = 0;
    const norvik_int nb = n;
    KS_1POINT(f.data(), b.data(), &natom, water.z.data(), water.z.data(), water.pos.data(), &nalpha,
              &nbeta, niter, damp, thr, thr, &ram, &screen, &orth, &istart, atomrho.data(), &nb,
              r.data(), o.data(), &e, mu, &de, &northo, &incore, &radius, &level, xc);
    EXPECT_EQ(e, point.energy);
    EXPECT_EQ(xc[0], point.xc_energy[0]);
    EXPECT_EQ(xc[3], point.grid_electrons[2]);
  }

  // Continuing from the first call's G, rho and orbitals: converged in two cycles.
  const double first = stored.etotal;
  stored.run(KS_SCF_WOLOG, 100, "");
  EXPECT_NEAR(stored.etotal, first, 1e-8);
  EXPECT_LT(stored.de_final, 1e-8);
}

// The members: the log line has the Hartree–Fock format with the total energy
// plus the offset; _PART gives no dipole; niter 0 evaluates the density as it
// stands; the exact-exchange weight follows the name (OP full, B1OP a fifth,
// BOP none: three different energies from the same correlation).
TEST(KsDriver, MembersLogAndExactExchange) {
  const testing::Case water = testing::water();
  const std::string logfile = ::testing::TempDir() + "ks_driver.log";
  std::remove(logfile.c_str());
  KsHost h(water, "STO-3G", "BLYP");
  h.e_offset = 100.0;
  h.run(KS_SCF, 3, logfile);
  std::ifstream in(logfile);
  std::string line, last;
  int lines = 0;
  while (std::getline(in, line)) {
    ++lines;
    last = line;
  }
  EXPECT_EQ(lines, 3);
  const double emol = h.etotal + 100.0;
  const double rmsd = 0.0, comm2 = 0.0;
  const norvik_int iopt = 3, isrc = 4, iscf = 3;
  const std::string probe = ::testing::TempDir() + "ks_driver_probe.log";
  std::remove(probe.c_str());
  WRITE_LOG_KS(&iopt, &isrc, &iscf, &emol, h.dipole.data(), &rmsd, &comm2,
               padded(probe, 120).data());
  std::ifstream pin(probe);
  std::string probe_line;
  std::getline(pin, probe_line);
  // Same fields up to the energy and dipole (the last two columns are this call's).
  EXPECT_EQ(last.substr(0, 70), probe_line.substr(0, 70));

  KsHost part(water, "STO-3G", "BLYP");
  part.run(KS_SCF_PART, 20, "");
  EXPECT_EQ(part.dipole, (std::array<double, 3>{0, 0, 0}));

  KsHost zero(water, "STO-3G", "BLYP");
  zero.run(KS_SCF_WOLOG, 0, "");
  EXPECT_EQ(zero.de_final, 0.0);
  EXPECT_LT(zero.exc[0], -100.0);

  std::array<double, 3> e{};
  int k = 0;
  for (const char* name : {"OP", "B1OP", "BOP"}) {
    KsHost x(water, "STO-3G", name);
    x.run(KS_SCF_WOLOG, 60, "");
    e[k++] = x.etotal;
  }
  EXPECT_GT(std::abs(e[0] - e[1]), 0.1);
  EXPECT_GT(std::abs(e[1] - e[2]), 0.1);
}

}  // namespace
}  // namespace norvik::scf
