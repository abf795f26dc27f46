#include "molden.h"

#include <cmath>
#include <cstdio>
#include <fstream>
#include <numbers>
#include <stdexcept>

#include "norvik.h"

namespace host {

namespace {

// Shape limits of the library's shell arrays (norvik/basis.h).
constexpr int kSlots = 7;       // functions per shell
constexpr int kTerms = 3;       // Cartesian terms per function
constexpr int kPrimitives = 6;  // primitives per shell
constexpr int kAtomShells = 9;  // shells per atom
constexpr int kZetaSlots = 7;   // scale factors per atom

// (2k-1)!! for k >= 0, with (-1)!! = 1.
double double_factorial_odd(int k) {
  double v = 1.0;
  for (int i = 2 * k - 1; i > 1; i -= 2) v *= i;
  return v;
}

// The one-centre overlap of x^a y^b z^c e^{-p r²/2}... in the form the sums need:
// ∫ x^{2a} y^{2b} z^{2c} e^{-p r²} = w (2p)^{-L} (π/p)^{3/2}, w = (2a-1)!!(2b-1)!!(2c-1)!!.
double monomial_weight(const std::array<int, 3>& e) {
  return double_factorial_odd(e[0]) * double_factorial_odd(e[1]) * double_factorial_odd(e[2]);
}

double gaussian_moment(double p, int l) {
  return std::pow(2.0 * p, -l) * std::pow(std::numbers::pi / p, 1.5);
}

// The norm the library divides each contraction coefficient by: that of the
// unnormalised primitive whose Cartesian exponents are all at most one.
double library_primitive_norm(double alpha, int l) {
  return std::sqrt(std::pow(0.25, l) *
                   std::sqrt(std::pow(std::numbers::pi, 3) / (8.0 * std::pow(alpha, 2 * l + 3))));
}

std::string element_symbol(int z) {
  char s[2];
  const norvik_int zz = z;
  CHG2SMB(s, &zz);
  return trimmed(std::string(s, 2));
}

}  // namespace

std::vector<std::array<int, 3>> molden_components(int l) {
  switch (l) {
    case 0:
      return {{0, 0, 0}};
    case 1:
      return {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    case 2:
      return {{2, 0, 0}, {0, 2, 0}, {0, 0, 2}, {1, 1, 0}, {1, 0, 1}, {0, 1, 1}};
    case 3:
      return {{3, 0, 0}, {0, 3, 0}, {0, 0, 3}, {1, 2, 0}, {2, 1, 0},
              {2, 0, 1}, {1, 0, 2}, {0, 1, 2}, {0, 2, 1}, {1, 1, 1}};
    default:
      throw std::logic_error("molden: no Cartesian order for l > 3");
  }
}

std::vector<MoldenAtom> molden_atoms(const Job& job) {
  std::vector<MoldenAtom> atoms(static_cast<std::size_t>(job.natom));
  for (int a = 0; a < job.natom; ++a) {
    atoms[a].symbol = element_symbol(job.zel[a]);
    atoms[a].z = job.zel[a];
    for (int k = 0; k < 3; ++k) atoms[a].position[k] = job.pos[3 * a + k];
  }
  return atoms;
}

CartesianBasis cartesian_basis(const Job& job) {
  const auto natom = static_cast<std::size_t>(job.natom);
  std::vector<norvik_int> nshell(natom), kinds(kAtomShells * natom);
  std::vector<double> zeta(kZetaSlots * natom);
  norvik_int total = 0, nbasis = 0;
  for (std::size_t a = 0; a < natom; ++a) {
    norvik_int nfunc = 0;
    ZATMNSHL(job.basis.data(), &job.zel[a], &nshell[a], &kinds[kAtomShells * a], &nfunc);
    ZATMZETA(job.basis.data(), &job.zel[a], &zeta[kZetaSlots * a]);
    total += nshell[a];
    nbasis += nfunc;
  }
  const auto ns = static_cast<std::size_t>(total);
  std::vector<norvik_int> kind(ns), lm(2 * kSlots * ns), nprim(ns), nterm(kSlots * ns),
      lmn(3 * kTerms * kSlots * ns);
  std::vector<double> termcoef(kTerms * kSlots * ns), exps(kPrimitives * ns),
      coefs(kPrimitives * kSlots * ns);
  MAKEBASIS(job.basis.data(), &job.natom, job.zel.data(), zeta.data(), nshell.data(), kinds.data(),
            &total, kind.data(), lm.data(), nprim.data(), nterm.data(), lmn.data(), termcoef.data(),
            exps.data(), coefs.data());

  CartesianBasis out;
  out.nbasis = nbasis;
  // First the Cartesian shells: the library's shells split by angular momentum
  // (an sp shell gives an s and a p shell), each with its atom.
  struct Piece {
    std::size_t shell;
    int l, first_slot, cart_offset;
  };
  std::vector<Piece> pieces;
  std::size_t s = 0;
  for (std::size_t a = 0; a < natom; ++a) {
    for (norvik_int k = 0; k < nshell[a]; ++k, ++s) {
      for (int j = 0; j < kind[s]; ++j) {
        const int l = lm[2 * (j + kSlots * s)];
        bool seen = false;
        for (const Piece& p : pieces) seen = seen || (p.shell == s && p.l == l);
        if (seen) continue;
        MoldenShell shell;
        shell.atom = static_cast<int>(a);
        shell.l = l;
        for (int p = 0; p < nprim[s]; ++p) {
          shell.exponents.push_back(exps[p + kPrimitives * s]);
          shell.coefficients.push_back(coefs[p + kPrimitives * (j + kSlots * s)]);
        }
        pieces.push_back({s, l, j, out.ncart});
        out.ncart += static_cast<int>(molden_components(l).size());
        out.shells.push_back(std::move(shell));
      }
    }
  }
  // Then the map.  A library function is Σ_t c_t m_t(r) R(r), with the radial
  // part R = Σ_k d_k/N(α_k, L) e^{-α_k r²} shared by the functions of one
  // angular momentum of a shell; the normalised Cartesian function of monomial m
  // is m·R/√(w_m Q), with w_m the monomial's one-centre weight and Q = <R_xy|R_xy>
  // the squared norm of the radial part on a monomial of weight one.
  out.terms.resize(static_cast<std::size_t>(nbasis));
  std::size_t f = 0;
  for (std::size_t sh = 0; sh < ns; ++sh) {
    for (int j = 0; j < kind[sh]; ++j, ++f) {
      const int l = lm[2 * (j + kSlots * sh)];
      const Piece* piece = nullptr;
      for (const Piece& p : pieces)
        if (p.shell == sh && p.l == l) piece = &p;
      double q = 0.0;
      for (int p = 0; p < nprim[sh]; ++p) {
        for (int r = 0; r < nprim[sh]; ++r) {
          const double ap = exps[p + kPrimitives * sh], ar = exps[r + kPrimitives * sh];
          const double dp = coefs[p + kPrimitives * (j + kSlots * sh)];
          const double dr = coefs[r + kPrimitives * (j + kSlots * sh)];
          q += dp * dr * gaussian_moment(ap + ar, l) /
               (library_primitive_norm(ap, l) * library_primitive_norm(ar, l));
        }
      }
      const std::vector<std::array<int, 3>> components = molden_components(l);
      for (int t = 0; t < nterm[j + kSlots * sh]; ++t) {
        std::array<int, 3> e{};
        for (int x = 0; x < 3; ++x) e[x] = lmn[x + 3 * (t + kTerms * (j + kSlots * sh))];
        std::size_t c = 0;
        while (c < components.size() && components[c] != e) ++c;
        if (c == components.size()) throw std::logic_error("molden: a term outside its shell");
        out.terms[f].push_back(
            {piece->cart_offset + static_cast<int>(c),
             termcoef[t + kTerms * (j + kSlots * sh)] * std::sqrt(monomial_weight(e) * q)});
      }
    }
  }
  return out;
}

Molden molden_of_point(const Job& job, int n, int northo, bool restricted,
                       const std::vector<double>& orbitals,
                       const std::optional<VibrationResult>& vibrations) {
  Molden m;
  m.title = trimmed(job.molecule_name) + " " + trimmed(job.theory) + "/" + trimmed(job.basis);
  m.atoms = molden_atoms(job);
  CartesianBasis basis = cartesian_basis(job);
  m.shells = std::move(basis.shells);
  const auto nn = static_cast<std::size_t>(n);
  const std::size_t spin_block = nn * (nn + 1);
  for (int spin = 0; spin < (restricted ? 1 : 2); ++spin) {
    const int nocc = spin == 0 ? job.nalpha : job.nbeta;
    for (int i = 0; i < northo; ++i) {
      MoldenOrbital o;
      const double* c = orbitals.data() + spin * spin_block + nn * static_cast<std::size_t>(i);
      o.energy = orbitals[spin * spin_block + nn * nn + static_cast<std::size_t>(i)] / kHartreeEv;
      o.beta = spin == 1;
      o.occupation = i < nocc ? (restricted ? 2.0 : 1.0) : 0.0;
      o.coefficients.assign(static_cast<std::size_t>(basis.ncart), 0.0);
      for (std::size_t fi = 0; fi < nn; ++fi)
        for (const CartesianTerm& t : basis.terms[fi]) o.coefficients[t.index] += t.weight * c[fi];
      m.orbitals.push_back(std::move(o));
    }
  }
  if (vibrations) {
    m.modes.emplace();
    m.modes->wavenumbers = vibrations->wavenumbers;
    m.modes->intensities = vibrations->infrared;
    m.modes->displacements = vibrations->displacements;
  }
  return m;
}

namespace {

// A number as written: no "-0.00000000".
double shown(double v, double below) {
  return std::abs(v) < below ? 0.0 : v;
}

}  // namespace

void write_molden(const std::string& path, const Molden& m) {
  std::ofstream out(path, std::ios::binary);
  char line[200];
  out << "[Molden Format]\n";
  if (!m.orbitals.empty()) {
    out << "[Title]\n" << m.title << "\n[Atoms] Angs\n";
    for (std::size_t a = 0; a < m.atoms.size(); ++a) {
      std::snprintf(line, sizeof line, "%-2s %5zu %3d %20.12f %20.12f %20.12f",
                    m.atoms[a].symbol.c_str(), a + 1, m.atoms[a].z, m.atoms[a].position[0],
                    m.atoms[a].position[1], m.atoms[a].position[2]);
      out << line << '\n';
    }
    out << "[GTO]\n";
    static const char kLetters[] = "spdf";
    for (std::size_t a = 0; a < m.atoms.size(); ++a) {
      out << a + 1 << " 0\n";
      for (const MoldenShell& s : m.shells) {
        if (s.atom != static_cast<int>(a)) continue;
        out << kLetters[s.l] << ' ' << s.exponents.size() << " 1.00\n";
        for (std::size_t p = 0; p < s.exponents.size(); ++p) {
          std::snprintf(line, sizeof line, "%24.16E %24.16E", s.exponents[p], s.coefficients[p]);
          out << line << '\n';
        }
      }
      out << '\n';
    }
    out << "[MO]\n";
    for (const MoldenOrbital& o : m.orbitals) {
      std::snprintf(line, sizeof line, "Ene= %.10f", o.energy);
      out << "Sym= A\n" << line << "\nSpin= " << (o.beta ? "Beta" : "Alpha") << '\n';
      std::snprintf(line, sizeof line, "Occup= %.6f", o.occupation);
      out << line << '\n';
      for (std::size_t k = 0; k < o.coefficients.size(); ++k) {
        std::snprintf(line, sizeof line, "%6zu %22.14E", k + 1, o.coefficients[k]);
        out << line << '\n';
      }
    }
  }
  if (m.modes) {
    const MoldenModes& v = *m.modes;
    out << "[FREQ]\n";
    for (const double w : v.wavenumbers) {
      std::snprintf(line, sizeof line, "%12.4f", w);
      out << line << '\n';
    }
    out << "[FR-COORD]\n";
    for (const MoldenAtom& a : m.atoms) {
      std::snprintf(line, sizeof line, "%-2s %16.10f %16.10f %16.10f", a.symbol.c_str(),
                    shown(a.position[0] / NORVIK_BOHR_ANGSTROM, 5e-9),
                    shown(a.position[1] / NORVIK_BOHR_ANGSTROM, 5e-9),
                    shown(a.position[2] / NORVIK_BOHR_ANGSTROM, 5e-9));
      out << line << '\n';
    }
    out << "[FR-NORM-COORD]\n";
    for (std::size_t k = 0; k < v.displacements.size(); ++k) {
      out << "vibration " << k + 1 << '\n';
      for (std::size_t a = 0; a < m.atoms.size(); ++a) {
        const double* d = v.displacements[k].data() + 3 * a;
        std::snprintf(line, sizeof line, "%12.8f %12.8f %12.8f", shown(d[0], 5e-9),
                      shown(d[1], 5e-9), shown(d[2], 5e-9));
        out << line << '\n';
      }
    }
    out << "[INT]\n";
    for (const double i : v.intensities) {
      std::snprintf(line, sizeof line, "%14.6f", i);
      out << line << '\n';
    }
  }
}

}  // namespace host
