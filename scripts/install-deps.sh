#!/usr/bin/env bash
# Installs the Debian packages cfgdeck needs, and only those that are missing.
#   scripts/install-deps.sh          what building and running the tool needs
#   scripts/install-deps.sh --test   also what the tests, sanitizers, fuzzers,
#                                    benchmarks and the Windows build need
set -euo pipefail

packages=(cmake ninja-build g++ pkg-config libicu-dev libcli11-dev libxxhash-dev nlohmann-json3-dev libcups2-dev
          libssl-dev libsecret-1-dev qt6-base-dev)
if [[ "${1:-}" == "--test" ]]; then
  packages+=(googletest libgtest-dev libgmock-dev libbenchmark-dev clang-14 libclang-rt-14-dev g++-mingw-w64-x86-64
             binutils-mingw-w64-x86-64 wine wine64 xvfb xauth gnome-keyring dbus-daemon dbus-bin)
fi

missing=()
for package in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$package")
  fi
done
[[ ${#missing[@]} -eq 0 ]] && exit 0

echo "Installing: ${missing[*]}"
sudo=()
[[ $(id -u) -ne 0 ]] && sudo=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${sudo[@]}" apt-get update -qq
"${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
