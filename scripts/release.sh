#!/usr/bin/env bash
# The release, into build/release/: the plug-in built from clean in release
# mode for 64-bit and 32-bit Windows (presets win64-release, win32-release),
# each DLL stripped with its symbols kept beside it (a .debug file that the
# DLL names in its .gnu_debuglink), the installer (installer/, NSIS) and
# SHA256SUMS. The version is the one in the file VERSION.
#
# No time or path of the build goes into a file, so the same sources give
# the same bytes from any clone at any path: the linker writes no time stamp
# (-Wl,--no-insert-timestamp), objcopy writes SOURCE_DATE_EPOCH (0) as the
# PE header's, the compiler maps the source folder to "." and the installer
# keeps no file times. Before it writes SHA256SUMS it checks each DLL: the
# machine of its bitness, no time stamp, the version in its version block,
# its link to its own symbol file, its size, and no path of this clone.
#
# Usage: scripts/release.sh
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
start=$(date +%s)
fail() { echo "release.sh: $*" >&2; exit 1; }

version=$(head -n 1 VERSION)
[[ $version =~ ^[0-9]+\.[0-9]+\.[0-9]+\.[0-9]+$ ]] || fail "VERSION holds '$version', not four numbers"
command -v makensis >/dev/null || fail "makensis is missing: scripts/bootstrap.sh installs it"

export SOURCE_DATE_EPOCH=0 LC_ALL=C TZ=UTC
out=build/release
rm -rf "$out"
mkdir -p "$out"
jobs=$(nproc)

for bits in 64 32; do
  preset=win$bits-release
  case $bits in
    64) triple=x86_64-w64-mingw32 ;;
    32) triple=i686-w64-mingw32 ;;
  esac
  echo "=== $preset: configure and build from clean"
  rm -rf "build/$preset"
  log=build/$preset.log
  { cmake --preset "$preset" && cmake --build --preset "$preset" -j"$jobs"; } >"$log" 2>&1 \
    || { tail -n 60 "$log" >&2; fail "the $preset build failed (the whole log: $log)"; }
  rm -f "$log"
  dll=CVAudioScrobbler-$version-win$bits.dll
  built=build/$preset/plugin/CVAudioScrobbler.dll
  "$triple-objcopy" --only-keep-debug "$built" "$out/$dll.debug"
  "$triple-objcopy" --strip-unneeded "$built" "$out/$dll"
  # The link holds the symbol file's name as it stands beside the DLL.
  (cd "$out" && "$triple-objcopy" --add-gnu-debuglink="$dll.debug" "$dll")
done

echo "=== checks"
python3 - "$out" "$version" "$root" <<'PY'
import os, struct, sys, zlib

out, version, root = sys.argv[1:]
numbers = [int(n) for n in version.split(".")]
problems = []


def pe_sections(data):
    """The PE header's machine, time stamp and sections {name: bytes}."""
    if data[:2] != b"MZ":
        raise ValueError("no MZ header")
    pe = struct.unpack_from("<I", data, 0x3C)[0]
    if data[pe:pe + 4] != b"PE\0\0":
        raise ValueError("no PE header")
    machine, count, stamp, symbols, nsymbols, optional = struct.unpack_from("<HHIIIH", data, pe + 4)
    strings = symbols + nsymbols * 18
    sections = {}
    for i in range(count):
        entry = pe + 24 + optional + 40 * i
        name = data[entry:entry + 8].rstrip(b"\0").decode("ascii")
        if name.startswith("/"):  # a long name, in the string table
            at = strings + int(name[1:])
            name = data[at:data.index(b"\0", at)].decode("ascii")
        size, offset = struct.unpack_from("<II", data, entry + 16)
        sections[name] = data[offset:offset + size]
    return machine, stamp, sections


for bits, machine in (("64", 0x8664), ("32", 0x14C)):
    name = f"CVAudioScrobbler-{version}-win{bits}.dll"
    data = open(os.path.join(out, name), "rb").read()
    symbols = open(os.path.join(out, name + ".debug"), "rb").read()
    try:
        found_machine, stamp, sections = pe_sections(data)
    except ValueError as error:
        problems.append(f"{name}: {error}")
        continue
    if found_machine != machine:
        problems.append(f"{name}: machine {found_machine:#x}, not {machine:#x}")
    if stamp != 0:
        problems.append(f"{name}: the PE header holds the time stamp {stamp}")
    if len(data) >= 1_000_000:
        problems.append(f"{name}: {len(data)} bytes, not under 1 MB")
    link = sections.get(".gnu_debuglink")
    if link is None:
        problems.append(f"{name}: no .gnu_debuglink")
    else:
        linked = link[:link.index(b"\0")].decode()
        crc = struct.unpack_from("<I", link, (len(linked) + 4) & ~3)[0]
        if linked != name + ".debug" or crc != zlib.crc32(symbols):
            problems.append(f"{name}: links {linked} (CRC {crc:#x}), not its own symbol file")
    if ".debug_info" in sections or ".symtab" in sections:
        problems.append(f"{name}: not stripped")
    if b".debug_info" not in symbols:
        problems.append(f"{name}.debug: no .debug_info")
    # The version block's fixed part: its signature, then the file and
    # product versions, most significant half first.
    at = data.find(struct.pack("<I", 0xFEEF04BD))
    if at < 0:
        problems.append(f"{name}: no version block")
    else:
        ms, ls, pms, pls = struct.unpack_from("<IIII", data, at + 8)
        want = [numbers[0] << 16 | numbers[1], numbers[2] << 16 | numbers[3]]
        if [ms, ls] != want or [pms, pls] != want:
            problems.append(f"{name}: the version block holds another version than {version}")
    if version.encode("utf-16-le") not in data:
        problems.append(f"{name}: no version text {version}")
    # The type library's own stamp is the fixed one (resources/CMakeLists.txt).
    stamp_at = data.find(b"Created by WIDL version")
    if stamp_at >= 0 and b" at Thu Jan  1 00:00:00 1970" not in data[stamp_at:stamp_at + 80]:
        problems.append(f"{name}: the type library holds the time of its build")
    for what, content in ((name, data), (name + ".debug", symbols)):
        if root.encode() in content:
            problems.append(f"{what}: holds this clone's path {root}")
    print(f"{name}: {len(data)} bytes, {machine:#x}, version {version}, symbols "
          f"{len(symbols)} bytes in {name}.debug")

for problem in problems:
    print("PROBLEM: " + problem, file=sys.stderr)
sys.exit(1 if problems else 0)
PY

echo "=== installer"
setup=CVAudioScrobbler-$version-setup.exe
makensis -V2 -WX -DVERSION="$version" \
  -DDLL64="$root/$out/CVAudioScrobbler-$version-win64.dll" \
  -DDLL32="$root/$out/CVAudioScrobbler-$version-win32.dll" \
  -DOUTFILE="$root/$out/$setup" installer/CVAudioScrobbler.nsi \
  || fail "makensis failed"
python3 - "$out/$setup" <<'PY' || fail "the installer is not a 64-bit Windows program"
import struct, sys
data = open(sys.argv[1], "rb").read()
pe = struct.unpack_from("<I", data, 0x3C)[0]
assert data[:2] == b"MZ" and data[pe:pe + 4] == b"PE\0\0"
assert struct.unpack_from("<H", data, pe + 4)[0] == 0x8664
PY

(cd "$out" && sha256sum -- *.dll *.debug *.exe >SHA256SUMS)
echo "=== $out ($(( $(date +%s) - start ))s)"
(cd "$out" && stat -c '%s bytes  %n' -- *.dll *.debug *.exe && cat SHA256SUMS)
