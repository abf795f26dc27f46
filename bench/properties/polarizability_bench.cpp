// Wall time of the coupled-perturbed Hartree–Fock polarisability of water and
// benzene in 6-31G* (the SCF point before it is not timed), stored and
// integral-direct, and of the finite-field check for water.
#include <chrono>
#include <cmath>
#include <cstdio>
#include <vector>

#include "basis/library.h"
#include "properties/polarizability.h"
#include "scf/single_point.h"

namespace {

using namespace norvik;

struct Molecule {
  const char* name;
  std::vector<int> z;
  std::vector<double> pos;
};

Molecule benzene() {
  Molecule m{"benzene", {}, {}};
  const double rcc = 1.397, rch = 1.084, pi = std::acos(-1.0);
  for (int ring = 0; ring < 2; ++ring) {
    for (int k = 0; k < 6; ++k) {
      const double r = ring == 0 ? rcc : rcc + rch, phi = pi * k / 3.0;
      m.z.push_back(ring == 0 ? 6 : 1);
      m.pos.insert(m.pos.end(), {r * std::cos(phi), r * std::sin(phi), 0.0});
    }
  }
  return m;
}

double seconds_since(std::chrono::steady_clock::time_point t0) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
}

void run(const Molecule& m) {
  scf::JobControl job;
  job.basis = "6-31Gx";
  const basis::BasisSet basis = basis::make_basis(job.basis, m.z);
  int electrons = 0;
  for (int z : m.z) electrons += z;
  scf::PointSettings settings;
  settings.counts = {electrons / 2, electrons / 2};
  const scf::ScfControl control{100, 0.5, 1e-10, 1e-9};
  const std::size_t n = static_cast<std::size_t>(basis.nbasis());
  std::vector<double> rho(2 * n * n), orbitals(2 * n * (n + 1));
  const scf::MoleculeView view{m.z, m.z, m.pos};
  auto t0 = std::chrono::steady_clock::now();
  scf::compute_point(basis, job, control, view, settings, rho, orbitals);
  const double scf_time = seconds_since(t0);
  for (bool direct : {false, true}) {
    properties::ResponseOptions options;
    options.direct = direct;
    t0 = std::chrono::steady_clock::now();
    const auto a = properties::static_polarizability(basis, job, view, settings.counts, rho,
                                                     orbitals, std::nullopt, options);
    std::printf(
        "%-8s n=%3zu SCF %7.2f s  response (%s) %7.2f s  alpha diag %.6f %.6f %.6f e·Å²/V\n",
        m.name, n, scf_time, direct ? "direct" : "stored", seconds_since(t0), a[0], a[4], a[8]);
  }
  if (n < 40) {
    t0 = std::chrono::steady_clock::now();
    properties::polarizability_by_fields(basis, job, control, view, settings, rho, {0.05, true});
    std::printf("%-8s finite fields (12 points) %7.2f s\n", m.name, seconds_since(t0));
  }
}

}  // namespace

int main() {
  run({"water", {8, 1, 1}, {0, 0, 0, 0, 0.756950, -0.585882, 0, -0.756950, -0.585882}});
  run(benzene());
  return 0;
}
