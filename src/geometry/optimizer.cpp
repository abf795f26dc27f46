#include "geometry/optimizer.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "geometry/directions.h"

namespace norvik::geometry {

namespace {

// Energy that no computed point can exceed: the reference before the first point.
constexpr double kNoEnergy = 1.0e20;

// Systems above this many atoms report only the largest gradient component
// (the per-molecule driver).
constexpr int kFullGradientAtoms = 20;

bool conjugate(DriverKind kind) {
  return kind != DriverKind::steepest;
}

// The point counters of the last explorations: k of this cycle, then k1, k2,
// k3 of the one, two and three cycles before (0 before they exist).
struct History {
  std::array<int, 4> k{};
  void push(int counter) { k = {counter, k[0], k[1], k[2]}; }
  bool failed(int i) const { return k[static_cast<std::size_t>(i)] == 1; }
};

// The next probe step, as a multiple of the base step, and whether the
// explorations have stopped lowering the energy.  Failures enlarge the step:
// near the minimum the energy change of a small step drowns in the SCF noise,
// so a larger step is tried before giving up.
struct NextStep {
  double factor = 1.0;
  bool converged = false;
};

NextStep next_step(DriverKind kind, const History& h) {
  if (!conjugate(kind)) {
    if (h.failed(1) && h.failed(0)) return {40.0, h.failed(2)};
    if (!h.failed(1) && h.failed(0)) return {10.0, false};
    return {1.0, false};
  }
  const bool both_before = h.failed(2) && h.failed(1);
  const bool one_before = h.failed(2) != h.failed(1);
  if (both_before) return {h.failed(0) ? 40.0 : 10.0, h.failed(0) && h.failed(3)};
  if (one_before && h.failed(0)) return {10.0, false};
  return {1.0, false};
}

DirectionRule rule_for(DriverKind kind, int cycle, int counter, int natom) {
  if (!conjugate(kind)) return DirectionRule::steepest_descent;
  if (cycle >= 2 && counter == 1) return DirectionRule::steepest_descent;
  if (kind == DriverKind::cg_mole && cycle % std::max(3 * natom - 3, 1) == 0) {
    return DirectionRule::steepest_descent;
  }
  return DirectionRule::polak_ribiere;
}

// One exploration along d from the current point, whose energy is `energy`.
// Returns the point counter at which it stopped; x, `energy` and the surface
// are left at the kept point.
class Exploration {
 public:
  Exploration(Surface& surface, std::span<const double> d, double h, int max_points, int cycle)
      : surface_(surface), d_(d), h_(h), max_points_(max_points), cycle_(cycle) {}

  int run(std::span<double> x, double& energy, int& points) {
    saved_.resize(x.size());
    const double e_ref = energy;
    double e_last = energy;
    bool fitted = false;
    int k = 1;
    while (true) {
      double step = h_;
      if (k == 3 || k == 5 || k == 9 || k == 17) {
        // The vertex of the last fit; a vertex behind the current point
        // leaves nothing to gain along d.
        step = extra_;
        if (step == 0.0) break;
      }
      descent(d_, step, saved_, x);
      surface_.reimpose(x);
      surface_.save_state();
      const PointResult p = surface_.compute(x, cycle_);
      ++points;
      if (p.energy > e_last) {
        std::copy(saved_.begin(), saved_.end(), x.begin());
        surface_.restore_state(x);
        break;
      }
      if (fitted) {
        e_last = p.energy;
        break;
      }
      e_last = p.energy;
      const double threshold = 2.0 * p.scf_change;
      QuadraticFit fit{h_, false};
      switch (k) {
        case 1:
          e1_ = p.energy;
          break;
        case 2:
          e2_ = p.energy;
          fit = fit_after_point2(threshold, h_, e_ref, e1_, e2_);
          break;
        case 4:
          e4_ = p.energy;
          fit = fit_after_point4(threshold, 2.0 * h_, e_ref, e2_, e4_);
          break;
        case 8:
          e8_ = p.energy;
          fit = fit_after_point8(threshold, 4.0 * h_, e_ref, e4_, e8_);
          break;
        case 16:
          fit = fit_after_point16(threshold, 8.0 * h_, e_ref, e8_, p.energy);
          break;
        default:
          break;
      }
      if (k == 2 || k == 4 || k == 8 || k == 16) {
        extra_ = fit.extra;
        fitted = fit.fitted;
      }
      ++k;
      if (k > max_points_) break;
    }
    energy = e_last;
    return k;
  }

 private:
  Surface& surface_;
  std::span<const double> d_;
  double h_;
  int max_points_;
  int cycle_;
  std::vector<double> saved_;
  double e1_ = 0.0, e2_ = 0.0, e4_ = 0.0, e8_ = 0.0;
  double extra_ = 0.0;
};

}  // namespace

OptimizerResult optimize(Surface& surface, const OptimizerSettings& settings, std::span<double> x,
                         std::span<double> g) {
  const int natom = static_cast<int>(x.size() / 3);
  std::vector<double> d(x.size(), 0.0);
  std::vector<double> g_old(x.size(), 0.0);
  std::fill(g.begin(), g.end(), 0.0);
  const std::string_view family = settings.kohn_sham ? "Kohn-Sham" : "Hartree-Fock";
  const std::string explored = std::string(family) + " exploration ok.";
  const std::string gradient_done = std::string(family) + " gradient ok.";

  OptimizerResult result;
  History history;
  double energy = kNoEnergy;
  double h = settings.base_step;
  for (int cycle = 1;; ++cycle) {
    result.cycles = cycle;
    int counter = 0;
    if (cycle == 1) {
      energy = surface.compute(x, cycle).energy;
      ++result.points;
    } else {
      Exploration exploration(surface, d, h, settings.max_points, cycle);
      counter = exploration.run(x, energy, result.points);
      surface.progress(explored);
    }

    if (settings.with_gradient) {
      std::copy(g.begin(), g.end(), g_old.begin());
      surface.gradient(g);
      ++result.gradients;
      surface.progress(gradient_done);
      update_direction(rule_for(settings.kind, cycle, counter, natom), g, g_old, d);
    }

    if (settings.max_cycles != 1) {
      CycleReport report;
      report.cycle = cycle;
      report.x = x;
      report.g = g;
      report.energy = energy;
      report.probe_step = cycle == 1 ? 0.0 : h;
      report.point_counter = counter;
      report.largest_gradient_only =
          settings.kind == DriverKind::cg_mole && natom > kFullGradientAtoms;
      surface.report_cycle(report);
    }

    // The start point is no exploration: the history begins with cycle 2,
    // which uses the base step.
    if (cycle >= 2) {
      history.push(counter);
      const NextStep next = next_step(settings.kind, history);
      if (next.converged) {
        result.converged = true;
        break;
      }
      h = next.factor * settings.base_step;
    }
    if (cycle + 1 > settings.max_cycles) break;
  }
  result.energy = energy;
  return result;
}

}  // namespace norvik::geometry
