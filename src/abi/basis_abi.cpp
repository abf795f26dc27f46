// Exported routines of the basis-set library: the entry points, the family and
// element-group routines, and the shared angular fills.  The 6-31G-family data
// arrays are exported by src/basis/generated/basis_631g_tables.cpp.
#include <algorithm>
#include <array>
#include <span>
#include <vector>

#include "abi/abi_support.h"
#include "basis/angular.h"
#include "basis/families.h"
#include "basis/library.h"
#include "basis/shell_arrays.h"
#include "norvik/basis.h"

namespace {

namespace basis = norvik::basis;
using basis::AtomLayout;
using basis::AtomShells;
using basis::Family;
using basis::Group;
using basis::Zeta;
using norvik::abi::guarded;
using norvik::abi::kLongKeywordLength;
using norvik::abi::text_in;

std::string_view name_in(const char* basname) {
  return text_in(basname, kLongKeywordLength);
}

void put_layout(const AtomLayout& layout, norvik_int* nshell, norvik_int* shellkind,
                norvik_int* nbasis) {
  *nshell = layout.nshell;
  std::copy(layout.kind.begin(), layout.kind.end(), shellkind);
  *nbasis = layout.nbasis;
}

void put_zeta(const Zeta& zeta, double* out) {
  std::copy(zeta.begin(), zeta.end(), out);
}

Zeta zeta_in(const double* zeta) {
  Zeta z{};
  std::copy(zeta, zeta + basis::kMaxZeta, z.begin());
  return z;
}

basis::AngularArrays angular_out(norvik_int* lm, norvik_int* nterm, norvik_int* lmn,
                                 double* termcoef, norvik_int* nprim) {
  return {lm, nterm, lmn, termcoef, nprim};
}

// The bodies shared by the family and group routines.
void layout_routine(Family family, bool cartesian_d, const norvik_int* zatom, norvik_int* nshell,
                    norvik_int* shellkind, norvik_int* nbasis) {
  guarded([&] {
    put_layout(basis::family_layout(family, cartesian_d, *zatom), nshell, shellkind, nbasis);
  });
}

void zeta_routine(Family family, const norvik_int* zatom, double* zeta) {
  guarded([&] { put_zeta(basis::family_zeta(family, *zatom), zeta); });
}

void angular_routine(Family family, const Group* group, const norvik_int* zatom, norvik_int* lm,
                     norvik_int* nterm, norvik_int* lmn, double* termcoef, norvik_int* nprim) {
  guarded([&] {
    AtomShells shells{};
    if (group != nullptr) {
      basis::group_angular(family, *group, *zatom, shells);
    } else {
      basis::family_angular(family, *zatom, shells);
    }
    basis::store_atom_angular(shells, angular_out(lm, nterm, lmn, termcoef, nprim));
  });
}

void radial_routine(Family family, const Group* group, const norvik_int* zatom, const double* zeta,
                    double* exps, double* coefs) {
  guarded([&] {
    AtomShells shells{};
    if (group != nullptr) {
      basis::group_radial(family, *group, *zatom, zeta_in(zeta), shells);
    } else {
      basis::family_radial(family, *zatom, zeta_in(zeta), shells);
    }
    basis::store_atom_radial(shells, {exps, coefs});
  });
}

// One shared angular fill applied to `count` consecutive shells.
template <class Fill>
void lmlmn_routine(Fill fill, int count, norvik_int* lm, norvik_int* nterm, norvik_int* lmn,
                   double* termcoef) {
  guarded([&] {
    basis::Shell shell{};
    fill(shell);
    for (int s = 0; s < count; ++s) {
      basis::store_angular(shell, angular_out(lm, nterm, lmn, termcoef, nullptr), s);
    }
  });
}

constexpr Group kHHe = Group::kHHe;
constexpr Group kLiNe = Group::kLiNe;
constexpr Group kNaAr = Group::kNaAr;
constexpr Group kKCa = Group::kKCa;
constexpr Group kScZn = Group::kScZn;
constexpr Group kGaKr = Group::kGaKr;
constexpr Group kRbSr = Group::kRbSr;
constexpr Group kYCd = Group::kYCd;
constexpr Group kInXe = Group::kInXe;

}  // namespace

// ---- Entry points ---------------------------------------------------------------

