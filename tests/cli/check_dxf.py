#!/usr/bin/python3
"""Reads a DXF drawing written by `tarquil import --dxf` back with ezdxf, an independent
reader, and holds it against the JSON report of the same document: the audit finds no error,
and layers, linetypes, entity kinds and counts, coordinates, hatch loops, texts and pictures
agree.

Usage: check_dxf.py DRAWING.dxf REPORT.json
Exit status 0 when they agree; 1 with one line per difference; 3 when ezdxf is missing.
"""
import json
import math
import sys

try:
    import ezdxf
except ImportError:
    print("ezdxf is not installed")
    sys.exit(3)

REL = 1e-9
FORBIDDEN = set('<>/\\":;?*|=`')
UNITS = {"millimeters": 4, "centimeters": 5, "meters": 6, "inches": 1, "feet": 2, "points": 0}
LINEWEIGHTS = [0, 5, 9, 13, 15, 18, 20, 25, 30, 35, 40, 50, 53, 60, 70, 80, 90, 100, 106, 120,
               140, 158, 200, 211]

problems = []


def fail(where, text):
    problems.append(f"{where}: {text}")


def near(a, b):
    return abs(a - b) <= REL * max(1.0, abs(a), abs(b))


def same_points(where, got, want):
    if len(got) != len(want):
        fail(where, f"{len(got)} points, expected {len(want)}")
        return
    for i, (p, q) in enumerate(zip(got, want)):
        if not all(near(float(a), float(b)) for a, b in zip(p, q)):
            fail(where, f"point {i} is {tuple(p)}, expected {tuple(q)}")
            return


def same_numbers(where, got, want):
    got, want = list(got), list(want)
    if len(got) != len(want) or not all(near(a, b) for a, b in zip(got, want)):
        fail(where, f"{got} expected {want}")


def table_name(name):
    out = "".join("_" if c in FORBIDDEN or ord(c) < 0x20 or ord(c) == 0x7F else c for c in name)
    out = out.strip(" ")[:255]
    return out or "_"


def unique(name, taken):
    candidate, n = name, 2
    while candidate.lower() in taken:
        suffix = f" ({n})"
        candidate = name[: 255 - len(suffix)] + suffix
        n += 1
    taken.add(candidate.lower())
    return candidate


def lineweight(mm):
    if not mm > 0:
        return -3
    return min(LINEWEIGHTS, key=lambda w: abs(w - mm * 100))


def layer_names(report):
    names, taken, zero = [], {"0"}, False
    for layer in report["layers"]:
        name = table_name(layer["fullPath"].replace("::", "$"))
        if name == "0" and not zero:
            zero = True
        else:
            name = unique(name, taken)
        names.append(name)
    return names


def linetype_names(report):
    taken = {"byblock", "bylayer", "continuous"}
    return [unique(table_name(lt["name"]), taken) for lt in report["linetypes"]]


def check_layers(doc, report, names, ltnames):
    by_id = {layer["id"]: layer for layer in report["layers"]}

    def inherited(layer, key, wanted):
        seen = 0
        while layer is not None and seen <= len(by_id):
            if layer[key] == wanted:
                return True
            layer = by_id.get(layer["parentId"])
            seen += 1
        return False

    for layer, name in zip(report["layers"], names):
        where = f"layer {name!r}"
        if not doc.layers.has_entry(name):
            fail(where, "missing")
            continue
        got = doc.layers.get(name)
        if got.rgb != tuple(layer["color"]):
            fail(where, f"colour {got.rgb}, expected {layer['color']}")
        if got.is_off() != inherited(layer, "visible", False):
            fail(where, f"off is {got.is_off()}")
        if got.is_locked() != inherited(layer, "locked", True):
            fail(where, f"locked is {got.is_locked()}")
        lt = layer["linetype"]
        want = "Continuous" if lt is None else ltnames[lt]
        if got.dxf.linetype != want:
            fail(where, f"linetype {got.dxf.linetype!r}, expected {want!r}")
        if got.dxf.lineweight != lineweight(layer["plotWeight"]):
            fail(where, f"lineweight {got.dxf.lineweight}")
        if got.has_xdata("TARQUIL") != layer["reference"]:
            fail(where, "reference mark does not match")


