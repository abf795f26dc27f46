// Harmonic wavenumbers from the Hessian by differences of the analytic
// gradient, against Psi4's analytic Hessian at the same geometry with the same
// masses (tests/references/data/hf_frequencies.tsv), to 0.1 cm⁻¹.  The table
// holds more molecules; this test takes the three small closed shells.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "common/constants.h"
#include "geometry/scf_hessian.h"
#include "scf/single_point.h"
#include "setup/elements.h"

namespace norvik::geometry {
namespace {

struct Reference {
  std::string name, basis;
  std::vector<double> wavenumbers;
  std::vector<int> elements;
  std::vector<double> positions;
};

std::vector<Reference> references() {
  std::ifstream in(std::string(NORVIK_SOURCE_DIR) + "/tests/references/data/hf_frequencies.tsv");
  std::vector<Reference> out;
  std::string line;
  while (std::getline(in, line)) {
    if (line.empty() || line[0] == '#' || line.rfind("name\t", 0) == 0) continue;
    std::vector<std::string> f;
    std::stringstream ss(line);
    std::string x;
    while (std::getline(ss, x, '\t')) f.push_back(x);
    if (f[0] != "h2o_6-31Gx_HF" && f[0] != "nh3_6-31Gx_HF" && f[0] != "ch4_6-31Gx_HF") continue;
    Reference r{f[0], f[2], {}, {}, {}};
    std::stringstream w(f[4]);
    for (double v; w >> v;) r.wavenumbers.push_back(v);
    std::stringstream g(f[5]);
    for (std::string atom; std::getline(g, atom, ';');) {
      std::stringstream a(atom);
      std::string symbol;
      double c[3];
      a >> symbol >> c[0] >> c[1] >> c[2];
      if (symbol.size() == 1) symbol += " ";
      r.elements.push_back(setup::symbol_to_z(symbol));
      r.positions.insert(r.positions.end(), c, c + 3);
    }
    out.push_back(r);
  }
  return out;
}

// The converged closed-shell Hartree–Fock point of a reference molecule in a
// basis, SCF to 1e-11 eV.
class ConvergedPoint {
 public:
  ConvergedPoint(const Reference& r, std::string basis)
      : basis_(std::move(basis)), molecule_{r.elements, r.elements, r.positions} {
    job_.basis = basis_;
    job_.orthogonality = 1e-8;
    control_.niter = 300;
    control_.thr_ene = 1e-11;
    control_.thr_rms = 1e-11;
    int electrons = 0;
    for (int z : r.elements) electrons += z;
    settings_.counts = {electrons / 2, electrons / 2};
    const auto n = static_cast<std::size_t>(scf::basis_size(job_.basis, r.elements));
    rho_.resize(2 * n * n);
    std::vector<double> orbitals(2 * n * (n + 1));
    scf::single_point(job_, control_, molecule_, settings_, rho_, orbitals);
  }
  ConvergedPoint(const ConvergedPoint&) = delete;  // job_ views basis_
  ConvergedPoint& operator=(const ConvergedPoint&) = delete;

  std::tuple<const scf::JobControl&, const scf::ScfControl&, const scf::PointSettings&,
             const scf::MoleculeView&, const std::vector<double>&>
  parts() const {
    return {job_, control_, settings_, molecule_, rho_};
  }

 private:
  std::string basis_;
  scf::JobControl job_;
  scf::ScfControl control_;
  scf::PointSettings settings_;
  scf::MoleculeView molecule_;
  std::vector<double> rho_;
};

TEST(HarmonicWavenumbers, DifferencesOfTheAnalyticGradientAgainstPsi4) {
  const std::vector<Reference> refs = references();
  ASSERT_FALSE(refs.empty());
  for (const Reference& r : refs) {
    const ConvergedPoint p(r, r.basis);
    const auto& [job, control, settings, molecule, rho] = p.parts();
    ScfHessianSettings rule;
    rule.rule = {2.5e-3, /*four_point=*/false};
    const std::vector<double> hessian =
        scf_second_derivatives(job, control, molecule, settings, rho, rule).hessian;
    std::vector<double> masses;
    for (int z : r.elements) masses.push_back(setup::atomic_mass(z) * constants::kAtomicMassUnitEv);
    const NormalModes modes = normal_modes(hessian, masses, r.positions);
    const std::size_t skip = modes.wavenumbers.size() - r.wavenumbers.size();
    EXPECT_EQ(skip, 6u) << r.name;
    for (std::size_t k = 0; k < skip; ++k)
      EXPECT_NEAR(modes.wavenumbers[k], 0.0, 1e-3) << r.name << " rigid motion " << k;
    for (std::size_t k = 0; k < r.wavenumbers.size(); ++k)
      EXPECT_NEAR(modes.wavenumbers[skip + k], r.wavenumbers[k], 0.1) << r.name << " mode " << k;
  }
}

// The columns that the molecule's rotations give equal those computed by
// displacing every atom: ammonia (a threefold axis off the coordinate axes)
// and methane (twelve rotations) in STO-3G.
TEST(HarmonicWavenumbers, ColumnsFromRotationsEqualDisplacedColumns) {
  for (const Reference& r : references()) {
    if (r.name != "nh3_6-31Gx_HF" && r.name != "ch4_6-31Gx_HF") continue;
    const ConvergedPoint p(r, "STO-3G");
    const auto& [job, control, settings, molecule, rho] = p.parts();
    // Four-point differences: the error of two-point ones depends on the
    // directions of the displacements, which the rotations turn.
    ScfHessianSettings with, without;
    with.rule = without.rule = {5e-3, /*four_point=*/true};
    without.symmetry_tolerance = 0.0;
    // The progress counts: 0 before the first point, then one more after every
    // displaced coordinate, out of those of the displaced atoms alone.
    std::vector<std::pair<std::size_t, std::size_t>> heard_a, heard_b;
    const SecondDerivatives a =
        scf_second_derivatives(job, control, molecule, settings, rho, with,
                               [&](std::size_t k, std::size_t n) { heard_a.emplace_back(k, n); });
    const SecondDerivatives b =
        scf_second_derivatives(job, control, molecule, settings, rho, without,
                               [&](std::size_t k, std::size_t n) { heard_b.emplace_back(k, n); });
    EXPECT_EQ(a.displaced_atoms, 2) << r.name;
    EXPECT_EQ(b.displaced_atoms, static_cast<int>(r.elements.size())) << r.name;
    for (const auto& [d, heard] : {std::pair{a, heard_a}, std::pair{b, heard_b}}) {
      const auto n = static_cast<std::size_t>(3 * d.displaced_atoms);
      ASSERT_EQ(heard.size(), n + 1) << r.name;
      for (std::size_t k = 0; k <= n; ++k)
        EXPECT_EQ(heard[k], std::pair(k, n)) << r.name << " progress count " << k;
    }
    for (std::size_t i = 0; i < a.hessian.size(); ++i)
      // The geometry is symmetric to its 6 decimals: 1e-6 Å of 30 eV/Å³.
      EXPECT_NEAR(a.hessian[i], b.hessian[i], 1e-4) << r.name << " Hessian element " << i;
    for (std::size_t i = 0; i < a.dipole.size(); ++i)
      EXPECT_NEAR(a.dipole[i], b.dipole[i], 1e-6) << r.name << " dipole derivative " << i;
  }
}

}  // namespace
}  // namespace norvik::geometry
