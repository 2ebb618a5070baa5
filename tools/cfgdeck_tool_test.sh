#!/usr/bin/env bash
# End-to-end checks of the cfgdeck tool: exact output bytes and exit codes.
# Usage: cfgdeck_tool_test.sh TOOL EXAMPLES_FOLDER
set -uo pipefail
tool="$1"
examples="$2"
failures=0
checks=0

check() {  # check NAME EXPECTED ACTUAL
  checks=$((checks + 1))
  if [[ "$2" != "$3" ]]; then
    failures=$((failures + 1))
    printf 'FAIL %s\n  expected: %q\n  actual:   %q\n' "$1" "$2" "$3"
  fi
}

run() {  # run ARGS...: sets out (exact bytes), err and status
  local outfile errfile
  outfile="$(mktemp)"
  errfile="$(mktemp)"
  "$tool" "$@" >"$outfile" 2>"$errfile"
  status=$?
  out="$(cat "$outfile"; printf x)"
  out="${out%x}"
  err="$(cat "$errfile")"
  rm -f "$outfile" "$errfile"
}

run message 0x61380023 Skeldon
check "library message, hex code" \
  $'The change to the Personal Data Folder will take effect the next time you start Skeldon.\r\n' "$out"
check "library message exit" 0 "$status"

run message 1631060003 Skeldon
check "decimal code is the same code" \
  $'The change to the Personal Data Folder will take effect the next time you start Skeldon.\r\n' "$out"

run message 0xe1380009 $'/srv/k\xc3\xb6nig'
check "UTF-8 argument in a three-line text" \
  $'The folder specified using /F on the command line is not valid:\r\n\r\n\'/srv/k\xc3\xb6nig\'\r\n' "$out"

run message 0x0000abcd
check "fallback text" $'Could not retrieve the error text for error code 0x0000abcd.\r\n' "$out"

run message 5
check "system text" $'Access is denied.\r\n' "$out"

run message 0x1FFFFFFFF
check "code wider than 32 bits is bad usage" 2 "$status"
[[ "$err" == *"not a 32-bit message code"* ]]; check "bad code explains itself" 0 $?

run message
check "missing code is bad usage" 2 "$status"

run no-such-command
check "unknown command is bad usage" 2 "$status"

run --help
check "--help exits 0" 0 "$status"
[[ "$out" == *"message"* ]]; check "--help lists the commands" 0 $?

run message --help
check "message --help exits 0" 0 "$status"
[[ "$out" == *"CODE"* ]]; check "message --help describes CODE" 0 $?

run --config "$examples"
check "overview exit" 0 "$status"
[[ "$out" == *"global"* && "$out" == *"Sessions"* ]]; check "overview lists the keys" 0 $?

run --config "$examples/does-not-exist"
check "overview of a missing folder fails" 1 "$status"
[[ -n "$err" ]]; check "missing folder is reported on stderr" 0 $?

echo "$((checks - failures)) passed, $failures failed"
[[ $failures -eq 0 ]]
