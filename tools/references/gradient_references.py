#!/usr/bin/python3
"""Independent reference gradients and optimised geometries for norvik.

Runs Psi4 (Debian's psi4 package) as a black box on
  - displaced geometries: analytic RHF/UHF gradients, and Kohn-Sham
    gradients on the converged grid of ks_references.py;
  - start geometries: optimisations with optking's defaults, Hartree-Fock
    and B3LYP (on Psi4's default grid, with the final energy also on the
    converged grid).
Basis sets, functionals, grids and the bohr conversion come from
make_references.py and ks_references.py, so the cases mean here exactly what
they mean in the energy tables.

Writes, under tests/references/data/:
  molecules_grad/<case>.mol   norvik molecule files of the displaced geometries
  molecules_opt/<mol>_6-31Gx.mol   start geometries of the optimisations
  hf_gradients.tsv            Hartree-Fock energies and gradients, one row per atom
  ks_gradients.tsv            Kohn-Sham energies and gradients, one row per atom
  optimized.tsv               optimised geometries, bonds, energies, costs
  gradient_crosscheck.tsv     (--crosscheck) NWChem gradients and central
                              differences of Psi4 energies against the tables

Run from the repository (shared/ next to it) with Debian's interpreter:
  PYTHONPATH=/usr/lib/x86_64-linux-gnu nice -n 10 /usr/bin/python3 \\
      tools/references/gradient_references.py [--jobs 2] [--only NAME ...] \\
      [--skip-hf] [--skip-ks] [--skip-opt] [--crosscheck]

Each Psi4 calculation runs in a child process of one thread, in a scratch
folder (Psi4 leaves timer.dat and psi.*.clean files where it runs). Nothing
here is shipped in the library; the programs are only run as black boxes and
their numbers recorded.
"""

import argparse
import json
import math
import os
import random
import re
import shlex
import subprocess
import sys
import tempfile
import time
import zlib

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, HERE)
import make_references as mr  # noqa: E402  (basis conversion, geometries, constants)
import ks_references as ks  # noqa: E402  (functionals, grids, SCF restarts)

OUT_DIR = mr.OUT_DIR
BOHR_ANGSTROM = mr.BOHR_ANGSTROM  # norvik's bohr in angstrom
HARTREE_EV = 27.2113850785  # norvik's hartree in eV (include/norvik/common.h)
GRADIENT_EV_A = HARTREE_EV / BOHR_ANGSTROM  # 1 hartree/bohr in eV/A

# --------------------------------------------------------------------------
# Displaced geometries
# --------------------------------------------------------------------------


def trigonal_planar(x, lig, r):
    return [(x, 0.0, 0.0, 0.0)] + [
        (lig, r * math.cos(math.radians(90.0 + 120.0 * k)),
         r * math.sin(math.radians(90.0 + 120.0 * k)), 0.0) for k in range(3)]


def water_dimer():
    """Hydrogen-bonded water dimer: the donor (atoms 1-3) in the xz plane with
    one O-H along x, the acceptor (atoms 4-6) at O-O = 2.91 A, its hydrogens
    out of the plane."""
    r, half = 0.9572, math.radians(104.52) / 2.0
    donor = [("O", 0.0, 0.0, 0.0), ("H", r, 0.0, 0.0),
             ("H", r * math.cos(2 * half), 0.0, r * math.sin(2 * half))]
    tilt = math.radians(57.0)  # acceptor's bisector against the O...O axis
    ox = 2.91
    bis = (math.cos(tilt), 0.0, math.sin(tilt))
    perp = (0.0, 1.0, 0.0)
    acceptor = [("O", ox, 0.0, 0.0)]
    for s in (1.0, -1.0):
        acceptor.append(("H", ox + r * (math.cos(half) * bis[0] + s * math.sin(half) * perp[0]),
                         r * s * math.sin(half),
                         r * math.cos(half) * bis[2]))
    return donor + acceptor


# name -> (label, atoms, charge, multiplicity); the rest comes from
# make_references.MOLECULES.
MOLECULES = dict(mr.MOLECULES)
MOLECULES.update({
    "sch3": ("ScH3", trigonal_planar("Sc", "H", 1.82), 0, 1),
    "nh4+": ("NH4+", mr.tetrahedral("N", "H", 1.0215), 1, 1),
    "no2": ("NO2", mr.bent("N", "O", 1.1934, 134.1), 0, 2),
    "h2o_ghost_h2o": ("H2O_ghost_H2O", water_dimer(), 0, 1),
})
# first and last ghost atom (record 16) where not "0 0"
GHOSTS = {"h2o_ghost_h2o": (4, 6)}

DISPLACEMENT_A = (0.02, 0.05)  # each atom moves by a length in this range, in A

# (molecule, basis) of the Hartree-Fock table
HF_CASES = [
    ("h2o", "STO-3G"),        # s and p only
    ("ch4", "3-21G"),         # sp shells
    ("h2o", "6-31Gx"),        # pure d
    ("h2o", "6-31GxC"),       # Cartesian d
    ("nh3", "6-31Gxx"),       # d, and p on hydrogen
    ("hcl", "6-31Gx"),        # second row
    ("hf", "6-31+Gx"),        # diffuse
    ("znh2", "6-31Gx"),       # f shell on zinc
    ("sch3", "6-31Gx"),       # f shell on scandium, open d shell empty
    ("nh4+", "6-31Gx"),       # cation
    ("oh-", "6-31+Gx"),       # anion
    ("oh", "6-31Gx"),         # UHF doublet
    ("ch2", "6-31Gxx"),       # UHF triplet
    ("no2", "6-31Gx"),        # UHF doublet, three heavy atoms
    ("h2o_ghost_h2o", "6-31Gx"),  # ghost atoms 4-6
]

