// Exported routines of the Hartree–Fock SCF: density update, drivers,
// initialisers, energies and moments, start densities, free atoms and the
// single point.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <vector>

#include "abi/abi_support.h"
#include "basis/library.h"
#include "common/error.h"
#include "common/fortran_format.h"
#include "common/text_file.h"
#include "integrals/two/shells.h"
#include "integrals/two/two_electron.h"
#include "linalg/sort.h"
#include "linalg/status.h"
#include "norvik/scf.h"
#include "scf/density_update.h"
#include "scf/hf_driver.h"
#include "scf/properties.h"
#include "scf/single_point.h"
#include "scf/start_density.h"
#include "scf/symmetry_update.h"

namespace {

namespace scf = norvik::scf;
namespace two = norvik::integrals::two;
using norvik::abi::guarded;
using norvik::abi::kFileNameLength;
using norvik::abi::kLongKeywordLength;
using norvik::abi::text_in;
using norvik::linalg::ConstMatrixView;
using norvik::linalg::MatrixView;

std::size_t count(norvik_int n) {
  return static_cast<std::size_t>(n > 0 ? n : 0);
}
std::size_t square(norvik_int n) {
  return count(n) * count(n);
}
std::size_t packed(std::int64_t n) {
  return static_cast<std::size_t>(n > 0 ? n * (n + 1) / 2 : 0);
}

ConstMatrixView matrix(const double* p, norvik_int n) {
  return {p, n, n, n};
}

// The electron counts that a density pair carries, as the density update counts
// them: the nearest integers of Tr(rho_s S).
norvik::setup::ElectronCount counts_of(norvik_int n, const double* S, const double* rho) {
  return {scf::electron_count(matrix(rho, n), matrix(S, n)),
          scf::electron_count(matrix(rho + square(n), n), matrix(S, n))};
}

// A basis size below one is refused before any array is touched.
void check_nbasis(norvik_int n, std::string_view routine) {
  if (n < 1) {
    throw norvik::Error(norvik::fortran::list_directed(
        {std::string("Wrong nbasis in ") + std::string(routine) + ".", std::int64_t{n}}));
  }
}

scf::Operators operators(const norvik_int* nbasis, const double* S, const double* T,
                         const double* V, const norvik_int* northo, const double* X) {
  scf::Operators op;
  op.nbasis = *nbasis;
  op.northo = *northo;
  op.s = matrix(S, *nbasis);
  op.t = matrix(T, *nbasis);
  op.v = matrix(V, *nbasis);
  op.x = matrix(X, *nbasis);
  return op;
}

two::ContextView context(norvik_int nbasis, const norvik_int* nshell, const double* shelltab,
                         const norvik_int* nshpair, const norvik_int* shpair,
                         const norvik_int* npair, const norvik_int* pairlist,
                         const norvik_int* pairmap, const double* vdiag, const double* vint,
                         const double* thresh, scf::FockBuild build) {
  two::ContextView c;
  c.nbasis = nbasis;
  c.nshell = *nshell;
  c.shelltab = {shelltab, count(*nshell) * two::kShellRecord};
  c.nshpair = *nshpair;
  c.shpair = {shpair, 2 * count(*nshpair)};
  c.npair = *npair;
  c.pairlist = {pairlist, 2 * count(*npair)};
  c.pairmap = {pairmap, packed(nbasis)};
  c.vdiag = {vdiag, packed(nbasis)};
  // The integral-direct builds never read the store (one element is enough).
  c.vint = {vint, build == scf::FockBuild::stored ? packed(*npair) : 0};
  c.thresh = *thresh;
  return c;
}

// ---- density update ------------------------------------------------------------

struct UpdateCall {
  bool diis = false;
  scf::Occupation occupation = scf::Occupation::aufbau;
  scf::Solver solver = scf::Solver::dispatch;
};

// The update's arrays on the host's memory.
scf::StepArrays step_arrays(norvik_int nbasis, const double* G, double* fockhist, double* errhist,
                            double* scratch, double* rho, double* orbitals) {
  const std::size_t nn = square(nbasis);
  return {{G, 2 * nn},
          {fockhist, 2 * scf::kHistorySlots * nn},
          {errhist, 2 * scf::kHistorySlots * nn},
          {scratch, 2 * nn},
          {rho, 2 * nn},
          {orbitals, 2 * (nn + count(nbasis))}};
}

void update(const UpdateCall& call, const norvik_int* nbasis, const double* S, const double* T,
            const double* V, const double* G, const norvik_int* northo, const double* X,
            double damp, int nsub, double* fockhist, double* errhist, double* scratch, double* rho,
            double* orbitals, double* rmsd, double* comm2) {
  check_nbasis(*nbasis, "updaterho");
  scf::Operators op = operators(nbasis, S, T, V, northo, X);
  op.solver = call.solver;
  const scf::StepArrays arrays = step_arrays(*nbasis, G, fockhist, errhist, scratch, rho, orbitals);
  scf::Workspace work(*nbasis);
  const scf::StepResult r = call.diis ? scf::diis_step(op, nsub, arrays, call.occupation, work)
                                      : scf::damped_step(op, damp, arrays, call.occupation, work);
  *rmsd = r.rmsd;
  *comm2 = r.comm2;
}

// ---- drivers ---------------------------------------------------------------------

struct DriverCall {
  bool log = true;
  bool dipole = true;
  scf::Occupation occupation = scf::Occupation::aufbau;
  scf::FockBuild build = scf::FockBuild::stored;
  const scf::Salc* salc = nullptr;  // the symmetry-restricted C2/B2 members
};

struct InitCall {
  scf::StartKind kind = scf::StartKind::standard;
  scf::FockBuild build = scf::FockBuild::stored;
  const scf::Salc* salc = nullptr;  // the symmetry-restricted C2/B2 members
};

}  // namespace

