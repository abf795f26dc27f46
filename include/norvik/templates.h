/* norvik: built-in molecule templates (see norvik.h for the convention).
 *
 * A template places the atoms of a named small molecule from a few internal
 * parameters: PUT<name> builds the positions from the parameters, REPUT<name>
 * measures the parameters on the current positions and rebuilds them through
 * PUT<name>, so that an optimised molecule keeps its symmetry from step to step.
 * Every template ends by moving the centre of nuclear charge to the origin.
 *
 * natom: the atom count, which must be the template's (otherwise the process
 * ends with "Wrong number of atoms for the molecule template <name>." and the
 * count).  zat(natom): the nuclear charge of each atom (0 for a ghost).
 * pos(3, natom): positions in angstrom, x y z per atom, column-major, in the
 * template's atom order (the order of the molecule file).  Bond lengths are in
 * angstrom, angles in degrees.  docs/templates.md gives each template's atom
 * order, orientation, point group and the atoms that REPUT<name> measures. */
#ifndef NORVIK_TEMPLATES_H
#define NORVIK_TEMPLATES_H

#include "norvik/export.h"

NORVIK_EXTERN_C_BEGIN

/* The arguments of every REPUT<name>, of REPUTMOL and of CENTER_CHARGE. */
#define NORVIK_REPUT_ARGS const norvik_int *natom, const norvik_int *zat, double *pos

/* Builders.  Atom orders: XY: the two atoms; H2O: the central atom first;
 * H3PLUS: H H H; NH3: N H H H; CH4: C H H H H; C2H2: C C H H; C2H4: C C H H H H;
 * C2H6: C C H H H H H H; C3H6: C C C then H H on each carbon; C6H6: six C then
 * six H in the same order; B2H6: B B, two bridging H, four terminal H; COH2: C O
 * X X; PF5: P, two axial F, three equatorial F; SF6: S then F on +x -x +y -y +z -z;
 * N2O: N N O; H2O2: O O H H; CHCL3: C H Cl Cl Cl; PROPANE: the central C, the two
 * terminal C, two H of CH2, three H of each methyl; GLYCINE: N, C alpha,
 * C carboxyl, O carbonyl, O hydroxyl, its H, two H on N, two H on C alpha. */
NORVIK_API void PUTXY(const norvik_int* natom, const norvik_int* zat, const double* r, double* pos);
/* Bent in the yz plane; within 1e-5 degrees of 180 straight along z. */
NORVIK_API void PUTH2O(const norvik_int* natom, const norvik_int* zat, const double* r,
                       const double* theta, double* pos);
NORVIK_API void PUTH3PLUS(const norvik_int* natom, const norvik_int* zat, const double* rhh,
                          double* pos);
/* theta: the H-N-H angle; 120 or more gives the flat molecule (CH3, BH3). */
NORVIK_API void PUTNH3(const norvik_int* natom, const norvik_int* zat, const double* r,
                       const double* theta, double* pos);
NORVIK_API void PUTCH4(const norvik_int* natom, const norvik_int* zat, const double* rch,
                       double* pos);
NORVIK_API void PUTC2H2(const norvik_int* natom, const norvik_int* zat, const double* rcc,
                        const double* rch, double* pos);
NORVIK_API void PUTC2H4(const norvik_int* natom, const norvik_int* zat, const double* rcc,
                        const double* rch, const double* hch, double* pos);
/* Staggered. */
NORVIK_API void PUTC2H6(const norvik_int* natom, const norvik_int* zat, const double* rcc,
                        const double* rch, const double* hch, double* pos);
NORVIK_API void PUTC3H6(const norvik_int* natom, const norvik_int* zat, const double* rcc,
                        const double* rch, const double* hch, double* pos);
NORVIK_API void PUTC6H6(const norvik_int* natom, const norvik_int* zat, const double* rcc,
                        const double* rch, double* pos);
/* rbhb: boron to bridging H; rbht, htbht: the terminal BH2 groups. */
NORVIK_API void PUTB2H6(const norvik_int* natom, const norvik_int* zat, const double* rbb,
                        const double* rbhb, const double* rbht, const double* htbht, double* pos);
/* Also COCl2: rch and hch are then the C-Cl bond and the Cl-C-Cl angle. */
NORVIK_API void PUTCOH2(const norvik_int* natom, const norvik_int* zat, const double* rco,
                        const double* rch, const double* hch, double* pos);
NORVIK_API void PUTPF5(const norvik_int* natom, const norvik_int* zat, const double* raxial,
                       const double* requatorial, double* pos);
NORVIK_API void PUTSF6(const norvik_int* natom, const norvik_int* zat, const double* rsf,
                       double* pos);
NORVIK_API void PUTN2O(const norvik_int* natom, const norvik_int* zat, const double* rnn,
                       const double* rno, double* pos);
