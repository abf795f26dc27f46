#include "geometry/symmetry_number.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <utility>

namespace norvik::geometry {

namespace {

constexpr double kJacobiTolerance = 1e-12;
constexpr int kJacobiSweeps = 100;
constexpr std::size_t kInitialRotations = 120;

double& at(Matrix3& m, int i, int j) {
  return m[i + 3 * j];
}
double at(const Matrix3& m, int i, int j) {
  return m[i + 3 * j];
}

double off_diagonal(const Matrix3& a) {
  return std::abs(at(a, 0, 1)) + std::abs(at(a, 0, 2)) + std::abs(at(a, 1, 2));
}

double squared_length(const Vector3& v) {
  return v[0] * v[0] + v[1] * v[1] + v[2] * v[2];
}

Vector3 atom(std::span<const double> coords, std::size_t i) {
  return {coords[3 * i], coords[3 * i + 1], coords[3 * i + 2]};
}

// The distinct rotations found so far, the identity first.  Threads append
// to it only inside the critical section update_rotation_list.
class RotationList {
 public:
  RotationList() {
    list_.reserve(kInitialRotations);
    list_.push_back({1, 0, 0, 0, 1, 0, 0, 0, 1});
  }

  void add_unless_listed(const Matrix3& r) {
#pragma omp critical(update_rotation_list)
    {
      if (!is_duplicate(r, list_)) list_.push_back(r);
    }
  }

  int count() const {
    return static_cast<int>(list_.size());
  }

