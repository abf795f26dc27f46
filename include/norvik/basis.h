/* norvik: exported routines of the basis subsystem (see norvik.h for the convention). */
#ifndef NORVIK_BASIS_H
#define NORVIK_BASIS_H

#include "norvik/export.h"

NORVIK_EXTERN_C_BEGIN

NORVIK_EXTERN_C_END

#endif
