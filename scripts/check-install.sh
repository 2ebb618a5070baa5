#!/usr/bin/env bash
# Installs a built cfgdeck into a scratch prefix and builds the example host
# against it twice, as a host would: with find_package and with pkg-config.
# Usage: check-install.sh BUILD_DIR HOST_SOURCE_DIR
set -euo pipefail
build="$1"
host="$2"
scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT
expected=$'The change to the Personal Data Folder will take effect the next time you start Skeldon.\r'

cmake --install "$build" --prefix "$scratch/prefix" >/dev/null
libdir="$(dirname "$(find "$scratch/prefix" -name 'libcfgdeck.so' | head -n 1)")"

cmake -S "$host" -B "$scratch/cmake-host" -G Ninja -DCMAKE_PREFIX_PATH="$scratch/prefix" >/dev/null
cmake --build "$scratch/cmake-host" >/dev/null
[[ "$(LD_LIBRARY_PATH="$libdir" "$scratch/cmake-host/cfgdeck_example_host")" == "$expected" ]]
echo "find_package(cfgdeck): ok"

flags="$(PKG_CONFIG_PATH="$libdir/pkgconfig" pkg-config --define-variable=prefix="$scratch/prefix" --cflags --libs cfgdeck)"
# shellcheck disable=SC2086
g++ "$host/host.cpp" $flags -o "$scratch/pkg-host"
[[ "$(LD_LIBRARY_PATH="$libdir" "$scratch/pkg-host")" == "$expected" ]]
echo "pkg-config cfgdeck: ok"
