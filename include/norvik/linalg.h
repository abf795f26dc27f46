/* norvik: exported routines of the linalg subsystem (see norvik.h for the convention). */
#ifndef NORVIK_LINALG_H
#define NORVIK_LINALG_H

#include "norvik/export.h"

NORVIK_EXTERN_C_BEGIN

NORVIK_EXTERN_C_END

#endif
