#!/usr/bin/env bash
# Checks of cfgdeck-settings that need no display: the pages it renders
# offscreen, and its exit codes.
# Usage: cfgdeck_settings_test.sh PROGRAM
set -uo pipefail
program="$1"
scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT
export CFGDECK_REGISTRY_DIR="$scratch/registry"
failures=0

check() {  # check NAME EXPECTED ACTUAL
  if [[ "$2" != "$3" ]]; then
    failures=$((failures + 1))
    printf 'FAIL %s\n  expected: %q\n  actual:   %q\n' "$1" "$2" "$3"
  fi
}

out="$("$program" --config "$scratch/config" --installed skeldon,parrow --screenshot "$scratch/shots" global 2>/dev/null)"
check "screenshot exit" 0 $?
check "screenshot report" "Wrote 21 pages to $scratch/shots" "$out"
check "one picture a page, named by position and title" \
  $'01-General.png\n02-Configuration-Paths.png\n03-Default-Session.png\n04-Terminal.png' "$(ls "$scratch/shots" | head -4)"
for picture in "$scratch"/shots/*.png; do
  [[ "$(head -c 8 "$picture" | od -An -tx1 | tr -d ' \n')" == 89504e470d0a1a0a && $(stat -c %s "$picture") -gt 5000 ]]
  check "$(basename "$picture") is a PNG picture of a page" 0 $?
done
[[ ! -e "$scratch/config/global.ini" ]]; check "rendering saves nothing" 0 $?

examples="$(cd "$(dirname "$0")/../../examples/config" && pwd)"
out="$("$program" --config "$examples" --installed skeldon,parrow --screenshot "$scratch/session" session Lab/router1 \
  2>/dev/null)"
check "a session's dialog, every page" "Wrote 18 pages to $scratch/session" "$out"
check "the session's pages in tree order" $'01-Connection.png\n02-Logon-Actions.png\n03-SSH2.png\n04-Terminal.png' \
  "$(ls "$scratch/session" | head -4)"
"$program" --config "$scratch/config" session Lab/router1 2>/dev/null
check "a session that is not there" 1 $?
"$program" --config "$scratch/config" --installed gopher global 2>/dev/null
check "an unknown application is bad usage" 2 $?
"$program" --config "$scratch/config" 2>/dev/null
check "no dialog named is bad usage" 2 $?
"$program" --help >/dev/null
check "--help" 0 $?

[[ $failures -eq 0 ]] && echo "cfgdeck-settings: all checks passed"
[[ $failures -eq 0 ]]
