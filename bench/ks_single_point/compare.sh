#!/bin/sh
# Kohn-Sham B3LYP single points of benzene (6-31G*, 12 atoms) and adamantane
# (6-31G*, 26 atoms) with the norvik host on its standard and dense grids, beside
# Psi4 (scf_type pk, its default 75 x 302 grid) and NWChem (its default grid),
# all on 2 threads or ranks with tight SCF thresholds (norvik: bench_ks.par, a 16 GB
# memory limit so that the dense grid keeps its basis table):
#
#   bench/ks_single_point/compare.sh [BUILD_DIR]      (default: build)
#
# Prints wall time, SCF cycles, peak memory and the energy of each run, and the
# grid error against the converged-grid references of
# tests/references/data/ks_benchmark.tsv.  Psi4 and NWChem run from the same basis
# data and nuclear positions through tools/references/ks_references.py; either
# program is skipped when it is not installed.  One run each: for figures to quote,
# repeat the commands it prints in one sitting and take medians.
set -eu
top=$(cd "$(dirname "$0")/../.." && pwd)
build=${1:-$top/build}
refs=$top/tools/references
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export PYTHONPATH="$refs:/usr/lib/x86_64-linux-gnu"

printf '%-8s %-16s %9s %7s %10s %18s %10s\n' molecule program wall[s] cycles peak[MiB] E[hartree] grid_err
for case in molecules_ks/c6h6_6-31Gx molecules/c10h16_6-31Gx; do
  mol=${case#*/}
  name=${mol%%_*}
  ref=$(awk -F'\t' -v m="$mol" '$1 == m { print $2 }' "$top/tests/references/data/ks_benchmark.tsv")
  { sed -n 1p "$top/tests/references/data/$case.mol"; echo "'B3LYP'"
    sed -n '3,$p' "$top/tests/references/data/$case.mol"; } > "$work/$mol.mol"
  row() {  # program wall peak_kib cycles energy
    err=n/a
    [ -n "$ref" ] && err=$(python3 -c "print('%+.1e' % ($5 - ($ref)))")
    printf '%-8s %-16s %9s %7s %10s %18s %10s\n' "$name" "$1" "$2" "$4" $(( $3 / 1024 )) "$5" "$err"
  }
  for grid in standard dense; do
    (cd "$work" && OMP_NUM_THREADS=2 /usr/bin/time -f '%e %M' -o time.txt \
        "$build/app/norvik" run "$mol.mol" "$top/bench/ks_single_point/bench_ks.par" --grid $grid \
        --report r.report --log r.log > out.txt)
    e=$(sed -n 's/.*E(RKS) = \([-0-9.]*\) hartree.*/\1/p' "$work/out.txt")
    cycles=$(grep -c '^ ' "$work/r.log")
    row "norvik $grid" $(cut -d' ' -f1 "$work/time.txt") $(cut -d' ' -f2 "$work/time.txt") "$cycles" "$e"
  done
  if /usr/bin/python3 -c 'import psi4' 2>/dev/null; then
    (cd "$work" && /usr/bin/time -f '%e %M' -o time.txt /usr/bin/python3 "$refs/ks_references.py" \
        --task "$case.mol" B3LYP default --threads 2 --result psi4.json > /dev/null 2>&1)
    e=$(python3 -c "import json; print(json.load(open('$work/psi4.json'))['grids']['default']['energy'])")
    cycles=$(python3 -c "import json; print(json.load(open('$work/psi4.json'))['grids']['default']['iterations'])")
    row "psi4 default" $(cut -d' ' -f1 "$work/time.txt") $(cut -d' ' -f2 "$work/time.txt") "$cycles" "$e"
  fi
  if command -v nwchem > /dev/null; then
    /usr/bin/python3 -c "
import ks_references as k, make_references as mr
open('$work/nw.nw', 'w').write(k.nwchem_input('$case.mol', 'B3LYP', mr.DEFAULT_BASIS_DIR,
                                              '$work/nw', grid=None, tight=True))"
    mkdir -p "$work/nw"
    (cd "$work" && /usr/bin/time -f '%e %M' -o time.txt mpirun --allow-run-as-root --oversubscribe \
        -np 2 nwchem nw.nw > nw.out 2>&1)
    e=$(sed -n 's/.*Total DFT energy =[ ]*\([-0-9.]*\).*/\1/p' "$work/nw.out" | tail -1)
    cycles=$(grep -c '^ *d= *[0-9]*,ls=' "$work/nw.out" || true)
    row "nwchem default" $(cut -d' ' -f1 "$work/time.txt") $(cut -d' ' -f2 "$work/time.txt") "$cycles" "$e"
  fi
done
