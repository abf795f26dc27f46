// MP2 from AO integrals in shell-quartet batches, by quarter transformations.
//
// For a batch of occupied orbitals i of one spin, the first half works ket
// shell pair by ket shell pair: the integrals (μν|λσ) of the ket pair against
// every bra pair fill A(μ, ν, λσ); (iν|λσ) = Σ_μ C_μi A and then
// (ia|λσ) = Σ_ν C_νa (iν|λσ) are two products, written to the half-transformed
// set X(a, i; λσ) of the batch (λ ≥ σ).  The second half works orbital i by
// orbital i: X_i(a, λ, σ) unpacked, (ia|jσ) = Σ_λ X_i C_λj, then for every j
// (ia|jb) = Σ_σ (ia|jσ) C_σb, and the pair energies of i.
//
// When the integral store fits the memory limit it is filled once (each
// distinct quartet computed once) and A is read from it.  Otherwise every ket
// pair computes its integrals with every bra pair, so each distinct quartet is
// evaluated twice in each pass (bra–ket symmetry is not used): the price of
// giving each ket pair's columns of X to exactly one thread.  The sums do not
// depend on the number of threads: each column of X and each orbital i's pair
// energies are made by one thread in a fixed order, and the orbitals' energies
// are added in the order of i.
#include "properties/mp2.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/constants.h"
#include "common/error.h"
#include "common/fortran_format.h"
#include "integrals/two/quartets.h"
#include "integrals/two/unique_quartets.h"
#include "linalg/kernels.h"
#include "linalg/matrix.h"
#include "linalg/memory_estimates.h"

