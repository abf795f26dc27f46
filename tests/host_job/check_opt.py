#!/usr/bin/env python3
"""Runs one optimisation job with the norvik host and compares the optimised
energy and bond lengths with a row of tests/references/data/optimized.tsv.

usage: check_opt.py NORVIK ROW_NAME OPTIMISER WORKDIR [--dense] [--table]
  OPTIMISER: 0 conjugate gradient, 1 steepest descent, 2 quasi-Newton
Energies within 2e-6 hartree (Hartree-Fock: Psi4's optimised energy; Kohn-Sham on
the dense grid: Psi4's energy on its converged grid at its optimised geometry),
bonds within 2e-3 A.  --table prints one summary line instead of checking.
"""
import math
import os
import re
import subprocess
import sys
import time

HERE = os.path.dirname(os.path.abspath(__file__))
DATA = os.path.join(HERE, "..", "references", "data")


def reference(name):
    with open(os.path.join(DATA, "optimized.tsv")) as f:
        rows = [l.rstrip("\n").split("\t") for l in f if not l.startswith("#")]
    head = rows[0]
    for r in rows[1:]:
        if r[0] == name:
            return dict(zip(head, r))
    sys.exit(f"no row {name}")


def job_file(ref, optimiser, workdir):
    lines = open(os.path.join(DATA, ref["molecule_file"])).read().split("\n")
    lines[1] = f"'{ref['method']}'"
    name = lines[5].rsplit(" ", 1)[0]
    lines[5] = f"{name} 300"
    lines[7] = str(optimiser)
    path = os.path.join(workdir, "job.mol")
    open(path, "w").write("\n".join(lines))
    return path


def last_frame(path):
    lines = open(path).read().split("\n")
    frames, i = [], 0
    while i < len(lines) and lines[i].strip():
        n = int(lines[i])
        frames.append([l.split() for l in lines[i + 2:i + 2 + n]])
        i += 2 + n
    return [(a[0], [float(x) for x in a[1:4]]) for a in frames[-1]]


def main():
    norvik, name, optimiser, workdir = sys.argv[1:5]
    norvik = os.path.abspath(norvik)
    dense = "--dense" in sys.argv
    table = "--table" in sys.argv
    os.makedirs(workdir, exist_ok=True)
    ref = reference(name)
    mol = job_file(ref, optimiser, workdir)
    par = os.path.join(HERE, "data", "tight_ks.par" if ref["method"] != "HF" else "tight.par")
    cmd = [norvik, "run", mol, par, "--report", "job.report", "--log", "job.log", "--xyz",
           "job.xyz"] + (["--grid", "dense"] if dense else [])
    start = time.time()
    p = subprocess.run(cmd, cwd=workdir, capture_output=True, text=True)
    wall = time.time() - start
    if p.returncode != 0:
        sys.exit(f"norvik ended with status {p.returncode}:\n{p.stdout}{p.stderr}")
    energy = float(re.search(r"E\([RU](?:HF|KS)\) = (-?[0-9.]+) hartree", p.stdout).group(1))
    m = re.search(r"after (\d+) cycles: (\d+) SCF points, (\d+) gradients", p.stdout)
    cycles, points, grads = (int(x) for x in m.groups())
    atoms = last_frame(os.path.join(workdir, "job.xyz"))
    expect = float(ref["E_converged_grid[hartree]"] or ref["E_opt[hartree]"]) \
        if ref["method"] != "HF" else float(ref["E_opt[hartree]"])
    worst = 0.0
    for bond in ref["bonds[A]"].split("; "):
        label, value = bond.split()
        i, j = (int(x) - 1 for x in re.findall(r"[A-Za-z]+(\d+)", label))
        d = math.dist(atoms[i][1], atoms[j][1])
        worst = max(worst, abs(d - float(value)))
    de = energy - expect
    if table:
        print(f"{name}\t{optimiser}\t{energy:.9f}\t{de:+.1e}\t{worst:.1e}\t{cycles}\t{points}\t"
              f"{grads}\t{wall:.1f}\t{ref['gradients']}\t{ref['wall[s]']}")
        return
    problems = []
    if abs(de) > 2e-6:
        problems.append(f"energy {energy:.9f} is {de:+.2e} hartree from {expect:.9f}")
    if worst > 2e-3:
        problems.append(f"a bond length is {worst:.2e} A from Psi4's")
    if problems:
        sys.exit("\n".join(problems) + "\n" + p.stdout)
    print(f"{name} optimiser {optimiser}: dE {de:+.1e} hartree, bonds within {worst:.1e} A, "
          f"{points} SCF points, {grads} gradients, {wall:.1f} s")


main()
