// norvik: the command-line host.
//
//   norvik run MOLECULE_FILE [PARAMETER_FILE] [--report FILE] [--log FILE] [--grid LEVEL]
//              [--frozen-core]
//   norvik run FILE.xyz [--method M] [--basis B] [--charge Q] [--mult M] [--opt [N]] ...
//   norvik check FILE...
//   norvik --version
//   norvik batch JOBS... (the Python package's batch runner, python_batch.h)
//
// Checks the input files and the output names, runs the job through the library
// with the report and the run log under partial names, and renames them into
// place when the job has a result.  docs/host.md describes the checks, the files
// and the exit statuses.
#include <omp.h>

#include <chrono>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "check_command.h"
#include "excited_states.h"
#include "hartree_fock.h"
#include "host_job.h"
#include "input_check.h"
#include "job_process.h"
#include "json_result.h"
#include "molden.h"
#include "norvik.h"
#include "output_files.h"
#include "plots.h"
#include "progress.h"
#include "python_batch.h"
#include "view.h"
#include "xyz_input.h"

namespace {

// Exit statuses (docs/host.md).  A fatal library error ends the job with 1.
constexpr int kSuccess = 0;
constexpr int kLibraryError = 1;
constexpr int kUsageError = 2;
constexpr int kNotConverged = 3;

// |FPS - SPF| is the orbital gradient of the SCF energy: zero at a solution, and
// the energy of a point lies above the solution's by about its square over the
// HOMO-LUMO gap.  At the default thresholds it ends near 1e-7 hartree.  Above
// 1e-3 hartree the energy may be off by 1e-6 hartree and more (the agreement the
// reference tests demand), so such a point is not taken as converged even when
// its energy and density changes met loose thresholds.
constexpr double kStationarityLimit = 1.0e-3;  // hartree

// The most problems listed for one run; the rest are counted.
constexpr std::size_t kMaxProblemsShown = 20;

void usage(std::ostream& out) {
  out << "usage: norvik run FILE.xyz [--method M] [--basis B] [--charge Q] [--mult M]\n"
         "                  [--opt [CYCLES]] [--freq] [--raman] [--population P]\n"
         "                  [--memory GB] [--threads N] [other options as below]\n"
         "       norvik run MOLECULE_FILE [PARAMETER_FILE] [--report FILE] [--log FILE]\n"
         "                  [--xyz FILE] [--vib PREFIX] [--grid standard|dense] [--stability]\n"
         "                  [--orbitals [all]] [--cube WHAT[,WHAT...]] [--cube-prefix PREFIX]\n"
         "                  [--cube-step STEP] [--cube-points N] [--fragments QA,MA,QB,MB]\n"
         "                  [--frozen-core] [--states N] [--json FILE] [--molden FILE]\n"
         "                  [--html FILE] [--progress | --no-progress]\n"
         "\n"
         "  MOLECULE_FILE   the molecule, its charge and multiplicity, theory and basis set\n"
         "  PARAMETER_FILE  SCF settings (built-in settings when left out)\n"
         "  --report FILE   report file (default: MOLECULE_FILE's name with .report)\n"
         "  --log FILE      run log, one line per SCF cycle (default: with .log)\n"
         "  --xyz FILE      optimisation path, one .xyz frame per cycle (default: with .xyz;\n"
         "                  written only when the molecule file asks for an optimisation)\n"
         "  --vib PREFIX    vibrational analysis (record 10): PREFIX.modes.xyz and\n"
         "                  PREFIX.modes.molden (normal modes), PREFIX.ir.dat and\n"
         "                  PREFIX.raman.dat (spectra, Raman with record 10 = 2);\n"
         "                  default: the molecule file's name without its extension\n"
         "  --grid LEVEL    Kohn-Sham integration grid: standard (default, fast) or dense\n"
         "                  (converged energies, about ten times the points)\n"
         "  --stability     check that the SCF solution is a minimum (lowest eigenvalues of\n"
         "                  the orbital Hessian in the report); when it is not, restart the\n"
         "                  SCF along the unstable rotation until a lower, stable solution\n"
         "                  (after an optimisation: the check only)\n"
         "  --orbitals      orbital energies and LCAO coefficients from HOMO-4 to LUMO+4 in\n"
         "                  the report; --orbitals all: every orbital\n"
         "  --cube WHAT     Gaussian cube files PREFIX.WHAT.cube of homo, lumo, homo-K, lumo+K,\n"
         "                  an orbital number, density or spin (alpha orbitals of an open\n"
         "                  shell); a box 4 A beyond the atoms in steps of 0.1 A\n"
         "  --cube-prefix PREFIX  default: the molecule file's name without its extension\n"
         "  --cube-step STEP      grid step [A] (default 0.1)\n"
         "  --cube-points N       most grid points of a cube (default 1000000); a larger\n"
         "                  box gets a wider step\n"
         "  --fragments Q,M,Q,M  counterpoise job (record 18): charge and multiplicity of\n"
         "                  fragment A, then of fragment B (multiplicity 0: the lowest);\n"
         "                  default: neutral fragments (HeH+: He and H+)\n"
         "  --frozen-core   MP2 (theory MP2) with the atoms' core orbitals frozen (default:\n"
         "                  all electrons)\n"
         "  --states N      excited states per spin type for the theories TDA, RPA, TDKS*\n"
         "                  and KSTDA* (default 10, at most 200); their UV-vis spectrum\n"
         "                  goes to PREFIX.uv.dat (PREFIX as for --vib)\n"
         "  --progress      a live status line on standard error (SCF cycles, optimisation\n"
         "                  cycles, Hessian displacements); the default when standard\n"
         "                  error is a terminal; --no-progress: none\n"
         "  --json FILE     the results for programs (default: the molecule file's name\n"
         "                  with .json; layout in docs/json.md)\n"
         "  --molden FILE   geometry, basis, orbitals and normal modes for viewers such as\n"
         "                  Jmol and Molden (default: with .molden)\n"
         "  --html FILE     the results as one web page for a browser (molecule, orbitals,\n"
         "                  optimisation path, modes and spectra; default: the JSON\n"
         "                  result's name with .html)\n"
         "\n"
         "An .xyz input (atom count, title line, then symbol x y z [A] per atom) takes:\n"
         "  --method M      HF (default), MP2, RPA, TDA or a functional (B3LYP, BLYP, SVWN5, ...)\n"
         "  --basis B       basis set as published, 6-31G* (default), 6-31+G**, STO-3G, ...\n"
         "  --charge Q      molecular charge (default 0)\n"
         "  --mult M        spin multiplicity 2S+1 (default: 1 or 2, the lowest)\n"
         "  --opt [CYCLES]  quasi-Newton geometry optimisation, at most CYCLES (default 50)\n"
         "  --freq          vibrations, infrared intensities and thermochemistry; --raman\n"
         "                  also Raman activities\n"
         "  --population P  none (default), Mulliken, Lowdin, both or shells\n"
         "  --memory GB     memory limit (default 4); --threads N: threads (default 0, all)\n"
         "The host writes PREFIX.mol and PREFIX.par (PREFIX: the report's name without its\n"
         "extension) and runs the job from them; norvik run PREFIX.mol PREFIX.par repeats it.\n"
         "\n"
         "  norvik check FILE...   checks input files and runs nothing (norvik check --help)\n"
         "  norvik view RESULT.json  the result file of a run as a web page (norvik view --help)\n"
         "  norvik --version       the version\n"
         "  norvik batch JOBS...   many jobs on a Dask cluster (norvik batch --help)\n"
         "\n"
         "The host checks both input files before the job starts.  The job writes the\n"
         "report and the log as FILE.partial; they replace FILE when the job has a result.\n"
         "A failing run leaves an earlier report and log as they were.\n"
         "\n"
         "Exit status:\n"
         "  0  the job ended with a result\n"
         "  1  the library stopped the job (its message is on standard output)\n"
         "  2  a usage, input-file or output-file error found by the host\n"
         "  3  the SCF did not converge, or stopped on a point that is not a solution\n"
         "     (not when both molecule thresholds are 0, a fixed number of cycles)\n";
}

[[noreturn]] void fail(const std::string& message) {
  std::cerr << "norvik: " << message << '\n';
  std::exit(kUsageError);
}

[[noreturn]] void fail(const std::vector<std::string>& problems) {
  for (std::size_t i = 0; i < problems.size() && i < kMaxProblemsShown; ++i) {
    std::cerr << "norvik: " << problems[i] << '\n';
  }
  if (problems.size() > kMaxProblemsShown) {
    const std::size_t more = problems.size() - kMaxProblemsShown;
    std::cerr << "norvik: ... and " << more << (more == 1 ? " more problem\n" : " more problems\n");
  }
  std::cerr << "norvik: nothing was run; no report or log was written\n";
  std::exit(kUsageError);
}

std::string with_extension(const std::string& molecule_file, const char* extension) {
  return std::filesystem::path(molecule_file).filename().replace_extension(extension).string();
}

struct Request {
  std::string molecule_file, parameter_file, report, log, xyz;
  std::string vib;  // prefix of the vibrational analysis's files
  bool has_parameter_file = false;
  int grid_level = 0;  // Kohn-Sham grid: 0 standard, 1 dense
  bool stability = false;
  bool frozen_core = false;  // MP2 with the atoms' cores frozen
  int orbital_tables = 0;    // --orbitals: 0 none, 1 around the gap, 2 all
  std::vector<std::string> cubes;
  std::string cube_prefix;
  double cube_step = host::kCubeStep;
  long cube_max_points = host::kCubeMaxPoints;
  // --fragments: charge and multiplicity of fragment A, then of fragment B.
  std::optional<std::array<int, 4>> fragments;
  int states = host::kDefaultStates;  // excited states per spin type
  // An .xyz job (docs/host.md, "XYZ input"): the source file and the options
  // that describe the job.  molecule_file and parameter_file then name the
  // files written from it, which go into place with the report; until then the
  // job reads them under their partial names.
  std::string xyz_file;
  host::XyzChoices xyz_choices;
  std::string molecule_read, parameter_read;  // the files the job reads
  host::ProgressMode progress = host::ProgressMode::automatic;
  std::string json, molden;  // the result files
  std::string html;          // the web page of the results (docs/viewer.md)
};

// A positive number of an option, or the end of the run with the problem.
double positive_number(const std::string& option, const std::string& text, double most) {
  std::size_t used = 0;
  double v = 0.0;
  try {
    v = std::stod(text, &used);
  } catch (const std::exception&) {
    used = 0;
  }
  if (used != text.size() || !(v > 0.0) || v > most) {
    fail(option + " " + text + ": give a number above 0 and at most " +
         std::to_string(static_cast<long>(most)));
  }
  return v;
}

// A summary line on standard output ("norvik: " and the text), kept for the
// result file's messages.
[[gnu::format(printf, 2, 3)]] void say(std::vector<std::string>& said, const char* format, ...) {
  char text[1024];
  va_list args;
  va_start(args, format);
  std::vsnprintf(text, sizeof text, format, args);
  va_end(args);
  std::printf("norvik: %s\n", text);
  said.emplace_back(text);
}

// How the molecule's SCF ended, on standard output; the exit status.
int verdict(const host::Job& job, const host::PointResult& point, std::vector<std::string>& said) {
  const bool fixed_cycles = job.thr_ene[1] == 0.0 && job.thr_rms[1] == 0.0;
  if (fixed_cycles) {
    say(said,
        "ran the %d SCF cycles asked for (both molecule thresholds 0): last energy "
        "change %.3e eV, RMS density change %.3e, |FPS-SPF| = %.3e hartree",
        point.cycles, point.de_final, point.rmsd, point.commutator);
    return kSuccess;
  }
  if (!point.converged) {
    say(said,
        "SCF not converged in %d cycles (last energy change %.3e eV, RMS density change "
        "%.3e): raise the molecule's iteration limit in record 6 of the parameter file, or give "
        "the molecule more damping in record 8",
        point.cycles, point.de_final, point.rmsd);
    return kNotConverged;
  }
  if (!(point.commutator <= kStationarityLimit)) {
    say(said,
        "the SCF stopped on a point that is not a solution (|FPS-SPF| = %.3e hartree, "
        "above %.0e): tighten the molecule's thresholds in records 10 and 12 of the parameter "
        "file",
        point.commutator, kStationarityLimit);
    return kNotConverged;
  }
  return kSuccess;
}

// The result files of a job that has a result: the JSON results and the
// molden file, under their partial names.
void write_result_files(const Request& request, const host::Job& job,
                        const host::PointResult& point,
                        const std::vector<host::OutputFile>& outputs, int status,
                        const std::vector<std::string>& said, const std::vector<double>& input_pos,
                        std::chrono::steady_clock::time_point started, double setup_seconds) {
  std::string json_file, molden_file;
  for (const host::OutputFile& out : outputs) {
    if (out.what == "JSON result") json_file = out.partial;
    if (out.what == "molden file") molden_file = out.partial;
  }
  if (point.orbitals.empty() || json_file.empty() || molden_file.empty()) return;
  host::write_molden(molden_file,
                     host::molden_of_point(job, point.nbasis, point.northo, !point.unrestricted,
                                           point.orbitals, point.vibrations));
  host::RunFacts facts;
  facts.status = status;
  facts.messages = said;
  facts.version = NORVIK_HOST_VERSION;
  facts.molecule_file = request.molecule_file;
  facts.parameter_file = request.parameter_file;
  facts.xyz_file = request.xyz_file;
  // The other outputs by kind, under their final names.
  const std::pair<const char*, const char*> kinds[] = {{"report", "report"},
                                                       {"run log", "log"},
                                                       {"molden file", "molden"},
                                                       {"trajectory", "trajectory"},
                                                       {"normal modes", "modes_xyz"},
                                                       {"normal modes (molden)", "modes_molden"},
                                                       {"infrared spectrum", "ir_spectrum"},
                                                       {"Raman spectrum", "raman_spectrum"},
                                                       {"UV-vis spectrum", "uv_spectrum"}};
  for (const host::OutputFile& out : outputs) {
    for (const auto& [what, kind] : kinds)
      if (out.what == what) facts.files.emplace_back(kind, out.path);
    if (out.what.rfind("cube ", 0) == 0) facts.cubes.push_back({out.what.substr(5), out.path});
    if (out.what == "run log") facts.log_partial = out.partial;
    if (out.what == "trajectory") facts.trajectory_partial = out.partial;
  }
  facts.input_pos = input_pos;
  facts.setup_seconds = setup_seconds;
  facts.total_seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
  std::ofstream(json_file, std::ios::binary) << host::json_result(job, point, facts).text();
}

// The job itself, with the report and the log under their partial names.
int run_job(const Request& request, const host::InputFacts& facts,
            const std::vector<host::OutputFile>& outputs, const std::string& hessian_progress) {
  const auto started = std::chrono::steady_clock::now();
  std::vector<std::string> said;  // the summary lines, for the result file
  host::Job job;
  job.max_atoms = facts.natom + 1;
  job.molecule_file = host::padded(request.molecule_read, host::kPathLength);
  job.parameter_file = host::padded(request.parameter_read, host::kPathLength);
  job.report_file = host::padded(outputs[0].partial, host::kPathLength);
  job.log_file = host::padded(outputs[1].partial, host::kPathLength);
  for (const host::OutputFile& out : outputs) {
    if (out.what == "trajectory") job.xyz_file = host::padded(out.partial, host::kPathLength);
    if (out.what == "normal modes") job.modes_xyz_file = out.partial;
    if (out.what == "normal modes (molden)") job.modes_molden_file = out.partial;
    if (out.what == "infrared spectrum") job.infrared_file = out.partial;
    if (out.what == "Raman spectrum") job.raman_file = out.partial;
    if (out.what.rfind("cube ", 0) == 0) job.cubes.push_back({out.what.substr(5), out.partial});
    if (out.what == "UV-vis spectrum") job.uv_file = out.partial;
  }
  job.grid_level = request.grid_level;
  job.fragment_first = facts.fragment_first;
  job.fragment_last = facts.fragment_last;
  if (request.fragments) job.fragments = *request.fragments;
  job.stability = request.stability;
  job.orbital_tables = request.orbital_tables;
  job.cube_step = request.cube_step;
  job.cube_max_points = request.cube_max_points;
  job.frozen_core = request.frozen_core;
  job.states = request.states;
  job.hessian_progress = host::padded(hessian_progress, host::kPathLength);

  host::setup(job);
  // The orbitals asked for must exist before the SCF is spent on them.
  for (const host::CubeFile& cube : job.cubes) {
    const host::CubeTarget target =
        host::cube_target(cube.what, job.nalpha, host::basis_size(job).functions);
    if (!target.problem.empty()) {
      std::cerr << "norvik: " << target.problem << '\n';
      return kUsageError;
    }
  }
  if (job.threads > 0) omp_set_num_threads(job.threads);
  host::write_header(job);
  std::cout << "norvik: " << host::trimmed(job.theory) << " / " << host::trimmed(job.basis)
            << " job '" << host::trimmed(job.molecule_name) << "': " << job.natom - job.nghost
            << " atoms, " << job.nalpha << " + " << job.nbeta << " electrons\n"
            << std::flush;

  const double setup_seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
  const std::vector<double> input_pos = job.pos;
  host::PointResult point = host::run_hartree_fock(job);
  for (double& d : point.dipole) d = std::abs(d) < 5e-6 ? 0.0 : d;  // no "-0.00000"
  say(said, "E(%s) = %.9f hartree (%s, %d basis functions), dipole %.5f %.5f %.5f eA",
      job.kohn_sham ? (point.unrestricted ? "UKS" : "RKS") : (point.unrestricted ? "UHF" : "RHF"),
      point.energy / host::kHartreeEv, point.in_core ? "stored integrals" : "integral-direct",
      point.nbasis, point.dipole[0], point.dipole[1], point.dipole[2]);
  if (point.optimisation) {
    const host::OptimisationResult& o = *point.optimisation;
    say(said,
        "%s optimisation %s after %d cycles: %d SCF points, %d gradients, "
        "largest gradient component %.2e eV/A",
        o.driver.c_str(), o.converged ? "converged" : "NOT converged", o.cycles, o.points,
        o.gradients, o.largest_gradient);
  }
  if (point.mp2) {
    const host::Mp2Result& m = *point.mp2;
    say(said, "E(MP2) = %.9f hartree (E(2) = %.9f hartree, %s)", m.total / host::kHartreeEv,
        m.correction / host::kHartreeEv, m.frozen_core ? "frozen core" : "all electrons");
  }
  if (point.vibrations) {
    const host::VibrationResult& v = *point.vibrations;
    say(said,
        "%d vibrational modes (%d imaginary), zero-point energy %.6f eV, "
        "G(298.15 K) = %.9f hartree",
        v.modes, v.imaginary, v.zero_point, v.gibbs / host::kHartreeEv);
  }
  if (point.excitations) {
    const host::ExcitationSummary& x = *point.excitations;
    if (x.skipped_for_memory) {
      say(said,
          "the excited states were left out: their Davidson vectors need more memory than "
          "the limit of parameter record 2 (%.2f GB); raise it or ask for fewer --states",
          job.memory_gb);
    } else {
      say(said, "%d excited states, lowest %.4f eV; strongest absorption f = %.4f at %.4f eV",
          x.states, x.lowest, x.strongest_strength, x.strongest);
    }
  }
  int status = verdict(job, point, said);
  if (status == kSuccess && point.optimisation && !point.optimisation->converged) {
    say(said,
        "the optimisation used up its %d cycles before it converged: raise the cycle "
        "count in record 6 of the molecule file (the last geometry is in the report and the "
        "trajectory)",
        job.optimisation_cycles);
    status = kNotConverged;
  }
  write_result_files(request, job, point, outputs, status, said, input_pos, started, setup_seconds);
  std::fflush(stdout);
  return status;
}

std::string partial_files_note(const std::vector<host::OutputFile>& outputs) {
  std::string finals, partials;
  for (std::size_t i = 0; i < outputs.size(); ++i) {
    const char* sep = i == 0 ? "" : (i + 1 == outputs.size() ? " and " : ", ");
    finals += sep + outputs[i].path;
    partials += sep + outputs[i].partial;
  }
  return "norvik: " + finals + " were not touched; what the job wrote is in " + partials + "\n";
}

// The value of --fragments: four integers QA,MA,QB,MB, multiplicities 0 (the
// lowest of the fragment's electron count) or more.
std::array<int, 4> fragment_settings(const std::string& text) {
  std::array<int, 4> v{};
  std::istringstream in(text);
  char comma = ',';
  bool ok = true;
  for (std::size_t k = 0; k < 4 && ok; ++k) {
    ok = (k == 0 || (in >> comma && comma == ',')) && in >> v[k] && (k % 2 == 0 || v[k] >= 0);
  }
  if (!ok || !in.eof() || (in >> std::ws, !in.eof())) {
    fail("--fragments '" + text +
         "': write the charge and multiplicity of fragment A, then of fragment B, as "
         "QA,MA,QB,MB (multiplicity 0: the lowest), e.g. 0,1,1,1");
  }
  return v;
}

// An .xyz input: the molecule and parameter files take the report's name
// without its extension; the job reads them under their partial names.
void read_xyz_request(Request& request, bool have_report) {
  request.xyz_file = request.molecule_file;
  if (request.has_parameter_file) {
    fail(request.parameter_file +
         ": an .xyz job writes its own parameter file (--memory and --threads set it); for "
         "other SCF settings edit the parameter file it writes and run the molecule file with "
         "it");
  }
  if (request.fragments) {
    fail(
        "--fragments is for a counterpoise job, which an .xyz input cannot ask for; write "
        "'counterpoise' in record 18 of a molecule file (the one an .xyz run writes will do)");
  }
  if (!have_report) request.report = with_extension(request.xyz_file, ".report");
  const std::string prefix = std::filesystem::path(request.report).replace_extension().string();
  request.molecule_file = prefix + ".mol";
  request.parameter_file = prefix + ".par";
  request.has_parameter_file = true;
  request.molecule_read = request.molecule_file + host::kPartialSuffix;
  request.parameter_read = request.parameter_file + host::kPartialSuffix;
}

Request parse(const std::vector<std::string>& args) {
  Request request;
  std::vector<std::string> positional;
  std::vector<std::string> xyz_problems;
  bool have_report = false, have_log = false, have_xyz = false;
  bool have_json = false, have_molden = false, have_html = false;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    if (host::read_xyz_option(args, i, request.xyz_choices, xyz_problems)) {
      continue;
    } else if (a == "--report" || a == "--log") {
      if (i + 1 == args.size()) fail(a + " needs a file name");
      (a == "--report" ? have_report : have_log) = true;
      (a == "--report" ? request.report : request.log) = args[++i];
    } else if (a == "--xyz") {
      if (i + 1 == args.size()) fail(a + " needs a file name");
      have_xyz = true;
      request.xyz = args[++i];
    } else if (a == "--html") {
      if (i + 1 == args.size()) fail(a + " needs a file name");
      have_html = true;
      request.html = args[++i];
    } else if (a == "--json" || a == "--molden") {
      if (i + 1 == args.size()) fail(a + " needs a file name");
      (a == "--json" ? have_json : have_molden) = true;
      (a == "--json" ? request.json : request.molden) = args[++i];
    } else if (a == "--vib") {
      if (i + 1 == args.size()) fail(a + " needs a name prefix");
      request.vib = args[++i];
    } else if (a == "--grid") {
      if (i + 1 == args.size()) fail("--grid needs a value: standard or dense");
      const std::string& level = args[++i];
      if (level != "standard" && level != "dense") {
        fail("--grid " + level + ": the grid is 'standard' (the default) or 'dense'");
      }
      request.grid_level = level == "dense" ? 1 : 0;
    } else if (a == "--stability") {
      request.stability = true;
    } else if (a == "--orbitals") {
      request.orbital_tables = 1;
      if (i + 1 < args.size() && args[i + 1] == "all") {
        request.orbital_tables = 2;
        ++i;
      }
    } else if (a == "--cube") {
      if (i + 1 == args.size()) fail("--cube needs a list, such as homo,lumo,density");
      std::vector<std::string> problems;
      request.cubes = host::cube_requests(args[++i], problems);
      if (!problems.empty()) fail(problems);
    } else if (a == "--cube-prefix") {
      if (i + 1 == args.size()) fail(a + " needs a name prefix");
      request.cube_prefix = args[++i];
    } else if (a == "--cube-step" || a == "--cube-points") {
      if (i + 1 == args.size()) fail(a + " needs a number");
      const double v = positive_number(a, args[++i], a == "--cube-step" ? 10.0 : 1.0e8);
      if (a == "--cube-step") {
        request.cube_step = v;
      } else if (v < 8.0 || v != std::floor(v)) {
        fail(a + " " + args[i] + ": give a whole number of points, at least 8");
      } else {
        request.cube_max_points = static_cast<long>(v);
      }
    } else if (a == "--fragments") {
      request.fragments = fragment_settings(i + 1 < args.size() ? args[++i] : "");
    } else if (a == "--frozen-core") {
      request.frozen_core = true;
    } else if (a == "--states") {
      if (i + 1 == args.size()) fail("--states needs a number of states");
      const std::string& value = args[++i];
      std::size_t used = 0;
      int states = 0;
      try {
        states = std::stoi(value, &used);
      } catch (const std::exception&) {
        used = 0;
      }
      if (used != value.size() || states < 1 || states > host::kMaxStates) {
        fail("--states " + value + ": give a whole number of states per spin type from 1 to " +
             std::to_string(host::kMaxStates));
      }
      request.states = states;
    } else if (a == "--progress" || a == "--no-progress") {
      request.progress = a == "--progress" ? host::ProgressMode::on : host::ProgressMode::off;
    } else if (a == "-h" || a == "--help") {
      usage(std::cout);
      std::exit(kSuccess);
    } else if (a.size() > 1 && a[0] == '-') {
      fail("unknown option '" + a + "' (see norvik --help)");
    } else {
      positional.push_back(a);
    }
  }
  if (!xyz_problems.empty()) fail(xyz_problems);
  if (positional.empty() || positional.size() > 2) {
    usage(std::cerr);
    std::exit(kUsageError);
  }
  request.molecule_file = positional[0];
  request.has_parameter_file = positional.size() == 2;
  if (request.has_parameter_file) request.parameter_file = positional[1];
  if (host::is_xyz_name(positional[0])) {
    read_xyz_request(request, have_report);
  } else {
    std::vector<std::string> refused;
    for (const std::string& option : request.xyz_choices.given) {
      refused.push_back(host::xyz_option_refused(option, request.molecule_file));
    }
    if (!refused.empty()) fail(refused);
    request.molecule_read = request.molecule_file;
    request.parameter_read = request.parameter_file;
  }
  if (!have_report) request.report = with_extension(request.molecule_file, ".report");
  if (!have_log) request.log = with_extension(request.molecule_file, ".log");
  // The trajectory of a job from an .xyz file must not take the .xyz file's
  // name, nor must a repeat of it from the molecule file written then.
  const bool from_xyz = !request.xyz_file.empty() || host::written_by_norvik(request.molecule_file);
  if (!have_xyz) {
    request.xyz = with_extension(request.molecule_file, from_xyz ? ".opt.xyz" : ".xyz");
  }
  if (!have_json) request.json = with_extension(request.molecule_file, ".json");

