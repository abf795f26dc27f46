// The vibrational analysis around the Hessian: intensities against a model
// whose derivatives are known, the broadened spectrum's areas, the report
// sections byte for byte, and the one-column driver against the whole Hessian.
#include "geometry/vibrations.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <string>
#include <vector>

#include "common/constants.h"
#include "norvik/vibrations.h"
#include "report/vibration_sections.h"
#include "scf/single_point.h"

namespace norvik::geometry {
namespace {

// A diatomic along z with a harmonic bond and a dipole that grows linearly with
// the bond: only the stretch has infrared intensity, |∂μ/∂Q|² = q²/μ_red.
TEST(Intensities, DiatomicStretchOfAKnownDipoleDerivative) {
  const std::vector<double> x = {0, 0, 0, 0, 0, 1.1};
  const double k = 30.0;  // eV/Å²
  std::vector<double> h(36, 0.0);
  h[2 + 6 * 2] = h[5 + 6 * 5] = k;
  h[2 + 6 * 5] = h[5 + 6 * 2] = -k;
  const double m1 = 12.0, m2 = 16.0;
  const std::vector<double> masses = {m1 * constants::kAtomicMassUnitEv,
                                      m2 * constants::kAtomicMassUnitEv};
  const NormalModes modes = normal_modes(h, masses, x);
  ASSERT_TRUE(modes.linear);
  // dμ_z/dz_2 = q, dμ_z/dz_1 = −q (a charge q moving with the bond).
  const double q = 0.3;
  std::vector<double> dipole(18, 0.0);
  dipole[2 + 3 * 2] = -q;
  dipole[2 + 3 * 5] = q;
  // Polarisability along the bond grows by a per Å: α′ = a/3, γ′ = a.
  const double a = 2.0;
  std::vector<double> polar(54, 0.0);
  polar[8 + 9 * 2] = -a;
  polar[8 + 9 * 5] = a;
  const Intensities in = intensities(modes.modes, masses, dipole, polar);
  const double reduced = m1 * m2 / (m1 + m2);
  // N_A π αħc / (3 m_u c²) per (e/√amu)², in km/mol.
  const double per_unit = 974.88;
  EXPECT_NEAR(in.infrared[5], per_unit * q * q / reduced, 0.01);
  for (int m = 0; m < 5; ++m) EXPECT_NEAR(in.infrared[m], 0.0, 1e-8) << m;
  const double da = a / std::sqrt(reduced);  // ∂α_zz/∂Q
  const double mean = da / 3.0, gamma2 = da * da;
  EXPECT_NEAR(in.raman[5], 45 * mean * mean + 7 * gamma2, 1e-10);
  EXPECT_NEAR(in.depolarization[5], 3 * gamma2 / (45 * mean * mean + 4 * gamma2), 1e-12);
  // The wavenumber of √(k/μ) in cm⁻¹.
  const double lambda = k / (reduced * constants::kAtomicMassUnitEv);
  EXPECT_NEAR(modes.wavenumbers[5], std::sqrt(lambda) * 1e8 / (2 * std::numbers::pi), 1e-6);
}

TEST(Spectrum, LorentzianLinesKeepTheirAreasAndHeights) {
  const std::vector<double> lines = {1000.0, 1600.0}, areas = {50.0, 8.0};
  const int npoint = 40001;  // 0.1 cm⁻¹ steps
  const std::vector<double> s = broadened_spectrum(lines, areas, 10.0, 0.0, 4000.0, npoint);
  double area = 0.0;
  for (double v : s) area += v * 0.1;
  // Less the tails beyond the grid's ends: a line of area I at distance d from
  // an end leaves about I·(Γ/2)/(π d) beyond it.
  double tails = 0.0;
  for (std::size_t k = 0; k < lines.size(); ++k)
    tails += areas[k] * 5.0 / std::numbers::pi * (1.0 / lines[k] + 1.0 / (4000.0 - lines[k]));
  EXPECT_NEAR(area, 58.0 - tails, 2e-3);
  // A peak's height: 2I/(πΓ) plus the other line's tail.
  EXPECT_NEAR(s[10000], 2 * 50.0 / (std::numbers::pi * 10.0), 1e-3);
  const int nline = 2, n = 5;
  const double fwhm = 10.0, low = 990.0, high = 1010.0;
  std::vector<double> out(n);
  SPECTRUM(&nline, lines.data(), areas.data(), &fwhm, &low, &high, &n, out.data());
  EXPECT_EQ(out, broadened_spectrum(lines, areas, 10.0, 990.0, 1010.0, 5));
}

TEST(VibrationReport, SectionsByteForByte) {
  const std::vector<double> w = {-123.456, 1826.7397}, ir = {0.5, 110.025};
  const std::vector<double> raman = {1.25, 6.5}, depol = {0.75, 0.2};
  const auto with = report::vibrations(w, ir, raman, depol, 0.0 + 0.9);
  ASSERT_EQ(with.size(), 5u);
  EXPECT_EQ(with[1], "#  Harmonic vibrations (frequency scale factor  0.9000)");
  EXPECT_EQ(with[2], "#  Mode  Wavenumber [cm-1]   IR [km/mol]  Raman [A^4/amu]  Depolarization");
  EXPECT_EQ(with[3], "#     1            123.46i       0.5000           1.2500          0.7500");
  EXPECT_EQ(with[4], "#     2           1826.74      110.0250           6.5000          0.2000");
  const auto without = report::vibrations(w, ir, {}, {}, 1.0);
  EXPECT_EQ(without[2], "#  Mode  Wavenumber [cm-1]   IR [km/mol]");
  EXPECT_EQ(without[4], "#     2           1826.74      110.0250");
  std::vector<double> h(36);
  for (std::size_t i = 0; i < h.size(); ++i) h[i] = static_cast<double>(i) - 17.5;
  const auto hess = report::hessian(h, 2);
  ASSERT_EQ(hess.size(), 2u + 7u);
  EXPECT_EQ(hess[2],
            "#                 1x          1y          1z          2x          2y          2z");
  EXPECT_EQ(hess[3],
            "#     1x   -17.50000   -11.50000    -5.50000     0.50000     6.50000    12.50000");
  const auto table =
      report::spectrum(std::vector<double>{0.0, 1.0}, std::vector<double>{1e-3, 2.5}, "km/mol");
  EXPECT_EQ(table[0], "# wavenumber [cm-1]   intensity [km/mol/cm-1]");
  EXPECT_EQ(table[2], "       1.000    2.50000000E+00");
}

}  // namespace
}  // namespace norvik::geometry
