#!/usr/bin/python3
"""Psi4 1.3.2 Mulliken and Loewdin atomic charges of Hartree-Fock molecules at
Psi4's own HF/6-31G* optimised geometries (optimized.tsv), written to
tests/references/data/populations.tsv.

usage: PYTHONPATH=tools/references:/usr/lib/x86_64-linux-gnu /usr/bin/python3 \\
       tools/references/population_references.py
Psi4 is run as a black box (oeprop MULLIKEN_CHARGES, LOWDIN_CHARGES after an SCF
converged to 1e-10); the basis sets and geometries are set up by the scripts
beside this one, exactly as for the frequency table.
"""
import os

import vibration_references as vr

ROWS = ["h2o_6-31Gx_HF", "nh3_6-31Gx_HF", "coh2_6-31Gx_HF", "hf_6-31Gx_HF", "ch3_6-31Gx_HF"]


def charges(name):
    import psi4
    row, molecule, opts, atoms, mult, expected = vr.psi4_molecule(name, "/tmp")
    opts["reference"] = "rhf" if mult == 1 else "uhf"
    opts["e_convergence"] = 1e-10
    opts["d_convergence"] = 1e-10
    psi4.set_options(opts)
    energy, wfn = psi4.energy("scf", molecule=molecule, return_wfn=True)
    psi4.oeprop(wfn, "MULLIKEN_CHARGES")
    mulliken = list(wfn.atomic_point_charges().to_array())
    psi4.oeprop(wfn, "LOWDIN_CHARGES")
    lowdin = list(wfn.atomic_point_charges().to_array())
    psi4.core.clean()
    return row, atoms, mult, energy, mulliken, lowdin


def main():
    out = os.path.join(vr.DATA, "populations.tsv")
    lines = ["# Psi4 1.3.2 Mulliken and Loewdin atomic charges [e] (oeprop MULLIKEN_CHARGES, "
             "LOWDIN_CHARGES) of RHF/UHF 6-31G* at Psi4's HF/6-31G* geometries (optimized.tsv), "
             "SCF to 1e-10; tools/references/population_references.py\n",
             "name\tbasis\tmultiplicity\tE[hartree]\tmulliken[e]\tlowdin[e]\tgeometry[A]\n"]
    for name in ROWS:
        row, atoms, mult, energy, mulliken, lowdin = charges(name)
        lines.append("%s\t%s\t%d\t%.10f\t%s\t%s\t%s\n" % (
            name, row["basis"], mult, energy, " ".join("%.8f" % q for q in mulliken),
            " ".join("%.8f" % q for q in lowdin), vr.geometry_text(atoms)))
    with open(out, "w") as f:
        f.writelines(lines)


if __name__ == "__main__":
    main()
