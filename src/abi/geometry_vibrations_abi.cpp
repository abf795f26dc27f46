// Exported harmonic vibrations: the Hessian drivers over the one point of the
// surface, the normal modes, the intensities, the broadened spectra and their
// report sections.
#include <algorithm>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "abi/scf_support.h"
#include "common/constants.h"
#include "common/fortran_format.h"
#include "common/text_file.h"
#include "dft/functionals/functional_names.h"
#include "geometry/scf_hessian.h"
#include "geometry/vibrations.h"
#include "norvik/vibrations.h"
#include "report/vibration_sections.h"
#include "setup/elements.h"

namespace {

namespace abi = norvik::abi;
namespace scf = norvik::scf;
namespace geometry = norvik::geometry;
namespace report = norvik::report;
using abi::count;
using abi::guarded;
using abi::kFileNameLength;
using abi::kLongKeywordLength;
using abi::text_in;

[[noreturn]] void wrong(const char* what, const char* routine, std::int64_t value) {
  throw norvik::Error(norvik::fortran::list_directed(
      {std::string("Wrong ") + what + " in " + routine + ".", value}));
}

// The masses of the atoms as rest energies [eV].
std::vector<double> masses_of(norvik_int natom, const norvik_int* zel) {
  std::vector<double> m(count(natom));
  for (std::size_t a = 0; a < m.size(); ++a)
    m[a] = norvik::setup::atomic_mass(zel[a]) * norvik::constants::kAtomicMassUnitEv;
  return m;
}

// A converged point as the Hessian drivers see it.
struct HessianInput {
  std::string basis;
  std::vector<int> charges, elements;
  std::vector<double> positions;
  scf::JobControl job;
  scf::ScfControl control;
  scf::PointSettings settings;
  std::span<const double> rho;
  geometry::DifferenceRule rule;
};

HessianInput hessian_input(const char* basis, const norvik_int* natom, const norvik_int* zat,
                           const norvik_int* zel, const double* pos, const norvik_int* nalpha,
                           const norvik_int* nbeta, const scf::ScfControl& control,
                           const double* ramlimit, const double* thr_screen, const double* thr_orth,
                           const norvik_int* nbasis, const double* rho, const double* step,
                           const norvik_int* npoint, const char* routine) {
  HessianInput in;
  const std::size_t na = count(*natom);
  in.basis = std::string(text_in(basis, kLongKeywordLength));
  in.charges.assign(zat, zat + na);
  in.elements.assign(zel, zel + na);
  in.positions.assign(pos, pos + 3 * na);
  const int n =
      abi::checked_nbasis(in.basis, {in.charges, in.elements, in.positions}, *nbasis, routine);
  if (*npoint != 2 && *npoint != 4) wrong("npoint", routine, *npoint);
  in.job.basis = in.basis;
  in.job.memory_gb = *ramlimit;
  in.job.screening = *thr_screen;
  in.job.orthogonality = *thr_orth;
  in.control = control;
  in.settings.counts = {*nalpha, *nbeta};
  in.rho = {rho, 2 * abi::square(n)};
  in.rule = {*step, *npoint == 4};
  return in;
}

scf::MoleculeView molecule_of(const HessianInput& in) {
  return {in.charges, in.elements, in.positions};
}

// The whole Hessian of HESSIAN and its members.
using ColumnDone = std::function<void(std::size_t, std::size_t)>;

geometry::SecondDerivatives run_hessian(NORVIK_HESSIAN_ARGS, bool direct, const char* routine,
                                        const ColumnDone& column_done = {}) {
  std::optional<scf::KohnShamStage> kohn_sham =
      abi::kohn_sham_stage(method, niter, damp, thr_ene, thr_rms, grid_radius, grid_level, routine);
  // The Hartree–Fock settings are the first of each pair; a Kohn–Sham method
  // reads the second (its stage), as the displaced points run only that SCF.
  const scf::ScfControl control{niter[0], damp[0], thr_ene[0], thr_rms[0]};
  const double no_memory = 0.0;
  HessianInput in = hessian_input(basis, natom, zat, zel, pos, nalpha, nbeta, control,
                                  direct ? &no_memory : ramlimit, thr_screen, thr_orth, nbasis, rho,
                                  step, npoint, routine);
  in.settings.kohn_sham = kohn_sham;
  geometry::ScfHessianSettings settings;
  settings.rule = in.rule;
  settings.polarizability = *raman == 1;
  geometry::SecondDerivatives d = geometry::scf_second_derivatives(
      in.job, in.control, molecule_of(in), in.settings, in.rho, settings, column_done);
  std::copy(d.hessian.begin(), d.hessian.end(), hessian);
  std::copy(d.dipole.begin(), d.dipole.end(), dipder);
  if (*raman == 1) std::copy(d.polarizability.begin(), d.polarizability.end(), polder);
  return d;
}

void analyse(const geometry::SecondDerivatives& d, const norvik_int* natom, const norvik_int* zel,
             const double* pos, const norvik_int* raman, const char* report, const double* scale,
             double* eigenvalues, double* wavenumbers, double* modes, double* infrared,
             double* activity, double* depol, norvik_int* linear) {
  const std::size_t na = count(*natom), n3 = 3 * na;
  const std::vector<double> masses = masses_of(*natom, zel);
  const geometry::NormalModes m = geometry::normal_modes(d.hessian, masses, {pos, n3});
  const double f = *scale == 0.0 ? 1.0 : *scale;
  const bool with_raman = *raman == 1;
  const geometry::Intensities in = geometry::intensities(
      m.modes, masses, d.dipole,
      with_raman ? std::span<const double>(d.polarizability) : std::span<const double>());
  std::copy(m.eigenvalues.begin(), m.eigenvalues.end(), eigenvalues);
  for (std::size_t k = 0; k < n3; ++k) wavenumbers[k] = f * m.wavenumbers[k];
  std::copy(m.modes.begin(), m.modes.end(), modes);
  std::copy(in.infrared.begin(), in.infrared.end(), infrared);
  if (with_raman) {
    std::copy(in.raman.begin(), in.raman.end(), activity);
    std::copy(in.depolarization.begin(), in.depolarization.end(), depol);
  }
  *linear = m.linear ? 1 : 0;
  // The report: the Hessian, then the vibrational modes (the rigid motions left out).
  const std::size_t rigid = m.linear ? 5 : 6;
  const std::size_t first = std::min(rigid, n3);
  abi::append_to(report, report::hessian(d.hessian, *natom));
  const std::span<const double> w(wavenumbers + first, n3 - first);
  abi::append_to(
      report, report::vibrations(w, {infrared + first, n3 - first},
                                 with_raman ? std::span<const double>(activity + first, n3 - first)
                                            : std::span<const double>(),
                                 with_raman ? std::span<const double>(depol + first, n3 - first)
                                            : std::span<const double>(),
                                 f));
}

// The progress lines of HESSIAN_MOLE_PROGRESS: one per count of displaced
// coordinates, appended to `file` and closed, so that another process can
// follow them while the points run.  A blank name writes nothing.
ColumnDone progress_lines(const char* file) {
  const std::string path(norvik::io::trim_right(text_in(file, kFileNameLength)));
  if (path.empty()) return {};
  return [path](std::size_t done, std::size_t total) {
    norvik::io::append_lines(path, {"Hessian: " + std::to_string(done) + " of " +
                                    std::to_string(total) + " displaced coordinates done"});
  };
}

// One column of HF_HESSIAN and KS_HESSIAN.
void run_column(const HessianInput& in, const norvik_int* icoord, double* column, double* dipcol,
                const char* routine) {
  const std::size_t n3 = in.positions.size();
  if (*icoord < 1 || static_cast<std::size_t>(*icoord) > n3) wrong("icoord", routine, *icoord);
  geometry::ScfHessianSettings settings;
  settings.rule = in.rule;
  const geometry::PointFunction point =
      geometry::scf_points(in.job, in.control, molecule_of(in), in.settings, in.rho, settings);
  const geometry::DerivativeColumn c = geometry::difference_column(
      point, in.positions, static_cast<std::size_t>(*icoord - 1), in.rule);
  std::copy(c.hessian.begin(), c.hessian.end(), column);
  std::copy(c.dipole.begin(), c.dipole.end(), dipcol);
}

}  // namespace

