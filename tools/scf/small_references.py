#!/usr/bin/python3
"""Psi4 reference energies and dipoles for the small SCF test cases.

The molecules of tests/scf (H2, HeH+, H2O, OH) are run through Psi4 exactly as
tools/references/make_references.py runs its table (same basis conversion from
shared/data/basis, nuclear positions in bohr with norvik's bohr = 0.5291772104 A,
RHF for closed shells, UHF with stability following for open shells, exact
integrals, tight convergence).  Writes tests/scf/data/small_references.tsv.

Run with Debian's interpreter and Psi4's module path:
  PYTHONPATH=/usr/lib/x86_64-linux-gnu /usr/bin/python3 tools/scf/small_references.py
"""

import os
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
REPO = os.path.normpath(os.path.join(HERE, "..", ".."))
sys.path.insert(0, os.path.join(REPO, "tools", "references"))

import make_references as mr  # noqa: E402

# name -> (label, atoms in angstrom, charge, multiplicity); the same geometries
# as tests/scf/scf_fixture.h.
SMALL = {
    "h2": ("H2", [("H", 0.0, 0.0, 0.0), ("H", 0.0, 0.0, 0.74)], 0, 1),
    "hehp": ("HeH+", [("He", 0.0, 0.0, 0.0), ("H", 0.0, 0.0, 0.772)], 1, 1),
    "h2o": ("H2O", [("O", 0.0, 0.0, 0.0), ("H", 0.0, 0.756950, -0.585882),
                    ("H", 0.0, -0.756950, -0.585882)], 0, 1),
    "oh": ("OH", [("O", 0.0, 0.0, 0.0), ("H", 0.0, 0.0, 0.970)], 0, 2),
}
CASES = [(m, b) for m in ("h2", "hehp", "h2o", "oh") for b in ("STO-3G", "6-31Gx")]


def main():
    mr.MOLECULES.update(SMALL)
    basis_dir = mr.DEFAULT_BASIS_DIR
    out = os.path.join(REPO, "tests", "scf", "data", "small_references.tsv")
    rows = ["# Psi4 references for the small SCF cases; tools/scf/small_references.py",
            "name\tbasis\tE_HF[hartree]\tdipole_x[eA]\tdipole_y[eA]\tdipole_z[eA]\tS2"]
    with tempfile.TemporaryDirectory() as scratch:
        for mol, basis in CASES:
            r = mr.run_psi4(mol, basis, basis_dir, 1, scratch)
            dip = [d * mr.BOHR_ANGSTROM for d in r["dipole_au"]]
            rows.append("\t".join([mol, basis, "%.10f" % r["energy"]] +
                                  [mr.fixed(d, 8) for d in dip] +
                                  ["" if r["s2"] is None else "%.6f" % r["s2"]]))
            print(rows[-1], flush=True)
    with open(out, "w") as f:
        f.write("\n".join(rows) + "\n")


if __name__ == "__main__":
    main()
