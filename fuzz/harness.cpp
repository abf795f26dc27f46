#include "harness.h"

#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <istream>
#include <sstream>
#include <streambuf>
#include <string_view>
#include <type_traits>
#include <vector>

#include "common/error.h"
#include "common/list_input.h"
#include "setup/job_setup.h"

namespace norvik::fuzz {
namespace {

using fortran::ListReader;
using fortran::ReadStatus;
using fortran::Target;
using fortran::TextTarget;

void check(bool condition, const char* what) {
  if (!condition) throw CheckFailure(what);
}

// What every fatal message of the core is: list-directed records, each one line
// that starts with a blank.
void check_error(const Error& error) {
  check(!error.lines().empty(), "an error without a message");
  for (const std::string& line : error.lines()) {
    check(!line.empty() && line.front() == ' ', "an error line that is not a list-directed record");
    check(line.find('\n') == std::string::npos, "an error line with a line feed in it");
  }
}

std::string_view as_text(Bytes data) {
  return {reinterpret_cast<const char*>(data.data()), data.size()};
}

// ---------------------------------------------------------------------------
// The free-format reader.

// Text targets are at most this long (the core's longest is 120).
constexpr int kMaxTextLength = 256;
// Plans are cut to this many statements and targets per statement.
constexpr std::size_t kMaxStatements = 64;
constexpr std::size_t kMaxItems = 64;

struct Item {
  enum class Kind { integer, real, text } kind;
  int length = 0;
};

struct Statement {
  bool record = false;  // read_record (length) rather than read (items)
  int length = 0;
  std::vector<Item> items;
};

int length_of(std::string_view digits) {
  int length = 0;
  for (const char c : digits) {
    if (c < '0' || c > '9') break;
    length = std::min(length * 10 + (c - '0'), kMaxTextLength);
  }
  return length;
}

std::vector<Statement> parse_plan(std::string_view plan) {
  std::vector<Statement> statements;
  bool open = false;  // the last statement still takes tokens
  std::size_t i = 0;
  while (i < plan.size() && statements.size() <= kMaxStatements) {
    const char c = plan[i];
    if (c == ' ' || c == '\t' || c == '\r') {
      ++i;
      continue;
    }
    if (c == '|') {
      open = false;
      ++i;
      continue;
    }
    std::size_t end = i;
    while (end < plan.size() && plan[end] != ' ' && plan[end] != '\t' && plan[end] != '\r' &&
           plan[end] != '|') {
      ++end;
    }
    const std::string_view token = plan.substr(i, end - i);
    i = end;
    if (!open) {
      statements.emplace_back();
      open = true;
    }
    Statement& s = statements.back();
    if (token.front() == 'a') {
      s.record = true;
      s.length = length_of(token.substr(1));
    } else if (s.items.size() < kMaxItems) {
      if (token == "i") {
        s.items.push_back({Item::Kind::integer});
      } else if (token == "r") {
        s.items.push_back({Item::Kind::real});
      } else if (token.front() == 'c') {
        s.items.push_back({Item::Kind::text, length_of(token.substr(1))});
      }
    }
  }
  if (statements.size() > kMaxStatements) statements.resize(kMaxStatements);
  if (statements.empty()) return parse_plan("c10 | i i | r r r | a20");
  return statements;
}

// What one statement did: its status (or -1 for norvik::Error), the records
// read after it and every target's value.
struct Outcome {
  int status = 0;
  int records = 0;
  std::vector<std::int32_t> integers;
  std::vector<std::uint64_t> reals;  // bit patterns
  std::vector<std::string> texts;
  bool operator==(const Outcome&) const = default;
};

constexpr std::int32_t kSentinelInteger = -7777777;
constexpr double kSentinelReal = -7777777.25;

void check_text(const std::string& text, int length) {
  check(text.size() == static_cast<std::size_t>(length), "a text target changed its length");
  check(text.find_first_of("\r\n") == std::string::npos, "a record end inside a text value");
}

Outcome execute(ListReader& reader, const Statement& statement) {
  Outcome outcome;
  ReadStatus status;
  if (statement.record) {
    outcome.texts.assign(1, std::string(static_cast<std::size_t>(statement.length), '~'));
    status = reader.read_record(outcome.texts[0], statement.length);
    check_text(outcome.texts[0], statement.length);
  } else {
    const std::size_t n = statement.items.size();
    outcome.integers.assign(n, kSentinelInteger);
    std::vector<double> reals(n, kSentinelReal);
    outcome.texts.assign(n, std::string());
    std::vector<Target> targets;
    for (std::size_t k = 0; k < n; ++k) {
      const Item& item = statement.items[k];
      switch (item.kind) {
        case Item::Kind::integer:
          targets.emplace_back(&outcome.integers[k]);
          break;
        case Item::Kind::real:
          targets.emplace_back(&reals[k]);
          break;
        case Item::Kind::text:
          outcome.texts[k].assign(static_cast<std::size_t>(item.length), '~');
          targets.emplace_back(TextTarget{&outcome.texts[k], item.length});
          break;
      }
    }
    status = reader.read(targets);
    for (std::size_t k = 0; k < n; ++k) {
      if (statement.items[k].kind == Item::Kind::text) {
        check_text(outcome.texts[k], statement.items[k].length);
      }
      outcome.reals.push_back(std::bit_cast<std::uint64_t>(reals[k]));
    }
  }
  check(status == ReadStatus::ok || status == ReadStatus::end_of_file ||
            status == ReadStatus::bad_value,
        "a read status out of range");
  outcome.status = static_cast<int>(status);
  outcome.records = reader.records_read();
  return outcome;
}

// Runs the plan over the stream until the end of the file.  Every statement
// that does not meet the end takes at least one record, so the run ends.
std::vector<Outcome> run(const std::vector<Statement>& plan, std::istream& in, int records) {
  ListReader reader(in);
  std::vector<Outcome> outcomes;
  int before = 0;
  for (std::size_t n = 0;; ++n) {
    Outcome outcome;
    try {
      outcome = execute(reader, plan[n % plan.size()]);
    } catch (const Error& error) {
      check_error(error);
      outcome.status = -1;
      outcomes.push_back(std::move(outcome));
      return outcomes;
    }
    check(outcome.records <= records, "more records read than the file holds");
    const bool end = outcome.status == static_cast<int>(ReadStatus::end_of_file);
    check(end ? outcome.records >= before : outcome.records > before, "a read that took no record");
    before = outcome.records;
    outcomes.push_back(std::move(outcome));
    if (end) {
      // The end of the file stays the end, for both kinds of read.
      std::string text;
      check(reader.read({}) == ReadStatus::end_of_file, "a list read after the end of the file");
      check(reader.read_record(text, 4) == ReadStatus::end_of_file,
            "a record read after the end of the file");
      check(reader.records_read() == before, "records read after the end of the file");
      return outcomes;
    }
  }
}

// A stream buffer that hands out one character per refill, as a pipe might:
// the reader must not depend on how its stream is buffered.
class TrickleBuffer : public std::streambuf {
 public:
  explicit TrickleBuffer(std::string_view text) : text_(text) {}

