#!/bin/sh
# Ten singlet and ten triplet TD-LSDA (SVWN5, Tamm-Dancoff) excitations of
# adamantane C10H16 (26 atoms, 6-31G*, 178 basis functions) with the norvik host
# (theory KSTDA5, standard grid) beside NWChem's tddft (cis on the SVWN5 point,
# its default grid), both on 2 threads or MPI ranks from the same basis data and
# nuclear positions:
#
#   bench/properties/excited/compare.sh [BUILD_DIR] [WORK_DIR]
#
# Writes both inputs to WORK_DIR (default: a temporary folder), runs each once,
# and prints wall time, peak memory and the lowest singlet and triplet of each.
# The commands it prints are the ones to time side by side.  Psi4 1.3.2 has TDA
# and RPA for restricted points (tdscf_excitations) but is not run here.
set -eu
top=$(cd "$(dirname "$0")/../../.." && pwd)
build=${1:-$top/build}
work=${2:-$(mktemp -d)}
mkdir -p "$work"
refs=$top/tools/references
mol=c10h16_6-31Gx

{ sed -n 1p "$top/tests/references/data/molecules/$mol.mol"; echo "'KSTDA5'"
  sed -n '3,$p' "$top/tests/references/data/molecules/$mol.mol"; } > "$work/ada.mol"
PYTHONPATH="$refs" /usr/bin/python3 - "$work" <<'PY'
import sys
import excitation_references as er
import make_references as mr
work = sys.argv[1]
text = er.nwchem_input("c10h16", "6-31Gx", "KSTDA5", mr.DEFAULT_BASIS_DIR, work + "/nw")
# NWChem's own defaults for the benchmark: its default grid and thresholds,
# exactly the ten roots asked of norvik.
text = text.replace("  grid xfine\n", "").replace(
    "  convergence energy 1e-11 density 1e-10\n  tolerances tight\n", "").replace(
    "  nroots 14\n", "  nroots 10\n").replace("  thresh 1e-6\n", "")
open(work + "/nw.nw", "w").write(text)
PY
mkdir -p "$work/nw"

norvik_cmd="cd $work && OMP_NUM_THREADS=2 $build/app/norvik run ada.mol --states 10"
nwchem_cmd="cd $work && OMP_NUM_THREADS=1 mpirun --allow-run-as-root --oversubscribe -np 2 nwchem nw.nw"
echo "norvik: $norvik_cmd"
echo "nwchem: $nwchem_cmd"

(cd "$work" && OMP_NUM_THREADS=2 /usr/bin/time -f '%e %M' -o t_norvik.txt \
   "$build/app/norvik" run ada.mol --states 10 > norvik.out)
(cd "$work" && OMP_NUM_THREADS=1 /usr/bin/time -f '%e %M' -o t_nwchem.txt \
   mpirun --allow-run-as-root --oversubscribe -np 2 nwchem nw.nw > nw.out 2>&1)

lowest() {  # report: lowest singlet and triplet [eV]
  awk '$1 == "#" && $3 == "singlet" && s == "" { s = $4 } $1 == "#" && $3 == "triplet" && t == "" { t = $4 }
       END { print s, t }' "$1"
}
nw_lowest() {
  awk '/Root +1 singlet/ && s == "" { s = $(NF-1) } /Root +1 triplet/ && t == "" { t = $(NF-1) }
       END { print s, t }' "$1"
}
printf '%-8s %9s %10s %12s %12s\n' program wall[s] peak[MiB] S1[eV] T1[eV]
set -- $(cat "$work/t_norvik.txt") $(lowest "$work/ada.report")
printf '%-8s %9s %10s %12s %12s\n' norvik "$1" $(( $2 / 1024 )) "$3" "$4"
set -- $(cat "$work/t_nwchem.txt") $(nw_lowest "$work/nw.out")
printf '%-8s %9s %10s %12s %12s\n' nwchem "$1" $(( $2 / 1024 )) "$3" "$4"
