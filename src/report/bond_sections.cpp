#include "report/bond_sections.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "common/error.h"
#include "common/fortran_format.h"
#include "common/point_geometry.h"
#include "setup/elements.h"

namespace norvik::report {

namespace {

// One value of a table: a bond (two atoms), an angle (three) or a dihedral
// angle (four), 0-based atom numbers.
struct Item {
  std::array<int, 4> atoms;
  std::size_t count;
};

constexpr Item bond(int a, int b) {
  return {{a, b, 0, 0}, 2};
}
constexpr Item angle(int a, int b, int c) {
  return {{a, b, c, 0}, 3};
}
constexpr Item dihedral(int a, int b, int c, int d) {
  return {{a, b, c, d}, 4};
}

struct Table {
  std::string_view name;
  int natom;
  std::vector<Item> items;
};

// The values each table shows: every distinct bond of the template, its
// angles, and the dihedral angle where it has one.
const Table& table_of(BondTable t) {
  static const Table tables[] = {
      {"H2", 2, {bond(0, 1)}},
      {"H2O", 3, {bond(0, 1), bond(0, 2), angle(1, 0, 2)}},
      {"H2O2",
       4,
       {bond(0, 1), bond(0, 2), bond(1, 3), angle(1, 0, 2), angle(0, 1, 3), dihedral(2, 0, 1, 3)}},
      {"C2H2", 4, {bond(0, 1), bond(0, 2), bond(1, 3)}},
      {"C2H4", 6, {bond(0, 1), bond(0, 2), angle(2, 0, 3), angle(1, 0, 2)}},
      {"C2H6", 8, {bond(0, 1), bond(0, 2), angle(2, 0, 3), angle(1, 0, 2)}},
      {"B2H6", 8, {bond(0, 1), bond(0, 2), bond(0, 4), angle(2, 0, 3), angle(4, 0, 5)}},
      {"CHCL3", 5, {bond(0, 1), bond(0, 2), angle(2, 0, 3), angle(1, 0, 2)}},
      {"COCL2", 4, {bond(0, 1), bond(0, 2), angle(2, 0, 3), angle(1, 0, 2)}},
      {"COH2", 4, {bond(0, 1), bond(0, 2), angle(2, 0, 3), angle(1, 0, 2)}},
      {"N2O", 3, {bond(0, 1), bond(1, 2), angle(0, 1, 2)}},
      {"PF5", 6, {bond(0, 1), bond(0, 3), angle(1, 0, 3), angle(3, 0, 4)}},
  };
  return tables[static_cast<std::size_t>(t)];
}

// Labels are left-justified in this many columns, so that the values line up
// in every table ("d(H3-O1-O2-H4)" and "a(Cl3-C1-Cl4)" are the longest).
constexpr std::size_t kLabelWidth = 15;

// The element symbol without its padding ("O", "Cl"), "Bq" for a bare centre.
std::string symbol_of(int z) {
  if (z == 0) return "Bq";
  std::string symbol = setup::z_to_symbol(z);
  symbol.erase(symbol.find_last_not_of(' ') + 1);
  return symbol;
}

}  // namespace

Lines bond_table(BondTable t, std::span<const double> positions, std::span<const int> elements) {
  const Table& table = table_of(t);
  const std::size_t natom = positions.size() / 3;
  if (natom != static_cast<std::size_t>(table.natom) || elements.size() != natom) {
    const std::string text =
        "Wrong number of atoms for the bond table " + std::string(table.name) + ".";
    throw Error(fortran::list_directed({std::string_view(text), static_cast<std::int64_t>(natom)}));
  }
  Lines lines{"#", "#  Bond lengths and angles"};
  for (const Item& item : table.items) {
    std::array<std::size_t, 4> a{};
    for (std::size_t k = 0; k < item.count; ++k) a[k] = static_cast<std::size_t>(item.atoms[k]);
    std::string atoms;
    for (std::size_t k = 0; k < item.count; ++k) {
      if (k > 0) atoms += '-';
      atoms += symbol_of(elements[a[k]]);
      atoms += std::to_string(a[k] + 1);
    }
    std::string label(1, item.count == 2 ? 'r' : item.count == 3 ? 'a' : 'd');
    label += '(';
    label += atoms;
    label += ')';
    std::string_view kind, unit, format;
    double value = 0.0;
    switch (item.count) {
      case 2:
        kind = "#  Bond length    ";
        unit = " [A]";
        format = "(A,A,A,F12.8,A)";
        value = points::distance(positions, a[0], a[1]);
        break;
      case 3:
        kind = "#  Bond angle     ";
        unit = " [deg]";
        format = "(A,A,A,F12.6,A)";
        value = points::angle(positions, a[0], a[1], a[2]);
        break;
      default:
        kind = "#  Dihedral angle ";
        unit = " [deg]";
        format = "(A,A,A,F12.6,A)";
        value = points::dihedral(positions, a[0], a[1], a[2], a[3]);
        break;
    }
    if (label.size() < kLabelWidth) label.resize(kLabelWidth, ' ');
    lines.push_back(fortran::format(
        format, {kind, std::string_view(label), std::string_view(" ="), value, unit}));
  }
  return lines;
}

}  // namespace norvik::report
