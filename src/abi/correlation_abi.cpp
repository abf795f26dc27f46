// Exported counterpoise correction and two-electron full CI, with the free
// atoms of HeH+ and their report sections.
#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "abi/scf_support.h"
#include "basis/library.h"
#include "common/error.h"
#include "common/fortran_format.h"
#include "norvik/properties.h"
#include "norvik/scf.h"
#include "properties/counterpoise.h"
#include "properties/two_electron_ci.h"
#include "report/correlation_sections.h"

namespace {

namespace abi = norvik::abi;
namespace scf = norvik::scf;
namespace props = norvik::properties;
using abi::count;
using abi::guarded;
using abi::kLongKeywordLength;
using abi::text_in;

constexpr int kHelium = 2, kHydrogen = 1;

void counterpoise(NORVIK_COUNTERPOISE_ARGS, bool direct, bool hehpl, const char* routine) {
  const std::size_t na = count(*natom);
  const std::string_view name = text_in(basis, kLongKeywordLength);
  const scf::MoleculeView molecule{{zat, na}, {zel, na}, {pos, 3 * na}};
  scf::JobControl job;
  job.basis = name;
  job.memory_gb = *ramlimit;
  job.screening = *thr_screen;
  job.orthogonality = *thr_orth;
  job.direct = direct;
  const scf::ScfControl control{niter[0], damp[0], thr_ene[0], thr_rms[0]};
  props::Fragments fragments;
  fragments.first = *first - 1;
  fragments.last = *last - 1;
  if (hehpl) {
    const bool he_h =
        na == 2 && std::min(zel[0], zel[1]) == kHydrogen && std::max(zel[0], zel[1]) == kHelium;
    if (!he_h) {
      std::vector<norvik::fortran::Value> values{
          std::string_view("COUNTERPOISE_HEHPL needs the atoms He and H.")};
      for (std::size_t a = 0; a < na; ++a) values.emplace_back(static_cast<std::int64_t>(zel[a]));
      throw norvik::Error(norvik::fortran::list_directed(values));
    }
    // Fragment A holds the atoms first … last; the bare proton is whichever holds H.
    const bool a_is_h = zel[fragments.first] == kHydrogen;
    fragments.charge = a_is_h ? std::array<int, 2>{1, 0} : std::array<int, 2>{0, 1};
    fragments.multiplicity = {1, 1};
  } else {
    fragments.charge = {fcharge[0], fcharge[1]};
    fragments.multiplicity = {fmult[0], fmult[1]};
  }
  const props::CounterpoiseEnergies e =
      props::counterpoise(job, control, molecule, fragments,
                          abi::kohn_sham_stage(method, niter, damp, thr_ene, thr_rms, grid_radius,
                                               grid_level, routine));
  std::copy(e.own.begin(), e.own.end(), eown);
  std::copy(e.dimer.begin(), e.dimer.end(), edimer);
}

}  // namespace

