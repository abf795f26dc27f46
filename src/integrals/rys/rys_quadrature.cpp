#include "integrals/rys/rys_quadrature.h"

#include <cassert>
#include <cmath>

#include "common/error.h"
#include "integrals/generated/rysgrid.h"

namespace norvik::integrals::rys {

namespace {

double horner(const double* coefs, int ncoef, double s) {
  double value = coefs[0];
  for (int k = 1; k < ncoef; ++k) value = value * s + coefs[k];
  return value;
}

}  // namespace

const GridLayout& grid_layout(int n) noexcept {
  assert(n >= 1 && n <= kMaxRoots);
  return kGridLayouts[n - 1];
}

void rys_roots_unchecked(double x, int n, double* u, double* w) noexcept {
  const GridLayout& grid = kGridLayouts[n - 1];
  if (x >= grid.xmax) {
    const double root_x = std::sqrt(x);
    for (int i = 0; i < n; ++i) {
      u[i] = grid.hermite_roots[i] / x;
      w[i] = grid.hermite_weights[i] / root_x;
    }
    return;
  }
  // Find the band, then the segment; the last band also takes anything the
  // earlier ones do not, and a segment index is clamped into its band, so that
  // an argument on a seam (or a stray negative or NaN one) still meets a valid
  // polynomial.
  int first = 0;
  int b = 0;
  for (; b + 1 < grid.nbands; ++b) {
    const GridBand& band = grid.bands[b];
    if (x < band.start + band.count * band.width) break;
    first += band.count;
  }
  const GridBand& band = grid.bands[b];
  const double q = (x - band.start) / band.width;
  const int k = q > 0.0 ? (q < band.count ? static_cast<int>(q) : band.count - 1) : 0;
  const double s = x - (band.start + k * band.width + band.origin_offset);
  const std::size_t block = static_cast<std::size_t>(first + k) * n * grid.ncoef;
  const double* root_coefs = grid.roots + block;
  const double* weight_coefs = grid.weights + block;
  for (int i = 0; i < n; ++i) {
    u[i] = horner(root_coefs + i * grid.ncoef, grid.ncoef, s);
    w[i] = horner(weight_coefs + i * grid.ncoef, grid.ncoef, s);
  }
}

void rys_roots(double x, int n, std::span<double> u, std::span<double> w) {
  if (n > kMaxRoots) throw Error("Subroutine rysroot supports up to nroots=13");
  if (n < 1) return;
  assert(u.size() >= static_cast<std::size_t>(n) && w.size() >= static_cast<std::size_t>(n));
  rys_roots_unchecked(x, n, u.data(), w.data());
}

}  // namespace norvik::integrals::rys