# (molecule, basis, functionals) of the Kohn-Sham table; same displaced
# geometries as the Hartree-Fock table where the pair is there.
KS_CASES = [
    ("h2o", "6-31Gx", ["B3LYP", "SVWN5", "BLYP"]),
    ("nh3", "6-31Gx", ["B3LYP"]),
    ("hf", "6-31+Gx", ["B3LYP"]),
    ("oh", "6-31Gx", ["B3LYP"]),
    ("ch4", "3-21G", ["B3LYP"]),
]


def displaced_atoms(mol, case):
    """The idealised shape with every atom moved by a pseudo-random length in
    DISPLACEMENT_A along a pseudo-random direction, seeded by the case name so
    that a rerun writes the same file. Rounded to the file's 6 decimals."""
    rng = random.Random(zlib.crc32(case.encode()))
    out = []
    for s, x, y, z in MOLECULES[mol][1]:
        length = DISPLACEMENT_A[0] + (DISPLACEMENT_A[1] - DISPLACEMENT_A[0]) * rng.random()
        cz = 2.0 * rng.random() - 1.0
        phi = 2.0 * math.pi * rng.random()
        sz = math.sqrt(1.0 - cz * cz)
        p = (x + length * sz * math.cos(phi), y + length * sz * math.sin(phi), z + length * cz)
        out.append((s,) + tuple(round(c, 6) + 0.0 for c in p))
    return out


def grad_file(mol, basis):
    return "molecules_grad/%s.mol" % mr.case_id(mol, basis)


def write_gradient_molecule_files():
    os.makedirs(os.path.join(OUT_DIR, "molecules_grad"), exist_ok=True)
    pairs = [(m, b) for m, b in HF_CASES] + [(m, b) for m, b, _ in KS_CASES]
    for mol, basis in dict.fromkeys(pairs):
        label, _, charge, mult = MOLECULES[mol]
        text = mr.molecule_file_records(
            "HF", basis, label, charge, mult, displaced_atoms(mol, mr.case_id(mol, basis)),
            GHOSTS.get(mol, (0, 0)),
            theory_comment="# theory (the Kohn-Sham tests write the functional of their row here)")
        with open(os.path.join(OUT_DIR, grad_file(mol, basis)), "w") as f:
            f.write(text)


def ghost_range(rel):
    """Record 16 of a molecule file: (first, last), (0, 0) for none."""
    with open(os.path.join(OUT_DIR, rel)) as f:
        first, last = shlex.split(f.read().splitlines()[15])[:2]
    return int(first), int(last)


def is_ghost(index, ghosts):
    """index is 1-based, as in the molecule file."""
    return ghosts[0] >= 1 and ghosts[0] <= index <= ghosts[1]


# --------------------------------------------------------------------------
# Start geometries of the optimisations: reasonable but not optimised, in
# the atom order of norvik's templates, centre of nuclear charge at the
# origin. Bonds and angles list 1-based atom indices.
# --------------------------------------------------------------------------


def centred(atoms):
    z = [mr.Z_OF[a[0]] for a in atoms]
    c = [sum(zi * a[k + 1] for zi, a in zip(z, atoms)) / sum(z) for k in range(3)]
    return [(a[0], a[1] - c[0], a[2] - c[1], a[3] - c[2]) for a in atoms]


def along_z(a, b, r):
    return [(a, 0.0, 0.0, -r / 2.0), (b, 0.0, 0.0, r / 2.0)]


def planar_x2y4(x, y, rxx, rxy, angle_yxy):
    """C2H4-like: X=X along z, Y in the yz plane, X1 bears Y3, Y4."""
    h = math.radians(angle_yxy) / 2.0
    atoms = [(x, 0.0, 0.0, -rxx / 2.0), (x, 0.0, 0.0, rxx / 2.0)]
    for zc, sgn in ((-rxx / 2.0, -1.0), (rxx / 2.0, 1.0)):
        for side in (1.0, -1.0):
            atoms.append((y, 0.0, side * rxy * math.sin(h), zc + sgn * rxy * math.cos(h)))
    return atoms


def linear_x2y2(x, y, rxx, rxy):
    return [(x, 0.0, 0.0, -rxx / 2.0), (x, 0.0, 0.0, rxx / 2.0),
            (y, 0.0, 0.0, -rxx / 2.0 - rxy), (y, 0.0, 0.0, rxx / 2.0 + rxy)]


def formaldehyde(rco, rch, angle_hch):
    h = math.radians(angle_hch) / 2.0
    return [("C", 0.0, 0.0, 0.0), ("O", 0.0, 0.0, rco),
            ("H", 0.0, rch * math.sin(h), -rch * math.cos(h)),
            ("H", 0.0, -rch * math.sin(h), -rch * math.cos(h))]


