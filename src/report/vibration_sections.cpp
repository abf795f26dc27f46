#include "report/vibration_sections.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "common/fortran_format.h"
#include "report/values.h"

namespace norvik::report {

namespace {

using fortran::format;
using fortran::Value;

constexpr int kColumns = 6;

std::string coordinate(std::size_t i) {
  static constexpr char kAxes[] = {'x', 'y', 'z'};
  return format("(I4,A)",
                {Value(static_cast<std::int64_t>(i / 3 + 1)), text(std::string(1, kAxes[i % 3]))});
}

}  // namespace

Lines hessian(std::span<const double> hessian, int natom) {
  const std::size_t n3 = 3 * static_cast<std::size_t>(natom);
  Lines lines{"#", "#  Hessian [eV/A^2]"};
  for (std::size_t first = 0; first < n3; first += kColumns) {
    const std::size_t last = std::min(n3, first + kColumns);
    std::string head = "#       ";
    for (std::size_t j = first; j < last; ++j) head += "       " + coordinate(j);
    lines.push_back(head);
    for (std::size_t i = 0; i < n3; ++i) {
      std::string row = "#  " + coordinate(i);
      for (std::size_t j = first; j < last; ++j) row += format("(F12.5)", {hessian[i + n3 * j]});
      lines.push_back(row);
    }
  }
  return lines;
}

Lines vibrations(std::span<const double> wavenumbers, std::span<const double> infrared,
                 std::span<const double> raman, std::span<const double> depolarization,
                 double scale) {
  Lines lines{"#", format("(A,F7.4,A)", {text("#  Harmonic vibrations (frequency scale factor "),
                                         scale, text(")")})};
  std::string head = "#  Mode  Wavenumber [cm-1]   IR [km/mol]";
  if (!raman.empty()) head += "  Raman [A^4/amu]  Depolarization";
  lines.push_back(head);
  for (std::size_t k = 0; k < wavenumbers.size(); ++k) {
    const double w = wavenumbers[k];
    std::string row =
        format("(A,I6,F18.2,A1,F13.4)", {text("#"), Value(static_cast<std::int64_t>(k + 1)),
                                         std::abs(w), text(w < 0 ? "i" : " "), infrared[k]});
    if (!raman.empty()) row += format("(F17.4,F16.4)", {raman[k], depolarization[k]});
    lines.push_back(row);
  }
  return lines;
}

Lines spectrum(std::span<const double> wavenumbers, std::span<const double> values,
               std::string_view unit) {
  Lines lines{std::string("# wavenumber [cm-1]   intensity [") + std::string(unit) + "/cm-1]"};
  for (std::size_t k = 0; k < wavenumbers.size(); ++k)
    lines.push_back(format("(F12.3,ES18.8)", {wavenumbers[k], values[k]}));
  return lines;
}

}  // namespace norvik::report
