// Exported one-electron integral routines: raw pointers in, core calls, raw
// pointers out.
#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

#include "abi/abi_support.h"
#include "basis/basis_set.h"
#include "common/constants.h"
#include "common/error.h"
#include "common/fortran_format.h"
#include "integrals/one/boys.h"
#include "integrals/one/one_electron_matrices.h"
#include "integrals/one/pgf.h"
#include "integrals/one/primitives.h"
#include "norvik/integrals_one.h"

namespace one = norvik::integrals::one;
using norvik::abi::guarded;

namespace {

one::Vec3 vec3(const double* p) {
  return {p[0], p[1], p[2]};
}
one::Lmn lmn3(const norvik_int* p) {
  return {p[0], p[1], p[2]};
}

one::Primitive primitive(const double* centre, const double* exponent, const norvik_int* lmn) {
  return {vec3(centre), *exponent, lmn3(lmn)};
}

void put3(double* out, const one::Vec3& v) {
  out[0] = v[0];
  out[1] = v[1];
  out[2] = v[2];
}

// The basis of MAKEBASIS's flat arrays as a BasisSet value.
norvik::basis::BasisSet basis_from_arrays(int nshell, const norvik_int* kind, const norvik_int* lm,
                                          const norvik_int* nprim, const norvik_int* nterm,
                                          const norvik_int* lmn, const double* term_coef,
                                          const double* exps, const double* coef,
                                          const norvik_int* atom) {
  namespace nb = norvik::basis;
  constexpr int F = nb::kMaxFunctionsPerShell, P = nb::kMaxPrimitives, T = nb::kMaxTerms;
  nb::BasisSet basis;
  basis.shells.resize(static_cast<std::size_t>(nshell));
  for (int s = 0; s < nshell; ++s) {
    nb::Shell& shell = basis.shells[static_cast<std::size_t>(s)];
    shell.kind = kind[s];
    shell.nprim = nprim[s];
    shell.atom = atom[s] - 1;
    if (shell.kind < 1 || shell.kind > F || shell.nprim < 1 || shell.nprim > P) {
      throw norvik::Error(norvik::fortran::list_directed(
          {"Wrong shell in calcMtrx. shell = ", static_cast<std::int64_t>(s + 1)}));
    }
    for (int k = 0; k < P; ++k) shell.exponents[k] = exps[k + P * s];
    for (int f = 0; f < shell.kind; ++f) {
      nb::Function& fn = shell.functions[static_cast<std::size_t>(f)];
      const int fs = f + F * s;
      fn.L = lm[2 * fs];
      fn.M = lm[2 * fs + 1];
      fn.nterm = nterm[fs];
      for (int t = 0; t < T; ++t) {
        for (int k = 0; k < 3; ++k) fn.lmn[t][k] = lmn[k + 3 * (t + T * fs)];
        fn.term_coef[t] = term_coef[t + T * fs];
      }
      for (int k = 0; k < P; ++k) fn.coef[k] = coef[k + P * fs];
    }
  }
  return basis;
}

void pgf_gradient_out(int l, int m, const double* alpha, const double* a, const double* point,
                      double* grad) {
  put3(grad, one::pgf_gradient(l, m, *alpha, vec3(a), vec3(point)));
}

}  // namespace

// ---- primitive pairs ----

extern "C" NORVIK_API void OVERLAPINT(NORVIK_PRIMITIVE_PAIR_ARGS, double* S) {
  guarded([&] { *S = one::overlap(primitive(A, alpha, lmnA), primitive(B, beta, lmnB)); });
}

extern "C" NORVIK_API void KINEENEINT(NORVIK_PRIMITIVE_PAIR_ARGS, double* T) {
  guarded([&] { *T = one::kinetic(primitive(A, alpha, lmnA), primitive(B, beta, lmnB)); });
}

extern "C" NORVIK_API void NUCLATTINT(NORVIK_PRIMITIVE_PAIR_ARGS, const double* C, double* V) {
  guarded([&] {
    *V = one::nuclear_attraction(primitive(A, alpha, lmnA), primitive(B, beta, lmnB), vec3(C));
  });
}

extern "C" NORVIK_API void NUCLATTINT_FAST(NORVIK_PRIMITIVE_PAIR_ARGS, const double* C,
                                           const double* F, double* V) {
  guarded([&] {
    const int ltot = lmnA[0] + lmnA[1] + lmnA[2] + lmnB[0] + lmnB[1] + lmnB[2];
    *V = one::nuclear_attraction(primitive(A, alpha, lmnA), primitive(B, beta, lmnB), vec3(C),
                                 norvik::abi::span_of(F, ltot + 1));
  });
}

// ---- moments ----

