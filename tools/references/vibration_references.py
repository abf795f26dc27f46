#!/usr/bin/env python3
"""Reference numbers for harmonic vibrations, infrared and Raman intensities,
static polarisabilities and ideal-gas thermochemistry, from Psi4 1.3.2 and
NWChem 7.0.2 (Debian's packages) run as black boxes at Psi4's optimised
geometries (tests/references/data/optimized.tsv: the HF geometry for the
Hartree-Fock rows, the B3LYP one for the Kohn-Sham rows), with norvik's
atomic masses (ATOMMASS: H 1.00794, C 12.0107, N 14.0067, O 15.9994,
F 18.9984032) in every program.

Writes, under tests/references/data/:
  molecules_opt/c10h16_STO-3G.mol  start geometry of the adamantane optimisation
  optimized_large.tsv   its Psi4 HF/STO-3G optimised geometry (optimized.tsv's columns)
  hf_frequencies.tsv    HF wavenumbers and Psi4's IR intensities
  ks_frequencies.tsv    B3LYP wavenumbers (5-point differences of analytic gradients)
  ir_raman.tsv          NWChem frequencies, IR intensities, Raman activities and
                        depolarisation ratios
  polarizabilities.tsv  static dipole polarisability tensors
  thermo.tsv            Psi4's thermochemistry of the HF wavenumbers

usage (from the repository, shared/ next to it):
  PYTHONPATH=/usr/lib/x86_64-linux-gnu nice -n 10 /usr/bin/python3 \\
      tools/references/vibration_references.py [--parts hf ks raman polar ...] [--only NAME ...]

Parts: optimise (adamantane), hf (hf_frequencies.tsv and thermo.tsv), ks, raman, polar.
--only recomputes the named rows and keeps the others. Every Psi4 calculation runs
in a child process of one thread in a scratch folder under /tmp.
"""
import argparse
import json
import math
import os
import re
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, HERE)
import gradient_references as gr  # noqa: E402
import ks_references as ks  # noqa: E402
import make_references as mr  # noqa: E402

DATA = mr.OUT_DIR
MASSES = {"H": 1.00794, "C": 12.0107, "N": 14.0067, "O": 15.9994, "F": 18.9984032}
BOHR_ANGSTROM = mr.BOHR_ANGSTROM

# Hartree-Fock rows: optimized.tsv's molecules but ZnH2, and adamantane in
# STO-3G at its own optimised geometry (optimized_large.tsv).
HF_MOLECULES = ["h2o", "nh3", "ch4", "c2h4", "c2h2", "coh2", "hf", "n2", "co", "h2o2", "c6h6",
                "ch3"]
LARGE = "c10h16_STO-3G_HF"
HF_ROWS = ["%s_6-31Gx_HF" % m for m in HF_MOLECULES] + [LARGE]
KS_ROWS = ["%s_6-31Gx_B3LYP" % m for m in ["h2o", "hf", "co", "nh3", "c2h2", "ch4"]]
RAMAN_ROWS = ["%s_6-31Gx_HF" % m for m in ["h2o", "nh3", "ch4", "c2h4", "c2h2", "coh2", "hf",
                                             "n2", "co", "h2o2"]]
# CH3 (UHF): NWChem's analytic UHF Hessian gives the IR intensities
NWCHEM_IR_ONLY = ["ch3_6-31Gx_HF"]
POLAR_FUNCTIONALS = ["B3LYP", "SVWN5", "SVWN3"]
NWCHEM_POLAR_CHECKS = ["h2o_6-31Gx_HF", "c2h4_6-31Gx_HF"]
POLAR_KS_MOLECULES = ["h2o", "hf", "co", "nh3"]

FD_POINTS = 5  # Psi4 findif stencil for Hessians from gradients
FD_DISP = 0.005  # Psi4's disp_size (its default), in its mass-weighted SALC units
CPHF_CONVERGENCE = 1e-10
RAMAN_DQ = 0.005  # NWChem raman step along each normal mode


# --------------------------------------------------------------------------
# Geometries
# --------------------------------------------------------------------------

def table_rows(path):
    with open(path) as f:
        rows = [line.rstrip("\n").split("\t") for line in f if not line.startswith("#")]
    return [dict(zip(rows[0], r)) for r in rows[1:]]


def optimised(name):
    for path in ("optimized.tsv", "optimized_large.tsv"):
        full = os.path.join(DATA, path)
        if os.path.exists(full):
            for r in table_rows(full):
                if r["name"] == name:
                    return r
    raise KeyError(name)


def geometry_of(row):
    atoms = []
    for item in row["geometry[A]"].split("; "):
        s, x, y, z = item.split()
        atoms.append((s, float(x), float(y), float(z)))
    return atoms


def geometry_text(atoms):
    return "; ".join("%s %s %s %s" % (a[0], mr.fixed(a[1], 6), mr.fixed(a[2], 6),
                                      mr.fixed(a[3], 6)) for a in atoms)


LARGE_FILE = "molecules_opt/c10h16_STO-3G.mol"


def write_large_molecule_file():
    label, atoms, charge, mult = mr.MOLECULES["c10h16"]
    atoms = [(s, round(x, 6) + 0.0, round(y, 6) + 0.0, round(z, 6) + 0.0)
             for s, x, y, z in gr.centred(atoms)]
    text = mr.molecule_file_records(
        "HF", "STO-3G", label, charge, mult, atoms,
        theory_comment="# theory (the Kohn-Sham tests write the functional of their row here)")
    with open(os.path.join(DATA, LARGE_FILE), "w") as f:
        f.write(text)


