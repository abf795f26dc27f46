// Kohn–Sham: the Hartree–Fock builder's J − aK plus the exchange–correlation
// matrix of a functional on the molecular grid.
//
// G_σ = J[P_α + P_β] − a·K[P_σ] + V^xc_σ, and the energy
// Σ_σ Tr(P_σ·(T + V)) + ½ Σ_σ Tr(P_σ·(J − aK)_σ) + E_xc.  The builder keeps
// its J − aK part apart from the exchange–correlation one (2·n² doubles, and
// the incremental integral-direct builds work on it) and the grid tables of
// the last density (8 + 5 + 3 doubles per point).
#pragma once

#include <array>
#include <span>
#include <vector>

#include "dft/functionals/combinations.h"
#include "dft/xc/xc_integrator.h"
#include "scf/fock_builder.h"

namespace norvik::scf {

struct XcFunctional {
  dft::Combination combination = dft::Combination::svwn5;
  double exact_exchange = 0.0;  // a
};

class KohnShamBuilder final : public FockBuilder {
 public:
  KohnShamBuilder(const integrals::two::ContextView& context, FockBuild build,
                  const XcFunctional& functional, const dft::GridBasis& grid);

  void restart(std::span<double> g) override;
  // G = J − aK + Vxc of rho: makes the grid terms of rho and keeps G − Vxc as
  // the J − aK part (a caller's G need not come from this builder).
  void resume(std::span<const double> rho, std::span<const double> g) override;
  void build(std::span<const double> rho, std::span<double> g) override;
  double energy(const Operators& op, std::span<const double> rho,
                std::span<const double> g) const override;

  // Of the last build: the exchange–correlation energy (total, exchange,
  // correlation) [eV], and the electrons the grid sees (α, β, both).
  const std::array<double, 3>& xc_energy() const { return exc_; }
  std::array<double, 3> grid_electrons() const;
  // Of the last build: the exchange–correlation matrices (n, n, 2) [eV] and the
  // density table (8, npts) on the grid.
  std::span<const double> xc_matrix() const { return vxc_; }
  std::span<const double> grid_density() const { return rho_; }

 private:
  // The density on the grid, the potentials, the matrix and the energy of rho.
  void grid_terms(std::span<const double> rho);

  HartreeFockBuilder coulomb_exchange_;
  XcFunctional functional_;
  dft::GridBasis grid_;
  std::vector<double> jk_;   // (n, n, 2) J − aK of the last density
  std::vector<double> vxc_;  // (n, n, 2)
  std::vector<double> rho_;  // (8, npts)
  std::vector<double> v_;    // (5, npts)
  std::vector<double> e_;    // (3·npts) energy densities: total, exchange, correlation
  std::array<double, 3> exc_{};
};

}  // namespace norvik::scf
