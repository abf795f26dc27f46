#include "geometry/vibrations.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>
#include <stdexcept>

#include "common/constants.h"
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

// The infrared intensity N_A π/(3c²)·|∂μ/∂Q|²/4πε₀ of one (e/√amu)² of dipole
// derivative: with e²/4πε₀ = αħc it is N_A π αħc / (3 m_u c²), an area per
// mole; in km/mol (1 Å = 1e-13 km) about 974.9.
constexpr double kInfraredKmPerMol =
    constants::kAvogadro * std::numbers::pi * constants::kHbarCEvAngstrom /
    constants::kInverseFineStructure / (3.0 * constants::kAtomicMassUnitEv) * 1e-13;

// Makes a square matrix symmetric by averaging it with its transpose.
void symmetrize(std::span<double> hessian, std::size_t n3);

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

DerivativeColumn difference_column(const PointFunction& point, std::span<const double> x,
                                   std::size_t k, const DifferenceRule& rule) {
  const std::size_t n3 = x.size();
  std::vector<double> moved(x.begin(), x.end());
  auto at = [&](double step) {
    moved[k] = x[k] + step;
    DisplacedPoint p = point(moved);
    moved[k] = x[k];
    if (p.gradient.size() != n3) throw std::invalid_argument("difference_column: gradient size");
    return p;
  };
  const double h = rule.step;
  // Central differences: (f(+h) − f(−h)) / 2h, or with the four points
  // (8[f(+h) − f(−h)] − [f(+2h) − f(−2h)]) / 12h.
  const DisplacedPoint plus = at(h), minus = at(-h);
  std::optional<DisplacedPoint> plus2, minus2;
  if (rule.four_point) {
    plus2 = at(2 * h);
    minus2 = at(-2 * h);
  }
  auto difference = [&](auto member, std::size_t i) {
    const double near = member(plus, i) - member(minus, i);
    if (!rule.four_point) return near / (2.0 * h);
    return (8.0 * near - (member(*plus2, i) - member(*minus2, i))) / (12.0 * h);
  };
  DerivativeColumn column;
  column.hessian.resize(n3);
  for (std::size_t i = 0; i < n3; ++i)
    column.hessian[i] =
        difference([](const DisplacedPoint& p, std::size_t j) { return p.gradient[j]; }, i);
  for (std::size_t i = 0; i < 3; ++i)
    column.dipole[i] =
        difference([](const DisplacedPoint& p, std::size_t j) { return p.dipole[j]; }, i);
  for (std::size_t i = 0; i < 9; ++i)
    column.polarizability[i] =
        difference([](const DisplacedPoint& p, std::size_t j) { return p.polarizability[j]; }, i);
  return column;
}

SecondDerivatives second_derivatives(
    const PointFunction& point, std::span<const double> x, const DifferenceRule& rule,
    std::span<const AtomRotation> rotations,
    const std::function<void(std::size_t, std::size_t)>& column_done) {
  const std::size_t n3 = x.size(), natom = n3 / 3;
  SecondDerivatives out;
  out.hessian.assign(n3 * n3, 0.0);
  out.dipole.assign(3 * n3, 0.0);
  out.polarizability.assign(9 * n3, 0.0);
  // Which atom each atom is made from, and by which rotation: the first atom
  // of every set of equivalent atoms is displaced itself.
  std::vector<int> source(natom, -1);
  std::vector<const AtomRotation*> by(natom, nullptr);
  for (std::size_t a = 0; a < natom; ++a) {
    if (source[a] >= 0) continue;
    source[a] = static_cast<int>(a);
    for (const AtomRotation& g : rotations) {
      const auto c = static_cast<std::size_t>(g.image[a]);
      if (source[c] < 0) {
        source[c] = static_cast<int>(a);
        by[c] = &g;
      }
    }
  }
  std::size_t total = 0, done = 0;
  for (std::size_t a = 0; a < natom; ++a) total += source[a] == static_cast<int>(a) ? 3 : 0;
  if (column_done) column_done(done, total);
  for (std::size_t a = 0; a < natom; ++a) {
    if (source[a] != static_cast<int>(a)) continue;
    ++out.displaced_atoms;
    for (std::size_t k = 3 * a; k < 3 * a + 3; ++k) {
      const DerivativeColumn c = difference_column(point, x, k, rule);
      std::copy(c.hessian.begin(), c.hessian.end(), out.hessian.begin() + n3 * k);
      std::copy(c.dipole.begin(), c.dipole.end(), out.dipole.begin() + 3 * k);
      std::copy(c.polarizability.begin(), c.polarizability.end(),
                out.polarizability.begin() + 9 * k);
      if (column_done) column_done(++done, total);
    }
  }
  // The columns of atom c = g(a): H(g(b), c) = R H(b, a) Rᵀ, ∂μ/∂x_c = R (∂μ/∂x_a) Rᵀ and
  // ∂α_ij/∂x_ck = R_ii′ R_jj′ R_kk′ ∂α_i′j′/∂x_ak′.
  for (std::size_t c = 0; c < natom; ++c) {
    if (by[c] == nullptr) continue;
    const Matrix3& r = by[c]->r;
    const std::size_t a = static_cast<std::size_t>(source[c]);
    auto turn = [&](auto block_in, auto block_out) {  // out(i, j) = Σ R_ii′ in(i′, j′) R_jj′
      for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) {
          double s = 0.0;
          for (int p = 0; p < 3; ++p)
            for (int q = 0; q < 3; ++q) s += r[i + 3 * p] * block_in(p, q) * r[j + 3 * q];
          block_out(i, j, s);
        }
    };
    for (std::size_t b = 0; b < natom; ++b) {
      const std::size_t gb = static_cast<std::size_t>(by[c]->image[b]);
      turn([&](int p, int q) { return out.hessian[(3 * b + p) + n3 * (3 * a + q)]; },
           [&](int i, int j, double v) { out.hessian[(3 * gb + i) + n3 * (3 * c + j)] = v; });
    }
    turn([&](int p, int q) { return out.dipole[p + 3 * (3 * a + q)]; },
         [&](int i, int j, double v) { out.dipole[i + 3 * (3 * c + j)] = v; });
    for (int i = 0; i < 3; ++i)
      for (int j = 0; j < 3; ++j)
        for (int k = 0; k < 3; ++k) {
          double s = 0.0;
          for (int p = 0; p < 3; ++p)
            for (int q = 0; q < 3; ++q)
              for (int t = 0; t < 3; ++t)
                s += r[i + 3 * p] * r[j + 3 * q] * r[k + 3 * t] *
                     out.polarizability[(p + 3 * q) + 9 * (3 * a + t)];
          out.polarizability[(i + 3 * j) + 9 * (3 * c + k)] = s;
        }
  }
  symmetrize(out.hessian, n3);
  return out;
}

