// Exported routines of the Hartree–Fock SCF outside the cycle: energies and
// moments, start densities, the symmetry-adapted combinations of C2 and B2.
#include <algorithm>
#include <cstdint>
#include <vector>

#include "abi/scf_support.h"
#include "basis/library.h"
#include "common/fortran_format.h"
#include "norvik/scf.h"
#include "scf/properties.h"
#include "scf/start_density.h"
#include "scf/symmetry_update.h"

namespace {

namespace abi = norvik::abi;
namespace scf = norvik::scf;
using abi::check_nbasis;
using abi::const_matrix;
using abi::count;
using abi::guarded;
using abi::kLongKeywordLength;
using abi::square;
using abi::text_in;

}  // namespace

// ---- energies and moments ---------------------------------------------------------

extern "C" NORVIK_API void ENERGYEDX(const norvik_int* nbasis, const double* T, const double* V,
                                     const double* G, const double* rho, double* energy) {
  guarded([&] {
    check_nbasis(*nbasis, "energyEDX");
    const std::size_t nn = square(*nbasis);
    *energy = scf::electronic_energy(const_matrix(T, *nbasis), const_matrix(V, *nbasis),
                                     {G, 2 * nn}, {rho, 2 * nn});
  });
}

extern "C" NORVIK_API void DIPOLEMOM(const norvik_int* nbasis, const double* dipints,
                                     const double* rho, double* dipole) {
  guarded([&] {
    check_nbasis(*nbasis, "dipoleMom");
    const std::size_t nn = square(*nbasis);
    const scf::Vec3 mu = scf::electronic_dipole(*nbasis, {dipints, 3 * nn}, {rho, 2 * nn});
    std::copy(mu.begin(), mu.end(), dipole);
  });
}

extern "C" NORVIK_API void NUCLEARREP(const norvik_int* natom, const norvik_int* zat,
                                      const double* pos, double* energy) {
  guarded([&] {
    *energy = scf::nuclear_repulsion({zat, count(*natom)}, {pos, 3 * count(*natom)});
  });
}

extern "C" NORVIK_API void NUCLEAREDM(const norvik_int* natom, const norvik_int* zat,
                                      const double* pos, double* dipole) {
  guarded([&] {
    const scf::Vec3 mu = scf::nuclear_dipole({zat, count(*natom)}, {pos, 3 * count(*natom)});
    std::copy(mu.begin(), mu.end(), dipole);
  });
}

extern "C" NORVIK_API void STOREHF(const norvik_int* nbasis, const double* rho,
                                   const double* orbitals, const double* energy,
                                   const double* dipole, double* rhohf, double* orbitalshf,
                                   double* energyhf, double* dipolehf) {
  guarded([&] {
    const std::size_t nn = square(*nbasis);
    std::copy_n(rho, 2 * nn, rhohf);
    std::copy_n(orbitals, 2 * (nn + count(*nbasis)), orbitalshf);
    *energyhf = *energy;
    std::copy_n(dipole, 3, dipolehf);
  });
}

// ---- start densities ---------------------------------------------------------------

extern "C" NORVIK_API void NORMALIZERHO(const norvik_int* nbasis, const double* S,
                                        const norvik_int* nalpha, const norvik_int* nbeta,
                                        double* rho) {
  guarded([&] {
    check_nbasis(*nbasis, "normalizeRho");
    scf::normalize_density(const_matrix(S, *nbasis), {*nalpha, *nbeta}, {rho, 2 * square(*nbasis)});
  });
}

extern "C" NORVIK_API void PATCHRHOATOM(const norvik_int* natom, const double* atomrho,
                                        const norvik_int* nbasis, const double* S,
                                        const norvik_int* nalpha, const norvik_int* nbeta,
                                        double* rho) {
  guarded([&] {
    check_nbasis(*nbasis, "patchRhoAtom");
    if (*natom < 1) {
      throw norvik::Error(norvik::fortran::list_directed({"No atom or no electron."}));
    }
    const std::size_t nn = square(*nbasis);
    scf::patch_atomic_densities(const_matrix(S, *nbasis), {*nalpha, *nbeta}, {atomrho, 2 * nn},
                                {rho, 2 * nn});
  });
}

extern "C" NORVIK_API void MAKESALC(const char* basis, const norvik_int* natom,
                                    const norvik_int* zat, const double* pos,
                                    const norvik_int* nbasis, double* salc, norvik_int* salcblock) {
  guarded([&] {
    if (*natom != 2 || zat[0] != zat[1]) {
      throw norvik::Error(
          norvik::fortran::list_directed({"Not a homonuclear diatomic centred on the z axis."}));
    }
    const std::vector<int> z{zat[0], zat[1]};
    const norvik::basis::BasisSet set =
        norvik::basis::make_basis(text_in(basis, kLongKeywordLength), z);
    if (set.nbasis() != *nbasis) {
      throw norvik::Error(norvik::fortran::list_directed(
          {"Wrong nbasis in makesalc.", std::int64_t{*nbasis}, std::int64_t{set.nbasis()}}));
    }
    const scf::Salc s = scf::make_salc(set, {pos, 6});
    std::copy(s.u.begin(), s.u.end(), salc);
    for (int b = 0; b <= scf::kIrreps; ++b) salcblock[b] = s.first[static_cast<std::size_t>(b)] + 1;
  });
}

#define NORVIK_FIND_ROUTINE(NAME, BASIS, SHELL)                                            \
  extern "C" NORVIK_API void NAME(const norvik_int* z, norvik_int* index) {                \
    guarded([&] { *index = scf::ns_function_index(BASIS, static_cast<int>(*z), SHELL); }); \
  }

NORVIK_FIND_ROUTINE(FIND4S_STO3G, "STO-3G", 4)
NORVIK_FIND_ROUTINE(FIND4S_631G, "6-31G", 4)
NORVIK_FIND_ROUTINE(FIND5S_STO3G, "STO-3G", 5)
NORVIK_FIND_ROUTINE(FIND5S_321G, "3-21G", 5)
NORVIK_FIND_ROUTINE(FIND5S_321GC, "3-21GC", 5)
