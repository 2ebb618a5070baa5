#!/usr/bin/env bash
# End-to-end checks of the cfgdeck tool: exact output bytes and exit codes.
# Usage: cfgdeck_tool_test.sh TOOL EXAMPLES_FOLDER
set -uo pipefail
tool="$1"
examples="$2"
# A registry of the test's own: the user's real settings are never read or written.
export CFGDECK_REGISTRY_DIR="$(mktemp -d)"
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
[[ "$out" == *$'\nSessions: 5 in 2 folders\n'* && "$out" == *$'\nPersonal data: kept with the configuration\n'* &&
   "$out" == *"(current)"* && "$out" == *$'\nGlobal record: 271 fields, 4 stored, 267 at their defaults\n'* ]]
check "overview counts sessions, says where personal data is, and the format" 0 $?

run --config "$examples/does-not-exist"
check "overview of a missing folder fails" 1 "$status"
[[ -n "$err" ]]; check "missing folder is reported on stderr" 0 $?

# ---- keys and values, on a scratch copy of the example folder ----
scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT
cp -r "$examples" "$scratch/config"
cfg=(--config "$scratch/config")

"$tool" "${cfg[@]}" dump Sessions/Lab/router1 > "$scratch/dumped"
tail -c +4 "$examples/Sessions/Lab/router1.ini" > "$scratch/expected"
cmp -s "$scratch/dumped" "$scratch/expected"; check "dump prints records as saved, without the mark" 0 $?

run "${cfg[@]}" keys Sessions
check "keys: kind, tab, name in iterator order" $'6\t__FolderData__\n6\tDefault\n5\tLab\n5\tProduction\n' "$out"

run "${cfg[@]}" values 'Sessions\Lab\switch-console'
check "values: tag, tab, name; backslash paths" $'0\tBaud Rate\n1\tCom Port\n0\tIs Session\n1\tProtocol Name\n' "$out"

run "${cfg[@]}" set Sessions/New/one Password --string s3cret
check "set creates the key and its folders" 0 "$status"
run "${cfg[@]}" set Sessions/New/one Port --dword 0x16
run "${cfg[@]}" set Sessions/New/one Blob --binary 00fF10
run "${cfg[@]}" set Sessions/New/one Keys --multi a "b c"
run "${cfg[@]}" set Sessions/New/one None --multi
run "${cfg[@]}" set Sessions/New/one Username --string me
printf '\xef\xbb\xbfS:"Username"=me\r\nS:"Password"=s3cret\r\nD:"Port"=00000016\r\nB:"Blob"=00000003\r\n00ff10\r\nZ:"Keys"=00000002\r\n a\r\n b c\r\nZ:"None"=00000000\r\n' > "$scratch/expected"
cmp -s "$scratch/config/Sessions/New/one.ini" "$scratch/expected"
check "values are saved with personal names first" 0 $?

run "${cfg[@]}" set Sessions/New/one Bad --string $'two\nlines'
check "a value the store cannot hold is refused" 1 "$status"
run "${cfg[@]}" set Sessions/New/one Port --dword 4294967296
check "a DWORD out of range is bad usage" 2 "$status"
run "${cfg[@]}" set Sessions/New/one Blob --binary abc
check "odd hex is bad usage" 2 "$status"
for refused in ../outside '..\outside' Sessions/./x ''; do
  run "${cfg[@]}" set "$refused" x --dword 1
  check "set '$refused' is refused, not bad usage" 1 "$status"
  run "${cfg[@]}" dump "$refused"
  check "dump '$refused' is refused, not bad usage" 1 "$status"
  [[ -n "$err" ]]; check "dump '$refused' says why" 0 $?
done
[[ ! -e "$scratch/outside.ini" ]]; check "nothing written outside" 0 $?
run "${cfg[@]}" set Sessions/New/one x
check "set without a value is bad usage" 2 "$status"

