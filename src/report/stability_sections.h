// The report section of the SCF stability analysis.
#pragma once

#include <span>

#include "report/sections.h"

namespace norvik::report {

// The lowest eigenvalues of the orbital Hessian (values (nroots, 2) [eV]: a
// restricted point's RHF -> RHF and RHF -> UHF blocks, an unrestricted point's
// UHF -> UHF block then zeros) in eV and hartree, one line each, and the
// verdict: stable, or the block whose rotation lowers the energy.  Kohn–Sham
// points label their blocks RKS/UKS.
Lines instability(bool kohn_sham, bool restricted, std::span<const double> values);

}  // namespace norvik::report
