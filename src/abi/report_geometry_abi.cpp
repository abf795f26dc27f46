// Exported report sections of the geometry optimiser.
#include <span>

#include "abi/abi_support.h"
#include "common/text_file.h"
#include "norvik/report_geometry.h"
#include "report/geometry_sections.h"

namespace {

using norvik::abi::append_to;
using norvik::abi::count;
using norvik::abi::guarded;
using norvik::abi::kFileNameLength;
using norvik::abi::text_in;
namespace report = norvik::report;

std::span<const double> vectors(const norvik_int* natom, const double* v) {
  return {v, 3 * count(*natom)};
}

std::span<const int> per_atom(const norvik_int* natom, const norvik_int* values) {
  return {values, count(*natom)};
}

}  // namespace

extern "C" {

NORVIK_API void WRITE_POSI(const norvik_int* natom, const double* pos, const norvik_int* zel,
                           const norvik_int* icycle, const char* r) {
  guarded([&] {
    append_to(r, report::positions_of_cycle(vectors(natom, pos), per_atom(natom, zel), *icycle));
  });
}

NORVIK_API void WRITE_GRAD(const norvik_int* natom, const double* grad, const norvik_int* zel,
                           const char* r) {
  guarded([&] { append_to(r, report::gradient(vectors(natom, grad), per_atom(natom, zel))); });
}

NORVIK_API void WRITE_GRAD_WMAX(const norvik_int* natom, const double* grad, const norvik_int* zel,
                                const char* r) {
  guarded(
      [&] { append_to(r, report::largest_gradient(vectors(natom, grad), per_atom(natom, zel))); });
}

NORVIK_API void WRITE_GRAD_WTOT(const norvik_int* natom, const double* grad, const char* r) {
  guarded([&] { append_to(r, report::gradient_sum(vectors(natom, grad))); });
}

NORVIK_API void WRITE_XYZ_FRAME(const norvik_int* natom, const double* pos, const norvik_int* zel,
                                const norvik_int* icycle, const double* emol, const char* xyzfile) {
  guarded([&] {
    if (norvik::io::trim_right(text_in(xyzfile, kFileNameLength)).empty()) return;
    append_to(xyzfile,
              report::xyz_frame(vectors(natom, pos), per_atom(natom, zel), *icycle, *emol));
  });
}

}  // extern "C"