run "${cfg[@]}" delete Sessions/New/one Port
check "delete a value" 0 "$status"
run "${cfg[@]}" delete Sessions/New/one Port
check "deleting a missing value is refused" 1 "$status"
run "${cfg[@]}" delete-key Sessions/New
check "delete-key" 0 "$status"
[[ ! -e "$scratch/config/Sessions/New" && ! -e "$scratch/config/Sessions/New.ini" ]]
check "delete-key removes the folder" 0 $?
run "${cfg[@]}" delete-key Sessions/New
check "deleting a missing key is refused" 1 "$status"

run "${cfg[@]}" check
check "check of a sound folder" $'8 keys, 44 values, 0 problems\n' "$out"
check "check of a sound folder exits 0" 0 "$status"
printf '\xef\xbb\xbfD:"a"=00000001\r\nd:"b"=00000002\r\n' > "$scratch/config/Sessions/bad.ini"
: > "$scratch/config/Sessions/empty.ini"
printf '\xef\xbb\xbfD:"a"=00000001\r\nS:"b"=cut' > "$scratch/config/Sessions/cut.ini"
run "${cfg[@]}" check Sessions
check "check reports each damaged file" \
  $'Sessions\\bad: line 2: kind letter \'d\' is not a kind\nSessions\\cut: no line end after the last record: possibly interrupted save\nSessions\\empty: empty file\n10 keys, 41 values, 3 problems\n' "$out"
check "check with problems exits 1" 1 "$status"
run "${cfg[@]}" check Sessions/Nowhere
check "check of a missing key is refused" 1 "$status"
printf 'torn journal' > "$scratch/config/Sessions/Lab/router1.ini-journal"
run "${cfg[@]}" check Sessions/Lab
check "check reports and drops the journal of a save that died before its cut" \
  $'Sessions\\Lab\\router1: a journal cut short before its save began was dropped\n3 keys, 14 values, 0 problems\n' "$out"
[[ ! -e "$scratch/config/Sessions/Lab/router1.ini-journal" ]]; check "the torn journal is gone" 0 $?

# ---- the global record and the product ----
run "${cfg[@]}" global
check "global exit" 0 "$status"
[[ "$out" == *$'\nShow Toolbar=true\n'* && "$out" == *$'\nMin Tab Width=40\n'* ]]
check "global prints stored values and defaults" 0 $?
[[ "$out" == *$'\nHex View Font=Courier New\n'* && "$out" == *$'\nShow Toolbar PRW='* ]]
check "global for the terminal product binds the plain names" 1 $?
run "${cfg[@]}" global --product 9 --json
check "global --json exit" 0 "$status"
[[ "$out" == *'"Show Toolbar PRW": false'* && "$out" == *'"Min Tab Width": 40'* && "$out" != *'"Show Toolbar":'* ]]
check "global --json binds the PRW names for product 9" 0 $?
[[ "$out" == *'"Window Placement": "000102030405060708090a0b'* ]]; check "binary values are lower-case hex" 0 $?
printf '\xef\xbb\xbfS:"Skeldon Tab State"=0,1,1\r\n' > "$scratch/config/global.ini"
run "${cfg[@]}" global --save
check "global --save exit" 0 "$status"
run "${cfg[@]}" dump global
[[ "$out" == *$'S:"Skeldon Tab State V2"=0,1,1;\r\n'* && "$out" == *$'S:"Skeldon Tab State"=0,1,1\r\n'* ]]
check "a save writes the migrated tab state and keeps the old one" 0 $?
run "${cfg[@]}" --app Vexa product
check "product exit" 0 "$status"
[[ "$out" == *$'Application product id: 9\n'* && "$out" == *$'Transfer product id: 9\n'* ]]
check "product names the application's ids" 0 $?
# ---- the options dialog, run without a window ----
dcfg=(--config "$(mktemp -d)/config")
run "${dcfg[@]}" dialog --set 'Tabs/Show session tabs=false' --set 'Tabs/Connected colour=#FF8000'
check "dialog exit" 0 "$status"
[[ "$out" == *$'\n  Tabs\n    Show session tabs = false (changed) (not the default)\n    Close button on tabs = true (disabled)\n'* &&
   "$out" == *$'\n    Connected colour = #FF8000 (changed) (not the default)\n'* ]]
