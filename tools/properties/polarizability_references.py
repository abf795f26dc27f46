#!/usr/bin/python3
"""Psi4 reference static dipole polarisabilities of closed-shell molecules.

Psi4 solves the coupled-perturbed RHF equations for its converged RHF point
(`properties('scf', properties=['DIPOLE_POLARIZABILITIES'])`).  The molecules
and basis sets are set up exactly as tools/references/make_references.py sets
up its energy table (basis conversion from shared/data/basis, positions in bohr
with norvik's bohr = 0.5291772104 A, no reorientation, exact integrals, tight
convergence).  Writes tests/properties/data/polarizabilities.tsv: the tensor in
atomic units (bohr^3, row-major) and the atoms in angstrom as the test places
them.

Run with Debian's interpreter and Psi4's module path:
  PYTHONPATH=/usr/lib/x86_64-linux-gnu /usr/bin/python3 tools/properties/polarizability_references.py
"""

import os
import re
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
REPO = os.path.normpath(os.path.join(HERE, "..", ".."))
sys.path.insert(0, os.path.join(REPO, "tools", "references"))

import make_references as mr  # noqa: E402

CASES = [("h2o", "6-31Gx"), ("nh3", "6-31Gx"), ("hf", "6-31Gx")]
AXES = "XYZ"


def polarizability(mol, basis, basis_dir, scratch):
    import psi4

    family, cart = mr.split_basis_name(basis)
    data = mr.load_basis(basis_dir, family)
    _, _, charge, mult = mr.MOLECULES[mol]
    psi4.core.clean()
    psi4.core.clean_options()
    psi4.core.clean_variables()
    psi4.core.set_output_file(os.path.join(scratch, mr.case_id(mol, basis) + ".out"), False)
    psi4.set_memory("4 GB")
    psi4.set_num_threads(1)
    geo = ["units bohr", "no_com", "no_reorient", "symmetry c1", "%d %d" % (charge, mult)]
    geo += ["%s %.17g %.17g %.17g" % a for a in mr.bohr_positions(mol)]
    molecule = psi4.geometry("\n".join(geo), name="p_" + mr.case_id(mol, basis))
    label = "pv_" + re.sub(r"[^a-z0-9]", "_", basis.lower())
    psi4.basis_helper(mr.psi4_gbs(data, mr.unique_symbols(mol), cart, label), name=label)
    psi4.set_options({
        "reference": "rhf",
        "scf_type": "pk",
        "e_convergence": 1e-11,
        "d_convergence": 1e-11,
        "ints_tolerance": 1e-14,
        "solver_convergence": 1e-10,
        "maxiter": 300,
    })
    psi4.properties("scf", properties=["DIPOLE_POLARIZABILITIES"], molecule=molecule)
    return [psi4.variable("DIPOLE POLARIZABILITY " + a + b) for a in AXES for b in AXES]


def main():
    basis_dir = mr.DEFAULT_BASIS_DIR
    out = os.path.join(REPO, "tests", "properties", "data", "polarizabilities.tsv")
    rows = ["# Psi4 %s coupled-perturbed RHF static polarisabilities [bohr^3], row-major; "
            "tools/properties/polarizability_references.py" % mr.psi4_version(),
            "name\tbasis\tatoms[angstrom]\t" + "\t".join("a" + a.lower() + b.lower()
                                                       for a in AXES for b in AXES)]
    with tempfile.TemporaryDirectory() as scratch:
        for mol, basis in CASES:
            alpha = polarizability(mol, basis, basis_dir, scratch)
            atoms = ";".join("%s %.10f %.10f %.10f" % a for a in mr.rounded_atoms(mol))
            rows.append("\t".join([mol, basis, atoms] + ["%.8f" % x for x in alpha]))
            print(rows[-1], flush=True)
    os.makedirs(os.path.dirname(out), exist_ok=True)
    with open(out, "w") as f:
        f.write("\n".join(rows) + "\n")


if __name__ == "__main__":
    main()
