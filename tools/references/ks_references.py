#!/usr/bin/python3
"""Independent Kohn-Sham reference energies for norvik.

Runs Psi4 (Debian's psi4 package, with its libxc) on a fixed list of
molecule/basis/functional rows, each on a large unpruned grid (the reference
value) and on Psi4's default grid (to compare grid errors later), and
cross-checks a subset with NWChem (Debian's nwchem package) on its xfine
grid. As in make_references.py, both programs get the basis sets from
shared/data/basis/*.json and the nuclear positions of the norvik molecule
file, converted to bohr with norvik's bohr = 0.5291772104 A.

Every functional is assembled from libxc components with explicit weights
(FUNCTIONALS below), so that the table does not depend on how a program
defines a name; --mapping shows that the assembled forms equal Psi4's own
named functionals where Psi4 has one.

Writes, under tests/references/data/:
  molecules_ks/<case>.mol     norvik molecule files for the molecule/basis
                              pairs that molecules/ (the Hartree-Fock set)
                              does not have; record 2 holds 'B3LYP', and a
                              test sets the functional of its row there
  ks_energies.tsv             the reference table (both grids)
  ks_grid_convergence.tsv     (--grid-check) larger grids and another
                              partition against the reference grid
  ks_mapping_check.tsv        (--mapping) assembled against named functionals
  ks_nwchem_crosscheck.tsv    NWChem (xfine grid) against the Psi4 table
  ks_timings.tsv              (--timings) B3LYP/6-31G* benzene and adamantane,
                              default grids, 2 threads / 2 MPI ranks

Run from the repository (shared/ next to it) with Debian's interpreter:
  PYTHONPATH=/usr/lib/x86_64-linux-gnu /usr/bin/python3 \
      tools/references/ks_references.py [--jobs 2] [--only NAME ...] \
      [--grid-check] [--mapping] [--timings] [--skip-psi4] [--skip-nwchem]

--only takes row names (case_FUNCTIONAL) and keeps the other rows of the
table. Rows run in --jobs parallel Psi4 processes of one thread each.
Nothing here is shipped in the library; the programs are only run as black
boxes and their numbers recorded.
"""

import argparse
import concurrent.futures
import json
import os
import re
import shlex
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, HERE)
import make_references as mr  # noqa: E402  (basis conversion, geometries, constants)

REPO = mr.REPO
OUT_DIR = mr.OUT_DIR
BOHR_ANGSTROM = mr.BOHR_ANGSTROM

# --------------------------------------------------------------------------
# Functionals: norvik name -> libxc components with weights (Psi4's
# dictionary form), the Psi4 name of the same functional (None where Psi4
# has none), and NWChem's xc line.
# LDA_C_VWN is VWN's fit to the Ceperley-Alder data ("VWN5"); LDA_C_VWN_RPA
# the same form fitted to the RPA energies (Psi4's and Gaussian's "VWN" in
# SVWN and B3LYP). GGA_C_OP_B88 is the one-parameter progressive correlation
# with its B88 parameter.
# --------------------------------------------------------------------------

