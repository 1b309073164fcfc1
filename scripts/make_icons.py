#!/usr/bin/env python3
"""Draws the plug-in's 16 x 16 icons and writes them as .ico files (32-bit
colour with alpha, plus the 1-bit mask):

  resources/icons/submit_ok.ico      a white tick on a green disc
  resources/icons/submit_failed.ico  a white cross on a red disc
  resources/icons/options.ico        a white note on a red disc, also 32 x 32
                                     for the About page and the task switcher
  resources/icons/open_file.ico      an open folder, for the "..." buttons
  resources/icons/move_up.ico        an up arrow
  resources/icons/move_down.ico      a down arrow
  resources/icons/in_library.ico     a white note on a blue disc: a friend's
                                     track that is in the user's library

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


# The other icons are layers painted in order, each a test of whether a point
# lies in its shape and a colour. Points are in a 16 x 16 square whose pixel
# (i, j) covers [i, i + 1] x [j, j + 1], whatever the size drawn.


def polygon_contains(points, x, y):
    inside = False
    for (ax, ay), (bx, by) in zip(points, points[1:] + points[:1]):
        if (ay > y) != (by > y) and x < ax + (y - ay) * (bx - ax) / (by - ay):
            inside = not inside
    return inside


def polygon_edge_distance(points, x, y):
    return min(distance_to_segment(x, y, a, b)
               for a, b in zip(points, points[1:] + points[:1]))


def polygon(points, grow=0.0):
    """The polygon widened (grow > 0) or narrowed (grow < 0) by |grow|."""
    def contains(x, y):
        inside = polygon_contains(points, x, y)
        if grow == 0:
            return inside
        near = polygon_edge_distance(points, x, y) <= abs(grow)
        return inside or near if grow > 0 else inside and not near
    return contains


def disc(cx, cy, radius):
    return lambda x, y: math.hypot(x - cx, y - cy) <= radius


def ellipse(cx, cy, rx, ry, degrees):
    cos, sin = math.cos(math.radians(degrees)), math.sin(math.radians(degrees))
    def contains(x, y):
        u = (x - cx) * cos + (y - cy) * sin
        v = -(x - cx) * sin + (y - cy) * cos
        return (u / rx) ** 2 + (v / ry) ** 2 <= 1
    return contains


def strokes(segments, width):
    return lambda x, y: any(distance_to_segment(x, y, a, b) <= width / 2 for a, b in segments)


def paint(layers, size):
    """Rows top to bottom of (r, g, b, a) pixels: each sample takes the colour
    of the last layer holding it, a pixel the mean of its covered samples."""
    scale = SIZE / size
    rows = []
    for py in range(size):
        row = []
        for px in range(size):
            totals = [0, 0, 0]
            covered = 0
            for sy in range(SAMPLES):
                for sx in range(SAMPLES):
                    x = (px + (sx + 0.5) / SAMPLES) * scale
                    y = (py + (sy + 0.5) / SAMPLES) * scale
                    colour = None
                    for contains, layer_colour in layers:
                        if contains(x, y):
                            colour = layer_colour
                    if colour is not None:
                        covered += 1
                        totals = [t + c for t, c in zip(totals, colour)]
            if covered == 0:
                row.append((0, 0, 0, 0))
            else:
                row.append(tuple(round(t / covered) for t in totals) +
                           (round(255 * covered / SAMPLES ** 2),))
        rows.append(row)
    return rows


NOTE_RED = (0xCC, 0x22, 0x1E)
OPTIONS = [
    (disc(8, 8, 7.6), NOTE_RED),
    (ellipse(6.4, 11.3, 2.5, 1.8, -25), WHITE),
    (strokes([((8.0, 11.0), (8.0, 3.0))], 2.0), WHITE),
    (strokes([((8.6, 3.4), (10.8, 5.2)), ((10.8, 5.2), (11.2, 7.8))], 1.6), WHITE),
]

LIBRARY_BLUE = (0x1E, 0x5A, 0xB4)
IN_LIBRARY = [(disc(8, 8, 7.6), LIBRARY_BLUE)] + OPTIONS[1:]

# Outlines lie on whole pixels: each shape is drawn in its line colour and
# again, one pixel narrower, in its fill.
FOLDER_LINE = (0x7A, 0x52, 0x10)
FOLDER_BACK = (0xD8, 0xA0, 0x30)
FOLDER_FRONT = (0xFA, 0xD5, 0x6A)
FOLDER_BACK_SHAPE = [(1, 2), (6, 2), (7, 3), (13, 3), (13, 14), (1, 14)]
FOLDER_FRONT_SHAPE = [(4, 7), (16, 7), (13, 14), (1, 14)]
OPEN_FILE = [
    (polygon(FOLDER_BACK_SHAPE), FOLDER_LINE),
    (polygon(FOLDER_BACK_SHAPE, -1), FOLDER_BACK),
    (polygon(FOLDER_FRONT_SHAPE), FOLDER_LINE),
    (polygon(FOLDER_FRONT_SHAPE, -1), FOLDER_FRONT),
]

ARROW_LINE = (0x12, 0x30, 0x66)
ARROW_FILL = (0x2A, 0x62, 0xC0)
UP_ARROW_SHAPE = [(8, 1), (15, 8), (11, 8), (11, 15), (5, 15), (5, 8), (1, 8)]
DOWN_ARROW_SHAPE = [(x, SIZE - y) for x, y in UP_ARROW_SHAPE]


def arrow(shape):
    return [(polygon(shape), ARROW_LINE), (polygon(shape, -1), ARROW_FILL)]


def dib_bytes(rows):
    size = len(rows)
    pixels = bytearray()
    for row in reversed(rows):  # a DIB runs bottom up
        for r, g, b, a in row:
            pixels += bytes((b, g, r, a))
    mask = bytearray()
    stride = (size + 31) // 32 * 4  # each row padded to 32 bits
    for row in reversed(rows):
        bits = 0
        for r, g, b, a in row:
            bits = (bits << 1) | (1 if a < 128 else 0)
        mask += bits.to_bytes(size // 8, "big").ljust(stride, b"\0")
    header = struct.pack("<IiiHHIIiiII", 40, size, size * 2, 1, 32, 0,
                         len(pixels) + len(mask), 0, 0, 0, 0)
    return header + pixels + mask


def ico_bytes(*images):
    """An .ico of square images, each given as its rows."""
    dibs = [dib_bytes(rows) for rows in images]
    directory = struct.pack("<HHH", 0, 1, len(dibs))
    offset = 6 + 16 * len(dibs)
    for rows, dib in zip(images, dibs):
        directory += struct.pack("<BBBBHHII", len(rows), len(rows), 0, 0, 1, 32, len(dib), offset)
        offset += len(dib)
    return directory + b"".join(dibs)


def main():
    folder = pathlib.Path(__file__).resolve().parent.parent / "resources" / "icons"
    folder.mkdir(parents=True, exist_ok=True)
    (folder / "submit_ok.ico").write_bytes(ico_bytes(draw(GREEN, TICK)))
    (folder / "submit_failed.ico").write_bytes(ico_bytes(draw(RED, CROSS)))
    (folder / "options.ico").write_bytes(ico_bytes(paint(OPTIONS, 16), paint(OPTIONS, 32)))
    (folder / "open_file.ico").write_bytes(ico_bytes(paint(OPEN_FILE, 16)))
    (folder / "move_up.ico").write_bytes(ico_bytes(paint(arrow(UP_ARROW_SHAPE), 16)))
    (folder / "move_down.ico").write_bytes(ico_bytes(paint(arrow(DOWN_ARROW_SHAPE), 16)))
    (folder / "in_library.ico").write_bytes(ico_bytes(paint(IN_LIBRARY, 16)))


if __name__ == "__main__":
    main()
