// Excited states: CIS, TDHF and TD-LSDA (Tamm–Dancoff and full) against
// NWChem's tddft module, the Davidson roots against the whole Tamm–Dancoff
// matrix, and the spin adaptation against the spin-orbital problem.
#include "properties/excited_states.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "basis/library.h"
#include "common/error.h"
#include "dft/functionals/functional_names.h"
#include "linalg/eigen.h"
#include "scf/single_point.h"
#include "setup/job_setup.h"

namespace norvik::properties {
namespace {

// NWChem prints energies to 1e-9 hartree and f to 1e-10; its Davidson
// residual 1e-6 and ours 1e-5 eV leave energy errors far below 1e-6 eV, so
// what remains is the SCF points (converged to 1e-10) and, for the Kohn–Sham
// rows, the grids (NWChem's xfine against our dense grid).
constexpr double kEnergyEv = 1e-4;
constexpr double kStrength = 1e-4;
// States closer than this are one degenerate level: their individual
// strengths depend on the rotation within the level, their sum does not.
constexpr double kDegenerateEv = 1e-3;

struct Point {
  // Kohn–Sham points on the dense grid for the references, on the standard
  // one where the test compares the library with itself.
  Point(const std::string& file, std::string_view method, bool dense = true) {
    const setup::Molecule mol = setup::read_molecule(file, 1000, {});
    for (const auto& a : mol.atoms) {
      z.push_back(a.nuclear_charge);
      el.push_back(a.element);
      pos.insert(pos.end(), a.position.begin(), a.position.end());
    }
    counts = mol.electrons;
    basis_name = std::string(io_trim(mol.settings.text4));
    job.basis = basis_name;
    job.orthogonality = 1e-8;
    if (method != "HF") {
      scf::KohnShamStage ks;
      ks.functional = {dft::functional_for(method, dft::FunctionalUse::potential_matrix),
                       dft::exact_exchange_fraction(method)};
      ks.scf = {200, 0.5, 1e-11, 1e-10};
      ks.grid_level = dense ? dft::GridLevel::dense : dft::GridLevel::standard;
      kohn_sham = ks;
    }
    basis = basis::make_basis(basis_name, el);
    const std::size_t n = static_cast<std::size_t>(basis.nbasis());
    rho.assign(2 * n * n, 0.0);
    orbitals.assign(2 * n * (n + 1), 0.0);
    scf::PointSettings settings;
    settings.counts = counts;
    settings.kohn_sham = kohn_sham;
    const scf::ScfControl control{300, 0.5, 1e-11, 1e-10};
    converged = scf::compute_point(basis, job, control, view(), settings, rho, orbitals).converged;
  }
  Point(const Point&) = delete;
  Point& operator=(const Point&) = delete;

  static std::string_view io_trim(std::string_view s) {
    while (!s.empty() && s.back() == ' ') s.remove_suffix(1);
    return s;
  }
  scf::MoleculeView view() const { return {z, el, pos}; }
  ExcitationResult states(ResponseKind kind, int roots = 10, bool triplets = true) const {
    ExcitationOptions o;
    o.kind = kind;
    o.roots = roots;
    o.triplets = triplets;
    return excited_states(basis, job, view(), counts, rho, orbitals, kohn_sham, o);
  }

