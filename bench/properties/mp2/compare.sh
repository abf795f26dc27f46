#!/bin/sh
# MP2 of a molecule file's molecule in its basis, by default adamantane in
# 6-31G* (C10H16, 26 atoms, 172 functions with pure d):
# the norvik host job (theory MP2), Psi4 1.3.2 (conventional MP2 on a PK
# SCF) and NWChem 7.0.2 (task mp2), each on 2 threads or processes, in C1 and
# with the same SCF convergence (energy 1e-10).  Prints each program's wall
# time, peak memory and energies.
#
#   bench/properties/mp2/compare.sh [BUILD_DIR] [MOLECULE_FILE]
set -eu
here=$(cd "$(dirname "$0")" && pwd)
top=$(cd "$here/../../.." && pwd)
build=${1:-$top/build}
mol=${2:-$top/tests/references/data/molecules/c10h16_6-31Gx.mol}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$here/inputs.sh" "$mol" "$work"
run() {  # name, command...
  name=$1
  shift
  (cd "$work" && /usr/bin/time -f '%e %M' -o "time_$name.txt" "$@" > "out_$name.txt" 2>&1)
  printf '%-8s %9s s %8s MiB\n' "$name" "$(cut -d' ' -f1 "$work/time_$name.txt")" \
    $(( $(cut -d' ' -f2 "$work/time_$name.txt") / 1024 ))
}
export OMP_NUM_THREADS=2
run norvik "$build/app/norvik" run "$work/norvik.mol" "$here/mp2.par"
grep -A4 '^# MP2 energy' "$work"/*.out || true
run psi4 /usr/bin/psi4 -n 2 -i "$work/psi4.in" -o "$work/psi4.out"
grep -E 'SCF Total Energy|MP2 Correlation Energy|MP2 Total Energy' "$work/psi4.out" | head -3 || true
run nwchem mpirun --allow-run-as-root -np 2 nwchem "$work/nwchem.nw"
grep -E 'Total SCF energy|Correlation energy|Total MP2 energy' "$work/out_nwchem.txt" || true
