// The Kohn–Sham drivers as a host calls them: the Hartree–Fock stage through
// HF_INI and HF_SCF_WOLOG, the molecular grid, KS_INI from the Hartree–Fock
// density (it fills the basis table), then a KS_SCF member on the host's
// arrays; checked against the one point path (SCF_1POINT, KS_1POINT).
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
#include <fstream>
#include <string>
#include <vector>

#include "common/constants.h"
#include "dft/grid/molecular_grid.h"
#include "dft/xc/basis_values.h"
#include "norvik.h"
#include "scf_fixture.h"

namespace norvik::scf {
namespace {

// Both paths stop once |ΔE| < 1e-9 eV and the RMS density change < 1e-9; two
// converged runs of the same SCF from the same start then agree far below the
// thresholds' scale, different Fock builds (stored, integral-direct) and
// basis-table layouts (by point, by batch) differing only in rounding.
constexpr double kThreshold = 1e-9;      // eV and RMS, every SCF here
constexpr double kSameSolution = 1e-8;   // eV, converged energies of one state
constexpr double kRounding = 1e-9;       // eV, one density evaluated twice
constexpr double kGridElectrons = 2e-3;  // electrons, what the standard grid misses
constexpr std::size_t kLogPrefix = 78;   // run-log columns up to the dipole's " ) "

std::string padded(const std::string& s, std::size_t n) {
  std::string r = s;
  r.resize(n, ' ');
  return r;
}

int line_count(const std::string& path) {
  std::ifstream in(path);
  std::string line;
  int n = 0;
  while (std::getline(in, line)) ++n;
  return n;
}

std::string last_line(const std::string& path) {
  std::ifstream in(path);
  std::string line, last;
  while (std::getline(in, line)) last = line;
  return last;
}

std::string temp_file(const std::string& name) {
  const std::string path = ::testing::TempDir() + name;
  std::remove(path.c_str());
  return path;
}

using KsScf = void (*)(NORVIK_KS_SCF_ARGS);

// One molecule's host arrays: the integrals, the grid (the host's own points
// and weights; the basis table comes from KS_INI) and the outputs of the last
// call.  Integral-direct when `direct` (no memory for the store).
struct Host {
  Host(const testing::Case& c, const std::string& basis, bool direct = false)
      : f(c, basis, direct ? 0.0 : 4.0),
        direct(direct),
        natom(static_cast<norvik_int>(c.z.size())),
        n(f.n),
        northo(f.prepared.northo),
        nshell(f.prepared.context.nshell),
        nshpair(static_cast<norvik_int>(f.prepared.context.shpair.size() / 2)),
        npair(f.prepared.context.npair),
        vint(f.prepared.context.vint) {
    grid = dft::make_grid(c.z, c.pos, constants::kBohrAngstrom);
    npts = grid.size();
    chi.resize(dft::basis_table_size(npts, n));
    rhogrid.resize(8 * static_cast<std::size_t>(npts));
    vxc.resize(f.g.size());
  }

#define HOST_MATRICES                                                                              \
  &n, &northo, f.prepared.x.data(), f.prepared.s.data(), f.prepared.t.data(), f.prepared.v.data(), \
      f.prepared.dip.data(), &nshell, f.prepared.context.shelltab.data(), &nshpair,                \
      f.prepared.context.shpair.data(), &npair, f.prepared.context.pairlist.data(),                \
      f.prepared.context.pairmap.data(), f.prepared.context.vdiag.data(), vint.data(), &thresh
#define HOST_GRID                                                                          \
  name.data(), &npts, grid.points.data(), grid.weights.data(), chi.data(), rhogrid.data(), \
      vxc.data(), nelec.data(), f.g.data(), f.rho.data(), f.orbitals.data()

  // MAKEINIRHO: a density that carries the electron counts, for a fresh start.
  void carry_counts() {
    norvik_int zsum = 0;
    for (const int z : f.molecule.z) zsum += z;
    const norvik_int charge = zsum - f.molecule.counts.total(),
                     multiplicity = f.molecule.counts.alpha - f.molecule.counts.beta + 1;
    MAKEINIRHO(&zsum, &charge, &multiplicity, &n, f.rho.data());
  }

