#include "scf/hf_driver.h"

namespace norvik::scf {

namespace {

// Hartree–Fock takes the whole of the exact exchange.
constexpr double kExactExchange = 1.0;

}  // namespace

ScfResult run_scf(const ScfSystem& system, const CycleSettings& settings, const ScfArrays& arrays,
                  const OrbitalRule& rule, const CycleObserver& observer) {
  HartreeFockBuilder builder(system.context, system.build, kExactExchange);
  return run_cycles(system, builder, rule, settings, arrays, observer);
}

ScfResult initialise(const ScfSystem& system, const StartSettings& settings,
                     const ScfArrays& arrays, const OrbitalRule& rule) {
  HartreeFockBuilder builder(system.context, system.build, kExactExchange);
  return initialise(system, builder, rule, settings, arrays);
}

}  // namespace norvik::scf
