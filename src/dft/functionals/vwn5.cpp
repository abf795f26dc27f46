#include "dft/functionals/vwn5.h"

#include "dft/functionals/batch.h"
#include "dft/functionals/spin_interpolation.h"
#include "dft/functionals/vwn_formula.h"

namespace norvik::dft::vwn5 {

namespace {

// (x0, A [rydberg], b, c) fitted to the Ceperley–Alder energies of the
// unpolarised (paramagnetic) and the fully polarised (ferromagnetic) gas, and
// to the RPA spin stiffness α_c.  The stiffness amplitude −0.033773728 is
// −1/(3π²) rounded to 8 significant digits (3.5e-9 relative).
constexpr VwnParameters kParamagnetic{-0.10498, 0.0621814, 3.72744, 12.9352};
constexpr VwnParameters kFerromagnetic{-0.325, 0.0310907, 7.06042, 18.0578};
constexpr VwnParameters kStiffness{-0.0047584, -0.033773728, 1.13107, 13.0045};

// f(ζ)/f''(0) = h(ζ) · 9/8, with f''(0) = 1.7099209341613653; at full
// polarisation it is (2^{4/3} − 2) · 9/8.
constexpr double kOverCurvature = 1.125;
constexpr double kPolarisedRatio = 0.5848223622634647;

// g = f/f''(0) and its derivatives in ζ.
struct StiffnessWeight {
  double g, dg, d2g;
};

StiffnessWeight stiffness_weight(const SpinInterpolation& s) {
  return {s.polarised ? kPolarisedRatio : s.h * kOverCurvature, s.dh * kOverCurvature,
          s.d2h * kOverCurvature};
}

double energy(SpinDensities r) {
  const double ra = r.a * units::kBohr3;
  const double rb = r.b * units::kBohr3;
  if (ra + rb < kVwnDensityThreshold) return 0.0;
  const double x = vwn_x(ra + rb);
  const SpinInterpolation s = spin_interpolation(ra, rb);
  const double z4 = s.zeta * s.zeta * s.zeta * s.zeta;
  const double ep = vwn_value(kParamagnetic, x);
  const double ef = vwn_value(kFerromagnetic, x);
  const double ac = vwn_value(kStiffness, x);
  const double eps = ep + ac * stiffness_weight(s).g * (1.0 - z4) + (ef - ep) * s.f() * z4;
  return eps * (r.a + r.b) * units::kRydberg;
}

VwnDerivatives derivatives(double x, const SpinInterpolation& s, bool second) {
  const double z = s.zeta;
  const double z3 = z * z * z;
  const double z4 = z3 * z;
  const StiffnessWeight g = stiffness_weight(s);
  const double f = s.f();
  const double df = s.df();
  // The ζ factors of the stiffness term, g (1 − ζ⁴), and of the polarisation
  // term, f ζ⁴, with their first and second derivatives.
  const double ws = g.g * (1.0 - z4);
  const double dws = g.dg * (1.0 - z4) - 4.0 * z3 * g.g;
  const double wp = f * z4;
  const double dwp = df * z4 + 4.0 * z3 * f;

  const double ep = vwn_value(kParamagnetic, x);
  const double ac = vwn_value(kStiffness, x);
  const double delta = vwn_value(kFerromagnetic, x) - ep;
  const double dp = vwn_derivative(kParamagnetic, x);
  const double dac = vwn_derivative(kStiffness, x);
  const double ddelta = vwn_derivative(kFerromagnetic, x) - dp;
  VwnDerivatives d;
  d.e = ep + ac * ws + delta * wp;
  d.ex = dp + dac * ws + ddelta * wp;
  d.ez = ac * dws + delta * dwp;
  if (second) {
    const double z2 = z * z;
    const double d2ws = g.d2g * (1.0 - z4) - 8.0 * z3 * g.dg - 12.0 * z2 * g.g;
    const double d2wp = s.d2f() * z4 + 8.0 * z3 * df + 12.0 * z2 * f;
    const double d2p = vwn_second_derivative(kParamagnetic, x);
    d.exx = d2p + vwn_second_derivative(kStiffness, x) * ws +
            (vwn_second_derivative(kFerromagnetic, x) - d2p) * wp;
    d.exz = dac * dws + ddelta * dwp;
    d.ezz = ac * d2ws + delta * d2wp;
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

}  // namespace norvik::dft::vwn5
