// The driver and the Fock builds on water in 6-31G* (s, sp and pure d shells)
// and on a Cartesian-d variant: the store against the quartet blocks, the Fock
// builds against a brute-force contraction of the full integral tensor, stored
// against integral-direct, incremental direct builds, screening, the weight-0
// hand-over, the same bits on any number of threads and the flat exported
// routines.
#include <gtest/gtest.h>
#include <omp.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <span>
#include <vector>

#include "basis/library.h"
#include "common/constants.h"
#include "integrals/two/cartesian.h"
#include "integrals/two/shells.h"
#include "integrals/two/two_electron.h"
#include "norvik/integrals_two.h"
#include "reference_eri.h"
#include "test_basis.h"

namespace norvik::integrals::two {
namespace {

using constants::kHartreeEv;

// Fock elements are tens to hundreds of eV; builds that differ only in the
// order of summation agree to this many eV.
constexpr double kRoundingEv = 1e-9;

struct System {
  basis::BasisSet basis;
  testing::Molecule mol;
  int n = 0;
};

System water(bool cartesian_d) {
  System s;
  s.mol = testing::water();
  s.basis = testing::basis_631g(s.mol, true, cartesian_d);
  s.n = s.basis.nbasis();
  return s;
}

// A random symmetric density pair, alpha and beta different.
std::vector<double> random_density(int n, unsigned seed, double scale = 1.0) {
  std::mt19937 rng(seed);
  std::uniform_real_distribution<double> u(-0.5, 0.5);
  std::vector<double> rho(2 * n * n);
  for (int s = 0; s < 2; ++s)
    for (int i = 0; i < n; ++i)
      for (int j = 0; j <= i; ++j)
        rho[s * n * n + i + n * j] = rho[s * n * n + j + n * i] = scale * u(rng);
  return rho;
}

// The full tensor (ij|kl) from the exported quartet routine.
std::vector<double> full_tensor(const TwoElectronContext& t) {
  const int n = t.nbasis;
  std::vector<double> g(static_cast<std::size_t>(n) * n * n * n);
  std::vector<double> block(kQuartetBlockSize);
  std::vector<int> first(t.nshell + 1, 0), kind(t.nshell);
  for (int s = 0; s < t.nshell; ++s) {
    kind[s] = static_cast<int>(t.shelltab[s * NORVIK_SHELL_RECORD + NORVIK_SHELL_KIND]);
    first[s + 1] = first[s] + kind[s];
  }
  for (int a = 1; a <= t.nshell; ++a)
    for (int b = 1; b <= t.nshell; ++b)
      for (int c = 1; c <= t.nshell; ++c)
        for (int d = 1; d <= t.nshell; ++d) {
          const norvik_int q[4] = {a, b, c, d};
          CALCVINT_SUB(&t.nshell, t.shelltab.data(), q, block.data());
          for (int i = 0; i < kind[a - 1]; ++i)
            for (int j = 0; j < kind[b - 1]; ++j)
              for (int k = 0; k < kind[c - 1]; ++k)
                for (int l = 0; l < kind[d - 1]; ++l)
                  g[((static_cast<std::size_t>(first[a - 1] + i) * n + first[b - 1] + j) * n +
                     first[c - 1] + k) *
                        n +
                    first[d - 1] + l] = block[i + 7 * (j + 7 * (k + 7 * l))];
        }
  return g;
}

// J[Pα+Pβ] − a K[Pσ] in eV straight from the definition.
std::vector<double> brute_fock(int n, const std::vector<double>& g, const std::vector<double>& rho,
                               double a) {
  std::vector<double> f(2 * n * n, 0.0);
  auto G = [&](int i, int j, int k, int l) {
    return g[((static_cast<std::size_t>(i) * n + j) * n + k) * n + l];
  };
  for (int s = 0; s < 2; ++s)
    for (int i = 0; i < n; ++i)
      for (int j = 0; j < n; ++j) {
        double v = 0;
        for (int k = 0; k < n; ++k)
          for (int l = 0; l < n; ++l) {
            const double d = rho[k + n * l] + rho[n * n + k + n * l];
            v += G(i, j, k, l) * d - a * G(i, k, j, l) * rho[s * n * n + k + n * l];
          }
        f[s * n * n + i + n * j] = kHartreeEv * v;
      }
  return f;
}

double max_diff(const std::vector<double>& x, const std::vector<double>& y) {
  double m = 0;
  for (std::size_t e = 0; e < x.size(); ++e) m = std::max(m, std::abs(x[e] - y[e]));
  return m;
}

TEST(TwoFockBuild, StoredAndDirectAgreeWithTheDefinition) {
  for (bool cartesian_d : {false, true}) {
    SCOPED_TRACE(cartesian_d ? "Cartesian-d companion" : "pure d");
    const System s = water(cartesian_d);
    const auto t = prepare(s.basis, s.mol.bohr, true);
    ASSERT_EQ(t.nbasis, cartesian_d ? 25 : 24);
    // Nothing is dropped in a molecule this small, so the store is complete.
    EXPECT_EQ(t.npair, t.nbasis * (t.nbasis + 1) / 2);
    const auto g = full_tensor(t);
    // 8-fold symmetry of the quartet blocks and the diagonal table.
    const int n = t.nbasis;
    std::mt19937 rng(5);
    std::uniform_int_distribution<int> pick(0, n - 1);
    for (int trial = 0; trial < 300; ++trial) {
      const int i = pick(rng), j = pick(rng), k = pick(rng), l = pick(rng);
      auto G = [&](int p, int q, int r, int u) {
        return g[((static_cast<std::size_t>(p) * n + q) * n + r) * n + u];
      };
      const double v = G(i, j, k, l);
      for (double w : {G(j, i, k, l), G(i, j, l, k), G(k, l, i, j), G(l, k, j, i)})
        EXPECT_NEAR(v, w, 1e-13 * std::max(1.0, std::abs(v)));
      EXPECT_NEAR(t.vdiag[std::max(i, j) * (std::max(i, j) + 1) / 2 + std::min(i, j)],
                  G(i, j, i, j), 1e-14);
    }

    const auto rho = random_density(n, 11);
    for (double a : {1.0, 0.2}) {
      const auto ref = brute_fock(n, g, rho, a);
      std::vector<double> stored(2 * n * n), direct(2 * n * n, 0.0), prev(2 * n * n, 0.0);
      fock_stored(t.view(), a, rho, stored);
      EXPECT_LT(max_diff(stored, ref), kRoundingEv) << "a=" << a;
      fock_direct(t.view(), a, rho, prev, direct);  // previous density and Fock zero
      EXPECT_LT(max_diff(direct, ref), kRoundingEv) << "a=" << a;
      EXPECT_EQ(prev, rho);  // the direct build hands back the density it used
    }
  }
}

TEST(TwoFockBuild, ExchangeWeightZeroIsCoulombOnly) {
  const System s = water(false);
  const auto t = prepare(s.basis, s.mol.bohr, true);
  const int n = t.nbasis;
  const auto rho = random_density(n, 3);
  std::vector<double> f0(2 * n * n), j(2 * n * n), fd(2 * n * n, 0.0), prev(2 * n * n, 0.0);
  fock_stored(t.view(), 0.0, rho, f0);
  coulomb_stored(t.view(), rho, j);
  fock_direct(t.view(), 0.0, rho, prev, fd);
  EXPECT_EQ(f0, j);
  for (int e = 0; e < n * n; ++e) {
    EXPECT_EQ(f0[e], f0[n * n + e]);  // both spins the same J
    EXPECT_NEAR(fd[e], f0[e], kRoundingEv);
    EXPECT_EQ(fd[e], fd[n * n + e]);
  }
  // J alone equals the full build with exchange removed: F(a=1) + K = J.
  std::vector<double> f1(2 * n * n), fh(2 * n * n);
  fock_stored(t.view(), 1.0, rho, f1);
  fock_stored(t.view(), 0.5, rho, fh);
  for (int e = 0; e < 2 * n * n; ++e) EXPECT_NEAR(2 * fh[e] - f1[e], j[e], kRoundingEv);
}

TEST(TwoFockBuild, IncrementalDirectAndScreening) {
  const System s = water(false);
  auto t = prepare(s.basis, s.mol.bohr, true);
  const int n = t.nbasis;
  const auto rho1 = random_density(n, 21);
  auto rho2 = rho1;
  const auto step = random_density(n, 22, 1e-3);
  for (std::size_t e = 0; e < rho2.size(); ++e) rho2[e] += step[e];

  std::vector<double> full(2 * n * n);
  fock_stored(t.view(), 1.0, rho2, full);
  // Two incremental cycles without screening reach the full build of rho2.
  std::vector<double> f(2 * n * n, 0.0), prev(2 * n * n, 0.0);
  fock_direct(t.view(), 1.0, rho1, prev, f);
  fock_direct(t.view(), 1.0, rho2, prev, f);
  EXPECT_LT(max_diff(f, full), kRoundingEv);

  // With a threshold the second cycle skips quartets; the error stays of the
  // order of the threshold times the number of skipped contributions.
  t.thresh = 1e-6;
  std::vector<double> fs(2 * n * n, 0.0), prevs(2 * n * n, 0.0);
  fock_direct(t.view(), 1.0, rho1, prevs, fs);
  fock_direct(t.view(), 1.0, rho2, prevs, fs);
  EXPECT_LT(max_diff(fs, full), 1e-3);
  EXPECT_GT(max_diff(fs, full), 0.0);  // something was skipped
  // An unchanged density skips everything.
  const auto before = fs;
  fock_direct(t.view(), 1.0, rho2, prevs, fs);
  EXPECT_EQ(fs, before);

  // SCREENING on one quartet: the water core quartet (O 1s O 1s | O 1s O 1s).
  std::vector<double> delta(2 * n * n, 0.0);
  EXPECT_FALSE(screening(t.view(), {0, 0, 0, 0}, delta));
  delta[0] = 1e-3;  // ΔPα of the O 1s diagonal
  EXPECT_TRUE(screening(t.view(), {0, 0, 0, 0}, delta));
  t.thresh = 1e6;
  EXPECT_FALSE(screening(t.view(), {0, 0, 0, 0}, delta));
}

// Several density pairs in one pass: the sums of one build each (the same
// bits at this size, both exchange weights), and with screening a quartet
// skipped only when every pair allows it, so the small change keeps quartets
// that the large ones need and is no worse than its own build.
TEST(TwoFockBuild, SeveralDensitiesInOnePass) {
  const System s = water(false);
  auto t = prepare(s.basis, s.mol.bohr, true);
  const int n = t.nbasis;
  const std::size_t size = 2 * static_cast<std::size_t>(n) * n;
  const std::vector<std::vector<double>> rho{random_density(n, 31), random_density(n, 32, 1e-4),
                                             random_density(n, 33, 10.0)};
  const std::vector<std::span<const double>> in(rho.begin(), rho.end());
  for (const double a : {0.7, 0.0}) {
    std::vector<std::vector<double>> direct(3, std::vector<double>(size, 1.0)), stored = direct;
    const std::vector<std::span<double>> out_d(direct.begin(), direct.end()),
        out_s(stored.begin(), stored.end());
    fock_direct(t.view(), a, in, out_d);
    fock_stored(t.view(), a, in, out_s);
    for (std::size_t m = 0; m < 3; ++m) {
      std::vector<double> one(size, 0.0), prev(size, 0.0), full(size);
      fock_direct(t.view(), a, rho[m], prev, one);
      fock_stored(t.view(), a, rho[m], full);
      EXPECT_EQ(direct[m], one) << "a = " << a << ", pair " << m;
      EXPECT_EQ(stored[m], full) << "a = " << a << ", pair " << m;
      if (a == 0.0) {  // the Coulomb builds share one read of the store, same sums
        std::vector<double> j(size);
        coulomb_stored(t.view(), rho[m], j);
        EXPECT_EQ(stored[m], j) << "pair " << m;
      }
    }
  }
  t.thresh = 1e-6;
  std::vector<std::vector<double>> screened(3, std::vector<double>(size));
  const std::vector<std::span<double>> out(screened.begin(), screened.end());
  fock_direct(t.view(), 1.0, in, out);
  std::vector<double> one(size, 0.0), prev(size, 0.0), full(size);
  fock_direct(t.view(), 1.0, rho[1], prev, one);
  fock_stored(t.view(), 1.0, rho[1], full);
  EXPECT_GT(max_diff(one, full), 0.0);  // alone, the small change skips quartets
  EXPECT_LT(max_diff(screened[1], full), max_diff(one, full));
}

// The antisymmetric densities of the response's A − B product: no Coulomb
// part, an antisymmetric exchange, from the store and integral-direct, also
// beside symmetric pairs in one pass.
TEST(TwoFockBuild, AntisymmetricDensities) {
  const System s = water(true);
  const auto t = prepare(s.basis, s.mol.bohr, true);
  const int n = t.nbasis;
  const std::size_t size = 2 * static_cast<std::size_t>(n) * n;
  const auto g = full_tensor(t);
  std::vector<double> anti = random_density(n, 41);
  std::mt19937 rng(42);
  std::uniform_real_distribution<double> u(-0.5, 0.5);
  for (int sp = 0; sp < 2; ++sp)
    for (int i = 0; i < n; ++i) {
      anti[sp * n * n + i + n * i] = 0.0;
      for (int j = 0; j < i; ++j) {
        const double v = u(rng);
        anti[sp * n * n + i + n * j] = v;
        anti[sp * n * n + j + n * i] = -v;
      }
    }
  const std::vector<double> sym = random_density(n, 43);
  const std::vector<std::span<const double>> in{sym, anti};
  const std::vector<DensityKind> kinds{DensityKind::symmetric, DensityKind::antisymmetric};
  for (const double a : {1.0, 0.3, 0.0}) {
    const auto ref_sym = brute_fock(n, g, sym, a);
    const auto ref_anti = brute_fock(n, g, anti, a);
    double coulomb = 0.0;  // what the brute force leaves of J[anti]: rounding
    for (std::size_t e = 0; e < size; ++e) {
      const std::size_t i = e % (static_cast<std::size_t>(n) * n) % n,
                        j = e % (static_cast<std::size_t>(n) * n) / n;
      coulomb = std::max(coulomb, std::abs(ref_anti[e] + ref_anti[e - i - n * j + j + n * i]));
    }
    EXPECT_LT(coulomb, kRoundingEv) << "a = " << a;
    std::vector<std::vector<double>> direct(2, std::vector<double>(size, 1.0)), stored = direct;
    const std::vector<std::span<double>> out_d(direct.begin(), direct.end()),
        out_s(stored.begin(), stored.end());
    fock_direct(t.view(), a, in, out_d, kinds);
    fock_stored(t.view(), a, in, out_s, kinds);
    EXPECT_LT(max_diff(direct[0], ref_sym), kRoundingEv) << "a = " << a;
    EXPECT_LT(max_diff(stored[0], ref_sym), kRoundingEv) << "a = " << a;
    EXPECT_LT(max_diff(direct[1], ref_anti), kRoundingEv) << "a = " << a;
    EXPECT_LT(max_diff(stored[1], ref_anti), kRoundingEv) << "a = " << a;
  }
}

// Every build sums in an order fixed by the problem, not by the threads: the
// same bits on one thread, on two, and on counts that divide nothing evenly,
// also when called again.  The molecule has more store rows and shell pairs
// than the builds have blocks, so several rows fall to each block.
TEST(TwoFockBuild, SameBitsOnAnyNumberOfThreads) {
  const System s = water(false);
  auto t = prepare(s.basis, s.mol.bohr, true);
  const int n = t.nbasis;
  ASSERT_GT(t.npair, 64);
  ASSERT_GT(static_cast<int>(t.shpair.size() / 2), 32);
  const auto rho1 = random_density(n, 9);
  auto rho2 = rho1;
  const auto step = random_density(n, 10, 1e-4);
  for (std::size_t e = 0; e < rho2.size(); ++e) rho2[e] += step[e];

  struct Builds {
    std::vector<double> fock, coulomb, direct, screened;
  };
  auto run = [&] {
    Builds r;
    r.fock.resize(2 * n * n);
    r.coulomb.resize(2 * n * n);
    fock_stored(t.view(), 0.7, rho2, r.fock);
    coulomb_stored(t.view(), rho2, r.coulomb);
    // incremental direct builds: a full one, then the change to rho2
    for (double thresh : {0.0, 1e-5}) {
      t.thresh = thresh;
      std::vector<double> f(2 * n * n, 0.0), prev(2 * n * n, 0.0);
      fock_direct(t.view(), 1.0, rho1, prev, f);
      fock_direct(t.view(), 1.0, rho2, prev, f);
      (thresh == 0.0 ? r.direct : r.screened) = f;
    }
    t.thresh = 0.0;
    return r;
  };
  const int saved = omp_get_max_threads();
  omp_set_num_threads(1);
  const Builds one = run();
  for (int threads : {1, 2, 3, 5}) {
    SCOPED_TRACE(threads);
    omp_set_num_threads(threads);
    const Builds other = run();
    EXPECT_EQ(other.fock, one.fock);
    EXPECT_EQ(other.coulomb, one.coulomb);
    EXPECT_EQ(other.direct, one.direct);
    EXPECT_EQ(other.screened, one.screened);
  }
  omp_set_num_threads(saved);
  // the screened build did skip work, so its path was exercised
  EXPECT_NE(one.screened, one.direct);
}

TEST(TwoFockBuild, FlatRoutinesMatchTheCore) {
  const System s = water(false);
  const auto t = prepare(s.basis, s.mol.bohr, true);
  // The host's route: MAKEBASIS-style arrays in, positions in ångström.
  const norvik_int natom = 3, nshell = t.nshell, nbasis = t.nbasis;
  std::vector<double> pos;
  for (const auto& p : s.mol.bohr)
    for (double x : p) pos.push_back(x * constants::kBohrAngstrom);
  std::vector<norvik_int> nsa(3, 0), kind(nshell), lm(2 * 7 * nshell), np(nshell),
      nterm(7 * nshell), lmn(63 * nshell);
  std::vector<double> tc(21 * nshell), ex(6 * nshell), co(42 * nshell);
  for (int sh = 0; sh < nshell; ++sh) {
    const auto& b = s.basis.shells[sh];
    ++nsa[b.atom];
    kind[sh] = b.kind;
    np[sh] = b.nprim;
    for (int p = 0; p < 6; ++p) ex[6 * sh + p] = b.exponents[p];
    for (int f = 0; f < 7; ++f) {
      const auto& fn = b.functions[f];
      lm[2 * (7 * sh + f)] = fn.L;
      lm[2 * (7 * sh + f) + 1] = fn.M;
      nterm[7 * sh + f] = fn.nterm;
      for (int u = 0; u < 3; ++u) {
        for (int k = 0; k < 3; ++k) lmn[k + 3 * (u + 3 * (7 * sh + f))] = fn.lmn[u][k];
        tc[u + 3 * (7 * sh + f)] = fn.term_coef[u];
      }
      for (int p = 0; p < 6; ++p) co[p + 6 * (7 * sh + f)] = fn.coef[p];
    }
  }
  std::vector<double> tab(NORVIK_SHELL_RECORD * nshell);
  PACKSHELLS(&natom, pos.data(), nsa.data(), &nshell, kind.data(), lm.data(), np.data(),
             nterm.data(), lmn.data(), tc.data(), ex.data(), co.data(), tab.data());
  for (std::size_t e = 0; e < tab.size(); ++e) EXPECT_NEAR(tab[e], t.shelltab[e], 1e-12);
  const int n2 = nbasis * (nbasis + 1) / 2;
  std::vector<norvik_int> shp(nshell * (nshell + 1)), pl(2 * n2), pm(n2);
  std::vector<double> vd(n2);
  norvik_int nshpair = 0, npair = 0;
  REMOVE_SH_PAIR(&nshell, tab.data(), &nshpair, shp.data());
  REMOVE_BA_PAIR(&nbasis, &nshell, tab.data(), &nshpair, shp.data(), &npair, pl.data(), pm.data(),
                 vd.data());
  EXPECT_EQ(npair, t.npair);
  std::vector<double> vint(static_cast<std::size_t>(npair) * (npair + 1) / 2);
  const double thresh = 0.0;
  CALCVINT(&nbasis, &nshell, tab.data(), &nshpair, shp.data(), &npair, pl.data(), pm.data(),
           vd.data(), vint.data(), &thresh);
  const auto rho = random_density(nbasis, 4);
  std::vector<double> f(2 * n2 * 2), ref(2 * nbasis * nbasis);
  f.resize(2 * nbasis * nbasis);
  const double a = 1.0;
  CALCVDRCTXCH(&nbasis, &nshell, tab.data(), &nshpair, shp.data(), &npair, pl.data(), pm.data(),
               vd.data(), vint.data(), &thresh, &a, rho.data(), f.data());
  fock_stored(t.view(), 1.0, rho, ref);
  EXPECT_LT(max_diff(f, ref), kRoundingEv);
  // SHIFTVPART rewrites the store from CALCVINT_SUB blocks.
  std::vector<double> vint2(vint.size(), 0.0), block(kQuartetBlockSize);
  for (int p = 0; p < nshpair; ++p)
    for (int q = 0; q <= p; ++q) {
      const norvik_int quartet[4] = {shp[2 * p], shp[2 * p + 1], shp[2 * q], shp[2 * q + 1]};
      CALCVINT_SUB(&nshell, tab.data(), quartet, block.data());
      SHIFTVPART(&nbasis, &nshell, tab.data(), &nshpair, shp.data(), &npair, pl.data(), pm.data(),
                 vd.data(), vint2.data(), &thresh, quartet, block.data());
    }
  EXPECT_LT(max_diff(vint, vint2), 1e-14);
}

}  // namespace
}  // namespace norvik::integrals::two