FUNCTIONALS = {
    "SVWN5": ({"x_functionals": {"LDA_X": {}}, "c_functionals": {"LDA_C_VWN": {}}},
              None, "slater vwn_5"),
    "SVWN3": ({"x_functionals": {"LDA_X": {}}, "c_functionals": {"LDA_C_VWN_RPA": {}}},
              "SVWN", "slater vwn_1_rpa"),
    "BLYP": ({"x_functionals": {"GGA_X_B88": {}}, "c_functionals": {"GGA_C_LYP": {}}},
             "BLYP", "becke88 lyp"),
    "B3LYP": ({"x_functionals": {"LDA_X": {"alpha": 0.08}, "GGA_X_B88": {"alpha": 0.72}},
               "x_hf": {"alpha": 0.20},
               "c_functionals": {"LDA_C_VWN": {"alpha": 0.19}, "GGA_C_LYP": {"alpha": 0.81}}},
              "B3LYP5", "HFexch 0.20 slater 0.80 becke88 nonlocal 0.72 vwn_5 0.19 lyp 0.81"),
    "B3LYP3": ({"x_functionals": {"LDA_X": {"alpha": 0.08}, "GGA_X_B88": {"alpha": 0.72}},
                "x_hf": {"alpha": 0.20},
                "c_functionals": {"LDA_C_VWN_RPA": {"alpha": 0.19},
                                  "GGA_C_LYP": {"alpha": 0.81}}},
               "B3LYP", "HFexch 0.20 slater 0.80 becke88 nonlocal 0.72 vwn_1_rpa 0.19 lyp 0.81"),
    "BOP": ({"x_functionals": {"GGA_X_B88": {}}, "c_functionals": {"GGA_C_OP_B88": {}}},
            "BOP", "becke88 op"),
    "OP": ({"x_hf": {"alpha": 1.0}, "c_functionals": {"GGA_C_OP_B88": {}}},
           None, "HFexch 1.0 op"),
    "SPL": ({"x_functionals": {"LDA_X": {}}, "c_functionals": {"LDA_C_PZ": {}}},
            None, "slater perdew81"),
}
CORE = ["SVWN5", "SVWN3", "BLYP", "B3LYP", "B3LYP3"]
ALL = CORE + ["BOP", "OP", "SPL"]


def psi4_functional(name):
    d = json.loads(json.dumps(FUNCTIONALS[name][0]))
    d["name"] = "nv_" + name.lower()  # must not clash with Psi4's own names
    return d


# --------------------------------------------------------------------------
# Grids (Psi4). The reference grid: 150 Treutler radial shells x 974-point
# Lebedev spheres on every atom, Treutler partition, no pruning. The
# default grid is Psi4 1.3's: 75 x 302, Treutler, no pruning.
# --------------------------------------------------------------------------

GRIDS = {
    "reference": {"dft_radial_points": 150, "dft_spherical_points": 974,
                  "dft_radial_scheme": "TREUTLER", "dft_nuclear_scheme": "TREUTLER",
                  "dft_pruning_scheme": "FLAT", "dft_basis_tolerance": 1e-14},
    "default": {},
    "200x1202": {"dft_radial_points": 200, "dft_spherical_points": 1202,
                 "dft_radial_scheme": "TREUTLER", "dft_nuclear_scheme": "TREUTLER",
                 "dft_pruning_scheme": "FLAT", "dft_basis_tolerance": 1e-14},
    "200x1202_becke": {"dft_radial_points": 200, "dft_spherical_points": 1202,
                       "dft_radial_scheme": "TREUTLER", "dft_nuclear_scheme": "BECKE",
                       "dft_pruning_scheme": "FLAT", "dft_basis_tolerance": 1e-14},
    "250x1202": {"dft_radial_points": 250, "dft_spherical_points": 1202,
                 "dft_radial_scheme": "TREUTLER", "dft_nuclear_scheme": "TREUTLER",
                 "dft_pruning_scheme": "FLAT", "dft_basis_tolerance": 1e-14},
}

# --------------------------------------------------------------------------
# Molecule files. Pairs that the Hartree-Fock set already has are read from
# molecules/; the others are written to molecules_ks/ from the same
# idealised geometries (make_references.py) or the ones below.
# --------------------------------------------------------------------------

EXTRA_MOLECULES = {
    "sh": ("SH", mr.diatomic("S", "H", 1.3409), 0, 2),
}

NEW_FILES = [("ch4", "3-21G"), ("c10h16", "STO-3G"), ("sh", "6-31Gx"), ("c6h6", "6-31Gx")]

