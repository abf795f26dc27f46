#include "counterpoise.h"

#include <algorithm>
#include <array>

#include "hartree_fock.h"
#include "norvik.h"

namespace host {

namespace {

// Roots of each spin that the report lists.
constexpr norvik_int kFullCiRoots = 5;

}  // namespace

bool is_counterpoise(const Job& job) {
  return trimmed(job.bsse) == "counterpoise";
}

bool is_hehpl(const Job& job) {
  return job.natom == 2 && job.charge == 1 && std::min(job.zel[0], job.zel[1]) == 1 &&
         std::max(job.zel[0], job.zel[1]) == 2;
}

CounterpoiseResult run_counterpoise(const Job& job) {
  CounterpoiseResult r;
  // The molecule's settings: for Hartree-Fock the pair (molecule, unused), for
  // Kohn-Sham the molecule's HF and KS stages.
  const std::size_t stage = job.kohn_sham ? 2 : 1;
  const double thr_orth = kOrthogonalityThreshold;
  const norvik_int first = job.fragment_first, last = job.fragment_last;
  // The fragments of --fragments, or neutral ones in their lowest multiplicity
  // (HeH+: He and H+, the _HEHPL members).
  const std::array<int, 4> f = job.fragments.value_or(std::array<int, 4>{0, 0, 0, 0});
  const norvik_int fcharge[2] = {f[0], f[2]}, fmult[2] = {f[1], f[3]};
  const bool hehpl = !job.fragments && is_hehpl(job);
  auto call = [&](auto routine) {
    routine(job.theory.data(), job.basis.data(), &job.natom, job.zat.data(), job.zel.data(),
            job.pos.data(), &first, &last, fcharge, fmult, &job.niter[stage], &job.damp[stage],
            &job.thr_ene[stage], &job.thr_rms[stage], &job.memory_gb, &job.screening, &thr_orth,
            &kGridRadius, &job.grid_level, r.own, r.dimer);
  };
  call(hehpl ? COUNTERPOISE_HEHPL : COUNTERPOISE);
  TIMESTAMP(padded("Counterpoise fragments ok.", 40).data());
  return r;
}

void write_counterpoise(const Job& job, const CounterpoiseResult& result, double dimer_energy) {
  WRITE_BSSE(result.own, result.dimer, &dimer_energy, job.report_file.data());
}

bool runs_full_ci(const Job& job) {
  return trimmed(job.theory) == "HF" && job.nalpha == 1 && job.nbeta == 1;
}

double run_full_ci(const Job& job, int nbasis, const std::vector<double>& orbitals,
                   double scf_energy) {
  const norvik_int n = nbasis, nroots = kFullCiRoots;
  const double thr_orth = kOrthogonalityThreshold;
  std::vector<double> singlets(kFullCiRoots), triplets(kFullCiRoots);
  std::vector<double> ground(static_cast<std::size_t>(n) * static_cast<std::size_t>(n + 1) / 2);
  norvik_int norb = 0;
  double ehf = 0.0;
  FULLCI_2E(job.basis.data(), &job.natom, job.zat.data(), job.zel.data(), job.pos.data(),
            &job.nalpha, &job.nbeta, &n, orbitals.data(), &thr_orth, &nroots, singlets.data(),
            triplets.data(), ground.data(), &norb, &ehf);
  const char* report = job.report_file.data();
  WRITE_H2_CI(&n, &norb, ground.data(), &nroots, singlets.data(), triplets.data(), report);
  WRITE_ENERGY_CI(&scf_energy, &singlets[0], report);
  TIMESTAMP(padded("Full CI ok.", 40).data());
  return singlets[0];
}

}  // namespace host
