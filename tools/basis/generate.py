#!/usr/bin/python3
"""Builds the compiled-in basis-set tables of norvik from the published basis sets.

Input: the Basis Set Exchange JSON files of the published Pople sets (one file per
set, see data/basis/README.md).  Output, relative to --out (the repository root by
default):

  src/basis/generated/basis_631g_tables.h    the exported arrays of module BASIS_631G
  src/basis/generated/basis_631g_tables.cpp  their values and the 6-31G family layout
  src/basis/generated/basis_321g_tables.cpp  3-21G and 6-21G
  src/basis/generated/basis_sto3g_tables.cpp STO-3G and its two sets of Slater exponents
  abi/manifest/basis.txt                     every routine and table the subsystem exports

Every exponent is stored unscaled, that is divided by the square of the scale factor
of its shell, so that the library's zeta**2 * stored value gives the published value
back.  Shells are put in the library's order (the shell-layout table below); the
published order is only the file's business.

Run:  /usr/bin/python3 tools/basis/generate.py [--data DIR] [--out DIR] [--report]
Standard library only; exact rational arithmetic (fractions) for every division.
"""

import argparse
import json
import math
import os
import sys
from fractions import Fraction

SYMBOLS = [
    "H", "He", "Li", "Be", "B", "C", "N", "O", "F", "Ne", "Na", "Mg", "Al", "Si", "P", "S",
    "Cl", "Ar", "K", "Ca", "Sc", "Ti", "V", "Cr", "Mn", "Fe", "Co", "Ni", "Cu", "Zn", "Ga",
    "Ge", "As", "Se", "Br", "Kr", "Rb", "Sr", "Y", "Zr", "Nb", "Mo", "Tc", "Ru", "Rh", "Pd",
    "Ag", "Cd", "In", "Sn", "Sb", "Te", "I", "Xe",
]
NOBLE_GASES = {2, 10, 18, 36, 54}

# Element groups of the layout table: (name, first Z, last Z).
GROUPS = [
    ("HHe", 1, 2), ("LiNe", 3, 10), ("NaAr", 11, 18), ("KCa", 19, 20), ("ScZn", 21, 30),
    ("GaKr", 31, 36), ("RbSr", 37, 38), ("YCd", 39, 48), ("InXe", 49, 54),
]

# Shell kinds per group for the sets without polarisation or diffuse functions
# (pure d counts; the Cartesian-d names widen 5 to 6 at run time).
LAYOUT = {
    "sto3g": {
        "HHe": [1], "LiNe": [1, 4], "NaAr": [1, 4, 4], "KCa": [1, 4, 4, 4],
        "ScZn": [1, 4, 4, 4, 5], "GaKr": [1, 4, 4, 4, 5], "RbSr": [1, 4, 4, 4, 5, 4],
        "YCd": [1, 4, 4, 4, 5, 4, 5], "InXe": [1, 4, 4, 4, 5, 4, 5],
    },
    "321g": {
        "HHe": [1, 1], "LiNe": [1, 4, 4], "NaAr": [1, 4, 4, 4], "KCa": [1, 4, 4, 4, 4],
        "ScZn": [1, 4, 4, 4, 4, 5, 5], "GaKr": [1, 4, 4, 4, 4, 5],
        "RbSr": [1, 4, 4, 4, 5, 4, 4], "YCd": [1, 4, 4, 4, 5, 4, 4, 5, 5],
        "InXe": [1, 4, 4, 4, 5, 4, 4, 5],
    },
    "621g": {"HHe": [1, 1], "LiNe": [1, 4, 4], "NaAr": [1, 4, 4, 4]},
    "631g": {
        "HHe": [1, 1], "LiNe": [1, 4, 4], "NaAr": [1, 4, 4, 4], "KCa": [1, 4, 4, 4, 4, 5, 5],
        "ScZn": [1, 4, 4, 4, 4, 5, 5], "GaKr": [1, 4, 4, 4, 4, 5, 5],
    },
}

