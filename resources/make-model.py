#!/usr/bin/env python3
"""Makes the 3D model of the phone: testPlane.x and its textures. The build does not: run it after a
change.

The model is drawn without a depth buffer, its back faces left out, so that it has to be one convex
body. One look has to tell which way it is turned, also in red light alone, where blue and green are
black. The six sides therefore differ in pattern and brightness, not just in hue.

Seen from the front, x points to the left, y up and z to the viewer.
"""

import math
import struct
import zlib
from pathlib import Path

HALF_WIDTH, HALF_HEIGHT, HALF_DEPTH = 3.8, 7.3, 1.1
CORNER = 1.5  # the radius of the outline's corners
RIM = 0.45  # the radius between the walls and the front or back
CORNER_STEPS = 4  # an even number: the sides meet in the middle of a corner
RIM_STEPS = 2

TEXTURE_SIZE = 128
SAMPLES = 4  # of a pixel, in each direction

# The bands of the edges' texture, from top to bottom.
EDGES = ["top", "bottom", "left", "right"]
BAND_MARGIN = 2 / TEXTURE_SIZE  # what filtering may take from the neighbour

MATERIALS = ["front", "back", "edges"]

# What they emit. The light comes from above the viewer and from the opposite direction, and there
# is always a side that has only the ambient light, which is weak. More glow would wash out the red.
GLOW = 0.12

# The colours of draw-icons.py, and lighter ones for what has to show in red light.
INK = (24, 34, 58)
METAL = (240, 244, 250)
SILVER = (156, 168, 192)
STEEL = (104, 116, 144)
ORANGE = (255, 150, 30)
LIGHT_ORANGE = (255, 206, 110)
SKY = (206, 232, 255)
SEA = (140, 188, 246)
BLACK = (10, 14, 24)


# The shape


def outline(inset):
    """The points around the slab, this far inside it, and their directions outwards."""
    points = []
    for corner in range(4):
        for step in range(CORNER_STEPS + 1):
            angle = math.radians(90 * (corner + step / CORNER_STEPS))
            dx, dy = math.cos(angle), math.sin(angle)
            x = math.copysign(HALF_WIDTH - CORNER, (1, -1, -1, 1)[corner]) + (CORNER - inset) * dx
            y = math.copysign(HALF_HEIGHT - CORNER, (1, 1, -1, -1)[corner]) + (CORNER - inset) * dy
            points.append(((x, y), (dx, dy)))
    return points


def rings():
    """The outlines from the front to the back: positions and normals."""
    front = []
    for step in range(RIM_STEPS + 1):
        angle = math.radians(90 * step / RIM_STEPS)
        inset = RIM * (1 - math.sin(angle))
        front.append((inset, HALF_DEPTH - RIM * (1 - math.cos(angle)), angle))
    profile = front + [(inset, -z, math.pi - angle) for inset, z, angle in reversed(front)]
    return [
        [
            ((x, y, z), (dx * math.sin(angle), dy * math.sin(angle), math.cos(angle)))
            for (x, y), (dx, dy) in outline(inset)
        ]
        for inset, z, angle in profile
    ]


def texture_at(part, position):
    """Where a position of a part is in the part's texture, whose v runs down."""
    x, y, z = position
    u, v = (x / HALF_WIDTH + 1) / 2, (1 - y / HALF_HEIGHT) / 2
    if part == "front":
        return 1 - u, v
    if part == "back":
        return u, v
    # A band has the front above, and is seen from outside.
    u = {"top": u, "bottom": 1 - u, "left": v, "right": 1 - v}[part]
    down = (1 - z / (HALF_DEPTH - RIM)) / 2
    height = 1 / len(EDGES)
    return u, EDGES.index(part) * height + BAND_MARGIN + down * (height - 2 * BAND_MARGIN)


def edge_at(first, second):
    """The name of the edge that a stretch of the outline belongs to."""
    dx, dy = (a + b for a, b in zip(first[1][:2], second[1][:2]))
    if abs(dx) > abs(dy):
        return "left" if dx > 0 else "right"
    return "top" if dy > 0 else "bottom"


