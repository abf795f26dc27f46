#!/bin/sh
# Builds norvik and runs the example job examples/water.mol with examples/hf.par;
# the report and run log are written to build/example/.
set -eu
cd "$(dirname "$0")"
tools/ensure-packages.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build
mkdir -p build/example
cd build/example
../app/norvik run ../../examples/water.mol ../../examples/hf.par
echo
cat water.report
