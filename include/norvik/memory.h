/* norvik: exported routines of the memory subsystem (see norvik.h for the convention). */
#ifndef NORVIK_MEMORY_H
#define NORVIK_MEMORY_H

#include "norvik/export.h"

NORVIK_EXTERN_C_BEGIN

NORVIK_EXTERN_C_END

#endif
