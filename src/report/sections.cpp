#include "report/sections.h"

#include <cmath>
#include <cstdint>

#include "common/constants.h"
#include "common/fortran_format.h"
#include "common/text_file.h"
#include "report/values.h"
#include "setup/elements.h"

namespace norvik::report {

namespace {

using fortran::format;
using fortran::Value;

// A log dipole component below 5e-6 in magnitude is written as zero, so that no
// "-0.00000" ever appears in a column that should read zero.
double cleaned(double v) {
  return std::abs(v) < 5.0e-6 ? 0.0 : v;
}

// The symbol of an element, or "Bq" for Z = 0 (a bare ghost centre).
std::string symbol_of(int z) {
  return z == 0 ? std::string("Bq") : setup::z_to_symbol(z);
}

std::size_t atom_count(std::span<const double> positions) {
  return positions.size() / 3;
}

// One settings line "label" + (first value) + (second value) for the four SCF
// settings, shared by the molecule and Kohn–Sham blocks.
struct SettingLabels {
  std::string_view first;
  std::string_view second;
  std::string_view second_iterations;  // the iteration line is aligned on its own
};

Lines settings_lines(const SettingLabels& lab, std::array<int, 2> niter, std::array<double, 2> damp,
                     std::array<double, 2> ene, std::array<double, 2> rms) {
  return {
      format("(A,A,I3,A,I3)", {text("#  SCF iterations at most:"), text(lab.first),
                               integer(niter[0]), text(lab.second_iterations), integer(niter[1])}),
      format("(A,A,F5.2,A,F5.2)", {text("#  Damping factor at SCF: "), text(lab.first), damp[0],
                                   text(lab.second), damp[1]}),
      format("(A,A,ES6.0,A,ES6.0,A)", {text("#  Cond. of Ene converge: "), text(lab.first), ene[0],
                                       text(lab.second), ene[1], text(" [eV]")}),
      format("(A,A,ES6.0,A,ES6.0)", {text("#  Cond. of RMS converge: "), text(lab.first), rms[0],
                                     text(lab.second), rms[1]}),
  };
}

Lines& operator+=(Lines& a, const Lines& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

}  // namespace

Lines log_header() {
  return {
      "# iopt isrc iscf        Emol [eV]           Electric dipole moment mu [eA]         RMSD of "
      "Rho       |FPS-SPF| [au]"};
}

std::string log_cycle_line(int iopt, int isrc, int iscf, double energy,
                           std::array<double, 3> dipole, double rmsd, double comm2) {
  const double commutator = std::sqrt(comm2) / constants::kHartreeEvLog;
  const std::string last = comm2 >= 1.0e6 ? "ES15.7" : "F15.9";
  const std::string fmt =
      "(3I5,3X,F18.9,4X,' ( ',F10.5,',',F10.5,',',F10.5,' ) ',4X,F12.9,3X," + last + ")";
  return format(fmt, {integer(iopt), integer(isrc), integer(iscf), energy, cleaned(dipole[0]),
                      cleaned(dipole[1]), cleaned(dipole[2]), rmsd, commutator});
}

Lines shebang() {
  return {"#"};
}

Lines start() {
  return {"#", "#  norvik: Hartree-Fock and Kohn-Sham calculations in Gaussian basis sets",
          "#  Units: length [A], energy [eV], dipole moment [eA]"};
}

Lines theory(std::string_view keyword) {
  return {"#", format("(A,A)", {text("#  Theory: "), text(io::trim_right(keyword))})};
}

Lines molecule_name(std::string_view name) {
  return {"#", format("(A,A)", {text("#  Molecule: "), text(io::trim_right(name))})};
}

Lines molecule_name_ks(std::string_view name, std::string_view functional) {
  return {"#", format("(A,A)", {text("#  Molecule: "), text(io::trim_right(name))}),
          format("(A,A)", {text("#  Functional: "), text(io::trim_right(functional))})};
}

Lines atom_name(int z) {
  const std::string symbol = setup::z_to_symbol(z);
  const std::string name = setup::symbol_to_name(symbol);
  return {"#",
          format("(A,A,A,A,A,I0)", {text("#  Atom: "), text(name), text(" ("),
                                    text(io::trim_right(symbol)), text("), Z = "), integer(z)})};
}

Lines atom_name_ks(int z, std::string_view functional) {
  Lines lines = atom_name(z);
  lines.push_back(format("(A,A)", {text("#  Functional: "), text(io::trim_right(functional))}));
  return lines;
}

Lines basis(std::string_view name) {
  return {"#", format("(A,A)", {text("#  Basis set: "), text(io::trim_right(name))})};
}

Lines constants(double bohr_angstrom, double hartree_ev) {
  return {
      "#",
      "#",
      format("(A,F12.8,A)", {text("# Electron mass = "), 510.9989273, text("  [keV]")}),
      format("(A,F14.10,A)", {text("# Coupling Constant = "), 137.035999074, text(" ^-1")}),
      format("(A,F14.8,A)", {text("# hbar*c = "), 1973.269717, text(" [eV.A]")}),
      "#",
      format("(A,F11.8,A,F11.8,A)", {text("# 1 [eV] = "), 96.48533646, text(" [kJ/mol] = "),
                                     23.06054887, text(" [kcal/mol]")}),
      format("(A,F12.9,A,F12.9,A)", {text("# kB*298.15[K] ="), 0.02569257912065, text(" [eV] ="),
                                     0.5924849764080911, text(" [kcal/mol]")}),
      "#",
      format("(A,F14.10,A)", {text("# Bohr radius  = "), bohr_angstrom, text(" [A]")}),
      format("(A,F14.10,A)", {text("# Hartree unit = "), hartree_ev, text(" [eV]")}),
  };
}

Lines scf_atom(int niter, double damp, double thr_ene, double thr_rms) {
  return {"#", format("(A,I3)", {text("#  SCF iterations at most: "), integer(niter)}),
          format("(A,F5.2)", {text("#  Damping factor at SCF: "), damp}),
          format("(A,ES6.0,A)", {text("#  Cond. of Ene converge:  "), thr_ene, text(" [eV]")}),
          format("(A,ES6.0)", {text("#  Cond. of RMS converge:  "), thr_rms})};
}

Lines scf_atom_ks(std::array<int, 2> niter, std::array<double, 2> damp,
                  std::array<double, 2> thr_ene, std::array<double, 2> thr_rms) {
  Lines lines{"#"};
  lines += settings_lines({"   HF_Atom = ", ",    KS_Atom = ", ",    KS_Atom = "}, niter, damp,
                          thr_ene, thr_rms);
  return lines;
}

Lines scf(std::array<int, 2> niter, std::array<double, 2> damp, std::array<double, 2> thr_ene,
          std::array<double, 2> thr_rms) {
  return {
      "#",
      format("(A,A,I3,A,I3)", {text("#  SCF iterations at most:"), text(" Atom = "),
                               integer(niter[0]), text(",    Mole = "), integer(niter[1])}),
      format("(A,A,F5.2,A,F5.2)", {text("#  Damping factor at SCF: "), text(" Atom ="), damp[0],
                                   text(",   Mole ="), damp[1]}),
      format("(A,A,ES6.0,A,ES6.0,A)", {text("#  Cond. of Ene converge: "), text(" Atom = "),
                                       thr_ene[0], text(", Mole = "), thr_ene[1], text(" [eV]")}),
      format("(A,A,ES6.0,A,ES6.0)", {text("#  Cond. of RMS converge: "), text(" Atom = "),
                                     thr_rms[0], text(", Mole = "), thr_rms[1]})};
}

Lines scf_ks(std::array<int, 4> niter, std::array<double, 4> damp, std::array<double, 4> thr_ene,
             std::array<double, 4> thr_rms) {
  // Index 0 HF atom, 1 KS atom, 2 HF molecule, 3 KS molecule.
  Lines lines{"#"};
  lines += settings_lines({"   HF_Atom = ", ",    HF_Mole = ", ",       HF_Mole = "},
                          {niter[0], niter[2]}, {damp[0], damp[2]}, {thr_ene[0], thr_ene[2]},
                          {thr_rms[0], thr_rms[2]});
  lines +=
      settings_lines({"   KS_Atom = ", ",    KS_Mole = ", ",    KS_Mole = "}, {niter[1], niter[3]},
                     {damp[1], damp[3]}, {thr_ene[1], thr_ene[3]}, {thr_rms[1], thr_rms[3]});
  return lines;
}

Lines numbers(int nalpha, int nbeta, int natom, int nghost) {
  return {"#",
          format("(A,I0,A,I0,A,I0)", {text("#  Number of alpha, beta, and total electrons: "),
                                      integer(nalpha), text(" + "), integer(nbeta), text(" = "),
                                      integer(static_cast<long long>(nalpha) + nbeta)}),
          format("(A,I0)", {text("#  Number of atoms: "), integer(natom - nghost)})};
}

Lines numbers_ks(int nalpha, int nbeta, int natom, int nghost, std::string_view functional) {
  Lines lines = numbers(nalpha, nbeta, natom, nghost);
  lines.push_back(format(
      "(A,A)", {text("#  Exchange-correlation functional: "), text(io::trim_right(functional))}));
  return lines;
}

Lines geometry(std::span<const double> positions, std::span<const int> z) {
  Lines lines{"#", "#  Position of atom                                       Z_atom"};
  for (std::size_t i = 0; i < atom_count(positions); ++i) {
    lines.push_back(
        format("(A,3F15.10,A,I2)", {text("#   ("), positions[3 * i], positions[3 * i + 1],
                                    positions[3 * i + 2], text(" ) [A]    "), integer(z[i])}));
  }
  return lines;
}

Lines geometry_ghost(std::span<const double> positions, std::span<const int> z1,
                     std::span<const int> z2) {
  Lines lines{"#", "#  Position of atom                                       Z_atom"};
  for (std::size_t i = 0; i < atom_count(positions); ++i) {
    lines.push_back(
        format("(A,3F15.10,A,I2,A,I2)",
               {text("#   ("), positions[3 * i], positions[3 * i + 1], positions[3 * i + 2],
                text(" ) [A]    "), integer(z1[i]), text("  "), integer(z2[i])}));
  }
  return lines;
}

Lines coordinates(std::span<const double> positions, std::span<const int> elements,
                  std::span<const int> charges) {
  Lines lines{"#", "#  Atom  Symbol  Z_nucl          x [A]          y [A]          z [A]"};
  for (std::size_t i = 0; i < atom_count(positions); ++i) {
    const std::string symbol = symbol_of(elements[i]);
    lines.push_back(format(
        "(A,I4,4X,A2,4X,I4,2X,3F15.10)",
        {text("# "), integer(static_cast<long long>(i) + 1), text(symbol), integer(charges[i]),
         positions[3 * i], positions[3 * i + 1], positions[3 * i + 2]}));
  }
  return lines;
}

Lines xyz(std::span<const double> positions, std::span<const int> elements,
          std::string_view title) {
  Lines lines{
      "#", format("(A,I0)", {text("#  "), integer(static_cast<long long>(atom_count(positions)))}),
      format("(A,A)", {text("#  "), text(io::trim_right(title))})};
  for (std::size_t i = 0; i < atom_count(positions); ++i) {
    const std::string symbol = symbol_of(elements[i]);
    lines.push_back(format("(A,A2,3F16.10)", {text("#  "), text(symbol), positions[3 * i],
                                              positions[3 * i + 1], positions[3 * i + 2]}));
  }
  return lines;
}

Lines xyz_labelled(std::span<const double> positions, std::span<const int> elements,
                   std::string_view title) {
  Lines lines{
      "#", format("(A,I0)", {text("#  "), integer(static_cast<long long>(atom_count(positions)))}),
      format("(A,A)", {text("#  "), text(io::trim_right(title))})};
  for (std::size_t i = 0; i < atom_count(positions); ++i) {
    const std::string label =
        std::string(io::trim_right(symbol_of(elements[i]))) + std::to_string(i + 1);
    lines.push_back(format("(A,A6,3F16.10)", {text("#  "), text(label), positions[3 * i],
                                              positions[3 * i + 1], positions[3 * i + 2]}));
  }
  return lines;
}

Lines caution() {
  const std::string row(54, '#');
  return {"#",
          row,
          "# CAUTION                                            #",
          "# Kohn-Sham calculation of this molecule is unstable.#",
          "# You should check your log file to verify converged.#",
          row};
}

Lines insufficient_ram_rpa(double vint_gb, double tdhf_gb) {
  return {"#", "# *** Insufficient RAM size for the TDHF or TDKS calculation ****",
          format("(A,ES8.2,A,A,ES8.2,A)", {text("#   Vint = "), vint_gb, text(" [GB]"),
                                           text("    TDHF = "), tdhf_gb, text(" [GB]")})};
}

Lines insufficient_ram_mp2(double mp2_gb) {
  return {"#", "# *** Insufficient RAM size for the MP2 calculation ****",
          format("(A,ES8.2,A)", {text("#    MP2 = "), mp2_gb, text(" [GB]")})};
}

Lines in_core(bool in_core, int nbasis, int npair, int neffective_pair, double vint_gb,
              double limit_gb) {
  return {"#", in_core ? "# In-Core SCF:" : "# Direct SCF (very slow!!):",
          format("(A,I0,A,I0)", {text("#  number of basis = "), integer(nbasis),
                                 text(",  number of basis pair = "), integer(npair)}),
          format("(A,I0)", {text("#  Effective NofPair = "), integer(neffective_pair)}),
          format("(A,A,ES8.2,A,A,ES8.2,A)",
                 {text("#  "), text("Vint Size = "), vint_gb, text(" [GB], "),
                  text("Limit of RAM = "), limit_gb, text(" [GB]")})};
}

}  // namespace norvik::report
