#include "check_command.h"

#include <algorithm>
#include <iostream>

#include "host_job.h"
#include "input_check.h"
#include "output_files.h"
#include "xyz_input.h"

namespace host {

namespace {

// The most problems listed for one checked job; the rest are counted.
constexpr std::size_t kMaxProblemsShown = 20;

struct Checked {
  std::string molecule_file, parameter_file;  // or the .xyz file in molecule_file
  bool xyz = false;
};

void check_usage(std::ostream& out) {
  out << "usage: norvik check MOLECULE_FILE [PARAMETER_FILE] ... [FILE.xyz [options]] ...\n"
         "\n"
         "Checks input files as norvik run does before a job, and runs nothing.  A .par\n"
         "file is the parameter file of the molecule file before it; an .xyz file takes\n"
         "the options of an .xyz job (--method, --basis, --charge, --mult, --opt, --freq,\n"
         "--raman, --population, --memory, --threads).  Exit status 0: every file is fine;\n"
         "2: problems, each on standard error.\n";
}

bool ends_with(const std::string& text, const std::string& tail) {
  return text.size() >= tail.size() &&
         text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

std::string summary(const std::string& theory, const std::string& basis, int atoms, int electrons) {
  return " (" + theory + " / " + basis + ", " + std::to_string(atoms) +
         (atoms == 1 ? " atom, " : " atoms, ") + std::to_string(electrons) +
         (electrons == 1 ? " electron)" : " electrons)");
}

// The problems of one molecule-file job; on success the summary of the job.
std::vector<std::string> check_molecule_job(const Checked& job, std::string& fine) {
  std::vector<std::string> problems;
  std::vector<InputFile> inputs{{"molecule file", job.molecule_file}};
  if (!job.parameter_file.empty()) inputs.push_back({"parameter file", job.parameter_file});
  for (const InputFile& in : inputs) {
    std::string problem = file_name_problem(in.path, kPathLength, in.what);
    if (problem.empty()) problem = input_file_problem(in.path, in.what);
    if (!problem.empty()) problems.push_back(problem);
  }
  if (!problems.empty()) return problems;
  const InputFacts facts = check_inputs(job.molecule_file, job.parameter_file, problems);
  if (!problems.empty()) return problems;
  // What the library would stop on at its setup, which a run finds only then.
  if (!is_known_theory(facts.theory)) {
    problems.push_back(job.molecule_file + ", record " + std::to_string(facts.theory_record) +
                       " (theory): '" + facts.theory + "' is not a theory of the library; write " +
                       known_theories() + " (letter case as written here)");
  }
  const std::string electrons =
      electron_count_problem(facts.electrons, facts.multiplicity,
                             job.molecule_file + ", record " +
                                 std::to_string(facts.multiplicity_record) + " (multiplicity)");
  if (!electrons.empty()) {
    problems.push_back(electrons + "; correct the charge (record 20) or the multiplicity");
  }
  fine = summary(facts.theory, facts.basis, facts.natom, facts.electrons);
  return problems;
}

std::vector<std::string> check_xyz_job(const Checked& job, XyzChoices choices, std::string& fine) {
  std::vector<std::string> problems;
  if (std::string problem = input_file_problem(job.molecule_file, "xyz file"); !problem.empty()) {
    return {problem};
  }
  const std::vector<XyzAtom> atoms = read_xyz(job.molecule_file, problems);
  if (!problems.empty()) return problems;
  const int electrons = settle_multiplicity(job.molecule_file, atoms, choices, problems);
  fine = summary(choices.method, choices.basis, static_cast<int>(atoms.size()), electrons);
  return problems;
}

}  // namespace

int check_command(const std::vector<std::string>& args) {
  XyzChoices choices;
  std::vector<std::string> problems;
  std::vector<Checked> jobs;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    if (read_xyz_option(args, i, choices, problems)) continue;
    if (a == "-h" || a == "--help") {
      check_usage(std::cout);
      return 0;
    }
    if (a.size() > 1 && a[0] == '-') {
      problems.push_back("unknown option '" + a +
                         "' for norvik check; it takes only the options of an .xyz job");
    } else if (is_xyz_name(a)) {
      jobs.push_back({a, "", true});
    } else if (ends_with(a, ".par")) {
      if (jobs.empty() || jobs.back().xyz || !jobs.back().parameter_file.empty()) {
        problems.push_back(a +
                           ": a parameter file is read in the layout of its molecule file's "
                           "theory; name the molecule file before it: norvik check MOLECULE_FILE " +
                           a);
      } else {
        jobs.back().parameter_file = a;
      }
    } else {
      jobs.push_back({a, "", false});
    }
  }
  if (problems.empty() && jobs.empty()) {
    check_usage(std::cerr);
    return 2;
  }
  const bool any_xyz =
      std::any_of(jobs.begin(), jobs.end(), [](const Checked& j) { return j.xyz; });
  if (!any_xyz && !jobs.empty()) {
    for (const std::string& option : choices.given) {
      problems.push_back(xyz_option_refused(option, jobs.empty() ? "" : jobs[0].molecule_file));
    }
  }
  if (!problems.empty()) {
    for (const std::string& p : problems) std::cerr << "norvik: " << p << '\n';
    return 2;
  }

  int status = 0;
  for (const Checked& job : jobs) {
    std::string fine;
    const std::vector<std::string> found =
        job.xyz ? check_xyz_job(job, choices, fine) : check_molecule_job(job, fine);
    const std::string name =
        job.molecule_file + (job.parameter_file.empty() ? "" : " with " + job.parameter_file);
    if (found.empty()) {
      std::cout << "norvik: " << name << ": fine" << fine << '\n';
      continue;
    }
    status = 2;
    for (std::size_t k = 0; k < found.size() && k < kMaxProblemsShown; ++k) {
      std::cerr << "norvik: " << found[k] << '\n';
    }
    if (found.size() > kMaxProblemsShown) {
      const std::size_t more = found.size() - kMaxProblemsShown;
      std::cerr << "norvik: ... and " << more << " more problem" << (more == 1 ? "" : "s") << " in "
                << name << '\n';
    }
  }
  return status;
}

}  // namespace host