def hydrogen_peroxide(roo, roh, angle_ooh, dihedral):
    """O-O along z; each H at the given O-O-H angle, dihedral H-O-O-H."""
    a = math.radians(180.0 - angle_ooh)
    half = math.radians(dihedral) / 2.0
    atoms = [("O", 0.0, 0.0, -roo / 2.0), ("O", 0.0, 0.0, roo / 2.0)]
    for zc, sgn, phi in ((-roo / 2.0, -1.0, -half), (roo / 2.0, 1.0, half)):
        atoms.append(("H", roh * math.sin(a) * math.cos(phi), roh * math.sin(a) * math.sin(phi),
                      zc + sgn * roh * math.cos(a)))
    return atoms


def pyramid_xy3(x, y, r, angle):
    return mr.pyramidal(x, y, r, angle)


def ring_bonds(n):
    return [(i, i % n + 1) for i in range(1, n + 1)] + [(i, i + n) for i in range(1, n + 1)]


# name -> (template name, atoms, charge, multiplicity, bonds, angles, dihedrals)
OPT_MOLECULES = {
    "h2o": ("H2O", mr.bent("O", "H", 0.99, 108.0), 0, 1, [(1, 2), (1, 3)], [(2, 1, 3)], []),
    "nh3": ("NH3", pyramid_xy3("N", "H", 1.04, 110.0), 0, 1, [(1, 2), (1, 3), (1, 4)],
            [(2, 1, 3), (2, 1, 4), (3, 1, 4)], []),
    "ch4": ("CH4", mr.tetrahedral("C", "H", 1.12), 0, 1, [(1, 2), (1, 3), (1, 4), (1, 5)],
            [(2, 1, 3)], []),
    "c2h4": ("C2H4", planar_x2y4("C", "H", 1.36, 1.11, 114.0), 0, 1,
             [(1, 2), (1, 3), (1, 4), (2, 5), (2, 6)], [(3, 1, 4), (5, 2, 6)], []),
    "c2h2": ("C2H2", linear_x2y2("C", "H", 1.23, 1.09), 0, 1, [(1, 2), (1, 3), (2, 4)], [], []),
    "coh2": ("COH2", formaldehyde(1.23, 1.12, 119.0), 0, 1, [(1, 2), (1, 3), (1, 4)],
             [(3, 1, 4)], []),
    "hf": ("HF", along_z("H", "F", 0.95), 0, 1, [(1, 2)], [], []),
    "n2": ("N2", along_z("N", "N", 1.14), 0, 1, [(1, 2)], [], []),
    "co": ("CO", along_z("C", "O", 1.16), 0, 1, [(1, 2)], [], []),
    "h2o2": ("H2O2", hydrogen_peroxide(1.48, 0.99, 98.0, 120.0), 0, 1,
             [(1, 2), (1, 3), (2, 4)], [(2, 1, 3), (1, 2, 4)], [(3, 1, 2, 4)]),
    "c6h6": ("C6H6", mr.benzene(1.42, 1.10), 0, 1, ring_bonds(6), [(1, 2, 3), (2, 1, 7)], []),
    "znh2": ("ZnH2", mr.linear_symmetric("Zn", "H", 1.60), 0, 1, [(1, 2), (1, 3)], [], []),
    "ch3": ("CH3", pyramid_xy3("C", "H", 1.11, 120.0), 0, 2, [(1, 2), (1, 3), (1, 4)],
            [(2, 1, 3), (2, 1, 4), (3, 1, 4)], []),
}
OPT_BASIS = "6-31Gx"
OPT_METHODS = ["HF", "B3LYP"]


def opt_file(mol):
    return "molecules_opt/%s.mol" % mr.case_id(mol, OPT_BASIS)


def opt_atoms(mol):
    return [(s, round(x, 6) + 0.0, round(y, 6) + 0.0, round(z, 6) + 0.0)
            for s, x, y, z in centred(OPT_MOLECULES[mol][1])]


def write_opt_molecule_files():
    os.makedirs(os.path.join(OUT_DIR, "molecules_opt"), exist_ok=True)
    for mol, (label, _, charge, mult, *_rest) in OPT_MOLECULES.items():
        text = mr.molecule_file_records(
            "HF", OPT_BASIS, label, charge, mult, opt_atoms(mol),
            theory_comment="# theory (the Kohn-Sham tests write the functional of their row here)")
        with open(os.path.join(OUT_DIR, opt_file(mol)), "w") as f:
            f.write(text)


def distance(p, q):
    return math.dist(p[1:], q[1:])


def angle(p, q, r):
    u = [p[k] - q[k] for k in range(1, 4)]
    v = [r[k] - q[k] for k in range(1, 4)]
    c = sum(a * b for a, b in zip(u, v)) / (math.hypot(*u) * math.hypot(*v))
    return math.degrees(math.acos(max(-1.0, min(1.0, c))))


def dihedral(p, q, r, s):
    def sub(a, b):
        return [a[k] - b[k] for k in range(1, 4)]

    def cross(a, b):
        return [a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]]

    def dot(a, b):
        return sum(x * y for x, y in zip(a, b))
    b1, b2, b3 = sub(q, p), sub(r, q), sub(s, r)
    n1, n2 = cross(b1, b2), cross(b2, b3)
    m = cross(n1, [x / math.hypot(*b2) for x in b2])
    return math.degrees(math.atan2(dot(m, n2), dot(n1, n2)))


# --------------------------------------------------------------------------
# Psi4, one process per task
# --------------------------------------------------------------------------

SCF_OPTIONS = {"scf_type": "pk", "e_convergence": 1e-10, "d_convergence": 1e-10,
               "ints_tolerance": 1e-14, "maxiter": 300, "freeze_core": "false"}


