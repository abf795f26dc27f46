#include "scf/cycle.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <vector>

#include "scf/start_density.h"

namespace norvik::scf {

namespace {

// The cycles damped before DIIS takes over, and the DIIS subspace.
constexpr int kDiisSubspace = kHistorySlots;

using linalg::square;

void check_sizes(const ScfSystem& system, const ScfArrays& arrays) {
  const int n = system.operators.nbasis;
  const std::size_t nn = square(n);
  if (n < 1 || arrays.g.size() < 2 * nn || arrays.rho.size() < 2 * nn ||
      arrays.orbitals.size() < 2 * (nn + static_cast<std::size_t>(n))) {
    throw std::logic_error("SCF: an array is smaller than the basis needs");
  }
}

// The work blocks of one call.
struct CallBlocks {
  explicit CallBlocks(int n)
      : fock_history(2 * kHistorySlots * square(n)),
        error_history(2 * kHistorySlots * square(n)),
        scratch(2 * square(n)),
        work(n) {}

  StepArrays step_arrays(const ScfArrays& a) {
    return {a.g, fock_history, error_history, scratch, a.rho, a.orbitals};
  }

  std::vector<double> fock_history;
  std::vector<double> error_history;
  std::vector<double> scratch;
  Workspace work;
};

Vec3 dipole_of(const ScfSystem& system, bool with_dipole, std::span<const double> rho) {
  const std::size_t nn = square(system.operators.nbasis);
  if (!with_dipole || system.dipints.size() < 3 * nn) return {};
  return electronic_dipole(system.operators.nbasis, system.dipints, rho);
}

// Whether a pair (n, n, 2) is there and holds any electrons.
bool holds_electrons(ConstMatrixView s, std::span<const double> pair) {
  const auto n = static_cast<int>(s.rows());
  const std::size_t nn = square(n);
  if (pair.size() < 2 * nn) return false;
  const double total =
      electron_trace({pair.data(), n, n, n}, s) + electron_trace({pair.data() + nn, n, n, n}, s);
  return std::abs(total) >= 0.5;
}

}  // namespace

ScfResult run_cycles(const ScfSystem& system, FockBuilder& builder, const OrbitalRule& rule,
                     const CycleSettings& settings, const ScfArrays& arrays,
                     const CycleObserver& observer) {
  check_sizes(system, arrays);
  const Operators& op = system.operators;
  ScfResult result;
  if (settings.niter <= 0) {
    builder.resume(arrays.rho, arrays.g);
    result.energy = builder.energy(op, arrays.rho, arrays.g);
    result.dipole = dipole_of(system, settings.with_dipole, arrays.rho);
    return result;
  }
  CallBlocks blocks(op.nbasis);
  const StepArrays step_arrays = blocks.step_arrays(arrays);
  builder.resume(arrays.rho, arrays.g);

  const int ndamp = std::min(settings.niter, settings.damped_cycles);
  double previous_energy = 0.0;
  for (int iscf = 1; iscf <= settings.niter; ++iscf) {
    StepControl control;
    control.diis = iscf > ndamp;
    control.damp = control.diis ? 1.0 : iscf == 1 ? 1.0 : settings.damp;
    control.nsub = kDiisSubspace;
    const StepResult update = density_step(op, rule, control, step_arrays, blocks.work);
    builder.build(arrays.rho, arrays.g);
    result.energy = builder.energy(op, arrays.rho, arrays.g);
    result.dipole = dipole_of(system, settings.with_dipole, arrays.rho);
    result.rmsd = update.rmsd;
    result.comm2 = update.comm2;
    result.cycles = iscf;
    if (observer) {
      const Vec3& mu = result.dipole;
      const Vec3& off = settings.dip_offset;
      observer({iscf,
                result.energy + settings.e_offset,
                {mu[0] + off[0], mu[1] + off[1], mu[2] + off[2]},
                update.rmsd,
                update.comm2});
    }
    if (iscf >= 2) {
      result.de_final = std::abs(result.energy - previous_energy);
      if (settings.thr_ene > result.de_final && settings.thr_rms > update.rmsd) {
        result.converged = true;
        break;
      }
    }
    previous_energy = result.energy;
  }
  return result;
}

ScfResult initialise(const ScfSystem& system, FockBuilder& builder, const OrbitalRule& rule,
                     const StartSettings& settings, const ScfArrays& arrays) {
  check_sizes(system, arrays);
  const Operators& op = system.operators;
  const int n = op.nbasis;
  const std::size_t nn = square(n);

  StartPolicy policy = settings.policy;
  if (policy == StartPolicy::free_atoms && !holds_electrons(op.s, settings.atomic))
    policy = StartPolicy::core_hamiltonian;
  switch (policy) {
    case StartPolicy::current:
      break;
    case StartPolicy::supplied:
      normalize_density(op.s, settings.counts, arrays.rho);
      break;
    case StartPolicy::free_atoms:
      patch_atomic_densities(op.s, settings.counts, settings.atomic, arrays.rho);
      break;
    case StartPolicy::core_hamiltonian:
    case StartPolicy::free_atom: {
      // The bare one-electron Fock matrix: no two-electron part yet.  The start
      // density only carries the electron counts; damping 1.0 replaces it.
      std::fill_n(arrays.g.begin(), 2 * nn, 0.0);
      if (policy == StartPolicy::free_atom) {
        const setup::ElectronCount& c = settings.counts;
        free_atom_start(c.total(), 0, c.alpha - c.beta + 1, n, arrays.rho);
        normalize_density(op.s, c, arrays.rho);
      } else {
        count_carrier(op.s, settings.counts, arrays.rho);
      }
      CallBlocks blocks(n);
      density_step(op, rule, {false, 1.0, 0}, blocks.step_arrays(arrays), blocks.work);
      break;
    }
  }
  builder.restart(arrays.g);
  builder.build(arrays.rho, arrays.g);

  ScfResult result;
  result.energy = builder.energy(op, arrays.rho, arrays.g);
  result.dipole = dipole_of(system, true, arrays.rho);
  return result;
}

}  // namespace norvik::scf
