#!/usr/bin/python3
"""Independent high-precision reference integrals over Cartesian Gaussians.

Primitive one- and two-electron integrals of unnormalised Cartesian Gaussians
x^l y^m z^n exp(-alpha r^2), computed in mpmath by the McMurchie-Davidson
scheme: Hermite expansion coefficients E_t^{ij} of each Gaussian product and
the Hermite Coulomb integrals R_tuv from the Boys function, which is taken
here from mpmath's confluent hypergeometric function,
    F_n(T) = 1F1(n + 1/2; n + 3/2; -T) / (2n + 1),
so nothing is shared with the Rys-quadrature route that the vectors test.

Writes the committed test vectors (deterministic: fixed seed, fixed precision,
inputs rounded to short decimals that are exact in the output):
  tests/rys/data/eri_reference.txt          every class up to (dd|dd), full blocks
  tests/rys/data/eri_reference_high.txt     classes with f ... i shells, sampled components
  tests/rys/data/one_electron_reference.txt overlap, kinetic, nuclear attraction, dipole

Usage: reference_integrals.py [--output-dir DIR] [--only eri|high|one]
The file formats are described in docs/rys.md.
"""

import argparse
import itertools
import os
import random

import mpmath

mp = mpmath.mp
mp.dps = 40  # 40 digits: the values are printed with 20

REPO = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", ".."))
DEFAULT_OUTPUT = os.path.join(REPO, "tests", "rys", "data")
DIGITS = 20


def components(L):
    """Cartesian components of angular momentum L in the library's order."""
    return [(i, j, L - i - j) for i in range(L, -1, -1) for j in range(L - i, -1, -1)]


def boys(nmax, t):
    return [mpmath.hyp1f1(n + mp.mpf(1) / 2, n + mp.mpf(3) / 2, -t) / (2 * n + 1)
            for n in range(nmax + 1)]


def hermite_e(imax, jmax, alpha, beta, a, b):
    """E[i][j][t] for one axis: x_A^i x_B^j exp(..) = sum_t E_t Lambda_t, including
    the Gaussian-product factor exp(-mu (a - b)^2)."""
    p = alpha + beta
    mu = alpha * beta / p
    px = (alpha * a + beta * b) / p
    pa, pb = px - a, px - b
    E = [[[mp.mpf(0)] * (imax + jmax + 2) for _ in range(jmax + 1)] for _ in range(imax + 1)]
    E[0][0][0] = mp.exp(-mu * (a - b) ** 2)
    for i in range(imax + 1):
        for j in range(jmax + 1):
            if i == 0 and j == 0:
                continue
            if i > 0:
                src, shift, ii, jj = E[i - 1][j], pa, i - 1, j
            else:
                src, shift, ii, jj = E[i][j - 1], pb, i, j - 1
            for t in range(ii + jj + 2):
                v = shift * src[t]
                if t > 0:
                    v += src[t - 1] / (2 * p)
                if t + 1 <= ii + jj:
                    v += (t + 1) * src[t + 1]
                E[i][j][t] = v
    return E


def hermite_r(lmax, alpha, pc):
    """R[t][u][v] = R^0_tuv for the exponent alpha and the vector pc, t+u+v <= lmax."""
    t2 = alpha * (pc[0] ** 2 + pc[1] ** 2 + pc[2] ** 2)
    f = boys(lmax, t2)
    # R^n_000 = (-2 alpha)^n F_n; then raise t, u, v with lowering n.
    cur = {}
    for n in range(lmax + 1):
        cur[(0, 0, 0, n)] = (-2 * alpha) ** n * f[n]

    def get(t, u, v, n):
        key = (t, u, v, n)
        if key in cur:
            return cur[key]
        if t > 0:
            val = pc[0] * get(t - 1, u, v, n + 1)
            if t > 1:
                val += (t - 1) * get(t - 2, u, v, n + 1)
        elif u > 0:
            val = pc[1] * get(t, u - 1, v, n + 1)
            if u > 1:
                val += (u - 1) * get(t, u - 2, v, n + 1)
        else:
            val = pc[2] * get(t, u, v - 1, n + 1)
            if v > 1:
                val += (v - 1) * get(t, u, v - 2, n + 1)
        cur[key] = val
        return val

    R = {}
    for t in range(lmax + 1):
        for u in range(lmax + 1 - t):
            for v in range(lmax + 1 - t - u):
                R[(t, u, v)] = get(t, u, v, 0)
    return R


