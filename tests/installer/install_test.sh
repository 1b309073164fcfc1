#!/usr/bin/env bash
# The release's installer under 64-bit Wine, in a fresh copy of the pristine
# prefix: an earlier version (0.9.0.0, built in tests/ from the plug-in's own
# objects) installed silently into a folder of the user's choice, then this
# version over it, found there and replaced in place: both DLLs
# in the player's plug-in folder, the 64-bit one registered in the 64-bit
# view (class, ProgID, type library, the player's entry with the new version,
# the uninstall entry), the 32-bit one reported as not registered, which
# leaves the exit code 0. The simulated player then loads the installed
# plug-in and one play reaches the stand-in service; while the player holds
# the DLL an installer refuses to replace it. The silent uninstaller removes
# the registration and the files and keeps the data folder. Installed again,
# into the default folder, and uninstalled with /REMOVEDATA, it removes the
# data folder and nothing beside it.
# Run by run_with_standin.sh: CVAS_STANDIN_PORT and CVAS_STANDIN_FOLDER.
# Usage: install_test.sh RUN_PLAYER WINE64 PRISTINE_PREFIX PLAYER_EXE RELEASE_DIR
#                        EARLIER_DIR64 EARLIER_DIR32
# (EARLIER_DIR*: build/win64/tests/earlier_version, build/win32/tests/earlier_version)
set -u
run_player=$1 wine=$2 pristine=$3 player=$4 release=$5 earlier64=$6 earlier32=$7
# Absolute: makensis reads its files from the script's folder.
release=$(realpath "$release") earlier64=$(realpath "$earlier64") earlier32=$(realpath "$earlier32")
# shellcheck source-path=SCRIPTDIR source=../plugin/e2e_checks.sh
source "$(dirname "$0")/../plugin/e2e_checks.sh"
here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source-path=SCRIPTDIR source=../../scripts/run_player.sh
source "$run_player"
start=$(date +%s)

version=$(head -n 1 "$here/../../VERSION")
earlier_version=$(head -n 1 "$earlier64/VERSION")
setup=$release/CVAudioScrobbler-$version-setup.exe
dll64=$release/CVAudioScrobbler-$version-win64.dll
dll32=$release/CVAudioScrobbler-$version-win32.dll
for file in "$setup" "$dll64" "$dll32" "$earlier64/CVAudioScrobbler.dll" \
  "$earlier32/CVAudioScrobbler.dll" "$player"; do
  [ -f "$file" ] || { echo "install_test: missing $file (scripts/release.sh and the win64 and win32 builds make it)" >&2; exit 1; }
done
[ "$(head -n 1 "$earlier32/VERSION")" = "$earlier_version" ] || { echo "install_test: the two earlier DLLs differ in version" >&2; exit 1; }
server=$(dirname "$wine")/wineserver
[ -x "$server" ] || server=wineserver

pristine=$(realpath "$pristine")
if [ ! -f "$pristine/.cvas-ready" ]; then
  WINEPREFIX=$pristine "$here/../../scripts/wine-prefix.sh" "$wine" || exit 1
fi
# Beside the pristine prefix: its Windows files are hard links.
prefix=$(mktemp -d "$(dirname "$pristine")/install-test.XXXXXX")
player_pid=
cleanup() {
  if [ -n "$player_pid" ] && kill -0 "$player_pid" 2>/dev/null; then
    kill "$player_pid" 2>/dev/null
    wait "$player_pid" 2>/dev/null
  fi
  WINEPREFIX=$prefix timeout 30 "$server" -k 2>/dev/null
  rm -rf "$prefix" "$work"
}
trap cleanup EXIT
player_fresh_prefix "$pristine" "$prefix" || { echo "install_test: no fresh prefix" >&2; exit 1; }

