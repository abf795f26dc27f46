// Memory estimates for the in-core or integral-direct choice and for the
// memory-hungry post-SCF methods.  Sizes are in gigabytes of 1e9 bytes.
//
// Each estimate is formed in logarithms and exponentiated once,
// a·n^k/1e9 = exp(k·ln n + ln a − ln 1e9), so that no integer product can
// overflow however large the counts are.
#pragma once

namespace norvik::memory {

double integral_store_gb(int npair);               // 4·npair²
double tda_gb(int n);                              // 24·n²
double rpa_gb(int n);                              // 32·n²
double mp2_gb(int nbasis);                         // 9·nbasis⁴
double kohn_sham_grid_gb(int npoint, int nbasis);  // 32·npoint·nbasis

// Fit decisions; a limit that is not a number never fits.
bool store_fits(int npair, double limit_gb);
bool mp2_fits(int nbasis, double limit_gb);
bool tda_fits(int npair, int n, double limit_gb);
bool rpa_fits(int npair, int n, double limit_gb);

}  // namespace norvik::memory
