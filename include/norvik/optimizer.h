/* norvik: building blocks of the geometry optimiser (see norvik.h for the
 * convention).
 *
 * Vectors over the nuclei, g (gradient), gold (previous gradient), d (search
 * direction), x (positions) and saved, are real arrays (3, natom),
 * column-major, one column of x y z per atom: positions in angstrom,
 * gradients in eV/A.  Directions are not normalised. */
#ifndef NORVIK_OPTIMIZER_H
#define NORVIK_OPTIMIZER_H

#include "norvik/export.h"

NORVIK_EXTERN_C_BEGIN

/* New search direction d from g, gold and the previous d.  Each conjugate rule
 * is d = -g + beta*d, dot products over all 3*natom components; when the
 * denominator of beta is exactly 0 (gold = 0 before the first gradient) the
 * result is d = -g.
 *   STEEPESTDESCENT      d = -g (gold not read)
 *   POLAKRIBIERE         beta = g.(g - gold) / (gold.gold)
 *   POLAKRIBIERE_WRESET  beta = max(0, g.(g - gold) / (gold.gold))
 *   FLETCHERREEVES       beta = (g.g) / (gold.gold)
 *   HESTENESSTIEFEL      beta = g.(g - gold) / ((g - gold).d)
 *   DAIYUAN              beta = (g.g) / ((g - gold).d) */
NORVIK_API void STEEPESTDESCENT(const norvik_int* natom, const double* g, const double* gold,
                                double* d);
NORVIK_API void POLAKRIBIERE(const norvik_int* natom, const double* g, const double* gold,
                             double* d);
NORVIK_API void POLAKRIBIERE_WRESET(const norvik_int* natom, const double* g, const double* gold,
                                    double* d);
NORVIK_API void FLETCHERREEVES(const norvik_int* natom, const double* g, const double* gold,
                               double* d);
NORVIK_API void HESTENESSTIEFEL(const norvik_int* natom, const double* g, const double* gold,
                                double* d);
NORVIK_API void DAIYUAN(const norvik_int* natom, const double* g, const double* gold, double* d);

/* One step along d: saved = x, then x = x + step*d (step in A^2/eV). */
NORVIK_API void DESCENT(const norvik_int* natom, const double* d, const double* step, double* saved,
                        double* x);

/* The parabola through the energies e0, ea, eb [eV] at the distances 0, s and
 * 2s along a direction.  With c = 2*eb + 2*e0 - 4*ea above 4*threshold:
 * extra = max(0, s*(3*e0 + eb - 4*ea)/c - 2*s), the distance from the point
 * at 2s to the vertex, and fitted = 1.  Otherwise fitted = 0 and extra is the
 * plain probe step of the exploration that calls the fit after its point 2,
 * 4, 8 or 16: s, s/2, s/4 and s/8 respectively. */
NORVIK_API void FINDQUADMIN3RD(const double* threshold, const double* s, const double* e0,
                               const double* ea, const double* eb, double* extra,
                               norvik_bool* fitted);
NORVIK_API void FINDQUADMIN5TH(const double* threshold, const double* s, const double* e0,
                               const double* ea, const double* eb, double* extra,
                               norvik_bool* fitted);
NORVIK_API void FINDQUADMIN9TH(const double* threshold, const double* s, const double* e0,
                               const double* ea, const double* eb, double* extra,
                               norvik_bool* fitted);
NORVIK_API void FINDQUADMIN17TH(const double* threshold, const double* s, const double* e0,
                                const double* ea, const double* eb, double* extra,
                                norvik_bool* fitted);

