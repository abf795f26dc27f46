#!/usr/bin/python3
"""Reference vectors for norvik's Fortran-style text I/O, as gfortran writes and reads.

The script builds deterministic case lists (hand-picked awkward cases plus
seeded pseudo-random ones), writes two small Fortran programs, compiles them
with gfortran, runs them and records what the gfortran runtime produced:

  edit_real.txt      F, E and ES descriptors applied to doubles
  edit_integer.txt   I descriptors applied to integers
  edit_text.txt      A descriptors applied to texts
  formats.txt        whole formats (groups, repeats, literals, nX) with mixed values
  list_write.txt     list-directed output, write(*,*), of doubles, integers, mixed lists
  list_read.txt      list-directed input, read(u,*), and whole-record (A) reads

Usage:
  generate.py [--out DIR] [--compare DIR] [--gfortran PATH]

--out defaults to tests/fortran/data of the repository.  With --compare the
freshly generated files are compared byte for byte with those in DIR and the
script exits with status 1 on any difference.  Standard library only.
"""

import argparse
import math
import os
import struct
import subprocess
import sys
import tempfile
from decimal import Decimal

MASK64 = (1 << 64) - 1
TAB = "\t"

# Initial values of read targets, so that a target left alone shows.
SENTINEL_INT = -7777777
SENTINEL_REAL = -7777777.25
SENTINEL_CHAR = "~"


class Rng:
    """splitmix64: the same sequence on every Python version."""

    def __init__(self, seed):
        self.state = seed & MASK64

    def next(self):
        self.state = (self.state + 0x9E3779B97F4A7C15) & MASK64
        z = self.state
        z = ((z ^ (z >> 30)) * 0xBF58476D1CE4E5B9) & MASK64
        z = ((z ^ (z >> 27)) * 0x94D049BB133111EB) & MASK64
        return z ^ (z >> 31)

    def below(self, n):
        return self.next() % n

    def between(self, lo, hi):
        return lo + self.below(hi - lo + 1)

    def choice(self, seq):
        return seq[self.below(len(seq))]

    def chance(self, percent):
        return self.below(100) < percent


def hex_bits(x):
    return struct.pack(">d", x).hex().upper()


def from_bits(h):
    return struct.unpack(">d", bytes.fromhex(h))[0]


# ---------------------------------------------------------------------------
# Edit descriptors.


def real_values(rng):
    """Hand-picked awkward doubles, then seeded pseudo-random ones."""
    inf = float("inf")
    picked = [
        0.0, -0.0, 0.5, -0.5, 0.05, 0.25, 0.125, 0.375, 0.625, 0.0625, 1.0, -1.0, 1.5, 2.5,
        3.5, -2.5, 9.5, 0.45, 0.55, 0.95, 0.995, 9.995, 99.95, 999.5, 9.96, 0.099999,
        0.0999999999, 0.1, 0.01, 0.001, 1e-6, 5e-6, 1.5e-6, 1e-5, 1e-8, 123.456, -123.456,
        math.pi, -math.pi, math.e, 510.9989273, 137.035999074, 1973.269717, 96.48533646,
        23.06054887, 0.02569257912065, 0.5924849764080911, 0.5291772104, 27.2113850785,
        27.211385041184638, -76.0107465, 1e10, 1e15, 1e16, 1e17, 1e22, 1e23, 2.0 ** 53,
        2.0 ** 53 + 2, 1e99, 9.9999e99, 9.99999e99, 1e100, -1e100, 1e-99, 1e-100, 9.9996e-100,
        1e200, 1e-200, 1e300, 1e-300, 1e308, 1.7976931348623157e308, -1.7976931348623157e308,
        2.2250738585072014e-308, 2.2250738585072009e-308, 5e-324, -5e-324, 4.9406564584124654e-322,
        1e-310, -1e-310, 12345678.9, 0.000123456, -0.000123456, 0.0005, 0.00049999, 0.00050001,
        -0.004, -0.005, -0.0049, 99999.5, 999999.4999, 1234567890123.0, inf, -inf,
        float("nan"), -float("nan"),
    ]
    for k in list(range(-6, 26)) + [-100, -99, 99, 100, 200, -300, 307]:
        p = float("1e%d" % k)
        picked += [math.nextafter(p, 0.0), math.nextafter(p, inf)]
    # Exact ties: m / 2**n has n decimals, the last a 5.
    for _ in range(40):
        n = rng.between(1, 12)
        m = rng.between(1, 4000) * 2 + 1
        picked.append((-1.0 if rng.chance(30) else 1.0) * m / 2.0 ** n)
    randoms = []
    for _ in range(60):  # any exponent: random bits of a finite double
        bits = rng.next() & ~(1 << 63)
        if (bits >> 52) == 0x7FF:
            bits &= ~(1 << 62)
        x = from_bits("%016X" % bits)
        randoms.append(-x if rng.chance(40) else x)
    for _ in range(60):  # short decimals around the usual magnitudes
        digits = rng.between(1, 9)
        mantissa = rng.between(1, 10 ** digits - 1)
        x = float("%de%d" % (mantissa, rng.between(-12, 8)))
        randoms.append(-x if rng.chance(40) else x)
    for _ in range(60):  # uniform in (0, 1000)
        x = (rng.next() >> 11) / 2.0 ** 53 * 1000.0
        randoms.append(-x if rng.chance(40) else x)
    return picked + randoms


