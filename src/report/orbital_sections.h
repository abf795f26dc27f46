// The report sections of the wave function and its moments: the quadrupole
// moment, populations per shell, and the orbitals (energies and LCAO
// coefficients) as tables of five columns.  Each returns its lines, every one
// beginning with "#", the first line of a section "#".
#pragma once

#include <array>
#include <span>
#include <string>
#include <string_view>

#include "report/sections.h"

namespace norvik::report {

// e·Å² in buckingham (1e-26 esu·cm²): e = 4.803204712570263e-10 esu, Å² = 1e-16 cm².
inline constexpr double kBuckinghamPerEAngstrom2 = 4.803204712570263;

// The traceless quadrupole Θ (3×3 [e·Å²]) about the centre of nuclear charge,
// in e·Å² and in buckingham (docs/report.md).
Lines quadrupole(const std::array<double, 9>& theta);

// The electrons and spin (α − β) of every shell of a population analysis
// `kind`; shell s sits on atom atom_of[s] (0-based) and is labelled labels[s].
Lines shell_populations(std::string_view kind, std::span<const int> elements,
                        std::span<const int> atom_of, std::span<const std::string> labels,
                        std::span<const double> electrons, std::span<const double> spin);

// Who each basis function is: its atom (0-based), the atom's element and the
// function's label ("2px").
struct FunctionNames {
  std::span<const int> atom_of;
  std::span<const int> elements;
  std::span<const std::string> labels;
};

// One spin's orbitals [first, last) (0-based) of `coefficients` ((n, n+1): the
// coefficients in columns 0 … n−1, the levels [eV] in column n), in blocks of
// five: number, name (HOMO−k / LUMO+k with `gap_names`), level, occupation
// (`occupation` for the nocc lowest), and one line per basis function.
// `heading` is the title of the block.
Lines orbital_table(std::string_view heading, const FunctionNames& names, int nbasis,
                    std::span<const double> coefficients, int first, int last, int nocc,
                    double occupation, bool gap_names);

}  // namespace norvik::report