def make_faces():
    """Each face is its material and its corners, clockwise from outside: (position, normal, uv)."""
    all_rings = rings()

    def face(part, corners):
        return (
            "edges" if part in EDGES else part,
            [(position, normal, texture_at(part, position)) for position, normal in corners],
        )

    faces = [face("front", all_rings[0]), face("back", list(reversed(all_rings[-1])))]
    for number, (upper, lower) in enumerate(zip(all_rings, all_rings[1:])):
        for i, first in enumerate(upper):
            after = (i + 1) % len(upper)
            if number < RIM_STEPS:
                part = "front"
            elif number > RIM_STEPS:
                part = "back"
            else:
                part = edge_at(first, upper[after])
            faces.append(face(part, [first, lower[i], lower[after], upper[after]]))
    return faces


# The checks


def minus(a, b):
    return tuple(p - q for p, q in zip(a, b))


def dot(a, b):
    return sum(p * q for p, q in zip(a, b))


def cross(a, b):
    return (
        a[1] * b[2] - a[2] * b[1],
        a[2] * b[0] - a[0] * b[2],
        a[0] * b[1] - a[1] * b[0],
    )


def unit(a):
    return tuple(p / math.hypot(*a) for p in a)


def require(condition, message):
    if not condition:
        raise SystemExit(f"make-model.py: {message}")


def check(faces):
    """Requires a closed convex body of plane faces, as far as the file's digits tell."""
    nearly = 1e-4
    points = {position for _, corners in faces for position, _, _ in corners}
    edges = set()
    for _, corners in faces:
        positions = [position for position, _, _ in corners]
        sides = list(zip(positions, positions[1:] + positions[:1]))
        lengths = [math.dist(a, b) for a, b in sides]
        require(min(lengths) > 0.05, f"a side of {min(lengths)} at {positions}")

        # Seen from outside, a face turns the same way at each of its corners.
        turns = [
            cross(minus(b, a), minus(d, c)) for (a, b), (c, d) in zip(sides, sides[1:] + sides[:1])
        ]
        normal = unit([sum(axis) for axis in zip(*turns)])
        require(all(dot(turn, normal) > 1e-3 for turn in turns), f"a bent face at {positions}")

        distances = {point: dot(minus(point, positions[0]), normal) for point in points}
        require(max(distances.values()) < nearly, f"a point before the face at {positions}")
        require(min(distances[p] for p in positions) > -nearly, f"not a plane: {positions}")
        require(min(distances.values()) < -0.1, f"nothing behind the face at {positions}")

        for side in sides:
            require(side not in edges, f"two faces with the edge {side}")
            edges.add(side)
        for _, shading, uv in corners:
            require(abs(math.hypot(*shading) - 1) < nearly, f"{shading} is not of length 1")
            require(dot(shading, normal) > 0.7, f"{shading} points away from its face")
            require(0 <= min(uv) and max(uv) <= 1, f"{uv} is outside the texture")
    for a, b in edges:
        require((b, a) in edges, f"a hole at {(a, b)}")


# The file


def rounded(faces):
    """The faces with the digits that the file has."""

    def cut(numbers):
        return tuple(round(n, 5) + 0.0 for n in numbers)

    return [(name, [tuple(map(cut, corner)) for corner in corners]) for name, corners in faces]


def number(n):
    return f"{n:.5f}".rstrip("0").ljust(3, "0") if n % 1 else f"{n:.1f}"


def listing(items, indent):
    return ",\n".join(indent + item for item in items) + ";"


def vectors(items, indent):
    return listing(("".join(number(n) + ";" for n in item) for item in items), indent)


def polygons(items, indent):
    return listing((f"{len(item)};{','.join(map(str, item))};" for item in items), indent)


def material(name):
    return f"""   Material {name} {{
    1.0;1.0;1.0;1.0;;
    0.0;
    0.0;0.0;0.0;;
    {GLOW};{GLOW};{GLOW};;
    TextureFilename {{ "phone-{name}.png"; }}
   }}"""


