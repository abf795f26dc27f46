#include "stability.h"

#include <algorithm>
#include <cstdio>

#include "hartree_fock.h"
#include "norvik.h"

namespace host {

namespace {

// Eigenvalues per block in the report.
constexpr norvik_int kRoots = 3;
// A restart must lower the energy by more than this [eV] to count as a new
// solution rather than the old one found again.
constexpr double kLower = 1.0e-6;
// The rotations tried from an unstable solution [rad], smallest first.
constexpr double kAngles[] = {0.25, 0.5, 1.0};
// Restarts at most: each reaches a lower solution, which is analysed again.
constexpr int kMaxRestarts = 4;

}  // namespace

StabilityOutcome check_stability(const Job& job, norvik_int n, bool follow, PointArrays p) {
  StabilityOutcome outcome;
  const char* report = job.report_file.data();
  const std::size_t stage = job.kohn_sham ? 2 : 1;
  const double thr_orth = kOrthogonalityThreshold;
  const auto nn = static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
  std::vector<double> values(2 * kRoots), next(2 * nn);
  std::vector<double> S(nn), rho(2 * nn), orbitals(2 * (nn + n));
  const double first = p.energy[2];
  for (;;) {
    norvik_bool restricted = 0;
    const double angle = kAngles[0];
    SCF_STABILITY(job.theory.data(), job.basis.data(), &job.natom, job.zat.data(), job.zel.data(),
                  job.pos.data(), &job.nalpha, &job.nbeta, &n, p.rho.data(), p.orbitals.data(),
                  &job.memory_gb, &job.screening, &thr_orth, &kGridRadius, &job.grid_level, &kRoots,
                  &angle, &restricted, values.data(), next.data());
    (job.kohn_sham ? WRITE_INSTABILITY_KS : WRITE_INSTABILITY_HF)(&restricted, &kRoots,
                                                                  values.data(), report);
    outcome.lowest = std::min(values[0], restricted ? values[kRoots] : values[0]);
    outcome.stable = outcome.lowest >= NORVIK_UNSTABLE_EIGENVALUE;
    if (outcome.stable || !follow || outcome.restarts == kMaxRestarts) break;

    // Downhill along the unstable rotation: the first angle whose SCF lands
    // lower wins.
    bool lower = false;
    for (double turn : kAngles) {
      if (turn != angle) {
        SCF_STABILITY(job.theory.data(), job.basis.data(), &job.natom, job.zat.data(),
                      job.zel.data(), job.pos.data(), &job.nalpha, &job.nbeta, &n, p.rho.data(),
                      p.orbitals.data(), &job.memory_gb, &job.screening, &thr_orth, &kGridRadius,
                      &job.grid_level, &kRoots, &turn, &restricted, values.data(), next.data());
      }
      std::copy(next.begin(), next.end(), rho.begin());
      double energy[3] = {}, dipole[3] = {}, xc[4] = {}, de_final = 0.0, rmsd = 0.0, comm = 0.0;
      norvik_int northo = 0, in_core = 0, ncycle = 0;
      norvik_bool converged = 0;
      const norvik_int iopt = 0, start = 2;
      SCF_1POINT(job.theory.data(), job.basis.data(), report, job.log_file.data(), &iopt,
                 &job.natom, job.zat.data(), job.zel.data(), job.pos.data(), &job.nalpha,
                 &job.nbeta, &job.niter[stage], &job.damp[stage], &job.thr_ene[stage],
                 &job.thr_rms[stage], &job.memory_gb, &job.screening, &thr_orth, &start, rho.data(),
                 &n, S.data(), rho.data(), orbitals.data(), energy, dipole, &de_final, &northo,
                 &in_core, &ncycle, &converged, &rmsd, &comm, &kGridRadius, xc, &job.grid_level);
      if (!(converged && energy[2] < p.energy[2] - kLower)) continue;
      lower = true;
      ++outcome.restarts;
      std::printf("norvik: SCF restarted along an unstable rotation (%.2f rad): %.6f eV lower\n",
                  turn, p.energy[2] - energy[2]);
      p.S = S;
      p.rho = rho;
      p.orbitals = orbitals;
      std::copy(energy, energy + 3, p.energy);
      std::copy(dipole, dipole + 3, p.dipole);
      std::copy(xc, xc + 4, p.xc);
      p.de_final = de_final;
      p.northo = northo;
      p.in_core = in_core;
      p.ncycle = ncycle;
      p.converged = converged;
      p.rmsd = rmsd;
      p.commutator = comm;
      break;
    }
    if (!lower) break;
  }
  outcome.energy_drop = first - p.energy[2];
  if (!outcome.stable) {
    std::printf(
        "norvik: the SCF solution is unstable (lowest orbital-Hessian eigenvalue %.6f eV)%s\n",
        outcome.lowest, follow ? "; no restart along it found a lower solution" : "");
  }
  return outcome;
}

}  // namespace host