check "dialog prints the pages with the edits and the rules" 0 $?
run "${dcfg[@]}" dialog --set 'Tabs/Show session tabs=false' --set 'Tabs/Minimum tab width=60'
check "a disabled control refuses its edit" $'1\ncfgdeck dialog: \'Tabs/Minimum tab width\' was not set: it is disabled' \
  "$status"$'\n'"$err"
run "${dcfg[@]}" dialog --set 'Files/Connect sound=ring.mp3' --ok
check "a refused value keeps OK from saving" $'1\nThe connect sound must be a .wav file.\ncfgdeck dialog: the dialog refused OK' \
  "$status"$'\n'"$err"
[[ ! -e "${dcfg[1]}/global.ini" ]]; check "nothing was saved before OK" 0 $?
run "${dcfg[@]}" dialog --set 'Tabs/Show session tabs=false' --ok
run "${dcfg[@]}" dump global
check "OK saves the changed setting alone" $'S:"Version"=0311ABC6-1CDD-46fc-A08A-0D7C00242FCA\r\nD:"Show Session Tabs"=00000000\r\n' "$out"
run "${dcfg[@]}" dialog --search 'COLOUR' --json
[[ "$out" == *'"title": "Tabs"'* && "$out" != *'"title": "Files"'* && "$out" == *'"highlighted": true'* ]]
check "the search narrows the pages" 0 $?
run "${dcfg[@]}" dialog --set 'Nowhere/Label=1'
check "a page that is not there is refused" 1 "$status"
run "${dcfg[@]}" dialog --set 'no-page-or-label'
check "a malformed edit is bad usage" 2 "$status"
# ---- the Session Options dialog's structure ----
run "${cfg[@]}" dialog session Lab/router1 --installed skeldon
check "session dialog: title, OK, pages in tree order" $'0\ntitle\tSession Options - router1 \nok\tenabled
page\t0\tConnection\tshown\npage\t1\tLogon Actions\tshown\npage\t1\tSSH2\tshown\npage\t1\tSFTP\tshown
page\t0\tTerminal\tshown\npage\t1\tEmulation\tshown\npage\t2\tModes\tshown\npage\t2\tEmacs\tshown
page\t2\tMapped Keys\tshown\npage\t2\tAdvanced\tshown\npage\t1\tAppearance\tshown\npage\t2\tANSI Color\tshown
page\t2\tWindow\tshown\npage\t1\tLog File\tshown\npage\t1\tPrinting\tshown\npage\t1\tX/Y/Zmodem\tshown\n' \
  "$status"$'\n'"$out"
run "${cfg[@]}" dialog session Lab/router1 --installed skeldon,parrow --set-protocol Serial \
  --set-transfer-protocol FTP --set-protocol Telnet
[[ "$out" == *$'page\t1\tSSH2\thidden\npage\t1\tSerial\thidden\npage\t1\tFTP\tshown\npage\t1\tTelnet\tshown\n'* ]]
check "protocol choices apply in the order given" 0 $?
run "${cfg[@]}" dialog session Lab/router1 --installed skeldon --mode 2
[[ "$out" == $'title\tSession Options - router1 (Read Only)\nok\tdisabled\n'* &&
   "$out" == *$'\nmessage\t0x61380007\tThe Sessions Options that you are opening are being used by a locked session.  You will not be able to save changes to the session.\n' ]]
