#include "linalg/subspace.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "linalg/kernels.h"

namespace norvik::linalg::subspace {

double dot(const Vector& x, const Vector& y) {
  return linalg::dot(x.data(), y.data(), static_cast<Index>(x.size()));
}

bool orthonormalise(const std::vector<Vector>& basis, Vector& v) {
  const double before = std::sqrt(dot(v, v));
  if (before == 0.0) return false;
  for (int pass = 0; pass < 2; ++pass) {
    for (const Vector& b : basis) {
      const double c = dot(b, v);
      for (std::size_t e = 0; e < v.size(); ++e) v[e] -= c * b[e];
    }
  }
  const double after = std::sqrt(dot(v, v));
  if (after <= 1e-8 * before || after == 0.0) return false;
  for (double& e : v) e /= after;
  return true;
}

std::vector<Vector> unit_guesses(std::span<const double> diagonal, std::size_t count) {
  const std::size_t n = diagonal.size();
  std::vector<std::size_t> order(n);
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return diagonal[a] < diagonal[b]; });
  std::vector<Vector> guesses;
  for (std::size_t c = 0; c < std::min(count, n); ++c) {
    guesses.emplace_back(n, 0.0);
    guesses.back()[order[c]] = 1.0;
  }
  return guesses;
}

}  // namespace norvik::linalg::subspace
