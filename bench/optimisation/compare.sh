#!/bin/sh
# Geometry optimisations with the norvik host (quasi-Newton, record 8 = 2) beside
# Psi4's optimiser (optking defaults, through tools/references/gradient_references.py)
# from the same start geometries (tests/references/data/molecules_opt), both on 2
# threads, paired by farm-bench (whole-process figures: A = norvik, B = Psi4):
#
#   bench/optimisation/compare.sh [BUILD_DIR] [RUNS]      (defaults: build, 3)
#
# Cases: water and benzene Hartree-Fock, ethylene B3LYP (norvik on its dense grid,
# Psi4 on its default 75 x 302 grid), all 6-31G*, tight SCF (norvik:
# tests/host_job/data/tight.par and tight_ks.par; Psi4: 1e-10 energy and density).
set -eu
top=$(cd "$(dirname "$0")/../.." && pwd)
build=$(cd "${1:-$top/build}" && pwd)
runs=${2:-3}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
refs=$top/tools/references
data=$top/tests/references/data

for case in h2o:HF:standard c6h6:HF:standard c2h4:B3LYP:dense; do
  mol=${case%%:*}
  rest=${case#*:}
  method=${rest%%:*}
  grid=${rest#*:}
  par=$top/tests/host_job/data/tight.par
  [ "$method" = HF ] || par=$top/tests/host_job/data/tight_ks.par
  # the start geometry with the method, 300 cycles and the quasi-Newton optimiser
  awk -v m="$method" 'NR == 2 { print "'"'"'" m "'"'"'"; next }
                      NR == 6 { sub(/ 0$/, " 300") } NR == 8 { print "2"; next } { print }' \
      "$data/molecules_opt/${mol}_6-31Gx.mol" > "$work/$mol.mol"
  echo "== $mol $method (norvik grid: $grid)"
  (cd "$work" && OMP_NUM_THREADS=2 farm-bench -n "$runs" --timeout 3600 \
      --vs "env PYTHONPATH=$refs:/usr/lib/x86_64-linux-gnu /usr/bin/python3 $refs/gradient_references.py --threads 2 --task '[\"optimise\",\"molecules_opt/${mol}_6-31Gx.mol\",\"$method\"]' --result $work/psi4.json" \
      -- "$build/app/norvik" run "$mol.mol" "$par" --grid "$grid" --report r.report --log r.log \
      --xyz r.xyz)
done
