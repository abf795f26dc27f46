// The reduction works on the full square (both triangles kept equal), so that
// the symmetric matrix-vector product is a set of independent column dot
// products and every update a plain matrix product: both are independent of the
// number of threads.  Columns are reduced in panels of kPanel; the reflectors of
// a panel are applied to the trailing matrix at once, by matrix products on its
// lower triangle, and the upper triangle is then copied from the lower.
#include "linalg/tridiagonal.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "linalg/kernels.h"

namespace norvik::linalg {

namespace {

constexpr Index kPanel = 32;
// Below this trailing order the remaining columns are reduced one at a time.
constexpr Index kUnblockedOrder = 64;

// Householder vector for (alpha, x): on return alpha holds beta and x the tail
// of v (whose head is 1), so that H·(alpha, x) = (beta, 0).  Returns tau.
double make_reflector(double& alpha, double* x, Index m) {
  const double xnorm = norm2(x, m);
  if (xnorm == 0.0) return 0.0;
  const double beta = -std::copysign(std::hypot(alpha, xnorm), alpha);
  const double tau = (beta - alpha) / beta;
  const double scale = 1.0 / (alpha - beta);
  for (Index i = 0; i < m; ++i) x[i] *= scale;
  alpha = beta;
  return tau;
}

// Column i of the reduction, one reflector at a time, on the full trailing square.
void reduce_column(MatrixView a, Index i, std::span<double> d, std::span<double> e,
                   std::span<double> tau, std::vector<double>& w) {
  const Index n = a.rows();
  const Index m = n - i - 1;  // length of v
  double alpha = a(i + 1, i);
  const double t = make_reflector(alpha, a.col(i) + i + 2, m - 1);
  e[i] = alpha;
  tau[i] = t;
  d[i] = a(i, i);
  if (t == 0.0) return;
  double* v = a.col(i) + i + 1;
  v[0] = 1.0;
  MatrixView trail = a.block(i + 1, i + 1, m, m);
  std::span<double> ws(w.data(), static_cast<std::size_t>(m));
  // w = tau·A·v − (tau²/2)(vᵀA v) v, then A ← A − v wᵀ − w vᵀ.
  gemv(Op::transpose, t, trail, std::span<const double>(v, static_cast<std::size_t>(m)), 0.0, ws);
  const double alpha2 = -0.5 * t * dot(ws.data(), v, m);
  for (Index r = 0; r < m; ++r) ws[r] += alpha2 * v[r];
#pragma omp parallel for schedule(static) if (parallel_pays(2.0 * m * m))
  for (Index c = 0; c < m; ++c) {
    double* col = trail.col(c);
    const double vc = v[c];
    const double wc = ws[c];
    for (Index r = 0; r < m; ++r) col[r] -= v[r] * wc + ws[r] * vc;
  }
  v[0] = e[i];
}

// Reduces columns i0 … i0+nb-1, returning in W the matrix with which the
// trailing square is updated: A ← A − V·Wᵀ − W·Vᵀ (V the panel's reflectors).
// W has the rows of A; rows below the panel's diagonal are used.
void reduce_panel(MatrixView a, Index i0, Index nb, std::span<double> e, std::span<double> tau,
                  MatrixView w, std::vector<double>& tmp) {
  const Index n = a.rows();
  for (Index jj = 0; jj < nb; ++jj) {
    const Index i = i0 + jj;
    const Index rows = n - i;
    // Bring column i up to date with the panel's earlier reflectors.
    if (jj > 0) {
      for (Index p = 0; p < jj; ++p) tmp[p] = w(i, p);
      gemv(Op::none, -1.0, a.block(i, i0, rows, jj),
           std::span<const double>(tmp.data(), static_cast<std::size_t>(jj)), 1.0,
           std::span<double>(a.col(i) + i, static_cast<std::size_t>(rows)));
      for (Index p = 0; p < jj; ++p) tmp[p] = a(i, i0 + p);
      gemv(Op::none, -1.0, w.block(i, 0, rows, jj),
           std::span<const double>(tmp.data(), static_cast<std::size_t>(jj)), 1.0,
           std::span<double>(a.col(i) + i, static_cast<std::size_t>(rows)));
    }
    if (i >= n - 1) break;
    const Index m = n - i - 1;
    double alpha = a(i + 1, i);
    const double t = make_reflector(alpha, a.col(i) + i + 2, m - 1);
    e[i] = alpha;
    tau[i] = t;
    double* v = a.col(i) + i + 1;
    v[0] = 1.0;
    std::span<const double> vs(v, static_cast<std::size_t>(m));
    std::span<double> wi(w.col(jj) + i + 1, static_cast<std::size_t>(m));
    // w_i = tau·(A − V Wᵀ − W Vᵀ)·v over the trailing rows, A as at the panel's start.
    gemv(Op::transpose, 1.0, a.block(i + 1, i + 1, m, m), vs, 0.0, wi);
    if (jj > 0) {
      std::span<double> t1(tmp.data(), static_cast<std::size_t>(jj));
      gemv(Op::transpose, 1.0, w.block(i + 1, 0, m, jj), vs, 0.0, t1);
      gemv(Op::none, -1.0, a.block(i + 1, i0, m, jj), t1, 1.0, wi);
      gemv(Op::transpose, 1.0, a.block(i + 1, i0, m, jj), vs, 0.0, t1);
      gemv(Op::none, -1.0, w.block(i + 1, 0, m, jj), t1, 1.0, wi);
    }
    for (Index r = 0; r < m; ++r) wi[r] *= t;
    const double alpha2 = -0.5 * t * dot(wi.data(), v, m);
    for (Index r = 0; r < m; ++r) wi[r] += alpha2 * v[r];
  }
}

// A ← A − V·Wᵀ − W·Vᵀ on the lower triangle, by column blocks (each block one
// product with [V W] and [W V]), then the upper triangle copied from the lower.
void update_trailing(ConstMatrixView v, ConstMatrixView w, MatrixView a) {
  const Index m = a.rows();
  const Index nb = v.cols();
  Matrix vw(m, 2 * nb), wv(m, 2 * nb);
  copy(v, vw.view().columns(0, nb));
  copy(w, vw.view().columns(nb, nb));
  copy(w, wv.view().columns(0, nb));
  copy(v, wv.view().columns(nb, nb));
  constexpr Index kCols = 128;
  for (Index j0 = 0; j0 < m; j0 += kCols) {
    const Index jb = std::min(kCols, m - j0);
    gemm(Op::none, Op::transpose, -1.0, vw.view().block(j0, 0, m - j0, 2 * nb),
         wv.view().block(j0, 0, jb, 2 * nb), 1.0, a.block(j0, j0, m - j0, jb));
  }
  constexpr Index kTile = 32;
  const bool threads = parallel_pays(static_cast<double>(m) * m);
#pragma omp parallel for schedule(dynamic) if (threads)
  for (Index j0 = 0; j0 < m; j0 += kTile) {
    for (Index i0 = 0; i0 <= j0; i0 += kTile) {
      // Tile (i0, j0) of the upper triangle from tile (j0, i0) of the lower.
      const Index j1 = std::min(m, j0 + kTile);
      const Index i1 = std::min(m, i0 + kTile);
      for (Index j = j0; j < j1; ++j) {
        for (Index i = i0; i < std::min(i1, j); ++i) a(i, j) = a(j, i);
      }
    }
  }
}

}  // namespace

void tridiagonalize(MatrixView a, std::span<double> d, std::span<double> e, std::span<double> tau) {
  const Index n = a.rows();
  if (n <= 0) return;
  std::vector<double> work(static_cast<std::size_t>(n));
  Index i = 0;
  if (n - 1 > kUnblockedOrder) {
    Matrix w(n, kPanel);
    for (; n - i > kUnblockedOrder; i += kPanel) {
      reduce_panel(a, i, kPanel, e, tau, w, work);
      const Index r0 = i + kPanel;
      const Index m = n - r0;
      MatrixView trail = a.block(r0, r0, m, m);
      ConstMatrixView v = a.block(r0, i, m, kPanel);
      ConstMatrixView wp = w.view().block(r0, 0, m, kPanel);
      update_trailing(v, wp, trail);
      for (Index j = i; j < r0; ++j) {
        a(j + 1, j) = e[j];
        d[j] = a(j, j);
      }
    }
  }
  for (; i < n - 1; ++i) reduce_column(a, i, d, e, tau, work);
  d[n - 1] = a(n - 1, n - 1);
}

void apply_q(ConstMatrixView a, std::span<const double> tau, MatrixView z) {
  const Index n = a.rows();
  const Index ncol = z.cols();
  if (n <= 2 || ncol <= 0) return;
  const Index nref = n - 2;  // reflector n-2 would act on one element: it is the identity
  // Q = H_0 ⋯ H_{nref-1}: blocks of reflectors applied from the last block to the
  // first, each as I − V·T·Vᵀ (T upper triangular, the compact WY form).
  constexpr Index kBlock = 32;
  Matrix v(n, kBlock);
  Matrix t(kBlock, kBlock);
  Matrix w(kBlock, ncol), tw_buffer(kBlock, ncol);
  std::vector<double> tmp(kBlock);
  const Index last_start = ((nref - 1) / kBlock) * kBlock;
  for (Index j0 = last_start; j0 >= 0; j0 -= kBlock) {
    const Index kb = std::min(kBlock, nref - j0);
    const Index r0 = j0 + 1;  // first row touched by reflector j0
    const Index m = n - r0;
    // V: reflector p of the block in column p, rows r0 … n-1 (unit at row j0+p+1).
    for (Index p = 0; p < kb; ++p) {
      double* col = v.data() + p * n;
      for (Index r = 0; r < m; ++r) {
        const Index row = r0 + r;
        col[r] = row < j0 + p + 1 ? 0.0 : (row == j0 + p + 1 ? 1.0 : a(row, j0 + p));
      }
    }
    MatrixView vb(v.data(), m, kb, n);
    // T column by column: T(p,p) = tau_p, T(0:p, p) = −tau_p·T(0:p,0:p)·V(:,0:p)ᵀ·v_p.
    for (Index p = 0; p < kb; ++p) {
      const double tp = tau[static_cast<std::size_t>(j0 + p)];
      for (Index q = 0; q < p; ++q) tmp[q] = -tp * dot(vb.col(q), vb.col(p), m);
      for (Index q = 0; q < p; ++q) {
        double s = 0.0;
        for (Index r = q; r < p; ++r) s += t(q, r) * tmp[r];
        t(q, p) = s;
      }
      for (Index q = p + 1; q < kBlock; ++q) t(q, p) = 0.0;
      t(p, p) = tp;
    }
    MatrixView zb = z.block(r0, 0, m, ncol);
    MatrixView wb = w.view().block(0, 0, kb, ncol);
    MatrixView tw = tw_buffer.view().block(0, 0, kb, ncol);
    gemm(Op::transpose, Op::none, 1.0, vb, zb, 0.0, wb);                       // W = Vᵀ·Z
    gemm(Op::none, Op::none, 1.0, t.view().block(0, 0, kb, kb), wb, 0.0, tw);  // T·W
    gemm(Op::none, Op::none, -1.0, vb, tw, 1.0, zb);  // Z ← Z − V·T·W
  }
}

}  // namespace norvik::linalg
