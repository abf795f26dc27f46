// A quasi-Newton geometry optimiser over the same Surface as the
// conjugate-gradient engine, for molecules whose gradient is cheap next to
// their SCF: every point is computed once, energy and gradient, and the step
// comes from a model Hessian that BFGS updates refine.
//
// Outline (docs/optimizer.md has the details):
//   - Cartesian coordinates, translations and rotations projected out of the
//     gradient and the step;
//   - start Hessian: a Lindh-type model built from interatomic distances
//     (stretch, bend and torsion terms damped by exp(α(r_ref² − r²)));
//   - step: rational-function optimisation (the lowest eigenvector of the
//     Hessian augmented by the gradient), cut to a trust radius on the step
//     length that follows the ratio of actual to predicted energy change;
//     a step that raises the energy beyond the SCF noise is undone (without
//     another SCF) and retried shorter, and costs no gradient;
//   - convergence on the largest and RMS gradient components and the largest
//     and RMS components of the next step, the usual defaults 4.5e-4 and
//     3.0e-4 hartree/bohr, 1.8e-3 and 1.2e-3 bohr (or a largest gradient
//     component below a hundredth of its limit).
// The molecule's template is not imposed on the steps; `reimpose` is called
// once, on the final point, to recentre it.
#pragma once

#include <span>

#include "geometry/optimizer.h"
#include "linalg/matrix.h"

namespace norvik::geometry {

// Convergence limits in atomic units (gradients hartree/bohr, steps bohr,
// energies hartree).  Converged when the gradient is within its limits and
// either the next step is within its limits or the last step changed the energy
// by less than energy_change (the second rule as Psi4's default criteria).
struct ConvergenceCriteria {
  double max_gradient = 4.5e-4;
  double rms_gradient = 3.0e-4;
  double max_step = 1.8e-3;
  double rms_step = 1.2e-3;
  double energy_change = 1.0e-6;
};

struct QuasiNewtonSettings {
  int max_cycles = 50;            // points with a gradient at most (the start included)
  std::span<const int> elements;  // atomic numbers, one per atom (0: a ghost centre)
  ConvergenceCriteria criteria;
  double trust_radius = 0.5;       // first trust radius on the step length [bohr]
  double max_trust_radius = 1.0;   // [bohr]
  double min_trust_radius = 1e-3;  // [bohr]
  bool kohn_sham = false;          // selects the progress texts
};

// Runs the optimisation from x ((3, N) Å).  On return x holds the last
// accepted point (recentred by the surface), g its gradient [eV/Å] and the
// surface its state.  `cycles` counts the accepted points.
OptimizerResult optimize_quasi_newton(Surface& surface, const QuasiNewtonSettings& settings,
                                      std::span<double> x, std::span<double> g);

// The model Hessian [hartree/bohr²], 3N×3N, of atoms with atomic numbers
// `elements` at positions x ((3, N) bohr).  Every term is k·b·bᵀ with b the
// Wilson vector of a stretch, bend or torsion, so translations and rotations
// are null vectors.
linalg::Matrix model_hessian(std::span<const int> elements, std::span<const double> x);

}  // namespace norvik::geometry
