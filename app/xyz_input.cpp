#include "xyz_input.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string_view>
#include <system_error>

#include "input_check.h"

namespace host {

namespace {

// The theory keywords of the library (docs/functionals.md): the Hartree-Fock
// family, then the functionals, which the library compares exactly.
constexpr std::array<std::string_view, 4> kHartreeFockTheories = {"HF", "MP2", "RPA", "TDA"};
constexpr std::array<std::string_view, 19> kFunctionals = {
    "B3LYP", "B3LYP5", "B3LYP3", "BLYP", "B1OP",  "BOP",   "OP",    "PFOP",   "SVWN",  "SVWN5",
    "SVWN3", "SPL",    "SGL",    "TDKS", "TDKS5", "TDKS3", "KSTDA", "KSTDA5", "KSTDA3"};
// Other names of a theory that --method takes.
struct Alias {
  std::string_view name, theory;
};
constexpr std::array<Alias, 2> kMethodAliases = {{{"CIS", "TDA"}, {"TDHF", "RPA"}}};

constexpr std::array<std::string_view, 5> kPopulations = {"none", "Mulliken", "Lowdin", "both",
                                                          "shells"};

std::string upper(std::string_view text) {
  std::string out(text);
  for (char& c : out) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return out;
}

std::string lower(std::string_view text) {
  std::string out(text);
  for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return out;
}

// The published spelling of a basis-set name of the library: x is the asterisk.
std::string published(std::string_view name) {
  std::string out(name);
  std::replace(out.begin(), out.end(), 'x', '*');
  return out;
}

std::optional<long> whole_number(std::string_view text) {
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  long v = 0;
  const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), v);
  if (ec != std::errc() || end != text.data() + text.size() || text.empty()) return std::nullopt;
  return v;
}

// A real number written in any of the usual ways, the Fortran D exponent included.
std::optional<double> real_number(std::string_view text) {
  std::string s(text);
  if (!s.empty() && s.front() == '+') s.erase(0, 1);
  std::replace(s.begin(), s.end(), 'D', 'e');
  std::replace(s.begin(), s.end(), 'd', 'e');
  double v = 0.0;
  const auto [end, ec] = std::from_chars(s.data(), s.data() + s.size(), v);
  if (ec != std::errc() || end != s.data() + s.size() || s.empty()) return std::nullopt;
  return v;
}

// A real in a form the free-format reader takes as a real: the shortest text
// that reads back to the same number, with a decimal point.
std::string real_text(double v) {
  std::array<char, 64> buffer{};
  const auto [end, ec] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), v);
  std::string s(buffer.data(), ec == std::errc() ? end : buffer.data());
  if (s.find_first_of(".e") == std::string::npos) s += ".0";
  return s;
}

std::string theory_keyword(const std::string& text) {
  const std::string u = upper(text);
  for (const auto t : kHartreeFockTheories) {
    if (u == t) return std::string(t);
  }
  for (const auto t : kFunctionals) {
    if (u == t) return std::string(t);
  }
  for (const Alias& a : kMethodAliases) {
    if (u == a.name) return std::string(a.theory);
  }
  return "";
}

// The library's name of a basis set written as published (6-31G*, 6-31+G(d,p))
// or as the library writes it (6-31Gx), in any letter case; "" if none.
std::string basis_keyword(const std::string& text) {
  std::string u = upper(text);
  for (const auto& [from, to] :
       {std::pair<std::string_view, std::string_view>{"(D,P)", "XX"}, {"(D)", "X"}, {"*", "X"}}) {
    for (std::size_t at = u.find(from); at != std::string::npos; at = u.find(from, at)) {
      u.replace(at, from.size(), to);
    }
  }
  for (const auto name : basis_names()) {
    if (upper(name) == u) return std::string(name);
  }
  return "";
}

std::string basis_list() {
  std::string out;
  for (const auto name : basis_names()) out += (out.empty() ? "" : ", ") + published(name);
  return out;
}

