#include "properties/two_electron_ci.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "common/constants.h"
#include "integrals/two/two_electron.h"
#include "linalg/eigen.h"
#include "linalg/kernels.h"
#include "linalg/matrix.h"
#include "scf/properties.h"

namespace norvik::properties {

namespace {

using linalg::ConstMatrixView;
using linalg::Index;
using linalg::Matrix;
using linalg::Op;

Index packed(Index p, Index q) {
  return p >= q ? p * (p + 1) / 2 + q : q * (q + 1) / 2 + p;
}

// (pq|rs) over the orbitals C (n × m) [hartree], as an (m(m+1)/2)² matrix over
// packed pairs, from the integral store in two half transformations.
Matrix orbital_integrals(const integrals::two::ContextView& context, ConstMatrixView c) {
  const Index n = c.rows(), m = c.cols();
  const Index nao = n * (n + 1) / 2, nmo = m * (m + 1) / 2;
  auto eri = [&](Index i, Index j, Index k, Index l) {
    const std::int32_t a = context.pairmap[static_cast<std::size_t>(packed(i, j))];
    const std::int32_t b = context.pairmap[static_cast<std::size_t>(packed(k, l))];
    if (a == 0 || b == 0) return 0.0;
    const std::int64_t hi = std::max(a, b), lo = std::min(a, b);
    return context.vint[static_cast<std::size_t>(hi * (hi - 1) / 2 + lo - 1)];
  };
  Matrix half(nmo, nao), ao(n, n), work(n, m), mo(m, m);
  auto to_orbitals = [&](Matrix& x) {  // mo = Cᵀ x C
    linalg::gemm(Op::none, Op::none, 1.0, x.view(), c, 0.0, work.view());
    linalg::gemm(Op::transpose, Op::none, 1.0, c, work.view(), 0.0, mo.view());
  };
  for (Index k = 0; k < n; ++k) {
    for (Index l = 0; l <= k; ++l) {
      for (Index j = 0; j < n; ++j) {
        for (Index i = 0; i <= j; ++i) ao(i, j) = ao(j, i) = eri(i, j, k, l);
      }
      to_orbitals(ao);
      for (Index p = 0; p < m; ++p) {
        for (Index q = 0; q <= p; ++q) half(packed(p, q), packed(k, l)) = mo(p, q);
      }
    }
  }
  Matrix result(nmo, nmo);
  for (Index pq = 0; pq < nmo; ++pq) {
    for (Index k = 0; k < n; ++k) {
      for (Index l = 0; l <= k; ++l) ao(k, l) = ao(l, k) = half(pq, packed(k, l));
    }
    to_orbitals(ao);
    for (Index r = 0; r < m; ++r) {
      for (Index s = 0; s <= r; ++s) result(pq, packed(r, s)) = mo(r, s);
    }
  }
  return result;
}

std::vector<double> eigen(Matrix& h, Matrix* vectors) {
  std::vector<double> w(static_cast<std::size_t>(h.rows()));
  Matrix v(h.rows(), h.rows());
  if (linalg::symmetric_eigen(h.view(), w, v.view()) != linalg::Status::ok) {
    throw std::runtime_error("two-electron CI: the eigen-solver failed");
  }
  if (vectors) *vectors = std::move(v);
  return w;
}

}  // namespace

TwoElectronCi two_electron_ci(const basis::BasisSet& basis, const scf::JobControl& job,
                              const scf::MoleculeView& molecule, std::span<const double> orbitals) {
  scf::JobControl stored = job;
  stored.direct = true;  // the store is filled below whatever the limit
  scf::PreparedSystem p = scf::prepare_system(basis, molecule.positions, molecule.charges, stored);
  p.context.vint.resize(static_cast<std::size_t>(integrals::two::packed_size(p.context.npair)));
  integrals::two::fill_store(p.context.view(), p.context.vint);

  const Index n = p.n, m = p.northo;
  if (orbitals.size() < static_cast<std::size_t>(n * (n + 1))) {
    throw std::logic_error("two-electron CI: the orbital array is too small");
  }
  const ConstMatrixView c(orbitals.data(), n, m, n);
  Matrix core(n, n), work(n, m), h(m, m);
  for (Index e = 0; e < n * n; ++e) {
    core.data()[e] = (p.t[static_cast<std::size_t>(e)] + p.v[static_cast<std::size_t>(e)]) /
                     constants::kHartreeEv;
  }
  linalg::gemm(Op::none, Op::none, 1.0, core.view(), c, 0.0, work.view());
  linalg::gemm(Op::transpose, Op::none, 1.0, c, work.view(), 0.0, h.view());
  const Matrix g = orbital_integrals(p.context.view(), c);

  // ⟨pq|H|rs⟩ for the product φp(1)φq(2): h_pr δ_qs + δ_pr h_qs + (pr|qs).
  auto product = [&](Index p_, Index q, Index r, Index s) {
    return (q == s ? h(p_, r) : 0.0) + (p_ == r ? h(q, s) : 0.0) + g(packed(p_, r), packed(q, s));
  };
  const Index ns = m * (m + 1) / 2, nt = m * (m - 1) / 2;
  Matrix hs(ns, ns), ht(nt, nt);
  for (Index p1 = 0; p1 < m; ++p1) {
    for (Index q1 = 0; q1 <= p1; ++q1) {
      for (Index r = 0; r < m; ++r) {
        for (Index s = 0; s <= r; ++s) {
          const double direct = product(p1, q1, r, s), exchange = product(p1, q1, s, r);
          const double norm = std::sqrt((p1 == q1 ? 2.0 : 1.0) * (r == s ? 2.0 : 1.0));
          hs(packed(p1, q1), packed(r, s)) = (direct + exchange) / norm;
          if (p1 > q1 && r > s) {
            ht(p1 * (p1 - 1) / 2 + q1, r * (r - 1) / 2 + s) = direct - exchange;
          }
        }
      }
    }
  }

  TwoElectronCi ci;
  ci.norb = static_cast<int>(m);
  const double nuclear = scf::nuclear_repulsion(molecule.charges, molecule.positions);
  ci.reference = hs(0, 0) * constants::kHartreeEv + nuclear;
  Matrix vectors;
  ci.singlets = eigen(hs, &vectors);
  ci.triplets = nt > 0 ? eigen(ht, nullptr) : std::vector<double>();
  for (std::vector<double>* states : {&ci.singlets, &ci.triplets}) {
    for (double& e : *states) e = e * constants::kHartreeEv + nuclear;
  }
  ci.ground.assign(vectors.data(), vectors.data() + ns);
  return ci;
}

}  // namespace norvik::properties
