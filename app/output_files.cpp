#include "output_files.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace host {

namespace fs = std::filesystem;

namespace {

// Two names for one file: the same file when both exist (hard links and
// symbolic links included), otherwise the same canonical path.
bool same_file(const std::string& a, const std::string& b) {
  std::error_code ec;
  if (fs::exists(a, ec) && fs::exists(b, ec)) {
    const bool same = fs::equivalent(a, b, ec);
    if (!ec) return same;
  }
  std::error_code eca, ecb;
  const fs::path ca = fs::weakly_canonical(fs::absolute(a, eca), eca);
  const fs::path cb = fs::weakly_canonical(fs::absolute(b, ecb), ecb);
  return !eca && !ecb && ca == cb;
}

// An existing path that a rename or a fresh start must not replace.
bool exists_but_not_regular(const std::string& path) {
  std::error_code ec;
  const fs::file_status status = fs::status(path, ec);
  return fs::exists(status) && !fs::is_regular_file(status);
}

}  // namespace

std::string file_name_problem(const std::string& name, std::size_t limit, const std::string& what) {
  if (name.empty()) return "the " + what + " name is empty";
  const bool control = std::any_of(name.begin(), name.end(), [](char c) {
    const auto u = static_cast<unsigned char>(c);
    return u < 0x20 || u == 0x7f;
  });
  if (control) {
    return "the " + what + " name '" + name +
           "' holds a control character, which the library cannot take; rename the file";
  }
  if (name.back() == ' ') {
    return "the " + what + " name '" + name +
           "' ends in a blank, which the library cannot take (it pads names with blanks and "
           "trims them); rename the file";
  }
  if (name.size() > limit) {
    return "the " + what + " name '" + name + "' is longer than the " + std::to_string(limit) +
           " characters the library takes; use a shorter path (a relative one, for instance)";
  }
  return "";
}

OutputFile output_file(const std::string& what, const std::string& option,
                       const std::string& path) {
  return OutputFile{what, option, path, path + kPartialSuffix};
}

std::vector<std::string> output_problems(const std::vector<OutputFile>& outputs,
                                         const std::vector<InputFile>& inputs) {
  std::vector<std::string> problems;
  struct Written {
    std::string what, path, option;
    std::size_t output;  // index into outputs
  };
  std::vector<Written> written;
  for (std::size_t k = 0; k < outputs.size(); ++k) {
    const OutputFile& out = outputs[k];
    written.push_back({out.what, out.path, out.option, k});
    written.push_back({"partial " + out.what, out.partial, out.option, k});
  }
  for (const Written& w : written) {
    if (exists_but_not_regular(w.path)) {
      problems.push_back("the " + w.what + " '" + w.path +
                         "' exists and is not a regular file; name a file in a writable folder");
    }
    for (const InputFile& in : inputs) {
      if (same_file(w.path, in.path)) {
        problems.push_back("the " + w.what + " '" + w.path + "' would overwrite the " + in.what +
                           " '" + in.path + "'; name another file with " + w.option);
      }
    }
  }
  // One clash between two outputs is enough to say: their partial names clash too.
  for (std::size_t k = 0; k < outputs.size(); ++k) {
    for (std::size_t l = k + 1; l < outputs.size(); ++l) {
      for (const Written& a : written) {
        const auto clash = [&](const Written& b) {
          return a.output == k && b.output == l && same_file(a.path, b.path);
        };
        const auto b = std::find_if(written.begin(), written.end(), clash);
        if (b != written.end()) {
          // The files of an .xyz job take the report's name: one option for both.
          const std::string fix =
              a.option == b->option ? "give " + a.option + " another name"
                                    : "give " + a.option + " and " + b->option + " different names";
          problems.push_back("the " + a.what + " '" + a.path + "' and the " + b->what + " '" +
                             b->path + "' are one file; " + fix);
          break;
        }
      }
    }
  }
  return problems;
}

std::string start_partials(const std::vector<OutputFile>& outputs) {
  for (std::size_t k = 0; k < outputs.size(); ++k) {
    const OutputFile& out = outputs[k];
    // A partial file left by an earlier run is replaced, not written through:
    // removing it first also drops a link that might point elsewhere.
    std::error_code ec;
    fs::remove(out.partial, ec);
    std::ofstream file(out.partial, std::ios::binary | std::ios::trunc);
    if (!file) {
      for (std::size_t j = 0; j < k; ++j) fs::remove(outputs[j].partial, ec);
      return "cannot write the partial " + out.what + " '" + out.partial +
             "'; the folder must exist and be writable";
    }
  }
  return "";
}

std::string move_into_place(const std::vector<OutputFile>& outputs) {
  for (const OutputFile& out : outputs) {
    std::error_code ec;
    fs::rename(out.partial, out.path, ec);
    if (ec) {
      return "cannot rename '" + out.partial + "' to '" + out.path + "' (" + ec.message() +
             "); the finished " + out.what + " stays under the partial name";
    }
  }
  return "";
}

}  // namespace host