def psi4_setup(rel, basis_dir, threads, scratch, atoms=None):
    """Geometry (bohr from norvik's constant, ghosts as Gh()) and basis of a
    molecule file, at the file's positions or at `atoms` (angstrom). Returns
    (molecule, SCF options, atoms, ghost range, multiplicity, expected basis
    size)."""
    import psi4

    basis, charge, mult, file_atoms = ks.read_molecule_file(rel)
    atoms = atoms or file_atoms
    ghosts = ghost_range(rel)
    family, cart = mr.split_basis_name(basis)
    data = mr.load_basis(basis_dir, family)
    symbols = list(dict.fromkeys(a[0] for a in atoms))
    psi4.core.set_output_file(os.path.join(scratch, "psi4.out"), False)
    psi4.set_memory("3 GB")
    psi4.set_num_threads(threads)
    geo = ["units bohr", "no_com", "no_reorient", "symmetry c1", "%d %d" % (charge, mult)]
    for i, (s, x, y, z) in enumerate(atoms):
        sym = "Gh(%s)" % s if is_ghost(i + 1, ghosts) else s
        geo.append("%s %.17g %.17g %.17g" % (sym, x / BOHR_ANGSTROM, y / BOHR_ANGSTROM,
                                             z / BOHR_ANGSTROM))
    molecule = psi4.geometry("\n".join(geo), name="m")
    label = "nv_" + re.sub(r"[^a-z0-9]", "_", basis.lower())
    psi4.basis_helper(mr.psi4_gbs(data, symbols, cart, label), name=label)
    opts = dict(SCF_OPTIONS, basis=label)
    return molecule, opts, atoms, ghosts, mult, mr.nbasis_expected(data, [a[0] for a in atoms],
                                                                  cart)


def check_basis(wfn, expected, what):
    nbf = wfn.basisset().nbf()
    if nbf != expected or wfn.nmo() != nbf:
        raise RuntimeError("%s: psi4 has %d functions (%d MOs), expected %d" %
                           (what, nbf, wfn.nmo(), expected))
    return nbf


def spin_contamination(wfn):
    """<S^2> of an unrestricted determinant."""
    import numpy as np
    import psi4

    mints = psi4.core.MintsHelper(wfn.basisset())
    na, nb = wfn.nalpha(), wfn.nbeta()
    over = np.asarray(wfn.Ca())[:, :na].T @ np.asarray(mints.ao_overlap()) @ \
        np.asarray(wfn.Cb())[:, :nb]
    sz = 0.5 * (na - nb)
    return sz * (sz + 1.0) + nb - float(np.sum(over * over))


def gradient_task(rel, method, grid, basis_dir, threads, scratch):
    """Analytic gradient of one molecule file: method "HF" (RHF/UHF) or a
    norvik functional name on one of ks.GRIDS."""
    import numpy as np
    import psi4

    molecule, opts, atoms, ghosts, mult, expected = psi4_setup(rel, basis_dir, threads, scratch)
    t0 = time.perf_counter()
    if method == "HF":
        opts["reference"] = "rhf" if mult == 1 else "uhf"
        if mult != 1:
            opts["stability_analysis"] = "follow"
        grad, wfn = ks.with_restarts(mult, opts, lambda: psi4.gradient(
            "scf", molecule=molecule, return_wfn=True, dertype=1))
        if mult != 1:
            mr.check_uhf_stability(os.path.join(scratch, "psi4.out"))
    else:
        opts["reference"] = "rks" if mult == 1 else "uks"
        opts.update(ks.GRIDS[grid])
        func = ks.psi4_functional(method)
        grad, wfn = ks.with_restarts(mult, opts, lambda: psi4.gradient(
            "scf", dft_functional=func, molecule=molecule, return_wfn=True, dertype=1))
    wall = time.perf_counter() - t0
    nbf = check_basis(wfn, expected, rel)
    g = np.asarray(grad)
    return {"energy": wfn.energy(), "gradient": g.tolist(), "nbasis": nbf,
            "iterations": int(psi4.variable("SCF ITERATIONS")), "wall": wall,
            "s2": spin_contamination(wfn) if mult != 1 else None}


def energy_task(rel, method, grid, basis_dir, threads, scratch, atoms):
    """Energy of a molecule file's case at other positions (angstrom)."""
    import psi4

    molecule, opts, _, _, mult, expected = psi4_setup(rel, basis_dir, threads, scratch, atoms)
    if method == "HF":
        opts["reference"] = "rhf" if mult == 1 else "uhf"
        energy, wfn = ks.with_restarts(mult, opts, lambda: psi4.energy(
            "scf", molecule=molecule, return_wfn=True))
    else:
        opts["reference"] = "rks" if mult == 1 else "uks"
        opts.update(ks.GRIDS[grid])
        func = ks.psi4_functional(method)
        energy, wfn = ks.with_restarts(mult, opts, lambda: psi4.energy(
            "scf", dft_functional=func, molecule=molecule, return_wfn=True))
    check_basis(wfn, expected, rel)
    return {"energy": energy}


OPTKING_REPORTED = ["G_CONVERGENCE", "STEP_TYPE", "OPT_COORDINATES", "INTRAFRAG_HESS",
                    "FULL_HESS_EVERY", "GEOM_MAXITER", "INTRAFRAG_STEP_LIMIT"]


