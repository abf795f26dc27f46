// Exported routines of the Rys route: RYSQUAD, INT2RYS and its work routine
// INT2RYS2.  The tables RYSGRID1 ... RYSGRID13 are exported by the generated
// integrals/generated/rysgrid.cpp.
#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <vector>

#include "abi/abi_support.h"
#include "integrals/rys/rys_eri.h"
#include "integrals/rys/rys_quadrature.h"
#include "norvik/integrals_rys.h"

namespace rys = norvik::integrals::rys;
using norvik::abi::count;
using norvik::abi::guarded;
using norvik::abi::span_of;

namespace {

// The four shells of an INT2RYS argument list, after the limit checks.
std::array<rys::ShellData, 4> shells_of(const double* exps, const double* coefs,
                                        const double* centres, const norvik_int* nprim,
                                        const norvik_int* L, int mxprsh, int maxdim) {
  rys::check_route_limits(mxprsh, maxdim);
  std::array<rys::ShellData, 4> shells;
  for (int k = 0; k < 4; ++k) {
    const std::size_t column = static_cast<std::size_t>(k) * count(mxprsh);
    shells[k] = rys::ShellData{L[k],
                               std::clamp<int>(nprim[k], 0, std::max(mxprsh, 0)),
                               exps + column,
                               coefs + column,
                               {centres[3 * k], centres[3 * k + 1], centres[3 * k + 2]}};
  }
  return shells;
}

void clear_block(double* eri, int maxdim) {
  const std::size_t n = count(maxdim);
  std::fill(eri, eri + n * n * n * n, 0.0);
}

}  // namespace

extern "C" NORVIK_API void RYSQUAD(const double* X, double* t2, double* w, const norvik_int* n) {
  guarded([&] { rys::rys_roots(*X, *n, span_of(t2, *n), span_of(w, *n)); });
}

extern "C" NORVIK_API void INT2RYS(double* ERI, const double* exps, const double* coefs,
                                   const double* centres, const norvik_int* nprim,
                                   const norvik_int* L, const norvik_int* /*work*/,
                                   const norvik_int* maxdim, const norvik_int* mxprsh,
                                   const double* cutoff) {
  guarded([&] {
    const auto s = shells_of(exps, coefs, centres, nprim, L, *mxprsh, *maxdim);
    clear_block(ERI, *maxdim);
    std::vector<double> scratch(rys::rys_scratch_size(s[0], s[1], s[2], s[3]));
    rys::rys_eri(s[0], s[1], s[2], s[3], *cutoff, ERI, *maxdim, scratch);
  });
}

extern "C" NORVIK_API void INT2RYS2(double* ERI, const double* exps, const double* coefs,
                                    const double* centres, const norvik_int* nprim,
                                    const norvik_int* L, const norvik_int* /*work*/,
                                    const norvik_int* maxdim, const norvik_int* mxprsh,
                                    const double* cutoff, double* scratch,
                                    const norvik_int* lscratch) {
  guarded([&] {
    const auto s = shells_of(exps, coefs, centres, nprim, L, *mxprsh, *maxdim);
    if (*lscratch == -1) {
      scratch[0] = static_cast<double>(rys::rys_scratch_size(s[0], s[1], s[2], s[3]));
      return;
    }
    clear_block(ERI, *maxdim);
    rys::rys_eri(s[0], s[1], s[2], s[3], *cutoff, ERI, *maxdim, span_of(scratch, *lscratch));
  });
}
