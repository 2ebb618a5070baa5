#!/usr/bin/env bash
# The tool's secrets kept by a real system keyring (run under
# platform/testing/run-with-keyring.sh): the key lives in the keyring, not in
# a file, and what it sealed opens in the next process.
# Usage: cfgdeck_keyring_test.sh TOOL EXAMPLES_FOLDER
set -euo pipefail
tool="$1"
scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT
cp -r "$2" "$scratch/cfg"
export CFGDECK_REGISTRY_DIR="$scratch/registry"
cfg=(--config "$scratch/cfg")
fail() {
  echo "FAIL $*" >&2
  exit 1
}

printf 'Quagga-77\n' | "$tool" "${cfg[@]}" set Sessions/Lab/router1 "Monitor Password V2" --secret --stdin
status="$("$tool" "${cfg[@]}" passphrase status)"
[[ "$status" == *$'Protection=system keyring\nKey kept in=Secret Service\n'* ]] || fail "status: $status"
[[ -z "$(find "$XDG_CONFIG_HOME" -name '*.key' 2>/dev/null)" ]] || fail "a key file was made beside the keyring"
shown="$("$tool" "${cfg[@]}" session Lab/router1 --show-secrets </dev/null)"
[[ "$shown" == *$'\nMonitor Password V2=Quagga-77\n'* ]] || fail "the keyring's key does not open the value"
! grep -rqF Quagga-77 "$scratch/cfg" || fail "the password is in clear in the folder"
echo "the keyring keeps the folder's key"
