// Timing of the two-electron driver: pair screening with the diagonal table, the
// store fill, one stored and one integral-direct Fock build, and the peak memory
// against the store estimate 4·npair²/1e9 GB.  Plain wall-clock timer; run with
// OMP_NUM_THREADS=2 for the reference figures in docs/integrals.md.  The stored
// builds are short, so they are timed as the best of kRepeats calls.
#include <omp.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <random>
#include <string>
#include <vector>

#if defined(__unix__)
#include <sys/resource.h>
#endif

#include "integrals/two/two_electron.h"
#include "test_basis.h"

namespace {

using Clock = std::chrono::steady_clock;
namespace two = norvik::integrals::two;

double seconds_since(Clock::time_point t0) {
  return std::chrono::duration<double>(Clock::now() - t0).count();
}

constexpr int kRepeats = 9;

// The shortest of kRepeats calls of f, in seconds.
template <class F>
double best_of(F&& f) {
  double best = 1e300;
  for (int r = 0; r < kRepeats; ++r) {
    const auto t0 = Clock::now();
    f();
    best = std::min(best, seconds_since(t0));
  }
  return best;
}

double peak_memory_gb() {
#if defined(__unix__)
  rusage u{};
  getrusage(RUSAGE_SELF, &u);
  return static_cast<double>(u.ru_maxrss) * 1024.0 / 1e9;  // ru_maxrss is in KiB
#else
  return -1.0;
#endif
}

void run(const std::string& name, const norvik::testing::Molecule& mol, bool hydrogen_p) {
  const auto basis = norvik::testing::basis_631g(mol, hydrogen_p);
  auto t0 = Clock::now();
  auto ctx = two::prepare(basis, mol.bohr, false);
  const double t_screen = seconds_since(t0);

  t0 = Clock::now();
  const std::clock_t c0 = std::clock();
  ctx.vint.resize(static_cast<std::size_t>(two::packed_size(ctx.npair)));
  two::fill_store(ctx.view(), ctx.vint);
  const double t_store = seconds_since(t0);
  // processor time of all threads: a figure that other load on the machine
  // disturbs less than the wall clock
  const double cpu_store = static_cast<double>(std::clock() - c0) / CLOCKS_PER_SEC;

  const int n = ctx.nbasis;
  std::vector<double> rho(2 * static_cast<std::size_t>(n) * n);
  std::mt19937 rng(1);
  std::uniform_real_distribution<double> u(-0.1, 0.1);
  for (int s = 0; s < 2; ++s)
    for (int i = 0; i < n; ++i)
      for (int j = 0; j <= i; ++j) rho[s * n * n + i + n * j] = rho[s * n * n + j + n * i] = u(rng);
  std::vector<double> fock(rho.size()), prev(rho.size(), 0.0), direct(rho.size(), 0.0);

  const double t_fock = best_of([&] { two::fock_stored(ctx.view(), 1.0, rho, fock); });
  const double t_coulomb = best_of([&] { two::coulomb_stored(ctx.view(), rho, fock); });

  t0 = Clock::now();
  const std::clock_t c1 = std::clock();
  two::fock_direct(ctx.view(), 1.0, rho, prev, direct);
  const double t_direct = seconds_since(t0);
  const double cpu_direct = static_cast<double>(std::clock() - c1) / CLOCKS_PER_SEC;

  const double estimate = 4.0 * static_cast<double>(ctx.npair) * ctx.npair / 1e9;
  std::printf("%-22s atoms %3zu  nbasis %4d  shell pairs %6zu  npair %7d (of %lld)\n", name.c_str(),
              mol.z.size(), n, ctx.shpair.size() / 2, ctx.npair,
              static_cast<long long>(two::packed_size(n)));
  std::printf(
      "  threads %d: screening %.3f s, store fill %.3f s, stored Fock %.4f s, "
      "Coulomb only %.4f s, direct Fock %.3f s\n",
      omp_get_max_threads(), t_screen, t_store, t_fock, t_coulomb, t_direct);
  std::printf("  processor time of all threads: store fill %.3f s, direct Fock %.3f s\n", cpu_store,
              cpu_direct);
  std::printf(
      "  store fill + one stored Fock %.3f s; peak memory %.3f GB, estimate 4*npair^2/1e9 = "
      "%.3f GB\n",
      t_screen + t_store + t_fock, peak_memory_gb(), estimate);
}

}  // namespace

// bench_two_electron [benzene] [octane] [adamantane]: the named molecules, all
// three without arguments.
int main(int argc, char** argv) {
  const std::vector<std::string> names(argv + 1, argv + argc);
  auto wanted = [&](const char* name) {
    return names.empty() || std::find(names.begin(), names.end(), name) != names.end();
  };
  if (wanted("benzene")) run("benzene 6-31G**", norvik::testing::benzene(), true);
  // smallest first: the peak memory is that of the whole process so far
  if (wanted("octane")) run("n-octane 6-31G*", norvik::testing::octane(), false);
  if (wanted("adamantane")) run("adamantane 6-31G*", norvik::testing::adamantane(), false);
  return 0;
}
