#!/usr/bin/env bash
# Line and branch coverage of the library code (not the tests, the test
# platforms, the tools, the benchmarks or the fuzzers) by the whole Linux
# suite. Not part of test-all.sh: it builds once more, unoptimised.
#   scripts/coverage.sh [BUILD_DIR]     (default build/coverage)
# Prints the summary; BUILD_DIR/coverage.txt has the per-file table and
# BUILD_DIR/coverage.json the figures for comparing two runs.
set -euo pipefail
cd "$(dirname "$0")/.."
build="${1:-build/coverage}"

scripts/install-deps.sh --test
if ! command -v gcovr >/dev/null; then
  sudo=()
  [[ $(id -u) -ne 0 ]] && sudo=(sudo)
  "${sudo[@]}" apt-get install -y -qq --no-install-recommends gcovr
fi

cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCFGDECK_COVERAGE=ON \
  -DCFGDECK_BUILD_BENCHMARKS=OFF >/dev/null
cmake --build "$build"
find "$build" -name '*.gcda' -delete
ctest --test-dir "$build" -j "$(nproc)" --output-on-failure >"$build/ctest.log" 2>&1 || {
  tail -n 40 "$build/ctest.log"
  exit 1
}

# Only this build's counters: other build folders under the tree hold theirs.
gcovr "$build" --root . --object-directory "$build" \
  --filter '(base|platform|store|config|location|printing|dialogs|uicore)/' \
  --exclude '.*_test\.cpp$' --exclude 'platform/testing/' \
  --exclude-unreachable-branches --exclude-throw-branches \
  --json-summary-pretty --json-summary "$build/coverage.json" --txt "$build/coverage.txt" --print-summary