# --------------------------------------------------------------------------
# Psi4 tasks (run in a child process)
# --------------------------------------------------------------------------

def psi4_molecule(name, scratch, threads=1):
    row = optimised(name)
    atoms = geometry_of(row)
    molecule, opts, atoms, _, mult, expected = gr.psi4_setup(
        row["molecule_file"], mr.DEFAULT_BASIS_DIR, threads, scratch, atoms)
    for i, a in enumerate(atoms):
        molecule.set_mass(i, MASSES[a[0]])
    return row, molecule, opts, atoms, mult, expected


def psi4_sigma(atoms, mult):
    """Psi4's rotational symmetry number of a geometry, from its own detection
    of the full point group (the calculations themselves run in C1)."""
    import psi4
    geo = ["units angstrom", "0 %d" % mult]
    geo += ["%s %.17g %.17g %.17g" % a for a in atoms]
    m = psi4.geometry("\n".join(geo), name="sym")
    m.update_geometry()
    return int(m.rotational_symmetry_number()), m.get_full_point_group()


def ideal_shape(name):
    """The unrounded start geometry of a row's optimisation: the same point
    group as the optimised one, symmetric to machine precision. Psi4 looks
    for the full point group with a tolerance of 1e-8, so the 6-decimal
    optimised geometries (NH3: C3 broken by 5e-7 A) fall back to a subgroup.
    Coordinates within 1e-6 A of zero are set to zero: the trigonometry of the
    CH3 shape leaves its hydrogens 1.4e-8 A out of the plane, which Psi4 sees
    as C3v instead of D3h."""
    mol = name.split("_")[0]
    shape = mr.MOLECULES["c10h16"][1] if name == LARGE else gr.OPT_MOLECULES[mol][1]
    return [(a[0],) + tuple(0.0 if abs(c) < 1e-6 else c for c in a[1:]) for a in shape]


def frequency_task(name, method, scratch):
    """Harmonic analysis: analytic RHF Hessian, or 5-point differences of
    analytic gradients (UHF, Kohn-Sham on the converged grid); Psi4's IR
    intensities where it has dipole derivatives, and its thermochemistry."""
    import numpy as np
    import psi4
    from psi4.driver import qcdb

    row, molecule, opts, atoms, mult, expected = psi4_molecule(name, scratch)
    kwargs = {}
    if method == "HF":
        opts["reference"] = "rhf" if mult == 1 else "uhf"
        dertype = 2 if mult == 1 else 1
    else:
        opts["reference"] = "rks" if mult == 1 else "uks"
        opts.update(ks.GRIDS["reference"])
        kwargs["dft_functional"] = ks.psi4_functional(method)
        dertype = 1
    if dertype == 1:
        opts["points"] = FD_POINTS
        opts["disp_size"] = FD_DISP
    energy, wfn = ks.with_restarts(mult, opts, lambda: psi4.frequency(
        "scf", molecule=molecule, return_wfn=True, dertype=dertype, **kwargs))
    gr.check_basis(wfn, expected, name)
    vib = qcdb.vib.filter_nonvib(wfn.frequency_analysis)
    omega = vib["omega"].data
    if np.any(np.abs(omega.imag) > 0):
        raise RuntimeError("%s: imaginary frequencies %s" % (name, omega))
    out = {"energy": energy, "wavenumbers": [float(v) for v in omega.real],
           "atoms": atoms, "mult": mult, "dertype": dertype,
           "ir": [float(v) for v in vib["IR_intensity"].data] if "IR_intensity" in vib else None}
    if method == "HF":
        out["thermo"] = thermo_of(name, molecule, atoms, mult, wfn.frequency_analysis, energy)
    psi4.core.clean()
    return out


def thermo_of(name, molecule, atoms, mult, vibinfo, energy):
    import numpy as np
    import psi4
    from psi4.driver import qcdb

    sigma_table, group_table = psi4_sigma(atoms, mult)
    sigma, group = psi4_sigma(ideal_shape(name), mult)
    # Psi4 takes the moments of inertia about the origin of the coordinates,
    # so the rotational constants come from a copy that Psi4 moves to the
    # centre of mass (the calculations keep no_com); masses as "H@1.00794".
    geo = ["units bohr", "symmetry c1", "0 %d" % mult]
    geo += ["%s@%s %.17g %.17g %.17g" % (s, MASSES[s], x / BOHR_ANGSTROM, y / BOHR_ANGSTROM,
                                         z / BOHR_ANGSTROM) for s, x, y, z in atoms]
    rotor_molecule = psi4.geometry("\n".join(geo), name="rotor")
    rotor_molecule.update_geometry()
    rotor = rotor_molecule.rotor_type()
    mass = float(sum(rotor_molecule.mass(i) for i in range(rotor_molecule.natom())))
    rot = np.asarray(rotor_molecule.rotational_constants())
    info, _ = qcdb.vib.thermo(vibinfo, T=298.15, P=101325.0, multiplicity=mult,
                              molecular_mass=mass, E0=energy, sigma=sigma,
                              rot_const=rot, rotor_type=rotor)
    out = {"point_group": group, "rotor": rotor, "mass": mass, "sigma_table": sigma_table,
           "point_group_table": group_table,
           "rot_const": [float(v) for v in rot]}
    for k, v in info.items():
        d = v.data
        if isinstance(d, (int, float, np.floating)):
            out[k] = float(d)
    out["sigma"] = sigma
    return out


