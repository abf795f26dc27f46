#!/bin/sh
# Renders the water HOMO (RHF/6-31G*) for docs/cube.md: the host writes the cube,
# Jmol (Debian packages jmol and xvfb) draws its ±0.05 isosurfaces headless.
#   usage: tools/plots/water_homo.sh [BUILD_DIR]   (from the repository root)
set -eu
root=$(pwd)
build=${1:-build}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
sed 's/^6-31Gxx$/6-31Gx/' examples/water.mol > "$work/water.mol"
(cd "$work" && "$root/$build/app/norvik" run water.mol --cube homo > /dev/null)
cp tools/plots/water_homo.spt "$work/"
(cd "$work" && xvfb-run -a jmol -n -s water_homo.spt > jmol.out 2>&1) || {
  cat "$work/jmol.out"
  exit 1
}
mkdir -p docs/images
cp "$work/water_homo.png" docs/images/water_homo.png
ls -l docs/images/water_homo.png
