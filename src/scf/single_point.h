// Whole calculations from the job's data: the free atoms of a molecule and a
// Hartree–Fock single point.  Each builds the basis, the one- and two-electron
// integrals and the orthogonalisation itself, so a host needs nothing beyond
// what job setup returns.
#pragma once

#include <array>
#include <span>
#include <string_view>
#include <vector>

#include "basis/basis_set.h"
#include "integrals/two/two_electron.h"
#include "scf/hf_driver.h"
#include "scf/properties.h"
#include "setup/elements.h"

namespace norvik::scf {

// SCF settings of one kind of run (free atoms or the molecule).
struct ScfControl {
  int niter = 64;
  double damp = 0.5;
  double thr_ene = 1e-6;  // [eV]
  double thr_rms = 1e-6;
};

// What the calculations share: the basis-set name and the thresholds.
struct JobControl {
  std::string_view basis;       // basis-set name (blank-padded or not)
  double memory_gb = 4.0;       // in-core limit for the integral store [GB]
  double screening = 0.0;       // integral-direct screening threshold [eV]
  double orthogonality = 1e-7;  // smallest overlap eigenvalue kept
};

// The molecule: per-atom nuclear charges (0 for a ghost), elements and
// positions ((3, natom) ångström).
struct MoleculeView {
  std::span<const int> charges;
  std::span<const int> elements;
  std::span<const double> positions;
};

// Everything fixed for one geometry: the one-electron matrices [eV, Å], the
// orthogonalisation, the two-electron context and the in-core choice.
struct PreparedSystem {
  int n = 0;
  std::vector<double> s, t, v, dip, x;
  int northo = 0;
  integrals::two::TwoElectronContext context;
  bool in_core = false;  // the store is filled; otherwise integral-direct

  ScfSystem system() const;
  FockBuild build() const { return in_core ? FockBuild::stored : FockBuild::direct; }
};

// Builds the integrals of `basis` on atoms at `positions` ((3, natom) Å) with
// nuclear charges `charges`; the store is filled when it fits job.memory_gb.
PreparedSystem prepare_system(const basis::BasisSet& basis, std::span<const double> positions,
                              std::span<const int> charges, const JobControl& job);

// The number of basis functions of the molecule in the named basis.
int basis_size(std::string_view basis, std::span<const int> elements);

// Free atoms: one unrestricted SCF per distinct element among the atoms with a
// nonzero nuclear charge, in its ground-state multiplicity (Hund's rule), with
// the isolated-atom exponents where the basis has them (STO-3G).  `energies`
// (natom) gets each atom's free-atom energy [eV] (0 for a ghost); `atomic`
// ((n, n, 2) over the molecule's basis) the free-atom densities on the
// diagonal blocks of their atoms, zero elsewhere.
void free_atoms(const JobControl& job, const ScfControl& scf, const MoleculeView& molecule,
                std::span<double> energies, std::span<double> atomic);

struct SinglePointStart {
  int mode = 1;                    // 1: fresh start; otherwise rescale `rho` as supplied
  std::span<const double> atomic;  // free-atom densities (used for more than 9 atoms)
};

struct SinglePointResult {
  double energy = 0.0;      // molecular energy: electronic + nuclear repulsion [eV]
  double electronic = 0.0;  // [eV]
  double nuclear = 0.0;     // [eV]
  Vec3 dipole{};            // total dipole [e·Å]
  double de_final = 0.0;    // [eV]
  int northo = 0;           // independent basis combinations
  bool in_core = false;     // integrals stored (else integral-direct)
  int cycles = 0;
  bool converged = false;
  double spin_squared = 0.0;  // ⟨S²⟩ of the determinant
};

// A Hartree–Fock single point: basis, integrals, in-core choice against the
// memory limit, initialiser and SCF without run log.  `rho` (n, n, 2) and
// `orbitals` (n, n + 1, 2) receive the result.
SinglePointResult single_point(const JobControl& job, const ScfControl& scf,
                               const MoleculeView& molecule, setup::ElectronCount counts,
                               const SinglePointStart& start, std::span<double> rho,
                               std::span<double> orbitals);

}  // namespace norvik::scf