# Names of the base 6-31G shells in module BASIS_631G, in layout order.  An sp shell
# "ns" keeps its p coefficients under "np"; "nv" is the uncontracted outer part of
# the valence shell with principal number n (for K-Kr "3v" is the outer 3d).
ROLES_631G = {
    "HHe": ["1s", "1v"], "LiNe": ["1s", "2s", "2v"], "NaAr": ["1s", "2s", "3s", "3v"],
    "KCa": ["1s", "2s", "3s", "4s", "4v", "3d", "3v"],
}
ROLES_631G["ScZn"] = ROLES_631G["KCa"]
ROLES_631G["GaKr"] = ROLES_631G["KCa"]

# Scale factors of the 6-31G family (zeta1, zeta2, zeta3): core, inner and outer valence.
ZETA_631G = {1: ("1.0", "1.2", "1.15"), 3: ("1.0", "1.03", "1.12"), 4: ("1.0", "1.03", "1.12"),
             5: ("1.0", "1.03", "1.12"), 6: ("1.0", "1.0", "1.04"), 7: ("1.0", "0.99", "0.98"),
             8: ("1.0", "0.99", "0.98")}
# 3-21G and 6-21G: hydrogen's valence shells are scaled by 1.1.
ZETA_X21G = {1: ("1.0", "1.1", "1.1")}

# Slater exponents quoted for the STO-3G molecular and isolated-atom sets; the
# generator derives all of them and checks these.
STO3G_KNOWN = {1: ["1.24"], 2: ["1.69"], 3: ["2.69", "0.80"], 4: ["3.68", "1.15"],
               5: ["4.68", "1.50"], 6: ["5.67", "1.72"]}
STO3G_ISOLATED_KNOWN = {1: ["1.0"], 2: ["1.69"], 3: ["2.69", "0.65"]}

# The 6-31 family: published file, polarisation on H/He, on Li and heavier, diffuse
# on H/He, on Li and heavier.
FAMILIES_631 = [
    ("631G", "6-31g", False, False, False, False),
    ("631GX", "6-31gs", False, True, False, False),
    ("631GXX", "6-31gss", True, True, False, False),
    ("631TG", "6-31pg", False, False, False, True),
    ("631TGX", "6-31pgs", False, True, False, True),
    ("631TGXX", "6-31pgss", True, True, False, True),
    ("631TTG", "6-31ppg", False, False, True, True),
    ("631TTGX", "6-31ppgs", False, True, True, True),
    ("631TTGXX", "6-31ppgss", True, True, True, True),
]

# Exported routines, by family: (suffix, Z max, has a Cartesian-d count routine).
ROUTINE_FAMILIES = [
    ("STO3G", 54, False), ("321G", 54, True), ("621G", 18, False), ("631G", 36, True),
    ("631GX", 36, True), ("631GXX", 36, True), ("631TG", 18, True), ("631TGX", 18, True),
    ("631TGXX", 18, True), ("631TTG", 18, True), ("631TTGX", 18, True),
    ("631TTGXX", 18, True),
]
LMLMN_FILLS = ["SONLY", "PONLY", "SANDP", "DONLY", "FONLY", "SS", "SSS", "SSSS", "SSSSS", "PP"]

KIND_OF_AM = {(0,): 1, (1,): 3, (0, 1): 4, (2,): 5, (3,): 7}


def fail(message):
    sys.exit("generate.py: " + message)


def group_of(z):
    for name, first, last in GROUPS:
        if first <= z <= last:
            return name
    fail("no group for Z = %d" % z)


def number(value):
    """A double literal that C++ reads back as exactly the double nearest to value."""
    text = repr(float(value))
    if "e" not in text and "." not in text:
        text += ".0"
    return text


def load(data_dir, stem):
    path = os.path.join(data_dir, stem + ".json")
    with open(path, encoding="utf-8") as f:
        return json.load(f)["elements"]


class Part:
    """One published shell, or the s/p or d part of a published spd shell."""

    def __init__(self, am, exponents, coefficients):
        self.am = tuple(am)
        self.exponents = [Fraction(x) for x in exponents]
        self.coef_text = coefficients  # one list of strings per angular momentum
        self.coefs = [[float(x) for x in c] for c in coefficients]

    @property
    def kind(self):
        return KIND_OF_AM[self.am]

    @property
    def nprim(self):
        return len(self.exponents)

    def key(self):
        return (self.am, tuple(self.exponents), tuple(tuple(c) for c in self.coefs))


