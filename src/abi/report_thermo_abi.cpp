// Exported report sections of the thermochemistry.
#include <array>
#include <span>

#include "abi/abi_support.h"
#include "geometry/thermo.h"
#include "norvik/report_thermo.h"
#include "report/thermo_sections.h"

namespace {

using norvik::abi::append_to;
using norvik::abi::count;
using norvik::abi::guarded;
namespace report = norvik::report;
namespace geometry = norvik::geometry;

std::span<const double> spectrum(const norvik_int* natom, const double* eigenvalues) {
  return {eigenvalues, 3 * count(*natom)};
}

}  // namespace

extern "C" {

NORVIK_API void WRITE_INERTIA(const double* inertia, const char* r) {
  guarded([&] { append_to(r, report::inertia({inertia[0], inertia[1], inertia[2]})); });
}

NORVIK_API void WRITE_INERTIAL(const norvik_int* linear, const norvik_int* sigma, const char* r) {
  guarded([&] { append_to(r, report::rotor(*linear == 1, *sigma)); });
}

NORVIK_API void WRITE_VIBTEMP(const norvik_int* linear, const norvik_int* natom,
                              const double* eigenvalues, const double* scale, const char* r) {
  guarded([&] {
    append_to(r, report::vibrational_temperatures(geometry::mode_energies(
                     *linear == 1, *natom, spectrum(natom, eigenvalues), *scale)));
  });
}

NORVIK_API void WRITE_ENERGY_ZPE(const double* emol, const norvik_int* linear,
                                 const norvik_int* natom, const double* eigenvalues,
                                 const double* scale, const char* r) {
  guarded([&] {
    append_to(r, report::zero_point_energy(
                     *emol, geometry::zero_point_energy(*linear == 1, *natom,
                                                        spectrum(natom, eigenvalues), *scale)));
  });
}

NORVIK_API void WRITE_THERMAL(const norvik_int* linear, const norvik_int* natom,
                              const double* eigenvalues, const double* scale, const double* emol,
                              const double* mass, const double* entropy, const double* energy,
                              const double* heat_capacity, const char* r) {
  guarded([&] {
    const double zpe =
        geometry::zero_point_energy(*linear == 1, *natom, spectrum(natom, eigenvalues), *scale);
    append_to(r, report::thermal(
                     *emol, zpe, *mass, {entropy[0], entropy[1], entropy[2]},
                     {energy[0], energy[1], energy[2], energy[3]},
                     {heat_capacity[0], heat_capacity[1], heat_capacity[2], heat_capacity[3]}));
  });
}

}  // extern "C"
