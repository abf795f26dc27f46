// Step 5 of a job that asks for it (record 10 of the molecule file): the
// harmonic vibrations at the converged point (after an optimisation, or at the
// input geometry with a caution when its gradient is not small), their
// infrared and Raman intensities, the thermochemistry at 298.15 K, and the
// files that viewers and plotting programs read: the normal modes as a
// multi-frame .xyz file with displacement vectors and as a molden file, and the
// broadened spectra as two-column tables.
#pragma once

#include <string>
#include <vector>

#include "host_job.h"
#include "norvik/export.h"

namespace host {

struct VibrationResult {
  int modes = 0, imaginary = 0;
  double zero_point = 0.0;        // [eV]
  double gibbs = 0.0;             // G at 298.15 K [eV]
  double largest_gradient = 0.0;  // at the analysed geometry [eV/A]
  bool raman = false;
  // For the result files, one entry per vibration (the 3N-6 or 3N-5 modes,
  // ascending): wavenumbers [cm-1, imaginary negative], infrared intensities
  // [km/mol], Raman activities [A^4/amu] and depolarisation ratios (record 10 =
  // 2), and the Cartesian displacements (3·natom each, as the library gives them).
  std::vector<double> wavenumbers, infrared, raman_activities, depolarization;
  std::vector<std::vector<double>> displacements;
  double polarizability[9] = {};  // [A^3]
  // Thermochemistry at 298.15 K and 101.325 kPa: thermal energies [eV]
  // (translation, rotation, vibration without the zero-point energy, kT),
  // entropies [eV/K] (translation, rotation, vibration), the symmetry number.
  double thermal[4] = {}, entropy[3] = {};
  int symmetry_number = 1;
};

// The analysis of the converged point rho (n, n, 2) with energy emol [eV], its
// files named by the job.
VibrationResult run_vibrations(const Job& job, norvik_int n, const std::vector<double>& rho,
                               const std::vector<double>& orbitals, double emol, bool optimised);

}  // namespace host