def optimise_task(rel, method, basis_dir, threads, scratch):
    """Optimisation with optking's defaults from the file's geometry; for a
    functional on Psi4's default grid, then the energy at the optimised
    geometry (as printed, 6 decimals) on the converged grid."""
    import numpy as np
    import psi4

    molecule, opts, atoms, _, mult, expected = psi4_setup(rel, basis_dir, threads, scratch)
    if method == "HF":
        opts["reference"] = "rhf" if mult == 1 else "uhf"
        func = "scf"
    else:
        opts["reference"] = "rks" if mult == 1 else "uks"
        func = ks.psi4_functional(method)
    kwargs = {} if method == "HF" else {"dft_functional": func}
    gradients = []

    # optking calls the gradient driver once per step; counting the calls
    # here also counts an attempt that a failed SCF cut short and restarted
    driver = sys.modules["psi4.driver.driver"]
    real_gradient = driver.gradient

    def counted(*a, **k):
        gradients.append(1)
        return real_gradient(*a, **k)

    driver.gradient = counted
    t0, c0 = time.perf_counter(), time.process_time()
    try:
        energy, wfn, history = ks.with_restarts(mult, opts, lambda: psi4.optimize(
            "scf", molecule=molecule, return_wfn=True, return_history=True, **kwargs))
    finally:
        driver.gradient = real_gradient
    wall, cpu = time.perf_counter() - t0, time.process_time() - c0
    # the energy belongs to the last geometry whose gradient was computed
    last = np.asarray(history["coordinates"][-1])
    moved = float(np.max(np.abs(last - np.asarray(molecule.geometry()))))
    if moved > 1e-10:
        raise RuntimeError("%s %s: optking's final geometry is not the last one computed "
                           "(%.1e bohr)" % (rel, method, moved))
    settings = {k: str(psi4.core.get_option("OPTKING", k)) for k in OPTKING_REPORTED}
    check_basis(wfn, expected, rel)
    geom = np.asarray(molecule.geometry()) * BOHR_ANGSTROM
    final = [(a[0],) + tuple(round(float(c), 6) + 0.0 for c in geom[i])
             for i, a in enumerate(atoms)]
    out = {"energy": energy, "atoms": final, "gradients": len(gradients),
           "steps": len(history["energy"]),
           "max_gradient": float(np.max(np.abs(np.asarray(history["gradient"][-1])))),
           "wall": wall, "cpu": cpu, "settings": settings}
    if method != "HF":
        fine = psi4_setup(rel, basis_dir, threads, scratch, final)[0]
        o = dict(opts)
        o.update(ks.GRIDS["reference"])
        e_fine, _ = ks.with_restarts(mult, o, lambda: psi4.energy(
            "scf", dft_functional=func, molecule=fine, return_wfn=True))
        out["energy_converged_grid"] = e_fine
    return out


def run_child(args, task):
    """Runs one task (a JSON-able list) in a child Psi4 process, niced, in a
    scratch folder; returns its result."""
    with tempfile.TemporaryDirectory(prefix="gradref_") as tmp:
        res = os.path.join(tmp, "r.json")
        cmd = ["nice", "-n", str(args.nice), sys.executable, os.path.abspath(__file__),
               "--task", json.dumps(task), "--result", res, "--basis-dir", args.basis_dir]
        proc = subprocess.run(cmd, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              universal_newlines=True, cwd=tmp)
        if proc.returncode != 0:
            raise RuntimeError("psi4 %s failed:\n%s" % (task, (proc.stdout + proc.stderr)[-3000:]))
        with open(res) as f:
            return json.load(f)


def child_main(args):
    task = json.loads(args.task)
    scratch = os.getcwd()
    kind = task[0]
    if kind == "gradient":
        r = gradient_task(task[1], task[2], task[3], args.basis_dir, args.threads, scratch)
    elif kind == "energy":
        r = energy_task(task[1], task[2], task[3], args.basis_dir, 1, scratch,
                        [tuple(a) for a in task[4]])
    elif kind == "optimise":
        r = optimise_task(task[1], task[2], args.basis_dir, args.threads, scratch)
    else:
        raise ValueError(kind)
    with open(args.result, "w") as f:
        json.dump(r, f)


# --------------------------------------------------------------------------
# Tables
# --------------------------------------------------------------------------

GRADIENT_HEADER = (
    "name\tmolecule_file\tbasis\tcharge\tmultiplicity\tmethod\treference\tprogram\tnbasis\t"
    "atom\tsymbol\tghost\tx[A]\ty[A]\tz[A]\tE[hartree]\t"
    "dE/dx[eV/A]\tdE/dy[eV/A]\tdE/dz[eV/A]\t"
    "dE/dx[hartree/bohr]\tdE/dy[hartree/bohr]\tdE/dz[hartree/bohr]\n")


def gradient_rows(name, rel, method, r, version):
    basis, charge, mult, atoms = ks.read_molecule_file(rel)
    ghosts = ghost_range(rel)
    if method == "HF":
        reference = "RHF" if mult == 1 else "UHF"
    else:
        reference = "RKS" if mult == 1 else "UKS"
    rows = []
    for i, ((s, x, y, z), g) in enumerate(zip(atoms, r["gradient"])):
        rows.append("\t".join(
            [name, rel, basis, "%d" % charge, "%d" % mult, method, reference, version,
             "%d" % r["nbasis"], "%d" % (i + 1), s, "1" if is_ghost(i + 1, ghosts) else "0",
             mr.fixed(x, 6), mr.fixed(y, 6), mr.fixed(z, 6), "%.10f" % r["energy"]] +
            [mr.fixed(c * GRADIENT_EV_A, 8) for c in g] + [mr.fixed(c, 10) for c in g]) + "\n")
    return "".join(rows)