extern "C" {

NORVIK_API void HESSIAN(NORVIK_HESSIAN_ARGS) {
  guarded([&] {
    run_hessian(method, basis, natom, zat, zel, pos, nalpha, nbeta, niter, damp, thr_ene, thr_rms,
                ramlimit, thr_screen, thr_orth, grid_radius, grid_level, nbasis, rho, step, npoint,
                raman, hessian, dipder, polder, false, "Hessian");
  });
}

NORVIK_API void HESSIAN_DIRECT(NORVIK_HESSIAN_ARGS) {
  guarded([&] {
    run_hessian(method, basis, natom, zat, zel, pos, nalpha, nbeta, niter, damp, thr_ene, thr_rms,
                ramlimit, thr_screen, thr_orth, grid_radius, grid_level, nbasis, rho, step, npoint,
                raman, hessian, dipder, polder, true, "Hessian_direct");
  });
}

#define NORVIK_HESSIAN_MOLE_BODY(DIRECT, ROUTINE, PROGRESS)                                        \
  guarded([&] {                                                                                    \
    const geometry::SecondDerivatives d =                                                          \
        run_hessian(method, basis, natom, zat, zel, pos, nalpha, nbeta, niter, damp, thr_ene,      \
                    thr_rms, ramlimit, thr_screen, thr_orth, grid_radius, grid_level, nbasis, rho, \
                    step, npoint, raman, hessian, dipder, polder, DIRECT, ROUTINE, PROGRESS);      \
    analyse(d, natom, zel, pos, raman, report, scale, eigenvalues, wavenumbers, modes, infrared,   \
            activity, depol, linear);                                                              \
  })

NORVIK_API void HESSIAN_MOLE(NORVIK_HESSIAN_MOLE_ARGS) {
  NORVIK_HESSIAN_MOLE_BODY(false, "Hessian_mole", {});
}

NORVIK_API void HESSIAN_MOLE_PROGRESS(NORVIK_HESSIAN_MOLE_ARGS, const char* progress) {
  NORVIK_HESSIAN_MOLE_BODY(false, "Hessian_mole_progress", progress_lines(progress));
}

NORVIK_API void HESSIAN_DIRECT_MOLE(NORVIK_HESSIAN_MOLE_ARGS) {
  NORVIK_HESSIAN_MOLE_BODY(true, "Hessian_direct_mole", {});
}

NORVIK_API void HF_HESSIAN(const char* basis, const norvik_int* natom, const norvik_int* zat,
                           const norvik_int* zel, const double* pos, const norvik_int* nalpha,
                           const norvik_int* nbeta, const norvik_int* niter, const double* damp,
                           const double* thr_ene, const double* thr_rms, const double* ramlimit,
                           const double* thr_screen, const double* thr_orth,
                           const norvik_int* nbasis, const double* rho, const double* step,
                           const norvik_int* npoint, const norvik_int* icoord, double* column,
                           double* dipcol) {
  guarded([&] {
    const HessianInput in = hessian_input(basis, natom, zat, zel, pos, nalpha, nbeta,
                                          {*niter, *damp, *thr_ene, *thr_rms}, ramlimit, thr_screen,
                                          thr_orth, nbasis, rho, step, npoint, "HF_Hessian");
    run_column(in, icoord, column, dipcol, "HF_Hessian");
  });
}

NORVIK_API void KS_HESSIAN(const char* functional, const char* basis, const norvik_int* natom,
                           const norvik_int* zat, const norvik_int* zel, const double* pos,
                           const norvik_int* nalpha, const norvik_int* nbeta,
                           const norvik_int* niter, const double* damp, const double* thr_ene,
                           const double* thr_rms, const double* ramlimit, const double* thr_screen,
                           const double* thr_orth, const norvik_int* nbasis, const double* rho,
                           const double* grid_radius, const norvik_int* grid_level,
                           const double* step, const norvik_int* npoint, const norvik_int* icoord,
                           double* column, double* dipcol) {
  guarded([&] {
    const scf::ScfControl control{*niter, *damp, *thr_ene, *thr_rms};
    HessianInput in = hessian_input(basis, natom, zat, zel, pos, nalpha, nbeta, control, ramlimit,
                                    thr_screen, thr_orth, nbasis, rho, step, npoint, "KS_Hessian");
    // Both settings of the pair are this one SCF's.
    const norvik_int niter2[2] = {*niter, *niter};
    const double damp2[2] = {*damp, *damp}, ene2[2] = {*thr_ene, *thr_ene},
                 rms2[2] = {*thr_rms, *thr_rms};
    in.settings.kohn_sham = abi::kohn_sham_stage(functional, niter2, damp2, ene2, rms2, grid_radius,
                                                 grid_level, "KS_Hessian");
    if (!in.settings.kohn_sham) {
      throw norvik::Error(
          norvik::fortran::list_directed({std::string("Wrong functional in KS_Hessian.")}));
    }
    run_column(in, icoord, column, dipcol, "KS_Hessian");
  });
}

NORVIK_API void VIBRATION(const norvik_int* natom, const norvik_int* zel, const double* pos,
                          const double* hessian, const double* scale, double* eigenvalues,
                          double* wavenumbers, double* modes, norvik_int* linear) {
  guarded([&] {
    const std::size_t n3 = 3 * count(*natom);
    const geometry::NormalModes m =
        geometry::normal_modes({hessian, n3 * n3}, masses_of(*natom, zel), {pos, n3});
    const double f = *scale == 0.0 ? 1.0 : *scale;
    std::copy(m.eigenvalues.begin(), m.eigenvalues.end(), eigenvalues);
    for (std::size_t k = 0; k < n3; ++k) wavenumbers[k] = f * m.wavenumbers[k];
    std::copy(m.modes.begin(), m.modes.end(), modes);
    *linear = m.linear ? 1 : 0;
  });
}

NORVIK_API void IRINTENSITY(const norvik_int* natom, const norvik_int* zel, const double* modes,
                            const double* dipder, double* infrared) {
  guarded([&] {
    const std::size_t n3 = 3 * count(*natom);
    const geometry::Intensities in =
        geometry::intensities({modes, n3 * n3}, masses_of(*natom, zel), {dipder, 3 * n3});
    std::copy(in.infrared.begin(), in.infrared.end(), infrared);
  });
}

NORVIK_API void RMINTENSITY(const norvik_int* natom, const norvik_int* zel, const double* modes,
                            const double* polder, double* activity, double* depol) {
  guarded([&] {
    const std::size_t n3 = 3 * count(*natom);
    const std::vector<double> no_dipole(3 * n3, 0.0);
    const geometry::Intensities in = geometry::intensities({modes, n3 * n3}, masses_of(*natom, zel),
                                                           no_dipole, {polder, 9 * n3});
    std::copy(in.raman.begin(), in.raman.end(), activity);
    std::copy(in.depolarization.begin(), in.depolarization.end(), depol);
  });
}

NORVIK_API void SPECTRUM(const norvik_int* nline, const double* wavenumbers,
                         const double* intensities, const double* fwhm, const double* low,
                         const double* high, const norvik_int* npoint, double* spectrum) {
  guarded([&] {
    if (!(*fwhm > 0.0)) {
      throw norvik::Error(
          norvik::fortran::list_directed({std::string("Wrong width in Spectrum."), *fwhm}));
    }
    if (*npoint < 1) wrong("npoint", "Spectrum", *npoint);
    const std::vector<double> s = geometry::broadened_spectrum(
        {wavenumbers, count(*nline)}, {intensities, count(*nline)}, *fwhm, *low, *high, *npoint);
    std::copy(s.begin(), s.end(), spectrum);
  });
}

NORVIK_API void WRITE_HESSIAN(const norvik_int* natom, const double* hessian, const char* r) {
  guarded([&] {
    const std::size_t n3 = 3 * count(*natom);
    abi::append_to(r, report::hessian({hessian, n3 * n3}, *natom));
  });
}

NORVIK_API void WRITE_VIBRATION(const norvik_int* nmode, const double* wavenumbers,
                                const double* infrared, const norvik_int* raman,
                                const double* activity, const double* depol, const double* scale,
                                const char* r) {
  guarded([&] {
    const std::size_t n = count(*nmode);
    const bool with = *raman == 1;
    abi::append_to(r, report::vibrations(
                          {wavenumbers, n}, {infrared, n},
                          with ? std::span<const double>(activity, n) : std::span<const double>(),
                          with ? std::span<const double>(depol, n) : std::span<const double>(),
                          *scale == 0.0 ? 1.0 : *scale));
  });
}

NORVIK_API void WRITE_SPECTRUM(const norvik_int* npoint, const double* low, const double* high,
                               const double* spectrum, const char* unit, const char* file) {
  guarded([&] {
    const std::vector<double> grid = geometry::spectrum_grid(*low, *high, *npoint);
    norvik::io::write_lines(
        text_in(file, kFileNameLength),
        report::spectrum(grid, {spectrum, grid.size()},
                         norvik::io::trim_right(text_in(unit, kLongKeywordLength))));
  });
}

}  // extern "C"
