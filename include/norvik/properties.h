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

/* The converged point that the response routines (POLARIZE, SCF_STABILITY)
 * start from, their first 16 arguments:
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
 *   read only for a functional. */
#define NORVIK_RESPONSE_POINT_ARGS                                                                 \
  const char *method, const char *basis, const norvik_int *natom, const norvik_int *zat,           \
      const norvik_int *zel, const double *pos, const norvik_int *nalpha, const norvik_int *nbeta, \
      const norvik_int *nbasis, const double *rho, const double *orbitals, const double *ramlimit, \
      const double *thr_screen, const double *thr_orth, const double *grid_radius,                 \
      const norvik_int *grid_level

/* The argument list of POLARIZE and POLARIZE_DIRECT: the point (1–16) and
 *   17 alpha (out, (3, 3)): the polarisability volume α_ij = ∂μ_i/∂F_j in Å³,
 *     α[Å³] = α[e·Å²/V] × hartree[eV] × bohr[Å] (symmetric).
 * A wrong nbasis stops with "Wrong nbasis in Polarize." (Polarize_direct) and
 * both numbers; equations that do not converge in 100 iterations stop with
 * "Response equations not converged.", the iterations and the relative residual. */
#define NORVIK_POLARIZE_ARGS NORVIK_RESPONSE_POINT_ARGS, double* alpha

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

/* ---- Counterpoise correction -------------------------------------------------------
 * The Boys–Bernardi correction of a dimer's interaction energy: each fragment's
 * energy in its own basis and in the dimer's basis (the partner's atoms as ghosts:
 * basis functions, no nuclei, no electrons).  Every fragment SCF starts from the
 * bare one-electron Fock matrix and runs without run log and without dipole (as
 * HF_INI_NOINT then HF_SCF_PART; for a Kohn–Sham method then KS_INI and
 * KS_SCF_PART on the grid of all the dimer's atoms, ghosts included).
 * COUNTERPOISE and its members take 21 arguments:
 *   1 method (in, 10 chars, as SCF_1POINT's);  2 basis (in, 20 chars);  3 natom;
 *   4 zat (in, the dimer's nuclear charges: every atom real);  5 zel;  6 pos (in,
 *   (3, natom) Å);  7 first, 8 last (in): fragment A = atoms first … last
 *   (1-based), fragment B = all the others (neither may be empty);
 *   9 fcharge (in, 2: the charges of A and B);  10 fmult (in, 2: their
 *   multiplicities 2S+1, 0 the lowest of the fragment's electron count);
 *   11 niter, 12 damp, 13 thr_ene, 14 thr_rms (in, 2 each: the Hartree–Fock stage,
 *   then the Kohn–Sham stage, as ATOMS takes them);  15 ramlimit (in, GB);
 *   16 thr_screen (in, eV);  17 thr_orth (in);  18 grid_radius (in, Å);
 *   19 grid_level (in, 0 standard, 1 dense);
 *   20 eown (out, 2: E_A and E_B in their own bases, eV);
 *   21 edimer (out, 2: E_A and E_B in the dimer basis, eV).
 * Each energy is electronic + the fragment's own nuclear repulsion; a fragment
 * without electrons (a bare proton) has no SCF and the energy of its nuclei.
 * _DIRECT builds integral-direct whatever the limit.  _HEHPL is for HeH+: the
 * two atoms must be one He and one H (otherwise " COUNTERPOISE_HEHPL needs the
 * atoms He and H." and the elements); fcharge and fmult are not read: He is a
 * neutral singlet, H the bare proton H+.  An impossible fragment electron count
 * stops with the message of SETUP_HF's count, "Counterpoise" in place of
 * "Nelectron"; a bad range with " Invalid counterpoise fragments:", first, last
 * and natom. */
#define NORVIK_COUNTERPOISE_ARGS                                                                 \
  const char *method, const char *basis, const norvik_int *natom, const norvik_int *zat,         \
      const norvik_int *zel, const double *pos, const norvik_int *first, const norvik_int *last, \
      const norvik_int *fcharge, const norvik_int *fmult, const norvik_int *niter,               \
      const double *damp, const double *thr_ene, const double *thr_rms, const double *ramlimit,  \
      const double *thr_screen, const double *thr_orth, const double *grid_radius,               \
      const norvik_int *grid_level, double *eown, double *edimer