#define NORVIK_UPDATE_CALL nbasis, S, T, V, G, northo, X
#define NORVIK_UPDATE_TAIL fockhist, errhist, scratch, rho, orbitals, rmsd, comm2

#define NORVIK_DAMP_ROUTINE(NAME, OCCUPATION, SOLVER)                                              \
  extern "C" NORVIK_API void NAME(NORVIK_UPDATE_ARGS(const double* damp)) {                        \
    guarded([&] {                                                                                  \
      update({false, scf::Occupation::OCCUPATION, scf::Solver::SOLVER}, NORVIK_UPDATE_CALL, *damp, \
             0, NORVIK_UPDATE_TAIL);                                                               \
    });                                                                                            \
  }
#define NORVIK_DIIS_ROUTINE(NAME, OCCUPATION, SOLVER)                                           \
  extern "C" NORVIK_API void NAME(NORVIK_UPDATE_ARGS(const norvik_int* nsub)) {                 \
    guarded([&] {                                                                               \
      update({true, scf::Occupation::OCCUPATION, scf::Solver::SOLVER}, NORVIK_UPDATE_CALL, 1.0, \
             *nsub, NORVIK_UPDATE_TAIL);                                                        \
    });                                                                                         \
  }

NORVIK_DAMP_ROUTINE(UPDATERHO_DAMP, aufbau, dispatch)
NORVIK_DAMP_ROUTINE(UPDATERHO_DAMP_GHQR, aufbau, full)
NORVIK_DAMP_ROUTINE(UPDATERHO_DAMP_ORTH, aufbau, orthogonal)
NORVIK_DIIS_ROUTINE(UPDATERHO_DIIS, aufbau, dispatch)
NORVIK_DIIS_ROUTINE(UPDATERHO_DIIS_GHQR, aufbau, full)
NORVIK_DIIS_ROUTINE(UPDATERHO_DIIS_ORTH, aufbau, orthogonal)
NORVIK_DAMP_ROUTINE(UPDATERHOA_DAMP, atomic, dispatch)
NORVIK_DAMP_ROUTINE(UPDATERHOA_DAMP_GHQR, atomic, full)
NORVIK_DAMP_ROUTINE(UPDATERHOA_DAMP_ORTH, atomic, orthogonal)
NORVIK_DIIS_ROUTINE(UPDATERHOA_DIIS, atomic, dispatch)
NORVIK_DIIS_ROUTINE(UPDATERHOA_DIIS_GHQR, atomic, full)
NORVIK_DIIS_ROUTINE(UPDATERHOA_DIIS_ORTH, atomic, orthogonal)