def model_text(faces):
    """The model as an X file. A vertex has one place in one texture, and a normal of each face."""
    vertices, normals = {}, {}
    vertex_faces, normal_faces = [], []
    for name, corners in faces:
        vertex_faces.append(
            [vertices.setdefault((name, p, uv), len(vertices)) for p, _, uv in corners]
        )
        normal_faces.append([normals.setdefault(n, len(normals)) for _, n, _ in corners])
    return f"""xof 0303txt 0032

Frame phone {{
 FrameTransformMatrix {{
  1.0,0.0,0.0,0.0,
  0.0,1.0,0.0,0.0,
  0.0,0.0,1.0,0.0,
  0.0,0.0,0.0,1.0;;
 }}
 Mesh slab {{
  {len(vertices)};
{vectors([position for _, position, _ in vertices], "  ")}
  {len(faces)};
{polygons(vertex_faces, "  ")}
  MeshNormals {{
   {len(normals)};
{vectors(normals, "   ")}
   {len(faces)};
{polygons(normal_faces, "   ")}
  }}
  MeshTextureCoords {{
   {len(vertices)};
{vectors([uv for _, _, uv in vertices], "   ")}
  }}
  MeshMaterialList {{
   {len(MATERIALS)};
   {len(faces)};
{listing([str(MATERIALS.index(name)) for name, _ in faces], "   ")}
{chr(10).join(material(name) for name in MATERIALS)}
  }}
 }}
}}
"""


# The textures


def rotated(x, y, degrees):
    """The point in axes that are turned clockwise."""
    a = math.radians(degrees)
    return x * math.cos(a) + y * math.sin(a), y * math.cos(a) - x * math.sin(a)


def in_box(x, y, left, top, right, bottom, radius=0.0):
    """Whether the point is in a box with round corners."""
    dx = max(left + radius - x, x - right + radius, 0)
    dy = max(top + radius - y, y - bottom + radius, 0)
    return math.hypot(dx, dy) <= radius


def in_polygon(x, y, corners):
    inside = False
    for (ax, ay), (bx, by) in zip(corners, corners[1:] + corners[:1]):
        if (ay > y) != (by > y) and x < ax + (y - ay) / (by - ay) * (bx - ax):
            inside = not inside
    return inside


def mixed(a, b, share):
    share = min(max(share, 0), 1)
    return tuple(p + (q - p) * share for p, q in zip(a, b))


def in_slab(x, y, inset):
    w, h = HALF_WIDTH - inset, HALF_HEIGHT - inset
    return in_box(x, y, -w, -h, w, h, CORNER - inset)


def front_at(x, y):
    """The screen, in units of the model from the middle, y down."""
    if not in_slab(x, y, RIM + 0.1):
        return METAL
    w, h = HALF_WIDTH - 0.95, HALF_HEIGHT - 0.95
    if not in_box(x, y, -w, -h, w, h, CORNER - 0.8):
        return BLACK
    # The status bar: a signal's strength and a battery.
    if y < -h + 1.0:
        for bar in range(4):
            left = -w + 0.7 + 0.36 * bar
            if in_box(x, y, left, -h + 0.65 - 0.13 * bar, left + 0.22, -h + 0.8):
                return METAL
        if in_box(x, y, w - 1.7, -h + 0.28, w - 0.7, -h + 0.76, 0.1):
            return METAL
        return mixed(INK, STEEL, 0.3)
    # The arrow to the top.
    head = [(0, -4.5), (w - 0.5, -1.2), (1.1, -1.2), (1.1, 3.3), (-1.1, 3.3), (-1.1, -1.2)]
    if in_polygon(x, y, head + [(0.5 - w, -1.2)]):
        return INK
    # The line to swipe from.
    if in_box(x, y, -1.4, h - 0.75, 1.4, h - 0.4, 0.17):
        return METAL
    return mixed(SKY, SEA, (y + h) / (2 * h))


