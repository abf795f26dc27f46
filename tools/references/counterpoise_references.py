#!/usr/bin/python3
"""Psi4 1.3.2 counterpoise (Boys-Bernardi) references and two-electron full CI
references for norvik.

Counterpoise: for each dimer the five energies of the correction, each an SCF
converged to 1e-10 in C1 with the norvik basis set (shared/data/basis, as in
make_references.py):
  E_AB          the dimer,
  E_A(AB)       fragment A with B's atoms as ghosts (basis functions only),
  E_B(AB)       fragment B with A's atoms as ghosts,
  E_A(A), E_B(B) each fragment alone in its own basis,
and Psi4's own counterpoise-corrected interaction energy,
energy('scf', bsse_type='cp') on the molecule with its fragments separated by
"--", which must equal E_AB - E_A(AB) - E_B(AB) (checked here to 1e-9).
Hartree-Fock and B3LYP (assembled from libxc components as in
ks_references.py, on its reference grid: 150 x 974 Treutler, unpruned).
The fragment of HeH+ that carries the charge is the bare proton H+: it has no
electron, so its energies are 0 in either basis by definition (Psi4 does not
run an SCF without electrons); E_He(HeH) and E_He(He) are computed.

Full CI: energy('fci') (detci) from the RHF reference for the singlet roots
and from the ROHF triplet (Ms = 1, both electrons alpha: only triplets) for
the triplet roots, in C1, no frozen orbitals.

Writes under tests/references/data/:
  molecules_cp/<case>.mol   norvik molecule files: record 16 = fragment A,
                            record 18 'counterpoise'; the full-CI molecules
  counterpoise.tsv          the counterpoise table
  full_ci.tsv               the full-CI table

usage: PYTHONPATH=/usr/lib/x86_64-linux-gnu /usr/bin/python3 \\
       tools/references/counterpoise_references.py
Psi4 is run as a black box; nothing of it is shipped in the library.
"""

import math
import os
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, HERE)
import make_references as mr  # noqa: E402  (basis conversion, constants)
import ks_references as ks  # noqa: E402  (functionals, grids)

DATA = mr.OUT_DIR
MOL_DIR = os.path.join(DATA, "molecules_cp")
SCF = {"scf_type": "pk", "e_convergence": 1e-10, "d_convergence": 1e-10,
       "ints_tolerance": 1e-14, "maxiter": 300, "freeze_core": "false"}


def hf_dimer():
    """(HF)2: F-H...F with the second HF at 115 degrees, planar."""
    r, rff, ang = 0.9215, 2.74, math.radians(115.0)
    return [("F", 0.0, 0.0, 0.0), ("H", r, 0.0, 0.0),
            ("F", rff, 0.0, 0.0), ("H", rff - r * math.cos(ang), r * math.sin(ang), 0.0)]


# name -> (basis, atoms [A], fragment A (first, last, 1-based), charges, multiplicities)
DIMERS = {
    "water_dimer": ("6-31Gx", [
        ("O", -1.551007, -0.114520, 0.000000), ("H", -1.934259, 0.762503, 0.000000),
        ("H", -0.599677, 0.040712, 0.000000), ("O", 1.350625, 0.111469, 0.000000),
        ("H", 1.680398, -0.373741, -0.758561), ("H", 1.680398, -0.373741, 0.758561)],
        (1, 3), (0, 0), (1, 1)),
    "hf_dimer": ("6-31Gx", hf_dimer(), (1, 2), (0, 0), (1, 1)),
    "hehp": ("6-31Gxx", [("He", 0.0, 0.0, 0.0), ("H", 0.0, 0.0, 0.775)], (1, 1), (0, 1), (1, 1)),
}
METHODS = ["HF", "B3LYP"]

# name -> (basis, atoms [A])
TWO_ELECTRON = {
    "h2_074": ("6-31Gxx", [("H", 0.0, 0.0, 0.0), ("H", 0.0, 0.0, 0.74)]),
    "h2_200": ("6-31Gxx", [("H", 0.0, 0.0, 0.0), ("H", 0.0, 0.0, 2.0)]),
    "hehp_0775": ("6-31Gxx", [("He", 0.0, 0.0, 0.0), ("H", 0.0, 0.0, 0.775)]),
}
FCI_ROOTS = 3


