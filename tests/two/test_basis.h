// Published 6-31G* / 6-31G** shells for H, C, N and O built by hand as
// basis::BasisSet values, and a few molecules, for the two-electron tests and
// benchmarks (the basis library's own tables are not needed here).
#pragma once

#include <array>
#include <cmath>
#include <vector>

#include "basis/basis_set.h"
#include "common/constants.h"

namespace norvik::testing {

using Vec3 = std::array<double, 3>;

struct Molecule {
  std::vector<int> z;
  std::vector<Vec3> bohr;  // positions in bohr
};

inline basis::Function cartesian_function(int L, int M, std::vector<std::array<int, 3>> lmn,
                                          std::vector<double> tc, const std::vector<double>& c) {
  basis::Function f;
  f.L = L;
  f.M = M;
  f.nterm = static_cast<int>(lmn.size());
  for (std::size_t t = 0; t < lmn.size(); ++t) {
    f.lmn[t] = lmn[t];
    f.term_coef[t] = tc[t];
  }
  for (std::size_t p = 0; p < c.size(); ++p) f.coef[p] = c[p];
  return f;
}

inline void add_s(basis::Shell& sh, int slot, const std::vector<double>& c) {
  sh.functions[slot] = cartesian_function(0, 0, {{0, 0, 0}}, {1.0}, c);
}
// p functions in the order y, z, x (m = −1, 0, +1)
inline void add_p(basis::Shell& sh, int slot, const std::vector<double>& c) {
  sh.functions[slot] = cartesian_function(1, -1, {{0, 1, 0}}, {1.0}, c);
  sh.functions[slot + 1] = cartesian_function(1, 0, {{0, 0, 1}}, {1.0}, c);
  sh.functions[slot + 2] = cartesian_function(1, 1, {{1, 0, 0}}, {1.0}, c);
}
// the five pure d functions, and the spherical companion when `cartesian`
inline void add_d(basis::Shell& sh, const std::vector<double>& c, bool cartesian) {
  const double a = 0.5773502691896258, b = -0.28867513459481287, e = 0.2581988897471611;
  sh.functions[0] = cartesian_function(2, -2, {{1, 1, 0}}, {1.0}, c);
  sh.functions[1] = cartesian_function(2, -1, {{0, 1, 1}}, {1.0}, c);
  sh.functions[2] = cartesian_function(2, 0, {{0, 0, 2}, {2, 0, 0}, {0, 2, 0}}, {a, b, b}, c);
  sh.functions[3] = cartesian_function(2, 1, {{1, 0, 1}}, {1.0}, c);
  sh.functions[4] = cartesian_function(2, 2, {{2, 0, 0}, {0, 2, 0}}, {0.5, -0.5}, c);
  if (cartesian)
    sh.functions[5] = cartesian_function(2, 10, {{2, 0, 0}, {0, 2, 0}, {0, 0, 2}}, {e, e, e}, c);
}

inline basis::Shell make_shell(int kind, int atom, std::vector<double> exps) {
  basis::Shell sh;
  sh.kind = kind;
  sh.atom = atom;
  sh.nprim = static_cast<int>(exps.size());
  for (std::size_t p = 0; p < exps.size(); ++p) sh.exponents[p] = exps[p];
  return sh;
}

struct HeavyData {
  std::vector<double> e1, c1, e2, c2s, c2p;
  double e3;
};

inline HeavyData heavy(int z) {
  switch (z) {
    case 6:
      return {
          {3047.52488, 457.369518, 103.948685, 29.2101553, 9.28666296, 3.16392696},
          {0.001834737132, 0.01403732281, 0.06884262226, 0.2321844432, 0.4679413484, 0.3623119853},
          {7.86827235, 1.88128854, 0.544249258},
          {-0.1193324198, -0.1608541517, 1.143456438},
          {0.06899906659, 0.316423961, 0.7443082909},
          0.1687144782};
    case 7:
      return {{4173.51146, 627.457911, 142.902093, 40.2343293, 12.8202129, 4.39043701},
              {0.00183477216, 0.013994627, 0.06858655181, 0.232240873, 0.4690699481, 0.3604551991},
              {11.62636186, 2.716279807, 0.7722183966},
              {-0.1149611817, -0.1691174786, 1.145851947},
              {0.06757974388, 0.3239072959, 0.7408951398},
              0.2120314975};
    default:  // oxygen
      return {{5484.67166, 825.234946, 188.046958, 52.9645, 16.8975704, 5.79963534},
              {0.00183107443, 0.0139501722, 0.0684450781, 0.232714336, 0.470192898, 0.358520853},
              {15.53961625, 3.599933586, 1.01376175},
              {-0.1107775495, -0.1480262627, 1.130767015},
              {0.07087426823, 0.3397528391, 0.7271585773},
              0.2700058226};
  }
}

// 6-31G* (polarisation on heavy atoms) or 6-31G** (also p on hydrogen); pure d
// unless `cartesian_d`.
inline basis::BasisSet basis_631g(const Molecule& m, bool hydrogen_p, bool cartesian_d = false) {
  basis::BasisSet b;
  for (std::size_t a = 0; a < m.z.size(); ++a) {
    const int atom = static_cast<int>(a);
    if (m.z[a] == 1) {
      auto s1 = make_shell(1, atom, {18.73113696, 2.825394365, 0.6401216923});
      add_s(s1, 0, {0.03349460434, 0.2347269535, 0.8137573261});
      auto s2 = make_shell(1, atom, {0.1612777588});
      add_s(s2, 0, {1.0});
      b.shells.push_back(s1);
      b.shells.push_back(s2);
      if (hydrogen_p) {
        auto p = make_shell(3, atom, {1.1});
        add_p(p, 0, {1.0});
        b.shells.push_back(p);
      }
      continue;
    }
    const HeavyData h = heavy(m.z[a]);
    auto s1 = make_shell(1, atom, h.e1);
    add_s(s1, 0, h.c1);
    auto sp1 = make_shell(4, atom, h.e2);
    add_s(sp1, 0, h.c2s);
    add_p(sp1, 1, h.c2p);
    auto sp2 = make_shell(4, atom, {h.e3});
    add_s(sp2, 0, {1.0});
    add_p(sp2, 1, {1.0});
    auto d = make_shell(cartesian_d ? 6 : 5, atom, {0.8});
    add_d(d, {1.0}, cartesian_d);
    b.shells.insert(b.shells.end(), {s1, sp1, sp2, d});
  }
  return b;
}

inline Molecule from_angstrom(std::vector<int> z, std::vector<Vec3> xyz) {
  Molecule m;
  m.z = std::move(z);
  for (auto& p : xyz)
    m.bohr.push_back({p[0] / constants::kBohrAngstrom, p[1] / constants::kBohrAngstrom,
                      p[2] / constants::kBohrAngstrom});
  return m;
}

inline Molecule water() {
  return from_angstrom({8, 1, 1},
                       {{0.0, 0.0, 0.1173}, {0.0, 0.7572, -0.4692}, {0.0, -0.7572, -0.4692}});
}

inline Molecule benzene() {
  std::vector<int> z;
  std::vector<Vec3> xyz;
  const double rc = 1.3915, rh = 2.4715;
  for (int k = 0; k < 6; ++k) {
    const double t = k * M_PI / 3;
    z.push_back(6);
    xyz.push_back({rc * std::cos(t), rc * std::sin(t), 0.0});
  }
  for (int k = 0; k < 6; ++k) {
    const double t = k * M_PI / 3;
    z.push_back(1);
    xyz.push_back({rh * std::cos(t), rh * std::sin(t), 0.0});
  }
  return from_angstrom(z, xyz);
}

// Adamantane C10H16 (26 atoms), the geometry of the reference-program timings
// (tests/references/data/molecules/c10h16_6-31Gx.mol).
inline Molecule adamantane() {
  struct Atom {
    int z;
    Vec3 xyz;
  };
  const Atom atoms[] = {
      {6, {0.889119, 0.889119, 0.889119}},    {6, {0.889119, -0.889119, -0.889119}},
      {6, {-0.889119, 0.889119, -0.889119}},  {6, {-0.889119, -0.889119, 0.889119}},
      {6, {1.778239, 0.000000, 0.000000}},    {6, {-1.778239, 0.000000, 0.000000}},
      {6, {0.000000, 1.778239, 0.000000}},    {6, {0.000000, -1.778239, 0.000000}},
      {6, {0.000000, 0.000000, 1.778239}},    {6, {0.000000, 0.000000, -1.778239}},
      {1, {1.518431, 1.518431, 1.518431}},    {1, {1.518431, -1.518431, -1.518431}},
      {1, {-1.518431, 1.518431, -1.518431}},  {1, {-1.518431, -1.518431, 1.518431}},
      {1, {2.407551, -0.629312, 0.629312}},   {1, {2.407551, 0.629312, -0.629312}},
      {1, {-2.407551, -0.629312, -0.629312}}, {1, {-2.407551, 0.629312, 0.629312}},
      {1, {0.629312, 2.407551, -0.629312}},   {1, {-0.629312, 2.407551, 0.629312}},
      {1, {0.629312, -2.407551, 0.629312}},   {1, {-0.629312, -2.407551, -0.629312}},
      {1, {-0.629312, 0.629312, 2.407551}},   {1, {0.629312, -0.629312, 2.407551}},
      {1, {-0.629312, -0.629312, -2.407551}}, {1, {0.629312, 0.629312, -2.407551}},
  };
  std::vector<int> z;
  std::vector<Vec3> xyz;
  for (const Atom& a : atoms) {
    z.push_back(a.z);
    xyz.push_back(a.xyz);
  }
  return from_angstrom(z, xyz);
}

// n-octane, all-trans zig-zag (26 atoms): idealised geometry.
inline Molecule octane() {
  std::vector<int> z;
  std::vector<Vec3> xyz;
  const double cc = 1.53, ch = 1.09;
  const double half = 0.5 * 109.47 * M_PI / 180;
  const double dx = cc * std::sin(half), dy = cc * std::cos(half);
  for (int k = 0; k < 8; ++k) {
    const double y = (k % 2) ? dy : 0.0;
    const double sgn = (k % 2) ? 1.0 : -1.0;
    z.push_back(6);
    xyz.push_back({k * dx, y, 0.0});
    // two hydrogens out of the carbon plane, pointing away from the chain
    const double hy = sgn * ch * std::cos(54.75 * M_PI / 180);
    const double hz = ch * std::sin(54.75 * M_PI / 180);
    z.push_back(1);
    xyz.push_back({k * dx, y + hy, hz});
    z.push_back(1);
    xyz.push_back({k * dx, y + hy, -hz});
  }
  // end hydrogens along the chain
  z.push_back(1);
  xyz.push_back({-ch, -0.3, 0.0});
  z.push_back(1);
  xyz.push_back({7 * dx + ch, dy + 0.3, 0.0});
  return from_angstrom(z, xyz);
}

}  // namespace norvik::testing
