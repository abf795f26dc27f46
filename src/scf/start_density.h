// Start densities of an SCF: the free atom's featureless start, the rescaling
// of a supplied density to the electron counts, and the molecular start from
// free-atom densities.
//
// The density update reads the electron count of each spin from the density
// itself (the nearest integer of Tr(P_σ·S)), so every start density here is
// made to hold exactly N_α and N_β electrons in the metric of the overlap S.
// Pairs are (n, n, 2), alpha then beta, column-major.
#pragma once

#include <span>

#include "linalg/matrix.h"
#include "setup/elements.h"

namespace norvik::scf {

// The free atom's start density without any knowledge of the basis: both spin
// blocks zero-filled, then P_σ = (N_σ / n)·I, so that Tr(P_σ) = N_σ.  The
// counts come from `zsum`, charge and multiplicity as in job setup; an
// impossible combination throws with "Invalid combination in makeIniRho.".
void free_atom_start(int zsum, int charge, int multiplicity, int nbasis, std::span<double> rho);

// A featureless density that only carries the electron counts into the first
// density update: P_σ = N_σ / (Σ_i S_ii) · I, so Tr(P_σ·S) = N_σ.  The bare
// one-electron start uses it in place of a zero density (its damping factor 1.0
// discards it whole).
void count_carrier(linalg::ConstMatrixView s, setup::ElectronCount counts, std::span<double> rho);

// Rescales each spin block so that Tr(P_σ·S) = N_σ.  A block that holds no
// electrons (|Tr| below 1e-8) but must hold some takes the total density
// P_α + P_β scaled to N_σ; when the total is empty too, the count carrier.
void normalize_density(linalg::ConstMatrixView s, setup::ElectronCount counts,
                       std::span<double> rho);

// The molecular start from free-atom densities `atomic` (a block-diagonal pair
// over the molecule's basis, as the free-atom driver returns it): the total
// atomic density D = P_α + P_β shared out as P_σ = D · N_σ / Tr(D·S), which
// moves the atoms' unpaired electrons into the molecule's spin state and its
// charge into the electron count.
void patch_atomic_densities(linalg::ConstMatrixView s, setup::ElectronCount counts,
                            std::span<const double> atomic, std::span<double> rho);

}  // namespace norvik::scf