namespace norvik::integrals::two {
namespace {

// A shell quartet with an f sub-shell goes through the Rys route inside the
// driver; its block must land on the right functions.  The f shell here is
// seven single Cartesian components, so the block can be read off a reference
// evaluation directly.
TEST(TwoFockBuild, QuartetWithAnFShell) {
  testing::Molecule mol = testing::water();
  basis::BasisSet b = testing::basis_631g(mol, false);
  basis::Shell f = testing::make_shell(7, 1, {0.9, 0.3});
  const int comps[7][3] = {{3, 0, 0}, {2, 1, 0}, {1, 1, 1}, {0, 3, 0},
                           {0, 1, 2}, {1, 0, 2}, {0, 0, 3}};
  for (int k = 0; k < 7; ++k)
    f.functions[k] = testing::cartesian_function(3, k, {{comps[k][0], comps[k][1], comps[k][2]}},
                                                 {1.0}, {0.6, 0.5});
  b.shells.push_back(f);
  const auto tab = pack_shells(b, mol.bohr);
  const int nshell = static_cast<int>(b.shells.size());
  const int fs = nshell;  // 1-based index of the f shell
  const int sp = 2;       // oxygen's first sp shell: s, y, z, x
  std::vector<double> block(kQuartetBlockSize);
  shell_quartet_block(nshell, tab, {fs, sp, fs, 1}, block);

  auto ref_shell = [&](int s, int l, int slot) {
    const auto& sh = b.shells[static_cast<std::size_t>(s - 1)];
    testing::RefShell r;
    r.l = l;
    r.centre = mol.bohr[static_cast<std::size_t>(sh.atom)];
    for (int p = 0; p < sh.nprim; ++p) {
      r.exps.push_back(sh.exponents[p]);
      r.coefs.push_back(sh.functions[slot].coef[p] * primitive_normalisation(sh.exponents[p], l));
    }
    return r;
  };
  const auto ref = testing::reference_eri(ref_shell(fs, 3, 0), ref_shell(sp, 1, 1),
                                          ref_shell(fs, 3, 0), ref_shell(1, 0, 0));
  // p functions y, z, x are Cartesian components 1, 2, 0
  const int pcart[3] = {1, 2, 0};
  double big = 0;
  for (double v : ref) big = std::max(big, std::abs(v));
  auto fidx = [&](int k) { return cart_index(comps[k][0], comps[k][1], comps[k][2]); };
  for (int i = 0; i < 7; ++i)
    for (int j = 0; j < 3; ++j)
      for (int k = 0; k < 7; ++k) {
        const double want = ref[static_cast<std::size_t>((fidx(i) * 3 + pcart[j]) * 10 + fidx(k))];
        EXPECT_NEAR(block[i + 7 * ((j + 1) + 7 * k)], want, 1e-12 * big);
      }
}

}  // namespace
}  // namespace norvik::integrals::two

