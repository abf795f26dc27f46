#include "dft/functionals/components.h"

#include <stdexcept>

#include "dft/functionals/becke88.h"
#include "dft/functionals/gunnarsson_lundqvist.h"
#include "dft/functionals/lyp.h"
#include "dft/functionals/op.h"
#include "dft/functionals/perdew_zunger.h"
#include "dft/functionals/pf_exchange.h"
#include "dft/functionals/slater.h"
#include "dft/functionals/vwn3.h"
#include "dft/functionals/vwn5.h"

namespace norvik::dft {

bool has_kernel(Component c) {
  return c == Component::slater || c == Component::vwn3 || c == Component::vwn5;
}

void add_energies(Component c, std::span<const double> records, double weight,
                  std::span<double> energies) {
  switch (c) {
    case Component::slater:
      return slater::add_energies(records, weight, energies);
    case Component::becke88:
      return becke88::add_energies(records, weight, energies);
    case Component::pf_exchange:
      return pf_exchange::add_energies(records, weight, energies);
    case Component::vwn3:
      return vwn3::add_energies(records, weight, energies);
    case Component::vwn5:
      return vwn5::add_energies(records, weight, energies);
    case Component::lyp:
      return lyp::add_energies(records, weight, energies);
    case Component::op:
      return op::add_energies(records, weight, energies);
    case Component::perdew_zunger:
      return perdew_zunger::add_energies(records, weight, energies);
    case Component::gunnarsson_lundqvist:
      return gunnarsson_lundqvist::add_energies(records, weight, energies);
  }
  throw std::logic_error("unknown functional component");
}

void add_potentials(Component c, std::span<const double> records, double weight,
                    std::span<double> potentials) {
  switch (c) {
    case Component::slater:
      return slater::add_potentials(records, weight, potentials);
    case Component::becke88:
      return becke88::add_potentials(records, weight, potentials);
    case Component::pf_exchange:
      return pf_exchange::add_potentials(records, weight, potentials);
    case Component::vwn3:
      return vwn3::add_potentials(records, weight, potentials);
    case Component::vwn5:
      return vwn5::add_potentials(records, weight, potentials);
    case Component::lyp:
      return lyp::add_potentials(records, weight, potentials);
    case Component::op:
      return op::add_potentials(records, weight, potentials);
    case Component::perdew_zunger:
      return perdew_zunger::add_potentials(records, weight, potentials);
    case Component::gunnarsson_lundqvist:
      return gunnarsson_lundqvist::add_potentials(records, weight, potentials);
  }
  throw std::logic_error("unknown functional component");
}

void add_kernels(Component c, std::span<const double> records, double weight,
                 std::span<double> kernels) {
  switch (c) {
    case Component::slater:
      return slater::add_kernels(records, weight, kernels);
    case Component::vwn3:
      return vwn3::add_kernels(records, weight, kernels);
    case Component::vwn5:
      return vwn5::add_kernels(records, weight, kernels);
    default:
      throw std::logic_error("functional component without a kernel");
  }
}

}  // namespace norvik::dft
