// The reference tables of the property tests (tests/references/data/*.tsv): their
// rows as tab-separated fields, a row's atom list "O 0 0 0.1173;H 0 0.7572 -0.4692"
// in Å, and a tightly converged Hartree–Fock point of such a molecule through
// the one point path.
#pragma once

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "basis/library.h"
#include "scf/single_point.h"
#include "setup/elements.h"

namespace norvik::properties {

// The rows of a table under tests/references/data/, each split at its tabs;
// comment lines ("#"), blank lines and the header ("name\t...") left out.
inline std::vector<std::vector<std::string>> reference_rows(const std::string& table) {
  std::ifstream in(std::string(NORVIK_SOURCE_DIR) + "/tests/references/data/" + table);
  std::vector<std::vector<std::string>> rows;
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line[0] == '#' || line.rfind("name\t", 0) == 0) continue;
    std::vector<std::string> f;
    std::istringstream fields(line);
    for (std::string x; std::getline(fields, x, '\t');) f.push_back(x);
    rows.push_back(f);
  }
  return rows;
}

struct ReferenceAtoms {
  std::vector<int> z;
  std::vector<double> pos;  // (3, natom) [Å]
  int electrons = 0;        // of the neutral molecule
};

// The atoms of a list "symbol x y z;symbol x y z;...".
inline ReferenceAtoms reference_atoms(const std::string& list) {
  ReferenceAtoms atoms;
  std::istringstream in(list);
  for (std::string atom; std::getline(in, atom, ';');) {
    std::istringstream a(atom);
    std::string symbol;
    double x = 0, y = 0, w = 0;
    a >> symbol >> x >> y >> w;
    if (symbol.size() == 1) symbol += ' ';
    atoms.z.push_back(setup::symbol_to_z(symbol));
    atoms.pos.insert(atoms.pos.end(), {x, y, w});
    atoms.electrons += atoms.z.back();
  }
  return atoms;
}

// A neutral molecule's Hartree–Fock point converged far below the references'
// digits: its basis, density pair, orbitals and overlap.
struct ReferencePoint {
  ReferenceAtoms atoms;
  basis::BasisSet basis;
  std::vector<double> rho, orbitals, s;
};

inline ReferencePoint reference_point(const std::string& basis_name, const std::string& list,
                                      int multiplicity) {
  ReferencePoint p;
  p.atoms = reference_atoms(list);
  p.basis = basis::make_basis(basis_name, p.atoms.z);
  scf::JobControl job;
  job.basis = basis_name;
  const scf::ScfControl control{300, 0.5, 1e-11, 1e-10};
  scf::PointSettings settings;
  const int electrons = p.atoms.electrons;
  settings.counts = {(electrons + multiplicity - 1) / 2, (electrons - multiplicity + 1) / 2};
  const auto n = static_cast<std::size_t>(p.basis.nbasis());
  p.rho.resize(2 * n * n);
  p.orbitals.resize(2 * n * (n + 1));
  p.s.resize(n * n);
  scf::compute_point(p.basis, job, control, {p.atoms.z, p.atoms.z, p.atoms.pos}, settings, p.rho,
                     p.orbitals, {}, p.s);
  return p;
}

}  // namespace norvik::properties
