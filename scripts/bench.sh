#!/usr/bin/env bash
# Builds the benchmarks (release, no sanitizers) in build/bench, runs them and
# prints a table: each figure at 5,000, 20,000 and 50,000 tracks, its ratio
# to pugixml doing the same at 50,000, and its growth from 5,000 and from
# 20,000 to 50,000 tracks. A step linear in the document's size grows 10 and
# 2.5 times; from 5,000 tracks more, because the small document fits in the
# cache and the large one does not (the memcpy floors show how much). Extra
# arguments go to the benchmark program, e.g. --benchmark_filter=parse.
#
# With --poll-tick it instead builds the win64 preset's poll-tick benchmark
# and runs it under Wine: the plug-in's poll procedure against the simulated
# player's automation objects, median and tail of the UI thread's time per
# tick.
#
# With --backlog N it runs scripts/backlog_bench.sh N: the plug-in in the
# simulated player under Wine draining N saved plays (drain rate, Init's
# time and the longest wait of the player's UI thread).
# Usage: scripts/bench.sh [--poll-tick | --backlog N | benchmark options]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"

if [ "${1:-}" = --backlog ]; then
  shift
  exec ./scripts/backlog_bench.sh "$@"
fi

if [ "${1:-}" = --poll-tick ]; then
  cmake --preset win64 >/dev/null
  cmake --build --preset win64 -j"$(nproc)" --target poll_tick_bench >/dev/null
  wine=/usr/lib/wine/wine64
  [ -x "$wine" ] || wine=$(command -v wine64)
  export WINEPREFIX=$root/build/win64/wineprefix WINEDEBUG=-all
  [ -f "$WINEPREFIX/.cvas-ready" ] || ./scripts/wine-prefix.sh "$wine"
  exec "$wine" build/win64/bench/poll_tick_bench.exe
fi

cmake --preset bench >/dev/null
cmake --build --preset bench -j"$(nproc)" --target xml_document_bench >/dev/null

results=build/bench/xml_document_bench.json
# Each figure is the median of three runs of at least a second each.
build/bench/bench/xml_document_bench --benchmark_out="$results" --benchmark_out_format=json \
  --benchmark_min_time=1 --benchmark_repetitions=3 --benchmark_report_aggregates_only=true \
  "$@" >/dev/null

python3 - "$results" <<'PY'
import json, sys

runs = {}
for b in json.load(open(sys.argv[1]))["benchmarks"]:
    if b.get("aggregate_name", "median") != "median":
        continue
    operation, library, tracks = b["run_name"].split("/")[:3]
    scale = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}[b["time_unit"]]
    runs[(operation, library, int(tracks))] = (b["real_time"] * scale, b["cpu_time"] * scale)

print("Wall-clock time (CPU time in brackets) per run in ms, median of three; ratio = wall "
      "time / pugixml's at 50,000 tracks; growth = 50,000 tracks / 5,000 and / 20,000")
print(f"{'operation':<11} {'library':<9} {'5,000 tracks':>18} {'20,000 tracks':>18} "
      f"{'50,000 tracks':>18} {'ratio':>6} {'growth':>13}")
order = ["memcpy", "parse", "load", "navigate", "build+save"]
for operation in order:
    for library in ["ours", "pugixml", "tinyxml2", "floor", "wide"]:
        times = [runs.get((operation, library, n)) for n in (5000, 20000, 50000)]
        if None in times:
            continue
        reference = runs.get((operation, "pugixml", 50000))
        ratio = f"{times[2][0] / reference[0]:6.2f}" if reference else f"{'':6}"
        cells = " ".join(f"{f'{t[0]:8.2f} ({t[1]:7.2f})':>18}" for t in times)
        growth = f"{times[2][0] / times[0][0]:5.1f} / {times[2][0] / times[1][0]:4.2f}"
        print(f"{operation:<11} {library:<9} {cells} {ratio} {growth:>13}")
PY