check "a locked session's dialog: read-only title, OK off, the notice" 0 $?
run "${cfg[@]}" dialog default-session --installed parrow --mode 4
check "several sessions, file transfer only" $'title\tSession Options - multiple\nok\tenabled' "$(head -2 <<<"$out")"
run "${cfg[@]}" dialog session Lab/nothere
check "a session that cannot be opened" 1 "$status"
run "${cfg[@]}" dialog session Lab/router1 --installed skeldon --set-protocol Gopher
check "a protocol not offered is refused" $'1\ncfgdeck dialog: \'Gopher\' was not chosen: it is not one of its choices' \
  "$status"$'\n'"$err"
run "${cfg[@]}" dialog session Lab/router1 --installed telnet
check "an unknown application is bad usage" 2 "$status"

# ---- the Global Options dialog's structure ----
run "${cfg[@]}" dialog global --installed skeldon,parrow
check "global dialog: title, OK, every page in tree order" $'0\ntitle\tGlobal Options\nok\tenabled
page\t0\tGeneral\tshown\npage\t1\tConfiguration Paths\tshown\npage\t1\tDefault Session\tshown
page\t0\tTerminal\tshown\npage\t1\tAppearance\tshown\npage\t2\tANSI Color\tshown\npage\t2\tAdvanced\tshown
page\t1\tTabs/Tiling\tshown\npage\t1\tPrinting\tshown\npage\t1\tWeb Browser\tshown\npage\t1\tTFTP Server\tshown
page\t1\tAdvanced\tshown\npage\t0\tFile Transfer\tshown\npage\t1\tOptions\tshown\npage\t2\tAdvanced\tshown
page\t1\tView\tshown\npage\t1\tFTP\tshown\npage\t1\tTLS\tshown\npage\t1\tSound\tshown\npage\t1\tFile Types\tshown
page\t1\tFilters\tshown\npage\t0\tFirewall\tshown\n' "$status"$'\n'"$out"
run "${cfg[@]}" dialog global --installed parrow --product 9 --no-file-types
check "global dialog: product 9, file transfer only, no managers" \
  $'General Configuration Paths File Transfer Options Advanced FTP TLS Filters Firewall ' \
  "$(awk -F'\t' '$1 == "page" { printf "%s ", $3 }' <<<"$out")"
run "${cfg[@]}" dialog global --installed telnet
check "global dialog: an unknown application is bad usage" 2 "$status"

run "${cfg[@]}" global --product x
check "a product id that is no number is bad usage" 2 "$status"

# ---- the sessions tree ----
sessions_dir="$(mktemp -d)"
cp -r "$examples" "$sessions_dir/config"
scfg=(--config "$sessions_dir/config")
mkdir -p "$sessions_dir/config/Sessions/Lab/Deep"
printf '\xef\xbb\xbfS:"Note"=folder settings\r\n' > "$sessions_dir/config/Sessions/Lab/__FolderData__.ini"
printf '\xef\xbb\xbfD:"Is Session"=00000001\r\nS:"Login Script"=login:\tme\r\n' \
  > "$sessions_dir/config/Sessions/Lab/Deep/old.ini"
# A key file without "Is Session" is a folder, whatever else it holds.
printf '\xef\xbb\xbfS:"Description"=only a description\r\n' > "$sessions_dir/config/Sessions/F2.ini"
run "${scfg[@]}" sessions
check "sessions lists the tree depth first, folders with a trailing \\" \
  $'Default\nF2\\\nLab\\\nLab\\Deep\\\nLab\\Deep\\old\nLab\\router1\nLab\\switch-console\nProduction\\\nProduction\\mainframe\nProduction\\web01\n' "$out"
