// Molden files: the one writer behind PREFIX.molden (geometry, basis, orbitals
// and, after a vibrational analysis, the normal modes) and PREFIX.modes.molden
// (the modes alone).  The basis goes out in Cartesian form (xx yy zz xy xz yz,
// every contracted Cartesian function normalised), whatever the library's
// shells are: each of the library's functions is a combination of Cartesian
// terms, so its orbital coefficients are carried over exactly (docs/molden.md).
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "host_job.h"
#include "vibrations.h"

namespace host {

struct MoldenAtom {
  std::string symbol;
  int z = 0;
  double position[3] = {};  // [Å]
};

// A shell of the Cartesian basis: one angular momentum, on one atom (0-based).
struct MoldenShell {
  int atom = 0;
  int l = 0;
  std::vector<double> exponents;     // [1/bohr²]
  std::vector<double> coefficients;  // for normalised primitives
};

struct MoldenOrbital {
  double energy = 0.0;  // [hartree]
  bool beta = false;
  double occupation = 0.0;
  std::vector<double> coefficients;  // over the Cartesian functions of the shells
};

struct MoldenModes {
  std::vector<double> wavenumbers;  // [cm⁻¹], imaginary negative
  std::vector<double> intensities;  // infrared [km/mol]
  // One displacement vector (3·natom) per wavenumber.
  std::vector<std::vector<double>> displacements;
};

struct Molden {
  std::string title;
  std::vector<MoldenAtom> atoms;
  std::vector<MoldenShell> shells;      // with the orbitals: [Title], [Atoms], [GTO], [MO]
  std::vector<MoldenOrbital> orbitals;  // none: the modes alone
  std::optional<MoldenModes> modes;     // [FREQ], [FR-COORD], [FR-NORM-COORD], [INT]
};

// The Cartesian components of angular momentum l in molden's order, as
// exponents (a, b, c) of x^a y^b z^c.
std::vector<std::array<int, 3>> molden_components(int l);

// The job's basis as Cartesian shells, and each library function as a sum of
// normalised Cartesian functions: library function f = Σ weight·cartesian[index]
// over terms[f] (one to three terms each).
struct CartesianTerm {
  int index = 0;
  double weight = 0.0;
};
struct CartesianBasis {
  std::vector<MoldenShell> shells;
  int ncart = 0, nbasis = 0;
  std::vector<std::vector<CartesianTerm>> terms;
};
CartesianBasis cartesian_basis(const Job& job);

// The job's atoms (symbol, number, position).
std::vector<MoldenAtom> molden_atoms(const Job& job);

// The molden file of the job's final point: its orbitals (n, n+1, 2) with
// levels in eV, northo of them kept, alpha only when restricted.
// With a vibrational analysis the modes join them.
Molden molden_of_point(const Job& job, int n, int northo, bool restricted,
                       const std::vector<double>& orbitals,
                       const std::optional<VibrationResult>& vibrations);

void write_molden(const std::string& path, const Molden& molden);

}  // namespace host
