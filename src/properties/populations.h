// Population analysis of a converged density: the electrons that the Mulliken
// or the Löwdin partition of the basis gives each atom, as net atomic charges
// and spin populations, and each shell.
#pragma once

#include <span>
#include <vector>

#include "basis/basis_set.h"

namespace norvik::properties {

enum class Partition {
  mulliken,  // the electrons of atom A: Σ_{μ on A} (P S)_μμ
  lowdin,    // Σ_{μ on A} (S^½ P S^½)_μμ, in the symmetrically orthogonalised basis
};

struct AtomPopulations {
  std::vector<double> charge;  // Z_A minus the atom's electrons [e] (a ghost: Z = 0)
  std::vector<double> spin;    // the atom's α minus β electrons
};

// The populations of the density pair rho ((n, n, 2)) of `basis` with overlap
// s ((n, n)); charges[a] is the nuclear charge of atom a.
AtomPopulations atom_populations(const basis::BasisSet& basis, std::span<const int> charges,
                                 std::span<const double> s, std::span<const double> rho,
                                 Partition partition);

// The same partition per shell, in basis order (labels: basis/labels.h).
struct ShellPopulations {
  std::vector<double> electrons;  // the shell's α + β electrons
  std::vector<double> spin;       // its α − β electrons
};
ShellPopulations shell_populations(const basis::BasisSet& basis, std::span<const double> s,
                                   std::span<const double> rho, Partition partition);

}  // namespace norvik::properties
