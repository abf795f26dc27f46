#!/usr/bin/python3
"""Psi4 1.3.2 conventional MP2 correlation energies (mp2_type conv on an
scf_type pk SCF, e/d convergence 1e-10), restricted (RMP2) and unrestricted
(UMP2), all electrons and with freeze_core true, written to
tests/references/data/mp2.tsv.

usage: PYTHONPATH=tools/references:/usr/lib/x86_64-linux-gnu nice -n 10 /usr/bin/python3 \\
       tools/references/mp2_references.py
Psi4 is run as a black box; geometries and basis sets (norvik's library data,
Cartesian or pure d as the basis name says) are set up by the scripts beside
this one, exactly as for the Hartree-Fock and frequency tables: either a
molecule file of tests/references/data/molecules or a Psi4-optimised geometry
of optimized.tsv.  The frozen orbitals of each row are Psi4's own count
(wfn.frzcpi), which the table keeps so that a test can check norvik's count.
"""
import os
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, HERE)
import gradient_references as gr  # noqa: E402
import ks_references as ks  # noqa: E402
import vibration_references as vr  # noqa: E402

# (row name, molecule file or optimized.tsv row)
ROWS = [
    ("h2o_6-31Gxx", "molecules/h2o_6-31Gxx.mol"),
    ("nh3_6-31Gx", "nh3_6-31Gx_HF"),
    ("ch4_6-31Gx", "ch4_6-31Gx_HF"),
    ("hf_6-31pGx", "molecules/hf_6-31pGx.mol"),
    ("n2_6-31Gx", "molecules/n2_6-31Gx.mol"),
    ("c2h4_6-31Gx", "c2h4_6-31Gx_HF"),
    ("ph3_6-31pGxC", "molecules/ph3_6-31pGxC.mol"),
    ("h2s_6-31pG", "molecules/h2s_6-31pG.mol"),
    ("kh_6-31Gx", "molecules/kh_6-31Gx.mol"),
    ("hi_3-21G", "molecules/hi_3-21G.mol"),
    ("ch3_6-31Gx", "ch3_6-31Gx_HF"),
    ("nh2_6-31pGx", "molecules/nh2_6-31pGx.mol"),
    ("o2_6-31G", "molecules/o2_6-31G.mol"),
    ("oh_6-31Gx", "molecules/oh_6-31Gx.mol"),
]


def setup(source, scratch):
    if source.startswith("molecules/"):
        basis = ks.read_molecule_file(source)[0]
        molecule, opts, atoms, _, mult, expected = gr.psi4_setup(
            source, vr.mr.DEFAULT_BASIS_DIR, 1, scratch)
        charge = ks.read_molecule_file(source)[1]
        return molecule, opts, atoms, mult, expected, basis, charge
    row, molecule, opts, atoms, mult, expected = vr.psi4_molecule(source, scratch)
    return molecule, opts, atoms, mult, expected, row["basis"], int(row["charge"])


def mp2(source, frozen, scratch):
    import psi4
    molecule, opts, atoms, mult, expected, basis, charge = setup(source, scratch)
    opts = dict(opts, reference="rhf" if mult == 1 else "uhf", mp2_type="conv",
                freeze_core="true" if frozen else "false")
    energy, wfn = ks.with_restarts(mult, opts, lambda: psi4.energy(
        "mp2", molecule=molecule, return_wfn=True))
    nbf = gr.check_basis(wfn, expected, source)
    out = {
        "basis": basis, "charge": charge, "mult": mult, "nbasis": nbf, "atoms": atoms,
        "nfrozen": int(wfn.frzcpi().sum()),
        "scf": psi4.variable("SCF TOTAL ENERGY"),
        "corr": psi4.variable("MP2 CORRELATION ENERGY"),
        "ss": psi4.variable("MP2 SAME-SPIN CORRELATION ENERGY"),
        "os": psi4.variable("MP2 OPPOSITE-SPIN CORRELATION ENERGY"),
    }
    psi4.core.clean()
    psi4.core.clean_variables()
    return out


def main():
    out = os.path.join(vr.DATA, "mp2.tsv")
    lines = ["# Psi4 1.3.2 conventional MP2 (mp2_type conv, scf_type pk, e/d convergence 1e-10, "
             "ints_tolerance 1e-14), RMP2 for singlets, UMP2 on UHF otherwise; frozen = Psi4's "
             "frozen orbitals under freeze_core true (0: all electrons); energies in hartree; "
             "tools/references/mp2_references.py\n",
             "name\tbasis\tcharge\tmultiplicity\tnbasis\tfrozen\tE_SCF[hartree]\t"
             "E_corr[hartree]\tE_same_spin[hartree]\tE_opposite_spin[hartree]\tgeometry[A]\n"]
    with tempfile.TemporaryDirectory() as scratch:
        for name, source in ROWS:
            for frozen in (False, True):
                r = mp2(source, frozen, scratch)
                lines.append("%s\t%s\t%d\t%d\t%d\t%d\t%.12f\t%.12f\t%.12f\t%.12f\t%s\n" % (
                    name, r["basis"], r["charge"], r["mult"], r["nbasis"], r["nfrozen"],
                    r["scf"], r["corr"], r["ss"], r["os"], vr.geometry_text(r["atoms"])))
                print(lines[-1], end="", flush=True)
    with open(out, "w") as f:
        f.writelines(lines)


if __name__ == "__main__":
    main()
