// The report sections of the Hartree–Fock results: energies, orbital levels
// and occupations, the dipole, the linear dependence of the basis and the spin
// contamination.  Like the header sections, each returns its lines, every one
// beginning with "#", and the first line of a section is "#".
#pragma once

#include <array>
#include <span>

#include "report/sections.h"

namespace norvik::report {

// Free-atom energies [eV] of the atoms with a nonzero nuclear charge, and their sum.
Lines energy_atoms(std::span<const int> charges, std::span<const int> elements,
                   std::span<const double> energies);

// Electronic energy, nuclear repulsion and their sum [eV] (also in hartree); with
// a nonzero sum of free-atom energies also the binding energy Σ E_atom − E_mol.
Lines energy_molecule(double electronic, double nuclear, double atoms_sum);

// The molecular energy of an SCF and its last energy change [eV].
Lines energy_scf(double emol, double de_final);
// The exchange–correlation energy of a Kohn–Sham point (total, exchange,
// correlation) [eV] and the electrons that its grid sees.
Lines energy_kohn_sham(double exc, double exchange, double correlation, double grid_electrons);
// An SCF that used up its cycles: the cycles made, the last energy change [eV]
// and the last RMS change of the density.
Lines not_converged(int cycles, double de_final, double rmsd);

// The lowest `nlevel` orbital levels [eV] of both spins; occupied ones marked "*".
// `alpha` and `beta` are the levels in ascending order.
Lines levels(std::span<const double> alpha, std::span<const double> beta, int nlevel, int nalpha,
             int nbeta);

// Electron counts, HOMO, LUMO and gap [eV] of both spins; `northo` orbitals exist.
Lines occupation(std::span<const double> alpha, std::span<const double> beta, int northo,
                 int nalpha, int nbeta);

// The electric dipole moment [e·Å] and its length.
Lines dipole(std::array<double, 3> mu);

// Basis functions and independent combinations; the count removed, if any.
Lines dependence(int nbasis, int northo, double threshold);

// ⟨S²⟩ of an unrestricted determinant against S(S+1) of its spin projection.
Lines spin_contamination(double s2, double exact);

}  // namespace norvik::report
