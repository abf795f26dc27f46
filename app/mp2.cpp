#include "mp2.h"

#include <cstdio>
#include <string>

#include "hartree_fock.h"
#include "norvik.h"

namespace host {

bool is_mp2(const Job& job) {
  return trimmed(job.theory) == "MP2";
}

Mp2Result run_mp2(const Job& job, int n, const std::vector<double>& S,
                  const std::vector<double>& rho, const std::vector<double>& orbitals,
                  double scf_energy, bool converged) {
  const char* report = job.report_file.data();
  Mp2Result r;
  r.frozen_core = job.frozen_core;
  // The library's rule for keeping every integral of an MP2 job in memory
  // (record 2 against 9·n⁴ bytes).  Below it the MP2 step still runs: its
  // half-transformed integrals go through in batches of occupied orbitals that
  // fit the limit, at the price of one pass over the integrals per batch.
  const norvik_int nbasis = n;
  norvik_int fits = 0;
  MP2RAM01(&nbasis, &job.memory_gb, &fits);
  r.in_memory = fits != 0;
  if (!r.in_memory) {
    std::printf(
        "norvik: MP2 with %d basis functions: the library's MP2 rule asks %.3g GB and record 2 "
        "of the parameter file allows %.3g GB; where the MP2 step's integrals do not fit, it "
        "runs in batches of occupied orbitals (slower); raise record 2 to keep them in memory\n",
        n, RAMMP2(&nbasis), job.memory_gb);
    std::fflush(stdout);
  }
  const double thr_orth = kOrthogonalityThreshold;
  const norvik_bool frozen = job.frozen_core ? 1 : 0;
  double emp2[3] = {};
  MOLLER_PLESSET_2ND(job.theory.data(), job.basis.data(), &job.natom, job.zat.data(),
                     job.zel.data(), job.pos.data(), &job.nalpha, &job.nbeta, &nbasis,
                     orbitals.data(), &scf_energy, &job.memory_gb, &job.screening, &thr_orth,
                     &frozen, emp2, &r.total);
  r.correction = emp2[0];
  r.same_spin = emp2[1];
  r.opposite_spin = emp2[2];
  WRITE_ENERGY_MP2(&scf_energy, emp2, report);
  const norvik_bool scf_converged = converged ? 1 : 0;
  WRITE_MP2_CAUTION(&scf_converged, &nbasis, S.data(), rho.data(), report);
  TIMESTAMP(padded("MP2 energy ok.", 40).data());
  return r;
}

}  // namespace host
