// Exported properties of a converged point: the static polarisability and its
// report section.
#include <array>
#include <optional>

#include "abi/scf_support.h"
#include "basis/library.h"
#include "common/constants.h"
#include "common/text_file.h"
#include "dft/functionals/functional_names.h"
#include "norvik/properties.h"
#include "properties/polarizability.h"
#include "properties/populations.h"
#include "properties/stability.h"
#include "report/property_sections.h"
#include "report/stability_sections.h"

namespace {

namespace abi = norvik::abi;
namespace scf = norvik::scf;
namespace dft = norvik::dft;
using abi::count;
using abi::guarded;
using abi::kKeywordLength;
using abi::kLongKeywordLength;
using abi::text_in;

// The converged point of the response routines' first 16 arguments.
struct ResponsePoint {
  scf::MoleculeView molecule;
  int n = 0;
  scf::JobControl job;
  std::optional<scf::KohnShamStage> kohn_sham;
  norvik::basis::BasisSet basis;
  norvik::setup::ElectronCount counts;
  std::span<const double> rho, orbitals;
};

ResponsePoint response_point(NORVIK_RESPONSE_POINT_ARGS, const char* routine) {
  ResponsePoint p;
  const std::size_t na = count(*natom);
  const std::string_view name = text_in(basis, kLongKeywordLength);
  p.molecule = {{zat, na}, {zel, na}, {pos, 3 * na}};
  p.n = abi::checked_nbasis(name, p.molecule, *nbasis, routine);
  const std::size_t nn = abi::square(p.n);
  p.job.basis = name;
  p.job.memory_gb = *ramlimit;
  p.job.screening = *thr_screen;
  p.job.orthogonality = *thr_orth;
  // The functional of the point, as SCF_1POINT names it; its SCF settings play
  // no part in the response.
  const std::string_view functional = text_in(method, kKeywordLength);
  if (!abi::is_hartree_fock(functional)) {
    scf::KohnShamStage ks;
    ks.functional = {dft::functional_for(functional, dft::FunctionalUse::potential_matrix),
                     dft::exact_exchange_fraction(functional)};
    ks.grid_radius = *grid_radius;
    ks.grid_level = abi::grid_level_in(*grid_level, routine);
    p.kohn_sham = ks;
  }
  p.basis = norvik::basis::make_basis(name, p.molecule.elements);
  p.counts = {*nalpha, *nbeta};
  p.rho = {rho, 2 * nn};
  p.orbitals = {orbitals, 2 * (nn + count(p.n))};
  return p;
}

#define NORVIK_RESPONSE_POINT_NAMES                                                                \
  method, basis, natom, zat, zel, pos, nalpha, nbeta, nbasis, rho, orbitals, ramlimit, thr_screen, \
      thr_orth, grid_radius, grid_level

void polarize(NORVIK_POLARIZE_ARGS, bool direct, const char* routine) {
  const ResponsePoint p = response_point(NORVIK_RESPONSE_POINT_NAMES, routine);
  norvik::properties::ResponseOptions options;
  options.direct = direct;
  const std::array<double, 9> a = norvik::properties::static_polarizability(
      p.basis, p.job, p.molecule, p.counts, p.rho, p.orbitals, p.kohn_sham, options);
  // e·Å²/V to the polarisability volume: × hartree [eV] × bohr [Å].
  const double volume = norvik::constants::kHartreeEv * norvik::constants::kBohrAngstrom;
  for (std::size_t e = 0; e < 9; ++e) alpha[e] = a[e] * volume;  // symmetric: either order
}

}  // namespace

extern "C" NORVIK_API void POLARIZE(NORVIK_POLARIZE_ARGS) {
  guarded([&] { polarize(NORVIK_RESPONSE_POINT_NAMES, alpha, false, "Polarize"); });
}

extern "C" NORVIK_API void POLARIZE_DIRECT(NORVIK_POLARIZE_ARGS) {
  guarded([&] { polarize(NORVIK_RESPONSE_POINT_NAMES, alpha, true, "Polarize_direct"); });
}

extern "C" NORVIK_API void WRITE_POLARIZ(const double* alpha, const char* report) {
  guarded([&] {
    std::array<double, 9> a{};
    for (std::size_t e = 0; e < 9; ++e) a[e] = alpha[e];
    abi::append_to(report, norvik::report::polarizability(a));
  });
}

