// The density update: electron counts, damping, histories, DIIS pieces, the
// two Roothaan paths and the failures.
#include "scf/density_update.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "common/error.h"
#include "common/fortran_format.h"
#include "norvik/scf.h"
#include "scf/start_density.h"
#include "scf_fixture.h"

namespace norvik::scf {
namespace {

using testing::Fixture;

// A fresh update on a fixture's one-electron start, with its own histories.
struct Step {
  explicit Step(Fixture& f)
      : nn(static_cast<std::size_t>(f.n) * f.n),
        fock_history(2 * kHistorySlots * nn),
        error_history(2 * kHistorySlots * nn),
        scratch(2 * nn),
        work(f.n) {}

  StepArrays arrays(Fixture& f) {
    return {f.g, fock_history, error_history, scratch, f.rho, f.orbitals};
  }

  std::size_t nn;
  std::vector<double> fock_history, error_history, scratch;
  Workspace work;
};

double trace(const Fixture& f, int spin) {
  const std::size_t nn = static_cast<std::size_t>(f.n) * f.n;
  return electron_trace({f.rho.data() + spin * nn, f.n, f.n, f.n},
                        {f.prepared.s.data(), f.n, f.n, f.n});
}

TEST(ElectronCount, RoundsHalfUpAndSmallToZero) {
  EXPECT_EQ(rounded_count(2.49), 2);
  EXPECT_EQ(rounded_count(2.5), 3);
  EXPECT_EQ(rounded_count(0.49), 0);
  EXPECT_EQ(rounded_count(-0.49), 0);
  EXPECT_EQ(rounded_count(4.9999999), 5);
  EXPECT_EQ(rounded_count(std::numeric_limits<double>::quiet_NaN()), 0);
}

TEST(ElectronCount, TheIncomingDensityDecidesTheOccupation) {
  // Water: a start density whose alpha block holds 2.49 electrons occupies two
  // alpha orbitals, one with 2.5 three.
  for (const auto& [carried, expected] : {std::pair{2.49, 2}, std::pair{2.5, 3}}) {
    Fixture f(testing::water(), "STO-3G");
    count_carrier({f.prepared.s.data(), f.n, f.n, f.n}, {0, 5}, f.rho);
    // All alpha electrons on the first function, nudged until the trace is
    // no less than the value carried (2.5 must not come out as 2.4999…).
    f.rho[0] = carried / f.prepared.s[0];
    while (trace(f, 0) < carried) f.rho[0] = std::nextafter(f.rho[0], 10.0);
    ASSERT_NEAR(trace(f, 0), carried, 1e-14);
    Step s(f);
    damped_step(f.system().operators, 1.0, s.arrays(f), Occupation::aufbau, s.work);
    EXPECT_NEAR(trace(f, 0), expected, 1e-10);
    EXPECT_NEAR(trace(f, 1), 5.0, 1e-10);
  }
}

TEST(DampedStep, FactorOneReplacesFactorZeroKeeps) {
  Fixture f(testing::water(), "STO-3G");
  f.start();
  const std::vector<double> before = f.rho;

  Step keep(f);
  const StepResult kept =
      damped_step(f.system().operators, 0.0, keep.arrays(f), Occupation::aufbau, keep.work);
  EXPECT_EQ(f.rho, before);
  EXPECT_EQ(kept.rmsd, 0.0);
  EXPECT_GT(kept.comm2, 0.0);

  Step whole(f);
  const StepResult replaced =
      damped_step(f.system().operators, 1.0, whole.arrays(f), Occupation::aufbau, whole.work);
  const std::vector<double> fresh = f.rho;
  double sum = 0.0;
  for (std::size_t e = 0; e < before.size(); ++e)
    sum += (fresh[e] - before[e]) * (fresh[e] - before[e]);
  EXPECT_NEAR(replaced.rmsd, std::sqrt(sum / (2.0 * f.n * f.n)), 1e-15);
  EXPECT_GT(replaced.rmsd, 0.0);
  // The new density is the projector on the occupied orbitals: P S P = P.
  const int n = f.n;
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) {
      double psp = 0.0;
      for (int k = 0; k < n; ++k)
        for (int l = 0; l < n; ++l)
          psp += fresh[i + k * n] * f.prepared.s[k + l * n] * fresh[l + j * n];
      EXPECT_NEAR(psp, fresh[i + j * n], 1e-10);
    }
  }

  // A factor between mixes the old density with that projector.
  f.rho = before;
  Step mixed(f);
  damped_step(f.system().operators, 0.3, mixed.arrays(f), Occupation::aufbau, mixed.work);
  for (std::size_t e = 0; e < before.size(); ++e) {
    EXPECT_NEAR(f.rho[e], 0.7 * before[e] + 0.3 * fresh[e], 1e-14);
  }
}

