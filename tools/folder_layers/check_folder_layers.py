#!/usr/bin/env python3
"""Checks that each folder of the plug-in uses only the folders below it.

A source file may include its own folder's headers and those of folders on
a lower floor; folders on one floor do not use each other. tests/, tools/,
bench/ and fuzz/ stand outside and may use anything. Prints each include
that breaks the rule and exits 1; prints what it checked and exits 0.

Usage: check_folder_layers.py [ROOT]
"""
import pathlib
import re
import sys

# Bottom first; each entry is one floor.
FLOORS = [
    ["support", "resources"],
    ["xml"],
    ["settings"],
    ["scrobbler/queue", "scrobbler/network"],
    ["scrobbler/worker"],
    ["host"],
    ["ui"],
    ["buddies"],
    ["plugin"],
]
FLOOR_OF = {folder: level for level, folders in enumerate(FLOORS) for folder in folders}
INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.M)


def folder_of(path):
    """The floor's folder that holds path ('a/b/c.h'), or None."""
    parts = pathlib.PurePosixPath(path).parts
    for depth in (2, 1):
        folder = "/".join(parts[:depth])
        if len(parts) > depth and folder in FLOOR_OF:
            return folder
    return None


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ".").resolve()
    faults = []
    checked = 0
    for top in sorted({folder.split("/")[0] for folder in FLOOR_OF}):
        for source in sorted((root / top).rglob("*")):
            if source.suffix not in (".h", ".cpp", ".c", ".rc"):
                continue
            checked += 1
            own = folder_of(source.relative_to(root).as_posix())
            if own is None:
                faults.append(f"{source.relative_to(root)}: lies in no folder of the floors")
                continue
            for included in INCLUDE.findall(source.read_text(encoding="utf-8", errors="replace")):
                used = folder_of(included)
                if used is None or used == own:
                    continue
                if FLOOR_OF[used] >= FLOOR_OF[own]:
                    faults.append(f"{source.relative_to(root)}: includes {included} "
                                  f"({used} is not below {own})")
    if checked == 0:
        print(f"check_folder_layers: no sources under {root}", file=sys.stderr)
        return 1
    for fault in faults:
        print(fault)
    print(f"{checked} files checked, {len(faults)} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