def check_linetypes(doc, report, ltnames):
    for lt, name in zip(report["linetypes"], ltnames):
        where = f"linetype {name!r}"
        if not doc.linetypes.has_entry(name):
            fail(where, "missing")
            continue
        want = [s["length"] * (-1 if s["type"] == "space" else 1) for s in lt["segments"]]
        while want and want[0] < 0 and any(v >= 0 for v in want):
            want = want[1:] + want[:1]
        tags = doc.linetypes.get(name).pattern_tags.tags
        same_numbers(where, [t.value for t in tags if t.code == 49], want)
        same_numbers(where + " length", [t.value for t in tags if t.code == 40],
                     [sum(abs(v) for v in want)])


def pieces(curve):
    if curve["type"] == "polycurve":
        out = []
        for segment in curve["segments"]:
            out += pieces(segment)
        return out
    return [curve]


def straight_chain(parts):
    points = []
    for part in parts:
        if part["type"] not in ("line", "polyline") or not part["points"]:
            return None
        if points:
            if points[-1] != part["points"][0]:
                return None
            points.pop()
        points += part["points"]
    return points if len(points) >= 2 else None


def constant_z(points):
    return all(p[2] == points[0][2] for p in points)


def open_polyline(points):
    """The vertices as DXF keeps them: a closing repeat of the first becomes a flag."""
    if len(points) >= 4 and points[0] == points[-1]:
        return points[:-1], True
    return points, False


def dxf_knots(knots):
    return [knots[0]] + list(knots) + [knots[-1]] if knots else []


