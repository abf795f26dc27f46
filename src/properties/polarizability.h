// Properties of a converged point: the static dipole polarisability, by the
// coupled-perturbed Hartree–Fock or Kohn–Sham equations and, as their check,
// by central differences of the dipole in finite fields.
//
// Tensors are row-major 3×3, α_ij = ∂μ_i/∂F_j in e·Å²/V (μ in e·Å, F in V/Å).
// Density pairs are (n, n, 2), alpha block then beta block; orbitals
// (n, n + 1, 2): per spin the coefficients in columns 1 … n in ascending order
// of level, the levels [eV] in column n + 1.
#pragma once

#include <array>
#include <optional>
#include <span>

#include "basis/basis_set.h"
#include "scf/single_point.h"
#include "setup/elements.h"

namespace norvik::properties {

struct ResponseOptions {
  double tolerance = 1e-8;  // residual norm of each response equation relative to its right side
  int max_iterations = 100;
  bool direct = false;  // integral-direct Fock builds even where the store would fit
};

// The static dipole polarisability α_ij = ∂μ_i/∂F_j of the converged point
// (rho, orbitals) of `basis` on the molecule (Hartree–Fock when kohn_sham is
// empty, else the point's functional on its grid), row-major 3×3, symmetric,
// in e·Å²/V.  Restricted and unrestricted; the lowest counts.alpha and
// counts.beta orbitals of each spin are the occupied ones.  Throws
// norvik::Error when the equations do not converge in options.max_iterations.
std::array<double, 9> static_polarizability(
    const basis::BasisSet& basis, const scf::JobControl& job, const scf::MoleculeView& molecule,
    const setup::ElectronCount& counts, std::span<const double> rho,
    std::span<const double> orbitals,
    const std::optional<scf::KohnShamStage>& kohn_sham = std::nullopt,
    const ResponseOptions& options = {});

struct FieldOptions {
  double step = 0.05;       // h [V/Å]; 0.05 V/Å is about 1e-3 atomic units
  bool four_point = false;  // fields ±h, ±2h instead of ±h
};

// The same tensor by central differences of the total dipole of SCF points in
// the fields settings.field ± h·e_j (and ± 2h·e_j with four_point:
// [8(μ(h) − μ(−h)) − (μ(2h) − μ(−2h))] / 12h, the error of order h⁴ instead of
// h²).  Each point starts from `rho` (the converged density at
// settings.field); `scf` drives the Hartree–Fock stage and settings.kohn_sham
// the Kohn–Sham one (scf.niter = 0 starts the Kohn–Sham stage from rho).  Not
// symmetrised: its asymmetry measures its error.
std::array<double, 9> polarizability_by_fields(
    const basis::BasisSet& basis, const scf::JobControl& job, const scf::ScfControl& scf,
    const scf::MoleculeView& molecule, const scf::PointSettings& settings,
    std::span<const double> rho, const FieldOptions& fields = {});

}  // namespace norvik::properties