namespace norvik::properties {
namespace {

using linalg::ConstMatrixView;
using linalg::gemm;
using linalg::Index;
using linalg::MatrixView;
using linalg::Op;
namespace two = integrals::two;

std::size_t size(Index v) {
  return static_cast<std::size_t>(v);
}

// The active occupied and the virtual orbitals of one spin: coefficient
// columns and levels in hartree.
struct SpinOrbitals {
  Index n = 0, no = 0, nv = 0;
  ConstMatrixView occ, vir;
  std::vector<double> e_occ, e_vir;
};

SpinOrbitals spin_orbitals(std::span<const double> orbitals, int n, int spin, int nocc, int nfrozen,
                           int northo) {
  SpinOrbitals s;
  const std::size_t nn = size(n) * size(n);
  const double* c = orbitals.data() + size(spin) * (nn + size(n));
  const double* levels = c + nn;
  s.n = n;
  s.no = std::max(nocc - nfrozen, 0);
  s.nv = std::max(northo - nocc, 0);
  s.occ = ConstMatrixView(c + size(n) * size(nfrozen), n, s.no, n);
  s.vir = ConstMatrixView(c + size(n) * size(nocc), n, s.nv, n);
  for (Index i = 0; i < s.no; ++i) s.e_occ.push_back(levels[nfrozen + i] / constants::kHartreeEv);
  for (Index a = 0; a < s.nv; ++a) s.e_vir.push_back(levels[nocc + a] / constants::kHartreeEv);
  return s;
}

// The shell data of the integral walk, decoded once, and the integral store
// when there is one.
struct QuartetWalk {
  std::vector<two::IntegralShell> shells;
  two::PairList list;
  two::PairData pairs;
  std::vector<double> bound;  // largest √(ij|ij) per kept shell pair
  two::ContextView store;     // store.vint empty: compute the quartets
};

QuartetWalk quartet_walk(const two::ContextView& c) {
  QuartetWalk w;
  w.store = c;
  w.shells = two::decode_shells(c.nshell, c.shelltab);
  w.list = two::pair_list(c.nshpair, c.shpair);
  w.pairs = two::make_pair_data(w.shells, w.list.a, w.list.b);
  w.bound = two::pair_bounds(w.shells, w.list, c.vdiag);
  return w;
}

// A(μ, ν, q) of the ket functions q = (fc, fd) of shells C, D from the store:
// every kept pair μν against the kept pair λσ (dropped pairs stay zero).
void fill_from_store(const two::ContextView& c, const two::IntegralShell& C,
                     const two::IntegralShell& D, double* a) {
  const std::size_t n = size(c.nbasis), plane = n * n;
  const bool same_shell = C.first == D.first;
  for (int fc = 0; fc < C.kind; ++fc) {
    for (int fd = 0; fd < D.kind; ++fd) {
      const int lambda = C.first + fc, sigma = D.first + fd;
      if (same_shell && sigma > lambda) continue;
      const std::int32_t Q = c.pairmap[size(two::pair_index(lambda, sigma))];
      if (Q == 0) continue;
      double* aq = a + plane * size(fc * D.kind + fd);
      for (std::int32_t P = 1; P <= c.npair; ++P) {
        const std::size_t mu = size(c.pairlist[2 * size(P - 1)] - 1);
        const std::size_t nu = size(c.pairlist[2 * size(P - 1) + 1] - 1);
        const double v = c.vint[size(two::store_index(P, Q))];
        aq[mu + n * nu] = v;
        aq[nu + n * mu] = v;
      }
    }
  }
}

// The half-transformed integrals (ia|λσ) of the occupied orbitals
// i0 … i0 + ni − 1 of `s`: for the packed pair p of λ ≥ σ the (nv, ni) block
// at p·nv·ni, column-major (a fastest).  Pairs of dropped shell pairs keep
// what x held (zeros from the caller).
void first_half(const QuartetWalk& w, const SpinOrbitals& s, Index i0, Index ni, double neglect,
                std::vector<double>& x) {
  const Index n = s.n, nv = s.nv;
  const int nshpair = static_cast<int>(w.list.a.size());
  const ConstMatrixView occ(s.occ.col(i0), n, ni, s.occ.ld());
  constexpr int kMaxPairFunctions = two::kMaxShellFunctions * two::kMaxShellFunctions;
#pragma omp parallel
  {
    std::vector<double> a(size(n) * size(n) * kMaxPairFunctions);
    std::vector<double> t(size(ni) * size(n) * kMaxPairFunctions);
    std::vector<double> block(two::kMaxQuartetBlock);
    two::QuartetWorkspace ws;
#pragma omp for schedule(dynamic, 1)
    for (int Q = nshpair - 1; Q >= 0; --Q) {
      const two::IntegralShell& C = w.shells[size(w.list.a[size(Q)])];
      const two::IntegralShell& D = w.shells[size(w.list.b[size(Q)])];
      const Index nq = C.kind * D.kind;
      const std::size_t plane = size(n) * size(n);
      std::fill_n(a.begin(), plane * size(nq), 0.0);
      if (!w.store.vint.empty()) fill_from_store(w.store, C, D, a.data());
      for (int P = 0; P < nshpair && w.store.vint.empty(); ++P) {
        if (w.bound[size(P)] * w.bound[size(Q)] < neglect) continue;
        const two::IntegralShell& A = w.shells[size(w.list.a[size(P)])];
        const two::IntegralShell& B = w.shells[size(w.list.b[size(P)])];
        two::shell_quartet(w.shells, w.pairs, P, Q, block.data(), ws);
        const double* v = block.data();
        for (int fa = 0; fa < A.kind; ++fa) {
          const std::size_t mu = size(A.first + fa);
          for (int fb = 0; fb < B.kind; ++fb) {
            const std::size_t nu = size(B.first + fb);
            for (Index q = 0; q < nq; ++q, ++v) {
              a[mu + size(n) * nu + plane * size(q)] = *v;
              a[nu + size(n) * mu + plane * size(q)] = *v;
            }
          }
        }
      }
      // (iν|λσ) for all ν and the quartet's ket functions, then (ia|λσ).
      gemm(Op::transpose, Op::none, 1.0, occ, ConstMatrixView(a.data(), n, n * nq, n), 0.0,
           MatrixView(t.data(), ni, n * nq, ni));
      const bool same_shell = w.list.a[size(Q)] == w.list.b[size(Q)];
      for (int fc = 0; fc < C.kind; ++fc) {
        for (int fd = 0; fd < D.kind; ++fd) {
          const int lambda = C.first + fc, sigma = D.first + fd;
          if (same_shell && sigma > lambda) continue;
          const std::size_t p = size(two::pair_index(lambda, sigma));
          const std::size_t q = size(fc * D.kind + fd);
          gemm(Op::transpose, Op::transpose, 1.0, s.vir,
               ConstMatrixView(t.data() + q * size(ni) * size(n), ni, n, ni), 0.0,
               MatrixView(x.data() + p * size(nv) * size(ni), nv, ni, nv));
        }
      }
    }
  }
}

// Pair energies of one orbital i of the batch against every j of `other`:
// `same_spin` sums ½ Σ t(t − t')/Δ (t = (ia|jb), t' = (ib|ja), Δ the level
// differences), the opposite-spin pass Σ t²/Δ.
struct PairSums {
  double same = 0.0;
  double opposite = 0.0;
};

void second_half(const SpinOrbitals& s, const SpinOrbitals& other, Index i0, Index ni,
                 const std::vector<double>& x, bool same_spin, bool restricted,
                 std::vector<PairSums>& sums) {
  const Index n = s.n, nv = s.nv, no2 = other.no, nv2 = other.nv;
  if (no2 == 0 || nv2 == 0) return;
#pragma omp parallel
  {
    std::vector<double> u(size(nv) * size(n) * size(n));
    std::vector<double> v(size(nv) * size(n) * size(no2));
    std::vector<double> r(size(nv) * size(nv2));
#pragma omp for schedule(dynamic, 1)
    for (Index il = 0; il < ni; ++il) {
      // X_i(a, λ, σ), symmetric in λσ.
      for (Index lambda = 0; lambda < n; ++lambda) {
        for (Index sigma = 0; sigma <= lambda; ++sigma) {
          const double* src = x.data() +
                              size(two::pair_index(lambda, sigma)) * size(nv) * size(ni) +
                              size(il) * size(nv);
          double* ls = u.data() + size(nv) * (size(lambda) + size(n) * size(sigma));
          double* sl = u.data() + size(nv) * (size(sigma) + size(n) * size(lambda));
          std::copy_n(src, nv, ls);
          if (sigma != lambda) std::copy_n(src, nv, sl);
        }
      }
      gemm(Op::none, Op::none, 1.0, ConstMatrixView(u.data(), nv * n, n, nv * n), other.occ, 0.0,
           MatrixView(v.data(), nv * n, no2, nv * n));
      const Index i = i0 + il;
      const double ei = s.e_occ[size(i)];
      PairSums e;
      for (Index j = 0; j < no2; ++j) {
        gemm(Op::none, Op::none, 1.0,
             ConstMatrixView(v.data() + size(j) * size(nv) * size(n), nv, n, nv), other.vir, 0.0,
             MatrixView(r.data(), nv, nv2, nv));
        const double eij = ei + other.e_occ[size(j)];
        for (Index b = 0; b < nv2; ++b) {
          const double eijb = eij - other.e_vir[size(b)];
          for (Index a = 0; a < nv; ++a) {
            const double t = r[size(a) + size(nv) * size(b)];
            const double d = eijb - s.e_vir[size(a)];
            if (same_spin) {
              const double exchange = r[size(b) + size(nv) * size(a)];
              e.same += t * (t - exchange) / d;
              if (restricted) e.opposite += t * t / d;
            } else {
              e.opposite += t * t / d;
            }
          }
        }
      }
      // In the restricted case the same-spin sum Σ t(t − t')/Δ over one
      // spin's pairs is the αα + ββ total; unrestricted, each spin's pass
      // carries ½.
      if (same_spin && !restricted) e.same *= 0.5;
      sums[size(i)].same += e.same;
      sums[size(i)].opposite += e.opposite;
    }
  }
}

bool same_orbitals(std::span<const double> orbitals, int n) {
  const std::size_t nn = size(n) * size(n);
  const std::size_t block = nn + size(n);
  for (std::size_t e = 0; e < nn; ++e) {
    if (std::abs(orbitals[e] - orbitals[block + e]) > 1e-10) return false;
  }
  return true;
}

}  // namespace

int frozen_core_orbitals(std::span<const int> charges) {
  int frozen = 0;
  for (const int z : charges) {
    if (z > 54) {
      frozen += 27;
    } else if (z > 36) {
      frozen += 18;
    } else if (z > 18) {
      frozen += 9;
    } else if (z > 10) {
      frozen += 5;
    } else if (z > 2) {
      frozen += 1;
    }
  }
  return frozen;
}

double mp2_batch_bytes(int n, int nvir, int batch) {
  return 8.0 * batch * static_cast<double>(nvir) * two::packed_size(n);
}

int mp2_batch_size(int n, int nocc, int nvir, double memory_gb) {
  const double one = mp2_batch_bytes(n, nvir, 1);
  const double fit = one > 0.0 ? std::floor(memory_gb * 1e9 / one) : nocc;
  return static_cast<int>(std::clamp<double>(fit, 1.0, std::max(nocc, 1)));
}

Mp2Energy mp2_energy(const basis::BasisSet& basis, const scf::JobControl& job,
                     const scf::MoleculeView& molecule, const setup::ElectronCount& counts,
                     std::span<const double> orbitals, const Mp2Options& options) {
  const int n = basis.nbasis();
  if (orbitals.size() < 2 * (size(n) * size(n) + size(n))) {
    throw std::invalid_argument("mp2_energy: the orbital array is too small");
  }
  // The two-electron context without the store (the walk computes its own
  // quartets), and the independent combinations of the basis.
  scf::JobControl limits = job;
  limits.memory_gb = 0.0;
  scf::PreparedSystem p = scf::prepare_system(basis, molecule.positions, molecule.charges, limits);
  Mp2Energy result;
  // The integral store first, when it fits the limit; the half-transformed
  // integrals from what is left.
  double memory_gb = options.memory_gb;
  const double store_gb = memory::integral_store_gb(p.context.npair);
  if (options.use_store && store_gb <= memory_gb) {
    p.context.vint.resize(size(two::packed_size(p.context.npair)));
    two::fill_store(p.context.view(), p.context.vint);
    memory_gb -= store_gb;
    result.stored = true;
  }

  result.frozen = options.frozen_core ? frozen_core_orbitals(molecule.charges) : 0;
  if (result.frozen > std::min(counts.alpha, counts.beta) && result.frozen > 0) {
    throw Error(fortran::list_directed(
        {std::string("Frozen core larger than the occupied orbitals."), std::int64_t{result.frozen},
         std::int64_t{std::min(counts.alpha, counts.beta)}}));
  }
  result.restricted = counts.alpha == counts.beta && same_orbitals(orbitals, n);
  const QuartetWalk walk = quartet_walk(p.context.view());
  const double neglect = std::max(two::kQuartetNeglect, options.screening / constants::kHartreeEv);
  const SpinOrbitals alpha = spin_orbitals(orbitals, n, 0, counts.alpha, result.frozen, p.northo);
  const SpinOrbitals beta = spin_orbitals(orbitals, n, 1, counts.beta, result.frozen, p.northo);

  // One spin's orbitals i through the integrals, batch by batch; each batch
  // pairs them with `partners` (same spin first).
  auto run = [&](const SpinOrbitals& s, std::initializer_list<const SpinOrbitals*> partners) {
    std::vector<PairSums> sums(size(s.no));
    if (s.no == 0 || s.nv == 0) return sums;
    const int batch = options.batch > 0 ? std::min<int>(options.batch, static_cast<int>(s.no))
                                        : mp2_batch_size(n, static_cast<int>(s.no),
                                                         static_cast<int>(s.nv), memory_gb);
    if (result.batch == 0) result.batch = batch;
    std::vector<double> x(size(two::packed_size(n)) * size(s.nv) * size(batch), 0.0);
    for (Index i0 = 0; i0 < s.no; i0 += batch) {
      const Index ni = std::min<Index>(batch, s.no - i0);
      // A shorter last batch packs its blocks closer: clear what the dropped
      // shell pairs would otherwise read.
      if (ni != batch) std::fill(x.begin(), x.end(), 0.0);
      first_half(walk, s, i0, ni, neglect, x);
      ++result.passes;
      bool same = true;
      for (const SpinOrbitals* other : partners) {
        second_half(s, *other, i0, ni, x, same, result.restricted, sums);
        same = false;
      }
    }
    return sums;
  };
  std::vector<PairSums> sums_a, sums_b;
  if (result.restricted) {
    sums_a = run(alpha, {&alpha});
  } else {
    sums_a = run(alpha, {&alpha, &beta});
    sums_b = run(beta, {&beta});
  }
  for (const auto* sums : {&sums_a, &sums_b}) {
    for (const PairSums& e : *sums) {
      result.same_spin += e.same;
      result.opposite_spin += e.opposite;
    }
  }
  result.correlation = result.same_spin + result.opposite_spin;
  return result;
}

}  // namespace norvik::properties
