#!/usr/bin/env bash
# The plug-in, hosted by the simulated player, against services that behave
# as protocol 1.1 servers deployed today do (the stand-in's --real-server:
# a submission URL with a double slash and the 1.2 path, without its port
# when it is the scheme's, "INTERVAL 1", BADSESSION for a wrong session).
# One case a run:
#   port80  the service on port 80 hands out a submission URL without a
#           port; the play arrives, its texts exact. Exits 77 (skipped) with
#           one line when port 80 cannot be bound here.
#   tls     the service speaks https only, with a certificate that only this
#           test's prefix comes to trust: before that the handshake fails and
#           the play stays in Queue.xml; after it the saved play arrives over
#           https, handshake and post alike.
#   keep    with ReattemptFailed off, a post whose connection is refused, one
#           that is dropped, one answered by an HTML error page and one that
#           is never answered each leave the play in Queue.xml, and the next
#           pass delivers it exactly once; a play the service refuses
#           ("FAILED ...") goes, into the failed log; a wrong password gives
#           BADSESSION and the two failed-log lines.
# Run by run_with_standin.sh: CVAS_STANDIN_PORT and CVAS_STANDIN_FOLDER name
# the stand-in of ordinary manners; the others are started here.
# Usage: plugin_real_server_test.sh CASE RUN_PLAYER WINE64 PRISTINE_PREFIX PLAYER_EXE
#        PLUGIN_DLL TRUST_EXE
set -u
case_name=$1 run_player=$2 wine=$3 pristine=$4 player=$5 dll=$6 trust_exe=$7
# shellcheck source=e2e_checks.sh
source "$(dirname "$0")/e2e_checks.sh"
root=$(cd "$here/../.." && pwd)
standin=$root/tools/standin/lastfm_standin.py
# shellcheck source=../../scripts/run_player.sh
source "$run_player"
# shellcheck source=../../scripts/test_tls.sh
source "$root/scripts/test_tls.sh"

# The play of the scenarios, as the service must record it.
rich_play='"artist":"Björk & 坂本龍一","track":"Jóga 🎵","album":"A+B=C? 100%"'
standin_pids=()
stop_standins() {
  local pid
  for pid in "${standin_pids[@]}"; do standin_stop "$pid"; done
  rm -rf "$work"
}
trap stop_standins EXIT

# Starts a stand-in named NAME, with the user tester:secret, its record in
# $work/NAME.jsonl and its journal in $work/NAME.journal; its port goes to
# $work/NAME.port. Returns standin_start's status (3: the port could not be
# bound).
start_standin() { # NAME [OPTIONS...]
  local name=$1 status
  shift
  standin_start python3 "$standin" "$work/$name" --lifetime 900 --user tester:secret \
    --record "$work/$name.jsonl" --journal "$work/$name.journal" "$@" 2>"$work/$name.log"
  status=$?
  [ $status -eq 0 ] || return $status
  standin_pids+=("$standin_pid")
  echo "$standin_port" >"$work/$name.port"
}

