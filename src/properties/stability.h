// Stability of a converged SCF solution: the lowest eigenvalues of its orbital
// Hessian for real rotations, and a start density along an unstable rotation
// from which a new SCF reaches a lower solution.
//
// A restricted point (equal alpha and beta counts and orbitals) has two
// blocks: rotations kept equal in both spins (RHF → RHF) and opposite in the
// two spins (RHF → UHF, the triplet block).  An unrestricted point has one
// (UHF → UHF).  A negative eigenvalue means that the solution is a saddle
// point of the energy along its eigenvector.
//
// The eigenvalues are those of M = A + B in the amplitudes of
// orbital_hessian.h [eV] (docs/stability.md).
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "basis/basis_set.h"
#include "scf/single_point.h"
#include "setup/elements.h"

namespace norvik::properties {

struct StabilityOptions {
  int roots = 3;            // the lowest eigenvalues of each block
  double tolerance = 1e-5;  // residual norm of each eigenpair [eV]
  bool direct = false;      // integral-direct builds even where the store would fit
};

enum class Rotation { restricted_to_restricted, restricted_to_unrestricted, unrestricted };

struct StabilityBlock {
  Rotation rotation = Rotation::unrestricted;
  std::vector<double> values;  // the lowest eigenvalues, ascending [eV]
  std::vector<double> lowest;  // the eigenvector of the lowest, as full (alpha, beta) amplitudes
};

struct StabilityAnalysis {
  bool restricted = false;  // the point is restricted: two blocks, else one
  int northo = 0;           // the orthogonal combinations of the basis
  std::vector<StabilityBlock> blocks;
  // The block whose lowest eigenvalue is lowest, or nullptr for none.
  const StabilityBlock* lowest() const;
};

// Whether the point is restricted: equal counts and, to 1e-7, equal orbitals
// and levels in both spins.
bool is_restricted(int n, const setup::ElectronCount& counts, std::span<const double> orbitals);

// The stability analysis of the converged point (rho, orbitals) of `basis`
// on the molecule: Hartree–Fock when kohn_sham is empty, else the point's
// functional on its grid.  Throws norvik::Error when the eigenpairs do not
// converge.
StabilityAnalysis stability_analysis(const basis::BasisSet& basis, const scf::JobControl& job,
                                     const scf::MoleculeView& molecule,
                                     const setup::ElectronCount& counts,
                                     std::span<const double> rho, std::span<const double> orbitals,
                                     const std::optional<scf::KohnShamStage>& kohn_sham,
                                     const StabilityOptions& options = {});

// The density pair (n, n, 2) of the occupied orbitals rotated by the angle
// `angle` [rad] along the amplitudes `mode` (full (alpha, beta) vector of
// orbital_hessian.h's layout for these counts and `northo` orthogonal
// orbitals; its length sets no scale: it is normalised first).
std::vector<double> rotated_density(int n, int northo, const setup::ElectronCount& counts,
                                    std::span<const double> orbitals, std::span<const double> mode,
                                    double angle);

}  // namespace norvik::properties
