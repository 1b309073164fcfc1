#!/usr/bin/env bash
# Installs what is missing, builds the three presets, runs the native tests,
# the Windows tests under Wine (inside Xvfb, for the tests that need a
# display) and a short fuzz run, then prints the counts. Exits non-zero on
# any failure.
set -uo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
start=$(date +%s)

step() { printf '\n=== %s\n' "$*"; }
fail() { echo "test.sh: $*" >&2; exit 1; }

step "bootstrap"
./scripts/bootstrap.sh || fail "bootstrap failed"

jobs=$(nproc)
for preset in native win64 win32; do
  step "configure and build: $preset"
  cmake --preset "$preset" >"build-$preset.configure.log" 2>&1 \
    || { cat "build-$preset.configure.log"; fail "configure $preset failed"; }
  rm -f "build-$preset.configure.log"
  cmake --build --preset "$preset" -j"$jobs" || fail "build $preset failed"
done

status=0
step "native tests"
ctest --preset native -j"$jobs" || status=1

step "Windows tests under Wine"
export WINEDEBUG=-all
xvfb-run -a -s "-screen 0 1280x1024x24" ctest --preset win64 -j"$jobs" || status=1
WINEPREFIX="$root/build/win64/wineprefix" /usr/lib/wine/wineserver -k 2>/dev/null || true

# 32-bit Wine cannot be installed from every package registry, and bootstrap
# does not try: where Debian's wine32:i386 has put its loader, the 32-bit
# build's tests run too.
wine32_log=build/win32/Testing/Temporary/LastTest.log
rm -f "$wine32_log"
if [ -x /usr/lib/wine/wine ]; then
  step "Windows tests under 32-bit Wine"
  xvfb-run -a -s "-screen 0 1280x1024x24" ctest --preset win32 -j"$jobs" || status=1
  WINEPREFIX="$root/build/win32/wineprefix" /usr/lib/wine/wineserver -k 2>/dev/null || true
  wine32_note=""
else
  wine32_note="skipped: 32-bit Wine (/usr/lib/wine/wine from wine32:i386) is not installed"
  echo "win32/Wine: $wine32_note"
fi

# The release as users get it (scripts/release.sh: both DLLs with their
# symbols, the installer), and its installer under 64-bit Wine: upgrade,
# registration, the player with the installed plug-in, uninstall.
step "release build and install test"
install_result=failed
if ./scripts/release.sh; then
  if timeout 900 bash tests/scrobbler/run_with_standin.sh python3 tools/standin/lastfm_standin.py \
    bash tests/installer/install_test.sh scripts/run_player.sh /usr/lib/wine/wine64 \
    build/win64/wineprefix build/win64/tools/player/simulated_player.exe build/release \
    build/win64/tests/earlier_version build/win32/tests/earlier_version; then
    install_result=passed
  else
    status=1
  fi
else
  status=1
fi

step "fuzz smoke run"
fuzz_seconds=${CVAS_FUZZ_SECONDS:-60}
./scripts/fuzz.sh "$fuzz_seconds" || status=1

# The test cases GoogleTest ran, read from ctest's own logs.
count_cases() { # LOG WORD
  grep -hoE "^\[  $2  \] [0-9]+ tests?" "$1" 2>/dev/null | awk '{s += $(NF-1)} END {print s + 0}'
}
native_log=build/native/Testing/Temporary/LastTest.log
wine_log=build/win64/Testing/Temporary/LastTest.log
native_passed=$(count_cases "$native_log" PASSED)
native_failed=$(count_cases "$native_log" FAILED)
wine_passed=$(count_cases "$wine_log" PASSED)
wine_failed=$(count_cases "$wine_log" FAILED)
wine32_passed=$(count_cases "$wine32_log" PASSED)
wine32_failed=$(count_cases "$wine32_log" FAILED)

step "summary"
echo "native:      $native_passed test cases passed, $native_failed failed"
echo "win64/Wine:  $wine_passed test cases passed, $wine_failed failed"
if [ -n "$wine32_note" ]; then
  echo "win32/Wine:  $wine32_note"
else
  echo "win32/Wine:  $wine32_passed test cases passed, $wine32_failed failed"
fi
echo "install:     build/release, the install test $install_result"
echo "fuzz smoke:  ${fuzz_seconds}s per target"
echo "wall time:   $(( $(date +%s) - start ))s"
[ "$native_passed" -gt 0 ] && [ "$wine_passed" -gt 0 ] || { echo "no tests ran" >&2; status=1; }
[ -n "$wine32_note" ] || [ "$wine32_passed" -gt 0 ] || { echo "no 32-bit tests ran" >&2; status=1; }
[ $((native_failed + wine_failed + wine32_failed)) -eq 0 ] || status=1
[ $status -eq 0 ] || echo "SOME CHECKS FAILED" >&2
echo "$((native_passed + wine_passed + wine32_passed)) passed," \
  "$((native_failed + wine_failed + wine32_failed)) failed"
exit $status
