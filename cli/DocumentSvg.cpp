#include "cli/DocumentSvg.h"

#include "host/base/GK_String.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <memory>
#include <set>
#include <utility>
#include <vector>

namespace {

std::string Number(double v) {
    v += 0.0; // no "-0" in the output
    char buf[64];
    const auto r = std::to_chars(buf, buf + sizeof buf, v);
    return std::string(buf, r.ptr);
}

std::string FixedNumber(double v) {
    char buf[64];
    const auto r = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::fixed, 2);
    return std::string(buf, r.ptr);
}

bool IsFinite(const GK_3dPoint& p) {
    return std::isfinite(p.x) && std::isfinite(p.y);
}

// Builds one path's data. A point that is not finite breaks the line there rather than
// spoiling the whole path, which a browser would then not draw at all.
class PathData {
public:
    // A filled loop must stay one subpath even where its pieces meet only within the
    // tolerance; a new subpath there would leave the region open.
    explicit PathData(bool joinPieces = false) : m_join(joinPieces) {}

    void StartAt(const GK_3dPoint& p) {
        if (m_hasPen && p.x == m_pen.x && p.y == m_pen.y)
            return;
        if (!IsFinite(p)) {
            m_hasPen = false;
            return;
        }
        if (m_join && m_hasPen) {
            LineTo(p);
            return;
        }
        Command('M', {p});
        m_start = p;
        m_drawn = 0;
    }
    void LineTo(const GK_3dPoint& p) { Segment('L', {p}); }
    void QuadTo(const GK_3dPoint& c, const GK_3dPoint& p) { Segment('Q', {c, p}); }
    void CubicTo(const GK_3dPoint& c1, const GK_3dPoint& c2, const GK_3dPoint& p) {
        Segment('C', {c1, c2, p});
    }
    // Closes the subpath when the pen is back at its start, so the corner there is joined.
    void CloseIfClosed() {
        if (m_hasPen && m_drawn > 1 && m_pen.x == m_start.x && m_pen.y == m_start.y) {
            m_text += " Z";
            m_hasPen = false;
        }
    }
    // Closes the subpath wherever the pen is, and makes the next piece start a new one even
    // when it begins where this one ended: the boundaries of a filled region stay apart.
    void Close() {
        if (m_hasPen && m_drawn > 0)
            m_text += " Z";
        m_hasPen = false;
    }
    const std::string& Text() const { return m_text; }

private:
    void Segment(char command, std::initializer_list<GK_3dPoint> points) {
        for (const GK_3dPoint& p : points) {
            if (!IsFinite(p)) {
                m_hasPen = false;
                return;
            }
        }
        if (!m_hasPen) {
            // Nothing to draw from: start where this piece ends.
            StartAt(*(points.end() - 1));
            return;
        }
        Command(command, points);
        ++m_drawn;
    }
    void Command(char command, std::initializer_list<GK_3dPoint> points) {
        if (!m_text.empty())
            m_text += ' ';
        m_text += command;
        for (const GK_3dPoint& p : points)
            m_text += ' ' + Number(p.x) + ' ' + Number(-p.y);
        m_pen = *(points.end() - 1);
        m_hasPen = true;
    }

    std::string m_text;
    GK_3dPoint m_pen, m_start;
    bool m_join = false;
    bool m_hasPen = false;
    int m_drawn = 0;
};

// Knots in groups of `degree` equal values, rising from group to group: every span is then
// a Bezier curve whose control points are the NURBS control points themselves.
bool HasBezierKnots(const GK_NurbsCurve& nurbs) {
    const int degree = nurbs.Degree();
    const int knots = nurbs.KnotCount();
    if (degree < 1 || nurbs.CVCount() < nurbs.Order() || nurbs.m_knot.Count() < knots ||
        knots % degree != 0 || (nurbs.CVCount() - 1) % degree != 0)
        return false;
    for (int i = 0; i < knots; ++i) {
        const bool groupStart = i % degree == 0;
        if (!std::isfinite(nurbs.Knot(i)))
            return false;
        if (!groupStart && nurbs.Knot(i) != nurbs.Knot(i - 1))
            return false;
        if (groupStart && i > 0 && !(nurbs.Knot(i) > nurbs.Knot(i - 1)))
            return false;
    }
    return true;
}

void AppendBezierSpans(const GK_NurbsCurve& nurbs, PathData& path) {
    const int degree = nurbs.Degree();
    std::vector<GK_3dPoint> cv(nurbs.CVCount());
    for (int i = 0; i < nurbs.CVCount(); ++i)
        nurbs.GetCV(i, cv[i]);
    path.StartAt(cv[0]);
    for (int i = 0; i + degree < nurbs.CVCount(); i += degree) {
        if (degree == 1)
            path.LineTo(cv[i + 1]);
        else if (degree == 2)
            path.QuadTo(cv[i + 1], cv[i + 2]);
        else
            path.CubicTo(cv[i + 1], cv[i + 2], cv[i + 3]);
    }
}