# (molecule file under tests/references/data/, functionals)
CASES = [
    ("molecules/h2o_6-31pGxx.mol", ALL),
    ("molecules/h2o_STO-3G.mol", CORE),
    ("molecules/nh3_6-31GxxC.mol", CORE),
    ("molecules/n2_6-31Gx.mol", CORE),
    ("molecules/hf_6-31pGx.mol", CORE),
    ("molecules_ks/ch4_3-21G.mol", CORE),
    ("molecules/hcl_6-31ppG.mol", ALL),
    ("molecules/sih4_6-31Gx.mol", CORE),
    ("molecules/h2s_6-31pG.mol", CORE),
    ("molecules/c6h6_6-31Gxx.mol", ["SVWN5", "B3LYP"]),
    ("molecules_ks/c10h16_STO-3G.mol", ["SVWN5", "B3LYP"]),
    # open shells (unrestricted)
    ("molecules/oh_6-31Gx.mol", ALL),
    ("molecules/ch2_6-31Gxx.mol", CORE),
    ("molecules/o2_6-31G.mol", CORE),
    ("molecules/nh2_6-31pGx.mol", CORE),
    ("molecules_ks/sh_6-31Gx.mol", CORE),
]

# Rows recomputed on larger grids and with the Becke partition.
GRID_CHECK = [("h2o_6-31pGxx", "B3LYP"), ("oh_6-31Gx", "BLYP"), ("hcl_6-31ppG", "SVWN5")]
GRID_CHECK_GRIDS = ["200x1202", "200x1202_becke", "250x1202"]

# Cases on which the assembled functionals are compared with Psi4's names.
MAPPING_CASES = ["h2o_6-31pGxx", "oh_6-31Gx"]

NWCHEM_ROWS = [("h2o_6-31pGxx", f) for f in ALL] + [
    ("oh_6-31Gx", "SVWN5"), ("oh_6-31Gx", "SVWN3"), ("oh_6-31Gx", "B3LYP"),
    ("oh_6-31Gx", "B3LYP3"), ("oh_6-31Gx", "BOP"),
    ("hcl_6-31ppG", "B3LYP"), ("n2_6-31Gx", "BLYP"), ("nh3_6-31GxxC", "B3LYP3"),
    ("ch2_6-31Gxx", "B3LYP"), ("sh_6-31Gx", "BLYP"), ("c10h16_STO-3G", "B3LYP")]

TIMING_FILES = ["molecules_ks/c6h6_6-31Gx.mol", "molecules/c10h16_6-31Gx.mol"]


def case_of(path):
    return os.path.splitext(os.path.basename(path))[0]


def write_new_molecule_files():
    mdir = os.path.join(OUT_DIR, "molecules_ks")
    os.makedirs(mdir, exist_ok=True)
    for mol, basis in NEW_FILES:
        label, atoms, charge, mult = EXTRA_MOLECULES.get(mol) or mr.MOLECULES[mol]
        text = mr.molecule_file_records(
            "B3LYP", basis, label, charge, mult, atoms,
            theory_comment="# theory (the tests write the functional of their row here)")
        with open(os.path.join(mdir, mr.case_id(mol, basis) + ".mol"), "w") as f:
            f.write(text)


def read_molecule_file(rel):
    """(basis, charge, multiplicity, [(symbol, x, y, z) angstrom]) of a norvik
    molecule file: comment and value records alternate, atoms from record 24."""
    with open(os.path.join(OUT_DIR, rel)) as f:
        lines = f.read().splitlines()

    def value(n):
        return shlex.split(lines[n - 1].split("/")[0])

    basis = value(4)[0]
    charge, mult = int(value(20)[0]), int(value(22)[0])
    atoms = []
    for line in lines[23:]:
        if line.strip():
            s, x, y, z = shlex.split(line)[:4]
            atoms.append((s, float(x), float(y), float(z)))
    return basis, charge, mult, atoms


# --------------------------------------------------------------------------
# Psi4, one process per task
# --------------------------------------------------------------------------


