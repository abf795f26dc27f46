#!/usr/bin/python3
"""Psi4 1.3.2's side of the excited-state benchmark: the SVWN point of a norvik
molecule file in norvik's basis set (as the reference scripts set it up), then
ten singlet and ten triplet Tamm-Dancoff excitations (tdscf_excitations, which
in 1.3.2 gives energies only: no oscillator strengths).

usage: PYTHONPATH=tools/references:/usr/lib/x86_64-linux-gnu /usr/bin/python3 \\
       bench/properties/excited/psi4_tdscf.py MOLECULE_FILE THREADS [STATES]
"""
import os
import sys
import tempfile

import gradient_references as gr
import make_references as mr


def main():
    import psi4
    from psi4.driver.procrouting.response.scf_response import tdscf_excitations
    path, threads = os.path.abspath(sys.argv[1]), int(sys.argv[2])
    states = int(sys.argv[3]) if len(sys.argv) > 3 else 10
    scratch = tempfile.mkdtemp()
    os.chdir(scratch)
    molecule, opts, atoms, _, mult, expected = gr.psi4_setup(path, mr.DEFAULT_BASIS_DIR, threads,
                                                             scratch)
    opts.update(e_convergence=1e-8, d_convergence=1e-8, save_jk=True)
    psi4.set_options(opts)
    energy, wfn = psi4.energy("svwn", molecule=molecule, return_wfn=True)
    gr.check_basis(wfn, expected, path)
    # Psi4 1.3.2's interface: states per irrep (C1: one), singlets and triplets
    # in separate solves; it returns (excitation energy [hartree], irrep) pairs.
    singlets = tdscf_excitations(wfn, states_per_irrep=[states], triplet=False, tda=True)
    triplets = tdscf_excitations(wfn, states_per_irrep=[states], triplet=True, tda=True)
    print("E(SVWN) = %.10f; S1 %.4f eV, T1 %.4f eV" % (
        energy, singlets[0][0] * 27.211386, triplets[0][0] * 27.211386))


if __name__ == "__main__":
    main()
