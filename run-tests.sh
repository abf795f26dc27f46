#!/bin/sh
# Builds norvik with warnings as errors and runs the whole test suite.
# Pass --slow to include the long reference runs as well.
set -eu
cd "$(dirname "$0")"
tools/ensure-packages.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Release -DNORVIK_WERROR=ON >/dev/null
cmake --build build
if [ "${1:-}" = "--slow" ]; then
  ctest --test-dir build --output-on-failure -j 2
else
  ctest --test-dir build --output-on-failure -j 2 -LE slow
fi
