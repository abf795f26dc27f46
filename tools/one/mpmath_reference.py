#!/usr/bin/python3
"""High-precision reference values for the one-electron integral tests.

Nothing here uses the Gaussian-product formulas of the library: every value is a
numerical integral evaluated by mpmath at 30 significant digits.

  boys.txt        F_nu(T) = integral_0^1 t^(2 nu) exp(-T t^2) dt, from the
                  incomplete gamma function, F_nu(T) = gamma(nu + 1/2, 0, T) /
                  (2 T^(nu + 1/2)), for nu = 0 .. 15 at the T of interest
                  (zero, tiny, the seams T = 0.1 numax and T = 500, large T).
  primitives.txt  overlap, kinetic-energy, nuclear-attraction and moment
                  integrals of primitive Cartesian Gaussian pairs, each as a
                  product of one-dimensional quadratures (kinetic energy as
                  1/2 <grad a|grad b>; 1/r_C through
                  1/r = 2/sqrt(pi) integral_0^inf exp(-u^2 r^2) du, the inner
                  polynomial-times-Gaussian integrals by 12-point Gauss-Hermite
                  quadrature, exact for their degree).

Usage: /usr/bin/python3 tools/one/mpmath_reference.py OUTPUT_DIR
Writes OUTPUT_DIR/boys.txt and OUTPUT_DIR/primitives.txt; the tests read
tests/one/data/.
"""
import sys

import mpmath
from mpmath import mpf

mpmath.mp.dps = 30

BOYS_T = [
    "0", "1e-12", "1e-10", "1e-6", "0.01", "0.05", "0.0999999999", "0.1", "0.25",
    "0.3", "0.5999999999", "0.6", "0.6000000001", "0.8", "1.0", "1.4999999999", "1.5",
    "2.0", "3.7", "5.0", "8.0", "12.5", "20.0", "33.0", "50.0", "75.0", "100.0",
    "200.0", "350.0", "499.9999999", "500.0", "500.0000001", "650.0", "1000.0", "5000.0",
]


def boys(nu, t):
    if t == 0:
        return mpf(1) / (2 * nu + 1)
    a = nu + mpf(1) / 2
    return mpmath.gammainc(a, 0, t) / (2 * t ** a)


def write_boys(path):
    lines = ["# T nu F_nu(T)  (mpmath, 30 digits; tools/one/mpmath_reference.py)"]
    for ts in BOYS_T:
        t = mpf(ts)
        for nu in range(16):
            lines.append("%s %d %s" % (ts, nu, mpmath.nstr(boys(nu, t), 25, min_fixed=-1,
                                                            max_fixed=-1)))
    with open(path, "w") as out:
        out.write("\n".join(lines) + "\n")


# ---- one-dimensional pieces ----

def axis_points(centre, width):
    return [centre + k * width for k in (-40, -12, -5, -2, 0, 2, 5, 12, 40)]


def gaussian_1d(x, centre, alpha, l):
    d = x - centre
    return d ** l * mpmath.exp(-alpha * d * d)


def dgaussian_1d(x, centre, alpha, l):
    d = x - centre
    poly = -2 * alpha * d ** (l + 1)
    if l > 0:
        poly += l * d ** (l - 1)
    return poly * mpmath.exp(-alpha * d * d)


def product_centre(a, alpha, b, beta, c=None, w=0):
    gamma = alpha + beta + w
    p = alpha * a + beta * b + (w * c if c is not None else 0)
    return p / gamma, 1 / mpmath.sqrt(gamma)


def overlap_1d(a, alpha, la, b, beta, lb, extra=0):
    """integral (x-a)^la (x-b)^(lb+extra)... with b's power raised by `extra`."""
    centre, width = product_centre(a, alpha, b, beta)
    f = lambda x: gaussian_1d(x, a, alpha, la) * gaussian_1d(x, b, beta, lb + extra)
    return mpmath.quad(f, axis_points(centre, width))


def moment_1d(a, alpha, la, b, beta, lb, power):
    """integral x^power a(x) b(x) dx about the origin."""
    centre, width = product_centre(a, alpha, b, beta)
    f = lambda x: x ** power * gaussian_1d(x, a, alpha, la) * gaussian_1d(x, b, beta, lb)
    return mpmath.quad(f, axis_points(centre, width))