#define NORVIK_MOMENT(NAME, EXPR)                                            \
  extern "C" NORVIK_API void NAME(NORVIK_PRIMITIVE_PAIR_ARGS, double* out) { \
    guarded([&] {                                                            \
      const one::Primitive a = primitive(A, alpha, lmnA);                    \
      const one::Primitive b = primitive(B, beta, lmnB);                     \
      *out = (EXPR);                                                         \
    });                                                                      \
  }

NORVIK_MOMENT(XBINT, b.centre[0] * one::overlap(a, b))
NORVIK_MOMENT(YBINT, b.centre[1] * one::overlap(a, b))
NORVIK_MOMENT(ZBINT, b.centre[2] * one::overlap(a, b))
NORVIK_MOMENT(XMXBINT, one::overlap_raised(a, b, {1, 0, 0}))
NORVIK_MOMENT(YMYBINT, one::overlap_raised(a, b, {0, 1, 0}))
NORVIK_MOMENT(ZMZBINT, one::overlap_raised(a, b, {0, 0, 1}))
NORVIK_MOMENT(XMXB2INT, one::overlap_raised(a, b, {2, 0, 0}))
NORVIK_MOMENT(YMYB2INT, one::overlap_raised(a, b, {0, 2, 0}))
NORVIK_MOMENT(ZMZB2INT, one::overlap_raised(a, b, {0, 0, 2}))
NORVIK_MOMENT(XMXBYMYBINT, one::overlap_raised(a, b, {1, 1, 0}))
NORVIK_MOMENT(XMXBZMZBINT, one::overlap_raised(a, b, {1, 0, 1}))
NORVIK_MOMENT(YMYBZMZBINT, one::overlap_raised(a, b, {0, 1, 1}))
NORVIK_MOMENT(XINT, one::cartesian_moment(a, b, {1, 0, 0}))
NORVIK_MOMENT(YINT, one::cartesian_moment(a, b, {0, 1, 0}))
NORVIK_MOMENT(ZINT, one::cartesian_moment(a, b, {0, 0, 1}))
NORVIK_MOMENT(XXINT, one::cartesian_moment(a, b, {2, 0, 0}))
NORVIK_MOMENT(YYINT, one::cartesian_moment(a, b, {0, 2, 0}))
NORVIK_MOMENT(ZZINT, one::cartesian_moment(a, b, {0, 0, 2}))
NORVIK_MOMENT(XYINT, one::cartesian_moment(a, b, {1, 1, 0}))
NORVIK_MOMENT(XZINT, one::cartesian_moment(a, b, {1, 0, 1}))
NORVIK_MOMENT(YZINT, one::cartesian_moment(a, b, {0, 1, 1}))
NORVIK_MOMENT(R2INT, one::cartesian_moment(a, b, {2, 0, 0}) +
                         one::cartesian_moment(a, b, {0, 2, 0}) +
                         one::cartesian_moment(a, b, {0, 0, 2}))
#undef NORVIK_MOMENT

// ---- tables ----

extern "C" NORVIK_API void MAKEFNUTB(const double* T, const norvik_int* numax, double* F) {
  guarded([&] {
    one::boys_table(*T, *numax, std::span<double, one::kBoysTableSize>(F, one::kBoysTableSize));
  });
}

extern "C" NORVIK_API void MAKEGITB(const norvik_int* l1, const norvik_int* l2, const double* PA,
                                    const double* PB, const double* gamma, const double* PC,
                                    double* G) {
  guarded([&] {
    one::a_factor_table(*l1, *l2, *PA, *PB, *gamma, *PC,
                        std::span<double, one::kGTableSize>(G, one::kGTableSize));
  });
}

extern "C" NORVIK_API void MAKEGGGNUTB(const norvik_int* lmnA, const norvik_int* lmnB,
                                       const double* PA, const double* PB, const double* gamma,
                                       const double* PC, double* G) {
  guarded([&] {
    one::a_factor_product_table(lmn3(lmnA), lmn3(lmnB), vec3(PA), vec3(PB), *gamma, vec3(PC),
                                std::span<double, one::kGTableSize>(G, one::kGTableSize));
  });
}

extern "C" NORVIK_API double FJ(const norvik_int* j, const norvik_int* l1, const norvik_int* l2,
                                const double* a, const double* b) {
  return norvik::abi::guarded_value<double>([&] { return one::binomial_f(*j, *l1, *l2, *a, *b); });
}

extern "C" NORVIK_API double GIRU(const norvik_int* i, const norvik_int* r, const norvik_int* u,
                                  const norvik_int* l1, const norvik_int* l2, const double* PA,
                                  const double* PB, const double* gamma, const double* PC) {
  return norvik::abi::guarded_value<double>(
      [&] { return one::a_factor(*i, *r, *u, *l1, *l2, *PA, *PB, *gamma, *PC); });
}

