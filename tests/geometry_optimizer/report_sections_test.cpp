// The optimiser's report sections byte for byte, and the trajectory file that
// grows by one frame per call.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "norvik.h"
#include "report/geometry_sections.h"

namespace {

using norvik::report::Lines;

// Water with a ghost centre in place of the second hydrogen.
const std::vector<double> kPositions{0, 0, 0.1173, 0, 0.7572, -0.4692, 0, -0.7572, -0.4692};
const std::vector<int> kElements{8, 1, 0};
const std::vector<double> kGradient{1e-3, 0, -0.0123456789, 0, 1.25, 0.5, 0, -1.25, -0.4876543211};

TEST(OptimizerReport, Sections) {
  EXPECT_EQ(norvik::report::positions_of_cycle(kPositions, kElements, 3),
            (Lines{"#", "#  Optimization cycle 3: positions of the atoms",
                   "#  Atom  Symbol           x [A]          y [A]          z [A]",
                   "#    1    O        0.0000000000   0.0000000000   0.1173000000",
                   "#    2    H        0.0000000000   0.7572000000  -0.4692000000",
                   "#    3    Bq       0.0000000000  -0.7572000000  -0.4692000000"}));
  EXPECT_EQ(norvik::report::gradient(kGradient, kElements),
            (Lines{"#", "#  Energy gradient [eV/A]",
                   "#  Atom  Symbol           dE/dx          dE/dy          dE/dz",
                   "#    1    O        0.0010000000   0.0000000000  -0.0123456789",
                   "#    2    H        0.0000000000   1.2500000000   0.5000000000",
                   "#    3    Bq       0.0000000000  -1.2500000000  -0.4876543211"}));
  // ±1.25 tie: the first one is named.
  EXPECT_EQ(norvik::report::largest_gradient(kGradient, kElements),
            (Lines{"#", "#  Largest gradient component [eV/A]:    1.2500000000 (atom 2, H, y)"}));
  EXPECT_EQ(
      norvik::report::gradient_sum(kGradient),
      (Lines{"#", "#  Gradient summed over atoms [eV/A]: ( 1.000E-03, 0.000E+00, 0.000E+00 )"}));
}

std::string read(const std::filesystem::path& path) {
  std::ifstream in(path);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

std::string padded(const std::string& name) {
  std::string buffer = name;
  buffer.resize(NORVIK_FILE_NAME_LENGTH, ' ');
  return buffer;
}

TEST(OptimizerReport, TrajectoryGrowsByOneFramePerCall) {
  const auto path = std::filesystem::temp_directory_path() / "norvik_optimizer_path.xyz";
  std::filesystem::remove(path);
  const std::string name = padded(path.string());
  const norvik_int natom = 2;
  const int zel[2] = {8, 1};
  double pos[6] = {0, 0, 0, 0, 0, 0.97};
  norvik_int cycle = 1;
  double energy = -2039.5;
  WRITE_XYZ_FRAME(&natom, pos, zel, &cycle, &energy, name.data());
  cycle = 2;
  energy = -2039.845106089;
  pos[5] = 0.9696;
  WRITE_XYZ_FRAME(&natom, pos, zel, &cycle, &energy, name.data());
  // A blank name writes nothing.
  const std::string blank = padded("");
  WRITE_XYZ_FRAME(&natom, pos, zel, &cycle, &energy, blank.data());
  EXPECT_EQ(read(path),
            "2\n"
            "cycle 1  Emol = -2039.500000000 [eV]\n"
            "O     0.0000000000    0.0000000000    0.0000000000\n"
            "H     0.0000000000    0.0000000000    0.9700000000\n"
            "2\n"
            "cycle 2  Emol = -2039.845106089 [eV]\n"
            "O     0.0000000000    0.0000000000    0.0000000000\n"
            "H     0.0000000000    0.0000000000    0.9696000000\n");
  std::filesystem::remove(path);

  // The report writers append their sections to the report.
  const auto report = std::filesystem::temp_directory_path() / "norvik_optimizer.report";
  std::filesystem::remove(report);
  const std::string rname = padded(report.string());
  WRITE_POSI(&natom, pos, zel, &cycle, rname.data());
  WRITE_GRAD_WTOT(&natom, pos, rname.data());
  EXPECT_EQ(read(report),
            "#\n#  Optimization cycle 2: positions of the atoms\n"
            "#  Atom  Symbol           x [A]          y [A]          z [A]\n"
            "#    1    O        0.0000000000   0.0000000000   0.0000000000\n"
            "#    2    H        0.0000000000   0.0000000000   0.9696000000\n"
            "#\n#  Gradient summed over atoms [eV/A]: ( 0.000E+00, 0.000E+00, 9.696E-01 )\n");
  std::filesystem::remove(report);
}

}  // namespace
