/* norvik: exported routines of the report subsystem (see norvik.h for the convention). */
#ifndef NORVIK_REPORT_H
#define NORVIK_REPORT_H

#include "norvik/export.h"

NORVIK_EXTERN_C_BEGIN

NORVIK_EXTERN_C_END

#endif
