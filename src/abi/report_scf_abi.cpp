// Exported report sections of the Hartree–Fock results.
#include <span>
#include <vector>

#include "abi/abi_support.h"
#include "common/text_file.h"
#include "norvik/scf.h"
#include "report/scf_sections.h"
#include "scf/density_update.h"
#include "scf/properties.h"

namespace {

using norvik::abi::guarded;
using norvik::abi::kFileNameLength;
using norvik::abi::text_in;
namespace report = norvik::report;
using norvik::abi::append_to;
using norvik::abi::count;

// The levels of one spin in the orbital array (n, n+1, 2).
std::span<const double> spin_levels(const double* orbitals, norvik_int nbasis, int spin) {
  const std::size_t n = count(nbasis);
  const std::size_t per_spin = n * n + n;
  return {orbitals + static_cast<std::size_t>(spin) * per_spin + n * n, n};
}

}  // namespace

extern "C" NORVIK_API void WRITE_ENERGY_ATOM(const norvik_int* natom, const norvik_int* zat,
                                             const norvik_int* zel, const double* eatom,
                                             const char* r) {
  guarded([&] {
    const std::size_t na = count(*natom);
    append_to(r, report::energy_atoms({zat, na}, {zel, na}, {eatom, na}));
  });
}

extern "C" NORVIK_API void WRITE_ENERGY_MOL(const double* eelec, const double* enuc,
                                            const double* eatoms, const char* r) {
  guarded([&] { append_to(r, report::energy_molecule(*eelec, *enuc, *eatoms)); });
}

extern "C" NORVIK_API void WRITE_ENERGY_KS(const double* xc, const char* r) {
  guarded([&] { append_to(r, report::energy_kohn_sham(xc[0], xc[1], xc[2], xc[3])); });
}

extern "C" NORVIK_API void WRITE_EMOL(const double* emol, const double* de_final, const char* r) {
  guarded([&] { append_to(r, report::energy_scf(*emol, *de_final)); });
}

extern "C" NORVIK_API void WRITE_LEVELS(const norvik_int* nbasis, const norvik_int* nlevel,
                                        const norvik_int* nalpha, const norvik_int* nbeta,
                                        const double* orbitals, const char* r) {
  guarded([&] {
    append_to(r, report::levels(spin_levels(orbitals, *nbasis, 0),
                                spin_levels(orbitals, *nbasis, 1), *nlevel, *nalpha, *nbeta));
  });
}

extern "C" NORVIK_API void WRITE_OCCUPY(const norvik_int* nbasis, const norvik_int* northo,
                                        const norvik_int* nalpha, const norvik_int* nbeta,
                                        const double* orbitals, const char* r) {
  guarded([&] {
    append_to(r, report::occupation(spin_levels(orbitals, *nbasis, 0),
                                    spin_levels(orbitals, *nbasis, 1), *northo, *nalpha, *nbeta));
  });
}

extern "C" NORVIK_API void WRITE_EDM(const double* dipole, const char* r) {
  guarded([&] { append_to(r, report::dipole({dipole[0], dipole[1], dipole[2]})); });
}

extern "C" NORVIK_API void WRITE_DEPEND(const norvik_int* nbasis, const norvik_int* northo,
                                        const double* thr_orth, const char* r) {
  guarded([&] { append_to(r, report::dependence(*nbasis, *northo, *thr_orth)); });
}

extern "C" NORVIK_API void WRITE_SPINCONTAMI(const norvik_int* nbasis, const double* S,
                                             const double* rho, const char* r) {
  guarded([&] {
    const norvik_int n = *nbasis;
    const std::size_t nn = count(n) * count(n);
    std::vector<double> work(2 * nn);
    const norvik::linalg::ConstMatrixView s(S, n, n, n);
    const std::span<const double> pair(rho, 2 * nn);
    const double s2 = norvik::scf::spin_squared(s, pair, work);
    const int na = norvik::scf::electron_count({rho, n, n, n}, s);
    const int nb = norvik::scf::electron_count({rho + nn, n, n, n}, s);
    const double sz = 0.5 * (na - nb);
    append_to(r, report::spin_contamination(s2, sz * (sz + 1.0)));
  });
}
