#include "hartree_fock.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "counterpoise.h"
#include "norvik.h"
#include "plots.h"

namespace host {

ShellCount basis_size(const Job& job) {
  ShellCount count;
  for (int a = 0; a < job.natom; ++a) {
    norvik_int nshell = 0, nfunc = 0;
    norvik_int kinds[9] = {};
    ZATMNSHL(job.basis.data(), &job.zel[a], &nshell, kinds, &nfunc);
    count.functions += nfunc;
    count.shells += nshell;
  }
  return count;
}

namespace {

using Clock = std::chrono::steady_clock;

double seconds_since(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

// <S^2> of an unrestricted point: Sz(Sz+1) + N_beta - tr(Pa S Pb S).
double s_squared(const Job& job, norvik_int n, const std::vector<double>& S,
                 const std::vector<double>& rho) {
  const auto nn = static_cast<std::size_t>(n);
  std::vector<double> ps_a(nn * nn), ps_b(nn * nn);
  for (std::size_t j = 0; j < nn; ++j)
    for (std::size_t k = 0; k < nn; ++k)
      for (std::size_t i = 0; i < nn; ++i) {
        ps_a[i + nn * j] += rho[i + nn * k] * S[k + nn * j];
        ps_b[i + nn * j] += rho[nn * nn + i + nn * k] * S[k + nn * j];
      }
  double overlap = 0.0;
  for (std::size_t i = 0; i < nn; ++i)
    for (std::size_t k = 0; k < nn; ++k) overlap += ps_a[i + nn * k] * ps_b[k + nn * i];
  const double sz = 0.5 * (job.nalpha - job.nbeta);
  return sz * (sz + 1.0) + job.nbeta - overlap;
}

void stamp(const char* text) {
  TIMESTAMP(padded(text, 40).data());
}

// Where the molecule's SCF starts: 1, the superposed free atoms, which land
// on the ground state more reliably than the bare one-electron start.
constexpr norvik_int kStartFromFreeAtoms = 1;

// The conjugate-gradient probe step b [Å²/eV] from the longest trial step of
// parameter record 18: 0.1 Å gives 0.002 Å²/eV.  A probe moves an atom by b·|g|;
// the stiff bonds of N2 and CO (about 500 eV/Å² along the gradient) need b well
// below 1/500 Å²/eV, or the second probe overshoots and the explorations fail
// at the start (0.005 Å²/eV stops N2 5e-3 hartree above its minimum).
constexpr double kProbeStepPerTrialStep = 1.0 / 50.0;

// Points per exploration at most: the fitted steps 3, 5, 9 and 17 all reachable.
constexpr norvik_int kMaxPointsPerExploration = 20;

// The optimiser that the job asks for: record 8 (0 conjugate gradient, 1
// steepest descent, 2 quasi-Newton); the built-in molecules keep their template
// shape, "C2" and "B2" go to their own drivers, any other molecule to the
// free-molecule driver.
OptimisationResult run_optimisation(Job& job, norvik_int n, const std::vector<double>& atomrho,
                                    std::vector<double>& S, std::vector<double>& rho,
                                    std::vector<double>& orbitals, double* energy, double* dipole,
                                    double& de_final, norvik_int& northo, norvik_int& in_core,
                                    norvik_int& ncycle, norvik_bool& converged, double& rmsd,
                                    double& commutator, double* xc) {
  const char* report = job.report_file.data();
  const std::size_t pair = job.kohn_sham ? 2 : 1;
  // the drivers take the molecule's settings pairs (HF stage, KS stage)
  const norvik_int niter[2] = {job.niter[pair == 2 ? 2 : 1], job.niter[pair == 2 ? 3 : 1]};
  const double damp[2] = {job.damp[pair == 2 ? 2 : 1], job.damp[pair == 2 ? 3 : 1]};
  const double thr_ene[2] = {job.thr_ene[pair == 2 ? 2 : 1], job.thr_ene[pair == 2 ? 3 : 1]};
  const double thr_rms[2] = {job.thr_rms[pair == 2 ? 2 : 1], job.thr_rms[pair == 2 ? 3 : 1]};
  const double thr_orth = kOrthogonalityThreshold;
  const norvik_int start = kStartFromFreeAtoms;
  const norvik_int maxcycle = job.optimisation_cycles;
  const norvik_int maxpoint = kMaxPointsPerExploration;
  const norvik_bool with_gradient = 1;
  const double step = job.step_length * kProbeStepPerTrialStep;
  const double thr_grad = job.grad_converge;
  const double max_step = job.step_length;
  std::vector<double> grad(3 * static_cast<std::size_t>(job.natom));
  double enuc = 0.0, nucdip[3] = {};
  OptimisationResult out;
  norvik_int npoint = 0, ngrad = 0, scf_cycles = 0;
  norvik_bool opt_converged = 0;
  const int reserved = 0;
  norvik_bool known = 0;
  REPUT_KNOWN(job.molecule_name.data(), &known);
  const std::string name = trimmed(job.molecule_name);

  auto call = [&](auto driver) {
    driver(job.theory.data(), job.molecule_name.data(), report, job.log_file.data(),
           job.basis.data(), &job.natom, &n, &job.nalpha, &job.nbeta, job.zat.data(),
           job.zel.data(), niter, damp, thr_ene, thr_rms, &job.screening, &thr_orth, &kGridRadius,
           &job.grid_level, &start, atomrho.data(), job.xyz_file.data(), &out.cycles,
           &opt_converged, &maxcycle, &maxpoint, &with_gradient, &npoint, &ngrad, S.data(),
           rho.data(), &reserved, orbitals.data(), dipole, &de_final, &northo, &in_core, xc, &step,
           &job.memory_gb, &scf_cycles, &converged, &rmsd, &commutator, &thr_grad, &max_step,
           &reserved, &reserved, &reserved, job.pos.data(), grad.data(), &reserved, &reserved,
           &reserved, &reserved, &reserved, &reserved, &reserved, &reserved, &reserved, &reserved,
           &reserved, &reserved, &reserved, &reserved, &reserved, &reserved, &reserved, &reserved,
           &reserved, &reserved, &enuc, nucdip, &reserved, &reserved, energy);
  };
  if (job.optimiser == 2) {
    out.driver = "quasi-Newton";
    call(OPTIMIZE_QN);
  } else if (name == "C2" || name == "B2") {
    out.driver = "steepest descent (" + name + ")";
    call(name == "C2" ? OPTIMIZE_C2 : OPTIMIZE_B2);
  } else if (known) {
    out.driver = job.optimiser == 1 ? "steepest descent" : "conjugate gradient";
    call(job.optimiser == 1 ? OPTIMIZE_STEEPEST : OPTIMIZE);
  } else {
    out.driver = "conjugate gradient (free molecule)";
    OPTIMIZE_MOLE(job.theory.data(), job.molecule_name.data(), report, job.log_file.data(),
                  job.basis.data(), &reserved, &job.natom, &n, &job.nalpha, &job.nbeta,
                  job.zat.data(), job.zel.data(), niter, damp, thr_ene, thr_rms, &job.screening,
                  &thr_orth, &kGridRadius, &job.grid_level, &start, atomrho.data(),
                  job.xyz_file.data(), &out.cycles, &opt_converged, &maxcycle, &maxpoint,
                  &with_gradient, &npoint, &ngrad, S.data(), rho.data(), &reserved, orbitals.data(),
                  dipole, &de_final, &northo, &in_core, xc, &step, &job.memory_gb, &scf_cycles,
                  &converged, &rmsd, &commutator, &thr_grad, &max_step, &reserved, &reserved,
                  &reserved, job.pos.data(), grad.data(), &reserved, &reserved, &reserved,
                  &reserved, &reserved, &reserved, &reserved, &reserved, &reserved, &reserved,
                  &reserved, &reserved, &reserved, &reserved, &reserved, &reserved, &reserved,
                  &reserved, &reserved, &reserved, &enuc, nucdip, &reserved, &reserved, energy);
  }
  ncycle = scf_cycles;
  out.converged = opt_converged != 0;
  out.points = npoint;
  out.gradients = ngrad;
  double gmax = 0.0;
  for (double g : grad) gmax = std::max(gmax, std::abs(g));
  out.largest_gradient = gmax;
  out.gradient = grad;
  // The optimised geometry and its gradient close the optimisation's part of the report.
  WRITE_COORDINATES(&job.natom, job.pos.data(), job.zel.data(), job.zat.data(), report);
  WRITE_GRAD(&job.natom, grad.data(), job.zel.data(), report);
  WRITE_GRAD_WTOT(&job.natom, grad.data(), report);
  stamp(job.kohn_sham ? "Kohn-Sham optimisation ok." : "Hartree-Fock optimisation ok.");
  return out;
}

}  // namespace

PointResult run_hartree_fock(Job& job) {
  PointResult result;
  const char* report = job.report_file.data();
  const norvik_int n = basis_size(job).functions;
  const auto nn = static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
  result.nbasis = n;

  auto started = Clock::now();
  // Free atoms: energies for the binding energy and densities for the start.
  std::vector<double> eatom(job.natom), atomrho(2 * nn);
  const double thr_orth = kOrthogonalityThreshold;
  // HeH+ binds He and H+ (ATOMS_HEHPL), not He and a neutral H atom.
  (is_hehpl(job) ? ATOMS_HEHPL : ATOMS)(
      job.basis.data(), &job.natom, job.zat.data(), job.zel.data(), &job.niter[0], &job.damp[0],
      &job.thr_ene[0], &job.thr_rms[0], &job.memory_gb, &thr_orth, &n, eatom.data(), atomrho.data(),
      job.theory.data(), &kGridRadius, &job.grid_level);
  WRITE_ENERGY_ATOM(&job.natom, job.zat.data(), job.zel.data(), eatom.data(), report);
  stamp("Free atoms ok.");
  result.times.atoms = seconds_since(started);
  started = Clock::now();
  // Counterpoise (record 18): the fragment SCFs at the input geometry.
  std::optional<CounterpoiseResult> counterpoise;
  if (is_counterpoise(job)) counterpoise = run_counterpoise(job);

  // The point at the input geometry, or the optimisation from it: integrals,
  // SCF with its run log.  The molecule's settings of a Kohn–Sham job are the
  // pairs (HF, KS) at 2 and 3.
  const std::size_t stage = job.kohn_sham ? 2 : 1;
  double xc[4] = {};
  std::vector<double> S(nn), rho(2 * nn), orbitals(2 * (nn + n));
  double energy[3] = {}, dipole[3] = {};
  norvik_int northo = 0, in_core = 0, ncycle = 0;
  norvik_bool converged = 0;
  const norvik_int start = kStartFromFreeAtoms;
  if (job.optimisation_cycles > 0) {
    result.optimisation =
        run_optimisation(job, n, atomrho, S, rho, orbitals, energy, dipole, result.de_final, northo,
                         in_core, ncycle, converged, result.rmsd, result.commutator, xc);
  } else {
    const norvik_int iopt = 0;
    SCF_1POINT(job.theory.data(), job.basis.data(), report, job.log_file.data(), &iopt, &job.natom,
               job.zat.data(), job.zel.data(), job.pos.data(), &job.nalpha, &job.nbeta,
               &job.niter[stage], &job.damp[stage], &job.thr_ene[stage], &job.thr_rms[stage],
               &job.memory_gb, &job.screening, &thr_orth, &start, atomrho.data(), &n, S.data(),
               rho.data(), orbitals.data(), energy, dipole, &result.de_final, &northo, &in_core,
               &ncycle, &converged, &result.rmsd, &result.commutator, &kGridRadius, xc,
               &job.grid_level);
    stamp(job.kohn_sham ? "Kohn-Sham exploration ok." : "Hartree-Fock exploration ok.");
  }
  // The stability of the solution (--stability): after an optimisation the
  // analysis only, since a restart would leave the optimised geometry behind.
  if (job.stability && converged) {
    result.stability =
        check_stability(job, n, !result.optimisation.has_value(),
                        {S, rho, orbitals, energy, dipole, xc, result.de_final, northo, in_core,
                         ncycle, converged, result.rmsd, result.commutator});
  }
  result.times.scf = seconds_since(started);
  started = Clock::now();
  result.northo = northo;
  result.in_core = in_core == 1;
  result.cycles = ncycle;
  result.converged = converged != 0;

  // The result sections.
  result.energy = energy[2];
  std::copy(dipole, dipole + 3, result.dipole);
  // The free atoms are computed with the molecule's method, so the binding
  // energy compares like with like.
  double eatoms = 0.0;
  for (double e : eatom) eatoms += e;
  std::copy(energy, energy + 3, result.parts);
  std::copy(xc, xc + 4, result.xc);
  result.free_atoms = eatoms;
  result.orbitals = orbitals;
  WRITE_ENERGY_MOL(&energy[0], &energy[1], &eatoms, report);
  if (job.kohn_sham) WRITE_ENERGY_KS(xc, report);
  WRITE_EMOL(&result.energy, &result.de_final, report);
  const norvik_int nlevel = std::min<norvik_int>(northo, job.norb);
  WRITE_LEVELS(&n, &nlevel, &job.nalpha, &job.nbeta, orbitals.data(), report);
  WRITE_OCCUPY(&n, &northo, &job.nalpha, &job.nbeta, orbitals.data(), report);
  // A restart along a RHF -> UHF rotation leaves a broken-symmetry singlet.
  bool open = job.multiplicity != 1;
  for (std::size_t e = 0; e < nn && !open; ++e) open = std::abs(rho[e] - rho[nn + e]) > 1e-6;
  result.unrestricted = open;
  if (open) {
    WRITE_SPINCONTAMI(&n, S.data(), rho.data(), report);
    result.s_squared = s_squared(job, n, S, rho);
  }
  WRITE_EDM(result.dipole, report);
  // Population analysis (record 14): Mulliken, Lowdin or both.
  const std::string population = trimmed(job.population);
  // "shells" asks for both, each with its table per shell.
  for (const char* kind : {"Mulliken", "Lowdin"}) {
    if (population != kind && population != "both" && population != "shells") continue;
    std::vector<double> charge(job.natom), spin(job.natom);
    (std::string(kind) == "Mulliken" ? MULLIKEN : LOWDIN)(
        job.basis.data(), &job.natom, job.zat.data(), job.zel.data(), &n, S.data(), rho.data(),
        charge.data(), spin.data());
    const std::string label = padded(kind, kNameLength);
    WRITE_POPULATION(label.data(), &job.natom, job.zel.data(), charge.data(), report);
    (std::string(kind) == "Mulliken" ? result.mulliken_charges : result.lowdin_charges) = charge;
    if (open)
      (std::string(kind) == "Mulliken" ? result.mulliken_spins : result.lowdin_spins) = spin;
    if (open) {
      WRITE_SPINDENSITY(label.data(), &job.natom, job.zel.data(), spin.data(), report);
    }
    if (population == "shells") {
      const norvik_int nshell = basis_size(job).shells;
      std::vector<double> electrons(static_cast<std::size_t>(nshell)), shell_spin(electrons);
      (std::string(kind) == "Mulliken" ? MULLIKEN_SHELLS : LOWDIN_SHELLS)(
          job.basis.data(), &job.natom, job.zat.data(), job.zel.data(), &n, S.data(), rho.data(),
          &nshell, electrons.data(), shell_spin.data());
      WRITE_POPULATION_SHELL(label.data(), job.basis.data(), &job.natom, job.zel.data(), &nshell,
                             electrons.data(), shell_spin.data(), report);
    }
  }
  // The quadrupole moment with the populations, the orbitals (--orbitals) and
  // the cube files (--cube).
  if (population != "none" && !population.empty()) {
    double theta[9] = {};
    QUADRAPOLE(job.basis.data(), &job.natom, job.zat.data(), job.zel.data(), job.pos.data(), &n,
               rho.data(), theta);
    WRITE_EQM(theta, report);
    result.quadrupole.emplace();
    std::copy(theta, theta + 9, result.quadrupole->begin());
  }
  write_orbital_tables(job, n, northo, orbitals);
  write_cubes(job, n, rho, orbitals);
  // The counterpoise section with the dimer energy of this SCF, and the full
  // CI of a converged two-electron Hartree-Fock job.
  if (counterpoise) write_counterpoise(job, *counterpoise, result.energy);
  if (runs_full_ci(job) && result.converged) run_full_ci(job, n, orbitals, result.energy);
  // A Kohn–Sham SCF that did not settle gets the caution box.
  if (job.kohn_sham && !result.converged) WRITE_CAUTION(report);
  // Theory MP2: the MP2 energy of the final point (the optimised geometry
  // after an optimisation).
  if (is_mp2(job)) {
    result.mp2 = run_mp2(job, n, S, rho, orbitals, result.energy, result.converged);
  }
  // The excited states of the converged point, when the theory asks for them.
  if (is_excited_state_theory(trimmed(job.theory)) && result.converged) {
    result.excitations = run_excited_states(job, n, rho, orbitals);
  }
  result.times.properties = seconds_since(started);
  // The vibrational analysis and thermochemistry of the converged point.
  if (job.vibrations >= 1 && result.converged) {
    started = Clock::now();
    result.vibrations =
        run_vibrations(job, n, rho, orbitals, result.energy, result.optimisation.has_value());
    result.times.vibrations = seconds_since(started);
  }
  return result;
}

}  // namespace host