namespace norvik::integrals::two {
namespace {

// Driver blocks over basis functions (sp shells evaluated together, pure d
// combinations, p in the order y z x) against the independent evaluation,
// function by function.
TEST(TwoFockBuild, QuartetBlocksMatchTheReference) {
  const testing::Molecule mol = testing::water();
  const basis::BasisSet b = testing::basis_631g(mol, true);
  const auto tab = pack_shells(b, mol.bohr);
  const int nshell = static_cast<int>(b.shells.size());
  // One reference shell per function: its L and normalised contraction.
  auto ref_shell = [&](int s, int f) {
    const auto& sh = b.shells[static_cast<std::size_t>(s - 1)];
    const auto& fn = sh.functions[f];
    testing::RefShell r;
    r.l = fn.L;
    r.centre = mol.bohr[static_cast<std::size_t>(sh.atom)];
    for (int p = 0; p < sh.nprim; ++p) {
      r.exps.push_back(sh.exponents[p]);
      r.coefs.push_back(fn.coef[p] * primitive_normalisation(sh.exponents[p], fn.L));
    }
    return r;
  };
  // shells: 1 O 1s, 2 O sp, 3 O sp', 4 O d, 5–7 H s s' p, 8–10 the other H
  const std::array<std::array<int, 4>, 6> quartets = {
      {{2, 3, 2, 3}, {3, 2, 7, 5}, {4, 2, 10, 3}, {2, 2, 2, 2}, {4, 4, 3, 7}, {7, 10, 4, 1}}};
  std::vector<double> block(kQuartetBlockSize);
  for (const auto& q : quartets) {
    shell_quartet_block(nshell, tab, q, block);
    int kind[4];
    for (int t = 0; t < 4; ++t) kind[t] = b.shells[static_cast<std::size_t>(q[t] - 1)].kind;
    std::vector<double> want(kQuartetBlockSize, 0.0);
    double big = 0;
    for (int fa = 0; fa < kind[0]; ++fa)
      for (int fb = 0; fb < kind[1]; ++fb)
        for (int fc = 0; fc < kind[2]; ++fc)
          for (int fd = 0; fd < kind[3]; ++fd) {
            const int f[4] = {fa, fb, fc, fd};
            testing::RefShell r[4];
            for (int t = 0; t < 4; ++t) r[t] = ref_shell(q[t], f[t]);
            const auto cart = testing::reference_eri(r[0], r[1], r[2], r[3]);
            const int n[4] = {(r[0].l + 1) * (r[0].l + 2) / 2, (r[1].l + 1) * (r[1].l + 2) / 2,
                              (r[2].l + 1) * (r[2].l + 2) / 2, (r[3].l + 1) * (r[3].l + 2) / 2};
            double v = 0;
            const basis::Function* fn[4];
            for (int t = 0; t < 4; ++t)
              fn[t] = &b.shells[static_cast<std::size_t>(q[t] - 1)].functions[f[t]];
            for (int ta = 0; ta < fn[0]->nterm; ++ta)
              for (int tb = 0; tb < fn[1]->nterm; ++tb)
                for (int tc = 0; tc < fn[2]->nterm; ++tc)
                  for (int td = 0; td < fn[3]->nterm; ++td) {
                    auto idx = [&](int t, int term) {
                      const auto& e = fn[t]->lmn[term];
                      return cart_index(e[0], e[1], e[2]);
                    };
                    v += fn[0]->term_coef[ta] * fn[1]->term_coef[tb] * fn[2]->term_coef[tc] *
                         fn[3]->term_coef[td] *
                         cart[((idx(0, ta) * n[1] + idx(1, tb)) * n[2] + idx(2, tc)) * n[3] +
                              idx(3, td)];
                  }
            want[fa + 7 * (fb + 7 * (fc + 7 * fd))] = v;
            big = std::max(big, std::abs(v));
          }
    for (int e = 0; e < kQuartetBlockSize; ++e)
      EXPECT_NEAR(block[e], want[e], 1e-12 * big) << q[0] << q[1] << q[2] << q[3] << " at " << e;
  }
}

}  // namespace
}  // namespace norvik::integrals::two

