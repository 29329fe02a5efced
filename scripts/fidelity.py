#!/usr/bin/python3
"""Page-by-page fidelity of tarquil's import against Ghostscript's rendering.

Run through scripts/fidelity, which installs what is needed and builds tarquil. For every page:

1. tarquil imports the page alone at scale 1 with the file's origin kept, so model units are
   PDF points, with line weights imported (the SVG's strokes are then drawn at the PDF's own
   widths, at least one pixel, instead of the viewer's fixed width).
2. The page's place in the model is worked out from the page dictionary (its own /MediaBox and
   /Rotate, as the importer reads them: no inheritance, turned about the centre the importer
   uses), and the SVG's viewBox is set to the rotated MediaBox, so that both pictures show the
   same part of the page at the same resolution.
3. Ghostscript renders the page on its MediaBox, without text and images (-dFILTERTEXT,
   -dFILTERIMAGE), with the plain device colour conversions (-dUseFastColor), without
   anti-aliasing; the SVG is drawn by rsvg-convert without texts and pictures, crisp.
4. Ink (any pixel that is not near white) is compared within a tolerance: a pixel of one
   picture is matched when the other has ink of a similar colour within the tolerance.
   Precision is the matched part of tarquil's ink, recall the matched part of the page's ink,
   F their harmonic mean. The colour-blind F (shape only) is shown beside it.
"""

import argparse
import json
import math
import multiprocessing
import re
import shutil
import subprocess
import sys
import xml.etree.ElementTree as ET
from pathlib import Path

import numpy as np
from PIL import Image
from scipy import ndimage

SVG_NS = "http://www.w3.org/2000/svg"
XLINK_NS = "http://www.w3.org/1999/xlink"
PLUGIN_SECTION = "5d2c7a14-9e3b-4c60-8f1a-2b6e07d4c391"
POINTS_PER_MM = 72.0 / 25.4
# Pixels at least this close to white are paper, not ink (0 to 255 per channel).
WHITE_LEVEL = 245
# Two ink pixels are of one colour when their RGB distance is at most this. Wide enough for
# the difference of the plain CMYK formulas (up to a quarter of the range in one channel on
# mid tones), narrow enough to tell one hue or grey level from another.
COLOUR_DISTANCE = 90
# A page larger than this many pixels at the chosen resolution is drawn at a lower one.
MAX_PIXELS = 24_000_000

ET.register_namespace("", SVG_NS)
ET.register_namespace("xlink", XLINK_NS)


def run(cmd, timeout, **kw):
    return subprocess.run(cmd, capture_output=True, timeout=timeout, **kw)


# ---------------------------------------------------------------------------------------------
# The page box and where the importer puts the page


def mutool_show(pdf, path, timeout=60):
    r = run(["mutool", "show", str(pdf), path], timeout)
    return r.stdout.decode("latin-1") if r.returncode == 0 else ""


NUMBER = r"[-+]?(?:\d+\.?\d*|\.\d+)"


def own_entry(text, key):
    """The value of /key written in the object text itself: ('array', [..]), ('ref', n),
    ('number', x), or None. Only the top-level dictionary counts."""
    depth = 0
    i = 0
    while i < len(text):
        if text.startswith("<<", i):
            depth += 1
            i += 2
            continue
        if text.startswith(">>", i):
            depth -= 1
            i += 2
            continue
        end = i + len(key) + 1
        if depth == 1 and text.startswith("/" + key, i) and not text[end:end + 1].isalnum():
            rest = text[end:]
            m = re.match(r"\s*\[([^\]]*)\]", rest)
            if m:
                return ("array", [float(v) for v in re.findall(NUMBER, m.group(1))])
            m = re.match(r"\s*(\d+)\s+(\d+)\s+R", rest)
            if m:
                return ("ref", int(m.group(1)))
            m = re.match(r"\s*(" + NUMBER + ")", rest)
            if m:
                return ("number", float(m.group(1)))
            return ("other", None)
        i += 1
    return None


