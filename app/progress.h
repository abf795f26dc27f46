// Live progress of a running job on a terminal: one status line on standard
// error, rewritten in place and cleared when the job ends.
//
// The job runs in a child process (job_process.h) and the library writes its
// files line by line, opening and closing them each time, so the host follows
// what they gain while the job runs: the run log (one line per SCF cycle, with
// the optimisation cycle of the point), the report (the positions and gradient
// of every optimisation cycle) and the Hessian's own progress file (k of n
// displaced coordinates done, HESSIAN_MOLE_PROGRESS).  Nothing is sent from the
// job itself, so the library stays silent and the files are the same with and
// without the status line.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace host {

// What to follow, and the optimisation's cycle limit (0: no optimisation).
struct ProgressFiles {
  std::string log, report, hessian;  // empty: not followed
  int optimisation_cycles = 0;
};

// An empty file of its own for the Hessian's progress lines, in $TMPDIR (or
// /tmp when that name would not fit the library's file-name buffer), removed
// again with the object.  Its path is empty when none could be made.
class ScratchFile {
 public:
  ScratchFile();
  ~ScratchFile();
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

// --progress / --no-progress, or neither: shown when standard error is a
// terminal (never on Windows, where the job runs in the host's own process).
enum class ProgressMode { automatic, on, off };
bool progress_shown(ProgressMode mode);

// A file followed from where it was read last: the complete lines it gained.
class FollowedFile {
 public:
  explicit FollowedFile(std::string path) : path_(std::move(path)) {}
  std::vector<std::string> new_lines();

 private:
  std::string path_;
  std::uintmax_t offset_ = 0;
  std::string rest_;  // a line not ended yet
};

// What the files told so far.
struct ProgressState {
  // The SCF: the latest cycle of the latest point (and of its Hartree-Fock or
  // Kohn-Sham stage).
  bool scf = false;
  int point = 0, stage = 0, cycle = 0;
  double energy = 0.0, energy_change = 0.0, rms_density_change = 0.0;
  bool has_change = false;
  // The optimisation: the latest cycle in the report with its largest gradient
  // component [eV/A].
  int optimisation_cycle = 0;
  double largest_gradient = -1.0;
  // The Hessian: coordinates done of all, and when the first and the latest
  // counts were seen [s from the start].
  int hessian_done = -1, hessian_total = 0;
  double hessian_started = 0.0, hessian_latest = 0.0;
};

// Reads one run-log line into the state; false when it is no SCF cycle line.
bool read_log_line(const std::string& line, ProgressState& state);
// Reads one Hessian progress line; `now` [s] stamps it.
bool read_hessian_line(const std::string& line, double now, ProgressState& state);

// The report's optimisation cycles, line by line.
class ReportReader {
 public:
  void read(const std::string& line, ProgressState& state);

 private:
  enum class At { elsewhere, cycle, gradient } at_ = At::elsewhere;
  double largest_ = 0.0;
};

// The status line (without the "\r" and the clearing) at `elapsed` seconds, cut
// to `width` characters; empty while there is nothing to tell.
std::string status_line(const ProgressState& state, int optimisation_cycles, double elapsed,
                        std::size_t width);

// Follows the files of a running job and keeps the status line on standard
// error.  Every call is cheap: the files are read from where they were left.
//
// An interrupt (Ctrl-C) or a termination of the host while the line is there
// clears it and removes the Hessian's scratch file before the host ends as the
// signal asks.
class ProgressLine {
 public:
  explicit ProgressLine(ProgressFiles files);
  ~ProgressLine();
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;
  // Reads what the files gained and redraws the line when it changed (or its
  // clock did).
  void update();
  // Removes the line, so that other output starts at the left margin; the next
  // update draws it again.
  void hide();
  // The last update, then the line removed for good.
  void finish();

 private:
  void draw(const std::string& text);

  ProgressFiles files_;
  FollowedFile log_, report_, hessian_;
  ReportReader report_reader_;
  ProgressState state_;
  std::chrono::steady_clock::time_point start_;
  std::string shown_;  // the text on the terminal now (empty: none)
  std::size_t width_;
};

}  // namespace host