/* The optimisation drivers.  One call runs a whole optimisation from the
 * coordinates in pos and returns the last accepted point: its coordinates,
 * gradient, SCF state (rho, orbitals) and energies.  Every point of the surface
 * is a complete single point (as SCF_1POINT: basis, integrals, in-core choice,
 * grid for Kohn-Sham, SCF from the density of the last accepted point, the first
 * from `start`); its run-log lines carry the cycle number as iopt, and a blank
 * line follows each SCF.
 *
 *   OPTIMIZE            conjugate gradient (Polak-Ribiere, steepest descent after
 *                       a failed exploration), REPUT by molecule name
 *   OPTIMIZE_STEEPEST   steepest descent, REPUT
 *   OPTIMIZE_C2, _B2    steepest descent, REPUT (the homonuclear diatomics; the
 *                       molecule's own SCF, without symmetry-adapted orbitals)
 *   OPTIMIZE_MOLE       conjugate gradient, also steepest descent every 3N-3
 *                       cycles, REPUTMOL (any molecule); gradient one atom at a
 *                       time; above 20 atoms only the largest component reported
 *   OPTIMIZE_QN         quasi-Newton (rational-function steps with BFGS updates
 *                       on a model Hessian, docs/optimizer.md): a gradient at
 *                       every point, converged on the gradient and the step
 *
 * Arguments (positions of OPTIMIZE; OPTIMIZE_MOLE takes the atom count at 7 and
 * every later argument one position further, position 6 being reserved):
 *   1 method (in, 10 chars: "HF", "MP2", "RPA", "TDA" Hartree-Fock, else a
 *     functional);  2 molname (in, 20 chars, for REPUT);  3 report (in, 120
 *     chars);  4 logfile (in, 120 chars, blank: none);  5 basis (in, 20 chars);
 *   6 natom;  7 nbasis;  8 nalpha, 9 nbeta;  10 zat;  11 zel;
 *   12 niter, 13 damp, 14 thr_ene, 15 thr_rms (in, 2 each, as SCF_1POINT's);
 *   16 thr_screen;  17 thr_orth;  18 grid_radius;  19 grid_level (as SCF_1POINT's);
 *   20 start (in, the first point's start, as SCF_1POINT's);  21 atomrho (in);
 *   22 xyzfile (in, 120 chars, blank: none): one .xyz frame appended per cycle;
 *   23 ncycle (out, cycles run);  24 converged (out, flag);
 *   25 maxcycle (in);  26 maxpoint (in, points per exploration);
 *   27 with_gradient (in, flag: false computes no gradient and no direction);
 *   28 npoint (out, points computed: one SCF each);  29 ngrad (out, gradients);
 *   30 S (out, (n, n));  31 rho (in-out, (n, n, 2));  32 reserved (the SCF is
 *   never bypassed);  33 orbitals (out, (n, n+1, 2));  34 dipole (out, 3, e.A);
 *   35 de_final (out, eV);  36 northo (out);  37 incore (out);  38 xc (out, 4, as
 *   SCF_1POINT's);  39 step (in, base probe step [A^2/eV]);  40 ramlimit (in, GB;
 *   the Kohn-Sham grid table is taken out first);  41 scf_cycles (out, SCF cycles
 *   of the last point);  42 scf_converged (out, flag);  43 rmsd;  44 commutator
 *   (out, as SCF_1POINT's);  45 thr_grad (in, eV/A: OPTIMIZE_QN's largest gradient
 *   component, 0 its default);  46 max_step (in, A: OPTIMIZE_QN's first trust
 *   radius, 0 its default);  50 pos (in-out, (3, natom) A);  51 grad (out, (3,
 *   natom) eV/A, zeroed on entry);  72 enuc (out, eV);  73 nucdip (out, 3, e.A);
 *   76 energy (out, 3: electronic, nuclear repulsion, molecular [eV]).
 *   Positions 47-49, 52-71, 74 and 75 are reserved: nothing is read or written
 *   (the work arrays of a point live inside the call); pass any pointer. */
#define NORVIK_OPTIMIZE_HEAD                                                        \
  const char *method, const char *molname, const char *report, const char *logfile, \
      const char *basis
#define NORVIK_OPTIMIZE_TAIL                                                                      \
  const norvik_int *nbasis, const norvik_int *nalpha, const norvik_int *nbeta,                    \
      const norvik_int *zat, const norvik_int *zel, const norvik_int *niter, const double *damp,  \
      const double *thr_ene, const double *thr_rms, const double *thr_screen,                     \
      const double *thr_orth, const double *grid_radius, const norvik_int *grid_level,            \
      const norvik_int *start, const double *atomrho, const char *xyzfile, norvik_int *ncycle,    \
      norvik_bool *converged, const norvik_int *maxcycle, const norvik_int *maxpoint,             \
      const norvik_bool *with_gradient, norvik_int *npoint, norvik_int *ngrad, double *S,         \
      double *rho, const void *reserved32, double *orbitals, double *dipole, double *de_final,    \
      norvik_int *northo, norvik_int *incore, double *xc, const double *step,                     \
      const double *ramlimit, norvik_int *scf_cycles, norvik_bool *scf_converged, double *rmsd,   \
      double *commutator, const double *thr_grad, const double *max_step, const void *reserved47, \
      const void *reserved48, const void *reserved49, double *pos, double *grad,                  \
      const void *reserved52, const void *reserved53, const void *reserved54,                     \
      const void *reserved55, const void *reserved56, const void *reserved57,                     \
      const void *reserved58, const void *reserved59, const void *reserved60,                     \
      const void *reserved61, const void *reserved62, const void *reserved63,                     \
      const void *reserved64, const void *reserved65, const void *reserved66,                     \
      const void *reserved67, const void *reserved68, const void *reserved69,                     \
      const void *reserved70, const void *reserved71, double *enuc, double *nucdip,               \
      const void *reserved74, const void *reserved75, double *energy
#define NORVIK_OPTIMIZE_ARGS NORVIK_OPTIMIZE_HEAD, const norvik_int *natom, NORVIK_OPTIMIZE_TAIL
#define NORVIK_OPTIMIZE_MOLE_ARGS \
  NORVIK_OPTIMIZE_HEAD, const void *reserved6, const norvik_int *natom, NORVIK_OPTIMIZE_TAIL

NORVIK_API void OPTIMIZE(NORVIK_OPTIMIZE_ARGS);
NORVIK_API void OPTIMIZE_STEEPEST(NORVIK_OPTIMIZE_ARGS);
NORVIK_API void OPTIMIZE_C2(NORVIK_OPTIMIZE_ARGS);
NORVIK_API void OPTIMIZE_B2(NORVIK_OPTIMIZE_ARGS);
NORVIK_API void OPTIMIZE_QN(NORVIK_OPTIMIZE_ARGS);
NORVIK_API void OPTIMIZE_MOLE(NORVIK_OPTIMIZE_MOLE_ARGS);

NORVIK_EXTERN_C_END

#endif
