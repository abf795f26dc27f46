// Wall-clock times of the symmetric and generalised eigen-solvers and of the
// three stages of the symmetric one, for random matrices of the orders given on
// the command line (default 100 300 500).  Threads: OMP_NUM_THREADS.
//
// Each time is the best and the median of a number of runs, so that a busy
// machine shows in the spread rather than in the minimum.
#include <omp.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>
#include <vector>

#include "linalg/eigen.h"
#include "linalg/kernels.h"
#include "linalg/tridiagonal.h"
#include "linalg/tridiagonal_eigen.h"

namespace la = norvik::linalg;
using la::Index;
using la::Matrix;

namespace {

Matrix random_symmetric(Index n, unsigned seed) {
  std::mt19937_64 gen(seed);
  std::uniform_real_distribution<double> u(-1.0, 1.0);
  Matrix a(n, n);
  for (Index j = 0; j < n; ++j) {
    for (Index i = 0; i <= j; ++i) a(i, j) = a(j, i) = u(gen);
  }
  return a;
}

struct Timing {
  double best, median;
};

// Runs setup() untimed and body() timed, `runs` times.
Timing time_it(int runs, const std::function<void()>& setup, const std::function<void()>& body) {
  std::vector<double> t;
  for (int r = 0; r < runs; ++r) {
    setup();
    const auto t0 = std::chrono::steady_clock::now();
    body();
    t.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count());
  }
  std::sort(t.begin(), t.end());
  return {t.front(), t[t.size() / 2]};
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<Index> orders;
  for (int i = 1; i < argc; ++i) orders.push_back(std::atol(argv[i]));
  if (orders.empty()) orders = {100, 300, 500};
  std::printf("threads %d\n", omp_get_max_threads());
  std::printf("%6s %22s %22s %10s %10s %10s\n", "order", "symmetric best/median",
              "generalised best/med", "tridiag", "d&c", "back-tr.");
  for (Index n : orders) {
    const int runs = n <= 150 ? 41 : (n <= 400 ? 15 : 9);
    const Matrix a0 = random_symmetric(n, 1);
    Matrix b0 = random_symmetric(n, 2);
    for (Index i = 0; i < n; ++i) b0(i, i) += static_cast<double>(n);  // positive definite
    Matrix a, b, v(n, n);
    std::vector<double> w(static_cast<std::size_t>(n));
    int failures = 0;
    const Timing sym = time_it(
        runs, [&] { a = a0; }, [&] { failures += la::symmetric_eigen(a, w, v) != la::Status::ok; });
    const Timing gen = time_it(
        runs, [&] { a = a0, b = b0; },
        [&] { failures += la::generalized_eigen(a, b, w, v) != la::Status::ok; });
    std::vector<double> e(static_cast<std::size_t>(n)), tau(static_cast<std::size_t>(n));
    const Timing tri = time_it(
        runs, [&] { a = a0; }, [&] { la::tridiagonalize(a, w, e, tau); });
    std::vector<double> d0 = w, e0 = e;
    const Timing dc = time_it(
        runs, [&] { w = d0, e = e0; },
        [&] { failures += la::tridiagonal_divide_conquer(w, e, v, 0.0) != la::Status::ok; });
    Matrix z(n, n);
    const Timing back = time_it(
        runs, [&] { z = v; }, [&] { la::apply_q(a, tau, z); });
    std::printf("%6ld %10.4f s %9.4f s %10.4f s %9.4f s %8.4f s %8.4f s %8.4f s\n",
                static_cast<long>(n), sym.best, sym.median, gen.best, gen.median, tri.best, dc.best,
                back.best);
    if (failures != 0) {
      std::printf("solver failures: %d\n", failures);
      return 1;
    }
  }
  return 0;
}
