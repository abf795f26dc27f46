/* norvik: exported routines of the integrals subsystem (see norvik.h for the convention). */
#ifndef NORVIK_INTEGRALS_RYS_H
#define NORVIK_INTEGRALS_RYS_H

#include "norvik/export.h"

NORVIK_EXTERN_C_BEGIN

NORVIK_EXTERN_C_END

#endif
