/* norvik: exported routines of the basis subsystem (see norvik.h for the convention).
 *
 * The basis-set library turns a basis-set name and a list of atoms into the shell
 * list on which the integral, grid and SCF routines work.  The host calls ZATMNSHL
 * and ZATMZETA per atom to size its arrays, then MAKEBASIS once for the molecule.
 *
 * Basis-set names (20 characters, blank-padded, case-sensitive; x stands for the
 * asterisk of the published names, a trailing C counts each d shell as six
 * functions): "STO-3G", "3-21G", "3-21GC", "6-21G", "6-31G", "6-31GC", "6-31Gx",
 * "6-31GxC", "6-31Gxx", "6-31GxxC", and "6-31+G", "6-31++G" with the same four
 * endings.  Elements: STO-3G and 3-21G H-Xe (Z 1-54), 6-31G, 6-31G* and 6-31G**
 * H-Kr (1-36), 6-21G and the diffuse sets H-Ar (1-18).
 *
 * Shell kinds (= number of functions): 1 s; 3 p (y, z, x); 4 sp (s, y, z, x);
 * 5 d (m = -2 ... 2); 6 d and the companion (2, 10) = (x2 + y2 + z2)/sqrt(15);
 * 7 f (m = -3 ... 3).  Limits: 9 shells per atom, 7 functions per shell, 6
 * primitives per shell, 3 Cartesian terms per function, 7 scale factors per atom.
 *
 * Per-shell arrays, column-major, shell index last:
 *   lm(2, 7)        (L, M) of each of the 7 function slots
 *   nterm(7)        number of Cartesian terms (1 ... 3) of each slot
 *   lmn(3, 3, 7)    exponents (l, m, n) of each term of each slot
 *   termcoef(3, 7)  coefficient of each term of each slot
 *   exps(6)         exponents (1/bohr^2), scaled by zeta^2; zero beyond nprim
 *   coefs(6, 7)     contraction coefficient of each primitive for each slot (for
 *                   normalised primitives; the integral code normalises)
 * Slots beyond the shell's kind are zero.
 *
 * Failures (unknown name, element outside the set, element outside a group
 * routine's group) print their message on standard output and end the process
 * with exit status 1; docs/basis.md lists the texts.
 *
 * Exported data: the 6-31G-family arrays of module BASIS_631G, one double array
 * per element, shell and kind, exported as BASIS_631G_MP_b631g_<el>_<shell>_<ai|di>
 * (for example BASIS_631G_MP_b631g_h__1s_ai[3]); exponents unscaled.  docs/basis.md
 * lists them. */
#ifndef NORVIK_BASIS_H
#define NORVIK_BASIS_H

#include "norvik/export.h"

NORVIK_EXTERN_C_BEGIN

/* The argument lists of the per-atom routines: an entry point takes the basis-set
 * name first, then the list of its family routines. */
#define NORVIK_BASIS_LAYOUT_ARGS \
  const norvik_int *zatom, norvik_int *nshell, norvik_int *shellkind, norvik_int *nbasis
#define NORVIK_BASIS_ZETA_ARGS const norvik_int *zatom, double *zeta
#define NORVIK_BASIS_ANGULAR_ARGS                                                                \
  const norvik_int *zatom, norvik_int *lm, norvik_int *nterm, norvik_int *lmn, double *termcoef, \
      norvik_int *nprim
#define NORVIK_BASIS_RADIAL_ARGS \
  const norvik_int *zatom, const double *zeta, double *exps, double *coefs
/* The shared angular fills (LMLMN_...). */
#define NORVIK_LMLMN_ARGS norvik_int *lm, norvik_int *nterm, norvik_int *lmn, double *termcoef

/* ---- Entry points ------------------------------------------------------------ */

/* Shells of one atom.  basname: in, 20 characters.  zatom: in, atomic number.
 * nshell: out, number of shells.  shellkind: out, (9), kinds of the shells in
 * order, zero beyond nshell.  nbasis: out, number of basis functions (sum of the
 * kinds). */
NORVIK_API void ZATMNSHL(const char* basname, NORVIK_BASIS_LAYOUT_ARGS);

/* Exponent scale factors of one atom.  basname: in, 20 characters.  zatom: in.
 * zeta: out, (7): one factor per scale-factor slot; trailing slots zero.  For the
 * 6-31G family (core, inner valence, outer valence), for 3-21G and 6-21G the same
 * three slots, for STO-3G the molecular Slater exponent of each shell. */
NORVIK_API void ZATMZETA(const char* basname, NORVIK_BASIS_ZETA_ARGS);

