#!/usr/bin/python3
"""Water from Python: one whole job through the norvik host, then the same
point by the library's own routines (norvik.lib).

    PYTHONPATH=python /usr/bin/python3 examples/python_water.py
"""

import os
import tempfile

import norvik
import norvik.lib as lib

water = norvik.Molecule.from_xyz("""3
water
O    0.000000    0.000000    0.117300
H    0.000000    0.757200   -0.469200
H    0.000000   -0.757200   -0.469200
""")
print(water)

# A whole job: the host writes water.xyz, runs it and reads back water.json.
result = norvik.run(water, method="HF", basis="6-31G*", threads=2)
print(result)
print(f"energy            {result.energy:.9f} hartree")
print(f"dipole moment     {result.properties.scf_dipole_moment} e*bohr")
wf = result.wavefunction
print(f"HOMO, LUMO        {wf.homo_energy:.5f}, {wf.lumo_energy:.5f} hartree")

# The same point through the library's routines, in this process.  A fatal
# error of the library would end this interpreter: norvik.run is the safe way.
with tempfile.TemporaryDirectory() as folder:
    mol = os.path.join(folder, "water.mol")
    with open(os.path.join(os.path.dirname(os.path.abspath(__file__)), "water.mol")) as f:
        text = f.read().replace("\n6-31Gxx\n", "\n6-31Gx\n")
    with open(mol, "w") as f:
        f.write(text)
    job = lib.setup(mol)
    point = lib.scf_point(job, lib.free_atoms(job))
    charges, _ = lib.populations(job, point, "Mulliken")
    print(f"library's point   {point.energy_hartree:.9f} hartree in {point.cycles} cycles")
    print("Mulliken charges ", " ".join(f"{s} {q:+.4f}" for s, q in zip(job.symbols, charges)))
