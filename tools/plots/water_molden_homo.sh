#!/bin/sh
# Renders the water HOMO (RHF/6-31G**) from the host's molden file for
# docs/molden.md: the test script tests/results/check_jmol.py runs the job and
# Jmol (Debian packages jmol and xvfb) headless, and keeps the picture.
#   usage: tools/plots/water_molden_homo.sh [BUILD_DIR]   (from the repository root)
set -eu
build=${1:-build}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p docs/images
/usr/bin/python3 tests/results/check_jmol.py "$build/app/norvik" examples/water.mol "$work/jmol" \
  docs/images/water_molden_homo.png
ls -l docs/images/water_molden_homo.png
