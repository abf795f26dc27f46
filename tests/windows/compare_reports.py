#!/usr/bin/env python3
"""Compares two reports of the same job, one from the Linux host and one from the
Windows DLL: every line must be the same but for the SCF's last energy change,
which is the difference of two nearly equal energies and so rounding noise on
either platform (both must stay below 1e-8 eV).  Line ends are compared without
the carriage return.

usage: compare_reports.py LINUX_REPORT WINDOWS_REPORT
"""
import re
import sys

NOISE = re.compile(r"^(.*last change = +)(\S+)( \[eV\])$")
LIMIT = 1e-8


def lines(path):
    with open(path, newline="") as f:
        return [line.rstrip("\r\n") for line in f]


def main():
    linux, windows = lines(sys.argv[1]), lines(sys.argv[2])
    problems = []
    if len(linux) != len(windows):
        problems.append("%d lines on Linux, %d on Windows" % (len(linux), len(windows)))
    for number, (a, b) in enumerate(zip(linux, windows), start=1):
        if a == b:
            continue
        ma, mb = NOISE.match(a), NOISE.match(b)
        if ma and mb and ma.group(1) == mb.group(1) and ma.group(3) == mb.group(3) \
                and abs(float(ma.group(2))) < LIMIT and abs(float(mb.group(2))) < LIMIT:
            continue
        problems.append("line %d:\n  Linux:   %s\n  Windows: %s" % (number, a, b))
    if problems:
        print("\n".join(problems))
        return 1
    print("%d lines agree" % len(linux))
    return 0


if __name__ == "__main__":
    sys.exit(main())
