#!/bin/sh
# Builds norvik and runs the test suite three ways (docs/testing.md):
#  1. build/: Release, warnings as errors, the whole suite;
#  2. build-sanitize/: AddressSanitizer and UBSan (NORVIK_SANITIZE, -O1), the fast
#     suite again, less the generator and formatting checks, which run no
#     sanitized code;
#  3. build-fuzz/: the libFuzzer targets, built with Clang, each fuzzed for
#     NORVIK_FUZZ_SECONDS (20 s) from the committed corpus.
# Pass --slow to include the long reference runs in the first pass.
set -eu
cd "$(dirname "$0")"
tools/ensure-packages.sh "${1:-}"
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Release -DNORVIK_WERROR=ON >/dev/null
cmake --build build
if [ "${1:-}" = "--slow" ]; then
  ctest --test-dir build --output-on-failure -j 2
else
  ctest --test-dir build --output-on-failure -j 2 -LE slow
fi

echo "== AddressSanitizer and UndefinedBehaviorSanitizer (build-sanitize)"
cmake -S . -B build-sanitize -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O1 -g1" -DCMAKE_C_FLAGS_RELWITHDEBINFO="-O1 -g1" \
  -DNORVIK_SANITIZE=ON >/dev/null
cmake --build build-sanitize
ctest --test-dir build-sanitize --output-on-failure -j 2 -LE "slow|generator|format|viewer" \
  -E "KohnShamGradient|KohnShamOnTheDenseGridAgainstPsi4|HarmonicWavenumbers|job\.vib\..*_B3LYP|job\.vib\.(c2h2|co)_|job\.ks_dense\.|CoupledPerturbed\.(HartreeFockMatchesPsi4AndNWChem|MatchesFiniteFields(LocalKernel|OpenShellGga|HybridGga))|HartreeFockGradient\.(OpenShellCationAndGhostAtom|FShellsOfZinc)|XcGradient\.(DenseGrid|ZincHydride)|ReferenceGradients\.HartreeFockAgainstPsi4|Mp2\.CorrelationEnergiesMatchPsi4|job\.ks\.h2o_6-31pGxx_|job\.opt\.(nh3|n2)_6-31Gx_HF\.0|job\.vib\.(ch4|n2)_6-31Gx_HF|job\.grad\..*_B3LYP|ReferenceEnergies\.QuickCases"

echo "== libFuzzer (build-fuzz)"
cxx=$(command -v clang++-14 || command -v clang++ || true)
cc=$(command -v clang-14 || command -v clang || true)
cmake -S . -B build-fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER="$cxx" \
  -DCMAKE_C_COMPILER="$cc" -DNORVIK_FUZZ=ON -DNORVIK_BUILD_TESTS=OFF >/dev/null
cmake --build build-fuzz --target norvik_fuzzers
ctest --test-dir build-fuzz --output-on-failure -j 2 -L fuzz