def polar_task(name, method, grid, scratch):
    """Static dipole polarisability of Psi4's coupled-perturbed SCF."""
    import psi4

    row, molecule, opts, atoms, mult, expected = psi4_molecule(name, scratch)
    kwargs = {}
    if method == "HF":
        opts["reference"] = "rhf"
    else:
        opts["reference"] = "rks"
        opts.update(ks.GRIDS[grid])
        kwargs["dft_functional"] = ks.psi4_functional(method)
    opts["solver_convergence"] = CPHF_CONVERGENCE
    opts["solver_maxiter"] = 200
    wfn = ks.with_restarts(mult, opts, lambda: psi4.properties(
        "scf", properties=["DIPOLE_POLARIZABILITIES"], molecule=molecule, return_wfn=True,
        **kwargs))
    wfn = wfn[1] if isinstance(wfn, tuple) else wfn
    gr.check_basis(wfn, expected, name)
    tensor = [[psi4.variable("DIPOLE POLARIZABILITY %s%s" % (a, b)) for b in "XYZ"]
              for a in "XYZ"]
    energy = wfn.energy()
    psi4.core.clean()
    return {"tensor": tensor, "energy": energy}


FIELD = 0.002  # au, finite-field check of the UHF polarisability


def finite_field_task(name, scratch):
    """Diagonal of the UHF polarisability by 5-point differences of Psi4
    energies in a uniform field (perturb_h dipole): a check on NWChem's
    open-shell response."""
    import psi4

    row, molecule, opts, atoms, mult, expected = psi4_molecule(name, scratch)
    out = []
    for axis in range(3):
        energies = {}
        for k in (-2, -1, 0, 1, 2):
            o = dict(opts, reference="uhf", e_convergence=1e-12, d_convergence=1e-10,
                     guess="gwh")
            if k:
                field = [0.0, 0.0, 0.0]
                field[axis] = k * FIELD
                o.update(perturb_h=True, perturb_with="dipole", perturb_dipole=field)
            psi4.core.clean()
            psi4.core.clean_options()
            psi4.set_options(o)
            energies[k] = psi4.energy("scf", molecule=molecule)
        out.append(-(-energies[2] + 16 * energies[1] - 30 * energies[0] + 16 * energies[-1] -
                     energies[-2]) / (12 * FIELD * FIELD))
    return {"diagonal": out}


def optimise_task(scratch):
    """Psi4 HF/STO-3G optimisation of adamantane, optking's defaults but
    g_convergence gau_tight."""
    import numpy as np
    import psi4

    molecule, opts, atoms, _, mult, expected = gr.psi4_setup(LARGE_FILE, mr.DEFAULT_BASIS_DIR,
                                                             1, scratch)
    opts["reference"] = "rhf"
    opts["g_convergence"] = "gau_tight"
    energy, wfn, history = ks.with_restarts(mult, opts, lambda: psi4.optimize(
        "scf", molecule=molecule, return_wfn=True, return_history=True))
    gr.check_basis(wfn, expected, LARGE_FILE)
    geom = np.asarray(molecule.geometry()) * BOHR_ANGSTROM
    final = [(a[0],) + tuple(round(float(c), 6) + 0.0 for c in geom[i])
             for i, a in enumerate(atoms)]
    return {"energy": energy, "atoms": final, "steps": len(history["energy"]),
            "max_gradient": float(np.max(np.abs(np.asarray(history["gradient"][-1]))))}


def child_main(task, result):
    scratch = os.getcwd()
    kind = task[0]
    if kind == "freq":
        r = frequency_task(task[1], task[2], scratch)
    elif kind == "polar":
        r = polar_task(task[1], task[2], task[3], scratch)
    elif kind == "optimise":
        r = optimise_task(scratch)
    elif kind == "finite_field":
        r = finite_field_task(task[1], scratch)
    else:
        raise ValueError(kind)
    with open(result, "w") as f:
        json.dump(r, f)


def run_child(task):
    with tempfile.TemporaryDirectory(prefix="vibref_") as tmp:
        res = os.path.join(tmp, "r.json")
        cmd = [sys.executable, os.path.abspath(__file__), "--task", json.dumps(task),
               "--result", res]
        proc = subprocess.run(cmd, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              universal_newlines=True, cwd=tmp)
        if proc.returncode != 0:
            raise RuntimeError("psi4 %s failed:\n%s" % (task, (proc.stdout + proc.stderr)[-3000:]))
        with open(res) as f:
            return json.load(f)


# --------------------------------------------------------------------------
# NWChem: analytic SCF Hessian, IR intensities, Raman by differences of the
# static response polarisability along the normal modes
# --------------------------------------------------------------------------