def parts_of(element):
    parts = []
    for shell in element["electron_shells"]:
        am = shell["angular_momentum"]
        if am == [0, 1, 2]:
            parts.append(Part([0, 1], shell["exponents"], shell["coefficients"][:2]))
            parts.append(Part([2], shell["exponents"], shell["coefficients"][2:]))
        else:
            parts.append(Part(am, shell["exponents"], shell["coefficients"]))
    return parts


def arrange(parts, kinds, where):
    """Puts published shells into the layout order: each class (s-like, p, d, f) keeps
    its shells from the most compact to the most diffuse, and the layout says where
    each class's next shell goes."""
    classes = {"s": [], "p": [], "d": [], "f": []}
    for part in parts:
        classes[{1: "s", 4: "s", 3: "p", 5: "d", 7: "f"}[part.kind]].append(part)
    for members in classes.values():
        members.sort(key=lambda p: -max(p.exponents))
    arranged = []
    for kind in kinds:
        members = classes[{1: "s", 4: "s", 3: "p", 5: "d", 7: "f"}[kind]]
        if not members or members[0].kind != kind:
            fail("%s: published shells do not fit the layout %s" % (where, kinds))
        arranged.append(members.pop(0))
    if any(classes.values()):
        fail("%s: published shells left over for the layout %s" % (where, kinds))
    return arranged


def split_valence_zeta_index(shells):
    """zeta slot of each shell of a split-valence set: the contracted inner and the
    single-primitive outer valence s/sp shells take slots 2 and 3, all others 1."""
    index = [1] * len(shells)
    slike = [i for i, s in enumerate(shells) if s.kind in (1, 4)]
    inner, outer = slike[-2], slike[-1]
    if shells[outer].nprim != 1 or shells[inner].nprim < 2:
        fail("no split valence shell pair")
    index[inner], index[outer] = 2, 3
    return index


def banner(inputs):
    return ("// Generated by tools/basis/generate.py from the published basis sets in\n"
            "// data/basis/ (%s).\n"
            "// Generated, do not edit: change the generator and run it again.\n"
            % ", ".join(inputs))


# ---------------------------------------------------------------------------------
# 6-31G family

def build_631(data_dir):
    files = {stem: load(data_dir, stem) for _, stem, *_ in FAMILIES_631}
    elements = []
    for z in range(1, 37):
        group = group_of(z)
        base_parts = parts_of(files["6-31g"][str(z)])
        base = arrange(base_parts, LAYOUT["631g"][group], "6-31G Z=%d" % z)
        nbase = len(base_parts)
        # The polarisation shell: p on H and He (6-31G**), d or f on the others (6-31G*).
        pol_file = "6-31gss" if z <= 2 else "6-31gs"
        extra = parts_of(files[pol_file][str(z)])[nbase:]
        if len(extra) != 1:
            fail("Z=%d: expected one polarisation shell in %s" % (z, pol_file))
        pol = extra[0]
        diffuse = None
        if z <= 18:
            extra = parts_of(files["6-31ppg"][str(z)])[nbase:]
            if len(extra) != 1:
                fail("Z=%d: expected one diffuse shell" % z)
            diffuse = extra[0]
        # Every published member of the family must be base + polarisation + diffuse.
        for _, stem, pol_light, pol_heavy, dif_light, dif_heavy in FAMILIES_631:
            if str(z) not in files[stem]:
                if z <= 18:
                    fail("%s lacks Z=%d" % (stem, z))
                continue
            expected = [p.key() for p in base_parts]
            if (pol_light if z <= 2 else pol_heavy):
                expected.append(pol.key())
            if (dif_light if z <= 2 else dif_heavy):
                expected.append(diffuse.key())
            got = [p.key() for p in parts_of(files[stem][str(z)])]
            if got != expected:
                fail("%s Z=%d is not the base set plus its added shells" % (stem, z))
        zeta = [Fraction(x) for x in ZETA_631G.get(z, ("1.0", "1.0", "1.0"))]
        zindex = split_valence_zeta_index(base)
        elements.append((z, group, base, zindex, pol, diffuse, zeta))
    return elements