def tie_digits(x):
    """Number of significant digits of the exact decimal expansion of x."""
    t = Decimal(abs(x)).normalize().as_tuple()
    return len(t.digits), -t.exponent if t.exponent < 0 else 0


def real_cases(rng, values):
    cases = []
    for x in values:
        finite = math.isfinite(x)
        negative = math.copysign(1.0, x) < 0
        if not finite:
            for w in range(0, 11):
                cases.append(("F%d.%d" % (w, rng.between(0, 3)), x))
            for w in [1, 2, 3, 4, 5, 8, 9, 10, 12]:
                cases.append(("E%d.%d" % (w, rng.between(1, 3)), x))
                cases.append(("ES%d.%d" % (w, rng.between(0, 3)), x))
            continue
        sig, decimals = tie_digits(x)
        sign = 1 if negative else 0
        # F: two decimal counts (and the one that makes a tie), widths around the natural one.
        ds = [rng.choice([0, 1, 2, 3, 4, 5, 6, 8, 10, 12, 15]) for _ in range(2)]
        if 0 < decimals <= 18:
            ds.append(decimals - 1)
        for d in sorted(set(ds)):
            if abs(x) >= 1e25:
                for w in (10, 30):
                    cases.append(("F%d.%d" % (w, d), x))
                continue
            natural = len("%.*f" % (d, abs(x))) + sign
            widths = {natural - 2, natural - 1, natural, natural + 1, natural + 4}
            for w in sorted(v for v in widths if v >= 1):
                cases.append(("F%d.%d" % (w, d), x))
            cases.append(("F0.%d" % d, x))
        # E and ES: two digit counts each, an optional exponent width.
        for family in ("E", "ES"):
            low = 1 if family == "E" else 0
            ds = [rng.between(low, 17) for _ in range(2)]
            # A tie: one digit more than the field keeps, the last a 5.
            tie = sig - 1 if family == "E" else sig - 2
            if low <= tie <= 17:
                ds.append(tie)
            for d in sorted(set(ds)):
                e = rng.choice([None, None, None, 1, 2, 3, 4, 0])
                suffix = "" if e is None else "E%d" % e
                digits_e = 2 if e is None else max(e, 1)
                natural = d + (5 if family == "E" else 4) + digits_e + sign
                for w in sorted({natural - 2, natural - 1, natural, natural + 1, natural + 3}):
                    if w >= 1:
                        cases.append(("%s%d.%d%s" % (family, w, d, suffix), x))
        if rng.chance(15):
            cases.append(("ES6.0", x))
    # The report's own field shapes on the awkward values.
    for x in values[:120]:
        for desc in ("ES6.0", "F5.2", "F12.6", "F15.10", "ES8.2", "E12.5", "ES14.6E3"):
            cases.append((desc, x))
    return cases


def integer_cases(rng):
    values = [0, 1, -1, 7, -7, 9, -9, 10, -10, 99, -99, 100, -100, 12345, -12345, 2147483647,
              -2147483648, 2147483648, -2147483649, 9223372036854775807, -9223372036854775808]
    for _ in range(40):
        digits = rng.between(1, 12)
        v = rng.between(0, 10 ** digits - 1)
        values.append(-v if rng.chance(40) else v)
    cases = []
    for v in values:
        natural = len(str(v))
        widths = {natural - 1, natural, natural + 1, natural + 3, rng.between(1, 12), 20}
        for w in sorted(w for w in widths if w >= 1):
            cases.append(("I%d" % w, v))
        cases.append(("I0", v))
        for m in sorted({0, 1, natural, natural + 2}):
            cases.append(("I0.%d" % m, v))
            w = max(m, natural) + rng.between(0, 2)
            cases.append(("I%d.%d" % (w, m), v))
            if m >= 1 and m - 1 >= 1:
                cases.append(("I%d.%d" % (m, m - 1), v))
    for m in range(0, 4):  # Iw.0 and friends with zero
        for w in range(1, 4):
            if m <= w:
                cases.append(("I%d.%d" % (w, m), 0))
    return cases


def text_cases():
    texts = ["", "a", "ab", "abc def", "  lead", "trail  ", "#  Number of atoms: ",
             "x" * 30, "It's", 'say "hi"']
    cases = []
    for t in texts:
        for desc in ("A", "A1", "A2", "A3", "A5", "A7", "A10", "A40"):
            cases.append((desc, t))
    return cases


EDITS_F90 = """\
! Applies one edit descriptor per input line and writes the field in brackets.
program edits
  implicit none
  character(len=512) :: line
  character(len=200) :: fmt
  integer :: ios, n
  integer(4) :: i4
  integer(8) :: bits, i8
  real(8) :: x
  do
    read(*, '(A)', iostat=ios) line
    if (ios /= 0) exit
    fmt = '("[",' // trim(line(3:42)) // ',"]")'
    select case (line(1:1))
    case ('R')
      read(line(44:59), '(Z16)') bits
      x = transfer(bits, x)
      write(*, fmt) x
    case ('I')
      read(line(44:75), *) i8
      write(*, fmt) i8
    case ('A')
      read(line(44:47), *) n
      write(*, fmt) line(49:48 + n)
    case ('L')
      read(line(44:59), '(Z16)') bits
      x = transfer(bits, x)
      write(*, *) x
    case ('K')
      read(line(44:75), *) i4
      write(*, *) i4
    case ('J')
      read(line(44:75), *) i8
      write(*, *) i8
    end select
  end do
end program
"""


