#include "scf/gradient.h"

#include <cmath>
#include <stdexcept>

#include "basis/library.h"
#include "common/constants.h"
#include "common/error.h"
#include "common/fortran_format.h"
#include "dft/grid/molecular_grid.h"
#include "dft/xc/xc_gradient.h"
#include "integrals/one/gradient.h"
#include "integrals/two/gradient.h"
#include "integrals/two/two_electron.h"

namespace norvik::scf {

using constants::kBohrAngstrom;
using constants::kHartreeEv;

std::vector<double> nuclear_repulsion_gradient(std::span<const int> charges,
                                               std::span<const double> positions) {
  const std::size_t natom = charges.size();
  const double e2 = constants::kHbarCEvAngstrom / constants::kInverseFineStructure;  // eV·Å
  std::vector<double> g(3 * natom, 0.0);
  for (std::size_t a = 0; a < natom; ++a) {
    for (std::size_t b = 0; b < natom; ++b) {
      if (a == b || charges[a] == 0 || charges[b] == 0) continue;
      const double d[3] = {positions[3 * a] - positions[3 * b],
                           positions[3 * a + 1] - positions[3 * b + 1],
                           positions[3 * a + 2] - positions[3 * b + 2]};
      const double r2 = d[0] * d[0] + d[1] * d[1] + d[2] * d[2];
      const double f = -e2 * charges[a] * charges[b] / (r2 * std::sqrt(r2));
      for (int k = 0; k < 3; ++k) g[3 * a + k] += f * d[k];
    }
  }
  return g;
}

std::vector<double> energy_weighted_density(int n, std::span<const double> orbitals,
                                            const setup::ElectronCount& counts) {
  const std::size_t nu = static_cast<std::size_t>(n);
  std::vector<double> w(nu * nu, 0.0);
  const int count[2] = {counts.alpha, counts.beta};
  for (int spin = 0; spin < 2; ++spin) {
    const double* c = orbitals.data() + static_cast<std::size_t>(spin) * nu * (nu + 1);
    const double* levels = c + nu * nu;
    for (int i = 0; i < count[spin]; ++i) {
      const double* ci = c + static_cast<std::size_t>(i) * nu;
      const double e = levels[i];
      for (std::size_t q = 0; q < nu; ++q) {
        const double eq = e * ci[q];
        for (std::size_t p = 0; p < nu; ++p) w[p + nu * q] += eq * ci[p];
      }
    }
  }
  return w;
}

std::vector<double> scf_gradient(const basis::BasisSet& basis, const MoleculeView& molecule,
                                 const setup::ElectronCount& counts, std::span<const double> rho,
                                 std::span<const double> orbitals, double exchange_weight,
                                 int only_atom) {
  const int n = basis.nbasis();
  const std::size_t nu = static_cast<std::size_t>(n);
  const std::size_t natom = molecule.charges.size();
  if (rho.size() < 2 * nu * nu || orbitals.size() < 2 * nu * (nu + 1) ||
      molecule.positions.size() < 3 * natom) {
    throw std::invalid_argument("scf_gradient: array sizes");
  }
  std::vector<std::array<double, 3>> bohr(natom);
  std::vector<double> charges(natom);
  for (std::size_t a = 0; a < natom; ++a) {
    for (int k = 0; k < 3; ++k) bohr[a][k] = molecule.positions[3 * a + k] / kBohrAngstrom;
    charges[a] = molecule.charges[a];
  }
  // Hartree per bohr throughout, converted at the end.
  std::vector<double> grad(3 * natom, 0.0);
  std::vector<double> total(nu * nu);
  for (std::size_t e = 0; e < nu * nu; ++e) total[e] = rho[e] + rho[nu * nu + e];
  std::vector<double> w = energy_weighted_density(n, orbitals, counts);
  for (double& x : w) x /= kHartreeEv;
  integrals::one::one_electron_gradient(basis, bohr, charges, total, w, grad);

  const integrals::two::TwoElectronContext context =
      integrals::two::prepare(basis, bohr, /*store=*/false);
  integrals::two::two_electron_gradient(context.view(), static_cast<int>(natom), exchange_weight,
                                        rho, grad, only_atom);

  const double unit = kHartreeEv / kBohrAngstrom;
  std::vector<double> result = nuclear_repulsion_gradient(molecule.charges, molecule.positions);
  for (std::size_t i = 0; i < result.size(); ++i) result[i] += grad[i] * unit;
  return result;
}

std::vector<double> point_gradient(const JobControl& job, const MoleculeView& molecule,
                                   const setup::ElectronCount& counts, std::span<const double> rho,
                                   std::span<const double> orbitals,
                                   const std::optional<KohnShamStage>& kohn_sham, int only_atom) {
  const basis::BasisSet basis = basis::make_basis(job.basis, molecule.elements);
  if (!kohn_sham) return scf_gradient(basis, molecule, counts, rho, orbitals, 1.0, only_atom);
  // Kohn–Sham: J − aK with the functional's exact exchange, and the
  // exchange–correlation term on the grid that the SCF used, moving with the atoms.
  const XcFunctional& xc = kohn_sham->functional;
  std::vector<double> g =
      scf_gradient(basis, molecule, counts, rho, orbitals, xc.exact_exchange, only_atom);
  const dft::Grid grid = dft::make_grid(molecule.elements, molecule.positions,
                                        kohn_sham->grid_radius, kohn_sham->grid_level);
  const std::vector<double> gxc = dft::xc_nuclear_gradient(basis, molecule.positions, grid,
                                                           xc.combination, xc.exact_exchange, rho);
  for (std::size_t i = 0; i < g.size(); ++i) g[i] += gxc[i];
  return g;
}

}  // namespace norvik::scf
