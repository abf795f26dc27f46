// Exported routines of the exchange–correlation terms on the grid: the basis
// table, the densities, the electron count, the exchange–correlation matrix,
// energy and kernel table.  A named functional picks its point routine and the
// work goes to the routine's _SUB member, as the drivers would call it.
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "abi/abi_support.h"
#include "common/error.h"
#include "common/fortran_format.h"
#include "dft/functionals/functional_names.h"
#include "dft/functionals/point.h"
#include "dft/grid/molecular_grid.h"
#include "dft/xc/basis_values.h"
#include "dft/xc/xc_integrator.h"
#include "norvik/functionals.h"
#include "norvik/xc.h"

namespace {

namespace abi = norvik::abi;
namespace dft = norvik::dft;
using abi::count;
using abi::guarded;

// The point routines of each combination: energy, potential, kernel (none for
// the gradient-corrected ones).
struct PointRoutines {
  dft::Combination combination;
  norvik_xc_point_routine energy, potential, kernel;
};
constexpr std::array<PointRoutines, 9> kRoutines{{
    {dft::Combination::svwn5, E_XC_SVWN5, V_XC_SVWN5, F_XC_SVWN5},
    {dft::Combination::svwn3, E_XC_SVWN3, V_XC_SVWN3, F_XC_SVWN3},
    {dft::Combination::spl, E_XC_SPL, V_XC_SPL, nullptr},
    {dft::Combination::sgl, E_XC_SGL, V_XC_SGL, nullptr},
    {dft::Combination::blyp, E_XC_BLYP, V_XC_BLYP, nullptr},
    {dft::Combination::bop, E_XC_BOP, V_XC_BOP, nullptr},
    {dft::Combination::pfop, E_XC_PFOP, V_XC_PFOP, nullptr},
    {dft::Combination::b3lyp5, E_XC_B3LYP5, V_XC_B3LYP5, nullptr},
    {dft::Combination::b3lyp3, E_XC_B3LYP3, V_XC_B3LYP3, nullptr},
}};

const PointRoutines& routines_of(const char* name, dft::FunctionalUse use) {
  const dft::Combination c =
      dft::functional_for(abi::text_in(name, static_cast<int>(dft::kFunctionalNameLength)), use);
  for (const PointRoutines& r : kRoutines) {
    if (r.combination == c) return r;
  }
  throw std::logic_error("a combination without point routines");
}

// out(:, p) = routine(rho(:, p), a) for every point, `width` outputs each.
std::vector<double> per_point(norvik_xc_point_routine routine, double a, std::size_t npts,
                              const double* rho, std::size_t width) {
  std::vector<double> out(width * npts);
  const auto n = static_cast<std::ptrdiff_t>(npts);
#pragma omp parallel for schedule(static)
  for (std::ptrdiff_t p = 0; p < n; ++p) {
    const auto up = static_cast<std::size_t>(p);
    routine(rho + 8 * up, &a, out.data() + width * up);
  }
  return out;
}

void xc_matrix_sub(norvik_xc_point_routine vxc, norvik_int nbasis, double a, norvik_int npts,
                   const double* w, const double* chi, const double* rho, double* V) {
  const std::size_t n = count(npts);
  const std::vector<double> v = per_point(vxc, a, n, rho, 5);
  dft::xc_matrix(dft::table_by_point(npts, nbasis, {w, count(npts)}, chi), {rho, 8 * n}, v,
                 {V, 2 * abi::square(nbasis)});
}

void energy_sub(norvik_xc_point_routine routine, double a, norvik_int npts, const double* w,
                const double* rho, double* exc) {
  const std::size_t n = count(npts);
  const std::vector<double> e = per_point(routine, a, n, rho, 3);
  std::array<std::vector<double>, 3> part;
  for (std::size_t k = 0; k < 3; ++k) {
    part[k].resize(n);
    for (std::size_t p = 0; p < n; ++p) part[k][p] = e[3 * p + k];
  }
  for (std::size_t k = 0; k < 3; ++k) exc[k] = dft::integrate(part[k], {w, n});
}

void kernel_sub(norvik_xc_point_routine routine, double a, norvik_int npts, const double* rho,
                double* fxc) {
  const std::size_t n = count(npts);
  const std::vector<double> f = per_point(routine, a, n, rho, 3);
  std::copy(f.begin(), f.end(), fxc);
}

}  // namespace

