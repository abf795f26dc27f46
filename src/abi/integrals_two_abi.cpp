// Exported routines of the two-electron integrals, the store and the Fock builds.
#include <array>
#include <cstdint>
#include <span>

#include "abi/abi_support.h"
#include "basis/basis_set.h"
#include "common/constants.h"
#include "integrals/two/phmd.h"
#include "integrals/two/shells.h"
#include "integrals/two/two_electron.h"
#include "norvik/integrals_two.h"

namespace {

namespace two = norvik::integrals::two;
namespace basis = norvik::basis;
using norvik::abi::context_view;
using norvik::abi::count;
using norvik::abi::packed;
using norvik::abi::square;

two::BlockRequest block_request(double* eri, const double* expo, const double* coef,
                                const double* centre, const norvik_int* nprim,
                                const norvik_int* lqn, const norvik_int* maxdim,
                                const norvik_int* mxprsh, const double* cutoff) {
  two::BlockRequest r;
  r.eri = eri;
  r.exponents = expo;
  r.coefficients = coef;
  r.centres = centre;
  r.nprim = nprim;
  r.l = lqn;
  r.maxdim = *maxdim;
  r.mxprsh = *mxprsh;
  r.cutoff = *cutoff;
  return r;
}

// The shell record that norvik/common.h lays out, against the basis limits.
static_assert(NORVIK_SHELL_EXPONENTS + basis::kMaxPrimitives == NORVIK_SHELL_FUNCTIONS);
static_assert(NORVIK_SHELL_FUNCTION_SIZE == 3 + 4 * basis::kMaxTerms + basis::kMaxPrimitives);
constexpr int kFunctionSlotsEnd =
    NORVIK_SHELL_FUNCTIONS + basis::kMaxFunctionsPerShell * NORVIK_SHELL_FUNCTION_SIZE;
static_assert(kFunctionSlotsEnd + 1 == NORVIK_SHELL_RECORD);  // the last double is unused

// The block arguments (NORVIK_ERI_BLOCK_ARGS) as a request; `work` is not read.
#define NORVIK_BLOCK_REQUEST \
  block_request(eri, expo, coef, centre, nprim, lqn, maxdim, mxprsh, cutoff)

std::span<const double> shell_table(const norvik_int* nshell, const double* shelltab) {
  return {shelltab, count(*nshell) * two::kShellRecord};
}

std::span<const std::int32_t> shell_pairs(const norvik_int* nshpair, const norvik_int* shpair) {
  return {shpair, 2 * count(*nshpair)};
}

// A density or Fock pair (nbasis, nbasis, 2).
template <class T>
std::span<T> spin_pair(const norvik_int* nbasis, T* p) {
  return {p, 2 * square(*nbasis)};
}

}  // namespace

extern "C" NORVIK_API void INT2ELEC(NORVIK_ERI_BLOCK_ARGS) {
  (void)work;
  norvik::abi::guarded([&] { two::int2elec(NORVIK_BLOCK_REQUEST); });
}

extern "C" NORVIK_API void INT2PHMD(NORVIK_ERI_BLOCK_ARGS) {
  (void)work;
  norvik::abi::guarded([&] { two::int2phmd(NORVIK_BLOCK_REQUEST); });
}

