#!/usr/bin/python3
"""Independent Hartree-Fock reference energies, dipoles and timings for norvik.

Runs Psi4 (Debian's psi4 package) on a fixed list of molecule/basis pairs and
cross-checks a subset with NWChem (Debian's nwchem package). Both programs are
fed the basis sets from shared/data/basis/*.json -- the same published numbers
the library compiles in -- and nuclear positions in bohr obtained from the
angstrom coordinates with norvik's bohr = 0.5291772104 A.

Writes, under tests/references/data/:
  molecules/<case>.mol   one norvik molecule file per molecule/basis pair
  hf_energies.tsv        Psi4 energies, dipoles, basis sizes, wall times
  nwchem_crosscheck.tsv  NWChem against Psi4 for a subset
  timings.tsv            (with --timings) wall time, iterations, peak memory

Run with Debian's interpreter and psi4's module path:
  PYTHONPATH=/usr/lib/x86_64-linux-gnu /usr/bin/python3 \
      tools/references/make_references.py [--timings] [--only CASE ...]

Nothing here is shipped in the library; the programs are only run as black
boxes and their numbers recorded.
"""

import argparse
import json
import math
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
REPO = os.path.normpath(os.path.join(HERE, "..", ".."))
DEFAULT_BASIS_DIR = os.path.normpath(os.path.join(REPO, "..", "shared", "data", "basis"))
OUT_DIR = os.path.join(REPO, "tests", "references", "data")

# norvik's constants (used exactly throughout the library).
BOHR_ANGSTROM = 0.5291772104  # 1 bohr in angstrom; also 1 e*bohr in e*angstrom

ELEMENTS = (
    "H He Li Be B C N O F Ne Na Mg Al Si P S Cl Ar K Ca Sc Ti V Cr Mn Fe Co Ni Cu Zn "
    "Ga Ge As Se Br Kr Rb Sr Y Zr Nb Mo Tc Ru Rh Pd Ag Cd In Sn Sb Te I Xe").split()
Z_OF = {s: i + 1 for i, s in enumerate(ELEMENTS)}

# norvik basis name (without the Cartesian "C") -> published data file.
BASIS_FILE = {
    "STO-3G": "sto-3g.json",
    "3-21G": "3-21g.json",
    "6-21G": "6-21g.json",
    "6-31G": "6-31g.json",
    "6-31Gx": "6-31gs.json",
    "6-31Gxx": "6-31gss.json",
    "6-31+G": "6-31pg.json",
    "6-31+Gx": "6-31pgs.json",
    "6-31+Gxx": "6-31pgss.json",
    "6-31++G": "6-31ppg.json",
    "6-31++Gx": "6-31ppgs.json",
    "6-31++Gxx": "6-31ppgss.json",
}
NO_CARTESIAN_VARIANT = {"STO-3G", "6-21G"}


def split_basis_name(name):
    """Returns (published family key, cartesian_d) for a norvik basis name."""
    if name in BASIS_FILE:
        return name, False
    if name.endswith("C") and name[:-1] in BASIS_FILE and name[:-1] not in NO_CARTESIAN_VARIANT:
        return name[:-1], True
    raise ValueError("not a norvik basis name: " + name)


# --------------------------------------------------------------------------
# Geometries (angstrom). Simple idealised shapes from experimental bond
# lengths and angles; the references and norvik see the same positions, so
# only sanity matters, not spectroscopic accuracy.
# --------------------------------------------------------------------------


def diatomic(a, b, r):
    return [(a, 0.0, 0.0, 0.0), (b, 0.0, 0.0, r)]


def linear_symmetric(x, lig, r):
    return [(x, 0.0, 0.0, 0.0), (lig, 0.0, 0.0, r), (lig, 0.0, 0.0, -r)]


def bent(x, lig, r, angle_deg):
    h = math.radians(angle_deg) / 2.0
    return [(x, 0.0, 0.0, 0.0),
            (lig, 0.0, r * math.sin(h), -r * math.cos(h)),
            (lig, 0.0, -r * math.sin(h), -r * math.cos(h))]


def pyramidal(x, lig, r, angle_deg):
    """XL3 with C3 axis along z and L-X-L angle angle_deg."""
    cos_beta = math.sqrt((2.0 * math.cos(math.radians(angle_deg)) + 1.0) / 3.0)
    rho, h = r * math.sqrt(1.0 - cos_beta**2), r * cos_beta
    atoms = [(x, 0.0, 0.0, 0.0)]
    for k in range(3):
        phi = math.radians(90.0 + 120.0 * k)
        atoms.append((lig, rho * math.cos(phi), rho * math.sin(phi), -h))
    return atoms


