// The one-electron matrix builder: textbook values, normalisation of every
// shell kind, an independent program's matrices, and the exported CALCMTRX.
#include <gtest/gtest.h>
#include <omp.h>

#include <cmath>
#include <iostream>
#include <vector>

#include "basis/library.h"
#include "basis/shell_arrays.h"
#include "common/constants.h"
#include "common/error.h"
#include "integrals/one/one_electron_matrices.h"
#include "integrals/one/primitives.h"
#include "norvik/integrals_one.h"
#include "support.h"

namespace one = norvik::integrals::one;
namespace nb = norvik::basis;
using one::testing::make_shell;

namespace {

struct Matrices {
  int n = 0;
  std::vector<double> s, t, v, x, y, z;
  double at(const std::vector<double>& m, int i, int j) const { return m[i + n * j]; }
};

Matrices build(const nb::BasisSet& basis, const std::vector<one::Vec3>& positions,
               const std::vector<double>& charges) {
  Matrices m;
  m.n = basis.nbasis();
  const std::size_t nn = static_cast<std::size_t>(m.n) * m.n;
  for (auto* v : {&m.s, &m.t, &m.v, &m.x, &m.y, &m.z}) v->assign(nn, -7.0);
  one::OneElectronMatrices out;
  out.overlap = {m.s.data(), m.n};
  out.kinetic = {m.t.data(), m.n};
  out.potential = {m.v.data(), m.n};
  out.position = {one::MatrixRef{m.x.data(), m.n}, one::MatrixRef{m.y.data(), m.n},
                  one::MatrixRef{m.z.data(), m.n}};
  one::build_one_electron_matrices(basis, positions, charges, out);
  return m;
}

// A molecule that uses every shell kind, on three unsymmetric centres.
struct Mixed {
  nb::BasisSet basis;
  std::vector<one::Vec3> positions = {{0.1, -0.2, 0.3}, {1.9, 0.4, -0.5}, {-0.7, 1.6, 1.1}};
  std::vector<double> charges = {8.0, 1.0, 21.0};
  Mixed() {
    basis.shells = {
        make_shell(1, 0, {130.7, 23.81, 6.44}, {0.154, 0.535, 0.445}),
        make_shell(4, 0, {5.03, 1.17, 0.38}, {-0.0999, 0.399, 0.700}, {0.156, 0.608, 0.392}),
        make_shell(5, 0, {0.8}, {1.0}),
        make_shell(1, 1, {3.42, 0.62, 0.17}, {0.154, 0.535, 0.445}),
        make_shell(3, 1, {1.1}, {1.0}),
        make_shell(6, 2, {2.1, 0.55}, {0.6, 0.5}),
        make_shell(7, 2, {0.8}, {1.0}),
    };
  }
};

}  // namespace

TEST(OneMatrices, H2Sto3gReproducesTheTextbookValues) {
  // H2 at R = 1.4 bohr, STO-3G with zeta = 1.24 (Szabo and Ostlund, ch. 3).
  nb::BasisSet basis;
  const std::vector<double> e = {3.42525091, 0.62391373, 0.16885540};
  const std::vector<double> d = {0.15432897, 0.53532814, 0.44463454};
  basis.shells = {make_shell(1, 0, e, d), make_shell(1, 1, e, d)};
  const Matrices m = build(basis, {{0, 0, 0}, {0, 0, 1.4}}, {1.0, 1.0});
  EXPECT_NEAR(m.at(m.s, 0, 0), 1.0, 1e-8);
  EXPECT_NEAR(m.at(m.s, 0, 1), 0.6593, 5e-5);
  EXPECT_NEAR(m.at(m.t, 0, 0), 0.7600, 5e-5);
  EXPECT_NEAR(m.at(m.t, 0, 1), 0.2365, 5e-5);
  EXPECT_NEAR(m.at(m.v, 0, 0), -1.2266 - 0.6538, 1e-4);
  EXPECT_NEAR(m.at(m.v, 0, 1), -2 * 0.5974, 1e-4);
  EXPECT_NEAR(m.at(m.t, 0, 0) + m.at(m.v, 0, 0), -1.1204, 5e-5);
  EXPECT_NEAR(m.at(m.t, 0, 1) + m.at(m.v, 0, 1), -0.9584, 5e-5);
  // The second centre sits on z: <1|z|1> = 0, <2|z|2> = 1.4, <1|z|2> = 0.7 S12.
  EXPECT_NEAR(m.at(m.z, 0, 0), 0.0, 1e-15);
  EXPECT_NEAR(m.at(m.z, 1, 1), 1.4 * m.at(m.s, 1, 1), 1e-15);
  EXPECT_NEAR(m.at(m.z, 0, 1), 0.7 * m.at(m.s, 0, 1), 1e-15);
  EXPECT_EQ(m.at(m.x, 0, 1), 0.0);
}

