#include "geometry/vibrations.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <stdexcept>

#include "common/error.h"
#include "common/fortran_format.h"
#include "linalg/eigen.h"
#include "linalg/matrix.h"

namespace norvik::geometry {

namespace {

using linalg::Index;
using linalg::Matrix;

// cm⁻¹ per Å⁻¹ of √λ / 2π.
constexpr double kWavenumberScale = 1.0e8 / (2.0 * std::numbers::pi);

// Orthonormal vectors of the rigid translations and rotations in the
// mass-weighted coordinates, as the columns of the result; a rotation about an
// axis along a linear molecule vanishes and is left out.
Matrix rigid_motions(std::span<const double> masses, std::span<const double> x) {
  const Index n3 = static_cast<Index>(x.size());
  const std::size_t natom = masses.size();
  double total = 0.0, centre[3] = {0, 0, 0};
  for (std::size_t a = 0; a < natom; ++a) {
    total += masses[a];
    for (int k = 0; k < 3; ++k) centre[k] += masses[a] * x[3 * a + k];
  }
  for (double& c : centre) c /= total;
  std::vector<std::vector<double>> vectors;
  for (int k = 0; k < 3; ++k) {
    std::vector<double> v(static_cast<std::size_t>(n3), 0.0);
    for (std::size_t a = 0; a < natom; ++a) v[3 * a + k] = std::sqrt(masses[a]);
    vectors.push_back(v);
  }
  for (int k = 0; k < 3; ++k) {
    std::vector<double> v(static_cast<std::size_t>(n3), 0.0);
    const int i = (k + 1) % 3, j = (k + 2) % 3;
    for (std::size_t a = 0; a < natom; ++a) {
      const double s = std::sqrt(masses[a]);
      v[3 * a + j] = s * (x[3 * a + i] - centre[i]);
      v[3 * a + i] = -s * (x[3 * a + j] - centre[j]);
    }
    vectors.push_back(v);
  }
  // Gram–Schmidt, twice for accuracy; a vector that vanishes is dropped.
  std::vector<std::vector<double>> basis;
  for (auto v : vectors) {
    double before = 0.0;
    for (double c : v) before += c * c;
    for (int pass = 0; pass < 2; ++pass)
      for (const auto& b : basis) {
        double d = 0.0;
        for (Index i = 0; i < n3; ++i)
          d += b[static_cast<std::size_t>(i)] * v[static_cast<std::size_t>(i)];
        for (Index i = 0; i < n3; ++i)
          v[static_cast<std::size_t>(i)] -= d * b[static_cast<std::size_t>(i)];
      }
    double norm = 0.0;
    for (double c : v) norm += c * c;
    if (before == 0.0 || norm < 1e-10 * before) continue;
    norm = std::sqrt(norm);
    for (double& c : v) c /= norm;
    basis.push_back(v);
  }
  Matrix m(n3, static_cast<Index>(basis.size()));
  for (std::size_t k = 0; k < basis.size(); ++k)
    for (Index i = 0; i < n3; ++i)
      m(i, static_cast<Index>(k)) = basis[k][static_cast<std::size_t>(i)];
  return m;
}

}  // namespace

std::vector<double> hessian_by_differences(const GradientFunction& gradient,
                                           std::span<const double> x, double h, bool four_point) {
  const std::size_t n3 = x.size();
  std::vector<double> hess(n3 * n3, 0.0);
  std::vector<double> moved(x.begin(), x.end());
  auto at = [&](std::size_t i, double step) {
    moved[i] = x[i] + step;
    std::vector<double> g = gradient(moved);
    moved[i] = x[i];
    if (g.size() != n3) throw std::invalid_argument("hessian_by_differences: gradient size");
    return g;
  };
  for (std::size_t i = 0; i < n3; ++i) {
    const std::vector<double> gp = at(i, h), gm = at(i, -h);
    if (four_point) {
      const std::vector<double> gp2 = at(i, 2 * h), gm2 = at(i, -2 * h);
      for (std::size_t j = 0; j < n3; ++j)
        hess[j + n3 * i] = (8.0 * (gp[j] - gm[j]) - (gp2[j] - gm2[j])) / (12.0 * h);
    } else {
      for (std::size_t j = 0; j < n3; ++j) hess[j + n3 * i] = (gp[j] - gm[j]) / (2.0 * h);
    }
  }
  for (std::size_t i = 0; i < n3; ++i)
    for (std::size_t j = 0; j < i; ++j) {
      const double s = 0.5 * (hess[i + n3 * j] + hess[j + n3 * i]);
      hess[i + n3 * j] = hess[j + n3 * i] = s;
    }
  return hess;
}

NormalModes normal_modes(std::span<const double> hessian, std::span<const double> masses,
                         std::span<const double> x) {
  const std::size_t natom = masses.size();
  const std::size_t n3 = 3 * natom;
  if (x.size() != n3 || hessian.size() != n3 * n3) {
    throw std::invalid_argument("normal_modes: array sizes");
  }
  const Index n = static_cast<Index>(n3);
  // Mass-weighted Hessian, then P·H·P with P the projector off the rigid motions.
  Matrix hm(n, n);
  for (Index i = 0; i < n; ++i)
    for (Index j = 0; j < n; ++j)
      hm(i, j) = hessian[static_cast<std::size_t>(i + n * j)] /
                 std::sqrt(masses[static_cast<std::size_t>(i / 3)] *
                           masses[static_cast<std::size_t>(j / 3)]);
  const Matrix rigid = rigid_motions(masses, x);
  Matrix p(n, n);
  for (Index i = 0; i < n; ++i)
    for (Index j = 0; j < n; ++j) {
      double s = i == j ? 1.0 : 0.0;
      for (Index k = 0; k < rigid.cols(); ++k) s -= rigid(i, k) * rigid(j, k);
      p(i, j) = s;
    }
  Matrix t(n, n), projected(n, n);
  for (Index i = 0; i < n; ++i)
    for (Index j = 0; j < n; ++j) {
      double s = 0.0;
      for (Index k = 0; k < n; ++k) s += hm(i, k) * p(k, j);
      t(i, j) = s;
    }
  for (Index i = 0; i < n; ++i)
    for (Index j = 0; j < n; ++j) {
      double s = 0.0;
      for (Index k = 0; k < n; ++k) s += p(i, k) * t(k, j);
      projected(i, j) = s;
    }
  NormalModes out;
  out.linear = rigid.cols() == 5;
  out.eigenvalues.assign(n3, 0.0);
  Matrix v(n, n);
  if (linalg::symmetric_eigen(projected.view(), out.eigenvalues, v.view()) != linalg::Status::ok) {
    throw Error(fortran::list_directed({"Diagonalization of the Hessian failed."}));
  }
  out.wavenumbers.resize(n3);
  out.modes.assign(n3 * n3, 0.0);
  for (std::size_t k = 0; k < n3; ++k) {
    const double l = out.eigenvalues[k];
    out.wavenumbers[k] = (l < 0 ? -1.0 : 1.0) * std::sqrt(std::abs(l)) * kWavenumberScale;
    // Cartesian displacement: the mass-weighted vector divided by √m, normalised.
    double norm = 0.0;
    for (std::size_t i = 0; i < n3; ++i) {
      const double d = v(static_cast<Index>(i), static_cast<Index>(k)) / std::sqrt(masses[i / 3]);
      out.modes[i + n3 * k] = d;
      norm += d * d;
    }
    norm = std::sqrt(norm);
    if (norm > 0.0)
      for (std::size_t i = 0; i < n3; ++i) out.modes[i + n3 * k] /= norm;
  }
  return out;
}

}  // namespace norvik::geometry
