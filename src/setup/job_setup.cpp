#include "setup/job_setup.h"

#include <algorithm>
#include <fstream>

#include "common/error.h"
#include "common/fortran_format.h"
#include "common/list_input.h"
#include "common/text_file.h"

namespace norvik::setup {

namespace {

using fortran::ListReader;
using fortran::ReadStatus;
using fortran::Target;
using fortran::TextTarget;
using fortran::Value;

[[noreturn]] void not_found(std::string_view path) {
  const std::string text = std::string(io::trim_right(path)) + " is not found.";
  throw Error(fortran::list_directed({std::string_view(text)}));
}

// An input file on the reading unit: comment records are skipped whole, value
// records are list-directed reads; a read that fails ends the job.
class InputUnit {
 public:
  explicit InputUnit(std::string_view path)
      : name_(io::trim_right(path)), stream_(name_, std::ios::binary) {
    if (!stream_) not_found(path);
  }

  void comment() {
    std::string ignored;
    check(reader_.read_record(ignored, kPathLength));
  }
  void values(std::initializer_list<Target> targets) { check(reader_.read(targets)); }
  // A read that may meet the end of the file; returns false there.
  bool values_or_end(std::initializer_list<Target> targets) {
    const ReadStatus status = reader_.read(targets);
    if (status == ReadStatus::end_of_file) return false;
    check(status);
    return true;
  }

 private:
  void check(ReadStatus status) const {
    if (status == ReadStatus::ok) return;
    const std::string what = status == ReadStatus::end_of_file ? "End of file" : "Bad value";
    const std::string text =
        what + " in record " + std::to_string(reader_.records_read()) + " of " + name_ + ".";
    throw Error(fortran::list_directed({std::string_view(text)}));
  }

  std::string name_;
  std::ifstream stream_;
  ListReader reader_{stream_};
};

TextTarget text(std::string& s, int length) {
  s.resize(static_cast<std::size_t>(length), ' ');
  return TextTarget{&s, length};
}

}  // namespace

Molecule read_molecule(std::string_view path, int max_atoms, MoleculeSettings settings) {
  if (max_atoms < 1) not_found(path);
  InputUnit unit(path);
  Molecule molecule;
  MoleculeSettings& s = settings;
  unit.comment();
  unit.values({text(s.theory, kKeywordLength)});
  unit.comment();
  unit.values({text(s.text4, kNameLength)});
  unit.comment();
  unit.values({text(s.text6, kNameLength), &s.int6});
  unit.comment();
  unit.values({&s.int8});
  unit.comment();
  unit.values({&s.int10});
  unit.comment();
  unit.values({text(s.text12, kPathLength)});
  unit.comment();
  unit.values({text(s.text14, kNameLength)});
  unit.comment();
  unit.values({&s.ghost_first, &s.ghost_last});
  unit.comment();
  unit.values({text(s.text18, kNameLength)});
  unit.comment();
  unit.values({&s.charge});
  unit.comment();
  unit.values({&s.multiplicity});
  unit.comment();

  // The atom list runs to the end of the file; it must end before the host's
  // arrays are full, a limit kept strict so that a file is never cut silently.
  for (;;) {
    if (static_cast<int>(molecule.atoms.size()) == max_atoms) not_found(path);
    std::string symbol = "  ";
    Atom atom;
    if (!unit.values_or_end(
            {text(symbol, 2), &atom.position[0], &atom.position[1], &atom.position[2]}))
      break;
    atom.element = symbol_to_z(symbol);
    atom.nuclear_charge = atom.element;
    molecule.atoms.push_back(atom);
  }

  const int natom = static_cast<int>(molecule.atoms.size());
  if (s.ghost_last < s.ghost_first || s.ghost_last > natom) {
    throw Error(fortran::list_directed({"Invalid ghost atoms."}));
  }
  // A counterpoise job (record 18) reads record 16 as its fragment A: the
  // dimer itself has no ghost atoms, the fragment runs make their own.
  const bool counterpoise = io::trim_right(s.text18) == "counterpoise";
  if (s.ghost_first >= 1 && !counterpoise) {
    for (int i = s.ghost_first; i <= s.ghost_last; ++i) molecule.atoms[i - 1].nuclear_charge = 0;
    molecule.nghost = s.ghost_last - s.ghost_first + 1;
  }

  int zsum = 0;
  for (const auto& atom : molecule.atoms) zsum += atom.nuclear_charge;
  molecule.electrons = count_electrons(zsum, s.charge, s.multiplicity);
  if (natom == 0 || molecule.electrons.total() == 0) {
    throw Error(fortran::list_directed({"No atom or no electron."}));
  }
  molecule.settings = std::move(settings);
  return molecule;
}

void read_parameters(std::string_view path, HfParameters& p) {
  InputUnit unit(path);
  unit.comment();
  unit.values({&p.value2});
  unit.comment();
  unit.values({&p.value4});
  unit.comment();
  unit.values({&p.niter[0], &p.niter[1]});
  unit.comment();
  unit.values({&p.damp[0], &p.damp[1]});
  unit.comment();
  unit.values({&p.thr_ene[0], &p.thr_ene[1]});
  unit.comment();
  unit.values({&p.thr_rms[0], &p.thr_rms[1]});
  for (double& value : p.value14_20) {
    unit.comment();
    unit.values({&value});
  }
}

void read_parameters(std::string_view path, KsParameters& p) {
  InputUnit unit(path);
  unit.comment();
  unit.values({&p.value2});
  unit.comment();
  unit.values({&p.value4});
  unit.comment();
  unit.values({&p.niter[0], &p.niter[1], &p.niter[2], &p.niter[3]});
  unit.comment();
  unit.values({&p.damp[0], &p.damp[1], &p.damp[2], &p.damp[3]});
  unit.comment();
  unit.values({&p.thr_ene[0], &p.thr_ene[1], &p.thr_ene[2], &p.thr_ene[3]});
  unit.comment();
  unit.values({&p.thr_rms[0], &p.thr_rms[1], &p.thr_rms[2], &p.thr_rms[3]});
  for (double& value : p.value14_18) {
    unit.comment();
    unit.values({&value});
  }
  unit.comment();
  unit.values({&p.value20[0], &p.value20[1]});
}

OrbitalCount orbitals_kept(int alpha, int max_orbitals) {
  OrbitalCount count;
  count.kept = std::min(alpha + 2, max_orbitals);
  count.shortfall = std::max(alpha + 2 - max_orbitals, 0);
  return count;
}

bool is_hartree_fock_theory(std::string_view theory) {
  const std::string_view t = io::trim_right(theory);
  return t == "HF" || t == "MP2" || t == "RPA" || t == "TDA";
}

}  // namespace norvik::setup