def with_restarts(mult, opts, run):
    """Calls run() with Psi4's options set to opts plus each restart below in
    turn, until one SCF converges; returns what run() returns.

    With DIIS alone, some radicals (OH) swap the singly occupied pi orbital
    back and forth for hundreds of cycles from any start. Open shells
    therefore start from the generalised Wolfsberg-Helmholz guess with few
    DIIS cycles allowed, then run the (slower) second-order solver, with
    strong damping as the last resort. On the large grid the RMS density
    change of a few radicals (SH, CH2) stalls at 1e-8 while the energy is
    steady to 1e-12, so the fallbacks ask for 1e-8 there; the energy
    criterion stays at 1e-10."""
    import psi4

    if mult == 1:
        starts = ({}, {"guess": "gwh"}, {"damping_percentage": 20})
    else:
        starts = ({"guess": "gwh", "maxiter": 60},
                  {"guess": "gwh", "soscf": True, "d_convergence": 1e-8, "maxiter": 100},
                  {"guess": "gwh", "damping_percentage": 50, "d_convergence": 1e-8})
    for retry in starts:
        psi4.core.clean()
        psi4.core.clean_options()
        psi4.set_options(dict(opts, **retry))
        try:
            return run()
        except psi4.driver.p4util.exceptions.SCFConvergenceError:
            if retry is starts[-1]:
                raise


def psi4_run(rel, functional, grids, basis_dir, threads, named=False):
    """SCF of one molecule file with one functional on each grid in `grids`.
    Returns {grid: {energy, iterations, wall}} and the basis size."""
    import psi4

    basis, charge, mult, atoms = read_molecule_file(rel)
    family, cart = mr.split_basis_name(basis)
    data = mr.load_basis(basis_dir, family)
    symbols = []
    for a in atoms:
        if a[0] not in symbols:
            symbols.append(a[0])
    scratch = tempfile.mkdtemp(prefix="ksref_")
    psi4.core.set_output_file(os.path.join(scratch, "psi4.out"), False)
    psi4.set_memory("3 GB")
    psi4.set_num_threads(threads)
    geo = ["units bohr", "no_com", "no_reorient", "symmetry c1", "%d %d" % (charge, mult)]
    geo += ["%s %.17g %.17g %.17g" % (s, x / BOHR_ANGSTROM, y / BOHR_ANGSTROM, z / BOHR_ANGSTROM)
            for s, x, y, z in atoms]
    molecule = psi4.geometry("\n".join(geo), name="m")
    label = "nv_" + re.sub(r"[^a-z0-9]", "_", basis.lower())
    psi4.basis_helper(mr.psi4_gbs(data, symbols, cart, label), name=label)
    func = FUNCTIONALS[functional][1] if named else psi4_functional(functional)
    out = {}
    nbf = None
    for g in grids:
        opts = {"reference": "rks" if mult == 1 else "uks", "scf_type": "pk",
                "e_convergence": 1e-10, "d_convergence": 1e-9, "ints_tolerance": 1e-14,
                "maxiter": 300, "basis": label}
        opts.update(GRIDS[g])
        t0 = time.perf_counter()
        energy, wfn = with_restarts(mult, opts, lambda: psi4.energy(
            "scf", dft_functional=func, molecule=molecule, return_wfn=True))
        wall = time.perf_counter() - t0
        nbf = wfn.basisset().nbf()
        expected = mr.nbasis_expected(data, [a[0] for a in atoms], cart)
        if nbf != expected or wfn.nmo() != nbf:
            raise RuntimeError("%s: psi4 has %d functions (%d MOs), expected %d" %
                               (rel, nbf, wfn.nmo(), expected))
        out[g] = {"energy": energy, "iterations": int(psi4.variable("SCF ITERATIONS")),
                  "wall": wall}
    return {"nbasis": nbf, "grids": out}


def psi4_task(args, rel, functional, grids, named=False, threads=1, time_v=False):
    """Runs psi4_run in a child process (optionally under /usr/bin/time -v)."""
    with tempfile.TemporaryDirectory(prefix="ksref_") as tmp:
        res = os.path.join(tmp, "r.json")
        cmd = [sys.executable, os.path.abspath(__file__), "--task", rel, functional,
               ",".join(grids), "--result", res, "--basis-dir", args.basis_dir,
               "--threads", str(threads)]
        if named:
            cmd.append("--named")
        if time_v:
            cmd = ["/usr/bin/time", "-v"] + cmd
        proc = subprocess.run(cmd, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              universal_newlines=True, cwd=tmp)
        if proc.returncode != 0:
            raise RuntimeError("psi4 %s %s failed:\n%s" % (rel, functional,
                                                          (proc.stdout + proc.stderr)[-3000:]))
        with open(res) as f:
            r = json.load(f)
        if time_v:
            r["time_v"] = proc.stderr
        return r


