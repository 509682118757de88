#!/usr/bin/env python3
"""Draws the program's icons and writes them to ICON/. The build does not: run it after a change.

The images have 24-bit colour and a 1-bit mask: a pixel is there or it is not. The 16-pixel images
are therefore maps of pixels, and only the larger ones are made from shapes. Things have a light and
a dark part, one of which stands out on any panel, and the two states differ in their shapes too.
"""

import math
import struct
from pathlib import Path

COLOURS = {
    "k": (24, 34, 58),  # the rim
    "w": (240, 244, 250),  # the phone
    "c": (120, 196, 255),  # the screen, from the light above
    "b": (52, 132, 226),
    "n": (30, 92, 178),
    "l": (156, 168, 192),  # the stick's base
    "s": (104, 116, 144),
    "o": (255, 150, 30),  # the orbit
    "p": (255, 206, 110),
    "h": (96, 226, 122),  # the waves
    "g": (12, 132, 56),
    "y": (255, 112, 100),  # the cross
    "x": (222, 36, 36),
    "z": (160, 16, 22),
    "e": (112, 120, 136),  # a screen without a picture
    "f": (82, 88, 104),
}

# The phone is a joystick.
APP = """
........kkkkk...
.......kwwwwwk..
.......kwccbwkpo
.......kwccbwkoo
...oo.kwccbwk..o
.oo...kwcbbwk.oo
.o....kwcbbwkoo.
.oo..kwcbbwooo..
..ooooooooook...
.....kwbbbwk....
....kwwwwwk.....
..kkkwwwwwkkkk..
.kllkkkkkkkkllk.
.kllllllllllllk.
.kssssssssssssk.
..kkkkkkkkkkkk..
"""

# The phone transmits.
OK = """
.kkkkk..........
kwwwwwk....hg...
kwkkkwk.....hg..
kwccbwk......hg.
kwcbbwk.hg...hg.
kwcbbwk..hg...hg
kwbbbwk...hg..hg
kwbbbwk...hg..hg
kwbbbwk...hg..hg
kwbbbwk...hg..hg
kwbbnwk..hg...hg
kwbnnwk.hg...hg.
kwwwwwk......hg.
kwwkwwk.....hg..
kwwwwwk....hg...
.kkkkk..........
"""

# There is no signal.
ERROR = """
..kkkkk.........
.kwwwwwk........
.kwkkkwk........
.kweeewk........
.kweeewk........
.kweeew.........
.kweee..........
.kweee.yxx...yxx
.kweee.yxxx.yxxz
.kweff..yxxxxxz.
.kwfff...yxxxz..
.kwfff...yxxxz..
.kwww...yxxxxxz.
.kwwk..yxxz.yxxz
.kwww..yxz...yxz
..kkkk..........
"""


def from_map(text):
    """Rows of pixels, each a colour or None."""
    return [[COLOURS.get(c) for c in row] for row in text.split()]


def rotated(x, y, degrees):
    """The point in axes that are turned clockwise."""
    a = math.radians(degrees)
    return x * math.cos(a) + y * math.sin(a), y * math.cos(a) - x * math.sin(a)


def in_ellipse(x, y, rx, ry):
    return (x / rx) ** 2 + (y / ry) ** 2 <= 1


def in_box(x, y, left, top, right, bottom, radius):
    """Whether the point is in a box with round corners."""
    dx = max(left + radius - x, x - right + radius, 0)
    dy = max(top + radius - y, y - bottom + radius, 0)
    return math.hypot(dx, dy) <= radius


def base_at(x, y):
    """A flat cylinder with a hole for the stick."""
    x -= 23

    def solid(grow):
        return (
            in_ellipse(x, y - 38, 17 + grow, 5 + grow)
            or in_ellipse(x, y - 42, 17 + grow, 5 + grow)
            or (abs(x) <= 17 + grow and 38 <= y <= 42)
        )

    if not solid(0):
        return None
    if not solid(-1.4):
        return "k"
    if in_ellipse(x, y - 37.6, 11.2, 2.9):
        return "k"
    return "l" if in_ellipse(x, y - 38, 15.6, 3.8) else "s"


def phone_at(x, y):
    """The tilted phone, as much of it as is out of the hole."""
    if y > 37.6 and not in_ellipse(x - 23, y - 37.6, 10, 2):
        return None
    x, y = rotated(x - 22.5, y - 40, 20)
    if not in_box(x, y, -9.5, -39, 9.5, 9, 4):
        return None
    if not in_box(x, y, -8.1, -37.6, 8.1, 9, 2.8):
        return "k"
    if in_box(x, y, -6, -34, 6, -10.5, 0.8):
        return "c" if x + y / 2 < -15 else "b"
    return "k" if math.hypot(x, y + 7) <= 1.6 else "w"


def orbit_at(x, y, front):
    """The ring around the phone: its front half with the ball, or the half behind."""
    x, y = rotated(x - 25.5, y - 19.5, -14)
    from_ball = math.hypot(x - 18.5, y + 2.5)
    if front and from_ball <= 4:
        if from_ball > 2.9:
            return "k"
        return "p" if math.hypot(x - 17.6, y + 3.5) <= 1.3 else "o"
    on_ring = in_ellipse(x, y, 21, 8.6) and not in_ellipse(x, y, 18, 5.6)
    return "o" if on_ring and front == (y > 0) else None


def draw_app(size):
    """The application icon from shapes in units of 1/48 of its size."""
    samples = 8
    scale = 48 / (size * samples)

    def colour_at(px, py):
        x, y = (px + 0.5) * scale, (py + 0.5) * scale
        c = orbit_at(x, y, True) or phone_at(x, y) or base_at(x, y) or orbit_at(x, y, False)
        return c and COLOURS[c]

    def pixel(px, py):
        found = [
            colour_at(px * samples + i, py * samples + j)
            for i in range(samples)
            for j in range(samples)
        ]
        found = [c for c in found if c]
        if 2 * len(found) < samples * samples:
            return None
        return tuple(round(sum(channel) / len(found)) for channel in zip(*found))

    return [[pixel(x, y) for x in range(size)] for y in range(size)]


def bitmap(rows):
    """The image as an icon has it: bottom-up, its mask behind it, lines of whole 32-bit words."""
    size = len(rows)
    mask_bytes = (size + 31) // 32 * 4
    colours = mask = b""
    for row in reversed(rows):
        line = b"".join(bytes(reversed(c or (0, 0, 0))) for c in row)
        colours += line + bytes(-len(line) % 4)
        bits = "".join("0" if c else "1" for c in row).ljust(8 * mask_bytes, "0")
        mask += int(bits, 2).to_bytes(mask_bytes, "big")
    data = colours + mask
    header = struct.pack("<IiiHHIIiiII", 40, size, 2 * size, 1, 24, 0, len(data), 0, 0, 0, 0)
    return header + data


def write(name, *images):
    """Writes an icon file of these images."""
    entries = data = b""
    for rows in images:
        image, size = bitmap(rows), len(rows)
        offset = 6 + 16 * len(images) + len(data)
        entries += struct.pack("<BBBBHHII", size, size, 0, 0, 1, 24, len(image), offset)
        data += image
    file = Path(__file__).parent / "ICON" / name
    file.write_bytes(struct.pack("<HHH", 0, 1, len(images)) + entries + data)


write("AAA.ico", from_map(APP), draw_app(32), draw_app(48))
write("OK.ico", from_map(OK))
write("ERROR.ico", from_map(ERROR))
