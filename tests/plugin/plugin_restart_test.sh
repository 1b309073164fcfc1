#!/usr/bin/env bash
# The plug-in across three starts of the simulated player in one prefix:
#   1. a first start without a settings file asks for the options
#      (WM_USER+1 with 1) and scrobbles nothing;
#   2. with the service hanging, a qualifying play is queued, Terminate
#      returns at once and Queue.xml keeps the play;
#   3. the next start, with SubmitTracksOnStartup, submits the saved play
#      before anything new is played, and Queue.xml is left empty.
# Run by run_with_standin.sh: CVAS_STANDIN_PORT and CVAS_STANDIN_FOLDER.
# Usage: plugin_restart_test.sh RUN_PLAYER WINE64 PRISTINE_PREFIX PLAYER_EXE PLUGIN_DLL
set -u
run_player=$1 wine=$2 pristine=$3 player=$4 dll=$5
# shellcheck source=e2e_checks.sh
source "$(dirname "$0")/e2e_checks.sh"
service=http://127.0.0.1:$CVAS_STANDIN_PORT
control() {
  python3 -c 'import sys, urllib.request; urllib.request.urlopen(sys.argv[1], timeout=10).read()' \
    "$service/control/$1" || fail "stand-in control $1"
}
# A Terminate that hangs would never return at all: the bound only tells
# it apart from one that waits out the stop's 5-second cut-off and more.
terminate_bound_ms=15000

start() { # NAME SCENARIO [OPTIONS...]
  local name=$1 scenario=$2
  shift 2
  bash "$run_player" --wine "$wine" --pristine "$pristine" --player "$player" --timeout 300 \
    --dll "$dll" --prefix "$work/prefix" --show-logs "$@" "$here/$scenario" \
    >"$work/$name.txt" 2>&1 || fail "$name: the player ended with $?"
  has "$work/$name.txt" "Init: S_OK"
  has "$work/$name.txt" "Terminate: S_OK"
  has "$work/$name.txt" "summary: references still held by the plug-in: 0 (none)"
  lacks "$work/$name.txt" "await: "
  local took
  took=$(sed -n 's/.*Terminate returned after \([0-9]*\) ms.*/\1/p' "$work/$name.txt")
  [ -n "$took" ] && [ "$took" -lt $terminate_bound_ms ] || fail "$name: Terminate took ${took:-?} ms"
}
queue_file() { printf '%s/Ostrana/last.fm/Queue.xml' "$(
  source "$run_player"
  player_appdata "$work/prefix"
)"; }
plays() { wc -l <"$CVAS_STANDIN_FOLDER/record.jsonl"; }

start first-start restart_first_start.txt
has "$work/first-start.txt" "posted to the control: WM_USER+1 (1, 0)"
has "$work/first-start.txt" 'dialog "Options for last.fm": cancelled'
lacks "$work/first-start.txt" "AS thread starting"

control "script?handshake=hang"
start service-hangs restart_service_hangs.txt --again --service "$service" \
  --setting PollTimeout=100
has "$work/service-hangs.txt" "Added 1 entries to queue"
has "$work/service-hangs.txt" "Told to exit"
lacks "$work/service-hangs.txt" "posted to the control: WM_USER+1"
has "$(queue_file)" "<name>Jóga</name>"
[ "$(plays)" -eq 0 ] || fail "the hanging service took $(plays) plays"

control reset
start next-start restart_submit_saved.txt --again --service "$service" \
  --setting PollTimeout=100 --setting SubmitTracksOnStartup=True
has "$work/next-start.txt" "Loaded 1 entries"
has "$work/next-start.txt" "posted to the control: WM_USER+2"
[ "$(plays)" -eq 1 ] || fail "the service took $(plays) plays, not 1"
has "$CVAS_STANDIN_FOLDER/record.jsonl" '"artist":"Björk","track":"Jóga","album":"Homogenic"'
lacks "$(queue_file)" "<track>"

if [ $failures -ne 0 ]; then
  for run in first-start service-hangs next-start; do
    [ -f "$work/$run.txt" ] && { echo "=== $run" >&2; cat "$work/$run.txt" >&2; }
  done
  exit 1
fi
echo "plugin_restart_test: all checks passed"