run "${scfg[@]}"
[[ "$out" == *$'\nSessions: 6 in 4 folders\n'* ]]; check "the overview counts by the same rule as the walk" 0 $?
run "${scfg[@]}" session Lab/Deep/old
check "session exit" 0 "$status"
[[ "$out" == *$'\nLogin Script V3=["\\"login:\\",\\"me\\",0"]\n'* && "$out" == *$'\nRows=24\n'* ]]
check "session prints the migrated logon script and the defaults" 0 $?
run "${scfg[@]}" dump Sessions/Lab/Deep/old
[[ "$out" == *$'S:"Login Script"=\r\n'* ]]; check "the old logon script is blanked on disk at once" 0 $?
run "${scfg[@]}" session Lab/router1 --json
[[ "$out" == *'"Is Session": true'* && "$out" == *'"SCP Shell Prompts": ['* ]]; check "session --json" 0 $?
run "${scfg[@]}" new-session Lab/fresh
check "new-session" 0 "$status"
run "${scfg[@]}" new-session Lab/fresh
check "new-session refuses a name in use" $'0xe1380006 \'fresh\' is already in use.' "$err"
run "${scfg[@]}" rename-session Lab/fresh FRESH
check "a change of case is a rename" 0 "$status"
run "${scfg[@]}" copy-session Lab/FRESH Production/copy
check "copy-session" 0 "$status"
run "${scfg[@]}" delete-session Production/copy
check "delete-session" 0 "$status"
run "${scfg[@]}" delete-session Production/copy
check "deleting a missing session fails" 1 "$status"
run "${scfg[@]}" validate-name --new Lab x 'a*b/c'
check "validate-name reports the first illegal character in set order" \
  $'0x61380084 The name contains an illegal character: \' / \'\n' "$out"
check "validate-name refusing exits 1" 1 "$status"
run "${scfg[@]}" validate-name Lab/router1 router1 ROUTER1
check "validate-name accepts a change of case" 0 "$status"
run "${scfg[@]}" validate-name --new Lab x lpt9.log
[[ "$out" == 0x61380085* ]]; check "validate-name refuses reserved device names" 0 $?

# ---- packed keys ----
run key-string 0x5E00002E
check "key-string: the five modifiers in order, a tab, the key" $'Alt-Ctrl-Shift-Extended-Windows-\t46\n' "$out"
check "key-string exit" 0 "$status"
run key-string 335544366
check "key-string takes decimal" $'Alt-Ctrl-\t46\n' "$out"
run key-string 0xA1000000
check "key-string: bits outside the modifier mask stay with the key" $'\t2701131776\n' "$out"
run key-string 0x100000000
check "key-string of more than 32 bits is bad usage" 2 "$status"

# ---- the printer service, against a CUPS that is not there ----
printf '#!/bin/sh\nexec env -u LPDEST -u PRINTER CUPS_SERVER="%s/no-cups.sock" HOME="%s" "%s" "$@"\n' \
  "$scratch" "$scratch" "$tool" > "$scratch/no-printers"
chmod +x "$scratch/no-printers"
real_tool="$tool"
tool="$scratch/no-printers"
run printer status --timeout 5000
[[ "$out" == $'3\tPrinter initialization failed: CUPS destinations: '*$'\n' ]]
check "printer status: state, tab, the failure with the back end's detail" 0 $?
check "printer status of a failed start exits 1" 1 "$status"
[[ "$err" == "cfgdeck: 0xe1380206: Printer initialization failed: CUPS destinations: "* ]]
check "printer status gives the reason on stderr" 0 $?
run printer status --timeout -1
check "a negative timeout is bad usage" 2 "$status"
run printer margins 0.5 0.5 0.5 0.5
check "printer margins without a default printer" "cfgdeck: 0xe138f040: There is no default printer." "$err"
check "printer margins without a default printer exits 1" 1 "$status"
run printer margins 0.5 0.5 0.5
check "printer margins needs four margins" 2 "$status"
run printer --help
check "printer --help exits 0" 0 "$status"
tool="$real_tool"

# ---- the personal data folder ----
personal_dir="$(cd "$(mktemp -d)" && pwd -P)"
export CFGDECK_REGISTRY_DIR="$personal_dir/registry"
cp -r "$examples" "$personal_dir/cfg"
pcfg=(--config "$personal_dir/cfg")
run "${pcfg[@]}" personal status
check "personal status with nothing remembered" \
  "Personal Data Path="$'\n'"Store Personal Data Separately=false"$'\n'"Do Personal Data Migration=false"$'\n'"Do Personal Data Merge=false"$'\n'"Folder in use=$personal_dir/cfg"$'\n' "$out"
