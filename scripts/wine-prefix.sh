#!/usr/bin/env bash
# Makes the Wine prefix named by $WINEPREFIX once; later calls return at once.
# Usage: wine-prefix.sh WINE64
set -eu
wine64=${1:?usage: wine-prefix.sh WINE64}
: "${WINEPREFIX:?WINEPREFIX must be set}"
if [ -f "$WINEPREFIX/system.reg" ] && [ -f "$WINEPREFIX/.cvas-ready" ]; then
  exit 0
fi
mkdir -p "$WINEPREFIX"
export WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
"$wine64" wineboot --init >/dev/null 2>&1 || true
wineserver_bin=$(dirname "$wine64")/wineserver
[ -x "$wineserver_bin" ] || wineserver_bin=wineserver
"$wineserver_bin" -w || true
# Windows that Wine manages itself, not the window manager: without this every
# new window waits two seconds for a window manager that Xvfb lacks.
"$wine64" reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f >/dev/null 2>&1 || true
# A program that crashes ends at once, with its backtrace on standard error,
# instead of waiting for a crash dialog that nobody closes.
"$wine64" reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f \
  >/dev/null 2>&1 || true
"$wineserver_bin" -w || true
[ -f "$WINEPREFIX/system.reg" ] || { echo "wine prefix was not created in $WINEPREFIX" >&2; exit 1; }
touch "$WINEPREFIX/.cvas-ready"
