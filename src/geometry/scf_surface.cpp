#include "geometry/scf_surface.h"

#include <algorithm>
#include <cmath>

#include "scf/gradient.h"

namespace norvik::geometry {

ScfSurface::ScfSurface(const scf::JobControl& job, const scf::ScfControl& control,
                       std::span<const int> charges, std::span<const int> elements,
                       const scf::PointSettings& first, std::span<double> rho,
                       std::span<double> orbitals, SurfaceHooks hooks)
    : job_(job),
      control_(control),
      charges_(charges.begin(), charges.end()),
      elements_(elements.begin(), elements.end()),
      positions_(3 * charges.size(), 0.0),
      settings_(first),
      rho_(rho),
      orbitals_(orbitals),
      hooks_(std::move(hooks)) {}

PointResult ScfSurface::compute(std::span<const double> x, int cycle) {
  std::copy(x.begin(), x.end(), positions_.begin());
  // Every point after the first starts from the density of the current one.
  if (started_) {
    settings_.start = scf::StartPolicy::supplied;
    settings_.atomic = {};
  }
  const int n = static_cast<int>(std::lround(std::sqrt(static_cast<double>(rho_.size() / 2))));
  overlap_.assign(static_cast<std::size_t>(n) * static_cast<std::size_t>(n), 0.0);
  const scf::PointHooks hooks = hooks_.point ? hooks_.point(cycle) : scf::PointHooks{};
  current_ =
      scf::single_point(job_, control_, molecule(), settings_, rho_, orbitals_, hooks, overlap_);
  started_ = true;
  if (hooks_.after_point) hooks_.after_point(cycle, current_);
  return {current_.energy, std::abs(current_.de_final)};
}

void ScfSurface::gradient(std::span<double> g) {
  const std::vector<double> grad =
      scf::point_gradient(job_, molecule(), settings_.counts, rho_, orbitals_, settings_.kohn_sham);
  std::copy(grad.begin(), grad.end(), g.begin());
  ++gradients_;
}

void ScfSurface::save_state() {
  saved_rho_.assign(rho_.begin(), rho_.end());
  saved_orbitals_.assign(orbitals_.begin(), orbitals_.end());
  saved_overlap_ = overlap_;
  saved_positions_ = positions_;
  saved_ = current_;
}

void ScfSurface::restore_state(std::span<const double> x) {
  std::copy(saved_rho_.begin(), saved_rho_.end(), rho_.begin());
  std::copy(saved_orbitals_.begin(), saved_orbitals_.end(), orbitals_.begin());
  overlap_ = saved_overlap_;
  // The saved state belongs to x: its energy terms and dipole stand as they were.
  std::copy(x.begin(), x.end(), positions_.begin());
  current_ = saved_;
}

void ScfSurface::reimpose(std::span<double> x) {
  if (hooks_.reimpose) hooks_.reimpose(x);
}

void ScfSurface::report_cycle(const CycleReport& report) {
  if (hooks_.report_cycle) hooks_.report_cycle(report);
}

void ScfSurface::progress(std::string_view text) {
  if (hooks_.progress) hooks_.progress(text);
}

}  // namespace norvik::geometry
