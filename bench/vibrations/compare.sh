#!/bin/sh
# B3LYP/6-31G* harmonic frequencies of benzene (12 atoms, Psi4's B3LYP geometry of
# tests/references/data/optimized.tsv) with the norvik host (record 10 = 1: the
# Hessian by two-point differences of the analytic gradient, standard grid,
# infrared intensities, thermochemistry and the polarisability) beside Psi4 1.3.2
# (bench/vibrations/psi4_frequencies.py: its own 6-31G*, default 75 x 302 grid,
# scf_type pk, its point group, three-point differences of its analytic gradients),
# both on 2 threads:
#
#   bench/vibrations/compare.sh [BUILD_DIR] [RUNS]     (defaults: build, 3)
#
# Runs each program RUNS times in turn and prints every run's wall time [s] and peak
# memory [MiB] (GNU time); quote the medians.  Psi4 is skipped when it is not
# installed.
set -eu
top=$(cd "$(dirname "$0")/../.." && pwd)
build=${1:-$top/build}
runs=${2:-3}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
python3 - "$top" "$work/benz.mol" <<'PY'
import sys
sys.path.insert(0, sys.argv[1] + "/tests/host_job")
import check_vib as cv
rows = [l.rstrip("\n").split("\t") for l in open(sys.argv[1] + "/tests/references/data/optimized.tsv")
        if not l.startswith("#")]
row = next(dict(zip(rows[0], r)) for r in rows[1:] if r[0] == "c6h6_6-31Gx_B3LYP")
row["basis"] = "6-31Gx"
import os, shutil
path = cv.job_file(row, "B3LYP", os.path.dirname(sys.argv[2]))
shutil.move(path, sys.argv[2])
lines = open(sys.argv[2]).read().split("\n")
lines[9] = "1"
open(sys.argv[2], "w").write("\n".join(lines))
PY
printf '%-8s %4s %9s %10s\n' program run wall[s] peak[MiB]
for i in $(seq "$runs"); do
  (cd "$work" && OMP_NUM_THREADS=2 /usr/bin/time -f '%e %M' -o time.txt \
      "$build/app/norvik" run benz.mol > out.txt)
  printf '%-8s %4s %9s %10s\n' norvik "$i" "$(cut -d' ' -f1 "$work/time.txt")" \
      "$(( $(cut -d' ' -f2 "$work/time.txt") / 1024 ))"
  if /usr/bin/python3 -c 'import psi4' 2>/dev/null; then
    (cd "$work" && OMP_NUM_THREADS=2 PYTHONPATH=/usr/lib/x86_64-linux-gnu /usr/bin/time \
        -f '%e %M' -o time.txt /usr/bin/python3 "$top/bench/vibrations/psi4_frequencies.py" \
        benz.mol 2 > psi4.txt)
    printf '%-8s %4s %9s %10s\n' psi4 "$i" "$(cut -d' ' -f1 "$work/time.txt")" \
        "$(( $(cut -d' ' -f2 "$work/time.txt") / 1024 ))"
  fi
done
