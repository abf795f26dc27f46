// The analytic nuclear gradient of a converged SCF point: nuclear repulsion,
// the one-electron terms with the energy-weighted density, and the
// two-electron terms with the weight of exact exchange of the method.
#pragma once

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
std::vector<double> scf_gradient(const basis::BasisSet& basis, const MoleculeView& molecule,
                                 const setup::ElectronCount& counts, std::span<const double> rho,
                                 std::span<const double> orbitals, double exchange_weight = 1.0);

}  // namespace norvik::scf
