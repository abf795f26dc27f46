// Exported report and run-log writers.
#include <span>

#include "abi/abi_support.h"
#include "common/text_file.h"
#include "norvik/report.h"
#include "report/sections.h"

namespace {

using norvik::abi::append_to;
using norvik::abi::count;
using norvik::abi::guarded;
using norvik::abi::kKeywordLength;
using norvik::abi::kNameLength;
using norvik::abi::text_in;
namespace report = norvik::report;

std::span<const double> positions(const norvik_int* natom, const double* pos) {
  return {pos, 3 * count(*natom)};
}

std::span<const int> per_atom(const norvik_int* natom, const norvik_int* values) {
  return {values, count(*natom)};
}

}  // namespace

extern "C" {

NORVIK_API void WRITE_LOG_HEADA(const char* logfile) {
  guarded([&] { append_to(logfile, report::log_header()); });
}

NORVIK_API void WRITE_BLANKLINE(const char* logfile) {
  guarded([&] { append_to(logfile, {std::string()}); });
}

NORVIK_API void WRITE_LOG_HF(const norvik_int* iopt, const norvik_int* isrc, const norvik_int* iscf,
                             const double* emol, const double* dipole, const double* rmsd,
                             const double* comm2, const char* logfile) {
  guarded([&] {
    append_to(logfile, {report::log_cycle_line(*iopt, *isrc, *iscf, *emol,
                                               {dipole[0], dipole[1], dipole[2]}, *rmsd, *comm2)});
  });
}

// The Kohn–Sham cycle line has the Hartree–Fock one's format; emol is the
// total energy (with the exchange–correlation energy) plus the offset.
NORVIK_API void WRITE_LOG_KS(const norvik_int* iopt, const norvik_int* isrc, const norvik_int* iscf,
                             const double* emol, const double* dipole, const double* rmsd,
                             const double* comm2, const char* logfile) {
  WRITE_LOG_HF(iopt, isrc, iscf, emol, dipole, rmsd, comm2, logfile);
}

NORVIK_API void WRITE_SHEBANG(const char* r) {
  guarded([&] { append_to(r, report::shebang()); });
}

NORVIK_API void WRITE_START(const char* r) {
  guarded([&] { append_to(r, report::start()); });
}

NORVIK_API void WRITE_CONST(const double* bohr_angstrom, const double* hartree_ev, const char* r) {
  guarded([&] { append_to(r, report::constants(*bohr_angstrom, *hartree_ev)); });
}

NORVIK_API void WRITE_THEORY(const char* theory, const char* r) {
  guarded([&] { append_to(r, report::theory(text_in(theory, kKeywordLength))); });
}

NORVIK_API void WRITE_MOLNAME(const char* molname, const char* r) {
  guarded([&] { append_to(r, report::molecule_name(text_in(molname, kNameLength))); });
}

NORVIK_API void WRITE_MOLNAME_KS(const char* molname, const char* functional, const char* r) {
  guarded([&] {
    append_to(r, report::molecule_name_ks(text_in(molname, kNameLength),
                                          text_in(functional, kKeywordLength)));
  });
}

NORVIK_API void WRITE_ATMNAME(const norvik_int* z, const char* r) {
  guarded([&] { append_to(r, report::atom_name(*z)); });
}

NORVIK_API void WRITE_ATMNAME_KS(const norvik_int* z, const char* functional, const char* r) {
  guarded([&] { append_to(r, report::atom_name_ks(*z, text_in(functional, kKeywordLength))); });
}

NORVIK_API void WRITE_BASIS(const char* basname, const char* r) {
  guarded([&] { append_to(r, report::basis(text_in(basname, kNameLength))); });
}

NORVIK_API void WRITE_NUMBERS(const norvik_int* nalpha, const norvik_int* nbeta,
                              const norvik_int* natom, const norvik_int* nghost, const char* r) {
  guarded([&] { append_to(r, report::numbers(*nalpha, *nbeta, *natom, *nghost)); });
}

NORVIK_API void WRITE_NUMBERS_KS(const norvik_int* nalpha, const norvik_int* nbeta,
                                 const norvik_int* natom, const norvik_int* nghost,
                                 const char* functional, const char* r) {
  guarded([&] {
    append_to(r, report::numbers_ks(*nalpha, *nbeta, *natom, *nghost,
                                    text_in(functional, kKeywordLength)));
  });
}

NORVIK_API void WRITE_SCF_ATOM(const norvik_int* niter, const double* damp, const double* thr_ene,
                               const double* thr_rms, const char* r) {
  guarded([&] { append_to(r, report::scf_atom(*niter, *damp, *thr_ene, *thr_rms)); });
}

NORVIK_API void WRITE_SCF_ATOM_KS(const norvik_int* niter_hf, const norvik_int* niter_ks,
                                  const double* damp_hf, const double* damp_ks,
                                  const double* thr_ene_hf, const double* thr_ene_ks,
                                  const double* thr_rms_hf, const double* thr_rms_ks,
                                  const char* r) {
  guarded([&] {
    append_to(r, report::scf_atom_ks({*niter_hf, *niter_ks}, {*damp_hf, *damp_ks},
                                     {*thr_ene_hf, *thr_ene_ks}, {*thr_rms_hf, *thr_rms_ks}));
  });
}

NORVIK_API void WRITE_SCF(const norvik_int* niter_atom, const norvik_int* niter_mole,
                          const double* damp_atom, const double* damp_mole,
                          const double* thr_ene_atom, const double* thr_ene_mole,
                          const double* thr_rms_atom, const double* thr_rms_mole, const char* r) {
  guarded([&] {
    append_to(r, report::scf({*niter_atom, *niter_mole}, {*damp_atom, *damp_mole},
                             {*thr_ene_atom, *thr_ene_mole}, {*thr_rms_atom, *thr_rms_mole}));
  });
}

NORVIK_API void WRITE_SCF_KS(const norvik_int* n1, const norvik_int* n2, const norvik_int* n3,
                             const norvik_int* n4, const double* d1, const double* d2,
                             const double* d3, const double* d4, const double* e1, const double* e2,
                             const double* e3, const double* e4, const double* r1, const double* r2,
                             const double* r3, const double* r4, const char* r) {
  guarded([&] {
    append_to(r, report::scf_ks({*n1, *n2, *n3, *n4}, {*d1, *d2, *d3, *d4}, {*e1, *e2, *e3, *e4},
                                {*r1, *r2, *r3, *r4}));
  });
}

NORVIK_API void WRITE_GEOMETRY(const norvik_int* natom, const double* pos, const norvik_int* zat,
                               const char* r) {
  guarded([&] { append_to(r, report::geometry(positions(natom, pos), per_atom(natom, zat))); });
}

NORVIK_API void WRITE_GEOMETRY_GHST(const norvik_int* natom, const double* pos,
                                    const norvik_int* zat, const norvik_int* zel, const char* r) {
  guarded([&] {
    append_to(r, report::geometry_ghost(positions(natom, pos), per_atom(natom, zat),
                                        per_atom(natom, zel)));
  });
}

NORVIK_API void WRITE_COORDINATES(const norvik_int* natom, const double* pos, const norvik_int* zel,
                                  const norvik_int* zat, const char* r) {
  guarded([&] {
    append_to(
        r, report::coordinates(positions(natom, pos), per_atom(natom, zel), per_atom(natom, zat)));
  });
}

NORVIK_API void WRITE_XYZ(const norvik_int* natom, const double* pos, const norvik_int* zel,
                          const char* title, const char* r) {
  guarded([&] {
    append_to(
        r, report::xyz(positions(natom, pos), per_atom(natom, zel), text_in(title, kNameLength)));
  });
}

NORVIK_API void WRITE_XYZL(const norvik_int* natom, const double* pos, const norvik_int* zel,
                           const char* title, const char* r) {
  guarded([&] {
    append_to(r, report::xyz_labelled(positions(natom, pos), per_atom(natom, zel),
                                      text_in(title, kNameLength)));
  });
}

NORVIK_API void WRITE_CAUTION(const char* r) {
  guarded([&] { append_to(r, report::caution()); });
}

NORVIK_API void WRITE_INSUFFCIENTRAM_RPA(const double* vint_gb, const double* tdhf_gb,
                                         const char* r) {
  guarded([&] { append_to(r, report::insufficient_ram_rpa(*vint_gb, *tdhf_gb)); });
}

NORVIK_API void WRITE_INSUFFCIENTRAM_MP2(const double* mp2_gb, const char* r) {
  guarded([&] { append_to(r, report::insufficient_ram_mp2(*mp2_gb)); });
}

NORVIK_API void WRITE_INCORE(const norvik_int* flag, const norvik_int* nbasis,
                             const norvik_int* npair, const norvik_int* neffective_pair,
                             const double* vint_gb, const double* limit_gb, const char* r) {
  guarded([&] {
    append_to(r,
              report::in_core(*flag == 1, *nbasis, *npair, *neffective_pair, *vint_gb, *limit_gb));
  });
}

NORVIK_API void TIMESTAMP(const char* text) {
  guarded([&] { norvik::io::timestamp(text_in(text, norvik::abi::kTimestampLength)); });
}

}  // extern "C"
