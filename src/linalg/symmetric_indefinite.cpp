#include "linalg/symmetric_indefinite.h"

#include <algorithm>
#include <cmath>

#include "linalg/kernels.h"

namespace norvik::linalg {

namespace {

// Bunch–Kaufman's growth-bounding constant (1 + √17)/8.
const double kAlpha = (1.0 + std::sqrt(17.0)) / 8.0;

// Interchange of rows/columns r < s of the trailing square that starts at r,
// held in its lower triangle.
void swap_lower(MatrixView a, Index r, Index s) {
  const Index n = a.rows();
  for (Index i = s + 1; i < n; ++i) std::swap(a(i, r), a(i, s));
  for (Index j = r + 1; j < s; ++j) std::swap(a(j, r), a(s, j));
  std::swap(a(r, r), a(s, s));
}

}  // namespace

Status bunch_kaufman_factor(MatrixView a, std::span<int> pivots) {
  const Index n = a.rows();
  if (n < 0 || a.cols() != n || a.ld() < std::max<Index>(1, n) ||
      static_cast<Index>(pivots.size()) < n) {
    return Status::bad_dimension;
  }
  double amax = 0.0;
  for (Index j = 0; j < n; ++j) {
    for (Index i = j; i < n; ++i) {
      if (!std::isfinite(a(i, j))) return Status::not_finite;
      amax = std::max(amax, std::abs(a(i, j)));
    }
  }
  const double negligible = kMachineEpsilon * amax;
  Index k = 0;
  while (k < n) {
    const double absakk = std::abs(a(k, k));
    Index imax = k;
    double colmax = 0.0;
    for (Index i = k + 1; i < n; ++i) {
      if (std::abs(a(i, k)) > colmax) {
        colmax = std::abs(a(i, k));
        imax = i;
      }
    }
    if (std::max(absakk, colmax) <= negligible) return Status::singular;
    Index kp;
    Index size = 1;
    if (absakk >= kAlpha * colmax) {
      kp = k;
    } else {
      // Largest off-diagonal element in row/column imax of the trailing square.
      double rowmax = 0.0;
      for (Index j = k; j < imax; ++j) rowmax = std::max(rowmax, std::abs(a(imax, j)));
      for (Index i = imax + 1; i < n; ++i) rowmax = std::max(rowmax, std::abs(a(i, imax)));
      if (absakk >= kAlpha * colmax * (colmax / rowmax)) {
        kp = k;
      } else if (std::abs(a(imax, imax)) >= kAlpha * rowmax) {
        kp = imax;
      } else {
        kp = imax;
        size = 2;
      }
    }
    const Index kk = k + size - 1;
    if (kp != kk) {
      swap_lower(a, kk, kp);
      if (size == 2) std::swap(a(k + 1, k), a(kp, k));
    }
    if (size == 1) {
      const double r1 = 1.0 / a(k, k);
      for (Index j = k + 1; j < n; ++j) {
        const double t = r1 * a(j, k);
        for (Index i = j; i < n; ++i) a(i, j) -= a(i, k) * t;
      }
      for (Index i = k + 1; i < n; ++i) a(i, k) *= r1;
      pivots[k] = static_cast<int>(kp);
    } else {
      if (k + 2 < n) {
        double d21 = a(k + 1, k);
        const double d11 = a(k + 1, k + 1) / d21;
        const double d22 = a(k, k) / d21;
        const double t = 1.0 / (d11 * d22 - 1.0);
        d21 = t / d21;
        for (Index j = k + 2; j < n; ++j) {
          const double wk = d21 * (d11 * a(j, k) - a(j, k + 1));
          const double wkp1 = d21 * (d22 * a(j, k + 1) - a(j, k));
          for (Index i = j; i < n; ++i) a(i, j) -= a(i, k) * wk + a(i, k + 1) * wkp1;
          a(j, k) = wk;
          a(j, k + 1) = wkp1;
        }
      }
      pivots[k] = pivots[k + 1] = static_cast<int>(-kp - 1);
    }
    k += size;
  }
  return Status::ok;
}

void bunch_kaufman_solve(ConstMatrixView f, std::span<const int> pivots, std::span<double> b) {
  const Index n = f.rows();
  // L·D·y = P·b, interchanges applied as the factorisation made them.
  Index k = 0;
  while (k < n) {
    if (pivots[k] >= 0) {
      std::swap(b[k], b[pivots[k]]);
      for (Index i = k + 1; i < n; ++i) b[i] -= f(i, k) * b[k];
      b[k] /= f(k, k);
      k += 1;
    } else {
      std::swap(b[k + 1], b[-pivots[k] - 1]);
      for (Index i = k + 2; i < n; ++i) b[i] -= f(i, k) * b[k] + f(i, k + 1) * b[k + 1];
      const double akm1k = f(k + 1, k);
      const double akm1 = f(k, k) / akm1k;
      const double ak = f(k + 1, k + 1) / akm1k;
      const double denom = akm1 * ak - 1.0;
      const double bkm1 = b[k] / akm1k;
      const double bk = b[k + 1] / akm1k;
      b[k] = (ak * bkm1 - bk) / denom;
      b[k + 1] = (akm1 * bk - bkm1) / denom;
      k += 2;
    }
  }
  // Lᵀ·x = y, interchanges undone in reverse.
  k = n - 1;
  while (k >= 0) {
    if (pivots[k] >= 0) {
      b[k] -= dot(f.col(k) + k + 1, b.data() + k + 1, n - k - 1);
      std::swap(b[k], b[pivots[k]]);
      k -= 1;
    } else {
      b[k] -= dot(f.col(k) + k + 1, b.data() + k + 1, n - k - 1);
      b[k - 1] -= dot(f.col(k - 1) + k + 1, b.data() + k + 1, n - k - 1);
      std::swap(b[k], b[-pivots[k] - 1]);
      k -= 2;
    }
  }
}

void interchange(MatrixView a, Index i, Index j) {
  if (i == j) return;
  for (Index c = 0; c < a.cols(); ++c) std::swap(a(i, c), a(j, c));
  std::swap_ranges(a.col(i), a.col(i) + a.rows(), a.col(j));
}

}  // namespace norvik::linalg