  if (!have_molden) request.molden = with_extension(request.molecule_file, ".molden");
  // The page goes beside the result file it is made from.
  if (!have_html)
    request.html = std::filesystem::path(request.json).replace_extension(".html").string();
  if (request.vib.empty()) request.vib = with_extension(request.molecule_file, "");
  if (request.cube_prefix.empty()) request.cube_prefix = with_extension(request.molecule_file, "");
  return request;
}

// Writes the molecule and parameter files of an .xyz job under their partial
// names, after reading the .xyz file and refusing to replace a file of those
// names that norvik did not write.
std::vector<host::OutputFile> write_xyz_job(const Request& request, const std::string& command) {
  std::vector<std::string> problems;
  if (std::string problem = host::input_file_problem(request.xyz_file, "xyz file");
      !problem.empty()) {
    fail(std::vector<std::string>{problem});
  }
  const std::vector<host::XyzAtom> atoms = host::read_xyz(request.xyz_file, problems);
  if (!problems.empty()) fail(problems);
  host::XyzChoices choices = request.xyz_choices;
  host::settle_multiplicity(request.xyz_file, atoms, choices, problems);
  if (!problems.empty()) fail(problems);

  const std::vector<host::OutputFile> written{
      host::output_file("molecule file", "--report", request.molecule_file),
      host::output_file("parameter file", "--report", request.parameter_file)};
  for (const host::OutputFile& out : written) {
    std::error_code ec;
    if (std::filesystem::exists(out.path, ec) && !host::written_by_norvik(out.path)) {
      problems.push_back(out.path +
                         " exists and norvik did not write it (its first line does not "
                         "begin with '" +
                         host::kWrittenMarker +
                         "'); move it away, or give the job another name with --report "
                         "NAME.report (the molecule and parameter files take the report's name)");
    }
  }
  if (!problems.empty()) fail(problems);

  const std::array<std::string, 2> texts{
      host::molecule_file_text(request.xyz_file, command, atoms, choices),
      host::parameter_file_text(request.xyz_file, command, choices)};
  for (std::size_t k = 0; k < written.size(); ++k) {
    // A partial file of an earlier run is replaced, not written through.
    std::error_code ec;
    std::filesystem::remove(written[k].partial, ec);
    std::ofstream file(written[k].partial, std::ios::binary | std::ios::trunc);
    file << texts[k];
    file.close();
    if (!file) {
      for (std::size_t j = 0; j <= k; ++j) std::filesystem::remove(written[j].partial, ec);
      fail("cannot write the partial " + written[k].what + " '" + written[k].partial +
           "'; the folder must exist and be writable");
    }
  }
  return written;
}

