#!/usr/bin/env bash
# The plug-in end to end: registered with regsvr32 in a fresh prefix, hosted
# by the simulated player, it queues the plays that qualify (at half their
# length, at the high-water mark for a long file and for one of unknown
# length) and the stand-in service receives them; a replay of the same file,
# a 29-second file, a file outside the filter and a paused file are left; a
# play request reaches the player; the
# player's objects are all released; the window is in the screenshot; the
# registry holds the control's keys and the player's values, and
# unregistration removes the first and keeps the second.
# Run by run_with_standin.sh: CVAS_STANDIN_PORT and CVAS_STANDIN_FOLDER.
# Usage: plugin_e2e_test.sh RUN_PLAYER WINE64 PRISTINE_PREFIX PLAYER_EXE PLUGIN_DLL
set -u
run_player=$1 wine=$2 pristine=$3 player=$4 dll=$5
# shellcheck source=e2e_checks.sh
source "$(dirname "$0")/e2e_checks.sh"

bash "$run_player" --wine "$wine" --pristine "$pristine" --player "$player" --timeout 300 \
  --dll "$dll" --service "http://127.0.0.1:$CVAS_STANDIN_PORT" --setting Enabled=True \
  --setting PollTimeout=100 --prefix "$work/prefix" --show-logs --screenshot "$work/shot.png" \
  "$here/e2e_scenario.txt" -- --size 640x480 >"$work/out.txt" 2>&1 || fail "the player ended with $?"

has "$work/out.txt" "Init: S_OK"
has "$work/out.txt" "Terminate: S_OK"
has "$work/out.txt" "summary: references still held by the plug-in: 0 (none)"
has "$work/out.txt" "Ignoring  as it's duration is 29 seconds."
has "$work/out.txt" "File did not qualify (0) therefore it's not being submitted!"
has "$work/out.txt" "play request: add key 3 (other.xyz)"
has "$work/out.txt" "summary: queries: 4"
python3 - "$work/shot.png" <<'PY' || fail "the screenshot is not a 640 x 480 PNG"
import struct, sys
data = open(sys.argv[1], "rb").read()
assert data[:8] == b"\x89PNG\r\n\x1a\n" and data[12:16] == b"IHDR"
assert struct.unpack(">II", data[16:24]) == (640, 480)
PY
record=$CVAS_STANDIN_FOLDER/record.jsonl
[ "$(wc -l <"$record")" -eq 3 ] || fail "the service took $(wc -l <"$record") plays, not 3"
has "$record" '"artist":"Björk","track":"Jóga","album":"Homogenic"'
has "$record" '"artist":"Long","track":"Suite"'
has "$record" '"artist":"Unknown","track":"Stream"'

clsid='{1E0C5BAE-BD48-48CD-B03E-CE3B3761106C}'
registry() { tr -d '\r' <"$work/prefix/system.reg"; }
registry >"$work/registered.reg"
has "$work/registered.reg" "[Software\\\\Classes\\\\CLSID\\\\$clsid\\\\InprocServer32]"
has "$work/registered.reg" '"ThreadingModel"="Apartment"'
has "$work/registered.reg" "[Software\\\\Classes\\\\CVAudioScrobbler.Interface\\\\CurVer]"
has "$work/registered.reg" '"IVersion"=dword:00000001'
has "$work/registered.reg" "\"CLSID\"=\"$clsid\""

# The registry reaches system.reg when the prefix's server ends.
export WINEPREFIX=$work/prefix WINEDEBUG=-all
timeout 120 "$wine" regsvr32 /s /u "C:\\Program Files\\Simulated player\\Plugins\\$(basename "$dll")" \
  </dev/null >/dev/null 2>&1 || fail "unregistration failed"
timeout 60 "$(dirname "$wine")/wineserver" -w
registry >"$work/unregistered.reg"
grep -qF "CLSID\\\\$clsid]" "$work/unregistered.reg" && fail "the class key stayed"
grep -qF "CVAudioScrobbler.Interface" "$work/unregistered.reg" && fail "a ProgID stayed"
has "$work/unregistered.reg" '"IVersion"=dword:00000001'

if [ $failures -ne 0 ]; then
  cat "$work/out.txt" >&2
  exit 1
fi
echo "plugin_e2e_test: all checks passed"
