#!/usr/bin/env bash
# What a user waits for with a backlog: the simulated player starts under
# Wine with N plays saved in Queue.xml and SubmitTracksOnStartup on, against
# the local stand-in on 127.0.0.1, while files go on playing and qualifying
# (two files of 40 s taking turns at 20 times real speed: a play every two
# seconds). Once the stand-in has the last saved play, the run ends. Each N
# runs twice: with the default status log (1,024 lines) and with a 2-line
# one, which costs next to nothing to rewrite. Prints, for each run, the
# drain rate (saved plays per second from Init to the last one's arrival),
# Init's time on the player's UI thread, and the longest message the
# control's windows handled meanwhile (its poll timer, which queues the
# plays, among them), the longest poll alone, how many messages took longer
# than 16 ms, and how many plays qualified during the run.
# CVAS_BENCH_KEEP=1 keeps what the runs left (prefix, player output, logs).
# CVAS_BENCH_DLL and CVAS_BENCH_STANDIN name another build's DLL and
# stand-in, to measure an earlier version with the same harness.
# Usage: scripts/backlog_bench.sh N [N...]
set -uo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
[ $# -gt 0 ] || { echo "usage: scripts/backlog_bench.sh N [N...]" >&2; exit 2; }
for count in "$@"; do
  [[ $count =~ ^[1-9][0-9]*$ ]] || { echo "backlog_bench: not a count of plays: $count" >&2; exit 2; }
done

dll=${CVAS_BENCH_DLL:-build/win64/plugin/CVAudioScrobbler.dll}
standin_script=${CVAS_BENCH_STANDIN:-tools/standin/lastfm_standin.py}
cmake --preset win64 >/dev/null || exit 1
cmake --build --preset win64 -j"$(nproc)" --target cvas_plugin simulated_player >/dev/null || exit 1
# shellcheck source=run_player.sh
source scripts/run_player.sh
wine=$(player_default_wine)
pristine=$root/build/win64/wineprefix
[ -f "$pristine/.cvas-ready" ] || WINEPREFIX=$pristine ./scripts/wine-prefix.sh "$wine" || exit 1
work=$(mktemp -d "$root/build/win64/backlog-bench.XXXXXX") || exit 1
standin=""
trap '[ -n "$standin" ] && kill $standin 2>/dev/null; [ -n "${CVAS_BENCH_KEEP:-}" ] || rm -rf "$work"' EXIT

# Queue.xml with COUNT plays of a day in 2024, the last one "Track COUNT".
write_queue() { # COUNT FILE
  python3 - "$1" "$2" <<'PY'
import sys
count, path = int(sys.argv[1]), sys.argv[2]
with open(path, "w", encoding="utf-8", newline="") as out:
    out.write('<?xml version="1.0" encoding="UTF-8"?>\n<queue>\r\n')
    for i in range(1, count + 1):
        out.write("<track>\r\n<artist>Artist %d</artist>\r\n<name>Track %d</name>\r\n"
                  "<album>Album %d</album>\r\n<duration>%d</duration>\r\n"
                  "<time>2024-%02d-%02d %02d:%02d:%02d</time>\r\n</track>\r\n"
                  % (i % 997, i, i % 331, 120 + i % 300, 1 + i % 12, 1 + i % 28, i % 24,
                     i % 60, i * 7 % 60))
    out.write("</queue>\r\n")
PY
}

run_one() { # COUNT LOG_LIMIT_SETTING...
  local count=$1
  shift
  local run=$work/run-$count-$#
  rm -rf "$run"
  mkdir -p "$run"
  python3 "$standin_script" --port 0 --lifetime 3600 --user tester:secret \
    --record "$run/plays.jsonl" >"$run/port" 2>"$run/standin.log" &
  standin=$!
  for _ in $(seq 100); do [ -s "$run/port" ] && break; sleep 0.1; done
  local port
  port=$(head -n 1 "$run/port")
  [ -n "$port" ] || { echo "backlog_bench: the stand-in did not start" >&2; cat "$run/standin.log" >&2; return 1; }
  player_fresh_prefix "$pristine" "$run/prefix" || return 1
  local data
  data="$(player_appdata "$run/prefix")/Ostrana/last.fm"
  mkdir -p "$data"
  write_queue "$count" "$data/Queue.xml"
  {
    echo 'file 1 filename=a.mp3 artist="Now A" album=A name="Playing A" duration=40'
    echo 'file 2 filename=b.mp3 artist="Now B" album=B name="Playing B" duration=40'
    printf 'playlist'; for _ in $(seq 1000); do printf ' 1 2'; done; echo
    echo 'speed 20'
    echo 'play 0'
    # A quarter of the backlog at a time: a step waits at most ten minutes.
    local quarter
    for quarter in 1 2 3 4; do
      echo "await file \"$(player_windows_path "$run/plays.jsonl")\" \"\"\"Track $((count * quarter / 4))\"\"\" 600000"
    done
    echo 'end'
  } >"$run/scenario.txt"
  bash scripts/run_player.sh --prefix "$run/prefix" --again --dll "$dll" \
    --service "http://127.0.0.1:$port" --setting SubmitTracksOnStartup=True --setting PollTimeout=100 \
    "$@" --timeout 3000 "$run/scenario.txt" -- --timings >"$run/player.out" 2>&1
  local status=$?
  kill $standin 2>/dev/null
  wait $standin 2>/dev/null
  standin=""
  python3 - "$run/player.out" "$run/plays.jsonl" "$count" "$status" <<'PY'
import json, re, sys
out, plays, count, status = open(sys.argv[1], encoding="utf-8", errors="replace").read(), sys.argv[2], int(sys.argv[3]), sys.argv[4]
def ms(pattern):
    found = re.search(pattern, out)
    return float(found.group(1)) if found else None
init = ms(r"timing: Init: ([0-9.]+) ms")
steps = [float(v) for v in re.findall(r"timing: line \d+: ([0-9.]+) ms", out)]
longest = ms(r"timing: longest message in the control: ([0-9.]+) ms")
poll = ms(r"timing: longest poll: ([0-9.]+) ms")
over = re.search(r"timing: messages in the control: (\d+), (\d+) over 16 ms", out)
names = set()
for line in open(plays, encoding="utf-8"):
    names.add(json.loads(line)["track"])
saved = sum(1 for i in range(1, count + 1) if "Track %d" % i in names)
queries = re.search(r"summary: queries: (\d+)", out)
if init is None or len(steps) != 6 or saved != count or status != "0":
    print("FAILED: player exit %s, %d of %d saved plays arrived; see %s" % (status, saved, count, sys.argv[1]))
    sys.exit(1)
drain = sum(steps) / 1000.0
print("%8.1f plays/s %8.1f s %9.1f ms %9.1f ms %9s ms %6s of %-6s %8d" % (
    count / drain, drain, init, longest, "%.1f" % poll if poll is not None else "-", over.group(2), over.group(1),
    int(queries.group(1)) if queries else -1))
PY
}

printf '%-8s %-12s %16s %10s %12s %12s %12s %16s %8s\n' plays "status log" "drain rate" "drain" "Init" \
  "longest msg" "longest poll" "msgs > 16 ms" "qualified"
status=0
for count in "$@"; do
  for limit in default 2; do
    settings=()
    [ "$limit" = 2 ] && settings=(--setting StatusLogLimit=2)
    printf '%-8s %-12s ' "$count" "$([ "$limit" = 2 ] && echo "2 lines" || echo "1,024 lines")"
    run_one "$count" "${settings[@]}" || { status=1; echo "  (kept in $work)"; CVAS_BENCH_KEEP=1; }
  done
done
exit $status
