// The energy surface of a molecule as the optimisers see it: every point is
// the one point of the surface of the SCF code (basis, integrals, grid, start,
// SCF) at the new positions, started from the density of the last accepted
// point, with its analytic gradient.  The caller owns the density and orbital
// arrays, which hold the current point's state; the surface keeps one saved
// copy to undo a rejected step without another SCF.
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "geometry/optimizer.h"
#include "scf/single_point.h"

namespace norvik::geometry {

// What the caller hears while the surface computes.
struct SurfaceHooks {
  // The point hooks of a point of cycle `cycle` (report notes, run log).
  std::function<scf::PointHooks(int cycle)> point;
  // After the SCF of every point, with the cycle and the point's result.
  std::function<void(int cycle, const scf::SinglePointResult&)> after_point;
  std::function<void(const CycleReport&)> report_cycle;
  std::function<void(std::string_view)> progress;
  // The molecule's template constraints on the positions (none: left as they are).
  std::function<void(std::span<double>)> reimpose;
};

class ScfSurface final : public Surface {
 public:
  // `first` says how the first point starts (and carries the electron counts
  // and the Kohn–Sham stage); later points start from the current density.
  // rho (n, n, 2) and orbitals (n, n + 1, 2) are the caller's.
  ScfSurface(const scf::JobControl& job, const scf::ScfControl& control,
             std::span<const int> charges, std::span<const int> elements,
             const scf::PointSettings& first, std::span<double> rho, std::span<double> orbitals,
             SurfaceHooks hooks);

  PointResult compute(std::span<const double> x, int cycle) override;
  void gradient(std::span<double> g) override;
  void save_state() override;
  void restore_state(std::span<const double> x) override;
  void reimpose(std::span<double> x) override;
  void report_cycle(const CycleReport& report) override;
  void progress(std::string_view text) override;

  // The result and the overlap matrix of the current point.
  const scf::SinglePointResult& current() const { return current_; }
  std::span<const double> overlap() const { return overlap_; }
  std::span<const double> positions() const { return positions_; }
  int gradients() const { return gradients_; }

 private:
  scf::MoleculeView molecule() const { return {charges_, elements_, positions_}; }

  scf::JobControl job_;
  scf::ScfControl control_;
  std::vector<int> charges_, elements_;
  std::vector<double> positions_;
  scf::PointSettings settings_;
  std::span<double> rho_, orbitals_;
  SurfaceHooks hooks_;
  bool started_ = false;
  scf::SinglePointResult current_;
  std::vector<double> overlap_;
  // the saved state
  std::vector<double> saved_rho_, saved_orbitals_, saved_overlap_, saved_positions_;
  scf::SinglePointResult saved_;
  int gradients_ = 0;
};

}  // namespace norvik::geometry
