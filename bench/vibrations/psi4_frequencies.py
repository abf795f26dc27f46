#!/usr/bin/python3
"""Psi4's B3LYP/6-31G* harmonic frequencies of a norvik molecule file, as a
user would run them: its own 6-31G* (Cartesian d), its default DFT grid
(75 x 302), scf_type pk, the point group it detects, and the Hessian by
three-point differences of its analytic gradients (its default for DFT).

usage: PYTHONPATH=/usr/lib/x86_64-linux-gnu /usr/bin/python3 \\
       bench/vibrations/psi4_frequencies.py MOLECULE_FILE [THREADS]
Prints the wavenumbers [cm-1].  The program is run as a black box; nothing of
it is used by norvik.
"""
import os
import sys
import tempfile


def atoms_of(path):
    lines = [l.strip() for l in open(path)]
    # records alternate comment / value; the atoms start at record 24
    atoms = []
    for l in lines[23:]:
        parts = l.split()
        if len(parts) == 4:
            atoms.append(parts)
    charge, mult = int(lines[19].split()[0]), int(lines[21].split()[0])
    return atoms, charge, mult


def main():
    path = sys.argv[1]
    threads = int(sys.argv[2]) if len(sys.argv) > 2 else 2
    atoms, charge, mult = atoms_of(path)
    scratch = tempfile.mkdtemp(prefix="psi4freq")
    os.chdir(scratch)
    import psi4
    psi4.set_num_threads(threads)
    psi4.core.set_output_file(os.path.join(scratch, "out.dat"), False)
    psi4.core.IOManager.shared_object().set_default_path(scratch)
    geo = "units angstrom\n%d %d\n" % (charge, mult) + "\n".join(" ".join(a) for a in atoms)
    molecule = psi4.geometry(geo)
    psi4.set_options({"basis": "6-31G*", "scf_type": "pk", "e_convergence": 1e-10,
                      "d_convergence": 1e-8, "reference": "rks" if mult == 1 else "uks"})
    energy, wfn = psi4.frequency("b3lyp", molecule=molecule, return_wfn=True, dertype=1)
    print(" ".join("%.2f" % w for w in wfn.frequencies().to_array()))


if __name__ == "__main__":
    main()
