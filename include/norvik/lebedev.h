/* norvik: Lebedev–Laikov angular quadrature (see norvik.h for the convention;
 * docs/lebedev.md for the orbit order and the tables).
 *
 * A rule of N points is four arrays of N doubles: x(N), y(N), z(N), the unit vector
 * of each point, and w(N), its weight.  The weights sum to 1: 4π Σ w(k) f(point k)
 * integrates f over the unit sphere.  Points come orbit by orbit in the published
 * order of each rule.  Rule indices k = 1 … 65 name the family by precision
 * (algebraic order) 2k + 1; 32 of them have a rule, of 6, 14, 26, 38, 50, 74, 86,
 * 110, 146, 170, 194, 230, 266, 302, 350, 434, 590, 770, 974, 1202, 1454, 1730,
 * 2030, 2354, 2702, 3074, 3470, 3890, 4334, 4802, 5294 or 5810 points.
 *
 * Every routine writes only into its arguments and may run concurrently. */
#ifndef NORVIK_LEBEDEV_H
#define NORVIK_LEBEDEV_H

#include "norvik/export.h"

NORVIK_EXTERN_C_BEGIN

/* The rule of n points: n (in); x, y, z, w (out, n each).  The 6-point rule has the
 * weight 1/6 exactly; the others are those of LDnnnn.  Any other n stops with the
 * lines " ", "LD_BY_ORDER - Fatal error!", "  Unexpected value of ORDER." (also a
 * count of the family without a rule, such as 386). */
NORVIK_API void LEBEDEV(const norvik_int* n, double* x, double* y, double* z, double* w);

/* The arguments of the fixed-size rules LDnnnn: x, y, z, w (out, nnnn each). */
#define NORVIK_LEBEDEV_RULE_ARGS double *x, double *y, double *z, double *w

/* The rule of nnnn points, orbit by orbit as published (LD0006 has the tabulated
 * weight 0.1666666666666667). */
NORVIK_API void LD0006(NORVIK_LEBEDEV_RULE_ARGS);
NORVIK_API void LD0014(NORVIK_LEBEDEV_RULE_ARGS);
NORVIK_API void LD0026(NORVIK_LEBEDEV_RULE_ARGS);
NORVIK_API void LD0038(NORVIK_LEBEDEV_RULE_ARGS);
NORVIK_API void LD0050(NORVIK_LEBEDEV_RULE_ARGS);
NORVIK_API void LD0074(NORVIK_LEBEDEV_RULE_ARGS);
NORVIK_API void LD0086(NORVIK_LEBEDEV_RULE_ARGS);
NORVIK_API void LD0110(NORVIK_LEBEDEV_RULE_ARGS);
NORVIK_API void LD0146(NORVIK_LEBEDEV_RULE_ARGS);
NORVIK_API void LD0170(NORVIK_LEBEDEV_RULE_ARGS);
NORVIK_API void LD0194(NORVIK_LEBEDEV_RULE_ARGS);
NORVIK_API void LD0230(NORVIK_LEBEDEV_RULE_ARGS);
NORVIK_API void LD0266(NORVIK_LEBEDEV_RULE_ARGS);
NORVIK_API void LD0302(NORVIK_LEBEDEV_RULE_ARGS);
NORVIK_API void LD0350(NORVIK_LEBEDEV_RULE_ARGS);
NORVIK_API void LD0434(NORVIK_LEBEDEV_RULE_ARGS);
NORVIK_API void LD0590(NORVIK_LEBEDEV_RULE_ARGS);
NORVIK_API void LD0770(NORVIK_LEBEDEV_RULE_ARGS);
NORVIK_API void LD0974(NORVIK_LEBEDEV_RULE_ARGS);
NORVIK_API void LD1202(NORVIK_LEBEDEV_RULE_ARGS);
NORVIK_API void LD1454(NORVIK_LEBEDEV_RULE_ARGS);
NORVIK_API void LD1730(NORVIK_LEBEDEV_RULE_ARGS);
NORVIK_API void LD2030(NORVIK_LEBEDEV_RULE_ARGS);
NORVIK_API void LD2354(NORVIK_LEBEDEV_RULE_ARGS);
NORVIK_API void LD2702(NORVIK_LEBEDEV_RULE_ARGS);
NORVIK_API void LD3074(NORVIK_LEBEDEV_RULE_ARGS);
NORVIK_API void LD3470(NORVIK_LEBEDEV_RULE_ARGS);
NORVIK_API void LD3890(NORVIK_LEBEDEV_RULE_ARGS);
NORVIK_API void LD4334(NORVIK_LEBEDEV_RULE_ARGS);
NORVIK_API void LD4802(NORVIK_LEBEDEV_RULE_ARGS);
NORVIK_API void LD5294(NORVIK_LEBEDEV_RULE_ARGS);
NORVIK_API void LD5810(NORVIK_LEBEDEV_RULE_ARGS);