// Straight pieces between evaluated points. Every knot inside the domain is hit exactly,
// so corners at knots stay sharp.
void AppendSampled(const GK_Curve& curve, const GK_NurbsCurve* nurbs, PathData& path) {
    const GK_Interval domain = curve.Domain();
    std::vector<double> breaks{domain.t0};
    if (nurbs) {
        for (int i = 0; i < nurbs->KnotCount() && i < nurbs->m_knot.Count(); ++i) {
            const double k = nurbs->Knot(i);
            if (k > breaks.back() && k < domain.t1)
                breaks.push_back(k);
        }
    }
    breaks.push_back(domain.t1);

    const int spans = static_cast<int>(breaks.size()) - 1;
    const int degree = nurbs ? nurbs->Degree() : 3;
    int perSpan = nurbs ? std::max(16, 8 * degree) : 64;
    constexpr int kMaxPoints = 10000;
    if (spans * perSpan > kMaxPoints)
        perSpan = std::max(2, kMaxPoints / std::max(spans, 1));

    path.StartAt(curve.PointAt(breaks.front()));
    for (int s = 0; s < spans; ++s) {
        for (int j = 1; j <= perSpan; ++j) {
            const double t = j == perSpan ? breaks[s + 1]
                                          : breaks[s] + (breaks[s + 1] - breaks[s]) * j / perSpan;
            path.LineTo(curve.PointAt(t));
        }
    }
}

void AppendCurve(const GK_Curve& curve, PathData& path) {
    if (const auto* line = dynamic_cast<const GK_LineCurve*>(&curve)) {
        path.StartAt(line->m_line.from);
        path.LineTo(line->m_line.to);
    } else if (const auto* pline = dynamic_cast<const GK_PolylineCurve*>(&curve)) {
        if (pline->PointCount() == 0)
            return;
        path.StartAt(pline->m_pline[0]);
        for (int i = 1; i < pline->PointCount(); ++i)
            path.LineTo(pline->m_pline[i]);
    } else if (const auto* poly = dynamic_cast<const GK_PolyCurve*>(&curve)) {
        for (int i = 0; i < poly->Count(); ++i)
            if (const GK_Curve* segment = poly->SegmentCurve(i))
                AppendCurve(*segment, path);
    } else if (const auto* nurbs = dynamic_cast<const GK_NurbsCurve*>(&curve)) {
        if (!nurbs->IsRational() && nurbs->Degree() <= 3 && HasBezierKnots(*nurbs))
            AppendBezierSpans(*nurbs, path);
        else
            AppendSampled(curve, nurbs, path);
    } else {
        AppendSampled(curve, nullptr, path);
    }
}

// The boundary of a hatch: every loop a closed subpath of one path, so that with the even-odd
// rule the holes stay open.
std::string HatchPathData(const GK_Hatch& hatch) {
    PathData path(/*joinPieces=*/true);
    for (int i = 0; i < hatch.LoopCount(); ++i) {
        const std::unique_ptr<GK_Curve> loop(hatch.LoopCurve3d(i));
        if (!loop)
            continue;
        AppendCurve(*loop, path);
        path.Close();
    }
    return path.Text();
}

// stroke-dasharray and stroke-dashoffset for a linetype, both in model units; empty for a
// continuous line. SVG patterns alternate dash and gap and start with a dash, so runs of one
// kind are added up, and a leading gap is moved to the end with an offset that keeps the
// pattern where the linetype puts it.
std::pair<std::vector<double>, double> DashPattern(const GK_Linetype& linetype) {
    std::vector<double> runs; // dash and gap alternating
    bool startsWithGap = false, lastIsGap = false;
    for (int i = 0; i < linetype.SegmentCount(); ++i) {
        const GK_LinetypeSegment& s = linetype.Segment(i);
        const double length = std::abs(s.m_length);
        if (!std::isfinite(length))
            return {};
        const bool gap = s.m_seg_type == GK_LinetypeSegment::stSpace;
        if (runs.empty())
            startsWithGap = gap;
        if (!runs.empty() && gap == lastIsGap)
            runs.back() += length;
        else
            runs.push_back(length);
        lastIsGap = gap;
    }
    double offset = 0.0;
    if (startsWithGap) {
        if (runs.size() < 2)
            return {}; // all gap: drawn as a plain line rather than not at all
        offset = -runs.front();
        if (lastIsGap)
            runs.back() += runs.front();
        else
            runs.push_back(runs.front());
        runs.erase(runs.begin());
    }
    // A pattern that ends with a dash joins it to the first one.
    if (runs.size() % 2 == 1 && runs.size() > 1) {
        runs.front() += runs.back();
        offset += runs.back();
        runs.pop_back();
    }
    double total = 0.0;
    for (double v : runs)
        total += v;
    if (runs.size() < 2 || !(total > 0.0) || runs[1] == 0.0)
        return {}; // no gap at all: continuous
    offset = std::fmod(offset + total, total);
    return {runs, offset};
}

