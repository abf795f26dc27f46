#!/usr/bin/python3
"""Writes the jobs of the batch benchmark (docs/python.md): 22 small closed-shell
molecules and 28 waters with displaced atoms, 50 jobs, as .xyz files (or, with
--mol, as molecule files of HF/3-21G).

    python3 bench/python/make_batch.py FOLDER [--mol]
"""

import os
import sys

import numpy as np

# Geometries in Å, near the molecules' equilibrium (a single point needs no more).
MOLECULES = {
    "h2": [("H", 0, 0, 0), ("H", 0, 0, 0.74)],
    "lih": [("Li", 0, 0, 0), ("H", 0, 0, 1.60)],
    "hf": [("F", 0, 0, 0), ("H", 0, 0, 0.92)],
    "hcl": [("Cl", 0, 0, 0), ("H", 0, 0, 1.27)],
    "lif": [("Li", 0, 0, 0), ("F", 0, 0, 1.56)],
    "n2": [("N", 0, 0, 0), ("N", 0, 0, 1.10)],
    "co": [("C", 0, 0, 0), ("O", 0, 0, 1.13)],
    "f2": [("F", 0, 0, 0), ("F", 0, 0, 1.41)],
    "h2o": [("O", 0, 0, 0.1173), ("H", 0, 0.7572, -0.4692), ("H", 0, -0.7572, -0.4692)],
    "h2s": [("S", 0, 0, 0.1030), ("H", 0, 0.9616, -0.8239), ("H", 0, -0.9616, -0.8239)],
    "hcn": [("H", 0, 0, -1.066), ("C", 0, 0, 0), ("N", 0, 0, 1.156)],
    "co2": [("O", 0, 0, -1.16), ("C", 0, 0, 0), ("O", 0, 0, 1.16)],
    "c2h2": [("H", 0, 0, -1.663), ("C", 0, 0, -0.601), ("C", 0, 0, 0.601), ("H", 0, 0, 1.663)],
    "nh3": [("N", 0, 0, 0.1120), ("H", 0, 0.9377, -0.2612), ("H", 0.8121, -0.4689, -0.2612),
            ("H", -0.8121, -0.4689, -0.2612)],
    "ph3": [("P", 0, 0, 0.1270), ("H", 0, 1.1900, -0.6350), ("H", 1.0306, -0.5950, -0.6350),
            ("H", -1.0306, -0.5950, -0.6350)],
    "bh3": [("B", 0, 0, 0), ("H", 0, 1.19, 0), ("H", 1.0306, -0.595, 0),
            ("H", -1.0306, -0.595, 0)],
    "h2co": [("C", 0, 0, 0), ("O", 0, 0, 1.205), ("H", 0, 0.943, -0.587),
             ("H", 0, -0.943, -0.587)],
    "h2o2": [("O", 0, 0.7375, -0.0528), ("O", 0, -0.7375, -0.0528), ("H", 0.8190, 0.8170, 0.4220),
             ("H", -0.8190, -0.8170, 0.4220)],
    "ch4": [("C", 0, 0, 0), ("H", 0.6276, 0.6276, 0.6276), ("H", -0.6276, -0.6276, 0.6276),
            ("H", -0.6276, 0.6276, -0.6276), ("H", 0.6276, -0.6276, -0.6276)],
    "sih4": [("Si", 0, 0, 0), ("H", 0.8544, 0.8544, 0.8544), ("H", -0.8544, -0.8544, 0.8544),
             ("H", -0.8544, 0.8544, -0.8544), ("H", 0.8544, -0.8544, -0.8544)],
    "ch3f": [("C", 0, 0, 0), ("F", 0, 0, 1.383), ("H", 1.0270, 0, -0.3630),
             ("H", -0.5135, 0.8894, -0.3630), ("H", -0.5135, -0.8894, -0.3630)],
    "c2h4": [("C", 0, 0, 0.6695), ("C", 0, 0, -0.6695), ("H", 0, 0.9289, 1.2321),
             ("H", 0, -0.9289, 1.2321), ("H", 0, 0.9289, -1.2321), ("H", 0, -0.9289, -1.2321)],
}
DISPLACED_WATERS = 28
DISPLACEMENT = 0.05  # Å, the spread of each coordinate of a displaced water


def jobs():
    for name, atoms in MOLECULES.items():
        yield name, [(s, (x, y, z)) for s, x, y, z in atoms]
    rng = np.random.default_rng(2026)
    water = np.array([a[1:] for a in MOLECULES["h2o"]], dtype=float)
    for k in range(1, DISPLACED_WATERS + 1):
        pos = water + rng.normal(scale=DISPLACEMENT, size=water.shape)
        yield f"water{k:02d}", list(zip(("O", "H", "H"), pos))


def mol_text(name, atoms, example):
    head, _, _ = example.partition("# atoms:")
    head = head.replace("\n6-31Gxx\n", "\n3-21G\n").replace("\nwater 0\n", f"\n{name} 0\n")
    lines = [f"{s:<2} {x:14.8f} {y:14.8f} {z:14.8f}" for s, (x, y, z) in atoms]
    return head + "# atoms: symbol, x, y, z [Angstrom]\n" + "\n".join(lines) + "\n"


def main(argv):
    if not argv or argv[0].startswith("-"):
        print(__doc__, file=sys.stderr)
        return 2
    folder, as_mol = argv[0], "--mol" in argv[1:]
    os.makedirs(folder, exist_ok=True)
    example_path = os.path.join(os.path.dirname(__file__), "..", "..", "examples", "water.mol")
    with open(example_path, encoding="utf-8") as f:
        example = f.read()
    count = 0
    for name, atoms in jobs():
        if as_mol:
            text = mol_text(name, atoms, example)
            path = os.path.join(folder, name + ".mol")
        else:
            lines = [f"{s:<2} {x:14.8f} {y:14.8f} {z:14.8f}" for s, (x, y, z) in atoms]
            text = f"{len(atoms)}\n{name}\n" + "\n".join(lines) + "\n"
            path = os.path.join(folder, name + ".xyz")
        with open(path, "w", encoding="utf-8") as f:
            f.write(text)
        count += 1
    print(f"{count} jobs in {folder}")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