def page_info(pdf, page):
    """Effective box and rotation (what a renderer uses) and the page's own ones (what the
    importer uses)."""
    r = run(["pdfinfo", "-box", "-f", str(page), "-l", str(page), str(pdf)], 60)
    text = r.stdout.decode("latin-1")
    m = re.search(r"Page\s+%d MediaBox:\s+(%s)\s+(%s)\s+(%s)\s+(%s)" % ((page,) + (NUMBER,) * 4),
                  text)
    media = [float(v) for v in m.groups()] if m else None
    m = re.search(r"Page\s+%d rot:\s+(-?\d+)" % page, text)
    rot = int(m.group(1)) if m else 0

    own = mutool_show(pdf, "pages/%d" % page)
    own_media = None
    e = own_entry(own, "MediaBox")
    if e and e[0] == "ref":  # the importer resolves the box
        body = re.sub(r"^\d+ \d+ obj|endobj", "", mutool_show(pdf, str(e[1])).strip())
        e = ("array", [float(v) for v in re.findall(NUMBER, body)])
    if e and e[0] == "array" and len(e[1]) >= 4:
        own_media = e[1][:4]
    e = own_entry(own, "Rotate")
    own_rotate = e[1] if e and e[0] == "number" else 0.0  # a reference reads as 0
    return media, rot, own_media, own_rotate


def sin_degrees(angle):
    """The importer's sine of degrees, exact on the axes."""
    angle = math.fmod(angle, 360.0)
    if angle < 0:
        angle += 360.0
    sign = 1.0
    if angle > 180.0:
        angle -= 180.0
        sign = -1.0
    if angle > 90.0:
        angle = 180.0 - angle
    return sign * math.sin(math.atan2(1, 1) * angle / 45.0)


def page_matrix(own_media, own_rotate):
    """The matrix that puts the first selected page into the model (a, b, c, d, e, f)."""
    a = -own_rotate
    while a < 0:
        a += 360.0
    e = f = 0.0
    if own_media:
        x0, y0, x1, y1 = own_media
        q = int((a + 45) / 90)
        if q % 2 == 0:
            e, f = (y0 + y1) / 2, (x0 + x1) / 2
        else:
            e, f = (x0 + x1) / 2, (y0 + y1) / 2
    c, s = sin_degrees(a + 90), sin_degrees(a)
    # T(e, f) * R(a) * T(-e, -f), row-vector convention: x' = a x + c y + e.
    return (c, s, -s, c, e - (c * e - s * f), f - (s * e + c * f))


def transform_box(m, box):
    a, b, c, d, e, f = m
    x0, y0, x1, y1 = box
    pts = [(a * x + c * y + e, b * x + d * y + f) for x in (x0, x1) for y in (y0, y1)]
    xs, ys = [p[0] for p in pts], [p[1] for p in pts]
    return min(xs), min(ys), max(xs), max(ys)


# ---------------------------------------------------------------------------------------------
# The two pictures


def render_reference(pdf, page, dpi, out_png, keep_text, keep_images):
    cmd = ["gs", "-q", "-dSAFER", "-dBATCH", "-dNOPAUSE", "-sDEVICE=png16m", "-r%g" % dpi,
           "-dFirstPage=%d" % page, "-dLastPage=%d" % page, "-dUseFastColor",
           "-dTextAlphaBits=1", "-dGraphicsAlphaBits=1", "-sOutputFile=" + str(out_png),
           str(pdf)]
    if not keep_text:
        cmd.insert(-2, "-dFILTERTEXT")
    if not keep_images:
        cmd.insert(-2, "-dFILTERIMAGE")
    try:
        r = run(cmd, 180)
    except subprocess.TimeoutExpired:
        return "gs timed out"
    if not out_png.exists():
        lines = r.stderr.decode("latin-1").strip().splitlines()
        return "gs: " + (lines[-1] if lines else "no picture")
    return None


def plot_widths(doc):
    """Stroke width in points of each curve object, in document order."""
    layers = doc.get("layers", [])
    widths = []
    for obj in doc.get("objects", []):
        if obj.get("kind") != "curve":
            continue
        w = obj.get("plotWeight") or 0.0
        if obj.get("plotWeightSource") != "object":
            layer = obj.get("layer", 0)
            w = layers[layer].get("plotWeight", 0.0) if 0 <= layer < len(layers) else 0.0
        widths.append(abs(w or 0.0) * POINTS_PER_MM)
    return widths