def edits_driver_line(kind, desc, value):
    if kind in ("R", "L"):
        field = hex_bits(value)
    elif kind == "A":
        field = "%-4d %s" % (len(value), value)
    else:
        field = str(value)
    return "%s %-40s %s" % (kind, desc, field)


# ---------------------------------------------------------------------------
# Generated code: whole formats, list-directed lists, list-directed reads.


def fortran_text(s):
    """A Fortran expression for the string s (control characters by achar)."""
    parts = []
    run = ""
    for ch in s:
        if 32 <= ord(ch) < 127:
            run += ch
        else:
            if run:
                parts.append("'" + run.replace("'", "''") + "'")
                run = ""
            parts.append("achar(%d)" % ord(ch))
    if run or not parts:
        parts.append("'" + run.replace("'", "''") + "'")
    return " // ".join(parts)


def fortran_value(v):
    kind, x = v
    if kind == "s":
        return fortran_text(x)
    if kind in ("i", "j"):
        suffix = "_4" if kind == "i" else "_8"
        if x < 0:  # a negative literal is a negated positive one: keep it in range
            return "(-%d%s - 1)" % (-x - 1, suffix)
        return "%d%s" % (x, suffix)
    return "rb('%s')" % hex_bits(x)


def encode_value(v):
    kind, x = v
    if kind == "s":
        return "s:" + x
    if kind in ("i", "j"):
        return "i:%d" % x
    return "r:" + hex_bits(x)


def format_cases():
    s = lambda t: ("s", t)
    i = lambda v: ("i", v)
    r = lambda v: ("r", float(v))
    inf = float("inf")
    return [
        ("(A,3F12.6,2(I3,1X))", [s("x"), r(1.5), r(-2.25), r(1e7), i(1), i(-22)]),
        ("(A,F12.8,A)", [s("# Electron mass = "), r(510.9989273), s("  [keV]")]),
        ("(A,F14.10,A)", [s("# Coupling Constant = "), r(137.035999074), s(" ^-1")]),
        ("(A,F14.8,A)", [s("# hbar*c = "), r(1973.269717), s(" [eV.A]")]),
        ("(A,F11.8,A,F11.8,A)", [s("# 1 [eV] = "), r(96.48533646), s(" [kJ/mol] = "),
                                 r(23.06054887), s(" [kcal/mol]")]),
        ("(A,F12.9,A,F12.9,A)", [s("# kB*298.15[K] ="), r(0.02569257912065), s(" [eV] ="),
                                 r(0.5924849764080911), s(" [kcal/mol]")]),
        ("(A,I3)", [s("#  SCF iterations at most: "), i(128)]),
        ("(A,ES6.0,A)", [s("#  Cond. of Ene converge:  "), r(1e-6), s(" [eV]")]),
        ("(A,A,ES6.0,A,ES6.0)", [s("#  Cond. of RMS converge: "), s(" Atom = "), r(5e-5),
                                 s(", Mole = "), r(1e-4)]),
        ("(A,3F15.10,A,I2,A,I2)", [s("#   ("), r(0.0), r(-0.7414), r(1.23456789012),
                                   s(" ) [A]    "), i(1), s("  "), i(8)]),
        ("(A,I0,A,I0,A,I0)", [s("#  Number of alpha, beta, and total electrons: "), i(3),
                              s(" + "), i(2), s(" = "), i(5)]),
        ("(A,ES8.2,A,ES8.2,A)", [s("#   Vint = "), r(1.234), s(" [GB]    TDHF = "), r(0.0049999),
                                 s(" [GB]")]),
        ("(A40,I2,':',I2,':',I2,' ',I2,'/',I2)", [s("Hartree-Fock exploration ok."), i(9), i(5),
                                                  i(30), i(12), i(31)]),
        ("(A40,I2)", [s("x" * 45), i(7)]),
        ("(3I5)", [i(1), i(2), i(3)]),
        ("(3I5)", [i(1), i(2)]),
        ("(I5,' tail')", [i(4)]),
        ("(I5,' mid',I5,' tail')", [i(4)]),
        ("('only literal')", []),
        ("('it''s',1X,\"say \"\"x\"\"\")", []),
        ("(2(A,I2),A)", [s("a"), i(1), s("b"), i(2), s("c")]),
        ("(2(A,2(I2,1X)),A)", [s("a"), i(1), i(2), s("b"), i(3), i(4), s("end")]),
        ("(3X,A,2X,I3,5X)", [s("q"), i(7)]),
        ("(a, i4, f8.3, e12.4, es12.4)", [s("lower"), i(12), r(3.14159), r(-0.000123),
                                          r(6.02214076e23)]),
        ("( A , 2 F8.3 )", [s("blanks"), r(1.0), r(2.0)]),
        ("(5F12.6)", [r(k * 0.1) for k in range(12)]),
        ("(2I4)", [i(k) for k in range(1, 8)]),
        ("(A,2(I3))", [s("head"), i(1), i(2), i(3), i(4), i(5)]),
        ("(A,/,A)", [s("first"), s("second")]),
        ("(I2,//,I2)", [i(1), i(2)]),
        ("(F8.3,ES10.3E1,E12.4E3)", [r(inf), r(-inf), r(float("nan"))]),
        ("(F6.2,F6.2)", [r(-0.0), r(-0.004)]),
        ("(I3,I3)", [i(1000), i(-100)]),
        ("(A3,A)", [s("abcdef"), s("")]),
        ("(E10.3E1,E10.3E1)", [r(1e-9), r(1e-10)]),
        ("(F0.3,1X,F0.0,1X,I0,1X,F0.5)", [r(-1234.5), r(0.4), i(-5), r(1e-7)]),
        ("(4(ES9.2,1X))", [r(9.995), r(9.994999), r(0.0), r(-1e-100)]),
        ("(1X,A)", [s("")]), ("(A,2X)", [s("end")]), ("(A,1X,A)", [s("a"), s("")]),
        ("(A,2X,'')", [s("a")]), ("(I2,3X,A)", [i(5), s("")]), ("(A,2X,' ')", [s("a")]),
        ("(2X)", []), ("(A,2X,/,A)", [s("a"), s("b")]),
    ]