def run_parallel(jobs, tasks):
    """tasks: list of (key, callable). Yields (key, result) as they finish.
    A failed task is reported and left out, so that it does not cost the
    results of the others; the caller finds its row missing."""
    with concurrent.futures.ThreadPoolExecutor(max_workers=jobs) as pool:
        futs = {pool.submit(fn): key for key, fn in tasks}
        for fut in concurrent.futures.as_completed(futs):
            try:
                result = fut.result()
            except Exception as exc:  # noqa: BLE001
                print("FAILED %s: %s" % (futs[fut], str(exc)[-1500:]), flush=True)
                continue
            yield futs[fut], result


def psi4_version():
    return subprocess.run(["dpkg-query", "-W", "-f=${Version}", "psi4"], stdout=subprocess.PIPE,
                          universal_newlines=True).stdout.strip().split(":")[-1].split("+")[0]


# --------------------------------------------------------------------------
# Tables
# --------------------------------------------------------------------------

ENERGY_HEADER = ("name\tmolecule_file\tbasis\tcharge\tmultiplicity\tfunctional\tprogram\t"
                 "E_converged_grid[hartree]\tE_default_grid[hartree]\tnbasis\twall[s]\n")


def row_name(rel, functional):
    return case_of(rel) + "_" + functional


def read_rows(path):
    rows = {}
    if os.path.exists(path):
        with open(path) as f:
            for line in f:
                if not line.startswith("#") and not line.startswith("name\t"):
                    rows[line.split("\t")[0]] = line
    return rows


def energy_table(args):
    path = os.path.join(OUT_DIR, "ks_energies.tsv")
    rows = read_rows(path) if args.only else {}
    order = [(rel, f) for rel, funcs in CASES for f in funcs]
    todo = [(rel, f) for rel, f in order if not args.only or row_name(rel, f) in args.only]
    version = "psi4 " + psi4_version()
    tasks = [((rel, f), (lambda rel=rel, f=f: psi4_task(args, rel, f, ["reference", "default"])))
             for rel, f in todo]
    for (rel, f), r in run_parallel(args.jobs, tasks):
        basis, charge, mult, _ = read_molecule_file(rel)
        ref, dflt = r["grids"]["reference"], r["grids"]["default"]
        if abs(ref["energy"] - dflt["energy"]) > 1e-3:
            raise RuntimeError("%s: grids disagree by %.2e; different SCF solutions?" %
                               (row_name(rel, f), ref["energy"] - dflt["energy"]))
        rows[row_name(rel, f)] = "\t".join([
            row_name(rel, f), rel, basis, "%d" % charge, "%d" % mult, f, version,
            "%.10f" % ref["energy"], "%.10f" % dflt["energy"], "%d" % r["nbasis"],
            "%.1f" % ref["wall"]]) + "\n"
        print("%-28s %18.10f %18.10f  %3d it  %6.1f s" % (
            row_name(rel, f), ref["energy"], dflt["energy"], ref["iterations"], ref["wall"]),
            flush=True)
        write_table(path, rows, order)
    write_table(path, rows, order)
    missing = [row_name(rel, f) for rel, f in todo if row_name(rel, f) not in rows]
    print("wrote", path, "; missing rows: " + " ".join(missing) if missing else "")


def write_table(path, rows, order):
    with open(path, "w") as f:
        f.write("# Kohn-Sham reference energies (RKS closed shell, UKS open shell); converged "
                "grid: Treutler 150 x Lebedev 974 per atom, Treutler partition, unpruned; "
                "default grid: Psi4 1.3 default (75 x 302); see docs/references.md\n")
        f.write(ENERGY_HEADER)
        for rel, fn in order:
            if row_name(rel, fn) in rows:
                f.write(rows[row_name(rel, fn)])


def table_energy(name):
    rows = read_rows(os.path.join(OUT_DIR, "ks_energies.tsv"))
    if name not in rows:
        return None
    return float(rows[name].split("\t")[7])


