#!/usr/bin/python3
"""Builds the compiled-in Lebedev-Laikov angular quadrature tables of norvik.

Input: data/lebedev/orbits.txt, the 32 published rules (6 to 5810 points) as orbit
lists in the published order (see data/lebedev/README.md).  Output, relative to
--out (the repository root by default):

  src/dft/generated/lebedev_tables.cpp   the orbit lists of the 32 rules and the
                                         order, precision and availability tables
                                         of the 65 rule indices

The family of octahedral rules has one member per odd precision 2k + 1,
k = 1 ... 65; only 32 of them are tabulated.  The point counts of the others are
listed below (Lebedev and Laikov's table of the family).  The counts are checked
against the way the family is built: an octahedral rule of precision p integrates
exactly the polynomials invariant under the octahedral group up to degree p, one
equation per invariant harmonic of even degree, and has as many unknowns as
equations (one weight for each orbit of codes 1-3, weight and parameter for codes 4
and 5, weight and two parameters for code 6), with one orbit each of codes 1 and 3.
Every count must admit exactly one such orbit structure (a mistyped count passes
only if it is off by a multiple of 12), and the orbits of every tabulated rule must
be that structure.

Run:  /usr/bin/python3 tools/dft/generate.py [--data DIR] [--out DIR]
Standard library only; exact rational arithmetic (fractions) for the weight sums.
"""

import argparse
import os
import sys
from fractions import Fraction

RULE_INDICES = 65

# Points produced by each generator code.
ORBIT_POINTS = {1: 6, 2: 12, 3: 8, 4: 24, 5: 24, 6: 48}
# Parameters each code takes from the table (the others are fixed or derived).
ORBIT_PARAMETERS = {1: 0, 2: 0, 3: 0, 4: 1, 5: 1, 6: 2}

# Point counts of the rule indices without a tabulated rule.
UNTABULATED_POINTS = {
    16: 386, 18: 482, 19: 530, 21: 650, 22: 698, 24: 830, 25: 890, 27: 1046, 28: 1118,
    30: 1274, 31: 1358, 33: 1538, 34: 1622, 36: 1814, 37: 1910, 39: 2126, 40: 2222,
    42: 2450, 43: 2558, 45: 2810, 46: 2930, 48: 3182, 49: 3314, 51: 3590, 52: 3722,
    54: 4010, 55: 4154, 57: 4466, 58: 4610, 60: 4934, 61: 5090, 63: 5438, 64: 5606,
}

# The weights of a rule sum to 1 to the digits printed (16 to 17 significant).
WEIGHT_SUM_TOLERANCE = Fraction(1, 10**15)


def fail(message):
    sys.exit("generate.py: " + message)


def number(text):
    """A double literal that C++ reads back as exactly the double nearest to text."""
    value = repr(float(text))
    if "e" not in value and "." not in value:
        value += ".0"
    return value


class Orbit:
    def __init__(self, fields, where):
        if len(fields) != 4:
            fail("%s: expected 'code a b v'" % where)
        try:
            self.code = int(fields[0])
            self.a, self.b, self.v = (Fraction(f) for f in fields[1:])
        except ValueError:
            fail("%s: not a number" % where)
        self.text = fields[1:]
        if self.code not in ORBIT_POINTS:
            fail("%s: generator code %d is not 1-6" % (where, self.code))
        used = ORBIT_PARAMETERS[self.code]
        if (used < 1 and self.a != 0) or (used < 2 and self.b != 0):
            fail("%s: code %d takes %d parameter(s)" % (where, self.code, used))
        if used >= 1 and not 0 < self.a < 1:
            fail("%s: a outside (0, 1)" % where)
        # The derived coordinate (b of codes 4 and 5, c of code 6) must be real.
        rest = {4: 1 - 2 * self.a**2, 5: 1 - self.a**2, 6: 1 - self.a**2 - self.b**2}
        if rest.get(self.code, 1) <= 0:
            fail("%s: the orbit leaves the unit sphere" % where)

    @property
    def points(self):
        return ORBIT_POINTS[self.code]


def read_rules(path):
    """(points, [Orbit]) of every rule, in file order."""
    rules = []
    with open(path, encoding="utf-8") as f:
        lines = [(n, line.split()) for n, line in enumerate(f, 1)
                 if line.strip() and not line.lstrip().startswith("#")]
    i = 0
    while i < len(lines):
        n, fields = lines[i]
        if len(fields) != 3 or fields[0] != "rule":
            fail("%s:%d: expected 'rule N NORBITS'" % (path, n))
        points, norbits = int(fields[1]), int(fields[2])
        body = lines[i + 1:i + 1 + norbits]
        if len(body) != norbits:
            fail("%s:%d: rule %d ends early" % (path, n, points))
        orbits = [Orbit(f, "%s:%d" % (path, m)) for m, f in body]
        if sum(o.points for o in orbits) != points:
            fail("%s:%d: the orbits of rule %d do not make %d points" % (path, n, points, points))
        total = sum(o.points * o.v for o in orbits)
        if abs(total - 1) > WEIGHT_SUM_TOLERANCE:
            fail("%s:%d: the weights of rule %d sum to %s" % (path, n, points, float(total)))
        rules.append((points, orbits))
        i += 1 + norbits
    return rules


