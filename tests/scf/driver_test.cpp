// The SCF cycle: its phases, the convergence test, the run log, the variants
// and the initialisers.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "abi/scf_support.h"
#include "common/constants.h"
#include "scf/density_update.h"
#include "scf/hf_driver.h"
#include "scf_fixture.h"

namespace norvik::scf {
namespace {

using testing::Fixture;

std::string temp_path(const std::string& name) {
  return (std::filesystem::temp_directory_path() / ("norvik_scf_" + name)).string();
}

std::string read_file(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream ss;
  ss << in.rdbuf();
  return ss.str();
}

CycleSettings quiet(int niter, double thr = 1e-9) {
  CycleSettings c;
  c.niter = niter;
  c.damp = 0.5;
  c.thr_ene = thr;
  c.thr_rms = thr;
  return c;
}

TEST(Cycle, NoIterationEvaluatesTheDensityAsItStands) {
  Fixture f(testing::water(), "STO-3G");
  f.start();
  const std::vector<double> rho = f.rho, g = f.g;
  const std::string log = temp_path("niter0.log");
  std::filesystem::remove(log);
  CycleSettings c = quiet(0);
  const ScfResult r = run_scf(f.system(), c, f.arrays(), AufbauRule(), abi::run_log(log, 0, 0));
  EXPECT_FALSE(std::filesystem::exists(log));
  EXPECT_EQ(f.rho, rho);
  EXPECT_EQ(f.g, g);
  EXPECT_EQ(r.cycles, 0);
  EXPECT_EQ(r.de_final, 0.0);
  const Operators& op = f.system().operators;
  EXPECT_EQ(r.energy, electronic_energy(op.t, op.v, g, rho));
  EXPECT_EQ(r.dipole, electronic_dipole(f.n, f.prepared.dip, rho));
  EXPECT_NE(r.dipole[2], 0.0);
}

TEST(Cycle, OneIterationIsOneUndampedCycle) {
  Fixture a(testing::water(), "STO-3G"), b(testing::water(), "STO-3G");
  a.start();
  b.start();
  const std::string log = temp_path("niter1.log");
  std::filesystem::remove(log);
  CycleSettings c = quiet(1);
  c.damp = 0.25;  // not used by cycle 1
  const ScfResult r = run_scf(a.system(), c, a.arrays(), AufbauRule(), abi::run_log(log, 0, 0));
  EXPECT_EQ(r.cycles, 1);
  EXPECT_EQ(r.de_final, 0.0);
  EXPECT_FALSE(r.converged);
  const std::string text = read_file(log);
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1);