extern "C" {

NORVIK_API void LIST_BASIS(const norvik_int* nbasis, const norvik_int* nshell,
                           const double* shelltab, const norvik_int* npts, const double* points,
                           double* chi) {
  guarded([&] {
    const std::size_t ns = count(*nshell);
    const dft::ShellTableBasis b = dft::basis_from_shell_table(
        *nshell, {shelltab, ns * static_cast<std::size_t>(NORVIK_SHELL_RECORD)});
    if (b.set.nbasis() != *nbasis) {
      throw norvik::Error(
          norvik::fortran::list_directed({std::string("Wrong nbasis in list_basis."),
                                          std::int64_t{*nbasis}, std::int64_t{b.set.nbasis()}}));
    }
    const std::size_t np = count(*npts);
    dft::basis_on_grid(b.set, b.centres, {points, 3 * np},
                       {chi, dft::basis_table_size(*npts, *nbasis)});
  });
}

NORVIK_API void LIST_DENSITY(const norvik_int* nbasis, const double* P, const norvik_int* npts,
                             const double* chi, double* rho) {
  guarded([&] {
    dft::density_on_grid(dft::table_by_point(*npts, *nbasis, {}, chi),
                         {P, 2 * abi::square(*nbasis)}, {rho, 8 * count(*npts)});
  });
}

NORVIK_API void INTG_DENSITY(const norvik_int* npts, const double* w, const double* rho,
                             double* n) {
  guarded([&] {
    const std::size_t np = count(*npts);
    const std::array<double, 3> c = dft::electron_count({w, np}, {rho, 8 * np});
    std::copy(c.begin(), c.end(), n);
  });
}

NORVIK_API void CALCVXCHCORR(NORVIK_XC_MATRIX_ARGS(const char* functional)) {
  guarded([&] {
    (void)nshell, (void)shelltab, (void)points;
    const PointRoutines& r = routines_of(functional, dft::FunctionalUse::potential_matrix);
    xc_matrix_sub(r.potential, *nbasis, *a, *npts, w, chi, rho, V);
  });
}

NORVIK_API void CALCVXCHCORR_SUB(NORVIK_XC_MATRIX_ARGS(norvik_xc_point_routine vxc)) {
  guarded([&] {
    (void)nshell, (void)shelltab, (void)points;
    xc_matrix_sub(vxc, *nbasis, *a, *npts, w, chi, rho, V);
  });
}

NORVIK_API void ENERGYEXC(const char* functional, const double* a, const norvik_int* npts,
                          const double* w, const double* rho, double* exc) {
  guarded([&] {
    const PointRoutines& r = routines_of(functional, dft::FunctionalUse::energy);
    energy_sub(r.energy, *a, *npts, w, rho, exc);
  });
}

NORVIK_API void ENERGYEXC_SUB(norvik_xc_point_routine exc_routine, const double* a,
                              const norvik_int* npts, const double* w, const double* rho,
                              double* exc) {
  guarded([&] { energy_sub(exc_routine, *a, *npts, w, rho, exc); });
}

NORVIK_API void MAKEFXCTB(const norvik_int* npts, const double* a, const char* functional,
                          const double* rho, double* fxc) {
  guarded([&] {
    const PointRoutines& r = routines_of(functional, dft::FunctionalUse::kernel);
    kernel_sub(r.kernel, *a, *npts, rho, fxc);
  });
}

NORVIK_API void MAKEFXCTB_SUB(const norvik_int* npts, const double* a,
                              norvik_xc_point_routine fxc_routine, const double* rho, double* fxc) {
  guarded([&] { kernel_sub(fxc_routine, *a, *npts, rho, fxc); });
}

NORVIK_API void CONSTRUCTVXC(const norvik_int* nbasis, const norvik_int* npts, const double* w,
                             const double* chi, const double* fxc, const double* rho1, double* V) {
  guarded([&] {
    // The local kernel's response potential v1_σ = Σ_τ f_στ ρ1_τ, no gradient
    // terms, through the matrix of the functionals' potentials.
    const std::size_t n = count(*npts);
    std::vector<double> v(dft::kPotentialRecord * n, 0.0);
    for (std::size_t p = 0; p < n; ++p) {
      const double* f = fxc + dft::kKernelRecord * p;
      const double a = rho1[dft::kPointRecord * p], b = rho1[dft::kPointRecord * p + 1];
      v[dft::kPotentialRecord * p] = f[0] * a + f[2] * b;
      v[dft::kPotentialRecord * p + 1] = f[2] * a + f[1] * b;
    }
    dft::xc_matrix(dft::table_by_point(*npts, *nbasis, {w, n}, chi), {rho1, dft::kPointRecord * n},
                   v, {V, 2 * abi::square(*nbasis)});
  });
}

}  // extern "C"
