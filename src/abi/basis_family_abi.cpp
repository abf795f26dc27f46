// Exported family and element-group routines of the basis-set library: one
// set per basis-set family, each routine the entry point's body for a fixed family
// (and element group) without the name argument.
#include "abi/basis_support.h"
#include "basis/families.h"
#include "norvik/basis.h"

namespace {

namespace basis = norvik::basis;
using basis::AtomShells;
using basis::Family;
using basis::Group;
using norvik::abi::angular_out;
using norvik::abi::guarded;
using norvik::abi::put_layout;
using norvik::abi::put_zeta;
using norvik::abi::zeta_in;

// The bodies shared by the family and group routines; a null group stands for the
// whole family.
void layout_routine(Family family, bool cartesian_d, NORVIK_BASIS_LAYOUT_ARGS) {
  guarded([&] {
    put_layout(basis::family_layout(family, cartesian_d, *zatom), nshell, shellkind, nbasis);
  });
}

void zeta_routine(Family family, NORVIK_BASIS_ZETA_ARGS) {
  guarded([&] { put_zeta(basis::family_zeta(family, *zatom), zeta); });
}

void angular_routine(Family family, const Group* group, NORVIK_BASIS_ANGULAR_ARGS) {
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

void radial_routine(Family family, const Group* group, NORVIK_BASIS_RADIAL_ARGS) {
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

// ---- Family and element-group routines ---------------------------------------------

#define NORVIK_BASIS_FAMILY(SUFFIX, FAMILY)                                   \
  extern "C" NORVIK_API void ZATMNSHL_##SUFFIX(NORVIK_BASIS_LAYOUT_ARGS) {    \
    layout_routine(FAMILY, false, zatom, nshell, shellkind, nbasis);          \
  }                                                                           \
  extern "C" NORVIK_API void ZATMZETA_##SUFFIX(NORVIK_BASIS_ZETA_ARGS) {      \
    zeta_routine(FAMILY, zatom, zeta);                                        \
  }                                                                           \
  extern "C" NORVIK_API void MAKELMLMN_##SUFFIX(NORVIK_BASIS_ANGULAR_ARGS) {  \
    angular_routine(FAMILY, nullptr, zatom, lm, nterm, lmn, termcoef, nprim); \
  }                                                                           \
  extern "C" NORVIK_API void MAKEKLMG_##SUFFIX(NORVIK_BASIS_RADIAL_ARGS) {    \
    radial_routine(FAMILY, nullptr, zatom, zeta, exps, coefs);                \
  }

#define NORVIK_BASIS_CARTESIAN(SUFFIX, FAMILY)                                \
  extern "C" NORVIK_API void ZATMNSHL_##SUFFIX##C(NORVIK_BASIS_LAYOUT_ARGS) { \
    layout_routine(FAMILY, true, zatom, nshell, shellkind, nbasis);           \
  }

#define NORVIK_BASIS_GROUP(SUFFIX, FAMILY, GROUP, TAG)                               \
  extern "C" NORVIK_API void MAKELMLMN_##SUFFIX##_##TAG(NORVIK_BASIS_ANGULAR_ARGS) { \
    angular_routine(FAMILY, &GROUP, zatom, lm, nterm, lmn, termcoef, nprim);         \
  }                                                                                  \
  extern "C" NORVIK_API void MAKEKLMG_##SUFFIX##_##TAG(NORVIK_BASIS_RADIAL_ARGS) {   \
    radial_routine(FAMILY, &GROUP, zatom, zeta, exps, coefs);                        \
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

extern "C" NORVIK_API void ZATMZETAISO_STO3G(NORVIK_BASIS_ZETA_ARGS) {
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