def array_name(z, role, kind):
    symbol = SYMBOLS[z - 1].lower()
    if len(symbol) == 1:
        symbol += "_"
    return "BASIS_631G_MP_b631g_%s_%s_%s" % (symbol, role, kind)


def emit_631(elements):
    arrays = []  # (name, values)
    records = []
    for z, group, base, zindex, pol, diffuse, zeta in elements:
        shells = []
        for shell, role, zi in zip(base, ROLES_631G[group], zindex):
            scale = zeta[zi - 1] ** 2
            ai = array_name(z, role, "ai")
            arrays.append((ai, [e / scale for e in shell.exponents]))
            coef = coef_p = "nullptr"
            if shell.nprim > 1:
                coef = array_name(z, role, "di")
                arrays.append((coef, shell.coefs[0]))
                if shell.kind == 4:
                    coef_p = array_name(z, role.replace("s", "p"), "di")
                    arrays.append((coef_p, shell.coefs[1]))
            else:
                check_uncontracted(shell, z)
            shells.append((shell.kind, shell.nprim, zi, ai, coef, coef_p))
        check_uncontracted(pol, z)
        pl = array_name(z, "pl", "ai")
        arrays.append((pl, pol.exponents))
        pol_rec = (pol.kind, 1, 0, pl, "nullptr", "nullptr")
        dif_rec = (0, 0, 0, "nullptr", "nullptr", "nullptr")
        if diffuse is not None:
            check_uncontracted(diffuse, z)
            df = array_name(z, "df", "ai")
            arrays.append((df, diffuse.exponents))
            dif_rec = (diffuse.kind, 1, 0, df, "nullptr", "nullptr")
        records.append((z, shells, pol_rec, dif_rec, zeta))

    header = [banner(["6-31g.json", "6-31gs.json", "6-31gss.json", "6-31ppg.json"]),
              "//\n// The arrays of module BASIS_631G, exported as data: exponents (ai) unscaled,\n"
              "// that is divided by zeta**2 of their shell, and contraction coefficients (di)\n"
              "// for normalised primitives.  %d arrays.\n" % len(arrays),
              "#pragma once\n\n#include \"norvik/export.h\"\n\nNORVIK_EXTERN_C_BEGIN\n\n"]
    for name, values in arrays:
        header.append("NORVIK_API extern const double %s[%d];\n" % (name, len(values)))
    header.append("\nNORVIK_EXTERN_C_END\n")

    body = [banner(["6-31g.json", "6-31gs.json", "6-31gss.json", "6-31ppg.json"]),
            "#include \"basis/basis_data.h\"\n"
            "#include \"basis/generated/basis_631g_tables.h\"\n\n"
            "// The exported arrays of module BASIS_631G.\n"]
    for name, values in arrays:
        body.append("extern \"C\" NORVIK_API const double %s[%d] = {%s};\n"
                    % (name, len(values), ", ".join(number(v) for v in values)))
    body.append("\nnamespace norvik::basis::data {\n\nnamespace {\n\n")
    for z, shells, _, _, _ in records:
        body.append("constexpr ShellData k631gBase%02d[] = {\n" % z)
        for rec in shells:
            body.append("    {%d, %d, %d, %s, %s, %s},\n" % rec)
        body.append("};\n")
    body.append("\n}  // namespace\n\n")
    body.append("// Z = 1 ... 36: base 6-31G shells in layout order, then the polarisation\n"
                "// and the diffuse shell (kind 0: none).\n")
    body.append("const Element631Data k631g[36] = {\n")
    for z, shells, pol_rec, dif_rec, _ in records:
        body.append("    {{%d, k631gBase%02d},\n     {%d, %d, %d, %s, %s, %s},\n"
                    "     {%d, %d, %d, %s, %s, %s}},\n"
                    % ((len(shells), z) + pol_rec + dif_rec))
    body.append("};\n\n")
    body.append("// Scale factors zeta1 ... zeta3 (core, inner and outer valence), Z = 1 ... 36.\n")
    body.append("const std::array<double, 3> k631gZeta[36] = {\n")
    for z, _, _, _, zeta in records:
        body.append("    {%s},  // %s\n" % (", ".join(number(x) for x in zeta), SYMBOLS[z - 1]))
    body.append("};\n\n}  // namespace norvik::basis::data\n")
    return "".join(header), "".join(body), [name for name, _ in arrays]