def kinetic_1d(a, alpha, la, b, beta, lb):
    centre, width = product_centre(a, alpha, b, beta)
    f = lambda x: dgaussian_1d(x, a, alpha, la) * dgaussian_1d(x, b, beta, lb)
    return mpmath.quad(f, axis_points(centre, width))


def overlap3(A, alpha, la, B, beta, lb):
    r = mpf(1)
    for k in range(3):
        r *= overlap_1d(A[k], alpha, la[k], B[k], beta, lb[k])
    return r


def kinetic3(A, alpha, la, B, beta, lb):
    s = [overlap_1d(A[k], alpha, la[k], B[k], beta, lb[k]) for k in range(3)]
    d = [kinetic_1d(A[k], alpha, la[k], B[k], beta, lb[k]) for k in range(3)]
    return (d[0] * s[1] * s[2] + s[0] * d[1] * s[2] + s[0] * s[1] * d[2]) / 2


def moment3(A, alpha, la, B, beta, lb, powers):
    r = mpf(1)
    for k in range(3):
        r *= moment_1d(A[k], alpha, la[k], B[k], beta, lb[k], powers[k])
    return r


def hermite_rule(n):
    """Gauss-Hermite nodes and weights (weight exp(-x^2)), exact for degree 2n - 1."""
    coeffs = [int(c) for c in reversed(mpmath.taylor(lambda x: mpmath.hermite(n, x), 0, n))]
    nodes = sorted(mpmath.re(r) for r in mpmath.polyroots(coeffs, maxsteps=200, extraprec=200))
    weights = [2 ** (n - 1) * mpmath.factorial(n) * mpmath.sqrt(mpmath.pi) /
               (n * n * mpmath.hermite(n - 1, x) ** 2) for x in nodes]
    return nodes, weights


HERMITE = hermite_rule(12)


def gaussian_product_1d(poly, centre, gamma):
    """integral poly(x) exp(-gamma (x - centre)^2) dx for a polynomial of degree <= 23."""
    scale = 1 / mpmath.sqrt(gamma)
    return scale * mpmath.fsum(w * poly(centre + scale * x) for x, w in zip(*HERMITE))


def nuclear3(A, alpha, la, B, beta, lb, C):
    # exp(-alpha(x-a)^2 - beta(x-b)^2 - w(x-c)^2) = exp(-g (x-p)^2) exp(-k), completed square
    def inner(u):
        w = u * u
        r = mpf(1)
        for k in range(3):
            g = alpha + beta + w
            p = (alpha * A[k] + beta * B[k] + w * C[k]) / g
            rest = (alpha * beta * (A[k] - B[k]) ** 2 + alpha * w * (A[k] - C[k]) ** 2 +
                    beta * w * (B[k] - C[k]) ** 2) / g
            poly = lambda x, k=k: (x - A[k]) ** la[k] * (x - B[k]) ** lb[k]
            r *= mpmath.exp(-rest) * gaussian_product_1d(poly, p, g)
        return r
    return 2 / mpmath.sqrt(mpmath.pi) * mpmath.quad(inner, [0, 0.25, 1, 4, 16, mpmath.inf])


