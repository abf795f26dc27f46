// Physical constants and unit conversions, defined once for the whole library.
#pragma once

namespace norvik::constants {

inline constexpr double kBohrAngstrom = 0.5291772104;           // bohr in ångström
inline constexpr double kHartreeEv = 27.2113850785;             // hartree in eV
inline constexpr double kRydbergEv = 13.60569253925;            // rydberg in eV
inline constexpr double kHbarCEvAngstrom = 1973.269717;         // ħc in eV·Å
inline constexpr double kInverseFineStructure = 137.035999074;  // 1/α
inline constexpr double kElectronRestEnergyKeV = 510.9989273;   // m_e c² in keV
inline constexpr double kKT298Ev = 0.02569257912065;            // k_B·298.15 K in eV

// The run log converts its commutator norm with this older value of the hartree;
// it is kept as it is so that logs stay comparable from version to version.
inline constexpr double kHartreeEvLog = 27.211385041184638;

// Largest supported element (xenon).
inline constexpr int kMaxZ = 54;

}  // namespace norvik::constants