extern "C" NORVIK_API void ERRORV(const norvik_int* nbasis, const double* F, const double* P,
                                  const double* S, double* E, double* norm2) {
  guarded([&] {
    check_nbasis(*nbasis, "errorv");
    const norvik_int n = *nbasis;
    norvik::linalg::Matrix product(n, n);
    *norm2 = scf::error_matrix(matrix(F, n), matrix(P, n), matrix(S, n), MatrixView(E, n, n, n),
                               product);
  });
}

extern "C" NORVIK_API void HISTORY(const norvik_int* nbasis, const double* M, double* hist) {
  guarded([&] {
    check_nbasis(*nbasis, "history");
    scf::push_history(matrix(M, *nbasis), {hist, scf::kHistorySlots * square(*nbasis)});
  });
}

extern "C" NORVIK_API void MAKEBMAT(const norvik_int* nbasis, const norvik_int* nsub,
                                    const double* errhist, double* B) {
  guarded([&] {
    check_nbasis(*nbasis, "makeBmat");
    const int m = std::clamp<int>(*nsub, 1, scf::kHistorySlots);
    scf::diis_matrix(*nbasis, m, {errhist, 2 * scf::kHistorySlots * square(*nbasis)},
                     MatrixView(B, m, m, m));
  });
}

extern "C" NORVIK_API void DIISSOLVE(const norvik_int* nsub, const double* B, double* coef,
                                     norvik_int* ill) {
  guarded([&] {
    const int m = std::clamp<int>(*nsub, 1, scf::kHistorySlots);
    const bool ok = scf::diis_coefficients(ConstMatrixView(B, m, m, m), {coef, count(m)});
    *ill = ok ? 0 : norvik::linalg::code(norvik::linalg::Status::singular);
  });
}

extern "C" NORVIK_API void REVERSE(const norvik_int* n, double* eig, double* vec) {
  guarded([&] {
    const norvik_int m = std::max<norvik_int>(*n, 0);
    norvik::linalg::reverse_order({eig, count(m)}, MatrixView(vec, m, m, m));
  });
}

// ---- energies and moments ---------------------------------------------------------

extern "C" NORVIK_API void ENERGYEDX(const norvik_int* nbasis, const double* T, const double* V,
                                     const double* G, const double* rho, double* energy) {
  guarded([&] {
    check_nbasis(*nbasis, "energyEDX");
    const std::size_t nn = square(*nbasis);
    *energy =
        scf::electronic_energy(matrix(T, *nbasis), matrix(V, *nbasis), {G, 2 * nn}, {rho, 2 * nn});
  });
}

extern "C" NORVIK_API void DIPOLEMOM(const norvik_int* nbasis, const double* dipints,
                                     const double* rho, double* dipole) {
  guarded([&] {
    check_nbasis(*nbasis, "dipoleMom");
    const std::size_t nn = square(*nbasis);
    const scf::Vec3 mu = scf::electronic_dipole(*nbasis, {dipints, 3 * nn}, {rho, 2 * nn});
    std::copy(mu.begin(), mu.end(), dipole);
  });
}

extern "C" NORVIK_API void NUCLEARREP(const norvik_int* natom, const norvik_int* zat,
                                      const double* pos, double* energy) {
  guarded([&] {
    *energy = scf::nuclear_repulsion({zat, count(*natom)}, {pos, 3 * count(*natom)});
  });
}

