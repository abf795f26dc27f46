// The static polarisability: the coupled-perturbed equations against the
// finite-field dipoles of the library's own SCF points, against Psi4, and the
// field term of the one point path against the energy it must produce.
#include "properties/polarizability.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "basis/library.h"
#include "common/constants.h"
#include "common/error.h"
#include "dft/functionals/functional_names.h"
#include "reference_rows.h"
#include "scf/single_point.h"
#include "setup/elements.h"

namespace norvik::properties {
namespace {

// Coupled-perturbed against finite fields: the four-point difference with
// h = 0.05 V/Å leaves an error of order γh⁴ (below 1e-8 of α here), the SCF
// thresholds below leave dipole errors of ~1e-10 e·Å, i.e. ~1e-9 of α, and
// the response tolerance 1e-8 gives α to about its square; the central
// difference of the exchange–correlation matrix errs by ~1e-8.  Measured:
// 1e-9 to 8e-8 of the largest element; 1e-6 leaves room for other machines.
constexpr double kAgreement = 1e-6;

struct Molecule {
  std::vector<int> z;
  std::vector<double> pos;  // (3, natom) Å
  setup::ElectronCount counts;
};

Molecule water() {
  return {{8, 1, 1}, {0, 0, 0, 0, 0.756950, -0.585882, 0, -0.756950, -0.585882}, {5, 5}};
}
// NH2 (²B1, no degenerate open shell: the field cannot turn the state),
// turned off the axes so that every element of its tensor is nonzero.
Molecule amidogen() {
  return {{7, 1, 1},
          {0, 0, 0, -0.135118, 0.996535, -0.192968, -0.524715, -0.460103, -0.749370},
          {5, 4}};
}

scf::KohnShamStage stage(std::string_view name) {
  scf::KohnShamStage ks;
  ks.functional = {dft::functional_for(name, dft::FunctionalUse::potential_matrix),
                   dft::exact_exchange_fraction(name)};
  ks.scf = {100, 0.5, 1e-11, 1e-10};
  return ks;
}

// A converged point of the molecule, and what the polarisability needs of it.
struct Point {
  Point(const Molecule& m, const std::string& basis_name,
        std::optional<scf::KohnShamStage> ks = std::nullopt)
      : name(basis_name),
        mol(m),
        basis(basis::make_basis(basis_name, m.z)),
        kohn_sham(std::move(ks)) {
    job.basis = name;
    settings.counts = m.counts;
    settings.kohn_sham = kohn_sham;
    const std::size_t n = static_cast<std::size_t>(basis.nbasis());
    rho.assign(2 * n * n, 0.0);
    orbitals.assign(2 * n * (n + 1), 0.0);
    result = scf::compute_point(basis, job, control, view(), settings, rho, orbitals);
  }
  Point(const Point&) = delete;  // job.basis views this point's name
  Point& operator=(const Point&) = delete;
  scf::MoleculeView view() const { return {mol.z, mol.z, mol.pos}; }
  std::array<double, 9> response(const ResponseOptions& options = {}) const {
    return static_polarizability(basis, job, view(), mol.counts, rho, orbitals, kohn_sham, options);
  }
  std::array<double, 9> by_fields() const {
    // A Kohn–Sham point in a field starts its Kohn–Sham stage from the
    // converged density: no Hartree–Fock cycles.
    scf::ScfControl first = control;
    if (kohn_sham) first.niter = 0;
    return polarizability_by_fields(basis, job, first, view(), settings, rho, {0.05, true});
  }