def prepare_svg(svg_in, svg_out, doc, window, pixel_size, keep_images, keep_text):
    """The importer's SVG on the page's window: viewBox, size, no texts (nor pictures), strokes
    at their widths, no anti-aliasing."""
    tree = ET.parse(svg_in)
    root = tree.getroot()
    x0, y0, x1, y1 = window
    width, height = pixel_size
    root.set("viewBox", "%r %r %r %r" % (x0, -y1, x1 - x0, y1 - y0))
    root.set("width", str(width))
    root.set("height", str(height))
    root.set("preserveAspectRatio", "none")
    root.set("shape-rendering", "crispEdges")
    root.set("text-rendering", "optimizeSpeed")

    one_pixel = (x1 - x0) / width
    widths = plot_widths(doc)
    strokes, fills = [], []
    for parent in root.iter():
        for child in list(parent):
            tag = child.tag.split("}")[-1]
            if (tag == "text" and not keep_text) or (tag == "image" and not keep_images):
                parent.remove(child)
            elif tag == "path" and child.get("stroke") not in (None, "none"):
                strokes.append(child)
            elif tag == "path" and child.get("fill") not in (None, "none"):
                # Ghostscript paints every pixel a fill touches; an outline of one pixel in
                # the fill's colour does the same here, so that fills thinner than a pixel
                # (rules and dots drawn as rectangles) do not vanish between pixel centres.
                child.set("stroke", child.get("fill"))
                fills.append(child)
    matched = len(strokes) == len(widths)
    for path, w in zip(strokes, widths if matched else [0.0] * len(strokes)):
        path.set("stroke-width", repr(max(w, one_pixel)))
    for path in fills:
        path.set("stroke-width", repr(one_pixel))
    tree.write(svg_out, xml_declaration=True, encoding="UTF-8")
    return matched


def render_svg(svg, pixel_size, out_png):
    width, height = pixel_size
    try:
        r = run(["rsvg-convert", "-w", str(width), "-h", str(height), "-b", "white", "-o",
                 str(out_png), str(svg)], 300)
    except subprocess.TimeoutExpired:
        return "rsvg-convert timed out"
    if r.returncode != 0:
        return "rsvg-convert: " + r.stderr.decode("latin-1").strip()[:200]
    return None


def load_rgb(path, size=None):
    img = Image.open(path).convert("RGB")
    if size and img.size != size:
        img = img.resize(size, Image.NEAREST)
    return np.asarray(img, dtype=np.int16)


# ---------------------------------------------------------------------------------------------
# The comparison


def disk_offsets(radius):
    r = int(math.ceil(radius))
    return [(dy, dx) for dy in range(-r, r + 1) for dx in range(-r, r + 1)
            if dx * dx + dy * dy <= radius * radius]


def shifted(a, dy, dx, fill):
    """a moved by (dy, dx): out[y, x] = a[y + dy, x + dx], fill outside."""
    out = np.full_like(a, fill)
    h, w = a.shape[:2]
    ys, yd = (slice(dy, h), slice(0, h - dy)) if dy >= 0 else (slice(0, h + dy), slice(-dy, h))
    xs, xd = (slice(dx, w), slice(0, w - dx)) if dx >= 0 else (slice(0, w + dx), slice(-dx, w))
    out[yd, xd] = a[ys, xs]
    return out


def matched_ink(mine, other, mine_ink, other_ink, offsets):
    """Ink pixels of `mine` with ink of a similar colour in `other` within the offsets."""
    found = np.zeros(mine_ink.shape, dtype=bool)
    limit = COLOUR_DISTANCE * COLOUR_DISTANCE
    for dy, dx in offsets:
        o_ink = shifted(other_ink, dy, dx, False)
        cand = mine_ink & o_ink & ~found
        if not cand.any():
            continue
        o = shifted(other, dy, dx, 255)
        d = mine[cand] - o[cand]
        ok = (d.astype(np.int32) ** 2).sum(axis=1) <= limit
        idx = np.nonzero(cand)
        found[idx[0][ok], idx[1][ok]] = True
    return found


def score(p, r):
    return 0.0 if p + r == 0 else 2 * p * r / (p + r)


