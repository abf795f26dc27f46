// The basis-set library: shell layouts, scale factors and the shells of each atom.
//
// Two levels, as the exported routines have them:
//  - by family (the routines ZATMNSHL_631G, MAKEKLMG_631G_LINE, …): each checks
//    that Z is in the family's range (or in the element group) and names itself
//    in the message when it is not;
//  - by name (ZATMNSHL, ZATMZETA, MAKELMLMN, MAKEKLMG, MAKEBASIS): dispatch a
//    basis-set name to its family.
// Every function fails by throwing norvik::Error with the exact message lines.
//
// The C++ entry point for the integral code is make_basis().
#pragma once

#include <array>
#include <span>
#include <string_view>

#include "basis/basis_set.h"
#include "basis/families.h"

namespace norvik::basis {

// Exponent scale factors of one atom; slots beyond the atom's shells are zero.
using Zeta = std::array<double, kMaxZeta>;

// The shells of one atom as MAKELMLMN and MAKEKLMG fill them (9 slots).
using AtomShells = std::array<Shell, kMaxShellsPerAtom>;

// Number of shells, their kinds (zero beyond nshell) and the function count.
struct AtomLayout {
  int nshell = 0;
  std::array<int, kMaxShellsPerAtom> kind{};
  int nbasis = 0;
};

// ---- By family -------------------------------------------------------------

AtomLayout family_layout(Family family, bool cartesian_d, int z);
Zeta family_zeta(Family family, int z);
// The isolated-atom Slater exponents of STO-3G, for free-atom runs.
Zeta sto3g_isolated_zeta(int z);

// Angular part (every slot's (L, M), terms, term coefficients) and primitive
// counts of the atom's shells; the other shells are cleared.
void family_angular(Family family, int z, AtomShells& shells);
void group_angular(Family family, Group group, int z, AtomShells& shells);

// Exponents (scaled by ζ² of each shell's slot) and contraction coefficients of
// the atom's shells; the other shells' exponents and coefficients are cleared.
void family_radial(Family family, int z, const Zeta& zeta, AtomShells& shells);
void group_radial(Family family, Group group, int z, const Zeta& zeta, AtomShells& shells);

// ---- By name -----------------------------------------------------------------

AtomLayout shell_layout(std::string_view name, int z);                                 // ZATMNSHL
Zeta zeta(std::string_view name, int z);                                               // ZATMZETA
void atom_angular(std::string_view name, int z, AtomShells& shells);                   // MAKELMLMN
void atom_radial(std::string_view name, int z, const Zeta& zeta, AtomShells& shells);  // MAKEKLMG

// The shells of a molecule, atom by atom, as MAKEBASIS lays them out: the atom's
// angular and radial parts from the name, Z and its scale factors, then the first
// nshell_atom[a] shells with the kinds kind_atom[a] (slots beyond a kind zero).
// Throws when a count or a kind cannot be laid out (more than 9 shells, a kind
// outside 0 … 7).
BasisSet build_basis(std::string_view name, std::span<const int> z, std::span<const Zeta> zeta,
                     std::span<const int> nshell_atom,
                     std::span<const std::array<int, kMaxShellsPerAtom>> kind_atom);

// The basis of a molecule with the name's own layout and scale factors (the
// molecular set), exponents scaled, `atom` set: what the host gets from
// ZATMNSHL, ZATMZETA and MAKEBASIS in turn.
BasisSet make_basis(std::string_view name, std::span<const int> z);
// The same with the caller's scale factors, one set per atom (for instance the
// isolated-atom STO-3G exponents of a free atom).
BasisSet make_basis(std::string_view name, std::span<const int> z, std::span<const Zeta> zeta);

}  // namespace norvik::basis
