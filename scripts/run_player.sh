#!/usr/bin/env bash
# Runs the simulated player (tools/player) on a scenario, in a fresh Wine
# prefix of its own and under an Xvfb display of its own: registers control
# DLLs with Wine's regsvr32, writes a Settings.INI that points the plug-in at
# a stand-in service, runs the player and removes the prefix afterwards.
#
# Usage: run_player.sh [options] SCENARIO [-- PLAYER_OPTIONS...]
#   --dll FILE            copy the DLL into the prefix and register it (repeatable)
#   --player FILE         the player (default: build/win64/tools/player/simulated_player.exe)
#   --wine FILE           wine64 (default: /usr/lib/wine/wine64, else wine64 on the PATH)
#   --pristine DIR        the prefix to copy (default: build/win64/wineprefix, made when missing)
#   --prefix DIR          make the fresh prefix here and keep it afterwards
#   --again               run in the prefix that --prefix names, kept from an
#                         earlier run, as it is: the player starts again
#   --service URL         write a Settings.INI whose endpoints point at URL (http://127.0.0.1:PORT)
#   --user NAME:PASSWORD  the account in that Settings.INI (default tester:secret)
#   --setting KEY=VALUE   one more key of its section General (repeatable; wins over the above)
#   --screenshot FILE     the player's window at the end (.png, else BMP)
#   --timeout SECONDS     the player's limit of real time (default 600)
#   --screen WxHxD        the Xvfb screen (default 1280x1024x24)
#   --show-logs           print the plug-in's status and failed logs afterwards
# PLAYER_OPTIONS go to the player as they are (--progid, --size, --trace, ...).
# The exit code is the player's.
#
# Sourced, it only defines its functions (player_fresh_prefix,
# player_write_settings, player_session, ...) for other scripts.

player_root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# A Unix path as Wine sees it through drive Z:.
player_windows_path() {
  local path
  path=$(realpath -m "$1")
  printf 'Z:%s' "${path//\//\\}"
}

player_default_wine() {
  if [ -x /usr/lib/wine/wine64 ]; then echo /usr/lib/wine/wine64; else command -v wine64; fi
}

# The Windows files are hard links into the pristine prefix, which no run
# writes; the registry and the .ini files, which a run changes, are copies.
# Tests may use the pristine prefix meanwhile: a file of theirs that goes
# while it is linked is no fault, and what they left in the user's folders
# (temporary files, the plug-in's data) is not taken.
player_fresh_prefix() { # PRISTINE FRESH
  local pristine=$1 fresh=$2
  mkdir -p "$fresh" || return 1
  cp -al "$pristine/drive_c" "$fresh/" 2>/dev/null
  [ -d "$fresh/drive_c/windows/system32" ] || return 1
  rm -rf "$fresh"/drive_c/users/*/Temp/* "$fresh"/drive_c/users/*/Documents/Ostrana \
    "$fresh"/drive_c/users/*/AppData/Roaming/Ostrana
  cp -a "$pristine/dosdevices" "$pristine/.update-timestamp" "$fresh/" || return 1
  cp "$pristine"/*.reg "$fresh/" || return 1
  local ini
  for ini in "$fresh"/drive_c/windows/*.ini; do
    cp --remove-destination "$pristine/drive_c/windows/$(basename "$ini")" "$ini" || return 1
  done
  # Windows that Wine manages itself, not the window manager: without this
  # every new window waits two seconds for a window manager that Xvfb lacks.
  printf '\n[Software\\\\Wine\\\\X11 Driver] %s\n"Managed"="N"\n' "$(date +%s)" >>"$fresh/user.reg"
}

# The user's roaming application-data folder inside a prefix.
player_appdata() { # PREFIX
  local users=$1/drive_c/users
  printf '%s/%s/AppData/Roaming' "$users" "$(ls "$users" | grep -vx Public | head -n 1)"
}

# Settings.INI in the plug-in's data folder, UTF-16LE, the password in its
# stored form ("!" and base64 of its UTF-16LE bytes).
player_write_settings() { # PREFIX SERVICE_URL NAME:PASSWORD [KEY=VALUE...]
  local prefix=$1 service=${2%/} account=$3
  shift 3
  local folder password line key
  folder="$(player_appdata "$prefix")/Ostrana/last.fm"
  mkdir -p "$folder" || return 1
  password=$(printf '%s' "${account#*:}" | iconv -f UTF-8 -t UTF-16LE | base64 -w 0)
  local -a lines=(
    "Enabled=True"
    "UserName=${account%%:*}"
    "Password=!$password"
    "url=$service/?hs=true&p=1.1"
    "BuddiesUrl=$service/1.0/user/%s/friends.xml"
    "RecentTracksUrl=$service/1.0/user/%s/recenttracks.xml"
  )
  # A key given again replaces the one above: the first of a name would win.
  for line in "$@"; do
    key=${line%%=*}
    lines=("${lines[@]/#$key=*/}")
    lines+=("$line")
  done
  {
    printf '[General]\r\n'
    for line in "${lines[@]}"; do
      [ -n "$line" ] && printf '%s\r\n' "$line"
    done
  } | iconv -f UTF-8 -t UTF-16LE | { printf '\xff\xfe'; cat; } >"$folder/Settings.INI"
}