 private:
  std::vector<Matrix3> list_;
};

// Every rotation of order 2 to 8 about `axis` that maps the molecule onto
// itself goes into the list.
void try_rotations(std::span<const std::string_view> labels, std::span<const double> coords,
                   const Vector3& axis, RotationList& rotations) {
  for (int n = kLowestOrder; n <= kHighestOrder; ++n) {
    for (int i = 1; i < n; ++i) {
      const double angle = 2.0 * std::numbers::pi * i / n;
      if (is_symmetric(labels, coords, axis, angle)) {
        rotations.add_unless_listed(rotation_matrix(axis, angle));
      }
    }
  }
}

}  // namespace

Matrix3 rotation_matrix(const Vector3& axis, double angle) {
  const double norm = std::sqrt(squared_length(axis));
  const double x = axis[0] / norm, y = axis[1] / norm, z = axis[2] / norm;
  const double c = std::cos(angle), s = std::sin(angle), t = 1.0 - c;
  Matrix3 r;
  at(r, 0, 0) = c + x * x * t;
  at(r, 0, 1) = x * y * t - z * s;
  at(r, 0, 2) = x * z * t + y * s;
  at(r, 1, 0) = x * y * t + z * s;
  at(r, 1, 1) = c + y * y * t;
  at(r, 1, 2) = y * z * t - x * s;
  at(r, 2, 0) = x * z * t - y * s;
  at(r, 2, 1) = y * z * t + x * s;
  at(r, 2, 2) = c + z * z * t;
  return r;
}

Eigen3 jacobi(const Matrix3& input) {
  Matrix3 a = input;
  Matrix3 v{1, 0, 0, 0, 1, 0, 0, 0, 1};
  for (int sweep = 0; sweep < kJacobiSweeps && off_diagonal(a) >= kJacobiTolerance; ++sweep) {
    for (int p = 0; p < 2; ++p) {
      for (int q = p + 1; q < 3; ++q) {
        const double apq = at(a, p, q);
        if (!(std::abs(apq) > kJacobiTolerance)) continue;
        // The rotation that zeroes (p, q), with the smaller angle.
        const double theta = (at(a, q, q) - at(a, p, p)) / (2.0 * apq);
        const double t = std::copysign(1.0, theta) / (std::abs(theta) + std::hypot(theta, 1.0));
        const double c = 1.0 / std::hypot(t, 1.0);
        const double s = t * c;
        for (int k = 0; k < 3; ++k) {
          const double akp = at(a, k, p), akq = at(a, k, q);
          at(a, k, p) = c * akp - s * akq;
          at(a, k, q) = s * akp + c * akq;
        }
        for (int k = 0; k < 3; ++k) {
          const double apk = at(a, p, k), aqk = at(a, q, k);
          at(a, p, k) = c * apk - s * aqk;
          at(a, q, k) = s * apk + c * aqk;
        }
        for (int k = 0; k < 3; ++k) {
          const double vkp = at(v, k, p), vkq = at(v, k, q);
          at(v, k, p) = c * vkp - s * vkq;
          at(v, k, q) = s * vkp + c * vkq;
        }
      }
    }
  }
  std::array<int, 3> order{0, 1, 2};
  std::sort(order.begin(), order.end(), [&](int i, int j) { return at(a, i, i) < at(a, j, j); });
  Eigen3 e;
  for (int k = 0; k < 3; ++k) {
    e.values[k] = at(a, order[k], order[k]);
    for (int i = 0; i < 3; ++i) at(e.vectors, i, k) = at(v, i, order[k]);
  }
  return e;
}

bool is_symmetric(std::span<const std::string_view> labels, std::span<const double> coords,
                  const Vector3& axis, double angle) {
  const Matrix3 r = rotation_matrix(axis, angle);
  const std::size_t n = labels.size();
  std::vector<char> matched(n, 0);
  for (std::size_t i = 0; i < n; ++i) {
    const Vector3 p = atom(coords, i);
    Vector3 q{};
    for (int k = 0; k < 3; ++k) q[k] = at(r, k, 0) * p[0] + at(r, k, 1) * p[1] + at(r, k, 2) * p[2];
    bool found = false;
    for (std::size_t j = 0; j < n && !found; ++j) {
      if (matched[j] || labels[j] != labels[i]) continue;
      const Vector3 d = atom(coords, j);
      const Vector3 diff{d[0] - q[0], d[1] - q[1], d[2] - q[2]};
      if (squared_length(diff) < kAtomMatchSquared) {
        matched[j] = 1;
        found = true;
      }
    }
    if (!found) return false;
  }
  return true;
}

bool is_duplicate(const Matrix3& r, std::span<const Matrix3> list) {
  return std::any_of(list.begin(), list.end(), [&](const Matrix3& m) {
    for (int k = 0; k < 9; ++k) {
      if (std::abs(m[k] - r[k]) > kRotationMatchTolerance) return false;
    }
    return true;
  });
}

int symmetry_number(std::span<const std::string_view> labels, std::span<const double> input) {
  const std::size_t n = labels.size();
  if (n == 0) return 1;

  // Centre on the unweighted mean: symmetry elements pass through it.
  std::vector<double> coords(input.begin(), input.begin() + 3 * n);
  Vector3 mean{};
  for (std::size_t i = 0; i < n; ++i) {
    for (int k = 0; k < 3; ++k) mean[k] += coords[3 * i + k] / static_cast<double>(n);
  }
  for (std::size_t i = 0; i < n; ++i) {
    for (int k = 0; k < 3; ++k) coords[3 * i + k] -= mean[k];
  }

  // Inertia tensor with unit masses.
  Matrix3 inertia{};
  for (std::size_t i = 0; i < n; ++i) {
    const Vector3 p = atom(coords, i);
    at(inertia, 0, 0) += p[1] * p[1] + p[2] * p[2];
    at(inertia, 1, 1) += p[0] * p[0] + p[2] * p[2];
    at(inertia, 2, 2) += p[0] * p[0] + p[1] * p[1];
    at(inertia, 0, 1) -= p[0] * p[1];
    at(inertia, 0, 2) -= p[0] * p[2];
    at(inertia, 1, 2) -= p[1] * p[2];
  }
  at(inertia, 1, 0) = at(inertia, 0, 1);
  at(inertia, 2, 0) = at(inertia, 0, 2);
  at(inertia, 2, 1) = at(inertia, 1, 2);
  const Eigen3 principal = jacobi(inertia);
  auto principal_axis = [&](int k) {
    return Vector3{at(principal.vectors, 0, k), at(principal.vectors, 1, k),
                   at(principal.vectors, 2, k)};
  };

  const double smallest = std::min({std::abs(principal.values[0]), std::abs(principal.values[1]),
                                    std::abs(principal.values[2])});
  if (smallest < kLinearMoment) {
    // A linear molecule has σ = 2 when a half turn about a perpendicular axis
    // maps it onto itself.
    for (int k = 0; k < 3; ++k) {
      if (std::abs(principal.values[k]) < kLinearMoment) continue;
      if (is_symmetric(labels, coords, principal_axis(k), std::numbers::pi)) return 2;
    }
    return 1;
  }

  RotationList rotations;
  const long long atoms = static_cast<long long>(n);

#pragma omp parallel for schedule(dynamic)
  for (long long i = 0; i < atoms; ++i) {
    const Vector3 ri = atom(coords, i);
    if (squared_length(ri) >= kAxisSquared) try_rotations(labels, coords, ri, rotations);
    for (long long j = i + 1; j < atoms; ++j) {
      const Vector3 rj = atom(coords, j);
      const Vector3 mid{(ri[0] + rj[0]) / 2, (ri[1] + rj[1]) / 2, (ri[2] + rj[2]) / 2};
      if (squared_length(mid) >= kAxisSquared) try_rotations(labels, coords, mid, rotations);
    }
  }

  for (int k = 0; k < 3; ++k) {
    const Vector3 axis = principal_axis(k);
    if (squared_length(axis) >= kAxisSquared) try_rotations(labels, coords, axis, rotations);
  }

#pragma omp parallel for schedule(dynamic)
  for (long long i = 0; i < atoms; ++i) {
    const Vector3 ri = atom(coords, i);
    for (long long j = i + 1; j < atoms; ++j) {
      const Vector3 rj = atom(coords, j);
      for (long long k = j + 1; k < atoms; ++k) {
        const Vector3 rk = atom(coords, k);
        const Vector3 centroid{(ri[0] + rj[0] + rk[0]) / 3, (ri[1] + rj[1] + rk[1]) / 3,
                               (ri[2] + rj[2] + rk[2]) / 3};
        if (squared_length(centroid) >= kCentroidAxisSquared) {
          try_rotations(labels, coords, centroid, rotations);
        }
      }
    }
  }
  return rotations.count();
}

}  // namespace norvik::geometry
