// Exported routines of the density update: the damped and DIIS steps of every
// family (plain, free-atom, symmetry-adapted C2/B2) and their shared pieces.
#include <algorithm>

#include "abi/scf_support.h"
#include "common/fortran_format.h"
#include "linalg/sort.h"
#include "linalg/status.h"
#include "norvik/scf.h"
#include "scf/density_update.h"
#include "scf/symmetry_update.h"

namespace {

namespace abi = norvik::abi;
namespace scf = norvik::scf;
using abi::const_matrix;
using abi::count;
using abi::guarded;
using abi::square;
using norvik::linalg::ConstMatrixView;
using norvik::linalg::MatrixView;

// One density step on the host's arrays with the given rule.
void update(const scf::OrbitalRule& rule, scf::Solver solver, const scf::StepControl& control,
            const norvik_int* nbasis, const double* S, const double* T, const double* V,
            const double* G, const norvik_int* northo, const double* X, double* fockhist,
            double* errhist, double* scratch, double* rho, double* orbitals, double* rmsd,
            double* comm2) {
  abi::check_nbasis(*nbasis, "updaterho");
  scf::Operators op = abi::operators(nbasis, S, T, V, northo, X);
  op.solver = solver;
  scf::Workspace work(*nbasis);
  const scf::StepResult r = scf::density_step(
      op, rule, control, abi::step_arrays(*nbasis, G, fockhist, errhist, scratch, rho, orbitals),
      work);
  *rmsd = r.rmsd;
  *comm2 = r.comm2;
}

// The symmetry-adapted members: the plain update's checks and the block rule.
void symmetric_update(const scf::StepControl& control, const norvik_int* nbasis, const double* S,
                      const double* T, const double* V, const double* G, const norvik_int* northo,
                      const double* X, double* fockhist, double* errhist, double* scratch,
                      double* rho, double* orbitals, double* rmsd, double* comm2,
                      const double* salc, const norvik_int* salcblock) {
  abi::check_nbasis(*nbasis, "updaterho");
  if (*northo > *nbasis) {
    throw norvik::Error(
        norvik::fortran::list_directed({"Invalid orthogonalization.", std::int64_t{*northo}}));
  }
  const scf::Salc s = abi::salc_in(*nbasis, salc, salcblock);
  update(scf::SymmetryBlockRule(s), scf::Solver::full, control, nbasis, S, T, V, G, northo, X,
         fockhist, errhist, scratch, rho, orbitals, rmsd, comm2);
}

}  // namespace

#define NORVIK_UPDATE_CALL nbasis, S, T, V, G, northo, X
#define NORVIK_UPDATE_TAIL fockhist, errhist, scratch, rho, orbitals, rmsd, comm2

// The step of a _DAMP member (its control argument the damping factor) and of
// a _DIIS member (the DIIS subspace).
#define NORVIK_DAMP_CONTROL(ARG) \
  scf::StepControl {             \
    false, *(ARG), 0             \
  }
#define NORVIK_DIIS_CONTROL(ARG) \
  scf::StepControl {             \
    true, 1.0, *(ARG)            \
  }

#define NORVIK_STEP_ROUTINE(NAME, ARG, CONTROL, OCCUPATION, SOLVER)                         \
  extern "C" NORVIK_API void NAME(NORVIK_UPDATE_ARGS(ARG)) {                                \
    guarded([&] {                                                                           \
      const scf::AufbauRule rule(scf::Occupation::OCCUPATION, scf::Occupation::OCCUPATION); \
      update(rule, scf::Solver::SOLVER, CONTROL, NORVIK_UPDATE_CALL, NORVIK_UPDATE_TAIL);   \
    });                                                                                     \
  }
#define NORVIK_DAMP_ROUTINE(NAME, OCCUPATION, SOLVER) \
  NORVIK_STEP_ROUTINE(NAME, const double* damp, NORVIK_DAMP_CONTROL(damp), OCCUPATION, SOLVER)
#define NORVIK_DIIS_ROUTINE(NAME, OCCUPATION, SOLVER) \
  NORVIK_STEP_ROUTINE(NAME, const norvik_int* nsub, NORVIK_DIIS_CONTROL(nsub), OCCUPATION, SOLVER)

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

#define NORVIK_SYM_STEP_ROUTINE(NAME, ARG, CONTROL)                                       \
  extern "C" NORVIK_API void NAME(NORVIK_UPDATE_ARGS(ARG), NORVIK_SALC_ARGS) {            \
    guarded([&] {                                                                         \
      symmetric_update(CONTROL, NORVIK_UPDATE_CALL, NORVIK_UPDATE_TAIL, salc, salcblock); \
    });                                                                                   \
  }
#define NORVIK_SYM_DAMP_ROUTINE(NAME) \
  NORVIK_SYM_STEP_ROUTINE(NAME, const double* damp, NORVIK_DAMP_CONTROL(damp))
#define NORVIK_SYM_DIIS_ROUTINE(NAME) \
  NORVIK_SYM_STEP_ROUTINE(NAME, const norvik_int* nsub, NORVIK_DIIS_CONTROL(nsub))

NORVIK_SYM_DAMP_ROUTINE(UPDATERHO_C2_DAMP)
NORVIK_SYM_DAMP_ROUTINE(UPDATERHO_C2_DAMP_GHQR)
NORVIK_SYM_DIIS_ROUTINE(UPDATERHO_C2_DIIS)
NORVIK_SYM_DIIS_ROUTINE(UPDATERHO_C2_DIIS_GHQR)
NORVIK_SYM_DAMP_ROUTINE(UPDATERHO_B2_DAMP)
NORVIK_SYM_DAMP_ROUTINE(UPDATERHO_B2_DAMP_GHQR)
NORVIK_SYM_DIIS_ROUTINE(UPDATERHO_B2_DIIS)
NORVIK_SYM_DIIS_ROUTINE(UPDATERHO_B2_DIIS_GHQR)

extern "C" NORVIK_API void ERRORV(const norvik_int* nbasis, const double* F, const double* P,
                                  const double* S, double* E, double* norm2) {
  guarded([&] {
    abi::check_nbasis(*nbasis, "errorv");
    const norvik_int n = *nbasis;
    norvik::linalg::Matrix product(n, n);
    *norm2 = scf::error_matrix(const_matrix(F, n), const_matrix(P, n), const_matrix(S, n),
                               abi::matrix_view(E, n), product);
  });
}

extern "C" NORVIK_API void HISTORY(const norvik_int* nbasis, const double* M, double* hist) {
  guarded([&] {
    abi::check_nbasis(*nbasis, "history");
    scf::push_history(const_matrix(M, *nbasis), {hist, scf::kHistorySlots * square(*nbasis)});
  });
}

extern "C" NORVIK_API void MAKEBMAT(const norvik_int* nbasis, const norvik_int* nsub,
                                    const double* errhist, double* B) {
  guarded([&] {
    abi::check_nbasis(*nbasis, "makeBmat");
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
