/* norvik: properties of a converged point (see norvik.h for the convention):
 * the static dipole polarisability by the coupled-perturbed Hartree–Fock or
 * Kohn–Sham equations, and its report section.  Method: docs/polarizability.md.
 *
 * Arrays are column-major; with n = nbasis, rho is (n, n, 2), alpha block then
 * beta block, and orbitals (n, n+1, 2): per spin the coefficients in columns
 * 1 … n in ascending order of level, the levels [eV] in column n+1 — both as
 * SCF_1POINT returns them for the converged point. */
#ifndef NORVIK_PROPERTIES_H
#define NORVIK_PROPERTIES_H

#include "norvik/export.h"

NORVIK_EXTERN_C_BEGIN

/* The argument list of POLARIZE and POLARIZE_DIRECT:
 *   1 method (in, 10 chars): "HF", "MP2", "RPA", "TDA" the Hartree–Fock point,
 *     any other name a functional as SCF_1POINT takes it (its exact exchange and
 *     exchange–correlation kernel on the molecular grid);
 *   2 basis (in, 20 chars);  3 natom;  4 zat (in, natom nuclear charges, 0 a
 *   ghost);  5 zel (in, natom elements);  6 pos (in, (3, natom) Å);
 *   7 nalpha, 8 nbeta (in, the occupied orbitals of each spin: the lowest ones);
 *   9 nbasis (in, must equal the basis size);  10 rho (in, (n, n, 2), the
 *   converged density);  11 orbitals (in, (n, n+1, 2));  12 ramlimit (in, GB:
 *   the limit for the integral store and the basis table on the grid);
 *   13 thr_screen (in, eV, the integral-direct screening threshold);
 *   14 thr_orth (in, smallest overlap eigenvalue kept);  15 grid_radius (in, Å)
 *   and 16 grid_level (in, 0 standard, 1 dense): the grid of the Kohn–Sham point,
 *   read only for a functional;
 *   17 alpha (out, (3, 3)): the polarisability volume α_ij = ∂μ_i/∂F_j in Å³,
 *     α[Å³] = α[e·Å²/V] × hartree[eV] × bohr[Å] (symmetric).
 * A wrong nbasis stops with "Wrong nbasis in Polarize." (Polarize_direct) and
 * both numbers; equations that do not converge in 100 iterations stop with
 * "Response equations not converged.", the iterations and the relative residual. */
#define NORVIK_POLARIZE_ARGS                                                                       \
  const char *method, const char *basis, const norvik_int *natom, const norvik_int *zat,           \
      const norvik_int *zel, const double *pos, const norvik_int *nalpha, const norvik_int *nbeta, \
      const norvik_int *nbasis, const double *rho, const double *orbitals, const double *ramlimit, \
      const double *thr_screen, const double *thr_orth, const double *grid_radius,                 \
      const norvik_int *grid_level, double *alpha

/* Two-electron builds from the integral store when it fits ramlimit, otherwise
 * integral-direct. */
NORVIK_API void POLARIZE(NORVIK_POLARIZE_ARGS);
/* Integral-direct two-electron builds whatever the limit. */
NORVIK_API void POLARIZE_DIRECT(NORVIK_POLARIZE_ARGS);

/* The polarisability section of the report: alpha (in, (3, 3) Å³), report (in,
 * file name).  The tensor in Å³ and bohr³, its isotropic value (trace / 3) and
 * its anisotropy (docs/report.md). */
NORVIK_API void WRITE_POLARIZ(const double* alpha, const char* report);

/* Population analysis of a converged density:  1 basis (in, 20 chars);  2 natom;
 * 3 zat (nuclear charges, 0 for a ghost);  4 zel (elements);  5 nbasis (in, must
 * equal the basis size);  6 S (in, (n, n) overlap);  7 rho (in, (n, n, 2));
 * 8 charge (out, natom: Z minus the atom's electrons, e);  9 spin (out, natom: the
 * atom's alpha minus beta electrons).  MULLIKEN gives atom A the diagonal of P S
 * over its functions, LOWDIN that of S^1/2 P S^1/2.  A wrong nbasis stops with
 * "Wrong nbasis in Mulliken." ("Lowdin.") and both numbers. */
NORVIK_API void MULLIKEN(const char* basis, const norvik_int* natom, const norvik_int* zat,
                         const norvik_int* zel, const norvik_int* nbasis, const double* S,
                         const double* rho, double* charge, double* spin);
