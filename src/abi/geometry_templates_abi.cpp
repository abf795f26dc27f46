// Exported molecule templates: the builders, the re-imposers and their helpers.
#include <span>
#include <vector>

#include "abi/abi_support.h"
#include "common/point_geometry.h"
#include "geometry/templates.h"
#include "norvik/templates.h"

namespace {

namespace geometry = norvik::geometry;
using geometry::Template;
using norvik::abi::count;
using norvik::abi::guarded;
using norvik::abi::guarded_value;
using norvik::abi::kNameLength;
using norvik::abi::text_in;

std::span<const int> charges(const norvik_int* natom, const norvik_int* zat) {
  return {zat, count(*natom)};
}

std::span<double> positions(const norvik_int* natom, double* pos) {
  return {pos, 3 * count(*natom)};
}

void put(Template t, const norvik_int* natom, const norvik_int* zat, std::vector<double> parameters,
         double* pos) {
  guarded([&] { geometry::put(t, charges(natom, zat), parameters, positions(natom, pos)); });
}

void reput(Template t, const norvik_int* natom, const norvik_int* zat, double* pos) {
  guarded([&] { geometry::reput(t, charges(natom, zat), positions(natom, pos)); });
}

norvik::points::Point point(const double* p) {
  return {p[0], p[1], p[2]};
}

}  // namespace