std::vector<std::string_view> fields(std::string_view line) {
  std::vector<std::string_view> out;
  std::size_t at = 0;
  while (true) {
    at = line.find_first_not_of(" \t\r\f\v", at);
    if (at == std::string_view::npos) break;
    const std::size_t end = std::min(line.find_first_of(" \t\r\f\v", at), line.size());
    out.push_back(line.substr(at, end - at));
    at = end;
  }
  return out;
}

// Z of an element written in any letter case, or as its atomic number; 0 if none.
int element_number(std::string_view text) {
  const auto symbols = element_symbols();
  if (const auto z = whole_number(text)) {
    return *z >= 1 && *z <= static_cast<long>(symbols.size()) ? static_cast<int>(*z) : 0;
  }
  for (std::size_t k = 0; k < symbols.size(); ++k) {
    if (lower(symbols[k]) == lower(text)) return static_cast<int>(k) + 1;
  }
  return 0;
}

// A path or a command as text for a comment line: no control characters.
std::string printable(std::string_view text) {
  std::string out(text);
  for (char& c : out) {
    const auto u = static_cast<unsigned char>(c);
    if (u < 0x20 || u == 0x7f) c = '?';
  }
  return out;
}

// Room in the first line for the .xyz path beside the command (at most
// kMostCommandShown): a comment record may hold kMaxRecordLength characters.
constexpr std::size_t kMostPathShown = 300;

std::string first_line(const std::string& xyz_path, const std::string& command,
                       const std::string& next) {
  std::string path = printable(xyz_path);
  if (path.size() > kMostPathShown) path = path.substr(0, kMostPathShown) + "...";
  return std::string(kWrittenMarker) + path + " (" + command + "); " + next + "\n";
}

}  // namespace

bool is_hartree_fock_theory(const std::string& theory) {
  return std::find(kHartreeFockTheories.begin(), kHartreeFockTheories.end(), theory) !=
         kHartreeFockTheories.end();
}

bool is_known_theory(const std::string& theory) {
  return is_hartree_fock_theory(theory) ||
         std::find(kFunctionals.begin(), kFunctionals.end(), theory) != kFunctionals.end();
}

std::string known_theories() {
  std::string out;
  for (const auto t : kHartreeFockTheories) out += std::string(out.empty() ? "" : ", ") += t;
  out += " or a functional: ";
  for (std::size_t k = 0; k < kFunctionals.size(); ++k) {
    out += std::string(k == 0 ? "" : ", ") += kFunctionals[k];
  }
  return out;
}

