#include "linalg/memory_estimates.h"

#include <cmath>

namespace norvik::memory {

namespace {

const double kLn4 = std::log(4.0);
const double kLn24 = std::log(24.0);
const double kLn32 = std::log(32.0);
const double kLn9 = std::log(9.0);
const double kLnGiga = std::log(1.0e9);

// a·n^k / 1e9 with ln a given.
double scaled_power(double ln_a, double n, double k) {
  return std::exp(k * std::log(n) + ln_a - kLnGiga);
}

}  // namespace

double integral_store_gb(int npair) {
  return scaled_power(kLn4, npair, 2.0);
}
double tda_gb(int n) {
  return scaled_power(kLn24, n, 2.0);
}
double rpa_gb(int n) {
  return scaled_power(kLn32, n, 2.0);
}
double mp2_gb(int nbasis) {
  return scaled_power(kLn9, nbasis, 4.0);
}
double kohn_sham_grid_gb(int npoint, int nbasis) {
  return std::exp(std::log(static_cast<double>(npoint)) + std::log(static_cast<double>(nbasis)) +
                  kLn32 - kLnGiga);
}

bool store_fits(int npair, double limit_gb) {
  return limit_gb >= integral_store_gb(npair);
}
bool mp2_fits(int nbasis, double limit_gb) {
  return limit_gb >= mp2_gb(nbasis);
}
bool tda_fits(int npair, int n, double limit_gb) {
  return limit_gb >= integral_store_gb(npair) + tda_gb(n);
}
bool rpa_fits(int npair, int n, double limit_gb) {
  return limit_gb >= integral_store_gb(npair) + rpa_gb(n);
}

}  // namespace norvik::memory
