#include "linalg/paired_davidson.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <stdexcept>

#include "linalg/cholesky.h"
#include "linalg/eigen.h"
#include "linalg/kernels.h"
#include "linalg/subspace.h"

namespace norvik::linalg {

namespace {

using subspace::dot;
using subspace::orthonormalise;
using Vector = subspace::Vector;

// Σ_j c_j v_j
void combine(const std::vector<Vector>& v, const double* c, Vector& out) {
  std::fill(out.begin(), out.end(), 0.0);
  for (std::size_t j = 0; j < v.size(); ++j) {
    for (std::size_t e = 0; e < out.size(); ++e) out[e] += c[j] * v[j][e];
  }
}

}  // namespace

PairedResult paired_davidson_lowest(std::span<const double> diagonal, const PairedProduct& product,
                                    const DavidsonOptions& options) {
  const std::size_t n = diagonal.size();
  PairedResult result;
  const std::size_t k =
      std::min<std::size_t>(static_cast<std::size_t>(std::max(options.roots, 0)), n);
  if (k == 0) {
    result.converged = true;
    return result;
  }
  std::size_t max_subspace = options.max_subspace > 0
                                 ? static_cast<std::size_t>(options.max_subspace)
                                 : std::max<std::size_t>(20 * k, 40);
  max_subspace = std::clamp(max_subspace, std::min(4 * k, n), n);

  std::vector<Vector> fresh;
  {
    const std::size_t count =
        std::min(n, k + static_cast<std::size_t>(std::max(options.extra_guesses, 0)));
    fresh = subspace::unit_guesses(diagonal, count);
  }

  std::vector<Vector> v, pv, mv;  // the subspace and its products with A + B, A − B
  std::vector<double> omega;
  Matrix u, w;  // subspace coordinates of X + Y and X − Y, one column per root
  std::vector<Vector> xpy(k, Vector(n)), xmy(k, Vector(n));
  Vector r1(n), r2(n);
  result.residuals.assign(k, 0.0);

  for (int iteration = 0; iteration < options.max_iterations; ++iteration) {
    std::vector<Vector> added;
    for (Vector& f : fresh) {
      std::vector<Vector> against = v;
      against.insert(against.end(), added.begin(), added.end());
      if (v.size() + added.size() < max_subspace && orthonormalise(against, f)) {
        added.push_back(std::move(f));
      }
    }
    fresh.clear();
    if (added.empty()) break;  // the subspace has stalled

    std::vector<Vector> plus(added.size(), Vector(n)), minus(added.size(), Vector(n));
    {
      std::vector<std::span<const double>> in(added.begin(), added.end());
      std::vector<std::span<double>> p(plus.begin(), plus.end()), m(minus.begin(), minus.end());
      product(in, p, m);
    }
    result.iterations = iteration + 1;
    for (std::size_t a = 0; a < added.size(); ++a) {
      v.push_back(std::move(added[a]));
      pv.push_back(std::move(plus[a]));
      mv.push_back(std::move(minus[a]));
    }
    const auto m = static_cast<Index>(v.size());

    // The projected operators, L Lᵀ = vᵀ(A − B)v and H = Lᵀ [vᵀ(A + B)v] L.
    Matrix sp(m, m), sm(m, m);
    for (Index j = 0; j < m; ++j) {
      for (Index i = 0; i <= j; ++i) {
        const auto a = static_cast<std::size_t>(i), b = static_cast<std::size_t>(j);
        sp(i, j) = sp(j, i) = 0.5 * (dot(v[a], pv[b]) + dot(v[b], pv[a]));
        sm(i, j) = sm(j, i) = 0.5 * (dot(v[a], mv[b]) + dot(v[b], mv[a]));
      }
    }
    if (cholesky(sm.view(), 0.0) != Status::ok) {
      throw std::runtime_error("paired_davidson_lowest: A - B is not positive definite");
    }
    Matrix l(m, m), t(m, m), h(m, m), z(m, m);
    for (Index j = 0; j < m; ++j) {
      for (Index i = j; i < m; ++i) l(i, j) = sm(i, j);
    }
    gemm(Op::none, Op::none, 1.0, sp.view(), l.view(), 0.0, t.view());
    gemm(Op::transpose, Op::none, 1.0, l.view(), t.view(), 0.0, h.view());
    std::vector<double> squares(static_cast<std::size_t>(m));
    if (symmetric_eigen(h.view(), squares, z.view()) != Status::ok) {
      throw std::runtime_error("paired_davidson_lowest: the subspace eigenproblem failed");
    }
    const std::size_t roots = std::min(k, v.size());
    if (squares[0] <= 0.0) {
      throw std::runtime_error("paired_davidson_lowest: an excitation energy is not real");
    }
    // X + Y = v L z / √ω, X − Y = v [vᵀ(A + B)v] (L z) / ω^{3/2}.
    omega.assign(roots, 0.0);
    u = Matrix(m, static_cast<Index>(roots));
    w = Matrix(m, static_cast<Index>(roots));
    bool all = roots == k;
    for (std::size_t r = 0; r < roots; ++r) {
      const double om = std::sqrt(squares[r]);
      omega[r] = om;
      const auto rr = static_cast<Index>(r);
      for (Index i = 0; i < m; ++i) {
        double s = 0.0;
        for (Index j = 0; j <= i; ++j) s += l(i, j) * z(j, rr);
        u(i, rr) = s / std::sqrt(om);
      }
      for (Index i = 0; i < m; ++i) {
        double s = 0.0;
        for (Index j = 0; j < m; ++j) s += sp(i, j) * u(j, rr);
        w(i, rr) = s / om;
      }
      combine(v, u.view().col(rr), xpy[r]);
      combine(v, w.view().col(rr), xmy[r]);
      combine(pv, u.view().col(rr), r1);
      combine(mv, w.view().col(rr), r2);
      for (std::size_t e = 0; e < n; ++e) {
        r1[e] -= om * xmy[r][e];
        r2[e] -= om * xpy[r][e];
      }
      const double scale = std::sqrt(dot(xpy[r], xpy[r])) + std::sqrt(dot(xmy[r], xmy[r]));
      result.residuals[r] = std::sqrt(dot(r1, r1) + dot(r2, r2)) / scale;
      if (result.residuals[r] > options.tolerance) {
        all = false;
        // Both corrections, with the diagonal preconditioner kept away from
        // a zero denominator.
        for (const Vector* res : {&r1, &r2}) {
          Vector c(n);
          for (std::size_t e = 0; e < n; ++e) {
            double d = om - diagonal[e];
            if (std::abs(d) < 1e-4) d = d < 0.0 ? -1e-4 : 1e-4;
            c[e] = (*res)[e] / d;
          }
          fresh.push_back(std::move(c));
        }
      }
    }
    if (all) {
      result.converged = true;
      break;
    }
    // Collapse onto the X + Y and X − Y of the roots (and the next ones) when
    // the corrections would not fit; the products follow linearly.
    if (v.size() + fresh.size() > max_subspace) {
      const std::size_t keep = std::min(v.size(), std::max(k, max_subspace / 8));
      std::vector<Vector> coords;
      for (std::size_t r = 0; r < keep; ++r) {
        const auto rr = static_cast<Index>(r);
        Vector a(static_cast<std::size_t>(m), 0.0), b(static_cast<std::size_t>(m), 0.0);
        for (Index i = 0; i < m; ++i) {
          for (Index j = 0; j <= i; ++j) a[static_cast<std::size_t>(i)] += l(i, j) * z(j, rr);
        }
        for (Index i = 0; i < m; ++i) {
          for (Index j = 0; j < m; ++j)
            b[static_cast<std::size_t>(i)] += sp(i, j) * a[static_cast<std::size_t>(j)];
        }
        for (Vector* c : {&a, &b}) {
          if (orthonormalise(coords, *c)) coords.push_back(std::move(*c));
        }
      }
      std::vector<Vector> nv(coords.size(), Vector(n)), np(coords.size(), Vector(n)),
          nm(coords.size(), Vector(n));
      for (std::size_t c = 0; c < coords.size(); ++c) {
        combine(v, coords[c].data(), nv[c]);
        combine(pv, coords[c].data(), np[c]);
        combine(mv, coords[c].data(), nm[c]);
      }
      v = std::move(nv);
      pv = std::move(np);
      mv = std::move(nm);
    }
  }

  const std::size_t roots = omega.size();
  result.values = omega;
  result.x_plus_y.assign(n * roots, 0.0);
  result.x_minus_y.assign(n * roots, 0.0);
  for (std::size_t r = 0; r < roots; ++r) {
    std::copy(xpy[r].begin(), xpy[r].end(),
              result.x_plus_y.begin() + static_cast<std::ptrdiff_t>(r * n));
    std::copy(xmy[r].begin(), xmy[r].end(),
              result.x_minus_y.begin() + static_cast<std::ptrdiff_t>(r * n));
  }
  result.residuals.resize(roots);
  return result;
}

}  // namespace norvik::linalg
