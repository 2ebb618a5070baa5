#!/usr/bin/env bash
# Installs what is missing, then builds and runs every test:
#   1. the whole suite (RelWithDebInfo; benchmarks are built, not run)
#   2. the same suite under AddressSanitizer and UndefinedBehaviorSanitizer,
#      and the threaded tests under ThreadSanitizer
#   3. the libFuzzer targets (clang 14), each for a short while
#   4. the Windows cross-build (mingw-w64) of the library, the tool and the
#      tests, and the whole suite under Wine
set -euo pipefail
cd "$(dirname "$0")/.."

FUZZ_SECONDS="${FUZZ_SECONDS:-60}"
jobs="$(nproc)"
step() { printf '\n=== %s (%d s so far)\n' "$*" "$SECONDS"; }

scripts/install-deps.sh --test

step "Build and test"
cmake -S . -B build/ci -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build/ci
ctest --test-dir build/ci --output-on-failure -j "$jobs"

step "Build and test under ASan and UBSan"
cmake -S . -B build/asan -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCFGDECK_SANITIZE=ON \
  -DCFGDECK_BUILD_BENCHMARKS=OFF >/dev/null
cmake --build build/asan
ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1 \
  ctest --test-dir build/asan --output-on-failure -j "$jobs"

step "Build and test the threaded tests under TSan"
cmake -S . -B build/tsan -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCFGDECK_SANITIZE_THREAD=ON \
  -DCFGDECK_BUILD_BENCHMARKS=OFF >/dev/null
cmake --build build/tsan --target cfgdeck_printing_test
TSAN_OPTIONS=halt_on_error=1 ctest --test-dir build/tsan --output-on-failure -j "$jobs" \
  -R '^(NDetachedThreadTest|NPrinterStartupTest|PrinterBaseTest|PrinterBaseDeathTest|PrinterTest)\.'

step "Fuzz for ${FUZZ_SECONDS} s per target"
cmake -S . -B build/fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++-14 \
  -DCFGDECK_BUILD_FUZZERS=ON -DCFGDECK_BUILD_TESTS=OFF -DCFGDECK_BUILD_TOOLS=OFF >/dev/null
cmake --build build/fuzz
for seeds in fuzz/corpus/*/; do
  target="$(basename "$seeds")"
  corpus="$(mktemp -d)"
  log="build/fuzz/${target}.log"
  if ! build/fuzz/fuzz/"cfgdeck_${target}_fuzz" -max_total_time="$FUZZ_SECONDS" -print_final_stats=1 \
      "$corpus" "$seeds" >"$log" 2>&1; then
    tail -n 40 "$log"
    echo "fuzzer $target found a fault; the input is in the log above"
    exit 1
  fi
  grep -E "^stat::number_of_executed_units" "$log" | sed "s/^/$target: /"
  rm -rf "$corpus"
done

step "Cross-build for Windows and test under Wine"
cmake -S . -B build/windows -G Ninja -DCMAKE_TOOLCHAIN_FILE=cmake/toolchain-mingw64.cmake \
  -DCMAKE_BUILD_TYPE=Release -DCFGDECK_BUILD_BENCHMARKS=OFF -DCMAKE_CROSSCOMPILING_EMULATOR=wine >/dev/null
cmake --build build/windows
# A Wine prefix of the build's own, so the user's ~/.wine is never touched.
export WINEPREFIX="$PWD/build/wineprefix" WINEDEBUG=-all
wine wineboot --init >/dev/null 2>&1 || true
started=$SECONDS
ctest --test-dir build/windows --output-on-failure -j "$jobs"
echo "Windows suite under Wine: $((SECONDS - started)) s"
wineserver -k 2>/dev/null || true

step "All tests passed"
