/* norvik: building blocks of the geometry optimiser (see norvik.h for the
 * convention).
 *
 * Vectors over the nuclei, g (gradient), gold (previous gradient), d (search
 * direction), x (positions) and saved, are real arrays (3, natom),
 * column-major, one column of x y z per atom: positions in angstrom,
 * gradients in eV/A.  Directions are not normalised. */
#ifndef NORVIK_OPTIMIZER_H
#define NORVIK_OPTIMIZER_H

#include "norvik/export.h"

NORVIK_EXTERN_C_BEGIN

/* New search direction d from g, gold and the previous d.  Each conjugate rule
 * is d = -g + beta*d, dot products over all 3*natom components; when the
 * denominator of beta is exactly 0 (gold = 0 before the first gradient) the
 * result is d = -g.
 *   STEEPESTDESCENT      d = -g (gold not read)
 *   POLAKRIBIERE         beta = g.(g - gold) / (gold.gold)
 *   POLAKRIBIERE_WRESET  beta = max(0, g.(g - gold) / (gold.gold))
 *   FLETCHERREEVES       beta = (g.g) / (gold.gold)
 *   HESTENESSTIEFEL      beta = g.(g - gold) / ((g - gold).d)
 *   DAIYUAN              beta = (g.g) / ((g - gold).d) */
NORVIK_API void STEEPESTDESCENT(const norvik_int* natom, const double* g, const double* gold,
                                double* d);
NORVIK_API void POLAKRIBIERE(const norvik_int* natom, const double* g, const double* gold,
                             double* d);
NORVIK_API void POLAKRIBIERE_WRESET(const norvik_int* natom, const double* g, const double* gold,
                                    double* d);
NORVIK_API void FLETCHERREEVES(const norvik_int* natom, const double* g, const double* gold,
                               double* d);
NORVIK_API void HESTENESSTIEFEL(const norvik_int* natom, const double* g, const double* gold,
                                double* d);
NORVIK_API void DAIYUAN(const norvik_int* natom, const double* g, const double* gold, double* d);

/* One step along d: saved = x, then x = x + step*d (step in A^2/eV). */
NORVIK_API void DESCENT(const norvik_int* natom, const double* d, const double* step, double* saved,
                        double* x);

/* The parabola through the energies e0, ea, eb [eV] at the distances 0, s and
 * 2s along a direction.  With c = 2*eb + 2*e0 - 4*ea above 4*threshold:
 * extra = max(0, s*(3*e0 + eb - 4*ea)/c - 2*s), the distance from the point
 * at 2s to the vertex, and fitted = 1.  Otherwise fitted = 0 and extra is the
 * plain probe step of the exploration that calls the fit after its point 2,
 * 4, 8 or 16: s, s/2, s/4 and s/8 respectively. */
NORVIK_API void FINDQUADMIN3RD(const double* threshold, const double* s, const double* e0,
                               const double* ea, const double* eb, double* extra,
                               norvik_bool* fitted);
NORVIK_API void FINDQUADMIN5TH(const double* threshold, const double* s, const double* e0,
                               const double* ea, const double* eb, double* extra,
                               norvik_bool* fitted);
NORVIK_API void FINDQUADMIN9TH(const double* threshold, const double* s, const double* e0,
                               const double* ea, const double* eb, double* extra,
                               norvik_bool* fitted);
NORVIK_API void FINDQUADMIN17TH(const double* threshold, const double* s, const double* e0,
                                const double* ea, const double* eb, double* extra,
                                norvik_bool* fitted);

NORVIK_EXTERN_C_END

#endif