extern "C" NORVIK_API void NUCLEAREDM(const norvik_int* natom, const norvik_int* zat,
                                      const double* pos, double* dipole) {
  guarded([&] {
    const scf::Vec3 mu = scf::nuclear_dipole({zat, count(*natom)}, {pos, 3 * count(*natom)});
    std::copy(mu.begin(), mu.end(), dipole);
  });
}

extern "C" NORVIK_API void STOREHF(const norvik_int* nbasis, const double* rho,
                                   const double* orbitals, const double* energy,
                                   const double* dipole, double* rhohf, double* orbitalshf,
                                   double* energyhf, double* dipolehf) {
  guarded([&] {
    const std::size_t nn = square(*nbasis);
    std::copy_n(rho, 2 * nn, rhohf);
    std::copy_n(orbitals, 2 * (nn + count(*nbasis)), orbitalshf);
    *energyhf = *energy;
    std::copy_n(dipole, 3, dipolehf);
  });
}

// ---- start densities ---------------------------------------------------------------

extern "C" NORVIK_API void NORMALIZERHO(const norvik_int* nbasis, const double* S,
                                        const norvik_int* nalpha, const norvik_int* nbeta,
                                        double* rho) {
  guarded([&] {
    check_nbasis(*nbasis, "normalizeRho");
    scf::normalize_density(matrix(S, *nbasis), {*nalpha, *nbeta}, {rho, 2 * square(*nbasis)});
  });
}

extern "C" NORVIK_API void PATCHRHOATOM(const norvik_int* natom, const double* atomrho,
                                        const norvik_int* nbasis, const double* S,
                                        const norvik_int* nalpha, const norvik_int* nbeta,
                                        double* rho) {
  guarded([&] {
    check_nbasis(*nbasis, "patchRhoAtom");
    if (*natom < 1) {
      throw norvik::Error(norvik::fortran::list_directed({"No atom or no electron."}));
    }
    const std::size_t nn = square(*nbasis);
    scf::patch_atomic_densities(matrix(S, *nbasis), {*nalpha, *nbeta}, {atomrho, 2 * nn},
                                {rho, 2 * nn});
  });
}

// ---- SCF drivers ----------------------------------------------------------------------

namespace {

void hf_scf(const DriverCall& call, NORVIK_HF_SCF_ARGS) {
  check_nbasis(*nbasis, "HF_SCF");
  const std::size_t nn = square(*nbasis);
  scf::ScfSystem system;
  system.operators = operators(nbasis, S, T, V, northo, X);
  system.dipints = {dipints, 3 * nn};
  system.context = context(*nbasis, nshell, shelltab, nshpair, shpair, npair, pairlist, pairmap,
                           vdiag, vint, thresh, call.build);
  scf::CycleSettings settings;
  settings.iopt = *iopt;
  settings.isrc = *isrc;
  settings.logfile =
      call.log ? norvik::io::trim_right(text_in(logfile, kFileNameLength)) : std::string_view();
  settings.niter = *niter;
  settings.damp = *damp;
  settings.thr_ene = *thr_ene;
  settings.thr_rms = *thr_rms;
  settings.e_offset = *e_offset;
  settings.dip_offset = {dip_offset[0], dip_offset[1], dip_offset[2]};
  settings.write_log = call.log;
  settings.with_dipole = call.dipole;
  settings.build = call.build;
  settings.damped_occupation = call.occupation;
  const scf::ScfArrays arrays{{G, 2 * nn}, {rho, 2 * nn}, {orbitals, 2 * (nn + count(*nbasis))}};
  const scf::ScfResult r = call.salc ? scf::run_symmetric_scf(system, *call.salc, settings, arrays)
                                     : scf::run_scf(system, settings, arrays);
  *energy = r.energy;
  std::copy(r.dipole.begin(), r.dipole.end(), dipole);
  *de_final = r.de_final;
}

// The SCF settings that an initialiser takes at HF_SCF's positions and reads not.
void unread_settings(const norvik_int*, const double*, const double*, const double*, const double*,
                     const double*) {}

void hf_ini(const InitCall& call, NORVIK_HF_INI_ARGS) {
  unread_settings(niter, damp, thr_ene, thr_rms, e_offset, dip_offset);
  check_nbasis(*nbasis, "HF_Ini");
  const std::size_t nn = square(*nbasis);
  scf::ScfSystem system;
  system.operators = operators(nbasis, S, T, V, northo, X);
  system.dipints = {dipints, 3 * nn};
  system.context = context(*nbasis, nshell, shelltab, nshpair, shpair, npair, pairlist, pairmap,
                           vdiag, vint, thresh, call.build);
  scf::StartSettings start;
  start.kind = call.kind;
  start.mode = *istart;
  start.natom = *natom;
  start.atomic = {
      atomrho, start.kind == scf::StartKind::standard && *istart == 1 && *natom > 9 ? 2 * nn : 0};
  start.counts = counts_of(*nbasis, S, rho);
  start.build = call.build;
  const scf::ScfArrays arrays{{G, 2 * nn}, {rho, 2 * nn}, {orbitals, 2 * (nn + count(*nbasis))}};
  const scf::ScfResult r = call.salc ? scf::initialise_symmetric(system, *call.salc, start, arrays)
                                     : scf::initialise(system, start, arrays);
  *energy = r.energy;
  std::copy(r.dipole.begin(), r.dipole.end(), dipole);
}

}  // namespace