def list_write_cases(rng):
    s = lambda t: ("s", t)
    i = lambda v: ("i", v)
    j = lambda v: ("j", v)
    r = lambda v: ("r", float(v))
    cases = [
        [s(" is not found.")],
        [s("molecule.inp"), s(" is not found.")],
        [s("Invalid combination in Nelectron."), i(2), i(0), i(2)],
        [s("symbol exceed the limit in Smb2Chg."), s("Xx")],
        [s("chg exceed the limit in Chg2Smb."), i(55)],
        [s("abc"), i(5), s("def"), r(1.0), i(-2), r(1e-2), s("x")],
        [i(1), i(2)],
        [i(-2147483648), i(2147483647), i(0)],
        [j(2147483648), j(-2147483649), j(9223372036854775807), j(-9223372036854775808)],
        [s("a"), s("b"), s(""), s("c")],
        [s("")],
        [],
        [r(1.0), r(-1.0), r(0.0), r(-0.0)],
        [r(float("inf")), r(-float("inf")), r(float("nan"))],
        [s("x"), r(0.1), s("y"), i(3), r(1e100), s("z")],
        [s("trailing  "), i(1), s("  leading")],
    ]
    for _ in range(40):
        items = []
        for _ in range(rng.between(1, 6)):
            kind = rng.below(3)
            if kind == 0:
                items.append(s(rng.choice(["ab", "x y", "", " lead", "Invalid", "=", "[eV]"])))
            elif kind == 1:
                items.append(i(rng.between(-10 ** rng.between(0, 9), 10 ** rng.between(0, 9))))
            else:
                items.append(r(rng.choice([1.5, -2.0, 1e-3, 123456.789, 6.02e23, 1e-300])))
        cases.append(items)
    return cases