TEST(History, SevenPushesKeepTheSixNewestNewestFirst) {
  const norvik_int n = 2;
  std::vector<double> hist(kHistorySlots * 4, -1.0);
  for (int k = 1; k <= 7; ++k) {
    const std::vector<double> m{double(k), 10.0 * k, 10.0 * k, double(k)};
    HISTORY(&n, m.data(), hist.data());
  }
  for (int slot = 0; slot < kHistorySlots; ++slot) {
    const double k = 7 - slot;
    EXPECT_EQ(hist[4 * slot], k) << slot;
    EXPECT_EQ(hist[4 * slot + 1], 10.0 * k) << slot;
  }
}

TEST(History, EachStepPushesTheFockAndErrorMatricesOfBothSpins) {
  Fixture f(testing::hydroxyl(), "STO-3G");
  f.start();
  Step s(f);
  const std::size_t nn = s.nn;
  const StepResult r1 =
      damped_step(f.system().operators, 0.5, s.arrays(f), Occupation::aufbau, s.work);
  const std::vector<double> first_fock(s.scratch);
  const StepResult r2 =
      damped_step(f.system().operators, 0.5, s.arrays(f), Occupation::aufbau, s.work);
  for (int spin = 0; spin < 2; ++spin) {
    const double* slot1 = s.fock_history.data() + (spin * kHistorySlots + 0) * nn;
    const double* slot2 = s.fock_history.data() + (spin * kHistorySlots + 1) * nn;
    for (std::size_t e = 0; e < nn; ++e) {
      EXPECT_EQ(slot1[e], s.scratch[spin * nn + e]);
      EXPECT_EQ(slot2[e], first_fock[spin * nn + e]);
    }
  }
  // comm2 is the sum of the squared norms of the two newest error matrices.
  double norm = 0.0;
  for (int spin = 0; spin < 2; ++spin) {
    const double* e = s.error_history.data() + spin * kHistorySlots * nn;
    for (std::size_t k = 0; k < nn; ++k) norm += e[k] * e[k];
  }
  EXPECT_NEAR(r2.comm2, norm, 1e-12 * norm);
  EXPECT_NE(r1.comm2, r2.comm2);
}

TEST(ErrorMatrix, IsTheAntisymmetricCommutator) {
  const int n = 3;
  const std::vector<double> f{1, 2, 0, 2, 3, 1, 0, 1, 4};
  const std::vector<double> p{1, 0.5, 0, 0.5, 1, 0.2, 0, 0.2, 0};
  const std::vector<double> s{1, 0.1, 0, 0.1, 1, 0.3, 0, 0.3, 1};
  std::vector<double> e(9), product(9);
  const double norm = error_matrix({f.data(), n, n, n}, {p.data(), n, n, n}, {s.data(), n, n, n},
                                   {e.data(), n, n, n}, {product.data(), n, n, n});
  double sum = 0.0;
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) {
      double fps = 0.0, spf = 0.0;
      for (int k = 0; k < n; ++k)
        for (int l = 0; l < n; ++l) {
          fps += f[i + k * n] * p[k + l * n] * s[l + j * n];
          spf += s[i + k * n] * p[k + l * n] * f[l + j * n];
        }
      EXPECT_NEAR(e[i + j * n], fps - spf, 1e-14);
      sum += (fps - spf) * (fps - spf);
    }
  }
  EXPECT_NEAR(norm, sum, 1e-13);
}

TEST(Diis, CoefficientsSumToOneAndIgnoreTheScale) {
  for (double scale : {1.0, 1e-30, 1e20}) {
    const std::vector<double> b{1.0 * scale, 0.0, 0.0, 4.0 * scale};
    std::vector<double> c(2);
    ASSERT_TRUE(diis_coefficients({b.data(), 2, 2, 2}, c));
    EXPECT_NEAR(c[0], 0.8, 1e-14);
    EXPECT_NEAR(c[1], 0.2, 1e-14);
  }
  // Two equal error vectors: singular, reported through the status of DIISSOLVE.
  const std::vector<double> b{1, 1, 1, 1};
  std::vector<double> c(2, 7.0);
  const norvik_int m = 2;
  norvik_int ill = 0;
  DIISSOLVE(&m, b.data(), c.data(), &ill);
  EXPECT_NE(ill, 0);
  EXPECT_EQ(c[0], 0.0);
  EXPECT_EQ(c[1], 0.0);
}

TEST(Diis, MatrixSumsBothSpinsOverTheNewestSlots) {
  const norvik_int n = 1, nsub = 2;
  // (1, 1, 6, 2): alpha slots 1 … 6 then beta slots 1 … 6.
  std::vector<double> errors{1, 2, 9, 9, 9, 9, 3, 4, 9, 9, 9, 9};
  std::vector<double> b(4);
  MAKEBMAT(&n, &nsub, errors.data(), b.data());
  EXPECT_EQ(b[0], 1 * 1 + 3 * 3);
  EXPECT_EQ(b[1], 1 * 2 + 3 * 4);
  EXPECT_EQ(b[2], b[1]);
  EXPECT_EQ(b[3], 2 * 2 + 4 * 4);
}

