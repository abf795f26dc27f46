#!/usr/bin/env python3
"""Runs one excited-state job with the norvik host and compares its report
sections (the table of states and the dominant transitions) byte for byte with a
committed copy, and its UV-vis file with its expected shape.

usage: check_excite.py NORVIK MOLECULE_FILE THEORY STATES EXPECTED WORKDIR [--update]
The molecule file's theory record is replaced by THEORY.  The committed
sections were checked against NWChem's tddft (tests/references/data/
excitations.tsv) when they were made: energies to 1e-6 eV, amplitudes to 1e-5.
--update writes EXPECTED from this run instead.
"""
import os
import shutil
import subprocess
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
PAR = os.path.join(HERE, "data", "tight.par")


def sections(report):
    lines = open(report, encoding="utf-8").read().split("\n")
    start = next(i for i, l in enumerate(lines) if l.startswith("#  Excited states ("))
    end = start + 1
    while end < len(lines) and lines[end].startswith("#") and not lines[end].startswith("#  Time"):
        end += 1
    return "\n".join(lines[start - 1:end]) + "\n"


def main():
    norvik, mol, theory, states, expected, work = sys.argv[1:7]
    update = "--update" in sys.argv[7:]
    shutil.rmtree(work, ignore_errors=True)
    os.makedirs(work)
    lines = open(mol).read().split("\n")
    lines[1] = "'%s'" % theory
    job = os.path.join(work, "job.mol")
    open(job, "w").write("\n".join(lines))
    run = subprocess.run([norvik, "run", job, PAR, "--states", states], cwd=work,
                         stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                         universal_newlines=True)
    print(run.stdout)
    if run.returncode != 0:
        sys.exit("the job failed with status %d" % run.returncode)
    got = sections(os.path.join(work, "job.report"))
    if update:
        open(expected, "w", encoding="utf-8").write(got)
        return
    want = open(expected, encoding="utf-8").read()
    if got != want:
        sys.exit("the report sections differ from %s:\n%s" % (expected, got))
    uv = open(os.path.join(work, "job.uv.dat")).read().split("\n")
    if not uv[0].startswith("# wavelength [nm]") or len(uv) < 10:
        sys.exit("job.uv.dat is not a spectrum:\n" + "\n".join(uv[:5]))
    peak = max((float(l.split()[1]), float(l.split()[0])) for l in uv[1:] if l.strip())
    print("UV-vis maximum %.0f L/(mol cm) at %.1f nm" % peak)
    if not peak[0] > 0:
        sys.exit("the spectrum is empty")


if __name__ == "__main__":
    main()