TEST(OneMatrices, EveryShellKindIsNormalised) {
  // Uncontracted shells are exactly normalised; the function slots of one shell
  // differ in their (L, M) and terms only.
  nb::BasisSet basis;
  int atom = 0;
  for (int kind : {1, 3, 4, 5, 6, 7}) {
    basis.shells.push_back(make_shell(kind, atom, {0.37}, {1.0}, {1.0}));
    basis.shells.push_back(make_shell(kind, atom + 1, {4.1}, {1.0}, {1.0}));
  }
  const Matrices m = build(basis, {{0, 0, 0}, {0.2, -0.3, 0.9}}, {0.0, 0.0});
  for (int i = 0; i < m.n; ++i) EXPECT_NEAR(m.at(m.s, i, i), 1.0, 2e-15) << i;
  // Pure d functions and the companion are mutually orthogonal on one centre;
  // the companion r^2 overlaps the s function.
  for (int i = 16; i < 21; ++i)
    for (int j = 16; j < 21; ++j)
      if (i != j) {
        EXPECT_NEAR(m.at(m.s, i, j), 0.0, 1e-15);
      }
  // A published contraction (6-31G carbon 1s) is normalised to its digits.
  nb::BasisSet c1s;
  c1s.shells = {make_shell(
      1, 0, {3047.52488, 457.369518, 103.948685, 29.2101553, 9.28666296, 3.16392696},
      {0.001834737132, 0.01403732281, 0.06884262226, 0.2321844432, 0.4679413484, 0.3623119853})};
  const Matrices mc = build(c1s, {{0, 0, 0}}, {6.0});
  EXPECT_NEAR(mc.at(mc.s, 0, 0), 1.0, 1e-6);
}

TEST(OneMatrices, EveryLibraryBasisIsNormalisedOnEveryElement) {
  // The published contractions are normalised to about six digits; a wrong
  // primitive norm, term coefficient or kind shows up at the percent level.
  int atoms = 0;
  for (const char* name : {"STO-3G", "3-21GC", "6-21G", "6-31GxxC", "6-31Gxx", "6-31++GxxC"}) {
    for (int z = 1; z <= 54; ++z) {
      nb::BasisSet basis;
      try {
        basis = nb::make_basis(name, std::vector<int>{z});
      } catch (const norvik::Error&) {
        continue;  // the element is outside this basis
      }
      const Matrices m = build(basis, {{0.0, 0.0, 0.0}}, {static_cast<double>(z)});
      for (int i = 0; i < m.n; ++i)
        ASSERT_NEAR(m.at(m.s, i, i), 1.0, 1e-6) << name << " Z=" << z << " function " << i + 1;
      ++atoms;
    }
  }
  EXPECT_EQ(atoms, 54 + 54 + 18 + 36 + 36 + 18);
}

