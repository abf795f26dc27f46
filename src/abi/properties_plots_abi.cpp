// Exported properties of the wave function beyond the charges: the quadrupole
// moment, populations per shell, the orbitals in the report and cube files of
// orbitals and densities.
#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "abi/scf_support.h"
#include "basis/labels.h"
#include "basis/library.h"
#include "common/fortran_format.h"
#include "common/text_file.h"
#include "norvik/properties.h"
#include "properties/cube.h"
#include "properties/multipoles.h"
#include "properties/populations.h"
#include "report/orbital_sections.h"
#include "setup/elements.h"

namespace {

namespace abi = norvik::abi;
namespace scf = norvik::scf;
namespace props = norvik::properties;
using abi::count;
using abi::guarded;
using abi::kLongKeywordLength;
using abi::text_in;

[[noreturn]] void refuse(const std::string& what, std::int64_t value) {
  throw norvik::Error(norvik::fortran::list_directed({what, value}));
}

void shells(const char* basis, const norvik_int* natom, const norvik_int* zat,
            const norvik_int* zel, const norvik_int* nbasis, const double* S, const double* rho,
            const norvik_int* nshell, double* electrons, double* spin, props::Partition partition,
            const char* routine) {
  const std::size_t na = count(*natom);
  const std::string_view name = text_in(basis, kLongKeywordLength);
  const scf::MoleculeView molecule{{zat, na}, {zel, na}, {}};
  const int n = abi::checked_nbasis(name, molecule, *nbasis, routine);
  const norvik::basis::BasisSet set = norvik::basis::make_basis(name, {zel, na});
  if (static_cast<std::size_t>(*nshell) != set.shells.size()) {
    throw norvik::Error(norvik::fortran::list_directed(
        {std::string("Wrong nshell in ") + routine + ".", std::int64_t{*nshell},
         static_cast<std::int64_t>(set.shells.size())}));
  }
  const std::size_t nn = abi::square(n);
  const props::ShellPopulations p =
      props::shell_populations(set, {S, nn}, {rho, 2 * nn}, partition);
  std::copy(p.electrons.begin(), p.electrons.end(), electrons);
  std::copy(p.spin.begin(), p.spin.end(), spin);
}

// The atom of every shell and of every function, and the labels.
struct Names {
  std::vector<int> shell_atom, function_atom;
  std::vector<std::string> shell_labels, function_labels;
};

Names names_of(const norvik::basis::BasisSet& set) {
  Names out;
  for (const norvik::basis::Shell& s : set.shells) {
    out.shell_atom.push_back(s.atom);
    for (int f = 0; f < s.kind; ++f) out.function_atom.push_back(s.atom);
  }
  out.shell_labels = norvik::basis::shell_labels(set);
  out.function_labels = norvik::basis::function_labels(set);
  return out;
}

// The report's orbital tables: with `window` the orbitals from HOMO−4 to LUMO+4
// of each spin, otherwise all of them.
void write_orbitals(const char* basis, const norvik_int* natom, const norvik_int* zel,
                    const norvik_int* nbasis, const norvik_int* norb, const norvik_int* nalpha,
                    const norvik_int* nbeta, const double* orbitals, const char* report,
                    bool window, const char* routine) {
  const std::size_t na = count(*natom);
  const std::string_view name = text_in(basis, kLongKeywordLength);
  const scf::MoleculeView molecule{{zel, na}, {zel, na}, {}};
  const int n = abi::checked_nbasis(name, molecule, *nbasis, routine);
  if (*norb < 1 || *norb > n) refuse(std::string("Wrong norb in ") + routine + ".", *norb);
  const int kept = static_cast<int>(*norb);
  const Names names = names_of(norvik::basis::make_basis(name, {zel, na}));
  const norvik::report::FunctionNames fn{names.function_atom, {zel, na}, names.function_labels};
  const std::size_t per_spin = abi::square(n) + count(n);
  // A restricted point has two equal blocks: one table, occupation 2.
  const bool same =
      *nalpha == *nbeta && std::equal(orbitals, orbitals + per_spin, orbitals + per_spin);
  std::vector<std::string> lines;
  for (int spin = 0; spin < (same ? 1 : 2); ++spin) {
    const int nocc = static_cast<int>(spin == 0 ? *nalpha : *nbeta);
    const int first = window ? std::max(0, nocc - 5) : 0;
    const int last = window ? std::min(kept, nocc + 5) : kept;
    const std::string who = same ? "" : spin == 0 ? " (alpha)" : " (beta)";
    const std::string heading = (window ? "Orbitals around the gap" : "Molecular orbitals") + who +
                                ": energies [eV] and LCAO coefficients";
    const auto table = norvik::report::orbital_table(
        heading, fn, n, {orbitals + static_cast<std::size_t>(spin) * per_spin, per_spin}, first,
        last, nocc, same ? 2.0 : 1.0, window);
    lines.insert(lines.end(), table.begin(), table.end());
  }
  abi::append_to(report, lines);
}

// The grid of a cube file from its origin, per-axis steps and counts (Å).
props::CubeGrid grid_of(const double* origin, const double* step, const norvik_int* counts,
                        const char* routine) {
  props::CubeGrid grid;
  for (std::size_t a = 0; a < 3; ++a) {
    if (counts[a] < 1) refuse(std::string("Wrong grid counts in ") + routine + ".", counts[a]);
    grid.origin[a] = origin[a];
    grid.axes[a][a] = step[a];
    grid.counts[a] = static_cast<int>(counts[a]);
  }
  return grid;
}

}  // namespace