namespace norvik::integrals::two {
namespace {

// A transition-metal hydride in 6-31G*: the metal carries sp shells, pure d and
// a pure f shell, so shell pairs with f go through the Rys route one sub-shell
// pair at a time.  The store and both Fock builds must agree with the
// definition there too.
TEST(TwoFockBuild, PureFShellsFromTheBasisLibrary) {
  const std::vector<int> z = {21, 1};
  const basis::BasisSet b = basis::make_basis("6-31Gx", z);
  const std::vector<testing::Vec3> pos = {{0.0, 0.0, 0.0}, {0.3, -0.2, 3.4}};
  const auto t = prepare(b, pos, true);
  ASSERT_EQ(t.nbasis, 36);
  const int n = t.nbasis;
  const auto g = full_tensor(t);
  const auto rho = random_density(n, 31);
  const auto ref = brute_fock(n, g, rho, 1.0);
  std::vector<double> stored(2 * n * n), direct(2 * n * n, 0.0), prev(2 * n * n, 0.0);
  fock_stored(t.view(), 1.0, rho, stored);
  fock_direct(t.view(), 1.0, rho, prev, direct);
  EXPECT_LT(max_diff(stored, ref), kRoundingEv);
  EXPECT_LT(max_diff(direct, ref), kRoundingEv);
}

}  // namespace
}  // namespace norvik::integrals::two

