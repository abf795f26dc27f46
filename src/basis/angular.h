// The angular part of a shell: which Cartesian combination each function slot is.
//
// Every function is a real solid harmonic written as at most three Cartesian
// terms x^l y^m z^n with fixed coefficients.  The coefficients are chosen so that,
// with primitives normalised by N(α, L)² = 0.25^L · √(π³ / (8 α^(2L+3))) (the norm of
// x y z-type monomials such as xy or xyz), every function of the shell has unit
// norm: the s, p, d and f sets are orthonormal on one centre.  docs/basis.md
// derives the f set.
#pragma once

#include "basis/basis_set.h"

namespace norvik::basis {

// Fill the angular slots of one shell and clear the others (the contraction
// coefficients and exponents are left alone).
void fill_s(Shell& shell);   // (0, 0): 1
void fill_p(Shell& shell);   // (1, −1) y, (1, 0) z, (1, 1) x
void fill_sp(Shell& shell);  // s, then the p set
// The six d slots: the five real d functions m = −2 … 2, then the spherical
// companion (2, 10) ∝ x² + y² + z² that the Cartesian-d names use as sixth function.
void fill_d(Shell& shell);
void fill_f(Shell& shell);  // the seven real f functions m = −3 … 3

// The fill of a shell kind (1, 3, 4, 5, 6 or 7); 5 and 6 both fill the six d slots.
void fill_angular(int kind, Shell& shell);

// Number of function slots a kind's fill defines (the d fill defines 6 for kind 5).
int filled_slots(int kind);

}  // namespace norvik::basis
