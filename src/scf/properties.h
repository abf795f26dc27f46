// Energies and moments of a density pair, and of the nuclei.
//
// Matrices are column-major n×n views; a pair (n, n, 2) holds alpha then beta.
// Energies are in electronvolts, positions in ångström, dipoles in e·Å.
#pragma once

#include <array>
#include <span>

#include "linalg/matrix.h"

namespace norvik::scf {

using Vec3 = std::array<double, 3>;

// Electronic energy Σ_σ Tr(P_σ·(T + V)) + ½ Σ_σ Tr(P_σ·G_σ) of the density
// pair `rho` with the two-electron Fock part `g` (both (n, n, 2)).
double electronic_energy(linalg::ConstMatrixView t, linalg::ConstMatrixView v,
                         std::span<const double> g, std::span<const double> rho);

// Electronic dipole −Σ_σ Tr(P_σ·D_k), k = x, y, z, from the position integrals
// `dipints` (n, n, 3) about the origin [Å].
Vec3 electronic_dipole(int nbasis, std::span<const double> dipints, std::span<const double> rho);

// Nuclear repulsion Σ_{a<b} Z_a Z_b / R_ab [eV] of point charges at `positions`
// ((3, natom) ångström).  Pairs with a zero charge product are skipped; two
// charged nuclei on one point throw norvik::Error.
double nuclear_repulsion(std::span<const int> charges, std::span<const double> positions);

// Nuclear dipole Σ_a Z_a R_a [e·Å].
Vec3 nuclear_dipole(std::span<const int> charges, std::span<const double> positions);

// ⟨S²⟩ of the single determinant with the density pair `rho`:
// S_z² + (N_α + N_β)/2 − Tr(P_α S P_β S), S_z = (N_α − N_β)/2, N_σ = Tr(P_σ S)
// (that is S_z(S_z + 1) + N_β − Tr(P_α S P_β S) for N_α ≥ N_β).
// `work` holds 2·n² doubles.
double spin_squared(linalg::ConstMatrixView s, std::span<const double> rho, std::span<double> work);

}  // namespace norvik::scf
