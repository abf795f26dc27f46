/* norvik: report sections of the geometry optimiser (see norvik.h and
 * norvik/report.h for the convention).
 *
 * pos(3, natom): positions in angstrom; grad(3, natom): energy gradient in
 * eV/A; both column-major, x y z per atom.  zel: atomic numbers (0: a ghost
 * centre, written "Bq").  report, xyzfile: 120-character blank-padded names.
 * docs/report.md shows every section line by line. */
#ifndef NORVIK_REPORT_GEOMETRY_H
#define NORVIK_REPORT_GEOMETRY_H

#include "norvik/export.h"

NORVIK_EXTERN_C_BEGIN

/* The positions of optimisation cycle icycle. */
NORVIK_API void WRITE_POSI(const norvik_int* natom, const double* pos, const norvik_int* zel,
                           const norvik_int* icycle, const char* report);
/* The energy gradient, one line per atom. */
NORVIK_API void WRITE_GRAD(const norvik_int* natom, const double* grad, const norvik_int* zel,
                           const char* report);
/* Only the largest gradient component, its atom and axis (for large systems). */
NORVIK_API void WRITE_GRAD_WMAX(const norvik_int* natom, const double* grad, const norvik_int* zel,
                                const char* report);
/* The gradient summed over atoms: zero for an exact gradient. */
NORVIK_API void WRITE_GRAD_WTOT(const norvik_int* natom, const double* grad, const char* report);
/* Appends one frame (count line, comment with icycle and emol [eV], one
 * "symbol x y z" line per atom, no "#") to the plain .xyz file xyzfile, so that
 * the frames of successive calls play back as a trajectory.  A blank xyzfile
 * writes nothing. */
NORVIK_API void WRITE_XYZ_FRAME(const norvik_int* natom, const double* pos, const norvik_int* zel,
                                const norvik_int* icycle, const double* emol, const char* xyzfile);

NORVIK_EXTERN_C_END

#endif