  std::vector<int> z, el;
  std::vector<double> pos;
  setup::ElectronCount counts;
  std::string basis_name;
  scf::JobControl job;
  std::optional<scf::KohnShamStage> kohn_sham;
  basis::BasisSet basis;
  std::vector<double> rho, orbitals;
  bool converged = false;
};

struct RefState {
  std::string spin;
  double energy, strength;
};
using Table = std::map<std::pair<std::string, std::string>, std::vector<RefState>>;

Table read_table() {
  std::ifstream in(std::string(NORVIK_SOURCE_DIR) + "/tests/references/data/excitations.tsv");
  Table t;
  std::string line;
  while (std::getline(in, line)) {
    if (line.empty() || line[0] == '#' || line.rfind("case\t", 0) == 0) continue;
    std::vector<std::string> f;
    std::istringstream fields(line);
    for (std::string x; std::getline(fields, x, '\t');) f.push_back(x);
    t[{f[0], f[1]}].push_back({f[2], std::stod(f[4]), std::stod(f[5])});
  }
  return t;
}

// method of the table → functional of the point and the response
struct Method {
  std::string_view functional;
  ResponseKind kind;
};
Method method_of(const std::string& m) {
  if (m == "CIS") return {"HF", ResponseKind::tamm_dancoff};
  if (m == "TDHF") return {"HF", ResponseKind::random_phase};
  if (m == "KSTDA5") return {"KSTDA5", ResponseKind::tamm_dancoff};
  if (m == "TDKS5") return {"TDKS5", ResponseKind::random_phase};
  if (m == "TDB3LYP") return {"B3LYP", ResponseKind::random_phase};
  return {"TDKS3", ResponseKind::random_phase};
}

std::string spin_name(StateSpin s) {
  return s == StateSpin::singlet ? "singlet" : s == StateSpin::triplet ? "triplet" : "none";
}

// Compares one row of the table; returns the largest energy deviation [eV].
double compare_row(const std::string& name, const std::string& method,
                   const std::vector<RefState>& want) {
  SCOPED_TRACE(name + " " + method);
  const std::string dir = std::string(NORVIK_SOURCE_DIR) + "/tests/references/data/";
  // "TDHF/singlet": the singlets alone (a point unstable towards triplets).
  const std::string base = method.substr(0, method.find('/'));
  const Method m = method_of(base);
  const Point p(dir + "molecules_excite/" + name + ".mol", m.functional);
  EXPECT_TRUE(p.converged);
  const ExcitationResult got = p.states(m.kind, 10, base == method);
  double worst = 0.0;
  for (const std::string spin : {"singlet", "triplet", "none"}) {
    std::vector<RefState> ref, ours;
    for (const RefState& r : want)
      if (r.spin == spin) ref.push_back(r);
    for (const ExcitedState& s : got.states)
      if (spin_name(s.spin) == spin) ours.push_back({spin, s.energy, s.strength});
    if (ref.empty()) continue;
    EXPECT_EQ(ours.size(), ref.size()) << spin;
    const std::size_t k = std::min(ours.size(), ref.size());
    for (std::size_t r = 0; r < k; ++r) {
      EXPECT_NEAR(ours[r].energy, ref[r].energy, kEnergyEv) << spin << " root " << r + 1;
      worst = std::max(worst, std::abs(ours[r].energy - ref[r].energy));
    }
    // Strengths summed over degenerate levels; the last level may be cut by
    // the root count differently in the two programs, so it is left out.
    for (std::size_t r = 0; r < k;) {
      std::size_t e = r + 1;
      while (e < k && ref[e].energy - ref[r].energy < kDegenerateEv) ++e;
      if (e == k) break;
      double a = 0.0, b = 0.0;
      for (std::size_t q = r; q < e; ++q) {
        a += ours[q].strength;
        b += ref[q].strength;
      }
      EXPECT_NEAR(a, b, kStrength) << spin << " roots " << r + 1 << "-" << e;
      r = e;
    }
  }
  std::printf("%-14s %-7s largest energy deviation %.1e eV\n", name.c_str(), method.c_str(), worst);
  return worst;
}

// Hartree–Fock rows in the default run: restricted water (CIS, TDHF) and the
// unrestricted radicals (UHF-CIS of OH, UHF-TDHF of NH2).
TEST(ExcitedStates, MatchNwchemHartreeFock) {
  const Table t = read_table();
  for (const auto& [name, method] : {std::pair<std::string, std::string>{"h2o_6-31pGx", "CIS"},
                                     {"h2o_6-31pGx", "TDHF"},
                                     {"oh_6-31Gx", "CIS"},
                                     {"nh2_6-31pGx", "TDHF"}}) {
    const auto row = t.find({name, method});
    ASSERT_NE(row, t.end()) << name << " " << method;
    compare_row(name, method, row->second);
  }
}

// Ethylene's RHF point is triplet-unstable: its TDHF triplets stop with the
// library's error (the singlets and the Tamm–Dancoff triplets are fine).
TEST(ExcitedStates, UnstablePointStops) {
  const std::string dir = std::string(NORVIK_SOURCE_DIR) + "/tests/references/data/";
  const Point p(dir + "molecules_excite/c2h4_6-31Gx.mol", "HF");
  ASSERT_TRUE(p.converged);
  EXPECT_THROW(p.states(ResponseKind::random_phase, 2), Error);
  EXPECT_EQ(p.states(ResponseKind::random_phase, 2, false).states.size(), 2u);
  EXPECT_LT(p.states(ResponseKind::tamm_dancoff, 1).states[1].energy, 4.0);  // T1 3.51 eV
}

// Every row of the table, the Kohn–Sham ones on the dense grid (the slow
// label runs it).
TEST(ExcitedStates, DISABLED_MatchNwchemAllRows) {
  for (const auto& [key, want] : read_table()) compare_row(key.first, key.second, want);
}

std::vector<double> eigenvalues(std::vector<double> a, std::size_t n) {
  std::vector<double> w(n), v(n * n);
  const auto k = static_cast<linalg::Index>(n);
  EXPECT_EQ(linalg::symmetric_eigen(linalg::MatrixView(a.data(), k, k), w,
                                    linalg::MatrixView(v.data(), k, k)),
            linalg::Status::ok);
  return w;
}

// The Davidson roots are the lowest eigenvalues of the whole matrix, for both
// spins; the spin-orbital matrix of the same restricted point holds exactly
// the singlet and triplet eigenvalues (which catches a wrong factor in the
// spin adaptation: the Coulomb term of the singlets, its absence in the
// triplets, the kernel combinations).
TEST(ExcitedStates, SpinAdaptedAndDavidsonAgreeWithWholeMatrices) {
  const std::string dir = std::string(NORVIK_SOURCE_DIR) + "/tests/references/data/";
  for (const std::string_view functional : {"HF", "KSTDA5"}) {
    SCOPED_TRACE(std::string(functional));
    const Point p(dir + "molecules/h2o_STO-3G.mol", functional, false);
    ASSERT_TRUE(p.converged);
    auto matrix = [&](StateSpin s) {
      return tamm_dancoff_matrix(p.basis, p.job, p.view(), p.counts, p.rho, p.orbitals, p.kohn_sham,
                                 s);
    };
    const std::vector<double> singlet = matrix(StateSpin::singlet);
    const std::vector<double> triplet = matrix(StateSpin::triplet);
    const std::vector<double> both = matrix(StateSpin::unrestricted);
    const std::size_t n = static_cast<std::size_t>(std::sqrt(double(singlet.size())) + 0.5);
    ASSERT_EQ(both.size(), 4 * n * n);
    for (std::size_t i = 0; i < n; ++i)
      for (std::size_t j = 0; j < i; ++j) {
        EXPECT_NEAR(singlet[i + n * j], singlet[j + n * i], 1e-9);
        EXPECT_NEAR(triplet[i + n * j], triplet[j + n * i], 1e-9);
      }
    std::vector<double> ws = eigenvalues(singlet, n), wt = eigenvalues(triplet, n);
    std::vector<double> union_st = ws;
    union_st.insert(union_st.end(), wt.begin(), wt.end());
    std::sort(union_st.begin(), union_st.end());
    const std::vector<double> wb = eigenvalues(both, 2 * n);
    for (std::size_t k = 0; k < 2 * n; ++k) EXPECT_NEAR(wb[k], union_st[k], 1e-8) << k;

    const ExcitationResult r = p.states(ResponseKind::tamm_dancoff, 4);
    ASSERT_EQ(r.states.size(), 8u);
    for (std::size_t k = 0; k < 4; ++k) {
      EXPECT_NEAR(r.states[k].energy, ws[k], 1e-7) << "singlet " << k;
      EXPECT_NEAR(r.states[4 + k].energy, wt[k], 1e-7) << "triplet " << k;
      EXPECT_EQ(r.states[4 + k].strength, 0.0);
    }
  }
}

// With a pure functional A − B is the diagonal of the level gaps Δ, so the
// random-phase ω² are the eigenvalues of Δ^½ (A + B) Δ^½ = Δ^½ (2A − Δ) Δ^½:
// the paired Davidson roots against that whole matrix.
TEST(ExcitedStates, PureFunctionalRandomPhaseFromWholeMatrices) {
  const std::string dir = std::string(NORVIK_SOURCE_DIR) + "/tests/references/data/";
  const Point p(dir + "molecules/h2o_STO-3G.mol", "TDKS5", false);
  ASSERT_TRUE(p.converged);
  for (const StateSpin spin : {StateSpin::singlet, StateSpin::triplet}) {
    std::vector<double> a = tamm_dancoff_matrix(p.basis, p.job, p.view(), p.counts, p.rho,
                                                p.orbitals, p.kohn_sham, spin);
    const std::size_t n = static_cast<std::size_t>(std::sqrt(double(a.size())) + 0.5);
    std::vector<double> gap(n);
    const std::size_t nb = static_cast<std::size_t>(p.basis.nbasis());
    const int nocc = p.counts.alpha;
    const double* levels = p.orbitals.data() + nb * nb;
    const std::size_t nvir = n / static_cast<std::size_t>(nocc);
    for (std::size_t i = 0; i < static_cast<std::size_t>(nocc); ++i)
      for (std::size_t c = 0; c < nvir; ++c) gap[c + nvir * i] = levels[nocc + c] - levels[i];
    std::vector<double> h(n * n);
    for (std::size_t j = 0; j < n; ++j)
      for (std::size_t i = 0; i < n; ++i)
        h[i + n * j] =
            std::sqrt(gap[i]) * (2.0 * a[i + n * j] - (i == j ? gap[i] : 0.0)) * std::sqrt(gap[j]);
    const std::vector<double> w = eigenvalues(h, n);
    ExcitationOptions o;
    o.kind = ResponseKind::random_phase;
    o.roots = 4;
    o.singlets = spin == StateSpin::singlet;
    o.triplets = spin == StateSpin::triplet;
    const ExcitationResult r =
        excited_states(p.basis, p.job, p.view(), p.counts, p.rho, p.orbitals, p.kohn_sham, o);
    ASSERT_EQ(r.states.size(), 4u);
    for (std::size_t k = 0; k < 4; ++k) EXPECT_NEAR(r.states[k].energy, std::sqrt(w[k]), 1e-7);
  }
}

}  // namespace
}  // namespace norvik::properties
