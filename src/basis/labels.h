// Names of shells and basis functions as the report prints them: a shell as
// its principal number and angular type ("1s", "2sp", "3d"), a function as its
// shell's number and the component ("2px", "3dxy", "4f-2").
//
// The number of a shell counts, from its lowest angular momentum l, the shells
// of the same atom before it that also hold l: n = l + 1 + that count.  So the
// oxygen of 6-31G* (s, sp, sp, d) has 1s, 2sp, 3sp, 3d and the hydrogen of
// 6-31G** (s, s, p) 1s, 2s, 2p.
#pragma once

#include <string>
#include <vector>

#include "basis/basis_set.h"

namespace norvik::basis {

// One label per shell, in basis order.
std::vector<std::string> shell_labels(const BasisSet& basis);

// One label per function, in basis order: s; px, py, pz; the real d set dxy,
// dyz, dz2, dxz, dx2-y2 and the Cartesian companion dr2 (x² + y² + z²); the real
// f set f-3 … f+3.
std::vector<std::string> function_labels(const BasisSet& basis);

}  // namespace norvik::basis
