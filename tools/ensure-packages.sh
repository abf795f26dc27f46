#!/bin/sh
# Installs the Debian packages that building and testing norvik need, when any
# is missing.  Run as root on Debian 12 (or with sudo available).
set -eu
# clang, libclang-rt-14-dev (libFuzzer and Clang's sanitizer runtimes) and
# libomp-14-dev (OpenMP for Clang) build the fuzz targets of fuzz/; GCC's own
# sanitizer runtimes come with g++.  g++-mingw-w64-x86-64-posix and wine64 cross-build
# the Windows DLL and run it (tests/windows).  bsdutils has script, which gives the
# progress test (tests/host_cli/progress.cmake) a pseudo-terminal.
packages="cmake ninja-build g++ gfortran libgtest-dev libbenchmark-dev binutils python3 python3-mpmath python3-numpy clang-format clang libclang-rt-14-dev libomp-14-dev g++-mingw-w64-x86-64-posix wine64 bsdutils"
# python3-pytest and python3-distributed test the Python package and run its batches
# on Dask (python/, docs/python.md).
packages="$packages python3-pytest python3-distributed"
# jmol and xvfb (xvfb-run) open the host's molden file headless (tests/results), a
# slow test: only with --slow.
[ "${1:-}" = "--slow" ] && packages="$packages jmol xvfb"
# chromium opens the pages of norvik view in the viewer test (tests/viewer).
packages="$packages chromium"
missing=""
for p in $packages; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing="$missing $p"
done
[ -z "$missing" ] && exit 0
echo "Installing:$missing"
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq $missing >/dev/null