namespace {

void symmetrize(std::span<double> hessian, std::size_t n3) {
  for (std::size_t i = 0; i < n3; ++i)
    for (std::size_t j = 0; j < i; ++j) {
      const double s = 0.5 * (hessian[i + n3 * j] + hessian[j + n3 * i]);
      hessian[i + n3 * j] = hessian[j + n3 * i] = s;
    }
}

}  // namespace

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

Intensities intensities(std::span<const double> modes, std::span<const double> masses,
                        std::span<const double> dipole_derivatives,
                        std::span<const double> polarizability_derivatives) {
  const std::size_t n3 = 3 * masses.size();
  if (modes.size() != n3 * n3 || dipole_derivatives.size() != 3 * n3 ||
      (!polarizability_derivatives.empty() && polarizability_derivatives.size() != 9 * n3)) {
    throw std::invalid_argument("intensities: array sizes");
  }
  // The normal coordinate of a Cartesian displacement d is Q = |√m d| (m in
  // amu, d in Å), so ∂/∂Q = Σ_i d_i ∂/∂x_i / |√m d|.
  std::vector<double> norm(n3, 0.0);
  for (std::size_t k = 0; k < n3; ++k) {
    double s = 0.0;
    for (std::size_t i = 0; i < n3; ++i)
      s += masses[i / 3] / constants::kAtomicMassUnitEv * std::pow(modes[i + n3 * k], 2);
    norm[k] = s > 0.0 ? 1.0 / std::sqrt(s) : 0.0;
  }
  auto along = [&](std::span<const double> d, std::size_t stride, std::size_t c, std::size_t k) {
    double s = 0.0;
    for (std::size_t i = 0; i < n3; ++i) s += d[c + stride * i] * modes[i + n3 * k];
    return s * norm[k];
  };
  Intensities out;
  out.infrared.resize(n3);
  for (std::size_t k = 0; k < n3; ++k) {
    double d2 = 0.0;
    for (std::size_t c = 0; c < 3; ++c) d2 += std::pow(along(dipole_derivatives, 3, c, k), 2);
    out.infrared[k] = kInfraredKmPerMol * d2;
  }
  if (polarizability_derivatives.empty()) return out;
  out.raman.resize(n3);
  out.depolarization.resize(n3);
  for (std::size_t k = 0; k < n3; ++k) {
    double a[9];
    for (std::size_t c = 0; c < 9; ++c) a[c] = along(polarizability_derivatives, 9, c, k);
    const double mean = (a[0] + a[4] + a[8]) / 3.0;
    const double off = (a[1] + a[3]) / 2.0, off2 = (a[2] + a[6]) / 2.0, off3 = (a[5] + a[7]) / 2.0;
    const double gamma2 =
        0.5 * (std::pow(a[0] - a[4], 2) + std::pow(a[4] - a[8], 2) + std::pow(a[8] - a[0], 2) +
               6.0 * (off * off + off2 * off2 + off3 * off3));
    out.raman[k] = 45.0 * mean * mean + 7.0 * gamma2;
    const double denominator = 45.0 * mean * mean + 4.0 * gamma2;
    out.depolarization[k] = denominator > 0.0 ? 3.0 * gamma2 / denominator : 0.0;
  }
  return out;
}

std::vector<double> spectrum_grid(double low, double high, int npoints) {
  std::vector<double> grid(static_cast<std::size_t>(std::max(npoints, 0)));
  for (std::size_t p = 0; p < grid.size(); ++p)
    grid[p] = grid.size() == 1 ? low
                               : low + (high - low) * static_cast<double>(p) /
                                           static_cast<double>(grid.size() - 1);
  return grid;
}

std::vector<double> broadened_spectrum(std::span<const double> wavenumbers,
                                       std::span<const double> intensities, double fwhm, double low,
                                       double high, int npoints) {
  if (intensities.size() != wavenumbers.size() || !(fwhm > 0.0)) {
    throw std::invalid_argument("broadened_spectrum: arguments");
  }
  const double half = 0.5 * fwhm;
  std::vector<double> out = spectrum_grid(low, high, npoints);
  for (double& v : out) {
    const double w = v;
    double s = 0.0;
    for (std::size_t k = 0; k < wavenumbers.size(); ++k)
      s += intensities[k] * half /
           (std::numbers::pi * ((w - wavenumbers[k]) * (w - wavenumbers[k]) + half * half));
    v = s;
  }
  return out;
}

}  // namespace norvik::geometry
