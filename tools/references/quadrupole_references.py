#!/usr/bin/python3
"""Psi4 1.3.2 quadrupole moments of the Hartree-Fock molecules of the population
table (populations.tsv: the same rows, geometries and basis), about the centre
of nuclear charge, written to tests/references/data/quadrupoles.tsv.

usage: PYTHONPATH=tools/references:/usr/lib/x86_64-linux-gnu /usr/bin/python3 \\
       tools/references/quadrupole_references.py
Psi4 is run as a black box: oeprop QUADRUPOLE with properties_origin
NUCLEAR_CHARGE after an SCF converged to 1e-10.  Psi4 stores the traced moment
Q_ij = sum_q q r_i r_j in Debye*A (its "Quadrupole Moment"); it is converted
back to e*bohr^2 with Psi4's own factors and then to e*A^2 with the bohr of
norvik (the geometry went to Psi4 in bohr with that same bohr).  As a check
of the origin, the moment is also computed about (0, 0, 0) and shifted to the
centre of nuclear charge c with the dipole: for a neutral molecule
Q_ij(c) = Q_ij(0) - mu_i c_j - c_i mu_j.
"""
import os
import tempfile

import vibration_references as vr
import gradient_references as gr

ROWS = ["h2o_6-31Gx_HF", "nh3_6-31Gx_HF", "coh2_6-31Gx_HF", "hf_6-31Gx_HF", "ch3_6-31Gx_HF"]
PAIRS = [("XX", 0, 0), ("XY", 0, 1), ("XZ", 0, 2), ("YY", 1, 1), ("YZ", 1, 2), ("ZZ", 2, 2)]
Z = {"H": 1, "C": 6, "N": 7, "O": 8, "F": 9}


def moments(name):
    import psi4
    row, molecule, opts, atoms, mult, expected = vr.psi4_molecule(name, "/tmp")
    opts["reference"] = "rhf" if mult == 1 else "uhf"
    opts["e_convergence"] = 1e-10
    opts["d_convergence"] = 1e-10
    psi4.set_options(opts)
    energy, wfn = psi4.energy("scf", molecule=molecule, return_wfn=True)
    to_au = 1.0 / (psi4.constants.dipmom_au2debye * psi4.constants.bohr2angstroms)
    psi4.set_options({"properties_origin": [0.0, 0.0, 0.0]})
    psi4.oeprop(wfn, "DIPOLE", "QUADRUPOLE", title="ZERO")
    psi4.set_options({"properties_origin": ["NUCLEAR_CHARGE"]})
    psi4.oeprop(wfn, "QUADRUPOLE", title="NUC")
    var = psi4.core.variable
    q_nuc = [[0.0] * 3 for _ in range(3)]
    q_zero = [[0.0] * 3 for _ in range(3)]
    for label, i, j in PAIRS:
        q_nuc[i][j] = q_nuc[j][i] = var("NUC QUADRUPOLE " + label) * to_au
        q_zero[i][j] = q_zero[j][i] = var("ZERO QUADRUPOLE " + label) * to_au
    mu = [var("ZERO DIPOLE " + k) / psi4.constants.dipmom_au2debye for k in "XYZ"]
    ztot = sum(Z[a[0]] for a in atoms)
    c = [sum(Z[a[0]] * a[1 + k] for a in atoms) / ztot / gr.BOHR_ANGSTROM for k in range(3)]
    for i in range(3):
        for j in range(3):
            shifted = q_zero[i][j] - mu[i] * c[j] - c[i] * mu[j]
            if abs(shifted - q_nuc[i][j]) > 1e-8:
                raise RuntimeError("%s: origin shift %d%d: %.10f vs %.10f" %
                                   (name, i, j, shifted, q_nuc[i][j]))
    psi4.core.clean()
    b2 = gr.BOHR_ANGSTROM ** 2
    traced = [q_nuc[i][j] * b2 for _, i, j in PAIRS]
    return row, atoms, mult, energy, traced


def main():
    out = os.path.abspath(os.path.join(vr.DATA, "quadrupoles.tsv"))
    # Psi4 leaves timer.dat in its working folder: keep it out of the worktree.
    os.chdir(tempfile.mkdtemp(prefix="norvik_quadrupoles_"))
    lines = ["# Psi4 1.3.2 quadrupole moments (oeprop QUADRUPOLE, properties_origin "
             "NUCLEAR_CHARGE) of RHF/UHF 6-31G* at the geometries of populations.tsv, SCF to "
             "1e-10: the traced moment Q_ij = sum q r_i r_j [e*A^2] about the centre of nuclear "
             "charge, xx xy xz yy yz zz; tools/references/quadrupole_references.py\n",
             "name\tbasis\tmultiplicity\tE[hartree]\tQ[eA2]\tgeometry[A]\n"]
    for name in ROWS:
        row, atoms, mult, energy, traced = moments(name)
        lines.append("%s\t%s\t%d\t%.10f\t%s\t%s\n" % (
            name, row["basis"], mult, energy, " ".join("%.9f" % (round(q, 9) + 0.0) for q in traced),
            vr.geometry_text(atoms)))
    with open(out, "w") as f:
        f.writelines(lines)


if __name__ == "__main__":
    main()
