#include "progress.h"

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "host_job.h"
#include "run_log.h"

#if !defined(_WIN32)
#include <signal.h>
#include <sys/ioctl.h>
#include <unistd.h>
#endif

namespace host {

namespace {

// The width of a line when standard error is no terminal (--progress through a
// pipe) or does not say: room for the longest line the host makes.
constexpr std::size_t kDefaultWidth = 160;

// The clock of the line moves once a second.
constexpr double kClockStep = 1.0;

std::size_t terminal_width() {
#if !defined(_WIN32)
  winsize size{};
  if (::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1) {
    return static_cast<std::size_t>(size.ws_col) - 1;  // the last column would wrap
  }
#endif
  return kDefaultWidth - 1;
}

void write_stderr(const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), stderr);
  std::fflush(stderr);
}

// A duration as people read it: "0.4 s", "42 s", "3 min 05 s", "2 h 07 min".
std::string duration(double seconds) {
  const long s = std::lround(std::max(0.0, seconds));
  char text[32];
  if (seconds < 9.95) {
    std::snprintf(text, sizeof text, "%.1f s", std::max(0.0, seconds));
  } else if (s < 60) {
    std::snprintf(text, sizeof text, "%ld s", s);
  } else if (s < 3600) {
    std::snprintf(text, sizeof text, "%ld min %02ld s", s / 60, s % 60);
  } else {
    std::snprintf(text, sizeof text, "%ld h %02ld min", s / 3600, (s % 3600) / 60);
  }
  return text;
}

// The clock of the line: "0:42", "12:05", "1:02:07".
std::string clock(double seconds) {
  const long s = static_cast<long>(std::max(0.0, seconds));
  char text[32];
  if (s < 3600) {
    std::snprintf(text, sizeof text, "%ld:%02ld", s / 60, s % 60);
  } else {
    std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", s / 3600, (s % 3600) / 60, s % 60);
  }
  return text;
}

bool starts_with(const std::string& text, const char* prefix) {
  return text.rfind(prefix, 0) == 0;
}

// What a signal handler may touch: whether a line is on the terminal, and the
// scratch file's name.  One host shows one line at a time.
volatile std::sig_atomic_t line_shown = 0;
char scratch_name[kPathLength + 1] = {};

#if !defined(_WIN32)
constexpr int kWatchedSignals[] = {SIGINT, SIGTERM, SIGHUP};
struct sigaction previous[std::size(kWatchedSignals)];

extern "C" void leave_cleanly(int signal) {
  if (line_shown != 0) {
    const char clear[] = "\r\x1b[K";
    [[maybe_unused]] const ssize_t n = ::write(STDERR_FILENO, clear, sizeof clear - 1);
  }
  if (scratch_name[0] != '\0') ::unlink(scratch_name);
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}
#endif

void watch_signals(const std::string& scratch) {
  const std::size_t n = std::min(scratch.size(), sizeof scratch_name - 1);
  std::copy_n(scratch.begin(), n, scratch_name);
  scratch_name[n] = '\0';
#if !defined(_WIN32)
  struct sigaction action {};
  action.sa_handler = leave_cleanly;
  sigemptyset(&action.sa_mask);
  for (std::size_t i = 0; i < std::size(kWatchedSignals); ++i) {
    ::sigaction(kWatchedSignals[i], &action, &previous[i]);
  }
#endif
}

void restore_signals() {
#if !defined(_WIN32)
  for (std::size_t i = 0; i < std::size(kWatchedSignals); ++i) {
    ::sigaction(kWatchedSignals[i], &previous[i], nullptr);
  }
#endif
  line_shown = 0;
  scratch_name[0] = '\0';
}

}  // namespace

ScratchFile::ScratchFile() {
#if !defined(_WIN32)
  std::vector<std::string> folders;
  if (const char* tmpdir = std::getenv("TMPDIR"); tmpdir != nullptr && *tmpdir != '\0') {
    folders.emplace_back(tmpdir);
  }
  folders.emplace_back("/tmp");
  for (const std::string& folder : folders) {
    std::string name = folder + "/norvik-progress-XXXXXX";
    if (name.size() > static_cast<std::size_t>(kPathLength)) continue;
    const int fd = ::mkstemp(name.data());
    if (fd < 0) continue;
    ::close(fd);
    path_ = name;
    return;
  }
#endif
}

