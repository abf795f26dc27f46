#!/bin/sh
# Pictures of the page of norvik view for docs/viewer.md: water's HOMO over the
# molecule, computed by the page from the molden file of a plain run (no cube
# files), and the normal modes with the infrared and Raman spectra.  Runs the
# built host (BUILD, default build/) twice, once as a user would
# (norvik run water.xyz --method B3LYP --basis 6-31G* --opt --freq) and once on
# the frequency example with Raman activities, and photographs the pages those
# runs write with headless Chromium into docs/images/.
#   tools/viewer/screenshots.sh [BUILD]
set -eu
root=$(cd "$(dirname "$0")/../.." && pwd)
build=$(cd "${1:-$root/build}" && pwd)
norvik="$build/app/norvik"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/orbital" "$work/spectrum"

cp "$root/examples/water.xyz" "$work/orbital/water.xyz"
(cd "$work/orbital" &&
  OMP_NUM_THREADS=2 "$norvik" run water.xyz --method B3LYP --basis 6-31G* --opt --freq >/dev/null)
cp "$root/examples/water-freq.mol" "$work/spectrum/water.mol"
(cd "$work/spectrum" && OMP_NUM_THREADS=2 "$norvik" run water.mol >/dev/null)

# shot PICTURE SIZE PAGE OPTIONS
shot() {
  chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run \
    --disable-background-networking --disable-component-update --disable-sync \
    --use-angle=swiftshader --enable-unsafe-swiftshader --hide-scrollbars \
    --user-data-dir="$work/profile-$1" --window-size="$2" --virtual-time-budget=6000 \
    --screenshot="$root/docs/images/$1.png" "file://$3#antialias&$4" 2>/dev/null
}
shot viewer-orbital 1280,620 "$work/orbital/water.html" "only=orbitals"
shot viewer-spectrum 1280,940 "$work/spectrum/water.html" "only=vibrations&mode=1"
echo "pictures in $root/docs/images: viewer-orbital.png viewer-spectrum.png"
