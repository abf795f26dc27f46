// norvik: the command-line host.
//
//   norvik run MOLECULE_FILE [PARAMETER_FILE] [--report FILE] [--log FILE]
//
// Reads the job through the library, writes the report header and the run-log
// header, and says where they went.
#include <omp.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "hartree_fock.h"
#include "host_job.h"
#include "norvik.h"

namespace {

constexpr int kUsageError = 2;

void usage(std::ostream& out) {
  out << "usage: norvik run MOLECULE_FILE [PARAMETER_FILE] [--report FILE] [--log FILE]\n"
         "\n"
         "  MOLECULE_FILE   the molecule, its charge and multiplicity, theory and basis set\n"
         "  PARAMETER_FILE  SCF settings (built-in settings when left out)\n"
         "  --report FILE   report file (default: MOLECULE_FILE's name with .report)\n"
         "  --log FILE      run log, one line per SCF cycle (default: with .log)\n"
         "\n"
         "The report and the log are started afresh by every run.\n";
}

[[noreturn]] void fail(const std::string& message) {
  std::cerr << "norvik: " << message << '\n';
  std::exit(kUsageError);
}

// A file name must fit the library's file-name buffer.
void require_fitting_name(const std::string& path, const char* what) {
  if (path.size() > static_cast<std::size_t>(host::kPathLength)) {
    fail(std::string(what) + " name longer than " + std::to_string(host::kPathLength) +
         " characters: '" + path + "'");
  }
}

// An input file must exist and be readable before the library is asked to read it.
void require_readable(const std::string& path, const char* what) {
  std::error_code ec;
  if (std::filesystem::is_directory(path, ec))
    fail(std::string(what) + " '" + path + "' is a directory");
  std::ifstream in(path);
  if (!in) fail(std::string("cannot read ") + what + " '" + path + "'");
  require_fitting_name(path, what);
}

// Output files are started afresh; a name the library cannot take is refused here.
void start_fresh(const std::string& path, const char* what) {
  require_fitting_name(path, what);
  std::ofstream out(path, std::ios::trunc);
  if (!out) fail(std::string("cannot write ") + what + " '" + path + "'");
}

std::string with_extension(const std::string& molecule_file, const char* extension) {
  return std::filesystem::path(molecule_file).filename().replace_extension(extension).string();
}

int run(const std::vector<std::string>& args) {
  std::vector<std::string> positional;
  std::string report, log;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    if (a == "--report" || a == "--log") {
      if (i + 1 == args.size()) fail(a + " needs a file name");
      (a == "--report" ? report : log) = args[++i];
    } else if (a == "-h" || a == "--help") {
      usage(std::cout);
      return 0;
    } else if (a.size() > 1 && a[0] == '-') {
      fail("unknown option '" + a + "' (see norvik --help)");
    } else {
      positional.push_back(a);
    }
  }
  if (positional.empty() || positional.size() > 2) {
    usage(std::cerr);
    return kUsageError;
  }

  host::Job job;
  const std::string& molecule_file = positional[0];
  require_readable(molecule_file, "molecule file");
  job.molecule_file = host::padded(molecule_file, host::kPathLength);
  if (positional.size() == 2) {
    require_readable(positional[1], "parameter file");
    job.parameter_file = host::padded(positional[1], host::kPathLength);
  } else {
    job.parameter_file = host::padded("", host::kPathLength);
  }
  if (report.empty()) report = with_extension(molecule_file, ".report");
  if (log.empty()) log = with_extension(molecule_file, ".log");
  job.report_file = host::padded(report, host::kPathLength);
  job.log_file = host::padded(log, host::kPathLength);

  host::setup(job);
  if (job.threads > 0) omp_set_num_threads(job.threads);
  start_fresh(report, "report file");
  start_fresh(log, "log file");
  host::write_header(job);
  std::cout << "norvik: " << host::trimmed(job.theory) << " / " << host::trimmed(job.basis)
            << " job '" << host::trimmed(job.molecule_name) << "': " << job.natom - job.nghost
            << " atoms, " << job.nalpha << " + " << job.nbeta << " electrons\n"
            << std::flush;

  if (job.kohn_sham) {
    std::cout << "norvik: Kohn-Sham jobs are not available yet; the report holds the job header\n";
  } else {
    host::PointResult point = host::run_hartree_fock(job);
    for (double& d : point.dipole) d = std::abs(d) < 5e-6 ? 0.0 : d;  // no "-0.00000"
    std::printf("norvik: E(%s) = %.9f hartree (%s, %d basis functions), dipole %.5f %.5f %.5f eA\n",
                job.multiplicity == 1 ? "RHF" : "UHF", point.energy / host::kHartreeEv,
                point.in_core ? "stored integrals" : "integral-direct", point.nbasis,
                point.dipole[0], point.dipole[1], point.dipole[2]);
  }
  std::cout << "norvik: report written to " << report << "\n"
            << "norvik: run log written to " << log << "\n";
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  if (args.empty() || args[0] == "-h" || args[0] == "--help") {
    usage(args.empty() ? std::cerr : std::cout);
    return args.empty() ? kUsageError : 0;
  }
  if (args[0] != "run") fail("unknown command '" + args[0] + "' (see norvik --help)");
  return run({args.begin() + 1, args.end()});
}
