// The optimisation drivers: the optimiser engines of src/geometry over the
// surface of the SCF code, with the report sections, run log, trajectory and
// progress lines of a job.
#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "abi/abi_support.h"
#include "abi/convert.h"
#include "abi/scf_support.h"
#include "common/constants.h"
#include "common/error.h"
#include "common/fortran_format.h"
#include "common/text_file.h"
#include "geometry/optimizer.h"
#include "geometry/quasi_newton.h"
#include "geometry/scf_surface.h"
#include "geometry/templates.h"
#include "linalg/memory_estimates.h"
#include "norvik/optimizer.h"
#include "report/geometry_sections.h"
#include "report/scf_sections.h"
#include "report/sections.h"
#include "scf/properties.h"

// The reserved positions of the drivers' argument lists are never read.
#if defined(__GNUC__)
#pragma GCC diagnostic ignored "-Wunused-parameter"
#endif

namespace {

using namespace norvik;
using abi::count;
using abi::kFileNameLength;
using abi::kLongKeywordLength;
using abi::text_in;

enum class Driver { cg, steepest, mole, quasi_newton };

// The arguments that the drivers read and write, whatever their positions.
struct OptimizeArgs {
  const char *method, *molname, *report, *logfile, *basis;
  const norvik_int *natom, *nbasis, *nalpha, *nbeta, *zat, *zel, *niter;
  const double *damp, *thr_ene, *thr_rms, *thr_screen, *thr_orth, *grid_radius;
  const norvik_int *grid_level, *start;
  const double* atomrho;
  const char* xyzfile;
  norvik_int* ncycle;
  norvik_bool* converged;
  const norvik_int *maxcycle, *maxpoint;
  const norvik_bool* with_gradient;
  norvik_int *npoint, *ngrad;
  double *S, *rho, *orbitals, *dipole, *de_final;
  norvik_int *northo, *incore;
  double* xc;
  const double *step, *ramlimit;
  norvik_int* scf_cycles;
  norvik_bool* scf_converged;
  double *rmsd, *commutator;
  const double *thr_grad, *max_step;
  double *pos, *grad, *enuc, *nucdip, *energy;
};

void timestamp(const char* text) {
  std::string line = text;
  line.resize(abi::kTimestampLength, ' ');
  io::timestamp(line);
}

void run(Driver driver, const char* routine, const OptimizeArgs& a) {
  const std::size_t na = count(*a.natom);
  const std::string_view basis = text_in(a.basis, kLongKeywordLength);
  const std::span<const int> zat(a.zat, na), zel(a.zel, na);
  const int n = scf::basis_size(basis, zel);
  if (n != *a.nbasis) {
    throw Error(fortran::list_directed({std::string("Wrong nbasis in ") + routine + ".",
                                        std::int64_t{*a.nbasis}, std::int64_t{n}}));
  }
  const std::size_t nn = abi::square(n);
  const std::optional<scf::KohnShamStage> kohn_sham = abi::kohn_sham_stage(
      a.method, a.niter, a.damp, a.thr_ene, a.thr_rms, a.grid_radius, a.grid_level, routine);
  scf::JobControl job;
  job.basis = basis;
  job.memory_gb = *a.ramlimit;
  job.screening = *a.thr_screen;
  job.orthogonality = *a.thr_orth;
  const scf::ScfControl control{a.niter[0], a.damp[0], a.thr_ene[0], a.thr_rms[0]};
  scf::PointSettings first;
  first.counts = {*a.nalpha, *a.nbeta};
  first.kohn_sham = kohn_sham;
  first.start = *a.start == 1   ? scf::StartPolicy::free_atoms
                : *a.start == 2 ? scf::StartPolicy::supplied
                                : scf::StartPolicy::core_hamiltonian;
  if (first.start == scf::StartPolicy::free_atoms) first.atomic = {a.atomrho, 2 * nn};

  const std::string report(io::trim_right(text_in(a.report, kFileNameLength)));
  const std::string logfile(io::trim_right(text_in(a.logfile, kFileNameLength)));
  const std::string xyzfile(io::trim_right(text_in(a.xyzfile, kFileNameLength)));
  const std::string molname(text_in(a.molname, kLongKeywordLength));
  const double thr_orth = *a.thr_orth;
  const bool ks = kohn_sham.has_value();
  const bool mp2 = io::trim_right(text_in(a.method, abi::kKeywordLength)) == "MP2";

  geometry::SurfaceHooks hooks;
  hooks.point = [&](int cycle) {
    scf::PointHooks h;
    h.prepared = [&, cycle](const scf::PreparedSystem& p) {
      io::append_lines(report, report::dependence(p.n, p.northo, thr_orth));
      if (cycle == 1) {
        const int npair = p.context.npair;
        io::append_lines(report,
                         report::in_core(p.in_core, p.n, static_cast<int>(abi::packed(p.n)), npair,
                                         memory::integral_store_gb(npair), p.memory_gb));
        // An MP2 job whose integrals (the RAMMP2 rule) do not fit the limit
        // stops here, with the note in the report.
        if (mp2 && !memory::mp2_fits(p.n, *a.ramlimit)) {
          io::append_lines(report, report::insufficient_ram_mp2(memory::mp2_gb(p.n)));
          throw Error(
              fortran::list_directed({std::string("Insufficient RAM for MP2 in ") + routine + ".",
                                      memory::mp2_gb(p.n), *a.ramlimit}));
        }
        timestamp("SCF iteration for the molecule start.");
      }
    };
    h.cycle = abi::run_log(logfile, cycle, 0);
    return h;
  };
  hooks.after_point = [&](int cycle, const scf::SinglePointResult&) {
    if (!logfile.empty()) io::append_lines(logfile, {std::string()});
    if (cycle == 1) timestamp("SCF iteration for the molecule ok.");
  };
  // The accepted point of a cycle is the surface's current one.
  const geometry::ScfSurface* self = nullptr;
  hooks.report_cycle = [&](const geometry::CycleReport& r) {
    io::append_lines(report, report::positions_of_cycle(r.x, zel, r.cycle));
    io::append_lines(report, r.largest_gradient_only ? report::largest_gradient(r.g, zel)
                                                     : report::gradient(r.g, zel));
    io::append_lines(report, report::energy_scf(r.energy, self->current().de_final));
    if (!xyzfile.empty()) io::append_lines(xyzfile, report::xyz_frame(r.x, zel, r.cycle, r.energy));
  };
  hooks.progress = [](std::string_view text) { timestamp(std::string(text).c_str()); };
  if (driver == Driver::mole || driver == Driver::quasi_newton) {
    hooks.reimpose = [zat](std::span<double> x) { geometry::reput_molecule(zat, x); };
  } else {
    hooks.reimpose = [zat, molname](std::span<double> x) { geometry::reput(molname, zat, x); };
  }

  geometry::ScfSurface surface(job, control, zat, zel, first, {a.rho, 2 * nn},
                               {a.orbitals, 2 * (nn + count(n))}, std::move(hooks));
  self = &surface;
  const std::span<double> x(a.pos, 3 * na), g(a.grad, 3 * na);
  geometry::OptimizerResult result;
  if (driver == Driver::quasi_newton) {
    geometry::QuasiNewtonSettings q;
    q.max_cycles = *a.maxcycle;
    q.elements = zel;
    q.kohn_sham = ks;
    const double unit = constants::kHartreeEv / constants::kBohrAngstrom;  // eV/Å per hartree/bohr
    if (*a.thr_grad > 0.0) {
      const double scale = *a.thr_grad / unit / q.criteria.max_gradient;
      q.criteria.max_gradient *= scale;
      q.criteria.rms_gradient *= scale;
    }
    if (*a.max_step > 0.0) q.trust_radius = *a.max_step / constants::kBohrAngstrom;
    result = geometry::optimize_quasi_newton(surface, q, x, g);
  } else {
    geometry::OptimizerSettings o;
    o.kind = driver == Driver::cg     ? geometry::DriverKind::cg
             : driver == Driver::mole ? geometry::DriverKind::cg_mole
                                      : geometry::DriverKind::steepest;
    o.max_cycles = *a.maxcycle;
    o.max_points = *a.maxpoint;
    o.with_gradient = *a.with_gradient != 0;
    o.base_step = *a.step;
    o.kohn_sham = ks;
    result = geometry::optimize(surface, o, x, g);
  }

  const scf::SinglePointResult& r = surface.current();
  *a.ncycle = result.cycles;
  *a.converged = result.converged ? 1 : 0;
  *a.npoint = result.points;
  *a.ngrad = result.gradients;
  std::copy(surface.overlap().begin(), surface.overlap().end(), a.S);
  std::copy(r.dipole.begin(), r.dipole.end(), a.dipole);
  *a.de_final = r.de_final;
  *a.northo = r.northo;
  *a.incore = r.in_core ? 1 : 0;
  std::copy(r.xc_energy.begin(), r.xc_energy.end(), a.xc);
  a.xc[3] = r.grid_electrons[2];
  *a.scf_cycles = r.cycles;
  *a.scf_converged = r.converged ? 1 : 0;
  *a.rmsd = r.rmsd;
  *a.commutator = std::sqrt(r.comm2) / constants::kHartreeEvLog;
  *a.enuc = r.nuclear;
  const scf::Vec3 mu = scf::nuclear_dipole(zat, x);
  std::copy(mu.begin(), mu.end(), a.nucdip);
  a.energy[0] = r.electronic;
  a.energy[1] = r.nuclear;
  a.energy[2] = r.energy;
}

OptimizeArgs args_of(const char* method, const char* molname, const char* report,
                     const char* logfile, const char* basis, const norvik_int* natom,
                     const norvik_int* nbasis, const norvik_int* nalpha, const norvik_int* nbeta,
                     const norvik_int* zat, const norvik_int* zel, const norvik_int* niter,
                     const double* damp, const double* thr_ene, const double* thr_rms,
                     const double* thr_screen, const double* thr_orth, const double* grid_radius,
                     const norvik_int* grid_level, const norvik_int* start, const double* atomrho,
                     const char* xyzfile, norvik_int* ncycle, norvik_bool* converged,
                     const norvik_int* maxcycle, const norvik_int* maxpoint,
                     const norvik_bool* with_gradient, norvik_int* npoint, norvik_int* ngrad,
                     double* S, double* rho, double* orbitals, double* dipole, double* de_final,
                     norvik_int* northo, norvik_int* incore, double* xc, const double* step,
                     const double* ramlimit, norvik_int* scf_cycles, norvik_bool* scf_converged,
                     double* rmsd, double* commutator, const double* thr_grad,
                     const double* max_step, double* pos, double* grad, double* enuc,
                     double* nucdip, double* energy) {
  return {method,     molname,    report,    logfile,     basis,      natom,         nbasis,
          nalpha,     nbeta,      zat,       zel,         niter,      damp,          thr_ene,
          thr_rms,    thr_screen, thr_orth,  grid_radius, grid_level, start,         atomrho,
          xyzfile,    ncycle,     converged, maxcycle,    maxpoint,   with_gradient, npoint,
          ngrad,      S,          rho,       orbitals,    dipole,     de_final,      northo,
          incore,     xc,         step,      ramlimit,    scf_cycles, scf_converged, rmsd,
          commutator, thr_grad,   max_step,  pos,         grad,       enuc,          nucdip,
          energy};
}

}  // namespace

