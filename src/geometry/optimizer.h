// The geometry optimiser: a nonlinear conjugate-gradient method whose line
// search ("exploration") uses energies only, and (quasi_newton.h) a
// quasi-Newton alternative that uses a gradient at every point.
//
// Both talk to the energy surface only through `Surface`: one point of the
// surface (basis, integrals, SCF) and its gradient, a saved copy of the SCF
// state that undoes a rejected step without another SCF, the molecule's
// template constraints, and the report and progress hooks.  The engines own
// no files and run no SCF of their own, so the same code drives the
// Hartree–Fock and Kohn–Sham families, and the tests drive it on analytic
// functions.
//
// Vectors over the nuclei are (3, N) arrays, column-major, one column of x y z
// per atom: coordinates in Å, energies in eV, gradients in eV/Å.
#pragma once

#include <span>
#include <string_view>

namespace norvik::geometry {

// What computing a point gives the optimiser.
struct PointResult {
  double energy = 0.0;      // electronic energy + nuclear repulsion [eV]
  double scf_change = 0.0;  // |ΔE| of the last SCF cycle [eV]: the energy noise of the point
};

// One line of the per-cycle report: the accepted point of the cycle.
struct CycleReport {
  int cycle = 0;              // from 1
  std::span<const double> x;  // (3, N) Å
  std::span<const double> g;  // (3, N) eV/Å; zero when no gradient was computed
  double energy = 0.0;        // [eV]
  double probe_step = 0.0;    // probe step h of the cycle's exploration [Å²/eV]; 0 in cycle 1
  int point_counter = 0;      // where the exploration stopped (1: nothing gained); 0 in cycle 1
  bool largest_gradient_only = false;  // write only the largest gradient component
};

// "One point of the surface" as the optimiser sees it.  The surface keeps the
// state of the point it computed last (densities, orbitals, energy terms); the
// optimiser calls, in this order per step: reimpose, save_state, compute, and
// on an uphill step restore_state.
class Surface {
 public:
  virtual ~Surface() = default;

  // Computes the point at x ((3, N) Å): the full single point (basis,
  // integrals, start, SCF), which becomes the current state.  `cycle` is the
  // optimisation cycle (from 1); a surface writes its first-cycle notes (the
  // in-core choice, the SCF start and end lines) when it is 1.
  virtual PointResult compute(std::span<const double> x, int cycle) = 0;

  // The energy gradient [eV/Å] of the current state into g ((3, N)).
  virtual void gradient(std::span<double> g) = 0;

  // Saves the current state (the SCF results of the last accepted point).
  virtual void save_state() = 0;
  // Makes the saved state current again at the coordinates x it belongs to,
  // recomputing the nuclear terms and the dipole from it without an SCF.
  virtual void restore_state(std::span<const double> x) = 0;

  // Re-imposes the molecule's template constraints on x in place (a free
  // molecule leaves x as it is).
  virtual void reimpose(std::span<double> x) = 0;

  // Report hook, once per cycle when the cycle limit is not 1.
  virtual void report_cycle(const CycleReport& /*report*/) {}
  // Progress lines ("Hartree-Fock exploration ok.", ...).
  virtual void progress(std::string_view /*text*/) {}
};

// The driver kinds: they share the exploration and differ in the direction
// rule and in how many failed explorations in a row mean convergence.
enum class DriverKind {
  cg,        // Polak–Ribière, steepest descent after a failed exploration; 4 failures
  cg_mole,   // as cg, also steepest descent every max(3N − 3, 1) cycles; 4 failures
  steepest,  // always steepest descent; 3 failures
};

struct OptimizerSettings {
  DriverKind kind = DriverKind::cg;
  int max_cycles = 1;         // cycle limit (cycle 1 is the start point)
  int max_points = 1;         // points per exploration, from the second cycle on
  bool with_gradient = true;  // false: no gradient and no new direction in a cycle
  double base_step = 0.0;     // probe step b [Å²/eV]
  bool kohn_sham = false;     // selects the progress texts
};

struct OptimizerResult {
  bool converged = false;  // the explorations stopped lowering the energy
  int cycles = 0;          // cycles run
  int points = 0;          // points computed (one SCF each)
  int gradients = 0;       // gradients computed
  double energy = 0.0;     // energy of the last accepted point [eV]
};

// Runs the conjugate-gradient optimisation from x.  On return x holds the last
// accepted point, g its gradient (zero if none was computed) and the surface
// its state.  x and g are (3, N) of the same length; g is zeroed on entry.
OptimizerResult optimize(Surface& surface, const OptimizerSettings& settings, std::span<double> x,
                         std::span<double> g);

}  // namespace norvik::geometry