namespace {

void populations(const char* basis, const norvik_int* natom, const norvik_int* zat,
                 const norvik_int* zel, const norvik_int* nbasis, const double* S,
                 const double* rho, double* charge, double* spin,
                 norvik::properties::Partition partition, const char* routine) {
  const std::size_t na = count(*natom);
  const std::string_view name = text_in(basis, kLongKeywordLength);
  const scf::MoleculeView molecule{{zat, na}, {zel, na}, {}};
  const int n = abi::checked_nbasis(name, molecule, *nbasis, routine);
  const std::size_t nn = abi::square(n);
  const norvik::properties::AtomPopulations p = norvik::properties::atom_populations(
      norvik::basis::make_basis(name, {zel, na}), {zat, na}, {S, nn}, {rho, 2 * nn}, partition);
  std::copy(p.charge.begin(), p.charge.end(), charge);
  std::copy(p.spin.begin(), p.spin.end(), spin);
}

void write_populations(const char* kind, const norvik_int* natom, const norvik_int* zel,
                       const double* values, bool spin, const char* report) {
  const std::size_t na = count(*natom);
  abi::append_to(
      report, norvik::report::populations(norvik::io::trim_right(text_in(kind, kLongKeywordLength)),
                                          {zel, na}, {values, na}, spin));
}

}  // namespace

extern "C" {

NORVIK_API void MULLIKEN(const char* basis, const norvik_int* natom, const norvik_int* zat,
                         const norvik_int* zel, const norvik_int* nbasis, const double* S,
                         const double* rho, double* charge, double* spin) {
  guarded([&] {
    populations(basis, natom, zat, zel, nbasis, S, rho, charge, spin,
                norvik::properties::Partition::mulliken, "Mulliken");
  });
}

NORVIK_API void LOWDIN(const char* basis, const norvik_int* natom, const norvik_int* zat,
                       const norvik_int* zel, const norvik_int* nbasis, const double* S,
                       const double* rho, double* charge, double* spin) {
  guarded([&] {
    populations(basis, natom, zat, zel, nbasis, S, rho, charge, spin,
                norvik::properties::Partition::lowdin, "Lowdin");
  });
}

NORVIK_API void SCF_STABILITY(NORVIK_RESPONSE_POINT_ARGS, const norvik_int* nroots,
                              const double* angle, norvik_bool* restricted, double* values,
                              double* rho_next) {
  guarded([&] {
    const ResponsePoint p = response_point(NORVIK_RESPONSE_POINT_NAMES, "SCF_stability");
    norvik::properties::StabilityOptions options;
    options.roots = std::max(*nroots, 1);
    const norvik::properties::StabilityAnalysis a = norvik::properties::stability_analysis(
        p.basis, p.job, p.molecule, p.counts, p.rho, p.orbitals, p.kohn_sham, options);
    *restricted = a.restricted ? 1 : 0;
    const std::size_t roots = count(*nroots);
    std::fill_n(values, 2 * roots, 0.0);
    for (std::size_t b = 0; b < a.blocks.size(); ++b) {
      std::copy(a.blocks[b].values.begin(), a.blocks[b].values.end(), values + b * roots);
    }
    const std::size_t nn = abi::square(p.n);
    const norvik::properties::StabilityBlock* lowest = a.lowest();
    if (lowest == nullptr) {
      std::copy_n(rho, 2 * nn, rho_next);
      return;
    }
    const std::vector<double> next = norvik::properties::rotated_density(
        p.n, a.northo, p.counts, p.orbitals, lowest->lowest, *angle);
    std::copy(next.begin(), next.end(), rho_next);
  });
}

NORVIK_API void WRITE_INSTABILITY_HF(const norvik_bool* restricted, const norvik_int* nroots,
                                     const double* values, const char* report) {
  guarded([&] {
    abi::append_to(
        report, norvik::report::instability(false, *restricted != 0, {values, 2 * count(*nroots)}));
  });
}

NORVIK_API void WRITE_INSTABILITY_KS(const norvik_bool* restricted, const norvik_int* nroots,
                                     const double* values, const char* report) {
  guarded([&] {
    abi::append_to(
        report, norvik::report::instability(true, *restricted != 0, {values, 2 * count(*nroots)}));
  });
}

NORVIK_API void WRITE_POPULATION(const char* kind, const norvik_int* natom, const norvik_int* zel,
                                 const double* charge, const char* report) {
  guarded([&] { write_populations(kind, natom, zel, charge, false, report); });
}

NORVIK_API void WRITE_SPINDENSITY(const char* kind, const norvik_int* natom, const norvik_int* zel,
                                  const double* spin, const char* report) {
  guarded([&] { write_populations(kind, natom, zel, spin, true, report); });
}

}  // extern "C"