run "${pcfg[@]}" personal migrate
check "personal migrate exit" 0 "$status"
check "personal migrate counts the sessions" \
  "Moved the personal values of 5 sessions into $personal_dir/cfg.personal"$'\n' "$out"
[[ -f "$personal_dir/cfg.personal/Sessions/Lab/router1.ini" && -f "$personal_dir/cfg.personal/Sessions/Default.ini" ]]
check "the personal values are in the personal data folder" 0 $?
grep -q Username "$personal_dir/cfg/Sessions/Lab/router1.ini"
check "and no longer in the configuration folder" 1 $?
check "the personal files are the owner's alone" "700 600" \
  "$(stat -c %a "$personal_dir/cfg.personal/Sessions/Lab") $(stat -c %a "$personal_dir/cfg.personal/Sessions/Lab/router1.ini")"
cmp -s "$personal_dir/cfg/Sessions/Lab/switch-console.ini" "$examples/Sessions/Lab/switch-console.ini"
check "a session without personal values is left alone" 0 $?
run "${pcfg[@]}" personal status
check "migrate remembers the folder" \
  "Personal Data Path=$personal_dir/cfg.personal"$'\n'"Store Personal Data Separately=true"$'\n'"Do Personal Data Migration=false"$'\n'"Do Personal Data Merge=false"$'\n'"Folder in use=$personal_dir/cfg.personal"$'\n' "$out"
run "${pcfg[@]}" personal migrate --folder "$personal_dir/cfg"
check "the configuration folder itself is refused" \
  $'cfgdeck: 0x61380024: The Personal Data Folder cannot be the same folder as the Configuration Folder.\r' "$err"
check "refusing exits 1" 1 "$status"
mkdir -p "$personal_dir/other/Sessions"
printf '\xef\xbb\xbfS:"Password"=x\r\n' > "$personal_dir/other/Sessions/ghost.ini"
run "${pcfg[@]}" personal merge --folder "$personal_dir/other"
[[ "$err" == "cfgdeck: 0xe1380025: The personal data folder could not be merged with the configuration folder"* ]]
check "a personal data folder of another configuration is not merged" 0 $?
check "the refused merge exits 1" 1 "$status"
run "${pcfg[@]}" personal merge
check "personal merge exit" 0 "$status"
check "personal merge counts the sessions" \
  "Merged the personal values of 5 sessions from $personal_dir/cfg.personal into $personal_dir/cfg"$'\n' "$out"
for session in Default Lab/router1 Lab/switch-console Production/mainframe Production/web01; do
  cmp -s "$personal_dir/cfg/Sessions/$session.ini" "$examples/Sessions/$session.ini"
  check "after the round trip $session is as it was" 0 $?
done
[[ ! -e "$personal_dir/cfg.personal/Sessions" && -f "$(echo "$personal_dir"/cfg.personal/Sessions-merged-*/Lab/router1.ini)" ]]
check "the merged personal values are kept aside" 0 $?
run "${pcfg[@]}" personal status
[[ "$out" == *$'\nStore Personal Data Separately=false\n'* ]]; check "merge remembers the choice" 0 $?
run personal
check "personal without a command is bad usage" 2 "$status"
export CFGDECK_REGISTRY_DIR="$(mktemp -d)"
rm -rf "$personal_dir"