def nwchem_input(name, work, raman):
    row = optimised(name)
    atoms = geometry_of(row)
    basis, charge, mult, _ = ks.read_molecule_file(row["molecule_file"])
    family, cart = mr.split_basis_name(basis)
    data = mr.load_basis(mr.DEFAULT_BASIS_DIR, family)
    symbols = list(dict.fromkeys(a[0] for a in atoms))
    lines = ["start job", "scratch_dir " + work, "permanent_dir " + work,
             "memory total 2000 mb", "charge %d" % charge,
             "geometry units au noautoz nocenter noautosym", "  symmetry c1"]
    lines += ["  %s %.17g %.17g %.17g mass %s" % (s, x / BOHR_ANGSTROM, y / BOHR_ANGSTROM,
                                                  z / BOHR_ANGSTROM, MASSES[s])
              for s, x, y, z in atoms]
    lines += ["end", mr.nwchem_basis(data, symbols, cart).rstrip("\n"),
              "scf", "  thresh 1e-10", "  tol2e 1e-14", "  maxiter 300"]
    if mult != 1:
        lines += ["  uhf", "  nopen %d" % (mult - 1)]
    lines += ["end", "hessian", "  thresh 1e-8", "end"]
    if raman:
        n = len(atoms)
        first = 6 if linear(atoms) else 7
        lines += ["property", "  response 1 0.0", "  convergence 1e-8", "end",
                  "raman", "  normal", "  first %d" % first, "  last %d" % (3 * n),
                  "  dq %g" % RAMAN_DQ, "end", "task scf raman"]
    else:
        lines.append("task scf freq")
    return "\n".join(lines) + "\n"


def linear(atoms):
    import numpy as np
    p = np.array([a[1:] for a in atoms])
    d = p - p[0]
    return bool(np.linalg.matrix_rank(d, tol=1e-4) <= 1)


def parse_projected(text, nvib):
    """(wavenumbers, IR intensities in km/mol) of the vibrations from
    NWChem's projected frequency analysis."""
    i = text.index("Projected Infra Red Intensities")
    rows = []
    for line in text[i:].splitlines()[3:]:
        m = re.match(r"\s*(\d+)\s+(-?[\d.]+)\s+\|\|\s+(-?[\d.]+)\s+(-?[\d.]+)\s+(-?[\d.]+)", line)
        if not m:
            if rows:
                break
            continue
        rows.append((float(m.group(2)), float(m.group(5))))
    vib = rows[-nvib:]
    return [v[0] for v in vib], [v[1] for v in vib]


def parse_raman(text, nvib):
    """Raman activities (A^4/amu) and depolarisation ratios of the modes. The
    ratio comes from the two polarisability tensors NWChem prints around each
    mode (3 gamma'^2 / (45 a'^2 + 4 gamma'^2)); the activity 45 a'^2 + 7 gamma'^2
    from them, in NWChem's step, is checked against NWChem's own."""
    act = [(float(a), float(b)) for a, b in re.findall(
        r"rminfo\(\s*\d+\)=\(\s*([-\d.E+]+),\s*([-\d.E+]+),", text)]
    blocks = re.findall(r"DFT Linear Response polarizability / au.*?-{10,}\n(.*?)-{10,}",
                        text, re.S)
    tensors = []
    for b in blocks:
        t = [[float(v) for v in line.split()[1:4]] for line in b.strip().splitlines()[:3]]
        tensors.append(t)
    steps = [float(v) for v in re.findall(r"Stepsize :\s*([-\d.E+]+)", text)]
    if len(act) != nvib or len(tensors) != 2 * nvib or len(steps) != nvib:
        raise RuntimeError("raman parse: %d activities, %d tensors, %d steps, %d modes" %
                           (len(act), len(tensors), len(steps), nvib))
    ratios, mine = [], []
    for k in range(nvib):
        a, b = tensors[2 * k], tensors[2 * k + 1]
        d = [[(b[i][j] - a[i][j]) / (2.0 * steps[k]) for j in range(3)] for i in range(3)]
        iso = (d[0][0] + d[1][1] + d[2][2]) / 3.0
        s = [[0.5 * (d[i][j] + d[j][i]) for j in range(3)] for i in range(3)]
        g2 = 0.5 * ((s[0][0] - s[1][1]) ** 2 + (s[1][1] - s[2][2]) ** 2 +
                    (s[2][2] - s[0][0]) ** 2 + 6.0 * (s[0][1] ** 2 + s[1][2] ** 2 + s[0][2] ** 2))
        den = 45.0 * iso * iso + 4.0 * g2
        ratios.append(3.0 * g2 / den if den > 0 else float("nan"))
        mine.append((45.0 * iso * iso + 7.0 * g2) * BOHR_ANGSTROM ** 4)
    return [a[0] for a in act], [a[1] for a in act], ratios, mine


def nwchem_task(name, raman):
    row = optimised(name)
    atoms = geometry_of(row)
    nvib = 3 * len(atoms) - (5 if linear(atoms) else 6)
    work = tempfile.mkdtemp(prefix="vibnw_")
    try:
        inp = os.path.join(work, "job.nw")
        with open(inp, "w") as f:
            f.write(nwchem_input(name, work, raman))
        proc = subprocess.run(mr.nwchem_command(1) + [inp], cwd=work, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, universal_newlines=True,
                              env=dict(os.environ, OMP_NUM_THREADS="1"))
        if proc.returncode != 0 or "Total times" not in proc.stdout:
            raise RuntimeError("nwchem failed for %s:\n%s" %
                               (name, (proc.stdout + proc.stderr)[-3000:]))
        text = proc.stdout
        with open(os.path.join("/tmp", "vibnw_%s.out" % name), "w") as f:
            f.write(text)
        freqs, ir = parse_projected(text, nvib)
        out = {"wavenumbers": freqs, "ir": ir}
        if raman:
            rf, act, ratios, mine = parse_raman(text, nvib)
            for a, b in zip(act, mine):
                if abs(a - b) > 1e-3 * max(1.0, abs(a)):
                    print("%s: NWChem activity %.6g, from its tensors %.6g" % (name, a, b),
                          file=sys.stderr)
            out.update({"raman_wavenumbers": rf, "activity": act, "depolarization": ratios,
                        "activity_from_tensors": mine})
        return out
    finally:
        subprocess.run(["rm", "-rf", work])


