// Exported exchange–correlation functionals: each routine views the host's
// point record and outputs as a batch of one point and calls the core
// (src/dft/functionals).  Argument lists: norvik/functionals.h.
#include <algorithm>
#include <span>

#include "abi/abi_support.h"
#include "dft/functionals/becke88.h"
#include "dft/functionals/combinations.h"
#include "dft/functionals/components.h"
#include "dft/functionals/pf_exchange.h"
#include "dft/functionals/vwn_formula.h"
#include "norvik/functionals.h"

namespace {

namespace dft = norvik::dft;
using dft::Combination;
using dft::Component;
using norvik::abi::guarded;

std::span<const double> record(const double* point) {
  return {point, dft::kPointRecord};
}

void component_energy(Component c, const double* point, double* e) {
  guarded([&] {
    *e = 0.0;
    dft::add_energies(c, record(point), 1.0, {e, 1});
  });
}
void component_potential(Component c, const double* point, double* v) {
  guarded([&] {
    std::fill_n(v, dft::kPotentialRecord, 0.0);
    dft::add_potentials(c, record(point), 1.0, {v, dft::kPotentialRecord});
  });
}
void component_kernel(Component c, const double* point, double* f) {
  guarded([&] {
    std::fill_n(f, dft::kKernelRecord, 0.0);
    dft::add_kernels(c, record(point), 1.0, {f, dft::kKernelRecord});
  });
}

// e(1) total, e(2) exchange, e(3) correlation.
void combination_energy(Combination c, const double* point, const double* a, double* e) {
  guarded([&] {
    dft::combination_energies(c, record(point), *a, {{e, 1}, {e + 1, 1}, {e + 2, 1}});
  });
}
void combination_potential(Combination c, const double* point, const double* a, double* v) {
  guarded([&] { dft::combination_potentials(c, record(point), *a, {v, dft::kPotentialRecord}); });
}
void combination_kernel(Combination c, const double* point, const double* a, double* f) {
  guarded([&] { dft::combination_kernels(c, record(point), *a, {f, dft::kKernelRecord}); });
}

template <class EnhancementOf>
void enhancements(const double* x, double* k, double* dk, EnhancementOf enhancement) {
  for (int s = 0; s < 2; ++s) {
    const dft::Enhancement e = enhancement(x[s]);
    k[s] = e.k;
    dk[s] = e.dk;
  }
}

}  // namespace

// ---- components: (point, e), (point, v), (point, f) ----
extern "C" NORVIK_API void E_EXCH_S(const double* point, double* e) {
  component_energy(Component::slater, point, e);
}
extern "C" NORVIK_API void V_EXCH_S(const double* point, double* v) {
  component_potential(Component::slater, point, v);
}
extern "C" NORVIK_API void F_EXCH_S(const double* point, double* f) {
  component_kernel(Component::slater, point, f);
}
extern "C" NORVIK_API void E_EXCH_B(const double* point, double* e) {
  component_energy(Component::becke88, point, e);
}
extern "C" NORVIK_API void V_EXCH_B(const double* point, double* v) {
  component_potential(Component::becke88, point, v);
}
extern "C" NORVIK_API void E_EXCH_PF(const double* point, double* e) {
  component_energy(Component::pf_exchange, point, e);
}
extern "C" NORVIK_API void V_EXCH_PF(const double* point, double* v) {
  component_potential(Component::pf_exchange, point, v);
}
extern "C" NORVIK_API void E_CORR_VWN3(const double* point, double* e) {
  component_energy(Component::vwn3, point, e);
}
extern "C" NORVIK_API void V_CORR_VWN3(const double* point, double* v) {
  component_potential(Component::vwn3, point, v);
}
extern "C" NORVIK_API void F_CORR_VWN3(const double* point, double* f) {
  component_kernel(Component::vwn3, point, f);
}
extern "C" NORVIK_API void E_CORR_VWN5(const double* point, double* e) {
  component_energy(Component::vwn5, point, e);
}
extern "C" NORVIK_API void V_CORR_VWN5(const double* point, double* v) {
  component_potential(Component::vwn5, point, v);
}
extern "C" NORVIK_API void F_CORR_VWN5(const double* point, double* f) {
  component_kernel(Component::vwn5, point, f);
}
extern "C" NORVIK_API void E_CORR_LYP(const double* point, double* e) {
  component_energy(Component::lyp, point, e);
}
extern "C" NORVIK_API void V_CORR_LYP(const double* point, double* v) {
  component_potential(Component::lyp, point, v);
}
extern "C" NORVIK_API void E_CORR_OP(const double* point, double* e) {
  component_energy(Component::op, point, e);
}
extern "C" NORVIK_API void V_CORR_OP(const double* point, double* v) {
  component_potential(Component::op, point, v);
}
extern "C" NORVIK_API void E_CORR_PL(const double* point, double* e) {
  component_energy(Component::perdew_zunger, point, e);
}
extern "C" NORVIK_API void V_CORR_PL(const double* point, double* v) {
  component_potential(Component::perdew_zunger, point, v);
}
extern "C" NORVIK_API void E_CORR_GL(const double* point, double* e) {
  component_energy(Component::gunnarsson_lundqvist, point, e);
}
extern "C" NORVIK_API void V_CORR_GL(const double* point, double* v) {
  component_potential(Component::gunnarsson_lundqvist, point, v);
}