# Runs the player once in the prefix $work/PREFIX (made fresh unless
# --again); its report and the plug-in's logs go to $work/RUN.txt, the
# status log's lines of this run alone, oldest first and without their
# time, to $work/RUN.status.
start() { # RUN PREFIX SCENARIO [OPTIONS...]
  local run=$1 prefix=$2 scenario=$3 log before=0 after
  shift 3
  [ -d "$work/$prefix/drive_c" ] && log=$(data_file "$prefix" StatusLog.txt) \
    && [ -f "$log" ] && before=$(wc -l <"$log")
  bash "$run_player" --wine "$wine" --pristine "$pristine" --player "$player" --timeout 300 \
    --dll "$dll" --prefix "$work/$prefix" --show-logs --setting PollTimeout=100 "$@" \
    "$here/$scenario" >"$work/$run.txt" 2>&1 || fail "$run: the player ended with $?"
  has "$work/$run.txt" "Init: S_OK"
  has "$work/$run.txt" "Terminate: S_OK"
  lacks "$work/$run.txt" "await: "
  log=$(data_file "$prefix" StatusLog.txt)
  after=$(wc -l <"$log")
  # Newest first in the file: this run's lines are the top ones.
  head -n $((after - before)) "$log" | tac | sed -E 's/^(\xef\xbb\xbf)?[0-9\/]+ [0-9:.]+ \( *[0-9]+\) > //' \
    >"$work/$run.status"
}
data_file() { printf '%s/Ostrana/last.fm/%s' "$(player_appdata "$work/$1")" "$2"; } # PREFIX FILE
queue_file() { data_file "$1" Queue.xml; }
count() { # FILE TEXT: the lines that hold TEXT; 0 without the file
  local lines=0
  [ -f "$1" ] && lines=$(grep -cF -- "$2" "$1")
  echo "${lines:-0}"
}
control() {
  python3 -c 'import sys, urllib.request; urllib.request.urlopen(sys.argv[1], timeout=10).read()' \
    "http://127.0.0.1:$CVAS_STANDIN_PORT/control/$1" || fail "stand-in control $1"
}
# The engine's lines of a run, for the record of what each case did.
excerpt() { # RUN
  echo "--- $1"
  grep -vE "^(Built post reply|Issuing|Wait|Timeout|Waiting|Created|Initialising|AS |Shutting|Told)" \
    "$work/$1.status" | sed -E 's/(Saving queue to|Loading queue from) .*Queue\.xml/\1 Queue.xml/'
}

case_port80() {
  start_standin port80 --port 80 --real-server
  case $? in
    0) ;;
    3)
      echo "plugin_real_server_test: SKIPPED: port 80 cannot be bound here ($(tail -n 1 "$work/port80.log"))"
      exit 77
      ;;
    *) fail "the stand-in on port 80 did not start: $(cat "$work/port80.log")"; return ;;
  esac
  start port80 prefix real_server_play.txt --service http://127.0.0.1
  has "$work/port80.status" "  Response: http://127.0.0.1//submissions/1.2/"
  has "$work/port80.status" "  Response: INTERVAL 1"
  has "$work/port80.status" "Sleeping 1 seconds"
  [ "$(count "$work/port80.jsonl" "$rich_play")" = 1 ] || fail "the play did not arrive once"
  has "$work/port80.journal" '"path":"//submissions/1.2/"'
  lacks "$(queue_file prefix)" "<track>"
  excerpt port80
}

case_tls() {
  local certificates=$work/certificates
  tls_make "$certificates" || { fail "no certificate"; return; }
  start_standin tls --port 0 --real-server --tls-cert "$certificates/server.pem" \
    --tls-key "$certificates/server.key" || return
  local service
  service=https://127.0.0.1:$(head -n 1 "$work/tls.port")

  # Not trusted yet: WinINet refuses the certificate, nothing is lost.
  start untrusted prefix real_server_untrusted.txt --service "$service"
  grep -qE "^Got error (12045|12057) while trying to connect to:" "$work/untrusted.status" \
    || fail "the certificate was not refused as one nobody trusts"
  has "$work/untrusted.status" "$service/?hs=true&p=1.1"
  has "$work/untrusted.status" "Failed to connect!"
  has "$(queue_file prefix)" "<name>Jóga 🎵</name>"
  [ ! -s "$work/tls.jsonl" ] || fail "a play arrived without a trusted certificate"

  # Trusted by this prefix alone: the saved play goes over https.
  tls_trust "$work/prefix" "$wine" "$trust_exe" "$certificates/ca.der" >"$work/trust.txt" 2>&1 \
    || fail "the certificate was not trusted: $(cat "$work/trust.txt")"
  start trusted prefix real_server_saved.txt --again --service "$service" \
    --setting SubmitTracksOnStartup=True
  has "$work/trusted.status" "Loaded 1 entries"
  has "$work/trusted.status" "  Response: $service//submissions/1.2/"
  [ "$(count "$work/tls.jsonl" "$rich_play")" = 1 ] || fail "the play did not arrive once"
  has "$work/tls.journal" '"kind":"handshake"'
  has "$work/tls.journal" '"path":"//submissions/1.2/"'
  lacks "$(queue_file prefix)" "<track>"
  excerpt untrusted
  excerpt trusted
}