ScratchFile::~ScratchFile() {
  if (!path_.empty()) std::remove(path_.c_str());
}

bool progress_shown(ProgressMode mode) {
#if defined(_WIN32)
  (void)mode;
  return false;
#else
  if (mode != ProgressMode::automatic) return mode == ProgressMode::on;
  return ::isatty(STDERR_FILENO) == 1;
#endif
}

std::vector<std::string> FollowedFile::new_lines() {
  std::vector<std::string> lines;
  if (path_.empty()) return lines;
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(path_, error);
  if (error || size <= offset_) return lines;
  std::ifstream in(path_, std::ios::binary);
  if (!in.seekg(static_cast<std::streamoff>(offset_))) return lines;
  std::string gained(static_cast<std::size_t>(size - offset_), '\0');
  in.read(gained.data(), static_cast<std::streamsize>(gained.size()));
  gained.resize(static_cast<std::size_t>(in.gcount()));
  offset_ += gained.size();
  rest_ += gained;
  std::size_t begin = 0;
  for (std::size_t end; (end = rest_.find('\n', begin)) != std::string::npos; begin = end + 1) {
    lines.push_back(rest_.substr(begin, end - begin));
  }
  rest_.erase(0, begin);
  return lines;
}

bool read_log_line(const std::string& line, ProgressState& state) {
  const std::optional<ScfCycle> c = read_scf_cycle(line);
  if (!c) return false;
  state.has_change = state.scf && c->point == state.point && c->stage == state.stage &&
                     c->cycle == state.cycle + 1;
  if (state.has_change) state.energy_change = c->energy - state.energy;
  state.scf = true;
  state.point = c->point;
  state.stage = c->stage;
  state.cycle = c->cycle;
  state.energy = c->energy;
  state.rms_density_change = c->rmsd;
  return true;
}

// "Hessian: 3 of 6 displaced coordinates done".
bool read_hessian_line(const std::string& line, double now, ProgressState& state) {
  int done = 0, total = 0;
  if (std::sscanf(line.c_str(), "Hessian: %d of %d", &done, &total) != 2) return false;
  if (state.hessian_done < 0) state.hessian_started = now;
  state.hessian_done = done;
  state.hessian_total = total;
  state.hessian_latest = now;
  return true;
}

// "#  Optimization cycle 3: positions of the atoms", then the gradient as a
// table ("#  Energy gradient [eV/A]", a heading, "#    1    O    x y z" per
// atom) or as its largest component ("#  Largest gradient component [eV/A]:
// -0.0123456789 (atom 1, O, z)").
void ReportReader::read(const std::string& line, ProgressState& state) {
  int cycle = 0;
  if (std::sscanf(line.c_str(), "#  Optimization cycle %d:", &cycle) == 1) {
    at_ = At::cycle;
    state.optimisation_cycle = cycle;
    state.largest_gradient = -1.0;  // the cycle's own comes next
    return;
  }
  if (at_ == At::cycle) {
    double g = 0.0;
    if (starts_with(line, "#  Energy gradient")) {
      at_ = At::gradient;
      largest_ = 0.0;
    } else if (std::sscanf(line.c_str(), "#  Largest gradient component [eV/A]: %lf", &g) == 1) {
      state.largest_gradient = std::abs(g);
      at_ = At::elsewhere;
    }
    return;
  }
  if (at_ == At::gradient) {
    int atom = 0;
    char symbol[3] = {};
    double g[3] = {};
    if (std::sscanf(line.c_str(), "# %d %2s %lf %lf %lf", &atom, symbol, &g[0], &g[1], &g[2]) ==
        5) {
      for (double v : g) largest_ = std::max(largest_, std::abs(v));
      state.largest_gradient = largest_;
    } else if (!starts_with(line, "#  Atom")) {
      at_ = At::elsewhere;
    }
  }
}

