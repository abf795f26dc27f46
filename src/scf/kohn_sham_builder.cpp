#include "scf/kohn_sham_builder.h"

#include <algorithm>

#include "dft/grid/molecular_grid.h"
#include "scf/properties.h"

namespace norvik::scf {

namespace {

std::size_t pair_size(int n) {
  return 2 * static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
}

}  // namespace

KohnShamBuilder::KohnShamBuilder(const integrals::two::ContextView& context, FockBuild build,
                                 const XcFunctional& functional, const dft::GridBasis& grid)
    : coulomb_exchange_(context, build, functional.exact_exchange),
      functional_(functional),
      grid_(grid),
      jk_(pair_size(context.nbasis)),
      vxc_(pair_size(context.nbasis)),
      rho_(8 * static_cast<std::size_t>(grid.npts)),
      v_(5 * static_cast<std::size_t>(grid.npts)),
      e_(3 * static_cast<std::size_t>(grid.npts)) {}

void KohnShamBuilder::restart(std::span<double> g) {
  std::fill(jk_.begin(), jk_.end(), 0.0);
  coulomb_exchange_.restart(jk_);
  std::fill_n(g.begin(), jk_.size(), 0.0);
}

void KohnShamBuilder::resume(std::span<const double> rho, std::span<const double> g) {
  // The caller's G mixes both parts.  The grid terms are a function of rho
  // alone, so making them again splits G without a Fock build: G − Vxc[rho] is
  // the J − aK part, from which the incremental integral-direct build goes on.
  grid_terms(rho);
  for (std::size_t i = 0; i < jk_.size(); ++i) jk_[i] = g[i] - vxc_[i];
  coulomb_exchange_.resume(rho, jk_);
}

void KohnShamBuilder::build(std::span<const double> rho, std::span<double> g) {
  coulomb_exchange_.build(rho, jk_);
  grid_terms(rho);
  for (std::size_t i = 0; i < jk_.size(); ++i) g[i] = jk_[i] + vxc_[i];
}

void KohnShamBuilder::grid_terms(std::span<const double> rho) {
  dft::density_on_grid(grid_, rho, rho_);
  dft::combination_potentials(functional_.combination, rho_, functional_.exact_exchange, v_);
  dft::xc_matrix(grid_, rho_, v_, vxc_);
  const std::size_t npts = static_cast<std::size_t>(grid_.npts);
  const std::span<double> e(e_);
  dft::combination_energies(functional_.combination, rho_, functional_.exact_exchange,
                            {e.subspan(0, npts), e.subspan(npts, npts), e.subspan(2 * npts, npts)});
  for (std::size_t k = 0; k < 3; ++k)
    exc_[k] = dft::integrate(e.subspan(k * npts, npts), grid_.weights);
}

double KohnShamBuilder::energy(const Operators& op, std::span<const double> rho,
                               std::span<const double>) const {
  return electronic_energy(op.t, op.v, jk_, rho) + exc_[0];
}

std::array<double, 3> KohnShamBuilder::grid_electrons() const {
  return dft::electron_count(grid_.weights, rho_);
}

}  // namespace norvik::scf
