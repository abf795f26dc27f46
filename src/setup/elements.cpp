#include "setup/elements.h"

#include <array>
#include <cstdint>

#include "common/constants.h"
#include "common/error.h"
#include "common/fortran_format.h"

namespace norvik::setup {

namespace {

using fortran::Value;
constexpr int kMaxZ = constants::kMaxZ;

constexpr std::array<std::string_view, kMaxZ> kSymbols = {
    "H ", "He", "Li", "Be", "B ", "C ", "N ", "O ", "F ", "Ne", "Na", "Mg", "Al", "Si",
    "P ", "S ", "Cl", "Ar", "K ", "Ca", "Sc", "Ti", "V ", "Cr", "Mn", "Fe", "Co", "Ni",
    "Cu", "Zn", "Ga", "Ge", "As", "Se", "Br", "Kr", "Rb", "Sr", "Y ", "Zr", "Nb", "Mo",
    "Tc", "Ru", "Rh", "Pd", "Ag", "Cd", "In", "Sn", "Sb", "Te", "I ", "Xe"};

constexpr std::array<std::string_view, kMaxZ> kNames = {
    "Hydrogen",   "Helium",    "Lithium",   "Beryllium", "Boron",     "Carbon",    "Nitrogen",
    "Oxygen",     "Fluorine",  "Neon",      "Sodium",    "Magnesium", "Aluminium", "Silicon",
    "Phosphorus", "Sulfur",    "Chlorine",  "Argon",     "Potassium", "Calcium",   "Scandium",
    "Titanium",   "Vanadium",  "Chromium",  "Manganese", "Iron",      "Cobalt",    "Nickel",
    "Copper",     "Zinc",      "Gallium",   "Germanium", "Arsenic",   "Selenium",  "Bromine",
    "Krypton",    "Rubidium",  "Strontium", "Yttrium",   "Zirconium", "Niobium",   "Molybdenum",
    "Technetium", "Ruthenium", "Rhodium",   "Palladium", "Silver",    "Cadmium",   "Indium",
    "Tin",        "Antimony",  "Tellurium", "Iodine",    "Xenon"};

constexpr std::array<double, kMaxZ> kMasses = {
    1.00794, 4.002602, 6.941,    9.012182,  10.811,   12.0107,   14.0067,   15.9994,   18.9984032,
    20.1797, 22.98977, 24.305,   26.981538, 28.0855,  30.973761, 32.065,    35.453,    39.948,
    39.0983, 40.078,   44.95591, 47.867,    50.9415,  51.9961,   54.938049, 55.845,    58.9332,
    58.6934, 63.546,   65.409,   69.723,    72.64,    74.9216,   78.96,     79.904,    83.798,
    85.4678, 87.62,    88.90585, 91.224,    92.90638, 95.94,     99.0,      101.07,    102.9055,
    106.42,  107.8682, 112.411,  114.818,   118.71,   121.76,    127.6,     126.90447, 131.293};

constexpr std::array<int, kMaxZ> kMultiplicities = {
    2, 1, 2, 1, 2, 3, 4, 3, 2, 1,                           // H–Ne
    2, 1, 2, 3, 4, 3, 2, 1,                                 // Na–Ar
    2, 1, 2, 3, 4, 7, 6, 5, 4, 3, 2, 1, 2, 3, 4, 3, 2, 1,   // K–Kr
    2, 1, 2, 3, 6, 7, 6, 5, 4, 1, 2, 1, 2, 3, 4, 3, 2, 1};  // Rb–Xe

// The symbol as the two-character field that a Fortran CHARACTER(2) holds.
std::string padded_symbol(std::string_view symbol) {
  std::string s(symbol.substr(0, 2));
  s.resize(2, ' ');
  return s;
}

int find_symbol(std::string_view symbol) {
  const std::string key = padded_symbol(symbol);
  for (int z = 1; z <= kMaxZ; ++z) {
    if (kSymbols[z - 1] == key) return z;
  }
  return 0;
}

[[noreturn]] void z_out_of_range(std::string_view text, int z) {
  throw Error(fortran::list_directed({text, Value(std::int64_t{z})}));
}

}  // namespace

int symbol_to_z(std::string_view symbol) {
  const int z = find_symbol(symbol);
  if (z == 0) {
    const std::string s = padded_symbol(symbol);
    throw Error(
        fortran::list_directed({"symbol exceed the limit in Smb2Chg.", std::string_view(s)}));
  }
  return z;
}

std::string z_to_symbol(int z) {
  if (z < 1 || z > kMaxZ) z_out_of_range("chg exceed the limit in Chg2Smb.", z);
  return std::string(kSymbols[z - 1]);
}

std::string symbol_to_name(std::string_view symbol) {
  const int z = find_symbol(symbol);
  if (z == 0) {
    const std::string s = padded_symbol(symbol);
    throw Error(
        fortran::list_directed({"symbol exceed the limit in Smb2Name.", std::string_view(s)}));
  }
  return std::string(kNames[z - 1]);
}

double atomic_mass(int z) {
  if (z == 0) return 0.0;
  if (z < 0 || z > kMaxZ) z_out_of_range("chg exceed the limit in AtomMass.", z);
  return kMasses[z - 1];
}

int hunds_rule_multiplicity(int z) {
  if (z < 1 || z > kMaxZ) z_out_of_range("zn exceed the limit in HundsRule.", z);
  return kMultiplicities[z - 1];
}

ElectronCount count_electrons(int zsum, int charge, int multiplicity,
                              std::string_view routine_label) {
  const long long n = static_cast<long long>(zsum) - charge;
  const long long alpha = (n + multiplicity - 1) / 2;
  const long long beta = (n - multiplicity + 1) / 2;
  // An even N + 2S+1 leaves half an electron; a multiplicity below 1 or above
  // N + 1 leaves a negative count.  Both are impossible states, and so is a
  // count that no 32-bit sum of the two spins (or orbitals beyond them) holds.
  constexpr long long kMostElectrons = 1LL << 28;
  ElectronCount count;
  if ((n + multiplicity) % 2 == 0 || multiplicity < 1 || beta < 0 || alpha > kMostElectrons) {
    const std::string text = "Invalid combination in " + std::string(routine_label) + ".";
    throw Error(
        fortran::list_directed({std::string_view(text), Value(std::int64_t{zsum}),
                                Value(std::int64_t{charge}), Value(std::int64_t{multiplicity})}));
  }
  count.alpha = static_cast<int>(alpha);
  count.beta = static_cast<int>(beta);
  return count;
}

void charges_of_one_atom(int atom, std::span<const int> charges, std::span<int> out) {
  for (std::size_t i = 0; i < charges.size(); ++i) {
    out[i] = static_cast<int>(i) == atom ? charges[i] : 0;
  }
}

}  // namespace norvik::setup
