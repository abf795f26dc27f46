#include "python_batch.h"

#include <cstdlib>
#include <filesystem>
#include <iostream>

#if !defined(_WIN32)
#include <unistd.h>
#endif

namespace host {

namespace {

constexpr int kUsageError = 2;

#if !defined(_WIN32)
namespace fs = std::filesystem;

constexpr const char* kInterpreter = "/usr/bin/python3";

bool holds_package(const fs::path& folder) {
  std::error_code ec;
  return fs::is_regular_file(folder / "norvik" / "__main__.py", ec);
}

fs::path executable() {
  std::error_code ec;
  const fs::path self = fs::read_symlink("/proc/self/exe", ec);
  return ec ? fs::path() : self;
}
#endif

}  // namespace

int run_python_batch(const std::vector<std::string>& args) {
#if defined(_WIN32)
  (void)args;
  std::cerr << "norvik: batch runs the Python package on POSIX systems; on Windows run\n"
               "norvik:   python -m norvik batch ... with PYTHONPATH set to its python folder\n";
  return kUsageError;
#else
  const fs::path self = executable();
  fs::path package;
  if (const char* env = std::getenv("NORVIK_PYTHON"); env && *env) {
    package = env;
    if (!holds_package(package)) {
      std::cerr << "norvik: NORVIK_PYTHON=" << env
                << " does not hold the package norvik (norvik/__main__.py); point it at the "
                   "python folder of the source tree\n";
      return kUsageError;
    }
  } else {
    const fs::path bin = self.parent_path();
    // build/app/norvik beside python/, or an installation's bin/ and share/.
    for (const fs::path& candidate : {bin / ".." / ".." / "python", bin / ".." / "python",
                                      bin / ".." / "share" / "norvik" / "python"}) {
      if (!self.empty() && holds_package(candidate)) {
        package = fs::weakly_canonical(candidate);
        break;
      }
    }
    if (package.empty()) {
      std::cerr << "norvik: cannot find the Python package norvik beside "
                << (self.empty() ? fs::path("this program") : self)
                << "; set NORVIK_PYTHON to the python folder of the source tree\n";
      return kUsageError;
    }
  }
  std::string path = package.string();
  if (const char* old = std::getenv("PYTHONPATH"); old && *old) path += std::string(":") + old;
  setenv("PYTHONPATH", path.c_str(), 1);
  if (!self.empty()) setenv("NORVIK_HOST", self.c_str(), 0);

  std::vector<std::string> words{kInterpreter, "-m", "norvik", "batch"};
  words.insert(words.end(), args.begin(), args.end());
  std::vector<char*> argv;
  for (std::string& w : words) argv.push_back(w.data());
  argv.push_back(nullptr);
  execv(kInterpreter, argv.data());
  std::cerr << "norvik: cannot start " << kInterpreter
            << " for the batch (install Debian's python3, python3-numpy and "
               "python3-distributed)\n";
  return kUsageError;
#endif
}

}  // namespace host