def rel_of(case):
    for rel, _ in CASES:
        if case_of(rel) == case:
            return rel
    raise KeyError(case)


def grid_check(args):
    path = os.path.join(OUT_DIR, "ks_grid_convergence.tsv")
    grids = ["reference"] + GRID_CHECK_GRIDS
    tasks = [((c, f), (lambda c=c, f=f: psi4_task(args, rel_of(c), f, grids)))
             for c, f in GRID_CHECK]
    res = dict(run_parallel(args.jobs, tasks))
    with open(path, "w") as out:
        out.write("# Grid convergence: Psi4 energies on larger grids (and the Becke partition) "
                  "minus the converged-grid energy of ks_energies.tsv; see docs/references.md\n")
        out.write("name\tfunctional\tgrid\tE[hartree]\tE_minus_reference[hartree]\n")
        for c, f in GRID_CHECK:
            if (c, f) not in res:
                continue
            ref = float("%.10f" % res[(c, f)]["grids"]["reference"]["energy"])
            table = table_energy(c + "_" + f)
            if table is not None and abs(table - ref) > 2e-10:
                raise RuntimeError("%s %s: rerun differs from ks_energies.tsv" % (c, f))
            out.write("%s\t%s\t%s\t%.10f\t%.1e\n" % (c, f, "150x974 (reference)", ref, 0.0))
            for g in GRID_CHECK_GRIDS:
                e = res[(c, f)]["grids"][g]["energy"]
                diff = float("%.10f" % e) - ref
                out.write("%s\t%s\t%s\t%.10f\t%.1e\n" % (c, f, g, e, diff))
                print("grid %-16s %-6s %-16s %18.10f %9.1e" % (c, f, g, e, diff), flush=True)
    print("wrote", path)


def mapping_check(args):
    path = os.path.join(OUT_DIR, "ks_mapping_check.tsv")
    named = [f for f in ALL if FUNCTIONALS[f][1]]
    tasks = []
    for c in MAPPING_CASES:
        for f in named:
            for nm in (False, True):
                tasks.append(((c, f, nm), (lambda c=c, f=f, nm=nm:
                                           psi4_task(args, rel_of(c), f, ["default"], named=nm))))
    res = dict(run_parallel(args.jobs, tasks))
    with open(path, "w") as out:
        out.write("# Functionals assembled from libxc components (ks_references.py) against "
                  "Psi4's named functionals, Psi4 default grid; see docs/references.md\n")
        out.write("name\tfunctional\tpsi4_name\tE_assembled[hartree]\tE_psi4_named[hartree]\t"
                  "difference[hartree]\n")
        for c in MAPPING_CASES:
            for f in named:
                a = float("%.10f" % res[(c, f, False)]["grids"]["default"]["energy"])
                b = float("%.10f" % res[(c, f, True)]["grids"]["default"]["energy"])
                out.write("%s\t%s\t%s\t%.10f\t%.10f\t%.1e\n" % (c, f, FUNCTIONALS[f][1], a, b,
                                                               a - b))
                print("map %-14s %-7s %-7s %.1e" % (c, f, FUNCTIONALS[f][1], a - b), flush=True)
    print("wrote", path)


# --------------------------------------------------------------------------
# NWChem
# --------------------------------------------------------------------------


def nwchem_input(rel, functional, basis_dir, workdir, grid="xfine", tight=True):
    basis, charge, mult, atoms = read_molecule_file(rel)
    family, cart = mr.split_basis_name(basis)
    data = mr.load_basis(basis_dir, family)
    symbols = []
    for a in atoms:
        if a[0] not in symbols:
            symbols.append(a[0])
    lines = ["start job", "scratch_dir " + workdir, "permanent_dir " + workdir,
             "memory total 3000 mb", "charge %d" % charge,
             "geometry units au noautoz nocenter noautosym", "  symmetry c1"]
    lines += ["  %s %.17g %.17g %.17g" % (s, x / BOHR_ANGSTROM, y / BOHR_ANGSTROM,
                                          z / BOHR_ANGSTROM) for s, x, y, z in atoms]
    lines.append("end")
    lines.append(mr.nwchem_basis(data, symbols, cart).rstrip("\n"))
    lines += ["dft", "  xc " + FUNCTIONALS[functional][2], "  mult %d" % mult]
    if mult != 1:
        lines.append("  odft")
    if grid:
        lines.append("  grid " + grid)
    if tight:
        lines += ["  convergence energy 1e-10 density 1e-9", "  tolerances tight",
                  "  iterations 300"]
    lines += ["end", "task dft energy"]
    return "\n".join(lines) + "\n"


