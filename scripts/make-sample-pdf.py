#!/usr/bin/env python3
"""Writes samples/floorplan.pdf: a small two-page floor plan drawn with vector paths only.

Page 1 is the plan: the walls as one filled outline with the rooms as holes, doors as a
leaf and a quarter-circle Bezier arc, furniture, and hidden lines written the way many
drawing programs write dashes, as rows of separate two-point subpaths. Page 2 is a wall
elevation with window openings and its foundation in hidden lines. Each part sits on its
own optional content group, so an import makes layers of them.

The content streams are left uncompressed so that the file reads as text, and the
cross-reference table is computed from the bytes actually written.

    scripts/make-sample-pdf.py [OUT]      (default: samples/floorplan.pdf)
"""

import os
import sys

# The control-point distance of a quarter circle drawn as one cubic Bezier, per unit radius.
KAPPA = 0.5522847498


def num(v):
    """A number as PDF text: no exponent, no trailing zeros, never "-0"."""
    text = f"{v:.3f}".rstrip("0").rstrip(".")
    return "0" if text in ("-0", "") else text


def pts(*values):
    return " ".join(num(v) for v in values)


def polygon(points):
    """A closed subpath through the points."""
    first, *rest = points
    ops = [f"{pts(*first)} m"] + [f"{pts(*p)} l" for p in rest] + ["h"]
    return "\n".join(ops)


def rectangle(x0, y0, x1, y1):
    return polygon([(x0, y0), (x1, y0), (x1, y1), (x0, y1)])


def quarter_arc(cx, cy, r, start, end):
    """Moves to `start` and draws the quarter circle about (cx, cy) to `end`; both ends lie
    on the circle a right angle apart."""
    (sx, sy), (ex, ey) = start, end
    # Tangents at the ends point towards each other along the axes of the right angle.
    c1 = (sx + (ex - cx) * KAPPA, sy + (ey - cy) * KAPPA)
    c2 = (ex + (sx - cx) * KAPPA, ey + (sy - cy) * KAPPA)
    assert abs(((sx - cx) ** 2 + (sy - cy) ** 2) ** 0.5 - r) < 1e-9
    return f"{pts(sx, sy)} m\n{pts(*c1, *c2, ex, ey)} c"


def circle(cx, cy, r):
    k = r * KAPPA
    return "\n".join([
        f"{pts(cx + r, cy)} m",
        f"{pts(cx + r, cy + k, cx + k, cy + r, cx, cy + r)} c",
        f"{pts(cx - k, cy + r, cx - r, cy + k, cx - r, cy)} c",
        f"{pts(cx - r, cy - k, cx - k, cy - r, cx, cy - r)} c",
        f"{pts(cx + k, cy - r, cx + r, cy - k, cx + r, cy)} c",
        "h",
    ])


def dash_row(start, end, dash, gap):
    """A dashed line as separate "m l" pairs along one straight line; the last dash is cut
    short where the line ends."""
    (x0, y0), (x1, y1) = start, end
    length = ((x1 - x0) ** 2 + (y1 - y0) ** 2) ** 0.5
    ux, uy = (x1 - x0) / length, (y1 - y0) / length
    ops, at = [], 0.0
    while at < length - 1e-9:
        stop = min(at + dash, length)
        ops.append(f"{pts(x0 + ux * at, y0 + uy * at)} m {pts(x0 + ux * stop, y0 + uy * stop)} l")
        at += dash + gap
    assert len(ops) >= 4, "a row needs four dashes to read as a dashed line"
    return "\n".join(ops)


def marked(tag, body):
    return f"/OC /{tag} BDC\n{body}\nEMC"


def door(hinge, closed, open_end, wall_opening):
    """A door: the opening cleared in white, the leaf standing open and its swing."""
    (hx, hy), r = hinge, abs(open_end[0] - hinge[0]) + abs(open_end[1] - hinge[1])
    return "\n".join([
        "1 g",
        rectangle(*wall_opening),
        "f",
        f"{pts(hx, hy)} m {pts(*open_end)} l S",
        quarter_arc(hx, hy, r, open_end, closed),
        "S",
    ])


