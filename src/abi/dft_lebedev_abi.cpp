// Exported Lebedev quadrature routines: the host's arrays as spans of the sizes the
// routine writes, then the core (dft/grid/lebedev.h).
#include "abi/abi_support.h"
#include "dft/grid/lebedev.h"
#include "norvik/lebedev.h"

namespace {

namespace dft = norvik::dft;
using norvik::abi::guarded;
using norvik::abi::guarded_value;
using norvik::abi::span_of;

dft::RuleArrays arrays(double* x, double* y, double* z, double* w, std::int64_t n) {
  return {span_of(x, n), span_of(y, n), span_of(z, n), span_of(w, n)};
}

void tabulated(int points, double* x, double* y, double* z, double* w) {
  guarded([&] { dft::tabulated_rule(points, arrays(x, y, z, w, points)); });
}

}  // namespace

extern "C" NORVIK_API void LEBEDEV(const norvik_int* n, double* x, double* y, double* z,
                                   double* w) {
  guarded([&] { dft::lebedev(*n, arrays(x, y, z, w, *n)); });
}

// LDnnnn: `digits` is the name's four digits, `points` the same number as a
// decimal literal (0974 would be an invalid octal one).
#define NORVIK_DEFINE_LEBEDEV_RULE(digits, points)                  \
  extern "C" NORVIK_API void LD##digits(NORVIK_LEBEDEV_RULE_ARGS) { \
    tabulated(points, x, y, z, w);                                  \
  }

NORVIK_DEFINE_LEBEDEV_RULE(0006, 6)
NORVIK_DEFINE_LEBEDEV_RULE(0014, 14)
NORVIK_DEFINE_LEBEDEV_RULE(0026, 26)
NORVIK_DEFINE_LEBEDEV_RULE(0038, 38)
NORVIK_DEFINE_LEBEDEV_RULE(0050, 50)
NORVIK_DEFINE_LEBEDEV_RULE(0074, 74)
NORVIK_DEFINE_LEBEDEV_RULE(0086, 86)
NORVIK_DEFINE_LEBEDEV_RULE(0110, 110)
NORVIK_DEFINE_LEBEDEV_RULE(0146, 146)
NORVIK_DEFINE_LEBEDEV_RULE(0170, 170)
NORVIK_DEFINE_LEBEDEV_RULE(0194, 194)
NORVIK_DEFINE_LEBEDEV_RULE(0230, 230)
NORVIK_DEFINE_LEBEDEV_RULE(0266, 266)
NORVIK_DEFINE_LEBEDEV_RULE(0302, 302)
NORVIK_DEFINE_LEBEDEV_RULE(0350, 350)
NORVIK_DEFINE_LEBEDEV_RULE(0434, 434)
NORVIK_DEFINE_LEBEDEV_RULE(0590, 590)
NORVIK_DEFINE_LEBEDEV_RULE(0770, 770)
NORVIK_DEFINE_LEBEDEV_RULE(0974, 974)
NORVIK_DEFINE_LEBEDEV_RULE(1202, 1202)
NORVIK_DEFINE_LEBEDEV_RULE(1454, 1454)
NORVIK_DEFINE_LEBEDEV_RULE(1730, 1730)
NORVIK_DEFINE_LEBEDEV_RULE(2030, 2030)
NORVIK_DEFINE_LEBEDEV_RULE(2354, 2354)
NORVIK_DEFINE_LEBEDEV_RULE(2702, 2702)
NORVIK_DEFINE_LEBEDEV_RULE(3074, 3074)
NORVIK_DEFINE_LEBEDEV_RULE(3470, 3470)
NORVIK_DEFINE_LEBEDEV_RULE(3890, 3890)
NORVIK_DEFINE_LEBEDEV_RULE(4334, 4334)
NORVIK_DEFINE_LEBEDEV_RULE(4802, 4802)
NORVIK_DEFINE_LEBEDEV_RULE(5294, 5294)
NORVIK_DEFINE_LEBEDEV_RULE(5810, 5810)

#undef NORVIK_DEFINE_LEBEDEV_RULE

extern "C" NORVIK_API void GEN_OH(const norvik_int* code, norvik_int* n, double* a, double* b,
                                  const double* v, double* x, double* y, double* z, double* w) {
  guarded([&] {
    const int written =
        dft::generate_orbit(*code, *a, *b, *v, arrays(x, y, z, w, dft::orbit_size(*code)));
    *n += written;
  });
}

extern "C" NORVIK_API norvik_int AVAILABLE_TABLE(const norvik_int* rule) {
  return dft::rule_available(*rule);
}

extern "C" NORVIK_API norvik_int ORDER_TABLE(const norvik_int* rule) {
  return guarded_value<norvik_int>([&] { return dft::rule_points(*rule); });
}

extern "C" NORVIK_API norvik_int PRECISION_TABLE(const norvik_int* rule) {
  return guarded_value<norvik_int>([&] { return dft::rule_precision(*rule); });
}

extern "C" NORVIK_API void XYZ_TO_TP(const double* x, const double* y, const double* z, double* t,
                                     double* p) {
  const dft::PolarAngles angles = dft::xyz_to_tp(*x, *y, *z);
  *t = angles.theta;
  *p = angles.phi;
}
