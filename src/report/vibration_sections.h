// The report sections of a vibrational analysis: the Hessian, the harmonic
// modes with their infrared and Raman intensities, and the broadened spectrum
// as a two-column table for plotting programs.
#pragma once

#include <span>

#include "report/sections.h"

namespace norvik::report {

// The Hessian (3N × 3N, column-major, eV/Å²) in blocks of six columns, each
// row and column labelled by atom and coordinate.
Lines hessian(std::span<const double> hessian, int natom);

// One line per mode: wavenumber [cm⁻¹] (an imaginary mode's magnitude with an
// "i"), infrared intensity [km/mol] and, when `raman` is not empty, the Raman
// activity [Å⁴/amu] and depolarisation ratio; the wavenumbers are those after
// the frequency scale factor f, which the heading states.
Lines vibrations(std::span<const double> wavenumbers, std::span<const double> infrared,
                 std::span<const double> raman, std::span<const double> depolarization,
                 double scale);

// A spectrum on a grid of wavenumbers: a comment line naming the columns, then
// one line per point (wavenumber [cm⁻¹], intensity per cm⁻¹ in `unit`).
Lines spectrum(std::span<const double> wavenumbers, std::span<const double> values,
               std::string_view unit);

}  // namespace norvik::report