extern "C" NORVIK_API double POWERFUNC(const double* x, const norvik_int* n) {
  return one::power(*x, *n);
}

// ---- pointwise values ----

extern "C" NORVIK_API double PGF(const norvik_int* l, const norvik_int* m, const double* alpha,
                                 const double* A, const double* point) {
  return norvik::abi::guarded_value<double>(
      [&] { return one::pgf_value(*l, *m, *alpha, vec3(A), vec3(point)); });
}

extern "C" NORVIK_API void PGFGRAD(const norvik_int* l, const norvik_int* m, const double* alpha,
                                   const double* A, const double* point, double* grad) {
  guarded([&] { pgf_gradient_out(*l, *m, alpha, A, point, grad); });
}

#define NORVIK_PGFGRAD(NAME, L, M)                                   \
  extern "C" NORVIK_API void NAME(NORVIK_PGFGRAD_ARGS) {             \
    guarded([&] { pgf_gradient_out(L, M, alpha, A, point, grad); }); \
  }

NORVIK_PGFGRAD(PGFGRAD_00, 0, 0)
NORVIK_PGFGRAD(PGFGRAD_1M1, 1, -1)
NORVIK_PGFGRAD(PGFGRAD_1Z0, 1, 0)
NORVIK_PGFGRAD(PGFGRAD_1P1, 1, 1)
NORVIK_PGFGRAD(PGFGRAD_2M2, 2, -2)
NORVIK_PGFGRAD(PGFGRAD_2M1, 2, -1)
NORVIK_PGFGRAD(PGFGRAD_2Z0, 2, 0)
NORVIK_PGFGRAD(PGFGRAD_2P1, 2, 1)
NORVIK_PGFGRAD(PGFGRAD_2P2, 2, 2)
NORVIK_PGFGRAD(PGFGRAD_2PX, 2, 10)
NORVIK_PGFGRAD(PGFGRAD_3M3, 3, -3)
NORVIK_PGFGRAD(PGFGRAD_3M2, 3, -2)
NORVIK_PGFGRAD(PGFGRAD_3M1, 3, -1)
NORVIK_PGFGRAD(PGFGRAD_3Z0, 3, 0)
NORVIK_PGFGRAD(PGFGRAD_3P1, 3, 1)
NORVIK_PGFGRAD(PGFGRAD_3P2, 3, 2)
NORVIK_PGFGRAD(PGFGRAD_3P3, 3, 3)
#undef NORVIK_PGFGRAD

// ---- one-electron matrices ----

extern "C" NORVIK_API void CALCMTRX(const norvik_int* nShellTotal, const norvik_int* ShellKind,
                                    const norvik_int* ShellLM, const norvik_int* ShellNPrim,
                                    const norvik_int* ShellNTerm, const norvik_int* ShellLMN,
                                    const double* ShellTermCoef, const double* ShellExp,
                                    const double* ShellCoef, const norvik_int* ShellAtom,
                                    const norvik_int* nAtom, const double* Coord,
                                    const double* Charge, const norvik_int* nBasis, double* S,
                                    double* T, double* V, double* Dip) {
  guarded([&] {
    const auto basis = basis_from_arrays(*nShellTotal, ShellKind, ShellLM, ShellNPrim, ShellNTerm,
                                         ShellLMN, ShellTermCoef, ShellExp, ShellCoef, ShellAtom);
    const int n = *nBasis;
    if (basis.nbasis() != n) {
      throw norvik::Error(norvik::fortran::list_directed(
          {"Wrong nBasis in calcMtrx. nBasis, sum of shell kinds = ", static_cast<std::int64_t>(n),
           static_cast<std::int64_t>(basis.nbasis())}));
    }
    const std::size_t natom = norvik::abi::count(*nAtom);
    std::vector<one::Vec3> positions(natom);
    for (std::size_t i = 0; i < natom; ++i)
      for (std::size_t k = 0; k < 3; ++k)
        positions[i][k] = Coord[k + 3 * i] / norvik::constants::kBohrAngstrom;
    const std::span<const double> charges(Charge, natom);

    // n equals the sum of the shell kinds, so it is not negative here.
    const std::size_t block = norvik::abi::square(n);
    one::OneElectronMatrices out;
    out.overlap = {S, n};
    out.kinetic = {T, n};
    out.potential = {V, n};
    for (int k = 0; k < 3; ++k) out.position[k] = {Dip + k * block, n};
    one::build_one_electron_matrices(
        basis, positions, charges, out,
        {norvik::constants::kHartreeEv, norvik::constants::kBohrAngstrom});
  });
}
