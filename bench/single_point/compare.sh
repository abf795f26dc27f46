#!/bin/sh
# Whole Hartree-Fock single points with the norvik host beside the committed Psi4 and
# NWChem timings (tests/references/data/timings.tsv, measured by
# tools/references/make_references.py --timings on the same kind of machine).
#
#   bench/single_point/compare.sh [BUILD_DIR]      (default: build)
#
# Runs on 2 threads, tight thresholds, and prints wall time, SCF cycles and peak memory.
set -eu
top=$(cd "$(dirname "$0")/../.." && pwd)
build=${1:-$top/build}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
printf '%-10s %-9s %-16s %9s %7s %10s %16s\n' molecule basis program wall[s] cycles peak[MiB] E[hartree]
for case in c6h6_6-31Gxx c10h16_6-31Gx; do
  (cd "$work" && OMP_NUM_THREADS=2 /usr/bin/time -f '%e %M' -o time.txt \
      "$build/app/norvik" run "$top/tests/references/data/molecules/$case.mol" \
      "$top/tests/host_job/data/tight.par" > out.txt)
  wall=$(cut -d' ' -f1 "$work/time.txt")
  peak=$(( $(cut -d' ' -f2 "$work/time.txt") / 1024 ))
  cycles=$(grep -c '^ ' "$work/$case.log")
  energy=$(sed -n 's/.*E(RHF) = \([-0-9.]*\) hartree.*/\1/p' "$work/out.txt")
  printf '%-10s %-9s %-16s %9s %7s %10s %16s\n' "${case%%_*}" "${case#*_}" norvik "$wall" "$cycles" "$peak" "$energy"
  mol=${case%%_*}
  awk -F'\t' -v m="$mol" '$1 == m { printf "%-10s %-9s %-16s %9s %7s %10s %16s\n", $1, $2, $3, $8, $6, int($11), $7 }' \
    "$top/tests/references/data/timings.tsv"
done
