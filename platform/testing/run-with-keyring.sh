#!/bin/sh
# Runs a test program against a keyring of its own: a gnome-keyring-daemon
# on the private bus of dbus-run-session, its home and runtime folders fresh
# and removed afterwards, so that the user's keyring is never touched.
#   dbus-run-session -- run-with-keyring.sh PROGRAM [ARGUMENT...]
set -eu

fail() {
  echo "run-with-keyring.sh: $*" >&2
  exit 1
}
# Its bus, and only that, is private: on the user's the tests would meet the user's keyring.
# (The kernel keeps 15 characters of a command's name.)
case "$(cat "/proc/$PPID/comm" 2>/dev/null)" in
  dbus-run-sessio*) ;;
  *) fail "run it under dbus-run-session" ;;
esac
command -v gnome-keyring-daemon >/dev/null || fail "gnome-keyring-daemon is missing: run scripts/install-deps.sh --test"

scratch="$(mktemp -d)"
daemon=
# shellcheck disable=SC2317  # the trap runs it
cleanup() {
  if [ -n "$daemon" ]; then
    kill "$daemon" 2>/dev/null || true
    wait "$daemon" 2>/dev/null || true
  fi
  rm -rf "$scratch"
}
trap cleanup EXIT
trap 'exit 1' HUP INT TERM

mkdir -m 700 "$scratch/home" "$scratch/data" "$scratch/config" "$scratch/cache" "$scratch/runtime"
export HOME="$scratch/home" XDG_DATA_HOME="$scratch/data" XDG_CONFIG_HOME="$scratch/config" \
  XDG_CACHE_HOME="$scratch/cache" XDG_RUNTIME_DIR="$scratch/runtime" GSETTINGS_BACKEND=memory
# No prompt may reach the user's screen.
unset DISPLAY WAYLAND_DISPLAY GNOME_KEYRING_CONTROL SSH_AUTH_SOCK
# Whatever the bus starts on demand gets these folders too, not the user's.
dbus-update-activation-environment HOME XDG_DATA_HOME XDG_CONFIG_HOME XDG_CACHE_HOME XDG_RUNTIME_DIR \
  GSETTINGS_BACKEND

# The process that answers for the keyring on this bus, if any.
keyring_owner() {
  dbus-send --session --print-reply=literal --dest=org.freedesktop.DBus / \
    org.freedesktop.DBus.GetConnectionUnixProcessID string:org.freedesktop.secrets 2>/dev/null | awk '{print $2}'
}

# The password on stdin creates the login keyring, unlocked; an empty one
# makes none.
printf 'cfgdeck-test' | gnome-keyring-daemon --foreground --unlock --components=secrets \
  >"$scratch/daemon.env" 2>"$scratch/daemon.log" &
daemon=$!
tries=0
# Only ours may answer the tests.
until [ "$(keyring_owner)" = "$daemon" ]; do
  tries=$((tries + 1))
  [ "$tries" -lt 100 ] || fail "gnome-keyring-daemon did not take the bus name in 10 s: $(cat "$scratch/daemon.log")"
  kill -0 "$daemon" 2>/dev/null || fail "gnome-keyring-daemon ended: $(cat "$scratch/daemon.log")"
  sleep 0.1
done
while IFS= read -r line; do
  # shellcheck disable=SC2163  # the line is NAME=value
  case "$line" in *=*) export "$line" ;; esac
done <"$scratch/daemon.env"

export CFGDECK_TEST_KEYRING=1
status=0
"$@" || status=$?
exit "$status"
