#include "scf/hf_driver.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/text_file.h"
#include "report/sections.h"
#include "scf/start_density.h"

namespace norvik::scf {

namespace {

// The cycles damped before DIIS takes over, and the DIIS subspace.
constexpr int kDampedCycles = 8;
constexpr int kDiisSubspace = kHistorySlots;
// A fresh start of a molecule with more atoms than this begins from the free atoms.
constexpr int kSmallMolecule = 9;

std::size_t square(int n) {
  return static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
}

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

double energy_of(const ScfSystem& system, const ScfArrays& a) {
  return electronic_energy(system.operators.t, system.operators.v, a.g, a.rho);
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

void fock_build(const ScfSystem& system, FockBuild build, std::span<const double> rho,
                std::span<double> previous, std::span<double> g) {
  constexpr double kExactExchange = 1.0;
  if (build == FockBuild::stored) {
    integrals::two::fock_stored(system.context, kExactExchange, rho, g);
  } else {
    integrals::two::fock_direct(system.context, kExactExchange, rho, previous, g);
  }
}

ScfResult run_cycles(const ScfSystem& system, const CycleSettings& settings,
                     const ScfArrays& arrays, const DensityStep& step) {
  check_sizes(system, arrays);
  ScfResult result;
  if (settings.niter <= 0) {
    result.energy = energy_of(system, arrays);
    result.dipole = dipole_of(system, settings.with_dipole, arrays.rho);
    return result;
  }
  const int n = system.operators.nbasis;
  CallBlocks blocks(n);
  const StepArrays step_arrays = blocks.step_arrays(arrays);
  // Integral-direct: the two-electron part on entry belongs to the density on entry.
  std::vector<double> previous;
  if (settings.build == FockBuild::direct)
    previous.assign(arrays.rho.begin(), arrays.rho.begin() + 2 * square(n));

  const bool log = settings.write_log && !io::trim_right(settings.logfile).empty();
  const int ndamp = std::min(settings.niter, kDampedCycles);
  double previous_energy = 0.0;
  for (int iscf = 1; iscf <= settings.niter; ++iscf) {
    const StepResult update =
        step(iscf > ndamp, iscf == 1 ? 1.0 : settings.damp, step_arrays, blocks.work);
    fock_build(system, settings.build, arrays.rho, previous, arrays.g);
    result.energy = energy_of(system, arrays);
    result.dipole = dipole_of(system, settings.with_dipole, arrays.rho);
    result.rmsd = update.rmsd;
    result.comm2 = update.comm2;
    result.cycles = iscf;
    if (log) {
      const Vec3& mu = result.dipole;
      const Vec3& off = settings.dip_offset;
      io::append_lines(
          io::trim_right(settings.logfile),
          {report::log_cycle_line(
              settings.iopt, settings.isrc, iscf, result.energy + settings.e_offset,
              {mu[0] + off[0], mu[1] + off[1], mu[2] + off[2]}, update.rmsd, update.comm2)});
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

ScfResult run_scf(const ScfSystem& system, const CycleSettings& settings, const ScfArrays& arrays) {
  const Operators& op = system.operators;
  return run_cycles(system, settings, arrays,
                    [&](bool diis, double damping, const StepArrays& a, Workspace& work) {
                      return diis ? diis_step(op, kDiisSubspace, a, Occupation::aufbau, work)
                                  : damped_step(op, damping, a, settings.damped_occupation, work);
                    });
}

ScfResult initialise(const ScfSystem& system, const StartSettings& settings,
                     const ScfArrays& arrays) {
  check_sizes(system, arrays);
  const Operators& op = system.operators;
  const int n = op.nbasis;
  const std::size_t nn = square(n);

  bool update = false;
  Occupation occupation = Occupation::aufbau;
  switch (settings.kind) {
    case StartKind::standard:
      if (settings.mode != 1) {
        normalize_density(op.s, settings.counts, arrays.rho);
      } else if (settings.natom > kSmallMolecule && holds_electrons(op.s, settings.atomic)) {
        patch_atomic_densities(op.s, settings.counts, settings.atomic, arrays.rho);
      } else {
        update = true;
      }
      break;
    case StartKind::bare:
      update = true;
      break;
    case StartKind::free_atom:
      update = true;
      occupation = Occupation::atomic;
      break;
  }
  if (update) {
    // The bare one-electron Fock matrix: no two-electron part yet.  The start
    // density only carries the electron counts; damping 1.0 replaces it.
    std::fill_n(arrays.g.begin(), 2 * nn, 0.0);
    if (settings.kind == StartKind::free_atom) {
      free_atom_start(settings.counts.total(), 0, settings.counts.alpha - settings.counts.beta + 1,
                      n, arrays.rho);
      normalize_density(op.s, settings.counts, arrays.rho);
    } else {
      count_carrier(op.s, settings.counts, arrays.rho);
    }
    CallBlocks blocks(n);
    damped_step(op, 1.0, blocks.step_arrays(arrays), occupation, blocks.work);
  }
  // The first Fock matrix; integral-direct from nothing, which is a full build.
  std::vector<double> previous;
  if (settings.build == FockBuild::direct) {
    previous.assign(2 * nn, 0.0);
    std::fill_n(arrays.g.begin(), 2 * nn, 0.0);
  }
  fock_build(system, settings.build, arrays.rho, previous, arrays.g);

  ScfResult result;
  result.energy = energy_of(system, arrays);
  result.dipole = dipole_of(system, true, arrays.rho);
  return result;
}

}  // namespace norvik::scf
