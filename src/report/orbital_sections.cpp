#include "report/orbital_sections.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

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

constexpr int kColumns = 5;
constexpr std::size_t kLabelWidth = 18;  // "#  " I4 1X A2 1X A7 of the coefficient lines

std::string label(std::string text) {
  text.resize(std::max(text.size(), kLabelWidth), ' ');
  return text;
}

// "HOMO", "HOMO-2", "LUMO+1" for the orbital at 0-based index i with nocc occupied.
std::string gap_name(int i, int nocc) {
  if (i < nocc) return i == nocc - 1 ? "HOMO" : "HOMO-" + std::to_string(nocc - 1 - i);
  return i == nocc ? "LUMO" : "LUMO+" + std::to_string(i - nocc);
}

}  // namespace

Lines quadrupole(const std::array<double, 9>& theta) {
  Lines lines{
      "#", "#  Electric quadrupole moment about the centre of nuclear charge",
      "#  Theta_ij = sum q (3 r_i r_j - r**2 delta_ij) / 2  [eA**2] and [Buckingham]",
      "#                x           y           z                 x           y           z"};
  const char* axes[3] = {"#     x", "#     y", "#     z"};
  for (std::size_t i = 0; i < 3; ++i) {
    std::vector<fortran::Value> row{text(axes[i])};
    for (std::size_t j = 0; j < 3; ++j) row.push_back(cleaned6(theta[3 * i + j]));
    for (std::size_t j = 0; j < 3; ++j)
      row.push_back(cleaned6(theta[3 * i + j] * kBuckinghamPerEAngstrom2));
    lines.push_back(format("(A,3F12.6,6X,3F12.6)", row));
  }
  return lines;
}

Lines shell_populations(std::string_view kind, std::span<const int> elements,
                        std::span<const int> atom_of, std::span<const std::string> labels,
                        std::span<const double> electrons, std::span<const double> spin) {
  Lines lines{"#", "#  " + std::string(kind) + " shell populations [e]",
              "#  Atom        Shell   Electrons        Spin"};
  double total = 0.0, total_spin = 0.0;
  for (std::size_t s = 0; s < electrons.size(); ++s) {
    const auto a = static_cast<std::size_t>(atom_of[s]);
    total += electrons[s];
    total_spin += spin[s];
    lines.push_back(format(
        "(A,I4,1X,A2,4X,A6,2F12.6)",
        {text("#  "), integer(static_cast<long long>(a + 1)), text(setup::z_to_symbol(elements[a])),
         text(labels[s]), cleaned6(electrons[s]), cleaned6(spin[s])}));
  }
  lines.push_back(
      format("(A,2F12.6)", {text("#  Sum              "), cleaned6(total), cleaned6(total_spin)}));
  return lines;
}

Lines orbital_table(std::string_view heading, const FunctionNames& names, int nbasis,
                    std::span<const double> coefficients, int first, int last, int nocc,
                    double occupation, bool gap_names) {
  Lines lines{"#", "#  " + std::string(heading)};
  const auto n = static_cast<std::size_t>(nbasis);
  for (int block = first; block < last; block += kColumns) {
    const int end = std::min(last, block + kColumns);
    const std::string blank = label("#"), energy = label("#  Energy [eV]"),
                      occupation_label = label("#  Occupation");
    std::vector<fortran::Value> number{text(blank)}, name{text(blank)}, level{text(energy)},
        occupied{text(occupation_label)};
    std::vector<std::string> held;  // the texts the name row points into
    held.reserve(kColumns);
    for (int i = block; i < end; ++i) {
      number.push_back(integer(i + 1));
      held.push_back(gap_names ? gap_name(i, nocc) : "");
      level.push_back(cleaned6(coefficients[n * n + static_cast<std::size_t>(i)]));
      occupied.push_back(i < nocc ? occupation : 0.0);
    }
    for (const std::string& h : held) name.push_back(text(h));
    const std::string cols = std::to_string(end - block);
    lines.push_back("#");
    lines.push_back(format("(A," + cols + "I12)", number));
    if (gap_names) lines.push_back(format("(A," + cols + "A12)", name));
    lines.push_back(format("(A," + cols + "F12.6)", level));
    lines.push_back(format("(A," + cols + "F12.6)", occupied));
    for (std::size_t mu = 0; mu < n; ++mu) {
      const auto a = static_cast<std::size_t>(names.atom_of[mu]);
      const std::string symbol = setup::z_to_symbol(names.elements[a]);  // outlives the row
      std::vector<fortran::Value> row{text("#  "), integer(static_cast<long long>(a + 1)),
                                      text(symbol), text(names.labels[mu])};
      for (int i = block; i < end; ++i)
        row.push_back(cleaned6(coefficients[mu + n * static_cast<std::size_t>(i)]));
      lines.push_back(format("(A,I4,1X,A2,1X,A7," + cols + "F12.6)", row));
    }
  }
  return lines;
}

}  // namespace norvik::report
