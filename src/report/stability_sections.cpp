#include "report/stability_sections.h"

#include <cmath>
#include <string>

#include "common/constants.h"
#include "common/fortran_format.h"
#include "norvik/properties.h"
#include "report/values.h"

namespace norvik::report {

Lines instability(bool kohn_sham, bool restricted, std::span<const double> values) {
  const std::string r = kohn_sham ? "RKS" : "RHF", u = kohn_sham ? "UKS" : "UHF";
  const std::string labels[2] = {restricted ? r + " -> " + r : u + " -> " + u, r + " -> " + u};
  const std::size_t roots = values.size() / 2, blocks = restricted ? 2 : 1;
  Lines lines{"#",
              std::string("#  SCF stability (") + (kohn_sham ? "Kohn-Sham" : "Hartree-Fock") +
                  "): lowest eigenvalues of the orbital Hessian",
              "#  Rotation                [eV]     [hartree]"};
  double lowest = NORVIK_UNSTABLE_EIGENVALUE;
  std::size_t worst = 0;
  for (std::size_t b = 0; b < blocks; ++b) {
    for (std::size_t k = 0; k < roots; ++k) {
      const double v = std::abs(values[b * roots + k]) < 5e-7 ? 0.0 : values[b * roots + k];
      if (v < lowest) {
        lowest = v;
        worst = b;
      }
      lines.push_back(fortran::format(
          "(A,A,F14.6,F14.6)", {text("#  "), text(labels[b]), v, v / constants::kHartreeEv}));
    }
  }
  lines.push_back(lowest < NORVIK_UNSTABLE_EIGENVALUE
                      ? "#  Unstable: the energy falls along the lowest " + labels[worst] +
                            " rotation."
                      : std::string("#  Stable: no rotation lowers the energy."));
  return lines;
}

}  // namespace norvik::report
