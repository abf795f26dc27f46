/* norvik: exported routines of the integrals subsystem (see norvik.h for the convention).
 *
 * One-electron integrals over primitive Cartesian Gaussians
 *   x_A^l y_A^m z_A^n exp(-alpha r_A^2)   (unnormalised),
 * each given as centre A(3) in bohr, exponent alpha in bohr^-2 and the exponent
 * triple lmn(3); results in atomic units (hartree, bohr).  The one-electron
 * matrix builder CALCMTRX takes the basis as MAKEBASIS lays it out and returns
 * the matrices in the host's units (eV, angstrom).  docs/one-electron.md. */
#ifndef NORVIK_INTEGRALS_ONE_H
#define NORVIK_INTEGRALS_ONE_H

#include "norvik/export.h"

NORVIK_EXTERN_C_BEGIN

/* ---- primitive pairs: (A, alpha, lmnA) then (B, beta, lmnB), one double out ---- */
#define NORVIK_PRIMITIVE_PAIR_ARGS                                               \
  const double *A, const double *alpha, const norvik_int *lmnA, const double *B, \
      const double *beta, const norvik_int *lmnB

/* <a|b>.  A(3), B(3) bohr; alpha, beta exponents; lmnA(3), lmnB(3); S out. */
NORVIK_API void OVERLAPINT(NORVIK_PRIMITIVE_PAIR_ARGS, double* S);
/* <a| -1/2 nabla^2 |b> in hartree; T out. */
NORVIK_API void KINEENEINT(NORVIK_PRIMITIVE_PAIR_ARGS, double* T);
/* <a| 1/r_C |b> in hartree per unit charge (positive; the caller applies -Z);
 * C(3) bohr; V out. */
NORVIK_API void NUCLATTINT(NORVIK_PRIMITIVE_PAIR_ARGS, const double* C, double* V);
/* The same with the caller's Boys table F(0 ... Ltot), Ltot = sum of the six
 * exponents, for T = gamma |P - C|^2 (as MAKEFNUTB makes it); V out. */
NORVIK_API void NUCLATTINT_FAST(NORVIK_PRIMITIVE_PAIR_ARGS, const double* C, const double* F,
                                double* V);

/* Moment integrals, all (A, alpha, lmnA, B, beta, lmnB, out), in bohr^k:
 * XBINT = B_x <a|b>; XMXBINT = <a|x - B_x|b>; XMXB2INT = <a|(x - B_x)^2|b>;
 * XMXBYMYBINT = <a|(x - B_x)(y - B_y)|b>; XINT = <a|x|b>; XXINT = <a|x^2|b>;
 * XYINT = <a|xy|b>; R2INT = <a|r^2|b>; likewise for y and z. */
NORVIK_API void XBINT(NORVIK_PRIMITIVE_PAIR_ARGS, double* out);
NORVIK_API void YBINT(NORVIK_PRIMITIVE_PAIR_ARGS, double* out);
NORVIK_API void ZBINT(NORVIK_PRIMITIVE_PAIR_ARGS, double* out);
NORVIK_API void XMXBINT(NORVIK_PRIMITIVE_PAIR_ARGS, double* out);
NORVIK_API void YMYBINT(NORVIK_PRIMITIVE_PAIR_ARGS, double* out);
NORVIK_API void ZMZBINT(NORVIK_PRIMITIVE_PAIR_ARGS, double* out);
NORVIK_API void XMXB2INT(NORVIK_PRIMITIVE_PAIR_ARGS, double* out);
NORVIK_API void YMYB2INT(NORVIK_PRIMITIVE_PAIR_ARGS, double* out);
NORVIK_API void ZMZB2INT(NORVIK_PRIMITIVE_PAIR_ARGS, double* out);
NORVIK_API void XMXBYMYBINT(NORVIK_PRIMITIVE_PAIR_ARGS, double* out);
NORVIK_API void XMXBZMZBINT(NORVIK_PRIMITIVE_PAIR_ARGS, double* out);
NORVIK_API void YMYBZMZBINT(NORVIK_PRIMITIVE_PAIR_ARGS, double* out);
NORVIK_API void XINT(NORVIK_PRIMITIVE_PAIR_ARGS, double* out);
NORVIK_API void YINT(NORVIK_PRIMITIVE_PAIR_ARGS, double* out);
NORVIK_API void ZINT(NORVIK_PRIMITIVE_PAIR_ARGS, double* out);
NORVIK_API void XXINT(NORVIK_PRIMITIVE_PAIR_ARGS, double* out);
NORVIK_API void YYINT(NORVIK_PRIMITIVE_PAIR_ARGS, double* out);
NORVIK_API void ZZINT(NORVIK_PRIMITIVE_PAIR_ARGS, double* out);
NORVIK_API void XYINT(NORVIK_PRIMITIVE_PAIR_ARGS, double* out);
NORVIK_API void XZINT(NORVIK_PRIMITIVE_PAIR_ARGS, double* out);
NORVIK_API void YZINT(NORVIK_PRIMITIVE_PAIR_ARGS, double* out);
NORVIK_API void R2INT(NORVIK_PRIMITIVE_PAIR_ARGS, double* out);

