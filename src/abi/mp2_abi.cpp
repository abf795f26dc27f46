// Exported MP2 energy of a converged Hartree–Fock point and its report
// sections.
#include <array>
#include <string>
#include <vector>

#include "abi/scf_support.h"
#include "basis/library.h"
#include "common/constants.h"
#include "common/error.h"
#include "common/fortran_format.h"
#include "common/text_file.h"
#include "norvik/properties.h"
#include "properties/mp2.h"
#include "report/property_sections.h"
#include "scf/properties.h"

namespace {

namespace abi = norvik::abi;
namespace scf = norvik::scf;
using abi::count;
using abi::guarded;
using abi::kKeywordLength;
using abi::kLongKeywordLength;
using abi::text_in;

}  // namespace

extern "C" NORVIK_API void MOLLER_PLESSET_2ND(NORVIK_MP2_ARGS) {
  guarded([&] {
    constexpr const char* routine = "Moller_plesset_2nd";
    const std::string_view theory = text_in(method, kKeywordLength);
    if (!abi::is_hartree_fock(theory)) {
      throw norvik::Error(std::string("MP2 needs a Hartree-Fock point, not ") +
                          std::string(norvik::io::trim_right(theory)) + ".");
    }
    const std::size_t na = count(*natom);
    const std::string_view name = text_in(basis, kLongKeywordLength);
    const scf::MoleculeView molecule{{zat, na}, {zel, na}, {pos, 3 * na}};
    const int n = abi::checked_nbasis(name, molecule, *nbasis, routine);
    scf::JobControl job;
    job.basis = name;
    job.memory_gb = *ramlimit;
    job.orthogonality = *thr_orth;
    norvik::properties::Mp2Options options;
    options.frozen_core = *frozen != 0;
    options.memory_gb = *ramlimit;
    options.screening = *thr_screen;
    const norvik::properties::Mp2Energy e = norvik::properties::mp2_energy(
        norvik::basis::make_basis(name, molecule.elements), job, molecule, {*nalpha, *nbeta},
        {orbitals, 2 * (abi::square(n) + count(n))}, options);
    const double ev = norvik::constants::kHartreeEv;
    emp2[0] = e.correlation * ev;
    emp2[1] = e.same_spin * ev;
    emp2[2] = e.opposite_spin * ev;
    *etotal = *escf + emp2[0];
  });
}

extern "C" NORVIK_API void WRITE_ENERGY_MP2(const double* escf, const double* emp2,
                                            const char* report) {
  guarded([&] {
    abi::append_to(report, norvik::report::mp2_energy(*escf, {emp2[0], emp2[1], emp2[2]}));
  });
}

extern "C" NORVIK_API void WRITE_MP2_CAUTION(const norvik_bool* converged, const norvik_int* nbasis,
                                             const double* S, const double* rho,
                                             const char* report) {
  guarded([&] {
    const norvik_int n = *nbasis;
    abi::check_nbasis(n, "Write_mp2_caution");
    const std::size_t nn = abi::square(n);
    std::vector<double> work(2 * nn);
    const norvik::linalg::ConstMatrixView s(S, n, n, n);
    const double s2 = scf::spin_squared(s, {rho, 2 * nn}, work);
    const int na = scf::electron_count({rho, n, n, n}, s);
    const int nb = scf::electron_count({rho + nn, n, n, n}, s);
    const double sz = 0.5 * (na - nb);
    abi::append_to(report, norvik::report::mp2_caution(*converged != 0, s2 - sz * (sz + 1.0)));
  });
}
