/* norvik: exported routines of the two-electron integrals, the integral store and
 * the Fock builds (see norvik.h for the calling convention; docs/integrals.md
 * settles every argument list and the store layout).
 *
 * Block routines.  INT2ELEC, INT2PHMD and the class kernels INT2SSSS ... INT2DDDD
 * take the same ten arguments:
 *   eri      out  ERI(ia, ib, ic, id), maxdim⁴ doubles, column-major, hartree
 *   expo     in   exponents, (mxprsh, 4), one column per shell
 *   coef     in   contraction coefficients times the primitive normalisation, (mxprsh, 4)
 *   centre   in   shell centres, (3, 4), bohr
 *   nprim    in   4 primitive counts
 *   lqn      in   4 angular momenta
 *   work     in   4 integers, not used (kept for the calling form)
 *   maxdim   in   leading dimension of every index of eri
 *   mxprsh   in   leading dimension of expo and coef (at most 30)
 *   cutoff   in   primitive pairs with αβ|AB|² > cutoff·(α+β) are skipped (30.0)
 * Cartesian components of a shell of angular momentum L are ordered x^l y^m z^n
 * with l from L down to 0, then m from L−l down to 0: s; x y z; xx xy xz yy yz zz.
 *
 * The two-electron context.  The routines from CALCVINT on take nbasis and then
 * the ten context arguments that the SCF drivers pass through unchanged:
 *   nshell   in   number of shells
 *   shelltab in   (160, nshell) doubles from PACKSHELLS (shells, centres in bohr;
 *                 NORVIK_SHELL_RECORD and the slots in norvik/common.h)
 *   nshpair  in   number of kept shell pairs
 *   shpair   in   (2, nshpair) kept shell pairs (a, b), a ≥ b, 1-based
 *   npair    in   number of kept basis-function pairs
 *   pairlist in   (2, npair) kept basis pairs (i, j), i ≥ j, 1-based
 *   pairmap  in   nbasis(nbasis+1)/2 compact index (1-based) of the pair (i, j),
 *                 i ≥ j, at i(i−1)/2 + j; 0 for a dropped pair
 *   vdiag    in   nbasis(nbasis+1)/2 diagonal integrals (ij|ij), hartree, same packing
 *   vint     in   npair(npair+1)/2 stored integrals (P|Q) = (ij|kl), hartree, at
 *                 P(P−1)/2 + Q for compact indices P ≥ Q (out of CALCVINT;
 *                 one element is enough in integral-direct runs)
 *   thresh   in   integral-direct screening threshold, eV (0: no screening)
 * Densities rho are the alpha/beta pair, (nbasis, nbasis, 2) column-major,
 * symmetric; Fock outputs have the same layout and hold the two-electron part in
 * eV, J[Pα+Pβ] − a·K[Pσ] for spin σ. */
#ifndef NORVIK_INTEGRALS_TWO_H
#define NORVIK_INTEGRALS_TWO_H

#include "norvik/common.h"
#include "norvik/export.h"

NORVIK_EXTERN_C_BEGIN

#define NORVIK_ERI_BLOCK_ARGS                                                                     \
  double *eri, const double *expo, const double *coef, const double *centre,                      \
      const norvik_int *nprim, const norvik_int *lqn, norvik_int *work, const norvik_int *maxdim, \
      const norvik_int *mxprsh, const double *cutoff

/* One block (ab|cd): clears maxdim⁴ entries, then the closed-form route when every
 * L ≤ 2, the Rys route when every L ≤ 6; beyond that it prints
 * " Error! Subroutine int2elec supports up to g function." and returns the zero block. */
NORVIK_API void INT2ELEC(NORVIK_ERI_BLOCK_ARGS);
/* Closed-form route for L ≤ 2: writes the class's entries (others untouched); stops
 * with " Error! Parameter mxprsh2 in int2phmd is small!" when mxprsh > 30. */
NORVIK_API void INT2PHMD(NORVIK_ERI_BLOCK_ARGS);
/* Class kernels: as INT2PHMD for a quartet whose shells, in any order, form the
 * named class (S, P, D per shell); another class stops the run with
 * " Error! Shell class does not match INT2xxxx".  The companions INT2PPPP2,
 * INT2DPDP1, INT2DDDP1, INT2DDDD1, INT2DDDD2 and INT2DDDD3 evaluate the class of
 * their main kernel. */
