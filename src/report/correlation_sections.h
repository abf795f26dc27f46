// The report sections of the counterpoise correction and of the two-electron
// full CI.  Like the other sections, each returns its lines, every one
// beginning with "#", the first line of a section "#".
#pragma once

#include <array>
#include <span>

#include "report/sections.h"

namespace norvik::report {

// The counterpoise section: the fragment energies in their own bases `own` and
// in the dimer basis `dimer`, the dimer energy `dimer_energy` [eV], each
// fragment's basis-set superposition error E(own) − E(dimer basis) and the raw
// and counterpoise-corrected interaction energies in hartree, eV, kcal/mol and
// kJ/mol.
Lines counterpoise(const std::array<double, 2>& own, const std::array<double, 2>& dimer,
                   double dimer_energy);

// The two-electron full CI: the ground state's leading configurations (|c| ≥
// 0.01, at most ten, largest first) over the `norb` orbitals, `ground` packed
// at p(p+1)/2 + q (0-based, p ≥ q), and the lowest states of each spin in order
// of energy [eV] with their excitation energies; states beyond the space (norb
// orbitals: norb(norb+1)/2 singlets, norb(norb−1)/2 triplets) are left out.
Lines two_electron_ci(int norb, std::span<const double> ground, std::span<const double> singlets,
                      std::span<const double> triplets);

// The full-CI energy, the Hartree–Fock energy and the correlation energy
// E(FCI) − E(HF), in hartree and eV.
Lines full_ci_energy(double hartree_fock, double full_ci);

}  // namespace norvik::report