def nwchem_version():
    return mr.nwchem_version()


# --------------------------------------------------------------------------
# Tables
# --------------------------------------------------------------------------

def read_rows(path):
    rows = {}
    if os.path.exists(path):
        with open(path) as f:
            for line in f:
                if not line.startswith("#") and not line.startswith("name\t"):
                    rows[line.split("\t")[0]] = line
    return rows


def write_table(path, comment, header, rows, order):
    """Writes `rows` (name -> line) into the table at `path`, keeping the rows
    of other names already there (another process may be filling them)."""
    merged = read_rows(path)
    merged.update(rows)
    rows = merged
    with open(path, "w") as f:
        f.write(comment.rstrip("\n") + "\n")
        f.write(header)
        for name in order:
            if name in rows:
                f.write(rows[name])


def fmt(values, form):
    return " ".join(form % v for v in values)


def wanted(args, rows):
    return [r for r in rows if not args.only or r in args.only]


def part_optimise(args):
    write_large_molecule_file()
    r = run_child(["optimise"])
    at = r["atoms"]
    cc = [math.dist(at[i][1:], at[j][1:]) for i in range(len(at)) for j in range(i)
          if at[i][0] == "C" and at[j][0] == "C" and math.dist(at[i][1:], at[j][1:]) < 1.8]
    ch = [math.dist(at[i][1:], at[j][1:]) for i in range(len(at)) for j in range(len(at))
          if at[i][0] == "C" and at[j][0] == "H" and math.dist(at[i][1:], at[j][1:]) < 1.3]
    row = "\t".join([LARGE, LARGE_FILE, "C10H16", "STO-3G", "0", "1", "HF", "RHF",
                     "psi4 " + ks.psi4_version(), "%.10f" % r["energy"], "",
                     "%.6f" % (r["max_gradient"] * gr.GRADIENT_EV_A), "%d" % r["steps"], "", "",
                     "C-C %.6f..%.6f; C-H %.6f..%.6f" % (min(cc), max(cc), min(ch), max(ch)),
                     "", "", geometry_text(at)]) + "\n"
    comment = ("# Psi4 %s HF/STO-3G optimisation of adamantane from "
               "molecules_opt/c10h16_STO-3G.mol (optking defaults but g_convergence gau_tight), "
               "SCF as in hf_gradients.tsv; "
               "gradients column: optimisation steps; bonds column: ranges; "
               "tools/references/vibration_references.py --parts optimise" % ks.psi4_version())
    write_table(os.path.join(DATA, "optimized_large.tsv"), comment, gr.OPT_HEADER,
                {LARGE: row}, [LARGE])
    print(LARGE, r["energy"], r["steps"], "steps", flush=True)


HF_HEADER = ("name\tmolecule_file\tbasis\tE[hartree]\twavenumbers[cm-1]\tgeometry[A]\t"
             "multiplicity\thessian\tIR[km/mol]\n")
THERMO_TERMS = ["elec", "trans", "rot", "vib"]
THERMO_HEADER = ("name\tmolecule_file\tmultiplicity\trotor\tpoint_group\tsigma\t"
                 "point_group_table_geometry\tsigma_table_geometry\tmass[amu]\t"
                 "rotational_constants[cm-1]\twavenumbers[cm-1]\t" +
                 "".join("S_%s[mEh/K]\t" % t for t in THERMO_TERMS) + "S_tot[mEh/K]\t" +
                 "".join("E_%s[Eh]\t" % t for t in THERMO_TERMS) +
                 "ZPVE[Eh]\tE_corr[Eh]\tH_corr[Eh]\tG_corr[Eh]\t" +
                 "".join("S_%s[eV/K]\t" % t for t in THERMO_TERMS) + "S_tot[eV/K]\t" +
                 "ZPVE[eV]\tE_corr[eV]\tH_corr[eV]\tG_corr[eV]\tgeometry[A]\n")
# Psi4 1.3.2 (qcelemental, CODATA 2014): R = 8.3144598 J/(mol K),
# hartree = 2625.4996382852164 kJ/mol = 27.21138602 eV.
PSI4_HARTREE_EV = 27.21138602