NORVIK_API void LOWDIN(const char* basis, const norvik_int* natom, const norvik_int* zat,
                       const norvik_int* zel, const norvik_int* nbasis, const double* S,
                       const double* rho, double* charge, double* spin);
/* The charges (WRITE_POPULATION) or the spin populations (WRITE_SPINDENSITY) of a
 * population analysis: kind (in, 20 chars: "Mulliken" or "Lowdin", as written in
 * the heading); natom; zel; values (in, natom); report. */
NORVIK_API void WRITE_POPULATION(const char* kind, const norvik_int* natom, const norvik_int* zel,
                                 const double* charge, const char* report);
NORVIK_API void WRITE_SPINDENSITY(const char* kind, const norvik_int* natom, const norvik_int* zel,
                                  const double* spin, const char* report);

/* The MP2 energy of a converged Hartree–Fock point (method docs/mp2.md).  The
 * argument list of MOLLER_PLESSET_2ND:
 *   1 method (in, 10 chars: "HF", "MP2", "RPA" or "TDA", the Hartree–Fock
 *     point; a functional stops with "MP2 needs a Hartree-Fock point, not NAME.");
 *   2 basis (in, 20 chars);  3 natom;  4 zat (in, natom nuclear charges, 0 a
 *   ghost);  5 zel (in, natom elements);  6 pos (in, (3, natom) Å);
 *   7 nalpha, 8 nbeta (in, the occupied orbitals of each spin: the lowest ones);
 *   9 nbasis (in, must equal the basis size);  10 orbitals (in, (n, n+1, 2));
 *   11 escf (in, the point's total energy, eV);
 *   12 ramlimit (in, GB: the limit for the half-transformed integrals (ia|λσ),
 *     8·nocc·nvir·n(n+1)/2 bytes; above it the occupied orbitals go through the
 *     integrals in batches);
 *   13 thr_screen (in, eV: shell quartets whose Schwarz bound is below it are
 *     skipped; 0 skips only those below 1e-14 hartree);
 *   14 thr_orth (in, smallest overlap eigenvalue kept, as in the SCF);
 *   15 frozen (in, 0 all electrons, 1 the core of every atom frozen: 1 orbital
 *     per Li–Ne atom, 5 Na–Ar, 9 K–Kr, 18 Rb–Xe);
 *   16 emp2 (out, 3: the correction E(2), its same-spin and its opposite-spin
 *     part, eV);  17 etotal (out, escf + E(2), eV).
 * RMP2 when nalpha = nbeta and the two spins' orbitals agree, UMP2 otherwise.
 * A wrong nbasis stops with "Wrong nbasis in Moller_plesset_2nd." and both
 * numbers; a frozen core larger than a spin's occupied orbitals stops with
 * "Frozen core larger than the occupied orbitals." and both counts. */
#define NORVIK_MP2_ARGS                                                                            \
  const char *method, const char *basis, const norvik_int *natom, const norvik_int *zat,           \
      const norvik_int *zel, const double *pos, const norvik_int *nalpha, const norvik_int *nbeta, \
      const norvik_int *nbasis, const double *orbitals, const double *escf,                        \
      const double *ramlimit, const double *thr_screen, const double *thr_orth,                    \
      const norvik_bool *frozen, double *emp2, double *etotal

NORVIK_API void MOLLER_PLESSET_2ND(NORVIK_MP2_ARGS);

/* The MP2 section of the report: escf (in, eV), emp2 (in, 3 as MOLLER_PLESSET_2ND
 * returns it, eV), report (in, file name).  The SCF energy, the same-spin and
 * opposite-spin parts, the correction and the total, in eV and hartree. */
NORVIK_API void WRITE_ENERGY_MP2(const double* escf, const double* emp2, const char* report);

/* The caution box of an MP2 energy on a doubtful reference: converged (in, 0 if
 * the SCF did not converge), nbasis, S (in, (n, n) overlap), rho (in, (n, n, 2)
 * density), report.  Written when the SCF did not converge or when <S**2> of the
 * determinant exceeds S(S+1) by more than 0.1, naming each cause; nothing
 * otherwise. */
NORVIK_API void WRITE_MP2_CAUTION(const norvik_bool* converged, const norvik_int* nbasis,
                                  const double* S, const double* rho, const char* report);

NORVIK_EXTERN_C_END

#endif
