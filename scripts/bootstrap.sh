#!/usr/bin/env bash
# Installs every Debian package the build and the tests need, only when it is
# missing. Quick when everything is there already.
set -eu

packages=(
  cmake make g++ python3 openssl
  g++-mingw-w64-x86-64 g++-mingw-w64-i686 mingw-w64-tools
  wine wine64 libwine-dev xvfb xauth
  # The fonts Wine draws the dialogs with here: the layout checks measure
  # their texts.
  fonts-dejavu-core fonts-dejavu-extra fontconfig
  libgtest-dev libbenchmark-dev libexpat1-dev libpugixml-dev libtinyxml2-dev
  clang libclang-rt-14-dev clang-format
  # The installer of the release (scripts/release.sh).
  nsis
)

missing=()
for package in "${packages[@]}"; do
  status=$(dpkg-query -W -f='${Status}' "$package" 2>/dev/null || true)
  [ "$status" = "install ok installed" ] || missing+=("$package")
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

echo "bootstrap: installing ${missing[*]}"
sudo_cmd=()
[ "$(id -u)" -eq 0 ] || sudo_cmd=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${sudo_cmd[@]}" apt-get update -q
"${sudo_cmd[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}"