extern "C" {

// ---- builders -----------------------------------------------------------------------

NORVIK_API void PUTXY(const norvik_int* natom, const norvik_int* zat, const double* r,
                      double* pos) {
  put(Template::kXY, natom, zat, {*r}, pos);
}

NORVIK_API void PUTH2O(const norvik_int* natom, const norvik_int* zat, const double* r,
                       const double* theta, double* pos) {
  put(Template::kH2O, natom, zat, {*r, *theta}, pos);
}

NORVIK_API void PUTH3PLUS(const norvik_int* natom, const norvik_int* zat, const double* rhh,
                          double* pos) {
  put(Template::kH3Plus, natom, zat, {*rhh}, pos);
}

NORVIK_API void PUTNH3(const norvik_int* natom, const norvik_int* zat, const double* r,
                       const double* theta, double* pos) {
  put(Template::kNH3, natom, zat, {*r, *theta}, pos);
}

NORVIK_API void PUTCH4(const norvik_int* natom, const norvik_int* zat, const double* rch,
                       double* pos) {
  put(Template::kCH4, natom, zat, {*rch}, pos);
}

NORVIK_API void PUTC2H2(const norvik_int* natom, const norvik_int* zat, const double* rcc,
                        const double* rch, double* pos) {
  put(Template::kC2H2, natom, zat, {*rcc, *rch}, pos);
}

NORVIK_API void PUTC2H4(const norvik_int* natom, const norvik_int* zat, const double* rcc,
                        const double* rch, const double* hch, double* pos) {
  put(Template::kC2H4, natom, zat, {*rcc, *rch, *hch}, pos);
}

NORVIK_API void PUTC2H6(const norvik_int* natom, const norvik_int* zat, const double* rcc,
                        const double* rch, const double* hch, double* pos) {
  put(Template::kC2H6, natom, zat, {*rcc, *rch, *hch}, pos);
}

NORVIK_API void PUTC3H6(const norvik_int* natom, const norvik_int* zat, const double* rcc,
                        const double* rch, const double* hch, double* pos) {
  put(Template::kC3H6, natom, zat, {*rcc, *rch, *hch}, pos);
}

NORVIK_API void PUTC6H6(const norvik_int* natom, const norvik_int* zat, const double* rcc,
                        const double* rch, double* pos) {
  put(Template::kC6H6, natom, zat, {*rcc, *rch}, pos);
}

NORVIK_API void PUTB2H6(const norvik_int* natom, const norvik_int* zat, const double* rbb,
                        const double* rbhb, const double* rbht, const double* htbht, double* pos) {
  put(Template::kB2H6, natom, zat, {*rbb, *rbhb, *rbht, *htbht}, pos);
}

NORVIK_API void PUTCOH2(const norvik_int* natom, const norvik_int* zat, const double* rco,
                        const double* rch, const double* hch, double* pos) {
  put(Template::kCOH2, natom, zat, {*rco, *rch, *hch}, pos);
}

NORVIK_API void PUTPF5(const norvik_int* natom, const norvik_int* zat, const double* raxial,
                       const double* requatorial, double* pos) {
  put(Template::kPF5, natom, zat, {*raxial, *requatorial}, pos);
}

NORVIK_API void PUTSF6(const norvik_int* natom, const norvik_int* zat, const double* rsf,
                       double* pos) {
  put(Template::kSF6, natom, zat, {*rsf}, pos);
}

NORVIK_API void PUTN2O(const norvik_int* natom, const norvik_int* zat, const double* rnn,
                       const double* rno, double* pos) {
  put(Template::kN2O, natom, zat, {*rnn, *rno}, pos);
}

NORVIK_API void PUTH2O2(const norvik_int* natom, const norvik_int* zat, const double* roo,
                        const double* roh, const double* ooh, const double* hooh, double* pos) {
  put(Template::kH2O2, natom, zat, {*roo, *roh, *ooh, *hooh}, pos);
}

NORVIK_API void PUTCHCL3(const norvik_int* natom, const norvik_int* zat, const double* rch,
                         const double* rccl, const double* clccl, double* pos) {
  put(Template::kCHCl3, natom, zat, {*rch, *rccl, *clccl}, pos);
}

NORVIK_API void PUTPROPANE(const norvik_int* natom, const norvik_int* zat, const double* rcc,
                           const double* ccc, const double* rch2, const double* hch,
                           const double* rch3, const double* hcc, double* pos) {
  put(Template::kPropane, natom, zat, {*rcc, *ccc, *rch2, *hch, *rch3, *hcc}, pos);
}

NORVIK_API void PUTGLYCINE(const norvik_int* natom, const norvik_int* zat, const double* param,
                           double* pos) {
  const auto n = geometry::info(Template::kGlycine).parameters.size();
  put(Template::kGlycine, natom, zat, std::vector<double>(param, param + n), pos);
}

// ---- re-imposers --------------------------------------------------------------------

NORVIK_API void REPUTXY(NORVIK_REPUT_ARGS) {
  reput(Template::kXY, natom, zat, pos);
}
NORVIK_API void REPUTH2O(NORVIK_REPUT_ARGS) {
  reput(Template::kH2O, natom, zat, pos);
}
NORVIK_API void REPUTH3PLUS(NORVIK_REPUT_ARGS) {
  reput(Template::kH3Plus, natom, zat, pos);
}
NORVIK_API void REPUTNH3(NORVIK_REPUT_ARGS) {
  reput(Template::kNH3, natom, zat, pos);
}
NORVIK_API void REPUTCH4(NORVIK_REPUT_ARGS) {
  reput(Template::kCH4, natom, zat, pos);
}
NORVIK_API void REPUTC2H2(NORVIK_REPUT_ARGS) {
  reput(Template::kC2H2, natom, zat, pos);
}
NORVIK_API void REPUTC2H4(NORVIK_REPUT_ARGS) {
  reput(Template::kC2H4, natom, zat, pos);
}
NORVIK_API void REPUTC2H6(NORVIK_REPUT_ARGS) {
  reput(Template::kC2H6, natom, zat, pos);
}
NORVIK_API void REPUTC3H6(NORVIK_REPUT_ARGS) {
  reput(Template::kC3H6, natom, zat, pos);
}
NORVIK_API void REPUTC6H6(NORVIK_REPUT_ARGS) {
  reput(Template::kC6H6, natom, zat, pos);
}
NORVIK_API void REPUTB2H6(NORVIK_REPUT_ARGS) {
  reput(Template::kB2H6, natom, zat, pos);
}
NORVIK_API void REPUTCOH2(NORVIK_REPUT_ARGS) {
  reput(Template::kCOH2, natom, zat, pos);
}
NORVIK_API void REPUTPF5(NORVIK_REPUT_ARGS) {
  reput(Template::kPF5, natom, zat, pos);
}
NORVIK_API void REPUTSF6(NORVIK_REPUT_ARGS) {
  reput(Template::kSF6, natom, zat, pos);
}
NORVIK_API void REPUTN2O(NORVIK_REPUT_ARGS) {
  reput(Template::kN2O, natom, zat, pos);
}
NORVIK_API void REPUTH2O2(NORVIK_REPUT_ARGS) {
  reput(Template::kH2O2, natom, zat, pos);
}
NORVIK_API void REPUTCHCL3(NORVIK_REPUT_ARGS) {
  reput(Template::kCHCl3, natom, zat, pos);
}
NORVIK_API void REPUTPROPANE(NORVIK_REPUT_ARGS) {
  reput(Template::kPropane, natom, zat, pos);
}
NORVIK_API void REPUTGLYCINE(NORVIK_REPUT_ARGS) {
  reput(Template::kGlycine, natom, zat, pos);
}

NORVIK_API void REPUT(const char* molname, NORVIK_REPUT_ARGS) {
  guarded([&] {
    geometry::reput(text_in(molname, kNameLength), charges(natom, zat), positions(natom, pos));
  });
}

NORVIK_API void REPUT_KNOWN(const char* molname, norvik_bool* known) {
  guarded([&] {
    *known = geometry::template_of_molecule(text_in(molname, kNameLength)).has_value() ? 1 : 0;
  });
}

NORVIK_API void REPUTMOL(NORVIK_REPUT_ARGS) {
  guarded([&] { geometry::reput_molecule(charges(natom, zat), positions(natom, pos)); });
}

NORVIK_API void CENTER_CHARGE(NORVIK_REPUT_ARGS) {
  guarded([&] { geometry::center_charge(charges(natom, zat), positions(natom, pos)); });
}

// ---- helpers ------------------------------------------------------------------------

NORVIK_API double DISTANCEAB(const double* a, const double* b) {
  return guarded_value<double>([&] { return norvik::points::distance(point(a), point(b)); });
}

NORVIK_API double ANGLEABC(const double* a, const double* b, const double* c) {
  return guarded_value<double>([&] { return norvik::points::angle(point(a), point(b), point(c)); });
}

}  // extern "C"