extern "C" {

NORVIK_API void QUADRAPOLE(const char* basis, const norvik_int* natom, const norvik_int* zat,
                           const norvik_int* zel, const double* pos, const norvik_int* nbasis,
                           const double* rho, double* theta) {
  guarded([&] {
    const std::size_t na = count(*natom);
    const std::string_view name = text_in(basis, kLongKeywordLength);
    const scf::MoleculeView molecule{{zat, na}, {zel, na}, {pos, 3 * na}};
    const int n = abi::checked_nbasis(name, molecule, *nbasis, "Quadrapole");
    const props::Quadrupole q =
        props::quadrupole(norvik::basis::make_basis(name, {zel, na}), {zat, na}, {pos, 3 * na},
                          {rho, 2 * abi::square(n)});
    std::copy(q.theta.begin(), q.theta.end(), theta);
  });
}

NORVIK_API void WRITE_EQM(const double* theta, const char* report) {
  guarded([&] {
    std::array<double, 9> t{};
    std::copy(theta, theta + 9, t.begin());
    abi::append_to(report, norvik::report::quadrupole(t));
  });
}

NORVIK_API void MULLIKEN_SHELLS(const char* basis, const norvik_int* natom, const norvik_int* zat,
                                const norvik_int* zel, const norvik_int* nbasis, const double* S,
                                const double* rho, const norvik_int* nshell, double* electrons,
                                double* spin) {
  guarded([&] {
    shells(basis, natom, zat, zel, nbasis, S, rho, nshell, electrons, spin,
           props::Partition::mulliken, "Mulliken_shells");
  });
}

NORVIK_API void LOWDIN_SHELLS(const char* basis, const norvik_int* natom, const norvik_int* zat,
                              const norvik_int* zel, const norvik_int* nbasis, const double* S,
                              const double* rho, const norvik_int* nshell, double* electrons,
                              double* spin) {
  guarded([&] {
    shells(basis, natom, zat, zel, nbasis, S, rho, nshell, electrons, spin,
           props::Partition::lowdin, "Lowdin_shells");
  });
}

NORVIK_API void WRITE_POPULATION_SHELL(const char* kind, const char* basis, const norvik_int* natom,
                                       const norvik_int* zel, const norvik_int* nshell,
                                       const double* electrons, const double* spin,
                                       const char* report) {
  guarded([&] {
    const std::size_t na = count(*natom);
    const Names names =
        names_of(norvik::basis::make_basis(text_in(basis, kLongKeywordLength), {zel, na}));
    if (static_cast<std::size_t>(*nshell) != names.shell_atom.size()) {
      throw norvik::Error(norvik::fortran::list_directed(
          {"Wrong nshell in Write_population_shell.", std::int64_t{*nshell},
           static_cast<std::int64_t>(names.shell_atom.size())}));
    }
    const std::size_t ns = count(*nshell);
    abi::append_to(report, norvik::report::shell_populations(
                               norvik::io::trim_right(text_in(kind, kLongKeywordLength)), {zel, na},
                               names.shell_atom, names.shell_labels, {electrons, ns}, {spin, ns}));
  });
}

NORVIK_API void WRITE_WAVES(const char* basis, const norvik_int* natom, const norvik_int* zel,
                            const norvik_int* nbasis, const norvik_int* norb,
                            const norvik_int* nalpha, const norvik_int* nbeta,
                            const double* orbitals, const char* report) {
  guarded([&] {
    write_orbitals(basis, natom, zel, nbasis, norb, nalpha, nbeta, orbitals, report, true,
                   "Write_waves");
  });
}

NORVIK_API void WRITE_LCAOHF(const char* basis, const norvik_int* natom, const norvik_int* zel,
                             const norvik_int* nbasis, const norvik_int* norb,
                             const norvik_int* nalpha, const norvik_int* nbeta,
                             const double* orbitals, const char* report) {
  guarded([&] {
    write_orbitals(basis, natom, zel, nbasis, norb, nalpha, nbeta, orbitals, report, false,
                   "Write_lcaohf");
  });
}

NORVIK_API void CUBE_EXPORT(const char* file, const norvik_int* what, const norvik_int* spin,
                            const double* origin, const double* step, const norvik_int* counts,
                            const char* title, const char* basis, const norvik_int* natom,
                            const norvik_int* zat, const norvik_int* zel, const double* pos,
                            const norvik_int* nbasis, const double* rho, const double* orbitals) {
  guarded([&] {
    const std::size_t na = count(*natom);
    const std::string_view name = text_in(basis, kLongKeywordLength);
    const scf::MoleculeView molecule{{zat, na}, {zel, na}, {pos, 3 * na}};
    const int n = abi::checked_nbasis(name, molecule, *nbasis, "Cube_export");
    if (*what < -1 || *what > n) refuse("Wrong orbital in Cube_export.", *what);
    if (*what >= 1 && *spin != 1 && *spin != 2) refuse("Wrong spin in Cube_export.", *spin);
    const props::CubeGrid grid = grid_of(origin, step, counts, "Cube_export");
    const norvik::basis::BasisSet set = norvik::basis::make_basis(name, {zel, na});
    const std::size_t nn = abi::square(n);
    props::CubeHeader header{
        std::string(norvik::io::trim_right(text_in(title, kLongKeywordLength))),
        "",
        {zel, na},
        {zat, na},
        {pos, 3 * na},
        0};
    std::vector<double> values;
    if (*what >= 1) {
      const std::size_t at = (*spin == 2 ? nn + count(n) : 0) + count(*what - 1) * count(n);
      values = props::orbital_on_grid(set, {pos, 3 * na}, grid, {orbitals + at, count(n)});
      header.orbital = static_cast<int>(*what);
      header.comment = "norvik orbital " + std::to_string(*what) +
                       (*spin == 2 ? " (beta)" : " (alpha)") + " [bohr**-3/2]";
    } else {
      values = props::density_on_grid(set, {pos, 3 * na}, grid, {rho, 2 * nn}, *what == -1);
      header.comment = *what == 0 ? "norvik total density [e/bohr**3]"
                                  : "norvik spin density alpha - beta [e/bohr**3]";
    }
    norvik::io::write_lines(norvik::io::trim_right(text_in(file, abi::kFileNameLength)),
                            props::cube_lines(header, grid, values));
  });
}

NORVIK_API void PLOT_ATOM(const char* file, const norvik_int* zel, const char* basis,
                          const norvik_int* nbasis, const double* rho, const double* half_width,
                          const norvik_int* npoint) {
  guarded([&] {
    const std::string_view name = text_in(basis, kLongKeywordLength);
    const scf::MoleculeView molecule{{zel, 1}, {zel, 1}, {}};
    const int n = abi::checked_nbasis(name, molecule, *nbasis, "Plot_atom");
    if (*npoint < 2) refuse("Wrong npoint in Plot_atom.", *npoint);
    if (!(*half_width > 0.0)) {
      throw norvik::Error(
          norvik::fortran::list_directed({"Wrong half_width in Plot_atom.", *half_width}));
    }
    const double step = 2.0 * *half_width / static_cast<double>(*npoint - 1);
    const double origin[3] = {-*half_width, -*half_width, -*half_width};
    const double steps[3] = {step, step, step};
    const norvik_int counts[3] = {*npoint, *npoint, *npoint};
    const props::CubeGrid grid = grid_of(origin, steps, counts, "Plot_atom");
    const double centre[3] = {0.0, 0.0, 0.0};
    const std::vector<double> values = props::density_on_grid(
        norvik::basis::make_basis(name, {zel, 1}), centre, grid, {rho, 2 * abi::square(n)}, false);
    const props::CubeHeader header{
        "norvik free atom " +
            std::string(norvik::io::trim_right(norvik::setup::z_to_symbol(static_cast<int>(*zel)))),
        "norvik total density [e/bohr**3]",
        {zel, 1},
        {zel, 1},
        centre,
        0};
    norvik::io::write_lines(norvik::io::trim_right(text_in(file, abi::kFileNameLength)),
                            props::cube_lines(header, grid, values));
  });
}

}  // extern "C"
