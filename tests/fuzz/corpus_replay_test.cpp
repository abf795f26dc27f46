// Every committed input of the fuzz targets (fuzz/corpus/<target>/) through its
// harness: the seeds, and the inputs that once made a fuzzer report a fault.
#include <gtest/gtest.h>

#include <algorithm>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "harness.h"

namespace norvik::fuzz {
namespace {

namespace fs = std::filesystem;

void replay(const char* target, void (*harness)(Bytes)) {
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(fs::path(NORVIK_FUZZ_CORPUS) / target)) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  ASSERT_FALSE(files.empty()) << "no corpus for " << target;
  for (const auto& file : files) {
    std::ifstream in(file, std::ios::binary);
    const std::vector<std::uint8_t> data((std::istreambuf_iterator<char>(in)),
                                         std::istreambuf_iterator<char>());
    try {
      harness(data);
    } catch (const std::exception& error) {
      ADD_FAILURE() << target << "/" << file.filename().string() << ": " << error.what();
    }
  }
}

TEST(FuzzCorpus, ListInput) {
  replay("list_input", list_input);
}

TEST(FuzzCorpus, MoleculeFile) {
  replay("molecule_file", molecule_file);
}

TEST(FuzzCorpus, ParameterFile) {
  replay("parameter_file", parameter_file);
}

}  // namespace
}  // namespace norvik::fuzz