  // The same by hand: one update with damping 1.0, then the Fock build.
  std::vector<double> fh(2 * kHistorySlots * b.n * b.n), eh(fh.size()), scratch(2 * b.n * b.n);
  Workspace w(b.n);
  damped_step(b.system().operators, 1.0, {b.g, fh, eh, scratch, b.rho, b.orbitals},
              Occupation::aufbau, w);
  HartreeFockBuilder(b.system().context, FockBuild::stored).build(b.rho, b.g);
  EXPECT_EQ(a.rho, b.rho);
  EXPECT_EQ(a.g, b.g);
}

TEST(Cycle, EightCyclesAreDampedAndDiisFollows) {
  // With damping 0 the damped cycles 2 … 8 keep the density of cycle 1; the
  // DIIS cycles after them move it again (never converged: thresholds 0).
  for (int niter : {8, 9, 11}) {
    Fixture f(testing::hydroxyl(), "STO-3G");
    f.start();
    CycleSettings c = quiet(niter, 0.0);
    c.damp = 0.0;
    std::vector<CycleRecord> seen;
    const ScfResult r = run_scf(f.system(), c, f.arrays(), AufbauRule(),
                                [&](const CycleRecord& record) { seen.push_back(record); });
    EXPECT_EQ(r.cycles, niter);
    ASSERT_EQ(static_cast<int>(seen.size()), niter);
    EXPECT_GT(seen[0].rmsd, 0.0);
    for (int iscf = 2; iscf <= std::min(niter, 8); ++iscf) {
      EXPECT_EQ(seen[iscf - 1].rmsd, 0.0) << iscf;
      EXPECT_EQ(seen[iscf - 1].energy, seen[0].energy) << iscf;
    }
    for (int iscf = 9; iscf <= niter; ++iscf) EXPECT_GT(seen[iscf - 1].rmsd, 0.0) << iscf;
    EXPECT_EQ(seen.back().energy, r.energy);
  }
}

TEST(Cycle, ConvergenceTestIsStrictOnBothParts) {
  Fixture probe(testing::water(), "STO-3G");
  probe.start();
  const ScfResult two = run_scf(probe.system(), quiet(2, 0.0), probe.arrays());
  const double de2 = two.de_final;
  const double rmsd2 = two.rmsd;
  ASSERT_GT(de2, 0.0);

  auto cycles_with = [&](double thr_ene, double thr_rms) {
    Fixture f(testing::water(), "STO-3G");
    f.start();
    CycleSettings c = quiet(5);
    c.thr_ene = thr_ene;
    c.thr_rms = thr_rms;
    const ScfResult r = run_scf(f.system(), c, f.arrays());
    return std::pair{r.cycles, r.converged};
  };
  const double above_e = std::nextafter(de2, 1e300);
  const double above_r = std::nextafter(rmsd2, 1e300);
  EXPECT_EQ(cycles_with(above_e, above_r), std::pair(2, true));
  EXPECT_EQ(cycles_with(de2, above_r).first, 3);  // energy change exactly at the threshold
  EXPECT_EQ(cycles_with(above_e, rmsd2).first, 3);
  EXPECT_EQ(cycles_with(above_e, 0.0), std::pair(5, false));  // both must hold
}

TEST(Cycle, UnconvergedRunReturnsItsLastValues) {
  Fixture f(testing::hydroxyl(), "6-31G");
  f.start();
  const ScfResult r = run_scf(f.system(), quiet(3, 1e-30), f.arrays());
  EXPECT_FALSE(r.converged);
  EXPECT_EQ(r.cycles, 3);
  EXPECT_TRUE(std::isfinite(r.energy));
  EXPECT_GT(r.de_final, 0.0);
  const Operators& op = f.system().operators;
  EXPECT_EQ(r.energy, electronic_energy(op.t, op.v, f.g, f.rho));
}

TEST(Cycle, DampingOneAndZero) {
  // Damping 0 after the undamped first cycle keeps that density: the energy
  // does not move and the run converges at cycle 2 with rmsd 0.
  Fixture f(testing::water(), "STO-3G");
  f.start();
  CycleSettings c = quiet(10, 1e-12);
  c.damp = 0.0;
  const ScfResult r = run_scf(f.system(), c, f.arrays());
  EXPECT_TRUE(r.converged);
  EXPECT_EQ(r.cycles, 2);
  EXPECT_EQ(r.rmsd, 0.0);
  // Damping 1 is plain Roothaan iteration and still converges water.
  Fixture g(testing::water(), "STO-3G");
  g.start();
  c.damp = 1.0;
  c.niter = 60;
  c.thr_ene = c.thr_rms = 1e-9;
  EXPECT_TRUE(run_scf(g.system(), c, g.arrays()).converged);
}

TEST(Cycle, StoredAndDirectGiveTheSameResult) {
  Fixture stored(testing::hydroxyl(), "6-31G"), direct(testing::hydroxyl(), "6-31G", 0.0);
  ASSERT_TRUE(stored.prepared.in_core);
  ASSERT_FALSE(direct.prepared.in_core);
  stored.start(FockBuild::stored);
  direct.start(FockBuild::direct);
  CycleSettings c = quiet(60, 1e-10);
  const ScfResult rs = run_scf(stored.system(), c, stored.arrays());
  const ScfResult rd = run_scf(direct.system(), c, direct.arrays());
  EXPECT_TRUE(rs.converged);
  EXPECT_TRUE(rd.converged);
  EXPECT_NEAR(rs.energy, rd.energy, 1e-8);
  for (int k = 0; k < 3; ++k) EXPECT_NEAR(rs.dipole[k], rd.dipole[k], 1e-7);
}

TEST(Cycle, DroppedCombinationsLeaveTheEnergyAlone) {
  // A basis with one shell twice over is exactly dependent: the orthogonalised
  // path (northo < nbasis) must give the energy of the basis without the copy.
  const auto c = testing::h2();
  basis::BasisSet twice = basis::make_basis("6-31G", c.z);
  twice.shells.push_back(twice.shells[1]);  // the outer s shell of atom 1 again
  JobControl job;
  job.orthogonality = 1e-8;
  PreparedSystem dup = prepare_system(twice, c.pos, c.z, job);
  Fixture plain(c, "6-31G");
  ASSERT_EQ(dup.n, plain.n + 1);
  ASSERT_EQ(dup.northo, plain.n);

  const std::size_t nn = static_cast<std::size_t>(dup.n) * dup.n;
  std::vector<double> g(2 * nn), rho(2 * nn), orb(2 * (nn + dup.n));
  StartSettings s;
  s.counts = c.counts;
  initialise(dup.system(), s, {g, rho, orb});
  const ScfResult rd = run_scf(dup.system(), quiet(40, 1e-10), {g, rho, orb});
  plain.start();
  const ScfResult rp = run_scf(plain.system(), quiet(40, 1e-10), plain.arrays());
  EXPECT_NEAR(rd.energy, rp.energy, 1e-8);
  // The occupied level agrees too; the dropped orbital's level is zero.
  EXPECT_NEAR(orb[nn], plain.orbitals[static_cast<std::size_t>(plain.n) * plain.n], 1e-8);
  EXPECT_EQ(orb[nn + dup.n - 1], 0.0);
}

TEST(Cycle, PartVariantWritesNoDipole) {
  Fixture f(testing::water(), "STO-3G");
  f.start();
  CycleSettings c = quiet(30);
  c.with_dipole = false;
  const ScfResult r = run_scf(f.system(), c, f.arrays());
  EXPECT_EQ(r.dipole, (Vec3{0, 0, 0}));
  EXPECT_TRUE(r.converged);
}

TEST(RunLog, HeliumHydrideSto3gLineForLine) {
  Fixture f(testing::heh_plus(), "STO-3G");
  f.start();
  const std::string log = temp_path("hehp.log");
  std::filesystem::remove(log);
  CycleSettings c = quiet(30, 1e-7);
  c.e_offset = nuclear_repulsion(f.molecule.z, f.molecule.pos);
  c.dip_offset = nuclear_dipole(f.molecule.z, f.molecule.pos);
  const ScfResult r = run_scf(f.system(), c, f.arrays(), AufbauRule(), abi::run_log(log, 1, 2));
  EXPECT_TRUE(r.converged);
  const std::string expected = read_file(std::string(NORVIK_TEST_DATA) + "/hehp_sto3g.log");
  EXPECT_EQ(read_file(log), expected);
}

TEST(Initialiser, StartsCarryTheElectronCounts) {
  Fixture f(testing::hydroxyl(), "STO-3G");
  const linalg::ConstMatrixView s(f.prepared.s.data(), f.n, f.n, f.n);
  const std::size_t nn = static_cast<std::size_t>(f.n) * f.n;
  auto traces = [&] {
    return std::pair{electron_trace({f.rho.data(), f.n, f.n, f.n}, s),
                     electron_trace({f.rho.data() + nn, f.n, f.n, f.n}, s)};
  };
  // The bare start.
  f.start();
  auto [na, nb] = traces();
  EXPECT_NEAR(na, 5.0, 1e-10);
  EXPECT_NEAR(nb, 4.0, 1e-10);
  // A supplied density is rescaled.
  for (double& x : f.rho) x *= 1.3;
  StartSettings supplied;
  supplied.policy = StartPolicy::supplied;
  supplied.counts = {5, 4};
  initialise(f.system(), supplied, f.arrays());
  std::tie(na, nb) = traces();
  EXPECT_NEAR(na, 5.0, 1e-12);
  EXPECT_NEAR(nb, 4.0, 1e-12);
  // The free-atom densities are shared out.
  std::vector<double> atomic(2 * nn, 0.0);
  for (int i = 0; i < f.n; ++i) atomic[i + i * f.n] = 1.0;
  StartSettings atoms;
  atoms.policy = StartPolicy::free_atoms;
  atoms.atomic = atomic;
  atoms.counts = {5, 4};
  initialise(f.system(), atoms, f.arrays());
  std::tie(na, nb) = traces();
  EXPECT_NEAR(na, 5.0, 1e-12);
  EXPECT_NEAR(nb, 4.0, 1e-12);
  for (std::size_t e = 0; e < nn; ++e) EXPECT_NEAR(f.rho[e] * 4.0, f.rho[nn + e] * 5.0, 1e-14);
}

TEST(Initialiser, DirectStartEqualsStoredStart) {
  Fixture a(testing::water(), "STO-3G"), b(testing::water(), "STO-3G", 0.0);
  a.start(FockBuild::stored);
  b.start(FockBuild::direct);
  EXPECT_EQ(a.rho, b.rho);
  for (std::size_t e = 0; e < a.g.size(); ++e) EXPECT_NEAR(a.g[e], b.g[e], 1e-10);
}

TEST(Initialiser, FreeAtomStaysSphericalWithAtomicOccupations) {
  // Oxygen (triplet, 5 + 3 electrons) in 3-21G: 1s, 2sp, 3sp shells; the
  // functions 3-5 and 7-9 are p.  The free-atom start and the damping phase
  // of the _ATOM driver share the open 2p shell evenly over x, y and z.
  testing::Case o{{8}, {0, 0, 0}, {5, 3}};
  Fixture f(o, "3-21G");
  StartSettings s;
  s.policy = StartPolicy::free_atom;
  s.counts = o.counts;
  initialise(f.system(), s, f.arrays(), AufbauRule(Occupation::atomic));
  CycleSettings c = quiet(8, 0.0);
  const ScfResult r = run_scf(f.system(), c, f.arrays(), AufbauRule(Occupation::atomic));
  EXPECT_EQ(r.cycles, 8);
  const std::size_t nn = static_cast<std::size_t>(f.n) * f.n;
  for (std::size_t spin = 0; spin < 2; ++spin) {
    const double* p = f.rho.data() + spin * nn;
    for (int first : {2, 6}) {
      const double px = p[first + first * f.n];
      for (int k = 1; k < 3; ++k) {
        EXPECT_NEAR(p[first + k + (first + k) * f.n], px, 1e-9) << spin << " " << first + k;
      }
      EXPECT_NEAR(p[first + (first + 1) * f.n], 0.0, 1e-9);
    }
  }
}

}  // namespace
}  // namespace norvik::scf
