/* norvik: exported routines of the common subsystem (see norvik.h for the convention). */
#ifndef NORVIK_COMMON_H
#define NORVIK_COMMON_H

#include "norvik/export.h"

NORVIK_EXTERN_C_BEGIN

NORVIK_EXTERN_C_END

#endif