bool read_xyz_option(const std::vector<std::string>& args, std::size_t& i, XyzChoices& choices,
                     std::vector<std::string>& problems) {
  const std::string& a = args[i];
  static constexpr std::array<std::string_view, 10> kOptions = {
      "--method", "--basis", "--charge",     "--mult",   "--opt",
      "--freq",   "--raman", "--population", "--memory", "--threads"};
  if (std::find(kOptions.begin(), kOptions.end(), a) == kOptions.end()) return false;
  choices.given.push_back(a);
  const bool flag = a == "--freq" || a == "--raman" || a == "--opt";
  if (!flag && i + 1 == args.size()) {
    problems.push_back(a + " needs a value (see norvik --help)");
    return true;
  }
  const std::string value = flag ? "" : args[++i];
  if (a == "--method") {
    choices.method = theory_keyword(value);
    if (choices.method.empty()) {
      problems.push_back("--method " + value + ": not a theory of the library; give " +
                         known_theories() + " (CIS stands for TDA, TDHF for RPA; any letter case)");
    }
  } else if (a == "--basis") {
    choices.basis = basis_keyword(value);
    if (choices.basis.empty()) {
      problems.push_back("--basis " + value + ": not a basis set of the library; give one of " +
                         basis_list() + " (x may stand for *, any letter case)");
    }
  } else if (a == "--charge") {
    const auto q = whole_number(value);
    if (!q || std::abs(*q) > 1000) {
      problems.push_back("--charge " + value + ": give the molecule's charge as a whole number");
    } else {
      choices.charge = static_cast<int>(*q);
    }
  } else if (a == "--mult") {
    const auto m = whole_number(value);
    if (!m || *m < 1 || *m > 1000) {
      problems.push_back("--mult " + value +
                         ": give the spin multiplicity 2S+1 as a whole number: 1 for a singlet, 2 "
                         "for a doublet, ...");
    } else {
      choices.multiplicity = static_cast<int>(*m);
    }
  } else if (a == "--opt") {
    choices.optimisation_cycles = kDefaultOptimisationCycles;
    const bool number_follows = i + 1 < args.size() && !args[i + 1].empty() &&
                                std::all_of(args[i + 1].begin(), args[i + 1].end(), [](char c) {
                                  return std::isdigit(static_cast<unsigned char>(c));
                                });
    if (number_follows) {
      const auto n = whole_number(args[++i]);
      if (!n || *n < 1 || *n > kMaxIterations) {
        problems.push_back("--opt " + args[i] + ": give the most optimisation cycles, 1 to " +
                           std::to_string(kMaxIterations) + " (default " +
                           std::to_string(kDefaultOptimisationCycles) +
                           "), or leave --opt out for a single point");
      } else {
        choices.optimisation_cycles = static_cast<int>(*n);
      }
    }
  } else if (a == "--freq") {
    choices.vibrations = std::max(choices.vibrations, 1);
  } else if (a == "--raman") {
    choices.vibrations = 2;
  } else if (a == "--population") {
    const auto p = std::find_if(kPopulations.begin(), kPopulations.end(),
                                [&](std::string_view name) { return lower(name) == lower(value); });
    if (p == kPopulations.end()) {
      problems.push_back("--population " + value +
                         ": give none, Mulliken, Lowdin, both or shells (any letter case)");
    } else {
      choices.population = std::string(*p);
    }
  } else if (a == "--memory") {
    const auto gb = real_number(value);
    if (!gb || !(*gb > 0.0) || *gb > kMaxMemoryGb) {
      problems.push_back("--memory " + value +
                         ": give the memory limit in GB, above 0 and at most " +
                         real_text(kMaxMemoryGb));
    } else {
      choices.memory_gb = *gb;
    }
  } else {
    const auto n = whole_number(value);
    if (!n || *n < 0 || *n > kMaxThreads) {
      problems.push_back("--threads " + value + ": give a whole number of threads from 0 (all " +
                         "processors) to " + std::to_string(kMaxThreads));
    } else {
      choices.threads = static_cast<int>(*n);
    }
  }
  return true;
}

std::string xyz_option_refused(const std::string& option, const std::string& molecule_file) {
  struct Record {
    std::string_view option, what;
  };
  static constexpr std::array<Record, 10> kRecords = {{
      {"--method", "record 2 (theory) of the molecule file"},
      {"--basis", "record 4 (basis set) of the molecule file"},
      {"--charge", "record 20 (charge) of the molecule file"},
      {"--mult", "record 22 (multiplicity) of the molecule file"},
      {"--opt", "records 6 (optimisation cycles) and 8 (2: quasi-Newton) of the molecule file"},
      {"--freq", "record 10 (1: vibrations) of the molecule file"},
      {"--raman", "record 10 (2: vibrations with Raman) of the molecule file"},
      {"--population", "record 14 (population analysis) of the molecule file"},
      {"--memory", "record 2 (memory limit) of the parameter file"},
      {"--threads", "record 4 (threads) of the parameter file"},
  }};
  std::string what = "the molecule file";
  for (const Record& r : kRecords) {
    if (r.option == option) what = r.what;
  }
  return option + " is for an .xyz input; " + molecule_file + " is a molecule file, so set " +
         what + " instead";
}

bool is_xyz_name(const std::string& path) {
  return path.size() > 4 && lower(path.substr(path.size() - 4)) == ".xyz";
}