  // HF_INI's bare start and HF_SCF_WOLOG: the density a Kohn–Sham job starts from.
  void hartree_fock() {
    carry_counts();
    const norvik_int istart = 1;
    (direct ? HF_INI_DIRECT : HF_INI)(&istart, &natom, atomrho.data(), &niter, &damp, &thr, &thr,
                                      &e_offset, dip_offset.data(), HOST_MATRICES, f.g.data(),
                                      f.rho.data(), f.orbitals.data(), &energy, dipole.data());
    const std::string log = padded("", 120);
    (direct ? HF_SCF_WOLOG_DIRECT : HF_SCF_WOLOG)(&iopt, &isrc, log.data(), &niter, &damp, &thr,
                                                  &thr, &e_offset, dip_offset.data(), HOST_MATRICES,
                                                  f.g.data(), f.rho.data(), f.orbitals.data(),
                                                  &energy, dipole.data(), &de_final);
  }

  // KS_INI: istart 1 the bare (or free-atom) start, any other the density as it
  // stands, rescaled to its electron counts.
  void ks_ini(const std::string& functional, norvik_int istart = 2) {
    name = padded(functional, 10);
    (direct ? KS_INI_DIRECT : KS_INI)(&istart, &natom, atomrho.data(), &niter, &damp, &thr, &thr,
                                      &e_offset, dip_offset.data(), HOST_MATRICES, HOST_GRID,
                                      &energy, exc.data(), &etotal, dipole.data());
  }

  // A KS_SCF member from the arrays as they stand.
  void ks_scf(KsScf member, norvik_int iterations, const std::string& logfile = "") {
    niter = iterations;
    const std::string log = padded(logfile, 120);
    member(&iopt, &isrc, log.data(), &niter, &damp, &thr, &thr, &e_offset, dip_offset.data(),
           HOST_MATRICES, HOST_GRID, &energy, exc.data(), &etotal, dipole.data(), &de_final);
  }

  // KS_SCF_C2 with MAKESALC's combinations of this (homonuclear, centred) molecule.
  void ks_scf_c2(const std::string& basis, norvik_int iterations) {
    std::vector<double> salc(static_cast<std::size_t>(n) * n);
    std::array<norvik_int, 9> block{};
    const std::string b = padded(basis, 20);
    MAKESALC(b.data(), &natom, f.molecule.z.data(), f.molecule.pos.data(), &n, salc.data(),
             block.data());
    niter = iterations;
    const std::string log = padded("", 120);
    KS_SCF_C2(&iopt, &isrc, log.data(), &niter, &damp, &thr, &thr, &e_offset, dip_offset.data(),
              HOST_MATRICES, HOST_GRID, &energy, exc.data(), &etotal, dipole.data(), &de_final,
              salc.data(), block.data());
  }

  // Σ_σ Tr(P_σ (T + V)) + ½ Σ_σ Tr(P_σ (G − Vxc)_σ) from the host's arrays:
  // the energy without Exc that G and vxc stand for.
  double energy_of_arrays() const {
    const std::size_t nn = f.g.size() / 2;
    double e = 0.0;
    for (std::size_t s = 0; s < 2; ++s) {
      for (std::size_t k = 0; k < nn; ++k) {
        const double p = f.rho[s * nn + k];
        e +=
            p * (f.prepared.t[k] + f.prepared.v[k]) + 0.5 * p * (f.g[s * nn + k] - vxc[s * nn + k]);
      }
    }
    return e;
  }

  // The electrons of one spin in the returned density table.
  double table_electrons(int spin) const {
    double sum = 0.0;
    for (int p = 0; p < npts; ++p) sum += grid.weights[p] * rhogrid[8 * p + spin];
    return sum;
  }