NORVIK_API void INT2SSSS(NORVIK_ERI_BLOCK_ARGS);
NORVIK_API void INT2PSSS(NORVIK_ERI_BLOCK_ARGS);
NORVIK_API void INT2PPSS(NORVIK_ERI_BLOCK_ARGS);
NORVIK_API void INT2PSPS(NORVIK_ERI_BLOCK_ARGS);
NORVIK_API void INT2PPPS(NORVIK_ERI_BLOCK_ARGS);
NORVIK_API void INT2PPPP(NORVIK_ERI_BLOCK_ARGS);
NORVIK_API void INT2PPPP2(NORVIK_ERI_BLOCK_ARGS);
NORVIK_API void INT2DSSS(NORVIK_ERI_BLOCK_ARGS);
NORVIK_API void INT2DPSS(NORVIK_ERI_BLOCK_ARGS);
NORVIK_API void INT2DSPS(NORVIK_ERI_BLOCK_ARGS);
NORVIK_API void INT2DDSS(NORVIK_ERI_BLOCK_ARGS);
NORVIK_API void INT2DPPS(NORVIK_ERI_BLOCK_ARGS);
NORVIK_API void INT2DSDS(NORVIK_ERI_BLOCK_ARGS);
NORVIK_API void INT2DSPP(NORVIK_ERI_BLOCK_ARGS);
NORVIK_API void INT2DDPS(NORVIK_ERI_BLOCK_ARGS);
NORVIK_API void INT2DPDS(NORVIK_ERI_BLOCK_ARGS);
NORVIK_API void INT2DPPP(NORVIK_ERI_BLOCK_ARGS);
NORVIK_API void INT2DDDS(NORVIK_ERI_BLOCK_ARGS);
NORVIK_API void INT2DDPP(NORVIK_ERI_BLOCK_ARGS);
NORVIK_API void INT2DPDP(NORVIK_ERI_BLOCK_ARGS);
NORVIK_API void INT2DPDP1(NORVIK_ERI_BLOCK_ARGS);
NORVIK_API void INT2DDDP(NORVIK_ERI_BLOCK_ARGS);
NORVIK_API void INT2DDDP1(NORVIK_ERI_BLOCK_ARGS);
NORVIK_API void INT2DDDD(NORVIK_ERI_BLOCK_ARGS);
NORVIK_API void INT2DDDD1(NORVIK_ERI_BLOCK_ARGS);
NORVIK_API void INT2DDDD2(NORVIK_ERI_BLOCK_ARGS);
NORVIK_API void INT2DDDD3(NORVIK_ERI_BLOCK_ARGS);

/* Packs MAKEBASIS's shell description and the atom positions into the shell table.
 *   natom (in); position (in, (3, natom), ångström); nshellatom (in, (natom): shells
 *   of each atom, atom 1's first); nshell (in) and the MAKEBASIS outputs kind (nshell),
 *   lm (2, 7, nshell), nprim (nshell), nterm (7, nshell), lmn (3, 3, 7, nshell),
 *   termcoef (3, 7, nshell), expo (6, nshell), coef (6, 7, nshell);
 *   shelltab (out, (160, nshell)). */
NORVIK_API void PACKSHELLS(const norvik_int* natom, const double* position,
                           const norvik_int* nshellatom, const norvik_int* nshell,
                           const norvik_int* kind, const norvik_int* lm, const norvik_int* nprim,
                           const norvik_int* nterm, const norvik_int* lmn, const double* termcoef,
                           const double* expo, const double* coef, double* shelltab);

/* Kept shell pairs: those with a primitive pair within the pair cutoff 30.
 *   nshell, shelltab (in); nshpair (out); shpair (out, (2, nshell(nshell+1)/2) room,
 *   the first nshpair columns filled: (a, b), a ≥ b, 1-based). */
NORVIK_API void REMOVE_SH_PAIR(const norvik_int* nshell, const double* shelltab,
                               norvik_int* nshpair, norvik_int* shpair);