def read_cases(rng):
    """(input text, [reads]); a read is a list of targets: 'i', 'r', 'cN', or ['aN'] for (A)."""
    nl, cr = "\n", "\r"
    I3 = ["i", "i", "i"]
    cases = [
        # separators
        ("1 2 3\n", [I3]), ("1,2,3\n", [I3]), ("1 , 2 ,3\n", [I3]), ("  1\t2  3  \n", [I3]),
        ("1;2;3\n", [I3]), ("1,\n2\n3\n", [I3]), ("1 2\n3\n", [I3, ["i"]]),
        # null values
        ("1,,3\n", [I3]), (",2,3\n", [I3]), ("1,2,\n", [I3]), (",,\n", [I3]), ("1, ,3\n", [I3]),
        ("1,,\n2\n3\n", [I3, ["a10"]]), (",\n2 3\n", [I3]), (", ,\n5\n", [I3]),
        ("1 ,, 3\n", [I3]), ("1,,,,\n", [I3]),
        # slash
        ("1 /\n", [I3]), ("1,2/ 3\n", [I3]), ("/\n", [I3]), ("1/2\n", [I3]),
        ("1 2\n/ 3\n", [I3]), ("1 2/3\n", [I3, ["i"]]), ("abc/def\n", [["c5", "c5"]]),
        ("1,/\n", [I3]), ("'a/b' /\n", [["c5", "c5"]]),
        # repeat counts
        ("3*7\n", [I3]), ("2*1.5 3\n", [["r", "r", "r"]]), ("2*\n", [I3]), ("2* 5\n", [I3]),
        ("3*,4\n", [I3 + ["i"]]), ("0*5\n", [I3]), ("2*'a b'\n", [["c5", "c5"]]),
        ("2*abc\n", [["c5", "c5"]]), ("2*5\n", [["i", "r"]]), ("2*5\n", [["r", "i"]]),
        ("2*\n", [["c3", "c3"]]), ("2*5 6\n", [["i", "i", "i", "i"]]), ("1*3 4\n", [["i", "i"]]),
        ("4*2\n", [I3, ["i"]]), ("2*1.5\n", [["r", "c5"]]), ("2*x\n", [["c3", "i"]]),
        ("-2*5\n", [I3]), ("2**5\n", [I3]), ("2*-5\n", [I3]), ("2*+5.5e1\n", [["r", "r"]]),
        ("99999999999*1\n", [["i"]]), ("2*/\n", [I3]), ("2*,7\n", [I3]),
        # quoted text
        ("'abc'\n", [["c5"]]), ('"abc"\n', [["c5"]]), ("'it''s'\n", [["c6"]]),
        ('"say ""hi"""\n', [["c12"]]), ("'a,b/c d'\n", [["c10"]]), ("'abc'def\n", [["c5"]]),
        ("'unterminated\n", [["c20"]]), ("'abc\ndef'\n", [["c10"]]), ("'abc'  ,  'x'\n", [["c3", "c3"]]),
        ("'ab' 'cd'\n", [["c2", "c2"]]), ("'' 'x'\n", [["c3", "c3"]]), ("'a\"b' \"c'd\"\n", [["c3", "c3"]]),
        ("'abc',5\n", [["c3", "i"]]), ("'abc'/\n", [["c3", "c3"]]), ("'abc\r\ndef'\r\n", [["c10"]]),
        ("'toolongtext'\n", [["c4"]]), ("'  pad'\n", [["c8"]]), ("'abc\n", [["c5"], ["c5"]]),
        ("'abc'\n", [["i"]]), ("'1.5'\n", [["r"]]),
        # bare text
        ("abc\n", [["c5"]]), ("it's\n", [["c5"]]), ("a/b\n", [["c5", "c5"]]), ("abc,def\n", [["c5", "c5"]]),
        ("123abc\n", [["c8"]]), ("12\n", [["c5"]]), ("-5\n", [["c5"]]), ("abcdefghij\n", [["c4"]]),
        ("a\"b\n", [["c5"]]), ("x*y\n", [["c5"]]), ("*5\n", [["c5"]]), ("H  0.0 0.0 0.74\n", [["c2", "r", "r", "r"]]),
        ("HF\n", [["c10"]]), ("6-31Gxx  5\n", [["c20", "i"]]), ("abc;def\n", [["c5", "c5"]]),
        ("abc\tdef\n", [["c5", "c5"]]), ("C\n", [["c2", "r"]]), ("ab\r\n", [["c5"]]),
        # records
        ("1\n2\n3\n", [I3]), ("1 2\n\n\n3\n", [I3]), ("\n\n 1 2 3\n", [I3]), ("1 2 3 4 5\n6\n", [I3, ["i"]]),
        ("   \n\t\n5\n", [["i"]]), ("1\n2\n", [["i"], ["i"], ["i"]]), ("5", [["i"], ["i"]]),
        ("5 6", [["i", "i"], ["i"]]), ("", [["i"]]), ("\n", [["i"]]), ("1 2", [I3]),
        ("\n\n", [["a5"], ["a5"], ["a5"]]), ("x\ny\n", [[], ["c3"]]), ("x\n", [[], []]), ("", [[]]),
        ("first line\n1 2\n", [["a120"], ["i", "i"]]), ("# comment 'x\n7\n", [["c120"], ["i"]]),
        # integers
        ("abc\n", [["i"]]), ("1.5\n", [["i"]]), ("1e3\n", [["i"]]), ("2147483647\n", [["i"]]),
        ("2147483648\n", [["i"]]), ("-2147483648\n", [["i"]]), ("-2147483649\n", [["i"]]),
        ("+5\n", [["i"]]), ("-0\n", [["i"]]), ("++5\n", [["i"]]), ("5-\n", [["i"]]), ("+\n", [["i"]]),
        ("-\n", [["i"]]), ("007\n", [["i"]]), ("1 2 x\n", [I3]), ("12345678901234567890\n", [["i"]]),
        ("5.\n", [["i"]]), ("0x10\n", [["i"]]), ("1_4\n", [["i"]]), ("T\n", [["i"]]),
        # reals
        ("1\n", [["r"]]), ("1.\n", [["r"]]), (".5\n", [["r"]]), ("1e3\n", [["r"]]), ("1d3\n", [["r"]]),
        ("1.5D-2\n", [["r"]]), ("+2\n", [["r"]]), ("-0\n", [["r"]]), ("-0.0\n", [["r"]]), ("1E+03\n", [["r"]]),
        ("1.5e\n", [["r"]]), ("e5\n", [["r"]]), (".\n", [["r"]]), ("1.2.3\n", [["r"]]), ("1+3\n", [["r"]]),
        ("1.5-2\n", [["r"]]), ("1q3\n", [["r"]]), ("1Q-3\n", [["r"]]), ("inf\n", [["r"]]),
        ("-Infinity\n", [["r"]]), ("NaN\n", [["r"]]), ("+inf\n", [["r"]]), ("infin\n", [["r"]]),
        ("1e400\n", [["r"]]), ("-1e400\n", [["r"]]), ("1e-400\n", [["r"]]), ("0.1\n", [["r"]]),
        ("123456789012345678901234567890\n", [["r"]]), ("2.2250738585072011e-308\n", [["r"]]),
        ("2.4703282292062327e-324\n", [["r"]]), ("2.4703282292062328e-324\n", [["r"]]),
        ("4.9e-324\n", [["r"]]), ("1,5\n", [["r", "r"]]), ("0x10\n", [["r"]]), ("1.5_8\n", [["r"]]),
        ("5.\n", [["r"]]), ("-.5e-1\n", [["r"]]), ("1e+\n", [["r"]]), ("1.0e0 2.0d0 3.0\n", [["r", "r", "r"]]),
        ("9007199254740993\n", [["r"]]), ("0.30000000000000004\n", [["r"]]), ("1.7976931348623157e308\n", [["r"]]),
        ("1.7976931348623159e308\n", [["r"]]), ("abc\n", [["r"]]), ("1.5.\n", [["r"]]), ("1e5.0\n", [["r"]]),
        ("1 e5\n", [["r", "r"]]), ("3.14 2.71\n", [["r"]]), (" -1.25E+2 ,\n", [["r", "r"]]),
        ("1E2 1D2 1e-2 1d-2 1.E2\n", [["r"] * 5]), ("0.5 4 x\n", [["r", "i", "c1"]]),
        # carriage returns
        ("1 2\r\n3\r\n", [I3]), ("abc\r\n", [["c5"]]), ("abc\r\n", [["a5"]]), ("abc\r\ndef\r\n", [["a5"], ["a5"]]),
        ("1\r2\n", [["i", "i"]]), ("ab\rcd\nef\n", [["a5"], ["a5"]]), ("5\r\n", [["i"], ["i"]]),
        ("1.5\r\n", [["r"]]), ("\r\n\r\n7\r\n", [["i"]]), ("x\r", [["a5"]]), ("'ab'\r\n", [["c3"]]),
        ("a b\r\n", [["c3", "c3"]]), ("1,\r\n2\r\n", [["i", "i"]]), ("\r\n", [["a3"], ["a3"]]),
        # whole records
        ("hello world\n", [["a5"]]), ("hello world\n", [["a20"]]), ("\n", [["a5"]]), ("", [["a5"]]),
        ("last", [["a10"], ["a10"]]), ("trailing   \n", [["a12"]]), ("tab\there\n", [["a10"]]),
        ("'quoted' text, / here\n", [["a30"]]), ("a\tb\n", [["a5"]]), ("\t\tx\n", [["a5"]]),
        ("'a\tb'\n", [["c5"]]), ("1\r2\n3\n", [["i"], ["i"]]), ("ab\r5\n7\n", [["a5"], ["i"]]),
        ("ab\rcd\n", [["c5"], ["a5"]]),
        # separators meeting record ends
        ("1\n;2\n", [I3]), ("1\n,2\n", [I3]), ("1,\n,2\n", [I3]), ("1\n,\n,2\n", [I3]),
        ("1\n/2 3\n", [I3]), ("1\n/ 2\n", [I3]), ("1\n/\n", [I3]), ("\n,5 6\n", [I3]),
        ("\n/5\n", [I3]), ("'abc", [["c5", "i"]]), ("1 2\n  ,  \n3\n", [I3]),
        # the end of a file without a final line feed
        ("1 2 3", [["i", "i"]]), ("1 2 ", [["i", "i"]]), ("1,2,", [["i", "i"]]), ("1,2/", [["i", "i"]]),
        ("1 2 /", [["i", "i"]]), ("1 /", [["i", "i"]]), ("/", [["i", "i"]]), ("1 2 3 /", [["i", "i"]]),
        ("1,,/", [["i", "i"]]), ("1\n/", [["i", "i"]]), ("2*5/", [["i", "i"]]), ("1 2 / ", [["i", "i"]]),
        ("x", [[], []]), ("'ab'/", [["c2"]]), ("1 2 /\n", [["i", "i"]]), ("1\n/", [["i", "c3"]]),
        ("1\n/", [["i", "r"]]), ("2*", [["i", "i"]]), ("2*", [["c2", "c2"]]), ("3*", [["i"]]),
        ("2*\n", [["r", "r", "r"]]), ("ab", [["c2", "c2"]]), ("ab\n", [["c2", "c2"]]), ("1", [["i", "c2"]]),
        ("1\n", [["i", "c2", "i"]]), ("ab\n\n", [["c2", "c2"]]), ("1 2\n", [["i", "i", "c1"]]),
        ("", [["c2"]]), ("\n", [["c2"]]), ("1,", [["i", "c2"]]), ("1,\n", [["i", "c2"]]),
    ]
    # Seeded random reads: each target gets a fitting value, a null, a repeat or a slash.
    words = ["abc", "H", "Cl", "6-31Gxx", "B3LYP", "x_y", "a.b", "it's", "12", "3x", "-"]
    quoted = ["'a b'", "'x,y'", '"q"', "'it''s'", "''", "'/'"]
    separators = [" ", ",", " , ", "\t", "\n", "  ", ",\n", "\n\n", " ,", ", ", "\r\n", ";",
                  "\n,", "\n ,\n", "\n\n, ", " \r\n\r\n"]

    def real_text():
        m = str(rng.between(0, 10 ** rng.between(1, 8)))
        form = rng.below(6)
        if form == 1:
            m = m[:1] + "." + m[1:]
        elif form == 2:
            m = "." + m
        elif form == 3:
            m = m + "."
        elif form == 4:
            m = m + rng.choice(["e", "E", "d", "D"]) + rng.choice(["", "+", "-"]) + str(rng.between(0, 40))
        elif form == 5:
            m = m[:1] + "." + m[1:] + rng.choice(["e", "d"]) + "-" + str(rng.between(0, 320))
        return rng.choice(["", "", "-", "+"]) + m

    for _ in range(400):
        n = rng.between(1, 5)
        targets = []
        for _ in range(n):
            kind = rng.below(3)
            targets.append("i" if kind == 0 else "r" if kind == 1 else "c%d" % rng.between(1, 8))
        text = ""
        k = 0
        while k < n:
            t = targets[k]
            roll = rng.below(100)
            if roll < 8:
                token = ""  # null: two separators in a row
                text += ","
                k += 1
                continue
            if roll < 13:
                count = rng.between(1, 3)
                token = "%d*" % count
                k += count
            elif roll < 15:
                text += "/"
                break
            else:
                if t == "i":
                    token = str(rng.between(-10 ** rng.between(0, 9), 10 ** rng.between(0, 9)))
                elif t == "r":
                    token = real_text()
                else:
                    token = rng.choice(words) if rng.chance(60) else rng.choice(quoted)
                if roll < 20:
                    count = rng.between(2, 3)
                    token = "%d*%s" % (count, token)
                    k += count
                else:
                    k += 1
            text += token + rng.choice(separators)
        if rng.chance(30):
            text += rng.choice(["junk", "1 2 3", "'x'", "/ z"])
        if rng.chance(80):
            text += "\n"
        reads = [targets]
        if rng.chance(40):
            text += "99 last\n"
            reads.append(["i"] if rng.chance(50) else ["a10"])
        cases.append((text, reads))
    return cases


