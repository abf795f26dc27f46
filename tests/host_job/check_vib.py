#!/usr/bin/env python3
"""Runs one vibrational analysis with the norvik host at a reference geometry and
compares its wavenumbers (and, where the table has them, infrared intensities and
Raman activities) with a row of a reference table in tests/references/data.

usage: check_vib.py NORVIK TABLE ROW_NAME WORKDIR [--dense]
  TABLE: hf_frequencies.tsv or ks_frequencies.tsv
Wavenumbers within 0.1 cm-1 (Hartree-Fock) or 1 cm-1 (Kohn-Sham, dense grid),
infrared intensities within 1 % (or 0.01 km/mol), Raman activities (NWChem's,
ir_raman.tsv) within 2 % (or 0.01 A^4/amu) and depolarisation ratios within 0.01;
degenerate modes are compared by the sums over their set.
"""
import os
import re
import subprocess
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
DATA = os.path.join(HERE, "..", "references", "data")


def reference(table, name):
    row = reference_row(table, name)
    if row is None:
        sys.exit(f"no row {name} in {table}")
    return row


def reference_row(table, name):
    path = os.path.join(DATA, table)
    if not os.path.exists(path):
        return None
    with open(path) as f:
        rows = [l.rstrip("\n").split("\t") for l in f if not l.startswith("#")]
    for r in rows[1:]:
        if r[0] == name:
            return dict(zip(rows[0], r))
    return None


def job_file(ref, method, workdir):
    lines = open(os.path.join(DATA, ref["molecule_file"])).read().split("\n")
    atoms = [a.split() for a in ref["geometry[A]"].split("; ")]
    lines[1] = f"'{method}'"
    lines[3] = f"'{ref['basis']}'"
    name = lines[5].rsplit(" ", 1)[0]
    lines[5] = f"{name} 0"
    lines[9] = "2"
    first_atom = next(i for i, l in enumerate(lines) if i > 22 and l.strip())
    lines = lines[:first_atom] + ["%-2s %14.8f %14.8f %14.8f" % (a[0], float(a[1]), float(a[2]),
                                                                  float(a[3])) for a in atoms]
    path = os.path.join(workdir, "job.mol")
    open(path, "w").write("\n".join(lines) + "\n")
    return path


def modes(report):
    lines = open(report).read().split("\n")
    start = lines.index("#  Harmonic vibrations (frequency scale factor  1.0000)")
    out = []
    for l in lines[start + 2:]:
        m = re.match(r"#\s+\d+\s+([0-9.]+)(i?)\s+(.*)$", l)
        if not m:
            break
        w = float(m.group(1)) * (-1 if m.group(2) else 1)
        out.append([w] + [float(x) for x in m.group(3).split()])
    return out


def close(value, want, relative, floor):
    return abs(value - want) <= max(relative * abs(want), floor)


def main():
    norvik, table, name, workdir = sys.argv[1:5]
    norvik = os.path.abspath(norvik)
    dense = "--dense" in sys.argv
    os.makedirs(workdir, exist_ok=True)
    ref = reference(table, name)
    method = ref.get("functional", "HF")
    mol = job_file(ref, method, workdir)
    cmd = [norvik, "run", mol] + (["--grid", "dense"] if dense else [])
    run = subprocess.run(cmd, cwd=workdir, capture_output=True, text=True)
    if run.returncode != 0:
        sys.exit(f"norvik exited with {run.returncode}:\n{run.stdout}\n{run.stderr}")
    got = modes(os.path.join(workdir, "job.report"))
    want = [float(x) for x in ref["wavenumbers[cm-1]"].split()]
    tolerance = 1.0 if method != "HF" else 0.1
    failures = []
    if len(got) != len(want):
        failures.append(f"{len(got)} modes, the reference has {len(want)}")
    for k, (g, w) in enumerate(zip(got, want)):
        if abs(g[0] - w) > tolerance:
            failures.append(f"mode {k + 1}: {g[0]:.3f} cm-1, reference {w:.3f}")
    # Intensities of a degenerate set depend on how its modes are chosen inside
    # it: compare the sums over each set (reference wavenumbers within 0.5 cm-1),
    # and depolarisation ratios of single modes only.
    groups, k = [], 0
    while k < len(want):
        j = k + 1
        while j < len(want) and want[j] - want[j - 1] < 0.5:
            j += 1
        groups.append(range(k, j))
        k = j

    def compare(label, column, values, relative, floor):
        for g in groups:
            mine = sum(got[k][column] for k in g if len(got[k]) > column)
            theirs = sum(values[k] for k in g)
            if not close(mine, theirs, relative, floor):
                failures.append(f"modes {g.start + 1}-{g.stop}: {label} {mine:.4f}, "
                                f"reference {theirs:.4f}")

    if ref.get("IR[km/mol]", "").strip():
        compare("IR [km/mol]", 1, [float(x) for x in ref["IR[km/mol]"].split()], 0.01, 0.01)
    raman = reference_row("ir_raman.tsv", name)
    if raman and raman.get("raman_activity[A^4/amu]", "").strip():
        activity = [float(x) for x in raman["raman_activity[A^4/amu]"].split()]
        compare("Raman [A^4/amu]", 2, activity, 0.02, 0.01)
        ratios = raman["depolarization_ratio"].split()
        for g in groups:
            if len(g) == 1 and ratios[g.start] != "nan" and activity[g.start] > 0.01:
                mine = got[g.start][3]
                if abs(mine - float(ratios[g.start])) > 0.01:
                    failures.append(f"mode {g.start + 1}: depolarisation {mine:.4f}, "
                                    f"reference {ratios[g.start]}")
    for k in range(len(got)):
        print(name, "mode", k + 1, *got[k])
    if failures:
        sys.exit("\n".join(failures))


if __name__ == "__main__":
    main()