 protected:
  int_type underflow() override {
    if (next_ >= text_.size()) return traits_type::eof();
    current_ = text_[next_++];
    setg(&current_, &current_, &current_ + 1);
    return traits_type::to_int_type(current_);
  }

 private:
  std::string_view text_;
  std::size_t next_ = 0;
  char current_ = 0;
};

// ---------------------------------------------------------------------------
// Job setup.

// The norvik host's array sizes (app/host_job.h).
constexpr int kHostAtoms = 1000;
constexpr int kHostOrbitals = 4096;

// The file that job setup reads by name: one per process, rewritten for each
// input and removed at exit.
class ScratchFile {
 public:
  ScratchFile() {
    const char* dir = std::getenv("TMPDIR");
    std::string pattern = std::string(dir && *dir ? dir : "/tmp") + "/norvik-fuzz-XXXXXX";
    fd_ = ::mkstemp(pattern.data());
    if (fd_ < 0) throw CheckFailure("cannot make a scratch file: " + std::string(strerror(errno)));
    path_ = pattern;
  }
  ~ScratchFile() {
    ::close(fd_);
    ::unlink(path_.c_str());
  }
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;

  const std::string& write(Bytes data) {
    bool ok = ::ftruncate(fd_, 0) == 0;
    std::size_t done = 0;
    while (ok && done < data.size()) {
      const ssize_t n =
          ::pwrite(fd_, data.data() + done, data.size() - done, static_cast<off_t>(done));
      ok = n > 0;
      if (ok) done += static_cast<std::size_t>(n);
    }
    if (!ok) throw CheckFailure("cannot write the scratch file " + path_);
    return path_;
  }