def tetrahedral(x, lig, r):
    d = r / math.sqrt(3.0)
    return [(x, 0.0, 0.0, 0.0), (lig, d, d, d), (lig, -d, -d, d), (lig, -d, d, -d),
            (lig, d, -d, -d)]


def benzene(rcc=1.397, rch=1.084):
    atoms = []
    for k in range(6):
        phi = math.radians(60.0 * k)
        atoms.append(("C", rcc * math.cos(phi), rcc * math.sin(phi), 0.0))
    for k in range(6):
        phi = math.radians(60.0 * k)
        atoms.append(("H", (rcc + rch) * math.cos(phi), (rcc + rch) * math.sin(phi), 0.0))
    return atoms


def adamantane(rcc=1.54, rch=1.09):
    """C10H16 (Td) with ideal tetrahedral angles at every carbon."""
    a = rcc / math.sqrt(3.0)
    b = 2.0 * a
    atoms = []
    ch = [(a, a, a), (a, -a, -a), (-a, a, -a), (-a, -a, a)]
    ch2 = [(b, 0, 0), (-b, 0, 0), (0, b, 0), (0, -b, 0), (0, 0, b), (0, 0, -b)]
    for p in ch:
        atoms.append(("C",) + tuple(float(c) for c in p))
    for p in ch2:
        atoms.append(("C",) + tuple(float(c) for c in p))
    for p in ch:  # methine H along the body diagonal, outwards
        n = math.sqrt(3.0)
        atoms.append(("H",) + tuple(c + rch * (c / a) / n for c in p))
    half = math.radians(109.4712206) / 2.0
    for p in ch2:  # two methylene H in the plane perpendicular to C-C-C
        bonds = [[q[i] - p[i] for i in range(3)] for q in ch
                 if abs(math.dist(p, q) - rcc) < 1e-9]
        out = [-(bonds[0][i] + bonds[1][i]) for i in range(3)]
        perp = [bonds[0][1] * bonds[1][2] - bonds[0][2] * bonds[1][1],
                bonds[0][2] * bonds[1][0] - bonds[0][0] * bonds[1][2],
                bonds[0][0] * bonds[1][1] - bonds[0][1] * bonds[1][0]]
        out = [c / math.hypot(*out) for c in out]
        perp = [c / math.hypot(*perp) for c in perp]
        for s in (1.0, -1.0):
            atoms.append(("H",) + tuple(
                float(p[i]) + rch * (math.cos(half) * out[i] + s * math.sin(half) * perp[i])
                for i in range(3)))
    return atoms


def atom(sym):
    return [(sym, 0.0, 0.0, 0.0)]


# name -> (formula label, atoms, charge, multiplicity)
MOLECULES = {
    "h2o": ("H2O", bent("O", "H", 0.9572, 104.52), 0, 1),
    "nh3": ("NH3", pyramidal("N", "H", 1.0124, 106.67), 0, 1),
    "ch4": ("CH4", tetrahedral("C", "H", 1.0870), 0, 1),
    "hf": ("HF", diatomic("F", "H", 0.9168), 0, 1),
    "lih": ("LiH", diatomic("Li", "H", 1.5949), 0, 1),
    "n2": ("N2", diatomic("N", "N", 1.0977), 0, 1),
    "co": ("CO", diatomic("C", "O", 1.1283), 0, 1),
    "h3o+": ("H3O+", pyramidal("O", "H", 0.9759, 111.3), 1, 1),
    "oh-": ("OH-", diatomic("O", "H", 0.9643), -1, 1),
    "sih4": ("SiH4", tetrahedral("Si", "H", 1.4798), 0, 1),
    "ph3": ("PH3", pyramidal("P", "H", 1.4200, 93.345), 0, 1),
    "h2s": ("H2S", bent("S", "H", 1.3356, 92.11), 0, 1),
    "hcl": ("HCl", diatomic("Cl", "H", 1.2746), 0, 1),
    "kh": ("KH", diatomic("K", "H", 2.2400), 0, 1),
    "kcl": ("KCl", diatomic("K", "Cl", 2.6667), 0, 1),
    "cah2": ("CaH2", linear_symmetric("Ca", "H", 2.0000), 0, 1),
    "ticl4": ("TiCl4", tetrahedral("Ti", "Cl", 2.1700), 0, 1),
    "cuh": ("CuH", diatomic("Cu", "H", 1.4626), 0, 1),
    "znh2": ("ZnH2", linear_symmetric("Zn", "H", 1.5350), 0, 1),
    "geh4": ("GeH4", tetrahedral("Ge", "H", 1.5251), 0, 1),
    "hbr": ("HBr", diatomic("Br", "H", 1.4145), 0, 1),
    "kr": ("Kr", atom("Kr"), 0, 1),
    "krf2": ("KrF2", linear_symmetric("Kr", "F", 1.8750), 0, 1),
    "rbh": ("RbH", diatomic("Rb", "H", 2.3670), 0, 1),
    "srh2": ("SrH2", linear_symmetric("Sr", "H", 2.1460), 0, 1),
    "agh": ("AgH", diatomic("Ag", "H", 1.6180), 0, 1),
    "snh4": ("SnH4", tetrahedral("Sn", "H", 1.7110), 0, 1),
    "hi": ("HI", diatomic("I", "H", 1.6092), 0, 1),
    "xef2": ("XeF2", linear_symmetric("Xe", "F", 1.9770), 0, 1),
    "c6h6": ("C6H6", benzene(), 0, 1),
    "c10h16": ("C10H16", adamantane(), 0, 1),
    # open shells (UHF)
    "oh": ("OH", diatomic("O", "H", 0.9697), 0, 2),
    "o2": ("O2", diatomic("O", "O", 1.2075), 0, 3),
    "nh2": ("NH2", bent("N", "H", 1.0240, 103.4), 0, 2),
    "ch2": ("CH2", bent("C", "H", 1.0750, 134.0), 0, 3),
    "o": ("O", atom("O"), 0, 3),
    "n": ("N", atom("N"), 0, 4),
    "na": ("Na", atom("Na"), 0, 2),
}