def compare(ref, mine, tolerance):
    ref_ink = (ref < WHITE_LEVEL).any(axis=2)
    mine_ink = (mine < WHITE_LEVEL).any(axis=2)
    n_ref, n_mine = int(ref_ink.sum()), int(mine_ink.sum())
    offsets = disk_offsets(tolerance)
    mine_ok = matched_ink(mine, ref, mine_ink, ref_ink, offsets)
    ref_ok = matched_ink(ref, mine, ref_ink, mine_ink, offsets)
    structure = np.array([[dy * dy + dx * dx <= tolerance * tolerance
                           for dx in range(-int(tolerance), int(tolerance) + 1)]
                          for dy in range(-int(tolerance), int(tolerance) + 1)])
    near_ref = ndimage.binary_dilation(ref_ink, structure)
    near_mine = ndimage.binary_dilation(mine_ink, structure)
    precision = mine_ok.sum() / n_mine if n_mine else 1.0
    recall = ref_ok.sum() / n_ref if n_ref else 1.0
    shape_p = (mine_ink & near_ref).sum() / n_mine if n_mine else 1.0
    shape_r = (ref_ink & near_mine).sum() / n_ref if n_ref else 1.0
    return {
        "precision": float(precision), "recall": float(recall),
        "f": float(score(precision, recall)), "shape_f": float(score(shape_p, shape_r)),
        "ink_ref": n_ref, "ink_tarquil": n_mine,
        "masks": (ref_ink, mine_ink, ref_ok, mine_ok),
    }