// The web page of a run whose result files are in place.  The results stand
// without it, so a page that cannot be made is said on standard error and the
// run keeps its status.
void write_page(const std::vector<host::OutputFile>& outputs, const std::string& page) {
  for (const host::OutputFile& out : outputs) {
    if (out.what != "JSON result") continue;
    std::vector<std::string> notes;
    const std::string problem = host::write_view(out.path, page, &notes);
    for (const std::string& note : notes) std::cerr << "norvik: " << note << '\n';
    if (problem.empty()) {
      std::cout << "norvik: web page written to " << page << "\n";
    } else {
      std::cerr << "norvik: the web page was not written: " << problem << '\n';
    }
  }
}

int run(const std::vector<std::string>& args) {
  const Request request = parse(args);

  // The names first: every one goes to the library in a blank-padded buffer.
  std::vector<std::string> problems;
  auto check_name = [&](const std::string& name, std::size_t limit, const std::string& what) {
    const std::string problem = host::file_name_problem(name, limit, what);
    if (!problem.empty()) problems.push_back(problem);
  };
  const std::size_t path_length = host::kPathLength;
  // The files written from an .xyz file go to the library under partial names.
  const std::size_t input_length =
      request.xyz_file.empty() ? path_length : path_length - host::kPartialSuffixLength;
  check_name(request.molecule_file, input_length, "molecule file");
  if (request.has_parameter_file) {
    check_name(request.parameter_file, input_length, "parameter file");
  }
  check_name(request.report, path_length - host::kPartialSuffixLength, "report");
  check_name(request.log, path_length - host::kPartialSuffixLength, "run log");
  check_name(request.xyz, path_length - host::kPartialSuffixLength, "trajectory");
  check_name(request.json, path_length - host::kPartialSuffixLength, "JSON result");
  check_name(request.molden, path_length - host::kPartialSuffixLength, "molden file");
  check_name(request.html, path_length - host::kPartialSuffixLength, "web page");
  check_name(request.vib + ".modes.molden", path_length - host::kPartialSuffixLength,
             "normal-mode file");
  for (const std::string& what : request.cubes) {
    check_name(request.cube_prefix + "." + what + ".cube", path_length - host::kPartialSuffixLength,
               "cube file");
  }
  if (!problems.empty()) fail(problems);

  // The input files: regular, bounded, readable, and what they hold.  An .xyz
  // job first writes its molecule and parameter files under their partial
  // names, and a host error before the job removes them again.
  std::vector<host::InputFile> inputs;
  std::vector<host::OutputFile> written;
  if (request.xyz_file.empty()) {
    inputs.push_back({"molecule file", request.molecule_file});
    if (!request.parameter_file.empty()) {
      inputs.push_back({"parameter file", request.parameter_file});
    }
    for (const auto& in : inputs) {
      const std::string problem = host::input_file_problem(in.path, in.what);
      if (!problem.empty()) problems.push_back(problem);
    }
    if (!problems.empty()) fail(problems);
  } else {
    inputs.push_back({"xyz file", request.xyz_file});
    written =
        write_xyz_job(request, "norvik run " + host::command_text(args, host::kMostCommandShown));
  }
  const auto give_up = [&written](const std::vector<std::string>& found) {
    std::error_code ec;
    for (const host::OutputFile& w : written) std::filesystem::remove(w.partial, ec);
    fail(found);
  };
  const host::InputFacts facts =
      host::check_inputs(request.molecule_read, request.parameter_read, problems);
  if (!problems.empty()) give_up(problems);
  // The fragments' charges of a counterpoise job: those of --fragments, which
  // must add up to the molecule's, or neutral fragments (HeH+: He and H+).
  if (request.fragments && !facts.counterpoise) {
    fail("--fragments is for a counterpoise job: write 'counterpoise' in record 18 of " +
         request.molecule_file);
  }
  if (request.fragments && (*request.fragments)[0] + (*request.fragments)[2] != facts.charge) {
    fail("--fragments: the fragment charges add up to " +
         std::to_string((*request.fragments)[0] + (*request.fragments)[2]) +
         ", the molecule's charge (record 20) is " + std::to_string(facts.charge) +
         "; make them agree");
  }
  if (facts.counterpoise && !request.fragments && facts.charge != 0 && !facts.hehpl) {
    fail(request.molecule_file +
         ", record 18 (counterpoise): without --fragments the fragments are neutral (HeH+ "
         "excepted: He and H+), so the molecule must be too; give the fragments' charges and "
         "multiplicities with --fragments QA,MA,QB,MB, or write charge 0 in record 20");
  }

  // The outputs: never one of the inputs, started afresh under partial names.
  if (!facts.start_density.empty()) inputs.push_back({"start-density file", facts.start_density});
  // An optimisation also writes its path, one .xyz frame per cycle.
  std::vector<host::OutputFile> outputs{
      host::output_file("report", "--report", request.report),
      host::output_file("run log", "--log", request.log),
      host::output_file("JSON result", "--json", request.json),
      host::output_file("molden file", "--molden", request.molden)};
  if (facts.optimisation_cycles > 0) {
    outputs.push_back(host::output_file("trajectory", "--xyz", request.xyz));
  }
  // A vibrational analysis writes its modes and spectra beside them.
  if (facts.vibrations > 0) {
    outputs.push_back(host::output_file("normal modes", "--vib", request.vib + ".modes.xyz"));
    outputs.push_back(
        host::output_file("normal modes (molden)", "--vib", request.vib + ".modes.molden"));
    outputs.push_back(host::output_file("infrared spectrum", "--vib", request.vib + ".ir.dat"));
    if (facts.vibrations == 2) {
      outputs.push_back(host::output_file("Raman spectrum", "--vib", request.vib + ".raman.dat"));
    }
  }
  // Cube files, one per request.
  for (const std::string& what : request.cubes) {
    outputs.push_back(
        host::output_file("cube " + what, "--cube", request.cube_prefix + "." + what + ".cube"));
  }
  // Excited states write their UV-vis spectrum beside the report.
  if (host::is_excited_state_theory(facts.theory)) {
    outputs.push_back(host::output_file("UV-vis spectrum", "--vib", request.vib + ".uv.dat"));
  }
  std::vector<host::OutputFile> all_outputs = outputs;
  all_outputs.insert(all_outputs.end(), written.begin(), written.end());
  // The web page is made from the result files once they are in place (below),
  // through a partial name of its own; it is checked with the others.
  const host::OutputFile page = host::output_file("web page", "--html", request.html);
  std::vector<host::OutputFile> checked = all_outputs;
  checked.push_back(page);
  problems = host::output_problems(checked, inputs);
  if (!problems.empty()) give_up(problems);
  if (const std::string problem = host::start_partials(outputs); !problem.empty()) {
    give_up({problem});
  }
  outputs = all_outputs;

  const std::string note = partial_files_note(outputs);
  const std::string stopped = "norvik: the library stopped the job (its message is above)\n" + note;
  host::JobEnd end;
  if (host::progress_shown(request.progress)) {
    host::ProgressFiles progress;
    progress.report = outputs[0].partial;
    progress.log = outputs[1].partial;
    progress.optimisation_cycles = facts.optimisation_cycles;
    host::ScratchFile hessian;
    if (facts.vibrations > 0) progress.hessian = hessian.path();
    end = host::run_job([&] { return run_job(request, facts, outputs, progress.hessian); }, stopped,
                        progress);
  } else {
    end = host::run_job([&] { return run_job(request, facts, outputs, ""); }, stopped);
  }
  if (end.exited && (end.status == kSuccess || end.status == kNotConverged)) {
    if (const std::string problem = host::move_into_place(outputs); !problem.empty()) {
      fail(problem);
    }
    std::cout << "norvik: report written to " << outputs[0].path << "\n"
              << "norvik: run log written to " << outputs[1].path << "\n";
    for (std::size_t k = 2; k < outputs.size(); ++k)
      std::cout << "norvik: " << outputs[k].what << " written to " << outputs[k].path << "\n";
    write_page(outputs, page.path);
    return end.status;
  }

  if (end.exited && end.status == kUsageError) {
    std::cerr << "norvik: nothing was computed\n" << note;
    return kUsageError;
  }
  if (end.exited) {
    std::cerr << "norvik: the library stopped the job (exit status " << end.status << ")";
  } else {
    std::cerr << "norvik: the job ended abnormally (signal " << end.status << ")";
  }
  if (end.message.empty()) {
    std::cerr << "\n";
  } else {
    std::cerr << ":\n" << end.message;
  }
  std::cerr << note;
  return kLibraryError;
}