def check_uncontracted(shell, z):
    if shell.nprim != 1 or any(c != [1.0] for c in shell.coefs):
        fail("Z=%d: an uncontracted shell without unit coefficients" % z)


# ---------------------------------------------------------------------------------
# 3-21G and 6-21G

def build_x21(data_dir, stem, layout_key, zmax):
    elements = load(data_dir, stem)
    result = []
    for z in range(1, zmax + 1):
        group = group_of(z)
        shells = arrange(parts_of(elements[str(z)]), LAYOUT[layout_key][group],
                         "%s Z=%d" % (stem, z))
        zeta = [Fraction(x) for x in ZETA_X21G.get(z, ("1.0", "1.0", "1.0"))]
        result.append((z, shells, split_valence_zeta_index(shells), zeta))
    return result


def emit_element_shells(prefix, z, shells, zindex, scales, lines, coef_names=None):
    """Arrays and the ShellData records of one element; returns the record lines."""
    records = []
    for i, (shell, zi) in enumerate(zip(shells, zindex)):
        tag = "%s%02d_%d" % (prefix, z, i + 1)
        scale = scales[i] ** 2
        lines.append("constexpr double %s_a[] = {%s};\n"
                     % (tag, ", ".join(number(e / scale) for e in shell.exponents)))
        coef = coef_p = "nullptr"
        if coef_names is not None:
            coef, coef_p = coef_names[i]
        elif shell.nprim > 1:
            coef = tag + "_c"
            lines.append("constexpr double %s[] = {%s};\n"
                         % (coef, ", ".join(number(c) for c in shell.coefs[0])))
            if shell.kind == 4:
                coef_p = tag + "_p"
                lines.append("constexpr double %s[] = {%s};\n"
                             % (coef_p, ", ".join(number(c) for c in shell.coefs[1])))
        else:
            check_uncontracted(shell, z)
        records.append("    {%d, %d, %d, %s_a, %s, %s},\n"
                       % (shell.kind, shell.nprim, zi, tag, coef, coef_p))
    return records


def emit_x21(sets):
    out = [banner(["3-21g.json", "6-21g.json"]),
           "#include \"basis/basis_data.h\"\n\nnamespace norvik::basis::data {\n\n"
           "namespace {\n\n"
           "// Exponents unscaled (divided by zeta**2 of their shell); coefficients for\n"
           "// normalised primitives.\n"]
    tables = []
    for name, prefix, elements in sets:
        element_lines = []
        for z, shells, zindex, zeta in elements:
            lines = []
            scales = [zeta[zi - 1] for zi in zindex]
            records = emit_element_shells(prefix, z, shells, zindex, scales, lines)
            out.extend(lines)
            out.append("constexpr ShellData %s%02d[] = {\n%s};\n" % (prefix, z, "".join(records)))
            element_lines.append("    {%d, %s%02d},  // %s\n"
                                 % (len(shells), prefix, z, SYMBOLS[z - 1]))
        zeta_lines = ["    {%s},\n" % ", ".join(number(x) for x in zeta)
                      for _, _, _, zeta in elements]
        tables.append((name, len(elements), element_lines, zeta_lines))
    out.append("\n}  // namespace\n")
    for name, count, element_lines, zeta_lines in tables:
        out.append("\nconst ElementData %s[%d] = {\n%s};\n" % (name, count, "".join(element_lines)))
        out.append("const std::array<double, 3> %sZeta[%d] = {\n%s};\n"
                   % (name, count, "".join(zeta_lines)))
    out.append("\n}  // namespace norvik::basis::data\n")
    return "".join(out)


# ---------------------------------------------------------------------------------
# STO-3G

