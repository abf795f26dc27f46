// The one-electron matrices of a molecule over its contracted basis: overlap S,
// kinetic energy T, nuclear attraction V = -sum_C Z_C <a|1/r_C|b> and the
// position (dipole) integrals <a|x|b>, <a|y|b>, <a|z|b> about the origin.
//
// A basis function (L, M) of a shell with exponents alpha_k and contraction
// coefficients d_k is
//   sum_k (d_k / N(alpha_k, L)) sum_t c_t x^l_t y^m_t z^n_t exp(-alpha_k r^2),
//   N(alpha, L)^2 = 0.25^L sqrt(pi^3 / (8 alpha^(2L+3))),
// so each primitive x^L-type component is normalised and the published
// contraction coefficients apply as they stand.
#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "basis/basis_set.h"
#include "integrals/one/primitives.h"

namespace norvik::integrals::one {

// N(alpha, L): the norm of the unnormalised primitive x^L exp(-alpha r^2).
double primitive_norm(double alpha, int L);

// A column-major matrix over the caller's memory (leading dimension ld >= nbasis);
// a null one is not built.
struct MatrixRef {
  double* data = nullptr;
  std::ptrdiff_t ld = 0;

  double& operator()(std::ptrdiff_t i, std::ptrdiff_t j) const { return data[i + j * ld]; }
  explicit operator bool() const { return data != nullptr; }
};

// Where the matrices go; each one is nbasis x nbasis and comes out symmetric.
struct OneElectronMatrices {
  MatrixRef overlap;
  MatrixRef kinetic;
  MatrixRef potential;
  std::array<MatrixRef, 3> position;  // <a|x|b>, <a|y|b>, <a|z|b>
};

// Factors applied on the way out: the core works in hartree and bohr; the host
// wants electronvolts and angstrom (energy = hartree in eV, length = bohr in
// angstrom).  Positions and exponents always come in bohr.
struct OutputUnits {
  double energy = 1.0;
  double length = 1.0;
};

// Builds the requested matrices.  `positions` (bohr) and `charges` have one entry
// per atom; a shell sits on positions[shell.atom]; every atom with a nonzero
// charge attracts (a ghost atom has charge 0 and carries only its functions).
// Runs a parallel loop over shell pairs; every matrix element is made by one
// iteration, so the result does not depend on the number of threads.
void build_one_electron_matrices(const basis::BasisSet& basis, std::span<const Vec3> positions,
                                 std::span<const double> charges, const OneElectronMatrices& out,
                                 OutputUnits units = {});

}  // namespace norvik::integrals::one
