#include "host_job.h"

#include <algorithm>

#include "norvik.h"

namespace host {

std::string padded(const std::string& text, int n) {
  std::string s = text.substr(0, static_cast<std::size_t>(n));
  s.resize(static_cast<std::size_t>(n), ' ');
  return s;
}

std::string trimmed(const std::string& buffer) {
  const auto end = buffer.find_last_not_of(' ');
  return end == std::string::npos ? std::string() : buffer.substr(0, end + 1);
}

// Built-in settings of a Kohn-Sham job (HF atom, KS atom, HF molecule, KS molecule).
void use_kohn_sham_defaults(Job& job) {
  job.niter = {64, 64, 128, 128};
  job.damp = {0.5, 0.5, 0.5, 0.5};
  job.thr_ene = {1.0e-6, 1.0e-6, 1.0e-7, 1.0e-7};
  job.thr_rms = {1.0e-6, 1.0e-6, 1.0e-7, 1.0e-7};
}

namespace {

struct Arrays {
  std::vector<int> zat, zel;
  std::vector<double> pos;
  explicit Arrays(int n)
      : zat(static_cast<std::size_t>(n)),
        zel(static_cast<std::size_t>(n)),
        pos(3 * static_cast<std::size_t>(n)) {}
};

void keep_atoms(Job& job, const Arrays& a) {
  job.zat.assign(a.zat.begin(), a.zat.begin() + job.natom);
  job.zel.assign(a.zel.begin(), a.zel.begin() + job.natom);
  job.pos.assign(a.pos.begin(), a.pos.begin() + 3 * job.natom);
}

void setup_hartree_fock(Job& job, const std::string& parameter_file) {
  Arrays a(job.max_atoms);
  const int maxatom = job.max_atoms, maxorb = kMaxOrbitals;
  SETUP_HF(&maxatom, &maxorb, job.molecule_file.data(), parameter_file.data(), &job.memory_gb,
           &job.threads, &job.niter[0], &job.niter[1], &job.damp[0], &job.damp[1], &job.thr_ene[0],
           &job.thr_ene[1], &job.thr_rms[0], &job.thr_rms[1], &job.screening, &job.grad_converge,
           &job.step_length, &job.record20[0], job.theory.data(), job.basis.data(),
           job.molecule_name.data(), &job.optimisation_cycles, &job.optimiser, &job.vibrations,
           job.start_density.data(), job.population.data(), job.bsse.data(), &job.charge,
           &job.multiplicity, &job.nalpha, &job.nbeta, &job.norb, &job.nshort, &job.natom,
           &job.nghost, a.zat.data(), a.zel.data(), a.pos.data());
  keep_atoms(job, a);
}

void setup_kohn_sham(Job& job) {
  Arrays a(job.max_atoms);
  const int maxatom = job.max_atoms, maxorb = kMaxOrbitals;
  SETUP_KS(&maxatom, &maxorb, job.molecule_file.data(), job.parameter_file.data(), &job.memory_gb,
           &job.threads, &job.niter[0], &job.niter[1], &job.niter[2], &job.niter[3], &job.damp[0],
           &job.damp[1], &job.damp[2], &job.damp[3], &job.thr_ene[0], &job.thr_ene[1],
           &job.thr_ene[2], &job.thr_ene[3], &job.thr_rms[0], &job.thr_rms[1], &job.thr_rms[2],
           &job.thr_rms[3], &job.screening, &job.grad_converge, &job.step_length, &job.record20[0],
           &job.record20[1], job.theory.data(), job.basis.data(), job.molecule_name.data(),
           &job.optimisation_cycles, &job.optimiser, &job.vibrations, job.start_density.data(),
           job.population.data(), job.bsse.data(), &job.charge, &job.multiplicity, &job.nalpha,
           &job.nbeta, &job.norb, &job.nshort, &job.natom, &job.nghost, a.zat.data(), a.zel.data(),
           a.pos.data());
  keep_atoms(job, a);
}

bool is_hartree_fock_family(const std::string& theory) {
  const std::string t = trimmed(theory);
  return t == "HF" || t == "MP2" || t == "RPA" || t == "TDA";
}

}  // namespace

void setup(Job& job) {
  // The theory keyword decides the layout of the parameter file, so the
  // molecule is read once without it to learn the theory.
  setup_hartree_fock(job, padded("", kPathLength));
  job.kohn_sham = !is_hartree_fock_family(job.theory);
  if (!job.kohn_sham) {
    if (!trimmed(job.parameter_file).empty()) setup_hartree_fock(job, job.parameter_file);
    return;
  }
  use_kohn_sham_defaults(job);
  setup_kohn_sham(job);
}

void write_header(const Job& job) {
  const char* report = job.report_file.data();
  const double bohr = NORVIK_BOHR_ANGSTROM, hartree = NORVIK_HARTREE_EV;
  WRITE_START(report);
  WRITE_CONST(&bohr, &hartree, report);
  WRITE_THEORY(job.theory.data(), report);
  if (job.kohn_sham) {
    WRITE_MOLNAME_KS(job.molecule_name.data(), job.theory.data(), report);
  } else {
    WRITE_MOLNAME(job.molecule_name.data(), report);
  }
  WRITE_BASIS(job.basis.data(), report);
  if (job.kohn_sham) {
    WRITE_NUMBERS_KS(&job.nalpha, &job.nbeta, &job.natom, &job.nghost, job.theory.data(), report);
  } else {
    WRITE_NUMBERS(&job.nalpha, &job.nbeta, &job.natom, &job.nghost, report);
  }
  if (job.nghost > 0) {
    WRITE_GEOMETRY_GHST(&job.natom, job.pos.data(), job.zat.data(), job.zel.data(), report);
  } else {
    WRITE_GEOMETRY(&job.natom, job.pos.data(), job.zat.data(), report);
  }
  if (job.kohn_sham) {
    WRITE_SCF_KS(&job.niter[0], &job.niter[1], &job.niter[2], &job.niter[3], &job.damp[0],
                 &job.damp[1], &job.damp[2], &job.damp[3], &job.thr_ene[0], &job.thr_ene[1],
                 &job.thr_ene[2], &job.thr_ene[3], &job.thr_rms[0], &job.thr_rms[1],
                 &job.thr_rms[2], &job.thr_rms[3], report);
  } else {
    WRITE_SCF(&job.niter[0], &job.niter[1], &job.damp[0], &job.damp[1], &job.thr_ene[0],
              &job.thr_ene[1], &job.thr_rms[0], &job.thr_rms[1], report);
  }
  WRITE_LOG_HEADA(job.log_file.data());
}

}  // namespace host
