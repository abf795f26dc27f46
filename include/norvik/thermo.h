/* norvik: ideal-gas thermochemistry at 298.15 K and 101.325 kPa, and the
 * rotational symmetry number (see norvik.h for the convention and
 * docs/thermochemistry.md for the formulas).
 *
 * Units: energies in eV; masses as rest energies (mass x c^2) in eV; moments of
 * inertia in eV*A^2 on the same footing; eigenvalues of the mass-weighted
 * Hessian in 1/A^2, so that a mode's quantum is hbar*c*sqrt(lambda).  The
 * eigenvalues are 3N values in ascending order; the vibrations are the ones
 * from 1-based index 7 (6 for a linear molecule) on, whatever the lower ones
 * hold.  A frequency scale factor of 0.0 means 1.0.  linear: 1 for a linear
 * molecule, anything else for a non-linear one.
 *
 * The symmetry-number routines carry their module's name.  Matrices are 3x3,
 * column-major.  labels: N element labels of label_length characters each,
 * blank-padded; label_length is the one argument passed by value (a size_t
 * after all the others, as a Fortran compiler passes a character length).
 * coords(3, N) are in the caller's unit; atoms match within 0.05 of it. */
#ifndef NORVIK_THERMO_H
#define NORVIK_THERMO_H

#include <stddef.h>

#include "norvik/export.h"

NORVIK_EXTERN_C_BEGIN

/* entropy(3): translational, rotational, vibrational entropy in eV/K per
 * molecule.  inertia(3): principal moments, ascending (a linear molecule uses
 * the second).  eigenvalues(3N). */
NORVIK_API void ENTROPY(const norvik_int* linear, const norvik_int* sigma, const norvik_int* natom,
                        const double* mass, const double* inertia, const double* eigenvalues,
                        const double* scale, double* entropy);
/* energy(4): thermal energies in eV, translational, rotational, vibrational
 * (without the zero-point energy) and kT (internal energy to enthalpy);
 * heat_capacity(4): the matching heat capacities in units of k_B, the fourth
 * being Cp - Cv = 1. */
NORVIK_API void THERMALENERGY(const norvik_int* linear, const norvik_int* natom,
                              const double* eigenvalues, const double* scale, double* energy,
                              double* heat_capacity);

/* sigma: the rotational symmetry number of the atoms (rotations of orders 2 to
 * 8 only). */
NORVIK_API void SYMMETRY_NUMBER_MP_calculate_sigma(const norvik_int* natom, const char* labels,
                                                   const double* coords, norvik_int* sigma,
                                                   size_t label_length);
/* matrix(3,3): the rotation by angle (radians) about axis(3), normalised here. */
NORVIK_API void SYMMETRY_NUMBER_MP_get_rot_mat(const double* axis, const double* angle,
                                               double* matrix);
/* Nonzero when the rotation by angle about axis (through the origin of coords)
 * maps every atom onto a distinct atom with the same label. */
NORVIK_API norvik_bool SYMMETRY_NUMBER_MP_is_symmetric(const norvik_int* natom, const char* labels,
                                                       const double* coords, const double* axis,
                                                       const double* angle, size_t label_length);
/* Nonzero when matrix(3,3) equals one of the nlist matrices list(3,3,nlist)
 * within 1e-4 in every element. */
NORVIK_API norvik_bool SYMMETRY_NUMBER_MP_is_duplicate(const double* matrix,
                                                       const norvik_int* nlist, const double* list);
/* eigenvalues(3) ascending and eigenvectors(3,3) (columns) of the symmetric
 * matrix a(3,3) by cyclic Jacobi rotations. */
NORVIK_API void SYMMETRY_NUMBER_MP_jacobi(const double* a, double* eigenvalues,
                                          double* eigenvectors);

NORVIK_EXTERN_C_END

#endif