extern "C" NORVIK_API void ZATMNSHL(const char* basname, const norvik_int* zatom,
                                    norvik_int* nshell, norvik_int* shellkind, norvik_int* nbasis) {
  guarded([&] {
    put_layout(basis::shell_layout(name_in(basname), *zatom), nshell, shellkind, nbasis);
  });
}

extern "C" NORVIK_API void ZATMZETA(const char* basname, const norvik_int* zatom, double* zeta) {
  guarded([&] { put_zeta(basis::zeta(name_in(basname), *zatom), zeta); });
}

extern "C" NORVIK_API void MAKELMLMN(const char* basname, const norvik_int* zatom, norvik_int* lm,
                                     norvik_int* nterm, norvik_int* lmn, double* termcoef,
                                     norvik_int* nprim) {
  guarded([&] {
    AtomShells shells{};
    basis::atom_angular(name_in(basname), *zatom, shells);
    basis::store_atom_angular(shells, angular_out(lm, nterm, lmn, termcoef, nprim));
  });
}

extern "C" NORVIK_API void MAKEKLMG(const char* basname, const norvik_int* zatom,
                                    const double* zeta, double* exps, double* coefs) {
  guarded([&] {
    AtomShells shells{};
    basis::atom_radial(name_in(basname), *zatom, zeta_in(zeta), shells);
    basis::store_atom_radial(shells, {exps, coefs});
  });
}

extern "C" NORVIK_API void MAKEBASIS(const char* basname, const norvik_int* natom,
                                     const norvik_int* zatom, const double* zeta,
                                     const norvik_int* nshellatom, const norvik_int* shellkindatom,
                                     const norvik_int* nshelltotal, norvik_int* shellkind,
                                     norvik_int* shelllm, norvik_int* shellnprim,
                                     norvik_int* shellnterm, norvik_int* shelllmn,
                                     double* shelltermcoef, double* shellexp, double* shellcoef) {
  guarded([&] {
    const auto n = static_cast<std::size_t>(std::max<norvik_int>(*natom, 0));
    std::vector<Zeta> zetas(n);
    std::vector<std::array<int, basis::kMaxShellsPerAtom>> kinds(n);
    for (std::size_t a = 0; a < n; ++a) {
      zetas[a] = zeta_in(zeta + basis::kMaxZeta * a);
      std::copy_n(shellkindatom + basis::kMaxShellsPerAtom * a, basis::kMaxShellsPerAtom,
                  kinds[a].begin());
    }
    const auto molecule = basis::build_basis(name_in(basname), std::span(zatom, n), zetas,
                                             std::span(nshellatom, n), kinds);
    basis::BasisArrays out;
    out.nshell_total = *nshelltotal;
    out.kind = shellkind;
    out.angular = angular_out(shelllm, shellnterm, shelllmn, shelltermcoef, shellnprim);
    out.radial = {shellexp, shellcoef};
    basis::store_basis(molecule, out);
  });
}

// ---- Family and element-group routines ---------------------------------------------

#define NORVIK_BASIS_FAMILY(SUFFIX, FAMILY)                                                 \
  extern "C" NORVIK_API void ZATMNSHL_##SUFFIX(const norvik_int* zatom, norvik_int* nshell, \
                                               norvik_int* shellkind, norvik_int* nbasis) { \
    layout_routine(FAMILY, false, zatom, nshell, shellkind, nbasis);                        \
  }                                                                                         \
  extern "C" NORVIK_API void ZATMZETA_##SUFFIX(const norvik_int* zatom, double* zeta) {     \
    zeta_routine(FAMILY, zatom, zeta);                                                      \
  }                                                                                         \
  extern "C" NORVIK_API void MAKELMLMN_##SUFFIX(const norvik_int* zatom, norvik_int* lm,    \
                                                norvik_int* nterm, norvik_int* lmn,         \
                                                double* termcoef, norvik_int* nprim) {      \
    angular_routine(FAMILY, nullptr, zatom, lm, nterm, lmn, termcoef, nprim);               \
  }                                                                                         \
  extern "C" NORVIK_API void MAKEKLMG_##SUFFIX(const norvik_int* zatom, const double* zeta, \
                                               double* exps, double* coefs) {               \
    radial_routine(FAMILY, nullptr, zatom, zeta, exps, coefs);                              \
  }