CASES_HEADER = """\
! Generated by tools/fortran_vectors/generate.py: whole formats, list-directed
! output and list-directed reads, one case after another.
module helpers
  implicit none
  integer, parameter :: sentinel_i = %(sent_i)d
  character(len=1), parameter :: sep = achar(31)
contains
  function rb(hex) result(x)
    character(len=*), intent(in) :: hex
    real(8) :: x
    integer(8) :: bits
    read(hex, '(Z16)') bits
    x = transfer(bits, x)
  end function
  subroutine put(text)
    character(len=*), intent(in) :: text
    integer :: u
    open(newunit=u, file='input.txt', access='stream', form='unformatted', status='replace')
    write(u) text
    close(u)
  end subroutine
  subroutine show_status(ios)
    integer, intent(in) :: ios
    if (ios == 0) then
      write(*, '(A)', advance='no') 'ok'
    else if (ios < 0) then
      write(*, '(A)', advance='no') 'eof'
    else
      write(*, '(A)', advance='no') 'bad'
    end if
  end subroutine
  subroutine show_i(v)
    integer, intent(in) :: v
    write(*, '(A,I0)', advance='no') sep, v
  end subroutine
  subroutine show_r(v)
    real(8), intent(in) :: v
    write(*, '(A,Z16.16)', advance='no') sep, transfer(v, 0_8)
  end subroutine
  subroutine show_c(v)
    character(len=*), intent(in) :: v
    write(*, '(A,"[",A,"]")', advance='no') sep, v
  end subroutine
end module

program cases
  use helpers
  implicit none
  integer :: u, ios
  integer :: iv(40)
  real(8) :: rv(40)
  character(len=200) :: cv(40)
"""


