// norvik batch: many jobs on a Dask cluster, run by the Python package
// (python/norvik/batch.py).  The host only finds the package and the
// interpreter and hands its arguments over.
#pragma once

#include <string>
#include <vector>

namespace host {

// Replaces the host's process with `/usr/bin/python3 -m norvik batch ARGS`,
// PYTHONPATH leading with the package's folder: $NORVIK_PYTHON, or the
// python/ folder found relative to the executable (the source tree beside a
// build folder, or share/norvik/python of an installation).  NORVIK_HOST is
// set to this executable unless already set, so the batch runs this host.
// Returns only when that fails: 2, with the cause on standard error.
int run_python_batch(const std::vector<std::string>& args);

}  // namespace host