class PairExpansion:
    """Hermite expansion of the product of two primitive shells."""

    def __init__(self, la, lb, alpha, beta, A, B):
        self.p = alpha + beta
        self.P = [(alpha * A[k] + beta * B[k]) / self.p for k in range(3)]
        self.E = [hermite_e(la, lb, alpha, beta, A[k], B[k]) for k in range(3)]

    def terms(self, ca, cb):
        """Nonzero (t, u, v, coefficient) of the component pair (ca, cb)."""
        ex = self.E[0][ca[0]][cb[0]]
        ey = self.E[1][ca[1]][cb[1]]
        ez = self.E[2][ca[2]][cb[2]]
        out = []
        for t in range(ca[0] + cb[0] + 1):
            for u in range(ca[1] + cb[1] + 1):
                for v in range(ca[2] + cb[2] + 1):
                    out.append((t, u, v, ex[t] * ey[u] * ez[v]))
        return out


def primitive_eri_block(shells, prims, wanted):
    """Primitive integrals for the primitive indices `prims` of the four shells,
    for the component quartets `wanted` (tuples of component indices)."""
    (la, A, ea, _), (lb, B, eb, _), (lc, C, ec, _), (ld, D, ed, _) = shells
    alpha, beta, gamma, delta = (ea[prims[0]], eb[prims[1]], ec[prims[2]], ed[prims[3]])
    bra = PairExpansion(la, lb, alpha, beta, A, B)
    ket = PairExpansion(lc, ld, gamma, delta, C, D)
    p, q = bra.p, ket.p
    rho = p * q / (p + q)
    pq = [bra.P[k] - ket.P[k] for k in range(3)]
    R = hermite_r(la + lb + lc + ld, rho, pq)
    pref = 2 * mp.pi ** mp.mpf(2.5) / (p * q * mp.sqrt(p + q))
    comp = [components(l) for l in (la, lb, lc, ld)]
    ket_cache = {}
    out = {}
    for key in wanted:
        ia, ib, ic, id_ = key
        if (ic, id_) not in ket_cache:
            ket_cache[(ic, id_)] = [(t, u, v, (-1) ** (t + u + v) * c)
                                    for t, u, v, c in ket.terms(comp[2][ic], comp[3][id_])]
        kterms = ket_cache[(ic, id_)]
        total = mp.mpf(0)
        for t, u, v, c1 in bra.terms(comp[0][ia], comp[1][ib]):
            s = mp.mpf(0)
            for t2, u2, v2, c2 in kterms:
                s += c2 * R[(t + t2, u + u2, v + v2)]
            total += c1 * s
        out[key] = pref * total
    return out


def contracted_eri(shells, wanted):
    totals = {k: mp.mpf(0) for k in wanted}
    ranges = [range(len(s[2])) for s in shells]
    for prims in itertools.product(*ranges):
        coef = 1
        for s, i in zip(shells, prims):
            coef *= s[3][i]
        block = primitive_eri_block(shells, prims, wanted)
        for k in wanted:
            totals[k] += coef * block[k]
    return totals


def short(x, digits=4):
    """A random value rounded to a short decimal, returned as the text and as the
    exact mpf of the double it denotes."""
    text = "%.*g" % (digits, x)
    return text, mp.mpf(float(text))


def random_shell(rng, L, nprim, box=1.2):
    centre = [short(rng.uniform(-box, box)) for _ in range(3)]
    exps = sorted((short(10 ** rng.uniform(-1.0, 1.2)) for _ in range(nprim)),
                  key=lambda e: -e[1])
    coefs = [short(rng.uniform(0.2, 1.0)) for _ in range(nprim)]
    return L, centre, exps, coefs


def as_mp(shell):
    L, centre, exps, coefs = shell
    return (L, [c[1] for c in centre], [e[1] for e in exps], [c[1] for c in coefs])


def shell_line(shell):
    L, centre, exps, coefs = shell
    return "shell %d %d %s %s %s" % (L, len(exps), " ".join(c[0] for c in centre),
                                     " ".join(e[0] for e in exps), " ".join(c[0] for c in coefs))


def value_text(v):
    return mpmath.nstr(v, DIGITS, min_fixed=1, max_fixed=0, strip_zeros=False)


LETTERS = "spdfghi"


def quartet_record(label, shells, sample, rng):
    ncomp = [len(components(s[0])) for s in shells]
    every = list(itertools.product(*[range(n) for n in ncomp]))
    if sample is None or sample >= len(every):
        wanted = every
    else:
        wanted = sorted(set([every[0], every[-1]] + rng.sample(every, sample)))
    values = contracted_eri([as_mp(s) for s in shells], wanted)
    lines = ["quartet %s" % label] + [shell_line(s) for s in shells]
    lines.append("values %d" % len(wanted))
    for k in wanted:
        lines.append("%d %d %d %d %s" % (k[0], k[1], k[2], k[3], value_text(values[k])))
    lines.append("end")
    return lines