/* hooh: the signed dihedral angle H-O-O-H. */
NORVIK_API void PUTH2O2(const norvik_int* natom, const norvik_int* zat, const double* roo,
                        const double* roh, const double* ooh, const double* hooh, double* pos);
NORVIK_API void PUTCHCL3(const norvik_int* natom, const norvik_int* zat, const double* rch,
                         const double* rccl, const double* clccl, double* pos);
/* rch2, hch: the central CH2 group; rch3, hcc: each methyl group (H-C-C angle). */
NORVIK_API void PUTPROPANE(const norvik_int* natom, const norvik_int* zat, const double* rcc,
                           const double* ccc, const double* rch2, const double* hch,
                           const double* rch3, const double* hcc, double* pos);
/* param(15), in Z-matrix order (atoms numbered as above: N1, C2 alpha, C3, O4
 * carbonyl, O5 hydroxyl, H6 on O5, H7 H8 on N, H9 H10 on C2):
 *   r(N1-C2); r(C2-C3), a(N1-C2-C3); r(C3-O4), a(C2-C3-O4); r(C3-O5), a(C2-C3-O5);
 *   r(O5-H6), a(C3-O5-H6); r(N-H), a(C2-N1-H), d(C3-C2-N1-H7);
 *   r(C2-H), a(H-C2-C3), d(O4-C3-C2-H9).
 * The heavy atoms and H6 lie in the yz plane (d(N1-C2-C3-O4) = 0,
 * d(N1-C2-C3-O5) = 180, d(C2-C3-O5-H6) = 180); H8 and H10 take the opposite
 * dihedral angles of H7 and H9. */
NORVIK_API void PUTGLYCINE(const norvik_int* natom, const norvik_int* zat, const double* param,
                           double* pos);

/* Re-imposers: each measures its template's parameters (docs/templates.md
 * names the atoms) and rebuilds the positions with its PUT routine. */
NORVIK_API void REPUTXY(NORVIK_REPUT_ARGS);
NORVIK_API void REPUTH2O(NORVIK_REPUT_ARGS);
NORVIK_API void REPUTH3PLUS(NORVIK_REPUT_ARGS);
NORVIK_API void REPUTNH3(NORVIK_REPUT_ARGS);
NORVIK_API void REPUTCH4(NORVIK_REPUT_ARGS);
NORVIK_API void REPUTC2H2(NORVIK_REPUT_ARGS);
NORVIK_API void REPUTC2H4(NORVIK_REPUT_ARGS);
NORVIK_API void REPUTC2H6(NORVIK_REPUT_ARGS);
NORVIK_API void REPUTC3H6(NORVIK_REPUT_ARGS);
NORVIK_API void REPUTC6H6(NORVIK_REPUT_ARGS);
NORVIK_API void REPUTB2H6(NORVIK_REPUT_ARGS);
NORVIK_API void REPUTCOH2(NORVIK_REPUT_ARGS);
NORVIK_API void REPUTPF5(NORVIK_REPUT_ARGS);
NORVIK_API void REPUTSF6(NORVIK_REPUT_ARGS);
NORVIK_API void REPUTN2O(NORVIK_REPUT_ARGS);
NORVIK_API void REPUTH2O2(NORVIK_REPUT_ARGS);
NORVIK_API void REPUTCHCL3(NORVIK_REPUT_ARGS);
NORVIK_API void REPUTPROPANE(NORVIK_REPUT_ARGS);
NORVIK_API void REPUTGLYCINE(NORVIK_REPUT_ARGS);

/* The re-imposer chosen by the molecule name (20 characters, blank-padded,
 * matched exactly and case-sensitively; docs/templates.md lists the names).  Any
 * other name ends the process with "Should not come here in reput.". */
NORVIK_API void REPUT(const char* molname, NORVIK_REPUT_ARGS);

/* The re-imposer of the free-molecule optimiser: the shape is kept, the centre
 * of nuclear charge is moved to the origin. */
/* Whether REPUT knows the molecule name (20 chars, matched as REPUT matches it):
 * known (out, flag).  A host sends other molecules to OPTIMIZE_MOLE. */
NORVIK_API void REPUT_KNOWN(const char* molname, norvik_bool* known);
NORVIK_API void REPUTMOL(NORVIK_REPUT_ARGS);

/* Moves the atoms so that sum(Z r) / sum(Z) lies at the origin; atoms stay
 * where they are when all charges are 0. */
NORVIK_API void CENTER_CHARGE(NORVIK_REPUT_ARGS);

/* The distance |a - b| of two points a(3), b(3) [angstrom]. */
NORVIK_API double DISTANCEAB(const double* a, const double* b);
/* The angle a-b-c at b of three points a(3), b(3), c(3), in degrees (0 to 180). */
NORVIK_API double ANGLEABC(const double* a, const double* b, const double* c);

NORVIK_EXTERN_C_END

#endif
