// Analytic Hartree–Fock gradients against five-point differences of the
// energies of the same SCF (tight settings), for s/p, d and f shells, sp
// shells, diffuse functions, an open shell, a cation and a ghost atom.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "basis/library.h"
#include "dft/functionals/functional_names.h"
#include "scf/gradient.h"
#include "scf/single_point.h"

namespace norvik::scf {
namespace {

struct Atom {
  int z;
  bool ghost;
  std::array<double, 3> r;
};

struct Case {
  std::string basis;
  std::vector<Atom> atoms;
  setup::ElectronCount counts;
  std::vector<int> checked;  // coordinates (3·atom + axis) checked by differences; empty: all
  std::string functional = "HF";
  dft::GridLevel grid = dft::GridLevel::standard;
};

struct Point {
  double energy;
  std::vector<double> rho, orbitals;
};

class Molecule {
 public:
  explicit Molecule(const Case& c) : case_(c) {
    for (const Atom& a : c.atoms) {
      elements_.push_back(a.z);
      charges_.push_back(a.ghost ? 0 : a.z);
      positions_.insert(positions_.end(), a.r.begin(), a.r.end());
    }
    job_.basis = case_.basis;
    job_.orthogonality = 1e-8;
    control_.niter = 300;
    control_.thr_ene = 1e-10;
    control_.thr_rms = 1e-10;
    n_ = basis_size(job_.basis, elements_);
    if (c.functional != "HF") {
      KohnShamStage ks;
      ks.functional = {dft::functional_for(c.functional, dft::FunctionalUse::potential_matrix),
                       dft::exact_exchange_fraction(c.functional)};
      ks.scf = control_;
      ks.grid_radius = 0.5291772104;
      ks.grid_level = c.grid;
      kohn_sham_ = ks;
    }
  }

  Point compute(const std::vector<double>& positions) const {
    Point p;
    p.rho.assign(2 * static_cast<std::size_t>(n_ * n_), 0.0);
    p.orbitals.assign(2 * static_cast<std::size_t>(n_ * (n_ + 1)), 0.0);
    PointSettings settings;
    settings.counts = case_.counts;
    settings.kohn_sham = kohn_sham_;
    const SinglePointResult r =
        single_point(job_, control_, {charges_, elements_, positions}, settings, p.rho, p.orbitals);
    EXPECT_TRUE(r.converged);
    p.energy = r.energy;
    return p;
  }

  std::vector<double> analytic(int only_atom = -1) const {
    const Point p = compute(positions_);
    return point_gradient(job_, {charges_, elements_, positions_}, case_.counts, p.rho, p.orbitals,
                          kohn_sham_, only_atom);
  }

  double difference(int coordinate) const {
    const double h = 5e-3;  // Å
    auto at = [&](double step) {
      std::vector<double> x = positions_;
      x[static_cast<std::size_t>(coordinate)] += step;
      return compute(x).energy;
    };
    return (-at(2 * h) + 8 * at(h) - 8 * at(-h) + at(-2 * h)) / (12 * h);
  }

  int natom() const { return static_cast<int>(case_.atoms.size()); }

