/* norvik: exported routines of the exchange–correlation terms on the grid (see
 * norvik.h for the convention; docs/xc.md for the layouts and the blocking).
 *
 * Column-major throughout; npts grid points, nbasis basis functions.
 *   points  (3, npts) Å, as GRID_MOLE returns them; w (npts) their weights;
 *   chi     (4, npts, nbasis): value and x, y, z derivatives of every basis
 *           function at every point [Å^-3/2, Å^-5/2];
 *   P       (nbasis, nbasis, 2) alpha then beta density matrices, symmetric;
 *   rho     (8, npts): ρα, ρβ [Å^-3], ∇ρα, ∇ρβ [Å^-4] of every point (the point
 *           record of the functionals);
 *   V       (nbasis, nbasis, 2) alpha then beta exchange–correlation matrices [eV];
 *   functional names are 10-character blank-padded texts (the table of
 *           functionals.h and docs/functionals.md).
 * Every sum over points runs in a fixed order: the results are the same bits on
 * any thread count. */
#ifndef NORVIK_XC_H
#define NORVIK_XC_H

#include "norvik/export.h"

NORVIK_EXTERN_C_BEGIN

/* A point routine of the functionals: point(8), a in; out (3 energies, 5
 * potential derivatives or 3 kernel components): E_XC_*, V_XC_*, F_XC_*. */
typedef void (*norvik_xc_point_routine)(const double* point, const double* a, double* out);

/* The basis functions on the points, once per geometry: nbasis (in, the table's
 * function count, which must equal the shells'); nshell, shelltab (in, the shell
 * table of PACKSHELLS, centres in bohr); npts, points (in); chi (out).
 * A count that differs stops with "Wrong nbasis in list_basis." and both. */
NORVIK_API void LIST_BASIS(const norvik_int* nbasis, const norvik_int* nshell,
                           const double* shelltab, const norvik_int* npts, const double* points,
                           double* chi);
/* The densities and their gradients on the points: nbasis; P; npts; chi (in); rho (out). */
NORVIK_API void LIST_DENSITY(const norvik_int* nbasis, const double* P, const norvik_int* npts,
                             const double* chi, double* rho);
/* The electrons the grid sees: npts; w; rho (in); n (out, 3: Nα, Nβ, Nα + Nβ). */
NORVIK_API void INTG_DENSITY(const norvik_int* npts, const double* w, const double* rho, double* n);

/* The arguments of the exchange–correlation matrix after the functional: a (the
 * exact-exchange fraction); npts; w; chi; rho (in); V (out).  Arguments 2–4 carry
 * the basis description that the Kohn–Sham drivers pass along (nshell, shelltab
 * and the points); the matrix is formed from chi and they are not read. */
#define NORVIK_XC_MATRIX_ARGS(FUNCTIONAL)                                                         \
  const norvik_int *nbasis, const norvik_int *nshell, const double *shelltab,                     \
      const double *points, FUNCTIONAL, const double *a, const norvik_int *npts, const double *w, \
      const double *chi, const double *rho, double *V
/* The matrix of a named functional; an unknown name stops with
 * " Wrong DFname in calcvXchCorr." and the list of names. */
NORVIK_API void CALCVXCHCORR(NORVIK_XC_MATRIX_ARGS(const char* functional));
/* The matrix with the point routine given (a V_XC_* routine). */
NORVIK_API void CALCVXCHCORR_SUB(NORVIK_XC_MATRIX_ARGS(norvik_xc_point_routine vxc));

/* The exchange–correlation energy: functional (or the E_XC_* routine); a; npts; w;
 * rho (in); exc (out, 3: total, exchange, correlation [eV]).  An unknown name stops
 * with " Wrong DFname in EnegyExc." and the list of names. */
NORVIK_API void ENERGYEXC(const char* functional, const double* a, const norvik_int* npts,
                          const double* w, const double* rho, double* exc);
NORVIK_API void ENERGYEXC_SUB(norvik_xc_point_routine exc_routine, const double* a,
                              const norvik_int* npts, const double* w, const double* rho,
                              double* exc);

/* The kernel table of a local functional: npts; a; functional (or the F_XC_*
 * routine); rho (in); fxc (out, (3, npts): fαα, fββ, fαβ [eV·Å³]).  Only the
 * SVWN5 and SVWN3 groups have kernels; any other name stops with
 * " Wrong theory name in makeFxcTb.". */
NORVIK_API void MAKEFXCTB(const norvik_int* npts, const double* a, const char* functional,
                          const double* rho, double* fxc);
NORVIK_API void MAKEFXCTB_SUB(const norvik_int* npts, const double* a,
                              norvik_xc_point_routine fxc_routine, const double* rho, double* fxc);

/* The response matrix of a local kernel: V1σ_μν = Σ_p w_p Σ_τ fστ(p) ρ1τ(p) χμ(p)χν(p)
 * (the exchange–correlation part of the linear-response products of an LDA
 * point).  nbasis; npts; w; chi (in, as for CALCVXCHCORR); fxc (in, (3, npts),
 * the table of MAKEFXCTB at the ground density); rho1 (in, (8, npts): the
 * perturbed density on the points, as LIST_DENSITY gives it for a perturbed
 * density matrix; only ρ1α and ρ1β are read); V (out, (nbasis, nbasis, 2), eV). */
NORVIK_API void CONSTRUCTVXC(const norvik_int* nbasis, const norvik_int* npts, const double* w,
                             const double* chi, const double* fxc, const double* rho1, double* V);

NORVIK_EXTERN_C_END

#endif