std::vector<XyzAtom> read_xyz(const std::string& path, std::vector<std::string>& problems) {
  const std::size_t problems_before = problems.size();
  std::ifstream in(path, std::ios::binary);
  std::ostringstream whole;
  whole << in.rdbuf();
  const std::string text = whole.str();
  std::vector<std::string_view> lines;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    std::string_view line = std::string_view(text).substr(at, end - at);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    lines.push_back(line);
    at = end + 1;
  }
  auto problem = [&](std::size_t index, const std::string& what) {
    problems.push_back(path + ", line " + std::to_string(index + 1) + ": " + what);
  };
  const std::string layout = "an atom line is: symbol x y z [A]";

  std::size_t first = 0;
  while (first < lines.size() && fields(lines[first]).empty()) ++first;
  if (first == lines.size()) {
    problems.push_back(path + ": the file holds no atoms; write the atom count, a title line, " +
                       "then one atom per line: symbol x y z [A]");
    return {};
  }

  // The usual layout starts with the atom count and a title line; a file of atom
  // lines alone is read as it stands.
  std::vector<std::size_t> atom_lines;
  const auto head = fields(lines[first]);
  const std::optional<long> count = head.size() == 1 ? whole_number(head[0]) : std::nullopt;
  if (count) {
    if (*count < 1) {
      problem(first, "the atom count " + std::string(head[0]) + " must be at least 1");
      return {};
    }
    std::size_t k = first + 2;
    for (; k < lines.size() && atom_lines.size() < static_cast<std::size_t>(*count); ++k) {
      if (!fields(lines[k]).empty()) atom_lines.push_back(k);
    }
    if (atom_lines.size() < static_cast<std::size_t>(*count)) {
      problem(first, "the atom count is " + std::to_string(*count) + ", but " +
                         std::to_string(atom_lines.size()) +
                         " atom lines follow the title line; correct the count or add the "
                         "missing atoms");
    }
    while (k < lines.size() && fields(lines[k]).empty()) ++k;
    if (k < lines.size()) {
      const auto more = fields(lines[k]);
      if (more.size() == 1 && whole_number(more[0])) {
        problem(k,
                "a second frame begins here; norvik reads one molecule: keep only the frame "
                "you want in the file");
      } else {
        problem(k, "more atom lines than the " + std::to_string(*count) + " of the count in line " +
                       std::to_string(first + 1) + "; correct the count");
      }
    }
  } else {
    for (std::size_t k = first; k < lines.size(); ++k) {
      if (!fields(lines[k]).empty()) atom_lines.push_back(k);
    }
  }

  // Every atom line is checked, also when the count is wrong.
  std::vector<XyzAtom> atoms;
  for (const std::size_t k : atom_lines) {
    const auto f = fields(lines[k]);
    XyzAtom atom;
    atom.line = static_cast<int>(k) + 1;
    atom.number = element_number(f[0]);
    if (atom.number == 0) {
      problem(k, "'" + printable(f[0]) +
                     "' is not an element; norvik knows H to Xe (symbols in any letter case, or "
                     "the atomic number)" +
                     (count ? "" : "; a file without the atom count must hold atom lines only"));
      continue;
    }
    if (f.size() < 4) {
      problem(k, "'" + printable(lines[k]) + "' lacks " +
                     (f.size() == 3 ? "the z coordinate" : "coordinates") + "; " + layout);
      continue;
    }
    std::array<double*, 3> xyz = {&atom.x, &atom.y, &atom.z};
    bool ok = true;
    for (std::size_t c = 0; c < 3 && ok; ++c) {
      const auto v = real_number(f[c + 1]);
      if (!v) {
        problem(k, "'" + printable(f[c + 1]) + "' is not a coordinate; " + layout);
        ok = false;
      } else if (!std::isfinite(*v) || std::abs(*v) > kMaxCoordinate) {
        problem(k, "coordinate " + std::string(f[c + 1]) +
                       " is not a finite position within 1e5 A of the origin");
        ok = false;
      } else {
        *xyz[c] = *v;
      }
    }
    if (ok) atoms.push_back(atom);
  }
  if (problems.size() != problems_before) return {};

  // Two atoms in one place: the pre-check's search, with the lines of this file.
  constexpr std::size_t kMaxReported = 20;
  std::vector<Position> positions;
  positions.reserve(atoms.size());
  for (const XyzAtom& a : atoms) positions.push_back({a.x, a.y, a.z});
  const auto close = close_pairs(positions, kMaxReported);
  for (const ClosePair& pair : close) {
    char distance[32];
    std::snprintf(distance, sizeof distance, "%.4f", pair.distance);
    problem(static_cast<std::size_t>(atoms[pair.second].line - 1),
            "atom " + std::to_string(pair.second + 1) + " is " + distance + " A from atom " +
                std::to_string(pair.first + 1) + " (line " +
                std::to_string(atoms[pair.first].line) + "), closer than 0.1 A; check the " +
                "coordinates");
  }
  if (!close.empty()) return {};
  return atoms;
}