def gradient_table(args, path, comment, rows_wanted, grid):
    """rows_wanted: [(name, rel, method)]."""
    rows = read_row_groups(path) if args.only else {}
    version = "psi4 " + ks.psi4_version()
    todo = [w for w in rows_wanted if not args.only or w[0] in args.only]
    tasks = [(w, (lambda w=w: run_child(args, ["gradient", w[1], w[2], grid]))) for w in todo]
    for (name, rel, method), r in ks.run_parallel(args.jobs, tasks):
        g = r["gradient"]
        net = [sum(row[k] for row in g) for k in range(3)]
        rows[name] = gradient_rows(name, rel, method, r, version)
        extra = "  <S^2>=%.6f" % r["s2"] if r["s2"] is not None else ""
        print("%-26s %18.10f  %3d it  %6.1f s  net force %.1e%s" % (
            name, r["energy"], r["iterations"], r["wall"], max(abs(c) for c in net), extra),
            flush=True)
        write_rows(path, comment, GRADIENT_HEADER, rows, [w[0] for w in rows_wanted])
    write_rows(path, comment, GRADIENT_HEADER, rows, [w[0] for w in rows_wanted])
    missing = [w[0] for w in todo if w[0] not in rows]
    print("wrote", path, "; missing rows: " + " ".join(missing) if missing else "")


def read_row_groups(path):
    """{name: the lines of that name} of a table, to keep rows not recomputed."""
    rows = {}
    if os.path.exists(path):
        with open(path) as f:
            for line in f:
                if not line.startswith("#") and not line.startswith("name\t"):
                    name = line.split("\t")[0]
                    rows[name] = rows.get(name, "") + line
    return rows


def write_rows(path, comment, header, rows, order):
    with open(path, "w") as f:
        f.write(comment)
        f.write(header)
        for name in order:
            if name in rows:
                f.write(rows[name])


def hf_rows():
    return [(mr.case_id(m, b), grad_file(m, b), "HF") for m, b in HF_CASES]


def ks_rows():
    return [(mr.case_id(m, b) + "_" + f, grad_file(m, b), f) for m, b, fs in KS_CASES for f in fs]


OPT_HEADER = (
    "name\tmolecule_file\tmolecule\tbasis\tcharge\tmultiplicity\tmethod\treference\tprogram\t"
    "E_opt[hartree]\tE_converged_grid[hartree]\tmax_gradient[eV/A]\tgradients\twall[s]\t"
    "cpu[s]\tbonds[A]\tangles[deg]\tdihedrals[deg]\tgeometry[A]\n")


def opt_row(mol, method, r, version):
    label, _, charge, mult, bonds, angles, dihedrals = OPT_MOLECULES[mol]
    at = r["atoms"]

    def tag(idx):
        return "-".join("%s%d" % (at[i - 1][0], i) for i in idx)
    if method == "HF":
        reference = "RHF" if mult == 1 else "UHF"
    else:
        reference = "RKS" if mult == 1 else "UKS"
    bond_text = "; ".join("%s %.6f" % (tag(b), distance(at[b[0] - 1], at[b[1] - 1]))
                          for b in bonds)
    angle_text = "; ".join("%s %.4f" % (tag(a), angle(*(at[i - 1] for i in a))) for a in angles)
    dih_text = "; ".join("%s %.4f" % (tag(d), dihedral(*(at[i - 1] for i in d)))
                         for d in dihedrals)
    geo_text = "; ".join("%s %s %s %s" % (a[0], mr.fixed(a[1], 6), mr.fixed(a[2], 6),
                                          mr.fixed(a[3], 6)) for a in at)
    efine = "%.10f" % r["energy_converged_grid"] if "energy_converged_grid" in r else ""
    return "\t".join([
        opt_name(mol, method), opt_file(mol), label, OPT_BASIS, "%d" % charge, "%d" % mult,
        method, reference, version, "%.10f" % r["energy"], efine,
        "%.6f" % (r["max_gradient"] * GRADIENT_EV_A), "%d" % r["gradients"], "%.1f" % r["wall"],
        "%.1f" % r["cpu"], bond_text, angle_text, dih_text, geo_text]) + "\n"


def opt_name(mol, method):
    return mr.case_id(mol, OPT_BASIS) + "_" + method


def opt_comment(settings):
    return ("# Psi4 optimisations (optking defaults: %s), SCF as in hf_gradients.tsv; "
            "B3LYP on Psi4's default grid (75 x 302), E_converged_grid at the printed geometry "
            "on 150 x 974; wall and cpu: one thread on a shared machine; "
            "see docs/references.md\n" %
            ", ".join("%s %s" % (k.lower(), v) for k, v in sorted(settings.items())))