# (molecule, norvik basis name). Every basis family appears, every Cartesian
# "C" name whose shells differ from the pure name, and every element block of
# the library up to xenon. 6-31GxC (and 6-31GxxC) on Sc-Zn is absent on
# purpose: Cartesian d together with a pure f shell cannot be expressed with a
# single spherical/cartesian switch in either reference program.
CASES = [
    ("h2o", "STO-3G"),
    ("h2o", "3-21G"),
    ("h2o", "6-31G"),
    ("h2o", "6-31Gxx"),
    ("h2o", "6-31+Gxx"),
    ("h2o", "6-31++Gxx"),
    ("h2o", "6-31++GxxC"),
    ("nh3", "6-21G"),
    ("nh3", "6-31GxxC"),
    ("ch4", "6-31G"),
    ("hf", "6-31+Gx"),
    ("hf", "6-31+GxC"),
    ("hf", "6-31++GC"),
    ("lih", "6-31G"),
    ("lih", "6-31+GC"),
    ("n2", "6-31Gx"),
    ("n2", "6-31GxC"),
    ("co", "6-31+GxxC"),
    ("h3o+", "6-31Gx"),
    ("oh-", "6-31++G"),
    ("sih4", "6-31Gx"),
    ("ph3", "6-31++Gx"),
    ("ph3", "6-31+GxC"),
    ("h2s", "6-31+G"),
    ("h2s", "6-31++GxC"),
    ("hcl", "6-21G"),
    ("hcl", "6-31++G"),
    ("kh", "6-31Gx"),
    ("kcl", "6-31GC"),
    ("cah2", "3-21G"),
    ("ticl4", "6-31Gx"),
    ("cuh", "STO-3G"),
    ("znh2", "3-21GC"),
    ("geh4", "6-31Gxx"),
    ("hbr", "6-31G"),
    ("hbr", "6-31GC"),
    ("hbr", "3-21GC"),
    ("kr", "6-31Gx"),
    ("krf2", "6-31G"),
    ("rbh", "3-21G"),
    ("srh2", "STO-3G"),
    ("agh", "3-21G"),
    ("snh4", "STO-3G"),
    ("hi", "3-21G"),
    ("hi", "3-21GC"),
    ("xef2", "3-21G"),
    ("c6h6", "6-31Gxx"),
    ("c10h16", "6-31Gx"),
    ("oh", "6-31Gx"),
    ("o2", "6-31G"),
    ("nh2", "6-31+Gx"),
    ("ch2", "6-31Gxx"),
    ("o", "6-31++Gx"),
    ("n", "3-21G"),
    ("na", "STO-3G"),
]

# Cases recomputed with NWChem to show that the two references agree.
NWCHEM_CASES = [
    ("h2o", "6-31Gxx"),
    ("n2", "6-31GxC"),
    ("h2o", "6-31++GxxC"),
    ("ticl4", "6-31Gx"),
    ("hbr", "6-31GC"),
    ("hi", "3-21GC"),
    ("snh4", "STO-3G"),
    ("xef2", "3-21G"),
    ("oh", "6-31Gx"),
    ("o2", "6-31G"),
    ("n", "3-21G"),
]

# Benchmark pairs for the timing comparison.
TIMING_CASES = [("c6h6", "6-31Gxx"), ("c10h16", "6-31Gx")]


def case_id(mol, basis):
    return mol.replace("+", "p").replace("-", "m") + "_" + basis.replace("+", "p")


