/* norvik: the exchange-correlation functionals at one grid point (see norvik.h
 * for the convention).  docs/functionals.md gives the formulas, constants,
 * thresholds and references.
 *
 * Units: densities in 1/angstrom^3, density gradients in 1/angstrom^4, energy
 * densities in eV/angstrom^3, derivatives with respect to a density in eV,
 * with respect to a gradient contraction in eV*angstrom^5, second derivatives
 * in eV*angstrom^3.
 *
 * point(8), the point record, in this order: rho_alpha, rho_beta, the x, y, z
 * components of grad rho_alpha, then those of grad rho_beta.  The local
 * functionals (S, VWN3, VWN5, PL, GL, the SVWN forms, SPL, SGL) and every
 * kernel routine read only the first two reals.
 *
 * Outputs:
 *   e       component energy routines: one real, the energy density;
 *   e(3)    combination energy routines: total, exchange part, correlation
 *           part (total = exchange + correlation);
 *   v(5)    potential routines: de/drho_alpha, de/drho_beta, de/dgamma_aa,
 *           de/dgamma_bb, de/dgamma_ab with gamma_st = grad rho_s . grad rho_t;
 *           local functionals write zero to the last three, Becke 88 and the
 *           parameter-free exchange to the fifth;
 *   f(3)    kernel routines: d2e/drho_alpha^2, d2e/drho_beta^2,
 *           d2e/drho_alpha drho_beta.
 *
 * Combinations take a, the exact-exchange fraction chosen by the caller:
 *   SVWN5, SVWN3, SPL, SGL   (1 - a) S + VWN5 / VWN3 / PL / GL
 *   BLYP, BOP                (1 - a) B + LYP / OP
 *   PFOP                     (1 - a) PF + OP (OP on the Becke 88 enhancement)
 *   B3LYP5, B3LYP3           (1 - a - 0.72) S + 0.72 B, (1 - 0.81) VWN5 / VWN3 + 0.81 LYP
 * with the same weights for every potential and kernel component.
 *
 * No routine fails: below the density thresholds of docs/functionals.md the
 * results are zero.  Negative densities are not guarded against. */
#ifndef NORVIK_FUNCTIONALS_H
#define NORVIK_FUNCTIONALS_H

#include "norvik/export.h"

NORVIK_EXTERN_C_BEGIN

/* The leading arguments of every combination routine: point(8), a. */
#define NORVIK_XC_COMBINATION_ARGS const double *point, const double *a

/* ---- exchange components: S Slater, B Becke 88, PF parameter-free ---- */
NORVIK_API void E_EXCH_S(const double* point, double* e);
NORVIK_API void V_EXCH_S(const double* point, double* v);
NORVIK_API void F_EXCH_S(const double* point, double* f); /* 0 where rho_s <= 1e-11 */
NORVIK_API void E_EXCH_B(const double* point, double* e);
NORVIK_API void V_EXCH_B(const double* point, double* v);
NORVIK_API void E_EXCH_PF(const double* point, double* e);
NORVIK_API void V_EXCH_PF(const double* point, double* v);

/* ---- correlation components ---- */
/* Vosko-Wilk-Nusair, RPA parameters (VWN3) and Ceperley-Alder parameters (VWN5). */
NORVIK_API void E_CORR_VWN3(const double* point, double* e);
NORVIK_API void V_CORR_VWN3(const double* point, double* v);
NORVIK_API void F_CORR_VWN3(const double* point, double* f);
NORVIK_API void E_CORR_VWN5(const double* point, double* e);
NORVIK_API void V_CORR_VWN5(const double* point, double* v);
NORVIK_API void F_CORR_VWN5(const double* point, double* f);
/* Lee-Yang-Parr. */
NORVIK_API void E_CORR_LYP(const double* point, double* e);
NORVIK_API void V_CORR_LYP(const double* point, double* v);
/* One-parameter progressive, on the Becke 88 enhancement. */
NORVIK_API void E_CORR_OP(const double* point, double* e);
NORVIK_API void V_CORR_OP(const double* point, double* v);
/* Perdew-Zunger local correlation. */
NORVIK_API void E_CORR_PL(const double* point, double* e);
NORVIK_API void V_CORR_PL(const double* point, double* v);
/* Gunnarsson-Lundqvist. */
NORVIK_API void E_CORR_GL(const double* point, double* e);
NORVIK_API void V_CORR_GL(const double* point, double* v);