def build_cases_program(formats, lists, reads):
    out = [CASES_HEADER % {"sent_i": SENTINEL_INT}]
    for fmt, values in formats:
        out.append("  write(*, '(A)') '@@'")
        args = ", ".join(fortran_value(v) for v in values)
        out.append("  write(*, %s) %s" % (fortran_text(fmt), args))
    for values in lists:
        out.append("  write(*, '(A)') '@@'")
        args = ", ".join(fortran_value(v) for v in values)
        out.append("  write(*, *) %s" % args)
    out.append("  write(*, '(A)') '@@'")
    sentinel = "rb('%s')" % hex_bits(SENTINEL_REAL)
    for text, read_list in reads:
        out.append("  write(*, '(A)') '@@'")
        out.append("  call put(%s)" % fortran_text(text))
        out.append("  open(newunit=u, file='input.txt', form='formatted', status='old', action='read')")
        out.append("  ios = 0")
        for targets in read_list:
            out.append("  if (ios == 0) then")
            out.append("    iv = sentinel_i; rv = %s; cv = repeat('%s', 200)" % (sentinel, SENTINEL_CHAR))
            items = []
            shows = []
            for k, t in enumerate(targets, start=1):
                if t == "i":
                    items.append("iv(%d)" % k)
                    shows.append("call show_i(iv(%d))" % k)
                elif t == "r":
                    items.append("rv(%d)" % k)
                    shows.append("call show_r(rv(%d))" % k)
                else:
                    items.append("cv(%d)(1:%d)" % (k, int(t[1:])))
                    shows.append("call show_c(cv(%d)(1:%d))" % (k, int(t[1:])))
            if len(targets) == 1 and targets[0].startswith("a"):
                out.append("    read(u, '(A)', iostat=ios) %s" % items[0])
            else:
                out.append("    read(u, *, iostat=ios) %s" % ", ".join(items))
            out.append("    call show_status(ios)")
            for sh in shows:
                out.append("    " + sh)
            out.append("    write(*, '(A)') ''")
            out.append("  end if")
        out.append("  close(u)")
    out.append("  write(*, '(A)') '@@'")
    out.append("end program")
    return "\n".join(out) + "\n"


# ---------------------------------------------------------------------------
# Running gfortran and writing the vector files.


def compile_and_run(gfortran, workdir, name, source, stdin_text=""):
    src = os.path.join(workdir, name + ".f90")
    exe = os.path.join(workdir, name)
    with open(src, "w") as f:
        f.write(source)
    subprocess.run([gfortran, "-O0", "-ffree-line-length-none", "-o", exe, src], check=True,
                   cwd=workdir)
    result = subprocess.run([exe], input=stdin_text.encode("latin-1"), capture_output=True,
                            check=True, cwd=workdir)
    return result.stdout.decode("latin-1").split("\n")


def escape(text):
    return text.replace("\\", "\\\\").replace("\n", "\\n").replace("\r", "\\r").replace("\t", "\\t")


def banner(title, lines):
    head = ["# " + l for l in [title] + lines]
    head += ["# Generated by tools/fortran_vectors/generate.py from gfortran's runtime output;",
             "# generated, do not edit."]
    return "\n".join(head) + "\n"


