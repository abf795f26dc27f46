// The analytic nuclear gradient of a converged SCF point: nuclear repulsion,
// the one-electron terms with the energy-weighted density, and the
// two-electron terms with the weight of exact exchange of the method.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "basis/basis_set.h"
#include "scf/single_point.h"
#include "setup/elements.h"

namespace norvik::scf {

// ∂E_nn/∂R_A for point charges at `positions` ((3, natom) Å): (3, natom) eV/Å.
std::vector<double> nuclear_repulsion_gradient(std::span<const int> charges,
                                               std::span<const double> positions);

// The energy-weighted density W = Σ_σ Σ_{i occupied} ε_iσ C_μiσ C_νiσ (n×n, in
// the unit of the levels) of the lowest counts.alpha and counts.beta orbitals
// of `orbitals` ((n, n + 1, 2), levels in column n + 1).
std::vector<double> energy_weighted_density(int n, std::span<const double> orbitals,
                                            const setup::ElectronCount& counts);

// dE/dR_A (3, natom) [eV/Å] of the converged determinant with densities `rho`
// ((n, n, 2)) and orbitals `orbitals` ((n, n + 1, 2)) of `basis` on the
// molecule, for a Hamiltonian whose two-electron part is J − a·K
// (a = exchange_weight: 1 for Hartree–Fock).  Ghost atoms (charge 0) move
// their functions and carry no nucleus.  The exchange–correlation term of a
// Kohn–Sham point is added by the caller.
// With `only_atom` ≥ 0 only that atom's column is complete (the two-electron
// terms of the quartets without it are left out).
std::vector<double> scf_gradient(const basis::BasisSet& basis, const MoleculeView& molecule,
                                 const setup::ElectronCount& counts, std::span<const double> rho,
                                 std::span<const double> orbitals, double exchange_weight = 1.0,
                                 int only_atom = -1);

// The gradient of a converged point in the job's basis (job.basis on the
// molecule's elements): Hartree–Fock, or with a Kohn–Sham stage its exact
// exchange and the exchange–correlation term on the stage's grid.
std::vector<double> point_gradient(const JobControl& job, const MoleculeView& molecule,
                                   const setup::ElectronCount& counts, std::span<const double> rho,
                                   std::span<const double> orbitals,
                                   const std::optional<KohnShamStage>& kohn_sham = std::nullopt,
                                   int only_atom = -1);

}  // namespace norvik::scf