def part_hf(args):
    path = os.path.join(DATA, "hf_frequencies.tsv")
    tpath = os.path.join(DATA, "thermo.tsv")
    rows, trows = {}, {}
    version = ks.psi4_version()
    for name in wanted(args, HF_ROWS):
        r = run_child(["freq", name, "HF"])
        row = optimised(name)
        how = "analytic" if r["dertype"] == 2 else "findif%d_of_gradients" % FD_POINTS
        rows[name] = "\t".join([
            name, row["molecule_file"], row["basis"], "%.10f" % r["energy"],
            fmt(r["wavenumbers"], "%.4f"), geometry_text(r["atoms"]), "%d" % r["mult"], how,
            fmt(r["ir"], "%.4f") if r["ir"] else ""]) + "\n"
        t = r["thermo"]
        ev = PSI4_HARTREE_EV
        trows[name] = "\t".join(
            [name, row["molecule_file"], "%d" % r["mult"], t["rotor"], t["point_group"],
             "%d" % t["sigma"], t["point_group_table"], "%d" % t["sigma_table"],
             "%.7f" % t["mass"], fmt(t["rot_const"], "%.10g"),
             fmt(r["wavenumbers"], "%.4f")] +
            ["%.12e" % t["S_" + k] for k in THERMO_TERMS] + ["%.12e" % t["S_tot"]] +
            ["%.12e" % t["E_" + k] for k in THERMO_TERMS] +
            ["%.12e" % t[k] for k in ("ZPE_corr", "E_corr", "H_corr", "G_corr")] +
            ["%.12e" % (t["S_" + k] * 1e-3 * ev) for k in THERMO_TERMS] +
            ["%.12e" % (t["S_tot"] * 1e-3 * ev)] +
            ["%.12e" % (t[k] * ev) for k in ("ZPE_corr", "E_corr", "H_corr", "G_corr")] +
            [geometry_text(r["atoms"])]) + "\n"
        print(name, how, fmt(r["wavenumbers"], "%.1f"), "sigma", t["sigma"], flush=True)
        write_table(path, (
            "# Psi4 %s harmonic wavenumbers [cm-1] at its optimised geometries (optimized.tsv; "
            "optimized_large.tsv for adamantane), norvik's atomic masses; RHF: analytic Hessian, "
            "UHF (CH3): %d-point central differences of analytic gradients (findif, disp_size %g); "
            "SCF scf_type pk, e/d_convergence 1e-10, ints_tolerance 1e-14; "
            "IR[km/mol]: Psi4's intensities from the analytic dipole derivatives, same mode order "
            "(empty where Psi4 has none: see ir_raman.tsv); "
            "tools/references/vibration_references.py --parts hf") %
            (version, FD_POINTS, FD_DISP), HF_HEADER, rows, HF_ROWS)
        write_table(tpath, (
            "# Psi4 %s thermochemistry (psi4.driver.qcdb.vib.thermo, as frequency() runs it) at "
            "298.15 K and 101325 Pa of the wavenumbers of hf_frequencies.tsv; sigma (used) from "
            "Psi4's full point group of the unrounded symmetric start geometry of the "
            "optimisation (Psi4's tolerance 1e-8 misses C3 in the 6-decimal optimised NH3), "
            "*_table_geometry: Psi4's "
            "detection on the tabulated geometry; S in mEh/K and energies in Eh as Psi4 "
            "gives them (E_vib includes the ZPVE; *_corr sum the four terms; H_corr = E_corr + kT; "
            "G_corr = H_corr - T S_tot); eV columns: x 27.21138602 eV/Eh (Psi4's CODATA 2014 "
            "hartree); Psi4's R = 8.3144598 J/(mol K), 1 Eh = 2625.4996382852164 kJ/mol, so "
            "k_B = 3.16681156e-6 Eh/K; tools/references/vibration_references.py --parts hf") %
            version, THERMO_HEADER, trows, HF_ROWS)


KS_HEADER = ("name\tmolecule_file\tbasis\tfunctional\tE[hartree]\twavenumbers[cm-1]\t"
             "geometry[A]\n")


def part_ks(args):
    path = os.path.join(DATA, "ks_frequencies.tsv")
    rows = {}
    for name in wanted(args, KS_ROWS):
        r = run_child(["freq", name, "B3LYP"])
        row = optimised(name)
        rows[name] = "\t".join([name, row["molecule_file"], row["basis"], "B3LYP",
                                "%.10f" % r["energy"], fmt(r["wavenumbers"], "%.4f"),
                                geometry_text(r["atoms"])]) + "\n"
        print(name, fmt(r["wavenumbers"], "%.1f"), flush=True)
        write_table(path, (
            "# Psi4 %s B3LYP (norvik's: VWN5 in the LDA part; libxc 0.08 LDA_X + 0.72 GGA_X_B88 + "
            "0.20 HF exchange, 0.19 LDA_C_VWN + 0.81 GGA_C_LYP) harmonic wavenumbers [cm-1] at "
            "Psi4's B3LYP/6-31G* optimised geometries (optimized.tsv), norvik's atomic masses; "
            "Hessian by %d-point central differences of analytic gradients (findif, disp_size %g); "
            "grid 150 x 974 Treutler/Treutler, no pruning, basis tolerance 1e-14; scf_type pk, "
            "e_convergence 1e-10, d_convergence 1e-10; "
            "tools/references/vibration_references.py --parts ks") %
            (ks.psi4_version(), FD_POINTS, FD_DISP), KS_HEADER, rows, KS_ROWS)


IR_HEADER = ("name\tmolecule_file\tbasis\tprogram\twavenumbers[cm-1]\tIR[km/mol]\t"
             "raman_activity[A^4/amu]\tdepolarization_ratio\n")