std::string HexColor(const GK_Color& c) {
    static const char* digits = "0123456789abcdef";
    std::string s = "#";
    for (int v : {c.Red(), c.Green(), c.Blue()}) {
        s += digits[(v >> 4) & 15];
        s += digits[v & 15];
    }
    return s;
}

class SvgWriter {
public:
    explicit SvgWriter(const CVelmoDoc& doc) : m_doc(doc) {
        const CVelmoLayerTable& layers = doc.LayerTable();
        const int count = layers.LayerCount();
        m_children.resize(count);
        m_objects.resize(count);
        for (int i = 0; i < count; ++i) {
            const GK_UUID& parent = layers[i].ParentId();
            const int p = parent.IsNil() ? -1 : layers.FindLayerFromId(parent);
            if (p >= 0 && p != i)
                m_children[p].push_back(i);
            else
                m_roots.push_back(i);
        }
        for (int i = 0; i < doc.ObjectCount(); ++i) {
            const int layer = doc.Object(i).Attributes().m_layer_index;
            if (layer >= 0 && layer < count)
                m_objects[layer].push_back(i);
        }
        // A layer whose parent chain loops back would be reachable from no root; such a
        // table cannot be built through the host, but it must not lose layers silently.
        std::set<int> reachable;
        for (int root : m_roots)
            Collect(root, reachable);
        for (int i = 0; i < count; ++i) {
            if (!reachable.count(i)) {
                m_roots.push_back(i);
                Collect(i, reachable);
            }
        }
    }

    std::string Write() {
        const GK_BoundingBox box = DrawingBox();
        double x0 = 0.0, y0 = 0.0, w = 100.0, h = 100.0;
        if (box.IsValid()) {
            const double dx = box.m_max.x - box.m_min.x;
            const double dy = box.m_max.y - box.m_min.y;
            const double size = std::max(dx, dy);
            const double margin = size > 0.0 ? 0.03 * size : 1.0;
            x0 = box.m_min.x - margin;
            y0 = box.m_min.y - margin;
            w = dx + 2 * margin;
            h = dy + 2 * margin;
        }
        // Picture y runs down: the model's top edge is the picture's top.
        const double top = -(y0 + h);
        const double pixels = 800.0 / std::max(w, h);

        m_out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
        m_out += "<svg xmlns=\"http://www.w3.org/2000/svg\" version=\"1.1\" viewBox=\"" +
                 Number(x0) + ' ' + Number(top) + ' ' + Number(w) + ' ' + Number(h) +
                 "\" width=\"" + FixedNumber(w * pixels) + "\" height=\"" +
                 FixedNumber(h * pixels) + "\">\n";
        // Strokes of one and a half pixels at the picture's own size, in model units so
        // that every viewer draws them alike.
        m_out += "<g fill=\"none\" stroke-width=\"" + Number(1.5 / pixels) +
                 "\" stroke-linecap=\"round\" stroke-linejoin=\"round\">\n";
        std::set<int> written;
        for (int root : m_roots)
            WriteLayer(root, 1, written);
        m_out += "</g>\n</svg>\n";
        return std::move(m_out);
    }

private:
    void Collect(int layer, std::set<int>& seen) const {
        if (!seen.insert(layer).second)
            return;
        for (int child : m_children[layer])
            Collect(child, seen);
    }

    // Shown when it and all its parents are visible, as in the modeller.
    bool IsShown(int layer) const {
        const CVelmoLayerTable& layers = m_doc.LayerTable();
        for (int guard = 0; layer >= 0 && guard <= layers.LayerCount(); ++guard) {
            if (!layers[layer].IsVisible())
                return false;
            const GK_UUID& parent = layers[layer].ParentId();
            layer = parent.IsNil() ? -1 : layers.FindLayerFromId(parent);
        }
        return true;
    }

    // The geometry of the objects the picture draws: curves and hatches.
    static const GK_Geometry* Drawn(const CVelmoObject& object) {
        if (const auto* curve = dynamic_cast<const CVelmoCurveObject*>(&object))
            return curve->Curve();
        if (const auto* hatch = dynamic_cast<const CVelmoHatch*>(&object))
            return hatch->Hatch();
        return nullptr;
    }

