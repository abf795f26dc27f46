"""Checks the orbitals of a molden file against its own basis.

Reads [Atoms], [GTO] and [MO], builds the overlap matrix of the contracted
Cartesian Gaussians (every contracted function normalised, molden's Cartesian
order) independently of norvik, and requires
  - C^T S C = 1 for the orbitals of each spin (orthonormal orbitals: a wrong
    order or normalisation of the d functions breaks this at once),
  - sum_i occ_i c_i^T S c_i = the electron count given on the command line.

usage: check_molden.py FILE.molden ELECTRONS
"""
import math
import sys

import numpy as np

# Orthonormality and electron count hold to rounding in the coefficients
# (14 significant digits written) and the published contraction coefficients,
# which leave contracted functions normalised to 5e-7 at worst (norvik's own
# S_ii); the orbitals are orthonormal in norvik's overlap to about 1e-12.
TOLERANCE = 1e-6

ANGSTROM_PER_BOHR = 0.5291772104
CARTESIAN = {
    0: [(0, 0, 0)],
    1: [(1, 0, 0), (0, 1, 0), (0, 0, 1)],
    2: [(2, 0, 0), (0, 2, 0), (0, 0, 2), (1, 1, 0), (1, 0, 1), (0, 1, 1)],
    3: [(3, 0, 0), (0, 3, 0), (0, 0, 3), (1, 2, 0), (2, 1, 0), (2, 0, 1),
        (1, 0, 2), (0, 1, 2), (0, 2, 1), (1, 1, 1)],
}
LETTERS = {"s": 0, "p": 1, "d": 2, "f": 3}


def sections(path):
    out, name = {}, None
    for line in open(path):
        line = line.rstrip("\n")
        if line.startswith("["):
            name = line[1:line.index("]")].upper()
            out[name] = [line]
        elif name:
            out[name].append(line)
    return out


def overlap_1d(a, b, alpha, beta, xa, xb):
    p = alpha + beta
    xp = (alpha * xa + beta * xb) / p
    s = np.zeros((a + 1, b + 1))
    s[0, 0] = math.sqrt(math.pi / p) * math.exp(-alpha * beta / p * (xa - xb) ** 2)
    for i in range(a + 1):
        for j in range(b + 1):
            if i == 0 and j == 0:
                continue
            if i > 0:
                v = (xp - xa) * s[i - 1, j]
                v += ((i - 1) * s[i - 2, j] if i > 1 else 0.0) / (2 * p)
                v += (j * s[i - 1, j - 1] if j > 0 else 0.0) / (2 * p)
            else:
                v = (xp - xb) * s[i, j - 1]
                v += ((j - 1) * s[i, j - 2] if j > 1 else 0.0) / (2 * p)
            s[i, j] = v
    return s[a, b]


def primitive_overlap(ea, alpha, ca, eb, beta, cb):
    return np.prod([overlap_1d(ea[k], eb[k], alpha, beta, ca[k], cb[k]) for k in range(3)])


def basis_functions(sec):
    atoms = []
    unit = 1.0 / ANGSTROM_PER_BOHR if "ANGS" in sec["ATOMS"][0].upper() else 1.0
    for line in sec["ATOMS"][1:]:
        f = line.split()
        if len(f) >= 6:
            atoms.append(np.array([float(x) for x in f[3:6]]) * unit)
    functions = []  # (centre, exponents, primitive coefficients incl. norms, monomial)
    lines = sec["GTO"][1:]
    i, atom = 0, None
    while i < len(lines):
        f = lines[i].split()
        i += 1
        if not f:
            continue
        if f[0].isdigit():
            atom = int(f[0]) - 1
            continue
        l, n = LETTERS[f[0].lower()], int(f[1])
        prims = [tuple(float(x.replace("D", "E")) for x in lines[i + k].split()) for k in range(n)]
        i += n
        for e in CARTESIAN[l]:
            centre = atoms[atom]
            coefs = [d / math.sqrt(primitive_overlap(e, a, centre, e, a, centre)) for a, d in prims]
            norm = sum(ci * cj * primitive_overlap(e, ai, centre, e, aj, centre)
                       for (ai, _), ci in zip(prims, coefs) for (aj, _), cj in zip(prims, coefs))
            functions.append((centre, [a for a, _ in prims], [c / math.sqrt(norm) for c in coefs], e))
    return functions


def overlap_matrix(functions):
    n = len(functions)
    s = np.zeros((n, n))
    for i, (ci, ai, di, ei) in enumerate(functions):
        for j, (cj, aj, dj, ej) in enumerate(functions[: i + 1]):
            v = sum(x * y * primitive_overlap(ei, a, ci, ej, b, cj)
                    for a, x in zip(ai, di) for b, y in zip(aj, dj))
            s[i, j] = s[j, i] = v
    return s


def orbitals(sec, n):
    out = []  # (spin, occupation, coefficients)
    spin, occ, coef = "Alpha", 0.0, None
    for line in sec["MO"][1:] + ["Sym= end"]:
        f = line.replace("=", "= ").split()
        if not f:
            continue
        key = f[0].lower()
        if key == "sym=":
            if coef is not None:
                out.append((spin, occ, coef))
            coef = np.zeros(n)
        elif key == "spin=":
            spin = f[1]
        elif key == "occup=":
            occ = float(f[1])
        elif key[0].isdigit():
            coef[int(f[0]) - 1] = float(f[1])
    return out


def main():
    path, electrons = sys.argv[1], float(sys.argv[2])
    sec = sections(path)
    functions = basis_functions(sec)
    s = overlap_matrix(functions)
    mos = orbitals(sec, len(functions))
    problems = []
    count = 0.0
    for spin in ("Alpha", "Beta"):
        c = np.array([m[2] for m in mos if m[0] == spin])
        if c.size == 0:
            continue
        worst = np.abs(c @ s @ c.T - np.eye(len(c))).max()
        print(f"{spin}: {len(c)} orbitals over {len(functions)} Cartesian functions, "
              f"largest |C^T S C - 1| = {worst:.2e}")
        if worst > TOLERANCE:
            problems.append(f"{spin} orbitals not orthonormal: {worst:.2e}")
    for _, occ, c in mos:
        count += occ * c @ s @ c
    print(f"electrons: {count:.10f} (expected {electrons})")
    if abs(count - electrons) > TOLERANCE:
        problems.append(f"electron count {count} differs from {electrons}")
    for p in problems:
        print("FAIL:", p)
    sys.exit(1 if problems else 0)


if __name__ == "__main__":
    main()
