// The report sections of excited states, byte for byte, and the band shape of
// the UV-vis spectrum.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "norvik.h"

namespace {

struct TempFile {
  explicit TempFile(const char* leaf) : path(std::filesystem::temp_directory_path() / leaf) {
    std::filesystem::remove(path);
    name = path.string();
    name.resize(NORVIK_FILE_NAME_LENGTH, ' ');
  }
  ~TempFile() { std::filesystem::remove(path); }
  std::string text() const {
    std::ifstream in(path);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
  }
  std::filesystem::path path;
  std::string name;
};

// Restricted and unrestricted labels, the wavelength hc/E, strengths that
// round to zero, the alpha/beta tags of an open shell's pairs.
TEST(ExcitationSections, StatesAndTransitions) {
  const TempFile f("norvik_excite.report");
  const std::string method = "KSTDA5    ";
  const norvik_int nstate = 2, spin[2] = {1, 3}, npair[2] = {2, 1};
  const double energy[2] = {9.371976, 8.0}, strength[2] = {0.0671146, 1e-9};
  WRITE_EXCITE(method.data(), &nstate, spin, energy, strength, f.name.data());
  const norvik_int occ[3] = {5, 5, 4}, vir[3] = {6, 11, 6}, beta[3] = {0, 0, 0};
  const double amp[3] = {0.955095, -0.27508, 0.9};
  WRITE_TRANSITION(&nstate, spin, energy, npair, occ, vir, beta, amp, f.name.data());
  const norvik_int open_spin[1] = {0}, one = 1, two[1] = {2}, obeta[2] = {0, 1};
  WRITE_TRANSITION(&one, open_spin, energy, two, occ, vir, obeta, amp, f.name.data());
  EXPECT_EQ(f.text(),
            "#\n"
            "#  Excited states (KSTDA5)\n"
            "#  State  Spin           E [eV]   lambda [nm]             f\n"
            "#      1  singlet        9.371976        132.29      0.067115\n"
            "#      2  triplet        8.000000        154.98      0.000000\n"
            "#\n"
            "#  Dominant orbital transitions (weight c**2 above 0.05)\n"
            "#          occ      vir     amplitude c    weight c**2\n"
            "#  State    1  singlet        9.371976 eV\n"
            "#           5  ->    6         0.955095        0.912206\n"
            "#           5  ->   11        -0.275080        0.075669\n"
            "#  State    2  triplet        8.000000 eV\n"
            "#           4  ->    6         0.900000        0.810000\n"
            "#\n"
            "#  Dominant orbital transitions (weight c**2 above 0.05)\n"
            "#          occ      vir     amplitude c    weight c**2\n"
            "#  State    1                 9.371976 eV\n"
            "#           5a ->    6a        0.955095        0.912206\n"
            "#           5b ->   11b       -0.275080        0.075669\n");
}

// The matrix in blocks of six columns; nothing beyond the size limit.
TEST(ExcitationSections, TammDancoffMatrix) {
  const TempFile f("norvik_ci.report");
  const norvik_int n = 7;
  std::vector<double> a(49);
  for (int j = 0; j < 7; ++j)
    for (int i = 0; i < 7; ++i) a[i + 7 * j] = i == j ? 10.0 + i : 0.01 * (i + j);
  WRITE_CI_MATRIX(&n, a.data(), f.name.data());
  const std::string text = f.text();
  const std::string head =
      "#\n"
      "#  Tamm-Dancoff matrix A [eV]\n"
      "#                1           2           3           4           5           6\n"
      "#    1   10.000000    0.010000    0.020000    0.030000    0.040000    0.050000\n";
  EXPECT_EQ(text.substr(0, head.size()), head);
  EXPECT_NE(text.find("#                7\n#    1    0.060000\n"), std::string::npos);
  const norvik_int big = NORVIK_CI_MATRIX_MAX + 1;
  std::vector<double> b(static_cast<std::size_t>(big * big), 1.0);
  WRITE_CI_MATRIX(&big, b.data(), f.name.data());
  EXPECT_EQ(f.text(), text);
}

// One band of strength f: its area over wavenumbers is 2.315e8·f L/(mol·cm²)
// and its half maximum lies fwhm/2 from its centre.
TEST(ExcitationSections, SpectrumBand) {
  const TempFile f("norvik_uv.dat");
  const double hc = 2.0 * M_PI * NORVIK_HBARC_EV_ANGSTROM / 10.0;  // eV·nm
  const norvik_int nstate = 1, npoint = 4001;
  const double e = 6.0, fosc = 0.5, low = hc / 12.0, high = hc / 3.0, fwhm = 0.4;
  WRITE_UVVISI(&nstate, &e, &fosc, &npoint, &low, &high, &fwhm, f.name.data());
  std::istringstream in(f.text());
  std::string header;
  std::getline(in, header);
  EXPECT_EQ(header, "# wavelength [nm]   epsilon [L/(mol*cm)]");
  EXPECT_EQ(f.text().find("-100"), std::string::npos);  // far tails written as 0
  std::vector<double> nm, eps;
  for (double x, y; in >> x >> y;) {
    nm.push_back(x);
    eps.push_back(y);
  }
  ASSERT_EQ(nm.size(), 4001u);
  double area = 0.0, peak = 0.0;
  for (std::size_t k = 1; k < nm.size(); ++k) {
    const double dnu = 1e7 / nm[k - 1] - 1e7 / nm[k];  // cm⁻¹
    area += 0.5 * (eps[k] + eps[k - 1]) * dnu;
    peak = std::max(peak, eps[k]);
  }
  EXPECT_NEAR(area, 2.3153e8 * fosc, 1e-3 * 2.3153e8 * fosc);
  const double half = hc / (e + fwhm / 2);
  std::size_t k = 0;
  while (nm[k] < half) ++k;
  EXPECT_NEAR(eps[k], 0.5 * peak, 0.01 * peak);
}

}  // namespace
