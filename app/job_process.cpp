#include "job_process.h"

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <vector>

#if !defined(_WIN32)
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#endif

namespace host {

namespace {

// The in-process route: when the library ends the process, the note goes to
// standard error.  Held on the heap so that no static destructor can run first.
std::string* pending_note = nullptr;

void say_where_on_exit() {
  if (pending_note != nullptr) std::cerr << *pending_note << std::flush;
}

JobEnd run_in_process(const std::function<int()>& job, const std::string& note) {
  static const bool registered = std::atexit(say_where_on_exit) == 0;
  if (registered) pending_note = new std::string(note);
  JobEnd end;
  end.status = job();
  std::cout.flush();
  delete pending_note;
  pending_note = nullptr;
  return end;
}

#if !defined(_WIN32)

// How often the host looks at the job's files while it shows progress [ms].
constexpr int kProgressTickMs = 200;

// The lines of `text` after its last line that does not begin with a blank:
// the library writes its fatal message last, each line beginning with a blank.
std::string trailing_message(const std::string& text) {
  std::vector<std::string> lines;
  std::size_t begin = 0;
  while (begin < text.size()) {
    std::size_t end = text.find('\n', begin);
    if (end == std::string::npos) end = text.size();
    lines.push_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  std::size_t first = lines.size();
  while (first > 0 && !lines[first - 1].empty() && lines[first - 1][0] == ' ') --first;
  std::string message;
  for (std::size_t i = first; i < lines.size(); ++i) message += lines[i] + '\n';
  return message;
}

bool write_all(int fd, const char* data, std::size_t size) {
  while (size > 0) {
    const ssize_t n = ::write(fd, data, size);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    data += n;
    size -= static_cast<std::size_t>(n);
  }
  return true;
}

#endif

JobEnd run_job_following(const std::function<int()>& job, const std::string& note_if_ended,
                         const ProgressFiles* progress);

}  // namespace

JobEnd run_job(const std::function<int()>& job, const std::string& note_if_ended) {
  return run_job_following(job, note_if_ended, nullptr);
}

JobEnd run_job(const std::function<int()>& job, const std::string& note_if_ended,
               const ProgressFiles& progress) {
  return run_job_following(job, note_if_ended, &progress);
}

namespace {

JobEnd run_job_following(const std::function<int()>& job, const std::string& note_if_ended,
                         const ProgressFiles* progress) {
#if defined(_WIN32)
  (void)progress;
  return run_in_process(job, note_if_ended);
#else
  std::cout.flush();
  std::fflush(nullptr);
  int fds[2];
  if (::pipe(fds) != 0) return run_in_process(job, note_if_ended);
  const pid_t pid = ::fork();
  if (pid < 0) {
    ::close(fds[0]);
    ::close(fds[1]);
    return run_in_process(job, note_if_ended);
  }
  if (pid == 0) {
    // The job: its standard output goes to the host line by line.
    ::close(fds[0]);
    ::dup2(fds[1], STDOUT_FILENO);
    ::close(fds[1]);
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    const int status = job();
    std::cout.flush();
    std::fflush(nullptr);
    std::_Exit(status);
  }

  // The host: pass the job's output through and keep its end.  A reader that
  // went away (norvik run ... | head) stops the passing, not the job.
  ::close(fds[1]);
  std::signal(SIGPIPE, SIG_IGN);
  constexpr std::size_t kKept = 16384;
  std::string tail;
  bool forward = true;
  char buffer[4096];
  // With progress the host wakes every tick to follow the job's files, and
  // takes the status line away while the job's output passes to a terminal.
  std::optional<ProgressLine> line;
  if (progress != nullptr) line.emplace(*progress);
  const bool output_on_terminal = ::isatty(STDOUT_FILENO) == 1;
  for (;;) {
    if (line) {
      pollfd ready{fds[0], POLLIN, 0};
      const int polled = ::poll(&ready, 1, kProgressTickMs);
      line->update();
      // Nothing to read yet; a failing poll falls back on the blocking read.
      if (polled == 0 || (polled < 0 && errno == EINTR)) continue;
    }
    const ssize_t n = ::read(fds[0], buffer, sizeof buffer);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) break;
    const auto size = static_cast<std::size_t>(n);
    if (line && output_on_terminal) line->hide();
    if (forward) forward = write_all(STDOUT_FILENO, buffer, size);
    tail.append(buffer, size);
    if (tail.size() > 2 * kKept) tail.erase(0, tail.size() - kKept);
  }
  ::close(fds[0]);
  if (line) line->finish();
  int wstatus = 0;
  while (::waitpid(pid, &wstatus, 0) < 0 && errno == EINTR) {
  }
  JobEnd end;
  if (WIFSIGNALED(wstatus)) {
    end.exited = false;
    end.status = WTERMSIG(wstatus);
  } else {
    end.status = WEXITSTATUS(wstatus);
  }
  if (!end.exited || end.status != 0) end.message = trailing_message(tail);
  return end;
#endif
}

}  // namespace

}  // namespace host
