#include "linalg/kernels.h"

#include <omp.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#if defined(__GNUC__) && (defined(__x86_64__) || defined(__i386__))
#include <immintrin.h>
#endif

namespace norvik::linalg {

namespace {

// Cache blocks of the packed operands: a KC×NR sliver of B stays in L1, an
// MC×KC block of A in L2.  The register block is MR×NR (MR per instruction set).
constexpr Index kNr = 4;
constexpr Index kMc = 128;
constexpr Index kKc = 256;
constexpr Index kNc = 128;
constexpr Index kMaxMr = 8;

// Below this many multiply-adds a loop runs on the calling thread alone.  Each
// parallel region costs a fork and a join, which on a machine whose cores are
// busy with other work can each take a scheduler time slice: a region must be
// worth tens of microseconds.  (A matrix-vector product reaches this from a
// 512×512 matrix on; the tridiagonalisation's are therefore serial up to that order.)
constexpr double kParallelWork = 64.0 * 64.0 * 64.0;

// acc (MR×NR, column-major) = Σ_p a(:, p)·b(p, :) over one packed sliver pair.
using MicroKernel = void (*)(Index kc, const double* a, const double* b, double* acc);

// The portable kernel: 4×4, which the compiler keeps in eight SSE2 registers.
void micro_kernel_4x4(Index kc, const double* __restrict a, const double* __restrict b,
                      double* __restrict acc) {
  constexpr Index kMr = 4;
  double c[kNr][kMr] = {};
  for (Index p = 0; p < kc; ++p) {
    const double* ap = a + p * kMr;
    const double* bp = b + p * kNr;
    for (Index j = 0; j < kNr; ++j) {
      for (Index i = 0; i < kMr; ++i) c[j][i] += ap[i] * bp[j];
    }
  }
  for (Index j = 0; j < kNr; ++j) {
    for (Index i = 0; i < kMr; ++i) acc[j * kMr + i] = c[j][i];
  }
}

#if defined(__GNUC__) && (defined(__x86_64__) || defined(__i386__))
#define NORVIK_HAVE_AVX2_KERNEL 1
// 8×4 with fused multiply-adds in eight AVX registers, chosen at run time on
// processors that have AVX2 and FMA (the portable build targets plain x86-64).
__attribute__((target("avx2,fma"))) void micro_kernel_8x4_avx2(Index kc, const double* a,
                                                               const double* b, double* acc) {
  __m256d c0[kNr], c1[kNr];
  for (Index j = 0; j < kNr; ++j) {
    c0[j] = _mm256_setzero_pd();
    c1[j] = _mm256_setzero_pd();
  }
  for (Index p = 0; p < kc; ++p) {
    const __m256d a0 = _mm256_loadu_pd(a + p * 8);
    const __m256d a1 = _mm256_loadu_pd(a + p * 8 + 4);
    for (Index j = 0; j < kNr; ++j) {
      const __m256d bj = _mm256_broadcast_sd(b + p * kNr + j);
      c0[j] = _mm256_fmadd_pd(a0, bj, c0[j]);
      c1[j] = _mm256_fmadd_pd(a1, bj, c1[j]);
    }
  }
  for (Index j = 0; j < kNr; ++j) {
    _mm256_storeu_pd(acc + j * 8, c0[j]);
    _mm256_storeu_pd(acc + j * 8 + 4, c1[j]);
  }
}

bool have_avx2_fma() {
  return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
}
#endif

// Packs op(A)(i0:i0+mc, p0:p0+kc) into slivers of mr rows, zero-padded.
void pack_a(ConstMatrixView a, Op op, Index i0, Index mc, Index p0, Index kc, Index mr,
            double* out) {
  for (Index s = 0; s < mc; s += mr) {
    const Index rows = std::min(mr, mc - s);
    double* dst = out + s * kc;
    if (op == Op::none) {
      for (Index p = 0; p < kc; ++p) {
        const double* src = a.col(p0 + p) + i0 + s;
        Index i = 0;
        for (; i < rows; ++i) dst[p * mr + i] = src[i];
        for (; i < mr; ++i) dst[p * mr + i] = 0.0;
      }
    } else {
      for (Index i = 0; i < mr; ++i) {
        if (i < rows) {
          const double* src = a.col(i0 + s + i) + p0;
          for (Index p = 0; p < kc; ++p) dst[p * mr + i] = src[p];
        } else {
          for (Index p = 0; p < kc; ++p) dst[p * mr + i] = 0.0;
        }
      }
    }
  }
}

// Packs op(B)(p0:p0+kc, j0:j0+nc) into slivers of kNr columns, zero-padded.
void pack_b(ConstMatrixView b, Op op, Index p0, Index kc, Index j0, Index nc, double* out) {
  for (Index s = 0; s < nc; s += kNr) {
    const Index cols = std::min(kNr, nc - s);
    double* dst = out + s * kc;
    if (op == Op::none) {
      for (Index j = 0; j < kNr; ++j) {
        if (j < cols) {
          const double* src = b.col(j0 + s + j) + p0;
          for (Index p = 0; p < kc; ++p) dst[p * kNr + j] = src[p];
        } else {
          for (Index p = 0; p < kc; ++p) dst[p * kNr + j] = 0.0;
        }
      }
    } else {
      for (Index p = 0; p < kc; ++p) {
        Index j = 0;
        for (; j < cols; ++j) dst[p * kNr + j] = b(j0 + s + j, p0 + p);
        for (; j < kNr; ++j) dst[p * kNr + j] = 0.0;
      }
    }
  }
}

struct Product {
  Op op_a, op_b;
  double alpha, beta;
  ConstMatrixView a, b;
  MatrixView c;
  Index k;
  Index mr;
  MicroKernel micro;
};

// One MC×NC tile of C, all of k.
void gemm_tile(const Product& g, Index i0, Index mc, Index j0, Index nc, double* apack,
               double* bpack) {
  const Index mr = g.mr;
  double acc[kMaxMr * kNr];
  for (Index p0 = 0; p0 < g.k; p0 += kKc) {
    const Index kc = std::min(kKc, g.k - p0);
    pack_b(g.b, g.op_b, p0, kc, j0, nc, bpack);
    pack_a(g.a, g.op_a, i0, mc, p0, kc, mr, apack);
    const double scale = p0 == 0 ? g.beta : 1.0;
    for (Index js = 0; js < nc; js += kNr) {
      const Index cols = std::min(kNr, nc - js);
      for (Index is = 0; is < mc; is += mr) {
        const Index rows = std::min(mr, mc - is);
        g.micro(kc, apack + is * kc, bpack + js * kc, acc);
        for (Index j = 0; j < cols; ++j) {
          double* cj = g.c.col(j0 + js + j) + i0 + is;
          const double* aj = acc + j * mr;
          if (scale == 0.0) {
            for (Index i = 0; i < rows; ++i) cj[i] = g.alpha * aj[i];
          } else if (scale == 1.0) {
            for (Index i = 0; i < rows; ++i) cj[i] += g.alpha * aj[i];
          } else {
            for (Index i = 0; i < rows; ++i) cj[i] = scale * cj[i] + g.alpha * aj[i];
          }
        }
      }
    }
  }
}

}  // namespace

bool parallel_pays(double work) {
  return work >= kParallelWork && !omp_in_parallel();
}

void gemm(Op op_a, Op op_b, double alpha, ConstMatrixView a, ConstMatrixView b, double beta,
          MatrixView c) {
  const Index m = c.rows();
  const Index n = c.cols();
  const Index k = op_a == Op::none ? a.cols() : a.rows();
  if (m <= 0 || n <= 0) return;
  if (k <= 0 || alpha == 0.0) {
    for (Index j = 0; j < n; ++j) {
      for (Index i = 0; i < m; ++i) c(i, j) = beta == 0.0 ? 0.0 : beta * c(i, j);
    }
    return;
  }
  Product g{op_a, op_b, alpha, beta, a, b, c, k, 4, micro_kernel_4x4};
#ifdef NORVIK_HAVE_AVX2_KERNEL
  if (have_avx2_fma()) {
    g.mr = 8;
    g.micro = micro_kernel_8x4_avx2;
  }
#endif
  const Index tiles_m = (m + kMc - 1) / kMc;
  const Index tiles_n = (n + kNc - 1) / kNc;
  const Index tiles = tiles_m * tiles_n;
  const bool threads =
      tiles > 1 && parallel_pays(static_cast<double>(m) * static_cast<double>(n) * k);
  // Packing buffers as large as this product needs (small products are common:
  // the panels of the solvers), left uninitialised since packing fills them.
  const auto round_up = [](Index x, Index r) { return (x + r - 1) / r * r; };
  const auto apack_size =
      static_cast<std::size_t>(round_up(std::min(kMc, m), kMaxMr) * std::min(kKc, k));
  const auto bpack_size =
      static_cast<std::size_t>(std::min(kKc, k) * round_up(std::min(kNc, n), kNr));
#pragma omp parallel if (threads)
  {
    const std::unique_ptr<double[]> apack(new double[apack_size]);
    const std::unique_ptr<double[]> bpack(new double[bpack_size]);
#pragma omp for schedule(dynamic)
    for (Index t = 0; t < tiles; ++t) {
      const Index i0 = (t % tiles_m) * kMc;
      const Index j0 = (t / tiles_m) * kNc;
      gemm_tile(g, i0, std::min(kMc, m - i0), j0, std::min(kNc, n - j0), apack.get(), bpack.get());
    }
  }
}

#ifdef NORVIK_HAVE_AVX2_KERNEL
namespace {
__attribute__((target("avx2,fma"))) double dot_avx2(const double* x, const double* y, Index n) {
  __m256d s0 = _mm256_setzero_pd(), s1 = _mm256_setzero_pd();
  __m256d s2 = _mm256_setzero_pd(), s3 = _mm256_setzero_pd();
  Index i = 0;
  for (; i + 16 <= n; i += 16) {
    s0 = _mm256_fmadd_pd(_mm256_loadu_pd(x + i), _mm256_loadu_pd(y + i), s0);
    s1 = _mm256_fmadd_pd(_mm256_loadu_pd(x + i + 4), _mm256_loadu_pd(y + i + 4), s1);
    s2 = _mm256_fmadd_pd(_mm256_loadu_pd(x + i + 8), _mm256_loadu_pd(y + i + 8), s2);
    s3 = _mm256_fmadd_pd(_mm256_loadu_pd(x + i + 12), _mm256_loadu_pd(y + i + 12), s3);
  }
  for (; i + 4 <= n; i += 4) {
    s0 = _mm256_fmadd_pd(_mm256_loadu_pd(x + i), _mm256_loadu_pd(y + i), s0);
  }
  alignas(32) double part[4];
  _mm256_store_pd(part, _mm256_add_pd(_mm256_add_pd(s0, s1), _mm256_add_pd(s2, s3)));
  double s = (part[0] + part[1]) + (part[2] + part[3]);
  for (; i < n; ++i) s += x[i] * y[i];
  return s;
}
}  // namespace
#endif

double dot(const double* x, const double* y, Index n) {
#ifdef NORVIK_HAVE_AVX2_KERNEL
  if (n >= 32 && have_avx2_fma()) return dot_avx2(x, y, n);
#endif
  // Four partial sums let the compiler keep two vector registers busy.
  double s0 = 0.0, s1 = 0.0, s2 = 0.0, s3 = 0.0;
  Index i = 0;
  for (; i + 4 <= n; i += 4) {
    s0 += x[i] * y[i];
    s1 += x[i + 1] * y[i + 1];
    s2 += x[i + 2] * y[i + 2];
    s3 += x[i + 3] * y[i + 3];
  }
  for (; i < n; ++i) s0 += x[i] * y[i];
  return (s0 + s1) + (s2 + s3);
}

double norm2(const double* x, Index n) {
  double big = 0.0;
  for (Index i = 0; i < n; ++i) big = std::max(big, std::abs(x[i]));
  if (big == 0.0 || !std::isfinite(big)) return big;
  // Plain sum of squares when it can neither overflow nor lose everything to
  // underflow; otherwise scale by the largest element first.
  if (big > 1e-140 && big < 1e140) return std::sqrt(dot(x, x, n));
  double s = 0.0;
  for (Index i = 0; i < n; ++i) {
    const double t = x[i] / big;
    s += t * t;
  }
  return big * std::sqrt(s);
}

void gemv(Op op_a, double alpha, ConstMatrixView a, std::span<const double> x, double beta,
          std::span<double> y) {
  const Index m = a.rows();
  const Index n = a.cols();
  if (op_a == Op::transpose) {
    // y_j = alpha·A(:, j)·x + beta·y_j: one dot product per column.
    const bool threads = parallel_pays(static_cast<double>(m) * n);
#pragma omp parallel for schedule(static) if (threads)
    for (Index j = 0; j < n; ++j) {
      const double s = alpha * dot(a.col(j), x.data(), m);
      y[j] = beta == 0.0 ? s : beta * y[j] + s;
    }
    return;
  }
  // y = alpha·Σ_j A(:, j)·x_j + beta·y, in row blocks so that each thread owns
  // its rows and sums the columns in order.
  constexpr Index kRows = 256;
  const Index blocks = (m + kRows - 1) / kRows;
  const bool threads = blocks > 1 && parallel_pays(static_cast<double>(m) * n);
#pragma omp parallel for schedule(static) if (threads)
  for (Index blk = 0; blk < blocks; ++blk) {
    const Index i0 = blk * kRows;
    const Index rows = std::min(kRows, m - i0);
    double acc[kRows];
    std::fill(acc, acc + rows, 0.0);
    for (Index j = 0; j < n; ++j) {
      const double xj = x[j];
      const double* aj = a.col(j) + i0;
      for (Index i = 0; i < rows; ++i) acc[i] += aj[i] * xj;
    }
    for (Index i = 0; i < rows; ++i) {
      y[i0 + i] = beta == 0.0 ? alpha * acc[i] : beta * y[i0 + i] + alpha * acc[i];
    }
  }
}

void solve_lower(Op op_l, ConstMatrixView l, MatrixView b) {
  const Index n = l.rows();
  const Index nrhs = b.cols();
  if (n <= 0 || nrhs <= 0) return;
  constexpr Index kNb = 64;
  const bool threads = parallel_pays(static_cast<double>(n) * n * nrhs / 4.0);
  if (op_l == Op::none) {
    for (Index k0 = 0; k0 < n; k0 += kNb) {
      const Index kb = std::min(kNb, n - k0);
#pragma omp parallel for schedule(static) if (threads)
      for (Index j = 0; j < nrhs; ++j) {
        double* x = b.col(j) + k0;
        for (Index p = 0; p < kb; ++p) {
          x[p] /= l(k0 + p, k0 + p);
          const double xp = x[p];
          const double* lp = l.col(k0 + p) + k0;
          for (Index i = p + 1; i < kb; ++i) x[i] -= lp[i] * xp;
        }
      }
      if (k0 + kb < n) {
        gemm(Op::none, Op::none, -1.0, l.block(k0 + kb, k0, n - k0 - kb, kb),
             b.block(k0, 0, kb, nrhs), 1.0, b.block(k0 + kb, 0, n - k0 - kb, nrhs));
      }
    }
    return;
  }
  // Lᵀ·X = B: blocks from the bottom up.
  for (Index kend = n; kend > 0; kend -= kNb) {
    const Index k0 = std::max<Index>(0, kend - kNb);
    const Index kb = kend - k0;
#pragma omp parallel for schedule(static) if (threads)
    for (Index j = 0; j < nrhs; ++j) {
      double* x = b.col(j) + k0;
      for (Index p = kb - 1; p >= 0; --p) {
        const double* lp = l.col(k0 + p) + k0;
        double s = x[p];
        for (Index i = p + 1; i < kb; ++i) s -= lp[i] * x[i];
        x[p] = s / lp[p];
      }
    }
    if (k0 > 0) {
      gemm(Op::transpose, Op::none, -1.0, l.block(k0, 0, kb, k0), b.block(k0, 0, kb, nrhs), 1.0,
           b.block(0, 0, k0, nrhs));
    }
  }
}

// ---- matrix.h helpers ----

void copy(ConstMatrixView src, MatrixView dst) {
  for (Index j = 0; j < src.cols(); ++j) std::copy_n(src.col(j), src.rows(), dst.col(j));
}

void transpose(ConstMatrixView src, MatrixView dst) {
  constexpr Index kB = 32;
  for (Index j0 = 0; j0 < src.cols(); j0 += kB) {
    for (Index i0 = 0; i0 < src.rows(); i0 += kB) {
      const Index j1 = std::min(src.cols(), j0 + kB);
      const Index i1 = std::min(src.rows(), i0 + kB);
      for (Index j = j0; j < j1; ++j) {
        for (Index i = i0; i < i1; ++i) dst(j, i) = src(i, j);
      }
    }
  }
}

void set_identity(MatrixView a) {
  for (Index j = 0; j < a.cols(); ++j) {
    std::fill_n(a.col(j), a.rows(), 0.0);
    if (j < a.rows()) a(j, j) = 1.0;
  }
}

void symmetrize(MatrixView a) {
  const Index n = a.rows();
  for (Index j = 0; j < n; ++j) {
    for (Index i = j + 1; i < n; ++i) {
      const double s = 0.5 * (a(i, j) + a(j, i));
      a(i, j) = s;
      a(j, i) = s;
    }
  }
}

bool all_finite(ConstMatrixView a) {
  for (Index j = 0; j < a.cols(); ++j) {
    const double* c = a.col(j);
    for (Index i = 0; i < a.rows(); ++i) {
      if (!std::isfinite(c[i])) return false;
    }
  }
  return true;
}

}  // namespace norvik::linalg
