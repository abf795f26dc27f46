/* norvik: job setup and element tables (see norvik.h for the convention).
 *
 * Text buffers: file names 120 characters, the theory keyword 10, the other
 * molecule-file texts 20 (record 12 of the molecule file: 120), element symbols 2,
 * element names 20; all blank-padded, no terminating NUL (NORVIK_FILE_NAME_LENGTH,
 * NORVIK_KEYWORD_LENGTH, NORVIK_NAME_LENGTH, NORVIK_SYMBOL_LENGTH of norvik/common.h). */
#ifndef NORVIK_SETUP_H
#define NORVIK_SETUP_H

#include "norvik/export.h"

NORVIK_EXTERN_C_BEGIN

/* The arguments that SETUP_HF and SETUP_KS share: the first four (maxatom, maxorb,
 * molfile, parfile) and the last twenty, from the theory keyword on (SETUP_HF's
 * 19-38, SETUP_KS's 28-47). */
#define NORVIK_SETUP_FILE_ARGS \
  const norvik_int *maxatom, const norvik_int *maxorb, const char *molfile, const char *parfile
#define NORVIK_SETUP_MOLECULE_ARGS                                                               \
  char *theory, char *text4, char *text6, norvik_int *int6, norvik_int *int8, norvik_int *int10, \
      char *text12, char *text14, char *text18, norvik_int *charge, norvik_int *multiplicity,    \
      norvik_int *nalpha, norvik_int *nbeta, norvik_int *norb, norvik_int *nshort,               \
      norvik_int *natom, norvik_int *nghost, norvik_int *zat, norvik_int *zel, double *pos

/* Reads the molecule file and (unless its name is blank) the SCF-parameter file
 * of a Hartree-Fock job.  38 arguments:
 *  1 maxatom      in   capacity of the atom arrays; the file must hold fewer atoms
 *  2 maxorb       in   most orbitals the host keeps per spin
 *  3 molfile      in   molecule file name (120)
 *  4 parfile      in   SCF-parameter file name (120), blank = keep arguments 5-18
 *  5-18           in/out SCF settings, parameter records 2, 4, 6 (atom, molecule),
 *                 8 (atom, molecule), 10 (atom, molecule), 12 (atom, molecule),
 *                 14, 16, 18, 20; a null value in the file keeps the host's value
 *  19 theory      out  molecule record 2 (10)
 *  20             out  record 4 (20)
 *  21, 22         out  record 6: text (20) and integer
 *  23, 24         out  records 8 and 10: integers
 *  25             out  record 12 (120)
 *  26             out  record 14 (20)
 *  27             out  record 18 (20)
 *  28 charge, 29 multiplicity                          out
 *  30 alpha electrons, 31 beta electrons               out
 *  32 orbitals kept = min(alpha + 2, maxorb), 33 shortfall = max(alpha + 2 - maxorb, 0)
 *  34 atoms read (ghosts included), 35 ghost atoms     out
 *  36 zat(maxatom) nuclear charge per atom (0 for a ghost)            out
 *  37 zel(maxatom) element number per atom (a ghost keeps its element) out
 *  38 pos(3, maxatom) positions in angstrom, x y z per atom, column-major out */
NORVIK_API void SETUP_HF(NORVIK_SETUP_FILE_ARGS, double* value2, norvik_int* value4,
                         norvik_int* niter_atom, norvik_int* niter_mole, double* damp_atom,
                         double* damp_mole, double* thr_ene_atom, double* thr_ene_mole,
                         double* thr_rms_atom, double* thr_rms_mole, double* value14,
                         double* value16, double* value18, double* value20,
                         NORVIK_SETUP_MOLECULE_ARGS);

/* The same for a Kohn-Sham job.  47 arguments: 1-4 as SETUP_HF; 5 double
 * (record 2); 6 integer (record 4); 7-10 SCF iterations, 11-14 damping factors,
 * 15-18 energy thresholds [eV], 19-22 RMS thresholds, each four in the order
 * HF-stage atom, KS-stage atom, HF-stage molecule, KS-stage molecule; 23-25 one
 * double each (records 14, 16, 18); 26-27 the two doubles of record 20; 28-36 the
 * molecule-file settings as SETUP_HF's 19-27; 37 charge, 38 multiplicity, 39-40
 * alpha and beta electrons, 41 orbitals kept, 42 shortfall, 43 atoms, 44 ghosts,
 * 45 zat, 46 zel, 47 pos.  When the theory keyword is HF, MP2, RPA or TDA the
 * first and third iteration counts are preset to 48 before the parameter file is
 * read. */
NORVIK_API void SETUP_KS(NORVIK_SETUP_FILE_ARGS, double* value2, norvik_int* value4,
                         norvik_int* niter_hf_atom, norvik_int* niter_ks_atom,
                         norvik_int* niter_hf_mole, norvik_int* niter_ks_mole, double* damp_hf_atom,
                         double* damp_ks_atom, double* damp_hf_mole, double* damp_ks_mole,
                         double* thr_ene_hf_atom, double* thr_ene_ks_atom, double* thr_ene_hf_mole,
                         double* thr_ene_ks_mole, double* thr_rms_hf_atom, double* thr_rms_ks_atom,
                         double* thr_rms_hf_mole, double* thr_rms_ks_mole, double* value14,
                         double* value16, double* value18, double* value20a, double* value20b,
                         NORVIK_SETUP_MOLECULE_ARGS);

/* Element tables, Z = 1 (H) ... 54 (Xe); symbols are two characters,
 * blank-padded and case-sensitive ("H ", "He", "Cl"). */
NORVIK_API norvik_int SMB2CHG(const char* symbol);          /* returns Z */
NORVIK_API void CHG2SMB(char* symbol, const norvik_int* z); /* symbol out (2) */
NORVIK_API void SMB2NAME(const char* symbol, char* name);   /* name out (20) */
NORVIK_API double ATOMMASS(const norvik_int* z);            /* amu; 0 for Z = 0 */
NORVIK_API void HUNDSRULE(const norvik_int* z, norvik_int* multiplicity);

/* Alpha and beta electrons of zsum nuclear charge with the given charge and
 * multiplicity 2S+1; stops on an impossible combination. */
NORVIK_API void NELECTRON(const norvik_int* zsum, const norvik_int* charge,
                          const norvik_int* multiplicity, norvik_int* nalpha, norvik_int* nbeta);

/* zcp(natom): a copy of zat(natom) in which every atom but iatom (1-based) is 0. */
NORVIK_API void MAKEZATCP(const norvik_int* iatom, const norvik_int* natom, const norvik_int* zat,
                          norvik_int* zcp);

/* Start density of a free atom: checks the electron combination as NELECTRON
 * does, then fills rho(nbasis, nbasis, 2) (alpha block, then beta block). */
NORVIK_API void MAKEINIRHO(const norvik_int* zsum, const norvik_int* charge,
                           const norvik_int* multiplicity, const norvik_int* nbasis, double* rho);

NORVIK_EXTERN_C_END

#endif
