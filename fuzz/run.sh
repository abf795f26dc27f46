#!/bin/sh
# Builds the libFuzzer targets with Clang in build-fuzz/ and fuzzes each for
# SECONDS (default 600), one after the other, from the committed corpus.
#   fuzz/run.sh [SECONDS] [TARGET ...]       targets: list_input molecule_file parameter_file
# New inputs collect in build-fuzz/fuzz/long/<target>/corpus (kept between runs);
# an input that makes a target fail lands in build-fuzz/fuzz/long/<target>/ as
# crash-*, timeout-*, oom-* or leak-*.  Replay one with
#   build-fuzz/fuzz/fuzz_<target> FILE
# and, once fixed, keep it as fuzz/corpus/<target>/found-<what> (docs/testing.md).
set -eu
cd "$(dirname "$0")/.."
seconds=${1:-600}
[ $# -gt 0 ] && shift
targets=${*:-list_input molecule_file parameter_file}
cxx=$(command -v clang++-14 || command -v clang++ || true)
cc=$(command -v clang-14 || command -v clang || true)
if [ -z "$cxx" ]; then
  echo "fuzz/run.sh: clang++ not found (tools/ensure-packages.sh installs it)" >&2
  exit 2
fi
cmake -S . -B build-fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER="$cxx" \
  -DCMAKE_C_COMPILER="$cc" -DNORVIK_FUZZ=ON -DNORVIK_BUILD_TESTS=OFF >/dev/null
cmake --build build-fuzz --target norvik_fuzzers
export UBSAN_OPTIONS="print_stacktrace=1${UBSAN_OPTIONS:+:$UBSAN_OPTIONS}"
status=0
for target in $targets; do
  work=build-fuzz/fuzz/long/$target
  mkdir -p "$work/corpus"
  echo "fuzz/run.sh: $target for $seconds s"
  build-fuzz/fuzz/fuzz_$target -max_total_time="$seconds" -timeout=30 -rss_limit_mb=2048 \
    -dict=fuzz/norvik.dict -artifact_prefix="$work/" -print_final_stats=1 \
    "$work/corpus" "fuzz/corpus/$target" 2>"$work/fuzzer.log" || status=1
  grep -E '^stat::(number_of_executed_units|average_exec_per_sec|new_units_added)' \
    "$work/fuzzer.log" || true
  if ls "$work" | grep -qE '^(crash|timeout|oom|leak|slow-unit)-'; then
    echo "fuzz/run.sh: $target found a fault; see $work/fuzzer.log" >&2
    status=1
  fi
done
exit $status
