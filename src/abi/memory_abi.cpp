// Exported memory estimates; none of them can fail.
#include "linalg/memory_estimates.h"
#include "norvik/memory.h"

namespace memory = norvik::memory;

extern "C" NORVIK_API double RAMVINT(const norvik_int* npair) {
  return memory::integral_store_gb(*npair);
}
extern "C" NORVIK_API double RAMTDA(const norvik_int* n) {
  return memory::tda_gb(*n);
}
extern "C" NORVIK_API double RAMRPA(const norvik_int* n) {
  return memory::rpa_gb(*n);
}
extern "C" NORVIK_API double RAMMP2(const norvik_int* nbasis) {
  return memory::mp2_gb(*nbasis);
}
extern "C" NORVIK_API double RAMKOHNSHAM(const norvik_int* npoint, const norvik_int* nbasis) {
  return memory::kohn_sham_grid_gb(*npoint, *nbasis);
}

extern "C" NORVIK_API void INCORE01(const norvik_int* npair, const double* limit_gb,
                                    norvik_int* flag) {
  *flag = memory::store_fits(*npair, *limit_gb) ? 1 : 0;
}
extern "C" NORVIK_API void MP2RAM01(const norvik_int* nbasis, const double* limit_gb,
                                    norvik_int* flag) {
  *flag = memory::mp2_fits(*nbasis, *limit_gb) ? 1 : 0;
}
extern "C" NORVIK_API void TDARAM01(const norvik_int* npair, const norvik_int* n,
                                    const double* limit_gb, norvik_int* flag) {
  *flag = memory::tda_fits(*npair, *n, *limit_gb) ? 1 : 0;
}
extern "C" NORVIK_API void RPARAM01(const norvik_int* npair, const norvik_int* n,
                                    const double* limit_gb, norvik_int* flag) {
  *flag = memory::rpa_fits(*npair, *n, *limit_gb) ? 1 : 0;
}
