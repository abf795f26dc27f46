// The column-major shell arrays of the calling convention, as views over the
// caller's memory.  Per shell s (0-based here):
//   kind(s); lm(2, 7, s); nprim(s); nterm(7, s); lmn(3, 3, 7, s);
//   term_coef(3, 7, s); exponents(6, s); coef(6, 7, s).
// A null pointer leaves that array out (the per-atom routines write only a part).
#pragma once

#include "basis/basis_set.h"
#include "basis/library.h"

namespace norvik::basis {

// Angular arrays: (L, M), term counts, (l, m, n) triples, term coefficients, and
// the primitive count of each shell.
struct AngularArrays {
  int* lm = nullptr;
  int* nterm = nullptr;
  int* lmn = nullptr;
  double* term_coef = nullptr;
  int* nprim = nullptr;
};

// Radial arrays: exponents and contraction coefficients.
struct RadialArrays {
  double* exponents = nullptr;
  double* coef = nullptr;
};

// Writes shell `s` (all 7 function slots, 6 primitives).
void store_angular(const Shell& shell, const AngularArrays& out, int s);
void store_radial(const Shell& shell, const RadialArrays& out, int s);

// The per-atom arrays of MAKELMLMN / MAKEKLMG: all nine shells.
void store_atom_angular(const AtomShells& shells, const AngularArrays& out);
void store_atom_radial(const AtomShells& shells, const RadialArrays& out);

// The output arrays of MAKEBASIS: the molecule's shells, then zeros up to
// nshell_total.  Throws when the basis has more shells than nshell_total.
struct BasisArrays {
  int nshell_total = 0;
  int* kind = nullptr;
  AngularArrays angular;
  RadialArrays radial;
};
void store_basis(const BasisSet& basis, const BasisArrays& out);

}  // namespace norvik::basis
