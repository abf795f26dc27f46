// Shared helpers of the functional tests: every component and combination as a
// host sees it (the exported routines at one point), and point records built
// from densities and gradient contractions.
#pragma once

#include <array>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "norvik.h"

namespace xc_test {

using Record = std::array<double, 8>;
using Values5 = std::array<double, 5>;
using Values3 = std::array<double, 3>;

// One functional at one point through its exported routines.  `kernel` is empty
// for the functionals without second derivatives.  For a combination, `energy`
// is the total e(1).
struct Functional {
  std::string name;
  std::function<double(const Record&)> energy;
  std::function<Values5(const Record&)> potential;
  std::function<Values3(const Record&)> kernel;
  bool gradient_corrected = false;
};

using ComponentE = void (*)(const double*, double*);
using CombinationE = void (*)(const double*, const double*, double*);

// The routine's output at a point as an array of N reals.
template <std::size_t N>
std::function<std::array<double, N>(const Record&)> values_of(ComponentE routine) {
  return [routine](const Record& r) {
    std::array<double, N> out{};
    routine(r.data(), out.data());
    return out;
  };
}
template <std::size_t N>
std::function<std::array<double, N>(const Record&)> values_of(CombinationE routine, double a) {
  return [routine, a](const Record& r) {
    std::array<double, N> out{};
    routine(r.data(), &a, out.data());
    return out;
  };
}

inline Functional component(std::string name, ComponentE e, ComponentE v, ComponentE f,
                            bool gradient_corrected) {
  const auto energy = values_of<1>(e);
  return {std::move(name), [energy](const Record& r) { return energy(r)[0]; }, values_of<5>(v),
          f != nullptr ? values_of<3>(f) : nullptr, gradient_corrected};
}

inline Functional combination(std::string name, double a, CombinationE e, CombinationE v,
                              CombinationE f, bool gradient_corrected) {
  const auto energy = values_of<3>(e, a);
  return {std::move(name), [energy](const Record& r) { return energy(r)[0]; }, values_of<5>(v, a),
          f != nullptr ? values_of<3>(f, a) : nullptr, gradient_corrected};
}

inline std::vector<Functional> components() {
  return {component("S", E_EXCH_S, V_EXCH_S, F_EXCH_S, false),
          component("B", E_EXCH_B, V_EXCH_B, nullptr, true),
          component("PF", E_EXCH_PF, V_EXCH_PF, nullptr, true),
          component("VWN3", E_CORR_VWN3, V_CORR_VWN3, F_CORR_VWN3, false),
          component("VWN5", E_CORR_VWN5, V_CORR_VWN5, F_CORR_VWN5, false),
          component("LYP", E_CORR_LYP, V_CORR_LYP, nullptr, true),
          component("OP", E_CORR_OP, V_CORR_OP, nullptr, true),
          component("PL", E_CORR_PL, V_CORR_PL, nullptr, false),
          component("GL", E_CORR_GL, V_CORR_GL, nullptr, false)};
}

// Every combination with the exact-exchange fraction a.
inline std::vector<Functional> combinations(double a) {
  return {combination("SVWN5", a, E_XC_SVWN5, V_XC_SVWN5, F_XC_SVWN5, false),
          combination("SVWN3", a, E_XC_SVWN3, V_XC_SVWN3, F_XC_SVWN3, false),
          combination("SPL", a, E_XC_SPL, V_XC_SPL, nullptr, false),
          combination("SGL", a, E_XC_SGL, V_XC_SGL, nullptr, false),
          combination("BLYP", a, E_XC_BLYP, V_XC_BLYP, nullptr, true),
          combination("BOP", a, E_XC_BOP, V_XC_BOP, nullptr, true),
          combination("PFOP", a, E_XC_PFOP, V_XC_PFOP, nullptr, true),
          combination("B3LYP5", a, E_XC_B3LYP5, V_XC_B3LYP5, nullptr, true),
          combination("B3LYP3", a, E_XC_B3LYP3, V_XC_B3LYP3, nullptr, true)};
}

// A record with the given densities [Å⁻³] and contractions γαα, γββ, γαβ
// [Å⁻⁸] (|γαβ| ≤ √(γαα γββ)).  ∇ρα lies along x, ∇ρβ in the xy plane.
inline Record record(double ra, double rb, double gaa, double gbb, double gab) {
  Record r{ra, rb, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0};
  const double na = std::sqrt(gaa);
  r[2] = na;
  if (na > 0.0) {
    r[5] = gab / na;
    r[6] = std::sqrt(std::fmax(gbb - r[5] * r[5], 0.0));
  } else {
    r[5] = std::sqrt(gbb);
  }
  return r;
}

}  // namespace xc_test