#define NORVIK_HF_SCF_CALL                                                                        \
  iopt, isrc, logfile, niter, damp, thr_ene, thr_rms, e_offset, dip_offset, nbasis, northo, X, S, \
      T, V, dipints, nshell, shelltab, nshpair, shpair, npair, pairlist, pairmap, vdiag, vint,    \
      thresh, G, rho, orbitals, energy, dipole, de_final

#define NORVIK_HF_SCF_ROUTINE(NAME, LOG, DIPOLE, OCCUPATION, BUILD)             \
  extern "C" NORVIK_API void NAME(NORVIK_HF_SCF_ARGS) {                         \
    guarded([&] {                                                               \
      hf_scf({LOG, DIPOLE, scf::Occupation::OCCUPATION, scf::FockBuild::BUILD}, \
             NORVIK_HF_SCF_CALL);                                               \
    });                                                                         \
  }

NORVIK_HF_SCF_ROUTINE(HF_SCF, true, true, aufbau, stored)
NORVIK_HF_SCF_ROUTINE(HF_SCF_MOLE, true, true, aufbau, stored)
NORVIK_HF_SCF_ROUTINE(HF_SCF_ATOM, true, true, atomic, stored)
NORVIK_HF_SCF_ROUTINE(HF_SCF_WOLOG, false, true, aufbau, stored)
NORVIK_HF_SCF_ROUTINE(HF_SCF_PART, false, false, aufbau, stored)
NORVIK_HF_SCF_ROUTINE(HF_SCF_DIRECT, true, true, aufbau, direct)
NORVIK_HF_SCF_ROUTINE(HF_SCF_MOLE_DIRECT, true, true, aufbau, direct)
NORVIK_HF_SCF_ROUTINE(HF_SCF_ATOM_DIRECT, true, true, atomic, direct)
NORVIK_HF_SCF_ROUTINE(HF_SCF_WOLOG_DIRECT, false, true, aufbau, direct)
NORVIK_HF_SCF_ROUTINE(HF_SCF_PART_DIRECT, false, false, aufbau, direct)

#define NORVIK_HF_INI_CALL                                                                        \
  istart, natom, atomrho, niter, damp, thr_ene, thr_rms, e_offset, dip_offset, nbasis, northo, X, \
      S, T, V, dipints, nshell, shelltab, nshpair, shpair, npair, pairlist, pairmap, vdiag, vint, \
      thresh, G, rho, orbitals, energy, dipole

#define NORVIK_HF_INI_ROUTINE(NAME, KIND, BUILD)                                                 \
  extern "C" NORVIK_API void NAME(NORVIK_HF_INI_ARGS) {                                          \
    guarded([&] { hf_ini({scf::StartKind::KIND, scf::FockBuild::BUILD}, NORVIK_HF_INI_CALL); }); \
  }

