#!/usr/bin/env python3
"""Psi4 1.3.2 harmonic frequencies (analytic Hessian) of Hartree-Fock molecules at
Psi4's own optimised geometries (tests/references/data/optimized.tsv), with
norvik's atomic masses (ATOMMASS: H 1.00794, C 12.0107, N 14.0067, O 15.9994),
written to tests/references/data/hf_frequencies.tsv.

usage: PYTHONPATH=tools/references:/usr/lib/x86_64-linux-gnu /usr/bin/python3 \\
       tools/references/vibration_references.py [--threads N]
"""
import argparse
import os
import sys

import gradient_references as gr
import make_references as mr

HERE = os.path.dirname(os.path.abspath(__file__))
DATA = os.path.join(HERE, "..", "..", "tests", "references", "data")
MASSES = {"H": 1.00794, "C": 12.0107, "N": 14.0067, "O": 15.9994}
ROWS = ["h2o_6-31Gx_HF", "nh3_6-31Gx_HF", "ch4_6-31Gx_HF"]


def optimised(name):
    with open(os.path.join(DATA, "optimized.tsv")) as f:
        rows = [l.rstrip("\n").split("\t") for l in f if not l.startswith("#")]
    head = rows[0]
    for r in rows[1:]:
        if r[0] == name:
            return dict(zip(head, r))
    raise KeyError(name)


def frequencies(name, threads, scratch):
    import numpy as np
    import psi4

    row = optimised(name)
    atoms = []
    for item in row["geometry[A]"].split("; "):
        s, x, y, z = item.split()
        atoms.append((s, float(x), float(y), float(z)))
    molecule, opts, atoms, _, mult, _ = gr.psi4_setup(row["molecule_file"], mr.DEFAULT_BASIS_DIR,
                                                      threads, scratch, atoms)
    for i, a in enumerate(atoms):
        molecule.set_mass(i, MASSES[a[0]])
    opts["reference"] = "rhf"
    psi4.set_options(opts)
    energy, wfn = psi4.frequency("scf", molecule=molecule, return_wfn=True, dertype=2)
    freqs = np.asarray(wfn.frequencies())
    psi4.core.clean()
    return row, atoms, energy, [float(v) for v in freqs]


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--threads", type=int, default=2)
    args = ap.parse_args()
    out = os.path.join(DATA, "hf_frequencies.tsv")
    lines = ["# Psi4 1.3.2 RHF harmonic wavenumbers [cm-1] from its analytic Hessian at its "
             "optimised geometry (optimized.tsv), with norvik's atomic masses; "
             "tools/references/vibration_references.py\n",
             "name\tmolecule_file\tbasis\tE[hartree]\twavenumbers[cm-1]\tgeometry[A]\n"]
    for name in ROWS:
        row, atoms, energy, freqs = frequencies(name, args.threads, "/tmp")
        geom = "; ".join("%s %.6f %.6f %.6f" % a for a in atoms)
        lines.append("%s\t%s\t%s\t%.10f\t%s\t%s\n" % (
            name, row["molecule_file"], row["basis"], energy,
            " ".join("%.4f" % v for v in freqs), geom))
        print(name, freqs, file=sys.stderr)
    with open(out, "w") as f:
        f.writelines(lines)


if __name__ == "__main__":
    main()