# Runs inside Xvfb: starts the prefix's wineserver with none of our pipes
# (a server that inherits them keeps a caller such as ctest waiting), then
# registers the DLLs (Windows paths) and runs the player; ends the server.
player_session() { # PREFIX WINE [DLL...] -- PLAYER [ARGS...]
  local prefix=$1 wine=$2
  shift 2
  local -a dlls=()
  while [ $# -gt 0 ] && [ "$1" != -- ]; do dlls+=("$1"); shift; done
  shift
  export WINEPREFIX=$prefix WINEDEBUG=${WINEDEBUG:--all} WINEDLLOVERRIDES="mscoree,mshtml="
  unset http_proxy https_proxy HTTP_PROXY HTTPS_PROXY all_proxy ALL_PROXY
  local server
  server=$(dirname "$wine")/wineserver
  [ -x "$server" ] || server=wineserver
  timeout 120 "$wine" cmd /c exit </dev/null >/dev/null 2>&1
  local dll status=0
  for dll in "${dlls[@]}"; do
    if ! timeout 120 "$wine" regsvr32 /s "$dll" </dev/null; then
      echo "run_player: regsvr32 could not register $dll" >&2
      status=1
    fi
  done
  if [ $status -eq 0 ]; then
    "$wine" "$@" </dev/null
    status=$?
  fi
  "$server" -k 2>/dev/null
  "$server" -w 2>/dev/null
  return $status
}

player_main() {
  local wine player pristine prefix="" service="" account=tester:secret screenshot=""
  local timeout_seconds=600 screen=1280x1024x24 show_logs=false scenario="" again=false
  local -a dlls=() settings=() player_options=()
  wine=$(player_default_wine)
  player=$player_root/build/win64/tools/player/simulated_player.exe
  pristine=$player_root/build/win64/wineprefix
  while [ $# -gt 0 ]; do
    case $1 in
      --dll) dlls+=("$2"); shift 2 ;;
      --player) player=$2; shift 2 ;;
      --wine) wine=$2; shift 2 ;;
      --pristine) pristine=$2; shift 2 ;;
      --prefix) prefix=$2; shift 2 ;;
      --again) again=true; shift ;;
      --service) service=$2; shift 2 ;;
      --user) account=$2; shift 2 ;;
      --setting) settings+=("$2"); shift 2 ;;
      --screenshot) screenshot=$2; shift 2 ;;
      --timeout) timeout_seconds=$2; shift 2 ;;
      --screen) screen=$2; shift 2 ;;
      --show-logs) show_logs=true; shift ;;
      --) shift; player_options=("$@"); break ;;
      -*) echo "run_player: unknown option $1" >&2; return 2 ;;
      *) scenario=$1; shift ;;
    esac
  done
  if [ -z "$scenario" ] || [ ! -f "$scenario" ]; then
    echo "run_player: no scenario file given, or it is missing: $scenario" >&2
    return 2
  fi
  [ -f "$player" ] || { echo "run_player: no player at $player" >&2; return 2; }
  pristine=$(realpath -m "$pristine")
  [ -n "$prefix" ] && prefix=$(realpath -m "$prefix")
  if [ ! -f "$pristine/.cvas-ready" ]; then
    WINEPREFIX=$pristine "$player_root/scripts/wine-prefix.sh" "$wine" || return 1
  fi

  if $again && [ ! -f "$prefix/system.reg" ]; then
    echo "run_player: --again needs the --prefix of an earlier run: $prefix" >&2
    return 2
  fi
  local keep=true
  if [ -z "$prefix" ]; then
    # Beside the pristine prefix: hard links need the same file system.
    prefix=$(mktemp -d "$(dirname "$pristine")/player-prefix.XXXXXX") || return 1
    keep=false
  fi
  # shellcheck disable=SC2064 # the values are meant to be fixed now
  trap "$keep || rm -rf '$prefix'" EXIT
  if ! $again; then
    player_fresh_prefix "$pristine" "$prefix" || { echo "run_player: the prefix was not made" >&2; return 1; }
  fi

  local plugins="$prefix/drive_c/Program Files/Simulated player/Plugins" dll
  local -a windows_dlls=()
  mkdir -p "$plugins"
  for dll in "${dlls[@]}"; do
    cp "$dll" "$plugins/" || return 1
    windows_dlls+=("C:\\Program Files\\Simulated player\\Plugins\\$(basename "$dll")")
  done
  if [ -n "$service" ]; then
    player_write_settings "$prefix" "$service" "$account" "${settings[@]}" || return 1
  fi
  local -a arguments=(--timeout "$timeout_seconds")
  [ -n "$screenshot" ] && arguments+=(--screenshot "$(player_windows_path "$screenshot")")
  arguments+=("${player_options[@]}" "$(player_windows_path "$scenario")")

  local status
  timeout $((timeout_seconds + 180)) xvfb-run -a -s "-screen 0 $screen" \
    bash -c 'source "$1"; shift; player_session "$@"' player_session "${BASH_SOURCE[0]}" \
    "$prefix" "$wine" "${windows_dlls[@]}" -- "$player" "${arguments[@]}"
  status=$?
  if $show_logs; then
    local log
    for log in StatusLog.txt FailedLog.txt; do
      log="$(player_appdata "$prefix")/Ostrana/last.fm/$log"
      [ -f "$log" ] && { echo "--- $(basename "$log")"; cat "$log"; echo; }
    done
  fi
  return $status
}

if [ "${BASH_SOURCE[0]}" = "$0" ]; then
  set -u
  player_main "$@"
  exit $?
fi