 private:
  Case case_;
  std::vector<int> elements_, charges_;
  std::vector<double> positions_;
  JobControl job_;
  ScfControl control_;
  std::optional<KohnShamStage> kohn_sham_;
  int n_ = 0;
};

// Every checked component to `tolerance` eV/Å, and the sum over atoms to 1e-8
// (Hartree–Fock; a grid has a translational error of its own).
void check(const Case& c, double tolerance = 1e-5) {
  const Molecule m(c);
  const std::vector<double> g = m.analytic();
  std::vector<int> coords = c.checked;
  if (coords.empty())
    for (int i = 0; i < 3 * m.natom(); ++i) coords.push_back(i);
  for (int i : coords) {
    const double fd = m.difference(i);
    if (std::getenv("NORVIK_PRINT"))
      std::printf("%d %.9f %.9f\n", i, g[static_cast<std::size_t>(i)], fd);
    EXPECT_NEAR(g[static_cast<std::size_t>(i)], fd, tolerance)
        << c.basis << " atom " << i / 3 + 1 << " axis " << i % 3;
  }
  for (int k = 0; k < 3; ++k) {
    double sum = 0;
    for (int a = 0; a < m.natom(); ++a) sum += g[static_cast<std::size_t>(3 * a + k)];
    if (c.functional == "HF") {
      EXPECT_NEAR(sum, 0.0, 1e-8) << c.basis << " axis " << k;
    }
  }
}

const std::vector<Atom> kWater = {{8, false, {0.01, -0.02, 0.03}},
                                  {1, false, {0.0, 0.78, -0.55}},
                                  {1, false, {0.05, -0.74, -0.60}}};

TEST(HartreeFockGradient, ClosedShellsWithSpAndDShellsAndDiffuseFunctions) {
  check({"STO-3G", kWater, {5, 5}, {}});
  check({"6-31Gx", kWater, {5, 5}, {}});
  check({"6-31+Gx", {{9, false, {0.0, 0.02, 0.0}}, {1, false, {0.03, 0.0, 0.95}}}, {5, 5}, {}});
}

TEST(HartreeFockGradient, OpenShellCationAndGhostAtom) {
  // OH radical, unrestricted
  check({"6-31Gx", {{8, false, {0.0, 0.0, 0.0}}, {1, false, {0.02, -0.01, 0.99}}}, {5, 4}, {}});
  // NH4+ in 3-21G, distorted
  check({"3-21G",
         {{7, false, {0.0, 0.0, 0.0}},
          {1, false, {0.62, 0.60, 0.58}},
          {1, false, {-0.60, -0.61, 0.59}},
          {1, false, {-0.58, 0.60, -0.62}},
          {1, false, {0.60, -0.57, -0.60}}},
         {5, 5},
         {0, 4, 8, 9, 13, 14}});
  // water with a ghost helium beside it: the ghost's functions move with it
  std::vector<Atom> atoms = kWater;
  atoms.push_back({2, true, {0.3, 0.2, 1.6}});
  check({"6-31Gx", atoms, {5, 5}, {0, 5, 9, 10, 11}});
}

TEST(HartreeFockGradient, OneAtomAtATimeGivesTheSameColumns) {
  std::vector<Atom> atoms = kWater;
  atoms.push_back({2, true, {0.3, 0.2, 1.6}});
  const Molecule m({"6-31Gx", atoms, {5, 5}, {}});
  const std::vector<double> all = m.analytic();
  for (int a = 0; a < m.natom(); ++a) {
    const std::vector<double> one = m.analytic(a);
    for (int k = 0; k < 3; ++k)
      EXPECT_NEAR(one[static_cast<std::size_t>(3 * a + k)],
                  all[static_cast<std::size_t>(3 * a + k)], 1e-11)
          << "atom " << a + 1;
  }
}

TEST(HartreeFockGradient, FShellsOfZinc) {
  check({"6-31Gx",
         {{30, false, {0.0, 0.0, 0.0}},
          {1, false, {0.05, 0.0, 1.55}},
          {1, false, {0.0, 0.08, -1.52}}},
         {16, 16},
         {0, 2, 3, 5, 7}});
}

}  // namespace
}  // namespace norvik::scf

namespace norvik::scf {
namespace {

// Kohn–Sham: the exchange–correlation term on the grid that moves with the atoms.
TEST(KohnShamGradient, LocalHybridAndOpenShellOnBothGrids) {
  Case water{"6-31Gx", kWater, {5, 5}, {0, 4, 5, 7}, "B3LYP"};
  check(water, 5e-5);
  water.functional = "SVWN5";
  water.checked = {1, 2, 6};
  check(water, 5e-5);
  // NH2: a radical with no degenerate partner for its odd electron
  check({"6-31Gx",
         {{7, false, {0.0, 0.01, 0.0}},
          {1, false, {0.03, 0.80, 0.62}},
          {1, false, {-0.02, -0.79, 0.60}}},
         {5, 4},
         {2, 3, 7},
         "BLYP"},
        5e-5);
  water.functional = "B3LYP";
  water.grid = dft::GridLevel::dense;
  water.checked = {4};
  check(water, 5e-5);
}

}  // namespace
}  // namespace norvik::scf
