#!/usr/bin/python3
"""Psi4 1.3.2 SCF stability eigenvalues (the lowest eigenvalues of the orbital
Hessian A + B for real rotations, hartree) of a few Hartree-Fock solutions,
written to tests/references/data/stability.tsv.

usage: PYTHONPATH=tools/references:/usr/lib/x86_64-linux-gnu /usr/bin/python3 \\
       tools/references/stability_references.py
Psi4 is run as a black box (stability_analysis check, solver_n_root 3, SCF to
1e-10, point group C1) on the molecule files under
tests/references/data/stability/, whose basis sets are set up by the scripts
beside this one (Cartesian d functions as norvik has them).
"""
import os
import re

import gradient_references as gr
import make_references as mr

ROWS = ["h2_stretched", "o2_singlet", "h2o", "ch3", "o2_triplet"]


def analysis(name):
    import psi4
    psi4.core.clean_options()  # nothing carried over from the previous molecule
    rel = os.path.join("stability", name + ".mol")
    molecule, opts, atoms, _, mult, expected = gr.psi4_setup(rel, mr.DEFAULT_BASIS_DIR, 1, "/tmp")
    reference = "rhf" if mult == 1 else "uhf"
    opts.update(reference=reference, stability_analysis="check", solver_n_root=3,
                solver_maxiter=200, solver_convergence=1e-7)
    psi4.set_options(opts)
    energy, wfn = psi4.energy("scf", molecule=molecule, return_wfn=True)
    gr.check_basis(wfn, expected, name)
    out = open("/tmp/psi4.out").read()
    blocks = {}
    for label, key in [("singlet (RHF->RHF)", "RHF->RHF"), ("triplet (RHF->UHF)", "RHF->UHF"),
                       ("UHF->UHF", "UHF->UHF")]:
        m = re.search(r"Lowest %s stability eigenvalues:-?\s*\n((?:\s+A\s+-?[\d.]+.*\n)+)"
                      % re.escape(label), out)
        if m:
            blocks[key] = [float(v) for v in re.findall(r"A\s+(-?[\d.]+)", m.group(1))][:3]
    psi4.core.clean()
    return reference.upper(), energy, blocks


def broken_symmetry(name):
    """Psi4's UHF energy from the core guess with HOMO and LUMO mixed (guess_mix): the
    broken-symmetry solution below the unstable RHF one."""
    import psi4
    psi4.core.clean_options()  # nothing carried over from the previous molecule
    rel = os.path.join("stability", name + ".mol")
    molecule, opts, atoms, _, mult, expected = gr.psi4_setup(rel, mr.DEFAULT_BASIS_DIR, 1, "/tmp")
    opts.update(reference="uhf", guess="core", guess_mix=True, stability_analysis="none")
    psi4.set_options(opts)
    energy, wfn = psi4.energy("scf", molecule=molecule, return_wfn=True)
    gr.check_basis(wfn, expected, name)
    psi4.core.clean()
    return energy


def main():
    out = os.path.join(gr.OUT_DIR, "stability.tsv")
    lines = ["# Psi4 1.3.2 lowest orbital-Hessian eigenvalues [hartree] (stability_analysis "
             "check, solver_n_root 3) of the SCF solutions that Psi4 reaches for the molecule "
             "files in stability/; tools/references/stability_references.py\n",
             "name\treference\tE[hartree]\tblock\teigenvalues[hartree]\n"]
    for name in ROWS:
        try:
            reference, energy, blocks = analysis(name)
        except RuntimeError as e:  # Psi4's own solver gives up on some
            print(name, "skipped:", str(e).strip().splitlines()[0])
            import psi4
            psi4.core.clean()
            continue
        for key, values in blocks.items():
            lines.append("%s\t%s\t%.10f\t%s\t%s\n" % (name, reference, energy, key,
                                                     " ".join("%.6f" % v for v in values)))
    with open(out, "w") as f:
        f.writelines(lines)
    out = os.path.join(gr.OUT_DIR, "stability_uhf.tsv")
    lines = ["# Psi4 1.3.2 UHF energies from the core guess with HOMO and LUMO mixed (guess core, guess_mix) for the unstable "
             "RHF solutions of stability.tsv; tools/references/stability_references.py\n",
             "name\tmolecule\tE_UHF[hartree]\n"]
    for name in ["h2_stretched"]:
        lines.append("%s\tstability/%s.mol\t%.10f\n" % (name, name, broken_symmetry(name)))
    with open(out, "w") as f:
        f.writelines(lines)


if __name__ == "__main__":
    main()