/* Kept basis-function pairs: computes the diagonal table over the kept shell pairs
 * and keeps (i, j) when sqrt((ij|ij))·max sqrt((kl|kl)) ≥ 1e-12 hartree.
 *   nbasis, nshell, shelltab, nshpair, shpair (in); npair (out); pairlist (out,
 *   (2, nbasis(nbasis+1)/2) room); pairmap (out, nbasis(nbasis+1)/2); vdiag (out,
 *   nbasis(nbasis+1)/2, hartree).  The store then takes npair(npair+1)/2 doubles. */
NORVIK_API void REMOVE_BA_PAIR(const norvik_int* nbasis, const norvik_int* nshell,
                               const double* shelltab, const norvik_int* nshpair,
                               const norvik_int* shpair, norvik_int* npair, norvik_int* pairlist,
                               norvik_int* pairmap, double* vdiag);

/* The diagonal table (ij|ij) alone (integral-direct runs): arguments as
 * REMOVE_BA_PAIR without npair, pairlist and pairmap. */
NORVIK_API void CALCVJDG(const norvik_int* nbasis, const norvik_int* nshell, const double* shelltab,
                         const norvik_int* nshpair, const norvik_int* shpair, double* vdiag);

#define NORVIK_CONTEXT_ARGS                                                          \
  const norvik_int *nshell, const double *shelltab, const norvik_int *nshpair,       \
      const norvik_int *shpair, const norvik_int *npair, const norvik_int *pairlist, \
      const norvik_int *pairmap, const double *vdiag, double *vint, const double *thresh

/* Fills the store vint (out, npair(npair+1)/2) with every distinct (ij|kl) over the
 * kept pairs, computing every quartet of kept shell pairs whose Schwarz bound reaches
 * 1e-14 hartree (the others are left zero). */
NORVIK_API void CALCVINT(const norvik_int* nbasis, NORVIK_CONTEXT_ARGS);
/* One shell quartet: ishell (in, 4 shells, 1-based); block (out, (7, 7, 7, 7)
 * column-major over the shells' basis functions, hartree; zero beyond each kind). */
NORVIK_API void CALCVINT_SUB(const norvik_int* nshell, const double* shelltab,
                             const norvik_int* ishell, double* block);
/* Writes a CALCVINT_SUB block into the store: every entry whose two basis pairs are kept. */
NORVIK_API void SHIFTVPART(const norvik_int* nbasis, NORVIK_CONTEXT_ARGS, const norvik_int* ishell,
                           const double* block);

/* Fock build from the store: a (in, exact-exchange weight; exactly 0 hands over to
 * CALCVHARTREE); rho (in, (nbasis, nbasis, 2)); fock (out, (nbasis, nbasis, 2), eV). */
NORVIK_API void CALCVDRCTXCH(const norvik_int* nbasis, NORVIK_CONTEXT_ARGS, const double* a,
                             const double* rho, double* fock);
/* Coulomb part J[Pα+Pβ] alone from the store, the same for both spins. */
NORVIK_API void CALCVHARTREE(const norvik_int* nbasis, NORVIK_CONTEXT_ARGS, const double* rho,
                             double* fock);
/* Integral-direct incremental build: fock (in-out) += G[rho − rhoprev], then
 * rhoprev (in-out) = rho.  With rhoprev and fock zero this is a full build.  Shell
 * quartets are screened with SCREENING when thresh > 0.  a = 0 hands over to
 * UPDATEHARTREE. */
NORVIK_API void UPDATEDRCTXCH(const norvik_int* nbasis, NORVIK_CONTEXT_ARGS, const double* a,
                              const double* rho, double* rhoprev, double* fock);
/* The integral-direct Coulomb-only build (same arguments without a). */
NORVIK_API void UPDATEHARTREE(const norvik_int* nbasis, NORVIK_CONTEXT_ARGS, const double* rho,
                              double* rhoprev, double* fock);
/* Whether a shell quartet must be recomputed: ishell (in, 4 shells, 1-based); drho
 * (in, (nbasis, nbasis, 2) density change); flag (out, 1 when some function quartet
 * has sqrt((ij|ij)(kl|kl))·ΔD·27.2113850785 > thresh, ΔD the largest |ΔPα|+|ΔPβ|
 * over ij, kl, ik, il, jk, jl; else 0). */
NORVIK_API void SCREENING(const norvik_int* nbasis, NORVIK_CONTEXT_ARGS, const norvik_int* ishell,
                          const double* drho, norvik_int* flag);

NORVIK_EXTERN_C_END

#endif