def back_at(x, y):
    """The lid with the camera, as seen from behind."""
    if not in_slab(x, y, RIM + 0.1):
        return METAL
    left, top = -HALF_WIDTH + 0.9, -HALF_HEIGHT + 0.9
    if in_box(x, y, left, top, left + 2.6, top + 4.2, 0.9):
        for lens in (1.25, 2.95):
            from_lens = math.hypot(x - left - 1.3, y - top - lens)
            if from_lens < 0.25:
                return METAL
            if from_lens < 0.5:
                return INK
            if from_lens < 0.75:
                return SILVER
        return INK
    if math.hypot(x - left - 3.5, y - top - 0.8) < 0.36:
        return LIGHT_ORANGE
    return mark_at(x, y - 1.8) or mixed(SILVER, STEEL, (y + HALF_HEIGHT) / (2 * HALF_HEIGHT))


def mark_at(x, y):
    """A quill in an orbit."""
    across, along = rotated(x, y, 30)
    # The vane is a leaf, and the shaft goes on to the nib.
    vane = 1.1 * math.sin(math.pi * min(max((1.2 - along) / 5.2, 0), 1)) ** 0.8
    shaft = abs(across) < 0.14 and -3.4 < along < 3.4
    x, y = rotated(x, y, -14)
    ring = math.hypot(x / 3.2, y / 1.5)
    on_ring = 0.8 <= ring <= 1
    if on_ring and y > 0:
        return ORANGE
    if shaft:
        return INK
    if abs(across) < vane:
        return METAL
    return ORANGE if on_ring else None


def edge_colour(edge, along, across):
    """An edge in units of the model from its middle, seen from outside with the front above."""
    if edge == "top":
        return METAL if (along + across) % 1.6 < 0.8 else INK
    if edge == "bottom":
        if in_box(along, across, -1.1, -0.38, 1.1, 0.38, 0.38):
            return METAL if not in_box(along, across, -0.8, -0.12, 0.8, 0.12) else INK
        hole = (abs(along) - 1.9) / 0.55
        if -0.4 < hole < 2.5 and math.hypot((hole - round(hole)) * 0.55, across) < 0.19:
            return METAL
        return INK
    buttons = [(-3.6, -1.9), (-1.2, 2.6)] if edge == "right" else [(-2.2, 2.2)]
    if edge == "right":
        along = -along
    for first, last in buttons:
        if in_box(along, across, first, -0.4, last, 0.4, 0.2):
            return INK
    return METAL if edge == "right" else SILVER


def edges_at(u, v):
    band = min(int(v * len(EDGES)), len(EDGES) - 1)
    edge = EDGES[band]
    height = 1 / len(EDGES)
    down = (v - band * height - BAND_MARGIN) / (height - 2 * BAND_MARGIN)
    half = HALF_WIDTH if edge in ("top", "bottom") else HALF_HEIGHT
    return edge_colour(edge, (2 * u - 1) * half, (2 * down - 1) * (HALF_DEPTH - RIM))


def on_slab(paint):
    return lambda u, v: paint((2 * u - 1) * HALF_WIDTH, (2 * v - 1) * HALF_HEIGHT)


def draw(colour_at):
    """The rows of a texture whose colours are told for u and v."""
    steps = TEXTURE_SIZE * SAMPLES

    def pixel(px, py):
        found = [
            colour_at((px * SAMPLES + i + 0.5) / steps, (py * SAMPLES + j + 0.5) / steps)
            for i in range(SAMPLES)
            for j in range(SAMPLES)
        ]
        return bytes(round(sum(channel) / len(found)) for channel in zip(*found))

    return [
        b"".join(pixel(px, py) for px in range(TEXTURE_SIZE)) for py in range(TEXTURE_SIZE)
    ]


def png(rows):
    """An image of 8-bit red, green and blue."""

    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body))

    header = struct.pack(">IIBBBBB", len(rows[0]) // 3, len(rows), 8, 2, 0, 0, 0)
    lines = zlib.compress(b"".join(b"\0" + row for row in rows), 9)
    return (
        b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", lines) + chunk(b"IEND", b"")
    )


faces = rounded(make_faces())
check(faces)
folder = Path(__file__).parent
(folder / "testPlane.x").write_text(model_text(faces), newline="\n")
for name, colour_at in {
    "front": on_slab(front_at),
    "back": on_slab(back_at),
    "edges": edges_at,
}.items():
    (folder / f"phone-{name}.png").write_bytes(png(draw(colour_at)))
