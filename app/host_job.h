// The host's view of a job: what it reads through SETUP_HF / SETUP_KS, the
// settings it keeps, and the report sections it writes.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "norvik/common.h"

namespace host {

// Fixed buffer lengths of the library's calling convention.
inline constexpr int kPathLength = NORVIK_FILE_NAME_LENGTH;
inline constexpr int kKeywordLength = NORVIK_KEYWORD_LENGTH;
inline constexpr int kNameLength = NORVIK_NAME_LENGTH;

// The most orbitals the host keeps per spin.
inline constexpr int kMaxOrbitals = 4096;

// The hartree in eV, for the host's own summary line.
inline constexpr double kHartreeEv = NORVIK_HARTREE_EV;

// A blank-padded buffer of n characters.
std::string padded(const std::string& text, int n);
// The text of a blank-padded buffer with its trailing blanks removed.
std::string trimmed(const std::string& buffer);

// One cube file of the job (--cube): what the user asked for ("homo-1"), and
// where the library writes it.
struct CubeFile {
  std::string what;
  std::string path;
};

struct Job {
  std::string molecule_file;                       // padded to kPathLength
  std::string parameter_file;                      // padded; blank = built-in settings
  std::string report_file;                         // padded
  std::string log_file;                            // padded
  std::string xyz_file = padded("", kPathLength);  // optimisation trajectory; blank = none
  // The files of a vibrational analysis (record 10), written under these names:
  // the modes as .xyz frames and in molden form, the infrared and Raman spectra.
  std::string modes_xyz_file, modes_molden_file, infrared_file, raman_file;
  // Excited states (theories TDA, RPA, TDKS*, KSTDA*): states per spin type
  // (--states) and the UV-vis spectrum file.
  int states = 10;
  std::string uv_file;
  // Where the Hessian appends "k of n displaced coordinates done" while it runs,
  // for the host's progress line (padded; blank = nowhere).
  std::string hessian_progress = padded("", kPathLength);

  bool kohn_sham = false;
  int grid_level = 0;        // Kohn-Sham grid (--grid): 0 standard, 1 dense
  bool stability = false;    // --stability: check the SCF solution and follow instabilities
  bool frozen_core = false;  // MP2 (--frozen-core): the atoms' cores frozen

  // Capacity of the atom arrays handed to the library, which refuses a file with
  // this many atoms or more: the host sets it from the atom records it counted
  // (one more than their number), so that any molecule fits.
  int max_atoms = 0;

  // Parameter records 2 and 4: memory limit [GB] and thread count (0 = all).
  double memory_gb = 4.0;
  int threads = 0;
  // SCF settings; Hartree-Fock jobs use indices 0 (atom) and 1 (molecule),
  // Kohn-Sham jobs 0 HF atom, 1 KS atom, 2 HF molecule, 3 KS molecule.
  std::array<int, 4> niter{64, 128, 0, 0};
  std::array<double, 4> damp{0.5, 0.5, 0.0, 0.0};
  std::array<double, 4> thr_ene{1.0e-6, 1.0e-7, 0.0, 0.0};
  std::array<double, 4> thr_rms{1.0e-6, 1.0e-7, 0.0, 0.0};
  double screening = 1.0e-10;                // parameter record 14
  double grad_converge = 1.0e-2;             // record 16 [eV/A]
  double step_length = 0.1;                  // record 18 [A]
  std::array<double, 2> record20{1.0, 0.0};  // record 20

  // Molecule-file settings.
  std::string theory = padded("", kKeywordLength);
  std::string basis = padded("", kNameLength);
  std::string molecule_name = padded("", kNameLength);
  int optimisation_cycles = 0;
  int optimiser = 0;
  int vibrations = 0;
  std::string start_density = padded("", kPathLength);
  std::string population = padded("", kNameLength);
  std::string bsse = padded("", kNameLength);

  int charge = 0, multiplicity = 1;
  int nalpha = 0, nbeta = 0, norb = 0, nshort = 0;
  int natom = 0, nghost = 0;
  // A counterpoise job (record 18): fragment A = atoms fragment_first to
  // fragment_last (record 16, 1-based), fragment B the others.
  int fragment_first = 0, fragment_last = 0;
  // Charge and multiplicity of fragment A, then of B (--fragments; multiplicity 0
  // the lowest); none: neutral fragments in their lowest multiplicity.
  std::optional<std::array<int, 4>> fragments;
  std::vector<int> zat, zel;
  std::vector<double> pos;  // (3, natom), angstrom

  // Pictures of the wave function (plots.h): the orbital tables of the report
  // (--orbitals: 0 none, 1 around the gap, 2 all) and the cube files (--cube)
  // on a box of this step [Å] and at most this many points.
  int orbital_tables = 0;
  std::vector<CubeFile> cubes;
  double cube_step = 0.1;
  long cube_max_points = 1000000;
};

// The built-in settings of a Kohn-Sham job, in place of the Hartree-Fock ones.
void use_kohn_sham_defaults(Job& job);

// Steps 1 and 2 of a job: setup through the library, then the report header
// and the run-log header.
void setup(Job& job);
void write_header(const Job& job);

}  // namespace host
