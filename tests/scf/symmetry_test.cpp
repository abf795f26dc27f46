// The symmetry-adapted SCF of C2 and B2: the combinations, the block
// occupation and the states the SCF reaches.
#include <gtest/gtest.h>
#ifdef _WIN32
#include <io.h>
#define dup2 _dup2
#else
#include <unistd.h>
#endif

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

#include "common/constants.h"
#include "common/error.h"
#include "norvik.h"
#include "scf/symmetry_update.h"
#include "scf_fixture.h"

namespace norvik::scf {
namespace {

using testing::Case;
using testing::Fixture;

Case dicarbon() {
  return {{6, 6}, {0, 0, -0.62125, 0, 0, 0.62125}, {6, 6}};
}
Case diboron() {
  return {{5, 5}, {0, 0, -0.795, 0, 0, 0.795}, {6, 4}};
}

Salc salc_of(const Case& c, const std::string& basis) {
  return make_salc(basis::make_basis(basis, c.z), c.pos);
}

double at(const std::vector<double>& a, int n, int i, int j) {
  return a[static_cast<std::size_t>(i) + static_cast<std::size_t>(j) * n];
}

TEST(Salc, OrthonormalCombinationsThatBlockDiagonaliseTheOperators) {
  Fixture f(dicarbon(), "6-31G");
  const Salc salc = salc_of(dicarbon(), "6-31G");
  const int n = f.n;
  ASSERT_EQ(salc.n, n);
  // Nine functions per carbon: 1s 2s 2p 3s 3p.
  EXPECT_EQ(salc.size(Irrep::ag), 5);
  EXPECT_EQ(salc.size(Irrep::b1u), 5);
  for (Irrep b : {Irrep::b2u, Irrep::b3u, Irrep::b2g, Irrep::b3g}) EXPECT_EQ(salc.size(b), 2);
  EXPECT_EQ(salc.size(Irrep::b1g), 0);
  EXPECT_EQ(salc.size(Irrep::au), 0);
  auto block_of_column = [&](int j) {
    int b = 0;
    while (salc.first[static_cast<std::size_t>(b) + 1] <= j) ++b;
    return b;
  };
  // Uᵀ U = 1, and Uᵀ M U has no element between two blocks for S, T and V.
  for (const std::vector<double>* m : {&f.prepared.s, &f.prepared.t, &f.prepared.v}) {
    for (int p = 0; p < n; ++p) {
      for (int q = 0; q < n; ++q) {
        double uu = 0.0, umu = 0.0;
        for (int i = 0; i < n; ++i) {
          uu += at(salc.u, n, i, p) * at(salc.u, n, i, q);
          for (int j = 0; j < n; ++j)
            umu += at(salc.u, n, i, p) * at(*m, n, i, j) * at(salc.u, n, j, q);
        }
        EXPECT_NEAR(uu, p == q ? 1.0 : 0.0, 1e-14);
        if (block_of_column(p) != block_of_column(q)) {
          EXPECT_NEAR(umu, 0.0, 1e-9) << p << " " << q;
        }
      }
    }
  }
  // Each function's gerade combination: s and z-like functions σg, x πu→ its g partner is πg(x).
  EXPECT_EQ(salc.function_block[0], static_cast<int>(Irrep::ag));  // 1s
}

TEST(Salc, RefusesAMoleculeOffTheAxisOrOffCentre) {
  const basis::BasisSet b = basis::make_basis("STO-3G", std::vector<int>{6, 6});
  EXPECT_THROW(make_salc(b, std::vector<double>{0, 0, -0.6, 0, 0, 0.7}), Error);
  EXPECT_THROW(make_salc(b, std::vector<double>{0.1, 0, -0.6, 0.1, 0, 0.6}), Error);
  EXPECT_THROW(make_salc(b, std::vector<double>{0, 0, 0, 0, 0, 0}), Error);
  const basis::BasisSet hetero = basis::make_basis("STO-3G", std::vector<int>{6, 1});
  EXPECT_THROW(make_salc(hetero, std::vector<double>{0, 0, -0.6, 0, 0, 0.6}), Error);
}

TEST(Salc, BlockCountsFollowTheConfiguration) {
  const auto six = block_counts(6);  // C2 per spin, B2 alpha
  EXPECT_EQ(six[static_cast<int>(Irrep::ag)], 2);
  EXPECT_EQ(six[static_cast<int>(Irrep::b1u)], 2);
  EXPECT_EQ(six[static_cast<int>(Irrep::b3u)], 1);
  EXPECT_EQ(six[static_cast<int>(Irrep::b2u)], 1);
  const auto four = block_counts(4);  // B2 beta
  EXPECT_EQ(four[static_cast<int>(Irrep::ag)], 2);
  EXPECT_EQ(four[static_cast<int>(Irrep::b1u)], 2);
  EXPECT_EQ(four[static_cast<int>(Irrep::b3u)], 0);
  const auto five = block_counts(5);  // the π pair is never split
  EXPECT_EQ(five[static_cast<int>(Irrep::b3u)], 0);
  EXPECT_EQ(five[static_cast<int>(Irrep::ag)], 3);
}

// Blocks of the occupied orbitals of one spin, with multiplicity.
std::map<Irrep, int> occupied_blocks(const Salc& salc, const Fixture& f, int spin, int nocc) {
  const int n = f.n;
  std::map<Irrep, int> m;
  const double* base = f.orbitals.data() + static_cast<std::size_t>(spin) * (n * n + n);
  for (int k = 0; k < nocc; ++k)
    ++m[orbital_block(salc, std::span<const double>(base + static_cast<std::size_t>(k) * n, n))];
  return m;
}

// ⟨S²⟩ of a UHF determinant.
double s_squared(const Fixture& f) {
  const int n = f.n;
  const std::size_t nn = static_cast<std::size_t>(n) * n;
  const auto& s = f.prepared.s;
  const double sz = 0.5 * (f.molecule.counts.alpha - f.molecule.counts.beta);
  double overlap = 0.0;  // tr(Pα S Pβ S)
  std::vector<double> as(nn, 0.0), bs(nn, 0.0);
  for (int j = 0; j < n; ++j)
    for (int i = 0; i < n; ++i)
      for (int k = 0; k < n; ++k) {
        as[i + j * n] += f.rho[i + k * n] * s[k + j * n];
        bs[i + j * n] += f.rho[nn + i + k * n] * s[k + j * n];
      }
  for (int i = 0; i < n; ++i)
    for (int k = 0; k < n; ++k) overlap += as[i + k * n] * bs[k + i * n];
  return sz * (sz + 1.0) + f.molecule.counts.beta - overlap;
}

struct Outcome {
  ScfResult result;
  std::map<Irrep, int> alpha, beta;
};

Outcome symmetric_run(Fixture& f, const Salc& salc) {
  StartSettings start;
  start.counts = f.molecule.counts;
  initialise(f.system(), start, f.arrays(), SymmetryBlockRule(salc));
  CycleSettings cyc;
  cyc.niter = 80;
  cyc.damp = 0.5;
  cyc.thr_ene = 1e-8;
  cyc.thr_rms = 1e-7;
  Outcome r;
  r.result = run_scf(f.system(), cyc, f.arrays(), SymmetryBlockRule(salc));
  r.alpha = occupied_blocks(salc, f, 0, f.molecule.counts.alpha);
  r.beta = occupied_blocks(salc, f, 1, f.molecule.counts.beta);
  return r;
}

// The unconstrained SCF from the start density of the symmetric one.
Outcome plain_run(Fixture& f, const Salc& salc) {
  StartSettings start;
  start.counts = f.molecule.counts;
  initialise(f.system(), start, f.arrays(), SymmetryBlockRule(salc));
  CycleSettings cyc;
  cyc.niter = 80;
  cyc.damp = 0.5;
  cyc.thr_ene = 1e-8;
  cyc.thr_rms = 1e-7;
  Outcome r;
  r.result = run_scf(f.system(), cyc, f.arrays());
  r.alpha = occupied_blocks(salc, f, 0, f.molecule.counts.alpha);
  r.beta = occupied_blocks(salc, f, 1, f.molecule.counts.beta);
  return r;
}

const std::map<Irrep, int> kSixElectrons{
    {Irrep::ag, 2}, {Irrep::b1u, 2}, {Irrep::b3u, 1}, {Irrep::b2u, 1}};
const std::map<Irrep, int> kFourElectrons{{Irrep::ag, 2}, {Irrep::b1u, 2}};

// Psi4's energy [hartree] of the case (tools/scf/diatomic_references.py).
double reference(const std::string& name, const std::string& basis) {
  std::ifstream in(std::string(NORVIK_TEST_DATA) + "/diatomic_references.tsv");
  std::string line;
  while (std::getline(in, line)) {
    std::istringstream row(line);
    std::string n, b;
    double e = 0;
    if (row >> n >> b >> e && n == name && b == basis) return e;
  }
  ADD_FAILURE() << "no reference for " << name << " " << basis;
  return 0.0;
}

// Total energy [hartree] of a homonuclear pair with the electronic energy [eV].
double total_hartree(const Case& c, double electronic) {
  const double r = std::abs(c.pos[5] - c.pos[2]);
  const double z = c.z[0];
  return electronic / constants::kHartreeEv + z * z * constants::kBohrAngstrom / r;
}

// With the πg levels pulled far down (V − λ·S·U_πg·U_πgᵀ·S, which keeps the
// symmetry), a plain aufbau step fills πg; the symmetric step keeps the
// configuration.
TEST(SymmetricStep, KeepsTheConfigurationWhenAnotherBlockDrops) {
  Fixture f(dicarbon(), "STO-3G");
  const Salc salc = salc_of(dicarbon(), "STO-3G");
  f.start();
  const int n = f.n;
  const std::size_t nn = static_cast<std::size_t>(n) * n;
  std::vector<double> su(nn, 0.0), v = f.prepared.v;
  for (int j = 0; j < n; ++j)
    for (int i = 0; i < n; ++i)
      for (int k = 0; k < n; ++k) su[i + j * n] += at(f.prepared.s, n, i, k) * at(salc.u, n, k, j);
  const int b0 = salc.first[static_cast<int>(Irrep::b2g)];
  const int b1 = salc.first[static_cast<int>(Irrep::b3g) + 1];
  ASSERT_EQ(b1 - b0, 2);
  for (int j = 0; j < n; ++j)
    for (int i = 0; i < n; ++i)
      for (int c = b0; c < b1; ++c) v[i + j * n] -= 500.0 * su[i + c * n] * su[j + c * n];
  Operators op = f.system().operators;
  op.v = ConstMatrixView(v.data(), n, n, n);

  auto step = [&](bool symmetric) {
    std::vector<double> fh(12 * nn), eh(12 * nn), scratch(2 * nn);
    std::vector<double> rho = f.rho, orbitals = f.orbitals;
    Fixture out(dicarbon(), "STO-3G");
    Workspace w(n);
    const StepArrays arrays{f.g, fh, eh, scratch, out.rho, out.orbitals};
    std::copy(rho.begin(), rho.end(), out.rho.begin());
    if (symmetric) {
      symmetric_damped_step(op, salc, 1.0, arrays, w);
    } else {
      damped_step(op, 1.0, arrays, Occupation::aufbau, w);
    }
    return occupied_blocks(salc, out, 0, 6);
  };
  const auto plain = step(false);
  EXPECT_EQ(plain.count(Irrep::b2g) + plain.count(Irrep::b3g), 2u);
  EXPECT_EQ(step(true), kSixElectrons);
}

class Diatomic : public ::testing::TestWithParam<const char*> {};

TEST_P(Diatomic, DicarbonReachesItsSigmaGPlusGroundConfiguration) {
  Fixture f(dicarbon(), GetParam());
  const Salc salc = salc_of(dicarbon(), GetParam());
  const Outcome sym = symmetric_run(f, salc);
  ASSERT_TRUE(sym.result.converged);
  EXPECT_EQ(sym.alpha, kSixElectrons);
  EXPECT_EQ(sym.beta, kSixElectrons);
  EXPECT_NEAR(s_squared(f), 0.0, 1e-8);
  EXPECT_NEAR(total_hartree(dicarbon(), sym.result.energy), reference("c2", GetParam()), 1e-7);
  Fixture g(dicarbon(), GetParam());
  const Outcome plain = plain_run(g, salc);
  std::printf("C2 %s: symmetric %.8f eV, unconstrained %.8f eV (%s)\n", GetParam(),
              sym.result.energy, plain.result.energy,
              plain.alpha == kSixElectrons ? "same state" : "another state");
  if (plain.result.converged && plain.alpha == kSixElectrons && plain.beta == kSixElectrons) {
    EXPECT_GE(sym.result.energy, plain.result.energy - 1e-5);
    EXPECT_NEAR(sym.result.energy, plain.result.energy, 1e-4);
  }
}

TEST_P(Diatomic, DiboronReachesItsTripletSigmaGMinus) {
  Fixture f(diboron(), GetParam());
  const Salc salc = salc_of(diboron(), GetParam());
  const Outcome sym = symmetric_run(f, salc);
  ASSERT_TRUE(sym.result.converged);
  EXPECT_EQ(sym.alpha, kSixElectrons);
  EXPECT_EQ(sym.beta, kFourElectrons);
  const double s2 = s_squared(f);
  EXPECT_NEAR(s2, 2.0, 0.05);
  EXPECT_NEAR(total_hartree(diboron(), sym.result.energy), reference("b2", GetParam()), 1e-7);
  Fixture g(diboron(), GetParam());
  const Outcome plain = plain_run(g, salc);
  std::printf(
      "B2 %s: symmetric %.8f eV, unconstrained %.8f eV (%s), <S2> %.5f\n", GetParam(),
      sym.result.energy, plain.result.energy,
      plain.alpha == kSixElectrons && plain.beta == kFourElectrons ? "same state" : "another state",
      s2);
  if (plain.result.converged && plain.alpha == kSixElectrons && plain.beta == kFourElectrons) {
    EXPECT_GE(sym.result.energy, plain.result.energy - 1e-5);
  }
}

INSTANTIATE_TEST_SUITE_P(Bases, Diatomic, ::testing::Values("STO-3G", "6-31G"),
                         [](const auto& info) {
                           std::string s = info.param;
                           s.erase(std::remove(s.begin(), s.end(), '-'), s.end());
                           return s;
                         });

std::string padded(std::string s, std::size_t n) {
  s.resize(n, ' ');
  return s;
}

TEST(SymmetryAbi, HostCallsGiveTheCoreResult) {
  const Case c = diboron();
  Fixture f(c, "STO-3G");
  const auto& ctx = f.prepared.context;
  const auto& p = f.prepared;
  const norvik_int n = f.n, northo = p.northo, natom = 2, istart = 1;
  const norvik_int zat[2] = {5, 5};
  std::vector<double> salc(static_cast<std::size_t>(n) * n);
  std::vector<norvik_int> block(9);
  const std::string basis = padded("STO-3G", 20);
  MAKESALC(basis.data(), &natom, zat, c.pos.data(), &n, salc.data(), block.data());
  const Salc core_salc = salc_of(c, "STO-3G");
  EXPECT_EQ(salc, core_salc.u);
  EXPECT_EQ(block[0], 1);
  EXPECT_EQ(block[8], n + 1);

  const norvik_int nshell = ctx.nshell, nshpair = static_cast<norvik_int>(ctx.shpair.size() / 2),
                   npair = ctx.npair;
  std::vector<double> vint = ctx.vint, atomrho(2 * static_cast<std::size_t>(n) * n), dip0(3);
  const double thresh = 0.0;
  double e0 = 0;
  // B2 triplet: 10 electrons, 6 alpha and 4 beta, carried by the start density.
  const norvik_int zsum = 10, charge = 0, mult = 3, unused_niter = 0;
  const double unused = 0.0, unused3[3] = {0, 0, 0};
  MAKEINIRHO(&zsum, &charge, &mult, &n, f.rho.data());
  HF_INI_B2(&istart, &natom, atomrho.data(), &unused_niter, &unused, &unused, &unused, &unused,
            unused3, &n, &northo, p.x.data(), p.s.data(), p.t.data(), p.v.data(), p.dip.data(),
            &nshell, ctx.shelltab.data(), &nshpair, ctx.shpair.data(), &npair, ctx.pairlist.data(),
            ctx.pairmap.data(), ctx.vdiag.data(), vint.data(), &thresh, f.g.data(), f.rho.data(),
            f.orbitals.data(), &e0, dip0.data(), salc.data(), block.data());
  const std::string log = padded("", 120);
  const norvik_int iopt = 0, isrc = 0, niter = 40;
  const double damp = 0.5, thr = 1e-9, off = 0.0, doff[3] = {0, 0, 0};
  double energy = 0, dipole[3], de = 0;
  HF_SCF_B2(&iopt, &isrc, log.data(), &niter, &damp, &thr, &thr, &off, doff, &n, &northo,
            p.x.data(), p.s.data(), p.t.data(), p.v.data(), p.dip.data(), &nshell,
            ctx.shelltab.data(), &nshpair, ctx.shpair.data(), &npair, ctx.pairlist.data(),
            ctx.pairmap.data(), ctx.vdiag.data(), vint.data(), &thresh, f.g.data(), f.rho.data(),
            f.orbitals.data(), &energy, dipole, &de, salc.data(), block.data());

  Fixture core(c, "STO-3G");
  StartSettings start;
  start.counts = c.counts;
  initialise(core.system(), start, core.arrays(), SymmetryBlockRule(core_salc));
  CycleSettings cyc;
  cyc.niter = 40;
  cyc.thr_ene = cyc.thr_rms = 1e-9;
  const ScfResult r = run_scf(core.system(), cyc, core.arrays(), SymmetryBlockRule(core_salc));
  EXPECT_EQ(energy, r.energy);
  EXPECT_EQ(f.rho, core.rho);

  // One more damped step through the exported update keeps the converged density.
  std::vector<double> fh(12 * static_cast<std::size_t>(n) * n), eh(fh.size()),
      scratch(2 * static_cast<std::size_t>(n) * n);
  double rmsd = 1, comm2 = 1;
  const double one = 1.0;
  UPDATERHO_B2_DAMP(&n, p.s.data(), p.t.data(), p.v.data(), f.g.data(), &northo, p.x.data(), &one,
                    fh.data(), eh.data(), scratch.data(), f.rho.data(), f.orbitals.data(), &rmsd,
                    &comm2, salc.data(), block.data());
  EXPECT_LT(rmsd, 1e-6);
  EXPECT_LT(comm2, 1e-6);
}

TEST(SymmetryAbi, FindsTheOuterShellS) {
  auto find = [](void (*routine)(const norvik_int*, norvik_int*), norvik_int z) {
    norvik_int index = -1;
    routine(&z, &index);
    return index;
  };
  // Na has no 4s; in 6-31G its 3s is split and the outer part is not a 4s.
  EXPECT_EQ(find(FIND4S_STO3G, 11), 0);
  EXPECT_EQ(find(FIND4S_631G, 11), 0);
  // K: 1s, 2sp, 3sp, then 4s at function 10.
  EXPECT_EQ(find(FIND4S_STO3G, 19), 10);
  EXPECT_EQ(find(FIND4S_631G, 19), 10);
  EXPECT_EQ(find(FIND4S_631G, 30), 10);
  // K in 3-21G: the outer 4s is no 5s.
  EXPECT_EQ(find(FIND5S_321G, 19), 0);
  // Rb: 1s, 2sp, 3sp, 3d, 4sp before the 5s; a Cartesian d set has one more function.
  EXPECT_EQ(find(FIND5S_STO3G, 37), 19);
  EXPECT_EQ(find(FIND5S_321G, 37), 19);
  EXPECT_EQ(find(FIND5S_321GC, 37), 20);
  EXPECT_EQ(find(FIND5S_321GC, 54), 20);
}

TEST(SymmetryAbiDeathTest, MoleculeOffTheAxisEndsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const norvik_int natom = 2, zat[2] = {6, 6}, n = 10;
  const double pos[6] = {0.0, 0.2, -0.6, 0.0, 0.2, 0.6};
  std::vector<double> salc(100);
  std::vector<norvik_int> block(9);
  const std::string basis = padded("STO-3G", 20);
  EXPECT_EXIT(
      {
        std::fflush(stdout);
        dup2(2, 1);  // the fatal message goes to standard output
        MAKESALC(basis.data(), &natom, zat, pos, &n, salc.data(), block.data());
      },
      ::testing::ExitedWithCode(1), "Not a homonuclear diatomic centred on the z axis\\.");
}

}  // namespace
}  // namespace norvik::scf