def write_molecule(name, method, basis, atoms, charge, mult, fragment, bsse):
    os.makedirs(MOL_DIR, exist_ok=True)
    lines = ["# theory", "'%s'" % method, "# basis set", "'%s'" % basis,
             "# molecule name, optimisation cycles", "'%s' 0" % name.upper()[:20],
             "# optimiser", "0", "# vibrations", "0",
             "# start-density file (blank: none)", "''", "# population analysis", "'none'",
             "# counterpoise: fragment A = atoms first to last (0 0: none)",
             "%d %d" % fragment, "# counterpoise", "'%s'" % bsse,
             "# charge", "%d" % charge, "# spin multiplicity 2S+1", "%d" % mult,
             "# atoms: symbol, x y z [A]"]
    lines += ["%-2s %13.6f %13.6f %13.6f" % a for a in atoms]
    with open(os.path.join(MOL_DIR, name + ".mol"), "w") as f:
        f.write("\n".join(lines) + "\n")


def setup(basis, atoms, real, charge, mult):
    """Psi4 molecule of `atoms` with those outside `real` (0-based set) as
    ghosts, in the norvik basis; returns (molecule, options)."""
    import psi4
    family, cart = mr.split_basis_name(basis)
    data = mr.load_basis(mr.DEFAULT_BASIS_DIR, family)
    symbols = list(dict.fromkeys(a[0] for a in atoms))
    geo = ["units bohr", "no_com", "no_reorient", "symmetry c1", "%d %d" % (charge, mult)]
    for i, (s, x, y, z) in enumerate(atoms):
        geo.append("%s %.17g %.17g %.17g" % (s if i in real else "Gh(%s)" % s,
                                             x / mr.BOHR_ANGSTROM, y / mr.BOHR_ANGSTROM,
                                             z / mr.BOHR_ANGSTROM))
    molecule = psi4.geometry("\n".join(geo), name="m")
    label = "nv_" + basis.lower().replace("-", "_")
    psi4.basis_helper(mr.psi4_gbs(data, symbols, cart, label), name=label)
    return molecule, dict(SCF, basis=label)


def scf_energy(method, molecule, opts, mult):
    import psi4
    psi4.core.clean()
    psi4.core.clean_options()
    kwargs = {}
    if method == "HF":
        opts = dict(opts, reference="rhf" if mult == 1 else "uhf")
        name = "scf"
    else:
        opts = dict(opts, reference="rks" if mult == 1 else "uks", **ks.GRIDS["reference"])
        name = "scf"
        kwargs["dft_functional"] = ks.psi4_functional(method)
    psi4.set_options(opts)
    return psi4.energy(name, molecule=molecule, **kwargs)


def psi4_cp(method, basis, atoms, frag, charges, mults):
    """Psi4's own counterpoise-corrected interaction energy (nbody driver)."""
    import psi4
    family, cart = mr.split_basis_name(basis)
    data = mr.load_basis(mr.DEFAULT_BASIS_DIR, family)
    symbols = list(dict.fromkeys(a[0] for a in atoms))
    a_atoms = [a for i, a in enumerate(atoms) if frag[0] - 1 <= i <= frag[1] - 1]
    b_atoms = [a for i, a in enumerate(atoms) if not frag[0] - 1 <= i <= frag[1] - 1]
    geo = ["units bohr", "no_com", "no_reorient", "symmetry c1"]
    for part, q, m in ((a_atoms, charges[0], mults[0]), (b_atoms, charges[1], mults[1])):
        if geo[-1] != "symmetry c1":
            geo.append("--")
        geo.append("%d %d" % (q, m))
        geo += ["%s %.17g %.17g %.17g" % (s, x / mr.BOHR_ANGSTROM, y / mr.BOHR_ANGSTROM,
                                          z / mr.BOHR_ANGSTROM) for s, x, y, z in part]
    molecule = psi4.geometry("\n".join(geo), name="cp")
    label = "nv_" + basis.lower().replace("-", "_")
    psi4.basis_helper(mr.psi4_gbs(data, symbols, cart, label), name=label)
    psi4.core.clean()
    psi4.core.clean_options()
    opts = dict(SCF, basis=label, reference="rhf" if method == "HF" else "rks")
    kwargs = {}
    if method != "HF":
        opts.update(ks.GRIDS["reference"])
        kwargs["dft_functional"] = ks.psi4_functional(method)
    psi4.set_options(opts)
    return psi4.energy("scf", molecule=molecule, bsse_type="cp", **kwargs)