/* One octahedral orbit.  code (in): 1 … 6.  n (in/out): increased by the number of
 * points written (6, 12, 8, 24, 24, 48 for codes 1 … 6).  a, b (in/out): the orbit's
 * parameters; codes 1, 2, 3 set a to 1, √(1/2), √(1/3) and ignore b; codes 4 and 5
 * read a and set b to √(1 − 2a²), resp. √(1 − a²); code 6 reads a and b and uses
 * c = √(1 − a² − b²).  v (in): the weight of every point.  x, y, z, w (out): the
 * points and weights, written from the first element of the arrays passed (pass
 * the arrays at the current position).  Point order (docs/lebedev.md lists every
 * orbit): the base points below in turn, each through its sign patterns with the
 * sign of its first nonzero component changing fastest, then the next, so code 1
 * gives (1,0,0), (−1,0,0), (0,1,0), (0,−1,0), (0,0,1), (0,0,−1):
 *   1: (a,0,0) (0,a,0) (0,0,a)         4: (a,a,b) (a,b,a) (b,a,a)
 *   2: (0,a,a) (a,0,a) (a,a,0)         5: (a,b,0) (b,a,0) (a,0,b) (b,0,a) (0,a,b) (0,b,a)
 *   3: (a,a,a)                         6: (a,b,c) (a,c,b) (b,a,c) (b,c,a) (c,a,b) (c,b,a)
 * A code outside 1 … 6 stops with " ", "GEN_OH - Fatal error!", "  Illegal value
 * of CODE.". */
NORVIK_API void GEN_OH(const norvik_int* code, norvik_int* n, double* a, double* b, const double* v,
                       double* x, double* y, double* z, double* w);

/* 1 if rule index `rule` has a rule, 0 if not, −1 if rule < 1 or rule > 65. */
NORVIK_API norvik_int AVAILABLE_TABLE(const norvik_int* rule);
/* Points of rule index 1 … 65, with or without a rule (ORDER_TABLE(16) = 386).
 * Outside, stops with " ", "ORDER_TABLE - Fatal error!" and "  RULE < 1." or
 * "  RULE_MAX < RULE.". */
NORVIK_API norvik_int ORDER_TABLE(const norvik_int* rule);
/* Precision 2·rule + 1 of rule index 1 … 65.  Outside, stops with " ",
 * "PRECISION_TABLE - Fatal error!" and "  RULE < 1." or "  RULE_MAX < RULE.". */
NORVIK_API norvik_int PRECISION_TABLE(const norvik_int* rule);

/* Polar angles of a unit vector (x, y, z) in degrees: t (out) = arccos(z);
 * p (out) = arccos(x/√(x² + y²)), arccos(x) when x² + y² = 0, negated when y < 0
 * (so p lies in [−180, 180]; the poles give p = 90). */
NORVIK_API void XYZ_TO_TP(const double* x, const double* y, const double* z, double* t, double* p);

NORVIK_EXTERN_C_END

#endif