NORVIK_HF_INI_ROUTINE(HF_INI, standard, stored)
NORVIK_HF_INI_ROUTINE(HF_INI_MOLE, standard, stored)
NORVIK_HF_INI_ROUTINE(HF_INI_ATOM, free_atom, stored)
NORVIK_HF_INI_ROUTINE(HF_INI_NOINT, bare, stored)
NORVIK_HF_INI_ROUTINE(HF_INI_DIRECT, standard, direct)
NORVIK_HF_INI_ROUTINE(HF_INI_MOLE_DIRECT, standard, direct)
NORVIK_HF_INI_ROUTINE(HF_INI_ATOM_DIRECT, free_atom, direct)
NORVIK_HF_INI_ROUTINE(HF_INI_NOINT_DIRECT, bare, direct)

// ---- whole calculations -------------------------------------------------------------------

extern "C" NORVIK_API void ATOMS(const char* basis, const norvik_int* natom, const norvik_int* zat,
                                 const norvik_int* zel, const norvik_int* niter, const double* damp,
                                 const double* thr_ene, const double* thr_rms,
                                 const double* ramlimit, const double* thr_orth,
                                 const norvik_int* nbasis, double* eatom, double* atomrho) {
  guarded([&] {
    const std::size_t na = count(*natom);
    const std::string_view name = text_in(basis, kLongKeywordLength);
    const scf::MoleculeView molecule{{zat, na}, {zel, na}, {}};
    const int n = scf::basis_size(name, molecule.elements);
    if (n != *nbasis) {
      throw norvik::Error(norvik::fortran::list_directed(
          {"Wrong nbasis in Atoms.", std::int64_t{*nbasis}, std::int64_t{n}}));
    }
    scf::JobControl job;
    job.basis = name;
    job.memory_gb = *ramlimit;
    job.orthogonality = *thr_orth;
    scf::ScfControl control{*niter, *damp, *thr_ene, *thr_rms};
    scf::free_atoms(job, control, molecule, {eatom, na}, {atomrho, 2 * square(n)});
  });
}

extern "C" NORVIK_API void HF_1POINT(
    const char* basis, const norvik_int* natom, const norvik_int* zat, const norvik_int* zel,
    const double* pos, const norvik_int* nalpha, const norvik_int* nbeta, const norvik_int* niter,
    const double* damp, const double* thr_ene, const double* thr_rms, const double* ramlimit,
    const double* thr_screen, const double* thr_orth, const norvik_int* istart,
    const double* atomrho, const norvik_int* nbasis, double* rho, double* orbitals, double* energy,
    double* dipole, double* de_final, norvik_int* northo, norvik_int* incore) {
  guarded([&] {
    const std::size_t na = count(*natom);
    const std::string_view name = text_in(basis, kLongKeywordLength);
    const scf::MoleculeView molecule{{zat, na}, {zel, na}, {pos, 3 * na}};
    const int n = scf::basis_size(name, molecule.elements);
    if (n != *nbasis) {
      throw norvik::Error(norvik::fortran::list_directed(
          {"Wrong nbasis in HF_1point.", std::int64_t{*nbasis}, std::int64_t{n}}));
    }
    const std::size_t nn = square(n);
    scf::JobControl job;
    job.basis = name;
    job.memory_gb = *ramlimit;
    job.screening = *thr_screen;
    job.orthogonality = *thr_orth;
    const scf::ScfControl control{*niter, *damp, *thr_ene, *thr_rms};
    scf::SinglePointStart start;
    start.mode = *istart;
    start.atomic = {atomrho, *istart == 1 && *natom > 9 ? 2 * nn : 0};
    const scf::SinglePointResult r =
        scf::single_point(job, control, molecule, {*nalpha, *nbeta}, start, {rho, 2 * nn},
                          {orbitals, 2 * (nn + static_cast<std::size_t>(n))});
    *energy = r.energy;
    std::copy(r.dipole.begin(), r.dipole.end(), dipole);
    *de_final = r.de_final;
    *northo = r.northo;
    *incore = r.in_core ? 1 : 0;
  });
}

