/* norvik: report (unit 8) and run-log (unit 9) sections (see norvik.h for the
 * convention).
 *
 * Every routine opens the file it is given (a 120-character blank-padded name,
 * always the last argument) for appending, writes its section and closes it
 * again, so that one report collects a whole job in the order of the calls.
 * Keywords: theory and functional names 10 characters, molecule and basis-set
 * names 20.  Positions pos(3, natom): angstrom, x y z per atom, column-major.
 * docs/report.md shows every section line by line. */
#ifndef NORVIK_REPORT_H
#define NORVIK_REPORT_H

#include "norvik/export.h"

NORVIK_EXTERN_C_BEGIN

/* Run log. */
NORVIK_API void WRITE_LOG_HEADA(const char* logfile);
NORVIK_API void WRITE_BLANKLINE(const char* logfile);
/* One SCF cycle line: emol the molecular energy [eV], dipole(3) [eA] (both with
 * the nuclear offsets already added), rmsd the RMS density change, comm2 the
 * squared norm of FPS-SPF [eV^2]. */
NORVIK_API void WRITE_LOG_HF(const norvik_int* iopt, const norvik_int* isrc, const norvik_int* iscf,
                             const double* emol, const double* dipole, const double* rmsd,
                             const double* comm2, const char* logfile);

/* The Kohn–Sham cycle line: WRITE_LOG_HF's format, emol the total energy (with
 * the exchange–correlation energy) plus the nuclear repulsion. */
NORVIK_API void WRITE_LOG_KS(const norvik_int* iopt, const norvik_int* isrc, const norvik_int* iscf,
                             const double* emol, const double* dipole, const double* rmsd,
                             const double* comm2, const char* logfile);

/* Report header sections, in the order a host usually writes them. */
NORVIK_API void WRITE_SHEBANG(const char* report);
NORVIK_API void WRITE_START(const char* report);
NORVIK_API void WRITE_CONST(const double* bohr_angstrom, const double* hartree_ev,
                            const char* report);
NORVIK_API void WRITE_THEORY(const char* theory, const char* report);
NORVIK_API void WRITE_MOLNAME(const char* molname, const char* report);
NORVIK_API void WRITE_MOLNAME_KS(const char* molname, const char* functional, const char* report);
NORVIK_API void WRITE_ATMNAME(const norvik_int* z, const char* report);
NORVIK_API void WRITE_ATMNAME_KS(const norvik_int* z, const char* functional, const char* report);
NORVIK_API void WRITE_BASIS(const char* basname, const char* report);
NORVIK_API void WRITE_NUMBERS(const norvik_int* nalpha, const norvik_int* nbeta,
                              const norvik_int* natom, const norvik_int* nghost,
                              const char* report);
NORVIK_API void WRITE_NUMBERS_KS(const norvik_int* nalpha, const norvik_int* nbeta,
                                 const norvik_int* natom, const norvik_int* nghost,
                                 const char* functional, const char* report);

/* SCF settings.  Thresholds: energy [eV], RMS density change. */
NORVIK_API void WRITE_SCF_ATOM(const norvik_int* niter, const double* damp, const double* thr_ene,
                               const double* thr_rms, const char* report);
NORVIK_API void WRITE_SCF_ATOM_KS(const norvik_int* niter_hf, const norvik_int* niter_ks,
                                  const double* damp_hf, const double* damp_ks,
                                  const double* thr_ene_hf, const double* thr_ene_ks,
                                  const double* thr_rms_hf, const double* thr_rms_ks,
                                  const char* report);
NORVIK_API void WRITE_SCF(const norvik_int* niter_atom, const norvik_int* niter_mole,
                          const double* damp_atom, const double* damp_mole,
                          const double* thr_ene_atom, const double* thr_ene_mole,
                          const double* thr_rms_atom, const double* thr_rms_mole,
                          const char* report);
/* Each group of four in the order HF atom, KS atom, HF molecule, KS molecule
 * (the order of SETUP_KS). */
NORVIK_API void WRITE_SCF_KS(const norvik_int* niter_hf_atom, const norvik_int* niter_ks_atom,
                             const norvik_int* niter_hf_mole, const norvik_int* niter_ks_mole,
                             const double* damp_hf_atom, const double* damp_ks_atom,
                             const double* damp_hf_mole, const double* damp_ks_mole,
                             const double* thr_ene_hf_atom, const double* thr_ene_ks_atom,
                             const double* thr_ene_hf_mole, const double* thr_ene_ks_mole,
                             const double* thr_rms_hf_atom, const double* thr_rms_ks_atom,
                             const double* thr_rms_hf_mole, const double* thr_rms_ks_mole,
                             const char* report);

/* Geometry.  zat: nuclear charges (0 for ghosts); zel: element numbers. */
NORVIK_API void WRITE_GEOMETRY(const norvik_int* natom, const double* pos, const norvik_int* zat,
                               const char* report);
NORVIK_API void WRITE_GEOMETRY_GHST(const norvik_int* natom, const double* pos,
                                    const norvik_int* zat, const norvik_int* zel,
                                    const char* report);
NORVIK_API void WRITE_COORDINATES(const norvik_int* natom, const double* pos, const norvik_int* zel,
                                  const norvik_int* zat, const char* report);
/* An XYZ block (count, title, one atom per line); WRITE_XYZL labels each atom
 * with its symbol and number ("O1", "H2").  title: 20 characters. */
NORVIK_API void WRITE_XYZ(const norvik_int* natom, const double* pos, const norvik_int* zel,
                          const char* title, const char* report);
NORVIK_API void WRITE_XYZL(const norvik_int* natom, const double* pos, const norvik_int* zel,
                           const char* title, const char* report);

/* Notes. */
NORVIK_API void WRITE_CAUTION(const char* report);
NORVIK_API void WRITE_INSUFFCIENTRAM_RPA(const double* vint_gb, const double* tdhf_gb,
                                         const char* report);
NORVIK_API void WRITE_INSUFFCIENTRAM_MP2(const double* mp2_gb, const char* report);
/* flag 1: in-core (stored integrals), 0: integral-direct. */
NORVIK_API void WRITE_INCORE(const norvik_int* flag, const norvik_int* nbasis,
                             const norvik_int* npair, const norvik_int* neffective_pair,
                             const double* vint_gb, const double* limit_gb, const char* report);

/* Progress line on standard output: text (40 characters, blank-padded) followed
 * by the local time as hh:mm:ss mm/dd. */
NORVIK_API void TIMESTAMP(const char* text);

NORVIK_EXTERN_C_END

#endif
