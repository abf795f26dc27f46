#include "report/scf_sections.h"

#include <cmath>
#include <cstdint>
#include <string>

#include "common/constants.h"
#include "common/fortran_format.h"
#include "report/values.h"
#include "setup/elements.h"

namespace norvik::report {

namespace {

using fortran::format;
using fortran::Value;

// A value that would be written as a signed zero in six decimals is written as 0.
double cleaned6(double v) {
  return std::abs(v) < 5.0e-7 ? 0.0 : v;
}

std::string level_or_none(std::span<const double> levels, int index) {
  if (index < 0 || index >= static_cast<int>(levels.size())) return "      none";
  return format("(F12.6)", {levels[static_cast<std::size_t>(index)]});
}

std::string frontier_line(std::string_view label, std::span<const double> levels, int northo,
                          int count) {
  const int homo = count - 1;
  const int lumo = count < northo ? count : -1;
  std::string line = std::string("#  ") + std::string(label) +
                     "HOMO = " + level_or_none(levels, homo) +
                     " [eV],  LUMO = " + level_or_none(levels, lumo) + " [eV]";
  if (homo >= 0 && lumo >= 0) {
    line += format("(A,F10.6,A)",
                   {text(",  gap = "),
                    levels[static_cast<std::size_t>(lumo)] - levels[static_cast<std::size_t>(homo)],
                    text(" [eV]")});
  }
  return line;
}

}  // namespace

Lines energy_atoms(std::span<const int> charges, std::span<const int> elements,
                   std::span<const double> energies) {
  Lines lines{"#", "#  Energy of the free atoms", "#  Atom  Symbol        Energy [eV]"};
  double sum = 0.0;
  for (std::size_t a = 0; a < charges.size(); ++a) {
    if (charges[a] == 0) continue;
    sum += energies[a];
    lines.push_back(
        format("(A,I4,4X,A2,2X,F20.9)", {text("#  "), integer(static_cast<long long>(a + 1)),
                                         text(setup::z_to_symbol(elements[a])), energies[a]}));
  }
  lines.push_back(
      format("(A,F20.9,A)", {text("#  Sum of atomic energies = "), sum, text(" [eV]")}));
  return lines;
}

Lines energy_molecule(double electronic, double nuclear, double atoms_sum) {
  const double total = electronic + nuclear;
  Lines lines{
      "#",
      format("(A,F20.9,A)", {text("#  Electronic energy  = "), electronic, text(" [eV]")}),
      format("(A,F20.9,A)", {text("#  Nuclear repulsion  = "), nuclear, text(" [eV]")}),
      format("(A,F20.9,A,F18.10,A)", {text("#  Molecular energy   = "), total, text(" [eV] = "),
                                      total / constants::kHartreeEv, text(" [au]")}),
  };
  if (atoms_sum != 0.0) {
    lines.push_back(format("(A,F20.9,A)",
                           {text("#  Binding energy     = "), atoms_sum - total, text(" [eV]")}));
  }
  return lines;
}

Lines energy_scf(double emol, double de_final) {
  return {"#", format("(A,F20.9,A,ES10.3,A)",
                      {text("#  SCF energy: Emol = "), emol, text(" [eV],  last change = "),
                       de_final, text(" [eV]")})};
}

Lines energy_kohn_sham(double exc, double exchange, double correlation, double grid_electrons) {
  return {"#", format("(A,F20.9,A)", {text("#  XC energy          = "), exc, text(" [eV]")}),
          format("(A,F20.9,A)", {text("#    exchange         = "), exchange, text(" [eV]")}),
          format("(A,F20.9,A)", {text("#    correlation      = "), correlation, text(" [eV]")}),
          format("(A,F20.9)", {text("#  Electrons on grid  = "), grid_electrons})};
}

Lines not_converged(int cycles, double de_final, double rmsd) {
  return {
      "#",
      format("(A,I5,A)", {text("#  SCF not converged in "), std::int64_t{cycles},
                          text(" cycles: the energy and orbitals are those of the last cycle.")}),
      format("(A,ES10.3,A,ES10.3)", {text("#  last energy change = "), de_final,
                                     text(" [eV],  last RMS density change = "), rmsd})};
}

Lines levels(std::span<const double> alpha, std::span<const double> beta, int nlevel, int nalpha,
             int nbeta) {
  Lines lines{"#", "#  Orbital energies [eV] (occupied: *)",
              "#       i          alpha            beta"};
  const int count = std::min<int>(nlevel, static_cast<int>(std::min(alpha.size(), beta.size())));
  for (int i = 0; i < count; ++i) {
    const auto k = static_cast<std::size_t>(i);
    lines.push_back(format("(A,I6,F15.6,A,F15.6,A)",
                           {text("#  "), integer(i + 1), alpha[k], text(i < nalpha ? " *" : "  "),
                            beta[k], text(i < nbeta ? " *" : "  ")}));
  }
  return lines;
}

Lines occupation(std::span<const double> alpha, std::span<const double> beta, int northo,
                 int nalpha, int nbeta) {
  return {"#",
          format("(A,I0,A,I0)", {text("#  Occupied orbitals: alpha "), integer(nalpha),
                                 text(", beta "), integer(nbeta)}),
          frontier_line("alpha: ", alpha, northo, nalpha),
          frontier_line("beta:  ", beta, northo, nbeta)};
}

Lines dipole(std::array<double, 3> mu) {
  const double length = std::sqrt(mu[0] * mu[0] + mu[1] * mu[1] + mu[2] * mu[2]);
  return {"#", format("(A,F12.6,A,F12.6,A,F12.6,A,F12.6)",
                      {text("#  Electric dipole moment [eA]: ("), cleaned6(mu[0]), text(","),
                       cleaned6(mu[1]), text(","), cleaned6(mu[2]), text(" )  |mu| ="),
                       cleaned6(length)})};
}

Lines dependence(int nbasis, int northo, double threshold) {
  Lines lines{"#", format("(A,I0,A,I0)", {text("#  Number of basis functions: "), integer(nbasis),
                                          text(",  independent combinations: "), integer(northo)})};
  if (northo < nbasis) {
    lines.push_back(
        format("(A,I0,A,ES8.1,A)",
               {text("#  Linearly dependent combinations removed: "), integer(nbasis - northo),
                text(" (overlap eigenvalues below "), threshold, text(")")}));
  }
  return lines;
}

Lines spin_contamination(double s2, double exact) {
  return {"#", format("(A,F12.6,A,F12.6)",
                      {text("#  Spin contamination: <S**2> ="), s2, text(",  S(S+1) ="), exact})};
}

}  // namespace norvik::report