std::string electron_count_problem(int electrons, int multiplicity, const std::string& where) {
  const std::string n = std::to_string(electrons);
  const std::string m = std::to_string(multiplicity);
  if (electrons <= 0) {
    return where + ": the charge leaves " + n + " electrons; a molecule needs at least one";
  }
  if ((electrons + multiplicity) % 2 == 0) {
    return where + ": multiplicity " + m + " does not fit " + n + " electrons: an " +
           (electrons % 2 == 0
                ? "even count takes an odd multiplicity (1 singlet, 3 triplet, ...)"
                : "odd count takes an even multiplicity (2 doublet, 4 quartet, ...)");
  }
  if (multiplicity > electrons + 1) {
    return where + ": multiplicity " + m + " needs " + std::to_string(multiplicity - 1) +
           " unpaired electrons, and the molecule has " + n;
  }
  return "";
}

int settle_multiplicity(const std::string& xyz_path, const std::vector<XyzAtom>& atoms,
                        XyzChoices& choices, std::vector<std::string>& problems) {
  long electrons = -choices.charge;
  for (const XyzAtom& a : atoms) electrons += a.number;
  const int n = static_cast<int>(electrons);
  if (choices.multiplicity == 0) choices.multiplicity = n % 2 == 0 ? 1 : 2;
  const std::string problem =
      electron_count_problem(n, choices.multiplicity,
                             xyz_path + " with --charge " + std::to_string(choices.charge) +
                                 " --mult " + std::to_string(choices.multiplicity));
  if (!problem.empty()) problems.push_back(problem + "; give another --charge or --mult");
  return n;
}

std::string molecule_name_of(const std::string& xyz_path) {
  std::string name = std::filesystem::path(xyz_path).stem().string();
  for (char& c : name) {
    if (!std::isalnum(static_cast<unsigned char>(c)) && c != '.' && c != '_' && c != '+' &&
        c != '-') {
      c = '_';
    }
  }
  name = name.substr(0, 20);
  return name.empty() ? "molecule" : name;
}

std::string molecule_file_text(const std::string& xyz_path, const std::string& command,
                               const std::vector<XyzAtom>& atoms, const XyzChoices& c) {
  std::string out = first_line(xyz_path, command, "theory:");
  out += c.method + "\n";
  out += "# basis set (x stands for *)\n" + c.basis + "\n";
  out += "# molecule name, geometry-optimisation cycles (0: single point at this geometry)\n";
  out += molecule_name_of(xyz_path) + " " + std::to_string(c.optimisation_cycles) + "\n";
  out += "# optimiser (0: conjugate gradient, 1: steepest descent, 2: quasi-Newton)\n2\n";
  out +=
      "# vibrational analysis (0: none, 1: modes, infrared and thermochemistry, 2: also "
      "Raman)\n" +
      std::to_string(c.vibrations) + "\n";
  out += "# start-density file ('' : start from the free atoms)\n''\n";
  out += "# population analysis (none, Mulliken, Lowdin, both, shells)\n" + c.population + "\n";
  out += "# ghost atoms: first and last (0 0: none)\n0 0\n";
  out += "# basis-set superposition correction (none, counterpoise)\nnone\n";
  out += "# molecular charge\n" + std::to_string(c.charge) + "\n";
  out += "# spin multiplicity 2S+1\n" + std::to_string(c.multiplicity) + "\n";
  out += "# atoms: symbol, x, y, z [Angstrom]\n";
  const auto symbols = element_symbols();
  for (const XyzAtom& a : atoms) {
    char line[128];
    std::snprintf(line, sizeof line, "%-2s %17.10f %17.10f %17.10f\n",
                  std::string(symbols[static_cast<std::size_t>(a.number - 1)]).c_str(), a.x, a.y,
                  a.z);
    out += line;
  }
  return out;
}

