/* norvik: exported routines and tables of the Rys two-electron route
 * (see norvik.h for the calling convention).
 *
 * Shells and blocks, shared with INT2ELEC and INT2PHMD:
 * - angular momentum L = 0 (s) ... 6 (i); a shell has (L+1)(L+2)/2 Cartesian
 *   components ordered by descending power of x, then descending power of y:
 *   s; x y z; xx xy xz yy yz zz; xxx xxy xxz xyy xyz xzz yyy yyz yzz zzz; ...
 * - a component is the unnormalised primitive x^l y^m z^n exp(-alpha r^2) about
 *   the shell's centre; all components of a shell share its contraction
 *   coefficients, which already include the primitive normalisation;
 * - the result block ERI(ia, ib, ic, id) holds (ab|cd) in hartree, column-major
 *   with leading dimension maxdim in every index, ia the 0-based component of
 *   shell a: offset ia + maxdim*(ib + maxdim*(ic + maxdim*id));
 * - a primitive pair (alpha, beta) of one side is skipped when
 *   alpha*beta*|AB|^2 > cutoff*(alpha + beta). */
#ifndef NORVIK_INTEGRALS_RYS_H
#define NORVIK_INTEGRALS_RYS_H

#include "norvik/export.h"

NORVIK_EXTERN_C_BEGIN

/* Rys roots and weights of order n for the argument X:
 *   integral_0^1 f(t^2) exp(-X t^2) dt = sum_i w(i) f(t2(i)) for f a polynomial of
 *   degree < 2n.
 * X   in, the argument rho*|PQ|^2 (X >= 0);
 * t2  out, n doubles: the squared roots t_i^2, ascending;
 * w   out, n doubles: the weights;
 * n   in, 1 ... 13 (n > 13 prints "Subroutine rysroot supports up to nroots=13"
 *     and stops). */
NORVIK_API void RYSQUAD(const double* X, double* t2, double* w, const norvik_int* n);

/* One block of electron-repulsion integrals (ab|cd) by Rys quadrature.
 * ERI     out, maxdim^4 doubles, layout above; cleared, then the components of
 *         the four shells filled;
 * exps    in, (mxprsh, 4) column-major: column k the exponents of shell k (bohr^-2);
 * coefs   in, (mxprsh, 4): contraction coefficients times primitive normalisation;
 * centres in, (3, 4): shell centres in bohr;
 * nprim   in, 4 integers: primitives of each shell (1 ... mxprsh);
 * L       in, 4 integers: angular momentum of each shell (0 ... 6);
 * work    in, 4 integers passed through by INT2ELEC; not read;
 * maxdim  in, leading dimension of ERI in every index, at most 28 and at least
 *         the component count of every shell;
 * mxprsh  in, leading dimension of exps and coefs, at most 30;
 * cutoff  in, primitive-pair screening bound (30.0 from the SCF driver).
 * mxprsh > 30 prints " Error! Parameter mxprsh2 in int2rys is small!" and stops;
 * maxdim > 28 prints " Error! Parameter maxdim2 in int2rys is small!" and stops. */
NORVIK_API void INT2RYS(double* ERI, const double* exps, const double* coefs, const double* centres,
                        const norvik_int* nprim, const norvik_int* L, const norvik_int* work,
                        const norvik_int* maxdim, const norvik_int* mxprsh, const double* cutoff);

/* The work routine of INT2RYS with the caller's scratch, for hosts that call it
 * for many quartets: the ten arguments of INT2RYS, then
 * scratch  work, lscratch doubles, contents undefined on return;
 * lscratch in, its length.  lscratch = -1 is a size query: nothing is computed
 *          and scratch(1) receives the length needed for these shells (a whole
 *          number, as a double).  A positive lscratch below that length prints
 *          " Error! Work array of int2rys2 is small." and stops.
 * Same results as INT2RYS, bit for bit. */
NORVIK_API void INT2RYS2(double* ERI, const double* exps, const double* coefs,
                         const double* centres, const norvik_int* nprim, const norvik_int* L,
                         const norvik_int* work, const norvik_int* maxdim, const norvik_int* mxprsh,
                         const double* cutoff, double* scratch, const norvik_int* lscratch);

/* Interpolation tables of the Rys roots (RYSGRIDn_MP_tn) and weights
 * (RYSGRIDn_MP_wn) for n roots: (segments, n, coefficients) doubles, the
 * coefficients of one root or weight on one segment from the highest power of
 * (X - segment origin) down; docs/rys.md lists the segments. */
NORVIK_API extern const double RYSGRID1_MP_t1[180];
NORVIK_API extern const double RYSGRID1_MP_w1[180];
NORVIK_API extern const double RYSGRID2_MP_t2[420];
NORVIK_API extern const double RYSGRID2_MP_w2[420];
NORVIK_API extern const double RYSGRID3_MP_t3[720];
NORVIK_API extern const double RYSGRID3_MP_w3[720];
NORVIK_API extern const double RYSGRID4_MP_t4[1080];
NORVIK_API extern const double RYSGRID4_MP_w4[1080];
NORVIK_API extern const double RYSGRID5_MP_t5[1425];
NORVIK_API extern const double RYSGRID5_MP_w5[1425];
NORVIK_API extern const double RYSGRID6_MP_t6[1404];
NORVIK_API extern const double RYSGRID6_MP_w6[1404];
NORVIK_API extern const double RYSGRID7_MP_t7[1764];
NORVIK_API extern const double RYSGRID7_MP_w7[1764];
NORVIK_API extern const double RYSGRID8_MP_t8[1728];
NORVIK_API extern const double RYSGRID8_MP_w8[1728];
NORVIK_API extern const double RYSGRID9_MP_t9[1944];
NORVIK_API extern const double RYSGRID9_MP_w9[1944];
NORVIK_API extern const double RYSGRID10_MP_t10[2340];
NORVIK_API extern const double RYSGRID10_MP_w10[2340];
NORVIK_API extern const double RYSGRID11_MP_t11[2772];
NORVIK_API extern const double RYSGRID11_MP_w11[2772];
NORVIK_API extern const double RYSGRID12_MP_t12[3240];
NORVIK_API extern const double RYSGRID12_MP_w12[3240];
NORVIK_API extern const double RYSGRID13_MP_t13[3744];
NORVIK_API extern const double RYSGRID13_MP_w13[3744];

NORVIK_EXTERN_C_END

#endif
