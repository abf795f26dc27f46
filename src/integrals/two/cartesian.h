// Cartesian components of Gaussian shells: their order and the index tables that
// the recurrences walk.
//
// A shell of angular momentum L has (L+1)(L+2)/2 components x^l y^m z^n, ordered
// for l = L down to 0, then m = L−l down to 0 (n = L−l−m):
//   s;  x y z;  xx xy xz yy yz zz;  xxx xxy xxz xyy xyz xzz yyy yyz yzz zzz; …
// The recurrences index all components of every L ≤ kMaxCartL in one list, shell
// after shell ("global" index = ncart_upto(L−1) + position within L).
#pragma once

#include <array>

namespace norvik::integrals::two {

inline constexpr int kMaxCartL = 8;

constexpr int ncart(int L) {
  return (L + 1) * (L + 2) / 2;
}
// Number of components of all shells 0 … L (0 for L < 0).
constexpr int ncart_upto(int L) {
  return L < 0 ? 0 : (L + 1) * (L + 2) * (L + 3) / 6;
}

// Position of x^l y^m z^n within its shell L = l+m+n.
constexpr int cart_index(int l, int m, int n) {
  const int L = l + m + n;
  // components with a larger x power come first: Σ_{i=l+1..L} (L−i+1) of them
  const int before = (L - l) * (L - l + 1) / 2;
  return before + (L - l - m);
}

struct CartTables {
  static constexpr int kSize = ncart_upto(kMaxCartL);
  std::array<std::array<int, 3>, kSize> lmn{};
  std::array<int, kSize> total{};
  // global index of the component with power i raised by one (−1 beyond kMaxCartL)
  std::array<std::array<int, 3>, kSize> plus{};
  // global index with power i lowered by one (−1 where that power is 0)
  std::array<std::array<int, 3>, kSize> minus{};
  // the direction in which a recurrence builds the component: the nonzero power
  // that is smallest (fewest extra terms), x before y before z on ties
  std::array<int, kSize> dir{};
};

constexpr int global_cart_index(int l, int m, int n) {
  return ncart_upto(l + m + n - 1) + cart_index(l, m, n);
}

constexpr CartTables make_cart_tables() {
  CartTables t{};
  for (int L = 0; L <= kMaxCartL; ++L) {
    for (int l = L; l >= 0; --l) {
      for (int m = L - l; m >= 0; --m) {
        const int n = L - l - m;
        const int g = global_cart_index(l, m, n);
        t.lmn[g] = {l, m, n};
        t.total[g] = L;
        const int p[3] = {l, m, n};
        int best = -1;
        for (int i = 0; i < 3; ++i) {
          int up[3] = {p[0], p[1], p[2]};
          up[i] += 1;
          t.plus[g][i] = L < kMaxCartL ? global_cart_index(up[0], up[1], up[2]) : -1;
          int dn[3] = {p[0], p[1], p[2]};
          dn[i] -= 1;
          t.minus[g][i] = p[i] > 0 ? global_cart_index(dn[0], dn[1], dn[2]) : -1;
          if (p[i] > 0 && (best < 0 || p[i] < p[best])) best = i;
        }
        t.dir[g] = best < 0 ? 0 : best;
      }
    }
  }
  return t;
}

inline constexpr CartTables kCart = make_cart_tables();

}  // namespace norvik::integrals::two