/* ---- the tables the formulas share ---- */

/* Boys table F_nu(T) = int_0^1 t^(2nu) exp(-T t^2) dt: T in; numax in (at most
 * 15); F(16) out, entries beyond numax zero. */
NORVIK_API void MAKEFNUTB(const double* T, const norvik_int* numax, double* F);
/* Per-axis A-factor table: l1, l2 exponents on that axis (l1 + l2 <= 8); PA, PB,
 * PC the axis components of P - A, P - B, P - C (bohr); gamma = alpha + beta;
 * G(9) out, G(nu) for nu = 0 ... l1 + l2, the rest zero. */
NORVIK_API void MAKEGITB(const norvik_int* l1, const norvik_int* l2, const double* PA,
                         const double* PB, const double* gamma, const double* PC, double* G);
/* Combined A-factor table over the three axes: lmnA(3), lmnB(3) (Ltot <= 8),
 * PA(3), PB(3), gamma, PC(3); G(9) out. */
NORVIK_API void MAKEGGGNUTB(const norvik_int* lmnA, const norvik_int* lmnB, const double* PA,
                            const double* PB, const double* gamma, const double* PC, double* G);
/* f_j(l1, l2, a, b) = sum_k C(l1,k) C(l2,j-k) a^(l1-k) b^(l2-j+k). */
NORVIK_API double FJ(const norvik_int* j, const norvik_int* l1, const norvik_int* l2,
                     const double* a, const double* b);
/* One A-factor A_iru for the axis data (l1, l2, PA, PB, gamma, PC). */
NORVIK_API double GIRU(const norvik_int* i, const norvik_int* r, const norvik_int* u,
                       const norvik_int* l1, const norvik_int* l2, const double* PA,
                       const double* PB, const double* gamma, const double* PC);
/* x^n by repeated multiplication; 1 for n < 1. */
NORVIK_API double POWERFUNC(const double* x, const norvik_int* n);

/* ---- normalised primitive solid-harmonic Gaussians at a point ---- */

/* Value of the normalised primitive (l, m) with exponent alpha on centre A(3)
 * at point(3) (bohr); 0 beyond alpha R^2 > 100.  (l, m): l = 0 ... 3 with
 * m = -l ... l, and (2, 10), (3, 10), (3, 11), (3, 12). */
NORVIK_API double PGF(const norvik_int* l, const norvik_int* m, const double* alpha,
                      const double* A, const double* point);
/* Its gradient with respect to point: grad(3) out (bohr^-1 times the value's
 * unit); same (l, m) and cut-off as PGF. */
NORVIK_API void PGFGRAD(const norvik_int* l, const norvik_int* m, const double* alpha,
                        const double* A, const double* point, double* grad);
