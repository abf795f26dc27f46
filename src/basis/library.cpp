#include "basis/library.h"

#include <cstdint>
#include <string>
#include <vector>

#include "basis/angular.h"
#include "basis/basis_data.h"
#include "common/error.h"
#include "common/fortran_format.h"

namespace norvik::basis {

namespace {

using data::ShellData;

// The published shells of one atom in layout order.
struct AtomData {
  int nshell = 0;
  std::array<const ShellData*, kMaxShellsPerAtom> shells{};

  void add(const ShellData& shell) { shells[nshell++] = &shell; }
};

[[noreturn]] void exceed_limit(std::string_view routine, Family family, std::string_view variant,
                               int z) {
  const std::string text = "Zatom exceed limit in " + std::string(routine) + "_" +
                           std::string(family_info(family).label) + std::string(variant) + ".";
  throw Error(fortran::list_directed({text, static_cast<std::int64_t>(z)}));
}

void check_range(std::string_view routine, Family family, int z, std::string_view variant = "") {
  if (z < 1 || z > family_info(family).zmax) exceed_limit(routine, family, variant, z);
}

void check_group(std::string_view routine, Family family, Group group, int z) {
  if (z < group_first(group) || z > group_last(group)) {
    const std::string text = "Wrong Zatom in " + std::string(routine) + "_" +
                             std::string(family_info(family).label) + "_" +
                             std::string(group_label(group)) + ".";
    throw Error(fortran::list_directed({text, static_cast<std::int64_t>(z)}));
  }
}

// Z must be in the family's range.
AtomData atom_data(Family family, int z) {
  AtomData atom;
  const auto add_all = [&atom](const data::ElementData& element) {
    for (int i = 0; i < element.nshell; ++i) atom.add(element.shells[i]);
  };
  switch (family) {
    case Family::kSto3g:
      add_all(data::kSto3g[z - 1]);
      break;
    case Family::k321g:
      add_all(data::k321g[z - 1]);
      break;
    case Family::k621g:
      add_all(data::k621g[z - 1]);
      break;
    default: {
      // The 6-31G family: the base set, then polarisation, then diffuse functions.
      const auto& element = data::k631g[z - 1];
      const auto& info = family_info(family);
      const bool light = z <= 2;
      add_all(element.base);
      if (light ? info.polarised_light : info.polarised_heavy) atom.add(element.polarisation);
      if ((light ? info.diffuse_light : info.diffuse_heavy) && element.diffuse.kind != 0) {
        atom.add(element.diffuse);
      }
      break;
    }
  }
  return atom;
}

Zeta pad(std::span<const double> values) {
  Zeta zeta{};
  for (std::size_t i = 0; i < values.size(); ++i) zeta[i] = values[i];
  return zeta;
}

void fill_angular_of(const AtomData& atom, AtomShells& shells) {
  for (int i = 0; i < kMaxShellsPerAtom; ++i) {
    auto& shell = shells[i];
    if (i < atom.nshell) {
      shell.kind = atom.shells[i]->kind;
      shell.nprim = atom.shells[i]->nprim;
      fill_angular(shell.kind, shell);
    } else {
      shell.kind = 0;
      shell.nprim = 0;
      fill_angular(0, shell);
    }
  }
}

void fill_radial_of(const AtomData& atom, const Zeta& zeta, AtomShells& shells) {
  for (int i = 0; i < kMaxShellsPerAtom; ++i) {
    auto& shell = shells[i];
    shell.exponents = {};
    for (auto& f : shell.functions) f.coef = {};
    if (i >= atom.nshell) continue;
    const ShellData& d = *atom.shells[i];
    const double factor = d.zeta_index > 0 ? zeta[d.zeta_index - 1] : 1.0;
    const double scale = factor * factor;
    for (int k = 0; k < d.nprim; ++k) shell.exponents[k] = d.exponents[k] * scale;
    const auto set_coef = [&](int slot, const double* coef) {
      for (int k = 0; k < d.nprim; ++k) {
        shell.functions[slot].coef[k] = coef != nullptr ? coef[k] : 1.0;
      }
    };
    if (d.kind == 4) {
      set_coef(0, d.coef);
      for (int slot = 1; slot < 4; ++slot) set_coef(slot, d.coef_p);
    } else {
      for (int slot = 0; slot < filled_slots(d.kind); ++slot) set_coef(slot, d.coef);
    }
  }
}

}  // namespace

// ---- By family -------------------------------------------------------------

AtomLayout family_layout(Family family, bool cartesian_d, int z) {
  check_range("ZatmNSHL", family, z, cartesian_d ? "C" : "");
  const AtomData atom = atom_data(family, z);
  AtomLayout layout;
  layout.nshell = atom.nshell;
  for (int i = 0; i < atom.nshell; ++i) {
    const int kind = atom.shells[i]->kind;
    layout.kind[i] = (cartesian_d && kind == 5) ? 6 : kind;
    layout.nbasis += layout.kind[i];
  }
  return layout;
}

Zeta family_zeta(Family family, int z) {
  check_range("ZatmZeta", family, z);
  switch (family) {
    case Family::kSto3g:
      return data::kSto3gZeta[z - 1];
    case Family::k321g:
      return pad(data::k321gZeta[z - 1]);
    case Family::k621g:
      return pad(data::k621gZeta[z - 1]);
    default:
      return pad(data::k631gZeta[z - 1]);
  }
}

Zeta sto3g_isolated_zeta(int z) {
  check_range("ZatmZetaIso", Family::kSto3g, z);
  return data::kSto3gZetaIsolated[z - 1];
}

void family_angular(Family family, int z, AtomShells& shells) {
  check_range("makeLMlmn", family, z);
  fill_angular_of(atom_data(family, z), shells);
}

void group_angular(Family family, Group group, int z, AtomShells& shells) {
  check_group("makeLMlmn", family, group, z);
  fill_angular_of(atom_data(family, z), shells);
}

void family_radial(Family family, int z, const Zeta& zeta, AtomShells& shells) {
  check_range("makeKLMG", family, z);
  fill_radial_of(atom_data(family, z), zeta, shells);
}

void group_radial(Family family, Group group, int z, const Zeta& zeta, AtomShells& shells) {
  check_group("makeKLMG", family, group, z);
  fill_radial_of(atom_data(family, z), zeta, shells);
}

// ---- By name -----------------------------------------------------------------

AtomLayout shell_layout(std::string_view name, int z) {
  const BasisName basis = parse_basis_name(name, "ZatomNSHL");
  return family_layout(basis.family, basis.cartesian_d, z);
}

Zeta zeta(std::string_view name, int z) {
  return family_zeta(parse_basis_name(name, "ZatomZeta").family, z);
}

void atom_angular(std::string_view name, int z, AtomShells& shells) {
  family_angular(parse_basis_name(name, "makeLMlmn").family, z, shells);
}

void atom_radial(std::string_view name, int z, const Zeta& zeta, AtomShells& shells) {
  family_radial(parse_basis_name(name, "makeKLMG").family, z, zeta, shells);
}

BasisSet build_basis(std::string_view name, std::span<const int> z, std::span<const Zeta> zeta,
                     std::span<const int> nshell_atom,
                     std::span<const std::array<int, kMaxShellsPerAtom>> kind_atom) {
  BasisSet basis;
  AtomShells scratch{};
  for (std::size_t a = 0; a < z.size(); ++a) {
    atom_angular(name, z[a], scratch);
    atom_radial(name, z[a], zeta[a], scratch);
    const int nshell = nshell_atom[a];
    const auto atom_number = static_cast<std::int64_t>(a + 1);
    if (nshell < 0 || nshell > kMaxShellsPerAtom) {
      throw Error(fortran::list_directed(
          {"Wrong nShellAtom in makeBasis.", atom_number, static_cast<std::int64_t>(nshell)}));
    }
    for (int s = 0; s < nshell; ++s) {
      const int kind = kind_atom[a][s];
      if (kind < 0 || kind > kMaxFunctionsPerShell) {
        throw Error(fortran::list_directed({"Wrong ShellKindAtom in makeBasis.", atom_number,
                                            static_cast<std::int64_t>(s + 1),
                                            static_cast<std::int64_t>(kind)}));
      }
      Shell shell;
      shell.kind = kind;
      shell.nprim = scratch[s].nprim;
      shell.atom = static_cast<int>(a);
      shell.exponents = scratch[s].exponents;
      for (int slot = 0; slot < kind; ++slot) shell.functions[slot] = scratch[s].functions[slot];
      basis.shells.push_back(shell);
    }
  }
  return basis;
}

BasisSet make_basis(std::string_view name, std::span<const int> z, std::span<const Zeta> zeta) {
  std::vector<int> nshell(z.size());
  std::vector<std::array<int, kMaxShellsPerAtom>> kinds(z.size());
  for (std::size_t a = 0; a < z.size(); ++a) {
    const AtomLayout layout = shell_layout(name, z[a]);
    nshell[a] = layout.nshell;
    kinds[a] = layout.kind;
  }
  return build_basis(name, z, zeta, nshell, kinds);
}

BasisSet make_basis(std::string_view name, std::span<const int> z) {
  std::vector<Zeta> zetas(z.size());
  for (std::size_t a = 0; a < z.size(); ++a) {
    shell_layout(name, z[a]);  // the layout's messages come first, as for the host
    zetas[a] = zeta(name, z[a]);
  }
  return make_basis(name, z, zetas);
}

}  // namespace norvik::basis
