/* norvik: harmonic vibrations (see norvik.h for the calling convention).
 *
 * The Hessian, the dipole derivatives and, for Raman intensities, the
 * polarisability derivatives come from central differences of the analytic
 * gradient, dipole and coupled-perturbed polarisability of displaced points;
 * every displaced point is a whole SCF started from the converged density of
 * the undisplaced one.  Units: positions Å, Hessian eV/Å², dipole derivatives
 * e (e·Å per Å), polarisability derivatives Å² (Å³ per Å), wavenumbers cm⁻¹,
 * infrared intensities km/mol, Raman activities Å⁴/amu.  Matrices are
 * column-major; coordinate k = 3(a − 1) + c of atom a and axis c = 1, 2, 3.
 * docs/vibrations.md describes the method, its steps and its accuracy. */
#ifndef NORVIK_VIBRATIONS_H
#define NORVIK_VIBRATIONS_H

#include "norvik/export.h"

NORVIK_EXTERN_C_BEGIN

/* The arguments of the Hessian drivers:
 *   1 method (in, 10 chars: "HF", "MP2", "RPA", "TDA" run Hartree–Fock; any other
 *     value is a functional name, as SCF_1POINT reads it);  2 basis (in, 20 chars);
 *   3 natom;  4 zat (nuclear charges, 0 for a ghost);  5 zel (elements);
 *   6 pos (in, (3, natom) Å);  7 nalpha, 8 nbeta;
 *   9 niter, 10 damp, 11 thr_ene, 12 thr_rms (in, 2 each: the molecule settings of
 *     the Hartree–Fock SCF, then of the Kohn–Sham SCF, which only a Kohn–Sham
 *     method reads; a displaced point of a Kohn–Sham method runs only its
 *     Kohn–Sham SCF);  13 ramlimit (in, GB);  14 thr_screen (in, eV);
 *   15 thr_orth (in);  16 grid_radius (in, Å), 17 grid_level (in), as
 *     SCF_1POINT's, read only for a Kohn–Sham method;  18 nbasis (in, must equal
 *     the basis size);  19 rho (in, (n, n, 2): the converged density at pos, the
 *     start of every displaced point);  20 step (in, Å: the displacement h;
 *     0.0025 is the host's);  21 npoint (in, 2: differences of the points at ±h,
 *     6N SCF points, error O(h²); 4: also ±2h, 12N points, error O(h⁴));
 *   22 raman (in, 1: the polarisability derivatives too, a coupled-perturbed
 *     polarisability at every point; 0: not);  23 hessian (out, (3N, 3N) eV/Å²,
 *     symmetrised);  24 dipder (out, (3, 3N) e: column k = dμ/dx_k);
 *   25 polder (out, (9, 3N) Å²: column k = dα/dx_k, α column-major 3 × 3;
 *     written only when raman = 1). */
#define NORVIK_HESSIAN_ARGS                                                                        \
  const char *method, const char *basis, const norvik_int *natom, const norvik_int *zat,           \
      const norvik_int *zel, const double *pos, const norvik_int *nalpha, const norvik_int *nbeta, \
      const norvik_int *niter, const double *damp, const double *thr_ene, const double *thr_rms,   \
      const double *ramlimit, const double *thr_screen, const double *thr_orth,                    \
      const double *grid_radius, const norvik_int *grid_level, const norvik_int *nbasis,           \
      const double *rho, const double *step, const norvik_int *npoint, const norvik_int *raman,    \
      double *hessian, double *dipder, double *polder

/* The vibrational analysis that the _MOLE members add:
 *   26 report (in, 120 chars: receives the Hessian, WRITE_HESSIAN, and the modes
 *     with their intensities, WRITE_VIBRATION);  27 scale (in, frequency scale
 *     factor f, 0.0 means 1.0);  28 eigenvalues (out, 3N, Å⁻², ascending: as
 *     ENTROPY and THERMALENERGY take them, unscaled);  29 wavenumbers (out, 3N,
 *     cm⁻¹, times f, negative for an imaginary mode);  30 modes (out, (3N, 3N):
 *     column k the normalised Cartesian displacement of eigenvalue k);
 *   31 infrared (out, 3N, km/mol);  32 activity (out, 3N, Å⁴/amu), 33 depol (out,
 *     3N) when raman = 1;  34 linear (out, 1 for a linear molecule). */