def counterpoise_rows():
    rows = []
    for name, (basis, atoms, frag, charges, mults) in DIMERS.items():
        natom = len(atoms)
        a = set(range(frag[0] - 1, frag[1]))
        b = set(range(natom)) - a
        electrons = [sum(mr.Z_OF[atoms[i][0]] for i in part) - q
                     for part, q in ((a, charges[0]), (b, charges[1]))]
        for method in METHODS:
            write_molecule("%s_%s" % (name, method.lower()), method, basis, atoms,
                           sum(charges), 1, frag, "counterpoise")
            e_ab = scf_energy(method, *setup(basis, atoms, a | b, sum(charges), 1), 1)
            e = {}
            for key, part, other, k in (("A", a, b, 0), ("B", b, a, 1)):
                if electrons[k] == 0:  # a bare nucleus alone: no electron, no energy
                    e[key + "_dimer"] = e[key + "_own"] = 0.0
                    continue
                e[key + "_dimer"] = scf_energy(
                    method, *setup(basis, atoms, part, charges[k], mults[k]), mults[k])
                own = [atoms[i] for i in sorted(part)]
                e[key + "_own"] = scf_energy(
                    method, *setup(basis, own, set(range(len(own))), charges[k], mults[k]),
                    mults[k])
            cp = e_ab - e["A_dimer"] - e["B_dimer"]
            if min(electrons) > 0:
                psi4_ie = psi4_cp(method, basis, atoms, frag, charges, mults)
                if abs(psi4_ie - cp) > 1e-9:
                    raise RuntimeError("%s %s: nbody %.12f, explicit %.12f" %
                                       (name, method, psi4_ie, cp))
            rows.append("%s\t%s\t%s\t%d %d\t%d %d\t%.10f\t%.10f\t%.10f\t%.10f\t%.10f\t%.10f\n" % (
                name, method, basis, frag[0], frag[1], charges[0], charges[1], e_ab,
                e["A_own"], e["B_own"], e["A_dimer"], e["B_dimer"], cp))
            print(rows[-1], end="", flush=True)
    return rows


def fci_roots(basis, atoms, mult):
    import psi4
    molecule, opts = setup(basis, atoms, set(range(len(atoms))), 1 if atoms[0][0] == "He" and
                           len(atoms) == 2 and atoms[1][0] == "H" else 0, mult)
    psi4.core.clean()
    psi4.core.clean_options()
    psi4.set_options(dict(opts, reference="rhf" if mult == 1 else "rohf",
                          num_roots=FCI_ROOTS, r_convergence=1e-9, ci_maxiter=200))
    psi4.energy("fci", molecule=molecule)
    hf = psi4.variable("SCF TOTAL ENERGY")
    return hf, [psi4.variable("CI ROOT %d TOTAL ENERGY" % i) for i in range(FCI_ROOTS)]


def full_ci_rows():
    rows = []
    for name, (basis, atoms) in TWO_ELECTRON.items():
        charge = 1 if name.startswith("hehp") else 0
        write_molecule(name, "HF", basis, atoms, charge, 1, (0, 0), "none")
        hf, singlets = fci_roots(basis, atoms, 1)
        _, triplets = fci_roots(basis, atoms, 3)
        rows.append("%s\t%s\t%d\t%.12f\t%s\t%s\n" % (
            name, basis, charge, hf, " ".join("%.12f" % e for e in singlets),
            " ".join("%.12f" % e for e in triplets)))
        print(rows[-1], end="", flush=True)
    return rows


def main():
    import psi4
    psi4.core.set_output_file("/tmp/counterpoise_references.out", False)
    psi4.set_memory("2 GB")
    psi4.set_num_threads(1)
    with open(os.path.join(DATA, "full_ci.tsv"), "w") as f:
        f.write("# Psi4 1.3.2 full CI (detci, C1, no frozen orbitals) of two-electron "
                "molecules [hartree]: the RHF energy, the lowest singlet roots (RHF "
                "reference) and triplet roots (ROHF Ms=1 reference); "
                "tools/references/counterpoise_references.py\n")
        f.write("name\tbasis\tcharge\tE_HF\tsinglets\ttriplets\n")
        f.writelines(full_ci_rows())
    with open(os.path.join(DATA, "counterpoise.tsv"), "w") as f:
        f.write("# Psi4 1.3.2 counterpoise energies [hartree], SCF to 1e-10 in C1; B3LYP "
                "from libxc components (VWN5) on a 150x974 Treutler grid; fragment A = "
                "atoms first..last; a fragment without electrons has energy 0; "
                "tools/references/counterpoise_references.py\n")
        f.write("name\tmethod\tbasis\tfragment_A\tcharges\tE_AB\tE_A(A)\tE_B(B)\t"
                "E_A(AB)\tE_B(AB)\tE_int_cp\n")
        f.writelines(counterpoise_rows())


if __name__ == "__main__":
    main()
