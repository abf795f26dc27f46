// Exported job setup and element tables.
#include <algorithm>
#include <span>

#include "abi/abi_support.h"
#include "norvik/setup.h"
#include "scf/start_density.h"
#include "setup/elements.h"
#include "setup/job_setup.h"

namespace {

using norvik::abi::count;
using norvik::abi::guarded;
using norvik::abi::guarded_value;
using norvik::abi::kFileNameLength;
using norvik::abi::kKeywordLength;
using norvik::abi::kNameLength;
using norvik::abi::kSymbolLength;
using norvik::abi::text_in;
using norvik::abi::text_out;
namespace setup = norvik::setup;

// The molecule settings are sized for the host's buffers.
static_assert(setup::kKeywordLength == kKeywordLength && setup::kNameLength == kNameLength &&
              setup::kPathLength == kFileNameLength);

// The host's molecule-file buffers, shared by both setup routines.
struct MoleculeBuffers {
  char* theory;
  char* text4;
  char* text6;
  norvik_int* int6;
  norvik_int* int8;
  norvik_int* int10;
  char* text12;
  char* text14;
  char* text18;
  norvik_int* charge;
  norvik_int* multiplicity;
};

setup::MoleculeSettings settings_from(const MoleculeBuffers& b) {
  setup::MoleculeSettings s;
  s.theory = text_in(b.theory, kKeywordLength);
  s.text4 = text_in(b.text4, kNameLength);
  s.text6 = text_in(b.text6, kNameLength);
  s.int6 = *b.int6;
  s.int8 = *b.int8;
  s.int10 = *b.int10;
  s.text12 = text_in(b.text12, kFileNameLength);
  s.text14 = text_in(b.text14, kNameLength);
  s.text18 = text_in(b.text18, kNameLength);
  s.charge = *b.charge;
  s.multiplicity = *b.multiplicity;
  return s;
}

void store(const setup::MoleculeSettings& s, const MoleculeBuffers& b) {
  text_out(b.theory, kKeywordLength, s.theory);
  text_out(b.text4, kNameLength, s.text4);
  text_out(b.text6, kNameLength, s.text6);
  *b.int6 = s.int6;
  *b.int8 = s.int8;
  *b.int10 = s.int10;
  text_out(b.text12, kFileNameLength, s.text12);
  text_out(b.text14, kNameLength, s.text14);
  text_out(b.text18, kNameLength, s.text18);
  *b.charge = s.charge;
  *b.multiplicity = s.multiplicity;
}

// Steps shared by SETUP_HF and SETUP_KS: clear the atom arrays, read and check
// the molecule, and return everything but the SCF settings.  Returns the theory
// keyword so that the caller can apply its presets.
std::string read_molecule_into(norvik_int maxatom, norvik_int maxorb, const char* molfile,
                               NORVIK_SETUP_MOLECULE_ARGS) {
  if (maxatom > 0) {
    std::fill_n(zat, maxatom, 0);
    std::fill_n(zel, maxatom, 0);
    std::fill_n(pos, 3 * count(maxatom), 0.0);
  }
  const MoleculeBuffers mb{theory, text4,  text6,  int6,   int8,        int10,
                           text12, text14, text18, charge, multiplicity};
  const setup::Molecule molecule =
      setup::read_molecule(text_in(molfile, kFileNameLength), maxatom, settings_from(mb));
  store(molecule.settings, mb);
  const auto n = molecule.atoms.size();
  for (std::size_t i = 0; i < n; ++i) {
    const auto& atom = molecule.atoms[i];
    zat[i] = atom.nuclear_charge;
    zel[i] = atom.element;
    std::copy(atom.position.begin(), atom.position.end(), pos + 3 * i);
  }
  *natom = static_cast<norvik_int>(n);
  *nghost = molecule.nghost;
  *nalpha = molecule.electrons.alpha;
  *nbeta = molecule.electrons.beta;
  const auto orbitals = setup::orbitals_kept(molecule.electrons.alpha, maxorb);
  *norb = orbitals.kept;
  *nshort = orbitals.shortfall;
  return molecule.settings.theory;
}

// The names of NORVIK_SETUP_MOLECULE_ARGS, in their order.
#define NORVIK_SETUP_MOLECULE_CALL                                                               \
  theory, text4, text6, int6, int8, int10, text12, text14, text18, charge, multiplicity, nalpha, \
      nbeta, norb, nshort, natom, nghost, zat, zel, pos

bool is_blank(const char* name) {
  const auto text = text_in(name, kFileNameLength);
  return text.find_first_not_of(' ') == std::string_view::npos;
}

}  // namespace

extern "C" NORVIK_API void SETUP_HF(NORVIK_SETUP_FILE_ARGS, double* value2, norvik_int* value4,
                                    norvik_int* niter_atom, norvik_int* niter_mole,
                                    double* damp_atom, double* damp_mole, double* thr_ene_atom,
                                    double* thr_ene_mole, double* thr_rms_atom,
                                    double* thr_rms_mole, double* value14, double* value16,
                                    double* value18, double* value20, NORVIK_SETUP_MOLECULE_ARGS) {
  guarded([&] {
    read_molecule_into(*maxatom, *maxorb, molfile, NORVIK_SETUP_MOLECULE_CALL);
    if (is_blank(parfile)) return;
    setup::HfParameters p;
    p.value2 = *value2;
    p.value4 = *value4;
    p.niter = {*niter_atom, *niter_mole};
    p.damp = {*damp_atom, *damp_mole};
    p.thr_ene = {*thr_ene_atom, *thr_ene_mole};
    p.thr_rms = {*thr_rms_atom, *thr_rms_mole};
    p.value14_20 = {*value14, *value16, *value18, *value20};
    setup::read_parameters(text_in(parfile, kFileNameLength), p);
    *value2 = p.value2;
    *value4 = p.value4;
    *niter_atom = p.niter[0];
    *niter_mole = p.niter[1];
    *damp_atom = p.damp[0];
    *damp_mole = p.damp[1];
    *thr_ene_atom = p.thr_ene[0];
    *thr_ene_mole = p.thr_ene[1];
    *thr_rms_atom = p.thr_rms[0];
    *thr_rms_mole = p.thr_rms[1];
    *value14 = p.value14_20[0];
    *value16 = p.value14_20[1];
    *value18 = p.value14_20[2];
    *value20 = p.value14_20[3];
  });
}

