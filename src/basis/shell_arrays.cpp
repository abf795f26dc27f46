#include "basis/shell_arrays.h"

#include <cstddef>
#include <cstdint>

#include "common/error.h"
#include "common/fortran_format.h"

namespace norvik::basis {

namespace {

constexpr int kSlots = kMaxFunctionsPerShell;
constexpr int kPrims = kMaxPrimitives;
constexpr int kTerms = kMaxTerms;

std::size_t at(int s, int stride) {
  return static_cast<std::size_t>(s) * stride;
}

}  // namespace

void store_angular(const Shell& shell, const AngularArrays& out, int s) {
  for (int slot = 0; slot < kSlots; ++slot) {
    const Function& f = shell.functions[slot];
    if (out.lm != nullptr) {
      out.lm[at(s, 2 * kSlots) + 2 * slot + 0] = f.L;
      out.lm[at(s, 2 * kSlots) + 2 * slot + 1] = f.M;
    }
    if (out.nterm != nullptr) out.nterm[at(s, kSlots) + slot] = f.nterm;
    for (int t = 0; t < kTerms; ++t) {
      if (out.lmn != nullptr) {
        for (int c = 0; c < 3; ++c) out.lmn[at(s, 9 * kSlots) + 9 * slot + 3 * t + c] = f.lmn[t][c];
      }
      if (out.term_coef != nullptr)
        out.term_coef[at(s, kTerms * kSlots) + kTerms * slot + t] = f.term_coef[t];
    }
  }
  if (out.nprim != nullptr) out.nprim[s] = shell.nprim;
}

void store_radial(const Shell& shell, const RadialArrays& out, int s) {
  for (int k = 0; k < kPrims; ++k) {
    if (out.exponents != nullptr) out.exponents[at(s, kPrims) + k] = shell.exponents[k];
    if (out.coef != nullptr) {
      for (int slot = 0; slot < kSlots; ++slot) {
        out.coef[at(s, kPrims * kSlots) + kPrims * slot + k] = shell.functions[slot].coef[k];
      }
    }
  }
}

void store_atom_angular(const AtomShells& shells, const AngularArrays& out) {
  for (int s = 0; s < kMaxShellsPerAtom; ++s) store_angular(shells[s], out, s);
}

void store_atom_radial(const AtomShells& shells, const RadialArrays& out) {
  for (int s = 0; s < kMaxShellsPerAtom; ++s) store_radial(shells[s], out, s);
}

void store_basis(const BasisSet& basis, const BasisArrays& out) {
  const int nshell = static_cast<int>(basis.shells.size());
  if (nshell > out.nshell_total) {
    throw Error(fortran::list_directed({"nShellTotal too small in makeBasis.",
                                        static_cast<std::int64_t>(out.nshell_total),
                                        static_cast<std::int64_t>(nshell)}));
  }
  const Shell empty{};
  for (int s = 0; s < out.nshell_total; ++s) {
    const Shell& shell = s < nshell ? basis.shells[s] : empty;
    if (out.kind != nullptr) out.kind[s] = shell.kind;
    store_angular(shell, out.angular, s);
    store_radial(shell, out.radial, s);
  }
}

}  // namespace norvik::basis