/* ---- combinations: point(8), a in; e(3), v(5) or f(3) out ---- */
NORVIK_API void E_XC_SVWN5(NORVIK_XC_COMBINATION_ARGS, double* e);
NORVIK_API void V_XC_SVWN5(NORVIK_XC_COMBINATION_ARGS, double* v);
NORVIK_API void F_XC_SVWN5(NORVIK_XC_COMBINATION_ARGS, double* f);
NORVIK_API void E_XC_SVWN3(NORVIK_XC_COMBINATION_ARGS, double* e);
NORVIK_API void V_XC_SVWN3(NORVIK_XC_COMBINATION_ARGS, double* v);
NORVIK_API void F_XC_SVWN3(NORVIK_XC_COMBINATION_ARGS, double* f);
NORVIK_API void E_XC_SPL(NORVIK_XC_COMBINATION_ARGS, double* e);
NORVIK_API void V_XC_SPL(NORVIK_XC_COMBINATION_ARGS, double* v);
NORVIK_API void E_XC_SGL(NORVIK_XC_COMBINATION_ARGS, double* e);
NORVIK_API void V_XC_SGL(NORVIK_XC_COMBINATION_ARGS, double* v);
NORVIK_API void E_XC_BLYP(NORVIK_XC_COMBINATION_ARGS, double* e);
NORVIK_API void V_XC_BLYP(NORVIK_XC_COMBINATION_ARGS, double* v);
NORVIK_API void E_XC_BOP(NORVIK_XC_COMBINATION_ARGS, double* e);
NORVIK_API void V_XC_BOP(NORVIK_XC_COMBINATION_ARGS, double* v);
NORVIK_API void E_XC_PFOP(NORVIK_XC_COMBINATION_ARGS, double* e);
NORVIK_API void V_XC_PFOP(NORVIK_XC_COMBINATION_ARGS, double* v);
NORVIK_API void E_XC_B3LYP5(NORVIK_XC_COMBINATION_ARGS, double* e);
NORVIK_API void V_XC_B3LYP5(NORVIK_XC_COMBINATION_ARGS, double* v);
NORVIK_API void E_XC_B3LYP3(NORVIK_XC_COMBINATION_ARGS, double* e);
NORVIK_API void V_XC_B3LYP3(NORVIK_XC_COMBINATION_ARGS, double* v);

/* ---- building blocks ---- */
/* Enhancement functions of the alpha and beta reduced gradients
 * x_s = |grad rho_s| / rho_s^(4/3): x(2) in; K(2), dK(2) = dK/dx out.
 * KOFX_BECKE88: K = 1.8610514726982 + 0.0084 x^2 / (1 + 0.0252 x asinh x).
 * KOFX_PF: the parameter-free K = A/D (1 + k x^2/D), D = D0 + x^2/72. */
NORVIK_API void KOFX_BECKE88(const double* x, double* K, double* dK);
NORVIK_API void KOFX_PF(const double* x, double* K, double* dK);
/* The Vosko-Wilk-Nusair interpolation in x = sqrt(r_s), r_s in bohr, for one
 * parameter set (x0, A [rydberg], b, c): ECVWN returns epsilon(x) in rydberg,
 * ECDSH its derivative d epsilon/dx. */
NORVIK_API double ECVWN(const double* x0, const double* A, const double* b, const double* c,
                        const double* x);
NORVIK_API double ECDSH(const double* x0, const double* A, const double* b, const double* c,
                        const double* x);

NORVIK_EXTERN_C_END

#endif