# --------------------------------------------------------------------------
# Basis conversion
# --------------------------------------------------------------------------


def load_basis(basis_dir, family):
    with open(os.path.join(basis_dir, BASIS_FILE[family])) as f:
        return json.load(f)


def element_shells(data, z):
    """Yields (l list, exponents, coefficient lists) with spd shells split
    into separate s, p and d shells sharing exponents; sp stays together."""
    try:
        shells = data["elements"][str(z)]["electron_shells"]
    except KeyError:
        raise ValueError("basis %s does not serve Z=%d" % (data["name"], z))
    for sh in shells:
        am = sh["angular_momentum"]
        if am == [0, 1]:
            yield [0, 1], sh["exponents"], sh["coefficients"]
        else:
            for i, l in enumerate(am):
                yield [l], sh["exponents"], [sh["coefficients"][i]]


def nbasis_expected(data, elements, cartesian_d):
    n = 0
    for sym in elements:
        for ls, _, _ in element_shells(data, Z_OF[sym]):
            for l in ls:
                if l == 2:
                    n += 6 if cartesian_d else 5
                else:
                    n += 2 * l + 1  # f shells are always pure
    return n


def psi4_gbs(data, symbols, cartesian_d, label):
    lines = ["assign " + label, "[" + label + "]", "cartesian" if cartesian_d else "spherical",
             "****"]
    for sym in symbols:
        lines.append("%s 0" % sym)
        for ls, exps, coefs in element_shells(data, Z_OF[sym]):
            tag = "SP" if ls == [0, 1] else "SPDF"[ls[0]]
            lines.append("%s %d 1.00" % (tag, len(exps)))
            for i, e in enumerate(exps):
                lines.append("  " + e + "".join("  " + c[i] for c in coefs))
        lines.append("****")
    return "\n".join(lines) + "\n"


def nwchem_basis(data, symbols, cartesian_d):
    lines = ['basis "ao basis" %s' % ("cartesian" if cartesian_d else "spherical")]
    for sym in symbols:
        for ls, exps, coefs in element_shells(data, Z_OF[sym]):
            tag = "SP" if ls == [0, 1] else "SPDF"[ls[0]]
            lines.append("%s %s" % (sym, tag))
            for i, e in enumerate(exps):
                lines.append("  " + e + "".join("  " + c[i] for c in coefs))
    lines.append("end")
    return "\n".join(lines) + "\n"


# --------------------------------------------------------------------------
# Molecule files
# --------------------------------------------------------------------------


def rounded_atoms(mol):
    """Angstrom coordinates as written to the molecule file (6 decimals)."""
    return [(s, round(x, 6) + 0.0, round(y, 6) + 0.0, round(z, 6) + 0.0)
            for s, x, y, z in MOLECULES[mol][1]]


def molecule_file_records(theory, basis, label, charge, mult, atoms, ghosts=(0, 0),
                          theory_comment="# theory"):
    """Text of a norvik molecule file: comment and value records alternate,
    atoms (symbol, x, y, z in angstrom) from record 24, 6 decimals."""
    rec = [
        theory_comment, "'%s'" % theory,
        "# basis set", "'%s'" % basis,
        "# molecule name, integer setting", "'%s' 0" % label,
        "# integer setting", "0",
        "# integer setting", "0",
        "# start-density file (blank: none)", "''",
        "# text setting", "'none'",
        "# ghost atoms: first last (0 0: none)", "%d %d" % ghosts,
        "# text setting", "'none'",
        "# charge", "%d" % charge,
        "# spin multiplicity 2S+1", "%d" % mult,
        "# atoms: symbol, x y z [A]",
    ]
    for s, x, y, z in atoms:
        rec.append("%-2s %12.6f %12.6f %12.6f" % (
            s, round(x, 6) + 0.0, round(y, 6) + 0.0, round(z, 6) + 0.0))
    return "\n".join(rec) + "\n"


def molecule_file_text(mol, basis):
    label, _, charge, mult = MOLECULES[mol]
    return molecule_file_records("HF", basis, label, charge, mult, rounded_atoms(mol))


def bohr_positions(mol):
    return [(s, x / BOHR_ANGSTROM, y / BOHR_ANGSTROM, z / BOHR_ANGSTROM)
            for s, x, y, z in rounded_atoms(mol)]


def unique_symbols(mol):
    seen = []
    for s, *_ in MOLECULES[mol][1]:
        if s not in seen:
            seen.append(s)
    return seen


# --------------------------------------------------------------------------
# Psi4
# --------------------------------------------------------------------------


