#!/usr/bin/env bash
# Shows the options sheet's pages and the replacement dialog from their
# templates under Xvfb, in a fresh Wine prefix of its own at the chosen DPI,
# and saves a picture of each in OUTDIR (main.png, logging.png, ...). The
# preview also prints what its layout check finds; the exit code is its own
# (0 nothing found, 1 faults found, 2 failures).
#
# Usage: dialog_preview.sh [options] OUTDIR
#   --dpi N          the screen's DPI (default 96; 144 for 150 %)
#   --preview FILE   the program (default: build/win64/tools/dialog_preview/dialog_preview.exe)
#   --pristine DIR   the prefix to copy (default: build/win64/wineprefix, made when missing)
#   --wine FILE      wine64 (default: /usr/lib/wine/wine64, else wine64 on the PATH)
#   --timeout SECS   the limit of the whole run (default 300)
set -u
# shellcheck source=run_player.sh
source "$(dirname "${BASH_SOURCE[0]}")/run_player.sh"

# Runs inside Xvfb: the prefix's server first, with none of our pipes, then
# the DPI, then the preview; ends the server.
preview_session() { # PREFIX WINE DPI PREVIEW OUTDIR
  local prefix=$1 wine=$2 dpi=$3 preview=$4 outdir=$5
  export WINEPREFIX=$prefix WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
  local server status
  server=$(dirname "$wine")/wineserver
  [ -x "$server" ] || server=wineserver
  timeout 120 "$wine" cmd /c exit </dev/null >/dev/null 2>&1
  if ! timeout 120 "$wine" reg add 'HKCU\Control Panel\Desktop' /v LogPixels /t REG_DWORD \
    /d "$dpi" /f </dev/null >/dev/null 2>&1; then
    echo "dialog_preview: the DPI could not be set" >&2
    status=2
  else
    timeout 120 "$wine" "$preview" "$outdir" </dev/null
    status=$?
  fi
  "$server" -k 2>/dev/null
  "$server" -w 2>/dev/null
  return $status
}

preview_main() {
  local dpi=96 wine preview pristine outdir="" timeout_seconds=300
  wine=$(player_default_wine)
  preview=$player_root/build/win64/tools/dialog_preview/dialog_preview.exe
  pristine=$player_root/build/win64/wineprefix
  while [ $# -gt 0 ]; do
    case $1 in
      --dpi) dpi=$2; shift 2 ;;
      --preview) preview=$2; shift 2 ;;
      --pristine) pristine=$2; shift 2 ;;
      --wine) wine=$2; shift 2 ;;
      --timeout) timeout_seconds=$2; shift 2 ;;
      -*) echo "dialog_preview: unknown option $1" >&2; return 2 ;;
      *) outdir=$1; shift ;;
    esac
  done
  if [ -z "$outdir" ]; then
    echo "usage: dialog_preview.sh [--dpi N] [--preview FILE] [--pristine DIR] OUTDIR" >&2
    return 2
  fi
  case $dpi in
    '' | *[!0-9]*) echo "dialog_preview: --dpi takes a number: $dpi" >&2; return 2 ;;
  esac
  [ -f "$preview" ] || { echo "dialog_preview: no preview at $preview" >&2; return 2; }
  mkdir -p "$outdir" || return 2
  pristine=$(realpath -m "$pristine")
  if [ ! -f "$pristine/.cvas-ready" ]; then
    WINEPREFIX=$pristine "$player_root/scripts/wine-prefix.sh" "$wine" || return 2
  fi
  # Beside the pristine prefix: its files are hard links into it.
  local prefix
  prefix=$(mktemp -d "$(dirname "$pristine")/preview-prefix.XXXXXX") || return 2
  # shellcheck disable=SC2064 # the path is meant to be fixed now
  trap "rm -rf '$prefix'" EXIT
  player_fresh_prefix "$pristine" "$prefix" || { echo "dialog_preview: the prefix was not made" >&2; return 2; }

  timeout $((timeout_seconds + 60)) xvfb-run -a -s "-screen 0 1280x1024x24" \
    bash -c 'source "$1"; shift; preview_session "$@"' preview_session "${BASH_SOURCE[0]}" \
    "$prefix" "$wine" "$dpi" "$(realpath "$preview")" "$(player_windows_path "$outdir")"
}

if [ "${BASH_SOURCE[0]}" = "$0" ]; then
  preview_main "$@"
  exit $?
fi
