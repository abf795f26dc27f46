#include "dft/functionals/pf_exchange.h"

#include "dft/functionals/batch.h"

namespace norvik::dft::pf_exchange {

namespace {
// A lambda rather than the function's address, so that K is inlined into the loops.
constexpr auto kEnhancement = [](double x) { return enhancement(x); };
}  // namespace

void add_energies(std::span<const double> records, double weight, std::span<double> energies) {
  batch::add_energies(records, weight, energies, [](const double* p) {
    return gga_exchange_energy(point_of(p), kEnhancement);
  });
}

void add_potentials(std::span<const double> records, double weight, std::span<double> potentials) {
  batch::add_potentials(records, weight, potentials, [](const double* p) {
    return gga_exchange_potential(point_of(p), kEnhancement);
  });
}

}  // namespace norvik::dft::pf_exchange