NORVIK_API void COUNTERPOISE(NORVIK_COUNTERPOISE_ARGS);
NORVIK_API void COUNTERPOISE_DIRECT(NORVIK_COUNTERPOISE_ARGS);
NORVIK_API void COUNTERPOISE_HEHPL(NORVIK_COUNTERPOISE_ARGS);
NORVIK_API void COUNTERPOISE_DIRECT_HEHPL(NORVIK_COUNTERPOISE_ARGS);
/* The counterpoise section of the report: eown (in, 2), edimer (in, 2), emol (in,
 * the dimer's molecular energy from the job's own SCF, eV), report.  The fragment
 * energies in both bases, each fragment's basis-set superposition error
 * E(own) − E(dimer basis), and the raw and counterpoise-corrected interaction
 * energies in hartree, eV, kcal/mol and kJ/mol (docs/counterpoise.md). */
NORVIK_API void WRITE_BSSE(const double* eown, const double* edimer, const double* emol,
                           const char* report);

/* ---- Two-electron full CI ------------------------------------------------------------
 * FULLCI_2E: the exact states of a molecule with two electrons from its converged
 * RHF point, over all the independent orbitals (docs/full_ci.md):
 *   1 basis (in, 20 chars);  2 natom;  3 zat;  4 zel;  5 pos (in, (3, natom) Å);
 *   6 nalpha, 7 nbeta (in, must both be 1);  8 nbasis (in, must equal the basis
 *   size);  9 orbitals (in, (n, n + 1, 2) of the RHF point; the alpha orbitals are
 *   read);  10 thr_orth (in, the point's);  11 nroots (in, ≥ 1);
 *   12 esinglet (out, nroots: the lowest singlet states, eV, molecular energies);
 *   13 etriplet (out, nroots: the lowest triplet states); entries beyond the
 *   states of the space are 0;  14 ground (out, n(n+1)/2: the coefficients of the
 *   singlet ground state over the configurations (pq)+, p ≥ q, at the 1-based
 *   packed index p(p−1)/2 + q; zero beyond the space);  15 norb (out, orbitals of
 *   the space);  16 ehf (out, the determinant of the doubly occupied first
 *   orbital: the RHF energy, eV).
 * Other electron counts stop with " FULLCI_2E needs two paired electrons:" and
 * nalpha, nbeta; a wrong nbasis with "Wrong nbasis in FULLCI_2E." and both
 * numbers. */
NORVIK_API void FULLCI_2E(const char* basis, const norvik_int* natom, const norvik_int* zat,
                          const norvik_int* zel, const double* pos, const norvik_int* nalpha,
                          const norvik_int* nbeta, const norvik_int* nbasis, const double* orbitals,
                          const double* thr_orth, const norvik_int* nroots, double* esinglet,
                          double* etriplet, double* ground, norvik_int* norb, double* ehf);
/* The configurations and states of FULLCI_2E: nbasis, norb, ground, nroots,
 * esinglet, etriplet (in, as FULLCI_2E returns them), report.  The leading
 * configurations of the ground state (|c| ≥ 0.01, at most ten) and the lowest
 * nroots states of each spin in order of energy. */
NORVIK_API void WRITE_H2_CI(const norvik_int* nbasis, const norvik_int* norb, const double* ground,
                            const norvik_int* nroots, const double* esinglet,
                            const double* etriplet, const char* report);
/* The full-CI energy, the Hartree–Fock energy and the correlation energy
 * E(FCI) − E(HF), in hartree and eV: ehf, efci (in, eV), report. */
