#!/usr/bin/env bash
# The simulated player hosting the test control in Wine's ActiveX container
# under Xvfb, through scripts/run_player.sh: what the control reads through
# the automation object, the player's report and reference count, the
# screenshot; and a ProgID that is not registered.
# Usage: player_host_test.sh PYTHON3 RUN_PLAYER WINE64 PRISTINE_PREFIX PLAYER_EXE CONTROL_DLL
set -u
python=$1 run_player=$2 wine=$3 pristine=$4 player=$5 dll=$6
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
fail() { echo "FAILED: $*" >&2; failures=$((failures + 1)); }

run() { # OUTPUT [RUN_PLAYER OPTIONS...]
  local output=$1
  shift
  bash "$run_player" --wine "$wine" --pristine "$pristine" --player "$player" --timeout 120 "$@" \
    >"$output" 2>"$output.err"
}

# 1. The test control hosted, a scenario run, a screenshot taken.
run "$work/out.txt" --dll "$dll" --screenshot "$work/shot.png" "$here/player_host_scenario.txt" \
  -- --progid CvasPlayerTest.Control --size 640x480
status=$?
[ $status -eq 0 ] || fail "the player ended with $status"

# Everything the control printed, in order; thread ids vary.
expected_control='control: Init with an object; window present
control: playlist count 3, current index 0
control: file identity "C:\Music\Low Roar - Nobody.mp3", file name "Low Roar - Nobody.mp3", duration 40, further "extra text", key 101
control: template gives "Low Roar - Nobody (0, Ambient) [NOPE]"
control: query finds 1 file(s)
control: state 0, position 0, index 0, identity "C:\Music\Low Roar - Nobody.mp3"
control: state 2, position 12, index 1, identity "b.ogg"
control: play request for key 103: add 0x00000000, start 0x00000000
control: state 2, position 0, index 2, identity "c.flac"
control: refusals: unknown id 0x80020003, no argument 0x8002000E, get of a method 0x80020003
control: thread query finds 1 file(s)
control: state 0, position 0, index 2, identity "c.flac"
control: keeping a file object for ever
control: Terminate'
actual_control=$(grep '^control: ' "$work/out.txt")
if [ "$actual_control" != "$expected_control" ]; then
  fail "the control's lines differ"
  diff <(echo "$expected_control") <(echo "$actual_control") >&2
fi

# The player's own lines (after the time stamp), each once.
while IFS= read -r line; do
  [ "$(sed -E 's/^\[ *[0-9.]+\] //' "$work/out.txt" | grep -cxF -- "$line")" -eq 1 ] \
    || fail "not once in the report: $line"
done <<'LINES'
hosting CvasPlayerTest.Control
query "~d=a [key]=[101] Filetype=[mp3],[wav],[ogg]": 1 file(s): key 101
Init: S_OK
play entry 1: key 102, b.ogg (-1 s)
play request: add key 103 (c.flac)
play entry 2: key 103, c.flac (31 s)
refused: automation 99: no such member
refused: playlist 5: 0 arguments, not 1
refused: playlist 4: called with flags 2, not as a method
query "artist=[Low Roar] name=[Nobody]": 1 file(s): key 101
end of c.flac, end of the playlist
Terminate: S_OK
summary: plays: 2: keys 102, 103
summary: queries: 2
summary: play requests: 1: keys 103
summary: refused calls: 3
summary: references held after Terminate: 1
summary: references still held by the plug-in: 1 (file 1)
LINES
grep -qE '^summary: skinning calls: 2: thread ([0-9]+) on, thread \1 off$' "$work/out.txt" \
  || fail "the thread's skinning on and off"
grep -q '\] line 25: end$' "$work/out.txt" || fail "no end step"
grep -q 'line 26: ' "$work/out.txt" && fail "a step after end ran"
# The clock ran at 100 times real time through the file's end.
grep -qE '^\[ +43\.000\] end of c\.flac' "$work/out.txt" || fail "c.flac did not end at 43 s"

# The screenshot: a well-formed PNG (checked with zlib, not with the player's
# code) of the window's size, mostly in the control's colour.
"$python" - "$work/shot.png" <<'PY' || fail "the screenshot"
import struct, sys, zlib
data = open(sys.argv[1], "rb").read()
assert data[:8] == b"\x89PNG\r\n\x1a\n", "signature"
at, chunks = 8, {}
while at < len(data):
    length, kind = struct.unpack(">I4s", data[at:at + 8])
    body = data[at + 8:at + 8 + length]
    crc, = struct.unpack(">I", data[at + 8 + length:at + 12 + length])
    assert zlib.crc32(kind + body) == crc, "crc of %s" % kind
    chunks.setdefault(kind, b"")
    chunks[kind] += body
    at += 12 + length
width, height, depth, colour = struct.unpack(">IIBB", chunks[b"IHDR"][:10])
assert (width, height, depth, colour) == (640, 480, 8, 2), (width, height, depth, colour)
raw = zlib.decompress(chunks[b"IDAT"])
assert len(raw) == height * (1 + 3 * width), "size"
green = 0
for y in range(height):
    row = raw[y * (1 + 3 * width) + 1:(y + 1) * (1 + 3 * width)]
    green += sum(1 for x in range(0, len(row), 3) if row[x:x + 3] == b"\x33\x99\x66")
assert green > width * height // 2, "only %d pixels of the control's colour" % green
PY

# 2. A ProgID that nothing registered: the player says so and ends with 2.
run "$work/missing.txt" "$here/player_host_scenario.txt" -- --progid Nobody.Registered
status=$?
[ $status -eq 2 ] || fail "an unregistered ProgID ended with $status, not 2"
grep -q 'the ProgID Nobody.Registered is not registered' "$work/missing.txt.err" \
  || fail "no word of the unregistered ProgID"

if [ $failures -ne 0 ]; then
  echo "--- player output" >&2
  cat "$work/out.txt" "$work/out.txt.err" >&2
  exit 1
fi
echo "player_host_test: all checks passed"
