#include "report/property_sections.h"

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "common/constants.h"
#include "common/fortran_format.h"
#include "report/values.h"
#include "setup/elements.h"

namespace norvik::report {

namespace {

using fortran::format;

// A value that would be written as a signed zero in six decimals is written as 0.
double cleaned6(double v) {
  return std::abs(v) < 5.0e-7 ? 0.0 : v;
}

}  // namespace

double isotropic(const std::array<double, 9>& a) {
  return (a[0] + a[4] + a[8]) / 3.0;
}

double anisotropy(const std::array<double, 9>& a) {
  // The off-diagonal pairs averaged, so that a tensor given in either order
  // gives the same value.
  const double xy = 0.5 * (a[1] + a[3]), yz = 0.5 * (a[5] + a[7]), zx = 0.5 * (a[2] + a[6]);
  const double d1 = a[0] - a[4], d2 = a[4] - a[8], d3 = a[8] - a[0];
  return std::sqrt(0.5 * (d1 * d1 + d2 * d2 + d3 * d3 + 6.0 * (xy * xy + yz * yz + zx * zx)));
}

Lines polarizability(const std::array<double, 9>& alpha) {
  const double bohr3 = std::pow(constants::kBohrAngstrom, 3);
  Lines lines{
      "#", "#  Static dipole polarizability [A**3] and [bohr**3]",
      "#                x           y           z                 x           y           z"};
  const char* axes[3] = {"#     x", "#     y", "#     z"};
  for (std::size_t i = 0; i < 3; ++i) {
    std::vector<fortran::Value> row{text(axes[i])};
    for (std::size_t j = 0; j < 3; ++j) row.push_back(cleaned6(alpha[3 * i + j]));
    for (std::size_t j = 0; j < 3; ++j) row.push_back(cleaned6(alpha[3 * i + j] / bohr3));
    lines.push_back(format("(A,3F12.6,6X,3F12.6)", row));
  }
  const double iso = isotropic(alpha), aniso = anisotropy(alpha);
  lines.push_back(format("(A,F12.6,A,F12.6,A)",
                         {text("#  Isotropic  alpha = "), cleaned6(iso), text(" [A**3] ="),
                          cleaned6(iso / bohr3), text(" [bohr**3]")}));
  lines.push_back(format("(A,F12.6,A,F12.6,A)",
                         {text("#  Anisotropy Dalpha = "), cleaned6(aniso), text(" [A**3] ="),
                          cleaned6(aniso / bohr3), text(" [bohr**3]")}));
  return lines;
}

Lines populations(std::string_view kind, std::span<const int> elements,
                  std::span<const double> values, bool spin) {
  Lines lines{"#",
              std::string("#  ") + std::string(kind) +
                  (spin ? " spin populations (alpha - beta)" : " atomic charges [e]"),
              spin ? "#  Atom          Spin" : "#  Atom        Charge"};
  double sum = 0.0;
  for (std::size_t a = 0; a < values.size(); ++a) {
    const double v = std::abs(values[a]) < 5e-7 ? 0.0 : values[a];
    sum += values[a];
    lines.push_back(fortran::format(
        "(A,I4,1X,A2,F12.6)",
        {fortran::Value(std::string_view("#  ")), fortran::Value(static_cast<std::int64_t>(a + 1)),
         fortran::Value(std::string_view(setup::z_to_symbol(elements[a]))), v}));
  }
  lines.push_back(fortran::format("(A,F12.6)", {fortran::Value(std::string_view("#  Sum    ")),
                                                std::abs(sum) < 5e-7 ? 0.0 : sum}));
  return lines;
}

}  // namespace norvik::report

namespace norvik::report {

Lines mp2_energy(double scf_energy, const std::array<double, 3>& e2) {
  const auto line = [](const char* label, double ev) {
    return format("(A,A,F20.9,A,F18.10,A)", {text("#  "), text(label), ev, text(" [eV] = "),
                                             ev / constants::kHartreeEv, text(" [au]")});
  };
  return {"#",
          "#  MP2 energy",
          line("SCF energy         = ", scf_energy),
          line("MP2 same-spin      = ", e2[1]),
          line("MP2 opposite-spin  = ", e2[2]),
          line("MP2 correction     = ", e2[0]),
          line("MP2 total energy   = ", scf_energy + e2[0])};
}

Lines mp2_caution(bool converged, double contamination) {
  const bool contaminated = contamination > kMp2SpinContamination;
  if (converged && !contaminated) return {};
  const std::string row(54, '#');
  // "# " + 51 characters + "#"
  const auto boxed = [](const std::string& s) {
    return "# " + s + std::string(s.size() < 51 ? 51 - s.size() : 0, ' ') + "#";
  };
  Lines lines{"#", row, boxed("CAUTION")};
  if (!converged) {
    lines.push_back(boxed("The SCF below this MP2 energy did not converge:"));
    lines.push_back(boxed("its MP2 correction is not reliable."));
  }
  if (contaminated) {
    lines.push_back(boxed("The UHF reference is spin contaminated:"));
    lines.push_back(boxed(
        format("(A,F8.4,A)", {text("<S**2> - S(S+1) = "), contamination, text(" (above 0.1).")})));
  }
  lines.push_back(row);
  return lines;
}

}  // namespace norvik::report