def opt_table(args):
    path = os.path.join(OUT_DIR, "optimized.tsv")
    rows = read_row_groups(path) if args.only else {}
    order = [(m, meth) for m in OPT_MOLECULES for meth in OPT_METHODS]
    todo = [o for o in order if not args.only or opt_name(*o) in args.only]
    version = "psi4 " + ks.psi4_version()
    settings = {}
    if args.only and os.path.exists(path):
        with open(path) as f:
            comment = f.readline()
    else:
        comment = None
    # the longest first, so that two processes finish together
    todo.sort(key=lambda o: (o[0] != "c6h6", o[1] != "B3LYP"))
    tasks = [(o, (lambda o=o: run_child(args, ["optimise", opt_file(o[0]), o[1]])))
             for o in todo]
    for (mol, method), r in ks.run_parallel(args.jobs, tasks):
        settings = r["settings"]
        rows[opt_name(mol, method)] = opt_row(mol, method, r, version)
        print("%-22s %18.10f  %2d gradients  %7.1f s" % (
            opt_name(mol, method), r["energy"], r["gradients"], r["wall"]), flush=True)
        write_rows(path, comment or opt_comment(settings), OPT_HEADER, rows,
                   [opt_name(*o) for o in order])
    missing = [opt_name(*o) for o in todo if opt_name(*o) not in rows]
    print("wrote", path, "; missing rows: " + " ".join(missing) if missing else "")


# --------------------------------------------------------------------------
# Cross-checks: NWChem's analytic gradients, and central differences of
# Psi4 energies (the Kohn-Sham one with the grid moving with the atoms, so
# that it holds the grid-weight term that Psi4's analytic gradient leaves out)
# --------------------------------------------------------------------------

NWCHEM_CHECKS = [("h2o_6-31Gx", "HF"), ("h2o_6-31GxC", "HF"), ("znh2_6-31Gx", "HF"),
                 ("sch3_6-31Gx", "HF"), ("ohm_6-31pGx", "HF"), ("no2_6-31Gx", "HF"),
                 ("h2o_6-31Gx", "B3LYP"), ("nh3_6-31Gx", "B3LYP")]
DIFFERENCE_CHECKS = [("h2o_ghost_h2o_6-31Gx", "HF"), ("h2o_6-31Gx", "B3LYP")]
DIFFERENCE_STEP_A = 0.005  # four-point stencil: truncation error ~ h^4, 1e-9 hartree/bohr here


def nwchem_gradient_input(rel, method, basis_dir, workdir):
    if method != "HF":
        text = ks.nwchem_input(rel, method, basis_dir, workdir)
        return text.replace("task dft energy", "task dft gradient")
    basis, charge, mult, atoms = ks.read_molecule_file(rel)
    family, cart = mr.split_basis_name(basis)
    lines = ["start job", "scratch_dir " + workdir, "permanent_dir " + workdir,
             "memory total 3000 mb", "charge %d" % charge,
             "geometry units au noautoz nocenter noautosym", "  symmetry c1"]
    lines += ["  %s %.17g %.17g %.17g" % (s, x / BOHR_ANGSTROM, y / BOHR_ANGSTROM,
                                          z / BOHR_ANGSTROM) for s, x, y, z in atoms]
    lines.append("end")
    lines.append(mr.nwchem_basis(mr.load_basis(basis_dir, family),
                                 list(dict.fromkeys(a[0] for a in atoms)), cart).rstrip("\n"))
    lines += ["scf", "  " + ("rhf" if mult == 1 else "uhf"), "  " + mr.MULT_WORD[mult],
              "  thresh 1e-10", "  tol2e 1e-14", "  maxiter 300", "end", "task scf gradient"]
    return "\n".join(lines) + "\n"


def parse_nwchem_gradient(text):
    """Energy and the last ENERGY GRADIENTS table (hartree/bohr)."""
    energies = re.findall(r"Total (?:SCF|DFT) energy =\s*(-?\d+\.\d+)", text)
    block = text.split("ENERGY GRADIENTS")[-1]
    num = r"(-?\d+\.\d+(?:[DdEe][+-]?\d+)?)"
    rows = re.findall(r"^\s*\d+\s+\S+" + r"\s+" + r"\s+".join([num] * 6) + r"\s*$", block,
                      re.M)
    if not energies or not rows:
        raise RuntimeError("no gradient in NWChem output:\n" + text[-3000:])
    return float(energies[-1]), [[float(v.replace("D", "E")) for v in r[3:]] for r in rows]


def nwchem_gradient(rel, method, basis_dir):
    work = tempfile.mkdtemp(prefix="nwgrad_")
    try:
        inp = os.path.join(work, "job.nw")
        with open(inp, "w") as f:
            f.write(nwchem_gradient_input(rel, method, basis_dir, work))
        proc = subprocess.run(["nice", "-n", "10"] + mr.nwchem_command(1) + [inp], cwd=work,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              universal_newlines=True, env=dict(os.environ, OMP_NUM_THREADS="1"))
        if proc.returncode != 0:
            raise RuntimeError("nwchem failed for %s %s:\n%s" %
                               (rel, method, (proc.stdout + proc.stderr)[-3000:]))
        energy, grad = parse_nwchem_gradient(proc.stdout)
        return {"energy": energy, "gradient": grad}
    finally:
        subprocess.run(["rm", "-rf", work])


def difference_gradient(args, rel, method):
    """Four-point central differences of Psi4 energies in every coordinate."""
    _, _, _, atoms = ks.read_molecule_file(rel)
    h = DIFFERENCE_STEP_A
    steps = (-2, -1, 1, 2)
    tasks = []
    for i in range(len(atoms)):
        for k in range(3):
            for n in steps:
                moved = [list(a) for a in atoms]
                moved[i][k + 1] += n * h
                tasks.append(((i, k, n), (lambda m=moved: run_child(
                    args, ["energy", rel, method, "reference", m]))))
    e = {key: r["energy"] for key, r in ks.run_parallel(args.jobs, tasks)}
    grad = []
    for i in range(len(atoms)):
        row = []
        for k in range(3):
            d = (e[(i, k, -2)] - 8.0 * e[(i, k, -1)] + 8.0 * e[(i, k, 1)] - e[(i, k, 2)]) / \
                (12.0 * h / BOHR_ANGSTROM)
            row.append(d)
        grad.append(row)
    return grad


