#!/usr/bin/env python3
"""Draws the two 16 x 16 icons of the submitted-tracks list and writes them
as .ico files (32-bit colour with alpha, plus the 1-bit mask):

  resources/icons/submit_ok.ico      a white tick on a green disc
  resources/icons/submit_failed.ico  a white cross on a red disc

Standard library only; the output is the same on every run. Run it from
anywhere: python3 scripts/make_icons.py
"""

import math
import pathlib
import struct

SIZE = 16
SAMPLES = 4  # per pixel and axis, for smooth edges
CENTRE = (SIZE - 1) / 2
RADIUS = 7.4
STROKE = 1.9  # width of the white marks, in pixels

GREEN = (0x2E, 0x9E, 0x3E)
RED = (0xC8, 0x32, 0x2D)
WHITE = (0xFF, 0xFF, 0xFF)

TICK = [((3.6, 8.0), (6.4, 10.8)), ((6.4, 10.8), (11.8, 4.8))]
CROSS = [((4.6, 4.6), (10.4, 10.4)), ((10.4, 4.6), (4.6, 10.4))]


def distance_to_segment(x, y, a, b):
    (ax, ay), (bx, by) = a, b
    dx, dy = bx - ax, by - ay
    t = max(0.0, min(1.0, ((x - ax) * dx + (y - ay) * dy) / (dx * dx + dy * dy)))
    return math.hypot(x - (ax + t * dx), y - (ay + t * dy))


def draw(disc_colour, strokes):
    """Rows top to bottom of (r, g, b, a) pixels."""
    rows = []
    for py in range(SIZE):
        row = []
        for px in range(SIZE):
            disc = mark = 0
            for sy in range(SAMPLES):
                for sx in range(SAMPLES):
                    x = px + (sx + 0.5) / SAMPLES
                    y = py + (sy + 0.5) / SAMPLES
                    if math.hypot(x - 0.5 - CENTRE, y - 0.5 - CENTRE) > RADIUS:
                        continue
                    disc += 1
                    if any(distance_to_segment(x - 0.5, y - 0.5, a, b) <= STROKE / 2
                           for a, b in strokes):
                        mark += 1
            if disc == 0:
                row.append((0, 0, 0, 0))
                continue
            share = mark / disc
            colour = tuple(round(c * (1 - share) + w * share)
                           for c, w in zip(disc_colour, WHITE))
            row.append(colour + (round(255 * disc / SAMPLES ** 2),))
        rows.append(row)
    return rows


def ico_bytes(rows):
    pixels = bytearray()
    for row in reversed(rows):  # a DIB runs bottom up
        for r, g, b, a in row:
            pixels += bytes((b, g, r, a))
    mask = bytearray()
    for row in reversed(rows):
        bits = 0
        for r, g, b, a in row:
            bits = (bits << 1) | (1 if a < 128 else 0)
        mask += struct.pack(">H", bits) + b"\0\0"  # each row padded to 32 bits
    header = struct.pack("<IiiHHIIiiII", 40, SIZE, SIZE * 2, 1, 32, 0,
                         len(pixels) + len(mask), 0, 0, 0, 0)
    image = header + pixels + mask
    directory = struct.pack("<HHH", 0, 1, 1)
    entry = struct.pack("<BBBBHHII", SIZE, SIZE, 0, 0, 1, 32, len(image), 6 + 16)
    return directory + entry + image


def main():
    folder = pathlib.Path(__file__).resolve().parent.parent / "resources" / "icons"
    folder.mkdir(parents=True, exist_ok=True)
    (folder / "submit_ok.ico").write_bytes(ico_bytes(draw(GREEN, TICK)))
    (folder / "submit_failed.ico").write_bytes(ico_bytes(draw(RED, CROSS)))


if __name__ == "__main__":
    main()