  std::string name;  // the basis set's, which job.basis views
  Molecule mol;
  basis::BasisSet basis;
  std::optional<scf::KohnShamStage> kohn_sham;
  scf::JobControl job;
  scf::ScfControl control{200, 0.5, 1e-11, 1e-10};
  scf::PointSettings settings;
  std::vector<double> rho, orbitals;
  scf::SinglePointResult result;
};

double largest(const std::array<double, 9>& a) {
  double m = 0.0;
  for (double x : a) m = std::max(m, std::abs(x));
  return m;
}

void expect_close(const std::array<double, 9>& got, const std::array<double, 9>& want,
                  double relative, const std::string& what) {
  const double scale = largest(want);
  for (std::size_t e = 0; e < 9; ++e) {
    EXPECT_NEAR(got[e], want[e], relative * scale) << what << " element " << e;
  }
}

void check_against_fields(const Point& p, const std::string& what) {
  ASSERT_TRUE(p.result.converged) << what;
  const std::array<double, 9> cp = p.response();
  const std::array<double, 9> ff = p.by_fields();
  // A polarisability is positive definite: the diagonal at least.
  for (std::size_t k = 0; k < 3; ++k) EXPECT_GT(cp[4 * k], 0.0) << what;
  expect_close(cp, ff, kAgreement, what);
  double worst = 0.0;
  for (std::size_t e = 0; e < 9; ++e) worst = std::max(worst, std::abs(cp[e] - ff[e]));
  std::printf("%s: isotropic %.8f e·Å²/V, largest deviation from the fields %.2e relative\n",
              what.c_str(), (cp[0] + cp[4] + cp[8]) / 3.0, worst / largest(ff));
}

TEST(CoupledPerturbed, MatchesFiniteFieldsHartreeFock) {
  // Restricted water, and an unrestricted radical tilted off the axes so that
  // every element of the tensor is nonzero.
  check_against_fields(Point(water(), "6-31Gx"), "water RHF 6-31G*");
  check_against_fields(Point(amidogen(), "6-31Gx"), "NH2 UHF 6-31G*");
}

TEST(CoupledPerturbed, MatchesFiniteFieldsLocalKernel) {
  check_against_fields(Point(water(), "6-31Gx", stage("SVWN")), "water SVWN5 6-31G*");
  // Open shell: the αα, ββ and αβ kernels all differ.
  check_against_fields(Point(amidogen(), "6-31G", stage("SVWN")), "NH2 USVWN5 6-31G");
}

TEST(CoupledPerturbed, MatchesFiniteFieldsHybridGga) {
  check_against_fields(Point(water(), "6-31Gx", stage("B3LYP")), "water B3LYP 6-31G*");
}

TEST(CoupledPerturbed, MatchesFiniteFieldsOpenShellGga) {
  check_against_fields(Point(amidogen(), "6-31G", stage("BLYP")), "NH2 UBLYP 6-31G");
}

// Integral-direct builds give the stored result, and the tensor is the same
// bits on one thread as on two.
TEST(CoupledPerturbed, DirectBuildsAndThreadCounts) {
  const Point hf(water(), "6-31Gx");
  const std::array<double, 9> stored = hf.response();
  ResponseOptions direct;
  direct.direct = true;
  expect_close(hf.response(direct), stored, 1e-9, "integral-direct");

  const Point ks(amidogen(), "6-31G", stage("B3LYP"));
  const int threads = omp_get_max_threads();
  omp_set_num_threads(1);
  const std::array<double, 9> one = ks.response();
  omp_set_num_threads(2);
  const std::array<double, 9> two = ks.response();
  omp_set_num_threads(threads);
  for (std::size_t e = 0; e < 9; ++e) EXPECT_EQ(one[e], two[e]) << "element " << e;
}

// The response equations that cannot converge in the iterations allowed stop
// with the library's error, not a silent tensor.
TEST(CoupledPerturbed, UnconvergedEquationsStop) {
  const Point hf(water(), "STO-3G");
  ResponseOptions few;
  few.max_iterations = 1;
  few.tolerance = 1e-14;
  EXPECT_THROW(hf.response(few), Error);
}

// The field term of the point: E(F) = E(0) − μ·F − ½ Fᵀ α F, so the central
// differences of the energy give −μ and −α, and the nuclear energy carries
// −F·Σ Z R.
TEST(FiniteField, EnergyFollowsDipoleAndPolarizability) {
  const Point p(amidogen(), "6-31G");
  const std::array<double, 9> alpha = p.response();
  const double h = 0.05;
  for (std::size_t j = 0; j < 3; ++j) {
    std::array<double, 5> e{};
    const double shifts[5] = {-2 * h, -h, 0.0, h, 2 * h};
    for (std::size_t s = 0; s < 5; ++s) {
      scf::PointSettings at = p.settings;
      at.field[j] = shifts[s];
      at.start = scf::StartPolicy::supplied;
      std::vector<double> rho = p.rho, orbitals = p.orbitals;
      const scf::SinglePointResult r =
          scf::compute_point(p.basis, p.job, p.control, p.view(), at, rho, orbitals);
      e[s] = r.energy;
      if (s == 3) {
        double nuclear = 0.0;
        for (std::size_t a = 0; a < p.mol.z.size(); ++a)
          nuclear += p.mol.z[a] * p.mol.pos[3 * a + j];
        EXPECT_NEAR(r.nuclear, p.result.nuclear - h * nuclear, 1e-10);
      }
    }
    // Five-point differences of the energies: errors of order h⁴ and the
    // SCF's energy noise over h² (1e-11 eV / 2.5e-3 V²/Å², 1e-7 of α here).
    const double slope = (8 * (e[3] - e[1]) - (e[4] - e[0])) / (12 * h);
    const double curvature = (-e[4] + 16 * e[3] - 30 * e[2] + 16 * e[1] - e[0]) / (12 * h * h);
    EXPECT_NEAR(slope, -p.result.dipole[j], 1e-6) << "axis " << j;
    EXPECT_NEAR(curvature, -alpha[4 * j], 1e-4 * alpha[4 * j]) << "axis " << j;
    std::printf("axis %zu: energy curvature %.9f, coupled-perturbed %.9f e·Å²/V (%.1e)\n", j,
                -curvature, alpha[4 * j], std::abs(curvature + alpha[4 * j]) / alpha[4 * j]);
  }
}

// The reference table (tests/references/data/polarizabilities.tsv, made by
// tools/references/vibration_references.py): Psi4's coupled-perturbed RHF
// tensors of 12 molecules, its Kohn–Sham tensors on its converged grid, and
// NWChem's UHF tensor of CH3.
struct Reference {
  std::string name, basis, method;
  Molecule molecule;
  std::array<double, 9> alpha{};  // bohr³
};

std::vector<Reference> reference_table() {
  std::vector<Reference> out;
  for (const std::vector<std::string>& f : reference_rows("polarizabilities.tsv")) {
    Reference r;
    r.name = f[0];
    r.basis = f[2];
    r.method = f[3];
    for (std::size_t e = 0; e < 9; ++e) r.alpha[e] = std::stod(f[7 + e]);
    const ReferenceAtoms atoms = reference_atoms(f[16]);
    const int electrons = atoms.electrons;
    r.molecule.z = atoms.z;
    r.molecule.pos = atoms.pos;
    // The one open shell of the table is a doublet.
    r.molecule.counts = {(electrons + electrons % 2) / 2, electrons / 2};
    out.push_back(r);
  }
  return out;
}

double compare_with(const Reference& r, const std::array<double, 9>& response, double tolerance) {
  const double to_bohr3 =
      constants::kHartreeEv * constants::kBohrAngstrom / std::pow(constants::kBohrAngstrom, 3);
  std::array<double, 9> got = response;
  for (double& x : got) x *= to_bohr3;
  expect_close(got, r.alpha, tolerance, r.name);
  double worst = 0.0;
  for (std::size_t e = 0; e < 9; ++e) worst = std::max(worst, std::abs(got[e] - r.alpha[e]));
  std::printf("%s: isotropic %.6f bohr³, largest deviation %.2e relative\n", r.name.c_str(),
              (got[0] + got[4] + got[8]) / 3.0, worst / largest(r.alpha));
  return worst / largest(r.alpha);
}

// Hartree–Fock: same basis, geometry and equations, both solvers converged far
// below this (Psi4 to a residual of 1e-10): 1e-6 of the largest element leaves
// room for the SCF thresholds and integral screening of either program.
TEST(CoupledPerturbed, HartreeFockMatchesPsi4AndNWChem) {
  int cases = 0;
  for (const Reference& r : reference_table()) {
    if (r.method != "HF" && r.method != "UHF") continue;
    const Point p(r.molecule, r.basis);
    compare_with(r, p.response(), 1e-6);
    ++cases;
  }
  EXPECT_EQ(cases, 13);
}

// Kohn–Sham on the dense grid against Psi4's converged grid: the grids'
// difference is what is left (1e-4 of the largest element).
TEST(CoupledPerturbed, KohnShamOnTheDenseGridAgainstPsi4) {
  int cases = 0;
  for (const Reference& r : reference_table()) {
    if (r.method == "HF" || r.method == "UHF") continue;
    scf::KohnShamStage ks = stage(r.method);
    ks.grid_radius = constants::kBohrAngstrom;
    ks.grid_level = dft::GridLevel::dense;
    const Point p(r.molecule, r.basis, ks);
    compare_with(r, p.response(), 1e-4);
    ++cases;
  }
  EXPECT_EQ(cases, 12);
}

}  // namespace
}  // namespace norvik::properties