def parse_nwchem_dft(text):
    m = re.findall(r"Total DFT energy =\s*(-?\d+\.\d+)", text)
    if not m:
        raise RuntimeError("no DFT energy in NWChem output:\n" + text[-3000:])
    its = [int(x) for x in re.findall(r"^\s*d=\s*\d+,ls=[\d.]+,diis\s+(\d+)\s", text, re.M)]
    wall = re.findall(r"Total times\s+cpu:\s*[\d.]+s\s+wall:\s*([\d.]+)s", text)
    return float(m[-1]), max(its) if its else 0, float(wall[-1]) if wall else float("nan")


def run_nwchem(rel, functional, basis_dir, nproc, grid="xfine", tight=True, time_v=False):
    work = tempfile.mkdtemp(prefix="nwks_")
    try:
        inp = os.path.join(work, "job.nw")
        with open(inp, "w") as f:
            f.write(nwchem_input(rel, functional, basis_dir, work, grid, tight))
        cmd = mr.nwchem_command(nproc) + [inp]
        if time_v:
            cmd = ["/usr/bin/time", "-v"] + cmd
        proc = subprocess.run(cmd, cwd=work, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              universal_newlines=True, env=dict(os.environ, OMP_NUM_THREADS="1"))
        if proc.returncode != 0:
            raise RuntimeError("nwchem failed for %s %s:\n%s" %
                               (rel, functional, (proc.stdout + proc.stderr)[-3000:]))
        energy, iters, nw_wall = parse_nwchem_dft(proc.stdout)
        return {"energy": energy, "iterations": iters, "nwchem_wall": nw_wall,
                "time_v": proc.stderr if time_v else ""}
    finally:
        subprocess.run(["rm", "-rf", work])


def nwchem_table(args):
    out = os.path.join(OUT_DIR, "ks_nwchem_crosscheck.tsv")
    rows = read_rows(out) if args.only else {}
    version = "nwchem " + mr.nwchem_version()
    todo = [(c, f) for c, f in NWCHEM_ROWS if not args.only or c + "_" + f in args.only]
    nproc = 1 if args.jobs > 1 else 2
    tasks = [((c, f), (lambda c=c, f=f: run_nwchem(rel_of(c), f, args.basis_dir, nproc)))
             for c, f in todo]
    for (c, f), r in run_parallel(args.jobs, tasks):
        psi = table_energy(c + "_" + f)
        diff = float("%.10f" % r["energy"]) - psi
        rows[c + "_" + f] = "%s\t%s\t%s\t%.10f\t%.10f\t%.1e\t%d\t%s\t%s\n" % (
            c + "_" + f, c, f, psi, r["energy"], diff, r["iterations"], version,
            FUNCTIONALS[f][2])
        print("nwchem %-16s %-7s %18.10f  diff %.1e" % (c, f, r["energy"], diff), flush=True)
    with open(out, "w") as fo:
        fo.write("# NWChem (xfine grid) against the Psi4 converged-grid energies of "
                 "ks_energies.tsv; same basis data and nuclear positions; "
                 "see docs/references.md\n")
        fo.write("name\tcase\tfunctional\tE_psi4[hartree]\tE_nwchem[hartree]\t"
                 "difference[hartree]\tnwchem_iterations\tprogram\tnwchem_xc\n")
        fo.writelines(rows[c + "_" + f] for c, f in NWCHEM_ROWS if c + "_" + f in rows)
    print("wrote", out)


# --------------------------------------------------------------------------
# Timings
# --------------------------------------------------------------------------