extern "C" NORVIK_API void SETUP_KS(
    NORVIK_SETUP_FILE_ARGS, double* value2, norvik_int* value4, norvik_int* niter_hf_atom,
    norvik_int* niter_ks_atom, norvik_int* niter_hf_mole, norvik_int* niter_ks_mole,
    double* damp_hf_atom, double* damp_ks_atom, double* damp_hf_mole, double* damp_ks_mole,
    double* thr_ene_hf_atom, double* thr_ene_ks_atom, double* thr_ene_hf_mole,
    double* thr_ene_ks_mole, double* thr_rms_hf_atom, double* thr_rms_ks_atom,
    double* thr_rms_hf_mole, double* thr_rms_ks_mole, double* value14, double* value16,
    double* value18, double* value20a, double* value20b, NORVIK_SETUP_MOLECULE_ARGS) {
  guarded([&] {
    const std::string keyword =
        read_molecule_into(*maxatom, *maxorb, molfile, NORVIK_SETUP_MOLECULE_CALL);
    // Hartree-Fock-based theories run long HF stages by default.
    if (setup::is_hartree_fock_theory(keyword)) {
      *niter_hf_atom = 48;
      *niter_hf_mole = 48;
    }
    if (is_blank(parfile)) return;
    norvik_int* niter[4] = {niter_hf_atom, niter_ks_atom, niter_hf_mole, niter_ks_mole};
    double* damp[4] = {damp_hf_atom, damp_ks_atom, damp_hf_mole, damp_ks_mole};
    double* ene[4] = {thr_ene_hf_atom, thr_ene_ks_atom, thr_ene_hf_mole, thr_ene_ks_mole};
    double* rms[4] = {thr_rms_hf_atom, thr_rms_ks_atom, thr_rms_hf_mole, thr_rms_ks_mole};
    double* single[3] = {value14, value16, value18};
    setup::KsParameters p;
    p.value2 = *value2;
    p.value4 = *value4;
    for (int k = 0; k < 4; ++k) {
      p.niter[k] = *niter[k];
      p.damp[k] = *damp[k];
      p.thr_ene[k] = *ene[k];
      p.thr_rms[k] = *rms[k];
    }
    for (int k = 0; k < 3; ++k) p.value14_18[k] = *single[k];
    p.value20 = {*value20a, *value20b};
    setup::read_parameters(text_in(parfile, kFileNameLength), p);
    *value2 = p.value2;
    *value4 = p.value4;
    for (int k = 0; k < 4; ++k) {
      *niter[k] = p.niter[k];
      *damp[k] = p.damp[k];
      *ene[k] = p.thr_ene[k];
      *rms[k] = p.thr_rms[k];
    }
    for (int k = 0; k < 3; ++k) *single[k] = p.value14_18[k];
    *value20a = p.value20[0];
    *value20b = p.value20[1];
  });
}

extern "C" NORVIK_API norvik_int SMB2CHG(const char* symbol) {
  return guarded_value<norvik_int>(
      [&] { return setup::symbol_to_z(text_in(symbol, kSymbolLength)); });
}

extern "C" NORVIK_API void CHG2SMB(char* symbol, const norvik_int* z) {
  guarded([&] { text_out(symbol, kSymbolLength, setup::z_to_symbol(*z)); });
}

extern "C" NORVIK_API void SMB2NAME(const char* symbol, char* name) {
  guarded(
      [&] { text_out(name, kNameLength, setup::symbol_to_name(text_in(symbol, kSymbolLength))); });
}

extern "C" NORVIK_API double ATOMMASS(const norvik_int* z) {
  return guarded_value<double>([&] { return setup::atomic_mass(*z); });
}

extern "C" NORVIK_API void HUNDSRULE(const norvik_int* z, norvik_int* multiplicity) {
  guarded([&] { *multiplicity = setup::hunds_rule_multiplicity(*z); });
}

extern "C" NORVIK_API void NELECTRON(const norvik_int* zsum, const norvik_int* charge,
                                     const norvik_int* multiplicity, norvik_int* nalpha,
                                     norvik_int* nbeta) {
  guarded([&] {
    const auto count = setup::count_electrons(*zsum, *charge, *multiplicity);
    *nalpha = count.alpha;
    *nbeta = count.beta;
  });
}

extern "C" NORVIK_API void MAKEZATCP(const norvik_int* iatom, const norvik_int* natom,
                                     const norvik_int* zat, norvik_int* zcp) {
  guarded([&] {
    const auto n = count(*natom);
    setup::charges_of_one_atom(*iatom - 1, std::span<const int>(zat, n), std::span<int>(zcp, n));
  });
}

extern "C" NORVIK_API void MAKEINIRHO(const norvik_int* zsum, const norvik_int* charge,
                                      const norvik_int* multiplicity, const norvik_int* nbasis,
                                      double* rho) {
  guarded([&] {
    norvik::scf::free_atom_start(*zsum, *charge, *multiplicity, *nbasis,
                                 {rho, 2 * norvik::abi::square(*nbasis)});
  });
}
