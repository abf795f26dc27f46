// Runs a job so that the host sees how it ended.  A fatal library error ends the
// process that called the library (exit status 1), so on POSIX systems the job
// runs in a child process: the host outlives it, passes its standard output
// through, keeps the library's last message, and decides what becomes of the
// files.  Elsewhere (Windows) the job runs in the host's own process and a
// handler registered with std::atexit says where the partial files are when the
// library ends the process.
#pragma once

#include <functional>
#include <string>

#include "progress.h"

namespace host {

struct JobEnd {
  bool exited = true;  // false: the job process was ended by a signal
  int status = 0;      // the exit status, or the signal number
  // The library's message when it stopped the job (its last lines on standard
  // output that begin with a blank); empty when not known.
  std::string message;
};

// Runs `job`, which returns an exit status.  `note_if_ended` is printed on
// standard error if the library ends the host's own process (the in-process
// route only).
JobEnd run_job(const std::function<int()>& job, const std::string& note_if_ended);

// The same with live progress on standard error while the job runs
// (progress.h): the host follows `progress`'s files from the job's child
// process; the in-process route shows none.
JobEnd run_job(const std::function<int()>& job, const std::string& note_if_ended,
               const ProgressFiles& progress);

}  // namespace host
