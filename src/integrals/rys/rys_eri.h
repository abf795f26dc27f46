// Electron-repulsion integrals over contracted Cartesian shells by Rys quadrature.
//
// The general route for shells up to angular momentum 6 (i).  For each
// surviving primitive quartet the Rys rule of order floor(sum L / 2) + 1 turns
// the integral into sums over roots of products of two-dimensional integrals
// in x, y and z, built by the Rys recurrences for [e0|f0] (all angular momentum
// on the centres A and C); these are contracted over the primitives first, and
// the horizontal recurrences that move angular momentum to B and D run once
// per contracted quartet.
//
// Conventions shared with the closed-form kernels:
// - components of a shell of angular momentum L in the order x^L, x^(L-1)y,
//   x^(L-1)z, ..., z^L (descending power of x, then of y);
// - unnormalised primitives x^l y^m z^n exp(-alpha r^2) about the shell centre,
//   one contraction coefficient per primitive for all components (the caller
//   folds the primitive normalisation into it);
// - a primitive pair (alpha, beta) of either side is skipped when
//   alpha*beta*|AB|^2 > cutoff*(alpha + beta).
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <vector>

namespace norvik::integrals::rys {

// Highest angular momentum of the Rys route (i shells).
inline constexpr int kMaxAngularMomentum = 6;

// 2 pi^(5/2), the prefactor of every primitive electron-repulsion integral.
inline constexpr double kTwoPiToFiveHalves = 34.98683665524973;

// Dimensions of the work arrays that INT2RYS is built for.
inline constexpr int kMaxPrimitivesPerShell = 30;
inline constexpr int kMaxBlockDimension = 28;

// Checks an INT2RYS argument list against those dimensions: throws norvik::Error
// with " Error! Parameter mxprsh2 in int2rys is small!" when mxprsh > 30, or
// " Error! Parameter maxdim2 in int2rys is small!" when maxdim > 28.
void check_route_limits(int mxprsh, int maxdim);

// Number of Cartesian components of a shell of angular momentum L.
constexpr int cartesian_count(int L) {
  return (L + 1) * (L + 2) / 2;
}

// Position of the component x^lx y^ly z^lz within its shell (lx + ly + lz = L).
constexpr int cartesian_index(int lx, int ly, int lz) {
  const int L = lx + ly + lz;
  return (L - lx) * (L - lx + 1) / 2 + lz;
}

// One contracted shell as the caller holds it; the arrays are only read.
struct ShellData {
  int L = 0;                       // angular momentum, 0 ... 6
  int nprim = 0;                   // number of primitives
  const double* exps = nullptr;    // nprim exponents, bohr^-2
  const double* coefs = nullptr;   // nprim coefficients (normalisation included)
  std::array<double, 3> centre{};  // bohr
};

// Length in doubles of the scratch that `rys_eri` needs for these shells.
std::size_t rys_scratch_size(const ShellData& a, const ShellData& b, const ShellData& c,
                             const ShellData& d);

// Computes the block (ab|cd) in hartree and stores (ia b| ... as
//   out[ia + ld*(ib + ld*(ic + ld*id))]
// for every component ia < cartesian_count(a.L), ... ; the other entries of
// `out` are left as they are.  A quartet with no surviving primitive pair gives
// zeros.  `scratch` must hold rys_scratch_size(a, b, c, d) doubles; it is
// overwritten.  Throws norvik::Error (with the message INT2RYS prints) when a
// shell's L is outside 0 ... 6, a shell does not fit in ld, or the scratch is
// too short.
void rys_eri(const ShellData& a, const ShellData& b, const ShellData& c, const ShellData& d,
             double cutoff, double* out, int ld, std::span<double> scratch);

// The same with a scratch buffer that lives as long as the engine and grows
// when a larger quartet needs it: one engine per thread, reused over quartets,
// allocates only a handful of times in a whole integral pass.
class RysEngine {
 public:
  void compute(const ShellData& a, const ShellData& b, const ShellData& c, const ShellData& d,
               double cutoff, double* out, int ld);

 private:
  std::vector<double> scratch_;
};

// The nuclear-derivative contraction of one quartet: with Γ a block over the
// Cartesian components in the layout of `rys_eri` (gamma[ia + ld*(ib + ld*(ic +
// ld*id))]), adds Σ Γ ∂(ab|cd)/∂R_X to grad[X] (hartree/bohr per unit of Γ) for
// the four centres X = a, b, c, d in the caller's order.  One pass over the
// primitive quartets serves all four: the two-dimensional integrals are built
// one unit higher on every centre, contracted plainly and with the weights 2α,
// 2β, 2γ of the raised centres, and the derivative integrals follow from
// ∂/∂A_x (x_A^l …) = 2α x_A^(l+1) … − l x_A^(l−1) …; the fourth centre by
// translational invariance.  Shells up to angular momentum 5.
class RysGradientEngine {
 public:
  void add(const ShellData& a, const ShellData& b, const ShellData& c, const ShellData& d,
           double cutoff, const double* gamma, int ld, std::array<std::array<double, 3>, 4>& grad);

 private:
  std::vector<double> scratch_;
  std::array<std::vector<double>, 6> blocks_;
  std::vector<double> hrr_[2];
  std::vector<std::array<double, 2>> bra_exponents_, ket_exponents_;
};

}  // namespace norvik::integrals::rys
