// The exchange–correlation part of the nuclear gradient against central
// differences of the grid energy at a fixed density, with the basis and the
// grid rebuilt at every displaced geometry.
#include "dft/xc/xc_gradient.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "basis/library.h"
#include "common/constants.h"
#include "dft/functionals/functional_names.h"
#include "dft/grid/molecular_grid.h"
#include "dft/xc/basis_values.h"
#include "dft/xc/xc_integrator.h"
#include "scf/single_point.h"

namespace norvik::dft {
namespace {

// The host's base radius of the grid templates.
constexpr double kGridRadius = constants::kBohrAngstrom;
// Displacement of the finite differences [Å], with a fourth-order stencil:
// its truncation error (h⁴ times the fifth derivative, which the steep inner
// shells of the grid make large) and its rounding error (1e-13 eV of the
// energy sums over h) both stay below 1e-8 eV/Å.
constexpr double kStep = 1e-4;
// Agreement asked of every component: absolute [eV/Å], or relative to it.
constexpr double kAbsolute = 1e-6;
constexpr double kRelative = 1e-6;

struct Molecule {
  std::string name;
  std::string basis;
  std::vector<int> elements;
  std::vector<int> charges;  // 0 for a ghost
  std::vector<double> positions;
  setup::ElectronCount counts;
};

Molecule water() {
  return {"H2O",
          "6-31Gx",
          {8, 1, 1},
          {8, 1, 1},
          {0.0, 0.0, 0.1173, 0.0, 0.7572, -0.4692, 0.0, -0.7572, -0.4692},
          {5, 5}};
}

// Zinc hydride, slightly bent, with a ghost hydrogen beside it: the f shell of
// zinc, and an atom that carries functions and grid points but no charge.
Molecule zinc_hydride() {
  return {"ZnH2 + ghost",
          "6-31Gx",
          {30, 1, 1, 1},
          {30, 1, 1, 0},
          {0.0, 0.0, 0.0, 0.0, 0.05, 1.53, 0.0, -0.05, -1.53, 1.8, 0.3, 0.4},
          {16, 16}};
}

// A Hartree–Fock density of the molecule: any fixed density serves, this one
// looks like what the gradient will meet.
std::vector<double> density_of(const Molecule& m) {
  scf::JobControl job;
  job.basis = m.basis;
  const scf::ScfControl control{40, 0.5, 1e-6, 1e-5};
  scf::PointSettings settings;
  settings.counts = m.counts;
  settings.with_dipole = false;
  const int n = scf::basis_size(job.basis, m.elements);
  const std::size_t nn = static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
  std::vector<double> rho(2 * nn), orbitals(2 * (nn + static_cast<std::size_t>(n)));
  scf::single_point(job, control, {m.charges, m.elements, m.positions}, settings, rho, orbitals);
  return rho;
}

struct Functional {
  std::string name;
  Combination combination;
  double a;
};

Functional functional(const std::string& name) {
  const FunctionalName f = *find_functional(name);
  return {name, f.combination, f.exact_exchange};
}

std::vector<Functional> functionals(std::initializer_list<const char*> names) {
  std::vector<Functional> out;
  for (const char* name : names) out.push_back(functional(name));
  return out;
}

// E_xc [eV] of each functional with the basis at `positions` on `grid`.
std::vector<double> energies(const Molecule& m, std::span<const double> positions, const Grid& grid,
                             std::span<const double> density, const std::vector<Functional>& fs) {
  const basis::BasisSet set = basis::make_basis(m.basis, m.elements);
  const BasisEvaluator evaluator(set, positions);
  GridBasis g;
  g.npts = grid.size();
  g.nbasis = set.nbasis();
  g.weights = grid.weights;
  g.layout = TableLayout::computed;
  g.evaluator = &evaluator;
  g.points = grid.points;
  const auto npts = static_cast<std::size_t>(grid.size());
  std::vector<double> rho(8 * npts), e(3 * npts);
  density_on_grid(g, density, rho);
  std::vector<double> out;
  for (const Functional& f : fs) {
    const std::span<double> parts(e);
    combination_energies(
        f.combination, rho, f.a,
        {parts.subspan(0, npts), parts.subspan(npts, npts), parts.subspan(2 * npts, npts)});
    out.push_back(integrate(parts.subspan(0, npts), grid.weights));
  }
  return out;
}

// Fourth-order central differences of every functional's energy along every
// coordinate: (3, natom) per functional.  The grid is made at each geometry,
// or held at `fixed`.
std::vector<std::vector<double>> numeric_gradients(const Molecule& m,
                                                   std::span<const double> density,
                                                   const std::vector<Functional>& fs,
                                                   GridLevel level, const Grid* fixed = nullptr) {
  std::vector<std::vector<double>> out(fs.size(), std::vector<double>(m.positions.size()));
  for (std::size_t k = 0; k < m.positions.size(); ++k) {
    std::vector<std::vector<double>> e;
    for (double t : {-2.0, -1.0, 1.0, 2.0}) {
      std::vector<double> pos = m.positions;
      pos[k] += t * kStep;
      const Grid grid = fixed ? *fixed : make_grid(m.elements, pos, kGridRadius, level);
      e.push_back(energies(m, pos, grid, density, fs));
    }
    for (std::size_t f = 0; f < fs.size(); ++f) {
      out[f][k] = (8.0 * (e[2][f] - e[1][f]) - (e[3][f] - e[0][f])) / (12.0 * kStep);
    }
  }
  return out;
}

std::vector<double> analytic(const Molecule& m, std::span<const double> density,
                             const Functional& f, GridLevel level,
                             GridResponse response = GridResponse::moving) {
  const basis::BasisSet set = basis::make_basis(m.basis, m.elements);
  const Grid grid = make_grid(m.elements, m.positions, kGridRadius, level);
  return xc_nuclear_gradient(set, m.positions, grid, f.combination, f.a, density, response);
}

// Every component against the differences; the columns sum to zero.
void check_against_differences(const Molecule& m, std::span<const double> density,
                               const std::vector<Functional>& fs,
                               GridLevel level = GridLevel::standard) {
  const auto numeric = numeric_gradients(m, density, fs, level);
  for (std::size_t f = 0; f < fs.size(); ++f) {
    const std::vector<double> g = analytic(m, density, fs[f], level);
    double worst = 0.0, largest = 0.0;
    for (std::size_t k = 0; k < g.size(); ++k) {
      const double diff = std::abs(g[k] - numeric[f][k]);
      EXPECT_LE(diff, std::max(kAbsolute, kRelative * std::abs(numeric[f][k])))
          << m.name << " " << fs[f].name << " coordinate " << k << ": " << g[k] << " against "
          << numeric[f][k];
      worst = std::max(worst, diff);
      largest = std::max(largest, std::abs(g[k]));
    }
    std::array<double, 3> total{};
    for (std::size_t k = 0; k < g.size(); ++k) total[k % 3] += g[k];
    const double drift = std::hypot(total[0], total[1], total[2]);
    // Rounding of sums over 1e4 points of terms up to 1e3 eV/Å.
    EXPECT_LT(drift, 1e-8 * std::max(1.0, largest)) << m.name << " " << fs[f].name;
    std::printf("%-14s %-7s %s  largest %.3e eV/A, worst difference %.1e, sum %.1e\n",
                m.name.c_str(), fs[f].name.c_str(), level == GridLevel::dense ? "dense" : "std",
                largest, worst, drift);
  }
}

// Every combination and exact-exchange fraction that a functional name can
// select, restricted: local, gradient-corrected and hybrid forms.
TEST(XcGradient, WaterEveryFunctional) {
  const Molecule m = water();
  const std::vector<double> density = density_of(m);
  check_against_differences(m, density,
                            functionals({"SVWN5", "SVWN3", "SPL", "SGL", "BLYP", "BOP", "B1OP",
                                         "OP", "PFOP", "B3LYP", "B3LYP3"}));
}

// An open shell: the two spins' densities and potentials differ.
TEST(XcGradient, HydroxylUnrestricted) {
  const Molecule m{"OH", "6-31Gx", {8, 1}, {8, 1}, {0.0, 0.0, 0.0, 0.1, 0.2, 0.95}, {5, 4}};
  const std::vector<double> density = density_of(m);
  check_against_differences(m, density,
                            functionals({"SVWN5", "BLYP", "B3LYP", "BOP", "OP", "SPL"}));
}

// Diffuse functions reach far into the other atom's cell.
TEST(XcGradient, HydrogenFluorideWithDiffuseFunctions) {
  const Molecule m{"HF", "6-31+Gx", {9, 1}, {9, 1}, {0.0, 0.0, 0.0, 0.0, 0.0, 0.917}, {5, 5}};
  const std::vector<double> density = density_of(m);
  check_against_differences(m, density,
                            functionals({"SVWN5", "BLYP", "B3LYP", "BOP", "OP", "SPL"}));
}

// f functions, a 5476-point template and a ghost atom, which feels a force
// through its functions and its grid points.
TEST(XcGradient, ZincHydrideWithFShellAndGhost) {
  const Molecule m = zinc_hydride();
  const std::vector<double> density = density_of(m);
  check_against_differences(m, density, functionals({"SVWN5", "BLYP", "B3LYP", "OP"}));
  const std::vector<double> g = analytic(m, density, functional("BLYP"), GridLevel::standard);
  EXPECT_GT(std::hypot(g[9], g[10], g[11]), 1e-3);
}

TEST(XcGradient, DenseGrid) {
  const Molecule m = water();
  check_against_differences(m, density_of(m), functionals({"B3LYP"}), GridLevel::dense);
}

// Points and weights held where they are: only the functions move.  The
// differences of that energy check the function term alone; the columns no
// longer sum to zero, by the grid's error in the force on the whole molecule.
TEST(XcGradient, FixedGridMovesOnlyTheFunctions) {
  const Molecule m = water();
  const std::vector<double> density = density_of(m);
  const Functional f = functional("BLYP");
  const Grid grid = make_grid(m.elements, m.positions, kGridRadius, GridLevel::standard);
  const std::vector<double> numeric =
      numeric_gradients(m, density, {f}, GridLevel::standard, &grid)[0];
  const std::vector<double> fixed =
      xc_nuclear_gradient(basis::make_basis(m.basis, m.elements), m.positions, grid, f.combination,
                          f.a, density, GridResponse::fixed);
  std::array<double, 3> total{};
  for (std::size_t k = 0; k < fixed.size(); ++k) {
    EXPECT_NEAR(fixed[k], numeric[k], std::max(kAbsolute, kRelative * std::abs(numeric[k]))) << k;
    total[k % 3] += fixed[k];
  }
  const double drift = std::hypot(total[0], total[1], total[2]);
  std::printf("fixed grid: sum of the columns %.3e eV/A\n", drift);
  EXPECT_GT(drift, 1e-6);
}

// The same bits on one thread as on two, restricted and unrestricted.
TEST(XcGradient, ThreadCountDoesNotChangeTheBits) {
  const Molecule m{"OH", "6-31Gx", {8, 1}, {8, 1}, {0.0, 0.0, 0.0, 0.1, 0.2, 0.95}, {5, 4}};
  std::vector<double> open = density_of(m);
  std::vector<double> closed = open;
  const std::size_t nn = closed.size() / 2;
  std::copy(closed.begin(), closed.begin() + static_cast<std::ptrdiff_t>(nn),
            closed.begin() + static_cast<std::ptrdiff_t>(nn));
  const int threads = omp_get_max_threads();
  for (const std::vector<double>* d : {&open, &closed}) {
    omp_set_num_threads(1);
    const std::vector<double> one = analytic(m, *d, functional("B3LYP"), GridLevel::standard);
    omp_set_num_threads(std::max(2, threads));
    const std::vector<double> many = analytic(m, *d, functional("B3LYP"), GridLevel::standard);
    EXPECT_EQ(one, many);
  }
  omp_set_num_threads(threads);
}

// The second derivatives of the basis functions, which only the gradient
// uses, against differences of the first derivatives, for every kind of
// function up to f; the values and first derivatives are those of `batch`.
TEST(XcGradient, BasisSecondDerivatives) {
  const Molecule m = zinc_hydride();
  const basis::BasisSet set = basis::make_basis(m.basis, m.elements);
  const BasisEvaluator evaluator(set, m.positions);
  const auto n = static_cast<std::size_t>(set.nbasis());
  const double h = 1e-5;
  // Points near zinc (in bohr the f functions' scale) and near the ghost; each
  // point followed by its six displacements ±h along x, y, z.
  const std::vector<std::array<double, 3>> centres{
      {0.31, -0.22, 0.17}, {0.05, 0.9, -0.6}, {1.6, 0.5, 0.2}};
  std::vector<double> points;
  for (const auto& c : centres) {
    points.insert(points.end(), c.begin(), c.end());
    for (std::size_t k = 0; k < 3; ++k) {
      for (double s : {1.0, -1.0}) {
        std::array<double, 3> p = c;
        p[k] += s * h;
        points.insert(points.end(), p.begin(), p.end());
      }
    }
  }
  const auto np = static_cast<std::ptrdiff_t>(points.size() / 3);
  std::vector<double> first(4 * static_cast<std::size_t>(np) * n),
      second(10 * static_cast<std::size_t>(np) * n);
  evaluator.batch(points, 0, np, first);
  evaluator.batch_with_hessian(points, 0, np, second);
  const std::size_t block = static_cast<std::size_t>(np) * n;
  EXPECT_TRUE(std::equal(first.begin(), first.end(), second.begin()));
  const std::array<std::array<std::size_t, 3>, 3> table{{{4, 5, 6}, {5, 7, 8}, {6, 8, 9}}};
  const auto at = [&](std::size_t c, std::size_t p, std::size_t f) {
    return second[c * block + p + static_cast<std::size_t>(np) * f];
  };
  for (std::size_t c = 0; c < centres.size(); ++c) {
    const std::size_t p = 7 * c;
    for (std::size_t f = 0; f < n; ++f) {
      for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
          const double numeric =
              (at(1 + i, p + 1 + 2 * k, f) - at(1 + i, p + 2 + 2 * k, f)) / (2.0 * h);
          const double exact = at(table[i][k], p, f);
          EXPECT_NEAR(exact, numeric, 1e-6 * std::max(1.0, std::abs(exact)))
              << "function " << f << " d" << i << "d" << k << " point " << c;
        }
      }
    }
  }
}

}  // namespace
}  // namespace norvik::dft