// ---- combinations: (point, a, e(3)), (point, a, v), (point, a, f) ----
extern "C" NORVIK_API void E_XC_SVWN5(const double* point, const double* a, double* e) {
  combination_energy(Combination::svwn5, point, a, e);
}
extern "C" NORVIK_API void V_XC_SVWN5(const double* point, const double* a, double* v) {
  combination_potential(Combination::svwn5, point, a, v);
}
extern "C" NORVIK_API void F_XC_SVWN5(const double* point, const double* a, double* f) {
  combination_kernel(Combination::svwn5, point, a, f);
}
extern "C" NORVIK_API void E_XC_SVWN3(const double* point, const double* a, double* e) {
  combination_energy(Combination::svwn3, point, a, e);
}
extern "C" NORVIK_API void V_XC_SVWN3(const double* point, const double* a, double* v) {
  combination_potential(Combination::svwn3, point, a, v);
}
extern "C" NORVIK_API void F_XC_SVWN3(const double* point, const double* a, double* f) {
  combination_kernel(Combination::svwn3, point, a, f);
}
extern "C" NORVIK_API void E_XC_SPL(const double* point, const double* a, double* e) {
  combination_energy(Combination::spl, point, a, e);
}
extern "C" NORVIK_API void V_XC_SPL(const double* point, const double* a, double* v) {
  combination_potential(Combination::spl, point, a, v);
}
extern "C" NORVIK_API void E_XC_SGL(const double* point, const double* a, double* e) {
  combination_energy(Combination::sgl, point, a, e);
}
extern "C" NORVIK_API void V_XC_SGL(const double* point, const double* a, double* v) {
  combination_potential(Combination::sgl, point, a, v);
}
extern "C" NORVIK_API void E_XC_BLYP(const double* point, const double* a, double* e) {
  combination_energy(Combination::blyp, point, a, e);
}
extern "C" NORVIK_API void V_XC_BLYP(const double* point, const double* a, double* v) {
  combination_potential(Combination::blyp, point, a, v);
}
extern "C" NORVIK_API void E_XC_BOP(const double* point, const double* a, double* e) {
  combination_energy(Combination::bop, point, a, e);
}
extern "C" NORVIK_API void V_XC_BOP(const double* point, const double* a, double* v) {
  combination_potential(Combination::bop, point, a, v);
}
extern "C" NORVIK_API void E_XC_PFOP(const double* point, const double* a, double* e) {
  combination_energy(Combination::pfop, point, a, e);
}
extern "C" NORVIK_API void V_XC_PFOP(const double* point, const double* a, double* v) {
  combination_potential(Combination::pfop, point, a, v);
}
extern "C" NORVIK_API void E_XC_B3LYP5(const double* point, const double* a, double* e) {
  combination_energy(Combination::b3lyp5, point, a, e);
}
extern "C" NORVIK_API void V_XC_B3LYP5(const double* point, const double* a, double* v) {
  combination_potential(Combination::b3lyp5, point, a, v);
}
extern "C" NORVIK_API void E_XC_B3LYP3(const double* point, const double* a, double* e) {
  combination_energy(Combination::b3lyp3, point, a, e);
}
extern "C" NORVIK_API void V_XC_B3LYP3(const double* point, const double* a, double* v) {
  combination_potential(Combination::b3lyp3, point, a, v);
}

// ---- building blocks ----
extern "C" NORVIK_API void KOFX_BECKE88(const double* x, double* K, double* dK) {
  enhancements(x, K, dK, [](double v) { return dft::becke88::enhancement(v); });
}
extern "C" NORVIK_API void KOFX_PF(const double* x, double* K, double* dK) {
  enhancements(x, K, dK, [](double v) { return dft::pf_exchange::enhancement(v); });
}
extern "C" NORVIK_API double ECVWN(const double* x0, const double* A, const double* b,
                                   const double* c, const double* x) {
  return dft::vwn_value({*x0, *A, *b, *c}, *x);
}
extern "C" NORVIK_API double ECDSH(const double* x0, const double* A, const double* b,
                                   const double* c, const double* x) {
  return dft::vwn_derivative({*x0, *A, *b, *c}, *x);
}