export WINEPREFIX=$prefix WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
unset http_proxy https_proxy HTTP_PROXY HTTPS_PROXY all_proxy ALL_PROXY
# A Windows program of the prefix, waited for; then every process of the
# prefix has ended and its registry is in system.reg.
run_windows() { # PROGRAM [ARGS...]; its exit code
  local status
  timeout 300 "$wine" "$@" </dev/null >>"$work/wine.txt" 2>&1
  status=$?
  timeout 120 "$server" -w
  return $status
}

# The earlier version goes into a folder of the user's choice, and the
# upgrade finds it there; a first installation goes to the default folder.
folder=$prefix/drive_c/Players/Corvina/Plugins
windows_folder='C:\Players\Corvina\Plugins'
default_folder="$prefix/drive_c/Program Files/Corvina/Plugins"
default_windows_folder='C:\Program Files\Corvina\Plugins'
appdata=$(player_appdata "$prefix")
data="$appdata/Ostrana/last.fm"
temp="$(dirname "$(dirname "$appdata")")/Temp"
utf8() { iconv -f UTF-16 -t UTF-8 "$1" | tr -d '\r'; }

# The values of one key of HKEY_LOCAL_MACHINE in the 64-bit view, as
# system.reg holds them (KEY with single backslashes); fails when the key is
# not there. First it makes sure that the file is the machine hive of a
# 64-bit prefix.
registry_key() { # KEY
  local file=$prefix/system.reg
  if ! head -n 4 "$file" | tr -d '\r' | grep -qx ';; All keys relative to REGISTRY\\\\Machine' ||
    ! head -n 4 "$file" | grep -q '^#arch=win64'; then
    fail "$file is not the machine hive of a 64-bit prefix"
    return 2
  fi
  # ENVIRON, not -v, which would read the backslashes as escapes.
  tr -d '\r' <"$file" | KEY="[${1//\\/\\\\}]" awk '
    BEGIN { key = ENVIRON["KEY"] }
    !on && (index($0, key " ") == 1 || $0 == key) { on = 1; found = 1; next }
    on && /^$/ { exit }
    on && !/^#/ { print }
    END { exit !found }'
}
key_has() { # KEY TEXT...: the key is there and holds each TEXT (a line of it)
  local key=$1 text values
  shift
  values=$(registry_key "$key") || { fail "no key HKLM\\$key"; return; }
  for text in "$@"; do
    grep -qxF -- "$text" <<<"$values" || fail "HKLM\\$key lacks $text"
  done
}
key_gone() { # KEY: neither the key nor any key below it is there
  registry_key "$1" >/dev/null
  [ $? -eq 1 ] || { fail "HKLM\\$1 stayed"; return; }
  tr -d '\r' <"$prefix/system.reg" | KEY="[${1//\\/\\\\}\\\\" awk '
    index($0, ENVIRON["KEY"]) == 1 { found = 1; print "FAILED: a key below it stayed: " $0; exit }
    END { exit found }' >&2 || fail "HKLM\\$1 stayed"
}
as_reg() { local text=${1//\\/\\\\}; printf '%s' "${text//\"/\\\"}"; }

clsid='{1E0C5BAE-BD48-48CD-B03E-CE3B3761106C}'
libid='{5CEEA510-8C7A-4581-B911-4DCCCE0A242D}'
class_key="Software\\Classes\\CLSID\\$clsid"
typelib_key="Software\\Classes\\Typelib\\$libid"
host_key='Software\Ostrana\Corvina 14\Plugins\Interface\last.fm'
uninstall_key='Software\Microsoft\Windows\CurrentVersion\Uninstall\CVAudioScrobbler'
installed64="$windows_folder\\CVAudioScrobbler.dll"

echo "--- the earlier version, $earlier_version"
makensis -V2 -WX -DVERSION="$earlier_version" -DDLL64="$earlier64/CVAudioScrobbler.dll" \
  -DDLL32="$earlier32/CVAudioScrobbler.dll" -DOUTFILE="$work/earlier-setup.exe" \
  "$here/../../installer/CVAudioScrobbler.nsi" || { echo "install_test: makensis failed" >&2; exit 1; }
cp "$work/earlier-setup.exe" "$setup" "$prefix/drive_c/"
run_windows 'C:\earlier-setup.exe' /S "/D=$windows_folder" || fail "the earlier version's silent install ended with $?"
key_has "$host_key" "\"Version\"=\"$earlier_version\""
key_has "$uninstall_key" "\"DisplayVersion\"=\"$earlier_version\""
cmp -s "$earlier64/CVAudioScrobbler.dll" "$folder/CVAudioScrobbler.dll" \
  || fail "the earlier 64-bit DLL is not in place"

echo "--- $version over it, silently"
run_windows "C:\\$(basename "$setup")" /S || fail "the silent install ended with $?"
utf8 "$folder/CVAudioScrobbler-setup.log" >"$work/setup.log" || fail "no setup log"
cat "$work/setup.log"
cmp -s "$dll64" "$folder/CVAudioScrobbler.dll" || fail "CVAudioScrobbler.dll is not the release's 64-bit DLL"
cmp -s "$dll32" "$folder/CVAudioScrobbler32.dll" || fail "CVAudioScrobbler32.dll is not the release's 32-bit DLL"
[ -f "$folder/CVAudioScrobbler-uninstall.exe" ] || fail "no uninstaller"
has "$work/setup.log" "CVAudioScrobbler $version: installing into $windows_folder"
has "$work/setup.log" "Replacing version $earlier_version (installed in $windows_folder) in place"
has "$work/setup.log" "Registered for 64-bit players: CVAudioScrobbler.dll"
has "$work/setup.log" "NOT registered for 32-bit players: this Windows runs no 32-bit programs"
lacks "$work/setup.log" "FAILED"
[ "$(tail -n 1 "$work/setup.log")" = Done ] || fail "the setup log does not end with Done"
key_has "$class_key\\InprocServer32" "@=\"$(as_reg "$installed64")\"" '"ThreadingModel"="Apartment"'
key_has "$class_key\\TypeLib" "@=\"$libid\""
key_has 'Software\Classes\CVAudioScrobbler.Interface\CurVer' '@="CVAudioScrobbler.Interface.1"'
key_has "$typelib_key\\1.0\\0\\win64" "@=\"$(as_reg "\\\\?\\$installed64")\""
key_has "$host_key" "\"CLSID\"=\"$clsid\"" "\"Version\"=\"$version\"" '"IVersion"=dword:00000001'
key_has "$uninstall_key" "\"DisplayVersion\"=\"$version\"" \
  "\"InstallLocation\"=\"$(as_reg "$windows_folder")\"" \
  "\"QuietUninstallString\"=\"$(as_reg "\"$windows_folder\\CVAudioScrobbler-uninstall.exe\" /S")\""
[ "$(tr -d '\r' <"$prefix/system.reg" | grep -c '^\[Software\\\\Microsoft\\\\Windows\\\\CurrentVersion\\\\Uninstall\\\\CVAudioScrobbler')" -eq 1 ] \
  || fail "not exactly one uninstall entry"

echo "--- the simulated player with the installed plug-in"
record=$CVAS_STANDIN_FOLDER/record.jsonl
bash "$run_player" --wine "$wine" --pristine "$pristine" --player "$player" --timeout 300 \
  --prefix "$prefix" --again --service "http://127.0.0.1:$CVAS_STANDIN_PORT" \
  --setting PollTimeout=100 --show-logs "$here/install_play.txt" >"$work/player.txt" 2>&1 &
player_pid=$!
# The play reaches the service while the player holds the plug-in.
for _ in $(seq 600); do
  [ -s "$record" ] && break
  kill -0 "$player_pid" 2>/dev/null || break
  sleep 0.5
done
if [ -s "$record" ]; then
  echo "--- an installer while the player holds the DLL"
  before=$(stat -c %y "$folder/CVAudioScrobbler.dll")
  timeout 300 "$wine" 'C:\earlier-setup.exe' /S </dev/null >>"$work/wine.txt" 2>&1
  in_use=$?
  [ $in_use -ne 0 ] || fail "an installer replaced the DLL that the player holds"
  utf8 "$folder/CVAudioScrobbler-setup.log" >"$work/in_use.log"
  grep -F "in use" "$work/in_use.log"
  has "$work/in_use.log" "Stopped: $installed64 is in use by a running program (the player?); nothing was changed."
  cmp -s "$dll64" "$folder/CVAudioScrobbler.dll" || fail "the DLL that the player holds was changed"
  [ "$(stat -c %y "$folder/CVAudioScrobbler.dll")" = "$before" ] || fail "the DLL that the player holds was written"
else
  fail "no play reached the service"
fi
printf 'done' >"$prefix/drive_c/install_test_done.txt"
wait "$player_pid"
player_status=$?
player_pid=
[ $player_status -eq 0 ] || fail "the player ended with $player_status"
has "$work/player.txt" "Init: S_OK"
has "$work/player.txt" "Terminate: S_OK"
has "$work/player.txt" "summary: references still held by the plug-in: 0 (none)"
lacks "$work/player.txt" "await: "
[ "$(wc -l <"$record")" -eq 1 ] || fail "the service took $(wc -l <"$record") plays, not 1"
has "$record" '"artist":"Installed","track":"Play","album":"Setup"'
[ -f "$data/StatusLog.txt" ] || fail "the plug-in wrote no status log"

echo "--- the silent uninstall"
run_windows "$windows_folder\\CVAudioScrobbler-uninstall.exe" /S || fail "the uninstaller ended with $?"
utf8 "$temp/CVAudioScrobbler-uninstall.log" >"$work/uninstall.log" \
  || fail "no uninstall log"
cat "$work/uninstall.log"
has "$work/uninstall.log" "Unregistered for 64-bit players: CVAudioScrobbler.dll"
has "$work/uninstall.log" "Removed the player's entry HKLM\\$host_key"
has "$work/uninstall.log" "Kept the data folder"
lacks "$work/uninstall.log" "FAILED"
[ "$(tail -n 1 "$work/uninstall.log")" = Done ] || fail "the uninstall log does not end with Done"
[ -e "$folder" ] && fail "the plug-in folder stayed: $(ls "$folder")"
for key in "$class_key" "$typelib_key" 'Software\Classes\CVAudioScrobbler.Interface' \
  'Software\Classes\CVAudioScrobbler.Interface.1' "$host_key" "$uninstall_key"; do
  key_gone "$key"
done
for file in Settings.INI StatusLog.txt; do
  [ -f "$data/$file" ] || fail "the uninstaller removed $file from the data folder"
done

echo "--- installed again, uninstalled with /REMOVEDATA"
printf 'not ours\n' >"$appdata/Ostrana/beside.txt"
run_windows "C:\\$(basename "$setup")" /S || fail "the second silent install ended with $?"
[ -f "$default_folder/CVAudioScrobbler.dll" ] || fail "the second install put no DLL into the default folder"
run_windows "$default_windows_folder\\CVAudioScrobbler-uninstall.exe" /S /REMOVEDATA \
  || fail "the uninstaller ended with $?"
utf8 "$temp/CVAudioScrobbler-uninstall.log" >"$work/remove.log"
has "$work/remove.log" "Removed the data folder"
[ -e "$data" ] && fail "the data folder stayed after /REMOVEDATA"
[ -f "$appdata/Ostrana/beside.txt" ] || fail "/REMOVEDATA removed a file beside the data folder"
[ -e "$default_folder" ] && fail "the plug-in folder stayed after the second uninstall"

if [ "$failures" -ne 0 ]; then
  echo "--- the player's output" >&2
  cat "$work/player.txt" >&2
  exit 1
fi
echo "install_test: all checks passed ($(( $(date +%s) - start ))s)"
