// Exported excited states of a converged point (ELECTRONEXCITE) and their
// report sections.
#include <algorithm>
#include <optional>

#include "abi/scf_support.h"
#include "basis/library.h"
#include "common/error.h"
#include "common/fortran_format.h"
#include "common/text_file.h"
#include "dft/functionals/functional_names.h"
#include "norvik/properties.h"
#include "properties/excited_states.h"
#include "report/excitation_sections.h"

namespace {

namespace abi = norvik::abi;
namespace scf = norvik::scf;
namespace dft = norvik::dft;
namespace props = norvik::properties;
using abi::count;
using abi::guarded;
using abi::kKeywordLength;
using abi::kLongKeywordLength;
using abi::text_in;

int spin_code(props::StateSpin s) {
  return s == props::StateSpin::singlet ? 1 : s == props::StateSpin::triplet ? 3 : 0;
}

void electron_excite(NORVIK_ELECTRONEXCITE_ARGS) {
  const std::size_t na = count(*natom);
  const std::string_view name = text_in(basis, kLongKeywordLength);
  const scf::MoleculeView molecule{{zat, na}, {zel, na}, {pos, 3 * na}};
  const int n = abi::checked_nbasis(name, molecule, *nbasis, "Electronexcite");
  const std::size_t nn = abi::square(n);
  if (*nroots < 1 || (*spins != 1 && *spins != 3 && *spins != 4)) {
    throw norvik::Error(
        norvik::fortran::list_directed({std::string("Wrong nroots or spins in Electronexcite."),
                                        std::int64_t{*nroots}, std::int64_t{*spins}}));
  }
  scf::JobControl job;
  job.basis = name;
  job.memory_gb = *ramlimit;
  job.screening = *thr_screen;
  job.orthogonality = *thr_orth;
  std::optional<scf::KohnShamStage> kohn_sham;
  const std::string_view functional = text_in(method, kKeywordLength);
  if (!abi::is_hartree_fock(functional)) {
    scf::KohnShamStage ks;
    ks.functional = {dft::functional_for(functional, dft::FunctionalUse::potential_matrix),
                     dft::exact_exchange_fraction(functional)};
    ks.grid_radius = *grid_radius;
    ks.grid_level = abi::grid_level_in(*grid_level, "Electronexcite");
    kohn_sham = ks;
  }
  props::ExcitationOptions options;
  options.kind = *tda != 0 ? props::ResponseKind::tamm_dancoff : props::ResponseKind::random_phase;
  options.roots = static_cast<int>(*nroots);
  options.singlets = *spins != 3;
  options.triplets = *spins != 1;
  const props::ExcitationResult r = props::excited_states(
      norvik::basis::make_basis(name, molecule.elements), job, molecule, {*nalpha, *nbeta},
      {rho, 2 * nn}, {orbitals, 2 * (nn + count(n))}, kohn_sham, options);
  *nstate = static_cast<norvik_int>(r.states.size());
  std::size_t next = 0;
  for (std::size_t s = 0; s < r.states.size(); ++s) {
    const props::ExcitedState& st = r.states[s];
    spin[s] = spin_code(st.spin);
    energy[s] = st.energy;
    strength[s] = st.strength;
    for (std::size_t k = 0; k < 3; ++k) dipole[3 * s + k] = st.dipole[k];
    const std::size_t kept = std::min<std::size_t>(st.transitions.size(), NORVIK_EXCITE_MAX_PAIRS);
    npair[s] = static_cast<norvik_int>(kept);
    for (std::size_t p = 0; p < kept; ++p, ++next) {
      occ[next] = st.transitions[p].occ;
      vir[next] = st.transitions[p].vir;
      beta[next] = st.transitions[p].beta ? 1 : 0;
      amplitude[next] = st.transitions[p].amplitude;
    }
  }
}

}  // namespace

extern "C" {

NORVIK_API void ELECTRONEXCITE(NORVIK_ELECTRONEXCITE_ARGS) {
  guarded([&] {
    electron_excite(method, basis, natom, zat, zel, pos, nalpha, nbeta, nbasis, rho, orbitals,
                    ramlimit, thr_screen, thr_orth, grid_radius, grid_level, tda, nroots, spins,
                    nstate, spin, energy, strength, dipole, npair, occ, vir, beta, amplitude);
  });
}

NORVIK_API void WRITE_EXCITE(const char* method, const norvik_int* nstate, const norvik_int* spin,
                             const double* energy, const double* strength, const char* report) {
  guarded([&] {
    const std::size_t ns = count(*nstate);
    const std::vector<int> spins(spin, spin + ns);
    abi::append_to(report, norvik::report::excited_states(
                               norvik::io::trim_right(text_in(method, kKeywordLength)), spins,
                               {energy, ns}, {strength, ns}));
  });
}

NORVIK_API void WRITE_TRANSITION(const norvik_int* nstate, const norvik_int* spin,
                                 const double* energy, const norvik_int* npair,
                                 const norvik_int* occ, const norvik_int* vir,
                                 const norvik_int* beta, const double* amplitude,
                                 const char* report) {
  guarded([&] {
    const std::size_t ns = count(*nstate);
    std::size_t total = 0;
    for (std::size_t s = 0; s < ns; ++s) total += count(npair[s]);
    const std::vector<int> spins(spin, spin + ns), counts(npair, npair + ns), o(occ, occ + total),
        v(vir, vir + total), b(beta, beta + total);
    abi::append_to(report, norvik::report::transitions(spins, {energy, ns},
                                                       {counts, o, v, b, {amplitude, total}}));
  });
}

NORVIK_API void WRITE_CI_MATRIX(const norvik_int* dimension, const double* a, const char* report) {
  guarded([&] {
    if (*dimension < 1 || *dimension > NORVIK_CI_MATRIX_MAX) return;
    const std::size_t n = count(*dimension);
    abi::append_to(report, norvik::report::ci_matrix(static_cast<int>(n), {a, n * n}));
  });
}

NORVIK_API void WRITE_UVVISI(const norvik_int* nstate, const double* energy, const double* strength,
                             const norvik_int* npoint, const double* low, const double* high,
                             const double* fwhm, const char* file) {
  guarded([&] {
    const std::size_t ns = count(*nstate);
    const std::vector<double> grid =
        norvik::report::uv_grid(static_cast<int>(*npoint), *low, *high);
    const std::vector<double> eps =
        norvik::report::uv_absorbance({energy, ns}, {strength, ns}, grid, *fwhm);
    norvik::io::write_lines(text_in(file, abi::kFileNameLength),
                            norvik::report::uv_spectrum(grid, eps));
  });
}

}  // extern "C"