 private:
  std::string path_;
  int fd_ = -1;
};

const std::string& scratch_file(Bytes data) {
  static ScratchFile file;
  return file.write(data);
}

bool same_bits(double a, double b) {
  return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

bool same(const setup::Molecule& a, const setup::Molecule& b) {
  const auto& s = a.settings;
  const auto& t = b.settings;
  if (s.theory != t.theory || s.text4 != t.text4 || s.text6 != t.text6 || s.int6 != t.int6 ||
      s.int8 != t.int8 || s.int10 != t.int10 || s.text12 != t.text12 || s.text14 != t.text14 ||
      s.ghost_first != t.ghost_first || s.ghost_last != t.ghost_last || s.text18 != t.text18 ||
      s.charge != t.charge || s.multiplicity != t.multiplicity) {
    return false;
  }
  if (a.atoms.size() != b.atoms.size() || a.nghost != b.nghost ||
      a.electrons.alpha != b.electrons.alpha || a.electrons.beta != b.electrons.beta) {
    return false;
  }
  for (std::size_t i = 0; i < a.atoms.size(); ++i) {
    const auto& p = a.atoms[i];
    const auto& q = b.atoms[i];
    if (p.element != q.element || p.nuclear_charge != q.nuclear_charge) return false;
    for (int k = 0; k < 3; ++k) {
      if (!same_bits(p.position[k], q.position[k])) return false;
    }
  }
  return true;
}

// What a molecule that job setup accepted must be.
void check_molecule(const setup::Molecule& molecule, int max_atoms) {
  const auto& s = molecule.settings;
  check(s.theory.size() == setup::kKeywordLength && s.text4.size() == setup::kNameLength &&
            s.text6.size() == setup::kNameLength && s.text12.size() == setup::kPathLength &&
            s.text14.size() == setup::kNameLength && s.text18.size() == setup::kNameLength,
        "a setting text of the wrong length");
  const auto natom = static_cast<long long>(molecule.atoms.size());
  check(natom >= 1 && natom < max_atoms, "an atom count outside the host's arrays");
  if (molecule.nghost == 0) {
    check(s.ghost_first < 1, "ghost atoms named but none made");
  } else {
    check(s.ghost_first >= 1 && s.ghost_last <= natom &&
              molecule.nghost == s.ghost_last - s.ghost_first + 1,
          "a ghost count that does not match the ghost range");
  }
  long long zsum = 0;
  for (long long i = 0; i < natom; ++i) {
    const auto& atom = molecule.atoms[static_cast<std::size_t>(i)];
    const bool ghost = molecule.nghost > 0 && i + 1 >= s.ghost_first && i + 1 <= s.ghost_last;
    check(atom.element >= 1 && atom.element <= 54, "an element outside H to Xe");
    check(atom.nuclear_charge == (ghost ? 0 : atom.element), "a wrong nuclear charge");
    zsum += atom.nuclear_charge;
  }
  // The electron counts, in a width where nothing overflows.
  const long long alpha = molecule.electrons.alpha;
  const long long beta = molecule.electrons.beta;
  check(beta >= 0 && alpha + beta > 0, "a negative or zero electron count");
  check(alpha + beta == zsum - s.charge, "electron counts that do not add up to the charge");
  check(alpha - beta == static_cast<long long>(s.multiplicity) - 1,
        "electron counts that do not give the multiplicity");
  // The orbital count that SETUP_HF and SETUP_KS return with the molecule.
  const auto orbitals = setup::orbitals_kept(molecule.electrons.alpha, kHostOrbitals);
  check(orbitals.kept <= kHostOrbitals && orbitals.shortfall >= 0 &&
            static_cast<long long>(orbitals.kept) + orbitals.shortfall == alpha + 2,
        "orbitals kept and missing do not add up");
  static_cast<void>(setup::is_hartree_fock_theory(s.theory));
}

// Every setting of a parameter set, as bit patterns, in a fixed order.
std::vector<std::uint64_t> fields(const setup::HfParameters& p) {
  std::vector<std::uint64_t> out{std::bit_cast<std::uint64_t>(p.value2),
                                 static_cast<std::uint32_t>(p.value4)};
  for (const int n : p.niter) out.push_back(static_cast<std::uint32_t>(n));
  for (const auto* group : {&p.damp, &p.thr_ene, &p.thr_rms}) {
    for (const double v : *group) out.push_back(std::bit_cast<std::uint64_t>(v));
  }
  for (const double v : p.value14_20) out.push_back(std::bit_cast<std::uint64_t>(v));
  return out;
}

std::vector<std::uint64_t> fields(const setup::KsParameters& p) {
  std::vector<std::uint64_t> out{std::bit_cast<std::uint64_t>(p.value2),
                                 static_cast<std::uint32_t>(p.value4)};
  for (const int n : p.niter) out.push_back(static_cast<std::uint32_t>(n));
  for (const auto* group : {&p.damp, &p.thr_ene, &p.thr_rms}) {
    for (const double v : *group) out.push_back(std::bit_cast<std::uint64_t>(v));
  }
  for (const double v : p.value14_18) out.push_back(std::bit_cast<std::uint64_t>(v));
  for (const double v : p.value20) out.push_back(std::bit_cast<std::uint64_t>(v));
  return out;
}

template <class Parameters>
Parameters filled(double real, int integer) {
  Parameters p;
  p.value2 = real;
  p.value4 = integer;
  p.niter.fill(integer);
  p.damp.fill(real);
  p.thr_ene.fill(real);
  p.thr_rms.fill(real);
  if constexpr (std::is_same_v<Parameters, setup::HfParameters>) {
    p.value14_20.fill(real);
  } else {
    p.value14_18.fill(real);
    p.value20.fill(real);
  }
  return p;
}

// Reads the file over two different sets of starting values.
template <class Parameters>
void check_parameters(const std::string& path) {
  Parameters first = filled<Parameters>(0.0, 0);
  Parameters second = filled<Parameters>(kSentinelReal, kSentinelInteger);
  const auto start_first = fields(first);
  const auto start_second = fields(second);
  std::vector<std::string> first_error;
  try {
    setup::read_parameters(path, first);
  } catch (const Error& error) {
    check_error(error);
    first_error = error.lines();
  }
  try {
    setup::read_parameters(path, second);
    check(first_error.empty(), "a parameter file that fails from one set of values only");
  } catch (const Error& error) {
    check(error.lines() == first_error,
          "a parameter file that fails differently from other values");
    return;
  }
  const auto a = fields(first);
  const auto b = fields(second);
  for (std::size_t k = 0; k < a.size(); ++k) {
    check(a[k] == b[k] || (a[k] == start_first[k] && b[k] == start_second[k]),
          "a setting that depends on the value it had before the read");
  }
}

}  // namespace

void list_input(Bytes data) {
  const std::string_view all = as_text(data);
  const std::size_t line_end = all.find('\n');
  const std::string_view plan_text = all.substr(0, line_end);
  const std::string_view file =
      line_end == std::string_view::npos ? std::string_view{} : all.substr(line_end + 1);
  const std::vector<Statement> plan = parse_plan(plan_text);
  // Records as read_record counts them: a line feed, a carriage return, or both
  // together end one; a list read only ever counts fewer.
  const int records = static_cast<int>(std::count(file.begin(), file.end(), '\n') +
                                       std::count(file.begin(), file.end(), '\r') + 1);

  std::istringstream whole(std::string(file), std::ios::binary);
  const std::vector<Outcome> expected = run(plan, whole, records);

  TrickleBuffer trickle(file);
  std::istream trickled(&trickle);
  const std::vector<Outcome> actual = run(plan, trickled, records);
  check(actual == expected, "a stream read differently when it comes a character at a time");
}

void molecule_file(Bytes data) {
  const std::string& path = scratch_file(data);
  setup::Molecule molecule;
  try {
    molecule = setup::read_molecule(path, kHostAtoms, setup::MoleculeSettings{});
  } catch (const Error& error) {
    check_error(error);
    return;
  }
  check_molecule(molecule, kHostAtoms);

  // The atom arrays must have room for one more atom than the file holds.
  const int natom = static_cast<int>(molecule.atoms.size());
  bool refused = false;
  try {
    setup::read_molecule(path, natom, setup::MoleculeSettings{});
  } catch (const Error& error) {
    check_error(error);
    refused = true;
  }
  check(refused, "a molecule read into atom arrays that it fills");
  setup::Molecule again;
  try {
    again = setup::read_molecule(path, natom + 1, setup::MoleculeSettings{});
  } catch (const Error&) {
    check(false, "a molecule refused by atom arrays with room for one more atom");
  }
  check(same(again, molecule), "a molecule that reads differently into larger atom arrays");
}

void parameter_file(Bytes data) {
  const std::string& path = scratch_file(data);
  check_parameters<setup::HfParameters>(path);
  check_parameters<setup::KsParameters>(path);
}

}  // namespace norvik::fuzz