def generate(out_dir, gfortran):
    rng = Rng(0x6E6F72766B)
    values = real_values(rng)
    reals = real_cases(rng, values)
    integers = integer_cases(rng)
    texts = text_cases()
    formats = format_cases()
    lists = list_write_cases(rng)
    reads = read_cases(rng)

    files = {}
    with tempfile.TemporaryDirectory() as workdir:
        driver = [edits_driver_line("R", d, x) for d, x in reals]
        driver += [edits_driver_line("I", d, v) for d, v in integers]
        driver += [edits_driver_line("A", d, t) for d, t in texts]
        driver += [edits_driver_line("L", "*", x) for x in values]
        ints = [v for _, v in integers]
        ints = sorted(set(ints), key=ints.index)
        driver += [edits_driver_line("K" if -2 ** 31 <= v < 2 ** 31 else "J", "*", v) for v in ints]
        output = compile_and_run(gfortran, workdir, "edits", EDITS_F90, "\n".join(driver) + "\n")
        pos = 0

        def take(n):
            nonlocal pos
            chunk = output[pos:pos + n]
            pos += n
            return chunk

        lines = ["%s\t%s\t%s" % (d, hex_bits(x), o) for (d, x), o in zip(reals, take(len(reals)))]
        files["edit_real.txt"] = banner(
            "F, E and ES editing of doubles: descriptor, value (IEEE bits in hex), [field].",
            []) + "\n".join(lines) + "\n"
        lines = ["%s\t%d\t%s" % (d, v, o) for (d, v), o in zip(integers, take(len(integers)))]
        files["edit_integer.txt"] = banner(
            "I editing of 64-bit integers: descriptor, value, [field].", []) + "\n".join(lines) + "\n"
        lines = ["%s\t[%s]\t%s" % (d, t, o) for (d, t), o in zip(texts, take(len(texts)))]
        files["edit_text.txt"] = banner("A editing: descriptor, [text], [field].", []) + \
            "\n".join(lines) + "\n"
        singles = ["r:%s\t[%s]" % (hex_bits(x), o) for x, o in zip(values, take(len(values)))]
        singles += ["i:%d\t[%s]" % (v, o) for v, o in zip(ints, take(len(ints)))]

        output = compile_and_run(gfortran, workdir, "cases",
                                 build_cases_program(formats, lists, reads))
        blocks = []
        current = None
        for line in output:
            if line == "@@":
                if current is not None:
                    blocks.append(current)
                current = []
            elif current is not None:
                current.append(line)
        assert len(blocks) == len(formats) + len(lists) + 1 + len(reads), len(blocks)
        lines = []
        for (fmt, values_), records in zip(formats, blocks):
            fields = [fmt, "|".join(encode_value(v) for v in values_)] + ["[%s]" % r for r in records]
            lines.append(TAB.join(fields))
        files["formats.txt"] = banner(
            "Whole formats: format, values (s:text i:integer r:IEEE bits, '|'-separated), then",
            ["one [record] per record written."]) + "\n".join(lines) + "\n"
        blocks = blocks[len(formats):]
        lines = list(singles)
        for values_, records in zip(lists, blocks):
            assert len(records) == 1
            lines.append("%s\t[%s]" % ("|".join(encode_value(v) for v in values_), records[0]))
        files["list_write.txt"] = banner(
            "List-directed output, write(*,*): values (s:text i:integer r:IEEE bits,",
            ["'|'-separated), [record].  Integers within 32 bits are written as INTEGER(4),",
             "others as INTEGER(8)."]) + "\n".join(lines) + "\n"
        blocks = blocks[len(lists) + 1:]
        lines = []
        for (text, read_list), results in zip(reads, blocks):
            lines.append("input\t%s" % escape(text))
            for targets, result in zip(read_list, results):
                kind = "record" if len(targets) == 1 and targets[0].startswith("a") else "read"
                fields = [escape(f) for f in result.split("\x1f")]
                lines.append(TAB.join([kind, " ".join(targets) if targets else "-"] + fields))
        files["list_read.txt"] = banner(
            "List-directed reads, read(u,*), and record reads, read(u,'(A)').",
            ["'input' gives the file (escapes \\n \\r \\t \\\\); each following line is one READ:",
             "'read' targets (i INTEGER(4), r REAL(8), cN CHARACTER(N), - none) or 'record' aN,",
             "then the status (ok, eof, bad) and every target's value after the READ (integers",
             "in decimal, reals as IEEE bits, texts in brackets, escaped as the input).  Before each READ the targets",
             "hold %d, %r and '%s' repeated." % (SENTINEL_INT, SENTINEL_REAL, SENTINEL_CHAR),
             "A READ that follows a failed one is not made."]) + "\n".join(lines) + "\n"

    os.makedirs(out_dir, exist_ok=True)
    for name, content in files.items():
        with open(os.path.join(out_dir, name), "w", newline="\n") as f:
            f.write(content)
    return sorted(files)


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--out", default=os.path.join(here, "..", "..", "tests", "fortran", "data"))
    parser.add_argument("--compare", help="directory of committed vectors to compare with")
    parser.add_argument("--gfortran", default="gfortran")
    args = parser.parse_args()
    names = generate(args.out, args.gfortran)
    if args.compare:
        differ = []
        for name in names:
            with open(os.path.join(args.out, name), "rb") as a, \
                    open(os.path.join(args.compare, name), "rb") as b:
                if a.read() != b.read():
                    differ.append(name)
        if differ:
            print("regenerated vectors differ from the committed ones: " + ", ".join(differ))
            return 1
        print("all %d vector files reproduced byte for byte" % len(names))
    return 0


if __name__ == "__main__":
    sys.exit(main())