def part_raman(args):
    path = os.path.join(DATA, "ir_raman.tsv")
    rows = {}
    order = RAMAN_ROWS + NWCHEM_IR_ONLY
    version = "nwchem " + nwchem_version()
    for name in wanted(args, order):
        raman = name in RAMAN_ROWS
        r = nwchem_task(name, raman)
        row = optimised(name)
        rows[name] = "\t".join([
            name, row["molecule_file"], row["basis"], version, fmt(r["wavenumbers"], "%.2f"),
            fmt(r["ir"], "%.3f"), fmt(r["activity"], "%.4e") if raman else "",
            fmt(r["depolarization"], "%.6f") if raman else ""]) + "\n"
        print(name, fmt(r["wavenumbers"], "%.1f"), flush=True)
        write_table(path, (
            "# %s (task scf freq / task scf raman) at Psi4's HF/6-31G* optimised geometries "
            "(optimized.tsv), norvik's atomic masses (geometry mass keyword), symmetry c1, "
            "nocenter noautosym; scf thresh 1e-10, tol2e 1e-14; analytic Hessian (hessian thresh "
            "1e-8), projected (Eckart) wavenumbers [cm-1] and IR intensities [km/mol]; Raman: "
            "static (response 1 0.0, convergence 1e-8) polarisability differentiated along each "
            "normal mode (raman normal, dq %g), activity 45 a'^2 + 7 g'^2 [A^4/amu] as NWChem "
            "prints it, depolarisation ratio 3 g'^2 / (45 a'^2 + 4 g'^2) from the two printed "
            "tensors of each mode; CH3: UHF, IR only; "
            "tools/references/vibration_references.py --parts raman") % (version, RAMAN_DQ),
            IR_HEADER, rows, order)


POLAR_HEADER = ("name\tmolecule_file\tbasis\tmethod\tprogram\tgrid\tE[hartree]\t"
                "alpha_xx\talpha_xy\talpha_xz\talpha_yx\talpha_yy\talpha_yz\talpha_zx\talpha_zy\t"
                "alpha_zz[bohr^3]\tgeometry[A]\n")


def polar_rows():
    out = [(n, "HF") for n in HF_ROWS if not n.startswith("ch3")]
    for m in POLAR_KS_MOLECULES:
        for f in POLAR_FUNCTIONALS:
            out.append(("%s_6-31Gx_B3LYP" % m, f))
    return out


def polar_key(name, method):
    return name if method == "HF" else name.replace("_B3LYP", "_" + method)


def part_polar(args):
    path = os.path.join(DATA, "polarizabilities.tsv")
    rows = {}
    order = [polar_key(*p) for p in polar_rows()] + ["ch3_6-31Gx_HF"]
    for name, method in polar_rows():
        key = polar_key(name, method)
        if args.only and key not in args.only:
            continue
        r = run_child(["polar", name, method, "reference"])
        row = optimised(name)
        t = r["tensor"]
        rows[key] = "\t".join(
            [key, row["molecule_file"], row["basis"], method, "psi4 " + ks.psi4_version(),
             "" if method == "HF" else "150x974", "%.10f" % r["energy"]] +
            ["%.8f" % t[i][j] for i in range(3) for j in range(3)] +
            [geometry_text(geometry_of(row))]) + "\n"
        print(key, ["%.5f" % t[i][i] for i in range(3)], flush=True)
        write(path, rows, order)
    # NWChem's closed-shell response against Psi4's (Kohn-Sham: the grids differ)
    key = polar_key("h2o_6-31Gx_B3LYP", "B3LYP")
    if key in rows:
        mine = [float(v) for v in rows[key].split("\t")[7:16]]
        theirs = [v for line in nwchem_dft_polar("h2o_6-31Gx_B3LYP", "B3LYP") for v in line]
        worst = max(abs(a - b) for a, b in zip(mine, theirs))
        if worst > 1e-3:
            raise RuntimeError("%s: NWChem's polarisability differs by %.2e" % (key, worst))
        print("%s: NWChem (xfine grid) agrees to %.1e bohr^3" % (key, worst), flush=True)
    for name in NWCHEM_POLAR_CHECKS:
        if name in rows:
            mine = [float(v) for v in rows[name].split("\t")[7:16]]
            theirs = [v for line in nwchem_polar(name)["tensor"] for v in line]
            worst = max(abs(a - b) for a, b in zip(mine, theirs))
            if worst > 1e-5:
                raise RuntimeError("%s: NWChem's polarisability differs by %.2e" % (name, worst))
            print("%s: NWChem agrees to %.1e bohr^3" % (name, worst), flush=True)
    if not args.only or "ch3_6-31Gx_HF" in args.only:
        r = nwchem_polar("ch3_6-31Gx_HF")
        ff = run_child(["finite_field", "ch3_6-31Gx_HF"])["diagonal"]
        for k in range(3):
            if abs(ff[k] - r["tensor"][k][k]) > 1e-4:
                raise RuntimeError("CH3: NWChem alpha_%d%d %.7f, Psi4 finite field %.7f" %
                                   (k, k, r["tensor"][k][k], ff[k]))
        print("CH3 finite-field diagonal", ff, flush=True)
        row = optimised("ch3_6-31Gx_HF")
        rows["ch3_6-31Gx_HF"] = "\t".join(
            ["ch3_6-31Gx_HF", row["molecule_file"], row["basis"], "UHF",
             "nwchem " + nwchem_version(), "", "%.10f" % r["energy"]] +
            ["%.8f" % r["tensor"][i][j] for i in range(3) for j in range(3)] +
            [geometry_text(geometry_of(row))]) + "\n"
        print("ch3", r, flush=True)
        write(path, rows, order)


