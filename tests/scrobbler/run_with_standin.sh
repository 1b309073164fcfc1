#!/usr/bin/env bash
# Runs one test executable under Wine beside a stand-in service of its own,
# and stops the service afterwards. The test finds the service through
# CVAS_STANDIN_PORT and reads what it recorded from CVAS_STANDIN_RECORD and
# CVAS_STANDIN_JOURNAL (Windows paths; CVAS_STANDIN_FOLDER holds both).
# Usage: run_with_standin.sh PYTHON3 STANDIN WINE64 TEST_EXE [ARGS...]
set -u
python=$1 standin=$2 wine=$3 exe=$4
shift 4

folder=$(mktemp -d)
pid=
stop_standin() {
  [ -n "$pid" ] && kill "$pid" 2>/dev/null && wait "$pid" 2>/dev/null
  rm -rf "$folder"
}
trap stop_standin EXIT

# The lifetime outlasts the test's own time-out: the service never outlives a
# test run that went wrong.
"$python" "$standin" --port 0 --lifetime 900 --user tester:secret \
  --record "$folder/record.jsonl" --journal "$folder/journal.jsonl" \
  >"$folder/port" 2>"$folder/standin.log" &
pid=$!
for _ in $(seq 100); do
  [ -s "$folder/port" ] && break
  sleep 0.1
done
port=$(head -n 1 "$folder/port")
if [ -z "$port" ]; then
  echo "run_with_standin: the stand-in service did not start" >&2
  cat "$folder/standin.log" >&2
  exit 1
fi

windows_path() { printf 'Z:%s' "$(printf '%s' "$1" | tr / '\\')"; }
export CVAS_STANDIN_PORT=$port
export CVAS_STANDIN_FOLDER=$folder
export CVAS_STANDIN_RECORD=$(windows_path "$folder/record.jsonl")
export CVAS_STANDIN_JOURNAL=$(windows_path "$folder/journal.jsonl")
# Everything goes to 127.0.0.1 directly, whatever the machine's proxy is.
unset http_proxy https_proxy HTTP_PROXY HTTPS_PROXY all_proxy ALL_PROXY

"$wine" "$exe" "$@"
status=$?
if [ $status -ne 0 ] && [ -s "$folder/standin.log" ]; then
  echo "--- stand-in service log" >&2
  cat "$folder/standin.log" >&2
fi
exit $status