# (A, alpha, lmnA, B, beta, lmnB, C) in bohr; chosen to reach every branch:
# s to f, coincident axes, C at P (T = 0), small and large T, and per-axis
# exponent sums of 6 and 7 (the general A-factor sum).
CASES = [
    (("0", "0", "0"), "1.0", (0, 0, 0), ("0", "0", "0"), "1.0", (0, 0, 0), ("0.3", "-0.2", "0.5")),
    (("0.1", "-0.3", "0.7"), "0.8", (1, 0, 0), ("-0.5", "0.4", "0.2"), "1.3", (0, 1, 0),
     ("0.2", "0.1", "-0.4")),
    (("0.1", "-0.3", "0.7"), "2.5", (0, 1, 1), ("0.1", "0.9", "-0.6"), "0.45", (1, 0, 1),
     ("1.1", "-0.7", "0.3")),
    (("0.0", "0.0", "1.2"), "0.35", (2, 0, 0), ("0.0", "0.0", "-1.1"), "0.6", (0, 0, 2),
     ("0.0", "0.0", "0.0")),
    (("0.4", "0.2", "-0.3"), "1.7", (1, 1, 1), ("-0.6", "0.5", "0.8"), "0.9", (3, 0, 0),
     ("0.9", "-1.4", "0.6")),
    (("0.4", "0.2", "-0.3"), "0.7", (0, 2, 1), ("0.3", "-0.8", "0.1"), "1.1", (1, 0, 2),
     ("-0.2", "0.5", "1.3")),
    (("0.2", "0.2", "0.2"), "4.0", (0, 0, 1), ("0.2", "0.2", "0.2"), "4.0", (0, 0, 1),
     ("0.2", "0.2", "0.2")),
    (("1.0", "0.0", "0.0"), "0.5", (1, 0, 0), ("-1.0", "0.0", "0.0"), "0.5", (2, 0, 0),
     ("0.0", "0.0", "0.0")),
    (("0.0", "0.0", "0.0"), "12.0", (0, 0, 0), ("0.1", "0.0", "0.0"), "9.0", (1, 0, 0),
     ("7.5", "-3.0", "2.0")),
    (("0.3", "-0.1", "0.2"), "0.9", (4, 1, 0), ("-0.4", "0.3", "0.5"), "0.8", (2, 0, 1),
     ("0.1", "0.6", "-0.3")),
    (("0.3", "-0.1", "0.2"), "1.2", (6, 0, 0), ("-0.2", "0.3", "0.1"), "0.7", (1, 0, 0),
     ("0.5", "0.2", "-0.6")),
    (("0.0", "0.2", "-0.1"), "0.9", (0, 0, 0), ("0.4", "-0.3", "0.6"), "1.4", (0, 2, 6),
     ("-0.3", "0.1", "0.2")),
    (("0.5", "-0.4", "0.3"), "0.6", (3, 0, 0), ("-0.2", "0.6", "-0.5"), "0.75", (0, 3, 0),
     ("0.1", "0.1", "0.1")),
    (("0.5", "-0.4", "0.3"), "0.6", (1, 2, 0), ("-0.2", "0.6", "-0.5"), "0.75", (2, 0, 1),
     ("0.4", "-0.2", "0.7")),
]


def fmt(v):
    return mpmath.nstr(v, 25, min_fixed=-1, max_fixed=-1)


def write_primitives(path):
    lines = [
        "# kind  A(3) alpha lmnA(3)  B(3) beta lmnB(3)  C(3)  value",
        "# kinds: S overlap, T kinetic, V <a|1/r_C|b>, X/Y/Z <a|x|b>..., XX, XY, R2 moments",
        "# (mpmath quadrature, 30 digits; tools/one/mpmath_reference.py)",
    ]
    for (A, alpha, la, B, beta, lb, C) in CASES:
        Am = [mpf(x) for x in A]
        Bm = [mpf(x) for x in B]
        Cm = [mpf(x) for x in C]
        am, bm = mpf(alpha), mpf(beta)
        head = "%s %s %s %s  %s %s %s %s  %s" % (
            " ".join(A), alpha, " ".join(map(str, la)), "", " ".join(B), beta,
            " ".join(map(str, lb)), "", " ".join(C))
        head = " ".join(head.split())
        values = [
            ("S", overlap3(Am, am, la, Bm, bm, lb)),
            ("T", kinetic3(Am, am, la, Bm, bm, lb)),
            ("V", nuclear3(Am, am, la, Bm, bm, lb, Cm)),
            ("X", moment3(Am, am, la, Bm, bm, lb, (1, 0, 0))),
            ("Y", moment3(Am, am, la, Bm, bm, lb, (0, 1, 0))),
            ("Z", moment3(Am, am, la, Bm, bm, lb, (0, 0, 1))),
            ("XX", moment3(Am, am, la, Bm, bm, lb, (2, 0, 0))),
            ("XY", moment3(Am, am, la, Bm, bm, lb, (1, 1, 0))),
            ("R2", moment3(Am, am, la, Bm, bm, lb, (2, 0, 0)) +
             moment3(Am, am, la, Bm, bm, lb, (0, 2, 0)) +
             moment3(Am, am, la, Bm, bm, lb, (0, 0, 2))),
        ]
        for kind, v in values:
            lines.append("%s %s %s" % (kind, head, fmt(v)))
        print(".", end="", flush=True)
    print()
    with open(path, "w") as out:
        out.write("\n".join(lines) + "\n")


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    write_boys(sys.argv[1] + "/boys.txt")
    write_primitives(sys.argv[1] + "/primitives.txt")


if __name__ == "__main__":
    main()
