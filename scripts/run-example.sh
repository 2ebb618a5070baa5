#!/usr/bin/env bash
# Installs what is missing, builds the cfgdeck tool and cfgdeck-settings, and
# shows the bundled example configuration folder.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release \
  -DCFGDECK_BUILD_TESTS=OFF -DCFGDECK_BUILD_BENCHMARKS=OFF >/dev/null
cmake --build build/release --target cfgdeck_tool cfgdeck_settings
build/release/tools/cfgdeck --config examples/config