def run_psi4(mol, basis, basis_dir, threads, scratch):
    """One SCF in this process. Returns a dict of results."""
    import numpy as np
    import psi4

    family, cart = split_basis_name(basis)
    data = load_basis(basis_dir, family)
    label, _, charge, mult = MOLECULES[mol]
    psi4.core.clean()
    psi4.core.clean_options()
    psi4.core.set_output_file(os.path.join(scratch, case_id(mol, basis) + ".psi4.out"), False)
    psi4.set_memory("4 GB")
    psi4.set_num_threads(threads)
    geo = ["units bohr", "no_com", "no_reorient", "symmetry c1", "%d %d" % (charge, mult)]
    geo += ["%s %.17g %.17g %.17g" % a for a in bohr_positions(mol)]
    molecule = psi4.geometry("\n".join(geo), name="m_" + case_id(mol, basis))
    bas_label = "nv_" + re.sub(r"[^a-z0-9]", "_", basis.lower())
    psi4.basis_helper(psi4_gbs(data, unique_symbols(mol), cart, bas_label), name=bas_label)
    opts = {
        "reference": "rhf" if mult == 1 else "uhf",
        "scf_type": "pk",
        "e_convergence": 1e-10,
        "d_convergence": 1e-10,
        "ints_tolerance": 1e-14,
        "maxiter": 300,
        "freeze_core": "false",
    }
    if mult != 1:
        opts["stability_analysis"] = "follow"
    psi4.set_options(opts)
    t0, c0 = time.perf_counter(), time.process_time()
    energy, wfn = psi4.energy("scf", return_wfn=True, molecule=molecule)
    wall, cpu = time.perf_counter() - t0, time.process_time() - c0
    iterations = int(psi4.variable("SCF ITERATIONS"))

    nbf = wfn.basisset().nbf()
    expected = nbasis_expected(data, [a[0] for a in MOLECULES[mol][1]], cart)
    if nbf != expected:
        raise RuntimeError("%s/%s: psi4 has %d functions, expected %d" % (mol, basis, nbf, expected))
    if wfn.nmo() != nbf:
        raise RuntimeError("%s/%s: psi4 dropped linearly dependent functions" % (mol, basis))

    # Dipole about the coordinate origin: sum Z_A R_A - integral rho r, in e*bohr.
    mints = psi4.core.MintsHelper(wfn.basisset())
    density = np.asarray(wfn.Da()) + np.asarray(wfn.Db())
    geom = np.asarray(molecule.geometry())
    dip = []
    for k, mat in enumerate(mints.ao_dipole()):  # integrals of -r
        nuc = sum(molecule.Z(i) * geom[i, k] for i in range(molecule.natom()))
        dip.append(nuc + float(np.sum(density * np.asarray(mat))))
    s2 = None
    if mult != 1:
        # <S^2> = Sz(Sz+1) + N_beta - sum_ij |<i alpha|j beta>|^2
        na, nb = wfn.nalpha(), wfn.nbeta()
        ca = np.asarray(wfn.Ca())[:, :na]
        cb = np.asarray(wfn.Cb())[:, :nb]
        over = ca.T @ np.asarray(mints.ao_overlap()) @ cb
        sz = 0.5 * (na - nb)
        s2 = sz * (sz + 1.0) + nb - float(np.sum(over * over))
        check_uhf_stability(os.path.join(scratch, case_id(mol, basis) + ".psi4.out"))
    return {"energy": energy, "dipole_au": dip, "nbasis": nbf, "iterations": iterations,
            "wall": wall, "cpu": cpu, "s2": s2}


def check_uhf_stability(output_file):
    """The last UHF->UHF stability eigenvalue must not be negative: the
    reference is then the lowest UHF solution near the one found."""
    psi4_flush()
    with open(output_file) as f:
        text = f.read()
    found = re.findall(r"Lowest UHF->UHF stability eigenvalues:\s*\n\s*\S+\s+(-?\d+\.\d+)",
                       text)
    if not found:
        raise RuntimeError("no stability analysis in " + output_file)
    if float(found[-1]) < -1e-4:
        raise RuntimeError("UHF solution unstable in " + output_file)


def psi4_flush():
    import psi4
    if hasattr(psi4.core, "flush_outfile"):
        psi4.core.flush_outfile()


def psi4_version():
    import psi4
    return psi4.__version__


# --------------------------------------------------------------------------
# NWChem
# --------------------------------------------------------------------------

MULT_WORD = {1: "singlet", 2: "doublet", 3: "triplet", 4: "quartet", 5: "quintet"}


