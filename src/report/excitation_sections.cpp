#include "report/excitation_sections.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>

#include "common/constants.h"
#include "common/fortran_format.h"
#include "report/values.h"

namespace norvik::report {

namespace {

using fortran::format;

// hc [eV·nm]: λ[nm] = hc / E[eV].
constexpr double kHcEvNm = 2.0 * std::numbers::pi * constants::kHbarCEvAngstrom / 10.0;

// The area factor of a Gaussian band: ε(ν̃) = kBandArea · f / σ · exp(−((ν̃ − ν̃_n)/σ)²)
// with ν̃ and σ (its half width at 1/e) in cm⁻¹ gives ∫ε dν̃ = kBandArea·√π·f,
// the integrated absorptivity of a band of oscillator strength f,
// 2.315e8 f L/(mol·cm²) (Hilborn, Am. J. Phys. 50, 982 (1982)).
constexpr double kBandArea = 1.3062974e8;

// Absorptivities below this [L/(mol·cm)] are written as 0.
constexpr double kSmallest = 1e-30;

double cleaned(double v, double half_unit) {
  return std::abs(v) < half_unit ? 0.0 : v;
}

}  // namespace

std::string_view spin_label(int spin) {
  return spin == 1 ? "singlet" : spin == 3 ? "triplet" : "";
}

Lines excited_states(std::string_view method, std::span<const int> spin,
                     std::span<const double> energy, std::span<const double> strength) {
  Lines lines{"#", std::string("#  Excited states (") + std::string(method) + ")",
              "#  State  Spin           E [eV]   lambda [nm]             f"};
  for (std::size_t s = 0; s < energy.size(); ++s) {
    const double nm = energy[s] > 0.0 ? kHcEvNm / energy[s] : 0.0;
    lines.push_back(format("(A,I5,2X,A7,F16.6,F14.2,F14.6)",
                           {text("#  "), integer(static_cast<long long>(s + 1)),
                            text(spin_label(spin[s])), energy[s], nm, cleaned(strength[s], 5e-7)}));
  }
  return lines;
}

Lines transitions(std::span<const int> spin, std::span<const double> energy,
                  const TransitionList& pairs) {
  Lines lines{"#", "#  Dominant orbital transitions (weight c**2 above 0.05)",
              "#          occ      vir     amplitude c    weight c**2"};
  std::size_t next = 0;
  for (std::size_t s = 0; s < energy.size(); ++s) {
    lines.push_back(
        format("(A,I5,2X,A7,F16.6,A)", {text("#  State"), integer(static_cast<long long>(s + 1)),
                                        text(spin_label(spin[s])), energy[s], text(" eV")}));
    for (int k = 0; k < pairs.count[s]; ++k, ++next) {
      const std::string_view tag = spin[s] != 0 ? " " : pairs.beta[next] != 0 ? "b" : "a";
      const double c = pairs.amplitude[next];
      lines.push_back(format("(A,I5,A,A,I5,A,F16.6,F16.6)",
                             {text("#       "), integer(pairs.occ[next]), text(tag), text(" ->"),
                              integer(pairs.vir[next]), text(tag), c, c * c}));
    }
  }
  return lines;
}

Lines ci_matrix(int dimension, std::span<const double> a) {
  Lines lines{"#", "#  Tamm-Dancoff matrix A [eV]"};
  const auto n = static_cast<std::size_t>(dimension);
  for (std::size_t first = 0; first < n; first += 6) {
    const std::size_t last = std::min(n, first + 6);
    std::vector<fortran::Value> head{text("#     ")};
    for (std::size_t j = first; j < last; ++j)
      head.push_back(integer(static_cast<long long>(j + 1)));
    lines.push_back(format("(A," + std::to_string(last - first) + "I12)", head));
    for (std::size_t i = 0; i < n; ++i) {
      std::vector<fortran::Value> row{text("#"), integer(static_cast<long long>(i + 1))};
      for (std::size_t j = first; j < last; ++j) row.push_back(cleaned(a[i + n * j], 5e-7));
      lines.push_back(format("(A,I5," + std::to_string(last - first) + "F12.6)", row));
    }
  }
  return lines;
}

std::vector<double> uv_grid(int npoint, double low, double high) {
  std::vector<double> grid(static_cast<std::size_t>(std::max(npoint, 0)));
  for (std::size_t k = 0; k < grid.size(); ++k) {
    grid[k] = grid.size() == 1 ? low
                               : low + (high - low) * static_cast<double>(k) /
                                           static_cast<double>(grid.size() - 1);
  }
  return grid;
}

std::vector<double> uv_absorbance(std::span<const double> energy, std::span<const double> strength,
                                  std::span<const double> wavelengths, double fwhm) {
  // eV to cm⁻¹: 1e7 / hc[eV·nm].
  const double wavenumber = 1e7 / kHcEvNm;
  const double sigma = fwhm / (2.0 * std::sqrt(std::log(2.0)));  // eV, half width at 1/e
  std::vector<double> eps(wavelengths.size(), 0.0);
  for (std::size_t k = 0; k < wavelengths.size(); ++k) {
    const double e = kHcEvNm / wavelengths[k];
    for (std::size_t s = 0; s < energy.size(); ++s) {
      const double u = (e - energy[s]) / sigma;
      eps[k] += kBandArea * strength[s] / (sigma * wavenumber) * std::exp(-u * u);
    }
  }
  return eps;
}

Lines uv_spectrum(std::span<const double> wavelengths, std::span<const double> absorbance) {
  Lines lines{"# wavelength [nm]   epsilon [L/(mol*cm)]"};
  for (std::size_t k = 0; k < wavelengths.size(); ++k) {
    // Far tails as 0: an exponent of three digits would lose its E (1.0-100),
    // which plotting programs cannot read.
    const double eps = std::abs(absorbance[k]) < kSmallest ? 0.0 : absorbance[k];
    lines.push_back(format("(F12.3,ES18.8)", {wavelengths[k], eps}));
  }
  return lines;
}

}  // namespace norvik::report
