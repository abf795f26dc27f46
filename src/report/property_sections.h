// The report sections of the properties of a converged point: the static
// dipole polarisability.  Like the other sections, each returns its lines,
// every one beginning with "#", the first line of a section "#".
#pragma once

#include <array>
#include <span>
#include <string_view>

#include "report/sections.h"

namespace norvik::report {

// The polarisability tensor alpha (3×3, either order: it is symmetric) as a
// polarisability volume [Å³] and in atomic units [bohr³], its isotropic value
// (trace / 3) and its anisotropy
// Δα = sqrt(½[(αxx−αyy)² + (αyy−αzz)² + (αzz−αxx)² + 6(αxy² + αyz² + αzx²)]).
Lines polarizability(const std::array<double, 9>& alpha);

// Atomic charges [e] (or spin populations, `spin`) of a population analysis
// named `kind` ("Mulliken", "Lowdin"): one line per atom with its element, and
// their sum.
Lines populations(std::string_view kind, std::span<const int> elements,
                  std::span<const double> values, bool spin);

// The isotropic value and the anisotropy of a tensor, in its own unit.
double isotropic(const std::array<double, 9>& alpha);
double anisotropy(const std::array<double, 9>& alpha);

}  // namespace norvik::report
