/* norvik: exported routines of the scf subsystem (see norvik.h for the convention). */
#ifndef NORVIK_SCF_H
#define NORVIK_SCF_H

#include "norvik/export.h"

NORVIK_EXTERN_C_BEGIN

NORVIK_EXTERN_C_END

#endif
