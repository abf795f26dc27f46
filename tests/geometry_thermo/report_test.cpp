// The thermochemistry sections: headings byte for byte, and the derived
// quantities (U, H, F, G, Cp, speed of sound) consistent with their inputs.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "report/thermo_sections.h"

namespace {

double value_after(const std::string& line, const std::string& label) {
  return std::stod(line.substr(line.find(label) + label.size()));
}

TEST(ThermoReport, ThermalSection) {
  // Argon-like numbers: no vibration, a made-up emol and zpe.
  const double kt = 0.02569257912065;
  const std::array<double, 3> s = {1.6e-3, 0.0, 0.0};
  const std::array<double, 4> e = {1.5 * kt, 0.0, 0.0, kt};
  const std::array<double, 4> c = {1.5, 0.0, 0.0, 1.0};
  const double mass = 39.962383 * 931.49410242e6;
  const auto lines = norvik::report::thermal(-100.0, 0.25, mass, s, e, c);
  ASSERT_GE(lines.size(), 14u);
  EXPECT_EQ(lines[0], "#");
  EXPECT_EQ(lines[1], "# Thermal properties at the room temperature 298.15 [K]");
  EXPECT_EQ(lines[2], "# and the standard air pressure 101.325 [kPa]");
  for (const auto& line : lines) EXPECT_EQ(line[0], '#');

  const double u = -100.0 + 0.25 + 1.5 * kt;
  EXPECT_NEAR(value_after(lines[9], "[eV]:"), u, 1e-9);
  EXPECT_NEAR(value_after(lines[10], "[eV]:"), u + kt, 1e-9);
  EXPECT_NEAR(value_after(lines[11], "[eV]:"), u - 298.15 * 1.6e-3, 1e-9);
  EXPECT_NEAR(value_after(lines[12], "[eV]:"), u + kt - 298.15 * 1.6e-3, 1e-9);
  EXPECT_NEAR(value_after(lines[7], "Cp [kB]:"), 2.5, 1e-9);
  // Monatomic ideal gas: γ = 5/3, argon's speed of sound 322 m/s at 25 °C.
  EXPECT_NEAR(value_after(lines[13], "[m/s]:"), 321.6, 0.5);
}

TEST(ThermoReport, ModesAndRotor) {
  const std::array<double, 2> modes = {0.2, 0.45};
  const auto lines = norvik::report::vibrational_temperatures(modes);
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[2], "#    1       0.200000000          2320.904");
  EXPECT_EQ(norvik::report::rotor(false, 12)[2], "#  Rotational symmetry number: 12");
  EXPECT_EQ(norvik::report::zero_point_energy(-10.0, 0.5)[2],
            "#  Emol + ZPE [eV]:                   -9.500000000");
}

}  // namespace