def nwchem_input(mol, basis, basis_dir, workdir):
    family, cart = split_basis_name(basis)
    data = load_basis(basis_dir, family)
    label, _, charge, mult = MOLECULES[mol]
    lines = ["start " + case_id(mol, basis).replace("+", "p"),
             "scratch_dir " + workdir, "permanent_dir " + workdir,
             "memory total 4000 mb", "charge %d" % charge,
             "geometry units au noautoz nocenter noautosym", "  symmetry c1"]
    lines += ["  %s %.17g %.17g %.17g" % a for a in bohr_positions(mol)]
    lines.append("end")
    lines.append(nwchem_basis(data, unique_symbols(mol), cart).rstrip("\n"))
    lines += ["scf", "  " + ("rhf" if mult == 1 else "uhf"), "  " + MULT_WORD[mult],
              "  thresh 1e-10", "  tol2e 1e-14", "  maxiter 300", "end",
              "task scf energy"]
    return "\n".join(lines) + "\n"


def parse_nwchem(text):
    m = re.findall(r"Total SCF energy =\s*(-?\d+\.\d+)", text)
    if not m:
        raise RuntimeError("no SCF energy in NWChem output")
    iters = 0
    block = text.split("Total SCF energy")[0]
    for line in block.splitlines():
        if re.match(r"^\s+\d+\s+-\d+\.\d+\s+\d\.\d+[DdEe][+-]\d+", line):
            iters += 1
    wall = re.findall(r"Total times\s+cpu:\s*[\d.]+s\s+wall:\s*([\d.]+)s", text)
    return float(m[-1]), iters, float(wall[-1]) if wall else float("nan")


def nwchem_command(nproc):
    return ["mpirun", "--allow-run-as-root", "--oversubscribe", "-np", str(nproc), "nwchem"]


def run_nwchem(mol, basis, basis_dir, nproc, time_v=False):
    work = tempfile.mkdtemp(prefix="nwref_")
    try:
        inp = os.path.join(work, "job.nw")
        with open(inp, "w") as f:
            f.write(nwchem_input(mol, basis, basis_dir, work))
        cmd = nwchem_command(nproc) + [inp]
        if time_v:
            cmd = ["/usr/bin/time", "-v"] + cmd
        env = dict(os.environ, OMP_NUM_THREADS="1")
        t0 = time.perf_counter()
        proc = subprocess.run(cmd, cwd=work, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              universal_newlines=True, env=env)
        wall = time.perf_counter() - t0
        if proc.returncode != 0:
            raise RuntimeError("nwchem failed for %s/%s:\n%s" %
                               (mol, basis, (proc.stdout + proc.stderr)[-3000:]))
        energy, iters, nw_wall = parse_nwchem(proc.stdout)
        return {"energy": energy, "iterations": iters, "wall": wall, "nwchem_wall": nw_wall,
                "time_v": proc.stderr if time_v else ""}
    finally:
        shutil.rmtree(work, ignore_errors=True)


def nwchem_version():
    out = subprocess.run(["dpkg-query", "-W", "-f=${Version}", "nwchem"], stdout=subprocess.PIPE,
                         universal_newlines=True).stdout.strip()
    return out


# --------------------------------------------------------------------------
# Timings with /usr/bin/time -v
# --------------------------------------------------------------------------


def parse_time_v(stderr):
    """(wall seconds, user+system CPU seconds, peak RSS MiB) from GNU time -v."""
    def field(pattern):
        m = re.search(pattern, stderr)
        return m.group(1) if m else None
    wall = float("nan")
    el = field(r"Elapsed \(wall clock\) time \(h:mm:ss or m:ss\):\s*([\d:.]+)")
    if el:
        wall = 0.0
        for part in el.split(":"):
            wall = wall * 60.0 + float(part)
    cpu = float(field(r"User time \(seconds\):\s*([\d.]+)") or "nan") + \
        float(field(r"System time \(seconds\):\s*([\d.]+)") or "nan")
    rss = field(r"Maximum resident set size \(kbytes\):\s*(\d+)")
    return wall, cpu, int(rss) / 1024.0 if rss else float("nan")


def time_psi4_once(mol, basis, basis_dir, threads):
    with tempfile.TemporaryDirectory(prefix="psiref_") as tmp:
        res_file = os.path.join(tmp, "result.json")
        cmd = ["/usr/bin/time", "-v", sys.executable, os.path.abspath(__file__), "--single", mol,
               basis, "--threads", str(threads), "--result", res_file, "--basis-dir", basis_dir]
        proc = subprocess.run(cmd, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              universal_newlines=True, cwd=tmp)
        if proc.returncode != 0:
            raise RuntimeError(proc.stdout + proc.stderr)
        wall, cpu, rss = parse_time_v(proc.stderr)
        with open(res_file) as f:
            r = json.load(f)
    return {"nbasis": r["nbasis"], "iterations": r["iterations"], "energy": r["energy"],
            "wall_total": wall, "wall_scf": r["wall"], "cpu": cpu, "rss": rss}


