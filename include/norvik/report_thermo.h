/* norvik: report sections of the thermochemistry (see norvik.h and
 * norvik/report.h for the convention, norvik/thermo.h for the units and the
 * arguments linear, natom, eigenvalues(3N) and scale).  report: 120-character
 * blank-padded name.  docs/report.md shows every section line by line. */
#ifndef NORVIK_REPORT_THERMO_H
#define NORVIK_REPORT_THERMO_H

#include "norvik/export.h"

NORVIK_EXTERN_C_BEGIN

/* The principal moments of inertia inertia(3), eV*A^2. */
NORVIK_API void WRITE_INERTIA(const double* inertia, const char* report);
/* Whether the molecule is linear (linear = 1) and its rotational symmetry number. */
NORVIK_API void WRITE_INERTIAL(const norvik_int* linear, const norvik_int* sigma,
                               const char* report);
/* hbar*omega [eV] and hbar*omega/kB [K] of every vibrational mode. */
NORVIK_API void WRITE_VIBTEMP(const norvik_int* linear, const norvik_int* natom,
                              const double* eigenvalues, const double* scale, const char* report);
/* The harmonic zero-point energy of the modes and emol [eV] plus it. */
NORVIK_API void WRITE_ENERGY_ZPE(const double* emol, const norvik_int* linear,
                                 const norvik_int* natom, const double* eigenvalues,
                                 const double* scale, const char* report);
/* The thermal properties at 298.15 K and 101.325 kPa from ENTROPY's entropy(3)
 * and THERMALENERGY's energy(4) and heat_capacity(4): thermal energies,
 * entropies, Cv and Cp, U = emol + ZPE + thermal energy, H, F, G, and the
 * speed of sound of the ideal gas of total rest energy mass [eV]. */
NORVIK_API void WRITE_THERMAL(const norvik_int* linear, const norvik_int* natom,
                              const double* eigenvalues, const double* scale, const double* emol,
                              const double* mass, const double* entropy, const double* energy,
                              const double* heat_capacity, const char* report);

NORVIK_EXTERN_C_END

#endif
