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

/* ---- excited states (method: docs/excited_states.md) ---- */

/* Pairs kept per state in the transition arrays of ELECTRONEXCITE. */
#define NORVIK_EXCITE_MAX_PAIRS 20

/* The argument list of ELECTRONEXCITE: the lowest excitations of a converged
 * point by linear response.
 *   1-16 as POLARIZE: method (in, 10 chars: "HF", "MP2", "RPA", "TDA" the
 *     Hartree–Fock point, any other name the functional of a Kohn–Sham point as
 *     SCF_1POINT takes it: "TDKS", "TDKS5", "KSTDA", "KSTDA5" select SVWN5,
 *     "TDKS3", "KSTDA3" SVWN3), basis, natom, zat, zel, pos, nalpha, nbeta,
 *     nbasis, rho, orbitals, ramlimit (GB: the integral store is kept when it
 *     fits what the excitation space leaves, TDARAM01 / RPARAM01 with n the
 *     dimension of that space, otherwise the builds are integral-direct),
 *     thr_screen, thr_orth, grid_radius, grid_level;
 *   17 tda (in): 1 the Tamm–Dancoff approximation (CIS on a Hartree–Fock
 *     point), 0 the random-phase approximation (TDHF, full TDDFT);
 *   18 nroots (in, ≥ 1): states per spin type;
 *   19 spins (in): 1 singlets, 3 triplets, 4 both; read only for a restricted
 *     point (equal occupations and orbitals of both spins); an unrestricted
 *     point gives nroots states of the spin-orbital problem;
 *   20 nstate (out): the states written, at most 2·nroots;
 *   21 spin (out, nstate): 1 singlet, 3 triplet, 0 a state of an unrestricted
 *     point;  22 energy (out, nstate, eV);  23 strength (out, nstate: the
 *     oscillator strength f = 2/3 ω |<0|r|n>|² in atomic units, 0 for
 *     triplets);  24 dipole (out, (3, nstate), e·Å: the transition dipole);
 *   25 npair (out, nstate): the dominant pairs (weight c² above 0.05, at most
 *     NORVIK_EXCITE_MAX_PAIRS, largest first) of each state, stored one state
 *     after the other in  26 occ, 27 vir (out: orbital numbers over all levels of
 *     the spin, from 1), 28 beta (out: 1 for a beta pair of an unrestricted
 *     point) and 29 amplitude (out: c, spin-adapted for a restricted point);
 *     each of these four arrays holds NORVIK_EXCITE_MAX_PAIRS · 2 · nroots.
 * Singlets come first, then triplets, each ascending.  A wrong nbasis stops with
 * "Wrong nbasis in Electronexcite." and both numbers; roots that do not
 * converge in 100 iterations with "Excited states not converged."; a point
 * unstable towards the asked excitations (random phase only) with "Excitation
 * energies not real." and the spin type. */
#define NORVIK_ELECTRONEXCITE_ARGS                                                                 \
  const char *method, const char *basis, const norvik_int *natom, const norvik_int *zat,           \
      const norvik_int *zel, const double *pos, const norvik_int *nalpha, const norvik_int *nbeta, \
      const norvik_int *nbasis, const double *rho, const double *orbitals, const double *ramlimit, \
      const double *thr_screen, const double *thr_orth, const double *grid_radius,                 \
      const norvik_int *grid_level, const norvik_int *tda, const norvik_int *nroots,               \
      const norvik_int *spins, norvik_int *nstate, norvik_int *spin, double *energy,               \
      double *strength, double *dipole, norvik_int *npair, norvik_int *occ, norvik_int *vir,       \
      norvik_int *beta, double *amplitude
NORVIK_API void ELECTRONEXCITE(NORVIK_ELECTRONEXCITE_ARGS);

/* The table of states: method (in, 10 chars, named in the heading); nstate;
 * spin, energy (eV), strength as ELECTRONEXCITE gives them; report. */
NORVIK_API void WRITE_EXCITE(const char* method, const norvik_int* nstate, const norvik_int* spin,
                             const double* energy, const double* strength, const char* report);
/* The dominant orbital transitions of each state: nstate; spin; energy; npair;
 * occ; vir; beta; amplitude as ELECTRONEXCITE gives them; report. */
NORVIK_API void WRITE_TRANSITION(const norvik_int* nstate, const norvik_int* spin,
                                 const double* energy, const norvik_int* npair,
                                 const norvik_int* occ, const norvik_int* vir,
                                 const norvik_int* beta, const double* amplitude,
                                 const char* report);
/* The largest matrix WRITE_CI_MATRIX writes. */
#define NORVIK_CI_MATRIX_MAX 50
/* The Tamm–Dancoff (CIS) matrix A of a small case: dimension (in: nothing is
 * written when it is not from 1 to NORVIK_CI_MATRIX_MAX); a (in, (dimension,
 * dimension) column-major, eV); report.  Blocks of six columns. */
NORVIK_API void WRITE_CI_MATRIX(const norvik_int* dimension, const double* a, const char* report);
/* The UV-vis spectrum as a two-column text file (written anew, like
 * WRITE_SPECTRUM): nstate; energy (eV); strength; npoint; low, high (nm, the
 * wavelength grid, npoint points evenly spaced); fwhm (eV: the full width at
 * half maximum of each state's Gaussian band in energy); file (120 chars).
 * Lines: wavelength [nm], molar absorptivity ε [L/(mol·cm)]. */
NORVIK_API void WRITE_UVVISI(const norvik_int* nstate, const double* energy, const double* strength,
                             const norvik_int* npoint, const double* low, const double* high,
                             const double* fwhm, const char* file);

NORVIK_EXTERN_C_END

#endif
