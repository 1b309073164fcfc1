#!/usr/bin/env bash
# Pictures of the plug-in's windows under Xvfb, at 96 and at 144 DPI, each in
# a fresh Wine prefix of its own: the plug-in's window with submitted rows,
# every page of the options sheet, the replacement dialog for Add and for
# Modify, the progress window of a fetch of buddies and the buddy dialog,
# saved as build/screenshots/NAME-DPI.png. Each dialog's layout is
# checked as it shows; the faults found are printed.
#
# Usage: scripts/screenshots.sh [--dpi N]...   (default: --dpi 96 --dpi 144)
# Exit code: 0 all saved and no layout fault, 1 layout faults, 2 failures.
set -u
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
# shellcheck source=run_player.sh
source "$root/scripts/run_player.sh"

# Runs inside Xvfb: the prefix's server first, with none of our pipes, then
# the DPI, then the program; ends the server.
screenshots_session() { # PREFIX WINE DPI PROGRAM OUTDIR
  local prefix=$1 wine=$2 dpi=$3 program=$4 outdir=$5
  export WINEPREFIX=$prefix WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
  local server status
  server=$(dirname "$wine")/wineserver
  [ -x "$server" ] || server=wineserver
  timeout 120 "$wine" cmd /c exit </dev/null >/dev/null 2>&1
  if ! timeout 120 "$wine" reg add 'HKCU\Control Panel\Desktop' /v LogPixels /t REG_DWORD \
    /d "$dpi" /f </dev/null >/dev/null 2>&1; then
    echo "screenshots: the DPI could not be set" >&2
    status=2
  else
    timeout 300 "$wine" "$program" "$outdir" "$dpi" </dev/null
    status=$?
  fi
  "$server" -k 2>/dev/null
  "$server" -w 2>/dev/null
  return $status
}

screenshots_main() {
  local -a dpis=()
  while [ $# -gt 0 ]; do
    case $1 in
      --dpi) dpis+=("$2"); shift 2 ;;
      *) echo "usage: scripts/screenshots.sh [--dpi N]..." >&2; return 2 ;;
    esac
  done
  [ ${#dpis[@]} -gt 0 ] || dpis=(96 144)
  cd "$root" || return 2
  local wine pristine program outdir status=0 dpi run
  wine=$(player_default_wine)
  pristine=$root/build/win64/wineprefix
  program=$root/build/win64/tools/screenshots/screenshots.exe
  outdir=$root/build/screenshots
  if [ ! -f "$program" ]; then
    ./scripts/bootstrap.sh || return 2
    { cmake --preset win64 && cmake --build --preset win64 -j"$(nproc)" --target screenshots; } \
      >/dev/null || return 2
  fi
  if [ ! -f "$pristine/.cvas-ready" ]; then
    WINEPREFIX=$pristine ./scripts/wine-prefix.sh "$wine" || return 2
  fi
  mkdir -p "$outdir"
  for dpi in "${dpis[@]}"; do
    echo "=== $dpi DPI"
    # No picture of an earlier run is left to pass for one of this run.
    rm -f "$outdir"/*-"$dpi".png
    # Beside the pristine prefix: its files are hard links into it.
    local prefix
    prefix=$(mktemp -d "$(dirname "$pristine")/screenshots-prefix.XXXXXX") || return 2
    if player_fresh_prefix "$pristine" "$prefix"; then
      timeout 480 xvfb-run -a -s "-screen 0 1280x1024x24" \
        bash -c 'source "$1"; shift; screenshots_session "$@"' screenshots_session \
        "$root/scripts/screenshots.sh" "$prefix" "$wine" "$dpi" "$program" \
        "$(player_windows_path "$outdir")"
      run=$?
    else
      echo "screenshots: the prefix was not made" >&2
      run=2
    fi
    rm -rf "$prefix"
    [ $run -gt $status ] && status=$run
  done
  return $status
}

if [ "${BASH_SOURCE[0]}" = "$0" ]; then
  screenshots_main "$@"
  exit $?
fi
