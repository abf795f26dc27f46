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

namespace norvik::scf {

namespace {

using fortran::list_directed;
using linalg::gemm;
using linalg::Op;

// Positions closer than this [Å] count as on the axis / centred.
constexpr double kAxisTolerance = 1e-6;

using linalg::square;

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

struct Orbital {
  double level;
  int block;
  int index;  // within the block
  bool occupied;
};

}  // namespace

void SymmetryBlockRule::check(const Operators& op) const {
  if (salc_.n != op.nbasis) {
    throw std::logic_error("symmetric density update: the combinations do not fit the basis");
  }
}

void SymmetryBlockRule::occupy(const Operators& op, int spin, bool, ConstMatrixView fock, int count,
                               SpinOrbitals orbitals, MatrixView out, Workspace&) const {
  const Salc& salc = salc_;
  const int n = op.nbasis;
  const std::size_t nn = square(n);
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
  for (int k = 0; k < n; ++k) {
    const Orbital& o = all[static_cast<std::size_t>(k)];
    const double* src =
        mo.data() +
        static_cast<std::size_t>(salc.first[static_cast<std::size_t>(o.block)] + o.index) * n;
    std::memcpy(orbitals.c.data() + static_cast<std::size_t>(k) * n, src, sizeof(double) * n);
    orbitals.levels[static_cast<std::size_t>(k)] = o.level;
  }
  // The block densities summed in one matrix, made exactly symmetric.
  for (Index j = 0; j < n; ++j) {
    for (Index i = 0; i < n; ++i) out(i, j) = 0.5 * (fresh[i + j * n] + fresh[j + i * n]);
  }
}

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
  return density_step(op, SymmetryBlockRule(salc), {false, damp, 0}, a, w);
}

StepResult symmetric_diis_step(const Operators& op, const Salc& salc, int nsub, const StepArrays& a,
                               Workspace& w) {
  return density_step(op, SymmetryBlockRule(salc), {true, 1.0, nsub}, a, w);
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

}  // namespace norvik::scf
