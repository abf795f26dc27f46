#include "integrals/rys/rys_eri.h"

#include <algorithm>
#include <cmath>

#include "common/error.h"
#include "common/fortran_format.h"
#include "integrals/rys/rys_quadrature.h"

namespace norvik::integrals::rys {

namespace {

// Number of Cartesian components of all angular momenta below L.
constexpr int cartesian_offset(int L) {
  return L * (L + 1) * (L + 2) / 6;
}

// Components of the angular momenta lmin ... lmax, counted together.
constexpr int component_span(int lmin, int lmax) {
  return cartesian_offset(lmax + 1) - cartesian_offset(lmin);
}

// Index of x^lx y^ly z^lz among the components of lmin ... lmax (its own L included).
constexpr int span_index(int lmin, int lx, int ly, int lz) {
  return cartesian_offset(lx + ly + lz) - cartesian_offset(lmin) + cartesian_index(lx, ly, lz);
}

// Target length of the batch of (ket pair, root) entries that one pass over
// the two-dimensional integrals handles: large enough for long vector loops,
// small enough for the three 2D tables to stay in the level-2 cache.
constexpr int kBatchBudget = 8192;

// One surviving primitive pair of a side, kept as kPairDoubles consecutive
// doubles in the scratch: exponent sum, product centre (3), product centre
// relative to the side's first centre (3), and the coefficient product times
// the Gaussian-product factor.
constexpr int kPairDoubles = 8;
constexpr int kZeta = 0;
constexpr int kCentre = 1;
constexpr int kShift = 4;
constexpr int kFactor = 7;

// Everything about a quartet that fixes the sizes of the work arrays.
struct Plan {
  int la, lb, lc, ld;
  int lab, lcd;  // la + lb, lc + ld
  int nroots;
  int ne, nf;         // components of [e0| (L = la ... lab) and |f0] (L = lc ... lcd)
  int nbra, nket;     // primitive pairs before screening
  int batch_kets;     // ket pairs per batch
  int batch;          // batch_kets * nroots
  std::size_t table;  // doubles of one 2D table: (lab+1)(lcd+1) * batch
  std::size_t hrr;    // doubles of each of the two recurrence buffers
};

// Rows of the recurrence level j when lb units move from the first centre
// (lmin ... lmin+lb) to the second: components of lmin ... lmin+lb-j times those of j.
int hrr_rows(int lmin, int lb, int j) {
  return component_span(lmin, lmin + lb - j) * cartesian_count(j);
}

std::size_t hrr_buffer(int lmin, int lb, std::size_t row) {
  std::size_t most = 0;
  for (int j = 0; j <= lb; ++j) most = std::max(most, hrr_rows(lmin, lb, j) * row);
  return most;
}

Plan make_plan(const ShellData& a, const ShellData& b, const ShellData& c, const ShellData& d) {
  Plan p{};
  p.la = a.L;
  p.lb = b.L;
  p.lc = c.L;
  p.ld = d.L;
  p.lab = p.la + p.lb;
  p.lcd = p.lc + p.ld;
  p.nroots = (p.lab + p.lcd) / 2 + 1;
  p.ne = component_span(p.la, p.lab);
  p.nf = component_span(p.lc, p.lcd);
  p.nbra = std::max(a.nprim, 0) * std::max(b.nprim, 0);
  p.nket = std::max(c.nprim, 0) * std::max(d.nprim, 0);
  const int cells = (p.lab + 1) * (p.lcd + 1);
  p.batch_kets = std::clamp(kBatchBudget / (cells * p.nroots), 1, std::max(p.nket, 1));
  p.batch = p.batch_kets * p.nroots;
  p.table = static_cast<std::size_t>(cells) * p.batch;
  const std::size_t ncd = static_cast<std::size_t>(cartesian_count(p.lc)) * cartesian_count(p.ld);
  p.hrr = std::max({static_cast<std::size_t>(p.ne) * p.nf, hrr_buffer(p.lc, p.ld, p.ne),
                    static_cast<std::size_t>(p.ne) * ncd, hrr_buffer(p.la, p.lb, ncd)});
  return p;
}

std::size_t scratch_doubles(const Plan& p) {
  return static_cast<std::size_t>(kPairDoubles) * (p.nbra + p.nket)  // pairs
         + 10 * static_cast<std::size_t>(p.batch)                    // recurrence coefficients
         + 3 * p.table                                               // 2D integrals
         + static_cast<std::size_t>(p.batch)                         // x*y products
         + 2 * p.hrr;                                                // contracted block
}

// Forms the surviving primitive pairs of two shells; returns their number.
int make_pairs(const ShellData& s1, const ShellData& s2, double cutoff, double* pairs) {
  const auto& A = s1.centre;
  const auto& B = s2.centre;
  double ab2 = 0.0;
  for (int i = 0; i < 3; ++i) ab2 += (A[i] - B[i]) * (A[i] - B[i]);
  int count = 0;
  for (int i = 0; i < s1.nprim; ++i) {
    for (int j = 0; j < s2.nprim; ++j) {
      const double alpha = s1.exps[i];
      const double beta = s2.exps[j];
      const double zeta = alpha + beta;
      if (alpha * beta * ab2 > cutoff * zeta) continue;
      double* pair = pairs + kPairDoubles * count++;
      pair[kZeta] = zeta;
      for (int k = 0; k < 3; ++k) {
        // Equal coordinates give the product centre exactly, with no round-off
        // from the weighted mean.
        pair[kCentre + k] = A[k] == B[k] ? A[k] : (alpha * A[k] + beta * B[k]) / zeta;
        pair[kShift + k] = pair[kCentre + k] - A[k];
      }
      pair[kFactor] = s1.coefs[i] * s2.coefs[j] * std::exp(-alpha * beta / zeta * ab2);
    }
  }
  return count;
}

// The recurrence coefficients of one batch: a bra pair against `kets` ket pairs
// from k0, every root of each (entry v = ket · nroots + root).
struct BatchCoefficients {
  double *b00, *b10, *b01;
  double *c00[3], *d00[3];
  double* weight;
};

void batch_coefficients(const double* pb, const double* ket, int k0, int kets, int nroots,
                        const BatchCoefficients& out) {
  double u[kMaxRoots];
  double w[kMaxRoots];
  const double zeta = pb[kZeta];
  for (int kk = 0; kk < kets; ++kk) {
    const double* pk = ket + kPairDoubles * (k0 + kk);
    const double eta = pk[kZeta];
    const double sum = zeta + eta;
    double pq[3];
    double pq2 = 0.0;
    for (int i = 0; i < 3; ++i) {
      pq[i] = pb[kCentre + i] - pk[kCentre + i];
      pq2 += pq[i] * pq[i];
    }
    rys_roots_unchecked(zeta * eta / sum * pq2, nroots, u, w);
    const double scale =
        kTwoPiToFiveHalves / (zeta * eta * std::sqrt(sum)) * pb[kFactor] * pk[kFactor];
    for (int r = 0; r < nroots; ++r) {
      const int v = kk * nroots + r;
      const double t2 = u[r];
      out.b00[v] = 0.5 * t2 / sum;
      out.b10[v] = 0.5 / zeta - 0.5 * eta * t2 / (zeta * sum);
      out.b01[v] = 0.5 / eta - 0.5 * zeta * t2 / (eta * sum);
      for (int i = 0; i < 3; ++i) {
        out.c00[i][v] = pb[kShift + i] - eta * t2 / sum * pq[i];
        out.d00[i][v] = pk[kShift + i] + zeta * t2 / sum * pq[i];
      }
      out.weight[v] = scale * w[r];
    }
  }
}

// Carves the coefficient arrays of a batch of `batch` entries from the scratch at
// `cursor`, moving it past them.
BatchCoefficients carve_coefficients(double*& cursor, int batch) {
  auto take = [&cursor, batch] {
    double* start = cursor;
    cursor += batch;
    return start;
  };
  BatchCoefficients c{};
  c.b00 = take();
  c.b10 = take();
  c.b01 = take();
  for (double*& p : c.c00) p = take();
  for (double*& p : c.d00) p = take();
  c.weight = take();
  return c;
}

// The Rys recurrences for one axis over a batch: table[(e*(lcd+1) + f)*n + v]
// holds the 2D integral I(e, f) of batch entry v, started from I(0, 0) = base[v].
void build_2d(const Plan& p, int n, const double* base, const double* c00, const double* d00,
              const double* b10, const double* b01, const double* b00, double* table) {
  const int stride_e = (p.lcd + 1) * n;
  auto at = [&](int e, int f) { return table + e * stride_e + f * n; };
  {
    double* i00 = at(0, 0);
#pragma omp simd
    for (int v = 0; v < n; ++v) i00[v] = base[v];
  }
  if (p.lab > 0) {
    double* i10 = at(1, 0);
    const double* i00 = at(0, 0);
#pragma omp simd
    for (int v = 0; v < n; ++v) i10[v] = c00[v] * i00[v];
  }
  for (int e = 1; e < p.lab; ++e) {
    double* next = at(e + 1, 0);
    const double* cur = at(e, 0);
    const double* prev = at(e - 1, 0);
#pragma omp simd
    for (int v = 0; v < n; ++v) next[v] = c00[v] * cur[v] + e * b10[v] * prev[v];
  }
  for (int f = 0; f < p.lcd; ++f) {
    {
      double* next = at(0, f + 1);
      const double* cur = at(0, f);
      if (f == 0) {
#pragma omp simd
        for (int v = 0; v < n; ++v) next[v] = d00[v] * cur[v];
      } else {
        const double* prev = at(0, f - 1);
#pragma omp simd
        for (int v = 0; v < n; ++v) next[v] = d00[v] * cur[v] + f * b01[v] * prev[v];
      }
    }
    for (int e = 1; e <= p.lab; ++e) {
      double* next = at(e, f + 1);
      const double* cur = at(e, f);
      const double* lower_e = at(e - 1, f);
      if (f == 0) {
#pragma omp simd
        for (int v = 0; v < n; ++v) next[v] = d00[v] * cur[v] + e * b00[v] * lower_e[v];
      } else {
        const double* prev = at(e, f - 1);
#pragma omp simd
        for (int v = 0; v < n; ++v)
          next[v] = d00[v] * cur[v] + f * b01[v] * prev[v] + e * b00[v] * lower_e[v];
      }
    }
  }
}

// sum_v x[v] y[v] with eight independent partial sums, so that the additions
// do not wait for one another; the order is fixed, so the result is the same
// on every run.
inline double dot(const double* x, const double* y, int n) {
  double part[8] = {0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0};
  int v = 0;
  for (; v + 8 <= n; v += 8) {
    for (int k = 0; k < 8; ++k) part[k] += x[v + k] * y[v + k];
  }
  double tail = 0.0;
  for (; v < n; ++v) tail += x[v] * y[v];
  return ((part[0] + part[4]) + (part[1] + part[5])) + ((part[2] + part[6]) + (part[3] + part[7])) +
         tail;
}

// Adds the batch's contribution sum_v Ix Iy Iz to every [e0|f0] of the
// contracted block g (row f, column e: g[f*ne + e]).  The x*y product of a
// pair of (x, y) powers is formed once and reused for every z power.
// Only e of total degree emin ... emax and f of fmin ... fmax are formed (the
// block keeps the plan's layout); the plain form takes the plan's ranges.
void accumulate(const Plan& p, int n, const double* ix, const double* iy, const double* iz,
                double* xy, double* g, int emin, int emax, int fmin, int fmax) {
  const int stride_e = (p.lcd + 1) * n;
  for (int ex = 0; ex <= emax; ++ex) {
    for (int ey = 0; ey + ex <= emax; ++ey) {
      const int ez_lo = std::max(0, emin - ex - ey);
      const int ez_hi = emax - ex - ey;
      for (int fx = 0; fx <= fmax; ++fx) {
        for (int fy = 0; fy + fx <= fmax; ++fy) {
          const double* x = ix + ex * stride_e + fx * n;
          const double* y = iy + ey * stride_e + fy * n;
#pragma omp simd
          for (int v = 0; v < n; ++v) xy[v] = x[v] * y[v];
          const int fz_lo = std::max(0, fmin - fx - fy);
          const int fz_hi = fmax - fx - fy;
          for (int ez = ez_lo; ez <= ez_hi; ++ez) {
            const int e = span_index(p.la, ex, ey, ez);
            for (int fz = fz_lo; fz <= fz_hi; ++fz) {
              const double* z = iz + ez * stride_e + fz * n;
              g[span_index(p.lc, fx, fy, fz) * p.ne + e] += dot(xy, z, n);
            }
          }
        }
      }
    }
  }
}

void accumulate(const Plan& p, int n, const double* ix, const double* iy, const double* iz,
                double* xy, double* g) {
  accumulate(p, n, ix, iy, iz, xy, g, p.la, p.lab, p.lc, p.lcd);
}

// The horizontal recurrence (e, b + 1_i) = (e + 1_i, b) + AB_i (e, b), applied to
// rows of `row` doubles.  `in` holds the rows of the components of lmin ...
// lmin+lb (span order); the result has the rows (a, b), a of lmin and b of lb,
// at a*count(lb) + b.  Returns whichever of the two buffers holds it.
double* horizontal(int lmin, int lb, const double ab[3], int row, double* in, double* spare) {
  double* src = in;
  double* dst = spare;
  for (int j = 1; j <= lb; ++j) {
    const int nb_new = cartesian_count(j);
    const int nb_old = cartesian_count(j - 1);
    for (int le = lmin; le <= lmin + lb - j; ++le) {
      for (int ex = le; ex >= 0; --ex) {
        for (int ey = le - ex; ey >= 0; --ey) {
          const int ez = le - ex - ey;
          const int e = span_index(lmin, ex, ey, ez);
          for (int bx = j; bx >= 0; --bx) {
            for (int by = j - bx; by >= 0; --by) {
              const int bz = j - bx - by;
              // Lower b along the first axis on which it has a power.
              const int axis = bx > 0 ? 0 : (by > 0 ? 1 : 2);
              const int lower_b =
                  cartesian_index(bx - (axis == 0), by - (axis == 1), bz - (axis == 2));
              const int raised_e =
                  span_index(lmin, ex + (axis == 0), ey + (axis == 1), ez + (axis == 2));
              const double* up =
                  src + (static_cast<std::size_t>(raised_e) * nb_old + lower_b) * row;
              const double* same = src + (static_cast<std::size_t>(e) * nb_old + lower_b) * row;
              double* out =
                  dst + (static_cast<std::size_t>(e) * nb_new + cartesian_index(bx, by, bz)) * row;
              const double shift = ab[axis];
#pragma omp simd
              for (int k = 0; k < row; ++k) out[k] = up[k] + shift * same[k];
            }
          }
        }
      }
    }
    std::swap(src, dst);
  }
  return src;
}

double largest_exponent(const ShellData& s) {
  double most = 0.0;
  for (int i = 0; i < s.nprim; ++i) most = std::max(most, s.exps[i]);
  return most;
}

// Whether the recurrences should build the pair's angular momentum on its second
// shell and move it to the first, rather than the reverse.  The horizontal step
// loses digits in proportion to |PA|^lb: it is kept short (higher L carries the
// vertical recurrence) and, between equal L, the tighter shell, which pulls the
// product centre towards itself, carries it.
bool swap_pair(const ShellData& first, const ShellData& second) {
  if (first.L != second.L) return second.L > first.L;
  return largest_exponent(second) > largest_exponent(first);
}

// The quartet in the order in which the recurrences run.
struct Ordered {
  const ShellData& a;
  const ShellData& b;
  const ShellData& c;
  const ShellData& d;
  bool swap_ab;
  bool swap_cd;
};

Ordered order(const ShellData& a, const ShellData& b, const ShellData& c, const ShellData& d) {
  const bool ab = swap_pair(a, b);
  const bool cd = swap_pair(c, d);
  return {ab ? b : a, ab ? a : b, cd ? d : c, cd ? c : d, ab, cd};
}

void check_angular_momentum(const ShellData& s) {
  if (s.L < 0 || s.L > kMaxAngularMomentum) {
    throw Error(fortran::list_directed({"Error! Subroutine int2rys supports up to i function."}));
  }
}

void check_shell(const ShellData& s, int ld) {
  check_angular_momentum(s);
  if (cartesian_count(s.L) > ld) {
    throw Error(
        fortran::list_directed({"Error! Parameter maxdim in int2rys is smaller than a shell."}));
  }
}

}  // namespace

void check_route_limits(int mxprsh, int maxdim) {
  if (mxprsh > kMaxPrimitivesPerShell) {
    throw Error(fortran::list_directed({"Error! Parameter mxprsh2 in int2rys is small!"}));
  }
  if (maxdim > kMaxBlockDimension) {
    throw Error(fortran::list_directed({"Error! Parameter maxdim2 in int2rys is small!"}));
  }
}

std::size_t rys_scratch_size(const ShellData& a, const ShellData& b, const ShellData& c,
                             const ShellData& d) {
  for (const ShellData* s : {&a, &b, &c, &d}) check_angular_momentum(*s);
  const Ordered o = order(a, b, c, d);
  return scratch_doubles(make_plan(o.a, o.b, o.c, o.d));
}

void rys_eri(const ShellData& a_in, const ShellData& b_in, const ShellData& c_in,
             const ShellData& d_in, double cutoff, double* out, int ld, std::span<double> scratch) {
  for (const ShellData* s : {&a_in, &b_in, &c_in, &d_in}) check_shell(*s, ld);
  const Ordered o = order(a_in, b_in, c_in, d_in);
  const ShellData& a = o.a;
  const ShellData& b = o.b;
  const ShellData& c = o.c;
  const ShellData& d = o.d;
  const Plan p = make_plan(a, b, c, d);
  if (scratch.size() < scratch_doubles(p)) {
    throw Error(fortran::list_directed({"Error! Work array of int2rys2 is small."}));
  }

  // Carve the scratch.
  double* cursor = scratch.data();
  auto take = [&cursor](std::size_t count) {
    double* start = cursor;
    cursor += count;
    return start;
  };
  double* bra = take(static_cast<std::size_t>(kPairDoubles) * p.nbra);
  double* ket = take(static_cast<std::size_t>(kPairDoubles) * p.nket);
  const BatchCoefficients coef = carve_coefficients(cursor, p.batch);
  double* table[3] = {take(p.table), take(p.table), take(p.table)};
  double* xy = take(p.batch);
  double* buffer0 = take(p.hrr);
  double* buffer1 = take(p.hrr);

  const int nbra = make_pairs(a, b, cutoff, bra);
  const int nket = make_pairs(c, d, cutoff, ket);

  double* g = buffer0;
  std::fill(g, g + static_cast<std::size_t>(p.ne) * p.nf, 0.0);

  for (int ib = 0; ib < nbra; ++ib) {
    const double* pb = bra + kPairDoubles * ib;
    for (int k0 = 0; k0 < nket; k0 += p.batch_kets) {
      const int kets = std::min(p.batch_kets, nket - k0);
      const int n = kets * p.nroots;
      batch_coefficients(pb, ket, k0, kets, p.nroots, coef);
      // x and y start from 1, z from the weight times the prefactor.
      for (int v = 0; v < n; ++v) xy[v] = 1.0;
      build_2d(p, n, xy, coef.c00[0], coef.d00[0], coef.b10, coef.b01, coef.b00, table[0]);
      build_2d(p, n, xy, coef.c00[1], coef.d00[1], coef.b10, coef.b01, coef.b00, table[1]);
      build_2d(p, n, coef.weight, coef.c00[2], coef.d00[2], coef.b10, coef.b01, coef.b00, table[2]);
      accumulate(p, n, table[0], table[1], table[2], xy, g);
    }
  }

  // Move angular momentum to D (rows are [e0| components), then, with the
  // block turned so that rows are bra components, to B.
  const double cd[3] = {c.centre[0] - d.centre[0], c.centre[1] - d.centre[1],
                        c.centre[2] - d.centre[2]};
  const double ab[3] = {a.centre[0] - b.centre[0], a.centre[1] - b.centre[1],
                        a.centre[2] - b.centre[2]};
  double* ket_done = horizontal(p.lc, p.ld, cd, p.ne, g, buffer1);
  double* turned = ket_done == buffer0 ? buffer1 : buffer0;
  const int ncd = cartesian_count(p.lc) * cartesian_count(p.ld);
  for (int f = 0; f < ncd; ++f)
    for (int e = 0; e < p.ne; ++e)
      turned[static_cast<std::size_t>(e) * ncd + f] =
          ket_done[static_cast<std::size_t>(f) * p.ne + e];
  double* spare = turned == buffer0 ? buffer1 : buffer0;
  const double* result = horizontal(p.la, p.lb, ab, ncd, turned, spare);

  const int na = cartesian_count(p.la);
  const int nb = cartesian_count(p.lb);
  const int nc = cartesian_count(p.lc);
  const int nd = cartesian_count(p.ld);
  // Strides of the caller's block for the shells in recurrence order.
  const std::size_t lds = static_cast<std::size_t>(ld);
  const std::size_t stride[4] = {1, lds, lds * lds, lds * lds * lds};
  const std::size_t sa = o.swap_ab ? stride[1] : stride[0];
  const std::size_t sb = o.swap_ab ? stride[0] : stride[1];
  const std::size_t sc = o.swap_cd ? stride[3] : stride[2];
  const std::size_t sd = o.swap_cd ? stride[2] : stride[3];
  for (int ia = 0; ia < na; ++ia)
    for (int ib = 0; ib < nb; ++ib) {
      const double* row = result + (static_cast<std::size_t>(ia) * nb + ib) * ncd;
      for (int ic = 0; ic < nc; ++ic)
        for (int id = 0; id < nd; ++id)
          out[ia * sa + ib * sb + ic * sc + id * sd] = row[ic * nd + id];
    }
}

void RysEngine::compute(const ShellData& a, const ShellData& b, const ShellData& c,
                        const ShellData& d, double cutoff, double* out, int ld) {
  const std::size_t need = rys_scratch_size(a, b, c, d);
  if (scratch_.size() < need) scratch_.resize(need);
  rys_eri(a, b, c, d, cutoff, out, ld, scratch_);
}

}  // namespace norvik::integrals::rys