def table_gradient(name):
    """(energy, gradient in hartree/bohr) of a row of the gradient tables."""
    for table in ("hf_gradients.tsv", "ks_gradients.tsv"):
        rows = read_row_groups(os.path.join(OUT_DIR, table))
        if name in rows:
            lines = [ln.rstrip("\n").split("\t") for ln in rows[name].splitlines()]
            return float(lines[0][15]), [[float(c) for c in ln[19:22]] for ln in lines]
    raise KeyError(name)


def crosscheck(args):
    path = os.path.join(OUT_DIR, "gradient_crosscheck.tsv")
    out = []
    nw = "nwchem " + mr.nwchem_version()
    for case, method in NWCHEM_CHECKS:
        name = case if method == "HF" else case + "_" + method
        e_ref, g_ref = table_gradient(name)
        r = nwchem_gradient("molecules_grad/%s.mol" % case, method, args.basis_dir)
        dg = max(abs(a - b) for ga, gb in zip(r["gradient"], g_ref) for a, b in zip(ga, gb))
        de = float("%.10f" % r["energy"]) - e_ref
        out.append((name, method, nw, "%.1e" % de, "%.1e" % dg, "%.1e" % (dg * GRADIENT_EV_A)))
        print("nwchem %-24s dE %9.1e  max dG %9.1e hartree/bohr" % (name, de, dg), flush=True)
    for case, method in DIFFERENCE_CHECKS:
        name = case if method == "HF" else case + "_" + method
        _, g_ref = table_gradient(name)
        g = difference_gradient(args, "molecules_grad/%s.mol" % case, method)
        dg = max(abs(a - b) for ga, gb in zip(g, g_ref) for a, b in zip(ga, gb))
        out.append((name, method, "psi4 %s, central differences, h = %g A" % (
            ks.psi4_version(), DIFFERENCE_STEP_A), "", "%.1e" % dg, "%.1e" % (dg * GRADIENT_EV_A)))
        print("differences %-24s max dG %9.1e hartree/bohr" % (name, dg), flush=True)
    with open(path, "w") as f:
        f.write("# Gradients of hf_gradients.tsv and ks_gradients.tsv against NWChem (same basis "
                "data, nuclear positions and SCF settings; Kohn-Sham on NWChem's xfine grid) and "
                "against four-point central differences of Psi4 energies; "
                "see docs/references.md\n")
        f.write("name\tmethod\tcheck\tE_check_minus_table[hartree]\t"
                "max_gradient_difference[hartree/bohr]\tmax_gradient_difference[eV/A]\n")
        for row in out:
            f.write("\t".join(row) + "\n")
    print("wrote", path)


def main():
    ap = argparse.ArgumentParser(description=__doc__,
                                 formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("--basis-dir", default=mr.DEFAULT_BASIS_DIR)
    ap.add_argument("--jobs", type=int, default=2, help="parallel one-thread Psi4 processes")
    ap.add_argument("--nice", type=int, default=10, help="niceness of the Psi4 processes")
    ap.add_argument("--only", nargs="*", default=[], help="row names to recompute")
    ap.add_argument("--skip-hf", action="store_true")
    ap.add_argument("--skip-ks", action="store_true")
    ap.add_argument("--skip-opt", action="store_true")
    ap.add_argument("--crosscheck", action="store_true",
                    help="also write gradient_crosscheck.tsv (NWChem, central differences)")
    ap.add_argument("--molecule-files-only", action="store_true")
    ap.add_argument("--threads", type=int, default=1,
                    help="threads of a single --task (the benchmark runs two)")
    ap.add_argument("--task", help=argparse.SUPPRESS)
    ap.add_argument("--result", help=argparse.SUPPRESS)
    args = ap.parse_args()
    args.only = set(args.only)

    if args.task:
        child_main(args)
        return
    write_gradient_molecule_files()
    write_opt_molecule_files()
    if args.molecule_files_only:
        return
    if not args.skip_hf:
        gradient_table(args, os.path.join(OUT_DIR, "hf_gradients.tsv"),
                       "# Hartree-Fock analytic gradients (RHF closed shell, UHF open shell) at "
                       "displaced geometries, one row per atom; 1 hartree/bohr = %.10f eV/A "
                       "(norvik's constants); see docs/references.md\n" % GRADIENT_EV_A,
                       hf_rows(), None)
    if not args.skip_ks:
        gradient_table(args, os.path.join(OUT_DIR, "ks_gradients.tsv"),
                       "# Kohn-Sham analytic gradients (RKS closed shell, UKS open shell) at "
                       "displaced geometries on the converged grid (Treutler 150 x Lebedev 974 "
                       "per atom, Treutler partition, unpruned), one row per atom; 1 hartree/bohr"
                       " = %.10f eV/A (norvik's constants); see docs/references.md\n" %
                       GRADIENT_EV_A, ks_rows(), "reference")
    if not args.skip_opt:
        opt_table(args)
    if args.crosscheck:
        crosscheck(args)


if __name__ == "__main__":
    main()