# ---- secrets: encrypted values, the passphrase, and no password in clear anywhere ----
secret_dir="$(mktemp -d)"
cp -r "$examples" "$secret_dir/cfg"
scfg=(--config "$secret_dir/cfg")
# A key file of the test's own, and no system keyring: the fallback is what is tested here.
export XDG_CONFIG_HOME="$secret_dir/xdg" DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent
# The password in UTF-8 and in UTF-16: no file may hold it in either.
password='Zebra-9f31'
utf16="$(printf '%s' "$password" | iconv -f UTF-8 -t UTF-16LE | od -An -tx1 | tr -d ' \n')"
no_clear_password() {  # no_clear_password NAME FOLDER...
  local found=0 file
  while IFS= read -r -d '' file; do
    if grep -qF "$password" "$file" || od -An -tx1 "$file" | tr -d ' \n' | grep -q "$utf16"; then
      found=1
      echo "  the password is in clear in $file"
    fi
  done < <(find "${@:2}" -type f -print0)
  check "$1" 0 "$found"
}
printf '%s\n' "$password" | "$tool" "${scfg[@]}" set Sessions/Lab/router1 "Monitor Password V2" --secret --stdin
check "set --secret exit" 0 $?
run "${scfg[@]}" session Lab/router1
[[ "$out" == *$'\nMonitor Password V2=(encrypted)\n'* ]]; check "session prints (encrypted)" 0 $?
run "${scfg[@]}" session Lab/router1 --show-secrets
[[ "$out" == *$'\nMonitor Password V2='"$password"$'\n'* ]]; check "--show-secrets opens it" 0 $?
run "${scfg[@]}" passphrase status
check "the key file protects without a passphrase" \
  "Passphrase=none"$'\n'"Protection=key file"$'\n'"Key kept in=$(echo "$secret_dir"/xdg/cfgdeck/keys/*.key)"$'\n'"Change pending=false"$'\n' "$out"
[[ "$(stat -c %a "$secret_dir"/xdg/cfgdeck/keys/*.key)" == 600 ]]; check "the key file is the user's only" 0 $?
# Kept apart, the session's personal values are encrypted anew with the rest.
"$tool" "${scfg[@]}" personal migrate >/dev/null; check "migrate with a secret" 0 $?
printf 'first pass\n' | "$tool" "${scfg[@]}" passphrase set --stdin --work-factor 100000 >/dev/null
check "passphrase set" 0 $?
run "${scfg[@]}" passphrase set --stdin </dev/null
check "set where one is set is refused" 1 "$status"
printf 'wrong\n' | "$tool" "${scfg[@]}" session Lab/router1 --show-secrets >/dev/null 2>&1
check "a wrong passphrase is refused" 1 $?
printf 'first pass\nsecond pass\n' | "$tool" "${scfg[@]}" passphrase change --stdin --work-factor 100000 >/dev/null
check "passphrase change" 0 $?
out="$(printf 'second pass\n' | "$tool" "${scfg[@]}" session Lab/router1 --show-secrets 2>/dev/null)"
[[ "$out" == *$'\nMonitor Password V2='"$password"$'\n'* ]]; check "the changed passphrase opens it" 0 $?
grep -q '^S:"Config Passphrase"=P1:100000:' "$secret_dir"/cfg/[Gg]lobal.ini; check "only a verifier is stored" 0 $?
no_clear_password "no password in clear, configuration or personal data folder" "$secret_dir/cfg" "$secret_dir/cfg.personal"
printf 'second pass\n' | "$tool" "${scfg[@]}" passphrase clear --stdin >/dev/null; check "passphrase clear" 0 $?
run "${scfg[@]}" session Lab/router1 --show-secrets
[[ "$out" == *$'\nMonitor Password V2='"$password"$'\n'* ]]; check "without a passphrase the key file opens it again" 0 $?
run "${scfg[@]}" passphrase
check "passphrase without a command is bad usage" 2 "$status"
"$tool" "${scfg[@]}" personal merge >/dev/null
unset XDG_CONFIG_HOME DBUS_SESSION_BUS_ADDRESS
rm -rf "$secret_dir"

echo "$((checks - failures)) passed, $failures failed"
[[ $failures -eq 0 ]]
