// Second-order Møller–Plesset correlation energy of a converged Hartree–Fock
// point: restricted (RMP2) on a closed-shell point, unrestricted (UMP2: the αα,
// ββ and αβ parts) on any other, all electrons or with the core frozen.
//
// Orbitals are (n, n + 1, 2): per spin the coefficients in columns 1 … n in
// ascending order of level, the levels [eV] in column n + 1 (as the point
// returns them).  Energies are in hartree here; the exported routine converts.
// Method, frozen-core counts and the memory routes: docs/mp2.md.
#pragma once

#include <cstdint>
#include <span>

#include "basis/basis_set.h"
#include "scf/single_point.h"
#include "setup/elements.h"

namespace norvik::properties {

struct Mp2Options {
  bool frozen_core = false;  // freeze the noble-gas core of every atom (frozen_core_orbitals)
  // Limit for the integral store and the half-transformed integrals (ia|λσ)
  // [GB].  The store is filled when it fits (then each distinct integral is
  // computed once); the occupied orbitals i go through the integrals in
  // batches that fit what is left, all of them at once (one pass per spin)
  // when the whole set fits.
  double memory_gb = 4.0;
  bool use_store = true;  // false: compute the quartets in every pass whatever the limit
  // Occupied orbitals per batch; 0 chooses from memory_gb.  Set by tests to
  // force the batched route.
  int batch = 0;
  // Without the store, shell quartets whose Schwarz bound
  // max√(μν|μν)·max√(λσ|λσ) is below this [eV] (and in any case below
  // two::kQuartetNeglect) are not computed; the store keeps what it keeps.
  double screening = 0.0;
};

struct Mp2Energy {
  double correlation = 0.0;    // E(2) = same_spin + opposite_spin [hartree]
  double same_spin = 0.0;      // αα + ββ pairs [hartree]
  double opposite_spin = 0.0;  // αβ pairs [hartree]
  bool restricted = false;     // RMP2 (else UMP2)
  bool stored = false;         // the integrals came from the store
  int frozen = 0;              // frozen orbitals of each spin
  int batch = 0;               // occupied orbitals per pass (alpha, or the only spin)
  int passes = 0;              // passes over the AO integrals, both spins
};

// Orbitals of each spin that the frozen core leaves out: per atom with a
// nonzero nuclear charge, the orbitals of the previous noble gas's shells (as
// Psi4 1.3.2 counts them under freeze_core true): H–He 0, Li–Ne 1 (1s),
// Na–Ar 5 (up to 2p), K–Kr 9 (up to 3p), Rb–Xe 18 (up to 4p), Cs and beyond
// 27 (up to 5p).
int frozen_core_orbitals(std::span<const int> charges);

// Bytes of the half-transformed integrals of one batch of `batch` occupied
// orbitals with `nvir` virtuals over n basis functions: 8·batch·nvir·n(n+1)/2.
double mp2_batch_bytes(int n, int nvir, int batch);

// The occupied orbitals per batch that fit `memory_gb` (at least 1, at most nocc).
int mp2_batch_size(int n, int nocc, int nvir, double memory_gb);

// E(2) of the converged point (orbitals) of `basis` on the molecule, with
// counts.alpha and counts.beta the occupied (lowest) orbitals of each spin.
// RMP2 when the counts are equal and the two spins' coefficients agree to
// 1e-10, UMP2 otherwise.  Throws norvik::Error when the frozen core holds more
// orbitals than a spin has occupied.
Mp2Energy mp2_energy(const basis::BasisSet& basis, const scf::JobControl& job,
                     const scf::MoleculeView& molecule, const setup::ElectronCount& counts,
                     std::span<const double> orbitals, const Mp2Options& options = {});

}  // namespace norvik::properties
