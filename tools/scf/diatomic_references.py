#!/usr/bin/python3
"""Psi4 reference energies for the symmetry-restricted C2 and B2 SCF.

C2 (1Sigma_g+, RHF: 1sg2 1su2 2sg2 2su2 1pu4) and B2 (3Sigma_g-, UHF: the same
with 1pu(x)1 1pu(y)1 alpha) at the geometries of tests/scf/symmetry_test.cpp,
run in D2h with the occupation of every irrep fixed (DOCC/SOCC), the basis
converted from shared/data/basis as tools/references/make_references.py does.
Writes tests/scf/data/diatomic_references.tsv.

Run with Debian's interpreter and Psi4's module path:
  PYTHONPATH=/usr/lib/x86_64-linux-gnu /usr/bin/python3 tools/scf/diatomic_references.py
"""

import os
import re
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
REPO = os.path.normpath(os.path.join(HERE, "..", ".."))
sys.path.insert(0, os.path.join(REPO, "tools", "references"))

import make_references as mr  # noqa: E402

# name -> (label, atoms in angstrom, charge, multiplicity, docc, socc); irreps
# in Psi4's D2h order Ag B1g B2g B3g Au B1u B2u B3u.
DIATOMICS = {
    "c2": ("C2", [("C", 0.0, 0.0, -0.62125), ("C", 0.0, 0.0, 0.62125)], 0, 1,
           [2, 0, 0, 0, 0, 2, 1, 1], [0] * 8),
    "b2": ("B2", [("B", 0.0, 0.0, -0.795), ("B", 0.0, 0.0, 0.795)], 0, 3,
           [2, 0, 0, 0, 0, 2, 0, 0], [0, 0, 0, 0, 0, 0, 1, 1]),
}
CASES = [(m, b) for m in ("c2", "b2") for b in ("STO-3G", "6-31G")]


def run(mol, basis, scratch):
    import psi4
    label, atoms, charge, mult, docc, socc = DIATOMICS[mol]
    mr.MOLECULES[mol] = (label, atoms, charge, mult)
    family, cart = mr.split_basis_name(basis)
    data = mr.load_basis(mr.DEFAULT_BASIS_DIR, family)
    psi4.core.clean()
    psi4.core.clean_options()
    psi4.core.set_output_file(os.path.join(scratch, mol + ".out"), False)
    psi4.set_memory("2 GB")
    geo = ["units bohr", "no_com", "no_reorient", "symmetry d2h", "%d %d" % (charge, mult)]
    geo += ["%s %.17g %.17g %.17g" % a for a in mr.bohr_positions(mol)]
    molecule = psi4.geometry("\n".join(geo), name="m_" + mol)
    bas_label = "nv_" + re.sub(r"[^a-z0-9]", "_", basis.lower())
    psi4.basis_helper(mr.psi4_gbs(data, mr.unique_symbols(mol), cart, bas_label), name=bas_label)
    psi4.set_options({
        "reference": "rhf" if mult == 1 else "uhf",
        "scf_type": "pk",
        "e_convergence": 1e-10,
        "d_convergence": 1e-10,
        "ints_tolerance": 1e-14,
        "maxiter": 300,
        "docc": docc,
        "socc": socc,
    })
    return psi4.energy("scf", molecule=molecule)


def main():
    out = os.path.join(REPO, "tests", "scf", "data", "diatomic_references.tsv")
    rows = ["# Psi4 references for the symmetry-restricted diatomics; "
            "tools/scf/diatomic_references.py",
            "name\tbasis\tE_HF[hartree]"]
    with tempfile.TemporaryDirectory() as scratch:
        os.chdir(scratch)  # Psi4 leaves a timer.dat in the working directory
        for mol, basis in CASES:
            rows.append("%s\t%s\t%.10f" % (mol, basis, run(mol, basis, scratch)))
            print(rows[-1], flush=True)
    with open(out, "w") as f:
        f.write("\n".join(rows) + "\n")


if __name__ == "__main__":
    main()
