// One point of the surface: for a geometry, the basis, the one-electron
// matrices, the orthogonalisation, the pair screening, the in-core choice,
// the start and the SCF, reporting through hooks.  Every whole calculation
// goes through it: the single points, the free atoms of a molecule, and the
// host's job.  A host needs nothing beyond what job setup returns.
#pragma once

#include <array>
#include <functional>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "basis/basis_set.h"
#include "dft/grid/molecular_grid.h"
#include "integrals/two/two_electron.h"
#include "scf/hf_driver.h"
#include "scf/kohn_sham_builder.h"
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
  bool direct = false;          // integral-direct Fock builds whatever the limit
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
  bool in_core = false;    // the store is filled; otherwise integral-direct
  double memory_gb = 0.0;  // the limit the store was held against [GB]

  ScfSystem system() const;
  FockBuild build() const { return in_core ? FockBuild::stored : FockBuild::direct; }
};

// Builds the integrals of `basis` on atoms at `positions` ((3, natom) Å) with
// nuclear charges `charges`; the store is filled when it fits job.memory_gb.
PreparedSystem prepare_system(const basis::BasisSet& basis, std::span<const double> positions,
                              std::span<const int> charges, const JobControl& job);

// The number of basis functions of the molecule in the named basis.
int basis_size(std::string_view basis, std::span<const int> elements);

// The Kohn–Sham stage of a point: after the Hartree–Fock SCF, the Kohn–Sham
// SCF from its density with the functional on the molecular grid.
struct KohnShamStage {
  XcFunctional functional;
  ScfControl scf;
  double grid_radius = 1.0;  // base radius R0 of the grid templates [Å]
  dft::GridLevel grid_level = dft::GridLevel::standard;
};

// Free atoms: per distinct element among the atoms with a nonzero nuclear
// charge, in its ground-state multiplicity (Hund's rule), with the
// isolated-atom exponents where the basis has them (STO-3G), two SCFs.
// `energies` (natom) gets each atom's free-atom energy [eV] (0 for a ghost):
// the unrestricted atom with integer occupations, whose open shell points
// wherever the first aufbau step sends it.  `atomic` ((n, n, 2) over the
// molecule's basis) gets, on the diagonal blocks of their atoms and zero
// elsewhere, the spherically averaged atoms: the same atom with the electrons
// of its open shell shared evenly over the shell in every step (the alpha and
// beta densities kept apart), so that a molecule started from them has the
// molecule's symmetry whatever its orientation.
//
// With a Kohn–Sham stage the energies are those of the Kohn–Sham atoms (the
// integer-occupation unrestricted atom, its Hartree–Fock SCF then its
// Kohn–Sham SCF on the grid), so that a Kohn–Sham molecule's binding energy
// compares like with like; the start densities stay the Hartree–Fock ones.
void free_atoms(const JobControl& job, const ScfControl& scf, const MoleculeView& molecule,
                std::span<double> energies, std::span<double> atomic,
                const std::optional<KohnShamStage>& kohn_sham = std::nullopt);

// What a point starts from and how it occupies.
struct PointSettings {
  setup::ElectronCount counts;
  StartPolicy start = StartPolicy::core_hamiltonian;
  std::span<const double> atomic;  // (n, n, 2) free-atom densities (StartPolicy::free_atoms)
  // The occupation of every SCF step: aufbau, or the free atom's open shell
  // shared evenly (the spherical average).
  Occupation occupation = Occupation::aufbau;
  bool with_dipole = true;
  std::optional<KohnShamStage> kohn_sham;  // none: Hartree–Fock
  // A Kohn–Sham point converges Hartree–Fock first; a point started from a
  // Kohn–Sham density of a nearby geometry may go straight to its Kohn–Sham SCF.
  bool hartree_fock_first = true;
  // The damped cycles of the SCF (see CycleSettings; a point started from the
  // converged density of a nearby geometry takes 1).
  int damped_cycles = 8;
  // A uniform electric field F [V/Å].  An electron at r gains the potential
  // energy e·F·r and a nucleus −Z·e·F·R, so that the energy of the point is
  // E(F) = E(0) − μ·F − ½ Fᵀ α F + …: the electronic part enters the core
  // Hamiltonian as V + Σ_k F_k·D_k (D the position integrals, eV for V/Å), the
  // nuclear part −F·Σ_A Z_A R_A the nuclear energy of the result.
  Vec3 field{};
};

// What a caller hears while a point is computed.
struct PointHooks {
  // After the integrals and the in-core choice, before the start.
  std::function<void(const PreparedSystem&)> prepared;
  // After each SCF cycle, with the molecular energy and dipole.
  CycleObserver cycle;
};

struct SinglePointResult {
  double energy = 0.0;      // molecular energy: electronic + nuclear repulsion [eV]
  double electronic = 0.0;  // [eV], with the electrons' energy in the field
  double nuclear = 0.0;     // [eV], with the nuclei's energy in the field
  Vec3 dipole{};            // total dipole [e·Å]
  double de_final = 0.0;    // [eV]
  int northo = 0;           // independent basis combinations
  bool in_core = false;     // integrals stored (else integral-direct)
  int cycles = 0;
  bool converged = false;
  double rmsd = 0.0;          // RMS density change of the last cycle
  double comm2 = 0.0;         // ‖FPS − SPF‖² of the last cycle, both spins [eV²]
  double spin_squared = 0.0;  // ⟨S²⟩ of the determinant
  // Kohn–Sham: the exchange–correlation energy (total, exchange, correlation)
  // [eV] inside `electronic`, the grid's points and the electrons it sees (α, β,
  // both), and the Hartree–Fock stage's cycles.
  std::array<double, 3> xc_energy{};
  int grid_points = 0;
  std::array<double, 3> grid_electrons{};
  int hf_cycles = 0;
};

// The point of `basis` on the molecule's positions: the start (a lone atom's
// start, StartPolicy::free_atom, occupies its shells evenly), the Hartree–Fock
// SCF, and for Kohn–Sham the grid, the basis on the grid and the Kohn–Sham SCF
// from the Hartree–Fock density.  The hooks hear the last stage's cycles.  `rho`
// (n, n, 2) holds the supplied density (StartPolicy::supplied) and receives
// the result, `orbitals` (n, n + 1, 2) the orbitals; `overlap` (n², optional)
// receives S.
SinglePointResult compute_point(const basis::BasisSet& basis, const JobControl& job,
                                const ScfControl& scf, const MoleculeView& molecule,
                                const PointSettings& settings, std::span<double> rho,
                                std::span<double> orbitals, const PointHooks& hooks = {},
                                std::span<double> overlap = {});

// The point in the job's basis (job.basis on the molecule's elements).
SinglePointResult single_point(const JobControl& job, const ScfControl& scf,
                               const MoleculeView& molecule, const PointSettings& settings,
                               std::span<double> rho, std::span<double> orbitals,
                               const PointHooks& hooks = {}, std::span<double> overlap = {});

}  // namespace norvik::scf