#define NORVIK_OPTIMIZE_PASS                                                                      \
  args_of(method, molname, report, logfile, basis, natom, nbasis, nalpha, nbeta, zat, zel, niter, \
          damp, thr_ene, thr_rms, thr_screen, thr_orth, grid_radius, grid_level, start, atomrho,  \
          xyzfile, ncycle, converged, maxcycle, maxpoint, with_gradient, npoint, ngrad, S, rho,   \
          orbitals, dipole, de_final, northo, incore, xc, step, ramlimit, scf_cycles,             \
          scf_converged, rmsd, commutator, thr_grad, max_step, pos, grad, enuc, nucdip, energy)

extern "C" {

NORVIK_API void OPTIMIZE(NORVIK_OPTIMIZE_ARGS) {
  abi::guarded([&] { run(Driver::cg, "Optimize", NORVIK_OPTIMIZE_PASS); });
}

NORVIK_API void OPTIMIZE_STEEPEST(NORVIK_OPTIMIZE_ARGS) {
  abi::guarded([&] { run(Driver::steepest, "Optimize_steepest", NORVIK_OPTIMIZE_PASS); });
}

NORVIK_API void OPTIMIZE_C2(NORVIK_OPTIMIZE_ARGS) {
  abi::guarded([&] { run(Driver::steepest, "Optimize_C2", NORVIK_OPTIMIZE_PASS); });
}

NORVIK_API void OPTIMIZE_B2(NORVIK_OPTIMIZE_ARGS) {
  abi::guarded([&] { run(Driver::steepest, "Optimize_B2", NORVIK_OPTIMIZE_PASS); });
}

NORVIK_API void OPTIMIZE_QN(NORVIK_OPTIMIZE_ARGS) {
  abi::guarded([&] { run(Driver::quasi_newton, "Optimize_QN", NORVIK_OPTIMIZE_PASS); });
}

NORVIK_API void OPTIMIZE_MOLE(NORVIK_OPTIMIZE_MOLE_ARGS) {
  abi::guarded([&] { run(Driver::mole, "Optimize_mole", NORVIK_OPTIMIZE_PASS); });
}

}  // extern "C"
