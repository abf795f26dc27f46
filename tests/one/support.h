// Helpers of the one-electron tests: shells made by hand, reference files,
// generalised eigenvalues.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "basis/angular.h"
#include "basis/basis_set.h"
#include "integrals/one/pgf.h"
#include "linalg/eigen.h"

namespace norvik::integrals::one::testing {

// Death tests fork after OpenMP has started its threads: re-execute instead.
inline void use_threadsafe_death_tests() {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
}

inline std::string data_path(const std::string& name) {
  return std::string(NORVIK_TEST_DATA) + "/" + name;
}

// A shell on `atom` with the basis library's functions of `kind`, the given
// exponents and one contraction column per function (the s column of an sp shell
// first, then the p column for its p functions).
inline basis::Shell make_shell(int kind, int atom, const std::vector<double>& exponents,
                               const std::vector<double>& coef,
                               const std::vector<double>& coef_p = {}) {
  basis::Shell s;
  s.kind = kind;
  s.atom = atom;
  s.nprim = static_cast<int>(exponents.size());
  std::copy(exponents.begin(), exponents.end(), s.exponents.begin());
  basis::fill_angular(kind, s);
  for (int f = 0; f < kind; ++f) {
    const auto& c = (kind == 4 && f > 0) ? coef_p : coef;
    std::copy(c.begin(), c.end(), s.functions[f].coef.begin());
  }
  return s;
}

// One molecule of a Psi4 reference file.
struct ReferenceCase {
  bool pure = true;
  std::vector<Vec3> positions;
  std::vector<double> charges;
  basis::BasisSet basis;
  int nbasis = 0;
  std::vector<std::pair<std::string, std::vector<double>>> eigenvalues;
};

inline ReferenceCase read_reference_case(const std::string& file) {
  std::ifstream in(data_path(file));
  EXPECT_TRUE(in) << file;
  ReferenceCase rc;
  std::string line, word;
  auto next = [&]() -> std::istringstream {
    do {
      std::getline(in, line);
    } while (in && (line.empty() || line[0] == '#'));
    return std::istringstream(line);
  };
  int pure = 0, natom = 0, nshell = 0;
  next() >> word >> pure;
  rc.pure = pure != 0;
  next() >> word >> natom;
  for (int i = 0; i < natom; ++i) {
    double z;
    Vec3 r;
    next() >> z >> r[0] >> r[1] >> r[2];
    rc.charges.push_back(z);
    rc.positions.push_back(r);
  }
  next() >> word >> nshell;
  for (int s = 0; s < nshell; ++s) {
    int atom = 0, nprim = 0;
    std::string type;
    next() >> word >> atom >> type >> nprim;
    std::vector<double> e(nprim), c(nprim), cp(nprim);
    for (int k = 0; k < nprim; ++k) {
      auto row = next();
      row >> e[k] >> c[k];
      if (type == "sp") row >> cp[k];
    }
    const int kind = type == "s"    ? 1
                     : type == "p"  ? 3
                     : type == "sp" ? 4
                     : type == "d"  ? (rc.pure ? 5 : 6)
                                    : 7;
    rc.basis.shells.push_back(make_shell(kind, atom - 1, e, c, cp));
  }
  next() >> word >> rc.nbasis;
  for (int k = 0; k < 5; ++k) {
    std::string name;
    int n = 0;
    next() >> word >> name >> n;
    std::vector<double> v(n);
    for (auto& x : v) next() >> x;
    rc.eigenvalues.emplace_back(name, v);
  }
  return rc;
}

// Generalised eigenvalues (ascending) of (M, S).
inline std::vector<double> generalised_eigenvalues(std::vector<double> m, std::vector<double> s,
                                                   int n) {
  std::vector<double> w(n), v(static_cast<std::size_t>(n) * n);
  const auto status =
      linalg::generalized_eigen({m.data(), n, n}, {s.data(), n, n}, w, {v.data(), n, n});
  EXPECT_EQ(status, linalg::Status::ok);
  return w;
}

}  // namespace norvik::integrals::one::testing