#define NORVIK_BASIS_CARTESIAN(SUFFIX, FAMILY)                                                 \
  extern "C" NORVIK_API void ZATMNSHL_##SUFFIX##C(const norvik_int* zatom, norvik_int* nshell, \
                                                  norvik_int* shellkind, norvik_int* nbasis) { \
    layout_routine(FAMILY, true, zatom, nshell, shellkind, nbasis);                            \
  }

#define NORVIK_BASIS_GROUP(SUFFIX, FAMILY, GROUP, TAG)                                           \
  extern "C" NORVIK_API void MAKELMLMN_##SUFFIX##_##TAG(const norvik_int* zatom, norvik_int* lm, \
                                                        norvik_int* nterm, norvik_int* lmn,      \
                                                        double* termcoef, norvik_int* nprim) {   \
    angular_routine(FAMILY, &GROUP, zatom, lm, nterm, lmn, termcoef, nprim);                     \
  }                                                                                              \
  extern "C" NORVIK_API void MAKEKLMG_##SUFFIX##_##TAG(                                          \
      const norvik_int* zatom, const double* zeta, double* exps, double* coefs) {                \
    radial_routine(FAMILY, &GROUP, zatom, zeta, exps, coefs);                                    \
  }

// The groups of H–Ar, of H–Kr and of H–Xe.
#define NORVIK_BASIS_GROUPS_TO_AR(SUFFIX, FAMILY) \
  NORVIK_BASIS_GROUP(SUFFIX, FAMILY, kHHe, HHE)   \
  NORVIK_BASIS_GROUP(SUFFIX, FAMILY, kLiNe, LINE) \
  NORVIK_BASIS_GROUP(SUFFIX, FAMILY, kNaAr, NAAR)
#define NORVIK_BASIS_GROUPS_TO_KR(SUFFIX, FAMILY) \
  NORVIK_BASIS_GROUPS_TO_AR(SUFFIX, FAMILY)       \
  NORVIK_BASIS_GROUP(SUFFIX, FAMILY, kKCa, KCA)   \
  NORVIK_BASIS_GROUP(SUFFIX, FAMILY, kScZn, SCZN) \
  NORVIK_BASIS_GROUP(SUFFIX, FAMILY, kGaKr, GAKR)
#define NORVIK_BASIS_GROUPS_TO_XE(SUFFIX, FAMILY) \
  NORVIK_BASIS_GROUPS_TO_KR(SUFFIX, FAMILY)       \
  NORVIK_BASIS_GROUP(SUFFIX, FAMILY, kRbSr, RBSR) \
  NORVIK_BASIS_GROUP(SUFFIX, FAMILY, kYCd, YCD)   \
  NORVIK_BASIS_GROUP(SUFFIX, FAMILY, kInXe, INXE)

NORVIK_BASIS_FAMILY(STO3G, Family::kSto3g)

extern "C" NORVIK_API void ZATMZETAISO_STO3G(const norvik_int* zatom, double* zeta) {
  guarded([&] { put_zeta(basis::sto3g_isolated_zeta(*zatom), zeta); });
}

NORVIK_BASIS_FAMILY(321G, Family::k321g)
NORVIK_BASIS_CARTESIAN(321G, Family::k321g)
NORVIK_BASIS_GROUPS_TO_XE(321G, Family::k321g)

NORVIK_BASIS_FAMILY(621G, Family::k621g)
NORVIK_BASIS_GROUPS_TO_AR(621G, Family::k621g)

NORVIK_BASIS_FAMILY(631G, Family::k631g)
NORVIK_BASIS_CARTESIAN(631G, Family::k631g)
NORVIK_BASIS_GROUPS_TO_KR(631G, Family::k631g)

NORVIK_BASIS_FAMILY(631GX, Family::k631gx)
NORVIK_BASIS_CARTESIAN(631GX, Family::k631gx)
NORVIK_BASIS_GROUPS_TO_KR(631GX, Family::k631gx)

NORVIK_BASIS_FAMILY(631GXX, Family::k631gxx)
NORVIK_BASIS_CARTESIAN(631GXX, Family::k631gxx)
NORVIK_BASIS_GROUPS_TO_KR(631GXX, Family::k631gxx)

