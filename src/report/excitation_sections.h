// The report sections of excited states: the table of states, their dominant
// orbital transitions, the Tamm–Dancoff matrix of a small case, and the
// broadened UV–vis spectrum (a two-column file of its own).  Each returns its
// lines; the report sections' lines all begin with "#".
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "report/sections.h"

namespace norvik::report {

// Spin of a state as the sections name it: 1 singlet, 3 triplet, 0 a state of
// an unrestricted point (no spin label).
std::string_view spin_label(int spin);

// One line per state: number, spin, energy [eV], wavelength [nm], oscillator
// strength; `method` names the response in the heading.
Lines excited_states(std::string_view method, std::span<const int> spin,
                     std::span<const double> energy, std::span<const double> strength);

// Per state its heading line and its dominant pairs (occupied → virtual,
// numbered over all levels from 1; "a"/"b" after the numbers for the alpha or
// beta orbitals of an unrestricted point), with amplitude and weight.
// count[s] pairs belong to state s, in order.
struct TransitionList {
  std::span<const int> count, occ, vir, beta;
  std::span<const double> amplitude;
};
Lines transitions(std::span<const int> spin, std::span<const double> energy,
                  const TransitionList& pairs);

// The matrix A (dimension × dimension, column-major, eV) in blocks of six
// columns.
Lines ci_matrix(int dimension, std::span<const double> a);

// The molar absorptivity ε(λ) [L/(mol·cm)] on `npoint` wavelengths from `low`
// to `high` nm, each state a Gaussian band in energy of full width `fwhm` [eV]
// at half maximum with area proportional to its oscillator strength.
std::vector<double> uv_grid(int npoint, double low, double high);
std::vector<double> uv_absorbance(std::span<const double> energy, std::span<const double> strength,
                                  std::span<const double> wavelengths, double fwhm);
// The spectrum file: a comment line naming the columns, then wavelength [nm]
// and ε per line.
Lines uv_spectrum(std::span<const double> wavelengths, std::span<const double> absorbance);

}  // namespace norvik::report
