// The second derivatives of an SCF point by differences: every displaced point
// is the one point of the surface (basis, integrals, grid, SCF) at the moved
// positions, started from the converged density of the undisplaced point, with
// its analytic gradient, its dipole and, for Raman intensities, its
// coupled-perturbed polarisability.
#pragma once

#include <functional>
#include <span>
#include <vector>

#include "geometry/vibrations.h"
#include "scf/single_point.h"

namespace norvik::geometry {

struct ScfHessianSettings {
  DifferenceRule rule;
  bool polarizability = false;  // the polarisability derivatives too (Raman)
  // Displace one atom of each set of atoms that the molecule's rotations
  // exchange (within this tolerance [Å]; 0: every atom).
  double symmetry_tolerance = 1e-5;
};

// The points of the SCF of `settings` (its counts and Kohn–Sham stage; the
// start is the density `rho` ((n, n, 2), the converged point at the
// molecule's positions), which is not changed).
PointFunction scf_points(const scf::JobControl& job, const scf::ScfControl& control,
                         const scf::MoleculeView& molecule, const scf::PointSettings& settings,
                         std::span<const double> rho, const ScfHessianSettings& hessian);

// Every column of the second derivatives of the converged point, in order;
// `column_done` as second_derivatives takes it.
SecondDerivatives scf_second_derivatives(
    const scf::JobControl& job, const scf::ScfControl& control, const scf::MoleculeView& molecule,
    const scf::PointSettings& settings, std::span<const double> rho,
    const ScfHessianSettings& hessian,
    const std::function<void(std::size_t, std::size_t)>& column_done = {});

}  // namespace norvik::geometry