def build_sto3g(data_dir):
    elements = load(data_dir, "sto-3g")
    atoms = []
    for z in range(1, 55):
        shells = arrange(parts_of(elements[str(z)]), LAYOUT["sto3g"][group_of(z)],
                         "STO-3G Z=%d" % z)
        atoms.append((z, shells))

    # Each shell type (1s, 2sp, 3sp, 3spd, 4sp, 4spd, 5sp) is one Gaussian expansion
    # of a Slater function; its coefficients are the same for every element and
    # identify it.  A d shell belongs to the spd expansion whose d coefficients it
    # has: in Ga-Kr and In-Xe the d part shares the exponents of an sp part, in
    # Sc-Zn and Y-Cd it has a Slater exponent of its own.
    types = {}
    for z, shells in atoms:
        for i, shell in enumerate(shells):
            if shell.am != (2,):
                t = types.setdefault(tuple(shell.coef_text[0]),
                                     {"coefs": shell.coefs, "members": []})
                if t["coefs"] != shell.coefs:
                    fail("STO-3G Z=%d: coefficient sets differ within an expansion" % z)
                t["members"].append((z, i))
    d_owner = {}
    for z, shells in atoms:
        for shell in shells:
            if shell.am == (2,):
                for other in shells:
                    if other.am == (0, 1) and other.exponents == shell.exponents:
                        d_owner[tuple(shell.coef_text[0])] = tuple(other.coef_text[0])
    for z, shells in atoms:
        for i, shell in enumerate(shells):
            if shell.am == (2,):
                owner = d_owner.get(tuple(shell.coef_text[0]))
                if owner is None:
                    fail("STO-3G Z=%d: a d shell of no known expansion" % z)
                types[owner]["members"].append((z, i))
                types[owner]["d"] = shell.coefs[0]

    # Slater exponents: within one expansion the exponents of all members are
    # zeta**2 times one zeta = 1 triple, and the published zetas carry two decimals.
    # The ratios fix the zetas up to a common factor; the smallest zetas that are all
    # multiples of 0.01 are the published ones (STO3G_KNOWN checks the anchor).
    zeta = {}
    alpha1 = {}
    for key, t in types.items():
        members = t["members"]
        first = [atoms[z - 1][1][i].exponents[0] for z, i in members]
        ratios = [math.sqrt(float(a / first[0])) for a in first]
        for k in range(1, 20001):
            c = k / 100.0
            if max(abs(100 * c * r - round(100 * c * r)) for r in ratios) < 1e-5:
                break
        else:
            fail("STO-3G: no two-decimal Slater exponents for an expansion")
        for (z, i), r in zip(members, ratios):
            zeta[(z, i)] = Fraction(round(100 * c * r), 100)
        # The zeta = 1 expansion, as the mean over the members; each member's own
        # triple differs from it only by the rounding of the published figures.
        triples = [[e / zeta[(z, i)] ** 2 for e in atoms[z - 1][1][i].exponents]
                   for z, i in members]
        mean = [sum(col) / len(col) for col in zip(*triples)]
        worst = max(abs(float(x / m) - 1.0) for tr in triples for x, m in zip(tr, mean))
        if worst > 1e-9:
            fail("STO-3G: an expansion is not one zeta = 1 triple (%.3g)" % worst)
        alpha1[key] = (mean, worst, len(members))
    molecular = []
    for z, shells in atoms:
        molecular.append([zeta[(z, i)] for i in range(len(shells))])
    for z, known in STO3G_KNOWN.items():
        if [str(x) for x in molecular[z - 1]] != [str(Fraction(k)) for k in known]:
            fail("STO-3G Z=%d: Slater exponents %s differ from %s" % (z, molecular[z - 1], known))
    isolated = [isolated_zeta(z, shells, molecular[z - 1]) for z, shells in atoms]
    for z, known in STO3G_ISOLATED_KNOWN.items():
        if isolated[z - 1] != [Fraction(k) for k in known]:
            fail("STO-3G Z=%d: isolated-atom exponents %s" % (z, isolated[z - 1]))
    return atoms, types, molecular, isolated, alpha1


# Slater's rules.  Madelung filling order up to xenon; groups (1s) (2s,2p) (3s,3p)
# (3d) (4s,4p) (4d) (5s,5p); effective principal numbers 1, 2, 3, 3.7, 4.0.
MADELUNG = [(1, 0), (2, 0), (2, 1), (3, 0), (3, 1), (4, 0), (3, 2), (4, 1), (5, 0), (4, 2),
            (5, 1)]
