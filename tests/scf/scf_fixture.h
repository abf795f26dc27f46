// Small molecules with their integrals, for the SCF tests.
#pragma once

#include <string>
#include <vector>

#include "basis/library.h"
#include "scf/hf_driver.h"
#include "scf/single_point.h"

namespace norvik::scf::testing {

struct Case {
  std::vector<int> z;
  std::vector<double> pos;  // (3, natom) Å
  setup::ElectronCount counts;
};

inline Case h2() {
  return {{1, 1}, {0, 0, 0, 0, 0, 0.74}, {1, 1}};
}
inline Case heh_plus() {
  return {{2, 1}, {0, 0, 0, 0, 0, 0.772}, {1, 1}};
}
inline Case water() {
  return {{8, 1, 1}, {0, 0, 0, 0, 0.756950, -0.585882, 0, -0.756950, -0.585882}, {5, 5}};
}
inline Case hydroxyl() {
  return {{8, 1}, {0, 0, 0, 0, 0, 0.970}, {5, 4}};
}

// The integrals of a case, with the host-side arrays of an SCF.
struct Fixture {
  Fixture(const Case& c, const std::string& basis_name, double memory_gb = 4.0,
          double orthogonality = 1e-8)
      : molecule(c) {
    JobControl job;
    job.basis = basis_name;
    job.memory_gb = memory_gb;
    job.orthogonality = orthogonality;
    prepared = prepare_system(basis::make_basis(basis_name, c.z), c.pos, c.z, job);
    n = prepared.n;
    const std::size_t nn = static_cast<std::size_t>(n) * n;
    g.assign(2 * nn, 0.0);
    rho.assign(2 * nn, 0.0);
    orbitals.assign(2 * (nn + n), 0.0);
  }

  ScfSystem system() const { return prepared.system(); }
  ScfArrays arrays() { return {g, rho, orbitals}; }

  // HF_INI: the bare one-electron start and the first two-electron part.
  void start(FockBuild build = FockBuild::stored) {
    StartSettings s;
    s.counts = molecule.counts;
    ScfSystem sys = system();
    sys.build = build;
    initialise(sys, s, arrays());
  }

  Case molecule;
  PreparedSystem prepared;
  int n = 0;
  std::vector<double> g, rho, orbitals;
};

}  // namespace norvik::scf::testing
