// The exact (full configuration interaction) states of a molecule with two
// electrons in its basis, from its converged restricted Hartree–Fock orbitals.
//
// With two electrons the spin-adapted configurations are the orbital pairs
// themselves: the singlets (pq)+ = [φp(1)φq(2) + φq(1)φp(2)]/√(2(1+δpq)) for
// p ≥ q and the triplets (pq)− = [φp(1)φq(2) − φq(1)φp(2)]/√2 for p > q, over
// all the independent orbitals.  Their Hamiltonian needs only the one-electron
// matrix and the (pq|rs) integrals of the orbitals (an AO→MO transformation of
// the integral store); each spin block is diagonalised whole.
#pragma once

#include <span>
#include <vector>

#include "basis/basis_set.h"
#include "scf/single_point.h"

namespace norvik::properties {

struct TwoElectronCi {
  int norb = 0;                  // orbitals of the space (the independent combinations)
  double reference = 0.0;        // the determinant of the doubly occupied first orbital [eV]
  std::vector<double> singlets;  // every singlet state, ascending [eV]
  std::vector<double> triplets;  // every triplet state, ascending [eV]
  // The singlet ground state over the configurations (pq)+, p ≥ q (0-based),
  // at p(p+1)/2 + q; its largest coefficient positive.
  std::vector<double> ground;
};

// The states of the two electrons of `molecule` in `basis` (energies with the
// nuclear repulsion, eV) from the orbitals (n, n + 1, 2) of a converged RHF
// point: its alpha orbitals, of which the first northo are read (the
// orthogonalisation of job.orthogonality decides northo).  The integrals are
// always stored: the configuration matrix is as large as the store.
TwoElectronCi two_electron_ci(const basis::BasisSet& basis, const scf::JobControl& job,
                              const scf::MoleculeView& molecule, std::span<const double> orbitals);

}  // namespace norvik::properties