TEST(OneMatrices, AgreeWithPsi4OnTheSameFunctionSpaces) {
  // Generalised eigenvalues of (M, S) do not depend on how each program orders,
  // normalises or combines its functions within a shell.
  for (const char* file : {"psi4_h2o_631gss.txt", "psi4_h2o_631gss_cartesian.txt",
                           "psi4_sch_631gs.txt", "psi4_co_sto3g.txt"}) {
    SCOPED_TRACE(file);
    const auto rc = one::testing::read_reference_case(file);
    const Matrices m = build(rc.basis, rc.positions, rc.charges);
    ASSERT_EQ(m.n, rc.nbasis);
    for (const auto& [name, expected] : rc.eigenvalues) {
      const std::vector<double>& mat = name == "T"   ? m.t
                                       : name == "V" ? m.v
                                       : name == "X" ? m.x
                                       : name == "Y" ? m.y
                                                     : m.z;
      const auto ev = one::testing::generalised_eigenvalues(mat, m.s, m.n);
      ASSERT_EQ(ev.size(), expected.size());
      for (std::size_t k = 0; k < ev.size(); ++k)
        EXPECT_NEAR(ev[k], expected[k], 1e-9 * std::max(1.0, std::abs(expected[k])))
            << name << " " << k;
    }
  }
}

TEST(OneMatrices, EqualTheContractedPrimitiveIntegrals) {
  // Every element of the fast builder against the plain double sum over
  // primitives and terms of the primitive routines.
  const Mixed mol;
  const Matrices m = build(mol.basis, mol.positions, mol.charges);
  std::vector<std::pair<const nb::Shell*, const nb::Function*>> fns;
  for (const auto& sh : mol.basis.shells)
    for (int f = 0; f < sh.kind; ++f) fns.emplace_back(&sh, &sh.functions[f]);
  ASSERT_EQ(static_cast<int>(fns.size()), m.n);
  for (int i = 0; i < m.n; ++i) {
    for (int j = 0; j < m.n; ++j) {
      const auto [sa, fa] = fns[i];
      const auto [sb, fb] = fns[j];
      double s = 0, t = 0, v = 0, x = 0, z = 0;
      for (int ka = 0; ka < sa->nprim; ++ka)
        for (int kb = 0; kb < sb->nprim; ++kb)
          for (int ta = 0; ta < fa->nterm; ++ta)
            for (int tb = 0; tb < fb->nterm; ++tb) {
              const double w = fa->coef[ka] / one::primitive_norm(sa->exponents[ka], fa->L) *
                               fb->coef[kb] / one::primitive_norm(sb->exponents[kb], fb->L) *
                               fa->term_coef[ta] * fb->term_coef[tb];
              const one::Primitive a{mol.positions[sa->atom],
                                     sa->exponents[ka],
                                     {fa->lmn[ta][0], fa->lmn[ta][1], fa->lmn[ta][2]}};
              const one::Primitive b{mol.positions[sb->atom],
                                     sb->exponents[kb],
                                     {fb->lmn[tb][0], fb->lmn[tb][1], fb->lmn[tb][2]}};
              s += w * one::overlap(a, b);
              t += w * one::kinetic(a, b);
              for (std::size_t c = 0; c < mol.charges.size(); ++c)
                v -= w * mol.charges[c] * one::nuclear_attraction(a, b, mol.positions[c]);
              x += w * one::cartesian_moment(a, b, {1, 0, 0});
              z += w * one::cartesian_moment(a, b, {0, 0, 1});
            }
      const double tol = 1e-12;
      EXPECT_NEAR(m.at(m.s, i, j), s, tol) << i << "," << j;
      EXPECT_NEAR(m.at(m.t, i, j), t, tol * std::max(1.0, std::abs(t))) << i << "," << j;
      EXPECT_NEAR(m.at(m.v, i, j), v, tol * std::max(1.0, std::abs(v))) << i << "," << j;
      EXPECT_NEAR(m.at(m.x, i, j), x, tol) << i << "," << j;
      EXPECT_NEAR(m.at(m.z, i, j), z, tol) << i << "," << j;
    }
  }
}