TEST(Diis, EmptySlotsAreLeftOut) {
  // After one step every slot but the newest is empty: the step is a plain
  // Roothaan step on the newest Fock matrix.
  Fixture a(testing::water(), "STO-3G"), b(testing::water(), "STO-3G");
  a.start();
  b.start();
  Step sa(a), sb(b);
  diis_step(a.system().operators, kHistorySlots, sa.arrays(a), Occupation::aufbau, sa.work);
  damped_step(b.system().operators, 1.0, sb.arrays(b), Occupation::aufbau, sb.work);
  for (std::size_t e = 0; e < a.rho.size(); ++e) EXPECT_NEAR(a.rho[e], b.rho[e], 1e-13);
}

TEST(Roothaan, OrthogonalisedPathGivesTheSameOccupiedLevels) {
  Fixture full(testing::water(), "6-31G"), orth(testing::water(), "6-31G");
  full.start();
  orth.start();
  Operators of = full.system().operators, oo = orth.system().operators;
  of.solver = Solver::full;
  oo.solver = Solver::orthogonal;
  ASSERT_EQ(oo.northo, full.n);
  Step sf(full), so(orth);
  damped_step(of, 1.0, sf.arrays(full), Occupation::aufbau, sf.work);
  damped_step(oo, 1.0, so.arrays(orth), Occupation::aufbau, so.work);
  const int n = full.n;
  for (int k = 0; k < 5; ++k) {
    EXPECT_NEAR(full.orbitals[n * n + k], orth.orbitals[n * n + k], 1e-9) << k;
  }
  for (std::size_t e = 0; e < full.rho.size(); ++e) EXPECT_NEAR(full.rho[e], orth.rho[e], 1e-10);
}

TEST(Roothaan, TooLargeNorthoIsAnInvalidOrthogonalization) {
  Fixture f(testing::h2(), "STO-3G");
  f.start();
  Operators op = f.system().operators;
  op.northo = f.n + 1;
  Step s(f);
  try {
    damped_step(op, 1.0, s.arrays(f), Occupation::aufbau, s.work);
    FAIL() << "no error";
  } catch (const Error& e) {
    ASSERT_EQ(e.lines().size(), 1u);
    EXPECT_EQ(e.lines()[0],
              fortran::list_directed({"Invalid orthogonalization.", std::int64_t{f.n + 1}}));
  }
}

TEST(Roothaan, NanInTheFockMatrixStops) {
  Fixture f(testing::h2(), "STO-3G");
  f.start();
  f.g[f.n * f.n + 1] = std::numeric_limits<double>::quiet_NaN();  // beta, element (2, 1)
  Step s(f);
  try {
    damped_step(f.system().operators, 1.0, s.arrays(f), Occupation::aufbau, s.work);
    FAIL() << "no error";
  } catch (const Error& e) {
    EXPECT_EQ(e.lines()[0], fortran::list_directed({"NaN is detected in updaterho_GHQR.",
                                                    std::int64_t{2}, std::int64_t{2}}));
  }
}

TEST(Occupation, AtomicSharesTheOpenShellEvenly) {
  const std::vector<double> levels{-20.0, -10.0, -5.0, -5.0 + 1e-9, -5.0, 3.0};
  std::vector<double> w(6);
  occupation_weights(levels, 6, 4, Occupation::atomic, w);
  EXPECT_EQ(w[0], 1.0);
  EXPECT_EQ(w[1], 1.0);
  for (int k = 2; k < 5; ++k) EXPECT_DOUBLE_EQ(w[k], 2.0 / 3.0);
  EXPECT_EQ(w[5], 0.0);
  occupation_weights(levels, 6, 4, Occupation::aufbau, w);
  EXPECT_EQ(w, (std::vector<double>{1, 1, 1, 1, 0, 0}));
}

TEST(Occupation, MoreElectronsThanOrbitalsStop) {
  Fixture f(testing::h2(), "STO-3G");
  count_carrier({f.prepared.s.data(), f.n, f.n, f.n}, {3, 1}, f.rho);
  Step s(f);
  EXPECT_THROW(damped_step(f.system().operators, 1.0, s.arrays(f), Occupation::aufbau, s.work),
               Error);
}

}  // namespace
}  // namespace norvik::scf

namespace norvik::scf {
namespace {

TEST(Diis, SingularSystemFallsBackToFewerSlots) {
  // Damping 0 keeps the density, so two steps push the same Fock and error
  // matrices: the two-slot system is singular and the newest slot is used alone.
  Fixture a(testing::water(), "STO-3G"), b(testing::water(), "STO-3G");
  a.start();
  b.start();
  Step sa(a), sb(b);
  const Operators oa = a.system().operators, ob = b.system().operators;
  damped_step(oa, 0.0, sa.arrays(a), Occupation::aufbau, sa.work);
  damped_step(oa, 0.0, sa.arrays(a), Occupation::aufbau, sa.work);
  diis_step(oa, 2, sa.arrays(a), Occupation::aufbau, sa.work);
  damped_step(ob, 1.0, sb.arrays(b), Occupation::aufbau, sb.work);
  for (std::size_t e = 0; e < a.rho.size(); ++e) EXPECT_NEAR(a.rho[e], b.rho[e], 1e-12);
}

}  // namespace
}  // namespace norvik::scf