def time_nwchem_once(mol, basis, basis_dir, nproc):
    r = run_nwchem(mol, basis, basis_dir, nproc, time_v=True)
    wall, cpu, rss = parse_time_v(r["time_v"])
    family, cart = split_basis_name(basis)
    nbf = nbasis_expected(load_basis(basis_dir, family), [a[0] for a in MOLECULES[mol][1]], cart)
    return {"nbasis": nbf, "iterations": r["iterations"], "energy": r["energy"],
            "wall_total": wall, "wall_scf": r["nwchem_wall"], "cpu": cpu, "rss": rss}


def timings(basis_dir, threads, repeats):
    """Each program and case is run `repeats` times; the fastest run is kept
    (the machine is shared, so the minimum is the least disturbed)."""
    def load():
        return os.getloadavg()[0] if hasattr(os, "getloadavg") else float("nan")
    load_start = load()
    rows = []
    for mol, basis in TIMING_CASES:
        for program, parallel, once in (
                ("psi4 " + psi4_version(), "%d threads" % threads, time_psi4_once),
                ("nwchem " + nwchem_version(), "%d MPI ranks" % threads, time_nwchem_once)):
            runs = [once(mol, basis, basis_dir, threads) for _ in range(repeats)]
            best = min(runs, key=lambda r: r["wall_total"])
            rows.append((mol, basis, program, parallel, best["nbasis"], best["iterations"],
                         best["energy"], best["wall_total"], best["wall_scf"], best["cpu"],
                         best["rss"], repeats))
            print("timing %-16s %s/%s: %.2f s (walls %s)" % (
                program, mol, basis, best["wall_total"],
                " ".join("%.1f" % r["wall_total"] for r in runs)), flush=True)
    path = os.path.join(OUT_DIR, "timings.tsv")
    with open(path, "w") as f:
        f.write("# Hartree-Fock timings of the reference programs, %d cores, load average "
                "%.1f at start and %.1f at end; see docs/references.md\n" %
                (os.cpu_count(), load_start, load()))
        f.write("molecule\tbasis\tprogram\tparallel\tnbasis\tscf_iterations\tE_HF[hartree]\t"
                "wall_total[s]\twall_scf[s]\tcpu[s]\tpeak_rss[MiB]\truns\n")
        for row in rows:
            f.write("%s\t%s\t%s\t%s\t%d\t%d\t%.10f\t%.2f\t%.2f\t%.2f\t%.1f\t%d\n" % row)
    print("wrote", path)


# --------------------------------------------------------------------------
# Main table
# --------------------------------------------------------------------------


def fixed(x, decimals):
    """%.{decimals}f without a negative zero."""
    text = "%.*f" % (decimals, x)
    return text[1:] if text.startswith("-") and float(text) == 0.0 else text


def write_molecule_files(cases):
    mdir = os.path.join(OUT_DIR, "molecules")
    os.makedirs(mdir, exist_ok=True)
    for mol, basis in cases:
        with open(os.path.join(mdir, case_id(mol, basis) + ".mol"), "w") as f:
            f.write(molecule_file_text(mol, basis))


def main_table(basis_dir, threads, repeats, only):
    cases = [c for c in CASES if not only or case_id(*c) in only]
    write_molecule_files(CASES)
    path = os.path.join(OUT_DIR, "hf_energies.tsv")
    old = {}
    if only and os.path.exists(path):
        with open(path) as f:
            for line in f:
                if line.startswith("#") or line.startswith("name\t"):
                    continue
                old[line.split("\t")[0]] = line
    version = psi4_version()
    scratch = tempfile.mkdtemp(prefix="psiref_")
    rows = dict(old)
    try:
        for mol, basis in cases:
            runs = [run_psi4(mol, basis, basis_dir, threads, scratch) for _ in range(repeats)]
            if max(abs(x["energy"] - runs[0]["energy"]) for x in runs) > 1e-9:
                raise RuntimeError("%s/%s: repeated runs disagree" % (mol, basis))
            r = dict(runs[0], wall=min(x["wall"] for x in runs),
                     cpu=min(x["cpu"] for x in runs))
            label, _, charge, mult = MOLECULES[mol]
            d = [x * BOHR_ANGSTROM for x in r["dipole_au"]]
            cid = case_id(mol, basis)
            rows[cid] = "\t".join([
                cid, "molecules/%s.mol" % cid, basis, "%d" % charge, "%d" % mult,
                "%d" % r["nbasis"], "psi4 " + version, "%.10f" % r["energy"],
                fixed(d[0], 8), fixed(d[1], 8), fixed(d[2], 8),
                "%.2f" % r["wall"], "%.2f" % r["cpu"], "1" if r["cpu"] < 2.0 else "0",
                "" if r["s2"] is None else "%.6f" % r["s2"]]) + "\n"
            extra = " <S^2>=%.6f" % r["s2"] if r["s2"] is not None else ""
            print("%-22s %18.10f  %3d it  %6.2f s%s" % (cid, r["energy"], r["iterations"],
                                                      r["wall"], extra), flush=True)
    finally:
        shutil.rmtree(scratch, ignore_errors=True)
    order = [case_id(*c) for c in CASES]
    with open(path, "w") as f:
        f.write("# Hartree-Fock reference energies (RHF closed shell, UHF open shell); "
                "see docs/references.md\n")
        f.write("name\tmolecule_file\tbasis\tcharge\tmultiplicity\tnbasis\tprogram\t"
                "E_HF[hartree]\tdipole_x[eA]\tdipole_y[eA]\tdipole_z[eA]\twall[s]\tcpu[s]\tfast\t"
                "S2\n")
        for cid in order:
            if cid in rows:
                f.write(rows[cid])
    print("wrote", path)