def expected_entities(obj):
    """(kind, json) of each entity that a report object becomes."""
    kind = obj["kind"]
    if kind == "curve":
        parts = pieces(obj["curve"])
        chain = straight_chain(parts) if len(parts) > 1 else None
        if chain and constant_z(chain):
            return [("LWPOLYLINE", {"type": "polyline", "points": chain})]
        out = []
        for part in parts:
            if part["type"] == "line":
                out.append(("LINE", part))
            elif part["type"] == "polyline":
                out.append(("LWPOLYLINE" if constant_z(part["points"]) else "SPLINE", part))
            else:
                out.append(("SPLINE", part))
        return out
    if kind == "hatch":
        return [("HATCH", obj)]
    if kind == "text":
        n = max(1, (len(obj["text"]) + 249) // 250)
        return [("TEXT", dict(obj, piece=k)) for k in range(n)]
    if kind == "picture":
        return [("IMAGE", obj)]
    return []


def check_style(where, entity, obj, names, ltnames):
    if entity.dxf.layer != names[obj["layer"]]:
        fail(where, f"layer {entity.dxf.layer!r}, expected {names[obj['layer']]!r}")
    if obj["colorSource"] == "object":
        if entity.rgb != tuple(obj["color"]):
            fail(where, f"colour {entity.rgb}, expected {obj['color']}")
    elif entity.dxf.hasattr("true_color") or entity.dxf.color != 256:
        fail(where, "has a colour of its own")
    if obj["linetypeSource"] == "object":
        lt = obj["linetype"]
        want = "Continuous" if lt is None else ltnames[lt]
        if entity.dxf.linetype != want:
            fail(where, f"linetype {entity.dxf.linetype!r}, expected {want!r}")
    elif entity.dxf.linetype.lower() != "bylayer":
        fail(where, "has a linetype of its own")
    if entity.has_xdata("TARQUIL") != obj["reference"]:
        fail(where, "reference mark does not match")
    want = lineweight(obj["plotWeight"]) if obj["plotWeightSource"] == "object" else -1
    if entity.dxf.lineweight != want:
        fail(where, f"lineweight {entity.dxf.lineweight}, expected {want}")


def check_spline(where, spline, curve):
    if curve["type"] == "polyline":
        n = len(curve["points"])
        want_knots = [0.0] + list(range(n)) + [n - 1.0]
        degree, weights = 1, []
    else:
        want_knots = dxf_knots(curve["knots"])
        degree, weights = curve["degree"], curve.get("weights", [])
    if spline.dxf.degree != degree:
        fail(where, f"degree {spline.dxf.degree}, expected {degree}")
    same_numbers(where + " knots", spline.knots, want_knots)
    same_points(where + " control points", spline.control_points, curve["points"])
    same_numbers(where + " weights", spline.weights, weights)


def check_curve(where, entity, dxftype, curve):
    if dxftype == "LINE":
        same_points(where, [entity.dxf.start, entity.dxf.end], curve["points"])
    elif dxftype == "LWPOLYLINE":
        points, closed = open_polyline(curve["points"])
        if entity.closed != closed:
            fail(where, f"closed is {entity.closed}")
        got = [(x, y, entity.dxf.elevation) for x, y in entity.get_points("xy")]
        same_points(where, got, points)
    else:
        check_spline(where, entity, curve)


def ocs_2d(doc_ocs, point):
    p = doc_ocs.from_wcs(ezdxf.math.Vec3(point))
    return (p.x, p.y)


def check_hatch(where, hatch, obj):
    loops = obj["loops"]
    paths = list(hatch.paths)
    if len(paths) != len(loops):
        fail(where, f"{len(paths)} boundary paths, expected {len(loops)}")
        return
    if not hatch.dxf.solid_fill:
        fail(where, "not solid")
    ocs = hatch.ocs()
    for i, (path, loop) in enumerate(zip(paths, loops)):
        at = f"{where} loop {i}"
        outer = bool(path.path_type_flags & 1)
        if outer != (loop["type"] == "outer"):
            fail(at, f"external flag is {outer} for an {loop['type']} loop")
        parts = pieces(loop["curve"])
        chain = straight_chain(parts)
        if chain:
            if path.type != ezdxf.entities.BoundaryPathType.POLYLINE:
                fail(at, "not a polyline path")
                continue
            points, closed = open_polyline(chain)
            if not path.is_closed:
                fail(at, "polyline path not closed")
            same_points(at, [(x, y) for x, y, _ in path.vertices],
                        [ocs_2d(ocs, p) for p in points])
            continue
        edges = list(path.edges)
        want = []
        for part in parts:
            if part["type"] == "line":
                want.append(("LineEdge", part["points"]))
            elif part["type"] == "polyline":
                pts = part["points"]
                want += [("LineEdge", [pts[k - 1], pts[k]]) for k in range(1, len(pts))]
            else:
                want.append(("SplineEdge", part))
        if [type(e).__name__ for e in edges] != [k for k, _ in want]:
            fail(at, f"edges {[type(e).__name__ for e in edges]}, expected {[k for k, _ in want]}")
            continue
        for k, (edge, (kind, data)) in enumerate(zip(edges, want)):
            if kind == "LineEdge":
                same_points(f"{at} edge {k}", [edge.start, edge.end],
                            [ocs_2d(ocs, p) for p in data])
            else:
                same_numbers(f"{at} edge {k} knots", edge.knot_values, dxf_knots(data["knots"]))
                same_points(f"{at} edge {k}", edge.control_points,
                            [ocs_2d(ocs, p) for p in data["points"]])
                same_numbers(f"{at} edge {k} weights", edge.weights, data.get("weights", []))


def text_value(raw):
    """A TEXT's content as AutoCAD reads it: caret notation ("^J", "^ " a caret), then "%%%"
    a percent sign. ezdxf's own plain_text drops line breaks and a trailing caret, and reads
    runs of percent signs otherwise."""
    return ezdxf.tools.text.caret_decode(raw).replace("%%%", "%")


def check_text(where, text, obj, doc):
    k = obj["piece"]
    content = obj["text"][k * 250:(k + 1) * 250]
    if text_value(text.dxf.text) != content:
        fail(where, f"text {text_value(text.dxf.text)!r}, expected {content!r}")
    same_numbers(where + " height", [text.dxf.height], [obj["height"]])
    plane = obj["plane"]
    xaxis, yaxis = plane["xaxis"], plane["yaxis"]
    origin = [plane["origin"][i] + xaxis[i] * k * 250 * 0.6 * obj["height"] for i in range(3)]
    ocs = text.ocs()
    same_points(where + " insertion", [ocs.to_wcs(text.dxf.insert)], [origin])
    # The frame DXF describes: the baseline turned by the rotation, the letters' up direction
    # slanted by the oblique angle and turned over by the upside-down flag.
    rotation = math.radians(text.dxf.rotation)
    slant = math.radians(text.dxf.oblique)
    sign = -1.0 if text.is_upside_down else 1.0
    u = (math.cos(rotation), math.sin(rotation))
    up = (-u[1], u[0])
    v = [math.sin(slant) * u[i] + sign * math.cos(slant) * up[i] for i in range(2)]
    Vec3 = ezdxf.math.Vec3
    x = ocs.to_wcs(Vec3(u[0], u[1], 0)) - ocs.to_wcs(Vec3())
    y = ocs.to_wcs(Vec3(v[0], v[1], 0)) - ocs.to_wcs(Vec3())
    for name, got, want in (("x axis", x, xaxis), ("y axis", y, yaxis)):
        if not all(abs(a - b) < 1e-9 for a, b in zip(got, want)):
            fail(where, f"{name} {tuple(got)}, expected {want}")
    style = doc.styles.get(text.dxf.style)
    font = obj["font"]
    if style is None or style.dxf.font != font["family"]:
        fail(where, f"style {text.dxf.style!r} does not name the family {font['family']!r}")
    else:
        # Read from the extended data itself: this ezdxf's own reading swaps the two bits.
        xdata = dict(style.get_xdata("ACAD")) if style.has_xdata("ACAD") else {}
        flags = xdata.get(1071, 0)
        if xdata.get(1000) != font["family"] or (bool(flags & 0x1000000), bool(
                flags & 0x2000000)) != (font["italic"], font["bold"]):
            fail(where, f"style {text.dxf.style!r} has the wrong family, weight or slant")


def check_image(where, image, obj):
    plane = obj["plane"]
    same_points(where + " insertion", [image.dxf.insert], [plane["origin"]])
    w, h = image.dxf.image_size.x, image.dxf.image_size.y
    u = [c * w for c in image.dxf.u_pixel]
    v = [c * h for c in image.dxf.v_pixel]
    same_points(where + " edges", [u, v], [[c * obj["width"] for c in plane["xaxis"]],
                                           [c * obj["height"] for c in plane["yaxis"]]])
    definition = image.image_def
    if definition is None or definition.dxf.filename != obj["path"]:
        fail(where, "does not refer to the picture's file")


def main():
    drawing, report_path = sys.argv[1], sys.argv[2]
    with open(report_path, encoding="utf-8") as f:
        report = json.load(f)
    doc = ezdxf.readfile(drawing)
    auditor = doc.audit()
    for error in auditor.errors:
        fail("audit", f"error {error}")
    for fix in auditor.fixes:
        fail("audit", f"fix {fix}")
    if doc.header["$INSUNITS"] != UNITS[report["modelUnits"]]:
        fail("header", f"$INSUNITS {doc.header['$INSUNITS']}")
    names, ltnames = layer_names(report), linetype_names(report)
    check_layers(doc, report, names, ltnames)
    check_linetypes(doc, report, ltnames)

    entities = list(doc.modelspace())
    expected = []
    for index, obj in enumerate(report["objects"]):
        expected += [(index, kind, data) for kind, data in expected_entities(obj)]
    kinds = [e.dxftype() for e in entities]
    if kinds != [kind for _, kind, _ in expected]:
        fail("entities", f"{kinds} expected {[kind for _, kind, _ in expected]}")
    else:
        for entity, (index, kind, data) in zip(entities, expected):
            where = f"object {index} {kind}"
            obj = report["objects"][index]
            check_style(where, entity, obj, names, ltnames)
            if kind in ("LINE", "LWPOLYLINE", "SPLINE"):
                check_curve(where, entity, kind, data)
            elif kind == "HATCH":
                check_hatch(where, entity, data)
            elif kind == "TEXT":
                check_text(where, entity, data, doc)
            elif kind == "IMAGE":
                check_image(where, entity, data)
    for problem in problems[:50]:
        print(problem)
    if problems:
        return 1
    counts = {}
    for kind in kinds:
        counts[kind] = counts.get(kind, 0) + 1
    print(f"agrees: {len(report['layers'])} layers, {len(report['linetypes'])} linetypes, "
          + ", ".join(f"{n} {k}" for k, n in sorted(counts.items())))
    return 0


if __name__ == "__main__":
    sys.exit(main())
