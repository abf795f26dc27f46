// The exported routines as a host calls them: raw arrays, blank-padded names,
// the whole single point and the free atoms, and the fatal paths.
#include <gtest/gtest.h>
#ifdef _WIN32
#include <io.h>
#define dup2 _dup2
#else
#include <unistd.h>
#endif

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "common/constants.h"
#include "norvik.h"
#include "scf/hf_driver.h"
#include "scf_fixture.h"

namespace norvik::scf {
namespace {

std::string padded(const std::string& s, std::size_t n) {
  std::string p = s;
  p.resize(n, ' ');
  return p;
}

TEST(Abi, SinglePointOfWater) {
  const auto c = testing::water();
  const std::string basis = padded("STO-3G", 20);
  const norvik_int natom = 3, nalpha = 5, nbeta = 5, niter = 64, istart = 1, nbasis = 7;
  const double damp = 0.5, thr = 1e-9, ram = 4.0, screen = 0.0, orth = 1e-8;
  std::vector<double> rho(2 * 49), orbitals(2 * 7 * 8), atomrho(2 * 49);
  double energy = 0, dipole[3] = {}, de = 0;
  norvik_int northo = 0, incore = -1;
  HF_1POINT(basis.data(), &natom, c.z.data(), c.z.data(), c.pos.data(), &nalpha, &nbeta, &niter,
            &damp, &thr, &thr, &ram, &screen, &orth, &istart, atomrho.data(), &nbasis, rho.data(),
            orbitals.data(), &energy, dipole, &de, &northo, &incore);
  EXPECT_NEAR(energy / constants::kHartreeEv, -74.9629282083, 1e-8);
  EXPECT_NEAR(dipole[2], -0.35930129, 1e-6);
  EXPECT_EQ(northo, 7);
  EXPECT_EQ(incore, 1);
  EXPECT_LT(de, 1e-9);
  // The levels ascend, and the density holds five electrons per spin.
  for (int k = 1; k < 7; ++k) EXPECT_LT(orbitals[49 + k - 1], orbitals[49 + k]);
  EXPECT_EQ(std::vector<double>(rho.begin(), rho.begin() + 49),
            std::vector<double>(rho.begin() + 49, rho.end()));

  // With no memory for the store the same point runs integral-direct.
  const double none = 0.0;
  double energy_direct = 0;
  HF_1POINT(basis.data(), &natom, c.z.data(), c.z.data(), c.pos.data(), &nalpha, &nbeta, &niter,
            &damp, &thr, &thr, &none, &screen, &orth, &istart, atomrho.data(), &nbasis, rho.data(),
            orbitals.data(), &energy_direct, dipole, &de, &northo, &incore);
  EXPECT_EQ(incore, 0);
  EXPECT_NEAR(energy_direct, energy, 1e-8);
}

TEST(Abi, FreeAtomsOfAmmonia) {
  // N (quartet) and H (doublet) in 3-21G; the last atom is a ghost hydrogen.
  const std::string basis = padded("3-21G", 20);
  const std::vector<int> zat{7, 1, 1, 1, 0}, zel{7, 1, 1, 1, 1};
  const norvik_int natom = 5, niter = 80, nbasis = 9 + 4 * 2;
  const double damp = 0.5, thr = 1e-10, ram = 4.0, orth = 1e-8;
  std::vector<double> eatom(5, -1.0), atomrho(2 * nbasis * nbasis, -1.0);
  const std::string hf = padded("HF", 10);
  const double radius = 0.0;
  const norvik_int level = 0;
  ATOMS(basis.data(), &natom, zat.data(), zel.data(), &niter, &damp, &thr, &thr, &ram, &orth,
        &nbasis, eatom.data(), atomrho.data(), hf.data(), &radius, &level);
  EXPECT_NEAR(eatom[0] / constants::kHartreeEv, -54.1053903978, 1e-7);  // Psi4 UHF
  EXPECT_LT(eatom[1], 0.0);
  EXPECT_EQ(eatom[1], eatom[2]);
  EXPECT_EQ(eatom[1], eatom[3]);
  EXPECT_EQ(eatom[4], 0.0);  // the ghost has no electrons

  // The blocks sit on the diagonal; their traces are the atoms' electrons.
  testing::Case c{{7, 1, 1, 1, 1}, {0, 0, 0, 0, 0, 1, 0, 1, 0, 1, 0, 0, 3, 3, 3}, {5, 5}};
  testing::Fixture f(c, "3-21G");
  ASSERT_EQ(f.n, nbasis);
  const std::size_t nn = static_cast<std::size_t>(nbasis) * nbasis;
  auto block_trace = [&](int first, int size, int spin) {
    double t = 0;
    for (int i = first; i < first + size; ++i)
      for (int j = first; j < first + size; ++j)
        t += atomrho[spin * nn + i + j * nbasis] * f.prepared.s[i + j * nbasis];
    return t;
  };
  EXPECT_NEAR(block_trace(0, 9, 0), 5.0, 1e-10);
  EXPECT_NEAR(block_trace(0, 9, 1), 2.0, 1e-10);
  EXPECT_NEAR(block_trace(9, 2, 0), 1.0, 1e-10);
  EXPECT_NEAR(block_trace(9, 2, 1), 0.0, 1e-14);
  EXPECT_EQ(block_trace(15, 2, 0), 0.0);
  EXPECT_EQ(atomrho[0 + 10 * nbasis], 0.0);  // off the diagonal blocks

  // PATCHRHOATOM turns them into an ammonia start with 5 + 5 electrons.
  std::vector<double> rho(2 * nn);
  const norvik_int na = 5, nb = 5;
  PATCHRHOATOM(&natom, atomrho.data(), &nbasis, f.prepared.s.data(), &na, &nb, rho.data());
  double ta = 0, tb = 0;
  for (std::size_t e = 0; e < nn; ++e) {
    ta += rho[e] * f.prepared.s[e];
    tb += rho[nn + e] * f.prepared.s[e];
  }
  EXPECT_NEAR(ta, 5.0, 1e-12);
  EXPECT_NEAR(tb, 5.0, 1e-12);
}

TEST(Abi, FreeAtomEnergyIsUnrestrictedItsDensitySpherical) {
  // Triplet O in 6-31++G*: functions 2-4, 6-8 and 10-12 are the three p shells.
  // The energy is the integer-occupation UHF atom's; the density the spherical
  // average, in which each p shell holds its electrons of a spin evenly.
  const std::string basis = padded("6-31++Gx", 20);
  const norvik_int natom = 1, z = 8, niter = 100, nbasis = 18;
  const double damp = 0.5, thr = 1e-10, ram = 4.0, orth = 1e-8;
  double eatom = 0.0;
  std::vector<double> atomrho(2 * nbasis * nbasis);
  const std::string hf = padded("HF", 10);
  const double radius = 0.0;
  const norvik_int level = 0;
  ATOMS(basis.data(), &natom, &z, &z, &niter, &damp, &thr, &thr, &ram, &orth, &nbasis, &eatom,
        atomrho.data(), hf.data(), &radius, &level);
  EXPECT_NEAR(eatom / constants::kHartreeEv, -74.7862349933, 1e-7);  // Psi4 UHF, hf_energies.tsv
  const std::size_t nn = static_cast<std::size_t>(nbasis) * nbasis;
  for (std::size_t spin = 0; spin < 2; ++spin) {
    const double* p = atomrho.data() + spin * nn;
    for (int first : {2, 6, 10}) {
      const double xx = p[first + first * nbasis];
      for (int k = 1; k < 3; ++k) {
        EXPECT_NEAR(p[first + k + (first + k) * nbasis], xx, 1e-9 * std::abs(xx) + 1e-12)
            << spin << " " << first + k;
        EXPECT_NEAR(p[first + (first + k) * nbasis], 0.0, 1e-12) << spin << " " << first + k;
      }
    }
  }
  // The spin density is kept: the alpha p shell is full, the beta one a third.
  EXPECT_GT(atomrho[2 + 2 * nbasis], 2.0 * atomrho[nn + 2 + 2 * nbasis]);
}

TEST(Abi, InitialiserAndDriverOnTheHostsArrays) {
  testing::Fixture f(testing::hydroxyl(), "STO-3G");
  const auto& ctx = f.prepared.context;
  const norvik_int n = f.n, northo = f.prepared.northo, natom = 2, istart = 1;
  const norvik_int nshell = ctx.nshell, nshpair = static_cast<norvik_int>(ctx.shpair.size() / 2),
                   npair = ctx.npair;
  std::vector<double> vint = ctx.vint;
  const double thresh = 0.0;
  std::vector<double> atomrho(2 * n * n), e_ini(1), dip_ini(3);
  const auto& p = f.prepared;
  // The counts travel in the density: OH has 9 electrons, a doublet (5 alpha, 4 beta).
  const norvik_int zsum = 9, charge = 0, mult = 2, unused_niter = 0;
  const double unused = 0.0, unused3[3] = {0, 0, 0};
  MAKEINIRHO(&zsum, &charge, &mult, &n, f.rho.data());
  HF_INI(&istart, &natom, atomrho.data(), &unused_niter, &unused, &unused, &unused, &unused,
         unused3, &n, &northo, p.x.data(), p.s.data(), p.t.data(), p.v.data(), p.dip.data(),
         &nshell, ctx.shelltab.data(), &nshpair, ctx.shpair.data(), &npair, ctx.pairlist.data(),
         ctx.pairmap.data(), ctx.vdiag.data(), vint.data(), &thresh, f.g.data(), f.rho.data(),
         f.orbitals.data(), e_ini.data(), dip_ini.data());

  const std::string log = padded("", 120);
  const norvik_int iopt = 0, isrc = 0, niter = 50;
  const double damp = 0.5, thr = 1e-10, e_off = 0.0, d_off[3] = {0, 0, 0};
  double energy = 0, dipole[3], de = 0;
  HF_SCF(&iopt, &isrc, log.data(), &niter, &damp, &thr, &thr, &e_off, d_off, &n, &northo,
         p.x.data(), p.s.data(), p.t.data(), p.v.data(), p.dip.data(), &nshell, ctx.shelltab.data(),
         &nshpair, ctx.shpair.data(), &npair, ctx.pairlist.data(), ctx.pairmap.data(),
         ctx.vdiag.data(), vint.data(), &thresh, f.g.data(), f.rho.data(), f.orbitals.data(),
         &energy, dipole, &de);

  // The same through the core.
  testing::Fixture core(testing::hydroxyl(), "STO-3G");
  core.start();
  CycleSettings c;
  c.niter = 50;
  c.thr_ene = c.thr_rms = 1e-10;
  const ScfResult r = run_scf(core.system(), c, core.arrays());
  EXPECT_EQ(energy, r.energy);
  EXPECT_EQ(de, r.de_final);
  EXPECT_EQ(f.rho, core.rho);
  double enuc = 0;
  NUCLEARREP(&natom, f.molecule.z.data(), f.molecule.pos.data(), &enuc);
  EXPECT_NEAR((energy + enuc) / constants::kHartreeEv, -74.3626692218, 1e-8);

  // ENERGYEDX and DIPOLEMOM give what the driver returned.
  double e2 = 0, mu[3];
  ENERGYEDX(&n, p.t.data(), p.v.data(), f.g.data(), f.rho.data(), &e2);
  DIPOLEMOM(&n, p.dip.data(), f.rho.data(), mu);
  EXPECT_EQ(e2, energy);
  for (int k = 0; k < 3; ++k) EXPECT_EQ(mu[k], dipole[k]);
}

TEST(Abi, NuclearTerms) {
  // Two protons 1 Å apart: e²/(4πε0·1 Å) = hartree·bohr/Å in eV.
  const norvik_int natom = 3;
  const std::vector<int> z{1, 1, 0};
  const std::vector<double> pos{0, 0, 0, 0, 0, 1.0, 0, 0, 1.0};  // a ghost on the second
  double e = 0, mu[3];
  NUCLEARREP(&natom, z.data(), pos.data(), &e);
  EXPECT_DOUBLE_EQ(e, constants::kHartreeEv * constants::kBohrAngstrom);
  NUCLEAREDM(&natom, z.data(), pos.data(), mu);
  EXPECT_EQ(mu[2], 1.0);
}

TEST(Abi, FreeAtomStartDensity) {
  const norvik_int zsum = 8, charge = 0, mult = 3, n = 4;
  std::vector<double> rho(32, 9.0);
  MAKEINIRHO(&zsum, &charge, &mult, &n, rho.data());
  double ta = 0, tb = 0;
  for (int i = 0; i < 4; ++i) {
    ta += rho[i * 5];
    tb += rho[16 + i * 5];
  }
  EXPECT_DOUBLE_EQ(ta, 5.0);
  EXPECT_DOUBLE_EQ(tb, 3.0);
  EXPECT_EQ(rho[1], 0.0);
}

using AbiDeathTest = ::testing::Test;

// Fatal messages go to standard output; the death test reads standard error.
#define STDOUT_TO_STDERR(call) \
  {                            \
    std::fflush(stdout);       \
    dup2(2, 1);                \
    call;                      \
  }

TEST(AbiDeathTest, InvalidOrthogonalizationEndsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  testing::Fixture f(testing::h2(), "STO-3G");
  f.start();
  const norvik_int n = f.n, northo = f.n + 1;
  const double damp = 1.0;
  std::vector<double> fh(24 * n * n), eh(fh.size()), scratch(2 * n * n);
  double rmsd = 0, comm2 = 0;
  const auto& p = f.prepared;
  EXPECT_EXIT(
      STDOUT_TO_STDERR(UPDATERHO_DAMP(&n, p.s.data(), p.t.data(), p.v.data(), f.g.data(), &northo,
                                      p.x.data(), &damp, fh.data(), eh.data(), scratch.data(),
                                      f.rho.data(), f.orbitals.data(), &rmsd, &comm2)),
      ::testing::ExitedWithCode(1), "Invalid orthogonalization\\.  +3");
}

TEST(AbiDeathTest, WrongBasisSizeEndsTheSinglePoint) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto c = testing::water();
  const std::string basis = padded("STO-3G", 20);
  const norvik_int natom = 3, nalpha = 5, nbeta = 5, niter = 4, istart = 1, nbasis = 8;
  const double damp = 0.5, thr = 1e-9, ram = 4.0, screen = 0.0, orth = 1e-8;
  std::vector<double> rho(2 * 64), orbitals(2 * 8 * 9), atomrho(2 * 64);
  double energy = 0, dipole[3] = {}, de = 0;
  norvik_int northo = 0, incore = 0;
  EXPECT_EXIT(STDOUT_TO_STDERR(HF_1POINT(basis.data(), &natom, c.z.data(), c.z.data(), c.pos.data(),
                                         &nalpha, &nbeta, &niter, &damp, &thr, &thr, &ram, &screen,
                                         &orth, &istart, atomrho.data(), &nbasis, rho.data(),
                                         orbitals.data(), &energy, dipole, &de, &northo, &incore)),
              ::testing::ExitedWithCode(1), "Wrong nbasis in HF_1point\\. +8 +7");
}

}  // namespace
}  // namespace norvik::scf
