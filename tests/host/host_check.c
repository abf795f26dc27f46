/* A host written in plain C from include/norvik.h alone: it runs one scenario
 * per invocation and prints what a host would see, so that the test driver can
 * compare standard output and the exit status byte for byte. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "norvik.h"

#define MAXATOM 64

static void pad(char* buffer, int length, const char* text) {
  int n = (int)strlen(text);
  if (n > length) n = length;
  memcpy(buffer, text, (size_t)n);
  memset(buffer + n, ' ', (size_t)(length - n));
}

struct hf_job {
  double v2, v14, v16, v18, v20, damp[2], ene[2], rms[2];
  norvik_int v4, niter[2], i6, i8, i10, charge, mult, na, nb, norb, nshort, natom, nghost;
  char theory[NORVIK_KEYWORD_LENGTH], basis[NORVIK_NAME_LENGTH], name[NORVIK_NAME_LENGTH];
  char t12[NORVIK_FILE_NAME_LENGTH], t14[NORVIK_NAME_LENGTH], t18[NORVIK_NAME_LENGTH];
  norvik_int zat[MAXATOM], zel[MAXATOM];
  double pos[3 * MAXATOM];
};

static void setup_hf(struct hf_job* j, const char* molfile, const char* parfile) {
  char mol[NORVIK_FILE_NAME_LENGTH], par[NORVIK_FILE_NAME_LENGTH];
  norvik_int maxatom = MAXATOM, maxorb = 100;
  pad(mol, NORVIK_FILE_NAME_LENGTH, molfile);
  pad(par, NORVIK_FILE_NAME_LENGTH,
      strcmp(parfile, "-") == 0 ? "" : parfile); /* "-": no parameter file */
  SETUP_HF(&maxatom, &maxorb, mol, par, &j->v2, &j->v4, &j->niter[0], &j->niter[1], &j->damp[0],
           &j->damp[1], &j->ene[0], &j->ene[1], &j->rms[0], &j->rms[1], &j->v14, &j->v16, &j->v18,
           &j->v20, j->theory, j->basis, j->name, &j->i6, &j->i8, &j->i10, j->t12, j->t14, j->t18,
           &j->charge, &j->mult, &j->na, &j->nb, &j->norb, &j->nshort, &j->natom, &j->nghost,
           j->zat, j->zel, j->pos);
}

/* Every header section of a Hartree-Fock job, then the report on stdout. */
static int header(const char* molfile, const char* parfile, const char* reportfile) {
  struct hf_job j;
  char report[NORVIK_FILE_NAME_LENGTH], title[NORVIK_NAME_LENGTH];
  double bohr = NORVIK_BOHR_ANGSTROM, hartree = NORVIK_HARTREE_EV, vint = 10.0, tdhf = 0.032,
         mp2 = 0.9;
  norvik_int z = 8, flag = 1, nbasis = 25, npair = 325, neff = 300, one = 1;
  double limit = 4.0, thr = 1e-5, d = 0.7;
  FILE* f;
  int c;
  memset(&j, 0, sizeof j);
  setup_hf(&j, molfile, parfile);
  pad(report, NORVIK_FILE_NAME_LENGTH, reportfile);
  remove(reportfile);
  WRITE_SHEBANG(report);
  WRITE_START(report);
  WRITE_CONST(&bohr, &hartree, report);
  WRITE_THEORY(j.theory, report);
  WRITE_MOLNAME(j.name, report);
  WRITE_ATMNAME(&z, report);
  WRITE_BASIS(j.basis, report);
  WRITE_NUMBERS(&j.na, &j.nb, &j.natom, &j.nghost, report);
  WRITE_GEOMETRY(&j.natom, j.pos, j.zat, report);
  WRITE_GEOMETRY_GHST(&j.natom, j.pos, j.zat, j.zel, report);
  WRITE_COORDINATES(&j.natom, j.pos, j.zel, j.zat, report);
  pad(title, NORVIK_NAME_LENGTH, "water");
  WRITE_XYZ(&j.natom, j.pos, j.zel, title, report);
  WRITE_XYZL(&j.natom, j.pos, j.zel, title, report);
  WRITE_SCF_ATOM(&one, &d, &thr, &thr, report);
  WRITE_SCF(&j.niter[0], &j.niter[1], &j.damp[0], &j.damp[1], &j.ene[0], &j.ene[1], &j.rms[0],
            &j.rms[1], report);
  WRITE_INCORE(&flag, &nbasis, &npair, &neff, &vint, &limit, report);
  WRITE_INSUFFCIENTRAM_RPA(&vint, &tdhf, report);
  WRITE_INSUFFCIENTRAM_MP2(&mp2, report);
  WRITE_CAUTION(report);
  printf("orbitals kept %d, shortfall %d, record 12 [%.*s]\n", (int)j.norb, (int)j.nshort, 20,
         j.t12);
  f = fopen(reportfile, "r");
  if (!f) return 3;
  while ((c = fgetc(f)) != EOF) putchar(c);
  fclose(f);
  return 0;
}

int main(int argc, char** argv) {
  struct hf_job j;
  norvik_int a = 0, b = 0;
  memset(&j, 0, sizeof j);
  if (argc < 2) return 2;
  if (strcmp(argv[1], "header") == 0 && argc == 5) return header(argv[2], argv[3], argv[4]);
  if (strcmp(argv[1], "setup") == 0 && argc == 4) {
    setup_hf(&j, argv[2], argv[3]);
    printf("setup returned\n");
    return 0;
  }
  if (strcmp(argv[1], "nelectron") == 0 && argc == 5) {
    norvik_int zsum = atoi(argv[2]), charge = atoi(argv[3]), mult = atoi(argv[4]);
    NELECTRON(&zsum, &charge, &mult, &a, &b);
    printf("%d %d\n", (int)a, (int)b);
    return 0;
  }
  if (strcmp(argv[1], "inirho") == 0 && argc == 5) {
    norvik_int zsum = atoi(argv[2]), charge = atoi(argv[3]), mult = atoi(argv[4]), n = 2;
    double rho[8];
    MAKEINIRHO(&zsum, &charge, &mult, &n, rho);
    return 0;
  }
  if (strcmp(argv[1], "symbol") == 0 && argc == 3) {
    char s[NORVIK_SYMBOL_LENGTH], name[NORVIK_NAME_LENGTH];
    pad(s, NORVIK_SYMBOL_LENGTH, argv[2]);
    printf("%d\n", (int)SMB2CHG(s));
    SMB2NAME(s, name);
    printf("%.*s|\n", NORVIK_NAME_LENGTH, name);
    return 0;
  }
  if (strcmp(argv[1], "mass") == 0 && argc == 3) {
    norvik_int z = atoi(argv[2]);
    printf("%.5f\n", ATOMMASS(&z));
    return 0;
  }
  return 2;
}
