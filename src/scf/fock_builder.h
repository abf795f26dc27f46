// The two-electron (and, for Kohn–Sham, exchange–correlation) part of the Fock
// matrices: the variation point of the SCF cycle between the methods.
//
// A builder turns a density pair into G_σ, so that the Fock matrix of spin σ
// is T + V + G_σ, and gives the electronic energy of the pair with that G.
// Pairs are (n, n, 2), alpha block then beta block, column-major, in eV.
#pragma once

#include <span>
#include <vector>

#include "integrals/two/two_electron.h"
#include "scf/density_update.h"

namespace norvik::scf {

class FockBuilder {
 public:
  virtual ~FockBuilder() = default;

  // `g` is to be built from nothing: it is cleared and belongs to the zero
  // density (an initialiser's first build).
  virtual void restart(std::span<double> g) = 0;
  // `g` as it stands belongs to `rho` (an SCF call continuing from an
  // initialiser or from an earlier call).
  virtual void resume(std::span<const double> rho, std::span<const double> g) = 0;
  // Makes `g` the contribution of `rho`.
  virtual void build(std::span<const double> rho, std::span<double> g) = 0;
  // The electronic energy of `rho` with the `g` that build() made of it [eV].
  virtual double energy(const Operators& op, std::span<const double> rho,
                        std::span<const double> g) const = 0;
};

// How the two-electron part is built each cycle.
enum class FockBuild {
  stored,  // from the integral store
  direct,  // integral-direct, incremental: G += G[P − P_previous]
};

// Hartree–Fock: G_σ = J[P_α + P_β] − a·K[P_σ] (a = 1 for Hartree–Fock, the
// hybrid's fraction for Kohn–Sham), and the energy
// Σ_σ Tr(P_σ·(T + V)) + ½ Σ_σ Tr(P_σ·G_σ).  Integral-direct, the builder keeps
// the density its G belongs to (2·n² doubles) for as long as it lives.
class HartreeFockBuilder final : public FockBuilder {
 public:
  HartreeFockBuilder(const integrals::two::ContextView& context, FockBuild build,
                     double exact_exchange = 1.0);

  void restart(std::span<double> g) override;
  void resume(std::span<const double> rho, std::span<const double> g) override;
  void build(std::span<const double> rho, std::span<double> g) override;
  double energy(const Operators& op, std::span<const double> rho,
                std::span<const double> g) const override;

 private:
  integrals::two::ContextView context_;
  FockBuild build_;
  double exact_exchange_;
  std::vector<double> previous_;  // integral-direct: the density G belongs to
};

}  // namespace norvik::scf
