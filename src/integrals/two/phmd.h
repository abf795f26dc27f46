// One block of contracted electron-repulsion integrals over four Cartesian shells
// given as raw arrays (the calling form of the exported kernels), and the route
// selection between the closed-form engine and the Rys route.
#pragma once

#include <span>
#include <string_view>

namespace norvik::integrals::two {

// The ten arguments of a block call, viewed.  Arrays are column-major:
// exponents and coefficients (mxprsh, 4), centres (3, 4) in bohr; the
// coefficients already carry the primitive normalisation.  The block is
// ERI(ia, ib, ic, id), leading dimension maxdim in every index.
struct BlockRequest {
  double* eri = nullptr;
  const double* exponents = nullptr;
  const double* coefficients = nullptr;
  const double* centres = nullptr;
  const int* nprim = nullptr;
  const int* l = nullptr;
  int maxdim = 0;
  int mxprsh = 0;
  double cutoff = 0;
};

// Largest primitive count per shell that the kernels accept.
inline constexpr int kMaxPrimitivesPerShell = 30;

// Class code 27·La + 9·Lb + 3·Lc + Ld of a quartet with every L ≤ 2.
constexpr int class_code(int la, int lb, int lc, int ld) {
  return 27 * la + 9 * lb + 3 * lc + ld;
}

// The canonical class that a quartet's class is brought into (the first shell
// of each pair has the higher L, and the bra pair is the higher class).
int canonical_class(int code);

// Closed-form route: checks mxprsh, writes the class's entries of the block
// (other entries untouched).  Throws norvik::Error when mxprsh is too large.
void int2phmd(const BlockRequest& request);

// The same for one class entry point: the quartet must canonicalise to
// `canonical_code`, else norvik::Error naming the routine.
void int2phmd_class(const BlockRequest& request, int canonical_code, std::string_view routine);

// Route selection: clears the maxdim⁴ block, then the closed-form route for
// L ≤ 2, the Rys route for L ≤ 6, else prints the angular-momentum message on
// standard output and leaves the block zero.
void int2elec(const BlockRequest& request);

}  // namespace norvik::integrals::two
