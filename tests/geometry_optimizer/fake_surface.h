// Cheap analytic energy surfaces behind the optimiser's Surface interface.
// The fake keeps the "SCF state" (the point it computed last), so a gradient
// taken after a restore is checked to belong to the restored point, and it
// counts what a real surface would spend: points (SCFs) and gradients.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "geometry/optimizer.h"

namespace norvik::geometry::testing {

using Vector = std::vector<double>;

struct Model {
  std::function<double(std::span<const double>)> energy;                     // [eV]
  std::function<void(std::span<const double>, std::span<double>)> gradient;  // [eV/Å]
};

struct Report {
  int cycle;
  double probe_step;
  int point_counter;
  double energy;
  bool largest_only;
  Vector x, g;
};

class FakeSurface : public Surface {
 public:
  // `noise`: the |ΔE_SCF| each point reports; with `jitter` the energies also
  // carry a deterministic pseudo-random error of that size, as an SCF
  // converged to that threshold would.
  explicit FakeSurface(Model model, double noise = 1e-9, bool jitter = false)
      : model_(std::move(model)), noise_(noise), jitter_(jitter) {}

  PointResult compute(std::span<const double> x, int cycle) override {
    ++points;
    cycles.push_back(cycle);
    state_.assign(x.begin(), x.end());
    visited.push_back(state_);
    return {model_.energy(x) + error(x), noise_};
  }
  void gradient(std::span<double> g) override {
    ++gradients;
    model_.gradient(state_, g);
  }
  void save_state() override {
    ++saves;
    saved_ = state_;
  }
  void restore_state(std::span<const double> x) override {
    ++restores;
    EXPECT_EQ(Vector(x.begin(), x.end()), saved_) << "restored at coordinates of another state";
    state_ = saved_;
  }
  void reimpose(std::span<double> /*x*/) override { ++reimposes; }
  void report_cycle(const CycleReport& r) override {
    reports.push_back({r.cycle, r.probe_step, r.point_counter, r.energy, r.largest_gradient_only,
                       Vector(r.x.begin(), r.x.end()), Vector(r.g.begin(), r.g.end())});
  }
  void progress(std::string_view text) override { log.emplace_back(text); }

  int points = 0, gradients = 0, saves = 0, restores = 0, reimposes = 0;
  std::vector<int> cycles;
  std::vector<Vector> visited;
  std::vector<Report> reports;
  std::vector<std::string> log;

 private:
  double error(std::span<const double> x) const {
    if (!jitter_) return 0.0;
    double phase = 0.0;
    for (std::size_t i = 0; i < x.size(); ++i) phase += x[i] * (12.9898 + 7.233 * i);
    const double r = std::sin(phase) * 43758.5453;
    return noise_ * (2.0 * (r - std::floor(r)) - 1.0);
  }

  Model model_;
  double noise_;
  bool jitter_;
  Vector state_, saved_;
};

// E = ½ (x − x0)ᵀ K (x − x0) with K symmetric (n×n, column-major).
inline Model quadratic(Vector x0, Vector k) {
  const std::size_t n = x0.size();
  auto grad = [=](std::span<const double> x, std::span<double> g) {
    for (std::size_t i = 0; i < n; ++i) {
      g[i] = 0.0;
      for (std::size_t j = 0; j < n; ++j) g[i] += k[i + j * n] * (x[j] - x0[j]);
    }
  };
  auto energy = [=](std::span<const double> x) {
    Vector g(n);
    grad(x, g);
    double e = 0.0;
    for (std::size_t i = 0; i < n; ++i) e += 0.5 * (x[i] - x0[i]) * g[i];
    return e;
  };
  return {energy, grad};
}

// A sum of Morse pairs D (1 − exp(−a (r − re)))² − D over all atom pairs;
// pair(i, j) gives D [eV], a [1/Å], re [Å].
struct MorsePair {
  double d, a, re;
};
inline Model morse(std::function<MorsePair(int, int)> pair) {
  auto each = [pair](std::span<const double> x, auto&& visit) {
    const int n = static_cast<int>(x.size() / 3);
    for (int i = 0; i < n; ++i) {
      for (int j = i + 1; j < n; ++j) {
        double r[3], len = 0.0;
        for (int u = 0; u < 3; ++u) {
          r[u] = x[3 * i + u] - x[3 * j + u];
          len += r[u] * r[u];
        }
        len = std::sqrt(len);
        const MorsePair p = pair(i, j);
        const double e = std::exp(-p.a * (len - p.re));
        visit(i, j, r, len, p.d * (1.0 - e) * (1.0 - e) - p.d, 2.0 * p.d * p.a * e * (1.0 - e));
      }
    }
  };
  auto energy = [each](std::span<const double> x) {
    double total = 0.0;
    each(x, [&](int, int, const double*, double, double e, double) { total += e; });
    return total;
  };
  auto grad = [each](std::span<const double> x, std::span<double> g) {
    std::fill(g.begin(), g.end(), 0.0);
    each(x, [&](int i, int j, const double* r, double len, double, double de) {
      for (int u = 0; u < 3; ++u) {
        g[3 * i + u] += de * r[u] / len;
        g[3 * j + u] -= de * r[u] / len;
      }
    });
  };
  return {energy, grad};
}

inline double distance(std::span<const double> x, int i, int j) {
  double s = 0.0;
  for (int u = 0; u < 3; ++u) s += (x[3 * i + u] - x[3 * j + u]) * (x[3 * i + u] - x[3 * j + u]);
  return std::sqrt(s);
}

}  // namespace norvik::geometry::testing