NORVIK_BASIS_FAMILY(631TG, Family::k631tg)
NORVIK_BASIS_CARTESIAN(631TG, Family::k631tg)
NORVIK_BASIS_GROUPS_TO_AR(631TG, Family::k631tg)

NORVIK_BASIS_FAMILY(631TGX, Family::k631tgx)
NORVIK_BASIS_CARTESIAN(631TGX, Family::k631tgx)
NORVIK_BASIS_GROUPS_TO_AR(631TGX, Family::k631tgx)

NORVIK_BASIS_FAMILY(631TGXX, Family::k631tgxx)
NORVIK_BASIS_CARTESIAN(631TGXX, Family::k631tgxx)
NORVIK_BASIS_GROUPS_TO_AR(631TGXX, Family::k631tgxx)

NORVIK_BASIS_FAMILY(631TTG, Family::k631ttg)
NORVIK_BASIS_CARTESIAN(631TTG, Family::k631ttg)
NORVIK_BASIS_GROUPS_TO_AR(631TTG, Family::k631ttg)

NORVIK_BASIS_FAMILY(631TTGX, Family::k631ttgx)
NORVIK_BASIS_CARTESIAN(631TTGX, Family::k631ttgx)
NORVIK_BASIS_GROUPS_TO_AR(631TTGX, Family::k631ttgx)

NORVIK_BASIS_FAMILY(631TTGXX, Family::k631ttgxx)
NORVIK_BASIS_CARTESIAN(631TTGXX, Family::k631ttgxx)
NORVIK_BASIS_GROUPS_TO_AR(631TTGXX, Family::k631ttgxx)

// ---- Shared angular fills -------------------------------------------------------

extern "C" NORVIK_API void LMLMN_SONLY(norvik_int* lm, norvik_int* nterm, norvik_int* lmn,
                                       double* termcoef) {
  lmlmn_routine(basis::fill_s, 1, lm, nterm, lmn, termcoef);
}
extern "C" NORVIK_API void LMLMN_PONLY(norvik_int* lm, norvik_int* nterm, norvik_int* lmn,
                                       double* termcoef) {
  lmlmn_routine(basis::fill_p, 1, lm, nterm, lmn, termcoef);
}
extern "C" NORVIK_API void LMLMN_SANDP(norvik_int* lm, norvik_int* nterm, norvik_int* lmn,
                                       double* termcoef) {
  lmlmn_routine(basis::fill_sp, 1, lm, nterm, lmn, termcoef);
}
extern "C" NORVIK_API void LMLMN_DONLY(norvik_int* lm, norvik_int* nterm, norvik_int* lmn,
                                       double* termcoef) {
  lmlmn_routine(basis::fill_d, 1, lm, nterm, lmn, termcoef);
}
extern "C" NORVIK_API void LMLMN_FONLY(norvik_int* lm, norvik_int* nterm, norvik_int* lmn,
                                       double* termcoef) {
  lmlmn_routine(basis::fill_f, 1, lm, nterm, lmn, termcoef);
}
extern "C" NORVIK_API void LMLMN_SS(norvik_int* lm, norvik_int* nterm, norvik_int* lmn,
                                    double* termcoef) {
  lmlmn_routine(basis::fill_s, 2, lm, nterm, lmn, termcoef);
}
extern "C" NORVIK_API void LMLMN_SSS(norvik_int* lm, norvik_int* nterm, norvik_int* lmn,
                                     double* termcoef) {
  lmlmn_routine(basis::fill_s, 3, lm, nterm, lmn, termcoef);
}
extern "C" NORVIK_API void LMLMN_SSSS(norvik_int* lm, norvik_int* nterm, norvik_int* lmn,
                                      double* termcoef) {
  lmlmn_routine(basis::fill_s, 4, lm, nterm, lmn, termcoef);
}
extern "C" NORVIK_API void LMLMN_SSSSS(norvik_int* lm, norvik_int* nterm, norvik_int* lmn,
                                       double* termcoef) {
  lmlmn_routine(basis::fill_s, 5, lm, nterm, lmn, termcoef);
}
extern "C" NORVIK_API void LMLMN_PP(norvik_int* lm, norvik_int* nterm, norvik_int* lmn,
                                    double* termcoef) {
  lmlmn_routine(basis::fill_p, 2, lm, nterm, lmn, termcoef);
}