NORVIK_API void WRITE_ENERGY_CI(const double* ehf, const double* efci, const char* report);
/* Stability of the converged point (docs/stability.md): the point (1–16), then
 *   17 nroots (in, at least 1): the lowest eigenvalues wanted of each block;
 *   18 angle (in, rad): the rotation of the start density rho_next;
 *   19 restricted (out, flag): the point is restricted (equal counts, and alpha
 *     and beta orbitals equal to 1e-7);
 *   20 values (out, (nroots, 2) eV): the lowest eigenvalues of the orbital
 *     Hessian A + B for real rotations, ascending: for a restricted point the
 *     RHF -> RHF block in column 1 and the RHF -> UHF block in column 2; for an
 *     unrestricted point the UHF -> UHF block in column 1 and zeros in column 2;
 *   21 rho_next (out, (n, n, 2)): the density of the occupied orbitals turned by
 *     angle along the eigenvector of the lowest eigenvalue: the start of an SCF
 *     (SCF_1POINT, start 2) that leaves an unstable solution downhill.
 * Integral store as POLARIZE.  A wrong nbasis stops with "Wrong nbasis in
 * SCF_stability." and both numbers; eigenpairs that do not converge stop with
 * "Stability analysis not converged.", the products made and the residual. */
NORVIK_API void SCF_STABILITY(NORVIK_RESPONSE_POINT_ARGS, const norvik_int* nroots,
                              const double* angle, norvik_bool* restricted, double* values,
                              double* rho_next);

/* An orbital-Hessian eigenvalue below this [eV] marks an unstable solution;
 * one between it and zero is a rotation the SCF cannot resolve (a symmetry
 * rotation among degenerate orbitals gives exactly zero). */
#define NORVIK_UNSTABLE_EIGENVALUE (-1.0e-4)

/* The stability section of the report: restricted (in, flag), nroots, values
 * (in, (nroots, 2) eV, as SCF_STABILITY returns them), report.  The eigenvalues
 * in eV and hartree per block and the verdict (docs/report.md).  The Kohn–Sham
 * member labels the blocks RKS -> RKS, RKS -> UKS, UKS -> UKS. */
NORVIK_API void WRITE_INSTABILITY_HF(const norvik_bool* restricted, const norvik_int* nroots,
                                     const double* values, const char* report);
NORVIK_API void WRITE_INSTABILITY_KS(const norvik_bool* restricted, const norvik_int* nroots,
                                     const double* values, const char* report);
/* ---- the quadrupole, populations per shell, orbitals in the report, cube files ----
 * (docs/populations.md, docs/cube.md, docs/report.md)
 *
 * QUADRAPOLE(basis, natom, zat, zel, pos, nbasis, rho, theta): the traceless
 * electric quadrupole of a converged point, nuclei and electrons, about the
 * centre of nuclear charge sum Z_A R_A / sum Z_A:  1 basis (in, 20 chars);
 * 2 natom;  3 zat (nuclear charges, 0 a ghost);  4 zel (elements);  5 pos (in,
 * (3, natom) A);  6 nbasis (in, must equal the basis size);  7 rho (in, (n, n, 2));
 * 8 theta (out, (3, 3) e*A^2, symmetric): Theta_ij = sum q (3 r_i r_j - r^2
 * delta_ij) / 2 (Buckingham's convention; 1 e*A^2 = 4.8032047 buckingham).  A wrong
 * nbasis stops with "Wrong nbasis in Quadrapole." and both numbers. */
NORVIK_API void QUADRAPOLE(const char* basis, const norvik_int* natom, const norvik_int* zat,
                           const norvik_int* zel, const double* pos, const norvik_int* nbasis,
                           const double* rho, double* theta);
/* The quadrupole section of the report: theta (in, (3, 3) e*A^2), report. */
NORVIK_API void WRITE_EQM(const double* theta, const char* report);

/* Population analysis per shell, the arguments of MULLIKEN and LOWDIN up to rho,
 * then:  8 nshell (in, the shells of the basis on these atoms: the sum of ZATMNSHL's
 * nshell over the atoms);  9 electrons (out, nshell: the shell's alpha + beta
 * electrons);  10 spin (out, nshell: its alpha - beta electrons).  Shells in the
 * order of MAKEBASIS, atom by atom; the shells of an atom sum to its electrons.
 * A wrong nshell stops with "Wrong nshell in Mulliken_shells." ("Lowdin_shells.")
 * and both numbers. */
NORVIK_API void MULLIKEN_SHELLS(const char* basis, const norvik_int* natom, const norvik_int* zat,
                                const norvik_int* zel, const norvik_int* nbasis, const double* S,
                                const double* rho, const norvik_int* nshell, double* electrons,
                                double* spin);
