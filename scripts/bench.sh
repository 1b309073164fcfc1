#!/usr/bin/env bash
# Builds the benchmarks (release, no sanitizers) in build/bench, runs them and
# prints a table: each figure at 5,000 and 50,000 tracks, its ratio to
# pugixml doing the same, and its growth from 5,000 to 50,000 tracks (10 for
# a step linear in the document's size). Extra arguments go to the benchmark
# program, e.g. --benchmark_filter=parse.
# Usage: scripts/bench.sh [benchmark options]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"

cmake --preset bench >/dev/null
cmake --build --preset bench -j"$(nproc)" --target xml_document_bench >/dev/null

results=build/bench/xml_document_bench.json
build/bench/bench/xml_document_bench --benchmark_out="$results" --benchmark_out_format=json \
  --benchmark_min_time=1 "$@" >/dev/null

python3 - "$results" <<'PY'
import json, sys

runs = {}
for b in json.load(open(sys.argv[1]))["benchmarks"]:
    operation, library, tracks = b["run_name"].split("/")[:3]
    scale = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}[b["time_unit"]]
    runs[(operation, library, int(tracks))] = (b["real_time"] * scale, b["cpu_time"] * scale)

print("Wall-clock time (CPU time in brackets) per run, in ms; ratio = wall time / pugixml's")
print(f"{'operation':<11} {'library':<9} {'5,000 tracks':>18} {'50,000 tracks':>18} "
      f"{'ratio':>6} {'growth':>7}")
order = ["memcpy", "parse", "load", "navigate", "build+save"]
for operation in order:
    for library in ["ours", "pugixml", "tinyxml2", "floor", "wide"]:
        small = runs.get((operation, library, 5000))
        large = runs.get((operation, library, 50000))
        if not small or not large:
            continue
        reference = runs.get((operation, "pugixml", 50000))
        ratio = f"{large[0] / reference[0]:6.2f}" if reference else f"{'':6}"
        cell = lambda t: f"{t[0]:8.2f} ({t[1]:7.2f})"
        print(f"{operation:<11} {library:<9} {cell(small):>18} {cell(large):>18} {ratio} "
              f"{large[0] / small[0]:7.1f}")
PY
