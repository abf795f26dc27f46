#include "properties/counterpoise.h"

#include <cstdint>
#include <vector>

#include "common/error.h"
#include "common/fortran_format.h"
#include "linalg/matrix.h"
#include "scf/properties.h"
#include "setup/elements.h"

namespace norvik::properties {

namespace {

// The electron counts of a fragment of nuclear charge `zsum`.
setup::ElectronCount fragment_counts(int zsum, int charge, int multiplicity) {
  if (multiplicity == 0) multiplicity = (zsum - charge) % 2 == 0 ? 1 : 2;
  return setup::count_electrons(zsum, charge, multiplicity, "Counterpoise");
}

// One fragment's energy [eV] on the atoms of `molecule` whose `charges` are
// nonzero, the others ghosts.
double fragment_energy(const scf::JobControl& job, const scf::ScfControl& control,
                       const scf::MoleculeView& molecule, const setup::ElectronCount& counts,
                       const std::optional<scf::KohnShamStage>& kohn_sham) {
  if (counts.total() == 0) return scf::nuclear_repulsion(molecule.charges, molecule.positions);
  scf::PointSettings settings;
  settings.counts = counts;
  settings.start = scf::StartPolicy::core_hamiltonian;
  settings.with_dipole = false;
  settings.kohn_sham = kohn_sham;
  const int n = scf::basis_size(job.basis, molecule.elements);
  const std::size_t nn = linalg::square(n);
  std::vector<double> rho(2 * nn), orbitals(2 * (nn + static_cast<std::size_t>(n)));
  return scf::single_point(job, control, molecule, settings, rho, orbitals).energy;
}

}  // namespace

CounterpoiseEnergies counterpoise(const scf::JobControl& job, const scf::ScfControl& scf,
                                  const scf::MoleculeView& molecule, const Fragments& fragments,
                                  const std::optional<scf::KohnShamStage>& kohn_sham) {
  const int natom = static_cast<int>(molecule.elements.size());
  if (fragments.first < 0 || fragments.last < fragments.first || fragments.last >= natom ||
      fragments.last - fragments.first + 1 == natom) {
    throw Error(fortran::list_directed({std::string_view("Invalid counterpoise fragments:"),
                                        static_cast<std::int64_t>(fragments.first + 1),
                                        static_cast<std::int64_t>(fragments.last + 1),
                                        static_cast<std::int64_t>(natom)}));
  }
  CounterpoiseEnergies result;
  for (std::size_t f = 0; f < 2; ++f) {
    auto in_fragment = [&](int a) {
      return (a >= fragments.first && a <= fragments.last) == (f == 0);
    };
    // The dimer basis: the partner's atoms as ghosts.
    std::vector<int> ghosted(molecule.charges.begin(), molecule.charges.end());
    // The own basis: the fragment's atoms only.
    std::vector<int> charges, elements;
    std::vector<double> positions;
    int zsum = 0;
    for (int a = 0; a < natom; ++a) {
      const auto i = static_cast<std::size_t>(a);
      if (!in_fragment(a)) {
        ghosted[i] = 0;
        continue;
      }
      zsum += molecule.charges[i];
      charges.push_back(molecule.charges[i]);
      elements.push_back(molecule.elements[i]);
      positions.insert(positions.end(),
                       molecule.positions.begin() + static_cast<std::ptrdiff_t>(3 * i),
                       molecule.positions.begin() + static_cast<std::ptrdiff_t>(3 * i + 3));
    }
    const setup::ElectronCount counts =
        fragment_counts(zsum, fragments.charge[f], fragments.multiplicity[f]);
    result.own[f] = fragment_energy(job, scf, {charges, elements, positions}, counts, kohn_sham);
    result.dimer[f] = fragment_energy(job, scf, {ghosted, molecule.elements, molecule.positions},
                                      counts, kohn_sham);
  }
  return result;
}

}  // namespace norvik::properties
