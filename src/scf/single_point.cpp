#include "scf/single_point.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <vector>

#include "basis/families.h"
#include "basis/library.h"
#include "common/constants.h"
#include "common/error.h"
#include "common/fortran_format.h"
#include "dft/grid/molecular_grid.h"
#include "dft/xc/basis_values.h"
#include "integrals/one/one_electron_matrices.h"
#include "integrals/two/two_electron.h"
#include "linalg/memory_estimates.h"
#include "linalg/orthog_basis.h"
#include "scf/hf_driver.h"

namespace norvik::scf {

namespace {

using linalg::square;

bool is_sto3g(std::string_view name) {
  const auto parsed = basis::find_basis_name(name);
  return parsed && parsed->family == basis::Family::kSto3g;
}

}  // namespace

ScfSystem PreparedSystem::system() const {
  ScfSystem sys;
  sys.operators.nbasis = n;
  sys.operators.northo = northo;
  sys.operators.s = {s.data(), n, n, n};
  sys.operators.t = {t.data(), n, n, n};
  sys.operators.v = {v.data(), n, n, n};
  sys.operators.x = {x.data(), n, n, n};
  sys.dipints = dip;
  sys.build = build();
  sys.context = context.view();
  return sys;
}

PreparedSystem prepare_system(const basis::BasisSet& basis,
                              std::span<const double> positions_angstrom,
                              std::span<const int> charges, const JobControl& job) {
  PreparedSystem p;
  p.n = basis.nbasis();
  const std::size_t nn = square(p.n);
  p.s.resize(nn);
  p.t.resize(nn);
  p.v.resize(nn);
  p.dip.resize(3 * nn);
  p.x.resize(nn);

  const std::size_t natom = charges.size();
  std::vector<integrals::one::Vec3> bohr(natom);
  std::vector<std::array<double, 3>> centres(natom);
  std::vector<double> q(natom);
  for (std::size_t a = 0; a < natom; ++a) {
    for (std::size_t k = 0; k < 3; ++k) {
      bohr[a][k] = positions_angstrom[3 * a + k] / constants::kBohrAngstrom;
      centres[a][k] = bohr[a][k];
    }
    q[a] = charges[a];
  }
  integrals::one::OneElectronMatrices out;
  out.overlap = {p.s.data(), p.n};
  out.kinetic = {p.t.data(), p.n};
  out.potential = {p.v.data(), p.n};
  for (std::size_t k = 0; k < 3; ++k) out.position[k] = {p.dip.data() + k * nn, p.n};
  integrals::one::build_one_electron_matrices(basis, bohr, q, out,
                                              {constants::kHartreeEv, constants::kBohrAngstrom});

  p.northo =
      linalg::orthogonalize_basis(linalg::ConstMatrixView(p.s.data(), p.n, p.n, p.n),
                                  job.orthogonality, linalg::MatrixView(p.x.data(), p.n, p.n, p.n));

  p.context = integrals::two::prepare(basis, centres, false, job.screening);
  p.memory_gb = job.memory_gb;
  p.in_core = !job.direct && memory::store_fits(p.context.npair, job.memory_gb);
  if (p.in_core) {
    p.context.vint.resize(static_cast<std::size_t>(integrals::two::packed_size(p.context.npair)));
    integrals::two::fill_store(p.context.view(), p.context.vint);
  }
  return p;
}

int basis_size(std::string_view basis, std::span<const int> elements) {
  int n = 0;
  for (int z : elements) n += basis::shell_layout(basis, z).nbasis;
  return n;
}

void free_atoms(const JobControl& job, const ScfControl& scf, const MoleculeView& molecule,
                std::span<double> energies, std::span<double> atomic,
                const std::optional<KohnShamStage>& kohn_sham) {
  const std::size_t natom = molecule.elements.size();
  const int n = basis_size(job.basis, molecule.elements);
  const std::size_t nn = square(n);
  std::fill_n(energies.begin(), natom, 0.0);
  std::fill_n(atomic.begin(), 2 * nn, 0.0);

  // Function offsets of the atoms in the molecule's basis.
  std::vector<int> first(natom + 1, 0);
  for (std::size_t a = 0; a < natom; ++a) {
    first[a + 1] = first[a] + basis::shell_layout(job.basis, molecule.elements[a]).nbasis;
  }
  const std::vector<double> origin(3, 0.0);
  std::vector<int> done;
  for (std::size_t a = 0; a < natom; ++a) {
    if (molecule.charges[a] == 0) continue;
    const int z = molecule.elements[a];
    if (std::find(done.begin(), done.end(), z) != done.end()) continue;
    done.push_back(z);

    const std::array<int, 1> zs{z};
    const basis::BasisSet basis =
        is_sto3g(job.basis)
            ? basis::make_basis(job.basis, zs,
                                std::array<basis::Zeta, 1>{basis::sto3g_isolated_zeta(z)})
            : basis::make_basis(job.basis, zs);
    const std::array<int, 1> charge{z};
    const MoleculeView atom{charge, zs, origin};
    PointSettings settings;
    settings.counts = setup::count_electrons(z, 0, setup::hunds_rule_multiplicity(z));
    settings.start = StartPolicy::free_atom;
    settings.with_dipole = false;
    const int m_basis = basis.nbasis();
    const std::size_t m = square(m_basis);
    std::vector<double> rho(2 * m), orbitals(2 * (m + static_cast<std::size_t>(m_basis)));
    settings.kohn_sham = kohn_sham;
    const SinglePointResult r = compute_point(basis, job, scf, atom, settings, rho, orbitals);
    settings.kohn_sham.reset();  // the start densities are Hartree–Fock atoms
    settings.occupation = Occupation::atomic;
    compute_point(basis, job, scf, atom, settings, rho, orbitals);

    // Every atom of this element gets the energy and the density block.
    for (std::size_t b = a; b < natom; ++b) {
      if (molecule.elements[b] != z || molecule.charges[b] == 0) continue;
      energies[b] = r.electronic;
      const int off = first[b];
      for (std::size_t spin = 0; spin < 2; ++spin) {
        for (int j = 0; j < m_basis; ++j) {
          for (int i = 0; i < m_basis; ++i) {
            atomic[spin * nn + static_cast<std::size_t>(off + i) +
                   static_cast<std::size_t>(off + j) * static_cast<std::size_t>(n)] =
                rho[spin * m + static_cast<std::size_t>(i + j * m_basis)];
          }
        }
      }
    }
  }
}

SinglePointResult compute_point(const basis::BasisSet& basis, const JobControl& job,
                                const ScfControl& scf, const MoleculeView& molecule,
                                const PointSettings& settings, std::span<double> rho,
                                std::span<double> orbitals, const PointHooks& hooks,
                                std::span<double> overlap) {
  // The basis table on the grid comes out of the memory limit first, and the
  // store gets the rest; a table larger than the whole limit is not kept
  // (each batch's values are computed in every cycle) and leaves the limit to
  // the store.
  JobControl limits = job;
  bool keep_table = true;
  if (settings.kohn_sham) {
    const int npts = dft::grid_point_count(molecule.elements, settings.kohn_sham->grid_level);
    const double table_gb = memory::kohn_sham_grid_gb(npts, basis.nbasis());
    keep_table = table_gb <= job.memory_gb;
    if (keep_table) limits.memory_gb -= table_gb;
  }
  PreparedSystem p = prepare_system(basis, molecule.positions, molecule.charges, limits);
  const std::size_t nn = square(p.n);
  // The field is part of the one-electron Hamiltonian, so that every stage,
  // energy and cycle of the point sees it without knowing of it.
  for (std::size_t k = 0; k < 3; ++k) {
    if (settings.field[k] == 0.0) continue;
    for (std::size_t e = 0; e < nn; ++e) p.v[e] += settings.field[k] * p.dip[k * nn + e];
  }
  if (rho.size() < 2 * nn || orbitals.size() < 2 * (nn + static_cast<std::size_t>(p.n))) {
    throw std::logic_error("single point: the density or orbital array is too small");
  }
  if (hooks.prepared) hooks.prepared(p);
  std::vector<double> g(2 * nn);
  const ScfArrays arrays{g, rho, orbitals};
  const ScfSystem system = p.system();
  StartSettings start;
  start.policy = settings.start;
  start.atomic = settings.atomic;
  start.counts = settings.counts;
  const Occupation first =
      settings.start == StartPolicy::free_atom ? Occupation::atomic : settings.occupation;
  const bool kohn_sham = settings.kohn_sham.has_value();
  const bool hartree_fock = !kohn_sham || settings.hartree_fock_first;
  if (hartree_fock) initialise(system, start, arrays, AufbauRule(first));

  SinglePointResult result;
  result.nuclear = nuclear_repulsion(molecule.charges, molecule.positions);
  const Vec3 nuclear = nuclear_dipole(molecule.charges, molecule.positions);
  for (std::size_t k = 0; k < 3; ++k) result.nuclear -= settings.field[k] * nuclear[k];
  auto cycle_settings = [&](const ScfControl& control) {
    CycleSettings cycle;
    cycle.niter = control.niter;
    cycle.damp = control.damp;
    cycle.thr_ene = control.thr_ene;
    cycle.thr_rms = control.thr_rms;
    cycle.with_dipole = settings.with_dipole;
    cycle.damped_cycles = settings.damped_cycles;
    cycle.e_offset = result.nuclear;
    cycle.dip_offset = nuclear;
    return cycle;
  };
  const AufbauRule rule(settings.occupation, settings.occupation);
  ScfResult r;
  if (hartree_fock) {
    r = run_scf(system, cycle_settings(scf), arrays, rule,
                kohn_sham ? CycleObserver() : hooks.cycle);
  }
  if (kohn_sham) {
    const KohnShamStage& ks = *settings.kohn_sham;
    result.hf_cycles = r.cycles;
    const dft::Grid grid =
        dft::make_grid(molecule.elements, molecule.positions, ks.grid_radius, ks.grid_level);
    const dft::BasisEvaluator evaluator(basis, molecule.positions);
    std::vector<double> chi;
    dft::GridBasis on_grid{grid.size(), p.n,        grid.weights, {}, dft::TableLayout::computed,
                           &evaluator,  grid.points};
    if (keep_table) {
      chi.resize(dft::basis_table_size(grid.size(), p.n));
      dft::basis_on_grid(basis, molecule.positions, grid.points, chi, dft::TableLayout::by_batch);
      on_grid.chi = chi;
      on_grid.layout = dft::TableLayout::by_batch;
    }
    KohnShamBuilder builder(system.context, system.build, ks.functional, on_grid);
    StartSettings from_hf;
    from_hf.policy = StartPolicy::current;
    from_hf.counts = settings.counts;
    initialise(system, builder, rule, hartree_fock ? from_hf : start, arrays);
    r = run_cycles(system, builder, rule, cycle_settings(ks.scf), arrays, hooks.cycle);
    result.xc_energy = builder.xc_energy();
    result.grid_points = grid.size();
    result.grid_electrons = builder.grid_electrons();
  }

  result.electronic = r.energy;
  result.energy = result.electronic + result.nuclear;
  for (std::size_t k = 0; k < 3; ++k) result.dipole[k] = r.dipole[k] + nuclear[k];
  result.de_final = r.de_final;
  result.northo = p.northo;
  result.in_core = p.in_core;
  result.cycles = r.cycles;
  result.converged = r.converged;
  result.rmsd = r.rmsd;
  result.comm2 = r.comm2;
  std::vector<double> work(2 * nn);
  result.spin_squared = spin_squared(system.operators.s, rho, work);
  if (overlap.size() >= nn) std::copy(p.s.begin(), p.s.end(), overlap.begin());
  return result;
}

SinglePointResult single_point(const JobControl& job, const ScfControl& scf,
                               const MoleculeView& molecule, const PointSettings& settings,
                               std::span<double> rho, std::span<double> orbitals,
                               const PointHooks& hooks, std::span<double> overlap) {
  return compute_point(basis::make_basis(job.basis, molecule.elements), job, scf, molecule,
                       settings, rho, orbitals, hooks, overlap);
}

}  // namespace norvik::scf