NORVIK_API void LOWDIN_SHELLS(const char* basis, const norvik_int* natom, const norvik_int* zat,
                              const norvik_int* zel, const norvik_int* nbasis, const double* S,
                              const double* rho, const norvik_int* nshell, double* electrons,
                              double* spin);
/* The shell table of a population analysis: kind (in, 20 chars, the heading's
 * name); basis (in, 20 chars: the shells are labelled "1s", "2sp", "3d" from it);
 * natom; zel; nshell; electrons, spin (in, nshell, as the _SHELLS routines give
 * them); report. */
NORVIK_API void WRITE_POPULATION_SHELL(const char* kind, const char* basis, const norvik_int* natom,
                                       const norvik_int* zel, const norvik_int* nshell,
                                       const double* electrons, const double* spin,
                                       const char* report);

/* The orbitals in the report: basis (in, 20 chars);  natom;  zel;  nbasis;  norb (in,
 * 1 ... nbasis: the orbitals that the orthogonalisation kept, SCF_1POINT's northo);
 * nalpha, nbeta (in, occupied orbitals per spin);  orbitals (in, (n, n+1, 2) as
 * SCF_1POINT returns them);  report.  Energies [eV] and LCAO coefficients in tables
 * of five orbitals, one line per basis function labelled atom, element and function
 * ("   1 O     2px").  WRITE_WAVES writes HOMO-4 ... LUMO+4 of each spin, WRITE_LCAOHF
 * all norb orbitals; a point whose two spin blocks are equal gets one table.  A
 * wrong norb stops with "Wrong norb in Write_waves." ("Write_lcaohf.") and it. */
NORVIK_API void WRITE_WAVES(const char* basis, const norvik_int* natom, const norvik_int* zel,
                            const norvik_int* nbasis, const norvik_int* norb,
                            const norvik_int* nalpha, const norvik_int* nbeta,
                            const double* orbitals, const char* report);
NORVIK_API void WRITE_LCAOHF(const char* basis, const norvik_int* natom, const norvik_int* zel,
                             const norvik_int* nbasis, const norvik_int* norb,
                             const norvik_int* nalpha, const norvik_int* nbeta,
                             const double* orbitals, const char* report);

/* A Gaussian cube file of a converged point (docs/cube.md):  1 file (in, 120 chars;
 * written anew);  2 what (in: k >= 1 orbital k, 0 the total density, -1 the spin
 * density alpha - beta);  3 spin (in, 1 alpha or 2 beta: the orbital's spin, read
 * for what >= 1);  4 origin (in, 3, A: the first grid point);  5 step (in, 3, A:
 * the grid step along x, y, z);  6 counts (in, 3: points along x, y, z);  7 title
 * (in, 20 chars: the first line of the file);  8 basis (in, 20 chars);  9 natom;
 * 10 zat;  11 zel;  12 pos (in, (3, natom) A);  13 nbasis;  14 rho (in, (n, n, 2),
 * read for a density);  15 orbitals (in, (n, n+1, 2), read for an orbital).  The
 * file is in bohr with values in bohr^-3/2 (an orbital) or e/bohr^3.  Stops with
 * "Wrong nbasis in Cube_export.", "Wrong orbital in Cube_export.", "Wrong spin in
 * Cube_export." or "Wrong grid counts in Cube_export." and the value. */
NORVIK_API void CUBE_EXPORT(const char* file, const norvik_int* what, const norvik_int* spin,
                            const double* origin, const double* step, const norvik_int* counts,
                            const char* title, const char* basis, const norvik_int* natom,
                            const norvik_int* zat, const norvik_int* zel, const double* pos,
                            const norvik_int* nbasis, const double* rho, const double* orbitals);
/* The cube file of a free atom's density, the atom at the origin:  1 file (in, 120
 * chars);  2 zel (in, the element);  3 basis (in, 20 chars);  4 nbasis (in, the
 * atom's basis size);  5 rho (in, (n, n, 2), the atom's density, as ATOMS computes
 * it);  6 half_width (in, A: the cube spans -half_width ... half_width on each
 * axis);  7 npoint (in, >= 2: points per axis). */
NORVIK_API void PLOT_ATOM(const char* file, const norvik_int* zel, const char* basis,
                          const norvik_int* nbasis, const double* rho, const double* half_width,
                          const norvik_int* npoint);
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