def nwchem_table(basis_dir, nproc, only):
    path = os.path.join(OUT_DIR, "hf_energies.tsv")
    psi = {}
    with open(path) as f:
        for line in f:
            if line.startswith("#") or line.startswith("name\t"):
                continue
            cols = line.rstrip("\n").split("\t")
            psi[cols[0]] = float(cols[7])
    out = os.path.join(OUT_DIR, "nwchem_crosscheck.tsv")
    rows = {}
    if only and os.path.exists(out):  # keep the rows that are not recomputed
        with open(out) as f:
            for line in f:
                if not line.startswith("#") and not line.startswith("name\t"):
                    rows[line.split("\t")[0]] = line
    version = nwchem_version()
    for mol, basis in NWCHEM_CASES:
        cid = case_id(mol, basis)
        if only and cid not in only:
            continue
        r = run_nwchem(mol, basis, basis_dir, nproc)
        # both energies as the tables print them, so the difference is reproducible
        diff = float("%.10f" % r["energy"]) - psi[cid]
        rows[cid] = "%s\t%s\t%.10f\t%.10f\t%.2e\t%d\t%s\n" % (
            cid, basis, psi[cid], r["energy"], diff, r["iterations"], "nwchem " + version)
        print("nwchem %-22s %18.10f  diff %.2e" % (cid, r["energy"], diff), flush=True)
    with open(out, "w") as f:
        f.write("# NWChem against Psi4 on the same basis data and nuclear positions; "
                "see docs/references.md\n")
        f.write("name\tbasis\tE_psi4[hartree]\tE_nwchem[hartree]\tdifference[hartree]\t"
                "nwchem_iterations\tprogram\n")
        f.writelines(rows[case_id(*c)] for c in NWCHEM_CASES if case_id(*c) in rows)
    print("wrote", out)


def main():
    ap = argparse.ArgumentParser(description=__doc__,
                                 formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("--basis-dir", default=DEFAULT_BASIS_DIR)
    ap.add_argument("--threads", type=int, default=2,
                    help="threads (psi4) or MPI ranks (nwchem) for timings and cross-checks")
    ap.add_argument("--table-threads", type=int, default=1,
                    help="psi4 threads for the energy table (its wall/cpu columns)")
    ap.add_argument("--table-repeats", type=int, default=2,
                    help="runs per case for the table; the fastest times are kept")
    ap.add_argument("--only", nargs="*", default=[], help="case names to recompute")
    ap.add_argument("--skip-psi4", action="store_true")
    ap.add_argument("--skip-nwchem", action="store_true")
    ap.add_argument("--timings", action="store_true", help="also write timings.tsv")
    ap.add_argument("--timing-repeats", type=int, default=3)
    ap.add_argument("--molecule-files-only", action="store_true")
    ap.add_argument("--single", nargs=2, metavar=("MOLECULE", "BASIS"), help=argparse.SUPPRESS)
    ap.add_argument("--result", help=argparse.SUPPRESS)
    args = ap.parse_args()

    if args.single:
        scratch = tempfile.mkdtemp(prefix="psiref_")
        try:
            r = run_psi4(args.single[0], args.single[1], args.basis_dir, args.threads, scratch)
        finally:
            shutil.rmtree(scratch, ignore_errors=True)
        with open(args.result, "w") as f:
            json.dump(r, f)
        return
    if args.molecule_files_only:
        write_molecule_files(CASES)
        return
    if not args.skip_psi4:
        main_table(args.basis_dir, args.table_threads, args.table_repeats, set(args.only))
    if not args.skip_nwchem:
        nwchem_table(args.basis_dir, args.threads, set(args.only))
    if args.timings:
        timings(args.basis_dir, args.threads, args.timing_repeats)


if __name__ == "__main__":
    main()
