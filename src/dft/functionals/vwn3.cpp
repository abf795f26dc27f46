#include "dft/functionals/vwn3.h"

#include "dft/functionals/batch.h"
#include "dft/functionals/spin_interpolation.h"
#include "dft/functionals/vwn_formula.h"

namespace norvik::dft::vwn3 {

namespace {

// (x0, A [rydberg], b, c) fitted to the random-phase-approximation correlation
// energies of the unpolarised (paramagnetic) and the fully polarised
// (ferromagnetic) gas.
constexpr VwnParameters kParamagnetic{-0.409286, 0.0621814, 13.072, 42.7198};
constexpr VwnParameters kFerromagnetic{-0.743294, 0.0310907, 20.1231, 101.578};

double energy(SpinDensities r) {
  const double ra = r.a * units::kBohr3;
  const double rb = r.b * units::kBohr3;
  if (ra + rb < kVwnDensityThreshold) return 0.0;
  const double x = vwn_x(ra + rb);
  const double f = spin_interpolation(ra, rb).f();
  const double ep = vwn_value(kParamagnetic, x);
  const double ef = vwn_value(kFerromagnetic, x);
  return (ep + (ef - ep) * f) * (r.a + r.b) * units::kRydberg;
}

VwnDerivatives derivatives(double x, const SpinInterpolation& s, bool second) {
  const double ep = vwn_value(kParamagnetic, x);
  const double delta = vwn_value(kFerromagnetic, x) - ep;
  const double dp = vwn_derivative(kParamagnetic, x);
  const double ddelta = vwn_derivative(kFerromagnetic, x) - dp;
  const double f = s.f();
  VwnDerivatives d;
  d.e = ep + delta * f;
  d.ex = dp + ddelta * f;
  d.ez = delta * s.df();
  if (second) {
    const double d2p = vwn_second_derivative(kParamagnetic, x);
    d.exx = d2p + (vwn_second_derivative(kFerromagnetic, x) - d2p) * f;
    d.exz = ddelta * s.df();
    d.ezz = delta * s.d2f();
  }
  return d;
}

// The derivatives as a value the batch loops inline.
constexpr auto kDerivatives = [](double x, const SpinInterpolation& s, bool second) {
  return derivatives(x, s, second);
};

}  // namespace

void add_energies(std::span<const double> records, double weight, std::span<double> energies) {
  batch::add_energies(records, weight, energies,
                      [](const double* p) { return energy(densities_of(p)); });
}

void add_potentials(std::span<const double> records, double weight, std::span<double> potentials) {
  batch::add_potentials(records, weight, potentials, [](const double* p) {
    return vwn_point_potential(densities_of(p), kDerivatives);
  });
}

void add_kernels(std::span<const double> records, double weight, std::span<double> kernels) {
  batch::add_kernels(records, weight, kernels, [](const double* p) {
    return vwn_point_kernel(densities_of(p), kDerivatives);
  });
}

}  // namespace norvik::dft::vwn3