namespace norvik::integrals::two {
namespace {

// Sums over a complete set of real solid harmonics are invariant under rotation:
// with the hydrogen along x, y or z, Σ_i (ii|hh) and Σ_i (ih|ih) over the pure d
// and the pure f functions of scandium must not change, and each (ii|hh) is
// close to 1/R for normalised functions far from the hydrogen.
TEST(TwoFockBuild, PureShellsAreRotationallyComplete) {
  const std::vector<int> z = {21, 1};
  const basis::BasisSet b = basis::make_basis("6-31Gx", z);
  const int nshell = static_cast<int>(b.shells.size());
  const int h = nshell;  // hydrogen's outer s shell
  std::vector<int> pure;
  for (int s = 0; s < nshell; ++s)
    if (b.shells[static_cast<std::size_t>(s)].kind == 5 ||
        b.shells[static_cast<std::size_t>(s)].kind == 7)
      pure.push_back(s + 1);
  ASSERT_EQ(pure.size(), 3u);  // two d shells and the f shell
  std::vector<double> block(kQuartetBlockSize);
  for (int s : pure) {
    const int k = b.shells[static_cast<std::size_t>(s - 1)].kind;
    double coulomb[3], exchange[3];
    for (int axis = 0; axis < 3; ++axis) {
      std::vector<testing::Vec3> pos = {{0.0, 0.0, 0.0}, {0.0, 0.0, 0.0}};
      pos[1][static_cast<std::size_t>(axis)] = 6.0;
      const auto tab = pack_shells(b, pos);
      shell_quartet_block(nshell, tab, {s, s, h, h}, block);
      coulomb[axis] = 0;
      for (int i = 0; i < k; ++i) {
        coulomb[axis] += block[static_cast<std::size_t>(i + 7 * i)];
        EXPECT_NEAR(block[static_cast<std::size_t>(i + 7 * i)], 1.0 / 6.0, 0.03);
      }
      shell_quartet_block(nshell, tab, {s, h, s, h}, block);
      exchange[axis] = 0;
      for (int i = 0; i < k; ++i) exchange[axis] += block[static_cast<std::size_t>(i + 49 * i)];
    }
    for (int axis = 1; axis < 3; ++axis) {
      EXPECT_NEAR(coulomb[axis], coulomb[0], 1e-13 * coulomb[0]) << "kind " << k;
      EXPECT_NEAR(exchange[axis], exchange[0], 1e-12 * exchange[0]) << "kind " << k;
    }
  }
}

}  // namespace
}  // namespace norvik::integrals::two
