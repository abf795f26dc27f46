#include "report/correlation_sections.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <string>
#include <vector>

#include "common/constants.h"
#include "common/fortran_format.h"
#include "report/values.h"

namespace norvik::report {

namespace {

using fortran::format;

// A value that the format would write as a signed zero is written as 0.
double cleaned(double v, double half_unit) {
  return std::abs(v) < half_unit ? 0.0 : v;
}

std::string energy_line(std::string_view label, double ev) {
  const double h = ev / constants::kHartreeEv;
  return format("(A,F16.9,F15.6,2F12.4)", {text(label), cleaned(h, 5e-10), cleaned(ev, 5e-7),
                                           cleaned(ev * constants::kEvKcalPerMol, 5e-5),
                                           cleaned(ev * constants::kEvKjPerMol, 5e-5)});
}

}  // namespace

Lines counterpoise(const std::array<double, 2>& own, const std::array<double, 2>& dimer,
                   double dimer_energy) {
  Lines lines{"#", "#  Counterpoise correction (Boys-Bernardi) [hartree]",
              "#                      own basis     dimer basis            BSSE"};
  const char* names[2] = {"#  Fragment A   ", "#  Fragment B   "};
  for (std::size_t f = 0; f < 2; ++f) {
    const double h = constants::kHartreeEv;
    lines.push_back(format("(A,3F16.9)", {text(names[f]), own[f] / h, dimer[f] / h,
                                          cleaned((own[f] - dimer[f]) / h, 5e-10)}));
  }
  lines.push_back(
      format("(A,F16.9)", {text("#  Dimer        "), dimer_energy / constants::kHartreeEv}));
  lines.push_back(
      "#  Interaction energy            [hartree]           [eV]  [kcal/mol]    [kJ/mol]");
  lines.push_back(energy_line("#  Raw                      ", dimer_energy - own[0] - own[1]));
  lines.push_back(
      energy_line("#  BSSE                     ", own[0] - dimer[0] + own[1] - dimer[1]));
  lines.push_back(energy_line("#  Counterpoise-corrected   ", dimer_energy - dimer[0] - dimer[1]));
  return lines;
}

Lines two_electron_ci(int norb, std::span<const double> ground, std::span<const double> singlets,
                      std::span<const double> triplets) {
  Lines lines{"#", "#  Two-electron full CI: leading configurations of the ground state",
              "#  Orbitals   Coefficient      Weight"};
  const std::size_t nconf = static_cast<std::size_t>(norb) * static_cast<std::size_t>(norb + 1) / 2;
  std::vector<std::size_t> order(std::min(nconf, ground.size()));
  std::iota(order.begin(), order.end(), std::size_t{0});
  // By the magnitude as written (six decimals), so that configurations of
  // degenerate orbitals keep their own order whatever the last bits say.
  auto written = [&](std::size_t k) { return std::llround(std::abs(ground[k]) * 1e6); };
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return written(a) > written(b); });
  constexpr std::size_t kMaxConfigurations = 10;
  constexpr double kSmallest = 0.01;
  for (std::size_t k = 0; k < order.size() && k < kMaxConfigurations; ++k) {
    const double c = ground[order[k]];
    if (std::abs(c) < kSmallest) break;
    // p(p+1)/2 + q back to (p, q), p ≥ q.
    std::int64_t p = 0;
    while ((p + 1) * (p + 2) / 2 <= static_cast<std::int64_t>(order[k])) ++p;
    const std::int64_t q = static_cast<std::int64_t>(order[k]) - p * (p + 1) / 2;
    lines.push_back(format("(A,2I4,F14.6,F12.6)", {text("#  "), q + 1, p + 1, c, c * c}));
  }
  // The states of both spins merged in order of energy.
  struct State {
    double energy;
    bool triplet;
  };
  std::vector<State> states;
  const std::size_t nsinglet = nconf, ntriplet = nconf - static_cast<std::size_t>(norb);
  for (std::size_t k = 0; k < singlets.size() && k < nsinglet; ++k)
    states.push_back({singlets[k], false});
  for (std::size_t k = 0; k < triplets.size() && k < ntriplet; ++k)
    states.push_back({triplets[k], true});
  std::stable_sort(states.begin(), states.end(),
                   [](const State& a, const State& b) { return a.energy < b.energy; });
  lines.push_back("#  State  Spin            E [hartree]            E [eV]   Excitation [eV]");
  const double e0 = states.empty() ? 0.0 : states.front().energy;
  for (std::size_t k = 0; k < states.size(); ++k) {
    lines.push_back(format(
        "(A,I5,2X,A,F23.10,F18.8,F18.8)",
        {text("#  "), static_cast<std::int64_t>(k + 1),
         text(states[k].triplet ? "triplet" : "singlet"), states[k].energy / constants::kHartreeEv,
         states[k].energy, cleaned(states[k].energy - e0, 5e-9)}));
  }
  return lines;
}

Lines full_ci_energy(double hartree_fock, double full_ci) {
  const double h = constants::kHartreeEv;
  auto line = [&](std::string_view label, double ev) {
    return format("(A,F20.10,A,F18.8,A)",
                  {text(label), ev / h, text(" [hartree] ="), ev, text(" [eV]")});
  };
  return {"#", line("#  Full CI energy       =", full_ci),
          line("#  Hartree-Fock energy  =", hartree_fock),
          line("#  Correlation energy   =", full_ci - hartree_fock)};
}

}  // namespace norvik::report
