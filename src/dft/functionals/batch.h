// Loops that carry one functional's per-point formula over a batch of points.
//
// Each loop adds weight × (the point's result) to the caller's outputs: a
// combination accumulates its components in place, and a single functional is
// evaluated by adding with weight 1 to zeros.  The formula is inlined into the
// loop (a lambda, no call through a pointer, no allocation) and the points are
// independent, so the loop is a candidate for vectorisation; the transcendental
// calls inside it vectorise where the toolchain provides vector math.
#pragma once

#include <cstddef>
#include <span>
#include <stdexcept>

#include "dft/functionals/point.h"

namespace norvik::dft::batch {

// Points of a batch whose output holds `per_point` reals per point.  A size
// mismatch is a programming error of the caller.
inline std::size_t point_count(std::span<const double> records, std::size_t output_size,
                               std::size_t per_point) {
  const std::size_t n = records.size() / kPointRecord;
  if (records.size() != n * kPointRecord || output_size != n * per_point) {
    throw std::invalid_argument("functional batch: point records and outputs differ in size");
  }
  return n;
}

// e(i) += weight · formula(record i), formula(const double* record) → double.
template <class Formula>
void add_energies(std::span<const double> records, double weight, std::span<double> energies,
                  Formula formula) {
  const std::size_t n = point_count(records, energies.size(), 1);
  const double* r = records.data();
  double* e = energies.data();
#pragma omp simd
  for (std::size_t i = 0; i < n; ++i) e[i] += weight * formula(r + kPointRecord * i);
}

// v(:, i) += weight · formula(record i), formula → Potential.
template <class Formula>
void add_potentials(std::span<const double> records, double weight, std::span<double> potentials,
                    Formula formula) {
  const std::size_t n = point_count(records, potentials.size(), kPotentialRecord);
  const double* r = records.data();
  double* v = potentials.data();
#pragma omp simd
  for (std::size_t i = 0; i < n; ++i) {
    const Potential p = formula(r + kPointRecord * i);
    double* out = v + kPotentialRecord * i;
    out[0] += weight * p.rho_a;
    out[1] += weight * p.rho_b;
    out[2] += weight * p.gamma_aa;
    out[3] += weight * p.gamma_bb;
    out[4] += weight * p.gamma_ab;
  }
}

// f(:, i) += weight · formula(record i), formula → Kernel.
template <class Formula>
void add_kernels(std::span<const double> records, double weight, std::span<double> kernels,
                 Formula formula) {
  const std::size_t n = point_count(records, kernels.size(), kKernelRecord);
  const double* r = records.data();
  double* f = kernels.data();
#pragma omp simd
  for (std::size_t i = 0; i < n; ++i) {
    const Kernel k = formula(r + kPointRecord * i);
    double* out = f + kKernelRecord * i;
    out[0] += weight * k.aa;
    out[1] += weight * k.bb;
    out[2] += weight * k.ab;
  }
}

}  // namespace norvik::dft::batch