std::string parameter_file_text(const std::string& xyz_path, const std::string& command,
                                const XyzChoices& c) {
  // The host's built-in settings (docs/host.md), written out so that they can be
  // edited and the job repeated.
  const bool hf = is_hartree_fock_theory(c.method);
  std::string out = first_line(xyz_path, command, "memory limit [GB]:");
  out += real_text(c.memory_gb) + "\n";
  out += "# OpenMP threads (0: all processors)\n" + std::to_string(c.threads) + "\n";
  if (hf) {
    out += "# SCF iterations at most: free atoms, molecule\n64 128\n";
    out += "# damping factor (weight of the new density, cycles 2-8): atoms, molecule\n0.5 0.5\n";
    out += "# energy convergence [eV]: atoms, molecule\n1.0e-6 1.0e-7\n";
    out += "# RMS density-change convergence: atoms, molecule\n1.0e-6 1.0e-7\n";
  } else {
    out +=
        "# SCF iterations at most: HF atoms, KS atoms, HF molecule, KS molecule\n"
        "64 64 128 128\n";
    out += "# damping factor: HF atoms, KS atoms, HF molecule, KS molecule\n0.5 0.5 0.5 0.5\n";
    out +=
        "# energy convergence [eV]: HF atoms, KS atoms, HF molecule, KS molecule\n"
        "1.0e-6 1.0e-6 1.0e-7 1.0e-7\n";
    out +=
        "# RMS density-change convergence: HF atoms, KS atoms, HF molecule, KS molecule\n"
        "1.0e-6 1.0e-6 1.0e-7 1.0e-7\n";
  }
  out += "# integral-direct screening threshold [eV] (0: recompute every quartet)\n1.0e-10\n";
  out += "# geometry convergence: largest gradient component [eV/A]\n0.01\n";
  out += "# geometry: longest trial step [A]\n0.1\n";
  if (hf) {
    out += "# vibrational frequency scale factor\n1.0\n";
  } else {
    out += "# grid cut-offs: density, weight\n1.0e-12 1.0e-15\n";
  }
  return out;
}

bool written_by_norvik(const std::string& path) {
  // A pipe or a device is never opened: reading it could block.
  std::error_code ec;
  if (!std::filesystem::is_regular_file(path, ec)) return false;
  std::ifstream in(path, std::ios::binary);
  std::string line(sizeof kWrittenMarker - 1, '\0');
  if (!in.read(line.data(), static_cast<std::streamsize>(line.size()))) return false;
  return line == kWrittenMarker;
}

std::string command_text(const std::vector<std::string>& argv, std::size_t most) {
  std::string out;
  for (const std::string& arg : argv) {
    const bool plain = !arg.empty() && std::all_of(arg.begin(), arg.end(), [](char c) {
      return std::isalnum(static_cast<unsigned char>(c)) ||
             std::string_view("_./:=+,@%^-").find(c) != std::string_view::npos;
    });
    std::string word = printable(arg);
    if (!plain) {
      std::string quoted = "'";
      for (const char c : word) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
      word = quoted + "'";
    }
    out += (out.empty() ? "" : " ") + word;
  }
  if (out.size() > most) out = out.substr(0, most) + "...";
  return out;
}

}  // namespace host