// ---- symmetry-adapted SCF of C2 and B2 ------------------------------------------------

extern "C" NORVIK_API void MAKESALC(const char* basis, const norvik_int* natom,
                                    const norvik_int* zat, const double* pos,
                                    const norvik_int* nbasis, double* salc, norvik_int* salcblock) {
  guarded([&] {
    if (*natom != 2 || zat[0] != zat[1]) {
      throw norvik::Error(
          norvik::fortran::list_directed({"Not a homonuclear diatomic centred on the z axis."}));
    }
    const std::vector<int> z{zat[0], zat[1]};
    const norvik::basis::BasisSet set =
        norvik::basis::make_basis(text_in(basis, kLongKeywordLength), z);
    if (set.nbasis() != *nbasis) {
      throw norvik::Error(norvik::fortran::list_directed(
          {"Wrong nbasis in makesalc.", std::int64_t{*nbasis}, std::int64_t{set.nbasis()}}));
    }
    const scf::Salc s = scf::make_salc(set, {pos, 6});
    std::copy(s.u.begin(), s.u.end(), salc);
    for (int b = 0; b <= scf::kIrreps; ++b) salcblock[b] = s.first[static_cast<std::size_t>(b)] + 1;
  });
}

namespace {

// The combinations handed back by MAKESALC.
scf::Salc salc_in(norvik_int n, const double* salc, const norvik_int* salcblock) {
  scf::Salc s;
  s.n = n;
  s.u.assign(salc, salc + square(n));
  bool ok = salcblock[0] == 1 && salcblock[scf::kIrreps] == n + 1;
  for (int b = 0; b <= scf::kIrreps; ++b) {
    if (b > 0 && salcblock[b] < salcblock[b - 1]) ok = false;
    s.first[static_cast<std::size_t>(b)] = salcblock[b] - 1;
  }
  if (!ok) {
    throw norvik::Error(norvik::fortran::list_directed(
        {"Invalid symmetry blocks in updaterho.", std::int64_t{salcblock[0]},
         std::int64_t{salcblock[scf::kIrreps]}, std::int64_t{n}}));
  }
  return s;
}

void symmetric_update(bool diis, const norvik_int* nbasis, const double* S, const double* T,
                      const double* V, const double* G, const norvik_int* northo, const double* X,
                      double damp, int nsub, double* fockhist, double* errhist, double* scratch,
                      double* rho, double* orbitals, double* rmsd, double* comm2,
                      const double* salc, const norvik_int* salcblock) {
  check_nbasis(*nbasis, "updaterho");
  if (*northo > *nbasis) {
    throw norvik::Error(
        norvik::fortran::list_directed({"Invalid orthogonalization.", std::int64_t{*northo}}));
  }
  const scf::Operators op = operators(nbasis, S, T, V, northo, X);
  const scf::Salc s = salc_in(*nbasis, salc, salcblock);
  const scf::StepArrays arrays = step_arrays(*nbasis, G, fockhist, errhist, scratch, rho, orbitals);
  scf::Workspace work(*nbasis);
  const scf::StepResult r = diis ? scf::symmetric_diis_step(op, s, nsub, arrays, work)
                                 : scf::symmetric_damped_step(op, s, damp, arrays, work);
  *rmsd = r.rmsd;
  *comm2 = r.comm2;
}

}  // namespace

#define NORVIK_SYM_DAMP_ROUTINE(NAME)                                                             \
  extern "C" NORVIK_API void NAME(NORVIK_UPDATE_ARGS(const double* damp), NORVIK_SALC_ARGS) {     \
    guarded([&] {                                                                                 \
      symmetric_update(false, NORVIK_UPDATE_CALL, *damp, 0, NORVIK_UPDATE_TAIL, salc, salcblock); \
    });                                                                                           \
  }
