/* norvik: the exported routines of the library.
 *
 * Calling convention of every routine: all arguments by reference; integers are
 * 32-bit signed (norvik_int), reals are IEEE doubles, flags are 32-bit
 * (norvik_bool); arrays are dense and column-major.  Text arguments are pointers
 * to fixed-length blank-padded buffers with no length argument: a file name is
 * 120 characters, keywords 10 or 20 as each declaration says.  A fatal condition
 * prints its message on standard output and ends the process with exit status 1;
 * no routine returns an error code.  docs/abi.md settles every argument list. */
#ifndef NORVIK_H
#define NORVIK_H

#include "norvik/basis.h"
#include "norvik/common.h"
#include "norvik/export.h"
#include "norvik/functionals.h"
#include "norvik/grid.h"
#include "norvik/integrals_one.h"
#include "norvik/integrals_rys.h"
#include "norvik/integrals_two.h"
#include "norvik/lebedev.h"
#include "norvik/linalg.h"
#include "norvik/memory.h"
#include "norvik/optimizer.h"
#include "norvik/properties.h"
#include "norvik/report.h"
#include "norvik/report_bonds.h"
#include "norvik/report_geometry.h"
#include "norvik/report_thermo.h"
#include "norvik/scf.h"
#include "norvik/setup.h"
#include "norvik/templates.h"
#include "norvik/thermo.h"
#include "norvik/vibrations.h"
#include "norvik/xc.h"

#endif
