// Exported building blocks of the geometry optimiser: the search directions,
// the step along a direction and the parabola fits of the exploration.
#include <span>

#include "abi/abi_support.h"
#include "geometry/directions.h"
#include "norvik/optimizer.h"

namespace {

using norvik::abi::count;
using norvik::abi::guarded;
namespace geometry = norvik::geometry;

std::span<const double> in(const norvik_int* natom, const double* v) {
  return {v, 3 * count(*natom)};
}
std::span<double> out(const norvik_int* natom, double* v) {
  return {v, 3 * count(*natom)};
}

void direction(geometry::DirectionRule rule, const norvik_int* natom, const double* g,
               const double* gold, double* d) {
  guarded([&] { geometry::update_direction(rule, in(natom, g), in(natom, gold), out(natom, d)); });
}

using Fit = geometry::QuadraticFit (*)(double, double, double, double, double);

void quadratic(Fit fit, const double* threshold, const double* s, const double* e0,
               const double* ea, const double* eb, double* extra, norvik_bool* fitted) {
  guarded([&] {
    const geometry::QuadraticFit r = fit(*threshold, *s, *e0, *ea, *eb);
    *extra = r.extra;
    *fitted = r.fitted ? 1 : 0;
  });
}

}  // namespace

extern "C" {

NORVIK_API void STEEPESTDESCENT(const norvik_int* natom, const double* g, const double* gold,
                                double* d) {
  direction(geometry::DirectionRule::steepest_descent, natom, g, gold, d);
}

NORVIK_API void POLAKRIBIERE(const norvik_int* natom, const double* g, const double* gold,
                             double* d) {
  direction(geometry::DirectionRule::polak_ribiere, natom, g, gold, d);
}

NORVIK_API void POLAKRIBIERE_WRESET(const norvik_int* natom, const double* g, const double* gold,
                                    double* d) {
  direction(geometry::DirectionRule::polak_ribiere_reset, natom, g, gold, d);
}

NORVIK_API void FLETCHERREEVES(const norvik_int* natom, const double* g, const double* gold,
                               double* d) {
  direction(geometry::DirectionRule::fletcher_reeves, natom, g, gold, d);
}

NORVIK_API void HESTENESSTIEFEL(const norvik_int* natom, const double* g, const double* gold,
                                double* d) {
  direction(geometry::DirectionRule::hestenes_stiefel, natom, g, gold, d);
}

NORVIK_API void DAIYUAN(const norvik_int* natom, const double* g, const double* gold, double* d) {
  direction(geometry::DirectionRule::dai_yuan, natom, g, gold, d);
}

NORVIK_API void DESCENT(const norvik_int* natom, const double* d, const double* step, double* saved,
                        double* x) {
  guarded([&] { geometry::descent(in(natom, d), *step, out(natom, saved), out(natom, x)); });
}

NORVIK_API void FINDQUADMIN3RD(const double* threshold, const double* s, const double* e0,
                               const double* ea, const double* eb, double* extra,
                               norvik_bool* fitted) {
  quadratic(geometry::fit_after_point2, threshold, s, e0, ea, eb, extra, fitted);
}

NORVIK_API void FINDQUADMIN5TH(const double* threshold, const double* s, const double* e0,
                               const double* ea, const double* eb, double* extra,
                               norvik_bool* fitted) {
  quadratic(geometry::fit_after_point4, threshold, s, e0, ea, eb, extra, fitted);
}

NORVIK_API void FINDQUADMIN9TH(const double* threshold, const double* s, const double* e0,
                               const double* ea, const double* eb, double* extra,
                               norvik_bool* fitted) {
  quadratic(geometry::fit_after_point8, threshold, s, e0, ea, eb, extra, fitted);
}

NORVIK_API void FINDQUADMIN17TH(const double* threshold, const double* s, const double* e0,
                                const double* ea, const double* eb, double* extra,
                                norvik_bool* fitted) {
  quadratic(geometry::fit_after_point16, threshold, s, e0, ea, eb, extra, fitted);
}

}  // extern "C"
