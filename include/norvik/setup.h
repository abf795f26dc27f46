/* norvik: exported routines of the setup subsystem (see norvik.h for the convention). */
#ifndef NORVIK_SETUP_H
#define NORVIK_SETUP_H

#include "norvik/export.h"

NORVIK_EXTERN_C_BEGIN

NORVIK_EXTERN_C_END

#endif
