// Excited states of a converged Hartree–Fock or Kohn–Sham point by linear
// response: the Tamm–Dancoff approximation (CIS on a Hartree–Fock point) and
// the random-phase approximation (time-dependent Hartree–Fock, full TDDFT with
// the adiabatic exchange–correlation kernel).  Method: docs/excited_states.md.
//
// A restricted point (equal alpha and beta occupations and orbitals) gives
// spin-adapted singlet and triplet states, amplitudes x_ai over one spin; any
// other point gives the states of the unrestricted spin-orbital problem,
// amplitudes x_ai,σ alpha block then beta block.  Virtual index fastest.
// Orbitals (n, n + 1, 2) and densities (n, n, 2) as in polarizability.h.
#pragma once

#include <array>
#include <optional>
#include <span>
#include <vector>

#include "basis/basis_set.h"
#include "scf/single_point.h"
#include "setup/elements.h"

namespace norvik::properties {

enum class ResponseKind { tamm_dancoff, random_phase };
enum class StateSpin { singlet, triplet, unrestricted };

struct ExcitationOptions {
  ResponseKind kind = ResponseKind::tamm_dancoff;
  int roots = 10;                         // per spin type
  bool singlets = true, triplets = true;  // restricted points only
  // Residual norm of a root [eV]: its energy is then good to about its
  // square over the gap to the next root, far below 1e-6 eV.
  double tolerance = 1e-5;
  int max_iterations = 100;
  bool direct = false;  // integral-direct builds even where the store would fit
};

// One orbital pair of a state: occupied `occ` → virtual `vir`, numbered from 1
// over all levels of the spin in ascending order, with the amplitude X_ai
// (spin-adapted for a restricted point; alpha or beta orbitals by `beta`).
struct OrbitalTransition {
  int occ = 0, vir = 0;
  bool beta = false;
  double amplitude = 0.0;
};

struct ExcitedState {
  StateSpin spin = StateSpin::singlet;
  double energy = 0.0;             // [eV]
  double strength = 0.0;           // oscillator strength f; 0 for triplets
  std::array<double, 3> dipole{};  // transition dipole <0|μ|n> [e·Å]
  // pairs with X_ai² above kDominantWeight, largest first
  std::vector<OrbitalTransition> transitions;
};

inline constexpr double kDominantWeight = 0.05;

struct ExcitationResult {
  bool restricted = true;
  std::vector<ExcitedState> states;  // singlets then triplets, each ascending
  std::size_t dimension = 0;         // of the (spin-adapted) excitation space
  int iterations = 0;                // block products, summed over spin types
};

// The lowest options.roots excitations of each spin type of the converged
// point (rho, orbitals) of `basis` (Hartree–Fock when kohn_sham is empty, else
// the point's functional on its grid).  Throws norvik::Error when the
// Davidson iterations do not converge or the point is unstable.
ExcitationResult excited_states(const basis::BasisSet& basis, const scf::JobControl& job,
                                const scf::MoleculeView& molecule,
                                const setup::ElectronCount& counts, std::span<const double> rho,
                                std::span<const double> orbitals,
                                const std::optional<scf::KohnShamStage>& kohn_sham,
                                const ExcitationOptions& options);

// The Tamm–Dancoff matrix A of one spin type (dimension × dimension,
// column-major, eV) by products with the unit vectors: for printing small
// cases and for checks.
std::vector<double> tamm_dancoff_matrix(const basis::BasisSet& basis, const scf::JobControl& job,
                                        const scf::MoleculeView& molecule,
                                        const setup::ElectronCount& counts,
                                        std::span<const double> rho,
                                        std::span<const double> orbitals,
                                        const std::optional<scf::KohnShamStage>& kohn_sham,
                                        StateSpin spin);

// Whether the point is restricted: equal occupations, and the alpha and beta
// orbitals equal to 1e-10.
bool restricted_point(const setup::ElectronCount& counts, int nbasis,
                      std::span<const double> orbitals);

}  // namespace norvik::properties
