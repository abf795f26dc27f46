#!/usr/bin/python3
"""Writes every table of src/integrals/generated/.

  rysgrid.h, rysgrid.cpp  the Rys root and weight interpolation tables of the
                          Rys route (src/integrals/rys/), made by rys_tables.py
                          from the high-precision Rys rules of rys_mp.py;
  boys_table.h            the Boys-function grid of the closed-form
                          two-electron kernels (src/integrals/two/boys.h),
                          made by boys_table.py.

The two families share neither method nor code: the Rys tables are polynomial
fits of Gauss rules, segment by segment in a process pool (about 15 s on two
cores), the Boys table a grid of function values (under a second).  This file is
therefore only the entry point, one command for the subsystem's generated folder,
and each family keeps its own module beside it.  No input data: everything is
computed in mpmath at fixed precision, and every double is written in its
shortest round-trip form, so the output is the same on every run (the ctest
integrals_tables_regenerate compares it byte for byte with the committed files).

Usage (Debian's /usr/bin/python3 with python3-mpmath and python3-numpy):
  generate.py [--output-dir DIR] [--jobs N]
                             write the three files (default: src/integrals/generated)
  generate.py --vectors FILE write the reference Rys roots and weights of
                             tests/rys/data/rys_roots.txt
  generate.py --check [--samples N]
                             report the worst relative errors of the Rys tables
                             against the high-precision values
"""

import argparse
import os

import boys_table
import rys_tables

REPO = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", ".."))
DEFAULT_OUTPUT = os.path.join(REPO, "src", "integrals", "generated")


def write(path, text):
    with open(path, "w", encoding="ascii", newline="\n") as out:
        out.write(text)


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--output-dir", default=DEFAULT_OUTPUT,
                        help="folder for the tables (default: %(default)s)")
    parser.add_argument("--check", action="store_true",
                        help="report the Rys tables' errors instead of writing them")
    parser.add_argument("--samples", type=int, default=16,
                        help="grid and random points per segment for --check")
    parser.add_argument("--vectors", metavar="FILE",
                        help="write the reference Rys roots and weights to FILE")
    parser.add_argument("--jobs", type=int, default=os.cpu_count() or 1,
                        help="worker processes for the Rys fits (default: %(default)s)")
    args = parser.parse_args()
    if args.vectors:
        rys_tables.write_vectors(args.vectors)
        return
    tables = rys_tables.build_tables(args.jobs)
    if args.check:
        rys_tables.check(tables, args.jobs, args.samples)
        return
    os.makedirs(args.output_dir, exist_ok=True)
    write(os.path.join(args.output_dir, "rysgrid.h"), rys_tables.render_header())
    write(os.path.join(args.output_dir, "rysgrid.cpp"),
          rys_tables.render_source(tables, rys_tables.hermite_constants()))
    write(os.path.join(args.output_dir, "boys_table.h"), boys_table.render())


if __name__ == "__main__":
    main()