#define NORVIK_SYM_DIIS_ROUTINE(NAME)                                                              \
  extern "C" NORVIK_API void NAME(NORVIK_UPDATE_ARGS(const norvik_int* nsub), NORVIK_SALC_ARGS) {  \
    guarded([&] {                                                                                  \
      symmetric_update(true, NORVIK_UPDATE_CALL, 1.0, *nsub, NORVIK_UPDATE_TAIL, salc, salcblock); \
    });                                                                                            \
  }

NORVIK_SYM_DAMP_ROUTINE(UPDATERHO_C2_DAMP)
NORVIK_SYM_DAMP_ROUTINE(UPDATERHO_C2_DAMP_GHQR)
NORVIK_SYM_DIIS_ROUTINE(UPDATERHO_C2_DIIS)
NORVIK_SYM_DIIS_ROUTINE(UPDATERHO_C2_DIIS_GHQR)
NORVIK_SYM_DAMP_ROUTINE(UPDATERHO_B2_DAMP)
NORVIK_SYM_DAMP_ROUTINE(UPDATERHO_B2_DAMP_GHQR)
NORVIK_SYM_DIIS_ROUTINE(UPDATERHO_B2_DIIS)
NORVIK_SYM_DIIS_ROUTINE(UPDATERHO_B2_DIIS_GHQR)

namespace {

void hf_scf_symmetric(NORVIK_HF_SCF_ARGS, NORVIK_SALC_ARGS) {
  check_nbasis(*nbasis, "HF_SCF");
  const scf::Salc s = salc_in(*nbasis, salc, salcblock);
  DriverCall call;
  call.salc = &s;
  hf_scf(call, NORVIK_HF_SCF_CALL);
}

void hf_ini_symmetric(NORVIK_HF_INI_ARGS, NORVIK_SALC_ARGS) {
  check_nbasis(*nbasis, "HF_Ini");
  const scf::Salc s = salc_in(*nbasis, salc, salcblock);
  InitCall call;
  call.salc = &s;
  hf_ini(call, NORVIK_HF_INI_CALL);
}

}  // namespace

extern "C" NORVIK_API void HF_SCF_C2(NORVIK_HF_SCF_ARGS, NORVIK_SALC_ARGS) {
  guarded([&] { hf_scf_symmetric(NORVIK_HF_SCF_CALL, salc, salcblock); });
}
extern "C" NORVIK_API void HF_SCF_B2(NORVIK_HF_SCF_ARGS, NORVIK_SALC_ARGS) {
  guarded([&] { hf_scf_symmetric(NORVIK_HF_SCF_CALL, salc, salcblock); });
}
extern "C" NORVIK_API void HF_INI_C2(NORVIK_HF_INI_ARGS, NORVIK_SALC_ARGS) {
  guarded([&] { hf_ini_symmetric(NORVIK_HF_INI_CALL, salc, salcblock); });
}
extern "C" NORVIK_API void HF_INI_B2(NORVIK_HF_INI_ARGS, NORVIK_SALC_ARGS) {
  guarded([&] { hf_ini_symmetric(NORVIK_HF_INI_CALL, salc, salcblock); });
}

#define NORVIK_FIND_ROUTINE(NAME, BASIS, SHELL)                                            \
  extern "C" NORVIK_API void NAME(const norvik_int* z, norvik_int* index) {                \
    guarded([&] { *index = scf::ns_function_index(BASIS, static_cast<int>(*z), SHELL); }); \
  }

NORVIK_FIND_ROUTINE(FIND4S_STO3G, "STO-3G", 4)
NORVIK_FIND_ROUTINE(FIND4S_631G, "6-31G", 4)
NORVIK_FIND_ROUTINE(FIND5S_STO3G, "STO-3G", 5)
NORVIK_FIND_ROUTINE(FIND5S_321G, "3-21G", 5)
NORVIK_FIND_ROUTINE(FIND5S_321GC, "3-21GC", 5)