def invariant_harmonics(degree):
    """Octahedral invariant harmonics of one degree: the coefficient of t^degree in
    1 / ((1 - t^4)(1 - t^6)) (the invariant ring is generated by r^2 and invariants
    of degrees 4 and 6)."""
    return sum(1 for i in range(degree // 4 + 1) if (degree - 4 * i) % 6 == 0)


def orbit_structures(points, precision):
    """The orbit structures (code-2 orbits, code-4 and code-5 orbits, code-6 orbits)
    of a rule of this size and precision with one orbit each of codes 1 and 3 and as
    many unknowns as equations."""
    equations = sum(invariant_harmonics(d) for d in range(0, precision + 1, 2))
    found = []
    for n2 in (0, 1):
        for n6 in range(points // 48 + 1):
            rest = points - 6 - 8 - 12 * n2 - 48 * n6
            if rest < 0 or rest % 24:
                continue
            n45 = rest // 24
            if 2 + n2 + 2 * n45 + 3 * n6 == equations:
                found.append((n2, n45, n6))
    return found


def structure_of(orbits):
    """(code-2, code-4 and code-5, code-6) orbit counts of a rule with one orbit each
    of codes 1 and 3; None for any other rule."""
    codes = [o.code for o in orbits]
    if codes.count(1) != 1 or codes.count(3) != 1:
        return None
    return (codes.count(2), codes.count(4) + codes.count(5), codes.count(6))


def order_table(rules):
    """Points and tabulated flag of each rule index 1 ... 65."""
    orbits_of = dict(rules)
    tabulated = set(orbits_of)
    order = {}
    for index, points in UNTABULATED_POINTS.items():
        if points in tabulated:
            fail("index %d: %d points is a tabulated rule" % (index, points))
        order[index] = points
    # The tabulated rules take the remaining indices in increasing size.
    free = [k for k in range(1, RULE_INDICES + 1) if k not in order]
    if len(free) != len(rules):
        fail("%d tabulated rules for %d free indices" % (len(rules), len(free)))
    for index, (points, _) in zip(free, sorted(rules, key=lambda r: r[0])):
        order[index] = points
    counts = [order[k] for k in range(1, RULE_INDICES + 1)]
    if counts != sorted(set(counts)):
        fail("the point counts do not grow with the rule index")
    for k, points in enumerate(counts, 1):
        # The 6-point rule has one unknown for one equation but cannot hold a code-3
        # orbit; every other member has the structure checked here.
        if k == 1:
            continue
        structures = orbit_structures(points, 2 * k + 1)
        if len(structures) != 1:
            fail("index %d: %d points fit no octahedral rule of precision %d"
                 % (k, points, 2 * k + 1))
        if points in orbits_of and structure_of(orbits_of[points]) != structures[0]:
            fail("index %d: the orbits of the %d-point rule are not those of its precision"
                 % (k, points))
    return counts, [1 if p in tabulated else 0 for p in counts]


def int_table(name, comment, values):
    lines = ["// " + c for c in comment]
    lines.append("const std::array<int, kRuleIndices> %s = {" % name)
    for i in range(0, len(values), 10):
        lines.append("    " + ", ".join(str(v) for v in values[i:i + 10]) + ",")
    lines.append("};")
    return "\n".join(lines) + "\n"


def emit(rules, order, available):
    index_of = {points: k for k, points in enumerate(order, 1)}
    out = [
        "// Generated by tools/dft/generate.py from the published Lebedev-Laikov rules in\n"
        "// data/lebedev/orbits.txt.\n"
        "// Generated, do not edit: change the generator and run it again.\n"
        "//\n"
        "// V. I. Lebedev and D. N. Laikov, Doklady Mathematics 59 (1999) 477-481, and the\n"
        "// earlier Lebedev rules it cites.  Each rule is its orbit list in the published\n"
        "// order: generator code, parameters a and b (0 where the code takes none) and the\n"
        "// weight of each point of the orbit.\n"
        "#include \"dft/grid/lebedev_data.h\"\n"
        "\n"
        "namespace norvik::dft::lebedev_data {\n"
        "\n"
        "namespace {\n"
        "\n"]
    for points, orbits in rules:
        k = index_of[points]
        out.append("// %d points, rule index %d, precision %d.\n" % (points, k, 2 * k + 1))
        out.append("constexpr Orbit kLd%04d[] = {\n" % points)
        for o in orbits:
            out.append("    {%d, %s, %s, %s},\n"
                       % (o.code, number(o.text[0]), number(o.text[1]), number(o.text[2])))
        out.append("};\n\n")
    out.append("}  // namespace\n\n")
    out.append("const std::array<Rule, kTabulatedRules> kRules = {{\n")
    for points, _ in sorted(rules, key=lambda r: r[0]):
        out.append("    {%d, %d, kLd%04d},\n" % (index_of[points], points, points))
    out.append("}};\n\n")
    out.append(int_table("kOrder", ["Points of the rule of each index."], order))
    out.append("\n")
    out.append(int_table("kPrecision", ["Precision 2k + 1 of rule index k."],
                         [2 * k + 1 for k in range(1, RULE_INDICES + 1)]))
    out.append("\n")
    out.append(int_table("kAvailable", ["1 where the index has a tabulated rule."], available))
    out.append("\n}  // namespace norvik::dft::lebedev_data\n")
    return "".join(out)


def write(root, relative, text):
    path = os.path.join(root, relative)
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w", encoding="utf-8", newline="\n") as f:
        f.write(text)


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    root = os.path.normpath(os.path.join(here, "..", ".."))
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--data", default=os.path.join(root, "..", "shared", "data", "lebedev"),
                        help="folder of orbits.txt")
    parser.add_argument("--out", default=root, help="root under which the tables are written")
    args = parser.parse_args()

    rules = read_rules(os.path.join(args.data, "orbits.txt"))
    if len(rules) != 32:
        fail("expected the 32 published rules, found %d" % len(rules))
    sizes = [points for points, _ in rules]
    if sizes != sorted(set(sizes)):
        fail("the rules are not in increasing size")
    order, available = order_table(rules)
    write(args.out, "src/dft/generated/lebedev_tables.cpp", emit(rules, order, available))


if __name__ == "__main__":
    main()