/* One routine per (l, m), each (alpha, A(3), point(3), grad(3) out). */
#define NORVIK_PGFGRAD_ARGS const double *alpha, const double *A, const double *point, double *grad
NORVIK_API void PGFGRAD_00(NORVIK_PGFGRAD_ARGS);
NORVIK_API void PGFGRAD_1M1(NORVIK_PGFGRAD_ARGS);
NORVIK_API void PGFGRAD_1Z0(NORVIK_PGFGRAD_ARGS);
NORVIK_API void PGFGRAD_1P1(NORVIK_PGFGRAD_ARGS);
NORVIK_API void PGFGRAD_2M2(NORVIK_PGFGRAD_ARGS);
NORVIK_API void PGFGRAD_2M1(NORVIK_PGFGRAD_ARGS);
NORVIK_API void PGFGRAD_2Z0(NORVIK_PGFGRAD_ARGS);
NORVIK_API void PGFGRAD_2P1(NORVIK_PGFGRAD_ARGS);
NORVIK_API void PGFGRAD_2P2(NORVIK_PGFGRAD_ARGS);
NORVIK_API void PGFGRAD_2PX(NORVIK_PGFGRAD_ARGS);
NORVIK_API void PGFGRAD_3M3(NORVIK_PGFGRAD_ARGS);
NORVIK_API void PGFGRAD_3M2(NORVIK_PGFGRAD_ARGS);
NORVIK_API void PGFGRAD_3M1(NORVIK_PGFGRAD_ARGS);
NORVIK_API void PGFGRAD_3Z0(NORVIK_PGFGRAD_ARGS);
NORVIK_API void PGFGRAD_3P1(NORVIK_PGFGRAD_ARGS);
NORVIK_API void PGFGRAD_3P2(NORVIK_PGFGRAD_ARGS);
NORVIK_API void PGFGRAD_3P3(NORVIK_PGFGRAD_ARGS);

/* ---- one-electron matrices of a geometry ---- */

/* Builds S, T, V and the dipole integrals over the contracted basis.
 *  nShellTotal   in   number of shells
 *  ShellKind     in   (nShellTotal) kinds as MAKEBASIS returns them
 *  ShellLM       in   (2, 7, nShellTotal)
 *  ShellNPrim    in   (nShellTotal)
 *  ShellNTerm    in   (7, nShellTotal)
 *  ShellLMN      in   (3, 3, 7, nShellTotal)
 *  ShellTermCoef in   (3, 7, nShellTotal)
 *  ShellExp      in   (6, nShellTotal) exponents, bohr^-2 (already scaled)
 *  ShellCoef     in   (6, 7, nShellTotal) contraction coefficients
 *  ShellAtom     in   (nShellTotal) 1-based index of the atom carrying each shell
 *  nAtom         in   number of atoms
 *  Coord         in   (3, nAtom) atom positions, angstrom
 *  Charge        in   (nAtom) nuclear charges (0 for a ghost atom)
 *  nBasis        in   number of basis functions (the sum of the kinds)
 *  S             out  (nBasis, nBasis) overlap
 *  T             out  (nBasis, nBasis) kinetic energy, eV
 *  V             out  (nBasis, nBasis) nuclear attraction -sum_C Z_C <a|1/r_C|b>, eV
 *  Dip           out  (nBasis, nBasis, 3) <a|x|b>, <a|y|b>, <a|z|b> about the
 *                     origin of Coord, angstrom (the electronic dipole in e.A is
 *                     -sum_ab P_ab Dip_ab) */
NORVIK_API void CALCMTRX(const norvik_int* nShellTotal, const norvik_int* ShellKind,
                         const norvik_int* ShellLM, const norvik_int* ShellNPrim,
                         const norvik_int* ShellNTerm, const norvik_int* ShellLMN,
                         const double* ShellTermCoef, const double* ShellExp,
                         const double* ShellCoef, const norvik_int* ShellAtom,
                         const norvik_int* nAtom, const double* Coord, const double* Charge,
                         const norvik_int* nBasis, double* S, double* T, double* V, double* Dip);

NORVIK_EXTERN_C_END

#endif
