#include "linalg/davidson.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <stdexcept>

#include "linalg/eigen.h"
#include "linalg/kernels.h"
#include "linalg/subspace.h"

namespace norvik::linalg {

namespace {

using subspace::dot;
using subspace::orthonormalise;
using Vector = subspace::Vector;

}  // namespace

DavidsonResult davidson_lowest(std::span<const double> diagonal, const BlockProduct& product,
                               const DavidsonOptions& options, std::span<const double> guesses) {
  const std::size_t n = diagonal.size();
  DavidsonResult result;
  const std::size_t wanted =
      std::min<std::size_t>(static_cast<std::size_t>(std::max(options.roots, 0)), n);
  const std::size_t k = std::min(
      n, wanted + (wanted > 0 ? static_cast<std::size_t>(std::max(options.extra_roots, 0)) : 0));
  if (wanted == 0) {
    result.converged = true;
    return result;
  }
  std::size_t max_subspace = options.max_subspace > 0
                                 ? static_cast<std::size_t>(options.max_subspace)
                                 : std::max<std::size_t>(20 * k, 40);
  max_subspace = std::clamp(max_subspace, std::min(2 * k, n), n);

  // The start: the given guesses, or the unit vectors of the lowest diagonal
  // elements (ties in index order).
  std::vector<Vector> fresh;
  if (!guesses.empty()) {
    if (guesses.size() % n != 0) {
      throw std::invalid_argument("davidson_lowest: the guesses are not whole vectors");
    }
    for (std::size_t c = 0; c < guesses.size() / n; ++c) {
      fresh.emplace_back(guesses.begin() + static_cast<std::ptrdiff_t>(c * n),
                         guesses.begin() + static_cast<std::ptrdiff_t>((c + 1) * n));
    }
  } else {
    const std::size_t count =
        std::min(n, k + static_cast<std::size_t>(std::max(options.extra_guesses, 0)));
    fresh = subspace::unit_guesses(diagonal, count);
    if (count < n) {
      // Deterministic components of irregular size and sign.
      fresh.emplace_back(n);
      for (std::size_t e = 0; e < n; ++e) {
        fresh.back()[e] = std::sin(1.0 + 0.7548776662 * static_cast<double>(e) * (e % 7 + 1));
      }
    }
  }

  std::vector<Vector> v, av;  // the subspace and its products
  std::vector<double> h;      // vᵢ·A vⱼ, (m, m) with leading dimension max_subspace
  std::vector<double> values, y;
  std::vector<Vector> ritz(k, Vector(n)), residual(k, Vector(n));
  result.residuals.assign(k, 0.0);
  h.assign(max_subspace * max_subspace, 0.0);

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
    if (added.empty()) break;  // nothing new to learn: the subspace has stalled

    std::vector<Vector> products(added.size(), Vector(n));
    {
      std::vector<std::span<const double>> in(added.begin(), added.end());
      std::vector<std::span<double>> out(products.begin(), products.end());
      product(in, out);
    }
    result.iterations = iteration + 1;
    const std::size_t old = v.size();
    for (std::size_t a = 0; a < added.size(); ++a) {
      v.push_back(std::move(added[a]));
      av.push_back(std::move(products[a]));
    }
    const std::size_t m = v.size();
    for (std::size_t j = old; j < m; ++j) {
      for (std::size_t i = 0; i < m; ++i) {
        const double e = 0.5 * (dot(v[i], av[j]) + dot(v[j], av[i]));
        h[i + max_subspace * j] = e;
        h[j + max_subspace * i] = e;
      }
    }

    // The Ritz pairs of the subspace.
    Matrix small(static_cast<Index>(m), static_cast<Index>(m));
    Matrix vec(static_cast<Index>(m), static_cast<Index>(m));
    for (std::size_t j = 0; j < m; ++j) {
      for (std::size_t i = 0; i < m; ++i) small(i, j) = h[i + max_subspace * j];
    }
    values.assign(m, 0.0);
    if (symmetric_eigen(small.view(), values, vec.view()) != Status::ok) {
      throw std::runtime_error("davidson_lowest: the subspace eigenproblem failed");
    }
    const std::size_t roots = std::min(k, m);
    bool all = roots >= wanted;
    for (std::size_t r = 0; r < roots; ++r) {
      std::fill(ritz[r].begin(), ritz[r].end(), 0.0);
      std::fill(residual[r].begin(), residual[r].end(), 0.0);
      for (std::size_t j = 0; j < m; ++j) {
        const double c = vec(static_cast<Index>(j), static_cast<Index>(r));
        for (std::size_t e = 0; e < n; ++e) {
          ritz[r][e] += c * v[j][e];
          residual[r][e] += c * av[j][e];
        }
      }
      for (std::size_t e = 0; e < n; ++e) residual[r][e] -= values[r] * ritz[r][e];
      result.residuals[r] = std::sqrt(dot(residual[r], residual[r]));
      if (result.residuals[r] > options.tolerance) {
        if (r < wanted) all = false;
        // The diagonal preconditioner, kept away from a zero denominator.
        Vector t(n);
        for (std::size_t e = 0; e < n; ++e) {
          double d = values[r] - diagonal[e];
          if (std::abs(d) < 1e-4) d = d < 0.0 ? -1e-4 : 1e-4;
          t[e] = residual[r][e] / d;
        }
        fresh.push_back(std::move(t));
      }
    }
    if (all) {
      result.converged = true;
      break;
    }
    // Collapse onto the Ritz vectors when the new vectors would not fit.
    if (m + fresh.size() > max_subspace) {
      const std::size_t keep = std::min(m, std::max(k, max_subspace / 4));
      std::vector<Vector> nv(keep, Vector(n)), nav(keep, Vector(n));
      for (std::size_t r = 0; r < keep; ++r) {
        for (std::size_t j = 0; j < m; ++j) {
          const double c = vec(static_cast<Index>(j), static_cast<Index>(r));
          for (std::size_t e = 0; e < n; ++e) {
            nv[r][e] += c * v[j][e];
            nav[r][e] += c * av[j][e];
          }
        }
      }
      v = std::move(nv);
      av = std::move(nav);
      std::fill(h.begin(), h.end(), 0.0);
      for (std::size_t r = 0; r < keep; ++r) h[r + max_subspace * r] = values[r];
    }
  }

  const std::size_t roots = std::min(wanted, v.size());
  result.values.assign(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(roots));
  result.vectors.assign(n * roots, 0.0);
  for (std::size_t r = 0; r < roots; ++r) {
    std::copy(ritz[r].begin(), ritz[r].end(),
              result.vectors.begin() + static_cast<std::ptrdiff_t>(r * n));
  }
  result.residuals.resize(roots);
  return result;
}

}  // namespace norvik::linalg