HEADER_ERI = """# Contracted electron-repulsion integrals (ab|cd) in hartree over unnormalised
# Cartesian Gaussians, from tools/reference/reference_integrals.py (mpmath,
# McMurchie-Davidson, %d digits printed).  Format (docs/rys.md):
#   quartet LABEL
#   shell L nprim Cx Cy Cz exp_1 .. exp_nprim coef_1 .. coef_nprim   (four lines: a b c d)
#   values COUNT
#   ia ib ic id VALUE     (0-based components, order x^L, x^(L-1)y, ...)
#   end
# Every primitive quartet is included (no screening).""" % DIGITS


def write_eri(path, seed):
    rng = random.Random(seed)
    lines = HEADER_ERI.split("\n")
    for la, lb, lc, ld in itertools.product(range(3), repeat=4):
        label = "%s%s|%s%s" % tuple(LETTERS[l] for l in (la, lb, lc, ld))
        nprims = (2, 1, 2, 2) if la + lb + lc + ld <= 4 else (2, 1, 1, 2)
        shells = [random_shell(rng, l, n) for l, n in zip((la, lb, lc, ld), nprims)]
        lines += quartet_record(label, shells, None, rng)
    # Special geometries for a few classes: one centre, two centres, a collinear
    # arrangement (many exactly zero integrals), far-apart pairs (large X).
    for label, ls in (("pd|dp one centre", (1, 2, 2, 1)), ("dd|dd one centre", (2, 2, 2, 2)),
                      ("dp|pd two centres", (2, 1, 1, 2)), ("dd|pp collinear", (2, 2, 1, 1)),
                      ("pp|dd far", (1, 1, 2, 2))):
        shells = [random_shell(rng, l, 2) for l in ls]
        if "one centre" in label:
            shells = [(s[0], shells[0][1], s[2], s[3]) for s in shells]
        elif "two centres" in label:
            shells = [(s[0], shells[0][1] if k < 2 else shells[2][1], s[2], s[3])
                      for k, s in enumerate(shells)]
        elif "collinear" in label:
            shells = [(s[0], [short(0.0), short(0.0), short(z)], s[2], s[3])
                      for s, z in zip(shells, (-1.1, 0.3, 0.9, 2.05))]
        elif "far" in label:
            # The ket pair 6 bohr further along x: X = rho |PQ|^2 in the asymptotic range.
            shells = [(s[0], [short(float(s[1][0][0]) + 6.0)] + s[1][1:] if k >= 2 else s[1],
                       s[2], s[3]) for k, s in enumerate(shells)]
        lines += quartet_record(label.replace(" ", "_"), shells, None, rng)
    with open(path, "w", newline="\n") as out:
        out.write("\n".join(lines) + "\n")


def write_high(path, seed):
    rng = random.Random(seed)
    lines = HEADER_ERI.split("\n")
    lines[1] = "# Cartesian Gaussians with f ... i shells (sampled components), from"
    classes = [(3, 0, 0, 0, 2), (3, 1, 0, 0, 2), (3, 3, 0, 0, 1), (3, 0, 3, 0, 2),
               (3, 2, 1, 0, 1), (3, 3, 3, 3, 1), (3, 2, 3, 2, 1), (4, 0, 0, 0, 2),
               (4, 4, 0, 0, 1), (4, 1, 2, 3, 1), (4, 4, 4, 4, 1), (5, 0, 0, 0, 2),
               (5, 0, 5, 0, 1), (5, 2, 1, 3, 1), (5, 5, 5, 5, 1), (6, 0, 0, 0, 2),
               (6, 6, 0, 0, 1), (6, 0, 6, 0, 1), (6, 3, 2, 4, 1), (6, 6, 6, 6, 1),
               (0, 0, 6, 6, 1), (2, 6, 1, 5, 1)]
    for la, lb, lc, ld, nprim in classes:
        label = "%s%s|%s%s" % tuple(LETTERS[l] for l in (la, lb, lc, ld))
        shells = [random_shell(rng, l, nprim) for l in (la, lb, lc, ld)]
        lines += quartet_record(label, shells, 40, rng)
    with open(path, "w", newline="\n") as out:
        out.write("\n".join(lines) + "\n")


# One-electron integrals ------------------------------------------------------

def overlap_1d(i, j, E, p):
    return E[i][j][0] * mp.sqrt(mp.pi / p)