#define NORVIK_HESSIAN_MOLE_ARGS                                                             \
  NORVIK_HESSIAN_ARGS, const char *report, const double *scale, double *eigenvalues,         \
      double *wavenumbers, double *modes, double *infrared, double *activity, double *depol, \
      norvik_int *linear

/* The Hessian of a converged point: stored integrals at every point when they fit
 * ramlimit (else integral-direct).  A wrong nbasis stops with "Wrong nbasis in
 * Hessian." and both numbers; npoint other than 2 or 4 with "Wrong npoint in
 * Hessian." and the value. */
NORVIK_API void HESSIAN(NORVIK_HESSIAN_ARGS);
/* The same with integral-direct Fock builds at every point. */
NORVIK_API void HESSIAN_DIRECT(NORVIK_HESSIAN_ARGS);
/* HESSIAN and the vibrational analysis: VIBRATION, IRINTENSITY, RMINTENSITY
 * (raman = 1) with the report sections. */
NORVIK_API void HESSIAN_MOLE(NORVIK_HESSIAN_MOLE_ARGS);
NORVIK_API void HESSIAN_DIRECT_MOLE(NORVIK_HESSIAN_MOLE_ARGS);
/* HESSIAN_MOLE that also tells how far it is:  35 progress (in, 120 chars: a
 * file; blank: none) receives the line "Hessian: k of n displaced coordinates
 * done" before the first displaced point (k = 0) and after every displaced
 * coordinate, each appended and the file closed again, so that another process
 * can follow it.  n counts the coordinates of the atoms that are displaced
 * themselves (one of each set of equivalent atoms), so n <= 3N. */
NORVIK_API void HESSIAN_MOLE_PROGRESS(NORVIK_HESSIAN_MOLE_ARGS, const char* progress);

/* One column of the Hessian, for hosts that spread the displaced points over
 * processes or machines:  1 basis;  2 natom;  3 zat;  4 zel;  5 pos;  6 nalpha,
 *   7 nbeta;  8 niter, 9 damp, 10 thr_ene, 11 thr_rms (in, one each);
 *   12 ramlimit;  13 thr_screen;  14 thr_orth;  15 nbasis;  16 rho (in, the
 *   converged density at pos);  17 step;  18 npoint;  19 icoord (in, 1 … 3N);
 *   20 column (out, 3N: dg/dx_icoord, eV/Å²);  21 dipcol (out, 3: dμ/dx_icoord, e).
 * The columns of HESSIAN are these, before the symmetrisation. */
NORVIK_API void HF_HESSIAN(const char* basis, const norvik_int* natom, const norvik_int* zat,
                           const norvik_int* zel, const double* pos, const norvik_int* nalpha,
                           const norvik_int* nbeta, const norvik_int* niter, const double* damp,
                           const double* thr_ene, const double* thr_rms, const double* ramlimit,
                           const double* thr_screen, const double* thr_orth,
                           const norvik_int* nbasis, const double* rho, const double* step,
                           const norvik_int* npoint, const norvik_int* icoord, double* column,
                           double* dipcol);
/* The same for a Kohn–Sham point: 1 functional (in, 10 chars); 2–16 as
 * HF_HESSIAN's 1–15 but niter, damp, thr_ene and thr_rms of the Kohn–Sham SCF;
 * 17 rho; 18 grid_radius (in, Å); 19 grid_level; 20 step; 21 npoint; 22 icoord;
 * 23 column; 24 dipcol. */
NORVIK_API void KS_HESSIAN(const char* functional, const char* basis, const norvik_int* natom,
                           const norvik_int* zat, const norvik_int* zel, const double* pos,
                           const norvik_int* nalpha, const norvik_int* nbeta,
                           const norvik_int* niter, const double* damp, const double* thr_ene,
                           const double* thr_rms, const double* ramlimit, const double* thr_screen,
                           const double* thr_orth, const norvik_int* nbasis, const double* rho,
                           const double* grid_radius, const norvik_int* grid_level,
                           const double* step, const norvik_int* npoint, const norvik_int* icoord,
                           double* column, double* dipcol);

