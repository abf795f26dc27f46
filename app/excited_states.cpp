#include "excited_states.h"

#include <algorithm>
#include <cmath>

#include "norvik.h"

namespace host {

namespace {

// hc in eV·nm, for the wavelengths of the spectrum's grid.
constexpr double kHcEvNm = 2.0 * 3.14159265358979323846 * NORVIK_HBARC_EV_ANGSTROM / 10.0;

// The spectrum: each state a Gaussian band of this full width at half maximum,
// the grid in steps of kStepNm from 1 eV above the highest state to 1 eV below
// the lowest (at most kLongestNm), in whole kRoundNm.
constexpr double kBandWidthEv = 0.4;
constexpr double kStepNm = 0.5;
constexpr double kRoundNm = 10.0;
constexpr double kLongestNm = 2000.0;

// The Davidson subspace of one spin type: 20 vectors per root (at least 40),
// each with its products: two arrays of the excitation space for the
// Tamm–Dancoff approximation, three for the random-phase one.
double subspace_gb(double dimension, int roots, bool tda) {
  const double vectors = std::min(dimension, std::max(20.0 * roots, 40.0));
  return (tda ? 2.0 : 3.0) * 8.0 * vectors * dimension / 1e9;
}

}  // namespace

bool is_excited_state_theory(const std::string& t) {
  return t == "TDA" || t == "RPA" || t == "TDKS" || t == "TDKS5" || t == "TDKS3" || t == "KSTDA" ||
         t == "KSTDA5" || t == "KSTDA3";
}

bool is_tamm_dancoff(const std::string& t) {
  return t == "TDA" || t.rfind("KSTDA", 0) == 0;
}

ExcitationSummary run_excited_states(const Job& job, norvik_int n, const std::vector<double>& rho,
                                     const std::vector<double>& orbitals) {
  ExcitationSummary out;
  const char* report = job.report_file.data();
  const std::string theory = trimmed(job.theory);
  const norvik_int tda = is_tamm_dancoff(theory) ? 1 : 0;
  const norvik_int roots = job.states;
  // The excitation space of the spin-orbital problem bounds that of each spin
  // type; when even its Davidson subspace exceeds the limit the states are left
  // out with the note.
  const double dimension = double(job.nalpha) * std::max(0, n - job.nalpha) +
                           double(job.nbeta) * std::max(0, n - job.nbeta);
  const double need = subspace_gb(dimension, roots, tda != 0);
  if (need > job.memory_gb) {
    const norvik_int npair = n * (n + 1) / 2;
    const double vint = RAMVINT(&npair);
    WRITE_INSUFFCIENTRAM_RPA(&vint, &need, report);
    out.skipped_for_memory = true;
    return out;
  }
  const norvik_int spins = 4;  // singlets and triplets of a restricted point
  const std::size_t capacity = 2 * static_cast<std::size_t>(roots);
  const std::size_t pairs = capacity * NORVIK_EXCITE_MAX_PAIRS;
  std::vector<norvik_int> spin(capacity), npair(capacity), occ(pairs), vir(pairs), beta(pairs);
  std::vector<double> energy(capacity), strength(capacity), dipole(3 * capacity), amp(pairs);
  norvik_int nstate = 0;
  const double thr_orth = 1.0e-8;
  const double radius = NORVIK_BOHR_ANGSTROM;
  const norvik_int grid = job.grid_level;
  ELECTRONEXCITE(job.theory.data(), job.basis.data(), &job.natom, job.zat.data(), job.zel.data(),
                 job.pos.data(), &job.nalpha, &job.nbeta, &n, rho.data(), orbitals.data(),
                 &job.memory_gb, &job.screening, &thr_orth, &radius, &grid, &tda, &roots, &spins,
                 &nstate, spin.data(), energy.data(), strength.data(), dipole.data(), npair.data(),
                 occ.data(), vir.data(), beta.data(), amp.data());
  WRITE_EXCITE(job.theory.data(), &nstate, spin.data(), energy.data(), strength.data(), report);
  WRITE_TRANSITION(&nstate, spin.data(), energy.data(), npair.data(), occ.data(), vir.data(),
                   beta.data(), amp.data(), report);
  out.states = nstate;
  const auto kept = static_cast<std::size_t>(nstate);
  out.spin.assign(spin.begin(), spin.begin() + static_cast<std::ptrdiff_t>(kept));
  out.energy.assign(energy.begin(), energy.begin() + static_cast<std::ptrdiff_t>(kept));
  out.strength.assign(strength.begin(), strength.begin() + static_cast<std::ptrdiff_t>(kept));
  out.dipole.assign(dipole.begin(), dipole.begin() + static_cast<std::ptrdiff_t>(3 * kept));
  if (nstate > 0) {
    const auto count = static_cast<std::ptrdiff_t>(nstate);
    const double lowest = *std::min_element(energy.begin(), energy.begin() + count);
    const double highest = *std::max_element(energy.begin(), energy.begin() + count);
    const auto best = std::max_element(strength.begin(), strength.begin() + count);
    out.lowest = lowest;
    out.strongest = energy[static_cast<std::size_t>(best - strength.begin())];
    out.strongest_strength = *best;
    const double low =
        std::max(kRoundNm, std::floor(kHcEvNm / (highest + 1.0) / kRoundNm) * kRoundNm);
    const double high = std::min(
        kLongestNm, std::ceil(kHcEvNm / std::max(lowest - 1.0, 0.1) / kRoundNm) * kRoundNm);
    const auto npoint = static_cast<norvik_int>(std::lround((high - low) / kStepNm)) + 1;
    const double fwhm = kBandWidthEv;
    WRITE_UVVISI(&nstate, energy.data(), strength.data(), &npoint, &low, &high, &fwhm,
                 padded(job.uv_file, kPathLength).data());
  }
  return out;
}

}  // namespace host
