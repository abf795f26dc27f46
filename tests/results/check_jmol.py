"""Opens the host's molden file in Jmol, headless, and draws the HOMO.

usage: check_jmol.py NORVIK MOLECULE_FILE WORKDIR [IMAGE_COPY]

Runs the job, then Jmol (Debian jmol, under xvfb-run) on jmol_homo.spt: Jmol
must read every orbital of the file, find the highest occupied one at orbital
nalpha with the JSON's HOMO energy, and write a picture of it.  IMAGE_COPY keeps the picture
(tools/plots/water_molden_homo.sh uses it for docs/images/).
"""
import json
import os
import re
import shutil
import subprocess
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
# Jmol starts a Java virtual machine: a few seconds, far below this.
JMOL_TIMEOUT = 120
# Jmol keeps the orbital energy to 7 decimals (single precision).
ENERGY_DIGITS = 1e-6


def main():
    norvik, mol, work = (os.path.abspath(a) for a in sys.argv[1:4])
    copy = os.path.abspath(sys.argv[4]) if len(sys.argv) > 4 else None
    shutil.rmtree(work, ignore_errors=True)
    os.makedirs(work)
    shutil.copy(mol, os.path.join(work, "water.mol"))
    shutil.copy(os.path.join(HERE, "jmol_homo.spt"), work)
    run = subprocess.run([norvik, "run", "water.mol"], cwd=work, capture_output=True, text=True)
    if run.returncode != 0:
        sys.exit(f"norvik ended with status {run.returncode}\n{run.stdout}{run.stderr}")
    molden = open(os.path.join(work, "water.molden")).read()
    orbitals = molden.count("Sym=")
    with open(os.path.join(work, "water.json")) as f:
        result = json.load(f)
    jmol = subprocess.run(["xvfb-run", "-a", "jmol", "-n", "-s", "jmol_homo.spt"], cwd=work,
                          capture_output=True, text=True, timeout=JMOL_TIMEOUT)
    said = jmol.stdout + jmol.stderr
    read_file = os.path.join(work, "jmol_read.txt")
    read = open(read_file).read().split() if os.path.exists(read_file) else []
    image = os.path.join(work, "water_molden_homo.png")
    problems = []
    if len(read) != 6:
        problems.append("Jmol wrote nothing of what it read")
    else:
        nalpha = result["properties"]["calcinfo_nalpha"]
        homo = result["wavefunction"]["homo_energy"]
        if int(read[1]) != orbitals:
            problems.append(f"Jmol read {read[1]} orbitals of {orbitals}")
        if int(read[3]) != nalpha:
            problems.append(f"Jmol's highest occupied orbital is {read[3]}, not {nalpha}")
        if abs(float(read[5]) - homo) > ENERGY_DIGITS:
            problems.append(f"Jmol's HOMO energy {read[5]} is not {homo}")
    if not os.path.exists(image) or os.path.getsize(image) < 1000:
        problems.append("Jmol wrote no picture")
    if problems:
        print(said)
        for p in problems:
            print("FAIL:", p)
        sys.exit(1)
    print(f"Jmol read {orbitals} orbitals, HOMO {read[3]} at {read[5]} hartree, and drew it "
          f"({os.path.getsize(image)} bytes)")
    if copy:
        shutil.copy(image, copy)


if __name__ == "__main__":
    main()
