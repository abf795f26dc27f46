#!/usr/bin/env python3
"""Writes a molecule file at a rotated and translated geometry.

    tests/determinism/rotate_molecule.py IN.mol OUT.mol

The rotation is R = Rz(70°)·Ry(50°)·Rz(30°) (angles about the fixed axes, applied
right to left), followed by the translation (0.7, −1.3, 2.1) Å: no symmetry axis or
plane of the test molecules stays on a coordinate axis or plane.  Every record but
the atoms is copied; a comment record before the atoms states the transformation.
Positions are written with 10 decimals (a change of 1e-10 Å moves the energy by
far less than 1e-10 hartree).
"""
import math
import sys

ANGLES_DEG = (30.0, 50.0, 70.0)
SHIFT_A = (0.7, -1.3, 2.1)


def rz(t):
    c, s = math.cos(t), math.sin(t)
    return [[c, -s, 0.0], [s, c, 0.0], [0.0, 0.0, 1.0]]


def ry(t):
    c, s = math.cos(t), math.sin(t)
    return [[c, 0.0, s], [0.0, 1.0, 0.0], [-s, 0.0, c]]


def matmul(a, b):
    return [[sum(a[i][k] * b[k][j] for k in range(3)) for j in range(3)] for i in range(3)]


def rotation():
    a, b, g = (math.radians(x) for x in ANGLES_DEG)
    return matmul(rz(g), matmul(ry(b), rz(a)))


def main(src, dst):
    lines = open(src).read().splitlines()
    # Records alternate comment and value; the atoms start at record 24 and run to
    # the end of the file, so record 23 is the comment before them.
    head, atoms = lines[:22], [x for x in lines[23:] if x.strip()]
    r = rotation()
    out = head + [
        "# atoms [A], rotated by Rz(70)Ry(50)Rz(30) degrees and shifted by (0.7, -1.3, 2.1)"
    ]
    for line in atoms:
        sym, *xyz = line.split()
        p = [float(v) for v in xyz]
        q = [sum(r[i][k] * p[k] for k in range(3)) + SHIFT_A[i] for i in range(3)]
        out.append(f"{sym:<3}" + "".join(f"{v:18.10f}" for v in q))
    open(dst, "w").write("\n".join(out) + "\n")


if __name__ == "__main__":
    main(*sys.argv[1:])
