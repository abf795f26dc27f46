// The Hartree–Fock SCF: the one cycle and the one start of cycle.h with the
// Hartree–Fock builder (exact exchange 1.0) on the system's two-electron
// context.  The orbital rule picks the driver family: aufbau (the plain
// drivers), free-atom shells in the damped steps (_ATOM), symmetry blocks
// (_C2, _B2).
#pragma once

#include <span>

#include "scf/cycle.h"

namespace norvik::scf {

ScfResult run_scf(const ScfSystem& system, const CycleSettings& settings, const ScfArrays& arrays,
                  const OrbitalRule& rule = AufbauRule(), const CycleObserver& observer = {});

ScfResult initialise(const ScfSystem& system, const StartSettings& settings,
                     const ScfArrays& arrays, const OrbitalRule& rule = AufbauRule());

}  // namespace norvik::scf
