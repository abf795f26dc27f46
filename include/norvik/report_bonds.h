/* norvik: the report's bond tables of the built-in molecule templates (see
 * norvik.h for the convention and norvik/report.h for the report files).
 *
 * Each routine appends one section to the report: a "#" line, a title, then the
 * bond lengths [A] and angles [deg] of its template, measured on pos(3, natom)
 * (angstrom, the template's atom order) and labelled with the element symbols of
 * zat(natom) (atomic numbers, 0 for a bare ghost centre, written Bq) and the
 * atom numbers, as "r(O1-H2)".  natom must be the template's atom count,
 * otherwise the process ends with "Wrong number of atoms for the bond table
 * <name>." and the count.  docs/report.md shows every table. */
#ifndef NORVIK_REPORT_BONDS_H
#define NORVIK_REPORT_BONDS_H

#include "norvik/export.h"

NORVIK_EXTERN_C_BEGIN

/* The arguments of every bond table; report is the 120-character file name. */
#define NORVIK_BOND_TABLE_ARGS \
  const norvik_int *natom, const double *pos, const norvik_int *zat, const char *report

NORVIK_API void WRITE_BOND_TYPEH2(NORVIK_BOND_TABLE_ARGS);  /* any diatomic */
NORVIK_API void WRITE_BOND_TYPEH2O(NORVIK_BOND_TABLE_ARGS); /* the H2O template */
NORVIK_API void WRITE_BOND_TYPEH2O2(NORVIK_BOND_TABLE_ARGS);
NORVIK_API void WRITE_BOND_TYPEC2H2(NORVIK_BOND_TABLE_ARGS);
NORVIK_API void WRITE_BOND_TYPEC2H4(NORVIK_BOND_TABLE_ARGS);
NORVIK_API void WRITE_BOND_TYPEC2H6(NORVIK_BOND_TABLE_ARGS);
NORVIK_API void WRITE_BOND_TYPEB2H6(NORVIK_BOND_TABLE_ARGS);
NORVIK_API void WRITE_BOND_TYPECHCL3(NORVIK_BOND_TABLE_ARGS);
NORVIK_API void WRITE_BOND_TYPECOCL2(NORVIK_BOND_TABLE_ARGS); /* the COH2 template */
NORVIK_API void WRITE_BOND_TYPECOH2(NORVIK_BOND_TABLE_ARGS);
NORVIK_API void WRITE_BOND_TYPEN2O(NORVIK_BOND_TABLE_ARGS);
NORVIK_API void WRITE_BOND_TYPEPF5(NORVIK_BOND_TABLE_ARGS);

NORVIK_EXTERN_C_END

#endif
