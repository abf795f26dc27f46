// Physical constants and unit conversions, defined once for the whole library:
// the values are those of the public header norvik/common.h, so the core and
// every host convert alike.
#pragma once

#include "norvik/common.h"

namespace norvik::constants {

inline constexpr double kBohrAngstrom = NORVIK_BOHR_ANGSTROM;         // bohr in ångström
inline constexpr double kHartreeEv = NORVIK_HARTREE_EV;               // hartree in eV
inline constexpr double kRydbergEv = NORVIK_RYDBERG_EV;               // rydberg in eV
inline constexpr double kHbarCEvAngstrom = NORVIK_HBARC_EV_ANGSTROM;  // ħc in eV·Å
inline constexpr double kInverseFineStructure = NORVIK_INVERSE_FINE_STRUCTURE;     // 1/α
inline constexpr double kElectronRestEnergyKeV = NORVIK_ELECTRON_REST_ENERGY_KEV;  // m_e c² in keV
inline constexpr double kKT298Ev = NORVIK_KT298_EV;                      // k_B·298.15 K in eV
inline constexpr double kAtomicMassUnitEv = NORVIK_ATOMIC_MASS_UNIT_EV;  // m_u c² in eV
inline constexpr double kAvogadro = NORVIK_AVOGADRO;                     // 1/mol
inline constexpr double kElementaryCharge = NORVIK_ELEMENTARY_CHARGE;    // C, 1 eV in J
inline constexpr double kCalorieJoule = NORVIK_CALORIE_JOULE;            // J
// eV per particle in kJ/mol and kcal/mol.
inline constexpr double kEvKjPerMol = kElementaryCharge * kAvogadro / 1000.0;
inline constexpr double kEvKcalPerMol = kEvKjPerMol / kCalorieJoule;

// The run log converts its commutator norm with this older value of the hartree;
// it is kept as it is so that logs stay comparable from version to version.
inline constexpr double kHartreeEvLog = NORVIK_HARTREE_EV_LOG;

// Largest supported element (xenon).
inline constexpr int kMaxZ = 54;

}  // namespace norvik::constants
