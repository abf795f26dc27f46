// Job setup: the molecule file and the SCF-parameter file turned into the
// numbers that every later call receives from the host.
//
// Both files are read record by record in the manner of a sequential Fortran
// unit: a comment record is taken whole and ignored, a value record is one
// list-directed read.  A value that a record leaves out (a null value) keeps
// what the caller put there, which is how a host supplies defaults.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "setup/elements.h"

namespace norvik::setup {

// Fixed text lengths of the settings.
inline constexpr int kKeywordLength = 10;
inline constexpr int kNameLength = 20;
inline constexpr int kPathLength = 120;

// Records 2 … 22 of the molecule file.  Texts are blank-padded to their lengths.
struct MoleculeSettings {
  std::string theory = std::string(kKeywordLength, ' ');  // record 2
  std::string text4 = std::string(kNameLength, ' ');      // record 4
  std::string text6 = std::string(kNameLength, ' ');      // record 6, with int6
  int int6 = 0;
  int int8 = 0;                                        // record 8
  int int10 = 0;                                       // record 10
  std::string text12 = std::string(kPathLength, ' ');  // record 12
  std::string text14 = std::string(kNameLength, ' ');  // record 14
  int ghost_first = 0;                                 // record 16 (a counterpoise job:
  int ghost_last = 0;                                  // fragment A, no ghost atoms)
  std::string text18 = std::string(kNameLength, ' ');  // record 18
  int charge = 0;                                      // record 20
  int multiplicity = 1;                                // record 22
};

struct Atom {
  int nuclear_charge = 0;            // 0 for a ghost atom
  int element = 0;                   // Z; a ghost keeps it, so it carries basis functions
  std::array<double, 3> position{};  // ångström
};

struct Molecule {
  MoleculeSettings settings;
  std::vector<Atom> atoms;
  int nghost = 0;
  ElectronCount electrons;
};

// Reads and checks the molecule file.  `max_atoms` is the capacity of the host's
// atom arrays; the file must hold fewer atom records than that.  `settings`
// carries the caller's values into the read (null values keep them).
Molecule read_molecule(std::string_view path, int max_atoms, MoleculeSettings settings);

// SCF settings of a Hartree–Fock job: index 0 the free atoms, 1 the molecule.
struct HfParameters {
  double value2 = 0.0;  // record 2
  int value4 = 0;       // record 4
  std::array<int, 2> niter{};
  std::array<double, 2> damp{};
  std::array<double, 2> thr_ene{};
  std::array<double, 2> thr_rms{};
  std::array<double, 4> value14_20{};  // records 14, 16, 18, 20
};

// SCF settings of a Kohn–Sham job: index 0 HF-stage atom, 1 KS-stage atom,
// 2 HF-stage molecule, 3 KS-stage molecule.
struct KsParameters {
  double value2 = 0.0;
  int value4 = 0;
  std::array<int, 4> niter{};
  std::array<double, 4> damp{};
  std::array<double, 4> thr_ene{};
  std::array<double, 4> thr_rms{};
  std::array<double, 3> value14_18{};  // records 14, 16, 18
  std::array<double, 2> value20{};     // record 20
};

// Reads an SCF-parameter file over the given values.
void read_parameters(std::string_view path, HfParameters& parameters);
void read_parameters(std::string_view path, KsParameters& parameters);

// Orbitals per spin that the host keeps (alpha electrons + 2, at most
// `max_orbitals`) and how many it falls short by.
struct OrbitalCount {
  int kept = 0;
  int shortfall = 0;
};
OrbitalCount orbitals_kept(int alpha, int max_orbitals);

// True for the theory keywords that run the Hartree–Fock family.
bool is_hartree_fock_theory(std::string_view theory);

}  // namespace norvik::setup
