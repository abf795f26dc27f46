#include "hartree_fock.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "norvik.h"

namespace host {

namespace {

// Doubles per shell in the packed shell table of the two-electron routines.
constexpr int kShellRecord = 160;

void stamp(const char* text) {
  TIMESTAMP(padded(text, 40).data());
}

// The shells of the molecule as MAKEBASIS lays them out.
struct Shells {
  int nshell = 0;
  int nbasis = 0;
  std::vector<norvik_int> nshellatom, kindatom, atom_of_shell;
  std::vector<double> zeta;
  std::vector<norvik_int> kind, lm, nprim, nterm, lmn;
  std::vector<double> termcoef, expo, coef;
};

Shells make_shells(const Job& job) {
  Shells s;
  const char* basis = job.basis.data();
  s.nshellatom.resize(job.natom);
  s.kindatom.resize(9 * job.natom);
  s.zeta.resize(7 * job.natom);
  for (int a = 0; a < job.natom; ++a) {
    norvik_int nfunc = 0;
    ZATMNSHL(basis, &job.zel[a], &s.nshellatom[a], &s.kindatom[9 * a], &nfunc);
    ZATMZETA(basis, &job.zel[a], &s.zeta[7 * a]);
    s.nbasis += nfunc;
    s.nshell += s.nshellatom[a];
    s.atom_of_shell.insert(s.atom_of_shell.end(), s.nshellatom[a], a + 1);
  }
  const auto n = static_cast<std::size_t>(s.nshell);
  s.kind.resize(n);
  s.lm.resize(14 * n);
  s.nprim.resize(n);
  s.nterm.resize(7 * n);
  s.lmn.resize(63 * n);
  s.termcoef.resize(21 * n);
  s.expo.resize(6 * n);
  s.coef.resize(42 * n);
  MAKEBASIS(basis, &job.natom, job.zel.data(), s.zeta.data(), s.nshellatom.data(),
            s.kindatom.data(), &s.nshell, s.kind.data(), s.lm.data(), s.nprim.data(),
            s.nterm.data(), s.lmn.data(), s.termcoef.data(), s.expo.data(), s.coef.data());
  return s;
}

// The two-electron context that the Fock builds receive, argument by argument.
struct Context {
  norvik_int nshell = 0, nshpair = 0, npair = 0;
  std::vector<double> shelltab, vdiag, vint;
  std::vector<norvik_int> shpair, pairlist, pairmap;
  double thresh = 0.0;
};

}  // namespace

PointResult run_hartree_fock(const Job& job) {
  PointResult result;
  const char* report = job.report_file.data();
  const char* basis = job.basis.data();

  // The shells, the one-electron matrices and the orthogonalisation.
  const Shells shells = make_shells(job);
  const norvik_int n = shells.nbasis;
  const auto nn = static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
  const auto npacked = static_cast<std::size_t>(n) * (static_cast<std::size_t>(n) + 1) / 2;
  result.nbasis = n;

  // Free atoms: energies for the binding energy and densities for the start.
  std::vector<double> eatom(job.natom), atomrho(2 * nn);
  const double thr_orth = kOrthogonalityThreshold;
  ATOMS(basis, &job.natom, job.zat.data(), job.zel.data(), &job.niter[0], &job.damp[0],
        &job.thr_ene[0], &job.thr_rms[0], &job.memory_gb, &thr_orth, &n, eatom.data(),
        atomrho.data());
  WRITE_ENERGY_ATOM(&job.natom, job.zat.data(), job.zel.data(), eatom.data(), report);
  stamp("Free atoms ok.");

  std::vector<double> charges(job.zat.begin(), job.zat.end());
  std::vector<double> S(nn), T(nn), V(nn), dip(3 * nn), X(nn);
  CALCMTRX(&shells.nshell, shells.kind.data(), shells.lm.data(), shells.nprim.data(),
           shells.nterm.data(), shells.lmn.data(), shells.termcoef.data(), shells.expo.data(),
           shells.coef.data(), shells.atom_of_shell.data(), &job.natom, job.pos.data(),
           charges.data(), &n, S.data(), T.data(), V.data(), dip.data());
  norvik_int northo = 0;
  ORTHOG_BASIS(&n, S.data(), &thr_orth, &northo, X.data());
  result.northo = northo;
  WRITE_DEPEND(&n, &northo, &thr_orth, report);

  // Pair screening, then the in-core or integral-direct choice for the kept pairs.
  Context c;
  c.nshell = shells.nshell;
  c.shelltab.resize(static_cast<std::size_t>(kShellRecord) * shells.nshell);
  PACKSHELLS(&job.natom, job.pos.data(), shells.nshellatom.data(), &shells.nshell,
             shells.kind.data(), shells.lm.data(), shells.nprim.data(), shells.nterm.data(),
             shells.lmn.data(), shells.termcoef.data(), shells.expo.data(), shells.coef.data(),
             c.shelltab.data());
  c.shpair.resize(static_cast<std::size_t>(shells.nshell) * (shells.nshell + 1));
  REMOVE_SH_PAIR(&c.nshell, c.shelltab.data(), &c.nshpair, c.shpair.data());
  c.pairlist.resize(2 * npacked);
  c.pairmap.resize(npacked);
  c.vdiag.resize(npacked);
  REMOVE_BA_PAIR(&n, &c.nshell, c.shelltab.data(), &c.nshpair, c.shpair.data(), &c.npair,
                 c.pairlist.data(), c.pairmap.data(), c.vdiag.data());
  norvik_int in_core = 0;
  INCORE01(&c.npair, &job.memory_gb, &in_core);
  result.in_core = in_core == 1;
  const norvik_int all_pairs = static_cast<norvik_int>(npacked);
  const double vint_gb = RAMVINT(&c.npair);
  WRITE_INCORE(&in_core, &n, &all_pairs, &c.npair, &vint_gb, &job.memory_gb, report);
  c.thresh = result.in_core ? 0.0 : job.screening;
  if (result.in_core) {
    c.vint.resize(static_cast<std::size_t>(c.npair) * (static_cast<std::size_t>(c.npair) + 1) / 2);
    CALCVINT(&n, &c.nshell, c.shelltab.data(), &c.nshpair, c.shpair.data(), &c.npair,
             c.pairlist.data(), c.pairmap.data(), c.vdiag.data(), c.vint.data(), &c.thresh);
  } else {
    c.vint.resize(1);
  }
  stamp("Integrals ok.");

  // Start from the free atoms, then the SCF at this geometry.
  std::vector<double> G(2 * nn), rho(2 * nn), orbitals(2 * (nn + n));
  double energy = 0.0, dipole[3] = {};
  const norvik_int istart = 1;
  auto ini = result.in_core ? HF_INI : HF_INI_DIRECT;
  // HF_INI shares out the free-atom densities when its count exceeds 9; the host
  // always starts from the superposed free atoms, which lands on the ground state
  // more reliably than the bare one-electron start.
  const norvik_int patch = 10;
  // The electron counts travel in the start density; MAKEINIRHO writes one that
  // carries exactly the molecule's counts.
  norvik_int zsum = 0;
  for (int z : job.zat) zsum += z;
  MAKEINIRHO(&zsum, &job.charge, &job.multiplicity, &n, rho.data());
  const double no_offset[3] = {0.0, 0.0, 0.0};
  ini(&istart, &patch, atomrho.data(), &job.niter[1], &job.damp[1], &job.thr_ene[1],
      &job.thr_rms[1], &no_offset[0], no_offset, &n, &northo, X.data(), S.data(), T.data(),
      V.data(), dip.data(), &c.nshell, c.shelltab.data(), &c.nshpair, c.shpair.data(), &c.npair,
      c.pairlist.data(), c.pairmap.data(), c.vdiag.data(), c.vint.data(), &c.thresh, G.data(),
      rho.data(), orbitals.data(), &energy, dipole);

  double enuc = 0.0, nuclear_dipole[3] = {};
  NUCLEARREP(&job.natom, job.zat.data(), job.pos.data(), &enuc);
  NUCLEAREDM(&job.natom, job.zat.data(), job.pos.data(), nuclear_dipole);
  const norvik_int iopt = 0, isrc = 0;
  auto scf = result.in_core ? HF_SCF : HF_SCF_DIRECT;
  scf(&iopt, &isrc, job.log_file.data(), &job.niter[1], &job.damp[1], &job.thr_ene[1],
      &job.thr_rms[1], &enuc, nuclear_dipole, &n, &northo, X.data(), S.data(), T.data(), V.data(),
      dip.data(), &c.nshell, c.shelltab.data(), &c.nshpair, c.shpair.data(), &c.npair,
      c.pairlist.data(), c.pairmap.data(), c.vdiag.data(), c.vint.data(), &c.thresh, G.data(),
      rho.data(), orbitals.data(), &energy, dipole, &result.de_final);
  WRITE_BLANKLINE(job.log_file.data());
  stamp("Hartree-Fock exploration ok.");

  // The result sections.
  result.energy = energy + enuc;
  for (int k = 0; k < 3; ++k) result.dipole[k] = dipole[k] + nuclear_dipole[k];
  double eatoms = 0.0;
  for (double e : eatom) eatoms += e;
  WRITE_ENERGY_MOL(&energy, &enuc, &eatoms, report);
  WRITE_EMOL(&result.energy, &result.de_final, report);
  const norvik_int nlevel = std::min<norvik_int>(northo, job.norb);
  WRITE_LEVELS(&n, &nlevel, &job.nalpha, &job.nbeta, orbitals.data(), report);
  WRITE_OCCUPY(&n, &northo, &job.nalpha, &job.nbeta, orbitals.data(), report);
  if (job.multiplicity != 1) WRITE_SPINCONTAMI(&n, S.data(), rho.data(), report);
  WRITE_EDM(result.dipole, report);
  return result;
}

}  // namespace host