def plan_page():
    walls = "\n".join([
        "0.35 g",
        rectangle(50, 50, 550, 400),  # outside of the outer walls
        rectangle(60, 60, 295, 390),  # living room
        rectangle(305, 60, 540, 220),  # bedroom
        rectangle(305, 230, 540, 390),  # kitchen
        "f*",
    ])
    doors = "\n".join([
        "0 0 0.6 RG 0.75 w",
        # Into the bedroom through the middle wall.
        door((305, 100), (305, 140), (345, 100), (295, 100, 305, 140)),
        # From the living room into the kitchen.
        door((295, 340), (295, 300), (255, 340), (295, 300, 305, 340)),
        # The front door.
        door((150, 60), (190, 60), (150, 100), (150, 50, 190, 60)),
        # Between bedroom and kitchen.
        door((520, 230), (480, 230), (520, 270), (480, 220, 520, 230)),
    ])
    furniture = "\n".join([
        "0.3 G 0.5 w",
        "440 70 90 100 re S",  # bed
        "450 150 30 15 re 490 150 30 15 re S",  # pillows
        circle(180, 300, 30),
        "S",  # table
        polygon([(310, 330), (310, 385), (535, 385), (535, 300), (505, 300), (505, 355),
                 (340, 355), (340, 330)]),
        "S",  # kitchen counter
    ])
    hidden = "\n".join([
        "0.6 0 0 RG 0.5 w",
        dash_row((65, 225), (281, 225), 6, 4),  # beam over the living room
        "S",
        dash_row((420, 240), (420, 376), 6, 4),  # wall cupboards over the counter
        "S",
    ])
    frame = "0 G 1 w\n20 20 560 410 re S"
    return "\n".join([
        frame,
        marked("oc1", walls),
        marked("oc2", doors),
        marked("oc4", furniture),
        marked("oc3", hidden),
    ]) + "\n"


def section_page():
    wall = "\n".join([
        "0.7 g",
        rectangle(100, 120, 500, 320),
        rectangle(140, 180, 220, 280),
        rectangle(260, 180, 340, 280),
        rectangle(380, 180, 460, 280),
        "f*",
        "0.55 0.15 0.1 rg",
        polygon([(90, 320), (300, 420), (510, 320)]),
        "f",  # roof
        "0 G 0.5 w",
        # Window frames with their mullions.
        "140 180 80 100 re 260 180 80 100 re 380 180 80 100 re S",
        "180 180 m 180 280 l 300 180 m 300 280 l 420 180 m 420 280 l S",
        "0 G 1.5 w",
        "40 120 m 560 120 l S",  # ground
    ])
    hidden = "\n".join([
        "0.6 0 0 RG 0.5 w",
        dash_row((100, 80), (500, 80), 8, 4),  # foundation base
        "S",
        dash_row((100, 120), (100, 80), 8, 4),
        "S",
        dash_row((500, 120), (500, 80), 8, 4),
        "S",
    ])
    frame = "0 G 1 w\n20 20 560 410 re S"
    return "\n".join([frame, marked("oc5", wall), marked("oc3", hidden)]) + "\n"


def build():
    layers = ["Walls", "Doors", "Hidden lines", "Furniture", "Section"]
    first_layer = 8  # object number of the first optional content group
    layer_refs = [f"{first_layer + i} 0 R" for i in range(len(layers))]
    properties = " ".join(f"/oc{i + 1} {ref}" for i, ref in enumerate(layer_refs))
    media_box = "[0 0 600 450]"

    def page(content):
        return (f"<< /Type /Page /Parent 2 0 R /MediaBox {media_box} /Contents {content} 0 R\n"
                f"   /Resources << /Properties << {properties} >> >> >>")

    def stream(text):
        data = text.encode("ascii")
        return b"<< /Length %d >>\nstream\n" % len(data) + data + b"endstream"

    objects = {
        1: (f"<< /Type /Catalog /Pages 2 0 R\n"
            f"   /OCProperties << /OCGs [{' '.join(layer_refs)}]\n"
            f"      /D << /Order [{' '.join(layer_refs)}] /ON [{' '.join(layer_refs)}] /OFF [] >> >> >>"),
        2: "<< /Type /Pages /Kids [3 0 R 5 0 R] /Count 2 >>",
        3: page(4),
        4: stream(plan_page()),
        5: page(6),
        6: stream(section_page()),
        7: "<< /Title (Floor plan and wall section) /Producer (make-sample-pdf.py) >>",
    }
    for i, name in enumerate(layers):
        objects[first_layer + i] = f"<< /Type /OCG /Name ({name}) >>"

    out = bytearray(b"%PDF-1.7\n%\xe2\xe3\xcf\xd3\n")
    offsets = {}
    for number in sorted(objects):
        body = objects[number]
        offsets[number] = len(out)
        out += b"%d 0 obj\n" % number
        out += body if isinstance(body, bytes) else body.encode("ascii")
        out += b"\nendobj\n"
    xref = len(out)
    count = max(objects) + 1
    out += b"xref\n0 %d\n" % count
    out += b"0000000000 65535 f \n"
    for number in range(1, count):
        out += b"%010d 00000 n \n" % offsets[number]
    out += b"trailer\n<< /Size %d /Root 1 0 R /Info 7 0 R >>\n" % count
    out += b"startxref\n%d\n%%%%EOF\n" % xref
    return bytes(out)


def main():
    root = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
    target = sys.argv[1] if len(sys.argv) > 1 else os.path.join(root, "samples", "floorplan.pdf")
    with open(target, "wb") as f:
        f.write(build())
    print(target)


if __name__ == "__main__":
    main()
