#!/usr/bin/python3
"""Writes the seed corpus of the fuzz targets into fuzz/corpus/<target>/.

- list_input: one seed per input of the gfortran reference vectors
  (tests/fortran/data/list_read.txt), with its READ statements as the plan line
  (fuzz/harness.h describes the layout);
- molecule_file: the committed molecule files (examples/, tests/host/data/,
  tests/references/data/molecules/) and near-valid variants of the water example;
- parameter_file: the committed SCF-parameter files and near-valid variants.

Inputs that the fuzzers found and that were fixed are kept in the same folders
under names starting with "found-"; this script leaves them alone.  Run from
anywhere: python3 fuzz/make_seeds.py
"""

import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parent.parent
CORPUS = ROOT / "fuzz" / "corpus"


def unescape(text):
    out, i = [], 0
    while i < len(text):
        c = text[i]
        if c == "\\" and i + 1 < len(text):
            i += 1
            c = {"n": "\n", "r": "\r", "t": "\t"}.get(text[i], text[i])
        out.append(c)
        i += 1
    return "".join(out)


def write(target, name, data):
    folder = CORPUS / target
    folder.mkdir(parents=True, exist_ok=True)
    if isinstance(data, str):
        data = data.encode("latin-1")
    (folder / name).write_bytes(data)


def clear(target):
    folder = CORPUS / target
    if folder.exists():
        for path in folder.iterdir():
            if not path.name.startswith("found-"):
                path.unlink()


def list_input_seeds():
    clear("list_input")
    lines = (ROOT / "tests/fortran/data/list_read.txt").read_text(encoding="latin-1").splitlines()
    cases, current = [], None
    for line in lines:
        if not line or line.startswith("#"):
            continue
        fields = line.split("\t")
        if fields[0] == "input":
            current = [unescape(fields[1] if len(fields) > 1 else ""), []]
            cases.append(current)
        else:
            current[1].append(fields[1])
    for number, (text, reads) in enumerate(cases, 1):
        write("list_input", f"gfortran-{number:03d}", " | ".join(reads) + "\n" + text)


# Records of the water example, as (comment, value) pairs and atom lines.
WATER = (ROOT / "examples/water.mol").read_text()
HF_PAR = (ROOT / "examples/hf.par").read_text()
KS_PAR = (ROOT / "examples/ks.par").read_text()


def replace_record(text, number, value):
    """The file with record `number` (1-based) replaced."""
    lines = text.split("\n")
    lines[number - 1] = value
    return "\n".join(lines)


def molecule_seeds():
    clear("molecule_file")
    sources = [ROOT / "examples", ROOT / "tests/host/data", ROOT / "tests/references/data/molecules"]
    for folder in sources:
        for path in sorted(folder.glob("*.mol")):
            prefix = folder.name if folder.name != "molecules" else "reference"
            write("molecule_file", f"{prefix}-{path.stem}", path.read_bytes())
    variants = {
        "crlf": WATER.replace("\n", "\r\n"),
        "no-final-line-feed": WATER.rstrip("\n"),
        "ends-after-multiplicity": "\n".join(WATER.split("\n")[:22]) + "\n",
        "ends-inside-settings": "\n".join(WATER.split("\n")[:9]),
        "first-atom-ghost": replace_record(WATER, 16, "1 1"),
        "ghosts-past-the-atoms": replace_record(WATER, 16, "2 4"),
        "symbol-in-capitals": WATER.replace("\nO ", "\nCL"),
        "unknown-symbol": WATER.replace("\nO ", "\nXx"),
        "triplet": replace_record(WATER, 22, "3"),
        "cation-singlet": replace_record(replace_record(WATER, 20, "1"), 22, "1"),
        "anion-doublet": replace_record(replace_record(WATER, 20, "-1"), 22, "2"),
        "zero-multiplicity": replace_record(WATER, 22, "0"),
        "slash-keeps-defaults": replace_record(replace_record(WATER, 6, "/"), 22, "/"),
        "null-values": replace_record(WATER, 16, ",,"),
        "repeat-counts": replace_record(WATER, 16, "2*0") + "He 3*0.25\n",
        "quoted-texts": replace_record(replace_record(WATER, 6, "'water\nmolecule', 0"), 2, "'HF'"),
        "doubled-quote": replace_record(WATER, 6, "'it''s' 0"),
        "fortran-exponents": WATER.replace("0.000000000", "0.0D+00").replace("0.7572", "7.572d-1"),
        "semicolons-and-tabs": WATER.replace("    ", ";\t"),
        "bad-coordinate": WATER.replace("0.757200000", "0.75.72"),
        "inf-and-nan": WATER.replace("0.117300000", "Inf").replace("-0.469200000", "NaN"),
        "huge-integers": replace_record(replace_record(WATER, 20, "2147483647"), 22, "-2147483648"),
        "one-atom": "\n".join(WATER.split("\n")[:24]) + "\n",
        "no-atoms": "\n".join(WATER.split("\n")[:23]) + "\n",
        "empty": "",
        "comments-only": "# a\n# b\n# c\n",
    }
    for name, text in variants.items():
        write("molecule_file", f"variant-{name}", text)


def parameter_seeds():
    clear("parameter_file")
    sources = {"examples": ROOT / "examples", "host": ROOT / "tests/host/data",
               "host_job": ROOT / "tests/host_job/data"}
    for prefix, folder in sources.items():
        for path in sorted(folder.glob("*.par")):
            write("parameter_file", f"{prefix}-{path.stem}", path.read_bytes())
    variants = {
        "hf-crlf": HF_PAR.replace("\n", "\r\n"),
        "hf-no-final-line-feed": HF_PAR.rstrip("\n"),
        "hf-slashes": re.sub(r"(?m)^[0-9].*$", "/", HF_PAR),
        "hf-null-pairs": replace_record(replace_record(HF_PAR, 6, ",128"), 8, "0.3,"),
        "hf-repeat-counts": replace_record(replace_record(HF_PAR, 6, "2*64"), 12, "2*1d-7"),
        "hf-ends-early": "\n".join(HF_PAR.split("\n")[:11]),
        "hf-bad-integer": replace_record(HF_PAR, 4, "two"),
        "hf-real-for-integer": replace_record(HF_PAR, 6, "64.0 128"),
        "hf-values-over-records": replace_record(HF_PAR, 6, "64\n128"),
        "ks-crlf": KS_PAR.replace("\n", "\r\n"),
        "ks-ends-before-grid": "\n".join(KS_PAR.split("\n")[:19]) + "\n",
        "ks-slashes": re.sub(r"(?m)^[0-9].*$", "/", KS_PAR),
        "empty": "",
    }
    for name, text in variants.items():
        write("parameter_file", f"variant-{name}", text)


if __name__ == "__main__":
    list_input_seeds()
    molecule_seeds()
    parameter_seeds()