N_EFFECTIVE = {1: Fraction(1), 2: Fraction(2), 3: Fraction(3), 4: Fraction(37, 10),
               5: Fraction(4)}


def configuration(z):
    occupation = {}
    left = z
    for n, l in MADELUNG:
        count = min(left, 2 * (2 * l + 1))
        occupation[(n, l)] = count
        left -= count
    return occupation


def slater_sp_zeta(z, n):
    """Slater's-rule exponent of an ns/np electron of the ground-configuration atom."""
    occ = configuration(z)
    same = sum(c for (nn, l), c in occ.items() if nn == n and l <= 1)
    if same == 0:
        fail("Slater's rules: no electron in shell %d of Z=%d" % (n, z))
    screening = (Fraction(30, 100) if n == 1 else Fraction(35, 100)) * (same - 1)
    screening += Fraction(85, 100) * sum(c for (nn, l), c in occ.items() if nn == n - 1)
    screening += sum(c for (nn, l), c in occ.items() if nn <= n - 2)
    value = (z - screening) / N_EFFECTIVE[n]
    return Fraction(math.floor(value * 100 + Fraction(1, 2)), 100)  # two decimals, half up


def isolated_zeta(z, shells, molecular):
    """Isolated-atom Slater exponents: the outermost s/sp shell of every element but
    the noble gases follows Slater's rules; core shells, d shells and the noble gases
    keep the molecular values (those are free-atom values already)."""
    result = list(molecular)
    if z in NOBLE_GASES:
        return result
    slike = [i for i, s in enumerate(shells) if s.kind in (1, 4)]
    result[slike[-1]] = slater_sp_zeta(z, len(slike))
    return result


def emit_sto3g(atoms, types, molecular, isolated):
    out = [banner(["sto-3g.json"]),
           "#include \"basis/basis_data.h\"\n\nnamespace norvik::basis::data {\n\n"
           "namespace {\n\n"
           "// Contraction coefficients of the STO-3G expansions, one set per shell type\n"
           "// (the same for every element).\n"]
    coef_name = {}
    for n, (key, t) in enumerate(types.items()):
        tag = "kSto3gCoef%d" % (n + 1)
        out.append("constexpr double %s_s[] = {%s};\n"
                   % (tag, ", ".join(number(c) for c in t["coefs"][0])))
        names = [tag + "_s", "nullptr"]
        if len(t["coefs"]) > 1:
            out.append("constexpr double %s_p[] = {%s};\n"
                       % (tag, ", ".join(number(c) for c in t["coefs"][1])))
            names[1] = tag + "_p"
        if "d" in t:
            out.append("constexpr double %s_d[] = {%s};\n"
                       % (tag, ", ".join(number(c) for c in t["d"])))
        coef_name[key] = (names, tag + "_d")
    out.append("\n// Per element, the zeta = 1 exponents of each shell: the published exponents\n"
               "// divided by the square of the shell's Slater exponent.\n")
    element_lines = []
    for z, shells in atoms:
        names = []
        for shell in shells:
            key = tuple(shell.coef_text[0])
            if shell.am == (2,):
                owner = [k for k, t in types.items() if t.get("d") == shell.coefs[0]][0]
                names.append((coef_name[owner][1], "nullptr"))
            else:
                names.append(tuple(coef_name[key][0]))
        lines = []
        zindex = list(range(1, len(shells) + 1))
        records = emit_element_shells("kSto3g", z, shells, zindex, molecular[z - 1], lines,
                                      names)
        out.extend(lines)
        out.append("constexpr ShellData kSto3g%02d[] = {\n%s};\n" % (z, "".join(records)))
        element_lines.append("    {%d, kSto3g%02d},  // %s\n" % (len(shells), z, SYMBOLS[z - 1]))
    out.append("\n}  // namespace\n\nconst ElementData kSto3g[54] = {\n%s};\n"
               % "".join(element_lines))

    def zeta_table(name, rows, comment):
        lines = ["\n// %s\nconst std::array<double, 7> %s[54] = {\n" % (comment, name)]
        for z, row in enumerate(rows, start=1):
            padded = [number(x) for x in row] + ["0.0"] * (7 - len(row))
            lines.append("    {%s},  // %s\n" % (", ".join(padded), SYMBOLS[z - 1]))
        lines.append("};\n")
        return "".join(lines)

    out.append(zeta_table("kSto3gZeta", molecular,
                          "Slater exponents of the molecular set, one per shell in layout order."))
    out.append(zeta_table("kSto3gZetaIsolated", isolated,
                          "The isolated-atom set: the outer s/sp shell by Slater's rules."))
    out.append("\n}  // namespace norvik::basis::data\n")
    return "".join(out)