/* Normal modes: 1 natom; 2 zel (elements: the masses of ATOMMASS); 3 pos;
 *   4 hessian (in, (3N, 3N) eV/Å²); 5 scale (in, f, 0.0 means 1.0);
 *   6 eigenvalues (out, 3N, Å⁻², ascending, of the mass-weighted Hessian with the
 *   rigid translations and rotations projected out, unscaled); 7 wavenumbers (out,
 *   3N, cm⁻¹: f·√λ/2π, negative for an imaginary mode); 8 modes (out, (3N, 3N));
 *   9 linear (out, 1 for a linear molecule: five rigid motions). */
NORVIK_API void VIBRATION(const norvik_int* natom, const norvik_int* zel, const double* pos,
                          const double* hessian, const double* scale, double* eigenvalues,
                          double* wavenumbers, double* modes, norvik_int* linear);
/* Infrared intensities of VIBRATION's modes: 1 natom; 2 zel; 3 modes (in);
 * 4 dipder (in, (3, 3N) e); 5 infrared (out, 3N, km/mol). */
NORVIK_API void IRINTENSITY(const norvik_int* natom, const norvik_int* zel, const double* modes,
                            const double* dipder, double* infrared);
/* Raman activities 45α′² + 7γ′² (Å⁴/amu) and depolarisation ratios of plane-
 * polarised light 3γ′²/(45α′² + 4γ′²) of VIBRATION's modes: 1 natom; 2 zel;
 * 3 modes; 4 polder (in, (9, 3N) Å²); 5 activity (out, 3N); 6 depol (out, 3N). */
NORVIK_API void RMINTENSITY(const norvik_int* natom, const norvik_int* zel, const double* modes,
                            const double* polder, double* activity, double* depol);
/* A line spectrum broadened by Lorentzians: 1 nline; 2 wavenumbers (in, nline,
 * cm⁻¹); 3 intensities (in, nline); 4 fwhm (in, full width at half maximum,
 * cm⁻¹, above 0); 5 low, 6 high (in, cm⁻¹); 7 npoint (in, at least 1);
 * 8 spectrum (out, npoint: the sum of the lines, each of area its intensity,
 * at low + (high − low)(p − 1)/(npoint − 1), per cm⁻¹).  A fwhm that is not
 * positive stops with "Wrong width in Spectrum." and the value. */
NORVIK_API void SPECTRUM(const norvik_int* nline, const double* wavenumbers,
                         const double* intensities, const double* fwhm, const double* low,
                         const double* high, const norvik_int* npoint, double* spectrum);

/* ---- report sections (each appends to the file named by the last argument) ---- */

/* The Hessian (3N, 3N) [eV/Å²] in blocks of six columns: natom; hessian. */
NORVIK_API void WRITE_HESSIAN(const norvik_int* natom, const double* hessian, const char* report);
/* The modes: nmode; wavenumbers (nmode, cm⁻¹, negative: imaginary); infrared
 * (nmode, km/mol); raman (flag: 1 writes activity and depol too); activity;
 * depol (nmode each); scale (the factor f the wavenumbers carry, 0.0: 1.0). */
NORVIK_API void WRITE_VIBRATION(const norvik_int* nmode, const double* wavenumbers,
                                const double* infrared, const norvik_int* raman,
                                const double* activity, const double* depol, const double* scale,
                                const char* report);
/* A spectrum as a two-column text file that plotting programs read: npoint; low,
 * high (cm⁻¹, the grid of SPECTRUM); spectrum (npoint); unit (in, 20 chars: the
 * unit of the intensities, "km/mol" or "A^4/amu"); file (120 chars: written
 * anew, not appended). */
NORVIK_API void WRITE_SPECTRUM(const norvik_int* npoint, const double* low, const double* high,
                               const double* spectrum, const char* unit, const char* file);

NORVIK_EXTERN_C_END

#endif
