#!/usr/bin/env bash
# Builds every fuzz target (clang, libFuzzer, ASan, UBSan) in build/fuzz and
# runs each for SECONDS from its seed corpus fuzz/corpus/PREFIX (PREFIX: the
# target name up to its first "_"). Inputs found along the way go to
# build/fuzz/corpus, crashing inputs to build/fuzz/crashes. Exits non-zero if
# any target crashed.
# Usage: scripts/fuzz.sh SECONDS
set -euo pipefail
seconds=${1:?usage: scripts/fuzz.sh SECONDS}
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"

cmake --preset fuzz >/dev/null
cmake --build --preset fuzz -j"$(nproc)"

status=0
found=0
for target in build/fuzz/fuzz/*_fuzzer; do
  [ -x "$target" ] || continue
  found=1
  name=$(basename "$target")
  seeds=fuzz/corpus/${name%%_*}
  work=build/fuzz/corpus/$name
  mkdir -p "$work" build/fuzz/crashes
  echo "== $name for ${seconds}s (seeds: $seeds)"
  if ! "$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
      -print_final_stats=1 -artifact_prefix="build/fuzz/crashes/$name-" \
      "$work" "$seeds" 2>"build/fuzz/$name.log"; then
    echo "!! $name failed; its log is build/fuzz/$name.log" >&2
    tail -n 40 "build/fuzz/$name.log" >&2
    status=1
  fi
  grep -E '^(stat::number_of_executed_units|stat::peak_rss_mb|Done )' "build/fuzz/$name.log" || true
done
[ "$found" = 1 ] || { echo "no fuzz targets were built" >&2; exit 1; }
exit $status