TEST(OneMatrices, AreSymmetricAndIndependentOfTheThreadCount) {
  const Mixed mol;
  const int saved = omp_get_max_threads();
  omp_set_num_threads(1);
  const Matrices one_thread = build(mol.basis, mol.positions, mol.charges);
  omp_set_num_threads(3);
  const Matrices three = build(mol.basis, mol.positions, mol.charges);
  omp_set_num_threads(saved);
  const int n = one_thread.n;
  for (auto mat :
       {&Matrices::s, &Matrices::t, &Matrices::v, &Matrices::x, &Matrices::y, &Matrices::z}) {
    EXPECT_EQ(one_thread.*mat, three.*mat);
    const auto& a = one_thread.*mat;
    for (int i = 0; i < n; ++i)
      for (int j = 0; j < n; ++j) ASSERT_EQ(a[i + n * j], a[j + n * i]);
  }
}

TEST(OneMatrices, GhostAtomsCarryFunctionsButDoNotAttract) {
  Mixed mol;
  const Matrices with = build(mol.basis, mol.positions, mol.charges);
  // A ghost of atom 1 (charge 0) and an extra ghost without functions.
  auto charges = mol.charges;
  charges[1] = 0.0;
  auto positions = mol.positions;
  positions.push_back({3.0, 3.0, 3.0});
  charges.push_back(0.0);
  const Matrices ghost = build(mol.basis, positions, charges);
  EXPECT_EQ(with.s, ghost.s);
  EXPECT_EQ(with.t, ghost.t);
  // V without atom 1's attraction: remove it by hand from a charge-1-only build.
  std::vector<double> only(positions.size(), 0.0);
  only[1] = 1.0;
  const Matrices single = build(mol.basis, positions, only);
  for (std::size_t k = 0; k < with.v.size(); ++k)
    EXPECT_NEAR(ghost.v[k], with.v[k] - single.v[k], 1e-12 * std::max(1.0, std::abs(with.v[k])));
}

namespace {

// The basis as MAKEBASIS's flat arrays, for the exported routine.
struct FlatBasis {
  int nshell = 0;
  std::vector<norvik_int> kind, lm, nprim, nterm, lmn, atom;
  std::vector<double> term_coef, exps, coef;
  explicit FlatBasis(const nb::BasisSet& b) : nshell(static_cast<int>(b.shells.size())) {
    for (auto* v : {&kind, &nprim, &atom}) v->resize(nshell);
    lm.resize(14 * nshell);
    nterm.resize(7 * nshell);
    lmn.resize(63 * nshell);
    term_coef.resize(21 * nshell);
    exps.resize(6 * nshell);
    coef.resize(42 * nshell);
    nb::store_basis(b, {nshell,
                        kind.data(),
                        {lm.data(), nterm.data(), lmn.data(), term_coef.data(), nprim.data()},
                        {exps.data(), coef.data()}});
    for (int s = 0; s < nshell; ++s) atom[s] = b.shells[s].atom + 1;
  }
};

}  // namespace

