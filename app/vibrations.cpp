#include "vibrations.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <numbers>
#include <string>

#include "hartree_fock.h"
#include "molden.h"
#include "norvik.h"

namespace host {

namespace {

// The displacement of the differences [A] and their stencil: two-point central
// differences at 0.0015 A leave under 0.04 cm-1 in the Hartree-Fock wavenumbers
// of the reference molecules (docs/vibrations.md).
constexpr double kStep = 0.0015;
constexpr norvik_int kPoints = 2;

// The displaced points converge further than a single point: the differences
// divide the gradient's noise by 2h.
constexpr double kDisplacedEnergy = 1.0e-10;  // [eV]
constexpr double kDisplacedRms = 1.0e-9;

// The broadened spectra: Lorentzian lines of 10 cm-1 full width on a 1 cm-1 grid
// from 0 to 4000 cm-1 (further when a mode lies above 3800 cm-1).
constexpr double kLineWidth = 10.0;

void stamp(const char* text) {
  TIMESTAMP(padded(text, 40).data());
}

void report_lines(const Job& job, const std::vector<std::string>& lines) {
  std::ofstream out(trimmed(job.report_file), std::ios::app | std::ios::binary);
  for (const auto& line : lines) out << line << '\n';
}

std::string symbol_of(int z) {
  char s[2];
  const norvik_int zz = z;
  CHG2SMB(s, &zz);
  return trimmed(std::string(s, 2));
}

// The principal moments of inertia [eV A^2] (masses as rest energies) about the
// centre of mass, ascending.
void principal_moments(const Job& job, const std::vector<double>& mass, double* moments) {
  double total = 0.0, centre[3] = {};
  for (int a = 0; a < job.natom; ++a) {
    total += mass[a];
    for (int k = 0; k < 3; ++k) centre[k] += mass[a] * job.pos[3 * a + k];
  }
  for (double& c : centre) c /= total;
  double inertia[9] = {};
  for (int a = 0; a < job.natom; ++a) {
    double r[3];
    for (int k = 0; k < 3; ++k) r[k] = job.pos[3 * a + k] - centre[k];
    const double r2 = r[0] * r[0] + r[1] * r[1] + r[2] * r[2];
    for (int i = 0; i < 3; ++i)
      for (int j = 0; j < 3; ++j)
        inertia[i + 3 * j] += mass[a] * ((i == j ? r2 : 0.0) - r[i] * r[j]);
  }
  double vectors[9];
  SYMMETRY_NUMBER_MP_jacobi(inertia, moments, vectors);
}

// A displacement as written: no "-0.00000000".
double shown(double v) {
  return std::abs(v) < 5e-9 ? 0.0 : v;
}

void write_modes(const Job& job, std::size_t first, const std::vector<double>& wavenumbers,
                 const std::vector<double>& modes, const std::vector<double>& infrared) {
  const std::size_t n3 = 3 * static_cast<std::size_t>(job.natom);
  // One .xyz frame per mode, each atom with its displacement vector (the
  // extended form that Jmol and other viewers animate).
  std::ofstream xyz(job.modes_xyz_file, std::ios::binary);
  char line[160];
  for (std::size_t k = first; k < n3; ++k) {
    xyz << job.natom << '\n';
    std::snprintf(line, sizeof line, "mode %zu: %.2f%s cm-1, IR %.4f km/mol", k - first + 1,
                  std::abs(wavenumbers[k]), wavenumbers[k] < 0 ? "i" : "", infrared[k]);
    xyz << line << '\n';
    for (int a = 0; a < job.natom; ++a) {
      std::snprintf(line, sizeof line, "%-2s %14.8f %14.8f %14.8f %12.8f %12.8f %12.8f",
                    symbol_of(job.zel[a]).c_str(), shown(job.pos[3 * a]), shown(job.pos[3 * a + 1]),
                    shown(job.pos[3 * a + 2]), shown(modes[3 * a + n3 * k]),
                    shown(modes[3 * a + 1 + n3 * k]), shown(modes[3 * a + 2 + n3 * k]));
      xyz << line << '\n';
    }
  }
  // The molden form: the same modes through the one molden writer.
  Molden molden;
  molden.atoms = molden_atoms(job);
  MoldenModes m;
  for (std::size_t k = first; k < n3; ++k) {
    m.wavenumbers.push_back(wavenumbers[k]);
    m.intensities.push_back(infrared[k]);
    m.displacements.emplace_back(modes.begin() + static_cast<std::ptrdiff_t>(n3 * k),
                                 modes.begin() + static_cast<std::ptrdiff_t>(n3 * (k + 1)));
  }
  molden.modes = std::move(m);
  write_molden(job.modes_molden_file, molden);
}

void write_spectrum(const std::vector<double>& wavenumbers, const std::vector<double>& lines,
                    std::size_t first, const char* unit, const std::string& file) {
  const norvik_int nline = static_cast<norvik_int>(wavenumbers.size() - first);
  double high = 4000.0;
  for (std::size_t k = first; k < wavenumbers.size(); ++k)
    if (wavenumbers[k] > 3800.0)
      high = std::max(high, 100.0 * std::ceil((wavenumbers[k] + 200.0) / 100.0));
  const double low = 0.0, width = kLineWidth;
  const norvik_int npoint = static_cast<norvik_int>(high - low) + 1;
  std::vector<double> spectrum(static_cast<std::size_t>(npoint));
  SPECTRUM(&nline, wavenumbers.data() + first, lines.data() + first, &width, &low, &high, &npoint,
           spectrum.data());
  WRITE_SPECTRUM(&npoint, &low, &high, spectrum.data(), padded(unit, kNameLength).data(),
                 padded(file, kPathLength).data());
}

}  // namespace

VibrationResult run_vibrations(const Job& job, norvik_int n, const std::vector<double>& rho,
                               const std::vector<double>& orbitals, double emol, bool optimised) {
  VibrationResult out;
  const char* report = job.report_file.data();
  const std::size_t n3 = 3 * static_cast<std::size_t>(job.natom);

  // The gradient where the analysis is made: at an input geometry that is not
  // a stationary point the harmonic analysis is only a curvature there.
  std::vector<double> grad(n3);
  const norvik_int level = job.grid_level;
  if (job.kohn_sham) {
    GRADEMOL_KS(job.theory.data(), job.basis.data(), &job.natom, job.zat.data(), job.zel.data(),
                job.pos.data(), &job.nalpha, &job.nbeta, &n, rho.data(), orbitals.data(),
                &kGridRadius, &level, grad.data());
  } else {
    GRADEMOL_HF(job.basis.data(), &job.natom, job.zat.data(), job.zel.data(), job.pos.data(),
                &job.nalpha, &job.nbeta, &n, rho.data(), orbitals.data(), grad.data());
  }
  for (double g : grad) out.largest_gradient = std::max(out.largest_gradient, std::abs(g));
  if (!optimised && out.largest_gradient > job.grad_converge) {
    char line[200];
    std::snprintf(line, sizeof line,
                  "#  Caution: the largest gradient component at this geometry is %.2E eV/A, "
                  "above %.2E;",
                  out.largest_gradient, job.grad_converge);
    report_lines(job, {"#", line,
                       "#  the harmonic analysis below is the curvature at a point that is not a "
                       "minimum (optimise first)."});
  }

  // The Hessian and the vibrational analysis, in one library call that tells
  // the host's progress line how far it is.
  const std::size_t pair = job.kohn_sham ? 2 : 1;
  const norvik_int niter[2] = {job.niter[pair == 2 ? 2 : 1], job.niter[pair == 2 ? 3 : 1]};
  const double damp[2] = {job.damp[pair == 2 ? 2 : 1], job.damp[pair == 2 ? 3 : 1]};
  double thr_ene[2] = {job.thr_ene[pair == 2 ? 2 : 1], job.thr_ene[pair == 2 ? 3 : 1]};
  double thr_rms[2] = {job.thr_rms[pair == 2 ? 2 : 1], job.thr_rms[pair == 2 ? 3 : 1]};
  for (double& t : thr_ene) t = t > 0.0 ? std::min(t, kDisplacedEnergy) : kDisplacedEnergy;
  for (double& t : thr_rms) t = t > 0.0 ? std::min(t, kDisplacedRms) : kDisplacedRms;
  const double thr_orth = kOrthogonalityThreshold, step = kStep;
  const norvik_int npoint = kPoints, raman = job.vibrations == 2 ? 1 : 0;
  const double scale = job.kohn_sham ? 1.0 : job.record20[0];
  std::vector<double> hessian(n3 * n3), dipder(3 * n3), polder(9 * n3), eigenvalues(n3),
      wavenumbers(n3), modes(n3 * n3), infrared(n3), activity(n3), depol(n3);
  norvik_int linear = 0;
  HESSIAN_MOLE_PROGRESS(job.theory.data(), job.basis.data(), &job.natom, job.zat.data(),
                        job.zel.data(), job.pos.data(), &job.nalpha, &job.nbeta, niter, damp,
                        thr_ene, thr_rms, &job.memory_gb, &job.screening, &thr_orth, &kGridRadius,
                        &level, &n, rho.data(), &step, &npoint, &raman, hessian.data(),
                        dipder.data(), polder.data(), report, &scale, eigenvalues.data(),
                        wavenumbers.data(), modes.data(), infrared.data(), activity.data(),
                        depol.data(), &linear, job.hessian_progress.data());
  stamp("Vibrations ok.");
  // The static polarisability at the analysed geometry (its derivatives gave
  // the Raman activities).
  double alpha[9];
  POLARIZE(job.theory.data(), job.basis.data(), &job.natom, job.zat.data(), job.zel.data(),
           job.pos.data(), &job.nalpha, &job.nbeta, &n, rho.data(), orbitals.data(), &job.memory_gb,
           &job.screening, &thr_orth, &kGridRadius, &level, alpha);
  WRITE_POLARIZ(alpha, report);
  out.raman = raman == 1;
  const std::size_t first = std::min<std::size_t>(linear == 1 ? 5 : 6, n3);
  out.modes = static_cast<int>(n3 - first);
  for (std::size_t k = first; k < n3; ++k) out.imaginary += wavenumbers[k] < 0 ? 1 : 0;

  // Thermochemistry of the ideal gas at 298.15 K and 101.325 kPa.
  std::vector<double> mass(static_cast<std::size_t>(job.natom));
  double total = 0.0;
  for (int a = 0; a < job.natom; ++a) {
    mass[a] = ATOMMASS(&job.zel[a]) * NORVIK_ATOMIC_MASS_UNIT_EV;
    total += mass[a];
  }
  double moments[3];
  principal_moments(job, mass, moments);
  std::string labels;
  for (int a = 0; a < job.natom; ++a) labels += padded(symbol_of(job.zel[a]), 2);
  // σ from the positions in units of 0.01 A: atoms then match within 5e-4 A
  // (in angstrom the match within 0.05 A passes rotations about axes near the
  // true ones as distinct ones, and adamantane would get 216 instead of 12).
  std::vector<double> hundredths(job.pos);
  for (double& c : hundredths) c *= 100.0;
  norvik_int sigma = 1;
  SYMMETRY_NUMBER_MP_calculate_sigma(&job.natom, labels.data(), hundredths.data(), &sigma, 2);
  double entropy[3], energy[4], capacity[4];
  ENTROPY(&linear, &sigma, &job.natom, &total, moments, eigenvalues.data(), &scale, entropy);
  THERMALENERGY(&linear, &job.natom, eigenvalues.data(), &scale, energy, capacity);
  WRITE_INERTIA(moments, report);
  WRITE_INERTIAL(&linear, &sigma, report);
  WRITE_VIBTEMP(&linear, &job.natom, eigenvalues.data(), &scale, report);
  WRITE_ENERGY_ZPE(&emol, &linear, &job.natom, eigenvalues.data(), &scale, report);
  WRITE_THERMAL(&linear, &job.natom, eigenvalues.data(), &scale, &emol, &total, entropy, energy,
                capacity, report);
  for (std::size_t k = first; k < n3; ++k)
    if (wavenumbers[k] > 0) out.zero_point += 0.5 * wavenumbers[k];
  // ħc·2π in eV cm: a wavenumber of 1 cm-1 is 1.239842e-4 eV.
  out.zero_point *= 2.0 * std::numbers::pi * NORVIK_HBARC_EV_ANGSTROM * 1e-8;
  const double kt = NORVIK_KT298_EV;
  const double temperature = 298.15;
  out.gibbs = emol + out.zero_point + energy[0] + energy[1] + energy[2] + kt -
              temperature * (entropy[0] + entropy[1] + entropy[2]);

  for (std::size_t k = first; k < n3; ++k) {
    out.wavenumbers.push_back(wavenumbers[k]);
    out.infrared.push_back(infrared[k]);
    if (out.raman) {
      out.raman_activities.push_back(activity[k]);
      out.depolarization.push_back(depol[k]);
    }
    out.displacements.emplace_back(modes.begin() + static_cast<std::ptrdiff_t>(n3 * k),
                                   modes.begin() + static_cast<std::ptrdiff_t>(n3 * (k + 1)));
  }
  std::copy(alpha, alpha + 9, out.polarizability);
  std::copy(energy, energy + 4, out.thermal);
  std::copy(entropy, entropy + 3, out.entropy);
  out.symmetry_number = sigma;
  write_modes(job, first, wavenumbers, modes, infrared);
  write_spectrum(wavenumbers, infrared, first, "km/mol", job.infrared_file);
  if (out.raman) write_spectrum(wavenumbers, activity, first, "A^4/amu", job.raman_file);
  return out;
}

}  // namespace host
