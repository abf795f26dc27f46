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

namespace norvik::report {

// The MP2 energy: the SCF energy, the same-spin and opposite-spin parts of the
// correction, the correction and the total, each in eV and hartree; energies
// in eV, e2 = {correction, same spin, opposite spin}.
Lines mp2_energy(double scf_energy, const std::array<double, 3>& e2);

// The caution box of an MP2 energy whose reference is doubtful: an SCF that did
// not converge, a spin contamination ⟨S²⟩ − S(S+1) above kMp2SpinContamination;
// each cause present gets its lines, none gives no lines.
inline constexpr double kMp2SpinContamination = 0.1;
Lines mp2_caution(bool converged, double contamination);

}  // namespace norvik::report