// The class kernels: S = 0, P = 1, D = 2 in the class code 27La + 9Lb + 3Lc + Ld.
#define NORVIK_CLASS_KERNEL(NAME, LA, LB, LC, LD)                                        \
  extern "C" NORVIK_API void NAME(NORVIK_ERI_BLOCK_ARGS) {                               \
    (void)work;                                                                          \
    norvik::abi::guarded([&] {                                                           \
      two::int2phmd_class(NORVIK_BLOCK_REQUEST, two::class_code(LA, LB, LC, LD), #NAME); \
    });                                                                                  \
  }

NORVIK_CLASS_KERNEL(INT2SSSS, 0, 0, 0, 0)
NORVIK_CLASS_KERNEL(INT2PSSS, 1, 0, 0, 0)
NORVIK_CLASS_KERNEL(INT2PPSS, 1, 1, 0, 0)
NORVIK_CLASS_KERNEL(INT2PSPS, 1, 0, 1, 0)
NORVIK_CLASS_KERNEL(INT2PPPS, 1, 1, 1, 0)
NORVIK_CLASS_KERNEL(INT2PPPP, 1, 1, 1, 1)
NORVIK_CLASS_KERNEL(INT2PPPP2, 1, 1, 1, 1)
NORVIK_CLASS_KERNEL(INT2DSSS, 2, 0, 0, 0)
NORVIK_CLASS_KERNEL(INT2DPSS, 2, 1, 0, 0)
NORVIK_CLASS_KERNEL(INT2DSPS, 2, 0, 1, 0)
NORVIK_CLASS_KERNEL(INT2DDSS, 2, 2, 0, 0)
NORVIK_CLASS_KERNEL(INT2DPPS, 2, 1, 1, 0)
NORVIK_CLASS_KERNEL(INT2DSDS, 2, 0, 2, 0)
NORVIK_CLASS_KERNEL(INT2DSPP, 2, 0, 1, 1)
NORVIK_CLASS_KERNEL(INT2DDPS, 2, 2, 1, 0)
NORVIK_CLASS_KERNEL(INT2DPDS, 2, 1, 2, 0)
NORVIK_CLASS_KERNEL(INT2DPPP, 2, 1, 1, 1)
NORVIK_CLASS_KERNEL(INT2DDDS, 2, 2, 2, 0)
NORVIK_CLASS_KERNEL(INT2DDPP, 2, 2, 1, 1)
NORVIK_CLASS_KERNEL(INT2DPDP, 2, 1, 2, 1)
NORVIK_CLASS_KERNEL(INT2DPDP1, 2, 1, 2, 1)
NORVIK_CLASS_KERNEL(INT2DDDP, 2, 2, 2, 1)
NORVIK_CLASS_KERNEL(INT2DDDP1, 2, 2, 2, 1)
NORVIK_CLASS_KERNEL(INT2DDDD, 2, 2, 2, 2)
NORVIK_CLASS_KERNEL(INT2DDDD1, 2, 2, 2, 2)
NORVIK_CLASS_KERNEL(INT2DDDD2, 2, 2, 2, 2)
NORVIK_CLASS_KERNEL(INT2DDDD3, 2, 2, 2, 2)

extern "C" NORVIK_API void PACKSHELLS(const norvik_int* natom, const double* position,
                                      const norvik_int* nshellatom, const norvik_int* nshell,
                                      const norvik_int* kind, const norvik_int* lm,
                                      const norvik_int* nprim, const norvik_int* nterm,
                                      const norvik_int* lmn, const double* termcoef,
                                      const double* expo, const double* coef, double* shelltab) {
  norvik::abi::guarded([&] {
    constexpr int F = basis::kMaxFunctionsPerShell, T = basis::kMaxTerms, P = basis::kMaxPrimitives;
    int s = 0;
    for (int atom = 0; atom < *natom; ++atom) {
      std::array<double, 3> centre{};
      for (int k = 0; k < 3; ++k)
        centre[k] = position[3 * atom + k] / norvik::constants::kBohrAngstrom;
      for (int n = 0; n < nshellatom[atom] && s < *nshell; ++n, ++s) {
        basis::Shell shell;
        shell.kind = kind[s];
        shell.nprim = nprim[s];
        shell.atom = atom;
        for (int p = 0; p < P; ++p) shell.exponents[p] = expo[P * s + p];
        for (int f = 0; f < F; ++f) {
          basis::Function& fn = shell.functions[f];
          const int sf = F * s + f;
          fn.L = lm[2 * sf];
          fn.M = lm[2 * sf + 1];
          fn.nterm = nterm[sf];
          for (int t = 0; t < T; ++t) {
            for (int k = 0; k < 3; ++k) fn.lmn[t][k] = lmn[k + 3 * (t + T * sf)];
            fn.term_coef[t] = termcoef[t + T * sf];
          }
          for (int p = 0; p < P; ++p) fn.coef[p] = coef[p + P * sf];
        }
        two::pack_shell(shell, centre, atom + 1,
                        {shelltab + static_cast<std::ptrdiff_t>(s) * two::kShellRecord,
                         static_cast<std::size_t>(two::kShellRecord)});
      }
    }
  });
}

extern "C" NORVIK_API void REMOVE_SH_PAIR(const norvik_int* nshell, const double* shelltab,
                                          norvik_int* nshpair, norvik_int* shpair) {
  norvik::abi::guarded([&] {
    const auto kept = two::remove_shell_pairs(*nshell, shell_table(nshell, shelltab));
    std::copy(kept.begin(), kept.end(), shpair);
    *nshpair = static_cast<norvik_int>(kept.size() / 2);
  });
}

extern "C" NORVIK_API void REMOVE_BA_PAIR(const norvik_int* nbasis, const norvik_int* nshell,
                                          const double* shelltab, const norvik_int* nshpair,
                                          const norvik_int* shpair, norvik_int* npair,
                                          norvik_int* pairlist, norvik_int* pairmap,
                                          double* vdiag) {
  norvik::abi::guarded([&] {
    const std::size_t n2 = packed(*nbasis);
    two::diagonal_table(*nbasis, *nshell, shell_table(nshell, shelltab), *nshpair,
                        shell_pairs(nshpair, shpair), {vdiag, n2});
    *npair = two::remove_basis_pairs(*nbasis, {vdiag, n2}, {pairlist, 2 * n2}, {pairmap, n2});
  });
}

extern "C" NORVIK_API void CALCVJDG(const norvik_int* nbasis, const norvik_int* nshell,
                                    const double* shelltab, const norvik_int* nshpair,
                                    const norvik_int* shpair, double* vdiag) {
  norvik::abi::guarded([&] {
    two::diagonal_table(*nbasis, *nshell, shell_table(nshell, shelltab), *nshpair,
                        shell_pairs(nshpair, shpair), {vdiag, packed(*nbasis)});
  });
}

extern "C" NORVIK_API void CALCVINT(const norvik_int* nbasis, NORVIK_CONTEXT_ARGS) {
  norvik::abi::guarded([&] {
    // The store is written through its own span; the view does not read it.
    two::fill_store(context_view(*nbasis, NORVIK_CONTEXT_CALL, false), {vint, packed(*npair)});
  });
}

extern "C" NORVIK_API void CALCVINT_SUB(const norvik_int* nshell, const double* shelltab,
                                        const norvik_int* ishell, double* block) {
  norvik::abi::guarded([&] {
    two::shell_quartet_block(*nshell, shell_table(nshell, shelltab),
                             {ishell[0], ishell[1], ishell[2], ishell[3]},
                             {block, static_cast<std::size_t>(two::kQuartetBlockSize)});
  });
}

extern "C" NORVIK_API void SHIFTVPART(const norvik_int* nbasis, NORVIK_CONTEXT_ARGS,
                                      const norvik_int* ishell, const double* block) {
  norvik::abi::guarded([&] {
    two::shift_block(context_view(*nbasis, NORVIK_CONTEXT_CALL, false),
                     {ishell[0], ishell[1], ishell[2], ishell[3]},
                     {block, static_cast<std::size_t>(two::kQuartetBlockSize)},
                     {vint, packed(*npair)});
  });
}

extern "C" NORVIK_API void CALCVDRCTXCH(const norvik_int* nbasis, NORVIK_CONTEXT_ARGS,
                                        const double* a, const double* rho, double* fock) {
  if (*a == 0.0) return CALCVHARTREE(nbasis, NORVIK_CONTEXT_CALL, rho, fock);
  norvik::abi::guarded([&] {
    two::fock_stored(context_view(*nbasis, NORVIK_CONTEXT_CALL, true), *a, spin_pair(nbasis, rho),
                     spin_pair(nbasis, fock));
  });
}

extern "C" NORVIK_API void CALCVHARTREE(const norvik_int* nbasis, NORVIK_CONTEXT_ARGS,
                                        const double* rho, double* fock) {
  norvik::abi::guarded([&] {
    two::coulomb_stored(context_view(*nbasis, NORVIK_CONTEXT_CALL, true), spin_pair(nbasis, rho),
                        spin_pair(nbasis, fock));
  });
}

extern "C" NORVIK_API void UPDATEDRCTXCH(const norvik_int* nbasis, NORVIK_CONTEXT_ARGS,
                                         const double* a, const double* rho, double* rhoprev,
                                         double* fock) {
  if (*a == 0.0) return UPDATEHARTREE(nbasis, NORVIK_CONTEXT_CALL, rho, rhoprev, fock);
  norvik::abi::guarded([&] {
    two::fock_direct(context_view(*nbasis, NORVIK_CONTEXT_CALL, false), *a, spin_pair(nbasis, rho),
                     spin_pair(nbasis, rhoprev), spin_pair(nbasis, fock));
  });
}

extern "C" NORVIK_API void UPDATEHARTREE(const norvik_int* nbasis, NORVIK_CONTEXT_ARGS,
                                         const double* rho, double* rhoprev, double* fock) {
  norvik::abi::guarded([&] {
    two::coulomb_direct(context_view(*nbasis, NORVIK_CONTEXT_CALL, false), spin_pair(nbasis, rho),
                        spin_pair(nbasis, rhoprev), spin_pair(nbasis, fock));
  });
}

extern "C" NORVIK_API void SCREENING(const norvik_int* nbasis, NORVIK_CONTEXT_ARGS,
                                     const norvik_int* ishell, const double* drho,
                                     norvik_int* flag) {
  norvik::abi::guarded([&] {
    const auto c = context_view(*nbasis, NORVIK_CONTEXT_CALL, false);
    *flag = two::screening(c, {ishell[0] - 1, ishell[1] - 1, ishell[2] - 1, ishell[3] - 1},
                           spin_pair(nbasis, drho))
                ? 1
                : 0;
  });
}
