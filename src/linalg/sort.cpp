#include "linalg/sort.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

namespace norvik::linalg {

namespace {

// The permutation that sorts v: v[perm[0]] comes first.
std::vector<Index> sorting_permutation(std::span<const double> v, Order order) {
  std::vector<Index> perm(v.size());
  std::iota(perm.begin(), perm.end(), Index{0});
  // A strict weak order with every NaN after every number.
  auto before = [&](Index a, Index b) {
    const double x = v[static_cast<std::size_t>(a)];
    const double y = v[static_cast<std::size_t>(b)];
    if (std::isnan(x)) return false;
    if (std::isnan(y)) return true;
    return order == Order::ascending ? x < y : x > y;
  };
  std::stable_sort(perm.begin(), perm.end(), before);
  return perm;
}

template <class T>
void permute(std::span<T> v, const std::vector<Index>& perm) {
  std::vector<T> old(v.begin(), v.end());
  for (std::size_t i = 0; i < perm.size(); ++i) v[i] = old[static_cast<std::size_t>(perm[i])];
}

}  // namespace

void sort_values(std::span<double> v, Order order) {
  permute(v, sorting_permutation(v, order));
}

void sort_values(std::span<double> v, std::span<int> companion, Order order) {
  const auto perm = sorting_permutation(v, order);
  permute(v, perm);
  permute(companion, perm);
}

void sort_values(std::span<double> v, MatrixView z, Order order) {
  const auto perm = sorting_permutation(v, order);
  const bool moved = !std::is_sorted(perm.begin(), perm.end());
  if (!moved) return;
  permute(v, perm);
  if (z.empty()) return;
  Matrix old(z.rows(), static_cast<Index>(perm.size()));
  copy(z.columns(0, old.cols()), old);
  for (std::size_t i = 0; i < perm.size(); ++i) {
    std::copy_n(old.data() + perm[i] * old.rows(), old.rows(), z.col(static_cast<Index>(i)));
  }
}

void reverse_order(std::span<double> v, MatrixView z) {
  std::reverse(v.begin(), v.end());
  const Index n = static_cast<Index>(v.size());
  for (Index j = 0; j < n / 2; ++j) {
    std::swap_ranges(z.col(j), z.col(j) + z.rows(), z.col(n - 1 - j));
  }
}

}  // namespace norvik::linalg
