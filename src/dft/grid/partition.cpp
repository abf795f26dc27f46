#include "dft/grid/partition.h"

#include <cmath>
#include <vector>

namespace norvik::dft {

namespace {

// The Becke partition iterates p three times.
constexpr int kBeckeOrder = 3;

Point position(std::span<const double> coords, int a) {
  const auto k = 3 * static_cast<std::size_t>(a);
  return {coords[k], coords[k + 1], coords[k + 2]};
}

double distance(const Point& x, const Point& y) {
  const double dx = x[0] - y[0], dy = x[1] - y[1], dz = x[2] - y[2];
  return std::sqrt(dx * dx + dy * dy + dz * dz);
}

int atoms(std::span<const double> coords) {
  return static_cast<int>(coords.size() / 3);
}

// ds_3/dμ = −½ f_3'(μ), f_3' = p'(f_2)·p'(f_1)·p'(μ), p'(x) = 3(1 − x²)/2.
double ds_dmu(double mu) {
  const double f1 = becke_p(mu);
  const double f2 = becke_p(f1);
  auto dp = [](double x) { return 1.5 * (1.0 - x * x); };
  return -0.5 * dp(f2) * dp(f1) * dp(mu);
}

// ∂μ_AB/∂R_B at fixed r.
Point grad_mu_b(std::span<const double> coords, int a, int b, const Point& r) {
  const Point ra = position(coords, a), rb = position(coords, b);
  const double dist_b = distance(r, rb), rab = distance(ra, rb);
  const double mu = mu_ab(coords, a, b, r);
  Point g;
  for (std::size_t k = 0; k < 3; ++k)
    g[k] = (r[k] - rb[k]) / (dist_b * rab) + mu * (ra[k] - rb[k]) / (rab * rab);
  return g;
}

// ∂μ_AB/∂R_C at fixed r: zero unless C is A or B.
Point grad_mu_any(std::span<const double> coords, int a, int b, int c, const Point& r) {
  if (c == a) return grad_mu(coords, a, b, r);
  if (c == b) return grad_mu_b(coords, a, b, r);
  return {0.0, 0.0, 0.0};
}

}  // namespace

double becke_p(double x) {
  return 0.5 * x * (3.0 - x * x);
}

double becke_f(int k, double mu) {
  double f = mu;
  for (int i = 0; i < k; ++i) f = becke_p(f);
  return f;
}

double becke_s(int k, double mu) {
  return 0.5 * (1.0 - becke_f(k, mu));
}

double mu_ab(std::span<const double> coords, int a, int b, const Point& r) {
  const Point ra = position(coords, a), rb = position(coords, b);
  return (distance(r, ra) - distance(r, rb)) / distance(ra, rb);
}

double cell_product(std::span<const double> coords, int a, const Point& r) {
  double p = 1.0;
  for (int b = 0; b < atoms(coords); ++b) {
    if (b != a) p *= becke_s(kBeckeOrder, mu_ab(coords, a, b, r));
  }
  return p;
}

double cell_sum(std::span<const double> coords, const Point& r) {
  double z = 0.0;
  for (int b = 0; b < atoms(coords); ++b) z += cell_product(coords, b, r);
  return z;
}

double fuzzy_weight(std::span<const double> coords, int a, const Point& r) {
  return cell_product(coords, a, r) / cell_sum(coords, r);
}

Point grad_mu(std::span<const double> coords, int a, int b, const Point& r) {
  const Point ra = position(coords, a), rb = position(coords, b);
  const double dist_a = distance(r, ra), dist_b = distance(r, rb), rab = distance(ra, rb);
  Point g;
  for (std::size_t k = 0; k < 3; ++k) {
    g[k] =
        (ra[k] - r[k]) / (dist_a * rab) - (dist_a - dist_b) * (ra[k] - rb[k]) / (rab * rab * rab);
  }
  return g;
}

Point grad_cell_product(std::span<const double> coords, int a, int c, const Point& r) {
  // ∂P_A = Σ_B Π_{D≠A,B} s(μ_AD) · s'(μ_AB) · ∂μ_AB, without dividing by an s
  // that may be zero.
  const int n = atoms(coords);
  Point g{0.0, 0.0, 0.0};
  for (int b = 0; b < n; ++b) {
    if (b == a || (c != a && c != b)) continue;
    double others = 1.0;
    for (int d = 0; d < n; ++d) {
      if (d != a && d != b) others *= becke_s(kBeckeOrder, mu_ab(coords, a, d, r));
    }
    const double factor = others * ds_dmu(mu_ab(coords, a, b, r));
    const Point dmu = grad_mu_any(coords, a, b, c, r);
    for (std::size_t k = 0; k < 3; ++k) g[k] += factor * dmu[k];
  }
  return g;
}

Point grad_cell_sum(std::span<const double> coords, int c, const Point& r) {
  Point g{0.0, 0.0, 0.0};
  for (int b = 0; b < atoms(coords); ++b) {
    const Point d = grad_cell_product(coords, b, c, r);
    for (std::size_t k = 0; k < 3; ++k) g[k] += d[k];
  }
  return g;
}

Point grad_fuzzy(std::span<const double> coords, int a, int c, const Point& r) {
  const double pa = cell_product(coords, a, r);
  const double z = cell_sum(coords, r);
  const Point dpa = grad_cell_product(coords, a, c, r);
  const Point dz = grad_cell_sum(coords, c, r);
  Point g;
  for (std::size_t k = 0; k < 3; ++k) g[k] = dpa[k] / z - pa * dz[k] / (z * z);
  return g;
}

void grad_point_weight(std::span<const double> coords, int a, const Point& r,
                       std::span<double> grad) {
  const int n = atoms(coords);
  Point own{0.0, 0.0, 0.0};
  for (int c = 0; c < n; ++c) {
    if (c == a) continue;
    const Point g = grad_fuzzy(coords, a, c, r);
    for (std::size_t k = 0; k < 3; ++k) {
      grad[3 * static_cast<std::size_t>(c) + k] = g[k];
      own[k] -= g[k];
    }
  }
  // The weight depends on the positions only through differences, and the
  // point moves with A: its own column balances the others.
  for (std::size_t k = 0; k < 3; ++k) grad[3 * static_cast<std::size_t>(a) + k] = own[k];
}

MovingPointWeight::MovingPointWeight(std::span<const double> coords)
    : n_(atoms(coords)), coords_(coords.begin(), coords.end()) {
  const auto n = static_cast<std::size_t>(n_);
  inv_dist_.assign(n * n, 0.0);
  for (int b = 0; b < n_; ++b) {
    for (int d = 0; d < n_; ++d) {
      if (d != b) {
        inv_dist_[static_cast<std::size_t>(b + n_ * d)] =
            1.0 / distance(position(coords, b), position(coords, d));
      }
    }
  }
  dist_.resize(n);
  unit_.resize(3 * n);
  mu_.resize(n * n);
  ds_.resize(n * n);
  s_.resize(n * n);
  others_.resize(n * n);
}

double MovingPointWeight::operator()(int a, const Point& r, std::span<double> grad) {
  const auto n = static_cast<std::size_t>(n_);
  const auto at = [n](int b, int d) {
    return static_cast<std::size_t>(b) + n * static_cast<std::size_t>(d);
  };
  for (std::size_t b = 0; b < n; ++b) {
    double d2 = 0.0;
    for (std::size_t k = 0; k < 3; ++k) {
      unit_[3 * b + k] = r[k] - coords_[3 * b + k];
      d2 += unit_[3 * b + k] * unit_[3 * b + k];
    }
    dist_[b] = std::sqrt(d2);
    for (std::size_t k = 0; k < 3; ++k) unit_[3 * b + k] /= dist_[b];
  }
  for (int b = 0; b < n_; ++b) {
    for (int d = 0; d < n_; ++d) {
      if (d == b) continue;
      const double mu = (dist_[static_cast<std::size_t>(b)] - dist_[static_cast<std::size_t>(d)]) *
                        inv_dist_[at(b, d)];
      mu_[at(b, d)] = mu;
      s_[at(b, d)] = becke_s(kBeckeOrder, mu);
      ds_[at(b, d)] = ds_dmu(mu);
    }
  }
  // others(B, D) = Π_{E≠B,D} s_BE from running products from both ends, so
  // that no factor is divided out (s reaches zero at μ = 1).
  double z = 0.0, pa = 0.0;
  for (int b = 0; b < n_; ++b) {
    double before = 1.0;
    for (int d = 0; d < n_; ++d) {
      others_[at(b, d)] = before;
      if (d != b) before *= s_[at(b, d)];
    }
    double after = 1.0;
    for (int d = n_ - 1; d >= 0; --d) {
      others_[at(b, d)] *= after;
      if (d != b) after *= s_[at(b, d)];
    }
    z += before;
    if (b == a) pa = before;
  }
  // At fixed r, with e_CD = (R_C − R_D)/R_CD²:
  //   ∂μ_CD/∂R_C = −u_C/R_CD − μ_CD e_CD, and μ_DC = −μ_CD, s' even, so
  //   ∂P_A/∂R_C = others(A, C) s'_AC ∂μ_AC/∂R_C  (C ≠ A),
  //   ∂Z/∂R_C   = Σ_{D≠C} s'_CD (others(C, D) − others(D, C)) ∂μ_CD/∂R_C.
  // The point moves with A: A's column balances the others.
  Point own{0.0, 0.0, 0.0};
  for (int c = 0; c < n_; ++c) {
    if (c == a) continue;
    const auto uc = static_cast<std::size_t>(c);
    Point dz{0.0, 0.0, 0.0}, dpa{0.0, 0.0, 0.0};
    for (int d = 0; d < n_; ++d) {
      if (d == c) continue;
      const double inv = inv_dist_[at(c, d)];
      const double factor = ds_[at(c, d)] * (others_[at(c, d)] - others_[at(d, c)]);
      const double pa_factor = d == a ? -others_[at(a, c)] * ds_[at(a, c)] : 0.0;
      for (std::size_t k = 0; k < 3; ++k) {
        const double e =
            (coords_[3 * uc + k] - coords_[3 * static_cast<std::size_t>(d) + k]) * inv * inv;
        const double dmu = -unit_[3 * uc + k] * inv - mu_[at(c, d)] * e;
        dz[k] += factor * dmu;
        // ∂μ_AC/∂R_C = −∂μ_CA/∂R_C.
        dpa[k] += pa_factor * dmu;
      }
    }
    for (std::size_t k = 0; k < 3; ++k) {
      const double g = dpa[k] / z - pa * dz[k] / (z * z);
      grad[3 * uc + k] = g;
      own[k] -= g;
    }
  }
  for (std::size_t k = 0; k < 3; ++k) grad[3 * static_cast<std::size_t>(a) + k] = own[k];
  return pa / z;
}

}  // namespace norvik::dft