// norvik view RESULT.json [--output FILE.html]: the result file of a run as one
// self-contained web page (docs/viewer.md).
int view_command(const std::vector<std::string>& args) {
  std::string result, output;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    if (a == "-h" || a == "--help") {
      std::cout << "usage: norvik view RESULT.json [--output FILE.html]\n"
                   "\n"
                   "Writes the result file of a run (PREFIX.json) as one web page that needs no\n"
                   "server and no network: the molecule, orbital surfaces from the cube files\n"
                   "the result lists, the optimisation path, normal modes and spectra, SCF\n"
                   "convergence, excited states, energies, dipole and charges.\n"
                   "  --output FILE.html  the page (default: RESULT.html beside RESULT.json)\n";
      std::exit(kSuccess);
    } else if (a == "--output") {
      if (i + 1 == args.size())
        fail("--output needs the name of the page, e.g. --output water.html");
      output = args[++i];
    } else if (a.size() > 1 && a[0] == '-') {
      fail("unknown option '" + a + "' of norvik view (see norvik view --help)");
    } else if (!result.empty()) {
      fail("norvik view takes one result file, not '" + result + "' and '" + a + "'");
    } else {
      result = a;
    }
  }
  if (result.empty())
    fail("norvik view needs a result file: norvik view RESULT.json [--output FILE.html]");
  const std::string page = output.empty() ? host::default_view_path(result) : output;
  std::vector<std::string> notes;
  if (const std::string problem = host::write_view(result, page, &notes); !problem.empty()) {
    fail(problem);
  }
  for (const std::string& note : notes) std::cerr << "norvik: " << note << '\n';
  std::cout << "norvik: page written to " << page << '\n';
  return kSuccess;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  if (args.empty() || args[0] == "-h" || args[0] == "--help") {
    usage(args.empty() ? std::cerr : std::cout);
    return args.empty() ? kUsageError : kSuccess;
  }
  if (args[0] == "--version" || args[0] == "version") {
    if (args.size() > 1) fail(args[0] + " takes no arguments");
    std::cout << "norvik " << NORVIK_HOST_VERSION << '\n';
    return kSuccess;
  }
  if (args[0] == "check") return host::check_command({args.begin() + 1, args.end()});
  if (args[0] == "view") return view_command({args.begin() + 1, args.end()});
  if (args[0] == "batch") return host::run_python_batch({args.begin() + 1, args.end()});
  if (args[0] != "run") fail("unknown command '" + args[0] + "' (see norvik --help)");
  return run({args.begin() + 1, args.end()});
}