namespace norvik::integrals::rys {

namespace {

// Angular momenta of the derivative route: a shell and one unit more.
constexpr int kGradientMaxL = kMaxAngularMomentum - 1;

// (l, m, n) of component c of shell L, and the positions of its neighbours one
// unit up and down along each axis (−1 where the power is 0).
struct StepTable {
  std::array<std::array<std::array<int, 3>, cartesian_count(kGradientMaxL)>, kGradientMaxL + 1>
      lmn{}, up{}, down{};
};

constexpr StepTable make_step_table() {
  StepTable t{};
  for (int L = 0; L <= kGradientMaxL; ++L)
    for (int lx = L; lx >= 0; --lx)
      for (int ly = L - lx; ly >= 0; --ly) {
        const int lz = L - lx - ly;
        const int c = cartesian_index(lx, ly, lz);
        const int p[3] = {lx, ly, lz};
        for (int k = 0; k < 3; ++k) {
          t.lmn[L][c][k] = p[k];
          t.up[L][c][k] = cartesian_index(lx + (k == 0), ly + (k == 1), lz + (k == 2));
          t.down[L][c][k] =
              p[k] > 0 ? cartesian_index(lx - (k == 0), ly - (k == 1), lz - (k == 2)) : -1;
        }
      }
  return t;
}
constexpr StepTable kStep = make_step_table();

// A contracted quartet (la lb | lc ld) from a block g of [e0|f0] whose rows f
// cover lc_min ... and columns e cover la_min ... (ne_full columns): the
// horizontal recurrences to [(a b)(c d)] rows-major over a, b, c, d.
void finish_block(const Plan& full, int la, int lb, int lc, int ld, const double* g,
                  const double ab[3], const double cd[3], std::vector<double> (&buf)[2],
                  std::vector<double>& result) {
  const int ne = component_span(la, la + lb);
  const int nf = component_span(lc, lc + ld);
  const int e0 = cartesian_offset(la) - cartesian_offset(full.la);
  const int f0 = cartesian_offset(lc) - cartesian_offset(full.lc);
  const int ncd = cartesian_count(lc) * cartesian_count(ld);
  const std::size_t need = std::max({static_cast<std::size_t>(ne) * nf, hrr_buffer(lc, ld, ne),
                                     static_cast<std::size_t>(ne) * ncd, hrr_buffer(la, lb, ncd)});
  for (auto& b : buf)
    if (b.size() < need) b.resize(need);
  double* b0 = buf[0].data();
  double* b1 = buf[1].data();
  for (int f = 0; f < nf; ++f)
    for (int e = 0; e < ne; ++e)
      b0[static_cast<std::size_t>(f) * ne + e] =
          g[static_cast<std::size_t>(f0 + f) * full.ne + static_cast<std::size_t>(e0 + e)];
  double* ket_done = horizontal(lc, ld, cd, ne, b0, b1);
  double* turned = ket_done == b0 ? b1 : b0;
  for (int f = 0; f < ncd; ++f)
    for (int e = 0; e < ne; ++e)
      turned[static_cast<std::size_t>(e) * ncd + f] =
          ket_done[static_cast<std::size_t>(f) * ne + e];
  double* spare = turned == b0 ? b1 : b0;
  const double* r = horizontal(la, lb, ab, ncd, turned, spare);
  const std::size_t size =
      static_cast<std::size_t>(cartesian_count(la)) * cartesian_count(lb) * ncd;
  result.assign(r, r + size);
}

}  // namespace

void RysGradientEngine::add(const ShellData& a_in, const ShellData& b_in, const ShellData& c_in,
                            const ShellData& d_in, double cutoff, const double* gamma, int ld,
                            std::array<std::array<double, 3>, 4>& grad) {
  for (const ShellData* s : {&a_in, &b_in, &c_in, &d_in}) {
    if (s->L < 0 || s->L > kGradientMaxL) {
      throw Error(fortran::list_directed({"Error! Subroutine int2rys supports up to i function."}));
    }
    if (cartesian_count(s->L) > ld) {
      throw Error(
          fortran::list_directed({"Error! Parameter maxdim in int2rys is smaller than a shell."}));
    }
  }
  const Ordered o = order(a_in, b_in, c_in, d_in);
  const ShellData& a = o.a;
  const ShellData& b = o.b;
  const ShellData& c = o.c;
  const ShellData& d = o.d;
  // The extended quartet: e from max(la − 1, 0) to la + lb + 1, f likewise.
  Plan p = make_plan(a, b, c, d);
  const int la = p.la, lb = p.lb, lc = p.lc, lcd = p.lcd, lab = p.lab;
  Plan q = p;
  q.la = std::max(la - 1, 0);
  q.lab = lab + 1;
  q.lc = std::max(lc - 1, 0);
  q.lcd = lcd + 1;
  q.nroots = (lab + lcd + 1) / 2 + 1;
  q.ne = component_span(q.la, q.lab);
  q.nf = component_span(q.lc, q.lcd);
  const int cells = (q.lab + 1) * (q.lcd + 1);
  q.batch_kets = std::clamp(kBatchBudget / (cells * q.nroots), 1, std::max(q.nket, 1));
  q.batch = q.batch_kets * q.nroots;
  q.table = static_cast<std::size_t>(cells) * q.batch;
  const std::size_t block = static_cast<std::size_t>(q.ne) * q.nf;
  const std::size_t need = static_cast<std::size_t>(kPairDoubles) * (q.nbra + q.nket) +
                           11 * static_cast<std::size_t>(q.batch) + 4 * q.table +
                           static_cast<std::size_t>(q.batch) + 5 * block;
  if (scratch_.size() < need) scratch_.resize(need);
  double* cursor = scratch_.data();
  auto take = [&cursor](std::size_t count) {
    double* start = cursor;
    cursor += count;
    return start;
  };
  double* bra = take(static_cast<std::size_t>(kPairDoubles) * q.nbra);
  double* ket = take(static_cast<std::size_t>(kPairDoubles) * q.nket);
  const BatchCoefficients coef = carve_coefficients(cursor, q.batch);
  double* weight_c = take(q.batch);
  double* table[4] = {take(q.table), take(q.table), take(q.table), take(q.table)};
  double* xy = take(q.batch);
  double* g_pair = take(block);  // one bra pair, plain ket weights
  double* g0 = take(block);      // plain
  double* ga = take(block);      // 2α
  double* gb = take(block);      // 2β
  double* gc = take(block);      // 2γ
  std::fill(g0, g0 + 4 * block, 0.0);

  // Exponents of the primitive pairs, in the order make_pairs keeps them.
  std::vector<std::array<double, 2>>& bra_exp = bra_exponents_;
  std::vector<std::array<double, 2>>& ket_exp = ket_exponents_;
  bra_exp.clear();
  ket_exp.clear();
  auto pair_exponents = [cutoff](const ShellData& s1, const ShellData& s2,
                                 std::vector<std::array<double, 2>>& out) {
    double ab2 = 0.0;
    for (int i = 0; i < 3; ++i)
      ab2 += (s1.centre[i] - s2.centre[i]) * (s1.centre[i] - s2.centre[i]);
    for (int i = 0; i < s1.nprim; ++i)
      for (int j = 0; j < s2.nprim; ++j)
        if (!(s1.exps[i] * s2.exps[j] * ab2 > cutoff * (s1.exps[i] + s2.exps[j])))
          out.push_back({s1.exps[i], s2.exps[j]});
  };
  pair_exponents(a, b, bra_exp);
  pair_exponents(c, d, ket_exp);
  const int nbra = make_pairs(a, b, cutoff, bra);
  const int nket = make_pairs(c, d, cutoff, ket);

  for (int ib = 0; ib < nbra; ++ib) {
    const double* pb = bra + kPairDoubles * ib;
    std::fill(g_pair, g_pair + block, 0.0);
    for (int k0 = 0; k0 < nket; k0 += q.batch_kets) {
      const int kets = std::min(q.batch_kets, nket - k0);
      const int n = kets * q.nroots;
      batch_coefficients(pb, ket, k0, kets, q.nroots, coef);
      // the raised c carries 2γ of its ket's primitive
      for (int kk = 0; kk < kets; ++kk) {
        const double two_gamma = 2.0 * ket_exp[static_cast<std::size_t>(k0 + kk)][0];
        for (int r = 0; r < q.nroots; ++r) {
          const int v = kk * q.nroots + r;
          weight_c[v] = two_gamma * coef.weight[v];
        }
      }
      for (int v = 0; v < n; ++v) xy[v] = 1.0;
      build_2d(q, n, xy, coef.c00[0], coef.d00[0], coef.b10, coef.b01, coef.b00, table[0]);
      build_2d(q, n, xy, coef.c00[1], coef.d00[1], coef.b10, coef.b01, coef.b00, table[1]);
      build_2d(q, n, coef.weight, coef.c00[2], coef.d00[2], coef.b10, coef.b01, coef.b00, table[2]);
      build_2d(q, n, weight_c, coef.c00[2], coef.d00[2], coef.b10, coef.b01, coef.b00, table[3]);
      // plain weights: the lowered blocks and the raised a and b; 2γ: the raised c
      accumulate(q, n, table[0], table[1], table[2], xy, g_pair, q.la, lab + 1, q.lc, lcd);
      accumulate(q, n, table[0], table[1], table[3], xy, gc, la, lab, lc + 1, lcd + 1);
    }
    const double two_alpha = 2.0 * bra_exp[static_cast<std::size_t>(ib)][0];
    const double two_beta = 2.0 * bra_exp[static_cast<std::size_t>(ib)][1];
    for (std::size_t i = 0; i < block; ++i) {
      g0[i] += g_pair[i];
      ga[i] += two_alpha * g_pair[i];
      gb[i] += two_beta * g_pair[i];
    }
  }

  const double cdv[3] = {c.centre[0] - d.centre[0], c.centre[1] - d.centre[1],
                         c.centre[2] - d.centre[2]};
  const double abv[3] = {a.centre[0] - b.centre[0], a.centre[1] - b.centre[1],
                         a.centre[2] - b.centre[2]};
  const int ldd = p.ld;
  // Blocks: 0 (a+1), 1 (a−1), 2 (b+1), 3 (b−1), 4 (c+1), 5 (c−1).
  finish_block(q, la + 1, lb, lc, ldd, ga, abv, cdv, hrr_, blocks_[0]);
  if (la > 0) finish_block(q, la - 1, lb, lc, ldd, g0, abv, cdv, hrr_, blocks_[1]);
  finish_block(q, la, lb + 1, lc, ldd, gb, abv, cdv, hrr_, blocks_[2]);
  if (lb > 0) finish_block(q, la, lb - 1, lc, ldd, g0, abv, cdv, hrr_, blocks_[3]);
  finish_block(q, la, lb, lc + 1, ldd, gc, abv, cdv, hrr_, blocks_[4]);
  if (lc > 0) finish_block(q, la, lb, lc - 1, ldd, g0, abv, cdv, hrr_, blocks_[5]);

  // Contract with Γ in the caller's layout.
  const std::size_t lds = static_cast<std::size_t>(ld);
  const std::size_t stride[4] = {1, lds, lds * lds, lds * lds * lds};
  const std::size_t sa = o.swap_ab ? stride[1] : stride[0];
  const std::size_t sb = o.swap_ab ? stride[0] : stride[1];
  const std::size_t sc = o.swap_cd ? stride[3] : stride[2];
  const std::size_t sd = o.swap_cd ? stride[2] : stride[3];
  const int na = cartesian_count(la), nb = cartesian_count(lb), nc = cartesian_count(lc),
            nd = cartesian_count(ldd);
  const int na_up = cartesian_count(la + 1), nb_up = cartesian_count(lb + 1),
            nc_up = cartesian_count(lc + 1);
  const int na_dn = la > 0 ? cartesian_count(la - 1) : 0;
  const int nb_dn = lb > 0 ? cartesian_count(lb - 1) : 0;
  const int nc_dn = lc > 0 ? cartesian_count(lc - 1) : 0;
  double gA[3] = {0, 0, 0}, gB[3] = {0, 0, 0}, gC[3] = {0, 0, 0};
  const double* up_a = blocks_[0].data();
  const double* dn_a = blocks_[1].data();
  const double* up_b = blocks_[2].data();
  const double* dn_b = blocks_[3].data();
  const double* up_c = blocks_[4].data();
  const double* dn_c = blocks_[5].data();
  for (int ia = 0; ia < na; ++ia)
    for (int ib = 0; ib < nb; ++ib)
      for (int ic = 0; ic < nc; ++ic)
        for (int id = 0; id < nd; ++id) {
          const double gam = gamma[ia * sa + ib * sb + ic * sc + id * sd];
          if (gam == 0.0) continue;
          for (int k = 0; k < 3; ++k) {
            // block index of (a', b', c', d) with sizes (n_a', n_b', n_c', nd)
            auto at = [&](const double* blk, int xa, int nbx, int xb, int ncx, int xc) {
              return blk[((static_cast<std::size_t>(xa) * nbx + xb) * ncx + xc) * nd + id];
            };
            double da = at(up_a, kStep.up[la][ia][k], nb, ib, nc, ic);
            if (kStep.lmn[la][ia][k] > 0)
              da -= kStep.lmn[la][ia][k] * at(dn_a, kStep.down[la][ia][k], nb, ib, nc, ic);
            double db = at(up_b, ia, nb_up, kStep.up[lb][ib][k], nc, ic);
            if (kStep.lmn[lb][ib][k] > 0)
              db -= kStep.lmn[lb][ib][k] * at(dn_b, ia, nb_dn, kStep.down[lb][ib][k], nc, ic);
            double dc = at(up_c, ia, nb, ib, nc_up, kStep.up[lc][ic][k]);
            if (kStep.lmn[lc][ic][k] > 0)
              dc -= kStep.lmn[lc][ic][k] * at(dn_c, ia, nb, ib, nc_dn, kStep.down[lc][ic][k]);
            gA[k] += gam * da;
            gB[k] += gam * db;
            gC[k] += gam * dc;
          }
        }
  (void)na_up;
  (void)na_dn;
  // Back to the caller's centres.
  const int ia_out = o.swap_ab ? 1 : 0, ib_out = o.swap_ab ? 0 : 1;
  const int ic_out = o.swap_cd ? 3 : 2, id_out = o.swap_cd ? 2 : 3;
  for (int k = 0; k < 3; ++k) {
    grad[ia_out][k] += gA[k];
    grad[ib_out][k] += gB[k];
    grad[ic_out][k] += gC[k];
    grad[id_out][k] -= gA[k] + gB[k] + gC[k];
  }
}

}  // namespace norvik::integrals::rys