case_keep() {
  local service=http://127.0.0.1:$CVAS_STANDIN_PORT record=$CVAS_STANDIN_FOLDER/record.jsonl
  local run again=()
  # Each run fails the saved play in another way; it stays in Queue.xml.
  for run in refused dropped html-page hangs; do
    control reset
    case $run in
      refused) control "script?handshake=refused" ;;
      # WinINet may send a dropped request again: every attempt meets the same.
      dropped) control "script?submit=drop&submit=drop&submit=drop&submit=drop&submit=drop" ;;
      html-page) control "script?submit=html&submit=html&submit=html&submit=html" ;;
      hangs) control "script?submit=hang" ;;
    esac
    if [ $run = refused ]; then
      start $run prefix real_server_play.txt --service "$service"
    else
      start $run prefix real_server_saved.txt "${again[@]}" --service "$service" \
        --setting SubmitTracksOnStartup=True
    fi
    again=(--again)
    has "$work/$run.txt" "posted to the control: WM_USER+2"
    has "$(queue_file prefix)" "<name>Jóga 🎵</name>"
    [ ! -s "$record" ] || fail "$run: the service recorded a play"
    [ "$(count "$(data_file prefix FailedLog.txt)" "u=tester")" = 0 ] \
      || fail "$run: a play the service never judged is in the failed log"
  done
  has "$work/refused.status" "Failed to send the request: Cannot connect to the specified address/port."
  has "$work/hangs.status" "Failed to send the request: Timeout."
  has "$work/html-page.status" "  Response: <!DOCTYPE html>"

  # The next pass delivers the saved play once; a refused play goes.
  control reset
  control "script?submit=ok&submit=failed:Track%20rejected"
  start delivered prefix real_server_saved_then_refused.txt --again --service "$service" \
    --setting SubmitTracksOnStartup=True
  [ "$(count "$record" "$rich_play")" = 1 ] || fail "the saved play did not arrive exactly once"
  [ "$(count "$CVAS_STANDIN_FOLDER/journal.jsonl" "t[0]=Hopp%C3%ADpolla&")" = 1 ] \
    || fail "the refused play was not posted once"
  [ "$(count "$record" "Hoppípolla")" = 0 ] || fail "the refused play was recorded"
  has "$work/delivered.status" "FAILED Track rejected"
  [ "$(count "$(data_file prefix FailedLog.txt)" ">  ... u=tester&s=")" = 1 ] || fail "not the refused play's body in the failed log"
  lacks "$(queue_file prefix)" "<track>"

  # A wrong password, at a service on a port of its own: BADSESSION.
  start_standin real --port 0 --real-server || return
  start badsession prefix-badsession real_server_play.txt \
    --service "http://127.0.0.1:$(head -n 1 "$work/real.port")" --user tester:wrong
  has "$work/badsession.status" "  Response: BADSESSION"
  local failed
  failed=$(data_file prefix-badsession FailedLog.txt)
  [ "$(count "$failed" "> BADSESSION")" = 1 ] || fail "not one BADSESSION in the failed log"
  [ "$(count "$failed" ">  ... u=tester&s=")" = 1 ] || fail "not one body in the failed log"
  lacks "$(queue_file prefix-badsession)" "<track>"
  [ ! -s "$work/real.jsonl" ] || fail "a play with a wrong session was recorded"
  for run in refused dropped html-page hangs delivered badsession; do excerpt $run; done
}

case $case_name in
  port80 | tls | keep) "case_$case_name" ;;
  *) echo "plugin_real_server_test: unknown case $case_name" >&2; exit 2 ;;
esac

if [ $failures -ne 0 ]; then
  for report in "$work"/*.txt "$work"/*.log; do
    [ -f "$report" ] && { echo "=== $(basename "$report")" >&2; cat "$report" >&2; }
  done
  exit 1
fi
echo "plugin_real_server_test $case_name: all checks passed"