    // The box of what is shown; of everything when nothing is, so that a drawing on
    // hidden layers still gets a box that fits it.
    GK_BoundingBox DrawingBox() const {
        GK_BoundingBox shown, all;
        for (int i = 0; i < m_doc.ObjectCount(); ++i) {
            const CVelmoObject& object = m_doc.Object(i);
            const GK_Geometry* geometry = Drawn(object);
            if (!geometry)
                continue;
            const GK_BoundingBox box = geometry->BoundingBox();
            if (!box.IsValid())
                continue;
            all.Union(box);
            const int layer = object.Attributes().m_layer_index;
            if (layer >= 0 && layer < m_doc.LayerTable().LayerCount() && IsShown(layer))
                shown.Union(box);
        }
        return shown.IsValid() ? shown : all;
    }

    void WriteLayer(int index, int depth, std::set<int>& written) {
        if (!written.insert(index).second)
            return;
        const CVelmoLayerTable& layers = m_doc.LayerTable();
        const GK_Layer& layer = layers[index];
        const std::string indent(depth, ' ');
        m_out += indent + "<g id=\"layer-" + std::to_string(index) + "\" data-name=\"" +
                 XmlEscape(layer.Name().str()) + "\"";
        if (!layer.IsVisible())
            m_out += " display=\"none\"";
        m_out += ">\n" + indent + " <title>" + XmlEscape(layers.FullPathName(index).str()) +
                 "</title>\n";
        for (int objectIndex : m_objects[index])
            WriteObject(m_doc.Object(objectIndex), layer, indent + " ");
        for (int child : m_children[index])
            WriteLayer(child, depth + 1, written);
        m_out += indent + "</g>\n";
    }

    void WriteObject(const CVelmoObject& object, const GK_Layer& layer, const std::string& indent) {
        const CVelmoObjectAttributes& a = object.Attributes();
        const GK_Color color = a.m_color_source == GK_3dmObjectAttributes::color_from_object
                                   ? a.m_color
                                   : layer.Color();
        if (const auto* hatchObject = dynamic_cast<const CVelmoHatch*>(&object)) {
            const std::string d = hatchObject->Hatch() ? HatchPathData(*hatchObject->Hatch()) : "";
            if (!d.empty())
                m_out += indent + "<path d=\"" + d + "\" fill=\"" + HexColor(color) +
                         "\" fill-rule=\"evenodd\" stroke=\"none\"/>\n";
            return;
        }
        const auto* curveObject = dynamic_cast<const CVelmoCurveObject*>(&object);
        if (!curveObject || !curveObject->Curve())
            return; // text and pictures are not drawn
        PathData path;
        AppendCurve(*curveObject->Curve(), path);
        path.CloseIfClosed();
        if (path.Text().empty())
            return;
        m_out += indent + "<path d=\"" + path.Text() + "\" stroke=\"" + HexColor(color) + "\"";
        const int linetype = a.m_linetype_source == GK_3dmObjectAttributes::linetype_from_object
                                 ? a.m_linetype_index
                                 : layer.LinetypeIndex();
        const CVelmoLinetypeTable& linetypes = m_doc.LinetypeTable();
        if (linetype >= 0 && linetype < linetypes.LinetypeCount()) {
            const auto [dashes, offset] = DashPattern(linetypes[linetype]);
            if (!dashes.empty()) {
                m_out += " stroke-dasharray=\"";
                for (std::size_t i = 0; i < dashes.size(); ++i)
                    m_out += (i ? " " : "") + Number(dashes[i]);
                m_out += '"';
                if (offset != 0.0)
                    m_out += " stroke-dashoffset=\"" + Number(offset) + '"';
            }
        }
        m_out += "/>\n";
    }

    const CVelmoDoc& m_doc;
    std::vector<int> m_roots;
    std::vector<std::vector<int>> m_children;
    std::vector<std::vector<int>> m_objects;
    std::string m_out;
};

} // namespace

std::string CurvePathData(const GK_Curve& curve) {
    PathData path;
    AppendCurve(curve, path);
    path.CloseIfClosed();
    return path.Text();
}

std::string XmlEscape(std::wstring_view text) {
    std::string out;
    out.reserve(text.size());
    for (const wchar_t wc : text) {
        const auto c = static_cast<char32_t>(wc);
        switch (c) {
        case U'&':
            out += "&amp;";
            continue;
        case U'<':
            out += "&lt;";
            continue;
        case U'>':
            out += "&gt;";
            continue;
        case U'"':
            out += "&quot;";
            continue;
        case U'\'':
            out += "&apos;";
            continue;
        default:
            break;
        }
        const bool allowed = c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c <= 0xD7FF) ||
                             (c >= 0xE000 && c <= 0xFFFD) || (c >= 0x10000 && c <= 0x10FFFF);
        out += VmUtf8FromWide(std::wstring(1, static_cast<wchar_t>(allowed ? c : U'\uFFFD')));
    }
    return out;
}

std::string DocumentToSvg(const CVelmoDoc& doc) {
    return SvgWriter(doc).Write();
}
