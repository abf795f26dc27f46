#include "report/thermo_sections.h"

#include <cmath>
#include <cstdint>

#include "common/constants.h"
#include "common/fortran_format.h"
#include "report/values.h"

namespace norvik::report {

namespace {

using fortran::format;
using fortran::Value;

constexpr double kTemperature = 298.15;               // K
constexpr double kSpeedOfLight = 299792458.0;         // m/s
constexpr double kBoltzmann = 8.617333261998994e-05;  // eV/K

// A label padded to the common width, then four columns.
std::string row(std::string_view label, const std::array<double, 4>& v, std::string_view fmt) {
  return format(fmt, {text(label), v[0], v[1], v[2], v[3]});
}

}  // namespace

Lines inertia(const std::array<double, 3>& moments) {
  return {"#", format("(A,3ES16.8)", {text("#  Principal moments of inertia [eV.A^2]:"), moments[0],
                                      moments[1], moments[2]})};
}

Lines rotor(bool linear, int sigma) {
  return {"#", std::string("#  Linear molecule: ") + (linear ? "yes" : "no"),
          format("(A,I0)", {text("#  Rotational symmetry number: "), Value(std::int64_t{sigma})})};
}

Lines vibrational_temperatures(std::span<const double> mode_energies) {
  Lines lines{"#", "#  Mode   hbar*omega [eV]   Temperature [K]"};
  for (std::size_t k = 0; k < mode_energies.size(); ++k) {
    lines.push_back(
        format("(A,I5,F18.9,F18.3)", {text("#"), Value(static_cast<std::int64_t>(k + 1)),
                                      mode_energies[k], mode_energies[k] / kBoltzmann}));
  }
  return lines;
}

Lines zero_point_energy(double emol, double zpe) {
  return {"#", format("(A,F20.9)", {text("#  Zero-point energy [eV]:    "), zpe}),
          format("(A,F20.9)", {text("#  Emol + ZPE [eV]:           "), emol + zpe})};
}

Lines thermal(double emol, double zpe, double mass, const std::array<double, 3>& entropy,
              const std::array<double, 4>& energy, const std::array<double, 4>& capacity) {
  const double kt = constants::kKT298Ev;
  const double e_thermal = energy[0] + energy[1] + energy[2];
  const double s_total = entropy[0] + entropy[1] + entropy[2];
  const double cv = capacity[0] + capacity[1] + capacity[2];
  const double cp = cv + capacity[3];
  const double u = emol + zpe + e_thermal;
  const double h = u + energy[3];
  const double ts = kTemperature * s_total;
  const double sound = kSpeedOfLight * std::sqrt(cp / cv * kt / mass);
  constexpr std::string_view kRow = "(A,4F15.9)";
  return {"#",
          "# Thermal properties at the room temperature 298.15 [K]",
          "# and the standard air pressure 101.325 [kPa]",
          "#                           Translation       Rotation      Vibration          Total",
          row("#  Thermal energy [eV]:  ", {energy[0], energy[1], energy[2], e_thermal}, kRow),
          format("(A,4ES15.6)",
                 {text("#  Entropy [eV/K]:       "), entropy[0], entropy[1], entropy[2], s_total}),
          row("#  Cv [kB]:              ", {capacity[0], capacity[1], capacity[2], cv}, kRow),
          format("(A,F15.9)", {text("#  Cp [kB]:              "), cp}),
          "#",
          format("(A,F20.9)", {text("#  Energy U = Emol + ZPE + E_thermal [eV]: "), u}),
          format("(A,F20.9)", {text("#  Enthalpy H = U + kT [eV]:               "), h}),
          format("(A,F20.9)", {text("#  Helmholtz free energy F = U - TS [eV]:  "), u - ts}),
          format("(A,F20.9)", {text("#  Gibbs free energy G = H - TS [eV]:      "), h - ts}),
          format("(A,F12.3)", {text("#  Sound velocity [m/s]: "), sound})};
}

}  // namespace norvik::report