extern "C" {

#define NORVIK_CP_FORWARD                                                                          \
  method, basis, natom, zat, zel, pos, first, last, fcharge, fmult, niter, damp, thr_ene, thr_rms, \
      ramlimit, thr_screen, thr_orth, grid_radius, grid_level, eown, edimer

NORVIK_API void COUNTERPOISE(NORVIK_COUNTERPOISE_ARGS) {
  guarded([&] { counterpoise(NORVIK_CP_FORWARD, false, false, "Counterpoise"); });
}

NORVIK_API void COUNTERPOISE_DIRECT(NORVIK_COUNTERPOISE_ARGS) {
  guarded([&] { counterpoise(NORVIK_CP_FORWARD, true, false, "Counterpoise_direct"); });
}

NORVIK_API void COUNTERPOISE_HEHPL(NORVIK_COUNTERPOISE_ARGS) {
  guarded([&] { counterpoise(NORVIK_CP_FORWARD, false, true, "Counterpoise_HeHpl"); });
}

NORVIK_API void COUNTERPOISE_DIRECT_HEHPL(NORVIK_COUNTERPOISE_ARGS) {
  guarded([&] { counterpoise(NORVIK_CP_FORWARD, true, true, "Counterpoise_direct_HeHpl"); });
}

#undef NORVIK_CP_FORWARD

NORVIK_API void WRITE_BSSE(const double* eown, const double* edimer, const double* emol,
                           const char* report) {
  guarded([&] {
    abi::append_to(report,
                   norvik::report::counterpoise({eown[0], eown[1]}, {edimer[0], edimer[1]}, *emol));
  });
}

NORVIK_API void ATOMS_HEHPL(const char* basis, const norvik_int* natom, const norvik_int* zat,
                            const norvik_int* zel, const norvik_int* niter, const double* damp,
                            const double* thr_ene, const double* thr_rms, const double* ramlimit,
                            const double* thr_orth, const norvik_int* nbasis, double* eatom,
                            double* atomrho, const char* method, const double* grid_radius,
                            const norvik_int* grid_level) {
  guarded([&] {
    const std::size_t na = count(*natom);
    // The hydrogen atoms enter as ghosts: the free-atom runs skip them, which
    // leaves H+ its energy 0 and an empty density block.
    std::vector<norvik_int> charges(zat, zat + na);
    for (std::size_t a = 0; a < na; ++a) {
      if (zel[a] == kHydrogen) charges[a] = 0;
    }
    ATOMS(basis, natom, charges.data(), zel, niter, damp, thr_ene, thr_rms, ramlimit, thr_orth,
          nbasis, eatom, atomrho, method, grid_radius, grid_level);
  });
}

NORVIK_API void FULLCI_2E(const char* basis, const norvik_int* natom, const norvik_int* zat,
                          const norvik_int* zel, const double* pos, const norvik_int* nalpha,
                          const norvik_int* nbeta, const norvik_int* nbasis, const double* orbitals,
                          const double* thr_orth, const norvik_int* nroots, double* esinglet,
                          double* etriplet, double* ground, norvik_int* norb, double* ehf) {
  guarded([&] {
    if (*nalpha != 1 || *nbeta != 1) {
      throw norvik::Error(norvik::fortran::list_directed(
          {std::string_view("FULLCI_2E needs two paired electrons:"),
           static_cast<std::int64_t>(*nalpha), static_cast<std::int64_t>(*nbeta)}));
    }
    const std::size_t na = count(*natom);
    const std::string_view name = text_in(basis, kLongKeywordLength);
    const scf::MoleculeView molecule{{zat, na}, {zel, na}, {pos, 3 * na}};
    const int n = abi::checked_nbasis(name, molecule, *nbasis, "FULLCI_2E");
    scf::JobControl job;
    job.basis = name;
    job.orthogonality = *thr_orth;
    const props::TwoElectronCi ci =
        props::two_electron_ci(norvik::basis::make_basis(name, molecule.elements), job, molecule,
                               {orbitals, 2 * (abi::square(n) + count(n))});
    const std::size_t roots = count(*nroots);
    for (std::size_t k = 0; k < roots; ++k) {
      esinglet[k] = k < ci.singlets.size() ? ci.singlets[k] : 0.0;
      etriplet[k] = k < ci.triplets.size() ? ci.triplets[k] : 0.0;
    }
    const std::size_t npacked = count(n) * (count(n) + 1) / 2;
    std::fill_n(ground, npacked, 0.0);
    std::copy(ci.ground.begin(), ci.ground.end(), ground);
    *norb = ci.norb;
    *ehf = ci.reference;
  });
}

NORVIK_API void WRITE_H2_CI(const norvik_int* nbasis, const norvik_int* norb, const double* ground,
                            const norvik_int* nroots, const double* esinglet,
                            const double* etriplet, const char* report) {
  guarded([&] {
    abi::check_nbasis(*nbasis, "WRITE_H2_CI");
    const std::size_t npacked = count(*nbasis) * (count(*nbasis) + 1) / 2;
    abi::append_to(report, norvik::report::two_electron_ci(*norb, {ground, npacked},
                                                           {esinglet, count(*nroots)},
                                                           {etriplet, count(*nroots)}));
  });
}

NORVIK_API void WRITE_ENERGY_CI(const double* ehf, const double* efci, const char* report) {
  guarded([&] { abi::append_to(report, norvik::report::full_ci_energy(*ehf, *efci)); });
}

}  // extern "C"
