/* A whole Hartree-Fock single point from a host written in C against the public
 * header alone: job setup, free atoms, the single point and the result sections
 * of the report.  docs/scf.md shows the same sequence.
 *
 *   single_point_example MOLECULE_FILE REPORT_FILE EXPECTED_ENERGY_HARTREE
 *
 * Exits 0 when the molecular energy agrees with the expected value to 1e-6
 * hartree. */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "norvik.h"

enum { MAXATOM = 100, MAXORB = 512 };

/* A blank-padded copy of text in a buffer of n characters (no NUL needed). */
static void pad(char* buffer, int n, const char* text) {
  size_t len = strlen(text);
  if (len > (size_t)n) len = (size_t)n;
  memset(buffer, ' ', (size_t)n);
  memcpy(buffer, text, len);
}

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  char molfile[120], parfile[120], report[120];
  pad(molfile, 120, argv[1]);
  pad(parfile, 120, "");
  pad(report, 120, argv[2]);
  const double expected = atof(argv[3]);

  /* 1. Job setup: settings (the host's defaults survive a blank parameter file),
   *    electron counts and atoms. */
  const norvik_int maxatom = MAXATOM, maxorb = MAXORB;
  double ram = 4.0, value14 = 1e-10, value16 = 0, value18 = 0, value20 = 0;
  norvik_int threads = 0, niter[2] = {64, 128};
  double damp[2] = {0.5, 0.5}, thr_ene[2] = {1e-7, 1e-8}, thr_rms[2] = {1e-7, 1e-8};
  char theory[10], text4[20], text6[20], text12[120], text14[20], text18[20];
  norvik_int int6, int8, int10, charge, mult, nalpha, nbeta, norb, nshort, natom, nghost;
  static norvik_int zat[MAXATOM], zel[MAXATOM];
  static double pos[3 * MAXATOM];
  SETUP_HF(&maxatom, &maxorb, molfile, parfile, &ram, &threads, &niter[0], &niter[1], &damp[0],
           &damp[1], &thr_ene[0], &thr_ene[1], &thr_rms[0], &thr_rms[1], &value14, &value16,
           &value18, &value20, theory, text4, text6, &int6, &int8, &int10, text12, text14, text18,
           &charge, &mult, &nalpha, &nbeta, &norb, &nshort, &natom, &nghost, zat, zel, pos);
  const char* basis = text4; /* molecule record 4: the basis-set name (20 characters) */

  /* 2. The basis size, from the per-atom shell layout. */
  norvik_int nbasis = 0;
  for (int a = 0; a < natom; ++a) {
    norvik_int nshell, kind[9], nfunc;
    ZATMNSHL(basis, &zel[a], &nshell, kind, &nfunc);
    nbasis += nfunc;
  }
  const size_t nn = (size_t)nbasis * (size_t)nbasis;
  double* atomrho = calloc(2 * nn, sizeof(double));
  double* eatom = calloc((size_t)natom, sizeof(double));
  double* rho = calloc(2 * nn, sizeof(double));
  double* orbitals = calloc(2 * (nn + (size_t)nbasis), sizeof(double));
  if (!atomrho || !eatom || !rho || !orbitals) return 3;

  /* 3. Free atoms (atom settings), then the single point (molecule settings). */
  const double orth = 1e-8, screen = 0.0;
  const double grid_radius = 0.0;
  const norvik_int grid_level = 0;
  ATOMS(basis, &natom, zat, zel, &niter[0], &damp[0], &thr_ene[0], &thr_rms[0], &ram, &orth,
        &nbasis, eatom, atomrho, "HF        ", &grid_radius, &grid_level);
  const norvik_int istart = 1;
  double energy, dipole[3], de_final;
  norvik_int northo, incore;
  HF_1POINT(basis, &natom, zat, zel, pos, &nalpha, &nbeta, &niter[1], &damp[1], &thr_ene[1],
            &thr_rms[1], &ram, &screen, &orth, &istart, atomrho, &nbasis, rho, orbitals, &energy,
            dipole, &de_final, &northo, &incore);

  /* 4. The result sections of the report. */
  double enuc, eatoms = 0.0;
  NUCLEARREP(&natom, zat, pos, &enuc);
  for (int a = 0; a < natom; ++a) eatoms += eatom[a];
  const double eelec = energy - enuc;
  WRITE_ENERGY_ATOM(&natom, zat, zel, eatom, report);
  WRITE_ENERGY_MOL(&eelec, &enuc, &eatoms, report);
  WRITE_EMOL(&energy, &de_final, report);
  WRITE_DEPEND(&nbasis, &northo, &orth, report);
  WRITE_LEVELS(&nbasis, &norb, &nalpha, &nbeta, orbitals, report);
  WRITE_OCCUPY(&nbasis, &northo, &nalpha, &nbeta, orbitals, report);
  WRITE_EDM(dipole, report);

  const double hartree = 27.2113850785;
  printf("E = %.10f hartree, dipole = (%.6f, %.6f, %.6f) eA, %s\n", energy / hartree, dipole[0],
         dipole[1], dipole[2], incore ? "in-core" : "integral-direct");
  free(atomrho);
  free(eatom);
  free(rho);
  free(orbitals);
  return fabs(energy / hartree - expected) < 1e-6 ? 0 : 1;
}
