#include "json_result.h"

#include <omp.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <limits>
#include <sstream>

#include "excited_states.h"
#include "mp2.h"
#include "norvik.h"
#include "run_log.h"

namespace host {

namespace {

// The units of the file: atomic units, converted with the library's constants.
constexpr double kBohr = NORVIK_BOHR_ANGSTROM;  // [Å]
constexpr double kHartree = NORVIK_HARTREE_EV;  // [eV]
// The standard state of the thermochemistry (vibrations.cpp, THERMALENERGY).
constexpr double kTemperature = 298.15;  // [K]
constexpr double kPressure = 101325.0;   // [Pa]

std::string read_text(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

Json scaled(const double* values, std::size_t count, double factor) {
  Json a = Json::array();
  for (std::size_t i = 0; i < count; ++i) a.push(values[i] * factor);
  return a;
}

Json scaled(const std::vector<double>& values, double factor) {
  return scaled(values.data(), values.size(), factor);
}

std::string published_basis(const std::string& name) {
  std::string out = name;
  if (out.size() > 1 && out.back() == 'C' && out != "STO-3G") out.pop_back();
  for (char& c : out)
    if (c == 'x') c = '*';
  return out;
}

bool cartesian_d(const std::string& name) {
  return name.size() > 1 && name.back() == 'C';
}

Json molecule_json(const Job& job, const std::vector<double>& pos) {
  Json m;
  m.set("name", trimmed(job.molecule_name));
  Json symbols = Json::array(), numbers = Json::array(), real = Json::array();
  for (int a = 0; a < job.natom; ++a) {
    char s[2];
    const norvik_int z = job.zel[a];
    CHG2SMB(s, &z);
    symbols.push(trimmed(std::string(s, 2)));
    numbers.push(job.zel[a]);
    real.push(job.zat[a] != 0);
  }
  m.set("symbols", symbols);
  m.set("atomic_numbers", numbers);
  m.set("geometry", scaled(pos, 1.0 / kBohr));
  m.set("geometry_angstrom", scaled(pos, 1.0));
  m.set("molecular_charge", job.charge);
  m.set("molecular_multiplicity", job.multiplicity);
  m.set("real", real);
  return m;
}

std::string utc_now() {
  const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  // std::gmtime's buffer is shared, but the job process has one thread here.
  const std::tm utc = *std::gmtime(&now);
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc);
  return text;
}

}  // namespace

std::vector<PathFrame> optimisation_path(const std::string& xyz_text) {
  std::vector<PathFrame> frames;
  std::istringstream in(xyz_text);
  std::string line;
  while (std::getline(in, line)) {
    int natom = 0;
    if (std::sscanf(line.c_str(), "%d", &natom) != 1 || natom <= 0) break;
    PathFrame f;
    std::string comment;
    std::getline(in, comment);
    const std::size_t at = comment.find("Emol =");
    if (at != std::string::npos) f.energy = std::strtod(comment.c_str() + at + 6, nullptr);
    for (int a = 0; a < natom && std::getline(in, line); ++a) {
      char symbol[8];
      double x[3];
      if (std::sscanf(line.c_str(), "%7s %lf %lf %lf", symbol, &x[0], &x[1], &x[2]) != 4) break;
      f.pos.insert(f.pos.end(), x, x + 3);
    }
    frames.push_back(std::move(f));
  }
  return frames;
}

Json json_result(const Job& job, const PointResult& point, const RunFacts& facts) {
  const std::string theory = trimmed(job.theory);
  const bool optimised = point.optimisation.has_value();
  const std::size_t nn = static_cast<std::size_t>(point.nbasis);
  const bool restricted = !point.unrestricted;
  Json r;
  r.set("schema_name", "norvik_result");
  r.set("schema_version", 1);
  r.set("success", facts.status == 0);
  r.set("status", facts.status);
  Json messages = Json::array();
  for (const std::string& m : facts.messages) messages.push(m);
  r.set("messages", messages);

  Json provenance;
  provenance.set("creator", "norvik");
  provenance.set("version", facts.version);
  provenance.set("routine", "norvik run");
  provenance.set("date", utc_now());
  provenance.set("threads", omp_get_max_threads());
  r.set("provenance", provenance);

  Json units;
  units.set("energy", "hartree");
  units.set("length", "bohr");
  units.set("gradient", "hartree/bohr");
  units.set("dipole", "e*bohr");
  units.set("quadrupole", "e*bohr^2");
  units.set("polarizability", "bohr^3");
  units.set("wavenumber", "cm^-1");
  units.set("ir_intensity", "km/mol");
  units.set("raman_activity", "angstrom^4/amu");
  units.set("entropy", "hartree/K");
  units.set("time", "s");
  r.set("units", units);

  Json input;
  input.set("molecule_file", facts.molecule_file);
  input.set("parameter_file", facts.parameter_file);
  if (!facts.xyz_file.empty()) input.set("xyz_file", facts.xyz_file);
  r.set("input", input);

  Json files;
  for (const auto& [kind, path] : facts.files) files.set(kind, path);
  Json cubes = Json::array();
  for (const CubeFile& c : facts.cubes) {
    Json cube;
    cube.set("what", c.what);
    cube.set("path", c.path);
    cubes.push(cube);
  }
  files.set("cubes", cubes);
  r.set("files", files);

  r.set("driver", point.vibrations ? "frequency" : optimised ? "optimization" : "energy");

  Json model;
  model.set("method", theory);
  model.set("basis", published_basis(trimmed(job.basis)));
  model.set("cartesian_d", cartesian_d(trimmed(job.basis)));
  model.set("reference",
            job.kohn_sham ? (restricted ? "RKS" : "UKS") : (restricted ? "RHF" : "UHF"));
  if (job.kohn_sham) {
    model.set("functional", theory);
    model.set("grid", job.grid_level == 1 ? "dense" : "standard");
  }
  r.set("model", model);

  const std::size_t stage = job.kohn_sham ? 3 : 1;
  Json keywords;
  keywords.set("memory_gb", job.memory_gb);
  keywords.set("threads", job.threads);
  keywords.set("max_iterations", job.niter[stage]);
  keywords.set("damping", job.damp[stage]);
  keywords.set("energy_threshold_ev", job.thr_ene[stage]);
  keywords.set("rms_threshold", job.thr_rms[stage]);
  keywords.set("screening_ev", job.screening);
  if (optimised) {
    keywords.set("optimisation_cycles", job.optimisation_cycles);
    keywords.set("optimiser", job.optimiser);
    keywords.set("gradient_threshold_ev_per_angstrom", job.grad_converge);
  }
  if (job.vibrations > 0) keywords.set("vibrations", job.vibrations);
  r.set("keywords", keywords);

  r.set("molecule", molecule_json(job, facts.input_pos));
  if (optimised) r.set("final_molecule", molecule_json(job, job.pos));
  const double scf_energy = point.energy / kHartree;
  r.set("return_result", point.mp2 ? point.mp2->total / kHartree : scf_energy);

  // properties
  Json p;
  p.set("return_energy", point.mp2 ? point.mp2->total / kHartree : scf_energy);
  p.set("scf_total_energy", scf_energy);
  p.set("nuclear_repulsion_energy", point.parts[1] / kHartree);
  p.set("scf_electronic_energy", point.parts[0] / kHartree);
  if (job.kohn_sham) {
    p.set("scf_xc_energy", point.xc[0] / kHartree);
    p.set("scf_exchange_energy", point.xc[1] / kHartree);
    p.set("scf_correlation_energy", point.xc[2] / kHartree);
    p.set("grid_electrons", point.xc[3]);
  }
  // positive when the molecule is bound, as the report gives it
  p.set("binding_energy", (point.free_atoms - point.parts[2]) / kHartree);
  p.set("scf_dipole_moment", scaled(point.dipole, 3, 1.0 / kBohr));
  if (point.quadrupole) {
    p.set("scf_quadrupole_moment", scaled(point.quadrupole->data(), 9, 1.0 / (kBohr * kBohr)));
  }
  p.set("scf_iterations", point.cycles);
  p.set("scf_converged", point.converged);
  p.set("calcinfo_nbasis", point.nbasis);
  p.set("calcinfo_nmo", point.northo);
  p.set("calcinfo_nalpha", job.nalpha);
  p.set("calcinfo_nbeta", job.nbeta);
  p.set("calcinfo_natom", job.natom);
  if (point.s_squared) p.set("spin_contamination", *point.s_squared);
  if (point.mp2) {
    p.set("mp2_total_energy", point.mp2->total / kHartree);
    p.set("mp2_correlation_energy", point.mp2->correction / kHartree);
    p.set("mp2_same_spin_correlation_energy", point.mp2->same_spin / kHartree);
    p.set("mp2_opposite_spin_correlation_energy", point.mp2->opposite_spin / kHartree);
  }
  if (!point.mulliken_charges.empty())
    p.set("mulliken_charges", Json::numbers(point.mulliken_charges));
  if (!point.lowdin_charges.empty()) p.set("lowdin_charges", Json::numbers(point.lowdin_charges));
  if (!point.mulliken_spins.empty()) p.set("mulliken_spins", Json::numbers(point.mulliken_spins));
  if (!point.lowdin_spins.empty()) p.set("lowdin_spins", Json::numbers(point.lowdin_spins));
  if (point.vibrations) {
    p.set("polarizability",
          scaled(point.vibrations->polarizability, 9, 1.0 / (kBohr * kBohr * kBohr)));
  }
  r.set("properties", p);

  // wavefunction
  Json w;
  w.set("restricted", restricted);
  double homo = -std::numeric_limits<double>::infinity();
  double lumo = std::numeric_limits<double>::infinity();
  const std::size_t nmo = static_cast<std::size_t>(point.northo);
  for (int spin = 0; spin < 2; ++spin) {
    const std::size_t nocc = static_cast<std::size_t>(spin == 0 ? job.nalpha : job.nbeta);
    Json levels = Json::array(), occupations = Json::array();
    const double* level = point.orbitals.data() + spin * nn * (nn + 1) + nn * nn;
    for (std::size_t i = 0; i < nmo && !point.orbitals.empty(); ++i) {
      levels.push(level[i] / kHartree);
      occupations.push(i < nocc ? 1 : 0);
      if (i + 1 == nocc) homo = std::max(homo, level[i] / kHartree);
      if (i == nocc) lumo = std::min(lumo, level[i] / kHartree);
    }
    w.set(spin == 0 ? "orbital_energies_a" : "orbital_energies_b", levels);
    w.set(spin == 0 ? "occupations_a" : "occupations_b", occupations);
  }
  if (std::isfinite(homo)) w.set("homo_energy", homo);
  if (std::isfinite(lumo)) w.set("lumo_energy", lumo);
  r.set("wavefunction", w);

  if (optimised) r.set("gradient", scaled(point.optimisation->gradient, kBohr / kHartree));

  // the SCF cycles of the final point, from the run log
  Json history = Json::array();
  double previous = std::numeric_limits<double>::quiet_NaN();
  for (const ScfCycle& c : last_scf(read_text(facts.log_partial))) {
    Json entry;
    entry.set("cycle", c.cycle);
    entry.set("energy", c.energy / kHartree);
    entry.set("delta_energy", (c.energy - previous) / kHartree);  // null for the first
    entry.set("rms_density", c.rmsd);
    entry.set("commutator", c.commutator);
    history.push(entry);
    previous = c.energy;
  }
  r.set("scf_history", history);

  if (optimised) {
    const OptimisationResult& o = *point.optimisation;
    Json opt;
    opt.set("driver", o.driver);
    opt.set("converged", o.converged);
    opt.set("cycles", o.cycles);
    opt.set("points", o.points);
    opt.set("gradients", o.gradients);
    opt.set("largest_gradient", o.largest_gradient * kBohr / kHartree);
    Json trajectory = Json::array();
    if (!facts.trajectory_partial.empty()) {
      for (const PathFrame& f : optimisation_path(read_text(facts.trajectory_partial))) {
        Json frame;
        frame.set("energy", f.energy / kHartree);
        frame.set("geometry", scaled(f.pos, 1.0 / kBohr));
        trajectory.push(frame);
      }
    }
    opt.set("trajectory", trajectory);
    r.set("optimization", opt);
  }

  if (point.vibrations) {
    const VibrationResult& v = *point.vibrations;
    Json vib;
    vib.set("frequencies", Json::numbers(v.wavenumbers));
    vib.set("ir_intensities", Json::numbers(v.infrared));
    if (v.raman) {
      vib.set("raman_activities", Json::numbers(v.raman_activities));
      vib.set("depolarization_ratios", Json::numbers(v.depolarization));
    }
    Json modes = Json::array();
    for (const auto& d : v.displacements) modes.push(Json::numbers(d));
    vib.set("modes", modes);
    vib.set("imaginary", v.imaginary);
    r.set("vibrations", vib);

    const double e = point.energy;  // [eV]
    const double zpe = v.zero_point;
    const double thermal = e + zpe + v.thermal[0] + v.thermal[1] + v.thermal[2];
    const double enthalpy = thermal + v.thermal[3];
    const double entropy = v.entropy[0] + v.entropy[1] + v.entropy[2];
    Json t;
    t.set("temperature", kTemperature);
    t.set("pressure", kPressure);
    t.set("zero_point_energy", zpe / kHartree);
    t.set("thermal_energy", thermal / kHartree);
    t.set("enthalpy", enthalpy / kHartree);
    t.set("entropy", entropy / kHartree);
    t.set("gibbs_free_energy", (enthalpy - kTemperature * entropy) / kHartree);
    t.set("symmetry_number", v.symmetry_number);
    r.set("thermochemistry", t);
  }

  if (point.excitations && !point.excitations->skipped_for_memory) {
    const ExcitationSummary& x = *point.excitations;
    Json states = Json::array();
    for (std::size_t k = 0; k < x.energy.size(); ++k) {
      Json s;
      s.set("energy", x.energy[k] / kHartree);
      s.set("energy_ev", x.energy[k]);
      s.set("multiplicity", x.spin[k]);
      s.set("oscillator_strength", x.strength[k]);
      s.set("transition_dipole", scaled(x.dipole.data() + 3 * k, 3, 1.0 / kBohr));
      states.push(s);
    }
    r.set("excited_states", states);
  }

  Json timings;
  timings.set("total", facts.total_seconds);
  timings.set("setup", facts.setup_seconds);
  timings.set("atoms", point.times.atoms);
  timings.set("scf", point.times.scf);
  timings.set("properties", point.times.properties);
  if (point.vibrations) timings.set("vibrations", point.times.vibrations);
  r.set("timings", timings);
  return r;
}

}  // namespace host
