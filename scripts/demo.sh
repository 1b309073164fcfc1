#!/usr/bin/env bash
# The plug-in scrobbling inside the simulated player against a local
# stand-in for the Last.fm services: builds what is missing, starts the
# stand-in, plays scripts/demo_scenario.txt (five files with non-Latin names:
# three qualify, one is too short, one is outside the filter), then prints
# the plays the service received, the status log and Queue.xml, and saves a
# screenshot of the player's window to build/demo/player.png.
set -uo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
demo=$root/build/demo

./scripts/bootstrap.sh || exit 1
if [ ! -f build/win64/plugin/CVAudioScrobbler.dll ] || [ ! -f build/win64/tools/player/simulated_player.exe ]; then
  cmake --preset win64 >/dev/null || exit 1
  cmake --build --preset win64 -j"$(nproc)" --target cvas_plugin simulated_player || exit 1
fi

rm -rf "$demo"
mkdir -p "$demo"
python3 tools/standin/lastfm_standin.py --port 0 --lifetime 600 --user tester:secret \
  --record "$demo/plays.jsonl" --journal "$demo/requests.jsonl" >"$demo/port" 2>"$demo/standin.log" &
standin=$!
trap 'kill $standin 2>/dev/null' EXIT
for _ in $(seq 100); do
  [ -s "$demo/port" ] && break
  sleep 0.1
done
port=$(head -n 1 "$demo/port")
[ -n "$port" ] || { echo "demo: the stand-in service did not start" >&2; cat "$demo/standin.log" >&2; exit 1; }
echo "=== stand-in service on http://127.0.0.1:$port"

echo "=== the simulated player"
bash scripts/run_player.sh --dll build/win64/plugin/CVAudioScrobbler.dll \
  --service "http://127.0.0.1:$port" --setting Enabled=True --setting PollTimeout=100 \
  --prefix "$demo/prefix" --screenshot "$demo/player.png" scripts/demo_scenario.txt \
  -- --size 900x420
status=$?

data=$(bash -c 'source scripts/run_player.sh; player_appdata "$1"' _ "$demo/prefix")/Ostrana/last.fm
echo "=== plays the service received"
cat "$demo/plays.jsonl"
echo "=== status log (newest first)"
cat "$data/StatusLog.txt"; echo
echo "=== Queue.xml"
cat "$data/Queue.xml"; echo
echo "=== screenshot: $demo/player.png"
exit $status
