// Exported routines of the basis-set library: the entry points and the shared
// angular fills.  The family and element-group routines are in
// basis_family_abi.cpp; the 6-31G-family data arrays are exported by
// src/basis/generated/basis_631g_tables.cpp.
#include <algorithm>
#include <array>
#include <span>
#include <vector>

#include "abi/basis_support.h"
#include "basis/angular.h"
#include "norvik/basis.h"

namespace {

namespace basis = norvik::basis;
using basis::AtomShells;
using basis::Zeta;
using norvik::abi::angular_out;
using norvik::abi::guarded;
using norvik::abi::name_in;
using norvik::abi::put_layout;
using norvik::abi::put_zeta;
using norvik::abi::zeta_in;

// One shared angular fill applied to `shells` consecutive shells.
template <class Fill>
void lmlmn_routine(Fill fill, int shells, NORVIK_LMLMN_ARGS) {
  guarded([&] {
    basis::Shell shell{};
    fill(shell);
    for (int s = 0; s < shells; ++s) {
      basis::store_angular(shell, angular_out(lm, nterm, lmn, termcoef, nullptr), s);
    }
  });
}

}  // namespace

// ---- Entry points ---------------------------------------------------------------

extern "C" NORVIK_API void ZATMNSHL(const char* basname, NORVIK_BASIS_LAYOUT_ARGS) {
  guarded([&] {
    put_layout(basis::shell_layout(name_in(basname), *zatom), nshell, shellkind, nbasis);
  });
}

extern "C" NORVIK_API void ZATMZETA(const char* basname, NORVIK_BASIS_ZETA_ARGS) {
  guarded([&] { put_zeta(basis::zeta(name_in(basname), *zatom), zeta); });
}

extern "C" NORVIK_API void MAKELMLMN(const char* basname, NORVIK_BASIS_ANGULAR_ARGS) {
  guarded([&] {
    AtomShells shells{};
    basis::atom_angular(name_in(basname), *zatom, shells);
    basis::store_atom_angular(shells, angular_out(lm, nterm, lmn, termcoef, nprim));
  });
}

extern "C" NORVIK_API void MAKEKLMG(const char* basname, NORVIK_BASIS_RADIAL_ARGS) {
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
    const std::size_t n = norvik::abi::count(*natom);
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

// ---- Shared angular fills -------------------------------------------------------

extern "C" NORVIK_API void LMLMN_SONLY(NORVIK_LMLMN_ARGS) {
  lmlmn_routine(basis::fill_s, 1, lm, nterm, lmn, termcoef);
}
extern "C" NORVIK_API void LMLMN_PONLY(NORVIK_LMLMN_ARGS) {
  lmlmn_routine(basis::fill_p, 1, lm, nterm, lmn, termcoef);
}
extern "C" NORVIK_API void LMLMN_SANDP(NORVIK_LMLMN_ARGS) {
  lmlmn_routine(basis::fill_sp, 1, lm, nterm, lmn, termcoef);
}
extern "C" NORVIK_API void LMLMN_DONLY(NORVIK_LMLMN_ARGS) {
  lmlmn_routine(basis::fill_d, 1, lm, nterm, lmn, termcoef);
}
extern "C" NORVIK_API void LMLMN_FONLY(NORVIK_LMLMN_ARGS) {
  lmlmn_routine(basis::fill_f, 1, lm, nterm, lmn, termcoef);
}
extern "C" NORVIK_API void LMLMN_SS(NORVIK_LMLMN_ARGS) {
  lmlmn_routine(basis::fill_s, 2, lm, nterm, lmn, termcoef);
}
extern "C" NORVIK_API void LMLMN_SSS(NORVIK_LMLMN_ARGS) {
  lmlmn_routine(basis::fill_s, 3, lm, nterm, lmn, termcoef);
}
extern "C" NORVIK_API void LMLMN_SSSS(NORVIK_LMLMN_ARGS) {
  lmlmn_routine(basis::fill_s, 4, lm, nterm, lmn, termcoef);
}
extern "C" NORVIK_API void LMLMN_SSSSS(NORVIK_LMLMN_ARGS) {
  lmlmn_routine(basis::fill_s, 5, lm, nterm, lmn, termcoef);
}
extern "C" NORVIK_API void LMLMN_PP(NORVIK_LMLMN_ARGS) {
  lmlmn_routine(basis::fill_p, 2, lm, nterm, lmn, termcoef);
}