def timings(args):
    def load():
        return os.getloadavg()[0]
    load_start = load()
    rows = []
    for rel in TIMING_FILES:
        basis, _, _, atoms = read_molecule_file(rel)
        family, cart = mr.split_basis_name(basis)
        nbf = mr.nbasis_expected(mr.load_basis(args.basis_dir, family), [a[0] for a in atoms],
                                 cart)
        for program in ("psi4", "nwchem"):
            runs = []
            for _ in range(args.timing_repeats):
                if program == "psi4":
                    r = psi4_task(args, rel, "B3LYP", ["default"], threads=2, time_v=True)
                    g = r["grids"]["default"]
                    r.update(energy=g["energy"], iterations=g["iterations"], wall_scf=g["wall"])
                    label, par = "psi4 " + psi4_version(), "2 threads"
                else:
                    r = run_nwchem(rel, "B3LYP", args.basis_dir, 2, grid=None, tight=False,
                                   time_v=True)
                    r["wall_scf"] = r["nwchem_wall"]
                    label, par = "nwchem " + mr.nwchem_version(), "2 MPI ranks"
                r["wall_total"], r["cpu"], r["rss"] = mr.parse_time_v(r["time_v"])
                runs.append(r)
            best = min(runs, key=lambda x: x["wall_total"])
            rows.append((case_of(rel), basis, len(atoms), label, par, nbf,
                         best["iterations"], best["energy"], best["wall_total"],
                         best["wall_scf"], best["cpu"], best["rss"], len(runs)))
            print("timing %-8s %-16s %7.1f s  %d it  %.0f MiB" % (
                program, case_of(rel), best["wall_total"], best["iterations"], best["rss"]),
                flush=True)
    path = os.path.join(OUT_DIR, "ks_timings.tsv")
    with open(path, "w") as f:
        f.write("# B3LYP (VWN5 form) single points on each program's default grid, %d cores, "
                "load average %.1f at start and %.1f at end; see docs/references.md\n" %
                (os.cpu_count(), load_start, load()))
        f.write("case\tbasis\tatoms\tprogram\tparallel\tnbasis\tscf_iterations\tE[hartree]\t"
                "wall_total[s]\twall_scf[s]\tcpu[s]\tpeak_rss[MiB]\truns\n")
        for row in rows:
            f.write("%s\t%s\t%d\t%s\t%s\t%d\t%d\t%.10f\t%.2f\t%.2f\t%.2f\t%.1f\t%d\n" % row)
    print("wrote", path)


def main():
    ap = argparse.ArgumentParser(description=__doc__,
                                 formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("--basis-dir", default=mr.DEFAULT_BASIS_DIR)
    ap.add_argument("--jobs", type=int, default=2, help="parallel one-thread processes")
    ap.add_argument("--only", nargs="*", default=[], help="row names to recompute")
    ap.add_argument("--skip-psi4", action="store_true")
    ap.add_argument("--skip-nwchem", action="store_true")
    ap.add_argument("--grid-check", action="store_true")
    ap.add_argument("--mapping", action="store_true")
    ap.add_argument("--timings", action="store_true")
    ap.add_argument("--timing-repeats", type=int, default=1)
    ap.add_argument("--threads", type=int, default=1, help=argparse.SUPPRESS)
    ap.add_argument("--task", nargs=3, help=argparse.SUPPRESS)
    ap.add_argument("--named", action="store_true", help=argparse.SUPPRESS)
    ap.add_argument("--result", help=argparse.SUPPRESS)
    args = ap.parse_args()
    args.only = set(args.only)

    if args.task:
        rel, functional, grids = args.task
        r = psi4_run(rel, functional, grids.split(","), args.basis_dir, args.threads,
                     args.named)
        with open(args.result, "w") as f:
            json.dump(r, f)
        return
    write_new_molecule_files()
    if not args.skip_psi4:
        energy_table(args)
    if args.mapping:
        mapping_check(args)
    if args.grid_check:
        grid_check(args)
    if not args.skip_nwchem:
        nwchem_table(args)
    if args.timings:
        timings(args)


if __name__ == "__main__":
    main()
