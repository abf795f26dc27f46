#!/bin/sh
# Rebuilds tests/dft_functionals/data/libxc_reference.txt from libxc (Debian's
# libxc-dev), the reference of the functional tests.  libxc is used by this
# tool only; the library never links it.
#   tools/dft/libxc_reference.sh [OUTPUT]
set -eu
root=$(cd "$(dirname "$0")/../.." && pwd)
out=${1:-$root/tests/dft_functionals/data/libxc_reference.txt}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cc -std=c11 -O2 -I"$root/include" "$root/tools/dft/libxc_reference.c" -o "$work/libxc_reference" \
  -lxc -lm
"$work/libxc_reference" > "$out"
echo "wrote $out"
