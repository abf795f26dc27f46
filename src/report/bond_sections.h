// The bond tables of the report: bond lengths, bond angles and dihedral angles
// of the built-in molecule templates, measured on given positions.
//
// Each table reads the atoms in its template's order (docs/templates.md) and
// labels every value with the element symbols and the 1-based atom numbers, so
// that "r(O1-H2)" is the bond from atom 1 (oxygen) to atom 2 (hydrogen).  A table
// given another atom count than its template's throws norvik::Error.
#pragma once

#include <span>

#include "report/sections.h"

namespace norvik::report {

enum class BondTable {
  kH2,   // any diatomic
  kH2O,  // the H2O template: H2O, CO2, NO2, O3, ZnH2 ...
  kH2O2,
  kC2H2,
  kC2H4,
  kC2H6,
  kB2H6,
  kCHCl3,
  kCOCl2,  // the COH2 template with chlorine
  kCOH2,
  kN2O,
  kPF5,
};

// The section: a "#" line, a title, then one line per value: lengths
// (A,A,A,F12.8,A) in ångström, angles (A,A,A,F12.6,A) in degrees.  Positions
// (3, natom) [Å]; elements the atomic numbers (0 for a bare ghost centre).
Lines bond_table(BondTable table, std::span<const double> positions, std::span<const int> elements);

}  // namespace norvik::report
