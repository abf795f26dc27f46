#include "report/geometry_sections.h"

#include <cmath>
#include <cstdint>
#include <string>

#include "common/fortran_format.h"
#include "common/text_file.h"
#include "report/values.h"
#include "setup/elements.h"

namespace norvik::report {

namespace {

using fortran::format;
using fortran::Value;

std::string symbol_of(int z) {
  return z == 0 ? std::string("Bq") : setup::z_to_symbol(z);
}

std::size_t atom_count(std::span<const double> v) {
  return v.size() / 3;
}

// "#   12    C  " and the three components, the layout of the coordinates table.
Lines per_atom(std::span<const double> v, std::span<const int> elements) {
  Lines lines;
  for (std::size_t i = 0; i < atom_count(v); ++i) {
    lines.push_back(format("(A,I4,4X,A2,4X,3F15.10)",
                           {text("# "), integer(static_cast<long long>(i) + 1),
                            text(symbol_of(elements[i])), v[3 * i], v[3 * i + 1], v[3 * i + 2]}));
  }
  return lines;
}

Lines& operator+=(Lines& a, const Lines& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

}  // namespace

Lines positions_of_cycle(std::span<const double> positions, std::span<const int> elements,
                         int cycle) {
  Lines lines{"#",
              format("(A,I0,A)", {text("#  Optimization cycle "), integer(cycle),
                                  text(": positions of the atoms")}),
              "#  Atom  Symbol           x [A]          y [A]          z [A]"};
  lines += per_atom(positions, elements);
  return lines;
}

Lines gradient(std::span<const double> gradient, std::span<const int> elements) {
  Lines lines{"#", "#  Energy gradient [eV/A]",
              "#  Atom  Symbol           dE/dx          dE/dy          dE/dz"};
  lines += per_atom(gradient, elements);
  return lines;
}

Lines largest_gradient(std::span<const double> gradient, std::span<const int> elements) {
  std::size_t at = 0;
  for (std::size_t i = 1; i < gradient.size(); ++i) {
    if (std::abs(gradient[i]) > std::abs(gradient[at])) at = i;
  }
  const double value = gradient.empty() ? 0.0 : gradient[at];
  const std::size_t atom = at / 3;
  const std::string symbol = gradient.empty() ? "" : symbol_of(elements[atom]);
  static constexpr const char* kAxis[3] = {"x", "y", "z"};
  return {"#", format("(A,F15.10,A,I0,A,A,A,A,A)",
                      {text("#  Largest gradient component [eV/A]: "), value, text(" (atom "),
                       integer(static_cast<long long>(atom) + 1), text(", "),
                       text(io::trim_right(symbol)), text(", "), text(kAxis[at % 3]), text(")")})};
}

Lines gradient_sum(std::span<const double> gradient) {
  double sum[3] = {0.0, 0.0, 0.0};
  for (std::size_t i = 0; i < gradient.size(); ++i) sum[i % 3] += gradient[i];
  return {"#", format("(A,ES10.3,A,ES10.3,A,ES10.3,A)",
                      {text("#  Gradient summed over atoms [eV/A]: ("), sum[0], text(","), sum[1],
                       text(","), sum[2], text(" )")})};
}

Lines xyz_frame(std::span<const double> positions, std::span<const int> elements, int cycle,
                double energy) {
  Lines lines{format("(I0)", {integer(static_cast<long long>(atom_count(positions)))}),
              format("(A,I0,A,F0.9,A)",
                     {text("cycle "), integer(cycle), text("  Emol = "), energy, text(" [eV]")})};
  for (std::size_t i = 0; i < atom_count(positions); ++i) {
    lines.push_back(format("(A2,3F16.10)", {text(symbol_of(elements[i])), positions[3 * i],
                                            positions[3 * i + 1], positions[3 * i + 2]}));
  }
  return lines;
}

}  // namespace norvik::report
