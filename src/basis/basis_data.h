// The compiled-in data of the basis-set library, in the form the generator
// (tools/basis/generate.py) writes it into src/basis/generated/.
//
// Every exponent is stored unscaled: the library multiplies it by ζ² of its shell's
// scale-factor slot.  Shells are listed in the library's layout order.
#pragma once

#include <array>

namespace norvik::basis::data {

// One shell of published data.
struct ShellData {
  int kind;                 // 1 s, 3 p, 4 sp, 5 d (6 for the Cartesian-d names), 7 f
  int nprim;                // 1 ... 6
  int zeta_index;           // 1-based slot of the atom's scale factors; 0: never scaled
  const double* exponents;  // nprim unscaled exponents
  const double* coef;       // s, p, d or f coefficients; nullptr: uncontracted (1.0)
  const double* coef_p;     // the p coefficients of an sp shell, otherwise nullptr
};

// The shells of one element.
struct ElementData {
  int nshell;
  const ShellData* shells;
};

// One element of the 6-31G family: the 6-31G shells, the polarisation shell that
// the starred sets add (p on H and He, d or f on the others) and the diffuse shell
// that the "+" sets add (kind 0 where the family has none).
struct Element631Data {
  ElementData base;
  ShellData polarisation;
  ShellData diffuse;
};

// Z = 1 ... 54: STO-3G, with the Slater exponents of the molecular and of the
// isolated-atom set, one per shell (trailing slots zero).
extern const ElementData kSto3g[54];
extern const std::array<double, 7> kSto3gZeta[54];
extern const std::array<double, 7> kSto3gZetaIsolated[54];

// 3-21G (Z = 1 ... 54) and 6-21G (Z = 1 ... 18) with their scale factors ζ1 ... ζ3.
extern const ElementData k321g[54];
extern const std::array<double, 3> k321gZeta[54];
extern const ElementData k621g[18];
extern const std::array<double, 3> k621gZeta[18];

// The 6-31G family, Z = 1 ... 36, drawn from the exported arrays of BASIS_631G.
extern const Element631Data k631g[36];
extern const std::array<double, 3> k631gZeta[36];

}  // namespace norvik::basis::data
