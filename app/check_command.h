// norvik check: the host's checks of input files without a job (docs/host.md,
// "Checking input files").  Nothing of the library runs.
#pragma once

#include <string>
#include <vector>

namespace host {

// norvik check FILE... [options of an .xyz job]: each .xyz file alone, each
// other file as a molecule file, with the .par file that follows it as its
// parameter file.  Every problem goes to standard error, one line per checked
// job that passes to standard output.  Returns the exit status: 0 when every
// file passes, 2 otherwise.
int check_command(const std::vector<std::string>& args);

}  // namespace host
