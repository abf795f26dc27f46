#include "scf/symmetry_update.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <numeric>
#include <stdexcept>

#include "basis/library.h"
#include "common/error.h"
#include "common/fortran_format.h"
#include "linalg/kernels.h"
#include "linalg/roothaan.h"
#include "scf/start_density.h"

namespace norvik::scf {

namespace {

using fortran::list_directed;
using linalg::gemm;
using linalg::Op;

constexpr int kDampedCycles = 8;
// Positions closer than this [Å] count as on the axis / centred.
constexpr double kAxisTolerance = 1e-6;

std::size_t square(int n) {
  return static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
}

[[noreturn]] void not_diatomic() {
  throw Error(list_directed({"Not a homonuclear diatomic centred on the z axis."}));
}

// The D2h block of a combination with x/y parities px, py (+1 even) and
// inversion parity g (+1 gerade).
Irrep block_of(int px, int py, int g) {
  if (g > 0) {
    if (px > 0) return py > 0 ? Irrep::ag : Irrep::b3g;
    return py > 0 ? Irrep::b2g : Irrep::b1g;
  }
  if (px > 0) return py > 0 ? Irrep::b1u : Irrep::b2u;
  return py > 0 ? Irrep::b3u : Irrep::au;
}

int parity(int power) {
  return power % 2 == 0 ? 1 : -1;
}

struct Label {
  int atom;
  int px, py, pl;  // parities of x, y and of the total degree
  const basis::Function* f;
  double alpha0;
};

// The Fock matrix of one spin, symmetric, with the NaN check of the plain update.
void fock_of_spin(const Operators& op, ConstMatrixView g, int spin, MatrixView f) {
  const Index n = op.nbasis;
  for (Index j = 0; j < n; ++j) {
    for (Index i = j; i < n; ++i) {
      const double value =
          0.5 * (op.t(i, j) + op.v(i, j) + g(i, j) + op.t(j, i) + op.v(j, i) + g(j, i));
      if (std::isnan(value)) {
        throw Error(list_directed({"NaN is detected in updaterho_GHQR.", std::int64_t{spin + 1},
                                   static_cast<std::int64_t>(i + j * n + 1)}));
      }
      f(i, j) = value;
      f(j, i) = value;
    }
  }
}

struct Orbital {
  double level;
  int block;
  int index;  // within the block
  bool occupied;
};

// Roothaan equations per block for `fock`, block_counts occupation, new
// density mixed with weight `damp`.  Returns Σ (ρ_new − ρ_old)².
double finish_spin(const Operators& op, const Salc& salc, const StepArrays& a, int spin,
                   ConstMatrixView fock, double damp) {
  const int n = op.nbasis;
  const std::size_t nn = square(n);
  MatrixView rho(a.rho.data() + static_cast<std::size_t>(spin) * nn, n, n, n);
  const int count = electron_count(rho, op.s);
  const std::array<int, kIrreps> counts = block_counts(count);

  std::vector<double> mo(nn, 0.0);  // all orbitals, block by block
  std::vector<Orbital> all;
  std::vector<double> fresh(nn, 0.0);
  ConstMatrixView u(salc.u.data(), n, n, n);
  for (int b = 0; b < kIrreps; ++b) {
    const int f0 = salc.first[static_cast<std::size_t>(b)];
    const int nb = salc.first[static_cast<std::size_t>(b) + 1] - f0;
    const int nocc = counts[static_cast<std::size_t>(b)];
    if (nocc > nb) {
      throw Error(list_directed({"Too many electrons for the symmetry block in updaterho.",
                                 std::int64_t{b + 1}, std::int64_t{nocc}, std::int64_t{nb}}));
    }
    if (nb == 0) continue;
    ConstMatrixView ub = u.columns(f0, nb);
    std::vector<double> tmp(static_cast<std::size_t>(n) * nb), fb(square(nb)), sb(square(nb)),
        cb(square(nb)), levels(static_cast<std::size_t>(nb));
    MatrixView tmpv(tmp.data(), n, nb, n), fbv(fb.data(), nb, nb, nb), sbv(sb.data(), nb, nb, nb),
        cbv(cb.data(), nb, nb, nb);
    gemm(Op::none, Op::none, 1.0, fock, ub, 0.0, tmpv);
    gemm(Op::transpose, Op::none, 1.0, ub, tmpv, 0.0, fbv);
    gemm(Op::none, Op::none, 1.0, op.s, ub, 0.0, tmpv);
    gemm(Op::transpose, Op::none, 1.0, ub, tmpv, 0.0, sbv);
    for (Index j = 0; j < nb; ++j) {
      for (Index i = j + 1; i < nb; ++i) {
        fbv(i, j) = fbv(j, i) = 0.5 * (fbv(i, j) + fbv(j, i));
        sbv(i, j) = sbv(j, i) = 0.5 * (sbv(i, j) + sbv(j, i));
      }
    }
    linalg::solve_roothaan_full(fbv, sbv, spin + 1, levels, cbv);
    MatrixView mob(mo.data() + static_cast<std::size_t>(f0) * n, n, nb, n);
    gemm(Op::none, Op::none, 1.0, ub, cbv, 0.0, mob);
    for (int k = 0; k < nb; ++k)
      all.push_back({levels[static_cast<std::size_t>(k)], b, k, k < nocc});
    if (nocc > 0) {
      MatrixView fv(fresh.data(), n, n, n);
      gemm(Op::none, Op::transpose, 1.0, mob.columns(0, nocc), mob.columns(0, nocc), 1.0, fv);
    }
  }
  // The occupied orbitals first, then the virtual ones, each in ascending
  // order of level (ties by block, then index), so that the first N_σ columns
  // are the occupied orbitals even when a virtual level lies below an occupied one.
  std::stable_sort(all.begin(), all.end(), [](const Orbital& x, const Orbital& y) {
    if (x.occupied != y.occupied) return x.occupied;
    return x.level < y.level;
  });
  double* base = a.orbitals.data() + static_cast<std::size_t>(spin) * (nn + n);
  for (int k = 0; k < n; ++k) {
    const Orbital& o = all[static_cast<std::size_t>(k)];
    const double* src =
        mo.data() +
        static_cast<std::size_t>(salc.first[static_cast<std::size_t>(o.block)] + o.index) * n;
    std::memcpy(base + static_cast<std::size_t>(k) * n, src, sizeof(double) * n);
    base[nn + static_cast<std::size_t>(k)] = o.level;
  }

  double sum = 0.0;
  for (Index j = 0; j < n; ++j) {
    for (Index i = 0; i < n; ++i) {
      const double fr = 0.5 * (fresh[i + j * n] + fresh[j + i * n]);
      const double old = rho(i, j);
      const double now = damp == 1.0 ? fr : damp == 0.0 ? old : (1.0 - damp) * old + damp * fr;
      sum += (now - old) * (now - old);
      rho(i, j) = now;
    }
  }
  return sum;
}

// Fock matrix, error matrix and both pushes for one spin; the squared error norm.
double prepare_spin(const Operators& op, const StepArrays& a, int spin, Workspace& w) {
  const int n = op.nbasis;
  const std::size_t nn = square(n);
  const auto s = static_cast<std::size_t>(spin);
  MatrixView f(a.scratch.data() + s * nn, n, n, n);
  fock_of_spin(op, ConstMatrixView(a.g.data() + s * nn, n, n, n), spin, f);
  std::vector<double> e(nn);
  MatrixView ev(e.data(), n, n, n);
  MatrixView product(w.product.data() + s * nn, n, n, n);
  const double norm2 =
      error_matrix(f, ConstMatrixView(a.rho.data() + s * nn, n, n, n), op.s, ev, product);
  push_history(f, a.fock_history.subspan(s * kHistorySlots * nn, kHistorySlots * nn));
  push_history(ev, a.error_history.subspan(s * kHistorySlots * nn, kHistorySlots * nn));
  return norm2;
}

void check(const Operators& op, const Salc& salc, const StepArrays& a, const Workspace& w) {
  const std::size_t nn = square(op.nbasis);
  if (salc.n != op.nbasis || w.n != op.nbasis || a.g.size() < 2 * nn || a.rho.size() < 2 * nn ||
      a.scratch.size() < 2 * nn || a.fock_history.size() < 2 * kHistorySlots * nn ||
      a.error_history.size() < 2 * kHistorySlots * nn ||
      a.orbitals.size() < 2 * (nn + static_cast<std::size_t>(op.nbasis))) {
    throw std::logic_error("symmetric density update: an array does not fit the basis");
  }
}

int filled_slots(std::span<const double> history, std::size_t nn) {
  int filled = 0;
  for (int slot = 0; slot < kHistorySlots; ++slot) {
    bool any = false;
    for (int spin = 0; spin < 2 && !any; ++spin) {
      const double* h =
          history.data() + (static_cast<std::size_t>(spin) * kHistorySlots + slot) * nn;
      any = std::any_of(h, h + nn, [](double x) { return x != 0.0; });
    }
    if (!any) break;
    ++filled;
  }
  return std::max(filled, 1);
}

}  // namespace

Salc make_salc(const basis::BasisSet& basis, std::span<const double> positions) {
  if (positions.size() != 6) not_diatomic();
  for (int a = 0; a < 2; ++a) {
    if (std::abs(positions[3 * a]) > kAxisTolerance ||
        std::abs(positions[3 * a + 1]) > kAxisTolerance)
      not_diatomic();
  }
  if (std::abs(positions[2] + positions[5]) > kAxisTolerance ||
      std::abs(positions[2] - positions[5]) <= kAxisTolerance) {
    not_diatomic();
  }
  std::array<std::vector<Label>, 2> on;
  std::vector<std::pair<int, int>> where;  // (atom, position in the atom's list) per function
  for (const auto& shell : basis.shells) {
    if (shell.atom < 0 || shell.atom > 1) not_diatomic();
    for (int k = 0; k < shell.kind; ++k) {
      const basis::Function& f = shell.functions[static_cast<std::size_t>(k)];
      const auto& t0 = f.lmn[0];
      Label l{shell.atom, parity(t0[0]),     parity(t0[1]), parity(t0[0] + t0[1] + t0[2]),
              &f,         shell.exponents[0]};
      for (int q = 1; q < f.nterm; ++q) {
        const auto& t = f.lmn[static_cast<std::size_t>(q)];
        if (parity(t[0]) != l.px || parity(t[1]) != l.py || parity(t[0] + t[1] + t[2]) != l.pl)
          throw std::logic_error("make_salc: a function mixes parities");
      }
      where.emplace_back(shell.atom,
                         static_cast<int>(on[static_cast<std::size_t>(shell.atom)].size()));
      on[static_cast<std::size_t>(shell.atom)].push_back(l);
    }
  }
  const std::size_t half = on[0].size();
  if (on[1].size() != half) not_diatomic();
  for (std::size_t k = 0; k < half; ++k) {
    const Label& x = on[0][k];
    const Label& y = on[1][k];
    if (x.px != y.px || x.py != y.py || x.pl != y.pl || x.f->lmn != y.f->lmn ||
        x.alpha0 != y.alpha0)
      not_diatomic();
  }
  // Global index of the k-th function of each atom.
  std::array<std::vector<int>, 2> index{std::vector<int>(half), std::vector<int>(half)};
  for (std::size_t i = 0; i < where.size(); ++i)
    index[static_cast<std::size_t>(where[i].first)][static_cast<std::size_t>(where[i].second)] =
        static_cast<int>(i);

  const int n = static_cast<int>(where.size());
  Salc salc;
  salc.n = n;
  salc.u.assign(square(n), 0.0);
  salc.function_block.assign(static_cast<std::size_t>(n), 0);
  struct Column {
    Irrep block;
    int a, b;
    double sign;
  };
  std::vector<Column> cols;
  for (std::size_t k = 0; k < half; ++k) {
    const Label& x = on[0][k];
    // Inversion takes φ_A to (−1)^L φ_B.
    const double p = x.pl;
    cols.push_back({block_of(x.px, x.py, 1), index[0][k], index[1][k], p});
    cols.push_back({block_of(x.px, x.py, -1), index[0][k], index[1][k], -p});
    salc.function_block[static_cast<std::size_t>(index[0][k])] =
        static_cast<int>(block_of(x.px, x.py, 1));
    salc.function_block[static_cast<std::size_t>(index[1][k])] =
        static_cast<int>(block_of(x.px, x.py, 1));
  }
  std::stable_sort(cols.begin(), cols.end(), [](const Column& x, const Column& y) {
    return static_cast<int>(x.block) < static_cast<int>(y.block);
  });
  const double r = 1.0 / std::sqrt(2.0);
  for (int j = 0; j < n; ++j) {
    const Column& c = cols[static_cast<std::size_t>(j)];
    salc.u[static_cast<std::size_t>(c.a) + static_cast<std::size_t>(j) * n] = r;
    salc.u[static_cast<std::size_t>(c.b) + static_cast<std::size_t>(j) * n] = c.sign * r;
  }
  salc.first.fill(0);
  for (const Column& c : cols) ++salc.first[static_cast<std::size_t>(c.block) + 1];
  for (int b = 0; b < kIrreps; ++b)
    salc.first[static_cast<std::size_t>(b) + 1] += salc.first[static_cast<std::size_t>(b)];
  return salc;
}

int ns_function_index(std::string_view basis, int z, int n) {
  const basis::BasisSet set = basis::make_basis(basis, std::span<const int>(&z, 1));
  int position = 0;
  int s_seen = 0;
  for (const auto& shell : set.shells) {
    for (int k = 0; k < shell.kind; ++k) {
      ++position;
      // The outer part of a split valence shell is a single primitive; every
      // contracted s function opens the next shell 1s, 2s, … .
      if (shell.functions[static_cast<std::size_t>(k)].L == 0 && shell.nprim > 1 && ++s_seen == n) {
        return position;
      }
    }
  }
  return 0;
}

std::array<int, kIrreps> block_counts(int count) {
  std::array<int, kIrreps> c{};
  const int pi = count >= 4 ? std::min(2, (count - 4) / 2) : 0;
  const int sigma = count - 2 * pi;
  c[static_cast<int>(Irrep::ag)] = (sigma + 1) / 2;
  c[static_cast<int>(Irrep::b1u)] = sigma / 2;
  c[static_cast<int>(Irrep::b3u)] = pi;
  c[static_cast<int>(Irrep::b2u)] = pi;
  return c;
}

StepResult symmetric_damped_step(const Operators& op, const Salc& salc, double damp,
                                 const StepArrays& a, Workspace& w) {
  check(op, salc, a, w);
  const int n = op.nbasis;
  const std::size_t nn = square(n);
  StepResult r;
  double change = 0.0;
  for (int spin = 0; spin < 2; ++spin) r.comm2 += prepare_spin(op, a, spin, w);
  for (int spin = 0; spin < 2; ++spin) {
    change += finish_spin(
        op, salc, a, spin,
        ConstMatrixView(a.scratch.data() + static_cast<std::size_t>(spin) * nn, n, n, n), damp);
  }
  r.rmsd = std::sqrt(change / (2.0 * static_cast<double>(nn)));
  return r;
}

StepResult symmetric_diis_step(const Operators& op, const Salc& salc, int nsub, const StepArrays& a,
                               Workspace& w) {
  check(op, salc, a, w);
  const int n = op.nbasis;
  const std::size_t nn = square(n);
  StepResult r;
  for (int spin = 0; spin < 2; ++spin) r.comm2 += prepare_spin(op, a, spin, w);
  int m = std::min(std::clamp(nsub, 1, kHistorySlots), filled_slots(a.fock_history, nn));
  for (;; --m) {
    MatrixView b(w.bmat.data(), m, m, m);
    diis_matrix(n, m, a.error_history, b);
    if (m == 1 ||
        diis_coefficients(b, std::span<double>(w.coef.data(), static_cast<std::size_t>(m)))) {
      if (m == 1) w.coef[0] = 1.0;
      break;
    }
  }
  double change = 0.0;
  for (int spin = 0; spin < 2; ++spin) {
    double* f = w.fock.data() + static_cast<std::size_t>(spin) * nn;
    std::fill_n(f, nn, 0.0);
    for (int i = 0; i < m; ++i) {
      const double c = w.coef[static_cast<std::size_t>(i)];
      const double* h =
          a.fock_history.data() + (static_cast<std::size_t>(spin) * kHistorySlots + i) * nn;
      for (std::size_t e = 0; e < nn; ++e) f[e] += c * h[e];
    }
    change += finish_spin(op, salc, a, spin, ConstMatrixView(f, n, n, n), 1.0);
  }
  r.rmsd = std::sqrt(change / (2.0 * static_cast<double>(nn)));
  return r;
}

Irrep orbital_block(const Salc& salc, std::span<const double> orbital) {
  const int n = salc.n;
  std::array<double, kIrreps> weight{};
  for (int b = 0; b < kIrreps; ++b) {
    for (int j = salc.first[static_cast<std::size_t>(b)];
         j < salc.first[static_cast<std::size_t>(b) + 1]; ++j) {
      double p = 0.0;
      for (int i = 0; i < n; ++i)
        p += salc.u[static_cast<std::size_t>(i) + static_cast<std::size_t>(j) * n] *
             orbital[static_cast<std::size_t>(i)];
      weight[static_cast<std::size_t>(b)] += p * p;
    }
  }
  return static_cast<Irrep>(std::max_element(weight.begin(), weight.end()) - weight.begin());
}

ScfResult run_symmetric_scf(const ScfSystem& system, const Salc& salc,
                            const CycleSettings& settings, const ScfArrays& arrays) {
  const Operators& op = system.operators;
  return run_cycles(system, settings, arrays,
                    [&](bool diis, double damping, const StepArrays& a, Workspace& work) {
                      return diis ? symmetric_diis_step(op, salc, kHistorySlots, a, work)
                                  : symmetric_damped_step(op, salc, damping, a, work);
                    });
}

ScfResult initialise_symmetric(const ScfSystem& system, const Salc& salc,
                               const StartSettings& settings, const ScfArrays& arrays) {
  const Operators& op = system.operators;
  const int n = op.nbasis;
  const std::size_t nn = square(n);
  if (settings.kind == StartKind::standard && settings.mode != 1) {
    normalize_density(op.s, settings.counts, arrays.rho);
  } else {
    // The bare one-electron start: the count carrier only brings the electron
    // counts; damping 1.0 replaces it by the block-occupied orbitals of T + V.
    std::fill_n(arrays.g.begin(), 2 * nn, 0.0);
    count_carrier(op.s, settings.counts, arrays.rho);
    std::vector<double> fock_history(2 * kHistorySlots * nn), error_history(2 * kHistorySlots * nn),
        scratch(2 * nn);
    Workspace work(n);
    symmetric_damped_step(
        op, salc, 1.0,
        {arrays.g, fock_history, error_history, scratch, arrays.rho, arrays.orbitals}, work);
  }
  std::vector<double> previous;
  if (settings.build == FockBuild::direct) {
    previous.assign(2 * nn, 0.0);
    std::fill_n(arrays.g.begin(), 2 * nn, 0.0);
  }
  fock_build(system, settings.build, arrays.rho, previous, arrays.g);
  ScfResult result;
  result.energy = electronic_energy(op.t, op.v, arrays.g, arrays.rho);
  if (system.dipints.size() >= 3 * nn)
    result.dipole = electronic_dipole(n, system.dipints, arrays.rho);
  return result;
}

}  // namespace norvik::scf
