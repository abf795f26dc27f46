#include "scf/fock_builder.h"

#include <algorithm>

#include "scf/properties.h"

namespace norvik::scf {

HartreeFockBuilder::HartreeFockBuilder(const integrals::two::ContextView& context, FockBuild build,
                                       double exact_exchange)
    : context_(context), build_(build), exact_exchange_(exact_exchange) {}

void HartreeFockBuilder::restart(std::span<double> g) {
  // The stored build overwrites G whole; only the incremental one needs the
  // zero start.
  if (build_ != FockBuild::direct) return;
  const std::size_t size =
      2 * static_cast<std::size_t>(context_.nbasis) * static_cast<std::size_t>(context_.nbasis);
  previous_.assign(size, 0.0);
  std::fill_n(g.begin(), size, 0.0);
}

void HartreeFockBuilder::resume(std::span<const double> rho, std::span<const double>) {
  if (build_ != FockBuild::direct) return;
  const std::size_t size =
      2 * static_cast<std::size_t>(context_.nbasis) * static_cast<std::size_t>(context_.nbasis);
  previous_.assign(rho.begin(), rho.begin() + static_cast<std::ptrdiff_t>(size));
}

void HartreeFockBuilder::build(std::span<const double> rho, std::span<double> g) {
  if (build_ == FockBuild::stored) {
    integrals::two::fock_stored(context_, exact_exchange_, rho, g);
  } else {
    integrals::two::fock_direct(context_, exact_exchange_, rho, previous_, g);
  }
}

double HartreeFockBuilder::energy(const Operators& op, std::span<const double> rho,
                                  std::span<const double> g) const {
  return electronic_energy(op.t, op.v, g, rho);
}

}  // namespace norvik::scf
