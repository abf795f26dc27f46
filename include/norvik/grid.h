/* norvik: exported routines of the molecular integration grid (see norvik.h
 * for the convention; docs/grid.md for the layouts and the base radius).
 *
 * Atoms are numbered from 1; Z is the atomic number, 1 … 54.  Positions are
 * (3, natom) in ångström, x, y, z of each atom contiguous; grid points (3, n)
 * likewise.  A template is the grid of one element around the origin: 50
 * Euler–Maclaurin shells times a Lebedev rule per shell, the shells in
 * increasing radius, the points of a shell in the order of their rule. */
#ifndef NORVIK_GRID_H
#define NORVIK_GRID_H

#include "norvik/export.h"

NORVIK_EXTERN_C_BEGIN

/* Points of the template of element Z: n (out) = 3720 (H, He), 3816 (Li–Ne),
 * 3760 (Na–Ar), 5476 (K–Kr), 9700 (Rb–Xe).  Z outside 1 … 54 stops with
 * "ZiAt exceed the limit in nsmpl_atom.". */
NORVIK_API void NSMPL_ATOM(const norvik_int* Z, norvik_int* n);
/* Sizes of a molecular grid: natoms; Z (natoms); npts (out, natoms: points of
 * each atom); offset (out, natoms: points before the atom's block, offset(1) =
 * 0); ntotal (out: all points). */
NORVIK_API void NSMPL_MOLE(const norvik_int* natoms, const norvik_int* Z, norvik_int* npts,
                           norvik_int* offset, norvik_int* ntotal);
/* The template of element Z for base radius R0 (Å; the radial scale is R0 times
 * the element's radius factor): nmax (capacity); points (out, (3, nmax));
 * weights (out, nmax).  Everything is zeroed first; points beyond the element's
 * count stay zero. */
NORVIK_API void GRID_PART(const norvik_int* Z, const double* R0, const norvik_int* nmax,
                          double* points, double* weights);
/* The template of element Z: n (the count of NSMPL_ATOM, passed along only); R0;
 * points (out, (3, n)); weights (out, n).  Z outside 1 … 54 stops with "ZiAt
 * exceed the limit in grid_atom.". */
NORVIK_API void GRID_ATOM(const norvik_int* Z, const norvik_int* n, const double* R0,
                          double* points, double* weights);
/* The template of one row for the scaled radius R: points (out, (3, N)), weights
 * (out, N), N the number in the name. */
NORVIK_API void GRID_ATMIC3720(const double* R, double* points, double* weights);
NORVIK_API void GRID_ATMIC3816(const double* R, double* points, double* weights);
NORVIK_API void GRID_ATMIC3760(const double* R, double* points, double* weights);
NORVIK_API void GRID_ATMIC5476(const double* R, double* points, double* weights);
NORVIK_API void GRID_ATMIC9700(const double* R, double* points, double* weights);
/* The molecular grid: natoms; coords ((3, natoms) Å); nkinds; kind (natoms,
 * 1-based template of each atom); nmax; tmplWeights ((nmax, nkinds));
 * tmplPoints ((3, nmax, nkinds)); npts, offset (natoms, from NSMPL_MOLE);
 * ntotal; points (out, (3, ntotal)); weights (out, ntotal).  Each atom's template
 * translated to the atom, each weight times the atom's Becke partition weight
 * at the point; atoms with no points are skipped. */
NORVIK_API void GRID_MOLE(const norvik_int* natoms, const double* coords, const norvik_int* nkinds,
                          const norvik_int* kind, const norvik_int* nmax, const double* tmplWeights,
                          const double* tmplPoints, const norvik_int* npts,
                          const norvik_int* offset, const norvik_int* ntotal, double* points,
                          double* weights);

/* The Becke partition (μ_AB = (|r − R_A| − |r − R_B|)/|R_A − R_B|, p(x) =
 * x(3 − x²)/2, f_k = p applied k times, s_k = (1 − f_k)/2, P_A = Π_{B≠A} s_3(μ_AB),
 * Z = Σ_B P_B) at the point r (3 reals, Å). */
/* Partition weight P_A(r)/Z(r) of atom A. */
NORVIK_API double FUZZY(const norvik_int* natoms, const double* coords, const norvik_int* A,
                        const double* r);
/* P_A(r). */
NORVIK_API double FUNCP(const norvik_int* natoms, const double* coords, const norvik_int* A,
                        const double* r);
/* Z(r). */
NORVIK_API double FUNCZ(const norvik_int* natoms, const double* coords, const double* r);
/* μ_AB(r). */
NORVIK_API double MUAB(const norvik_int* natoms, const double* coords, const norvik_int* A,
                       const norvik_int* B, const double* r);
/* p(x); f_k(μ); s_k(μ). */
NORVIK_API double PMU(const double* x);
NORVIK_API double FMU(const norvik_int* k, const double* mu);
NORVIK_API double SMU(const norvik_int* k, const double* mu);
/* result (out) = Σ values(k)·weights(k) over k = 1 … n, accumulated from 0 in
 * increasing k. */
NORVIK_API void INTEGMAIN(const norvik_int* n, const double* values, const double* weights,
                          double* result);

/* Derivatives with respect to nuclear positions [1/Å], at a fixed point r unless
 * said otherwise; g (out, 3). */
/* ∂μ_AB/∂R_A. */
NORVIK_API void GRADMU(const norvik_int* A, const norvik_int* natoms, const double* coords,
                       const norvik_int* B, const double* r, double* g);
/* ∂P_A/∂R_C. */
NORVIK_API void GRADAPA(const norvik_int* natoms, const double* coords, const norvik_int* A,
                        const norvik_int* C, const double* r, double* g);
/* ∂Z/∂R_C. */
NORVIK_API void GRADBPA(const norvik_int* natoms, const double* coords, const norvik_int* C,
                        const double* r, double* g);
/* ∂(P_A/Z)/∂R_C. */
NORVIK_API void GRADFUZZY(const norvik_int* natoms, const double* coords, const norvik_int* A,
                          const norvik_int* C, const double* r, double* g);
/* The partition weight of a grid point of atom A that moves with A (r = R_A + t):
 * grad (out, (3, natoms)), column C the derivative with respect to R_C, the motion
 * of r included in column A (the columns sum to zero).  The derivative of a grid
 * weight is the template weight times this. */
NORVIK_API void GRADWEIGHT(const norvik_int* natoms, const double* coords, const norvik_int* A,
                           const double* r, double* grad);

NORVIK_EXTERN_C_END

#endif