  testing::Fixture f;
  bool direct;
  norvik_int natom, n, northo, nshell, nshpair, npair;
  std::vector<double> vint;
  double thresh = 0.0;
  dft::Grid grid;
  norvik_int npts = 0;
  std::vector<double> chi, rhogrid, vxc, atomrho = std::vector<double>(f.g.size());
  std::string name = padded("", 10);
  norvik_int iopt = 3, isrc = 4, niter = 100;
  double damp = 0.5, thr = kThreshold, e_offset = 0.0;
  std::array<double, 3> dip_offset{}, nelec{}, exc{}, dipole{};
  double energy = 0, etotal = 0, de_final = 0;
};

// The point path of SCF_1POINT for the same molecule and settings (bare start,
// grid radius one bohr, standard grid), no report or log kept.
struct PointResult {
  std::array<double, 3> energy{};  // electronic (with Exc), nuclear, molecular
  std::array<double, 4> xc{};      // Exc, its exchange and correlation parts, grid electrons
  std::array<double, 3> dipole{};
};

PointResult scf_1point(const testing::Case& c, const std::string& basis_name,
                       const std::string& functional, int nbasis) {
  const std::string method = padded(functional, 10), basis = padded(basis_name, 20);
  const std::string report = padded(temp_file("ks_point.report"), 120);
  const std::string log = padded(temp_file("ks_point.log"), 120);
  const norvik_int iopt = 0, natom = static_cast<norvik_int>(c.z.size()), start = 0, level = 0;
  const norvik_int nalpha = c.counts.alpha, nbeta = c.counts.beta, nb = nbasis;
  const norvik_int niter[2] = {100, 100};
  const double damp[2] = {0.5, 0.5}, thr[2] = {kThreshold, kThreshold}, ram = 4.0, screen = 0.0,
               orth = 1e-8, radius = constants::kBohrAngstrom;
  const std::size_t nn = static_cast<std::size_t>(nbasis) * nbasis;
  std::vector<double> s(nn), rho(2 * nn), orbitals(2 * (nn + nbasis)), atomrho(2 * nn);
  PointResult r;
  double de = 0, rmsd = 0, comm = 0;
  norvik_int northo = 0, incore = 0, ncycle = 0;
  norvik_bool converged = 0;
  SCF_1POINT(method.data(), basis.data(), report.data(), log.data(), &iopt, &natom, c.z.data(),
             c.z.data(), c.pos.data(), &nalpha, &nbeta, niter, damp, thr, thr, &ram, &screen, &orth,
             &start, atomrho.data(), &nb, s.data(), rho.data(), orbitals.data(), r.energy.data(),
             r.dipole.data(), &de, &northo, &incore, &ncycle, &converged, &rmsd, &comm, &radius,
             r.xc.data(), &level);
  EXPECT_TRUE(converged);
  return r;
}

// KS_1POINT of the same settings: molecular energy, xc(4), dipole.
PointResult ks_1point(const testing::Case& c, const std::string& basis_name,
                      const std::string& functional, int nbasis) {
  const std::string name = padded(functional, 10), basis = padded(basis_name, 20);
  const norvik_int natom = static_cast<norvik_int>(c.z.size()), istart = 1, level = 0;
  const norvik_int nalpha = c.counts.alpha, nbeta = c.counts.beta, nb = nbasis;
  const norvik_int niter[2] = {100, 100};
  const double damp[2] = {0.5, 0.5}, thr[2] = {kThreshold, kThreshold}, ram = 4.0, screen = 0.0,
               orth = 1e-8, radius = constants::kBohrAngstrom;
  const std::size_t nn = static_cast<std::size_t>(nbasis) * nbasis;
  std::vector<double> rho(2 * nn), orbitals(2 * (nn + nbasis)), atomrho(2 * nn);
  PointResult r;
  double de = 0;
  norvik_int northo = 0, incore = 0;
  KS_1POINT(name.data(), basis.data(), &natom, c.z.data(), c.z.data(), c.pos.data(), &nalpha,
            &nbeta, niter, damp, thr, thr, &ram, &screen, &orth, &istart, atomrho.data(), &nb,
            rho.data(), orbitals.data(), &r.energy[2], r.dipole.data(), &de, &northo, &incore,
            &radius, &level, r.xc.data());
  EXPECT_LT(de, kThreshold);
  return r;
}

// Water 6-31G* B3LYP through the exports reaches the one point path's energy,
// stored and integral-direct alike; the outputs hang together (energy + Exc,
// the density table, G − vxc as the J − aK part); a later call continues from
// the arrays the previous one returned, and niter 0 evaluates them.
TEST(KsDriver, WaterB3lypThroughTheExportsReachesThePointPath) {
  const testing::Case water = testing::water();
  const std::string log = temp_file("ks_driver_continue.log");
  Host stored(water, "6-31Gx");
  stored.hartree_fock();
  stored.ks_ini("B3LYP");
  stored.ks_scf(KS_SCF_WOLOG, 100);
  const PointResult point = scf_1point(water, "6-31Gx", "B3LYP", stored.n);

  EXPECT_NEAR(stored.etotal, point.energy[0], kSameSolution);
  EXPECT_NEAR(stored.exc[0], point.xc[0], kSameSolution);
  EXPECT_NEAR(stored.nelec[2], point.xc[3], 1e-9);
  EXPECT_LT(stored.de_final, kThreshold);
  EXPECT_EQ(stored.etotal, stored.energy + stored.exc[0]);
  EXPECT_NEAR(stored.exc[0], stored.exc[1] + stored.exc[2], 1e-9);
  EXPECT_NEAR(stored.energy_of_arrays(), stored.energy, kRounding);
  EXPECT_NEAR(stored.nelec[2], 10.0, kGridElectrons);
  EXPECT_NEAR(stored.nelec[0], stored.nelec[1], 1e-12);
  EXPECT_NEAR(stored.table_electrons(0), stored.nelec[0], 1e-12);
  EXPECT_NEAR(stored.table_electrons(1), stored.nelec[1], 1e-12);

  // KS_1POINT is SCF_1POINT's Kohn–Sham point without the report and the log.
  const PointResult ks = ks_1point(water, "6-31Gx", "B3LYP", stored.n);
  EXPECT_EQ(ks.energy[2], point.energy[2]);
  EXPECT_EQ(ks.xc, point.xc);
  EXPECT_EQ(ks.dipole, point.dipole);

  Host direct(water, "6-31Gx", true);
  direct.hartree_fock();
  direct.ks_ini("B3LYP");
  direct.ks_scf(KS_SCF_WOLOG_DIRECT, 100);
  EXPECT_NEAR(direct.etotal, stored.etotal, kSameSolution);
  EXPECT_NEAR(direct.energy_of_arrays(), direct.energy, kRounding);

  // Continuing from the returned G, vxc and rho (no KS_INI in between): the
  // first cycle's Fock matrix is the converged one, so the test after cycle 2
  // is met; integral-direct, the split of G carries the incremental build.
  for (Host* h : {&stored, &direct}) {
    SCOPED_TRACE(h->direct ? "integral-direct" : "stored");
    const double converged = h->etotal;
    std::remove(log.c_str());
    h->ks_scf(h->direct ? KS_SCF_DIRECT : KS_SCF, 100, log);
    EXPECT_EQ(line_count(log), 2);
    EXPECT_NEAR(h->etotal, converged, kSameSolution);
    EXPECT_NEAR(h->energy_of_arrays(), h->energy, kRounding);

    // niter 0: the energies and dipole of rho as it stands, de_final 0, no log line.
    const std::array<double, 3> mu = h->dipole;
    const double e = h->etotal;
    h->de_final = 1.0;
    h->ks_scf(h->direct ? KS_SCF_DIRECT : KS_SCF, 0, log);
    EXPECT_EQ(line_count(log), 2);
    EXPECT_NEAR(h->etotal, e, kRounding);
    EXPECT_EQ(h->de_final, 0.0);
    EXPECT_EQ(h->dipole, mu);
  }
}

// Open shell: OH (5 α, 4 β) in 6-31G with BLYP from the Hartree–Fock density
// reaches KS_1POINT's unrestricted point, and the grid sees the two spins
// apart.  (Its π hole may point anywhere about the axis; the grid is not quite
// cylindrical, so only the same start gives the same bits of energy.)
TEST(KsDriver, OpenShellHydroxyl) {
  const testing::Case oh = testing::hydroxyl();
  Host h(oh, "6-31G");
  h.hartree_fock();
  h.ks_ini("BLYP");
  h.ks_scf(KS_SCF_WOLOG, 100);
  const PointResult point = ks_1point(oh, "6-31G", "BLYP", h.n);
  double nuclear = 0.0;
  NUCLEARREP(&h.natom, oh.z.data(), oh.pos.data(), &nuclear);
  EXPECT_LT(h.de_final, kThreshold);
  EXPECT_NEAR(h.etotal + nuclear, point.energy[2], kSameSolution);
  EXPECT_NEAR(h.exc[0], point.xc[0], kSameSolution);
  EXPECT_NEAR(h.nelec[2], point.xc[3], 1e-9);
  EXPECT_NEAR(h.nelec[0], 5.0, kGridElectrons);
  EXPECT_NEAR(h.nelec[1], 4.0, kGridElectrons);
  EXPECT_NEAR(h.table_electrons(1), h.nelec[1], 1e-12);
  EXPECT_NEAR(h.energy_of_arrays(), h.energy, kRounding);
}

// The members and the start: KS_SCF writes one run-log line per cycle in
// WRITE_LOG_KS's format (WRITE_LOG_HF's) with etotal + e_offset and the dipole
// + dip_offset; KS_INI's bare start reaches the Hartree–Fock start's point;
// _WOLOG and _PART make the same cycle and write none, _PART leaves the dipole
// zero; STOREKS puts a point aside and gives it back.
TEST(KsDriver, MembersTheRunLogAndStoreKs) {
  const testing::Case water = testing::water();
  const std::string log = temp_file("ks_driver_members.log");
  Host h(water, "STO-3G");
  h.hartree_fock();
  const std::vector<double> hf_rho = h.f.rho;
  auto from_hartree_fock = [&] {
    h.f.rho = hf_rho;
    h.ks_ini("BLYP");
  };

  from_hartree_fock();
  h.e_offset = 100.0;
  h.dip_offset = {0.1, 0.2, 0.3};
  h.ks_scf(KS_SCF, 3, log);
  EXPECT_EQ(line_count(log), 3);
  const double logged = h.etotal;
  {
    // The driver's line is WRITE_LOG_KS's for the same numbers (the last two
    // columns, rmsd and the commutator, are the cycle's own).
    const std::string probe = temp_file("ks_driver_probe.log");
    const double emol = h.etotal + h.e_offset, rmsd = 0.0, comm2 = 0.0;
    const std::array<double, 3> mu{h.dipole[0] + 0.1, h.dipole[1] + 0.2, h.dipole[2] + 0.3};
    const norvik_int iscf = 3;
    WRITE_LOG_KS(&h.iopt, &h.isrc, &iscf, &emol, mu.data(), &rmsd, &comm2,
                 padded(probe, 120).data());
    EXPECT_EQ(last_line(log).substr(0, kLogPrefix), last_line(probe).substr(0, kLogPrefix));
  }

  // KS_INI's bare one-electron start (istart 1, few atoms) reaches the point
  // that the Hartree–Fock start reaches.
  {
    h.carry_counts();
    h.ks_ini("BLYP", 1);
    h.ks_scf(KS_SCF_WOLOG, 100);
    const double bare = h.etotal;
    from_hartree_fock();
    h.ks_scf(KS_SCF_WOLOG, 100);
    EXPECT_NEAR(bare, h.etotal, kSameSolution);
  }

  from_hartree_fock();
  h.ks_scf(KS_SCF_WOLOG, 3, log);
  EXPECT_EQ(line_count(log), 3);
  EXPECT_NEAR(h.etotal, logged, kRounding);
  const std::array<double, 3> mu = h.dipole;
  EXPECT_GT(std::abs(mu[2]), 0.1);

  // STOREKS puts the point aside; _PART overwrites the host's arrays.
  const std::size_t nn = static_cast<std::size_t>(h.n) * h.n;
  std::vector<double> rho_s(2 * nn), orbitals_s(2 * (nn + h.n));
  std::array<double, 3> exc_s{}, dipole_s{};
  double energy_s = 0.0;
  STOREKS(&h.n, h.f.rho.data(), h.f.orbitals.data(), &h.energy, h.exc.data(), h.dipole.data(),
          rho_s.data(), orbitals_s.data(), &energy_s, exc_s.data(), dipole_s.data());

  from_hartree_fock();
  h.ks_scf(KS_SCF_PART, 3, log);
  EXPECT_EQ(line_count(log), 3);
  EXPECT_NEAR(h.etotal, logged, kRounding);
  EXPECT_EQ(h.dipole, (std::array<double, 3>{0, 0, 0}));

  // Given back, the stored point is the point again: its density's energies
  // (KS_INI from it) and its orbitals.
  std::fill(h.f.orbitals.begin(), h.f.orbitals.end(), 0.0);
  STOREKS(&h.n, rho_s.data(), orbitals_s.data(), &energy_s, exc_s.data(), dipole_s.data(),
          h.f.rho.data(), h.f.orbitals.data(), &h.energy, h.exc.data(), h.dipole.data());
  EXPECT_EQ(h.f.orbitals, orbitals_s);
  EXPECT_EQ(h.dipole, mu);
  h.ks_ini("BLYP");
  EXPECT_NEAR(h.etotal, energy_s + exc_s[0], kRounding);
  EXPECT_NEAR(h.exc[1], exc_s[1], kRounding);
}

// The exact-exchange weight a of a name, seen in the energy without Exc of one
// density (KS_INI, then niter 0): E(a) = E(0) + a·(E_HF − E(0)), so "OP" gives
// the Hartree–Fock energy, "B1OP" and "B3LYP" a fifth of the way, "SVWN5" and
// any other name none.
TEST(KsDriver, ExactExchangeWeightFollowsTheName) {
  const testing::Case water = testing::water();
  Host h(water, "STO-3G");
  h.hartree_fock();
  const double hartree_fock = h.energy;
  const std::vector<double> rho = h.f.rho;
  auto energy_of = [&](const std::string& name) {
    SCOPED_TRACE(name);
    h.f.rho = rho;
    h.ks_ini(name);
    const double start = h.etotal;
    h.de_final = 1.0;
    h.ks_scf(KS_SCF_WOLOG, 0);
    EXPECT_NEAR(h.etotal, start, kRounding);
    EXPECT_EQ(h.de_final, 0.0);
    return h.energy;
  };
  const double none = energy_of("SVWN5"), full = energy_of("OP"), b1op = energy_of("B1OP");
  EXPECT_NEAR(full, hartree_fock, kRounding);
  EXPECT_GT(none - full, 100.0);  // the exchange energy of water, about 240 eV
  EXPECT_NEAR(b1op - none, 0.2 * (full - none), kRounding);
  EXPECT_NEAR(energy_of("B3LYP"), b1op, kRounding);
  EXPECT_NEAR(energy_of("BLYP"), none, kRounding);
}

// KS_SCF_C2: the symmetric block rule with the Kohn–Sham builder.  C2 in
// STO-3G with SVWN5 from the Hartree–Fock density reaches the ¹Σg⁺ point that
// the plain aufbau member reaches from the same start.
TEST(KsDriver, DiatomicSymmetryMember) {
  const testing::Case c2{{6, 6}, {0, 0, -0.62125, 0, 0, 0.62125}, {6, 6}};
  Host h(c2, "STO-3G");
  h.hartree_fock();
  const std::vector<double> hf_rho = h.f.rho;
  h.ks_ini("SVWN5");
  h.ks_scf_c2("STO-3G", 100);
  const double symmetric = h.etotal;
  EXPECT_LT(h.de_final, kThreshold);
  h.f.rho = hf_rho;
  h.ks_ini("SVWN5");
  h.ks_scf(KS_SCF_WOLOG, 100);
  EXPECT_NEAR(symmetric, h.etotal, kSameSolution);
}

// The host's standard output goes to the death test's stderr, where EXPECT_EXIT
// reads the message.
#define STDOUT_TO_STDERR(call) \
  {                            \
    std::fflush(stdout);       \
    dup2(2, 1);                \
    call;                      \
  }

// A name that is no functional passes the weight rule (weight 0, no message)
// and is stopped by the exchange–correlation matrix.
TEST(KsDriverDeathTest, UnknownFunctionalStopsAtTheExchangeCorrelationMatrix) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  Host h(testing::h2(), "STO-3G");
  h.carry_counts();
  EXPECT_EXIT(STDOUT_TO_STDERR(h.ks_ini("NOSUCH", 1)), ::testing::ExitedWithCode(1),
              "Wrong DFname in calcvXchCorr\\.");
}

}  // namespace
}  // namespace norvik::scf
