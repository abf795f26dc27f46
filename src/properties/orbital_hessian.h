// The orbital Hessian of a converged Hartree–Fock or Kohn–Sham point, the
// operator of its real (static) response: the coupled-perturbed equations of
// the polarisability and the stability analysis of the SCF solution.
//
// Amplitudes x_ai,σ of the virtual–occupied rotations, virtual index fastest,
// alpha block then beta block.  Orbitals (n, n + 1, 2): per spin the
// coefficients in columns 1 … n in ascending order of level, the levels [eV]
// in column n + 1; the lowest counts.alpha and counts.beta orbitals are the
// occupied ones.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "basis/basis_set.h"
#include "linalg/matrix.h"
#include "scf/single_point.h"
#include "setup/elements.h"

namespace norvik::properties {

// One spin of the converged point: its occupied and virtual orbitals and the
// level gaps ε_a − ε_i of the (a, i) amplitudes, virtual index fastest.
struct SpinBlock {
  int nocc = 0;
  int nvir = 0;
  linalg::ConstMatrixView occ, vir;  // (n, nocc), (n, nvir)
  std::vector<double> gap;           // (nvir, nocc) [eV]
  std::size_t offset = 0;            // of its amplitudes in a response vector
  std::size_t count() const {
    return static_cast<std::size_t>(nvir) * static_cast<std::size_t>(nocc);
  }
};

class XcResponse;

// M = A + B of the point: (M x)_ai,σ = (ε_a − ε_i) x_ai,σ + [C_vσᵀ G_σ(P1) C_oσ]_ai
// with P1_σ = C_vσ X_σ C_oσᵀ + C_oσ X_σᵀ C_vσᵀ and G = J[P1_α + P1_β] − a·K[P1_σ]
// (+ the exchange–correlation response).  M is symmetric and, for a stable
// point, positive definite.  A restricted point whose amplitudes are kept
// equal in both spins gives the singlet (RHF → RHF) block; free amplitudes
// give the unrestricted operator (RHF → UHF, UHF → UHF).
class OrbitalHessian {
 public:
  // Builds the integrals of the point (the store when it fits what the grid
  // table leaves of job.memory_gb; none when `direct`) and, for Kohn–Sham, the
  // grid and the exchange–correlation kernel.  `orbitals` must outlive this.
  OrbitalHessian(const basis::BasisSet& basis, const scf::JobControl& job,
                 const scf::MoleculeView& molecule, const setup::ElectronCount& counts,
                 std::span<const double> rho, std::span<const double> orbitals,
                 const std::optional<scf::KohnShamStage>& kohn_sham, bool direct);
  ~OrbitalHessian();
  OrbitalHessian(const OrbitalHessian&) = delete;
  OrbitalHessian& operator=(const OrbitalHessian&) = delete;

  std::size_t length() const { return length_; }
  const std::vector<SpinBlock>& spins() const { return spins_; }
  const scf::PreparedSystem& system() const { return system_; }

  // The perturbed density pair (n, n, 2) of the amplitudes x.
  void density(std::span<const double> x, std::span<double> p1);

  // y = [C_vσᵀ A_σ C_oσ] + beta·y of a matrix pair A (n, n, 2).
  void project(std::span<const double> a, std::span<double> y, double beta);

  // y[m] = M x[m] for every m, with one pass over the two-electron integrals
  // for all of them.
  void apply(std::span<const std::span<const double>> x, std::span<const std::span<double>> y);

  // plus[m] = (A + B) x[m] and minus[m] = (A − B) x[m], with one pass over the
  // two-electron integrals for both; either list may be empty.  The A − B
  // product takes the antisymmetric P1_σ = C_vσ X_σ C_oσᵀ − C_oσ X_σᵀ C_vσᵀ,
  // whose Coulomb and (adiabatic, real) exchange–correlation parts vanish:
  // (A − B) x = (ε_a − ε_i) x − a·[C_vσᵀ K[P1_σ] C_oσ].  The Tamm–Dancoff
  // matrix is A = ((A + B) + (A − B))/2.
  void apply(std::span<const std::span<const double>> x, std::span<const std::span<double>> plus,
             std::span<const std::span<double>> minus);

 private:
  int n_ = 0;
  scf::PreparedSystem system_;
  std::vector<SpinBlock> spins_;
  std::size_t length_ = 0;
  double a_ = 1.0;
  std::unique_ptr<XcResponse> xc_;
  // Q + Qᵀ (sign 1) or Q − Qᵀ (sign −1) of the amplitudes x.
  void density(std::span<const double> x, std::span<double> p1, double sign);

  std::vector<std::vector<double>> p1_, g_;
  std::vector<double> work_, square_;
};

}  // namespace norvik::properties