# ---------------------------------------------------------------------------------
# Export manifest

def emit_manifest(data_names):
    lines = ["# Basis-set library: entry points, family and element-group routines, the\n"
             "# shared angular fills and the arrays of module BASIS_631G.\n"
             "# Generated by tools/basis/generate.py; generated, do not edit.\n"]

    def row(name, kind):
        lines.append("%s %s  exported\n" % (name.ljust(28), kind))

    for name in ["ZATMNSHL", "ZATMZETA", "MAKEBASIS", "MAKELMLMN", "MAKEKLMG"]:
        row(name, "routine")
    for suffix, zmax, cartesian in ROUTINE_FAMILIES:
        row("ZATMNSHL_" + suffix, "routine")
        if cartesian:
            row("ZATMNSHL_%sC" % suffix, "routine")
        row("ZATMZETA_" + suffix, "routine")
        if suffix == "STO3G":
            row("ZATMZETAISO_STO3G", "routine")
        for stem in ["MAKELMLMN", "MAKEKLMG"]:
            row("%s_%s" % (stem, suffix), "routine")
            if suffix != "STO3G":
                for group, first, _ in GROUPS:
                    if first <= zmax:
                        row("%s_%s_%s" % (stem, suffix, group.upper()), "routine")
    for fill in LMLMN_FILLS:
        row("LMLMN_" + fill, "routine")
    for name in data_names:
        row(name, "data   ")
    return "".join(lines)


# ---------------------------------------------------------------------------------

def report(alpha1, molecular, isolated, n_arrays):
    print("BASIS_631G arrays: %d" % n_arrays)
    print("STO-3G zeta = 1 expansions (mean over elements; largest relative spread):")
    for key, (mean, worst, count) in alpha1.items():
        print("  first coefficient %s, %d shells: %s  spread %.2e"
              % (key[0], count, ", ".join("%.10f" % float(x) for x in mean), worst))
    print("STO-3G Slater exponents, molecular | isolated atom:")
    for z in range(1, 55):
        print("  %-2s %s | %s" % (SYMBOLS[z - 1], " ".join("%.2f" % float(x) for x in molecular[z - 1]),
                                 " ".join("%.2f" % float(x) for x in isolated[z - 1])))


def write(root, relative, text):
    path = os.path.join(root, relative)
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w", encoding="utf-8", newline="\n") as f:
        f.write(text)


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--data", default="/work/shared/data/basis",
                        help="folder of the published basis-set JSON files")
    parser.add_argument("--out", default=os.path.normpath(os.path.join(here, "..", "..")),
                        help="root under which the generated files are written")
    parser.add_argument("--report", action="store_true",
                        help="print the derived STO-3G expansions and Slater exponents")
    args = parser.parse_args()

    header_631, body_631, data_names = emit_631(build_631(args.data))
    x21 = emit_x21([("k321g", "k321g", build_x21(args.data, "3-21g", "321g", 54)),
                    ("k621g", "k621g", build_x21(args.data, "6-21g", "621g", 18))])
    atoms, types, molecular, isolated, alpha1 = build_sto3g(args.data)
    sto3g = emit_sto3g(atoms, types, molecular, isolated)

    write(args.out, "src/basis/generated/basis_631g_tables.h", header_631)
    write(args.out, "src/basis/generated/basis_631g_tables.cpp", body_631)
    write(args.out, "src/basis/generated/basis_321g_tables.cpp", x21)
    write(args.out, "src/basis/generated/basis_sto3g_tables.cpp", sto3g)
    write(args.out, "abi/manifest/basis.txt", emit_manifest(data_names))
    if args.report:
        report(alpha1, molecular, isolated, len(data_names))


if __name__ == "__main__":
    main()
