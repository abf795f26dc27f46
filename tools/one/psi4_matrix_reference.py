#!/usr/bin/python3
"""Independent reference for the one-electron matrices: Psi4 (Debian's psi4).

For a few molecule/basis pairs, Psi4 builds the overlap S, kinetic energy T,
nuclear attraction V and position integrals <a|x|b>, <a|y|b>, <a|z|b>.  Psi4
orders, normalises and (for pure shells) combines its functions in its own way,
so what is recorded is what does not depend on the choice of functions within
the same space: the generalised eigenvalues of (M, S) for M = T, V, X, Y, Z.
The library's matrices give the same eigenvalues when its basis spans the same
functions.  The basis is taken from shared/data/basis (published values, as
the library compiles them in) and written into the data file, so the test
builds exactly the same shells.

Usage:
  PYTHONPATH=/usr/lib/x86_64-linux-gnu /usr/bin/python3 \\
      tools/one/psi4_matrix_reference.py [BASIS_DIR] [OUTPUT_DIR]
BASIS_DIR defaults to ../shared/data/basis beside the repository, OUTPUT_DIR to
tests/one/data.  Writes psi4_<case>.txt per case.
"""
import json
import os
import sys

import numpy as np
import psi4

REPO = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))

SYMBOL = {1: "H", 6: "C", 8: "O", 21: "Sc"}

# name, basis file, pure d/f?, atoms (Z, x, y, z in bohr)
CASES = [
    ("h2o_631gss", "6-31gss.json", True,
     [(8, 0.05, -0.02, 0.21), (1, 0.0, 1.43, -0.93), (1, 0.12, -1.47, -0.85)]),
    ("h2o_631gss_cartesian", "6-31gss.json", False,
     [(8, 0.05, -0.02, 0.21), (1, 0.0, 1.43, -0.93), (1, 0.12, -1.47, -0.85)]),
    ("sch_631gs", "6-31gs.json", True,
     [(21, 0.3, -0.2, 0.1), (1, 0.5, 0.4, 3.45)]),
    ("co_sto3g", "sto-3g.json", True,
     [(6, 0.0, 0.1, -1.07), (8, 0.2, 0.0, 1.06)]),
]

LETTER = {0: "S", 1: "P", 2: "D", 3: "F"}


def shells_of(data, z):
    """(L list, exponents, coefficient columns) per published shell."""
    out = []
    for sh in data["elements"][str(z)]["electron_shells"]:
        out.append((sh["angular_momentum"], [float(e) for e in sh["exponents"]],
                    [[float(c) for c in col] for col in sh["coefficients"]]))
    return out


def psi4_basis_text(atoms, data, pure):
    lines = ["spherical" if pure else "cartesian", "****"]
    for z in sorted({a[0] for a in atoms}):
        lines.append("%s 0" % SYMBOL[z])
        for ls, exps, cols in shells_of(data, z):
            for l, col in zip(ls, cols):
                lines.append("%s %d 1.00" % (LETTER[l], len(exps)))
                for e, c in zip(exps, col):
                    lines.append("  %.12E %.12E" % (e, c))
        lines.append("****")
    return "\n".join(lines)


def generalised_eigenvalues(m, s):
    l = np.linalg.cholesky(s)
    li = np.linalg.inv(l)
    return np.sort(np.linalg.eigvalsh(li @ m @ li.T))


def run_case(name, basis_file, pure, atoms, basis_dir, out_dir):
    data = json.load(open(os.path.join(basis_dir, basis_file)))
    geom = ["units bohr", "no_com", "no_reorient", "symmetry c1"]
    for z, x, y, zz in atoms:
        geom.append("%s %.10f %.10f %.10f" % (SYMBOL[z], x, y, zz))
    mol = psi4.geometry("\n".join(geom), name=name)
    psi4.core.clean()
    label = "own" + name.replace("_", "")
    block = "assign %s\n[%s]\n%s" % (label, label, psi4_basis_text(atoms, data, pure))
    psi4.basis_helper(block, name=label)
    psi4.core.set_global_option("PUREAM", pure)
    wfn = psi4.core.Wavefunction.build(mol, psi4.core.get_global_option("BASIS"))
    mints = psi4.core.MintsHelper(wfn.basisset())
    s = np.asarray(mints.ao_overlap())
    mats = {
        "T": np.asarray(mints.ao_kinetic()),
        "V": np.asarray(mints.ao_potential()),
    }
    for axis, d in zip("XYZ", mints.ao_dipole()):
        mats[axis] = -np.asarray(d)  # Psi4 includes the electron's charge

    lines = ["# Psi4 %s reference: generalised eigenvalues of (M, S), hartree and bohr" %
             psi4.__version__,
             "# case %s, basis %s, %s shells (tools/one/psi4_matrix_reference.py)" %
             (name, data["name"], "pure" if pure else "Cartesian"),
             "pure %d" % (1 if pure else 0), "atoms %d" % len(atoms)]
    for z, x, y, zz in atoms:
        lines.append("%d %.10f %.10f %.10f" % (z, x, y, zz))
    shell_lines = []
    for i, (z, _, _, _) in enumerate(atoms):
        for ls, exps, cols in shells_of(data, z):
            kind = "sp" if ls == [0, 1] else "spdf"[ls[0]]
            if len(ls) > 2:
                raise ValueError("spd shells are not used")
            shell_lines.append("shell %d %s %d" % (i + 1, kind, len(exps)))
            for k, e in enumerate(exps):
                shell_lines.append(" ".join(["%.12E" % e] + ["%.12E" % c[k] for c in cols]))
    lines.append("shells %d" % sum(1 for l in shell_lines if l.startswith("shell ")))
    lines += shell_lines
    lines.append("nbasis %d" % s.shape[0])
    for key in "TVXYZ":
        ev = generalised_eigenvalues(mats[key], s)
        lines.append("eig %s %d" % (key, len(ev)))
        lines += ["%.15E" % v for v in ev]
    path = os.path.join(out_dir, "psi4_%s.txt" % name)
    with open(path, "w") as out:
        out.write("\n".join(lines) + "\n")
    print(path, s.shape[0])


def main():
    basis_dir = sys.argv[1] if len(sys.argv) > 1 else os.path.join(
        os.path.dirname(REPO), "shared", "data", "basis")
    out_dir = sys.argv[2] if len(sys.argv) > 2 else os.path.join(REPO, "tests", "one", "data")
    psi4.core.set_output_file(os.devnull, False)
    psi4.set_memory("500 MB")
    for case in CASES:
        run_case(*case, basis_dir, out_dir)


if __name__ == "__main__":
    main()