def write(path, rows, order):
    write_table(path, (
        "# Static dipole polarisabilities [bohr^3]: Psi4 %s coupled-perturbed SCF "
        "(properties('scf', properties=['DIPOLE_POLARIZABILITIES']), solver_convergence %g) for "
        "RHF at the HF/6-31G* geometries and for the functionals (ks_references.py's mapping: "
        "B3LYP with VWN5, SVWN5 = LDA_X + LDA_C_VWN, SVWN3 = LDA_X + LDA_C_VWN_RPA) at the "
        "B3LYP/6-31G* geometries on the 150 x 974 grid (Treutler, no pruning); UHF CH3 from "
        "NWChem %s (task scf property, response 1 0.0, convergence 1e-8, scf thresh 1e-10), its "
        "diagonal checked against Psi4 UHF finite-field energies (5-point, F = 0.002 au) to 1e-4; "
        "checks in the script: NWChem RHF response (H2O, C2H4) within 1e-5, NWChem B3LYP "
        "response on its xfine grid (H2O) within 1e-3; "
        "alpha_ij = -d2E/dF_i dF_j, axes of the geometry column; scf_type pk, e/d_convergence "
        "1e-10; tools/references/vibration_references.py --parts polar") %
        (ks.psi4_version(), CPHF_CONVERGENCE, nwchem_version()), POLAR_HEADER, rows, order)


def nwchem_dft_polar(name, functional):
    """NWChem's static Kohn-Sham response at a row's geometry, on its xfine
    grid: a check on Psi4's exchange-correlation kernel."""
    row = optimised(name)
    work = tempfile.mkdtemp(prefix="vibnwd_")
    try:
        lines = ks.nwchem_input(row["molecule_file"], functional, mr.DEFAULT_BASIS_DIR, work,
                                grid="xfine").splitlines()
        i = lines.index("  symmetry c1")
        j = lines.index("end", i)
        lines[i + 1:j] = ["  %s %.17g %.17g %.17g" % (s, x / BOHR_ANGSTROM, y / BOHR_ANGSTROM,
                                                      z / BOHR_ANGSTROM)
                          for s, x, y, z in geometry_of(row)]
        text = "\n".join(lines).replace(
            "task dft energy", "property\n  response 1 0.0\n  convergence 1e-8\nend\n"
            "task dft property") + "\n"
        inp = os.path.join(work, "job.nw")
        with open(inp, "w") as f:
            f.write(text)
        proc = subprocess.run(mr.nwchem_command(1) + [inp], cwd=work, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, universal_newlines=True,
                              env=dict(os.environ, OMP_NUM_THREADS="1"))
        blocks = re.findall(r"Linear Response polarizability / au.*?-{10,}\n(.*?)-{10,}",
                            proc.stdout, re.S)
        if proc.returncode != 0 or not blocks:
            raise RuntimeError("nwchem response failed for %s %s:\n%s" %
                               (name, functional, (proc.stdout + proc.stderr)[-3000:]))
        return [[float(v) for v in line.split()[1:4]]
                for line in blocks[-1].strip().splitlines()[:3]]
    finally:
        subprocess.run(["rm", "-rf", work])


def nwchem_polar(name):
    work = tempfile.mkdtemp(prefix="vibnwp_")
    try:
        text = nwchem_input(name, work, False).replace(
            "task scf freq", "property\n  response 1 0.0\n  convergence 1e-8\nend\n"
            "task scf property")
        inp = os.path.join(work, "job.nw")
        with open(inp, "w") as f:
            f.write(text)
        proc = subprocess.run(mr.nwchem_command(1) + [inp], cwd=work, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, universal_newlines=True,
                              env=dict(os.environ, OMP_NUM_THREADS="1"))
        out = proc.stdout
        with open("/tmp/vibnwp_%s.out" % name, "w") as f:
            f.write(out)
        blocks = re.findall(r"Linear Response polarizability / au.*?-{10,}\n(.*?)-{10,}", out,
                            re.S)
        if proc.returncode != 0 or not blocks:
            raise RuntimeError("nwchem polarisability failed for %s:\n%s" %
                               (name, (out + proc.stderr)[-3000:]))
        t = [[float(v) for v in line.split()[1:4]] for line in blocks[-1].strip().splitlines()[:3]]
        e = re.findall(r"Total SCF energy =\s*(-?\d+\.\d+)", out)
        return {"tensor": t, "energy": float(e[-1]) if e else float("nan")}
    finally:
        subprocess.run(["rm", "-rf", work])


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--parts", nargs="+", default=["optimise", "hf", "raman", "polar", "ks"])
    ap.add_argument("--only", nargs="+")
    ap.add_argument("--task")
    ap.add_argument("--result")
    args = ap.parse_args()
    if args.task:
        child_main(json.loads(args.task), args.result)
        return
    for part in args.parts:
        {"optimise": part_optimise, "hf": part_hf, "ks": part_ks, "raman": part_raman,
         "polar": part_polar}[part](args)


if __name__ == "__main__":
    main()
