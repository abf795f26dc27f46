#include "reference_data.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace norvik::test {

namespace {

std::ifstream open_data(const std::string& path) {
  std::ifstream in(path);
  if (!in) ADD_FAILURE() << "cannot open " << path;
  return in;
}

// Next line that is neither blank nor a comment; false at the end of the file.
bool next_record(std::istream& in, std::string& line) {
  while (std::getline(in, line)) {
    if (!line.empty() && line[0] != '#') return true;
  }
  return false;
}

}  // namespace

std::vector<ReferenceQuartet> read_eri_reference(const std::string& path) {
  std::ifstream in = open_data(path);
  std::vector<ReferenceQuartet> quartets;
  std::string line;
  while (next_record(in, line)) {
    std::istringstream head(line);
    std::string word;
    ReferenceQuartet q;
    head >> word >> q.label;
    if (word != "quartet") {
      ADD_FAILURE() << path << ": expected a quartet record, got " << line;
      return {};
    }
    for (auto& shell : q.shells) {
      next_record(in, line);
      std::istringstream s(line);
      int nprim = 0;
      s >> word >> shell.L >> nprim >> shell.centre[0] >> shell.centre[1] >> shell.centre[2];
      shell.exps.resize(nprim);
      shell.coefs.resize(nprim);
      for (auto& e : shell.exps) s >> e;
      for (auto& c : shell.coefs) s >> c;
      if (word != "shell" || !s) ADD_FAILURE() << path << ": bad shell record " << line;
    }
    next_record(in, line);
    std::istringstream count_line(line);
    std::size_t count = 0;
    count_line >> word >> count;
    for (std::size_t k = 0; k < count; ++k) {
      next_record(in, line);
      std::istringstream v(line);
      ReferenceValue value{};
      v >> value.index[0] >> value.index[1] >> value.index[2] >> value.index[3] >> value.value;
      if (!v) ADD_FAILURE() << path << ": bad value record " << line;
      q.values.push_back(value);
    }
    next_record(in, line);
    if (line != "end") ADD_FAILURE() << path << ": quartet " << q.label << " not closed";
    quartets.push_back(std::move(q));
  }
  return quartets;
}

std::vector<RysRecord> read_rys_reference(const std::string& path) {
  std::ifstream in = open_data(path);
  std::vector<RysRecord> records;
  std::string line;
  while (next_record(in, line)) {
    RysRecord r;
    std::istringstream head(line);
    head >> r.kind >> r.n >> r.x;
    r.roots.resize(r.n);
    r.weights.resize(r.n);
    next_record(in, line);
    std::istringstream roots(line);
    for (auto& t : r.roots) roots >> t;
    next_record(in, line);
    std::istringstream weights(line);
    for (auto& w : r.weights) weights >> w;
    if (!head || !roots || !weights) ADD_FAILURE() << path << ": bad record at X = " << r.x;
    records.push_back(std::move(r));
  }
  return records;
}

}  // namespace norvik::test
