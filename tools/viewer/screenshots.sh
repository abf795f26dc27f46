#!/bin/sh
# Pictures of the page of norvik view for docs/viewer.md: water's HOMO over the
# molecule, and the normal modes with the infrared and Raman spectra.  Runs the
# built host (BUILD, default build/) on the optimisation and frequency example
# with a fine HOMO cube, writes the page and photographs it with headless
# Chromium into docs/images/.
#   tools/viewer/screenshots.sh [BUILD]
set -eu
root=$(cd "$(dirname "$0")/../.." && pwd)
build=$(cd "${1:-$root/build}" && pwd)
norvik="$build/app/norvik"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

cp "$root/examples/water-freq.mol" water.mol
OMP_NUM_THREADS=2 "$norvik" run water.mol --cube homo --cube-step 0.1 >/dev/null
"$norvik" view water.json >/dev/null

shot() {
  chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run \
    --disable-background-networking --disable-component-update --disable-sync \
    --use-angle=swiftshader --enable-unsafe-swiftshader --hide-scrollbars \
    --user-data-dir="$work/profile-$1" --window-size="$2" --virtual-time-budget=6000 \
    --screenshot="$root/docs/images/$1.png" "file://$work/water.html#antialias&$3" 2>/dev/null
}
shot viewer-orbital 1280,620 "only=energies"
shot viewer-spectrum 1280,940 "only=vibrations&mode=1"
echo "pictures in $root/docs/images: viewer-orbital.png viewer-spectrum.png"