/* The shells of a molecule.  basname: in, 20 characters.  natom: in.
 * zatom: in, (natom).  zeta: in, (7, natom), from ZATMZETA (or ZATMZETAISO_STO3G).
 * nshellatom: in, (natom), and shellkindatom: in, (9, natom), from ZATMNSHL.
 * nshelltotal: in, the dimension of the outputs (at least the sum of nshellatom;
 * shells beyond the sum are zeroed).  Outputs per shell s = 1 ... nshelltotal,
 * atom 1's shells first: shellkind(s); shelllm(2, 7, s); shellnprim(s);
 * shellnterm(7, s); shelllmn(3, 3, 7, s); shelltermcoef(3, 7, s); shellexp(6, s);
 * shellcoef(6, 7, s). */
NORVIK_API void MAKEBASIS(const char* basname, const norvik_int* natom, const norvik_int* zatom,
                          const double* zeta, const norvik_int* nshellatom,
                          const norvik_int* shellkindatom, const norvik_int* nshelltotal,
                          norvik_int* shellkind, norvik_int* shelllm, norvik_int* shellnprim,
                          norvik_int* shellnterm, norvik_int* shelllmn, double* shelltermcoef,
                          double* shellexp, double* shellcoef);

/* Angular part of one atom's shells.  basname: in, 20 characters.  zatom: in.
 * Outputs for the 9 shell slots of the atom (zero beyond its shells): lm(2, 7, 9),
 * nterm(7, 9), lmn(3, 3, 7, 9), termcoef(3, 7, 9), nprim(9) the primitive counts.
 * A d shell always gets its six slots (the companion last); MAKEBASIS keeps as
 * many as the kind says. */
NORVIK_API void MAKELMLMN(const char* basname, NORVIK_BASIS_ANGULAR_ARGS);

/* Exponents and contraction coefficients of one atom's shells.  basname: in,
 * 20 characters.  zatom: in.  zeta: in, (7), the atom's scale factors.
 * exps: out, (6, 9), exponents times zeta^2 of their shell's slot.
 * coefs: out, (6, 7, 9), the contraction coefficients of each function slot. */
NORVIK_API void MAKEKLMG(const char* basname, NORVIK_BASIS_RADIAL_ARGS);

/* ---- Family routines ------------------------------------------------------------
 * One set per family (suffix STO3G, 321G, 621G, 631G, 631GX, 631GXX, 631TG, 631TGX,
 * 631TGXX, 631TTG, 631TTGX, 631TTGXX; T stands for "+").  Arguments as for the
 * entry points without the name:
 *   ZATMNSHL_<f>(zatom, nshell, shellkind(9), nbasis), and ZATMNSHL_<f>C with six
 *     functions per d shell;
 *   ZATMZETA_<f>(zatom, zeta(7)); ZATMZETAISO_STO3G(zatom, zeta(7)) gives the
 *     isolated-atom Slater exponents for free-atom runs;
 *   MAKELMLMN_<f>(zatom, lm(2,7,9), nterm(7,9), lmn(3,3,7,9), termcoef(3,7,9),
 *     nprim(9));
 *   MAKEKLMG_<f>(zatom, zeta(7), exps(6,9), coefs(6,7,9)).
 * Each stops with "Zatom exceed limit in ..." for an element outside the family.
 * The element-group routines MAKELMLMN_<f>_<g> and MAKEKLMG_<f>_<g> (g = HHE,
 * LINE, NAAR, KCA, SCZN, GAKR, RBSR, YCD, INXE as far as the family reaches) take
 * the same arguments and stop with "Wrong Zatom in ..." outside their group. */