std::string status_line(const ProgressState& state, int optimisation_cycles, double elapsed,
                        std::size_t width) {
  char part[160];
  std::string text;
  if (state.hessian_done >= 0) {
    std::snprintf(part, sizeof part, "Hessian: %d of %d displaced coordinates", state.hessian_done,
                  state.hessian_total);
    text = part;
    if (state.hessian_done > 0) {
      const double each = (state.hessian_latest - state.hessian_started) / state.hessian_done;
      const double left =
          each * (state.hessian_total - state.hessian_done) - (elapsed - state.hessian_latest);
      text += ", " + duration(each) + " each";
      if (state.hessian_done < state.hessian_total) text += ", about " + duration(left) + " left";
    }
  } else {
    if (optimisation_cycles > 0 && (state.scf || state.optimisation_cycle > 0)) {
      // The latest cycle in the report with its gradient; the first one's
      // SCF runs before the report has a cycle.
      std::snprintf(part, sizeof part, "optimisation cycle %d (max %d)",
                    std::max(state.optimisation_cycle, 1), optimisation_cycles);
      text = part;
      if (state.largest_gradient >= 0.0) {
        std::snprintf(part, sizeof part, ", largest gradient %.2e eV/A", state.largest_gradient);
        text += part;
      }
    }
    if (state.scf) {
      if (!text.empty()) text += " | ";
      std::snprintf(part, sizeof part, "SCF cycle %d", state.cycle);
      text += part;
      if (optimisation_cycles == 0) {
        std::snprintf(part, sizeof part, ", E %.6f eV", state.energy);
        text += part;
      }
      if (state.has_change) {
        std::snprintf(part, sizeof part, ", dE %.1e eV", state.energy_change);
        text += part;
      }
      std::snprintf(part, sizeof part, ", RMS density change %.1e", state.rms_density_change);
      text += part;
    }
  }
  if (text.empty()) return text;
  text = "norvik: " + clock(elapsed) + "  " + text;
  if (text.size() > width) text.resize(width);
  return text;
}

ProgressLine::ProgressLine(ProgressFiles files)
    : files_(std::move(files)),
      log_(files_.log),
      report_(files_.report),
      hessian_(files_.hessian),
      start_(std::chrono::steady_clock::now()),
      width_(terminal_width()) {
  watch_signals(files_.hessian);
}

ProgressLine::~ProgressLine() {
  restore_signals();
}

void ProgressLine::update() {
  width_ = terminal_width();  // the terminal may have been resized
  const double now =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
  // What began and ended between two updates is drawn once all the same:
  // every optimisation cycle, and the last one before the Hessian that follows.
  for (const std::string& line : log_.new_lines()) read_log_line(line, state_);
  for (const std::string& line : report_.new_lines()) {
    const ProgressState before = state_;
    report_reader_.read(line, state_);
    if (state_.optimisation_cycle != before.optimisation_cycle) {
      draw(status_line(before, files_.optimisation_cycles, now, width_));
    }
  }
  const std::vector<std::string> hessian = hessian_.new_lines();
  if (!hessian.empty() && state_.hessian_done < 0) {
    draw(status_line(state_, files_.optimisation_cycles, now, width_));
  }
  for (const std::string& line : hessian) read_hessian_line(line, now, state_);
  // The clock in whole seconds: a redraw when it or the text moved.
  const double shown_clock = std::floor(now / kClockStep) * kClockStep;
  draw(status_line(state_, files_.optimisation_cycles, shown_clock, width_));
}

void ProgressLine::hide() {
  if (shown_.empty()) return;
  write_stderr("\r\x1b[K");
  shown_.clear();
  line_shown = 0;
}

void ProgressLine::finish() {
  update();
  hide();
}

void ProgressLine::draw(const std::string& text) {
  if (text.empty() || text == shown_) return;
  write_stderr("\r" + text + "\x1b[K");
  shown_ = text;
  line_shown = 1;
}

}  // namespace host
