#include "geometry/scf_hessian.h"

#include <cmath>
#include <memory>
#include <string>

#include "basis/library.h"
#include "common/constants.h"
#include "properties/polarizability.h"
#include "scf/gradient.h"

namespace norvik::geometry {

PointFunction scf_points(const scf::JobControl& job, const scf::ScfControl& control,
                         const scf::MoleculeView& molecule, const scf::PointSettings& settings,
                         std::span<const double> rho, const ScfHessianSettings& hessian) {
  // The function outlives this call: it keeps its own copies.
  struct State {
    scf::JobControl job;
    std::string basis;
    basis::BasisSet functions;
    scf::ScfControl control;
    std::vector<int> charges, elements;
    scf::PointSettings settings;
    std::vector<double> start, rho, orbitals;
    bool polarizability = false;
  };
  auto s = std::make_shared<State>();
  s->basis = std::string(job.basis);
  s->job = job;
  s->job.basis = s->basis;
  s->functions = basis::make_basis(s->basis, molecule.elements);
  s->control = control;
  s->charges.assign(molecule.charges.begin(), molecule.charges.end());
  s->elements.assign(molecule.elements.begin(), molecule.elements.end());
  s->settings = settings;
  s->settings.start = scf::StartPolicy::supplied;
  s->settings.atomic = {};
  s->settings.hartree_fock_first = false;
  s->settings.damped_cycles = 1;
  s->settings.with_dipole = true;
  s->start.assign(rho.begin(), rho.end());
  s->rho.resize(rho.size());
  const std::size_t nn = rho.size() / 2;
  const std::size_t n = static_cast<std::size_t>(std::llround(std::sqrt(static_cast<double>(nn))));
  s->orbitals.resize(2 * (nn + n));
  s->polarizability = hessian.polarizability;
  return [s](std::span<const double> x) {
    const scf::MoleculeView moved{s->charges, s->elements, x};
    std::copy(s->start.begin(), s->start.end(), s->rho.begin());
    const scf::SinglePointResult r = scf::compute_point(s->functions, s->job, s->control, moved,
                                                        s->settings, s->rho, s->orbitals);
    DisplacedPoint p;
    p.gradient = scf::point_gradient(s->job, moved, s->settings.counts, s->rho, s->orbitals,
                                     s->settings.kohn_sham);
    for (std::size_t k = 0; k < 3; ++k) p.dipole[k] = r.dipole[k];
    if (s->polarizability) {
      // The coupled-perturbed polarisability in Å³ (e·Å²/V times E_h·a0).
      const std::array<double, 9> alpha =
          properties::static_polarizability(s->functions, s->job, moved, s->settings.counts, s->rho,
                                            s->orbitals, s->settings.kohn_sham);
      const double volume = constants::kHartreeEv * constants::kBohrAngstrom;
      for (std::size_t k = 0; k < 9; ++k) p.polarizability[k] = alpha[k] * volume;
    }
    return p;
  };
}

SecondDerivatives scf_second_derivatives(
    const scf::JobControl& job, const scf::ScfControl& control, const scf::MoleculeView& molecule,
    const scf::PointSettings& settings, std::span<const double> rho,
    const ScfHessianSettings& hessian,
    const std::function<void(std::size_t, std::size_t)>& column_done) {
  std::vector<AtomRotation> rotations;
  if (hessian.symmetry_tolerance > 0.0) {
    // Atoms are alike when both their element and their nuclear charge are
    // (a ghost atom is not its element).
    std::vector<int> kinds(molecule.elements.size());
    for (std::size_t a = 0; a < kinds.size(); ++a)
      kinds[a] = 1000 * molecule.elements[a] + molecule.charges[a];
    rotations = atom_rotations(kinds, molecule.positions, hessian.symmetry_tolerance);
  }
  return second_derivatives(scf_points(job, control, molecule, settings, rho, hessian),
                            molecule.positions, hessian.rule, rotations, column_done);
}

}  // namespace norvik::geometry