TEST(OneCalcmtrx, TakesAngstromAndReturnsElectronvoltsAndAngstrom) {
  const Mixed mol;
  const Matrices core = build(mol.basis, mol.positions, mol.charges);
  const FlatBasis flat(mol.basis);
  const double bohr = norvik::constants::kBohrAngstrom;
  const double hartree = norvik::constants::kHartreeEv;
  const norvik_int natom = 3, n = core.n;
  std::vector<double> coord;
  for (const auto& r : mol.positions)
    for (double c : r) coord.push_back(c * bohr);
  const std::size_t nn = static_cast<std::size_t>(n) * n;
  std::vector<double> s(nn), t(nn), v(nn), dip(3 * nn);
  CALCMTRX(&flat.nshell, flat.kind.data(), flat.lm.data(), flat.nprim.data(), flat.nterm.data(),
           flat.lmn.data(), flat.term_coef.data(), flat.exps.data(), flat.coef.data(),
           flat.atom.data(), &natom, coord.data(), mol.charges.data(), &n, s.data(), t.data(),
           v.data(), dip.data());
  for (std::size_t k = 0; k < nn; ++k) {
    EXPECT_NEAR(s[k], core.s[k], 1e-14);
    EXPECT_NEAR(t[k], core.t[k] * hartree, 1e-12 * std::max(1.0, std::abs(t[k])));
    EXPECT_NEAR(v[k], core.v[k] * hartree, 1e-12 * std::max(1.0, std::abs(v[k])));
    EXPECT_NEAR(dip[k], core.x[k] * bohr, 1e-13);
    EXPECT_NEAR(dip[nn + k], core.y[k] * bohr, 1e-13);
    EXPECT_NEAR(dip[2 * nn + k], core.z[k] * bohr, 1e-13);
  }
  // Moving the molecule by d moves <a|x|b> by d_x <a|b>: positions are about the
  // origin of the caller's coordinates.
  std::vector<double> moved = coord;
  for (int a = 0; a < natom; ++a) moved[3 * a] += 2.5;
  std::vector<double> dip2(3 * nn);
  CALCMTRX(&flat.nshell, flat.kind.data(), flat.lm.data(), flat.nprim.data(), flat.nterm.data(),
           flat.lmn.data(), flat.term_coef.data(), flat.exps.data(), flat.coef.data(),
           flat.atom.data(), &natom, moved.data(), mol.charges.data(), &n, s.data(), t.data(),
           v.data(), dip2.data());
  for (std::size_t k = 0; k < nn; ++k) {
    EXPECT_NEAR(dip2[k], dip[k] + 2.5 * s[k], 1e-12);
    EXPECT_NEAR(dip2[nn + k], dip[nn + k], 1e-12);
  }
}

TEST(OneCalcmtrx, StopsWhenTheMatrixSizeDoesNotMatchTheBasis) {
  one::testing::use_threadsafe_death_tests();
  const Mixed mol;
  const FlatBasis flat(mol.basis);
  const norvik_int natom = 3, n = mol.basis.nbasis() - 1;
  std::vector<double> coord(9, 0.0);
  coord[3] = 1.0;
  coord[7] = 1.0;
  std::vector<double> s(1000), t(1000), v(1000), dip(3000);
  EXPECT_EXIT(
      {
        std::cout.rdbuf(std::cerr.rdbuf());
        CALCMTRX(&flat.nshell, flat.kind.data(), flat.lm.data(), flat.nprim.data(),
                 flat.nterm.data(), flat.lmn.data(), flat.term_coef.data(), flat.exps.data(),
                 flat.coef.data(), flat.atom.data(), &natom, coord.data(), mol.charges.data(), &n,
                 s.data(), t.data(), v.data(), dip.data());
      },
      ::testing::ExitedWithCode(1), "Wrong nBasis in calcMtrx\\.");
}

TEST(OneMatrices, RefuseShellsTheyCannotServe) {
  auto message = [](nb::Shell shell) {
    nb::BasisSet basis;
    basis.shells = {make_shell(1, 0, {1.0}, {1.0}), shell};
    std::vector<double> s(64);
    one::OneElectronMatrices out;
    out.overlap = {s.data(), 8};
    try {
      one::build_one_electron_matrices(basis, std::vector<one::Vec3>{{0, 0, 0}},
                                       std::vector<double>{1.0}, out);
    } catch (const norvik::Error& e) {
      return e.lines()[0];
    }
    return std::string("no error");
  };
  nb::Shell g = make_shell(3, 0, {1.0}, {1.0});
  g.functions[0].L = 4;
  g.functions[0].lmn[0] = {4, 0, 0};
  EXPECT_EQ(message(g), " Wrong shell in calcMtrx. shell =            2");
  nb::Shell odd = make_shell(3, 0, {1.0}, {1.0});
  odd.functions[1].lmn[0] = {1, 1, 0};  // degree 2 in a p function
  EXPECT_EQ(message(odd), " Wrong shell in calcMtrx. shell =            2");
  nb::Shell far = make_shell(1, 3, {1.0}, {1.0});
  EXPECT_EQ(message(far), " Wrong atom of shell in calcMtrx. shell =            2");
}
