#include "linalg/tridiagonal_eigen.h"

#include <omp.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

#include "linalg/kernels.h"
#include "linalg/sort.h"

namespace norvik::linalg {

namespace {

// Sweeps allowed for one eigenvalue before the QL iteration gives up; with
// Wilkinson shifts two or three are the rule.
constexpr int kMaxSweeps = 50;

// Blocks of at most this order are solved by QL rather than split further.
constexpr Index kLeafOrder = 25;

// From this order on, the two halves of the first split are solved concurrently.
constexpr Index kSideBySideOrder = 128;

}  // namespace

Status tridiagonal_ql(std::span<double> d, std::span<double> e_in, MatrixView z, double tolerance) {
  const Index n = static_cast<Index>(d.size());
  if (n == 0) return Status::ok;
  const double eps = effective_tolerance(tolerance);
  std::vector<double> e(static_cast<std::size_t>(n), 0.0);
  std::copy_n(e_in.begin(), n - 1, e.begin());
  const bool vectors = !z.empty();
  const Index rows = z.rows();
  for (Index l = 0; l < n; ++l) {
    int sweeps = 0;
    Index m;
    do {
      for (m = l; m < n - 1; ++m) {
        const double dd = std::abs(d[m]) + std::abs(d[m + 1]);
        if (std::abs(e[m]) <= eps * dd) break;
      }
      if (m == l) break;
      if (++sweeps > kMaxSweeps) return Status::no_convergence;
      // Shift: the eigenvalue of the leading 2×2 block nearer to d[l].
      double g = (d[l + 1] - d[l]) / (2.0 * e[l]);
      double r = std::hypot(g, 1.0);
      g = d[m] - d[l] + e[l] / (g + std::copysign(r, g));
      double s = 1.0, c = 1.0, p = 0.0;
      bool underflow = false;
      for (Index i = m - 1; i >= l; --i) {
        const double f = s * e[i];
        const double b = c * e[i];
        r = std::hypot(f, g);
        e[i + 1] = r;
        if (r == 0.0) {  // the rotation underflowed: deflate here and sweep again
          d[i + 1] -= p;
          e[m] = 0.0;
          underflow = true;
          break;
        }
        s = f / r;
        c = g / r;
        g = d[i + 1] - p;
        r = (d[i] - g) * s + 2.0 * c * b;
        p = s * r;
        d[i + 1] = g + p;
        g = c * r - b;
        if (vectors) {
          double* zi = z.col(i);
          double* zi1 = z.col(i + 1);
          for (Index k = 0; k < rows; ++k) {
            const double t = zi1[k];
            zi1[k] = s * zi[k] + c * t;
            zi[k] = c * zi[k] - s * t;
          }
        }
      }
      if (underflow) continue;
      d[l] -= p;
      e[l] = g;
      e[m] = 0.0;
    } while (m != l);
  }
  if (vectors) {
    sort_values(d, z, Order::ascending);
  } else {
    sort_values(d, Order::ascending);
  }
  return Status::ok;
}

namespace {

// The root of the secular equation 1/rho + Σ_j z2_j/(dl_j − λ) = 0 that lies
// above dl[i] (below dl[i+1] when i < K−1).  The root is found as λ = dl[o] + tau
// with o the nearer pole, so that the differences dl_j − λ = (dl_j − dl_o) − tau
// keep their relative accuracy; they are returned in delta.
void secular_root(const std::vector<double>& dl, const std::vector<double>& z2, double rho, Index i,
                  double eps, double* delta, Index& origin, double& tau) {
  const Index k = static_cast<Index>(dl.size());
  const double inv_rho = 1.0 / rho;
  double lo, hi;
  if (i < k - 1) {
    const double half = 0.5 * (dl[i + 1] - dl[i]);
    double f = inv_rho;
    for (Index j = 0; j < k; ++j) f += z2[j] / ((dl[j] - dl[i]) - half);
    if (f >= 0.0) {
      origin = i;
      lo = 0.0;
      hi = half;
      tau = hi;
    } else {
      origin = i + 1;
      lo = -half;
      hi = 0.0;
      tau = lo;
    }
  } else {
    origin = k - 1;
    double zz = 0.0;
    for (Index j = 0; j < k; ++j) zz += z2[j];
    lo = 0.0;
    hi = rho * zz;
    tau = hi;
  }
  for (Index j = 0; j < k; ++j) delta[j] = dl[j] - dl[origin];
  for (int iter = 0; iter < 200; ++iter) {
    double psi = 0.0, dpsi = 0.0, phi = 0.0, dphi = 0.0;
    for (Index j = 0; j <= i; ++j) {
      const double del = delta[j] - tau;
      const double t = z2[j] / del;
      psi += t;
      dpsi += t / del;
    }
    for (Index j = i + 1; j < k; ++j) {
      const double del = delta[j] - tau;
      const double t = z2[j] / del;
      phi += t;
      dphi += t / del;
    }
    const double w = inv_rho + psi + phi;
    if (w == 0.0) break;
    if (w < 0.0) {
      lo = tau;
    } else {
      hi = tau;
    }
    const double err = 8.0 * (phi - psi + inv_rho) + std::abs(tau) * (dpsi + dphi);
    if (std::abs(w) <= eps * err) break;
    // Step to the root of a model with the poles at dl[i] (and dl[i+1]) whose
    // value and slope on each side match the secular function (Li's middle way).
    const double di = delta[i] - tau;
    double eta;
    if (i < k - 1) {
      const double di1 = delta[i + 1] - tau;
      const double c = w - di * dpsi - di1 * dphi;
      const double a = c * (di + di1) + di * di * dpsi + di1 * di1 * dphi;
      const double b = di * di1 * w;
      if (c == 0.0) {
        eta = b / a;
      } else {
        const double disc = std::max(a * a - 4.0 * b * c, 0.0);
        const double q = 0.5 * (a + std::copysign(std::sqrt(disc), a));
        const double r1 = q / c;
        const double r2 = q != 0.0 ? b / q : r1;
        eta = (r2 > di && r2 < di1) ? r2 : r1;
      }
    } else {
      const double c = w - di * dpsi;
      eta = c > 0.0 ? di + di * di * dpsi / c : hi - tau;
    }
    double next = tau + eta;
    if (!(next > lo && next < hi)) next = 0.5 * (lo + hi);
    if (next == tau) break;
    tau = next;
  }
  for (Index j = 0; j < k; ++j) delta[j] -= tau;
}

// Eigen-decomposition of D + rho·z·zᵀ for the merge of two halves: q holds the
// block-diagonal eigenvectors of the halves on entry, those of the whole on return.
void merge(double* d, Index n, Index n1, MatrixView q, double beta, double eps) {
  std::vector<double> z(static_cast<std::size_t>(n));
  for (Index j = 0; j < n1; ++j) z[j] = q(n1 - 1, j);
  for (Index j = n1; j < n; ++j) z[j] = beta < 0.0 ? -q(n1, j) : q(n1, j);
  // |beta|·u·uᵀ with u = e_{n1-1} ± e_{n1}: normalise u.
  const double sqrt_half = std::sqrt(0.5);
  for (auto& zj : z) zj *= sqrt_half;
  const double rho = 2.0 * std::abs(beta);

  std::vector<Index> perm(static_cast<std::size_t>(n));
  std::iota(perm.begin(), perm.end(), Index{0});
  std::stable_sort(perm.begin(), perm.end(), [&](Index a, Index b) { return d[a] < d[b]; });

  double dmax = 0.0;
  for (Index j = 0; j < n; ++j) dmax = std::max(dmax, std::abs(d[j]));
  const double tol = 8.0 * eps * std::max(dmax, rho);

  // Deflation: a negligible z_j leaves (d_j, q_j) an eigenpair; two poles closer
  // than the tolerance are rotated so that one of them has z_j = 0.
  enum : int { kUpper = 0, kDense = 1, kLower = 2 };  // rows where a column is nonzero
  std::vector<int> kind(static_cast<std::size_t>(n));
  for (Index j = 0; j < n; ++j) kind[j] = j < n1 ? kUpper : kLower;
  std::vector<Index> kept, deflated;
  Index pj = -1;
  for (Index jj = 0; jj < n; ++jj) {
    const Index j = perm[jj];
    if (rho * std::abs(z[j]) <= tol) {
      deflated.push_back(j);
      continue;
    }
    if (pj < 0) {
      pj = j;
      continue;
    }
    const double tau = std::hypot(z[j], z[pj]);
    const double c = z[j] / tau;
    const double s = -z[pj] / tau;
    const double t = d[j] - d[pj];
    if (std::abs(t * c * s) <= tol) {
      z[j] = tau;
      z[pj] = 0.0;
      double* qp = q.col(pj);
      double* qj = q.col(j);
      for (Index r = 0; r < n; ++r) {
        const double x = qp[r];
        const double y = qj[r];
        qp[r] = c * x + s * y;
        qj[r] = c * y - s * x;
      }
      if (kind[pj] != kind[j]) kind[pj] = kind[j] = kDense;
      const double dp = d[pj] * c * c + d[j] * s * s;
      d[j] = d[pj] * s * s + d[j] * c * c;
      d[pj] = dp;
      deflated.push_back(pj);
    } else {
      kept.push_back(pj);
    }
    pj = j;
  }
  if (pj >= 0) kept.push_back(pj);
  const Index k = static_cast<Index>(kept.size());

  std::vector<double> values(static_cast<std::size_t>(n));
  Matrix vectors(n, n);
  if (k > 0) {
    std::vector<double> dl(static_cast<std::size_t>(k)), z2(static_cast<std::size_t>(k));
    for (Index a = 0; a < k; ++a) {
      dl[a] = d[kept[a]];
      z2[a] = z[kept[a]] * z[kept[a]];
    }
    // delta(:, i) = dl − λ_i for each root i.
    Matrix delta(k, k);
    std::vector<Index> origin(static_cast<std::size_t>(k));
    std::vector<double> tau(static_cast<std::size_t>(k));
    if (k == 1) {
      origin[0] = 0;
      tau[0] = rho * z2[0];
      delta(0, 0) = -tau[0];
    } else {
#pragma omp parallel for schedule(dynamic, 16) if (parallel_pays(10.0 * k * k))
      for (Index i = 0; i < k; ++i)
        secular_root(dl, z2, rho, i, eps, delta.data() + i * k, origin[i], tau[i]);
    }
    for (Index i = 0; i < k; ++i) values[i] = dl[origin[i]] + tau[i];
    // Gu–Eisenstat: the z for which the computed roots are exact, so that the
    // eigenvectors below come out orthogonal to working precision.
    std::vector<double> zhat(static_cast<std::size_t>(k));
#pragma omp parallel for schedule(static) if (parallel_pays(8.0 * k * k))
    for (Index j = 0; j < k; ++j) {
      double prod = -delta(j, j) / rho;
      for (Index i = 0; i < k; ++i) {
        if (i != j) prod *= -delta(j, i) / (dl[i] - dl[j]);
      }
      zhat[j] = std::copysign(std::sqrt(std::abs(prod)), z[kept[j]]);
    }
    // Eigenvectors of D + rho·zzᵀ in the kept space, columns normalised; their
    // rows reordered so that upper-block columns come first and lower-block last.
    std::vector<Index> rows_by_kind;
    Index n_upper = 0, n_dense = 0;
    for (int want : {kUpper, kDense, kLower}) {
      for (Index a = 0; a < k; ++a) {
        if (kind[kept[a]] == want) rows_by_kind.push_back(a);
      }
      if (want == kUpper) n_upper = static_cast<Index>(rows_by_kind.size());
      if (want == kDense) n_dense = static_cast<Index>(rows_by_kind.size()) - n_upper;
    }
    Matrix u(k, k);
#pragma omp parallel for schedule(static) if (parallel_pays(8.0 * k * k))
    for (Index i = 0; i < k; ++i) {
      double* ui = u.data() + i * k;
      for (Index a = 0; a < k; ++a) {
        const Index j = rows_by_kind[a];
        ui[a] = zhat[j] / delta(j, i);
      }
      const double norm = norm2(ui, k);
      for (Index a = 0; a < k; ++a) ui[a] /= norm;
    }
    Matrix qc(n, k);
    for (Index a = 0; a < k; ++a) std::copy_n(q.col(kept[rows_by_kind[a]]), n, qc.data() + a * n);
    const Index top_cols = n_upper + n_dense;
    const Index bottom_first = n_upper;
    if (top_cols > 0) {
      gemm(Op::none, Op::none, 1.0, qc.view().block(0, 0, n1, top_cols),
           u.view().block(0, 0, top_cols, k), 0.0, vectors.view().block(0, 0, n1, k));
    } else {
      for (Index i = 0; i < k; ++i) std::fill_n(vectors.data() + i * n, n1, 0.0);
    }
    if (k - bottom_first > 0) {
      gemm(Op::none, Op::none, 1.0, qc.view().block(n1, bottom_first, n - n1, k - bottom_first),
           u.view().block(bottom_first, 0, k - bottom_first, k), 0.0,
           vectors.view().block(n1, 0, n - n1, k));
    } else {
      for (Index i = 0; i < k; ++i) std::fill_n(vectors.data() + i * n + n1, n - n1, 0.0);
    }
  }
  for (Index a = 0; a < static_cast<Index>(deflated.size()); ++a) {
    values[k + a] = d[deflated[a]];
    std::copy_n(q.col(deflated[a]), n, vectors.data() + (k + a) * n);
  }
  sort_values(values, vectors, Order::ascending);
  std::copy(values.begin(), values.end(), d);
  copy(vectors, q);
}

Status divide_conquer(double* d, double* e, Index n, MatrixView q, double eps) {
  if (n <= kLeafOrder) {
    set_identity(q);
    return tridiagonal_ql(std::span<double>(d, static_cast<std::size_t>(n)),
                          std::span<double>(e, static_cast<std::size_t>(n - 1)), q, eps);
  }
  const Index n1 = n / 2;
  const double beta = e[n1 - 1];
  d[n1 - 1] -= std::abs(beta);
  d[n1] -= std::abs(beta);
  for (Index j = 0; j < n1; ++j) std::fill_n(q.col(j) + n1, n - n1, 0.0);
  for (Index j = n1; j < n; ++j) std::fill_n(q.col(j), n1, 0.0);
  // The halves are independent: on the first split they run side by side (each
  // then on one thread; below the split they run serially).
  Status s1 = Status::ok, s2 = Status::ok;
  const bool side_by_side = n >= kSideBySideOrder && !omp_in_parallel();
#pragma omp parallel sections num_threads(std::min(2, omp_get_max_threads())) if (side_by_side)
  {
#pragma omp section
    s1 = divide_conquer(d, e, n1, q.block(0, 0, n1, n1), eps);
#pragma omp section
    s2 = divide_conquer(d + n1, e + n1, n - n1, q.block(n1, n1, n - n1, n - n1), eps);
  }
  if (s1 != Status::ok) return s1;
  if (s2 != Status::ok) return s2;
  merge(d, n, n1, q, beta, eps);
  return Status::ok;
}

}  // namespace

Status tridiagonal_divide_conquer(std::span<double> d, std::span<double> e, MatrixView q,
                                  double tolerance) {
  const Index n = static_cast<Index>(d.size());
  if (n == 0) return Status::ok;
  return divide_conquer(d.data(), e.data(), n, q, effective_tolerance(tolerance));
}

}  // namespace norvik::linalg
