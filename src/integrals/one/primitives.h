// One-electron integrals over pairs of primitive Cartesian Gaussians
//
//   a(r) = x_A^l y_A^m z_A^n exp(-alpha r_A^2)   (unnormalised),
//
// by the closed formulas of the Gaussian-product expansion: overlap, kinetic
// energy, nuclear attraction and the first and second moments.  Everything is in
// bohr and hartree.  The routines work on one primitive pair at a time and keep
// nothing between calls; contraction and normalisation belong to the matrix
// builder (one_electron_matrices.h).
#pragma once

#include <array>
#include <span>

namespace norvik::integrals::one {

using Vec3 = std::array<double, 3>;
using Lmn = std::array<int, 3>;

// A primitive Cartesian Gaussian: centre (bohr), exponent (bohr^-2) and the
// exponent triple (l, m, n) of its polynomial part.
struct Primitive {
  Vec3 centre{};
  double exponent = 0.0;
  Lmn lmn{};
};

// A pair whose exponent factor mu|AB|^2 exceeds this gives exactly zero.
inline constexpr double kPairCutoff = 500.0;

// Size of the A-factor tables: per axis l1 + l2 <= 8, and in total Ltot <= 8.
inline constexpr int kGTableSize = 9;

// What the product of two primitives shares: gamma = alpha + beta, the product
// centre P and its offsets PA, PB, and E = mu |AB|^2 with mu = alpha beta / gamma.
// Along an axis on which A and B coincide exactly, P takes that coordinate and
// PA, PB are exactly zero.
struct PairGeometry {
  double gamma = 0.0;
  double e = 0.0;
  Vec3 p{};
  Vec3 pa{};
  Vec3 pb{};
  bool negligible() const { return e > kPairCutoff; }
};

PairGeometry pair_geometry(const Vec3& a, double alpha, const Vec3& b, double beta);

// x^n by repeated multiplication; 1 for n < 1.
inline double power(double x, int n) {
  double r = 1.0;
  for (int i = 0; i < n; ++i) r *= x;
  return r;
}

// Binomial expansion coefficient of the product (x + a)^l1 (x + b)^l2:
// f_j = sum_k C(l1, k) C(l2, j - k) a^(l1 - k) b^(l2 - j + k),
// k from max(0, j - l2) to min(j, l1).
double binomial_f(int j, int l1, int l2, double a, double b);

// One axis of the overlap, without the (pi/gamma)^(1/2) and exponential factors:
// sum_i f_2i(l1, l2, pa, pb) (2i - 1)!! / (2 gamma)^i.
double overlap_axis(int l1, int l2, double pa, double pb, double gamma);

// <a|b>.
double overlap(const Primitive& a, const Primitive& b);

// <a| -1/2 nabla^2 |b>, from seven overlaps with the exponents of b shifted.
double kinetic(const Primitive& a, const Primitive& b);

// <a| 1/r_C |b> (positive; the caller applies -Z).  The Boys table is built here.
double nuclear_attraction(const Primitive& a, const Primitive& b, const Vec3& c);

// The same with the caller's Boys table F_0 ... F_Ltot, Ltot = all six exponents.
double nuclear_attraction(const Primitive& a, const Primitive& b, const Vec3& c,
                          std::span<const double> boys);

// One A-factor A_iru of the nuclear-attraction expansion along one axis:
// (-1)^i f_i(l1, l2, pa, pb) (-1)^u i! pc^(i-2r-2u) eps^(r+u) / (r! u! (i-2r-2u)!),
// eps = 1 / (4 gamma).
double a_factor(int i, int r, int u, int l1, int l2, double pa, double pb, double gamma, double pc);

// The per-axis table G(nu), nu = 0 ... l1 + l2, each A_iru added to
// G(i - 2r - u); all nine entries are cleared first.  Pairs with l1 + l2 > 8
// are fatal; pairs with l1 or l2 above 5 are served by the general sum after a
// note on standard output.
void a_factor_table(int l1, int l2, double pa, double pb, double gamma, double pc,
                    std::span<double, kGTableSize> g);

// The combined table G(nu) = sum over nux + nuy + nuz = nu of Gx Gy Gz,
// nu = 0 ... Ltot (Ltot > 8 is fatal).
void a_factor_product_table(const Lmn& lmn_a, const Lmn& lmn_b, const Vec3& pa, const Vec3& pb,
                            double gamma, const Vec3& pc, std::span<double, kGTableSize> g);

// <a| (x - Bx)^i (y - By)^j (z - Bz)^k |b> = S(a, b + (i, j, k)).
double overlap_raised(const Primitive& a, const Primitive& b, const Lmn& raise);

// <a| x^i y^j z^k |b> about the origin, expanded around B:
// x = (x - Bx) + Bx on each axis, so that every term is a raised overlap.
double cartesian_moment(const Primitive& a, const Primitive& b, const Lmn& power);

}  // namespace norvik::integrals::one