def side_by_side(ref, mine, masks, out_png, cad=None):
    """Reference | tarquil | overlay: black where both agree, blue page ink tarquil lacks, red
    tarquil ink the page lacks (or of another colour); then, when given, the DXF as a CAD
    program draws it, fitted to its own page and so not compared pixel by pixel."""
    ref_ink, mine_ink, ref_ok, mine_ok = masks
    overlay = np.full(ref.shape, 255, dtype=np.uint8)
    overlay[ref_ink & ref_ok] = (150, 150, 150)
    overlay[mine_ink & mine_ok] = (0, 0, 0)
    overlay[ref_ink & ~ref_ok] = (40, 90, 255)
    overlay[mine_ink & ~mine_ok] = (230, 30, 30)
    gap = np.full((ref.shape[0], 8, 3), 200, dtype=np.uint8)
    panels = [ref.astype(np.uint8), gap, mine.astype(np.uint8), gap, overlay]
    if cad is not None:
        panels += [gap, cad.astype(np.uint8)]
    strip = np.concatenate(panels, axis=1)
    img = Image.fromarray(strip)
    if img.width > 4000:
        img = img.resize((4000, max(1, img.height * 4000 // img.width)), Image.LANCZOS)
    img.save(out_png)


# ---------------------------------------------------------------------------------------------
# One page


def cad_picture(dxf, shape):
    """The DXF drawn by LibreCAD through scripts/dxf-picture, on a white panel of `shape`;
    None when there is no DXF or LibreCAD draws nothing of it."""
    if not dxf.exists():
        return None
    png = dxf.with_name(dxf.name + ".png")
    script = Path(__file__).resolve().parent / "dxf-picture"
    try:
        if run([str(script), str(dxf), str(png), "100"], 300).returncode != 0:
            return None
    except subprocess.TimeoutExpired:
        return None
    img = Image.open(png).convert("RGB")
    img.thumbnail((shape[1], shape[0]), Image.LANCZOS)
    panel = np.full(shape, 255, dtype=np.uint8)
    panel[:img.height, :img.width] = np.asarray(img)
    return panel


def settings_file(path):
    section = {"PDF_ImportLineWeights": {"type": "bool", "value": True}}
    path.write_text(json.dumps({"version": 1, "sections": {PLUGIN_SECTION: section}}))


def page_name(pdf, page):
    return "%s__%s__p%03d" % (pdf.parent.name, pdf.stem, page)


def measure_page(job):
    try:
        return measure_page_unguarded(job)
    except Exception as e:  # one odd page must not end the whole run
        pdf, page, _ = job
        return {"file": str(pdf), "page": page, "name": page_name(pdf, page),
                "status": "script error", "note": repr(e)[:200], "f": 0.0, "precision": 0.0,
                "recall": 0.0, "shape_f": 0.0}


def import_pdf(args, pdf, pages, base):
    """tarquil's import of `pages` of `pdf` at scale 1 into base.json and base.raw.svg:
    (exit status, the JSON report, the SVG's path, notes)."""
    settings = base.with_name(base.name + ".settings.json")
    settings_file(settings)
    temp = base.with_name(base.name + ".images").resolve()
    json_out, svg_raw = base.with_name(base.name + ".json"), base.with_name(base.name + ".raw.svg")
    cmd = [args.tarquil, "import", str(pdf), "--pages", pages, "--settings", str(settings),
           "--option", "PreserveModelScale=true", "--option", "VelmoScale=1", "--option",
           "PDFScale=1", "--option", "PdfUnits=3", "--quiet", "--temp-dir", str(temp),
           "--json", str(json_out), "--svg", str(svg_raw)]
    if args.dxf:
        cmd += ["--dxf", str(base.with_name(base.name + ".dxf"))]
    try:
        status = run(cmd, args.timeout, stdin=subprocess.DEVNULL).returncode
    except subprocess.TimeoutExpired:
        status = "timeout"
    doc = {}
    if json_out.exists():
        try:
            doc = json.loads(json_out.read_text(encoding="utf-8"))
        except ValueError:
            doc = {}
    notes = []
    if status != 0:
        msgs = [m.get("text", "").strip() for m in doc.get("messages", [])]
        notes.append("import %s: %s" % (status, (msgs[-1] if msgs else "")[:80]))
    return status, doc, svg_raw, notes


def judge_page(args, pdf, page, media, window, imported):
    """Renders the page, draws the imported SVG on `window` and compares the two."""
    status, doc, svg_raw, notes = imported
    name = page_name(pdf, page)
    base = Path(args.out) / "pages" / name
    row = {"file": str(pdf), "page": page, "name": name, "note": "",
           "objects": len(doc.get("objects", []))}
    dpi = args.dpi
    w_pt, h_pt = media[2] - media[0], media[3] - media[1]
    if w_pt * h_pt * (dpi / 72.0) ** 2 > MAX_PIXELS:
        dpi = 72.0 * math.sqrt(MAX_PIXELS / (w_pt * h_pt))
        notes = notes + ["drawn at %.0f dpi" % dpi]
    row["dpi"] = dpi

    ref_png = base.with_name(name + ".ref.png")
    err = render_reference(pdf, page, dpi, ref_png, args.text, args.images)
    if err:
        row.update(status="reference failed", note=err, f=0.0, precision=0.0, recall=0.0,
                   shape_f=0.0)
        return row
    ref = load_rgb(ref_png)
    size = (ref.shape[1], ref.shape[0])

    mine_png = base.with_name(name + ".svg.png")
    if svg_raw.exists():
        svg = base.with_name(name + ".svg")
        if not prepare_svg(svg_raw, svg, doc, window, size, args.images, args.text):
            notes = notes + ["stroke widths unmatched"]
        err = render_svg(svg, size, mine_png)
        if err:
            notes = notes + [err]
    mine = load_rgb(mine_png, size) if mine_png.exists() else np.full(ref.shape, 255, np.int16)

    result = compare(ref, mine, args.tolerance)
    masks = result.pop("masks")
    np.savez_compressed(base.with_name(name + ".masks.npz"), *masks)
    row.update(result)
    row["status"] = "ok" if status == 0 else "import " + str(status)
    row["blank"] = result["ink_ref"] == 0 and result["ink_tarquil"] == 0
    row["note"] = "; ".join(notes)
    return row


def box_notes(rot, own_rotate, own_media):
    notes = []
    if (own_rotate % 360) != (rot % 360):
        notes.append("inherited /Rotate %d" % rot)
    if own_media is None:
        notes.append("inherited /MediaBox")
    return notes


def measure_file(job):
    try:
        return measure_file_stacked(job)
    except Exception as e:  # one odd file must not end the whole run
        pdf, pages, _ = job
        return [{"file": str(pdf), "page": p, "name": page_name(pdf, p),
                 "status": "script error", "note": repr(e)[:200], "f": 0.0, "precision": 0.0,
                 "recall": 0.0, "shape_f": 0.0} for p in range(1, pages + 1)]


def measure_page_unguarded(job):
    pdf, page, args = job
    name = page_name(pdf, page)
    media, rot, own_media, own_rotate = page_info(pdf, page)
    if media is None:
        return {"file": str(pdf), "page": page, "name": name, "note": "",
                "status": "no page box", "f": 0.0, "precision": 0.0, "recall": 0.0,
                "shape_f": 0.0}
    window = transform_box(page_matrix(own_media, own_rotate), media)
    imported = import_pdf(args, pdf, str(page), Path(args.out) / "pages" / name)
    imported[3][:0] = box_notes(rot, own_rotate, own_media)
    return judge_page(args, pdf, page, media, window, imported)


def drawn_box(doc):
    """The box of the curves and hatches of a report, Bezier spans sampled."""
    xs, ys = [], []

    def curve(c):
        for seg in c.get("segments", []):
            curve(seg)
        pts = c.get("points", [])
        if c.get("type") == "nurbs" and not c.get("rational") and len(pts) == 4:
            for k in range(33):
                t = k / 32.0
                w = ((1 - t) ** 3, 3 * t * (1 - t) ** 2, 3 * t * t * (1 - t), t ** 3)
                xs.append(sum(wi * p[0] for wi, p in zip(w, pts)))
                ys.append(sum(wi * p[1] for wi, p in zip(w, pts)))
        else:
            xs.extend(p[0] for p in pts)
            ys.extend(p[1] for p in pts)

    for obj in doc.get("objects", []):
        if obj.get("kind") == "curve":
            curve(obj.get("curve", {}))
        elif obj.get("kind") == "hatch":
            for loop in obj.get("loops", []):
                curve(loop.get("curve", {}))
    return (min(xs), min(ys), max(xs), max(ys)) if xs else None


def measure_file_stacked(job):
    """Every page of one import of the whole file, each on the place the page driver gives it
    below the pages before it."""
    pdf, pages, args = job
    base = Path(args.out) / "pages" / ("%s__%s__all" % (pdf.parent.name, pdf.stem))
    whole = import_pdf(args, pdf, "1-%d" % pages, base)
    rows, cursor = [], 0.0
    for ordinal in range(pages):
        page = ordinal + 1
        name = page_name(pdf, page)
        media, rot, own_media, own_rotate = page_info(pdf, page)
        if media is None:
            rows.append({"file": str(pdf), "page": page, "name": name, "note": "",
                         "status": "no page box", "f": 0.0, "precision": 0.0,
                         "recall": 0.0, "shape_f": 0.0})
            continue
        size, e, f = 0.0, 0.0, 0.0
        if own_media:
            x0, y0, x1, y1 = own_media
            a = -own_rotate % 360.0
            if int((a + 45) / 90) % 2 == 0:
                size, e, f = y1 - y0, (y0 + y1) / 2, (x0 + x1) / 2
            else:
                size, e, f = x1 - x0, (x0 + x1) / 2, (y0 + y1) / 2
        elif ordinal == 1:
            # The second page without a box of its own takes the first page's drawing,
            # grown by its own size on every side.
            first = import_pdf(args, pdf, "1", base.with_name(page_name(pdf, 1) + ".first"))
            box = drawn_box(first[1])
            if box:
                size = 3 * (box[3] - box[1])
                e, f = (box[0] + box[2]) / 2, (box[1] + box[3]) / 2
        if ordinal:
            cursor -= size / 2
        turn = page_matrix(None, own_rotate)
        # The turn about (e, f), then the move down to the cursor.
        a, b, c, d = turn[:4]
        matrix = (a, b, c, d, e - (a * e + c * f), f - (b * e + d * f) + cursor)
        cursor -= size / 2
        window = transform_box(matrix, media)
        status, doc, svg_raw, notes = whole
        imported = (status, doc, svg_raw, box_notes(rot, own_rotate, own_media) + notes)
        rows.append(judge_page(args, pdf, page, media, window, imported))
    return rows


# ---------------------------------------------------------------------------------------------


def page_count(pdf):
    r = run(["pdfinfo", str(pdf)], 60)
    m = re.search(r"^Pages:\s+(\d+)", r.stdout.decode("latin-1"), re.M)
    return int(m.group(1)) if m else 0


def main():
    ap = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    ap.add_argument("files", nargs="*", help="PDF files (default: the corpus)")
    ap.add_argument("--tarquil", required=True)
    ap.add_argument("--corpus", default="../shared/corpus")
    ap.add_argument("--dpi", type=float, default=100.0, help="resolution (100)")
    ap.add_argument("--tolerance", type=float, default=2.0, help="pixels (2)")
    ap.add_argument("--jobs", type=int, default=2)
    ap.add_argument("--worst", type=int, default=20, help="side-by-side pictures kept (20)")
    ap.add_argument("--max-pages", type=int, default=0, help="pages per file (0: all)")
    ap.add_argument("--timeout", type=int, default=120, help="seconds per import (120)")
    ap.add_argument("--images", action="store_true",
                    help="keep images on both sides (picture frames in the SVG)")
    ap.add_argument("--text", action="store_true",
                    help="keep texts on both sides (in the machine's fonts: for placement)")
    ap.add_argument("--stacked", action="store_true",
                    help="import each file whole and find every page where the page driver "
                         "stacks it below the pages before it")
    ap.add_argument("--dxf", action="store_true",
                    help="also write each import as DXF and add LibreCAD's drawing of it to "
                         "the side-by-side pictures")
    ap.add_argument("--out", default="out/fidelity")
    args = ap.parse_args()

    files = [Path(f) for f in args.files]
    if not files:
        corpus = Path(args.corpus)
        if not corpus.is_dir():
            print("No corpus at %s: nothing to measure." % corpus)
            return 0
        for sub in ("vector", "features", "mixed"):
            files += sorted((corpus / sub).glob("*.pdf"))
    out = Path(args.out)
    shutil.rmtree(out, ignore_errors=True)
    (out / "pages").mkdir(parents=True)
    (out / "worst").mkdir()

    jobs = []
    for pdf in files:
        n = page_count(pdf)
        if n == 0:
            print("%s: no pages (the renderer cannot read it); left out" % pdf, file=sys.stderr)
        if args.max_pages:
            n = min(n, args.max_pages)
        if args.stacked:
            jobs += [(pdf, n, args)] if n else []
        else:
            jobs += [(pdf, p, args) for p in range(1, n + 1)]

    rows = []
    measure = measure_file if args.stacked else measure_page
    with multiprocessing.Pool(args.jobs) as pool:
        for i, result in enumerate(pool.imap_unordered(measure, jobs), 1):
            rows += result if isinstance(result, list) else [result]
            if sys.stderr.isatty():
                print("\r%d/%d" % (i, len(jobs)), end="", file=sys.stderr, flush=True)
    print(file=sys.stderr)

    rows.sort(key=lambda r: (r["f"], r["file"], r["page"]))
    columns = ["f", "precision", "recall", "shape_f", "ink_ref", "ink_tarquil", "objects",
               "status", "file", "page", "note"]
    with open(out / "summary.tsv", "w") as tsv:
        tsv.write("\t".join(columns) + "\n")
        for r in rows:
            tsv.write("\t".join(str(r.get(c, "")) for c in columns) + "\n")

    print("%6s %6s %6s %6s  %-60s %s" % ("F", "P", "R", "shape", "page", "note"))
    for r in rows:
        label = "%s p%d" % (Path(r["file"]).relative_to(args.corpus)
                             if r["file"].startswith(args.corpus) else r["file"], r["page"])
        note = ("blank; " if r.get("blank") else "") + r.get("note", "")
        print("%6.3f %6.3f %6.3f %6.3f  %-60s %s" % (r["f"], r["precision"], r["recall"],
                                                     r.get("shape_f", 0.0), label, note))
    # Pages the renderer could not draw measure nothing; blank pages would only pull the
    # mean up.
    unrendered = [r for r in rows
                  if r["status"] in ("no page box", "reference failed", "script error")]
    inked = [r for r in rows if not r.get("blank") and r not in unrendered]
    mean = sum(r["f"] for r in inked) / len(inked) if inked else 0.0
    shape = sum(r.get("shape_f", 0.0) for r in inked) / len(inked) if inked else 0.0
    below = sum(1 for r in inked if r["f"] < 0.9)
    print("\n%d pages, %d blank on both sides, %d the renderer could not draw; over the other "
          "%d: mean F %.4f (shape %.4f), %d under 0.9" % (
              len(rows), sum(1 for r in rows if r.get("blank")), len(unrendered), len(inked),
              mean, shape, below))

    for k, r in enumerate(inked[:args.worst]):
        base = out / "pages" / r["name"]
        ref_png = base.with_name(r["name"] + ".ref.png")
        mine_png = base.with_name(r["name"] + ".svg.png")
        masks_file = base.with_name(r["name"] + ".masks.npz")
        if not (ref_png.exists() and masks_file.exists()):
            continue
        ref = load_rgb(ref_png)
        size = (ref.shape[1], ref.shape[0])
        mine = load_rgb(mine_png, size) if mine_png.exists() else np.full(ref.shape, 255,
                                                                          np.int16)
        masks = np.load(masks_file)
        cad = cad_picture(base.with_name(r["name"] + ".dxf"), ref.shape) if args.dxf else None
        side_by_side(ref, mine, [masks["arr_%d" % i] for i in range(4)],
                     out / "worst" / ("%02d_%s.png" % (k + 1, r["name"])), cad)
    return 0


if __name__ == "__main__":
    sys.exit(main())