/* STO3G */
NORVIK_API void ZATMNSHL_STO3G(NORVIK_BASIS_LAYOUT_ARGS);
NORVIK_API void ZATMZETA_STO3G(NORVIK_BASIS_ZETA_ARGS);
NORVIK_API void ZATMZETAISO_STO3G(NORVIK_BASIS_ZETA_ARGS);
NORVIK_API void MAKELMLMN_STO3G(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKEKLMG_STO3G(NORVIK_BASIS_RADIAL_ARGS);

/* 321G */
NORVIK_API void ZATMNSHL_321G(NORVIK_BASIS_LAYOUT_ARGS);
NORVIK_API void ZATMNSHL_321GC(NORVIK_BASIS_LAYOUT_ARGS);
NORVIK_API void ZATMZETA_321G(NORVIK_BASIS_ZETA_ARGS);
NORVIK_API void MAKELMLMN_321G(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_321G_HHE(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_321G_LINE(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_321G_NAAR(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_321G_KCA(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_321G_SCZN(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_321G_GAKR(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_321G_RBSR(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_321G_YCD(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_321G_INXE(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKEKLMG_321G(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_321G_HHE(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_321G_LINE(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_321G_NAAR(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_321G_KCA(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_321G_SCZN(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_321G_GAKR(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_321G_RBSR(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_321G_YCD(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_321G_INXE(NORVIK_BASIS_RADIAL_ARGS);

/* 621G */
NORVIK_API void ZATMNSHL_621G(NORVIK_BASIS_LAYOUT_ARGS);
NORVIK_API void ZATMZETA_621G(NORVIK_BASIS_ZETA_ARGS);
NORVIK_API void MAKELMLMN_621G(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_621G_HHE(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_621G_LINE(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_621G_NAAR(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKEKLMG_621G(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_621G_HHE(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_621G_LINE(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_621G_NAAR(NORVIK_BASIS_RADIAL_ARGS);

/* 631G */
NORVIK_API void ZATMNSHL_631G(NORVIK_BASIS_LAYOUT_ARGS);
NORVIK_API void ZATMNSHL_631GC(NORVIK_BASIS_LAYOUT_ARGS);
NORVIK_API void ZATMZETA_631G(NORVIK_BASIS_ZETA_ARGS);
NORVIK_API void MAKELMLMN_631G(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631G_HHE(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631G_LINE(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631G_NAAR(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631G_KCA(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631G_SCZN(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631G_GAKR(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKEKLMG_631G(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631G_HHE(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631G_LINE(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631G_NAAR(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631G_KCA(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631G_SCZN(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631G_GAKR(NORVIK_BASIS_RADIAL_ARGS);

/* 631GX */
NORVIK_API void ZATMNSHL_631GX(NORVIK_BASIS_LAYOUT_ARGS);
NORVIK_API void ZATMNSHL_631GXC(NORVIK_BASIS_LAYOUT_ARGS);
NORVIK_API void ZATMZETA_631GX(NORVIK_BASIS_ZETA_ARGS);
NORVIK_API void MAKELMLMN_631GX(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631GX_HHE(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631GX_LINE(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631GX_NAAR(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631GX_KCA(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631GX_SCZN(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631GX_GAKR(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKEKLMG_631GX(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631GX_HHE(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631GX_LINE(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631GX_NAAR(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631GX_KCA(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631GX_SCZN(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631GX_GAKR(NORVIK_BASIS_RADIAL_ARGS);

/* 631GXX */
NORVIK_API void ZATMNSHL_631GXX(NORVIK_BASIS_LAYOUT_ARGS);
NORVIK_API void ZATMNSHL_631GXXC(NORVIK_BASIS_LAYOUT_ARGS);
NORVIK_API void ZATMZETA_631GXX(NORVIK_BASIS_ZETA_ARGS);
NORVIK_API void MAKELMLMN_631GXX(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631GXX_HHE(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631GXX_LINE(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631GXX_NAAR(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631GXX_KCA(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631GXX_SCZN(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631GXX_GAKR(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKEKLMG_631GXX(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631GXX_HHE(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631GXX_LINE(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631GXX_NAAR(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631GXX_KCA(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631GXX_SCZN(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631GXX_GAKR(NORVIK_BASIS_RADIAL_ARGS);

/* 631TG */
NORVIK_API void ZATMNSHL_631TG(NORVIK_BASIS_LAYOUT_ARGS);
NORVIK_API void ZATMNSHL_631TGC(NORVIK_BASIS_LAYOUT_ARGS);
NORVIK_API void ZATMZETA_631TG(NORVIK_BASIS_ZETA_ARGS);
NORVIK_API void MAKELMLMN_631TG(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631TG_HHE(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631TG_LINE(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631TG_NAAR(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKEKLMG_631TG(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631TG_HHE(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631TG_LINE(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631TG_NAAR(NORVIK_BASIS_RADIAL_ARGS);

/* 631TGX */
NORVIK_API void ZATMNSHL_631TGX(NORVIK_BASIS_LAYOUT_ARGS);
NORVIK_API void ZATMNSHL_631TGXC(NORVIK_BASIS_LAYOUT_ARGS);
NORVIK_API void ZATMZETA_631TGX(NORVIK_BASIS_ZETA_ARGS);
NORVIK_API void MAKELMLMN_631TGX(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631TGX_HHE(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631TGX_LINE(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631TGX_NAAR(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKEKLMG_631TGX(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631TGX_HHE(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631TGX_LINE(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631TGX_NAAR(NORVIK_BASIS_RADIAL_ARGS);

/* 631TGXX */
NORVIK_API void ZATMNSHL_631TGXX(NORVIK_BASIS_LAYOUT_ARGS);
NORVIK_API void ZATMNSHL_631TGXXC(NORVIK_BASIS_LAYOUT_ARGS);
NORVIK_API void ZATMZETA_631TGXX(NORVIK_BASIS_ZETA_ARGS);
NORVIK_API void MAKELMLMN_631TGXX(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631TGXX_HHE(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631TGXX_LINE(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631TGXX_NAAR(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKEKLMG_631TGXX(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631TGXX_HHE(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631TGXX_LINE(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631TGXX_NAAR(NORVIK_BASIS_RADIAL_ARGS);

/* 631TTG */
NORVIK_API void ZATMNSHL_631TTG(NORVIK_BASIS_LAYOUT_ARGS);
NORVIK_API void ZATMNSHL_631TTGC(NORVIK_BASIS_LAYOUT_ARGS);
NORVIK_API void ZATMZETA_631TTG(NORVIK_BASIS_ZETA_ARGS);
NORVIK_API void MAKELMLMN_631TTG(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631TTG_HHE(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631TTG_LINE(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631TTG_NAAR(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKEKLMG_631TTG(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631TTG_HHE(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631TTG_LINE(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631TTG_NAAR(NORVIK_BASIS_RADIAL_ARGS);

/* 631TTGX */
NORVIK_API void ZATMNSHL_631TTGX(NORVIK_BASIS_LAYOUT_ARGS);
NORVIK_API void ZATMNSHL_631TTGXC(NORVIK_BASIS_LAYOUT_ARGS);
NORVIK_API void ZATMZETA_631TTGX(NORVIK_BASIS_ZETA_ARGS);
NORVIK_API void MAKELMLMN_631TTGX(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631TTGX_HHE(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631TTGX_LINE(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631TTGX_NAAR(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKEKLMG_631TTGX(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631TTGX_HHE(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631TTGX_LINE(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631TTGX_NAAR(NORVIK_BASIS_RADIAL_ARGS);

/* 631TTGXX */
NORVIK_API void ZATMNSHL_631TTGXX(NORVIK_BASIS_LAYOUT_ARGS);
NORVIK_API void ZATMNSHL_631TTGXXC(NORVIK_BASIS_LAYOUT_ARGS);
NORVIK_API void ZATMZETA_631TTGXX(NORVIK_BASIS_ZETA_ARGS);
NORVIK_API void MAKELMLMN_631TTGXX(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631TTGXX_HHE(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631TTGXX_LINE(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKELMLMN_631TTGXX_NAAR(NORVIK_BASIS_ANGULAR_ARGS);
NORVIK_API void MAKEKLMG_631TTGXX(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631TTGXX_HHE(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631TTGXX_LINE(NORVIK_BASIS_RADIAL_ARGS);
NORVIK_API void MAKEKLMG_631TTGXX_NAAR(NORVIK_BASIS_RADIAL_ARGS);

/* ---- Shared angular fills ---------------------------------------------------
 * Each fills the angular arrays of one shell, or of consecutive shells for the
 * shorthands, and zeroes the shell's other slots: lm(2, 7, n), nterm(7, n),
 * lmn(3, 3, 7, n), termcoef(3, 7, n) with n the number of shells filled.
 * SONLY one s shell; PONLY one p shell; SANDP one sp shell; DONLY one d shell
 * (six slots: m = -2 ... 2, then the companion (2, 10)); FONLY one f shell;
 * SS, SSS, SSSS, SSSSS two to five s shells; PP two p shells. */
NORVIK_API void LMLMN_SONLY(NORVIK_LMLMN_ARGS);
NORVIK_API void LMLMN_PONLY(NORVIK_LMLMN_ARGS);
NORVIK_API void LMLMN_SANDP(NORVIK_LMLMN_ARGS);
NORVIK_API void LMLMN_DONLY(NORVIK_LMLMN_ARGS);
NORVIK_API void LMLMN_FONLY(NORVIK_LMLMN_ARGS);
NORVIK_API void LMLMN_SS(NORVIK_LMLMN_ARGS);
NORVIK_API void LMLMN_SSS(NORVIK_LMLMN_ARGS);
NORVIK_API void LMLMN_SSSS(NORVIK_LMLMN_ARGS);
NORVIK_API void LMLMN_SSSSS(NORVIK_LMLMN_ARGS);
NORVIK_API void LMLMN_PP(NORVIK_LMLMN_ARGS);

NORVIK_EXTERN_C_END

#endif
