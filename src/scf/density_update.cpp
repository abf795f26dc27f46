#include "scf/density_update.h"

#include <omp.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <exception>
#include <stdexcept>

#include "common/error.h"
#include "common/fortran_format.h"
#include "linalg/kernels.h"
#include "linalg/roothaan.h"
#include "linalg/symmetric_indefinite.h"

namespace norvik::scf {

namespace {

using fortran::list_directed;
using linalg::gemm;
using linalg::Op;

// Levels closer than this [eV] form one degenerate shell for the atomic occupation.
constexpr double kDegenerateLevels = 1e-3;

using linalg::square;

MatrixView block(std::span<double> a, int n, std::size_t k) {
  return {a.data() + k * square(n), n, n, n};
}
ConstMatrixView block(std::span<const double> a, int n, std::size_t k) {
  return {a.data() + k * square(n), n, n, n};
}

// History slot `slot` (0 = newest) of spin `spin` in an (n, n, 6, 2) block.
std::size_t slot_index(int spin, int slot) {
  return static_cast<std::size_t>(spin) * kHistorySlots + static_cast<std::size_t>(slot);
}

void check_arrays(const Operators& op, const StepArrays& a) {
  const std::size_t nn = square(op.nbasis);
  const std::size_t n = static_cast<std::size_t>(op.nbasis);
  if (a.g.size() < 2 * nn || a.scratch.size() < 2 * nn || a.rho.size() < 2 * nn ||
      a.fock_history.size() < 2 * kHistorySlots * nn ||
      a.error_history.size() < 2 * kHistorySlots * nn || a.orbitals.size() < 2 * (nn + n)) {
    throw std::logic_error("density update: an array is smaller than the basis needs");
  }
}

// Whether the two spin blocks of a pair are bit for bit the same.
bool same_spins(std::span<const double> pair, std::size_t nn) {
  return std::memcmp(pair.data(), pair.data() + nn, nn * sizeof(double)) == 0;
}

// Shifts slots 1 … 5 of one spin's history to 2 … 6 (slot 1 is then free).
void shift_history(std::span<double> history, int n, int spin) {
  const std::size_t nn = square(n);
  double* base = history.data() + slot_index(spin, 0) * nn;
  std::memmove(base + nn, base, (kHistorySlots - 1) * nn * sizeof(double));
}

// The first half of a step for one spin: the Fock matrix (symmetric), the
// error matrix and both pushes.  Returns the squared error norm.
double prepare_spin(const Operators& op, const StepArrays& a, int spin, Workspace& w) {
  const int n = op.nbasis;
  const std::size_t nn = square(n);
  MatrixView f = block(a.scratch, n, static_cast<std::size_t>(spin));
  ConstMatrixView g = block(a.g, n, static_cast<std::size_t>(spin));
  for (Index j = 0; j < n; ++j) {
    for (Index i = j; i < n; ++i) {
      const double lower = op.t(i, j) + op.v(i, j) + g(i, j);
      const double upper = op.t(j, i) + op.v(j, i) + g(j, i);
      const double value = 0.5 * (lower + upper);
      if (std::isnan(value)) {
        throw Error(list_directed({"NaN is detected in updaterho_GHQR.", std::int64_t{spin + 1},
                                   static_cast<std::int64_t>(i + j * n + 1)}));
      }
      f(i, j) = value;
      f(j, i) = value;
    }
  }
  shift_history(a.fock_history, n, spin);
  shift_history(a.error_history, n, spin);
  std::memcpy(a.fock_history.data() + slot_index(spin, 0) * nn, f.data(), nn * sizeof(double));
  MatrixView e(a.error_history.data() + slot_index(spin, 0) * nn, n, n, n);
  MatrixView product = block(std::span<double>(w.product), n, static_cast<std::size_t>(spin));
  return error_matrix(f, block(std::span<const double>(a.rho), n, static_cast<std::size_t>(spin)),
                      op.s, e, product);
}

// The second half for one spin: the rule's orbitals and density for the count
// read from the incoming density, mixed in with weight `damp`.  Returns
// Σ (ρ_new − ρ_old)² over the block.
double finish_spin(const Operators& op, const OrbitalRule& rule, const StepArrays& a, int spin,
                   bool diis, ConstMatrixView fock, double damp, Workspace& w) {
  const int n = op.nbasis;
  const auto s = static_cast<std::size_t>(spin);
  MatrixView rho = block(a.rho, n, s);
  MatrixView fresh = block(std::span<double>(w.fresh), n, s);
  rule.occupy(op, spin, diis, fock, electron_count(rho, op.s), spin_orbitals(a.orbitals, n, spin),
              fresh, w);

  double sum = 0.0;
  for (Index j = 0; j < n; ++j) {
    for (Index i = 0; i < n; ++i) {
      const double old = rho(i, j);
      double now;
      if (damp == 1.0) {
        now = fresh(i, j);
      } else if (damp == 0.0) {
        now = old;
      } else {
        now = (1.0 - damp) * old + damp * fresh(i, j);
      }
      const double d = now - old;
      sum += d * d;
      rho(i, j) = now;
    }
  }
  return sum;
}

// The newest slots of a history that hold a matrix: a slot that was never
// written is zero in both spins.
int filled_slots(std::span<const double> history, std::size_t nn) {
  int filled = 0;
  for (int slot = 0; slot < kHistorySlots; ++slot) {
    bool any = false;
    for (int spin = 0; spin < 2 && !any; ++spin) {
      const double* h = history.data() + slot_index(spin, slot) * nn;
      any = std::any_of(h, h + nn, [](double x) { return x != 0.0; });
    }
    if (!any) break;
    ++filled;
  }
  return std::max(filled, 1);
}

// The DIIS coefficients in w.coef from the newest `nsub` slots that hold a
// matrix; a singular system drops the oldest.  Returns the slots used.
int solve_diis(int n, int nsub, const StepArrays& a, Workspace& w) {
  int m = std::min(std::clamp(nsub, 1, kHistorySlots), filled_slots(a.fock_history, square(n)));
  for (;; --m) {
    MatrixView b(w.bmat.data(), m, m, m);
    diis_matrix(n, m, a.error_history, b);
    if (m == 1 ||
        diis_coefficients(b, std::span<double>(w.coef.data(), static_cast<std::size_t>(m)))) {
      if (m == 1) w.coef[0] = 1.0;
      return m;
    }
  }
}

// Copies the alpha blocks of a step into the beta blocks: the Fock matrix and
// both history slots after the first half, the density and orbitals after the
// second.
void copy_prepared_to_beta(const Operators& op, const StepArrays& a) {
  const int n = op.nbasis;
  const std::size_t nn = square(n);
  std::memcpy(a.scratch.data() + nn, a.scratch.data(), nn * sizeof(double));
  shift_history(a.fock_history, n, 1);
  shift_history(a.error_history, n, 1);
  std::memcpy(a.fock_history.data() + slot_index(1, 0) * nn, a.fock_history.data(),
              nn * sizeof(double));
  std::memcpy(a.error_history.data() + slot_index(1, 0) * nn, a.error_history.data(),
              nn * sizeof(double));
}
void copy_finished_to_beta(const Operators& op, const StepArrays& a) {
  const std::size_t nn = square(op.nbasis);
  const std::size_t per_spin = nn + static_cast<std::size_t>(op.nbasis);
  std::memcpy(a.rho.data() + nn, a.rho.data(), nn * sizeof(double));
  std::memcpy(a.orbitals.data() + per_spin, a.orbitals.data(), per_spin * sizeof(double));
}

// Runs body(spin) for both spins, in parallel when threads allow; an error in
// either is rethrown after both have finished (alpha's first).
template <class Body>
void for_both_spins(Body&& body) {
  std::array<std::exception_ptr, 2> failure;
  const bool parallel = omp_get_max_threads() > 1 && !omp_in_parallel();
#pragma omp parallel for num_threads(2) schedule(static, 1) if (parallel)
  for (int spin = 0; spin < 2; ++spin) {
    try {
      body(spin);
    } catch (...) {
      failure[static_cast<std::size_t>(spin)] = std::current_exception();
    }
  }
  for (const auto& f : failure) {
    if (f) std::rethrow_exception(f);
  }
}

// Runs body(spin) for alpha only when the step is restricted (the caller
// copies), otherwise for both spins.
template <class Body>
void for_spins(bool restricted, Body&& body) {
  if (restricted) {
    body(0);
  } else {
    for_both_spins(body);
  }
}

}  // namespace

SpinOrbitals spin_orbitals(std::span<double> orbitals, int n, int spin) {
  double* base = orbitals.data() + static_cast<std::size_t>(spin) * square(n) +
                 static_cast<std::size_t>(spin) * static_cast<std::size_t>(n);
  return {MatrixView(base, n, n, n),
          std::span<double>(base + square(n), static_cast<std::size_t>(n))};
}

StepResult density_step(const Operators& op, const OrbitalRule& rule, const StepControl& control,
                        const StepArrays& a, Workspace& w) {
  check_arrays(op, a);
  rule.check(op);
  if (w.n != op.nbasis) throw std::logic_error("density update: workspace of another size");
  const int n = op.nbasis;
  const std::size_t nn = square(n);
  const bool restricted = same_spins(a.rho, nn) && same_spins(a.g, nn);
  std::array<double, 2> norm2{};
  std::array<double, 2> change{};

  // The Fock matrix to diagonalise: this step's, or the DIIS extrapolation.
  int nsub = 0;
  auto fock_of = [&](int spin) -> ConstMatrixView {
    if (!control.diis)
      return block(std::span<const double>(a.scratch), n, static_cast<std::size_t>(spin));
    MatrixView f = block(std::span<double>(w.fock), n, static_cast<std::size_t>(spin));
    std::fill_n(f.data(), nn, 0.0);
    for (int i = 0; i < nsub; ++i) {
      const double c = w.coef[static_cast<std::size_t>(i)];
      const double* h = a.fock_history.data() + slot_index(spin, i) * nn;
      for (std::size_t e = 0; e < nn; ++e) f.data()[e] += c * h[e];
    }
    return f;
  };
  auto prepare = [&](int spin) {
    norm2[static_cast<std::size_t>(spin)] = prepare_spin(op, a, spin, w);
  };
  auto finish = [&](int spin) {
    change[static_cast<std::size_t>(spin)] =
        finish_spin(op, rule, a, spin, control.diis, fock_of(spin), control.damp, w);
  };

  if (!control.diis) {
    for_spins(restricted, [&](int spin) {
      prepare(spin);
      finish(spin);
    });
    if (restricted) copy_prepared_to_beta(op, a);
  } else {
    // Both spins' slots are pushed before the coefficients, which read both.
    for_spins(restricted, prepare);
    if (restricted) copy_prepared_to_beta(op, a);
    nsub = solve_diis(n, control.nsub, a, w);
    for_spins(restricted, finish);
  }
  if (restricted) {
    norm2[1] = norm2[0];
    change[1] = change[0];
    copy_finished_to_beta(op, a);
  }
  StepResult r;
  r.comm2 = norm2[0] + norm2[1];
  r.rmsd = std::sqrt((change[0] + change[1]) / (2.0 * static_cast<double>(nn)));
  return r;
}

Workspace::Workspace(int nbasis)
    : n(nbasis),
      product(2 * square(nbasis)),
      fock(2 * square(nbasis)),
      weighted(2 * square(nbasis)),
      fresh(2 * square(nbasis)),
      weights(2 * static_cast<std::size_t>(nbasis)),
      bmat(kHistorySlots * kHistorySlots),
      coef(kHistorySlots) {}

void AufbauRule::check(const Operators& op) const {
  if (op.solver != Solver::full && (op.northo > op.nbasis || op.northo < 1)) {
    throw Error(list_directed({"Invalid orthogonalization.", std::int64_t{op.northo}}));
  }
}

void AufbauRule::occupy(const Operators& op, int spin, bool diis, ConstMatrixView fock, int count,
                        SpinOrbitals orb, MatrixView fresh, Workspace& w) const {
  const int n = op.nbasis;
  const auto s = static_cast<std::size_t>(spin);
  const int norb = op.solver == Solver::full ? n : op.northo;
  if (count > norb) {
    throw Error(list_directed({"Too many electrons for the basis in updaterho.",
                               std::int64_t{count}, std::int64_t{norb}}));
  }
  switch (op.solver) {
    case Solver::dispatch:
      linalg::solve_roothaan(fock, op.s, op.x, op.northo, spin + 1, orb.levels, orb.c);
      break;
    case Solver::full:
      linalg::solve_roothaan_full(fock, op.s, spin + 1, orb.levels, orb.c);
      break;
    case Solver::orthogonal:
      linalg::solve_roothaan_orthogonal(fock, op.x, op.northo, orb.levels, orb.c);
      break;
  }

  std::span<double> weights(w.weights.data() + s * static_cast<std::size_t>(n),
                            static_cast<std::size_t>(n));
  occupation_weights(orb.levels, norb, count, diis ? diis_ : damped_, weights);
  Index nocc = 0;
  while (nocc < norb && weights[static_cast<std::size_t>(nocc)] > 0.0) ++nocc;
  if (nocc == 0) {
    std::fill_n(fresh.data(), square(n), 0.0);
    return;
  }
  MatrixView weighted(w.weighted.data() + s * square(n), n, nocc, n);
  for (Index k = 0; k < nocc; ++k) {
    const double wk = weights[static_cast<std::size_t>(k)];
    for (Index i = 0; i < n; ++i) weighted(i, k) = wk * orb.c(i, k);
  }
  gemm(Op::none, Op::transpose, 1.0, weighted, orb.c.columns(0, nocc), 0.0, fresh);
  for (Index j = 0; j < n; ++j) {
    for (Index i = j + 1; i < n; ++i) fresh(j, i) = fresh(i, j);
  }
}

StepResult damped_step(const Operators& op, double damp, const StepArrays& arrays,
                       Occupation occupation, Workspace& work) {
  return density_step(op, AufbauRule(occupation, occupation), {false, damp, 0}, arrays, work);
}

StepResult diis_step(const Operators& op, int nsub, const StepArrays& arrays, Occupation occupation,
                     Workspace& work) {
  return density_step(op, AufbauRule(occupation, occupation), {true, 1.0, nsub}, arrays, work);
}

double electron_trace(ConstMatrixView rho, ConstMatrixView s) {
  double sum = 0.0;
  for (Index j = 0; j < rho.cols(); ++j) {
    for (Index i = 0; i < rho.rows(); ++i) sum += rho(i, j) * s(i, j);
  }
  return sum;
}

int rounded_count(double trace) {
  if (!(std::abs(trace) >= 0.5)) return 0;  // also a NaN
  return static_cast<int>(std::trunc(trace + 0.5));
}

int electron_count(ConstMatrixView rho, ConstMatrixView s) {
  return std::max(0, rounded_count(electron_trace(rho, s)));
}

double error_matrix(ConstMatrixView f, ConstMatrixView p, ConstMatrixView s, MatrixView e,
                    MatrixView product) {
  gemm(Op::none, Op::none, 1.0, p, s, 0.0, product);  // P·S
  gemm(Op::none, Op::none, 1.0, f, product, 0.0, e);  // F·P·S
  // S·P·F = (F·P·S)ᵀ for symmetric F, P and S.
  const Index n = e.rows();
  double sum = 0.0;
  for (Index j = 0; j < n; ++j) {
    e(j, j) = 0.0;
    for (Index i = j + 1; i < n; ++i) {
      const double d = e(i, j) - e(j, i);
      e(i, j) = d;
      e(j, i) = -d;
      sum += d * d;
    }
  }
  return 2.0 * sum;
}

void push_history(ConstMatrixView m, std::span<double> history) {
  const Index n = m.rows();
  const std::size_t nn = static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
  std::memmove(history.data() + nn, history.data(), (kHistorySlots - 1) * nn * sizeof(double));
  for (Index j = 0; j < n; ++j) {
    for (Index i = 0; i < n; ++i) history[static_cast<std::size_t>(i + j * n)] = m(i, j);
  }
}

void diis_matrix(int nbasis, int nsub, std::span<const double> error_history, MatrixView b) {
  const std::size_t nn = square(nbasis);
  for (int j = 0; j < nsub; ++j) {
    for (int i = 0; i <= j; ++i) {
      double sum = 0.0;
      for (int spin = 0; spin < 2; ++spin) {
        const double* ei = error_history.data() + slot_index(spin, i) * nn;
        const double* ej = error_history.data() + slot_index(spin, j) * nn;
        sum += linalg::dot(ei, ej, static_cast<Index>(nn));
      }
      b(i, j) = sum;
      b(j, i) = sum;
    }
  }
}

bool diis_coefficients(ConstMatrixView b, std::span<double> c) {
  const Index m = b.rows();
  std::fill(c.begin(), c.begin() + m, 0.0);
  double scale = 0.0;
  for (Index i = 0; i < m; ++i) scale = std::max(scale, std::abs(b(i, i)));
  if (!(scale > 0.0) || !std::isfinite(scale)) return false;
  // The bordered system [B −1; −1 0]·(c, λ) = (0, −1), at most 7×7.
  std::array<double, 49> a{};
  std::array<double, 7> rhs{};
  std::array<int, 7> pivots{};
  const Index k = m + 1;
  linalg::MatrixView bordered(a.data(), k, k, k);
  for (Index j = 0; j < m; ++j) {
    for (Index i = 0; i < m; ++i) bordered(i, j) = b(i, j) / scale;
    bordered(m, j) = -1.0;
    bordered(j, m) = -1.0;
  }
  bordered(m, m) = 0.0;
  rhs[static_cast<std::size_t>(m)] = -1.0;
  if (linalg::bunch_kaufman_factor(bordered,
                                   std::span<int>(pivots.data(), static_cast<std::size_t>(k))) !=
      linalg::Status::ok) {
    return false;
  }
  linalg::bunch_kaufman_solve(bordered,
                              std::span<const int>(pivots.data(), static_cast<std::size_t>(k)),
                              std::span<double>(rhs.data(), static_cast<std::size_t>(k)));
  for (Index i = 0; i < m; ++i) {
    if (!std::isfinite(rhs[static_cast<std::size_t>(i)])) {
      std::fill(c.begin(), c.begin() + m, 0.0);
      return false;
    }
    c[static_cast<std::size_t>(i)] = rhs[static_cast<std::size_t>(i)];
  }
  return true;
}

void occupation_weights(std::span<const double> levels, int norb, int count, Occupation occupation,
                        std::span<double> weights) {
  std::fill(weights.begin(), weights.end(), 0.0);
  if (count <= 0) return;
  if (occupation == Occupation::aufbau) {
    for (int k = 0; k < std::min(count, norb); ++k) weights[static_cast<std::size_t>(k)] = 1.0;
    return;
  }
  // Whole shells of (nearly) degenerate levels from the bottom; the open shell
  // shares what is left evenly over its orbitals.
  int left = count;
  int k = 0;
  while (left > 0 && k < norb) {
    int end = k + 1;
    while (end < norb && std::abs(levels[static_cast<std::size_t>(end)] -
                                  levels[static_cast<std::size_t>(k)]) < kDegenerateLevels) {
      ++end;
    }
    const int size = end - k;
    const double share = left >= size ? 1.0 : static_cast<double>(left) / size;
    for (int q = k; q < end; ++q) weights[static_cast<std::size_t>(q)] = share;
    left -= std::min(left, size);
    k = end;
  }
}

}  // namespace norvik::scf
