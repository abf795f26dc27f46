/* norvik: memory estimates and the in-core choice (see norvik.h for the convention).
 *
 * Sizes are gigabytes of 1e9 bytes, returned by value.  npair is a number of
 * basis-function pairs, nbasis of basis functions, npoint of grid points, n the
 * dimension of the excitation space of the excited-state methods (occupied times
 * virtual orbitals).  A decision routine writes 1 to its flag when the job fits
 * (limit >= estimate), else 0; a limit that is not a number gives 0. */
#ifndef NORVIK_MEMORY_H
#define NORVIK_MEMORY_H

#include "norvik/export.h"

NORVIK_EXTERN_C_BEGIN

NORVIK_API double RAMVINT(const norvik_int* npair); /* 4 npair^2 / 1e9 */
NORVIK_API double RAMTDA(const norvik_int* n);      /* 24 n^2 / 1e9 */
NORVIK_API double RAMRPA(const norvik_int* n);      /* 32 n^2 / 1e9 */
NORVIK_API double RAMMP2(const norvik_int* nbasis); /* 9 nbasis^4 / 1e9 */
NORVIK_API double RAMKOHNSHAM(const norvik_int* npoint,
                              const norvik_int* nbasis); /* 32 npoint nbasis / 1e9 */

NORVIK_API void INCORE01(const norvik_int* npair, const double* limit_gb, norvik_int* flag);
NORVIK_API void MP2RAM01(const norvik_int* nbasis, const double* limit_gb, norvik_int* flag);
NORVIK_API void TDARAM01(const norvik_int* npair, const norvik_int* n, const double* limit_gb,
                         norvik_int* flag);
NORVIK_API void RPARAM01(const norvik_int* npair, const norvik_int* n, const double* limit_gb,
                         norvik_int* flag);

NORVIK_EXTERN_C_END

#endif