def one_electron(kind, A, alpha, la, B, beta, lb, C=None):
    """One primitive one-electron integral; la, lb are (l, m, n) triples."""
    p = alpha + beta
    imax = [la[k] + 1 for k in range(3)]
    jmax = [lb[k] + 2 for k in range(3)]
    E = [hermite_e(imax[k], jmax[k], alpha, beta, A[k], B[k]) for k in range(3)]
    S = [overlap_1d(la[k], lb[k], E[k], p) for k in range(3)]
    if kind == "overlap":
        return S[0] * S[1] * S[2]
    if kind == "kinetic":
        T = []
        for k in range(3):
            i, j = la[k], lb[k]
            t = -2 * beta ** 2 * overlap_1d(i, j + 2, E[k], p) \
                + beta * (2 * j + 1) * overlap_1d(i, j, E[k], p)
            if j >= 2:
                t -= mp.mpf(j * (j - 1)) / 2 * overlap_1d(i, j - 2, E[k], p)
            T.append(t)
        return T[0] * S[1] * S[2] + S[0] * T[1] * S[2] + S[0] * S[1] * T[2]
    if kind.startswith("dipole"):
        k = "xyz".index(kind[-1])
        Pk = (alpha * A[k] + beta * B[k]) / p
        # x = (x - P_x) + P_x: the Hermite function Lambda_1 integrates x - P_x.
        m = (E[k][la[k]][lb[k]][1] + Pk * E[k][la[k]][lb[k]][0]) * mp.sqrt(mp.pi / p)
        out = m
        for kk in range(3):
            if kk != k:
                out *= S[kk]
        return out
    if kind == "nuclear":
        P = [(alpha * A[k] + beta * B[k]) / p for k in range(3)]
        pc = [P[k] - C[k] for k in range(3)]
        R = hermite_r(sum(la) + sum(lb), p, pc)
        total = mp.mpf(0)
        for t in range(la[0] + lb[0] + 1):
            for u in range(la[1] + lb[1] + 1):
                for v in range(la[2] + lb[2] + 1):
                    total += (E[0][la[0]][lb[0]][t] * E[1][la[1]][lb[1]][u]
                              * E[2][la[2]][lb[2]][v] * R[(t, u, v)])
        return 2 * mp.pi / p * total
    raise ValueError(kind)


HEADER_ONE = """# Primitive one-electron integrals over unnormalised Cartesian Gaussians
# x^l y^m z^n exp(-alpha r^2) (bohr, hartree), from
# tools/reference/reference_integrals.py (mpmath, McMurchie-Davidson, %d digits).
# One record per line (docs/rys.md):
#   KIND Ax Ay Az alpha lA mA nA Bx By Bz beta lB mB nB Cx Cy Cz VALUE
# KIND: overlap <a|b>; kinetic <a|-1/2 nabla^2|b>; nuclear <a|1/|r-C||b> (positive);
# dipole_x, dipole_y, dipole_z <a|x|b> etc. (coordinate about the origin).
# C is 0 0 0 for every kind but nuclear.""" % DIGITS


def write_one(path, seed):
    rng = random.Random(seed)
    lines = HEADER_ONE.split("\n")
    kinds = ["overlap", "kinetic", "nuclear", "dipole_x", "dipole_y", "dipole_z"]
    for la, lb in itertools.product(range(4), repeat=2):
        for geometry in ("general", "same centre"):
            A = [short(rng.uniform(-1.5, 1.5)) for _ in range(3)]
            B = A if geometry == "same centre" else [short(rng.uniform(-1.5, 1.5))
                                                     for _ in range(3)]
            C = [short(rng.uniform(-1.5, 1.5)) for _ in range(3)]
            alpha = short(10 ** rng.uniform(-1, 1.2))
            beta = short(10 ** rng.uniform(-1, 1.2))
            pairs = list(itertools.product(components(la), components(lb)))
            if len(pairs) > 12:
                pairs = [pairs[0], pairs[-1]] + rng.sample(pairs[1:-1], 10)
            for ca, cb in pairs:
                for kind in kinds:
                    value = one_electron(kind, [x[1] for x in A], alpha[1], ca,
                                         [x[1] for x in B], beta[1], cb, [x[1] for x in C])
                    cpos = C if kind == "nuclear" else [("0", 0)] * 3
                    lines.append("%s %s %s %d %d %d %s %s %d %d %d %s %s" % (
                        kind, " ".join(x[0] for x in A), alpha[0], ca[0], ca[1], ca[2],
                        " ".join(x[0] for x in B), beta[0], cb[0], cb[1], cb[2],
                        " ".join(x[0] for x in cpos), value_text(value)))
    with open(path, "w", newline="\n") as out:
        out.write("\n".join(lines) + "\n")


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--output-dir", default=DEFAULT_OUTPUT)
    parser.add_argument("--only", choices=["eri", "high", "one"])
    args = parser.parse_args()
    os.makedirs(args.output_dir, exist_ok=True)
    if args.only in (None, "eri"):
        write_eri(os.path.join(args.output_dir, "eri_reference.txt"), 1001)
    if args.only in (None, "high"):
        write_high(os.path.join(args.output_dir, "eri_reference_high.txt"), 2002)
    if args.only in (None, "one"):
        write_one(os.path.join(args.output_dir, "one_electron_reference.txt"), 3003)


if __name__ == "__main__":
    main()
