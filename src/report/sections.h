// The report (unit 8) and run-log (unit 9) sections.
//
// Each function returns the lines of one section, every report line beginning
// with "#"; the exported WRITE_ routines append them to the file they are given.
// Keeping the lines apart from the file makes every format testable byte for byte.
#pragma once

#include <array>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace norvik::report {

using Lines = std::vector<std::string>;

// Run log.
Lines log_header();
// One SCF cycle: energy [eV], dipole [e·Å], RMS density change, and the squared
// commutator norm [eV²] (written as its root in hartree).
std::string log_cycle_line(int iopt, int isrc, int iscf, double energy,
                           std::array<double, 3> dipole, double rmsd, double comm2);

// Report header sections.
Lines shebang();
Lines start();
Lines theory(std::string_view keyword);
Lines molecule_name(std::string_view name);
Lines molecule_name_ks(std::string_view name, std::string_view functional);
Lines atom_name(int z);
Lines atom_name_ks(int z, std::string_view functional);
Lines basis(std::string_view name);
Lines constants(double bohr_angstrom, double hartree_ev);

// SCF settings.
Lines scf_atom(int niter, double damp, double thr_ene, double thr_rms);
Lines scf_atom_ks(std::array<int, 2> niter, std::array<double, 2> damp,
                  std::array<double, 2> thr_ene, std::array<double, 2> thr_rms);
Lines scf(std::array<int, 2> niter, std::array<double, 2> damp, std::array<double, 2> thr_ene,
          std::array<double, 2> thr_rms);
// Kohn–Sham settings in the order HF atom, KS atom, HF molecule, KS molecule.
Lines scf_ks(std::array<int, 4> niter, std::array<double, 4> damp, std::array<double, 4> thr_ene,
             std::array<double, 4> thr_rms);

// Electron and atom counts (ghost atoms are not counted as atoms).
Lines numbers(int nalpha, int nbeta, int natom, int nghost);
Lines numbers_ks(int nalpha, int nbeta, int natom, int nghost, std::string_view functional);

// Geometry: positions (3, natom) in ångström.
Lines geometry(std::span<const double> positions, std::span<const int> z);
Lines geometry_ghost(std::span<const double> positions, std::span<const int> z1,
                     std::span<const int> z2);
Lines coordinates(std::span<const double> positions, std::span<const int> elements,
                  std::span<const int> charges);
Lines xyz(std::span<const double> positions, std::span<const int> elements, std::string_view title);
Lines xyz_labelled(std::span<const double> positions, std::span<const int> elements,
                   std::string_view title);

// Notes.
Lines caution();
Lines insufficient_ram_rpa(double vint_gb, double tdhf_gb);
Lines insufficient_ram_mp2(double mp2_gb);
Lines in_core(bool in_core, int nbasis, int npair, int neffective_pair, double vint_gb,
              double limit_gb);

}  // namespace norvik::report
